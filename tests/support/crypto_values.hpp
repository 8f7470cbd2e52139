// Numbers, octets and owners for tests of the cryptographic companion library.
#pragma once

#include <tlxcrypto.h>

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
    void operator()(BLOCK_CIPHER_UNIT *unit) const { free_BLOCK_CIPHER_UNIT(unit); }
    void operator()(RC4_UNIT *unit) const { free_RC4_UNIT(unit); }
    void operator()(RSA_UNIT *unit) const { free_RSA_UNIT(unit); }
    void operator()(KCDSA *unit) const { free_KCDSA(unit); }
    void operator()(ECC_KEY *key) const { free_ECC_KEY(key); }
};
template <typename T>
using Owned = std::unique_ptr<T, FreeValue>;
using Number = Owned<BIGINT>;

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
