/** @file
 * Elliptic curves over prime fields: points and domain parameters, as plain records (SEC 1, ANSI X9.62).
 *
 * - Ownership: a record owns its members, which are null in a new one. Functions copy what they are given.
 *   The caller frees a new record with the free_ function of its type.
 * - Failure: functions that make something return null for a null argument, a record with a missing member
 *   and when memory runs out. set_ functions return 0, or 1 for a null argument and when memory runs out; the
 *   record is unchanged then.
 * - Threads: distinct records may be used at the same time.
 */
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

/** Domain parameters of y^2 = x^3 + ax + b over the integers modulo the prime p. */
typedef struct ECURVE {
    int32_t id;    /**< number of the curve, given by whoever sets the parameters */
    char name[33]; /**< name of up to 32 octets */
    BIGINT *a;
    BIGINT *b;
    BIGINT *p;
    ECPOINT *base; /**< generates a group of that order */
    BIGINT *order;
} ECURVE;

/** Makes a point without coordinates. */
TLXCRYPTO_API ECPOINT *new_ECPOINT(void);
/** Wipes the coordinates and frees the point. Ignores null. */
TLXCRYPTO_API void free_ECPOINT(ECPOINT *point);
/** Makes a copy. */
TLXCRYPTO_API ECPOINT *dup_ECPOINT(const ECPOINT *point);
/** Stores copies of x and y. */
TLXCRYPTO_API uint32_t set_ECPOINT(ECPOINT *point, const BIGINT *x, const BIGINT *y);

/** Makes a curve without parameters. */
TLXCRYPTO_API ECURVE *new_ECURVE(void);
/** Frees all parameters and makes the curve as new. Ignores null. */
TLXCRYPTO_API void clean_ECURVE(ECURVE *curve);
/** Frees a curve with its parameters. Ignores null. */
TLXCRYPTO_API void free_ECURVE(ECURVE *curve);
/** Makes a copy. */
TLXCRYPTO_API ECURVE *dup_ECURVE(const ECURVE *curve);

/** Replaces the parameters by copies of the given ones, without checking them. Returns 1 also for a name of
 * more than 32 octets. */
TLXCRYPTO_API uint32_t set_ECURVE_params(ECURVE *curve, int32_t id, const char *name, const BIGINT *a,
                                         const BIGINT *b, const BIGINT *p, const ECPOINT *base,
                                         const BIGINT *order);

/** Returns 1 when a point's coordinates are below p and satisfy the curve's equation; 0 when not, when
 * something is missing or p is not an odd number above 3 of at most 661 bits, and when memory runs out. */
TLXCRYPTO_API int32_t is_ECPOINT_on_ECURVE(const ECPOINT *point, const ECURVE *curve);

TLX_END_DECLS

#endif
