// Base64 into room that the caller has.
#pragma once

#include "der/types.hpp"

namespace tlx {

/// Room to decode a text of that many characters: one octet more than can come out of it.
constexpr std::size_t base64_room(std::size_t characters) noexcept {
    return characters / 4 * 3 + 1;
}

/// Decodes a whole text, passing over line ends, into base64_room() octets. Returns the end of what it wrote;
/// null when the text is bad.
[[nodiscard]] u8 *decode_base64(Bytes in, u8 *out) noexcept;

}  // namespace tlx
