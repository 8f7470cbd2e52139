// The values of signatures, for the modules that sign and verify with them.
#pragma once

#include <tlxcrypto/kcdsa.h>
#include <tlxcrypto/rsa.h>

#include "der/encoder.hpp"
#include "der/owned.hpp"

namespace tlx {

void encode_kcdsa_signature(Encoder &out, Bytes r, const BIGINT *s) noexcept;

/// The numbers of a signature, s in s_length octets with zeros before it.
struct KcdsaOctets {
    Bytes r;  ///< within the encoding
    u8 s[TLX_KCDSA_MAX_LENGTH];
    u32 s_length;

    /// False for octets that are no signature, for an s that does not fit, and when memory runs out.
    [[nodiscard]] bool read(Bytes encoding) noexcept;
};

/// Appends the signature of sign(octets, length), a function of the key. Its status; the value fails when
/// memory runs out for it.
template <typename Sign>
[[nodiscard]] u32 append_rsa_signature(Encoder &value, const RSA_UNIT *key, Sign sign) noexcept {
    u8 *room = value.buffer().reserve(std::size_t{get_RSA_length(key)} + 1);
    u32 length = 0;
    if (room == nullptr) return 0;
    const u32 status = sign(room, &length);
    value.buffer().advance(length);
    return status;
}

/// The same of sign(r, r_length, s, s_length).
template <typename Sign>
[[nodiscard]] u32 append_kcdsa_signature(Encoder &value, Sign sign) noexcept {
    u8 r[TLX_KCDSA_MAX_LENGTH];
    u8 s[TLX_KCDSA_MAX_LENGTH];
    u32 r_length = 0;
    u32 s_length = 0;
    if (const u32 status = sign(r, &r_length, s, &s_length); status != 0) return status;
    const Owned<BIGINT> number(binary_to_BIGINT(s, s_length));
    encode_kcdsa_signature(value, {r, r_length}, number.get());
    return 0;
}

}  // namespace tlx
