// UTF-8 (RFC 3629), one character at a time.
#pragma once

#include "der/buffer.hpp"
#include "der/types.hpp"

namespace tlx {

struct Utf8 {
    u32 code_point;
    std::size_t size;
};

/// Reads the character that the octets start with; there is at least one octet. False when it is truncated or
/// ill-formed.
[[nodiscard]] bool read_utf8(Bytes in, Utf8 &character) noexcept;

[[nodiscard]] bool is_utf8(Bytes text) noexcept;

/// The octets of a character at most.
inline constexpr std::size_t kMostUtf8 = 4;

/// Writes a character, any code point up to 0x10FFFF that is no surrogate. The number of its octets.
std::size_t write_utf8(u32 code_point, u8 *out) noexcept;
void append_utf8(Buffer &out, u32 code_point) noexcept;

}  // namespace tlx
