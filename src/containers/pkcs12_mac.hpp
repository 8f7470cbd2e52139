// The message authentication code of a whole PKCS #12 file.
#pragma once

#include "containers/pkcs12_records.hpp"

namespace tlx {

enum class MacOutcome : u8 {
    good,
    differs,
    missing,      ///< there is no MAC data
    unsupported,  ///< the content is not data, or the digest is unknown or not available
    too_much_work,
    no_memory,
};

/// Compares the code of a file with that of a 16-bit password.
[[nodiscard]] MacOutcome check_mac(const P12_PFX &pfx, Bytes password) noexcept;

/// Where set_PKCS12_mac() stores an iteration count, in MAC data of this library's own making.
[[nodiscard]] u32 stored_iterations(u32 iterations) noexcept;

}  // namespace tlx
