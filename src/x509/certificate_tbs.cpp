// TBSCertificate (RFC 5280, section 4.1.2).
#include <tlxpki/ber.h>
#include <tlxpki/objects.h>

#include "x509/certificate_records.hpp"

using namespace tlx;

namespace {

/// extensions [3] EXPLICIT Extensions OPTIONAL. By hand because five bits of the identifier do not count:
/// class and the lower half of the number tell. End-of-contents octets in its place mean that it is absent;
/// anything else there is refused, issuerUniqueID [1] and subjectUniqueID [2] included.
struct ExtensionsField : Field<X509_TBS_CERT, Extensions> {
    [[nodiscard]] u32 read(Cursor &children, X509_TBS_CERT &record) const noexcept {
        clear(record);
        if (children.at_end() || (children.peek_tag() == 0 && count_children(children.rest()) == 0)) return 0;
        Element wrapper;
        Element sequence;
        const bool is_wrapper =
            children.next(wrapper) && wrapper.context_specific() && (wrapper.tag & 0x0F) == number;
        if (!is_wrapper || !Cursor(wrapper).next(TLX_TAG_SEQUENCE, sequence)) return kFieldFailed;
        return Extensions::decode(sequence, &record.extensions);
    }
};

// TBSCertificate ::= SEQUENCE {
//     version         [0] EXPLICIT INTEGER DEFAULT v1, serialNumber INTEGER, signature AlgorithmIdentifier,
//     issuer          Name, validity Validity, subject Name, subjectPublicKeyInfo SubjectPublicKeyInfo,
//     issuerUniqueID  [1] IMPLICIT BIT STRING OPTIONAL, subjectUniqueID [2] IMPLICIT BIT STRING OPTIONAL,
//     extensions      [3] EXPLICIT Extensions OPTIONAL }
using Tbs = X509_TBS_CERT;
constexpr auto kTbs =
    record<Tbs>(at_least(6, Rest::unread), number(&Tbs::version).in(0).or_else(0),
                field<Integer>(&Tbs::serialNumber), field<SignatureOid>(&Tbs::signature),
                field<Name>(&Tbs::issuer), field<Nested<X509_VALIDITY>>(&Tbs::validity),
                field<Name>(&Tbs::subject), field<Nested<X509_PUBKEY>>(&Tbs::subjectPublicKeyInfo),
                kept<Bits>(&Tbs::issuerUniqueID), kept<Bits>(&Tbs::subjectUniqueID),
                ExtensionsField{explicitly<Extensions>(3, &Tbs::extensions)})
        .but(OnFailure::freed);

/// Status of the first missing member, in the order in which callers are told.
u32 find_missing_member(const X509_TBS_CERT *tbs) noexcept {
    if (tbs == nullptr) return 0x46120049;
    if (tbs->serialNumber == nullptr) return 0x4612010A;
    if (text_of(tbs->signature).empty()) return 0x46120108;
    if (tbs->issuer == nullptr) return 0x46120105;
    if (tbs->validity == nullptr) return 0x46120107;
    if (tbs->subject == nullptr) return 0x46120106;
    if (tbs->subjectPublicKeyInfo == nullptr) return 0x46120109;
    return 0;
}

}  // namespace

u32 tlx::encode_tbs(Encoder &out, const X509_TBS_CERT *tbs) noexcept {
    if (const u32 status = find_missing_member(tbs); status != 0) return status;
    kTbs.write(out, *tbs);
    return out.ok() ? 0 : 0x46120103;
}

TLX_DEFINE_RECORD_NEW(X509_TBS_CERT)
TLX_DEFINE_RECORD_LIFE(X509_TBS_CERT, kTbs)
TLX_DEFINE_CODEC_DECODE(X509_TBS_CERT, kTbs)
TLX_DEFINE_RECORD_DECODER(X509_TBS_CERT)

// By hand because a missing member has a status of its own, and an empty algorithm counts as missing.
void Codec<X509_TBS_CERT>::encode(Encoder &out, const X509_TBS_CERT *record, u8 /*tag*/) noexcept {
    if (encode_tbs(out, record) != 0) out.fail();
}

uint32_t X509_TBS_CERT_to_Seq(const X509_TBS_CERT *tbs, ASN1_UNIT **out) {
    if (tbs == nullptr || out == nullptr) return 0x46120049;
    Encoder encoder;
    if (const u32 status = encode_tbs(encoder, tbs); status != 0) return status;
    return hand_over(encoder, out) ? 0 : 0x46120103;
}
