// KCDSA keys: checking and preparing the numbers, generating new ones.
#include <algorithm>
#include <new>
#include <utility>

#include "crypto/backend.hpp"
#include "crypto/kcdsa.hpp"
#include "crypto/memory.hpp"

using namespace tlx;

namespace {

bool is_odd_within(const BIGINT *number, u32 least_bits, u32 most_bits) noexcept {
    const u32 bits = get_BIGINT_bits(number);
    return bits >= least_bits && bits <= most_bits && is_odd(number);
}

// Checks the numbers as far as that needs no arithmetic.
bool are_sane(const KcdsaNumbers &numbers) noexcept {
    const BIGINT *p = numbers[TLX_KCDSA_P];
    const BIGINT *q = numbers[TLX_KCDSA_Q];
    const BIGINT *x = numbers[TLX_KCDSA_X];
    if (!is_odd_within(p, kLeastKcdsaPBits, kMostKcdsaPBits)) return false;
    if (!is_odd_within(q, kLeastKcdsaQBits, kMostKcdsaQBits) || cmp_BIGINT(q, p) >= 0) return false;
    if (numbers[TLX_KCDSA_G] == nullptr || cmp_BIGINT(numbers[TLX_KCDSA_G], p) >= 0) return false;
    if (cmp_BIGINT(numbers[TLX_KCDSA_Y], p) >= 0) return false;
    return x == nullptr || (is_BIGINT_zero(x) == 0 && cmp_BIGINT(x, q) < 0);
}

// Whether q divides p - 1, and g and the public key, if there is one, are of 2 .. p - 2; -1 on failure.
int is_consistent(const KcdsaKey &key, BN_CTX *context) noexcept {
    Temporaries temporaries(context);
    BIGNUM *most = temporaries.next();
    BIGNUM *rest = temporaries.next();
    if (rest == nullptr || BN_copy(most, key.p.get()) == nullptr || BN_sub_word(most, 1) != 1 ||
        BN_mod(rest, most, key.q.get(), context) != 1) {
        return -1;
    }
    const auto is_element = [most](const BIGNUM *number) noexcept {
        return BN_num_bits(number) >= 2 && BN_cmp(number, most) < 0;
    };
    return BN_is_zero(rest) && is_element(key.g.get()) && (key.y == nullptr || is_element(key.y.get())) ? 1
                                                                                                        : 0;
}

// y = g^(x^-1 mod q) mod p. Inverts x times a random number, and multiplies the result by that number.
Bignum compute_y(const KcdsaKey &key, BN_CTX *context) noexcept {
    BN_MONT_CTX *mod_q = key.mod_q.get();
    Temporaries temporaries(context);
    BIGNUM *mask = temporaries.next();
    BIGNUM *mask_form = temporaries.next();
    BIGNUM *masked = temporaries.next();
    BIGNUM *inverse = temporaries.next();
    Bignum y(BN_new());
    if (inverse == nullptr || y == nullptr || !draw_secret(mask, key, context) ||
        BN_to_montgomery(mask_form, mask, mod_q, context) != 1 ||
        BN_mod_mul_montgomery(masked, key.x.get(), mask, mod_q, context) != 1) {
        return nullptr;
    }
    BN_set_flags(masked, BN_FLG_CONSTTIME);
    if (BN_mod_inverse(inverse, masked, key.q.get(), context) == nullptr ||
        BN_mod_mul_montgomery(inverse, inverse, mask_form, mod_q, context) != 1 ||
        !raise_g(y.get(), inverse, key, context)) {
        return nullptr;
    }
    return y;
}

bool set_moduli(KcdsaKey &key, BN_CTX *context) noexcept {
    key.mod_p.reset(BN_MONT_CTX_new());
    key.mod_q.reset(BN_MONT_CTX_new());
    key.p_length = static_cast<u32>(BN_num_bytes(key.p.get()));
    key.q_length = static_cast<u32>(BN_num_bytes(key.q.get()));
    return key.mod_p != nullptr && key.mod_q != nullptr &&
           BN_MONT_CTX_set(key.mod_p.get(), key.p.get(), context) == 1 &&
           BN_MONT_CTX_set(key.mod_q.get(), key.q.get(), context) == 1;
}

bool set_y_tail(KcdsaKey &key) noexcept {
    u8 octets[kMostKcdsaPBits / 8];
    if (BN_bn2binpad(key.y.get(), octets, static_cast<int>(sizeof octets)) < 0) return false;
    std::copy(octets + sizeof octets - kMostBlockLength, octets + sizeof octets, key.y_tail);
    return true;
}

// Stores a copy in `to`, or nothing for a null number. False on failure.
bool convert(Bignum &to, const BIGINT *number) noexcept {
    if (number == nullptr) return true;
    to.reset(to_bignum(number));
    return to != nullptr;
}

// Makes sure that g^q = 1, without which signatures come out wrong, and that y belongs to x, or computes it.
// 0, TLX_KCDSA_BAD_KEY or 1.
u32 fill_private(KcdsaKey &key, BN_CTX *context) noexcept {
    if (BN_to_montgomery(key.x.get(), key.x.get(), key.mod_q.get(), context) != 1) return 1;
    if (const int right = is_root_of_one(key.g.get(), key, context); right != 1) {
        return right == 0 ? TLX_KCDSA_BAD_KEY : 1;
    }
    Bignum y = compute_y(key, context);
    if (y == nullptr) return 1;
    if (key.y != nullptr && BN_cmp(key.y.get(), y.get()) != 0) return TLX_KCDSA_BAD_KEY;
    key.y = std::move(y);
    return 0;
}

// 0, TLX_KCDSA_BAD_KEY or 1.
u32 fill(KcdsaKey &key, const KCDSA &unit) noexcept {
    const BignumContext context(backend() == nullptr ? nullptr : BN_CTX_new_ex(backend()));
    if (context == nullptr || !convert(key.p, unit.numbers[TLX_KCDSA_P]) ||
        !convert(key.q, unit.numbers[TLX_KCDSA_Q]) || !convert(key.g, unit.numbers[TLX_KCDSA_G]) ||
        !convert(key.x, unit.numbers[TLX_KCDSA_X]) || !convert(key.y, unit.numbers[TLX_KCDSA_Y])) {
        return 1;
    }
    if (const int consistent = is_consistent(key, context.get()); consistent != 1) {
        return consistent == 0 ? TLX_KCDSA_BAD_KEY : 1;
    }
    if (!set_moduli(key, context.get())) return 1;
    if (key.x != nullptr) {
        if (const u32 status = fill_private(key, context.get()); status != 0) return status;
    }
    return key.y == nullptr || set_y_tail(key) ? 0 : 1;
}

u32 build_key(const KCDSA &unit, OwnedKcdsaKey &key) noexcept {
    if (!are_sane(unit.numbers)) return TLX_KCDSA_BAD_KEY;
    void *memory = TLX_ALLOCATE(sizeof(KcdsaKey));
    if (memory == nullptr) return 1;
    key.reset(new (memory) KcdsaKey);
    const u32 status = fill(*key, unit);
    if (status != 0) key.reset();
    return status;
}

// Stores the domain parameters of `numbers` with another key pair.
u32 set_pair(KCDSA &unit, const KcdsaNumbers &numbers, const BIGINT *x, const BIGINT *y) noexcept {
    const bool set =
        set_kcdsa_numbers(unit, {numbers[TLX_KCDSA_P], numbers[TLX_KCDSA_Q], numbers[TLX_KCDSA_G], x, y});
    return set ? 0 : 1;
}

// The public key of x under the unit's domain parameters. 0, TLX_KCDSA_BAD_KEY or 1.
u32 derive_public(const KCDSA &unit, const BIGINT *x, OwnedBigint &y) noexcept {
    const ErrorScope errors;
    KCDSA pair;
    if (set_pair(pair, unit.numbers, x, nullptr) != 0) return 1;
    OwnedKcdsaKey key;
    if (const u32 status = build_key(pair, key); status != 0) return status;
    y.reset(new_BIGINT());
    return y != nullptr && from_bignum(y.get(), key->y.get()) ? 0 : 1;
}

}  // namespace

namespace tlx {

void FreeKcdsaKey::operator()(KcdsaKey *key) const noexcept {
    if (key == nullptr) return;
    key->~KcdsaKey();
    tlx_free(key);
}

u32 get_kcdsa_key(const KCDSA &unit, const KcdsaKey **key) noexcept {
    if (backend() == nullptr) return 1;
    KcdsaKey *current = unit.cache.key.load(std::memory_order_acquire);
    if (current == nullptr) {
        OwnedKcdsaKey built;
        if (const u32 status = build_key(unit, built); status != 0) return status;
        unit.cache.builds.fetch_add(1, std::memory_order_relaxed);
        // Another thread may have been faster; then we keep its key and free ours.
        if (unit.cache.key.compare_exchange_strong(current, built.get(), std::memory_order_acq_rel)) {
            current = built.release();
        }
    }
    *key = current;
    return 0;
}

bool draw_secret(BIGNUM *secret, const KcdsaKey &key, BN_CTX *context) noexcept {
    do {
        if (BN_priv_rand_range_ex(secret, key.q.get(), 0, context) != 1) return false;
    } while (BN_is_zero(secret));
    BN_set_flags(secret, BN_FLG_CONSTTIME);
    return true;
}

int is_root_of_one(const BIGNUM *number, const KcdsaKey &key, BN_CTX *context) noexcept {
    Temporaries temporaries(context);
    BIGNUM *power = temporaries.next();
    if (power == nullptr ||
        BN_mod_exp_mont(power, number, key.q.get(), key.p.get(), context, key.mod_p.get()) != 1) {
        return -1;
    }
    return BN_is_one(power);
}

bool raise_g(BIGNUM *result, const BIGNUM *exponent, const KcdsaKey &key, BN_CTX *context) noexcept {
    Temporaries temporaries(context);
    BIGNUM *padded = temporaries.next();
    if (padded == nullptr || BN_copy(padded, exponent) == nullptr) return false;
    // The time depends on the exponent's number of words. Where q does not fill its highest word, adding q,
    // which changes nothing because g^q = 1, makes that number the same for all exponents.
    const bool full = BN_num_bits(key.q.get()) % static_cast<int>(kLimbBits) == 0;
    if (!full && BN_add(padded, padded, key.q.get()) != 1) return false;
    BN_set_flags(padded, BN_FLG_CONSTTIME);
    return BN_mod_exp_mont_consttime(result, key.g.get(), padded, key.p.get(), context, key.mod_p.get()) == 1;
}

}  // namespace tlx

extern "C" {

uint32_t compute_KCDSA_public(KCDSA *unit) {
    if (unit == nullptr) return 1;
    const BIGINT *x = unit->numbers[TLX_KCDSA_X];
    if (x == nullptr) return TLX_KCDSA_BAD_KEY;
    OwnedBigint y;
    const u32 status = derive_public(*unit, x, y);
    return status != 0 ? status : set_pair(*unit, unit->numbers, x, y.get());
}

uint32_t gen_KCDSA_key(KCDSA *unit) {
    if (unit == nullptr) return 1;
    if (!are_sane(unit->numbers)) return TLX_KCDSA_BAD_KEY;
    const OwnedBigint x(new_BIGINT());
    do {
        if (x == nullptr || random_BIGINT(x.get(), unit->numbers[TLX_KCDSA_Q]) != 0) return 1;
    } while (is_BIGINT_zero(x.get()) != 0);
    OwnedBigint y;
    const u32 status = derive_public(*unit, x.get(), y);
    return status != 0 ? status : set_pair(*unit, unit->numbers, x.get(), y.get());
}

}  // extern "C"
