// Typed values from contents octets. Every function returns a new record that the caller owns, or null when
// the contents are not acceptable or an allocation fails.
#pragma once

#include <tlxpki/types.h>

#include <string_view>

#include "der/element.hpp"

namespace tlx {

/// An unsigned magnitude; null for empty contents.
BIGINT *decode_integer(Bytes contents) noexcept;
/// A string record of the given type holding the contents as they are.
ASN1_STRING *decode_string(i32 type, Bytes contents) noexcept;
/// The unused-bits octet goes into `extra`; null for empty contents.
BIT_STRING *decode_bit_string(Bytes contents) noexcept;
/// Dotted text.
OBJECT_IDENTIFIER *decode_oid(Bytes contents) noexcept;
/// A UTCTime (23) or GeneralizedTime (24); `extra` is set by the length of the text.
ASN1_STRING *decode_time(i32 type, Bytes contents) noexcept;
/// Any element as a string record whose type is the identifier octet.
ASN1_STRING *decode_any_string(const Element &element) noexcept;
/// A string record of the given type with the contents of a string, which BER may cut into segments. Null
/// also when a segment is of another type or segments are nested too deep.
ASN1_STRING *decode_joined(i32 type, const Element &element) noexcept;
/// A node holding a copy of the element.
ASN1_UNIT *make_node(const Element &element) noexcept;
/// A node with the element's identifier and length octets, and no value; null when memory runs out.
ASN1_UNIT *make_header(const Element &element) noexcept;
/// Moves the element's contents to the front of the node's value, where the element may lie, and puts two
/// zeros after them: end-of-contents octets of an indefinite length.
void place_contents(ASN1_UNIT &node, const Element &element) noexcept;
/// A string record with a copy of the text.
ASN1_STRING *new_string(i32 type, Bytes octets) noexcept;

/// 1 for a time text of a length that ends in "Z", 0 for one with an offset and for any other.
i32 time_ends_in_z(u32 tag, std::size_t length) noexcept;

/// The octets of a string record; empty for a null record, null data or a length below 1.
inline Bytes octets_of(const ASN1_STRING *string) noexcept {
    if (string == nullptr || string->data == nullptr || string->length <= 0) return {};
    return {string->data, static_cast<std::size_t>(string->length)};
}
/// The same as characters: the dotted text of an object identifier.
inline std::string_view text_of(const ASN1_STRING *string) noexcept {
    const Bytes octets = octets_of(string);
    return {reinterpret_cast<const char *>(octets.data()), octets.size()};
}

/// The contents length of a node: what its length octets give, or the distance to its end-of-contents octets.
/// False for a null or empty node and for a refused length.
[[nodiscard]] bool read_node_length(const ASN1_UNIT *node, std::size_t &length) noexcept;
/// A view of a finished node, which has no `whole`: the parts of a node do not lie side by side. False for a
/// null or empty node and for one whose length cannot be read.
[[nodiscard]] bool view_node(const ASN1_UNIT *node, Element &element) noexcept;
/// The same for a decoder of children: a node that is not started has none.
[[nodiscard]] bool view_container(const ASN1_UNIT *node, Element &element) noexcept;

/// Decodes an element where it lies: decoders only read their node, which need not own its parts. Returns the
/// decoder's status.
[[nodiscard]] u32 decode_in_place(const Element &element, ASN1_DECODER decoder, void **out) noexcept;

}  // namespace tlx
