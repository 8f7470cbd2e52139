// SignedData, SignerInfo and EncapsulatedContentInfo (RFC 5652, section 5), and DigestedData (section 7).
#include "message/cms_records.hpp"

using namespace tlx;

namespace {

// eContent [0] EXPLICIT OCTET STRING OPTIONAL
/// By hand because PKCS #7 writes an element of another type in its place (RFC 5652, section 5.2.1).
struct EncapsulatedContent {
    using R = CMS_ENCAP_CONTENT_INFO;
    static constexpr auto kOctets = explicitly<Exact<Joined>>(0, &R::eContent);
    static constexpr auto kOther = explicitly<Node>(0, &R::otherContent);

    static void clear(R &info) noexcept {
        kOctets.clear(info);
        kOther.clear(info);
    }
    [[nodiscard]] static bool copy(R &to, const R &from) noexcept {
        return kOctets.copy(to, from) && kOther.copy(to, from);
    }
    [[nodiscard]] static u32 read(Cursor &children, R &info) noexcept {
        clear(info);
        Element wrapper;
        Element content;
        if (children.at_end()) return 0;
        if (!children.next(wrapper) || !kOther.accepts(wrapper)) return kFieldFailed;
        if (!only_child(wrapper, content)) return kFieldFailed;
        return has_own_tag<Joined>(content.tag) ? kOctets.take(wrapper, info) : kOther.take(wrapper, info);
    }
    static void write(Encoder &out, const R &info) noexcept {
        if (info.eContent != nullptr && info.otherContent != nullptr) return out.fail();
        kOctets.write(out, info);
        kOther.write(out, info);
    }
};

// EncapsulatedContentInfo ::= SEQUENCE {
//     eContentType ContentType, eContent [0] EXPLICIT OCTET STRING OPTIONAL }
using Encap = CMS_ENCAP_CONTENT_INFO;
constexpr auto kEncap = record<Encap>(between(1, 2), exact<Oid>(&Encap::eContentType), EncapsulatedContent{});

// SignerInfo ::= SEQUENCE {
//     version CMSVersion, sid SignerIdentifier, digestAlgorithm DigestAlgorithmIdentifier,
//     signedAttrs [0] IMPLICIT SignedAttributes OPTIONAL, signatureAlgorithm SignatureAlgorithmIdentifier,
//     signature SignatureValue, unsignedAttrs [1] IMPLICIT UnsignedAttributes OPTIONAL }
using Signer = CMS_SIGNER_INFO;
constexpr auto kSignerInfo = record<Signer>(
    between(5, 7), cms_version(&Signer::version), field<PassingChoice<CMS_CERT_IDENTIFIER>>(&Signer::sid),
    exact<AlgorithmMember>(&Signer::digestAlgorithm),
    attributes_as_received(0, &Signer::signedAttrs, &Signer::receivedAttributes),
    exact<AlgorithmMember>(&Signer::signatureAlgorithm), exact<Joined>(&Signer::signature),
    implicit<Attributes>(1, &Signer::unsignedAttrs));

// SignedData ::= SEQUENCE {
//     version CMSVersion, digestAlgorithms DigestAlgorithmIdentifiers,
//     encapContentInfo EncapsulatedContentInfo, certificates [0] IMPLICIT CertificateSet OPTIONAL,
//     crls [1] IMPLICIT RevocationInfoChoices OPTIONAL, signerInfos SignerInfos }
using Signed = CMS_SIGNED_DATA;
constexpr auto kSignedData = record<Signed>(
    between(4, 6), cms_version(&Signed::version), exact<AlgorithmSetMember>(&Signed::digestAlgorithms),
    exact<Passing<Encap>>(&Signed::encapContentInfo), implicit<CertChoicesMember>(0, &Signed::certificates),
    implicit<RevocationInfosMember>(1, &Signed::crls), exact<CmsSignerInfosMember>(&Signed::signerInfos));

// DigestedData ::= SEQUENCE {
//     version CMSVersion, digestAlgorithm DigestAlgorithmIdentifier,
//     encapContentInfo EncapsulatedContentInfo, digest Digest }
using Digested = CMS_DIGESTED_DATA;
constexpr auto kDigestedData = record<Digested>(
    exactly(4), cms_version(&Digested::version), exact<AlgorithmMember>(&Digested::digestAlgorithm),
    exact<Passing<Encap>>(&Digested::encapContentInfo), exact<Joined>(&Digested::digest));

}  // namespace

TLX_DEFINE_RECORD(CMS_ENCAP_CONTENT_INFO, kEncap)
TLX_DEFINE_RECORD(CMS_SIGNER_INFO, kSignerInfo)
TLX_DEFINE_LIST(CMS_SIGNER_INFOS, CMS_SIGNER_INFO, CmsSignerInfos)
TLX_DEFINE_RECORD(CMS_SIGNED_DATA, kSignedData)
TLX_DEFINE_RECORD(CMS_DIGESTED_DATA, kDigestedData)
