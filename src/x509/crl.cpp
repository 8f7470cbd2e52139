// Certificate revocation lists, which are kept as they were received.
#include "x509/crl_records.hpp"

using namespace tlx;

namespace {

constexpr auto kCrl = record<X509_CRL>(exactly(3), received(&X509_CRL::received));

// CertificateList ::= SEQUENCE {
//     tbsCertList TBSCertList, signatureAlgorithm AlgorithmIdentifier, signatureValue BIT STRING }
bool has_the_members(const Element &element) noexcept {
    Cursor members(element);
    Element member;
    return members.next(TLX_TAG_SEQUENCE, member) && members.next(TLX_TAG_SEQUENCE, member) &&
           members.next(TLX_TAG_BIT_STRING, member);
}

}  // namespace

TLX_DEFINE_RECORD_NEW(X509_CRL)
TLX_DEFINE_RECORD_LIFE(X509_CRL, kCrl)
TLX_DEFINE_RECORD_DECODER(X509_CRL)
TLX_DEFINE_RECORD_ENCODER(X509_CRL)
TLX_DEFINE_LIST(X509_CRLS, X509_CRL, Crls)

// By hand because the members are not taken out.
u32 Codec<X509_CRL>::decode(const Element &element, X509_CRL **out) noexcept {
    if (count_children(element.contents) != 3) return 0x4802002B;
    if (!has_the_members(element)) return 0x48020104;
    Owned<X509_CRL> crl(new_X509_CRL());
    if (!crl) return 0x48020104;
    crl->received = keep_received(element);
    if (crl->received == nullptr) return 0x48020104;
    deliver(std::move(crl), out);
    return 0;
}

void Codec<X509_CRL>::encode(Encoder &out, const X509_CRL *record, u8 /*tag*/) noexcept {
    if (record == nullptr || record->received == nullptr) return out.fail();
    for (const TLX_RECEIVED *part = record->received; part != nullptr; part = part->next) {
        out.raw(part->bytes());
    }
}
