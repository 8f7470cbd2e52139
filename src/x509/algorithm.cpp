// AlgorithmIdentifier (RFC 5280, section 4.1.1.2).
#include "x509/algorithm.hpp"

#include "asn1/oid_lookup.hpp"
#include "x509/codecs.hpp"
#include "x509/list.hpp"

using namespace tlx;

namespace {

constexpr auto kMembers = record<X509_ALGO_IDENTIFIER>(codes(0x46260000, 0x46250000), any_count(),
                                                       field<Oid>(&X509_ALGO_IDENTIFIER::algorithm),
                                                       optional<Node>(&X509_ALGO_IDENTIFIER::parameters));

constexpr Codes kSetCodes = codes(0x46280000, 0x46270000);

/// Cipher identifiers of the registry that stand for RSA with PKCS #1 v1.5.
constexpr u32 kRsa = 0x20000000;
constexpr u32 kRsaPkcs1Signature = 0x20000001;

}  // namespace

namespace tlx {

bool decode_algorithm(const Element &sequence, OBJECT_IDENTIFIER *&algorithm,
                      ASN1_UNIT *&parameters) noexcept {
    Cursor members(sequence);
    Element oid;
    if (!members.next(TLX_TAG_OBJECT_IDENTIFIER, oid)) return false;
    Owned<ASN1_UNIT> any;
    if (!members.at_end()) {
        Element element;
        if (!members.next(element) || !members.at_end()) return false;
        any.reset(make_node(element));
        if (!any) return false;
    }
    OBJECT_IDENTIFIER *decoded = decode_oid(oid.contents);
    if (decoded == nullptr) return false;
    free_OBJECT_IDENTIFIER(algorithm);
    free_ASN1_UNIT(parameters);
    algorithm = decoded;
    parameters = any.release();
    return true;
}

void encode_algorithm(Encoder &out, const OBJECT_IDENTIFIER *algorithm, const ASN1_UNIT *parameters,
                      u8 tag) noexcept {
    const auto sequence = out.nest(tag);
    out.oid(algorithm);
    if (parameters != nullptr) out.node(parameters);
}

void encode_signature_algorithm(Encoder &out, const OBJECT_IDENTIFIER *algorithm) noexcept {
    const u32 scheme = get_CipherID_from_OID(algorithm);
    const auto sequence = out.sequence();
    out.oid(algorithm);
    if (scheme == kRsa || scheme == kRsaPkcs1Signature) out.null();
}

}  // namespace tlx

u32 Codec<X509_ALGO_IDENTIFIER>::decode(const Element &element, X509_ALGO_IDENTIFIER **out) noexcept {
    OutRecord<X509_ALGO_IDENTIFIER> record(out, new_X509_ALGO_IDENTIFIER);
    if (!record || !decode_algorithm(element, record->algorithm, record->parameters)) return 0x46260104;
    record.commit();
    return 0;
}

void Codec<X509_ALGO_IDENTIFIER>::encode(Encoder &out, const X509_ALGO_IDENTIFIER *record, u8 tag) noexcept {
    if (record == nullptr) return out.fail();
    encode_algorithm(out, record->algorithm, record->parameters, tag);
}

TLX_DEFINE_RECORD_NEW(X509_ALGO_IDENTIFIER)

void clean_X509_ALGO_IDENTIFIER(X509_ALGO_IDENTIFIER *algorithm) {
    kMembers.clean(algorithm);
}

void free_X509_ALGO_IDENTIFIER(X509_ALGO_IDENTIFIER *algorithm) {
    kMembers.free(algorithm);
}

X509_ALGO_IDENTIFIER *dup_X509_ALGO_IDENTIFIER(const X509_ALGO_IDENTIFIER *algorithm) {
    return kMembers.dup(algorithm, new_X509_ALGO_IDENTIFIER);
}

uint32_t Seq_to_X509_ALGO_IDENTIFIER(const ASN1_UNIT *node, X509_ALGO_IDENTIFIER **out) {
    return decode_node(node, out, statuses(0x46260000));
}

// Null arguments answer 1 here, not a packed status.
uint32_t X509_ALGO_IDENTIFIER_to_Seq(const X509_ALGO_IDENTIFIER *algorithm, ASN1_UNIT **out) {
    if (algorithm == nullptr || out == nullptr) return 1;
    return encode_node(algorithm, out, statuses(0x46250000));
}

OBJECT_IDENTIFIER *get_X509_ALGO_IDENTIFIER_OID(const X509_ALGO_IDENTIFIER *algorithm) {
    return algorithm == nullptr ? nullptr : algorithm->algorithm;
}

ASN1_UNIT *get_X509_ALGO_IDENTIFIER_parameters(const X509_ALGO_IDENTIFIER *algorithm) {
    return algorithm == nullptr ? nullptr : algorithm->parameters;
}

uint32_t set_X509_ALGO_IDENTIFIER_OID(X509_ALGO_IDENTIFIER *algorithm, const OBJECT_IDENTIFIER *oid) {
    if (algorithm == nullptr) return 1;
    return replace_by_copy<dup_OBJECT_IDENTIFIER, free_OBJECT_IDENTIFIER>(algorithm->algorithm, oid);
}

uint32_t set_X509_ALGO_IDENTIFIER_parameters(X509_ALGO_IDENTIFIER *algorithm, const ASN1_UNIT *parameters) {
    if (algorithm == nullptr) return 1;
    if (parameters != nullptr) {
        return replace_by_copy<dup_ASN1_UNIT, free_ASN1_UNIT>(algorithm->parameters, parameters);
    }
    free_ASN1_UNIT(algorithm->parameters);
    algorithm->parameters = nullptr;
    return 0;
}

uint32_t set_X509_ALGO_IDENTIFIER_null(X509_ALGO_IDENTIFIER *algorithm) {
    if (algorithm == nullptr) return 1;
    Encoder null;
    null.null();
    ASN1_UNIT *node = null.to_node();
    if (node == nullptr) return 1;
    free_ASN1_UNIT(algorithm->parameters);
    algorithm->parameters = node;
    return 0;
}

TLX_DEFINE_LIST(X509_ALGO_IDENTIFIERS, X509_ALGO_IDENTIFIER, AlgorithmSet, kSetCodes)
