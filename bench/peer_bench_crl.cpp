#include "peer_bench_crl.hpp"

#include <openssl/pem.h>
#include <openssl/x509.h>
#include <openssl/x509v3.h>

#ifndef _WIN32
#include <malloc.h>
#endif

PeerCrl::PeerCrl(const Octets &der) {
    const std::uint8_t *next = der.data();
    crl_ = d2i_X509_CRL(nullptr, &next, static_cast<long>(der.size()));
}

PeerCrl::~PeerCrl() {
    X509_CRL_free(static_cast<X509_CRL *>(crl_));
}

bool PeerCrl::find(std::uint32_t serial) const {
    ASN1_INTEGER *number = ASN1_INTEGER_new();
    ASN1_INTEGER_set_uint64(number, serial);
    X509_REVOKED *revoked = nullptr;
    const bool found = X509_CRL_get0_by_serial(static_cast<X509_CRL *>(crl_), &revoked, number) == 1;
    ASN1_INTEGER_free(number);
    return found;
}

Octets peer_certificate(const char *key_file, bool is_ca) {
    BIO *file = BIO_new_file(key_file, "r");
    EVP_PKEY *key = PEM_read_bio_PrivateKey(file, nullptr, nullptr, nullptr);
    X509 *cert = X509_new();
    X509_set_version(cert, X509_VERSION_3);
    ASN1_INTEGER_set(X509_get_serialNumber(cert), is_ca ? 1 : 2);
    X509_gmtime_adj(X509_getm_notBefore(cert), -3600);
    X509_gmtime_adj(X509_getm_notAfter(cert), 3600L * 24 * 365);
    X509_NAME *name = X509_NAME_new();
    X509_NAME_add_entry_by_NID(name, NID_commonName, MBSTRING_UTF8,
                               reinterpret_cast<const unsigned char *>("CA"), -1, -1, 0);
    X509_set_issuer_name(cert, name);
    if (!is_ca) {
        X509_NAME_add_entry_by_NID(name, NID_commonName, MBSTRING_UTF8,
                                   reinterpret_cast<const unsigned char *>("User"), -1, -1, 0);
    }
    X509_set_subject_name(cert, name);
    X509_set_pubkey(cert, key);
    X509_EXTENSION *constraints =
        X509V3_EXT_conf_nid(nullptr, nullptr, NID_basic_constraints, is_ca ? "critical,CA:TRUE" : "CA:FALSE");
    X509_add_ext(cert, constraints, -1);
    X509_sign(cert, key, EVP_sha256());
    std::uint8_t *octets = nullptr;
    const int size = i2d_X509(cert, &octets);
    Octets made(octets, octets + size);
    OPENSSL_free(octets);
    X509_EXTENSION_free(constraints);
    X509_NAME_free(name);
    X509_free(cert);
    EVP_PKEY_free(key);
    BIO_free(file);
    return made;
}

std::size_t allocated_octets() {
#ifdef _WIN32
    return 0;
#else
    const struct mallinfo2 info = mallinfo2();
    return info.uordblks + info.hblkhd;
#endif
}
