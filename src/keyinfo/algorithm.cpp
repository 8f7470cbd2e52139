// AlgorithmIdentifier (RFC 5280, section 4.1.1.2).
#include <algorithm>

#include "asn1/oid_lookup.hpp"
#include "der/list_items.hpp"
#include "keyinfo/digest_identifier.hpp"
#include "keyinfo/key_curve.hpp"

using namespace tlx;

namespace {

// AlgorithmIdentifier ::= SEQUENCE { algorithm OBJECT IDENTIFIER, parameters ANY DEFINED BY algorithm
// OPTIONAL }
constexpr auto kAlgorithm =
    record<X509_ALGO_IDENTIFIER>(as_described(), field<Oid>(&X509_ALGO_IDENTIFIER::algorithm),
                                 trailing<Node>(&X509_ALGO_IDENTIFIER::parameters))
        .but(OnFailure::unchanged);

/// Cipher identifiers of the registry that stand for RSA with PKCS #1 v1.5.
constexpr u32 kRsa = 0x20000000;
constexpr u32 kRsaPkcs1Signature = 0x20000001;

}  // namespace

u32 SignatureOid::decode(const Element &element, OBJECT_IDENTIFIER **out) noexcept {
    Element oid;
    if (!Cursor(element).next(TLX_TAG_OBJECT_IDENTIFIER, oid)) return kFieldFailed;
    return stored(*out = decode_oid(oid.contents));
}

void SignatureOid::encode(Encoder &out, const OBJECT_IDENTIFIER *algorithm, u8 as) noexcept {
    const u32 scheme = get_CipherID_from_OID(algorithm);
    const auto sequence = out.nest(as);
    out.oid(algorithm);
    if (scheme == kRsa || scheme == kRsaPkcs1Signature) out.null();
}

static Owned<X509_ALGO_IDENTIFIER> with_null(Owned<OBJECT_IDENTIFIER> identifier) noexcept {
    Owned<X509_ALGO_IDENTIFIER> algorithm(new_X509_ALGO_IDENTIFIER());
    if (!algorithm || !identifier) return nullptr;
    algorithm->algorithm = identifier.release();
    return set_X509_ALGO_IDENTIFIER_null(algorithm.get()) == 0 ? std::move(algorithm) : nullptr;
}

Owned<X509_ALGO_IDENTIFIER> tlx::algorithm_with_null(u32 row) noexcept {
    return with_null(oid_of_row(static_cast<i32>(row)));
}

Owned<X509_ALGO_IDENTIFIER> tlx::algorithm_with_null(const char *dotted) noexcept {
    return with_null(Owned<OBJECT_IDENTIFIER>(text_to_OBJECT_IDENTIFIER(dotted)));
}

Owned<X509_ALGO_IDENTIFIER> tlx::digest_algorithm(u32 digest_id) noexcept {
    const auto known = digest_identifiers();
    const auto found = std::ranges::find(known, digest_id, &DigestIdentifier::digest_id);
    if (found == known.end()) return nullptr;
    return with_null(Owned<OBJECT_IDENTIFIER>(decode_oid(octets_of_oid(found->oid))));
}

TLX_DEFINE_RECORD(X509_ALGO_IDENTIFIER, kAlgorithm)

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

TLX_DEFINE_LIST(X509_ALGO_IDENTIFIERS, X509_ALGO_IDENTIFIER, AlgorithmSet)
