// The inside of BIGINT, and the way to and from libcrypto's BIGNUM.
#pragma once

#include <openssl/bn.h>
#include <tlxcrypto/bigint.h>

#include <memory>

#include "crypto/types.hpp"

/// A magnitude, least significant limb first, without leading zero limbs. The first limbs lie in the same
/// block, behind the record; a number that outgrows them gets a block of its own.
struct BIGINT {
    tlx::u64 *limbs;
    tlx::u32 used;
    tlx::u32 capacity;
};

namespace tlx {

struct FreeBignum {
    void operator()(BIGNUM *number) const noexcept { BN_clear_free(number); }
    void operator()(BN_CTX *context) const noexcept { BN_CTX_free(context); }
    void operator()(BN_MONT_CTX *modulus) const noexcept { BN_MONT_CTX_free(modulus); }
    void operator()(BIGINT *number) const noexcept { free_BIGINT(number); }
};
using Bignum = std::unique_ptr<BIGNUM, FreeBignum>;
using BignumContext = std::unique_ptr<BN_CTX, FreeBignum>;
using Montgomery = std::unique_ptr<BN_MONT_CTX, FreeBignum>;
using OwnedBigint = std::unique_ptr<BIGINT, FreeBignum>;

/// Scratch numbers for libcrypto's functions, in the library context; null on failure.
BignumContext new_bignum_context() noexcept;
/// The same for numbers that are no secrets, which need not be wiped.
BignumContext new_public_bignum_context() noexcept;
/// The temporary numbers of a scope, taken from (and given back to) a context of libcrypto.
class Temporaries {
  public:
    explicit Temporaries(BN_CTX *context) noexcept : context_(context) { BN_CTX_start(context_); }
    ~Temporaries() { BN_CTX_end(context_); }
    Temporaries(const Temporaries &) = delete;
    Temporaries &operator=(const Temporaries &) = delete;
    /// A zero; null when memory runs out, and on all calls after that.
    BIGNUM *next() noexcept { return BN_CTX_get(context_); }

  private:
    BN_CTX *context_;
};

/// A new BIGNUM of the same value (BN_free or BN_clear_free it); null on failure.
BIGNUM *to_bignum(const BIGINT *number) noexcept;
/// Stores the value. False on a negative number or allocation failure (number is unchanged then).
bool from_bignum(BIGINT *number, const BIGNUM *value) noexcept;

/// Makes room for `limbs` limbs; the value stays. False on failure.
bool reserve(BIGINT &number, u32 limbs) noexcept;
/// Says how many limbs hold the value, some of which may be leading zeros.
void set_used(BIGINT &number, u32 used) noexcept;

inline constexpr u32 kLimbBits = 64;
/// Keeps every bit count within 32 bits.
inline constexpr u32 kMostLimbs = UINT32_MAX / kLimbBits;

/// The limb at an index, 0 beyond the number.
inline u64 limb(const BIGINT &number, u32 index) noexcept {
    return index < number.used ? number.limbs[index] : 0;
}

}  // namespace tlx
