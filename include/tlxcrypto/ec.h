/** @file
 * Elliptic-curve keys over prime fields, as values, and their points as octets (SEC 1, section 2.3).
 *
 * - Ownership: a key owns its members, each of which may be null. Functions copy what they are given.
 * - Failure: functions that make something return null for a null argument and when memory runs out. Others
 *   return 0, or 1 for a bad argument and when memory runs out.
 * - Threads: functions that take const values may run at the same time on the same values.
 */
#ifndef TLXCRYPTO_EC_H
#define TLXCRYPTO_EC_H

#include <stdint.h>
#include <tlxcrypto/bigint.h>
#include <tlxcrypto/curve.h>
#include <tlxcrypto/export.h>

TLX_BEGIN_DECLS

/** A key on an elliptic curve. */
typedef struct ECC_KEY {
    ECURVE *curve;
    ECPOINT *public_point;
    BIGINT *private_value;
} ECC_KEY;

/** Makes a key without members, freed with free_ECC_KEY(). */
TLXCRYPTO_API ECC_KEY *new_ECC_KEY(void);
/** Frees the members, wipes the private value and makes the key as new. Ignores null. */
TLXCRYPTO_API void clean_ECC_KEY(ECC_KEY *key);
/** Cleans and frees a key. Ignores null. */
TLXCRYPTO_API void free_ECC_KEY(ECC_KEY *key);
/** Makes a copy of a key. */
TLXCRYPTO_API ECC_KEY *dup_ECC_KEY(const ECC_KEY *key);

/** Replaces the members by copies, of which any may be null. On failure the key is unchanged. */
TLXCRYPTO_API uint32_t set_ECC_KEY(ECC_KEY *key, const ECURVE *curve, const ECPOINT *public_point,
                                   const BIGINT *private_value);

/** Returns the octets of a point of the curve: 1 + 2 field lengths uncompressed, 1 + 1 field length
 * compressed; 0 for a null curve or one without p. */
TLXCRYPTO_API uint32_t get_ECPOINT_length(const ECURVE *curve, uint32_t compressed);

/** Writes a point as octets (SEC 1, section 2.3.3). Both coordinates have to be below p; the function does
 * not check that the point lies on the curve.
 * @param compressed 0 writes 04 x y, any other value 02 or 03 and x
 * @param octets receives get_ECPOINT_length() octets
 * @param len receives their number, 0 on failure */
TLXCRYPTO_API uint32_t ECPOINT_to_binary(const ECPOINT *point, const ECURVE *curve, uint32_t compressed,
                                         uint8_t *octets, uint32_t *len);

/** Reads a point from len octets, uncompressed or compressed (SEC 1, section 2.3.4). p may have at most 661
 * bits, and has to be an odd prime for a compressed point. Returns a new point, freed with free_ECPOINT();
 * null also for octets that are no point of the curve, the point at infinity and the hybrid forms. */
TLXCRYPTO_API ECPOINT *binary_to_ECPOINT(const ECURVE *curve, const uint8_t *octets, uint32_t len);

TLX_END_DECLS

#endif
