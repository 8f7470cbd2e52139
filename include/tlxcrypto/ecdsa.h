/** @file
 * Verification of ECDSA signatures (FIPS 186-5, section 6.4) under public keys on P-256, P-384 and P-521.
 *
 * A key holds the octets of a point. It never changes, so that a copy is the same key with one more owner.
 * The first operation that computes with the point decodes it once for all of them. All keys share the
 * curves.
 *
 * - Arguments: octets are copied. data is a message, and may be null when len is 0. r and s are unsigned
 *   big-endian numbers, with or without leading zeros.
 * - Failure: functions return 0; 1 for a bad argument, a digest that is not available and when memory runs
 *   out; TLX_ECDSA_BAD_SIGNATURE where they verify; or TLX_ECDSA_BAD_KEY. Functions that make a key return
 * null for a bad argument and when memory runs out, and get_ functions 0 for null.
 * - Threads: several threads may use one key at the same time.
 */
#ifndef TLXCRYPTO_ECDSA_H
#define TLXCRYPTO_ECDSA_H

#include <stdint.h>
#include <tlxcrypto/digest.h>
#include <tlxcrypto/export.h>

/* Curves (FIPS 186-5; SP 800-186, section 3.2.1). */
#define TLX_CURVE_P256 256U
#define TLX_CURVE_P384 384U
#define TLX_CURVE_P521 521U

#define TLX_ECDSA_BAD_SIGNATURE 2U /**< the signature is not one of this key over this data */
#define TLX_ECDSA_BAD_KEY 3U       /**< the octets are no point of the curve other than infinity */

TLX_BEGIN_DECLS

/** A public key. */
typedef struct ECDSA_KEY ECDSA_KEY;

/** Makes a key, freed with free_ECDSA_KEY(), without decoding the point.
 * @param curve TLX_CURVE_
 * @param point the point as SEC 1, section 2.3.3 encodes it, compressed or not; at most 133 octets */
TLXCRYPTO_API ECDSA_KEY *binary_to_ECDSA_KEY(uint32_t curve, const uint8_t *point, uint32_t point_len);
/** Returns the key itself with one more owner, who frees it with free_ECDSA_KEY(). Null for null. */
TLXCRYPTO_API ECDSA_KEY *dup_ECDSA_KEY(ECDSA_KEY *key);
/** Frees a key with its last owner. Ignores null. */
TLXCRYPTO_API void free_ECDSA_KEY(ECDSA_KEY *key);

/** Returns the TLX_CURVE_ of a key. */
TLXCRYPTO_API uint32_t get_ECDSA_KEY_curve(const ECDSA_KEY *key);
/** Returns how many times the key's point was decoded: 0 before the first operation, then 1; more only when
 * several threads ran the first operation at once. */
TLXCRYPTO_API uint32_t get_ECDSA_KEY_builds(const ECDSA_KEY *key);
/** Decodes the point, if nobody has yet. Returns TLX_ECDSA_BAD_KEY when it is not one of the curve. */
TLXCRYPTO_API uint32_t check_ECDSA_KEY(const ECDSA_KEY *key);

/** Verifies a signature. Any digest will do; of one longer than the curve's order the leftmost bits count. */
TLXCRYPTO_API uint32_t verify_ECDSA(const ECDSA_KEY *key, uint32_t digest_id, const uint8_t *data,
                                    uint32_t len, const uint8_t *r, uint32_t r_len, const uint8_t *s,
                                    uint32_t s_len);

TLX_END_DECLS

#endif
