// The inside of BIGINT, and the way to and from libcrypto's BIGNUM.
#pragma once

#include <openssl/bn.h>
#include <tlxcrypto/bigint.h>

namespace tlx {

/// A new BIGNUM of the same value (BN_free or BN_clear_free it); null on failure.
BIGNUM *to_bignum(const BIGINT *number) noexcept;
/// Stores the value. False on a negative number or allocation failure (number is unchanged then).
bool from_bignum(BIGINT *number, const BIGNUM *value) noexcept;

}  // namespace tlx
