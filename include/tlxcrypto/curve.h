#ifndef TLXCRYPTO_CURVE_H
#define TLXCRYPTO_CURVE_H

#include <stdint.h>
#include <tlxcrypto/bigint.h>
#include <tlxcrypto/export.h>

TLX_BEGIN_DECLS

/** An affine point. */
typedef struct ECPOINT {
    BIGINT *x;
    BIGINT *y;
} ECPOINT;

/** Domain parameters of y^2 = x^3 + ax + b over the integers modulo p. */
typedef struct ECURVE {
    int32_t id;
    char name[33];
    BIGINT *a;
    BIGINT *b;
    BIGINT *p;
    ECPOINT *base;
    BIGINT *order;
} ECURVE;

TLXCRYPTO_API ECPOINT *new_ECPOINT(void);
TLXCRYPTO_API void free_ECPOINT(ECPOINT *point);
TLXCRYPTO_API ECPOINT *dup_ECPOINT(const ECPOINT *point);
/** Stores copies of x and y. 0 or 1. */
TLXCRYPTO_API uint32_t set_ECPOINT(ECPOINT *point, const BIGINT *x, const BIGINT *y);
TLXCRYPTO_API ECURVE *new_ECURVE(void);
TLXCRYPTO_API void clean_ECURVE(ECURVE *curve);
TLXCRYPTO_API void free_ECURVE(ECURVE *curve);
TLXCRYPTO_API ECURVE *dup_ECURVE(const ECURVE *curve);
/** Stores copies of the parameters. 0 or 1 (the curve is unchanged then). */
TLXCRYPTO_API uint32_t set_ECURVE_params(ECURVE *curve, int32_t id, const char *name, const BIGINT *a,
                                         const BIGINT *b, const BIGINT *p, const ECPOINT *base,
                                         const BIGINT *order);
/** 1 when point lies on curve, 0 when it does not or on failure. */
TLXCRYPTO_API int32_t is_ECPOINT_on_ECURVE(const ECPOINT *point, const ECURVE *curve);

TLX_END_DECLS

#endif
