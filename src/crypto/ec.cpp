#include <tlxcrypto/ec.h>

#include <openssl/ec.h>

#include <memory>
#include <utility>

#include "crypto/backend.hpp"
#include "crypto/key_numbers.hpp"
#include "crypto/memory.hpp"

using namespace tlx;

namespace {

// The first octet of a point (SEC 1, section 2.3.3).
constexpr u8 kCompressedEven = 0x02;
constexpr u8 kCompressedOdd = 0x03;
constexpr u8 kUncompressed = 0x04;

struct Free {
    void operator()(ECPOINT *point) const noexcept { free_ECPOINT(point); }
    void operator()(ECURVE *curve) const noexcept { free_ECURVE(curve); }
    void operator()(ECC_KEY *key) const noexcept { free_ECC_KEY(key); }
};
template <typename T>
using Owned = std::unique_ptr<T, Free>;

u32 field_length(const ECURVE *curve) noexcept {
    return curve == nullptr ? 0 : (get_BIGINT_bits(curve->p) + 7) / 8;
}

Owned<ECPOINT> make_point(const BIGINT *x, const BIGINT *y) noexcept {
    Owned<ECPOINT> point(new_ECPOINT());
    return set_ECPOINT(point.get(), x, y) == 0 ? std::move(point) : nullptr;
}

// The square root of x^3 + ax + b modulo p that is odd or even as wanted; null when there is none.
OwnedBigint solve_y(const ECURVE &curve, const BIGINT *x, bool odd) noexcept {
    const ErrorScope errors;
    const BignumContext context(backend() == nullptr ? nullptr : BN_CTX_new_ex(backend()));
    const Bignum p(to_bignum(curve.p));
    const Bignum a(to_bignum(curve.a));
    const Bignum b(to_bignum(curve.b));
    const Bignum value(to_bignum(x));
    const Bignum y(BN_new());
    if (context == nullptr || p == nullptr || a == nullptr || b == nullptr || value == nullptr ||
        y == nullptr) {
        return nullptr;
    }
    // (x^2 + a) x + b
    if (BN_mod_sqr(y.get(), value.get(), p.get(), context.get()) != 1 ||
        BN_mod_add(y.get(), y.get(), a.get(), p.get(), context.get()) != 1 ||
        BN_mod_mul(y.get(), y.get(), value.get(), p.get(), context.get()) != 1 ||
        BN_mod_add(y.get(), y.get(), b.get(), p.get(), context.get()) != 1 ||
        BN_mod_sqrt(y.get(), y.get(), p.get(), context.get()) == nullptr) {
        return nullptr;
    }
    if ((BN_is_odd(y.get()) != 0) != odd && BN_sub(y.get(), p.get(), y.get()) != 1) return nullptr;
    OwnedBigint root(new_BIGINT());
    return root != nullptr && from_bignum(root.get(), y.get()) ? std::move(root) : nullptr;
}

}  // namespace

extern "C" {

ECC_KEY *new_ECC_KEY(void) {
    return TLX_NEW(ECC_KEY);
}

void clean_ECC_KEY(ECC_KEY *key) {
    if (key == nullptr) return;
    free_ECURVE(key->curve);
    free_ECPOINT(key->public_point);
    free_BIGINT(key->private_value);
    *key = {};
}

void free_ECC_KEY(ECC_KEY *key) {
    clean_ECC_KEY(key);
    tlx_free(key);
}

ECC_KEY *dup_ECC_KEY(const ECC_KEY *key) {
    if (key == nullptr) return nullptr;
    Owned<ECC_KEY> copy(new_ECC_KEY());
    const u32 failed = set_ECC_KEY(copy.get(), key->curve, key->public_point, key->private_value);
    return failed == 0 ? copy.release() : nullptr;
}

uint32_t set_ECC_KEY(ECC_KEY *key, const ECURVE *curve, const ECPOINT *public_point,
                     const BIGINT *private_value) {
    if (key == nullptr) return 1;
    ECC_KEY next = {dup_ECURVE(curve), dup_ECPOINT(public_point), dup_BIGINT(private_value)};
    const bool copied = (curve == nullptr || next.curve != nullptr) &&
                        (public_point == nullptr || next.public_point != nullptr) &&
                        (private_value == nullptr || next.private_value != nullptr);
    if (copied) std::swap(*key, next);
    clean_ECC_KEY(&next);
    return copied ? 0 : 1;
}

uint32_t get_ECPOINT_length(const ECURVE *curve, uint32_t compressed) {
    const u32 length = field_length(curve);
    if (length == 0) return 0;
    return 1 + (compressed != 0 ? length : 2 * length);
}

uint32_t ECPOINT_to_binary(const ECPOINT *point, const ECURVE *curve, uint32_t compressed, uint8_t *octets,
                           uint32_t *len) {
    if (len == nullptr) return 1;
    *len = 0;
    if (point == nullptr || point->x == nullptr || point->y == nullptr || octets == nullptr) return 1;
    const u32 length = field_length(curve);
    if (length == 0 || cmp_BIGINT(point->x, curve->p) >= 0 || cmp_BIGINT(point->y, curve->p) >= 0) return 1;
    if (BIGINT_to_binary(point->x, octets + 1, length) != 0) return 1;
    if (compressed != 0) {
        octets[0] = is_odd(point->y) ? kCompressedOdd : kCompressedEven;
    } else {
        octets[0] = kUncompressed;
        if (BIGINT_to_binary(point->y, octets + 1 + length, length) != 0) return 1;
    }
    *len = get_ECPOINT_length(curve, compressed);
    return 0;
}

ECPOINT *binary_to_ECPOINT(const ECURVE *curve, const uint8_t *octets, uint32_t len) {
    const u32 length = field_length(curve);
    if (length == 0 || get_BIGINT_bits(curve->p) > OPENSSL_ECC_MAX_FIELD_BITS) return nullptr;
    if (octets == nullptr || len == 0) return nullptr;
    const u8 form = octets[0];
    const bool compressed = form == kCompressedEven || form == kCompressedOdd;
    if (!compressed && form != kUncompressed) return nullptr;
    if (len != get_ECPOINT_length(curve, compressed ? 1 : 0)) return nullptr;
    const OwnedBigint x(binary_to_BIGINT(octets + 1, length));
    if (x == nullptr || cmp_BIGINT(x.get(), curve->p) >= 0) return nullptr;
    const OwnedBigint y = compressed ? solve_y(*curve, x.get(), form == kCompressedOdd)
                                     : OwnedBigint(binary_to_BIGINT(octets + 1 + length, length));
    if (y == nullptr) return nullptr;
    Owned<ECPOINT> point = make_point(x.get(), y.get());
    // The root zero has no second sign, and a p that is not prime may give a wrong root.
    const bool right = point != nullptr && (!compressed || is_odd(point->y) == (form == kCompressedOdd)) &&
                       is_ECPOINT_on_ECURVE(point.get(), curve) == 1;
    return right ? point.release() : nullptr;
}

}  // extern "C"
