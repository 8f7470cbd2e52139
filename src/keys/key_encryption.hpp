// Private keys in encrypted containers.
#pragma once

#include "keys/pbe.hpp"

namespace tlx {

enum class SealOutcome : u8 {
    done,
    not_encoded,  ///< the key cannot be encoded, or memory ran out meanwhile
    no_memory
};

/// Encrypts a key into a new container, or in place of what the caller's holds.
[[nodiscard]] SealOutcome encrypt_key_info(const P8_PRIV_KEY_INFO &info, const PbeChoice &choice,
                                           const PbePassword &password, P8_ENCRYPTED_KEY **out) noexcept;

}  // namespace tlx
