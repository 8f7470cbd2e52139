// Numbers, octets and owners for tests of the cryptographic companion library.
#pragma once

#include <tlxcrypto.h>

#include <cstdint>
#include <string>
#include <vector>

#include "support/held.hpp"

namespace tlx_test {

using Octets = std::vector<std::uint8_t>;

using Number = Held<free_BIGINT>;

inline std::uint32_t length(const Octets &octets) {
    return static_cast<std::uint32_t>(octets.size());
}

/// Copies and frees the text that a function made; "null" for null.
inline std::string taken(char *text) {
    const std::string copy = text == nullptr ? "null" : text;
    tlx_free(text);
    return copy;
}

inline Number number(const std::string &hex) {
    return Number(hex_to_BIGINT(hex.c_str()));
}
inline Number number(const Octets &octets) {
    return Number(binary_to_BIGINT(octets.data(), length(octets)));
}
/// The octets of an even number of hexadecimal digits.
inline Octets octets(const std::string &hex) {
    std::uint8_t *made = nullptr;
    std::uint32_t size = 0;
    hex_to_binary(hex.data(), static_cast<std::uint32_t>(hex.size()), &made, &size);
    const Octets copy(made, made + size);
    tlx_free(made);
    return copy;
}
inline std::string hex(const BIGINT *number) {
    return taken(BIGINT_to_hex(number));
}
inline std::string hex(const Octets &octets) {
    return taken(binary_to_hex(octets.data(), length(octets)));
}

}  // namespace tlx_test
