#include "peer_bench_message_stream.hpp"

#include <openssl/evp.h>

bool digest_with_libcrypto(const std::uint8_t *octets, std::uint32_t size, std::uint32_t times) {
    EVP_MD_CTX *context = EVP_MD_CTX_new();
    unsigned char digest[EVP_MAX_MD_SIZE];
    bool good = EVP_DigestInit_ex(context, EVP_sha256(), nullptr) == 1;
    for (std::uint32_t i = 0; i < times && good; ++i)
        good = EVP_DigestUpdate(context, octets, size) == 1;
    good = good && EVP_DigestFinal_ex(context, digest, nullptr) == 1;
    EVP_MD_CTX_free(context);
    return good;
}
