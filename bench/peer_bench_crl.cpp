#include "peer_bench_crl.hpp"

#include <openssl/x509.h>

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

std::size_t allocated_octets() {
#ifdef _WIN32
    return 0;
#else
    const struct mallinfo2 info = mallinfo2();
    return info.uordblks + info.hblkhd;
#endif
}
