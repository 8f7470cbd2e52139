/** @file
 * Elliptic curves over prime fields: points and domain parameters, as plain records (SEC 1, ANSI X9.62).
 *
 * Thread safety: distinct records may be used on distinct threads.
 */
#ifndef TLXCRYPTO_CURVE_H
#define TLXCRYPTO_CURVE_H

#include <stdint.h>
#include <tlxcrypto/bigint.h>
#include <tlxcrypto/export.h>

TLX_BEGIN_DECLS

/** An affine point. The record owns its coordinates, which are null in a new one. */
typedef struct ECPOINT {
    BIGINT *x;
    BIGINT *y;
} ECPOINT;

/** Domain parameters of y^2 = x^3 + ax + b over the integers modulo the prime p. The record owns its members,
 * which are null in a new one. */
typedef struct ECURVE {
    int32_t id;    /**< number of the curve, given by whoever sets the parameters */
    char name[33]; /**< name of up to 32 octets */
    BIGINT *a;
    BIGINT *b;
    BIGINT *p;
    ECPOINT *base; /**< generates the group of that order */
    BIGINT *order;
} ECURVE;

/** A new point without coordinates, freed with free_ECPOINT; null on allocation failure. */
TLXCRYPTO_API ECPOINT *new_ECPOINT(void);

/** Frees a point with its coordinates, which are wiped. Null is ignored. */
TLXCRYPTO_API void free_ECPOINT(ECPOINT *point);

/** A new point with copies of the coordinates; null on a null point, a missing coordinate or allocation
 * failure. */
TLXCRYPTO_API ECPOINT *dup_ECPOINT(const ECPOINT *point);

/** Stores copies of x and y.
 *
 * @return 0, or 1 on a null argument or allocation failure (the point is unchanged then).
 */
TLXCRYPTO_API uint32_t set_ECPOINT(ECPOINT *point, const BIGINT *x, const BIGINT *y);

/** A new curve without parameters, freed with free_ECURVE; null on allocation failure. */
TLXCRYPTO_API ECURVE *new_ECURVE(void);

/** Frees all parameters; the curve is as new. Null is ignored. */
TLXCRYPTO_API void clean_ECURVE(ECURVE *curve);

/** Frees a curve with its parameters. Null is ignored. */
TLXCRYPTO_API void free_ECURVE(ECURVE *curve);

/** A new curve with copies of all parameters; null on a null curve, a missing parameter or allocation
 * failure. */
TLXCRYPTO_API ECURVE *dup_ECURVE(const ECURVE *curve);

/** Stores copies of the parameters, in the place of previous ones. They are not checked.
 *
 * @param name  At most 32 octets.
 * @return 0, or 1 on a null argument, a longer name or allocation failure (the curve is unchanged then).
 */
TLXCRYPTO_API uint32_t set_ECURVE_params(ECURVE *curve, int32_t id, const char *name, const BIGINT *a,
                                         const BIGINT *b, const BIGINT *p, const ECPOINT *base,
                                         const BIGINT *order);

/** Whether a point's coordinates are below p and satisfy the curve's equation.
 *
 * @return 1 when they do; 0 when they do not, something is missing, p is not an odd number above 3 of at most
 *         661 bits, or on allocation failure.
 */
TLXCRYPTO_API int32_t is_ECPOINT_on_ECURVE(const ECPOINT *point, const ECURVE *curve);

TLX_END_DECLS

#endif
