// tlxpki show: describes certificates, keys and revocation lists.
#include <iostream>
#include <optional>

#include "block_kind.hpp"
#include "commands.hpp"
#include "describe.hpp"
#include "failure.hpp"
#include "input.hpp"
#include "key_file.hpp"
#include "ocsp.hpp"
#include "record.hpp"
#include "revocation.hpp"
#include "timestamp.hpp"

namespace tool {

namespace {

Json describe_public_key_info(const Block &block) {
    const PublicKey key(decode_record(block, Seq_to_X509_PUBKEY));
    Json json = {{"kind", "public key"}};
    json.update(describe_public_key(key.get()));
    return json;
}

Json describe_bare_key(const Block &block, Kind kind) {
    if (kind == Kind::kRsaPrivate) return describe_rsa_key(decode_private_key(block).get());
    const auto unit = made<RsaKey>(new_RSA_UNIT());
    const Owned<PKCS1_RSA_PUBLIC_KEY, free_PKCS1_RSA_PUBLIC_KEY> key(
        decode_record(block, Seq_to_PKCS1_RSA_PUBLIC_KEY));
    must(get_RSA_UNIT_from_PKCS1_RSA_PUBLIC_KEY(unit.get(), key.get()));
    return describe_rsa_key(unit.get());
}

Json describe_encrypted_key(const Block &block, Password &password) {
    Json json = describe_rsa_key(decrypt_key(block, password).get());
    json["encrypted"] = true;
    return json;
}

Json describe_trust_list_block(const Block &block) {
    const Owned<CERT_TRUST_LIST, free_CERT_TRUST_LIST> list(decode_record(block, Seq_to_CERT_TRUST_LIST));
    Json json = {{"kind", "certificate trust list"}};
    json.update(describe_trust_list(list.get()));
    return json;
}

Json describe_token_list_block(const Block &block) {
    const Owned<KISA_HSM_SIGNATURE_VALUE, free_KISA_HSM_SIGNATURE_VALUE> list(
        decode_record(block, Seq_to_KISA_HSM_SIGNATURE_VALUE));
    Json json = {{"kind", "list of hardware tokens"}};
    json.update(describe_token_list(list.get()));
    return json;
}

/// Why show has no words for a kind.
std::string not_shown(const Block &block, Kind kind) {
    const std::string subject = block.source + ": " + block_name(block);
    if (kind == Kind::kOther) {
        return subject + " is neither a certificate nor a key; try \"tlxpki asn1\"";
    }
    if (kind == Kind::kMessage) {
        return subject + " is " + kind_name(kind) + "; \"tlxpki message show\" shows it";
    }
    if (kind == Kind::kPkcs12) {
        return subject + " is " + kind_name(kind) + "; \"tlxpki pkcs12 show\" shows it";
    }
    return subject + " is " + kind_name(kind) +
           "; show reads certificates, keys and revocation lists only, \"tlxpki asn1\" any element";
}

/// A token of a time stamp. Throws Failure for any other message.
Json describe_message_block(const Block &block) {
    CMS_CONTENT_INFO *info = nullptr;
    const Node node(decodeToDERSequence_n(block.octets.data(), static_cast<uint32_t>(block.octets.size())));
    const uint32_t status = Seq_to_CMS_CONTENT_INFO(node.get(), &info);
    const CmsMessage message(info);
    if (status != 0 || !is_timestamp_token(info)) throw Failure(not_shown(block, Kind::kMessage));
    return describe_timestamp_token(info);
}

Json describe_private_key(const Block &block, Password &password) {
    Json json = {{"kind", "private key"}};
    json.update(describe_key_file(read_key(block, password)));
    return json;
}

Json describe_contents(const Block &block, Kind kind, Password &password) {
    switch (kind) {
        case Kind::kCertificate:
            return describe_certificate(decode_certificate(block).get(), block.octets);
        case Kind::kRevocationList:
            return describe_crl(decode_crl(block).get(), kShownEntries);
        case Kind::kPublicKeyInfo:
            return describe_public_key_info(block);
        case Kind::kRsaPublic:
        case Kind::kRsaPrivate:
            return describe_bare_key(block, kind);
        case Kind::kEcPrivate:
        case Kind::kPkcs8:
        case Kind::kEncryptedPkcs8:
            return describe_private_key(block, password);
        case Kind::kTrustList:
            return describe_trust_list_block(block);
        case Kind::kTokenList:
            return describe_token_list_block(block);
        case Kind::kOcspRequest:
            return describe_ocsp_request(decode_ocsp_request(block).get());
        case Kind::kOcspResponse:
            return describe_ocsp_response(decode_ocsp_response(block).get());
        case Kind::kTimestampRequest:
            return describe_timestamp_request(
                TimestampRequest(decode_record(block, Seq_to_CMS_TIMESTAMP_REQUEST)).get());
        case Kind::kTimestampResponse:
            return describe_timestamp_response(
                TimestampResponse(decode_record(block, Seq_to_CMS_TIMESTAMP_RESPONSE)).get());
        case Kind::kMessage:
            return describe_message_block(block);
        default:
            throw Failure(not_shown(block, kind));
    }
}

Json describe_block(const Block &block, Password &password) {
    if (block.is_encrypted) return describe_encrypted_key(block, password);
    expect_one_element(block);
    const Kind kind = kind_of(block);
    Json json = describe_contents(block, kind, password);
    if (is_wrong_label(block.label, kind)) {
        json["notes"].push_back("this is " + kind_name(kind) + ", although its label is " + block.label);
    }
    return json;
}

/// An object for a block, or for a file that cannot be read, whether it can be described or not.
template <typename Describe>
Json described(const std::string &source, const std::string &label, Describe describe) {
    Json object = {{"source", source}};
    if (!label.empty()) object["label"] = label;
    try {
        object.update(describe());
    } catch (const Failure &failure) {
        object["error"] = failure.what();
    }
    return object;
}

void print_extension(std::ostream &out, const Json &extension) {
    out << "    " << printable(oid_line(extension)) << (extension["critical"].get<bool>() ? ", critical" : "")
        << '\n';
    if (extension.contains("value")) print_value(out, extension["value"], 6);
    if (extension.contains("malformed")) print_text(out, {{"malformed", extension["malformed"]}}, 6);
    if (extension.contains("hex")) print_dump(out, extension["hex"].get<std::string>(), 6);
}

/// Entries of a revocation list, a line each.
void print_entries(std::ostream &out, const Json &entries, uint32_t count) {
    if (!entries.empty()) out << "  Entries\n";
    for (const Json &entry : entries) {
        out << "    " << entry["serial"].get<std::string>();
        for (const char *key : {"revocation_date", "reason"}) {
            if (entry.contains(key)) out << "  " << printable(entry[key].get<std::string>());
        }
        out << '\n';
        if (entry.contains("invalidity_date")) {
            print_text(out, {{"invalidity_date", entry["invalidity_date"]}}, 6);
        }
        if (entry.contains("certificate_issuer")) {
            print_text(out, {{"certificate_issuer", entry["certificate_issuer"]}}, 6);
        }
    }
    if (count > entries.size()) {
        out << "    and " << count - entries.size() << " more; \"tlxpki crl show --entries\" shows them\n";
    }
}

/// Takes the objects of all files, and prints them as they come, or at the end as JSON.
class Shower {
  public:
    explicit Shower(bool json) : json_(json) {}

    void take(Json object) {
        if (!json_) {
            if (!objects_.empty()) std::cout << '\n';
            print_object(std::cout, object);
        }
        if (object.contains("error")) {
            status_ = kUnusable;
            std::cout.flush();
            std::cerr << "tlxpki: " << printable(object["error"].get<std::string>()) << '\n';
        }
        objects_.push_back(std::move(object));
    }

    int finish() const {
        if (json_) print_json(std::cout, objects_);
        return status_;
    }

  private:
    bool json_;
    Json objects_ = Json::array();
    int status_ = kGood;
};

void show_file(const std::string &path, Password &password, Shower &shower) {
    std::optional<Input> input;
    const Json unreadable = described(path, "", [&input, &path] {
        input.emplace(path);
        return Json::object();
    });
    if (!input) return shower.take(unreadable);
    for (const Block &block : input->blocks()) {
        shower.take(described(block.source, block.label, [&] { return describe_block(block, password); }));
    }
}

}  // namespace

void print_object(std::ostream &out, Json object) {
    const std::string source = printable(object["source"].get<std::string>());
    if (object.contains("error")) {
        out << source << ": not shown\n";
        return;
    }
    out << source << ": " << object["kind"].get<std::string>() << '\n';
    const Json extensions = object.value("extensions", Json::array());
    const Json last = {{"digests", object.value("digests", Json())},
                       {"notes", object.value("notes", Json())}};
    const Json entries = object.value("entries", Json::array());
    for (const char *key : {"source", "label", "kind", "extensions", "entries", "digests", "notes"}) {
        object.erase(key);
    }
    print_text(out, object, 2);
    if (!extensions.empty()) out << "  Extensions\n";
    for (const Json &extension : extensions) {
        print_extension(out, extension);
    }
    print_entries(out, entries, object.value("entry_count", uint32_t{0}));
    for (const auto &[key, value] : last.items()) {
        if (!value.is_null()) print_text(out, {{key, value}}, 2);
    }
}

int run_show(const ShowOptions &options) {
    Password password(options.password_file);
    Shower shower(options.json);
    for (const std::string &path : options.files) {
        show_file(path, password, shower);
    }
    return shower.finish();
}

}  // namespace tool
