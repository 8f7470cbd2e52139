// Lists of certificates.
#include <tlxcrypto/memory.h>
#include <tlxpki/time.h>

#include <algorithm>
#include <cstdio>

#include "x509/certificate_records.hpp"

using namespace tlx;

namespace {

using Text = OwnedOctets<char>;
using OwnedTime = std::unique_ptr<ASN1_TIME, FreeWith<free_ASN1_TIME>>;

void print_time(const char *label, const X509_TIME *time) noexcept {
    const OwnedTime calendar(X509_TIME_to_ASN1_TIME(time));
    if (!calendar) {
        std::printf("    %s: -\n", label);
        return;
    }
    std::printf("    %s: %04d-%02d-%02d %02d:%02d:%02d\n", label, calendar->year + 1900, calendar->month + 1,
                calendar->day, calendar->hour, calendar->minute, calendar->second);
}

void print_text(const char *label, const char *text) noexcept {
    std::printf("    %s: %s\n", label, text == nullptr ? "-" : text);
}

void print_certificate(u32 index, const X509_CERT *cert) noexcept {
    std::printf("[%u]\n", index);
    print_text("Subject", Text(dump_X509_NAME(get_X509_subject(cert))).get());
    print_text("Issuer", Text(dump_X509_NAME(get_X509_issuer(cert))).get());
    print_text("Serial", Text(BIGINT_to_hex(get_X509_serial(cert))).get());
    print_time("Not before", get_X509_notBefore(cert));
    print_time("Not after", get_X509_notAfter(cert));
}

/// True when the certificate encodes to these octets.
bool encodes_to(const X509_CERT *cert, Bytes wanted) noexcept {
    Encoder encoder;
    Codec<X509_CERT>::encode(encoder, cert);
    return encoder.ok() && std::ranges::equal(encoder.bytes(), wanted);
}

}  // namespace

TLX_DEFINE_LIST(X509_CERTIFICATES, X509_CERT, Certificates)

uint32_t add_X509_CERTIFICATES(X509_CERTIFICATES *certificates, const X509_CERT *cert) {
    return add_X509_CERTIFICATES_child(certificates, cert, -1);
}

int32_t get_X509_CERTS_index_by_X509_CERT(const X509_CERTIFICATES *certificates, const X509_CERT *cert) {
    Encoder encoder;
    Codec<X509_CERT>::encode(encoder, cert);
    if (!encoder.ok()) return -1;
    for (u32 i = 0; i < get_STACK_count(certificates); ++i) {
        const auto *candidate = static_cast<const X509_CERT *>(certificates->values[i]);
        // Almost every other certificate has another serial number, and need not be encoded.
        if (cmp_BIGINT(get_X509_serial(candidate), get_X509_serial(cert)) != 0) continue;
        if (encodes_to(candidate, encoder.bytes())) return static_cast<i32>(i);
    }
    return -1;
}

X509_CERT *find_X509_CERT_by_IssuerAndSerialNumber(const X509_CERTIFICATES *certificates,
                                                   const X509_NAME *issuer, const BIGINT *serial) {
    if (issuer == nullptr || serial == nullptr) return nullptr;
    for (u32 i = 0; i < get_STACK_count(certificates); ++i) {
        auto *candidate = static_cast<X509_CERT *>(certificates->values[i]);
        if (cmp_BIGINT(get_X509_serial(candidate), serial) != 0) continue;
        if (cmp_X509_NAME(get_X509_issuer(candidate), issuer) == 0) return candidate;
    }
    return nullptr;
}

void print_X509_CERTIFICATES(const X509_CERTIFICATES *certificates) {
    for (u32 i = 0; i < get_STACK_count(certificates); ++i) {
        print_certificate(i, static_cast<const X509_CERT *>(certificates->values[i]));
    }
}
