// Certificate (RFC 5280, section 4.1).
#include <tlxcrypto/digest.h>

#include <algorithm>

#include "der/list_items.hpp"
#include "der/received_octets.hpp"
#include "x509/certificate_records.hpp"

using namespace tlx;

namespace {

/// Room for a certificate of the usual size, so that encoding it allocates once.
constexpr std::size_t kUsualSize = 2048;

/// Passes a setter's status on. What was received is not the certificate any more once it succeeded.
u32 changed(X509_CERT &cert, u32 status) noexcept {
    if (status == 0) forget_received(cert);
    return status;
}

/// The to-be-signed part, made when there is none; null for a null certificate and when memory runs out.
X509_TBS_CERT *tbs_of(X509_CERT *cert) noexcept {
    if (cert == nullptr) return nullptr;
    if (cert->tbsCertificate == nullptr) cert->tbsCertificate = new_X509_TBS_CERT();
    return cert->tbsCertificate;
}

/// A member of the to-be-signed part; null when one of the three is missing.
template <typename T>
T *member_of(const X509_CERT *cert, T *X509_TBS_CERT::*member) noexcept {
    if (cert == nullptr || cert->tbsCertificate == nullptr) return nullptr;
    return cert->tbsCertificate->*member;
}

template <auto Dup, auto Free, typename T>
u32 replace_member(X509_CERT *cert, T *X509_TBS_CERT::*member, const T *value) noexcept {
    if (value == nullptr) return 1;
    X509_TBS_CERT *tbs = tbs_of(cert);
    return tbs == nullptr ? 1 : changed(*cert, replace_by_copy<Dup, Free>(tbs->*member, value));
}

X509_TIME *time_of(const X509_CERT *cert, X509_TIME X509_VALIDITY::*which) noexcept {
    X509_VALIDITY *validity = member_of(cert, &X509_TBS_CERT::validity);
    if (validity == nullptr || (validity->*which).time == nullptr) return nullptr;
    return &(validity->*which);
}

u32 replace_time(X509_CERT *cert, X509_TIME X509_VALIDITY::*which, const X509_TIME *value) noexcept {
    if (value == nullptr || !has_existing_date(*value)) return 1;
    X509_TBS_CERT *tbs = tbs_of(cert);
    if (tbs == nullptr) return 1;
    if (tbs->validity == nullptr) tbs->validity = new_X509_VALIDITY();
    const bool copied = tbs->validity != nullptr && copy_time(tbs->validity->*which, *value);
    return changed(*cert, copied ? 0 : 1);
}

/// By hand because a signed part that is missing has a status of its own, and one that cannot be decoded
/// takes the caller's with it.
struct SignedPart : Field<X509_CERT, Nested<X509_TBS_CERT>> {
    [[nodiscard]] u32 read(Cursor &children, X509_CERT &record) const noexcept {
        Element child;
        if (!children.next(TLX_TAG_SEQUENCE, child)) return 1;
        clear(record);
        return Codec<X509_TBS_CERT>::decode(child, &record.tbsCertificate);
    }
};

// Certificate ::= SEQUENCE {
//     tbsCertificate TBSCertificate, signatureAlgorithm AlgorithmIdentifier, signature BIT STRING }
constexpr auto kCertificate =
    record<X509_CERT>(beginning(), SignedPart{field<Nested<X509_TBS_CERT>>(&X509_CERT::tbsCertificate)},
                      field<SignatureOid>(&X509_CERT::signatureAlgorithm),
                      field<Bits>(&X509_CERT::signatureValue), received(&X509_CERT::received));

}  // namespace

namespace tlx {

void forget_received(X509_CERT &cert) noexcept {
    free_received(cert.received);
    cert.received = nullptr;
}

u32 compare_received(const X509_CERT &cert, Bytes signed_part) noexcept {
    if (cert.received == nullptr) return 0;
    Encoder rest;
    SignatureOid::encode(rest, cert.signatureAlgorithm, kSequence);
    rest.bit_string(cert.signatureValue);
    if (rest.out_of_memory()) return 0x4630003C;
    u8 length[5];
    const std::size_t size = signed_part.size() + rest.bytes().size();
    const Bytes length_octets(length, write_length(static_cast<u32>(size), length));
    ReceivedReader received(cert.received);
    const bool same = rest.ok() && received.takes({&kSequence, 1}) && received.takes(length_octets) &&
                      received.takes(signed_part) && received.takes(rest.bytes()) && received.at_end();
    return same ? 0 : 0x46300048;
}

}  // namespace tlx

TLX_DEFINE_RECORD_LIFE(X509_CERT, kCertificate)
TLX_DEFINE_CODEC_DECODE(X509_CERT, kCertificate)
TLX_DEFINE_RECORD_DECODER(X509_CERT)

X509_CERT *new_X509_CERT(void) {
    Owned<X509_CERT> cert(TLX_NEW(X509_CERT));
    return tbs_of(cert.get()) != nullptr ? cert.release() : nullptr;
}

// By hand because the room is made beforehand.
void Codec<X509_CERT>::encode(Encoder &out, const X509_CERT *record, u8 tag) noexcept {
    if (record == nullptr) return out.fail();
    out.buffer().reserve(kUsualSize);
    kCertificate.write(out, *record, tag);
}

int32_t cmp_X509_CERT(const X509_CERT *a, const X509_CERT *b) {
    Encoder first;
    Encoder second;
    Codec<X509_CERT>::encode(first, a);
    Codec<X509_CERT>::encode(second, b);
    if (!first.ok() || !second.ok()) return 1;
    return std::ranges::equal(first.bytes(), second.bytes()) ? 0 : -1;
}

// By hand because missing memory has a status of its own.
uint32_t X509_CERT_to_Seq(const X509_CERT *cert, ASN1_UNIT **out) {
    if (cert == nullptr || out == nullptr) return 0x46100049;
    Encoder encoder;
    Codec<X509_CERT>::encode(encoder, cert);
    if (!encoder.ok()) return encoder.out_of_memory() ? 0x4610003C : 0x46100103;
    return hand_over(encoder, out) ? 0 : 0x4610003C;
}

uint32_t X509_CERT_digest(const X509_CERT *cert, uint32_t digest_id, uint8_t *out) {
    if (cert == nullptr || out == nullptr) return 0xFFFFFFFF;
    RecordOctets der;
    u32 length = 0;
    if (!der.read(*cert)) return 0xFFFFFFFF;
    const Bytes octets = der.bytes();
    const u32 status = Digest(digest_id, octets.data(), static_cast<u32>(octets.size()), out, &length);
    return status == 0 ? length : 0xFFFFFFFF;
}

uint32_t get_X509_received(const X509_CERT *cert, uint8_t **out) {
    if (cert == nullptr || cert->received == nullptr || out == nullptr) return 0;
    u8 *octets = join_received(cert->received);
    if (octets == nullptr) return 0;
    *out = octets;
    return static_cast<u32>(received_size(cert->received));
}

uint32_t check_X509_received(const X509_CERT *cert) {
    if (cert == nullptr) return 0x46300049;
    if (cert->received == nullptr) return 0;
    Encoder signed_part;
    const u32 status = encode_tbs(signed_part, cert->tbsCertificate);
    if (signed_part.out_of_memory()) return 0x4630003C;
    return status == 0 ? compare_received(*cert, signed_part.bytes()) : 0x46300048;
}

uint32_t get_X509_version(const X509_CERT *cert) {
    if (cert == nullptr || cert->tbsCertificate == nullptr) return 0xFFFFFFFF;
    return cert->tbsCertificate->version;
}

BIGINT *get_X509_serial(const X509_CERT *cert) {
    return member_of(cert, &X509_TBS_CERT::serialNumber);
}

OBJECT_IDENTIFIER *get_X509_signature(const X509_CERT *cert) {
    return member_of(cert, &X509_TBS_CERT::signature);
}

X509_NAME *get_X509_issuer(const X509_CERT *cert) {
    return member_of(cert, &X509_TBS_CERT::issuer);
}

X509_NAME *get_X509_subject(const X509_CERT *cert) {
    return member_of(cert, &X509_TBS_CERT::subject);
}

X509_TIME *get_X509_notBefore(const X509_CERT *cert) {
    return time_of(cert, &X509_VALIDITY::notBefore);
}

X509_TIME *get_X509_notAfter(const X509_CERT *cert) {
    return time_of(cert, &X509_VALIDITY::notAfter);
}

X509_PUBKEY *get_X509_SPKI(const X509_CERT *cert) {
    return member_of(cert, &X509_TBS_CERT::subjectPublicKeyInfo);
}

X509_EXTENSIONS *get_X509_extensions(const X509_CERT *cert) {
    return member_of(cert, &X509_TBS_CERT::extensions);
}

OBJECT_IDENTIFIER *get_X509_sig_alg(const X509_CERT *cert) {
    return cert == nullptr ? nullptr : cert->signatureAlgorithm;
}

BIT_STRING *get_X509_sig_value(const X509_CERT *cert) {
    return cert == nullptr ? nullptr : cert->signatureValue;
}

uint32_t set_X509_version(X509_CERT *cert, uint8_t version) {
    X509_TBS_CERT *tbs = tbs_of(cert);
    if (tbs == nullptr) return 1;
    tbs->version = version;
    return changed(*cert, 0);
}

uint32_t set_X509_serial(X509_CERT *cert, const BIGINT *value) {
    return replace_member<dup_BIGINT, free_BIGINT>(cert, &X509_TBS_CERT::serialNumber, value);
}

uint32_t set_X509_signature(X509_CERT *cert, const OBJECT_IDENTIFIER *value) {
    return replace_member<dup_OBJECT_IDENTIFIER, free_OBJECT_IDENTIFIER>(cert, &X509_TBS_CERT::signature,
                                                                         value);
}

uint32_t set_X509_issuer(X509_CERT *cert, const X509_NAME *value) {
    return replace_member<dup_X509_NAME, free_X509_NAME>(cert, &X509_TBS_CERT::issuer, value);
}

uint32_t set_X509_subject(X509_CERT *cert, const X509_NAME *value) {
    return replace_member<dup_X509_NAME, free_X509_NAME>(cert, &X509_TBS_CERT::subject, value);
}

uint32_t set_X509_notBefore(X509_CERT *cert, const X509_TIME *value) {
    return replace_time(cert, &X509_VALIDITY::notBefore, value);
}

uint32_t set_X509_notAfter(X509_CERT *cert, const X509_TIME *value) {
    return replace_time(cert, &X509_VALIDITY::notAfter, value);
}

uint32_t set_X509_pub_key(X509_CERT *cert, const X509_PUBKEY *value) {
    return replace_member<dup_X509_PUBKEY, free_X509_PUBKEY>(cert, &X509_TBS_CERT::subjectPublicKeyInfo,
                                                             value);
}

uint32_t set_X509_extensions(X509_CERT *cert, const X509_EXTENSIONS *value) {
    X509_TBS_CERT *tbs = tbs_of(cert);
    if (tbs == nullptr) return 1;
    if (value != nullptr) {
        return changed(*cert,
                       replace_by_copy<dup_X509_EXTENSIONS, free_X509_EXTENSIONS>(tbs->extensions, value));
    }
    free_X509_EXTENSIONS(tbs->extensions);
    tbs->extensions = nullptr;
    return changed(*cert, 0);
}

uint32_t set_X509_sig_alg(X509_CERT *cert, const OBJECT_IDENTIFIER *value) {
    if (cert == nullptr) return 1;
    return changed(*cert, replace_by_copy<dup_OBJECT_IDENTIFIER, free_OBJECT_IDENTIFIER>(
                              cert->signatureAlgorithm, value));
}

uint32_t set_X509_sig_value(X509_CERT *cert, const BIT_STRING *value) {
    if (cert == nullptr) return 1;
    return changed(*cert, replace_by_copy<dup_ASN1_STRING, free_ASN1_STRING>(cert->signatureValue, value));
}
