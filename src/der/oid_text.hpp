// Object identifiers between dotted text and contents octets.
#pragma once

#include <string_view>

#include "der/buffer.hpp"
#include "der/types.hpp"

namespace tlx {

/// Dotted texts are limited to this many characters.
constexpr std::size_t kMaxDottedText = 99;

/// Writes the dotted text of the contents octets, NUL-terminated, into `text` and its length into `length`.
/// False for empty contents, an arc that does not end or does not fit 32 bits, and a text that is too long.
[[nodiscard]] bool oid_to_text(Bytes contents, char (&text)[kMaxDottedText + 1], u32 &length) noexcept;

/// Appends the contents octets of a dotted text. False when it is no dotted text of at least two arcs.
[[nodiscard]] bool text_to_oid(std::string_view dotted, Buffer &out) noexcept;

}  // namespace tlx
