#include <tlxcrypto/dsa.h>

#include <new>

#include "crypto/backend.hpp"
#include "crypto/dsa_factors.hpp"
#include "crypto/key_numbers.hpp"
#include "crypto/shared_key.hpp"

using namespace tlx;

namespace {

constexpr u32 kLeastPBits = 512;
constexpr u32 kMostPBits = 8192;

/// The numbers of a key, checked and ready for arithmetic.
struct DsaNumbers {
    Bignum p;
    Bignum q;
    Bignum g;
    Bignum y;
    Montgomery mod_p;
};

struct FreeDsaNumbers {
    void operator()(DsaNumbers *numbers) const noexcept {
        numbers->~DsaNumbers();
        tlx_free(numbers);
    }
};
using OwnedDsaNumbers = std::unique_ptr<DsaNumbers, FreeDsaNumbers>;

}  // namespace

struct DSA_KEY : SharedKey {
    KeyNumbers<TLX_DSA_NUMBER_COUNT> numbers;
    mutable MadeOnce<DsaNumbers, FreeDsaNumbers> ready;
};

namespace {

/// Checks the numbers as far as that needs no arithmetic.
bool are_sane(const DSA_KEY &key) noexcept {
    const u32 p_bits = get_BIGINT_bits(key.numbers[TLX_DSA_P]);
    const u32 q_bits = get_BIGINT_bits(key.numbers[TLX_DSA_Q]);
    return p_bits >= kLeastPBits && p_bits <= kMostPBits && is_odd(key.numbers[TLX_DSA_P]) &&
           (q_bits == 160 || q_bits == 224 || q_bits == 256) && is_odd(key.numbers[TLX_DSA_Q]) &&
           get_BIGINT_bits(key.numbers[TLX_DSA_G]) <= p_bits &&
           get_BIGINT_bits(key.numbers[TLX_DSA_Y]) <= p_bits;
}

/// Whether q divides p - 1, and g and y are in 2 .. p - 2. 0, kBadKey or 1.
u32 check_consistency(const DsaNumbers &numbers, BN_CTX *context) noexcept {
    Temporaries temporaries(context);
    BIGNUM *most = temporaries.next();
    BIGNUM *rest = temporaries.next();
    if (rest == nullptr || BN_copy(most, numbers.p.get()) == nullptr || BN_sub_word(most, 1) != 1 ||
        BN_mod(rest, most, numbers.q.get(), context) != 1) {
        return 1;
    }
    const auto is_element = [most](const Bignum &number) noexcept {
        return BN_num_bits(number.get()) >= 2 && BN_cmp(number.get(), most) < 0;
    };
    return BN_is_zero(rest) && is_element(numbers.g) && is_element(numbers.y) ? 0 : kBadKey;
}

/// 0, kBadKey or 1.
u32 prepare(DsaNumbers &numbers, const DSA_KEY &key, BN_CTX *context) noexcept {
    numbers.p.reset(to_bignum(key.numbers[TLX_DSA_P]));
    numbers.q.reset(to_bignum(key.numbers[TLX_DSA_Q]));
    numbers.g.reset(to_bignum(key.numbers[TLX_DSA_G]));
    numbers.y.reset(to_bignum(key.numbers[TLX_DSA_Y]));
    numbers.mod_p.reset(BN_MONT_CTX_new());
    if (numbers.p == nullptr || numbers.q == nullptr || numbers.g == nullptr || numbers.y == nullptr ||
        numbers.mod_p == nullptr) {
        return 1;
    }
    if (const u32 status = check_consistency(numbers, context); status != 0) return status;
    return BN_MONT_CTX_set(numbers.mod_p.get(), numbers.p.get(), context) == 1 ? 0 : 1;
}

/// Stores the key's numbers, prepared by whichever thread came first. 0, kBadKey or 1.
u32 get_numbers(const DSA_KEY &key, BN_CTX *context, const DsaNumbers *&numbers) noexcept {
    numbers = key.ready.get();
    if (numbers != nullptr) return 0;
    if (!are_sane(key)) return kBadKey;
    void *memory = TLX_ALLOCATE(sizeof(DsaNumbers));
    if (memory == nullptr) return 1;
    OwnedDsaNumbers made(new (memory) DsaNumbers);
    if (const u32 status = prepare(*made, key, context); status != 0) return status;
    numbers = key.ready.keep(std::move(made));
    return 0;
}

/// Whether (g^generator y^public_key mod p) mod q is r. 0, kBadSignature or 1.
u32 check_equation(const DsaNumbers &numbers, const DsaFactors &factors, BN_CTX *context) noexcept {
    Temporaries temporaries(context);
    BIGNUM *v = temporaries.next();
    if (v == nullptr ||
        BN_mod_exp2_mont(v, numbers.g.get(), factors.generator, numbers.y.get(), factors.public_key,
                         numbers.p.get(), context, numbers.mod_p.get()) != 1 ||
        BN_mod(v, v, numbers.q.get(), context) != 1) {
        return 1;
    }
    return BN_cmp(v, factors.r) == 0 ? 0 : kBadSignature;
}

u32 verify_hash(const DSA_KEY &key, Bytes hash, Bytes r, Bytes s) noexcept {
    const ErrorScope errors;
    const BignumContext context = new_public_bignum_context();
    if (context == nullptr) return 1;
    const DsaNumbers *numbers = nullptr;
    if (const u32 status = get_numbers(key, context.get(), numbers); status != 0) return status;
    const Temporaries factors_scope(context.get());
    DsaFactors factors;
    const u32 status = get_dsa_factors(factors, hash, r, s, numbers->q.get(), context.get());
    return status != 0 ? status : check_equation(*numbers, factors, context.get());
}

}  // namespace

extern "C" {

DSA_KEY *new_DSA_KEY(const BIGINT *p, const BIGINT *q, const BIGINT *g, const BIGINT *y) {
    if (p == nullptr || q == nullptr || g == nullptr || y == nullptr) return nullptr;
    void *memory = TLX_ALLOCATE(sizeof(DSA_KEY));
    if (memory == nullptr) return nullptr;
    OwnedKey<DSA_KEY> key(new (memory) DSA_KEY);
    return key->numbers.set_all({p, q, g, y}) ? key.release() : nullptr;
}

DSA_KEY *dup_DSA_KEY(DSA_KEY *key) {
    return share(key);
}

void free_DSA_KEY(DSA_KEY *key) {
    release(key);
}

const BIGINT *get_DSA_KEY_number(const DSA_KEY *key, TLX_DSA_NUMBER which) {
    return key == nullptr ? nullptr : key->numbers[static_cast<u32>(which)];
}

uint32_t get_DSA_KEY_builds(const DSA_KEY *key) {
    return key == nullptr ? 0 : key->ready.builds();
}

uint32_t check_DSA_KEY(const DSA_KEY *key) {
    const ErrorScope errors;
    const BignumContext context = new_public_bignum_context();
    if (key == nullptr || context == nullptr) return 1;
    const DsaNumbers *numbers = nullptr;
    return get_numbers(*key, context.get(), numbers);
}

uint32_t verify_DSA(const DSA_KEY *key, uint32_t digest_id, const uint8_t *data, uint32_t len,
                    const uint8_t *r, uint32_t r_len, const uint8_t *s, uint32_t s_len) {
    u8 hash[TLX_DIGEST_MAX_LENGTH];
    u32 hash_len = 0;
    if (Digest(digest_id, data, len, hash, &hash_len) != 0) return 1;
    return verify_DSA_digest(key, hash, hash_len, r, r_len, s, s_len);
}

uint32_t verify_DSA_digest(const DSA_KEY *key, const uint8_t *digest, uint32_t digest_len, const uint8_t *r,
                           uint32_t r_len, const uint8_t *s, uint32_t s_len) {
    if (key == nullptr || (r == nullptr && r_len > 0) || (s == nullptr && s_len > 0)) return 1;
    if (digest == nullptr || digest_len == 0 || digest_len > TLX_DIGEST_MAX_LENGTH) return 1;
    return verify_hash(*key, {digest, digest_len}, {r, r_len}, {s, s_len});
}

}  // extern "C"
