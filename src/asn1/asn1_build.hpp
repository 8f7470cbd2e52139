// What the BER and DER builders share.
#pragma once

#include <tlxpki/types.h>

#include "der/typed_element.hpp"

namespace tlx {

/// A value as a caller describes it. `form` plays no part for finished nodes.
struct TypedValue {
    u32 tag;
    const void *value;
    u32 len;
    LengthForm form;
};

/// An identifier argument that leaves the node's identifier alone.
constexpr u32 kKeepIdentifier = 0x100;

/// Makes `node` the element, whatever it held. False when memory runs out or the value cannot be written;
/// the node is unchanged then.
[[nodiscard]] bool fill_node(ASN1_UNIT *node, const TypedElement &element) noexcept;

/// encodeToBER, and the identifier is replaced. On failure the node is cleaned.
[[nodiscard]] bool encode_value(ASN1_UNIT *node, const TypedValue &value,
                                u32 identifier = kKeepIdentifier) noexcept;

constexpr u8 kEmptySequenceOf = 0x10;
constexpr u8 kEmptySetOf = 0x11;

/// addToBERSequence, and the identifier of the container is replaced. On failure the container is cleaned. A
/// child with tag 33 is freed in any case.
[[nodiscard]] bool append_value(ASN1_UNIT *seq, const TypedValue &value,
                                u32 identifier = kKeepIdentifier) noexcept;

/// addToBERStringSequence. On failure the container is cleaned. A child with tag 33 is freed in any case.
[[nodiscard]] bool append_segment(ASN1_UNIT *seq, const TypedValue &value) noexcept;

/// True where a ..Of operation makes an empty list instead of appending.
[[nodiscard]] bool means_empty_list(u32 tag, u32 len) noexcept;
/// Makes `seq` the empty list with this identifier. False when memory runs out; `seq` is cleaned then. A
/// child with tag 33 is freed in any case.
[[nodiscard]] bool make_empty_list(ASN1_UNIT *seq, const TypedValue &value, u8 identifier) noexcept;

}  // namespace tlx
