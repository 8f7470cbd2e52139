#include <algorithm>
#include <array>
#include <bit>
#include <cstring>

#include "crypto/backend.hpp"
#include "crypto/bigint.hpp"
#include "crypto/memory.hpp"

using namespace tlx;

// libcrypto receives the limbs as little-endian octets.
static_assert(std::endian::native == std::endian::little);

namespace {

constexpr int kLimbOctets = 8;

// What libcrypto computes: result = operation(operands). 0 or 1.
template <typename Operation, typename... Operands>
u32 compute(BIGINT *result, Operation operation, const Operands *...operands) noexcept {
    const ErrorScope errors;
    if (result == nullptr) return 1;
    const BignumContext context = new_bignum_context();
    const Bignum value(BN_new());
    const std::array<Bignum, sizeof...(Operands)> in{Bignum(to_bignum(operands))...};
    if (context == nullptr || value == nullptr) return 1;
    if (std::any_of(in.begin(), in.end(), [](const Bignum &number) { return number == nullptr; })) return 1;
    const bool done = std::apply(
        [&](const auto &...number) { return operation(value.get(), number.get()..., context.get()) == 1; },
        in);
    return done && from_bignum(result, value.get()) ? 0 : 1;
}

u32 limbs_for(u32 bits) noexcept {
    return bits / kLimbBits + (bits % kLimbBits != 0 ? 1 : 0);
}

u32 limbs_of(const BIGNUM *value) noexcept {
    return limbs_for(static_cast<u32>(BN_num_bits(value)));
}

// Stores a value for which there is room.
void store(BIGINT &number, const BIGNUM *value) noexcept {
    const u32 limbs = limbs_of(value);
    BN_bn2lebinpad(value, reinterpret_cast<u8 *>(number.limbs), static_cast<int>(limbs) * kLimbOctets);
    set_used(number, limbs);
}

}  // namespace

namespace tlx {

BignumContext new_bignum_context() noexcept {
    return BignumContext(backend() == nullptr ? nullptr : BN_CTX_secure_new_ex(backend()));
}

BignumContext new_public_bignum_context() noexcept {
    return BignumContext(backend() == nullptr ? nullptr : BN_CTX_new_ex(backend()));
}

BIGNUM *to_bignum(const BIGINT *number) noexcept {
    if (number == nullptr || number->used > INT_MAX / kLimbOctets) return nullptr;
    const auto *octets = reinterpret_cast<const u8 *>(number->limbs);
    return BN_lebin2bn(octets, static_cast<int>(number->used) * kLimbOctets, nullptr);
}

bool from_bignum(BIGINT *number, const BIGNUM *value) noexcept {
    if (number == nullptr || value == nullptr || BN_is_negative(value) != 0) return false;
    if (!reserve(*number, limbs_of(value))) return false;
    store(*number, value);
    return true;
}

}  // namespace tlx

extern "C" {

uint32_t add_BIGINT(BIGINT *result, const BIGINT *a, const BIGINT *b) {
    if (result == nullptr || a == nullptr || b == nullptr) return 1;
    const u32 bits = std::max(get_BIGINT_bits(a), get_BIGINT_bits(b));
    const u32 limbs = limbs_for(bits + 1);
    if (!reserve(*result, limbs)) return 1;
    u64 carry = 0;
    for (u32 i = 0; i < limbs; ++i) {
        const u64 left = limb(*a, i);
        const u64 half = left + limb(*b, i);
        const u64 whole = half + carry;
        carry = (half < left ? 1U : 0U) | (whole < half ? 1U : 0U);
        result->limbs[i] = whole;
    }
    set_used(*result, limbs);
    return 0;
}

uint32_t sub_BIGINT(BIGINT *result, const BIGINT *a, const BIGINT *b) {
    if (result == nullptr || a == nullptr || b == nullptr || cmp_BIGINT(a, b) < 0) return 1;
    const u32 limbs = a->used;
    if (!reserve(*result, limbs)) return 1;
    u64 borrow = 0;
    for (u32 i = 0; i < limbs; ++i) {
        const u64 left = limb(*a, i);
        const u64 half = left - limb(*b, i);
        const u64 whole = half - borrow;
        borrow = (half > left ? 1U : 0U) | (whole > half ? 1U : 0U);
        result->limbs[i] = whole;
    }
    set_used(*result, limbs);
    return 0;
}

uint32_t shl_BIGINT(BIGINT *result, const BIGINT *a, uint32_t bits) {
    if (result == nullptr || a == nullptr) return 1;
    if (a->used == 0) return set_BIGINT_word(result, 0);
    const u64 new_bits = u64{get_BIGINT_bits(a)} + bits;
    if (new_bits > u64{kMostLimbs} * kLimbBits) return 1;
    const u32 limbs = limbs_for(static_cast<u32>(new_bits));
    const u32 whole = bits / kLimbBits;
    const u32 part = bits % kLimbBits;
    if (!reserve(*result, limbs)) return 1;
    for (u32 i = limbs; i-- != 0;) {  // from the top, so that result may be a
        u64 value = i < whole ? 0 : limb(*a, i - whole) << part;
        if (part != 0 && i > whole) value |= limb(*a, i - whole - 1) >> (kLimbBits - part);
        result->limbs[i] = value;
    }
    set_used(*result, limbs);
    return 0;
}

uint32_t shr_BIGINT(BIGINT *result, const BIGINT *a, uint32_t bits) {
    if (result == nullptr || a == nullptr) return 1;
    const u32 whole = bits / kLimbBits;
    const u32 part = bits % kLimbBits;
    const u32 limbs = a->used > whole ? a->used - whole : 0;
    if (!reserve(*result, limbs)) return 1;
    for (u32 i = 0; i < limbs; ++i) {
        u64 value = limb(*a, i + whole) >> part;
        if (part != 0) value |= limb(*a, i + whole + 1) << (kLimbBits - part);
        result->limbs[i] = value;
    }
    set_used(*result, limbs);
    return 0;
}

uint32_t mul_BIGINT(BIGINT *result, const BIGINT *a, const BIGINT *b) {
    return compute(result, BN_mul, a, b);
}

uint32_t div_BIGINT(BIGINT *quotient, BIGINT *remainder, const BIGINT *a, const BIGINT *b) {
    const ErrorScope errors;
    if (quotient == remainder) return 1;
    const BignumContext context = new_bignum_context();
    const Bignum dividend(to_bignum(a));
    const Bignum divisor(to_bignum(b));
    const Bignum ratio(BN_new());
    const Bignum rest(BN_new());
    if (context == nullptr || dividend == nullptr || divisor == nullptr || ratio == nullptr ||
        rest == nullptr) {
        return 1;
    }
    if (BN_div(ratio.get(), rest.get(), dividend.get(), divisor.get(), context.get()) != 1) return 1;
    // Reserves room for both first, so that it stores both or neither.
    if (quotient != nullptr && !reserve(*quotient, limbs_of(ratio.get()))) return 1;
    if (remainder != nullptr && !reserve(*remainder, limbs_of(rest.get()))) return 1;
    if (quotient != nullptr) store(*quotient, ratio.get());
    if (remainder != nullptr) store(*remainder, rest.get());
    return 0;
}

uint32_t mod_BIGINT(BIGINT *result, const BIGINT *a, const BIGINT *modulus) {
    return compute(result, BN_nnmod, a, modulus);
}

uint32_t mod_add_BIGINT(BIGINT *result, const BIGINT *a, const BIGINT *b, const BIGINT *modulus) {
    return compute(result, BN_mod_add, a, b, modulus);
}

uint32_t mod_sub_BIGINT(BIGINT *result, const BIGINT *a, const BIGINT *b, const BIGINT *modulus) {
    return compute(result, BN_mod_sub, a, b, modulus);
}

uint32_t mod_mul_BIGINT(BIGINT *result, const BIGINT *a, const BIGINT *b, const BIGINT *modulus) {
    return compute(result, BN_mod_mul, a, b, modulus);
}

uint32_t mod_exp_BIGINT(BIGINT *result, const BIGINT *base, const BIGINT *exponent, const BIGINT *modulus) {
    const auto operation = [](BIGNUM *out, const BIGNUM *b, const BIGNUM *e, const BIGNUM *m,
                              BN_CTX *context) {
        if (BN_is_odd(m) == 0) return BN_mod_exp(out, b, e, m, context);
        return BN_mod_exp_mont_consttime(out, b, e, m, context, nullptr);
    };
    return compute(result, operation, base, exponent, modulus);
}

uint32_t mod_inverse_BIGINT(BIGINT *result, const BIGINT *a, const BIGINT *modulus) {
    const auto operation = [](BIGNUM *out, BIGNUM *number, const BIGNUM *m, BN_CTX *context) {
        BN_set_flags(number, BN_FLG_CONSTTIME);
        return BN_mod_inverse(out, number, m, context) != nullptr ? 1 : 0;
    };
    return compute(result, operation, a, modulus);
}

uint32_t random_BIGINT(BIGINT *result, const BIGINT *limit) {
    const auto operation = [](BIGNUM *out, const BIGNUM *range, BN_CTX *context) {
        return BN_priv_rand_range_ex(out, range, 0, context);
    };
    return compute(result, operation, limit);
}

int32_t is_BIGINT_prime(const BIGINT *number) {
    const ErrorScope errors;
    const BignumContext context = new_bignum_context();
    const Bignum candidate(to_bignum(number));
    if (context == nullptr || candidate == nullptr) return 0;
    return BN_check_prime(candidate.get(), context.get(), nullptr) == 1 ? 1 : 0;
}

char *BIGINT_to_decimal(const BIGINT *number) {
    const ErrorScope errors;
    const Bignum value(to_bignum(number));
    char *digits = value == nullptr ? nullptr : BN_bn2dec(value.get());
    if (digits == nullptr) return nullptr;
    const std::size_t size = std::strlen(digits) + 1;
    auto *text = static_cast<char *>(TLX_ALLOCATE(size));
    if (text != nullptr) std::memcpy(text, digits, size);
    OPENSSL_clear_free(digits, size);
    return text;
}

}  // extern "C"
