// tlxpki message encrypt and decrypt.
#include <array>
#include <iostream>

#include "commands.hpp"
#include "failure.hpp"
#include "output.hpp"
#include "private_key.hpp"
#include "record.hpp"

namespace tool {

namespace {

using Message = Owned<P7_CONTENT_INFO, free_P7_CONTENT_INFO>;
using Key = Owned<ASYMMETRIC_KEY, free_ASYMMETRIC_KEY>;

constexpr uint32_t kNotOfThisKey = 0x4B410012;
constexpr uint32_t kNoRecipient = 0x4B410047;

/// A scheme of key encryption; 0 stands for no OAEP.
struct Scheme {
    const char *name;
    uint32_t digest_id;
};
constexpr std::array kSchemes = {
    Scheme{"pkcs1", 0}, Scheme{"oaep-sha1", TLX_DIGEST_SHA1}, Scheme{"oaep-sha256", TLX_DIGEST_SHA256},
    Scheme{"oaep-sha384", TLX_DIGEST_SHA384}, Scheme{"oaep-sha512", TLX_DIGEST_SHA512}};

uint32_t digest_of_scheme(const std::string &name) {
    for (const Scheme &scheme : kSchemes) {
        if (name == scheme.name) return scheme.digest_id;
    }
    throw Failure("\"" + name + "\" is no scheme");
}

void add_recipient(P7_CONTENT_INFO *message, const LoadedCertificate &to, uint32_t digest_id) {
    const ASYMMETRIC_KEY *key = get_X509_PUBKEY_key(get_X509_SPKI(to.cert.get()));
    if (key == nullptr || key->kind != TLX_KEY_RSA) {
        throw Failure(to.source + ": the certificate has no RSA key to encrypt for");
    }
    must(digest_id == 0 ? add_PKCS7_Recipient(message, to.cert.get())
                        : add_PKCS7_Recipient_OAEP(message, to.cert.get(), digest_id, digest_id, nullptr, 0));
}

/// Writes a message as DER, or as PEM under the label of RFC 7468.
void write_message(const std::string &path, const P7_CONTENT_INFO *message, bool as_der) {
    constexpr uint32_t kFailed = 0xFFFFFFFF;
    uint8_t *octets = nullptr;
    char *text = nullptr;
    const uint32_t size = as_der ? TLX_WRITE_DER(P7_CONTENT_INFO, message, &octets)
                                 : TLX_WRITE_PEM(P7_CONTENT_INFO, message, "PKCS7", &text);
    const Owned<uint8_t, tlx_free> owned_octets(octets);
    const Text owned_text(text);
    if (size == kFailed) throw Failure(path + ": the message cannot be encoded");
    write_octets(path, {as_der ? octets : reinterpret_cast<const uint8_t *>(text), size});
}

Message read_message(const std::string &path) {
    const Input input(path);
    const Block &block = input.blocks().front();
    expect_contents(block);
    return Message(decode_record(block, Seq_to_P7_CONTENT_INFO));
}

Key private_key(const RsaKey &unit) {
    Key key = made<Key>(new_ASYMMETRIC_KEY());
    must(set_ASYMMETRIC_KEY(key.get(), TLX_KEY_RSA, unit.get()));
    return key;
}

}  // namespace

std::vector<std::string> cipher_names() {
    std::vector<std::string> names;
    for (uint32_t i = 0; get_PKCS7_cipher_name(i) != nullptr; ++i) {
        names.emplace_back(get_PKCS7_cipher_name(i));
    }
    return names;
}

std::vector<std::string> scheme_names() {
    std::vector<std::string> names;
    for (const Scheme &scheme : kSchemes) {
        names.emplace_back(scheme.name);
    }
    return names;
}

int run_encrypt(const EncryptOptions &options) {
    const uint32_t digest_id = digest_of_scheme(options.scheme);
    const Message message = made<Message>(new_P7_CONTENT_INFO());
    must(set_PKCS7_Type(message.get(), TLX_OID_PKCS7_ENVELOPED_DATA));
    for (const std::string &path : options.recipients) {
        add_recipient(message.get(), load_certificates(path).front(), digest_id);
    }
    const Buffer content = read_octets(options.content);
    const uint32_t status = seal_PKCS7(message.get(), options.cipher.c_str(), content.octets().data(),
                                       static_cast<uint32_t>(content.octets().size()));
    if (status != 0) throw Failure("the content cannot be encrypted: " + status_sentence(status));
    write_message(options.output, message.get(), options.der);
    return kGood;
}

int run_decrypt(const DecryptOptions &options) {
    const std::vector<LoadedCertificate> certificates = load_certificates(options.cert);
    const Password password(options.password_file);
    const Key key = private_key(load_private_key(options.key, password));
    const Message message = read_message(options.message);
    uint8_t *octets = nullptr;
    uint32_t size = 0;
    const uint32_t status =
        open_PKCS7(message.get(), certificates.front().cert.get(), key.get(), &octets, &size);
    const Buffer content(octets, size);
    if (status == kNotOfThisKey || status == kNoRecipient) {
        std::cerr << "tlxpki: " << printable(options.message) << ": " << status_sentence(status) << '\n';
        return kNotValid;
    }
    if (status != 0) throw Failure(options.message + ": cannot be decrypted: " + status_sentence(status));
    write_octets(options.output, content.octets());
    return kGood;
}

}  // namespace tool
