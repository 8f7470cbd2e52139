// tlxpki show: describes certificates and RSA keys.
#include <iostream>
#include <optional>

#include "commands.hpp"
#include "describe.hpp"
#include "failure.hpp"
#include "input.hpp"
#include "status.hpp"

namespace tool {

namespace {

/// The first line of a file. The input owns and wipes it.
std::string_view first_line(const Input &file) {
    const Octets octets = file.blocks().front().octets;
    const std::string_view text(reinterpret_cast<const char *>(octets.data()), octets.size());
    return text.substr(0, text.find_first_of("\r\n"));
}

ASN1_UNIT *decode_node(const Block &block) {
    expect_one_element(block);
    return decodeToDERSequence_n(block.octets.data(), static_cast<uint32_t>(block.octets.size()));
}

/// The kind of a block by the children of its outermost SEQUENCE.
enum class Kind { kCertificate, kPublicKeyInfo, kRsaPublic, kRsaPrivate, kOther };

Kind kind_of(const Block &block) {
    const Node node(decode_node(block));
    const uint32_t count = getSequenceChildNum(node.get());
    const auto is = [&node](uint32_t index, uint32_t tag) { return getChildType(node.get(), index) == tag; };
    if (count == 3 && is(0, TLX_TAG_SEQUENCE_OCTET) && is(1, TLX_TAG_SEQUENCE_OCTET) &&
        is(2, TLX_TAG_BIT_STRING)) {
        return Kind::kCertificate;
    }
    if (count == 2 && is(0, TLX_TAG_SEQUENCE_OCTET) && is(1, TLX_TAG_BIT_STRING)) return Kind::kPublicKeyInfo;
    if (count == 2 && is(0, TLX_TAG_INTEGER) && is(1, TLX_TAG_INTEGER)) return Kind::kRsaPublic;
    if (count >= 9 && is(0, TLX_TAG_INTEGER) && is(8, TLX_TAG_INTEGER)) return Kind::kRsaPrivate;
    return Kind::kOther;
}

template <typename T>
T *decode_record(const Block &block, uint32_t (*decoder)(const ASN1_UNIT *, T **)) {
    T *record = nullptr;
    const Node node(decode_node(block));
    const uint32_t status = decoder(node.get(), &record);
    if (status != 0) throw Failure(block.source + ": cannot be decoded: " + status_sentence(status));
    return record;
}

Json describe_public_key_info(const Block &block) {
    const PublicKey key(decode_record(block, Seq_to_X509_PUBKEY));
    Json json = {{"kind", "public key"}};
    json.update(describe_public_key(key.get()));
    return json;
}

Json describe_bare_key(const Block &block, Kind kind) {
    const auto unit = made<RsaKey>(new_RSA_UNIT());
    if (kind == Kind::kRsaPublic) {
        const Owned<PKCS1_RSA_PUBLIC_KEY, free_PKCS1_RSA_PUBLIC_KEY> key(
            decode_record(block, Seq_to_PKCS1_RSA_PUBLIC_KEY));
        must(get_RSA_UNIT_from_PKCS1_RSA_PUBLIC_KEY(unit.get(), key.get()));
    } else {
        const Owned<PKCS1_RSA_PRIVATE_KEY, free_PKCS1_RSA_PRIVATE_KEY> key(
            decode_record(block, Seq_to_PKCS1_RSA_PRIVATE_KEY));
        must(get_RSA_UNIT_from_PKCS1_RSA_PRIVATE_KEY(unit.get(), key.get()));
    }
    return describe_rsa_key(unit.get());
}

/// The cipher of a line "DEK-Info: DES-EDE3-CBC,0123456789ABCDEF"; empty when there is none.
std::string_view cipher_of(std::string_view block) {
    constexpr std::string_view kHeader = "DEK-Info: ";
    const std::size_t at = block.find(kHeader);
    if (at == std::string_view::npos) return {};
    const std::string_view value = block.substr(at + kHeader.size());
    return value.substr(0, value.find_first_of(",\r\n"));
}

std::string why_not_decrypted(const Block &block, uint32_t status) {
    constexpr std::string_view kSupported = "DES-EDE3-CBC";
    const std::string_view cipher = cipher_of(block.text);
    if (!cipher.empty() && cipher != kSupported) {
        return "the key is encrypted with " + std::string(cipher) + ", which is not supported, only " +
               std::string(kSupported) + " is";
    }
    return "the key cannot be decrypted (is the password right?): " + status_sentence(status);
}

/// Describes a private key file that is encrypted as PEM, with "Proc-Type" and "DEK-Info" before the Base64.
Json describe_encrypted_key(const Block &block, std::optional<std::string_view> password) {
    if (block.label != "RSA PRIVATE KEY") {
        throw Failure(block.source + ": an encrypted " + block.label + " cannot be shown");
    }
    if (!password) {
        throw Failure(block.source + ": the key is encrypted; give its password with --password-file");
    }
    if (password->empty()) {
        throw Failure(block.source +
                      ": the key is encrypted, and the first line of the password file is empty");
    }
    const auto unit = made<RsaKey>(new_RSA_UNIT());
    const uint32_t status =
        readPKCS1_from_Binary(unit.get(), password->data(), static_cast<int32_t>(password->size()),
                              block.text.data(), static_cast<int32_t>(block.text.size()));
    if (status != 0) throw Failure(block.source + ": " + why_not_decrypted(block, status));
    Json json = describe_rsa_key(unit.get());
    json["encrypted"] = true;
    return json;
}

Json describe_block(const Block &block, std::optional<std::string_view> password) {
    if (block.is_encrypted) return describe_encrypted_key(block, password);
    switch (const Kind kind = kind_of(block)) {
        case Kind::kCertificate:
            return describe_certificate(decode_certificate(block).get(), block.octets);
        case Kind::kPublicKeyInfo:
            return describe_public_key_info(block);
        case Kind::kRsaPublic:
        case Kind::kRsaPrivate:
            return describe_bare_key(block, kind);
        case Kind::kOther:
            break;
    }
    const std::string what = block.label.empty() ? "the file" : "the " + block.label;
    throw Failure(block.source + ": " + what +
                  " is neither a certificate nor an RSA key; try \"tlxpki asn1\"");
}

void print_extension(std::ostream &out, const Json &extension) {
    out << "    " << printable(oid_line(extension)) << (extension["critical"].get<bool>() ? ", critical" : "")
        << '\n';
    if (extension.contains("value")) print_value(out, extension["value"], 6);
    if (extension.contains("malformed")) print_text(out, {{"malformed", extension["malformed"]}}, 6);
    if (extension.contains("hex")) print_dump(out, extension["hex"].get<std::string>(), 6);
}

void print_object(std::ostream &out, Json object) {
    out << printable(object["source"].get<std::string>()) << ": " << object["kind"].get<std::string>()
        << '\n';
    const Json extensions = object.contains("extensions") ? object["extensions"] : Json::array();
    const Json digests = object.contains("digests") ? object["digests"] : Json::object();
    for (const char *key : {"source", "kind", "extensions", "digests"}) {
        object.erase(key);
    }
    print_text(out, object, 2);
    if (!extensions.empty()) out << "  Extensions\n";
    for (const Json &extension : extensions) {
        print_extension(out, extension);
    }
    if (!digests.empty()) print_text(out, {{"digests", digests}}, 2);
}

}  // namespace

int run_show(const ShowOptions &options) {
    std::optional<Input> password_file;
    if (!options.password_file.empty()) password_file.emplace(options.password_file);
    std::optional<std::string_view> password;
    if (password_file) password = first_line(*password_file);
    Json objects = Json::array();
    for (const std::string &path : options.files) {
        const Input input(path);
        for (const Block &block : input.blocks()) {
            Json object = {{"source", block.source}};
            object.update(describe_block(block, password));
            if (!options.json) {
                if (!objects.empty()) std::cout << '\n';
                print_object(std::cout, object);
            }
            objects.push_back(std::move(object));
        }
    }
    if (options.json) print_json(std::cout, objects);
    return kGood;
}

}  // namespace tool
