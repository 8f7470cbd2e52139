/** @file
 * Verification of Ed25519 and Ed448 signatures (RFC 8032) under public keys.
 *
 * A key never changes, so that a copy is the same key with one more owner. The first verification prepares it
 * once for all of them.
 *
 * - Arguments: octets are copied. data is a message, and may be null when len is 0.
 * - Failure: verify_EDDSA() returns 0, 1 for a bad argument and when memory runs out, or
 *   TLX_EDDSA_BAD_SIGNATURE. Functions that make a key return null for a bad argument and when memory runs
 * out, and get_ functions 0 for null.
 * - Threads: several threads may use one key at the same time.
 */
#ifndef TLXCRYPTO_EDDSA_H
#define TLXCRYPTO_EDDSA_H

#include <stdint.h>
#include <tlxcrypto/export.h>

/* Curves (RFC 7748), with the octets of a public key and of a signature. */
#define TLX_CURVE_ED25519 25519U /**< 32 and 64 octets */
#define TLX_CURVE_ED448 448U     /**< 57 and 114 octets */

/** The signature is not one of this key over this data, or the key's octets are no point of the curve. */
#define TLX_EDDSA_BAD_SIGNATURE 2U

TLX_BEGIN_DECLS

/** A public key. */
typedef struct EDDSA_KEY EDDSA_KEY;

/** Makes a key, freed with free_EDDSA_KEY(). Returns null also when the octets are not as many as the curve's
 * keys have.
 * @param curve TLX_CURVE_ED25519 or TLX_CURVE_ED448
 * @param point the public key as RFC 8032 encodes it */
TLXCRYPTO_API EDDSA_KEY *binary_to_EDDSA_KEY(uint32_t curve, const uint8_t *point, uint32_t point_len);
/** Returns the key itself with one more owner, who frees it with free_EDDSA_KEY(). Null for null. */
TLXCRYPTO_API EDDSA_KEY *dup_EDDSA_KEY(EDDSA_KEY *key);
/** Frees a key with its last owner. Ignores null. */
TLXCRYPTO_API void free_EDDSA_KEY(EDDSA_KEY *key);

/** Returns the TLX_CURVE_ of a key. */
TLXCRYPTO_API uint32_t get_EDDSA_KEY_curve(const EDDSA_KEY *key);
/** Returns how many times the key was prepared: 0 before the first verification, then 1; more only when
 * several threads ran the first one at once. */
TLXCRYPTO_API uint32_t get_EDDSA_KEY_builds(const EDDSA_KEY *key);

/** Verifies a signature without context (RFC 8032: Ed25519, and Ed448 with an empty one). A signature of
 * another length is bad. */
TLXCRYPTO_API uint32_t verify_EDDSA(const EDDSA_KEY *key, const uint8_t *data, uint32_t len,
                                    const uint8_t *sig, uint32_t sig_len);

TLX_END_DECLS

#endif
