#include "peer_bench_pkcs12.hpp"

#include <openssl/evp.h>
#include <openssl/objects.h>
#include <openssl/pkcs12.h>
#include <openssl/rsa.h>
#include <openssl/x509.h>

bool derive_mac_key(const char *digest, Octets &password, Octets &salt, int iterations, Octets &key) {
    const EVP_MD *const algorithm = EVP_get_digestbyname(digest);
    return PKCS12_key_gen_uni(password.data(), static_cast<int>(password.size()), salt.data(),
                              static_cast<int>(salt.size()), PKCS12_MAC_ID, iterations,
                              static_cast<int>(key.size()), key.data(), algorithm) == 1;
}

Octets peer_file(const char *scheme, const char *password, int iterations, int mac_iterations) {
    EVP_PKEY *key = EVP_RSA_gen(2048);
    X509 *cert = X509_new();
    X509_gmtime_adj(X509_getm_notBefore(cert), 0);
    X509_gmtime_adj(X509_getm_notAfter(cert), 3600);
    X509_set_pubkey(cert, key);
    X509_sign(cert, key, EVP_sha256());
    const int nid = OBJ_sn2nid(scheme);
    PKCS12 *made =
        PKCS12_create(password, nullptr, key, cert, nullptr, nid, nid, iterations, mac_iterations, 0);
    Octets octets(static_cast<std::size_t>(i2d_PKCS12(made, nullptr)));
    std::uint8_t *out = octets.data();
    i2d_PKCS12(made, &out);
    PKCS12_free(made);
    X509_free(cert);
    EVP_PKEY_free(key);
    return octets;
}

bool peer_open_file(const Octets &file, const char *password) {
    const std::uint8_t *in = file.data();
    PKCS12 *read = d2i_PKCS12(nullptr, &in, static_cast<long>(file.size()));
    EVP_PKEY *key = nullptr;
    X509 *cert = nullptr;
    const bool opened = PKCS12_parse(read, password, &key, &cert, nullptr) == 1;
    X509_free(cert);
    EVP_PKEY_free(key);
    PKCS12_free(read);
    return opened && key != nullptr && cert != nullptr;
}
