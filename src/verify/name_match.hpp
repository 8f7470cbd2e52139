// Comparison of distinguished names (RFC 5280, section 7.1). A name is the contents of its SEQUENCE, and was
// read by is_name().
//
// Attributes are equal when their types and values are. PrintableString, UTF8String and IA5String are
// compared without regard to the case of ASCII letters, spaces at the ends and the length of spaces inside;
// PrintableString and UTF8String are one type. Values of other types are compared octet by octet. The
// attributes of a relative name may stand in any order.
#pragma once

#include "der/sip_hash.hpp"
#include "verify/strict_cursor.hpp"

namespace tlx {

/// No relative name that is accepted has more attributes.
constexpr u32 kMostAttributes = 16;

// RDNSequence ::= SEQUENCE OF RelativeDistinguishedName
// RelativeDistinguishedName ::= SET SIZE (1..MAX) OF AttributeTypeAndValue
// AttributeTypeAndValue ::= SEQUENCE { type OBJECT IDENTIFIER, value ANY DEFINED BY type }
[[nodiscard]] bool is_name(Bytes name) noexcept;

[[nodiscard]] bool are_equal_names(Bytes a, Bytes b) noexcept;
/// Whether a name begins with the relative names of another (RFC 5280, section 4.2.1.10).
[[nodiscard]] bool is_name_within(Bytes name, Bytes base) noexcept;
/// Adds a name to a hash; equal names are added alike.
void hash_name(SipHash &hash, const SipHash::Key &key, Bytes name) noexcept;

/// One attribute of a name.
struct AttributeView {
    Bytes type;
    Element value;
};
/// Takes the next attribute of a relative name that is_name() has read.
void next_attribute(StrictCursor &relative_name, AttributeView &attribute) noexcept;

}  // namespace tlx
