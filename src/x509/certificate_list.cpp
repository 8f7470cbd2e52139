// Lists of certificates.
#include <tlxcrypto/memory.h>
#include <tlxpki/time.h>

#include <algorithm>
#include <cstdio>

#include "x509/codecs.hpp"
#include "x509/list.hpp"

using namespace tlx;

namespace {

constexpr Codes kListCodes = codes(0x462C0000, 0x462B0000);

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

X509_CERTIFICATES *new_X509_CERTIFICATES(void) {
    return new_STACK();
}

void clean_X509_CERTIFICATES(X509_CERTIFICATES *certificates) {
    clean_list<Nested<X509_CERT>>(certificates);
}

void free_X509_CERTIFICATES(X509_CERTIFICATES *certificates) {
    Certificates::free(certificates);
}

X509_CERTIFICATES *dup_X509_CERTIFICATES(const X509_CERTIFICATES *certificates) {
    return Certificates::dup(certificates);
}

uint32_t get_X509_CERTIFICATES_count(const X509_CERTIFICATES *certificates) {
    return get_STACK_count(certificates);
}

X509_CERT *get_X509_CERTIFICATES_child(const X509_CERTIFICATES *certificates, int32_t index) {
    return item_at<X509_CERT>(certificates, index);
}

uint32_t add_X509_CERTIFICATES(X509_CERTIFICATES *certificates, const X509_CERT *cert) {
    return insert_X509_CERTIFICATES(certificates, cert, -1);
}

uint32_t insert_X509_CERTIFICATES(X509_CERTIFICATES *certificates, const X509_CERT *cert, int32_t index) {
    return add_list_child<Nested<X509_CERT>>(certificates, cert, index);
}

X509_CERT *remove_X509_CERTIFICATES(X509_CERTIFICATES *certificates, int32_t index) {
    return take_item<X509_CERT>(certificates, index);
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

uint32_t Seq_to_X509_CERTIFICATES(const ASN1_UNIT *node, X509_CERTIFICATES **out) {
    if (node == nullptr || out == nullptr) return 0x462C0049;
    Element element;
    if (!view_node(node, element)) return 0x462C0104;
    X509_CERTIFICATES *certificates = nullptr;
    const u32 status = Certificates::decode(element, &certificates);
    if (status != 0) return status == kFieldFailed ? 0x462C0104 : status;
    if (*out == nullptr) {
        *out = certificates;
    } else {
        std::swap(**out, *certificates);
        free_X509_CERTIFICATES(certificates);
    }
    return 0;
}

uint32_t X509_CERTIFICATES_to_Seq(const X509_CERTIFICATES *certificates, ASN1_UNIT **out) {
    return encode_list_node<Certificates>(certificates, out, kListCodes.encode);
}

void print_X509_CERTIFICATES(const X509_CERTIFICATES *certificates) {
    for (u32 i = 0; i < get_STACK_count(certificates); ++i) {
        print_certificate(i, static_cast<const X509_CERT *>(certificates->values[i]));
    }
}
