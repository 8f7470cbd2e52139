#include "peer_bench_message_envelope.hpp"

#include <openssl/cms.h>
#include <openssl/evp.h>

#include <vector>

#include "peer_source.hpp"

namespace {

/// Zeros that the message takes over.
unsigned char *new_key() {
    return static_cast<unsigned char *>(OPENSSL_zalloc(32));
}

}  // namespace

bool cipher_with_libcrypto(bool gcm, bool encrypts, const std::uint8_t *octets, std::uint32_t size,
                           std::uint32_t times) {
    const unsigned char key[32] = {};
    std::vector<unsigned char> out(size + EVP_MAX_BLOCK_LENGTH);
    EVP_CIPHER_CTX *context = EVP_CIPHER_CTX_new();
    int written = 0;
    bool good = EVP_CipherInit_ex(context, gcm ? EVP_aes_256_gcm() : EVP_aes_256_cbc(), nullptr, key, key,
                                  encrypts ? 1 : 0) == 1;
    for (std::uint32_t i = 0; i < times && good; ++i)
        good = EVP_CipherUpdate(context, out.data(), &written, octets, static_cast<int>(size)) == 1;
    EVP_CIPHER_CTX_free(context);
    return good;
}

bool message_with_libcrypto(bool gcm, const std::uint8_t *octets, std::uint32_t size, std::uint32_t times) {
    Source source = {octets, size, times};
    BIO *content = new_source(source);
    CMS_ContentInfo *message =
        gcm ? CMS_AuthEnvelopedData_create(EVP_aes_256_gcm()) : CMS_EnvelopedData_create(EVP_aes_256_cbc());
    BIO *out = BIO_new(BIO_s_null());
    unsigned char key[32] = {};
    const bool good = CMS_add0_recipient_key(message, NID_undef, new_key(), 32, new_key(), 32, nullptr,
                                             nullptr, nullptr) != nullptr &&
                      CMS_set_detached(message, 0) == 1 &&
                      CMS_final(message, content, nullptr, CMS_BINARY) == 1 &&
                      CMS_decrypt_set1_key(message, key, 32, nullptr, 0) == 1 &&
                      CMS_decrypt(message, nullptr, nullptr, nullptr, out, CMS_BINARY) == 1;
    CMS_ContentInfo_free(message);
    BIO_free(content);
    BIO_free(out);
    return good && source.times == 0;
}
