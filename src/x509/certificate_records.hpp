// How the records of certificates are read and written inside other records.
//
// Records have a Codec (Nested<X509_CERT> is a field or list item of them). Lists are all of the type STACK,
// so each has a value kind of its own: field<Name>(...), optional<Extensions>(...), implicit<Attributes>(0,
// ...).
#pragma once

#include <tlxpki/x509.h>
#include <tlxpki/x509_attribute.h>
#include <tlxpki/x509_extension.h>
#include <tlxpki/x509_name.h>

#include "keyinfo/key_records.hpp"

TLX_OWNS(X509_NAME_CHILD);
TLX_OWNS(X509_ATTRIBUTE_DATA);
TLX_DECLARE_CODEC(X509_ATTRIBUTE);
TLX_DECLARE_CODEC(X509_EXTENSION);
TLX_DECLARE_CODEC(X509_TIME);
TLX_DECLARE_CODEC(X509_VALIDITY);
TLX_DECLARE_CODEC(X509_TBS_CERT);
TLX_DECLARE_CODEC(X509_CERT);

namespace tlx {

// AttributeTypeAndValue ::= SEQUENCE { type OBJECT IDENTIFIER, value ANY DEFINED BY type }
/// The fields of it; how many children it may have depends on where it lies.
constexpr auto type_and_value(Count count) noexcept {
    return record<X509_NAME_CHILD>(count, field<Oid>(&X509_NAME_CHILD::type),
                                   field<AnyValue>(&X509_NAME_CHILD::data));
}

/// What every kind of an entry of a name shares.
struct NameEntry {
    using type = X509_NAME_CHILD;
    static type *dup(const type *value) noexcept { return dup_X509_NAME_CHILD(value); }
    static void free(type *value) noexcept { free_X509_NAME_CHILD(value); }
};

// RelativeDistinguishedName ::= SET SIZE (1..MAX) OF AttributeTypeAndValue
/// Of several members only the first is kept, because a name has no level for them.
struct FirstOfRdn : NameEntry {
    static constexpr u8 tag = kSet;
    static u32 decode(const Element &element, type **out) noexcept {
        Element sequence;
        if (!Cursor(element).next(TLX_TAG_SEQUENCE, sequence)) return kFieldFailed;
        return read_record(type_and_value(beginning()), sequence, out);
    }
    static void encode(Encoder &out, const type *value, u8 as) noexcept {
        if (value == nullptr) return out.fail();
        const auto set = out.nest(as);
        type_and_value(beginning()).write(out, *value);
    }
};

// Name ::= SEQUENCE OF RelativeDistinguishedName
using Name = List<FirstOfRdn>;
using OwnedName = std::unique_ptr<X509_NAME, FreeWith<free_X509_NAME>>;

/// Writes one value of an attribute, an X509_ATTRIBUTE_DATA.
void encode_attribute_value(Encoder &out, const void *value) noexcept;

/// SET OF Attribute; the statuses of X509_ATTRIBUTES. Decoding gives a new list with at least one attribute.
/// Encoding also takes an empty list.
struct Attributes : SetOf<Nested<X509_ATTRIBUTE>> {
    static u32 decode(const Element &element, X509_ATTRIBUTES **out) noexcept;
    static void encode(Encoder &out, const X509_ATTRIBUTES *value, u8 as = kSet) noexcept;
};
using OwnedAttributes = std::unique_ptr<X509_ATTRIBUTES, FreeWith<free_X509_ATTRIBUTES>>;

using Extensions = List<Nested<X509_EXTENSION>>;
using OwnedExtensions = std::unique_ptr<X509_EXTENSIONS, FreeWith<free_X509_EXTENSIONS>>;

/// A certificate that is written as it was received, as long as its octets are kept: a record keeps less of
/// some names than their certificates say.
struct WholeCertificate : Nested<X509_CERT> {
    static void encode(Encoder &out, const X509_CERT *value, u8 as) noexcept {
        if (value == nullptr || value->received == nullptr) return Nested::encode(out, value, as);
        for (const TLX_RECEIVED *part = value->received; part != nullptr; part = part->next) {
            out.raw(part->bytes());
        }
    }
};

using Certificates = List<Nested<X509_CERT>>;
/// SET OF Certificate; the statuses of X509_CERTIFICATES.
using CertificateSet = PassingList<SetOf<Nested<X509_CERT>>, codes::X509_CERTIFICATES>;

/// Writes the to-be-signed part, for example to digest it. A status of X509_TBS_CERT_to_Seq; `out` is of no
/// use after a failure.
[[nodiscard]] u32 encode_tbs(Encoder &out, const X509_TBS_CERT *tbs) noexcept;

/// Drops the octets that a certificate was decoded from: whoever changes it does so.
void forget_received(X509_CERT &cert) noexcept;
/// Compares them with what is written back, of which the to-be-signed part is at hand. A status of
/// check_X509_received.
[[nodiscard]] u32 compare_received(const X509_CERT &cert, Bytes signed_part) noexcept;

/// Replaces a time by a copy. False when memory runs out; the time stays then.
[[nodiscard]] bool copy_time(X509_TIME &to, const X509_TIME &from) noexcept;
/// True when the text is a time whose date the calendar has.
[[nodiscard]] bool has_existing_date(const X509_TIME &time) noexcept;

}  // namespace tlx
