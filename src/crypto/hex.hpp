// Hexadecimal digits.
#pragma once

#include "crypto/types.hpp"

namespace tlx {

inline constexpr char kHexDigits[] = "0123456789ABCDEF";

/// The value of a digit of either case; -1 for any other character.
constexpr i32 hex_value(char digit) noexcept {
    if (digit >= '0' && digit <= '9') return digit - '0';
    if (digit >= 'A' && digit <= 'F') return digit - 'A' + 10;
    if (digit >= 'a' && digit <= 'f') return digit - 'a' + 10;
    return -1;
}

}  // namespace tlx
