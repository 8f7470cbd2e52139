/** @file
 * Elliptic-curve keys over prime fields, as values, and their points as octets (SEC 1, section 2.3).
 *
 * Statuses: 0 success, 1 a bad argument, octets that are no point of the curve, or a failed allocation.
 *
 * Threads: functions that take const values may run at the same time on the same values.
 */
#ifndef TLXCRYPTO_EC_H
#define TLXCRYPTO_EC_H

#include <stdint.h>
#include <tlxcrypto/bigint.h>
#include <tlxcrypto/curve.h>
#include <tlxcrypto/export.h>

TLX_BEGIN_DECLS

/** A key on an elliptic curve. The unit owns its members, each of which may be null. */
typedef struct ECC_KEY {
    ECURVE *curve;
    ECPOINT *public_point;
    BIGINT *private_value;
} ECC_KEY;

/** A key without members; null when memory is short. Freed with free_ECC_KEY. */
TLXCRYPTO_API ECC_KEY *new_ECC_KEY(void);
/** Frees the members, wiping the private value: the key is as new; null is allowed. */
TLXCRYPTO_API void clean_ECC_KEY(ECC_KEY *key);
/** Cleans and frees a key; null is allowed. */
TLXCRYPTO_API void free_ECC_KEY(ECC_KEY *key);
/** A new key with copies of the members; null on a null argument or allocation failure. */
TLXCRYPTO_API ECC_KEY *dup_ECC_KEY(const ECC_KEY *key);

/** Stores copies of the members, dropping what the key held.
 * @param key the key
 * @param curve domain parameters; null leaves them out
 * @param public_point the public key; null leaves it out
 * @param private_value the private key; null leaves it out
 * @return 0; 1 on a null key or allocation failure (the key is unchanged then) */
TLXCRYPTO_API uint32_t set_ECC_KEY(ECC_KEY *key, const ECURVE *curve, const ECPOINT *public_point,
                                   const BIGINT *private_value);

/** Octets of a point of the curve: 1 + 2 field lengths uncompressed, 1 + 1 field length compressed; 0 on a
 * null curve or one without p. */
TLXCRYPTO_API uint32_t get_ECPOINT_length(const ECURVE *curve, uint32_t compressed);
/** Writes a point as octets (SEC 1, section 2.3.3).
 * @param point a point with both coordinates below p; whether it lies on the curve is not looked at
 * @param curve its curve
 * @param compressed 0 writes 04 x y, else 02 or 03 and x
 * @param octets receives get_ECPOINT_length (curve, compressed) octets
 * @param len receives their number, 0 on failure
 * @return 0; 1 on a bad argument or allocation failure */
TLXCRYPTO_API uint32_t ECPOINT_to_binary(const ECPOINT *point, const ECURVE *curve, uint32_t compressed,
                                         uint8_t *octets, uint32_t *len);
/** Reads a point from octets, uncompressed or compressed (SEC 1, section 2.3.4), and makes sure that it lies
 * on the curve. The point at infinity and the hybrid forms are refused.
 * @param curve the curve, whose p has at most 661 bits; compressed points need an odd prime p
 * @param octets the octets
 * @param len their number
 * @return a new point, freed with free_ECPOINT; null on a bad argument, octets that are no point of the curve
 * or an allocation failure */
TLXCRYPTO_API ECPOINT *binary_to_ECPOINT(const ECURVE *curve, const uint8_t *octets, uint32_t len);

TLX_END_DECLS

#endif
