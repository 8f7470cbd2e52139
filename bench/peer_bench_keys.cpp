#include "peer_bench_keys.hpp"

#include <openssl/objects.h>
#include <openssl/pkcs12.h>
#include <openssl/rsa.h>
#include <openssl/x509.h>

#include <cstring>

bool peer_pbkdf2(const char *digest, const char *password, std::size_t password_len, const std::uint8_t *salt,
                 std::size_t salt_len, int iterations, std::uint8_t *out, std::size_t out_len) {
    return PKCS5_PBKDF2_HMAC(password, static_cast<int>(password_len), salt, static_cast<int>(salt_len),
                             iterations, EVP_get_digestbyname(digest), static_cast<int>(out_len), out) == 1;
}

bool peer_pkcs12_key(const char *password, std::size_t password_len, const std::uint8_t *salt,
                     std::size_t salt_len, int iterations, std::uint8_t *out, std::size_t out_len) {
    std::vector<std::uint8_t> octets(salt, salt + salt_len);
    return PKCS12_key_gen_utf8(password, static_cast<int>(password_len), octets.data(),
                               static_cast<int>(salt_len), PKCS12_KEY_ID, iterations,
                               static_cast<int>(out_len), out, EVP_sha1()) == 1;
}

Octets peer_encrypted_key(const char *scheme, const char *password, int iterations) {
    EVP_PKEY *key = EVP_RSA_gen(2048);
    PKCS8_PRIV_KEY_INFO *info = EVP_PKEY2PKCS8(key);
    const int nid = OBJ_sn2nid(scheme);
    X509_ALGOR *algorithm = nid == NID_undef ? PKCS5_pbe2_set_iv(EVP_aes_256_cbc(), iterations, nullptr, 8,
                                                                 nullptr, NID_hmacWithSHA256)
                                             : PKCS5_pbe_set(nid, iterations, nullptr, 8);
    X509_SIG *container = PKCS8_set0_pbe(password, static_cast<int>(std::strlen(password)), info, algorithm);
    Octets octets(static_cast<std::size_t>(i2d_X509_SIG(container, nullptr)));
    std::uint8_t *out = octets.data();
    i2d_X509_SIG(container, &out);
    X509_SIG_free(container);
    PKCS8_PRIV_KEY_INFO_free(info);
    EVP_PKEY_free(key);
    return octets;
}

bool peer_open_key(const Octets &container, const char *password) {
    const std::uint8_t *in = container.data();
    X509_SIG *read = d2i_X509_SIG(nullptr, &in, static_cast<long>(container.size()));
    PKCS8_PRIV_KEY_INFO *info = PKCS8_decrypt(read, password, static_cast<int>(std::strlen(password)));
    EVP_PKEY *key = info == nullptr ? nullptr : EVP_PKCS82PKEY(info);
    const bool opened = key != nullptr;
    EVP_PKEY_free(key);
    PKCS8_PRIV_KEY_INFO_free(info);
    X509_SIG_free(read);
    return opened;
}
