// Numbers and digits for tests of the cryptographic companion library.
#pragma once

#include <tlxcrypto.h>

#include "support/octets.hpp"

namespace tlx_test {

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
    return number_of(hex.c_str());
}
inline Number number(const Octets &octets) {
    return Number(binary_to_BIGINT(octets.data(), length(octets)));
}
inline std::string digits_of(const BIGINT *number) {
    return taken(BIGINT_to_hex(number));
}
inline std::string digits_of(const Octets &octets) {
    return taken(binary_to_hex(octets.data(), length(octets)));
}

/// The same digits, for which the library allocates nothing.
inline std::string digits(const Octets &octets) {
    std::string text = hex_of(octets.data(), octets.size());
    std::erase(text, ' ');
    return text;
}

/// Whether all steps of a row returned 0: "done". When the first that did not returned 1, "failed".
inline std::string whether_done(const std::string &results) {
    const std::size_t first = results.find_first_not_of("0 ");
    if (first == results.npos) return "done";
    return results[first] == '1' ? "failed" : results;
}

}  // namespace tlx_test
