// tlxpki message encrypt and decrypt.
#include <iostream>

#include "choice.hpp"
#include "commands.hpp"
#include "message.hpp"
#include "output.hpp"
#include "private_key.hpp"
#include "status.hpp"

namespace tool {

namespace {

constexpr uint32_t kNotOfThisKey = 0x4B410012;
constexpr uint32_t kNoRecipient = 0x4B410047;

/// Schemes of key encryption by the digest of OAEP; 0 stands for no OAEP.
constexpr Choice kSchemes[] = {{"pkcs1", 0},
                               {"oaep-sha1", TLX_DIGEST_SHA1},
                               {"oaep-sha256", TLX_DIGEST_SHA256},
                               {"oaep-sha384", TLX_DIGEST_SHA384},
                               {"oaep-sha512", TLX_DIGEST_SHA512}};

void add_recipient(P7_CONTENT_INFO *message, const LoadedCertificate &to, uint32_t digest_id) {
    const ASYMMETRIC_KEY *key = get_X509_PUBKEY_key(get_X509_SPKI(to.cert.get()));
    if (key == nullptr || key->kind != TLX_KEY_RSA) {
        throw Failure(to.source + ": the certificate has no RSA key to encrypt for");
    }
    must(digest_id == 0 ? add_PKCS7_Recipient(message, to.cert.get())
                        : add_PKCS7_Recipient_OAEP(message, to.cert.get(), digest_id, digest_id, nullptr, 0));
}

}  // namespace

std::vector<std::string> cipher_names() {
    std::vector<std::string> names;
    for (uint32_t i = 0; get_PKCS7_cipher_name(i) != nullptr; ++i) {
        names.emplace_back(get_PKCS7_cipher_name(i));
    }
    return names;
}

std::vector<std::string> encryption_schemes() {
    return names_of(kSchemes);
}

int run_encrypt(const EncryptOptions &options) {
    const uint32_t digest_id = value_of(kSchemes, options.scheme);
    const Message message = new_message(TLX_OID_PKCS7_ENVELOPED_DATA);
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
    const Key key = load_private_key(options.key, password);
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
