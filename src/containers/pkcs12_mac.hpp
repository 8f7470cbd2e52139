// The message authentication code of a whole PKCS #12 file.
#pragma once

#include "containers/pkcs12_records.hpp"
#include "keys/pbe.hpp"

namespace tlx {

enum class MacOutcome : u8 {
    good,
    differs,
    missing,      ///< there is no MAC data
    unsupported,  ///< the content is not data, or the code is made in a way that is unknown or not available
    too_much_work,
    no_memory,
};

/// Compares the code of a file with that of a password.
[[nodiscard]] MacOutcome check_mac(const P12_PFX &pfx, const PbePassword &password,
                                   WorkBudget &budget) noexcept;

/// Whether codes are made with a digest.
[[nodiscard]] bool makes_codes(u32 digest_id) noexcept;

/// Gives a file a code under a password, with a random salt and exactly so many iterations. False when
/// memory runs out and when random octets cannot be had.
[[nodiscard]] bool make_mac(P12_PFX &pfx, const PbePassword &password, u32 iterations,
                            u32 digest_id) noexcept;

}  // namespace tlx
