// The inside of KCDSA.
#pragma once

#include <tlxcrypto/kcdsa.h>

#include <atomic>

#include "crypto/digest.hpp"
#include "crypto/key_numbers.hpp"

namespace tlx {

using KcdsaNumbers = KeyNumbers<TLX_KCDSA_NUMBER_COUNT>;

inline constexpr u32 kLeastKcdsaPBits = 512;
inline constexpr u32 kMostKcdsaPBits = 8192;
inline constexpr u32 kLeastKcdsaQBits = 112;
inline constexpr u32 kMostKcdsaQBits = 512;
/// SHA3-224 has the longest block.
inline constexpr u32 kMostBlockLength = 144;

/// The numbers of a unit, checked and ready for arithmetic. It never changes once it is built. With a private
/// key, g^q = 1 and y belongs to x.
struct KcdsaKey {
    Bignum p;
    Bignum q;
    Bignum g;
    Bignum y;  // null without a public or private key
    Bignum x;  // in Montgomery form modulo q; null without a private key
    Montgomery mod_p;
    Montgomery mod_q;
    u32 p_length = 0;  // octets
    u32 q_length = 0;
    u8 y_tail[kMostBlockLength] = {};  // the rightmost octets of y
};

struct FreeKcdsaKey {
    void operator()(KcdsaKey *key) const noexcept;
};
using OwnedKcdsaKey = std::unique_ptr<KcdsaKey, FreeKcdsaKey>;

/// The first thread that needs it builds it.
struct KcdsaCache {
    std::atomic<KcdsaKey *> key = nullptr;
    std::atomic<u32> builds = 0;

    KcdsaCache() = default;
    KcdsaCache(const KcdsaCache &) = delete;
    KcdsaCache &operator=(const KcdsaCache &) = delete;
    ~KcdsaCache() { drop(); }
    /// No other thread may be using the unit.
    void drop() noexcept {
        FreeKcdsaKey{}(key.exchange(nullptr, std::memory_order_relaxed));
        builds.store(0, std::memory_order_relaxed);
    }
};

/// What init_KCDSA prepared a unit for.
enum class KcdsaTask : u32 { none, sign, verify };

}  // namespace tlx

struct KCDSA {
    tlx::KcdsaNumbers numbers;
    tlx::u32 digest_id = TLX_DIGEST_HAS160;
    mutable tlx::KcdsaCache cache;
    tlx::KcdsaTask task = tlx::KcdsaTask::none;
    DIGEST_UNIT digest = {};

    KCDSA() = default;
    KCDSA(const KCDSA &) = delete;
    KCDSA &operator=(const KCDSA &) = delete;
    ~KCDSA() { tlx::clean_digest(digest); }
};

namespace tlx {

/// Replaces the numbers, some of which may be null, and drops what the unit computed from the old ones. False
/// when memory runs out; the unit is unchanged then.
bool set_kcdsa_numbers(KCDSA &unit, const KcdsaNumbers::Pointers &numbers) noexcept;

/// Stores the unit's key, which stays the unit's. 0, TLX_KCDSA_BAD_KEY or 1.
u32 get_kcdsa_key(const KCDSA &unit, const KcdsaKey **key) noexcept;

/// A random number of 1 to q - 1.
bool draw_secret(BIGNUM *secret, const KcdsaKey &key, BN_CTX *context) noexcept;

/// Whether number^q mod p is 1; -1 on failure.
int is_root_of_one(const BIGNUM *number, const KcdsaKey &key, BN_CTX *context) noexcept;

/// result = g^exponent mod p for a secret exponent below q, in constant time. g^q is 1.
bool raise_g(BIGNUM *result, const BIGNUM *exponent, const KcdsaKey &key, BN_CTX *context) noexcept;

}  // namespace tlx
