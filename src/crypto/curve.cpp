#include <tlxcrypto/curve.h>

#include <openssl/ec.h>

#include <cstring>
#include <memory>
#include <utility>

#include "crypto/backend.hpp"
#include "crypto/bigint.hpp"
#include "crypto/memory.hpp"

using namespace tlx;

namespace {

struct Free {
    void operator()(ECPOINT *point) const noexcept { free_ECPOINT(point); }
    void operator()(ECURVE *curve) const noexcept { free_ECURVE(curve); }
    void operator()(EC_GROUP *group) const noexcept { EC_GROUP_free(group); }
    void operator()(EC_POINT *point) const noexcept { EC_POINT_free(point); }
};
template <typename T>
using Owned = std::unique_ptr<T, Free>;

}  // namespace

extern "C" {

ECPOINT *new_ECPOINT(void) {
    return TLX_NEW(ECPOINT);
}

void free_ECPOINT(ECPOINT *point) {
    if (point == nullptr) return;
    free_BIGINT(point->x);
    free_BIGINT(point->y);
    tlx_free(point);
}

ECPOINT *dup_ECPOINT(const ECPOINT *point) {
    if (point == nullptr) return nullptr;
    Owned<ECPOINT> copy(new_ECPOINT());
    return set_ECPOINT(copy.get(), point->x, point->y) == 0 ? copy.release() : nullptr;
}

uint32_t set_ECPOINT(ECPOINT *point, const BIGINT *x, const BIGINT *y) {
    OwnedBigint new_x(dup_BIGINT(x));
    OwnedBigint new_y(dup_BIGINT(y));
    if (point == nullptr || new_x == nullptr || new_y == nullptr) return 1;
    free_BIGINT(std::exchange(point->x, new_x.release()));
    free_BIGINT(std::exchange(point->y, new_y.release()));
    return 0;
}

ECURVE *new_ECURVE(void) {
    return TLX_NEW(ECURVE);
}

void clean_ECURVE(ECURVE *curve) {
    if (curve == nullptr) return;
    free_BIGINT(curve->a);
    free_BIGINT(curve->b);
    free_BIGINT(curve->p);
    free_ECPOINT(curve->base);
    free_BIGINT(curve->order);
    *curve = {};
}

void free_ECURVE(ECURVE *curve) {
    clean_ECURVE(curve);
    tlx_free(curve);
}

ECURVE *dup_ECURVE(const ECURVE *curve) {
    if (curve == nullptr) return nullptr;
    Owned<ECURVE> copy(new_ECURVE());
    const u32 failed = set_ECURVE_params(copy.get(), curve->id, curve->name, curve->a, curve->b, curve->p,
                                         curve->base, curve->order);
    return failed == 0 ? copy.release() : nullptr;
}

uint32_t set_ECURVE_params(ECURVE *curve, int32_t id, const char *name, const BIGINT *a, const BIGINT *b,
                           const BIGINT *p, const ECPOINT *base, const BIGINT *order) {
    if (curve == nullptr || name == nullptr || std::strlen(name) >= sizeof curve->name) return 1;
    ECURVE next = {id, {}, dup_BIGINT(a), dup_BIGINT(b), dup_BIGINT(p), dup_ECPOINT(base), dup_BIGINT(order)};
    std::memcpy(next.name, name, std::strlen(name));
    if (next.a == nullptr || next.b == nullptr || next.p == nullptr || next.base == nullptr ||
        next.order == nullptr) {
        clean_ECURVE(&next);
        return 1;
    }
    std::swap(*curve, next);
    clean_ECURVE(&next);
    return 0;
}

int32_t is_ECPOINT_on_ECURVE(const ECPOINT *point, const ECURVE *curve) {
    const ErrorScope errors;
    if (point == nullptr || curve == nullptr) return 0;
    if (get_BIGINT_bits(curve->p) > OPENSSL_ECC_MAX_FIELD_BITS) return 0;
    if (cmp_BIGINT(point->x, curve->p) >= 0 || cmp_BIGINT(point->y, curve->p) >= 0) return 0;
    const BignumContext context = new_bignum_context();
    const Bignum numbers[] = {Bignum(to_bignum(curve->p)), Bignum(to_bignum(curve->a)),
                              Bignum(to_bignum(curve->b)), Bignum(to_bignum(point->x)),
                              Bignum(to_bignum(point->y))};
    const auto &[p, a, b, x, y] = numbers;
    if (context == nullptr) return 0;
    for (const Bignum &number : numbers) {
        if (number == nullptr) return 0;
    }
    const Owned<EC_GROUP> group(EC_GROUP_new_curve_GFp(p.get(), a.get(), b.get(), context.get()));
    const Owned<EC_POINT> affine(group == nullptr ? nullptr : EC_POINT_new(group.get()));
    if (affine == nullptr) return 0;
    // Takes no coordinates that do not satisfy the equation.
    return EC_POINT_set_affine_coordinates(group.get(), affine.get(), x.get(), y.get(), context.get()) == 1
               ? 1
               : 0;
}

}  // extern "C"
