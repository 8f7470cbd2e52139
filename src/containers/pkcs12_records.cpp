// PFX, MacData, AuthenticatedSafe, SafeContents and the bags of PKCS #12 (RFC 7292, section 4).
#include "containers/pkcs12_records.hpp"

using namespace tlx;

void tlx::SecretNode::free(type *node) noexcept {
    std::size_t length = 0;
    if (node != nullptr && read_node_length(node, length)) tlx_wipe(node->value, length);
    Node::free(node);
}

namespace {

/// An INTEGER that files in circulation also write without octets, which stands for 0.
struct IterationCount : Integer {
    static u32 decode(const Element &element, type **out) noexcept {
        if (element.contents.empty()) return stored(*out = new_BIGINT());
        return Integer::decode(element, out);
    }
};

// MacData ::= SEQUENCE {
//     mac DigestInfo, macSalt OCTET STRING, iterations INTEGER DEFAULT 1 }
// DigestInfo ::= SEQUENCE { digestAlgorithm AlgorithmIdentifier, digest OCTET STRING }
constexpr auto kAlgorithm = group(kSequence, field<Oid>(&P12_MAC_DATA::digestAlgorithm),
                                  trailing<Node>(&P12_MAC_DATA::digestParameters))
                                .exactly();
constexpr auto kMacData = record<P12_MAC_DATA>(
    between(2, 3), group(kSequence, kAlgorithm, field<Joined>(&P12_MAC_DATA::mac)).exactly(),
    field<Joined>(&P12_MAC_DATA::macSalt), trailing<IterationCount>(&P12_MAC_DATA::iterations));

// PFX ::= SEQUENCE {
//     version INTEGER { v3(3) }, authSafe ContentInfo, macData MacData OPTIONAL }
constexpr auto kPfx = record<P12_PFX>(between(2, 3), field<Integer>(&P12_PFX::version),
                                      field<Nested<P7_CONTENT_INFO>>(&P12_PFX::authSafe),
                                      trailing<Nested<P12_MAC_DATA>>(&P12_PFX::macData));

// SafeBag ::= SEQUENCE {
//     bagId OBJECT IDENTIFIER, bagValue [0] EXPLICIT ANY DEFINED BY bagId,
//     bagAttributes SET OF PKCS12Attribute OPTIONAL }
/// Some programs write the attributes without an entry, which X509_ATTRIBUTES refuses.
using BagAttributes = SetOf<Nested<X509_ATTRIBUTE>>;
constexpr auto kSafeBag = record<P12_SAFE_BAG>(between(2, 3), field<Oid>(&P12_SAFE_BAG::bagId),
                                               explicitly<SecretNode>(0, &P12_SAFE_BAG::bagValue).required(),
                                               trailing<BagAttributes>(&P12_SAFE_BAG::bagAttributes));

/// An OCTET STRING with its segments joined, or a value of any other type as received.
struct BagValue : Verbatim {
    static u32 decode(const Element &element, type **out) noexcept {
        if ((element.tag & ~u32{kConstructed}) == TLX_TAG_OCTET_STRING) return Joined::decode(element, out);
        return Verbatim::decode(element, out);
    }
};

/// An identifier and a value [0] EXPLICIT ANY DEFINED BY it.
template <typename Kind, typename R>
constexpr auto typed_value(OBJECT_IDENTIFIER *R::*type, ASN1_STRING *R::*value) noexcept {
    return record<R>(exactly(2), field<Oid>(type), explicitly<Kind>(0, value).required());
}

// CertBag ::= SEQUENCE { certId OBJECT IDENTIFIER, certValue [0] EXPLICIT ANY DEFINED BY certId }
constexpr auto kCertBag = typed_value<BagValue>(&P12_CERT_BAG::certId, &P12_CERT_BAG::certValue);
// CRLBag ::= SEQUENCE { crlId OBJECT IDENTIFIER, crlValue [0] EXPLICIT ANY DEFINED BY crlId }
constexpr auto kCrlBag = typed_value<BagValue>(&P12_CRL_BAG::crlId, &P12_CRL_BAG::crlValue);
// SecretBag ::= SEQUENCE { secretTypeId OBJECT IDENTIFIER, secretValue [0] EXPLICIT ANY DEFINED BY
// secretTypeId }
constexpr auto kSecretBag =
    typed_value<Secret<BagValue>>(&P12_SECRET_BAG::secretTypeId, &P12_SECRET_BAG::secretValue);

}  // namespace

TLX_DEFINE_RECORD(P12_MAC_DATA, kMacData)
TLX_DEFINE_RECORD(P12_PFX, kPfx)
TLX_DEFINE_LIST(P12_AUTHENTICATED_SAFE, P7_CONTENT_INFO, AuthenticatedSafe)
TLX_DEFINE_RECORD(P12_SAFE_BAG, kSafeBag)
TLX_DEFINE_LIST(P12_SAFE_CONTENTS, P12_SAFE_BAG, SafeContents)
TLX_DEFINE_RECORD(P12_CERT_BAG, kCertBag)
TLX_DEFINE_RECORD(P12_CRL_BAG, kCrlBag)
TLX_DEFINE_RECORD(P12_SECRET_BAG, kSecretBag)
