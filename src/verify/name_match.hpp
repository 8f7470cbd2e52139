// Comparison of distinguished names (RFC 5280, section 7.1). A name is the contents of its SEQUENCE, and was
// read by is_name().
//
// Attributes are equal when their types and values are. PrintableString, UTF8String and IA5String are
// compared without regard to the case of ASCII letters, spaces at the ends and the length of spaces inside;
// PrintableString and UTF8String are one type. Values of other types are compared octet by octet. The
// attributes of a relative name may stand in any order.
#pragma once

#include "der/sip_hash.hpp"
#include "verify/oid.hpp"
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
[[nodiscard]] inline u64 hash_of_name(const SipHash::Key &key, Bytes name) noexcept {
    SipHash hash(key);
    hash_name(hash, key, name);
    return hash.value();
}

/// One attribute of a name.
struct AttributeView {
    Bytes type;
    Element value;
};
/// Takes the next attribute of a relative name that is_name() has read.
void next_attribute(StrictCursor &relative_name, AttributeView &attribute) noexcept;

/// Whether a condition holds for one of the addresses in a name: emailAddress, 1.2.840.113549.1.9.1.
template <typename Condition>
[[nodiscard]] bool has_address(Bytes name, Condition condition) noexcept {
    StrictCursor names(name);
    Bytes relative_name;
    while (!names.at_end() && names.next(id::kSet, relative_name)) {
        StrictCursor attributes(relative_name);
        while (!attributes.at_end()) {
            AttributeView attribute;
            next_attribute(attributes, attribute);
            if (is_oid_of(attribute.type, "\x2A\x86\x48\x86\xF7\x0D\x01\x09\x01") &&
                condition(attribute.value.contents)) {
                return true;
            }
        }
    }
    return false;
}

}  // namespace tlx
