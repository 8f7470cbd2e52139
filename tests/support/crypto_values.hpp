// Numbers, octets and owners for tests of the cryptographic companion library.
#pragma once

#include <tlxcrypto/bigint.h>
#include <tlxcrypto/curve.h>
#include <tlxcrypto/digest.h>
#include <tlxcrypto/file.h>
#include <tlxcrypto/hmac.h>
#include <tlxcrypto/memory.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace tlx_test {

using Octets = std::vector<std::uint8_t>;

struct FreeValue {
    void operator()(BIGINT *number) const { free_BIGINT(number); }
    void operator()(ECPOINT *point) const { free_ECPOINT(point); }
    void operator()(ECURVE *curve) const { free_ECURVE(curve); }
    void operator()(DIGEST_UNIT *unit) const { free_DIGEST_UNIT(unit); }
    void operator()(HMAC_UNIT *unit) const { free_HMAC_UNIT(unit); }
};
template <typename T>
using Owned = std::unique_ptr<T, FreeValue>;
using Number = Owned<BIGINT>;

inline std::uint32_t length(const Octets &octets) {
    return static_cast<std::uint32_t>(octets.size());
}

/// The text that a function made, which is freed; "null" when it made none.
inline std::string taken(char *text) {
    const std::string copy = text == nullptr ? "null" : text;
    tlx_free(text);
    return copy;
}

inline Number number(const std::string &hex) {
    return Number(hex_to_BIGINT(hex.c_str()));
}
inline std::string hex(const BIGINT *number) {
    return taken(BIGINT_to_hex(number));
}
inline std::string hex(const Octets &octets) {
    return taken(binary_to_hex(octets.data(), length(octets)));
}

}  // namespace tlx_test
