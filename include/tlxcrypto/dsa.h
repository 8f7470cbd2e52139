/** @file
 * Verification of DSA signatures (FIPS 186-4, section 4.7) under public keys. DSA is for signatures of the
 * past.
 *
 * A key holds its domain parameters and never changes, so that a copy is the same key with one more owner.
 * The first verification prepares the numbers once for all of them.
 *
 * - Arguments: numbers are copied. data is a message, and may be null when len is 0. r and s are unsigned
 *   big-endian numbers, with or without leading zeros.
 * - Failure: functions return 0; 1 for a bad argument, a digest that is not available and when memory runs
 * out; TLX_DSA_BAD_SIGNATURE; or TLX_DSA_BAD_KEY. Functions that make a key return null for a null argument
 * and when memory runs out, and get_ functions null or 0 for null.
 * - Threads: several threads may use one key at the same time.
 */
#ifndef TLXCRYPTO_DSA_H
#define TLXCRYPTO_DSA_H

#include <stdint.h>
#include <tlxcrypto/bigint.h>
#include <tlxcrypto/digest.h>
#include <tlxcrypto/export.h>

#define TLX_DSA_BAD_SIGNATURE 2U /**< the signature is not one of this key over this data */
#define TLX_DSA_BAD_KEY 3U       /**< the numbers make no usable key */

TLX_BEGIN_DECLS

/** A public key with its domain parameters. */
typedef struct DSA_KEY DSA_KEY;

/** The numbers of a key. */
typedef enum TLX_DSA_NUMBER {
    TLX_DSA_P, /**< prime modulus */
    TLX_DSA_Q, /**< prime order of g */
    TLX_DSA_G, /**< generator */
    TLX_DSA_Y, /**< public key */
    TLX_DSA_NUMBER_COUNT
} TLX_DSA_NUMBER;

/** Makes a key of any numbers, freed with free_DSA_KEY(). */
TLXCRYPTO_API DSA_KEY *new_DSA_KEY(const BIGINT *p, const BIGINT *q, const BIGINT *g, const BIGINT *y);
/** Returns the key itself with one more owner, who frees it with free_DSA_KEY(). Null for null. */
TLXCRYPTO_API DSA_KEY *dup_DSA_KEY(DSA_KEY *key);
/** Frees a key with its last owner. Ignores null. */
TLXCRYPTO_API void free_DSA_KEY(DSA_KEY *key);

/** Returns one of the numbers, which stays the key's. */
TLXCRYPTO_API const BIGINT *get_DSA_KEY_number(const DSA_KEY *key, TLX_DSA_NUMBER which);
/** Returns how many times the numbers were prepared: 0 before the first operation, then 1; more only when
 * several threads ran the first one at once. */
TLXCRYPTO_API uint32_t get_DSA_KEY_builds(const DSA_KEY *key);
/** Prepares the numbers, if nobody has yet. Returns TLX_DSA_BAD_KEY unless p is odd and has 512 to 8192 bits,
 * q has 160, 224 or 256 bits and divides p - 1, and g and y are in 2 .. p - 2. Nothing tests whether p and q
 * are prime. */
TLXCRYPTO_API uint32_t check_DSA_KEY(const DSA_KEY *key);

/** Verifies a signature. Returns TLX_DSA_BAD_KEY as check_DSA_KEY() does. Any digest will do; of one longer
 * than q the leftmost bits count. */
TLXCRYPTO_API uint32_t verify_DSA(const DSA_KEY *key, uint32_t digest_id, const uint8_t *data, uint32_t len,
                                  const uint8_t *r, uint32_t r_len, const uint8_t *s, uint32_t s_len);
/** Verifies a signature over the digest of a message, of 1 to TLX_DIGEST_MAX_LENGTH octets. */
TLXCRYPTO_API uint32_t verify_DSA_digest(const DSA_KEY *key, const uint8_t *digest, uint32_t digest_len,
                                         const uint8_t *r, uint32_t r_len, const uint8_t *s, uint32_t s_len);

TLX_END_DECLS

#endif
