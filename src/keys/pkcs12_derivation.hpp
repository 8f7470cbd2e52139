// The derivation of keys from passwords in the manner of PKCS #12 (RFC 7292, appendix B).
#pragma once

#include <tlxcrypto/digest.h>
#include <tlxpki/pkcs12.h>

#include "der/owned.hpp"
#include "der/types.hpp"

namespace tlx {

/// A 16-bit password, a salt and the work to be done with them. `password` is used as it is: its two zero
/// octets are part of it, and one without octets derives from the salt alone.
struct Pkcs12Derivation {
    u32 digest_id;
    Bytes password;
    Bytes salt;
    u32 iterations;  ///< 0 counts as 1

    /// Derives the octets of one purpose: TLX_PKCS12_KEY, TLX_PKCS12_IV or TLX_PKCS12_MAC. False when memory
    /// runs out or the digest is not available; `out` is all zeros then.
    [[nodiscard]] bool derive(u8 purpose, std::span<u8> out) const noexcept;
};

}  // namespace tlx

TLX_OWNS(DIGEST_UNIT);
