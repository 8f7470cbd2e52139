// How the records of certificates are read and written inside other records.
//
// Records have a Codec (Nested<X509_CERT> is a field or list item of them). Lists are all of the type STACK,
// so each has a value kind of its own: field<Name>(...), optional<Extensions>(...), implicit<Attributes>(0,
// ...).
#pragma once

#include <tlxpki/x509.h>
#include <tlxpki/x509_algorithm.h>
#include <tlxpki/x509_attribute.h>
#include <tlxpki/x509_extension.h>
#include <tlxpki/x509_name.h>
#include <tlxpki/x509_pubkey.h>

#include "der/record.hpp"

TLX_OWNS(ASYMMETRIC_KEY);
TLX_OWNS(X509_NAME_CHILD);
TLX_OWNS(X509_ATTRIBUTE_DATA);
TLX_DECLARE_CODEC(X509_ALGO_IDENTIFIER);
TLX_DECLARE_CODEC(X509_ATTRIBUTE);
TLX_DECLARE_CODEC(X509_EXTENSION);
TLX_DECLARE_CODEC(X509_PUBKEY);
TLX_DECLARE_CODEC(X509_TIME);
TLX_DECLARE_CODEC(X509_VALIDITY);
TLX_DECLARE_CODEC(X509_TBS_CERT);
TLX_DECLARE_CODEC(X509_CERT);

namespace tlx {

/// Name. Decoding gives a new name; a status of Seq_to_X509_NAME.
struct Name {
    using type = X509_NAME;
    static constexpr u8 tag = kSequence;
    static u32 decode(const Element &element, type **out) noexcept;
    static void encode(Encoder &out, const type *value, u8 as = tag) noexcept;
    static type *dup(const type *value) noexcept { return dup_X509_NAME(value); }
    static void free(type *value) noexcept { free_X509_NAME(value); }
};
using OwnedName = std::unique_ptr<X509_NAME, FreeWith<free_X509_NAME>>;

/// SET OF Attribute. Decoding gives a new list with at least one attribute; a status of
/// Seq_to_X509_ATTRIBUTES. Encoding takes an empty list, too.
struct Attributes {
    using type = X509_ATTRIBUTES;
    static constexpr u8 tag = kSet;
    static u32 decode(const Element &element, type **out) noexcept;
    static void encode(Encoder &out, const type *value, u8 as = tag) noexcept;
    static type *dup(const type *value) noexcept { return dup_X509_ATTRIBUTES(value); }
    static void free(type *value) noexcept { free_X509_ATTRIBUTES(value); }
};
using OwnedAttributes = std::unique_ptr<X509_ATTRIBUTES, FreeWith<free_X509_ATTRIBUTES>>;

using Extensions = List<Nested<X509_EXTENSION>>;
using OwnedExtensions = std::unique_ptr<X509_EXTENSIONS, FreeWith<free_X509_EXTENSIONS>>;

/// SET OF AlgorithmIdentifier.
using AlgorithmSet = List<Nested<X509_ALGO_IDENTIFIER>, kSet>;

/// SEQUENCE OF Certificate, and SET OF Certificate; a status of Seq_to_X509_CERT, whose 1 is kFieldFailed.
using Certificates = List<NestedWithStatus<X509_CERT>>;
using CertificateSet = List<NestedWithStatus<X509_CERT>, kSet>;

/// Writes the to-be-signed part, for example to digest it. A status of X509_TBS_CERT_to_Seq; `out` is of no
/// use after a failure.
[[nodiscard]] u32 encode_tbs(Encoder &out, const X509_TBS_CERT *tbs) noexcept;

/// Writes the AlgorithmIdentifier of a signature, of which only the identifier is kept: with NULL parameters
/// for RSA with PKCS #1 v1.5 (RFC 8017, appendix A.2.4; RFC 3279, section 2.2.1), without parameters for
/// everything else.
void encode_signature_algorithm(Encoder &out, const OBJECT_IDENTIFIER *algorithm) noexcept;

}  // namespace tlx
