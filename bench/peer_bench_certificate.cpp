#include "peer_bench_certificate.hpp"

#include <openssl/x509.h>

void *peer_decode(const std::uint8_t *der, std::size_t len) {
    return d2i_X509(nullptr, &der, static_cast<long>(len));
}

void peer_free(void *cert) {
    X509_free(static_cast<X509 *>(cert));
}

bool peer_decode_and_free(const std::uint8_t *der, std::size_t len) {
    void *cert = peer_decode(der, len);
    peer_free(cert);
    return cert != nullptr;
}

int peer_encode_tbs(void *cert) {
    std::uint8_t *der = nullptr;
    const int length = i2d_re_X509_tbs(static_cast<X509 *>(cert), &der);
    OPENSSL_free(der);
    return length;
}
