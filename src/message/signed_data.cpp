// SignedData (RFC 2315, section 9), SignedAndEnvelopedData (section 11), DigestedData (section 12) and
// DigestInfo (section 9.4).
#include "message/content_kinds.hpp"

using namespace tlx;

namespace {

/// The element inside [0] of a content info; false when it has none.
bool find_content(const Element &info, Element &content) noexcept {
    Cursor members(info);
    Element type;
    Element wrapper;
    return members.next(type) && members.next(wrapper) && only_child(wrapper, content);
}

/// Content that is signed or digested. Digests of content other than data are over its contents octets as
/// they were received, so that its element is kept.
struct DigestedContent : Passing<P7_CONTENT_INFO> {
    static u32 decode(const Element &element, P7_CONTENT_INFO **out) noexcept {
        P7_CONTENT_INFO *made = nullptr;
        const u32 status = Passing<P7_CONTENT_INFO>::decode(element, &made);
        Owned<P7_CONTENT_INFO> info(made);
        if (!info) return status;
        Element content;
        if (content_type(made) != oid::kPkcs7Data && find_content(element, content)) {
            info->received = make_node(content);
            if (info->received == nullptr) return kFieldFailed;
        }
        *out = info.release();
        return 0;
    }
};

// SignedData ::= SEQUENCE {
//     version Version, digestAlgorithms DigestAlgorithmIdentifiers, contentInfo ContentInfo,
//     certificates [0] IMPLICIT ExtendedCertificatesAndCertificates OPTIONAL,
//     crls [1] IMPLICIT CertificateRevocationLists OPTIONAL, signerInfos SignerInfos }
using Signed = P7_SIGNED_DATA;
constexpr auto kSignedData = record<Signed>(
    between(4, 6), field<Integer>(&Signed::version), field<AlgorithmSetMember>(&Signed::digestAlgorithms),
    field<DigestedContent>(&Signed::contentInfo), signed_members<Signed>(), kept_word(&Signed::detached));

// SignedAndEnvelopedData ::= SEQUENCE {
//     version Version, recipientInfos RecipientInfos, digestAlgorithms DigestAlgorithmIdentifiers,
//     encryptedContentInfo EncryptedContentInfo,
//     certificates [0] IMPLICIT ExtendedCertificatesAndCertificates OPTIONAL,
//     crls [1] IMPLICIT CertificateRevocationLists OPTIONAL, signerInfos SignerInfos }
using Both = P7_SIGNED_AND_ENVELOPED_DATA;
constexpr auto kSignedAndEnvelopedData = record<Both>(
    at_least(5), field<Integer>(&Both::version), field<RecipientInfosMember>(&Both::recipientInfos),
    field<AlgorithmSetMember>(&Both::digestAlgorithms),
    field<Passing<P7_ENCRYPTED_CONTENT_INFO>>(&Both::encryptedContentInfo), signed_members<Both>());

// DigestedData ::= SEQUENCE {
//     version Version, digestAlgorithm DigestAlgorithmIdentifier, contentInfo ContentInfo, digest Digest }
using Digested = P7_DIGESTED_DATA;
constexpr auto kDigestedData = record<Digested>(
    exactly(4), field<Integer>(&Digested::version), field<AlgorithmMember>(&Digested::digestAlgorithm),
    field<DigestedContent>(&Digested::contentInfo), field<Joined>(&Digested::digest));

// DigestInfo ::= SEQUENCE { digestAlgorithm DigestAlgorithmIdentifier, digest Digest }
constexpr auto kDigestInfo =
    record<P7_DIGEST_INFO>(exactly(2), field<AlgorithmMember>(&P7_DIGEST_INFO::digestAlgorithm),
                           field<Joined>(&P7_DIGEST_INFO::digest));

}  // namespace

TLX_DEFINE_RECORD_NEW(P7_SIGNED_DATA)
TLX_DEFINE_RECORD_LIFE(P7_SIGNED_DATA, kSignedData)
TLX_DEFINE_CODEC_ENCODE(P7_SIGNED_DATA, kSignedData)
TLX_DEFINE_RECORD_DECODER(P7_SIGNED_DATA)
TLX_DEFINE_RECORD_ENCODER(P7_SIGNED_DATA)

u32 Codec<P7_SIGNED_DATA>::decode(const Element &element, P7_SIGNED_DATA **out) noexcept {
    return decode_signed(kSignedData, element, out, codes::P7_SIGNED_DATA.decode);
}

TLX_DEFINE_RECORD_NEW(P7_SIGNED_AND_ENVELOPED_DATA)
TLX_DEFINE_RECORD_LIFE(P7_SIGNED_AND_ENVELOPED_DATA, kSignedAndEnvelopedData)
TLX_DEFINE_CODEC_ENCODE(P7_SIGNED_AND_ENVELOPED_DATA, kSignedAndEnvelopedData)
TLX_DEFINE_RECORD_DECODER(P7_SIGNED_AND_ENVELOPED_DATA)
TLX_DEFINE_RECORD_ENCODER(P7_SIGNED_AND_ENVELOPED_DATA)

u32 Codec<P7_SIGNED_AND_ENVELOPED_DATA>::decode(const Element &element,
                                                P7_SIGNED_AND_ENVELOPED_DATA **out) noexcept {
    return decode_signed(kSignedAndEnvelopedData, element, out, codes::P7_SIGNED_AND_ENVELOPED_DATA.decode);
}

TLX_DEFINE_RECORD(P7_DIGESTED_DATA, kDigestedData)
TLX_DEFINE_RECORD(P7_DIGEST_INFO, kDigestInfo)
