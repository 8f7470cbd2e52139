// tlxpki message encrypt and decrypt.
#include <iostream>

#include "choice.hpp"
#include "commands.hpp"
#include "describe_message.hpp"
#include "key_file.hpp"
#include "message.hpp"
#include "output.hpp"
#include "status.hpp"
#include "terminal.hpp"
#include "token.hpp"

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

void seal_content(P7_CONTENT_INFO *message, const EncryptOptions &options) {
    const Waiting waiting("Encrypting");
    const Buffer content = read_octets(options.content);
    const uint32_t status = seal_PKCS7(message, options.cipher.c_str(), content.octets().data(),
                                       static_cast<uint32_t>(content.octets().size()));
    if (status != 0) throw Failure("the content cannot be encrypted: " + exact_status_sentence(status));
    write_message(options.output, message, options.der);
}

/// Decrypts a message to a file. Returns the status, which is that of a key that does not belong to the
/// message when it is not 0.
uint32_t open_content(const DecryptOptions &options, const X509_CERT *cert, const ASYMMETRIC_KEY *key,
                      std::size_t &size) {
    const Waiting waiting("Decrypting");
    const Message message = read_message(options.message);
    uint8_t *octets = nullptr;
    uint32_t length = 0;
    const uint32_t status = open_PKCS7(message.get(), cert, key, &octets, &length);
    const Buffer content(octets, length);
    if (status == kNotOfThisKey || status == kNoRecipient) return status;
    if (status != 0) {
        throw Failure(source_of(options.message) + ": cannot be decrypted: " + exact_status_sentence(status));
    }
    write_octets(options.output, content.octets());
    size = length;
    return 0;
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
    expect_room_for_json(options.json, options.output);
    const uint32_t digest_id = value_of(kSchemes, options.scheme);
    const Message message = new_message(TLX_OID_PKCS7_ENVELOPED_DATA);
    for (const std::string &path : options.recipients) {
        add_recipient(message.get(), load_certificates(path).front(), digest_id);
    }
    seal_content(message.get(), options);
    if (options.json) {
        print_json(std::cout, message_document(source_of(options.content), message.get(), options.output));
    }
    return kGood;
}

int run_decrypt(const DecryptOptions &options) {
    expect_room_for_json(options.json, options.output);
    Tokens tokens(options.pin_file);
    const LoadedCertificate loaded = load_certificate(options.cert, tokens);
    Password password(options.password_file);
    const Key key = load_private_key(options.key, password, tokens, KeyUse::kDecrypt);
    std::size_t size = 0;
    const uint32_t status = open_content(options, loaded.cert.get(), key.get(), size);
    const bool decrypted = status == 0;
    const std::string source = source_of(options.message);
    if (!decrypted) {
        std::cerr << "tlxpki: " << printable(source) << ": " << exact_status_sentence(status) << '\n';
    }
    if (options.json) {
        Json json = {{"source", source}, {"decrypted", decrypted}, {"status", exact_status_json(status)}};
        if (decrypted) json.update({{"output", options.output}, {"octets", size}});
        print_json(std::cout, json);
    }
    return decrypted ? kGood : kNotValid;
}

}  // namespace tool
