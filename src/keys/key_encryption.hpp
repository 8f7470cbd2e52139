// Private keys in encrypted containers.
#pragma once

#include "keys/pbe.hpp"

namespace tlx {

/// Fills everything but iterations and salt from names as seal_PKCS8() takes them. False for an unknown name
/// and for a cipher that is not available.
[[nodiscard]] bool choose_pbe(const char *scheme, const char *cipher, const char *prf,
                              PbeChoice &choice) noexcept;

enum class SealOutcome : u8 {
    done,
    not_encoded,  ///< the key cannot be encoded, or memory ran out meanwhile
    no_memory
};

/// Encrypts a key into a new container, or in place of what the caller's holds.
[[nodiscard]] SealOutcome encrypt_key_info(const P8_PRIV_KEY_INFO &info, const PbeChoice &choice,
                                           const PbePassword &password, P8_ENCRYPTED_KEY **out) noexcept;

}  // namespace tlx
