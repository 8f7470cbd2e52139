// How the records of algorithms and keys are read and written inside other records.
#pragma once

#include <tlxpki/pkcs1.h>
#include <tlxpki/x509_algorithm.h>
#include <tlxpki/x509_pubkey.h>

#include "der/record.hpp"

TLX_OWNS(ASYMMETRIC_KEY);
TLX_OWNS(RSA_UNIT);
TLX_DECLARE_CODEC(X509_ALGO_IDENTIFIER);
TLX_DECLARE_CODEC(X509_PUBKEY);
TLX_DECLARE_CODEC(PKCS1_RSA_PUBLIC_KEY);
TLX_DECLARE_CODEC(PKCS1_RSA_PRIVATE_KEY);

namespace tlx {

using AlgorithmSet = SetOf<Nested<X509_ALGO_IDENTIFIER>>;
/// SET OF AlgorithmIdentifier inside another record; the statuses of X509_ALGO_IDENTIFIERS.
using AlgorithmSetMember = PassingList<AlgorithmSet, codes::X509_ALGO_IDENTIFIERS>;

/// An algorithm of the registry with NULL parameters; null for a row without an identifier and when memory
/// runs out.
[[nodiscard]] Owned<X509_ALGO_IDENTIFIER> algorithm_with_null(u32 row) noexcept;
/// The same of an identifier as text.
[[nodiscard]] Owned<X509_ALGO_IDENTIFIER> algorithm_with_null(const char *dotted) noexcept;

/// An AlgorithmIdentifier whose members lie in the record around it.
template <typename R>
constexpr auto algorithm_members(OBJECT_IDENTIFIER *R::*algorithm, ASN1_UNIT *R::*parameters) noexcept {
    return group(kSequence, field<Oid>(algorithm), trailing<Node>(parameters)).exactly();
}

/// The AlgorithmIdentifier of a signature, of which only the identifier is kept. It is written with NULL
/// parameters for RSA with PKCS #1 v1.5 (RFC 8017, appendix A.2.4; RFC 3279, section 2.2.1), without
/// parameters for everything else.
struct SignatureOid : StringRecord {
    static constexpr u8 tag = kSequence;
    static u32 decode(const Element &element, OBJECT_IDENTIFIER **out) noexcept;
    static void encode(Encoder &out, const OBJECT_IDENTIFIER *algorithm, u8 as) noexcept;
};

/// A key of any kind, which is held beside its encoding.
struct KeyUnit {
    using type = ASYMMETRIC_KEY;
    static type *dup(const type *key) noexcept { return dup_ASYMMETRIC_KEY(key); }
    static void free(type *key) noexcept { free_ASYMMETRIC_KEY(key); }
};

}  // namespace tlx
