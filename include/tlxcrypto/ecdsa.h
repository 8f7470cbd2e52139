/** @file
 * ECDSA signatures (FIPS 186-5, section 6) and key agreement (SP 800-56A, section 5.7.1.2) with keys on
 * P-256, P-384 and P-521.
 *
 * A key holds the octets of a point, and a private key its number besides. It never changes, so that a copy
 * is the same key with one more owner. The first operation that computes with the point decodes it once for
 * all of them. All keys share the curves. A private number is wiped before it is freed.
 *
 * - Arguments: octets are copied. data is a message, and may be null when len is 0. r and s are unsigned
 *   big-endian numbers; functions that read them take them with or without leading zeros, and functions that
 *   write them give each get_ECDSA_KEY_length() octets. out receives a key, freed with free_ECDSA_KEY(), or
 *   null.
 * - Failure: functions return 0; 1 for a bad argument (also for a public key where a private one is needed),
 * a digest that is not available and when memory runs out; TLX_ECDSA_BAD_SIGNATURE where they verify; or
 *   TLX_ECDSA_BAD_KEY. binary_to_ECDSA_KEY() returns null for a bad argument and when memory runs out, and
 *   get_ functions that return a number 0 for null.
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
#define TLX_ECDSA_BAD_KEY 3U       /**< no point of the curve other than infinity, or no private number */

#define TLX_ECDSA_MAX_LENGTH 66        /**< octets of the longest r, s, private number and shared secret */
#define TLX_ECDSA_MAX_POINT_LENGTH 133 /**< octets of the longest point */

TLX_BEGIN_DECLS

/** A public key, or a private key with its public one. */
typedef struct ECDSA_KEY ECDSA_KEY;

/** Makes a key, freed with free_ECDSA_KEY(), without decoding the point.
 * @param curve TLX_CURVE_
 * @param point the point as SEC 1, section 2.3.3 encodes it, compressed or not; at most
 * TLX_ECDSA_MAX_POINT_LENGTH octets */
TLXCRYPTO_API ECDSA_KEY *binary_to_ECDSA_KEY(uint32_t curve, const uint8_t *point, uint32_t point_len);
/** Makes a private key and computes its public one. Returns TLX_ECDSA_BAD_KEY when the number is 0 or not
 * below the order of the curve.
 * @param number the private number, big-endian, with or without leading zeros */
TLXCRYPTO_API uint32_t private_binary_to_ECDSA_KEY(uint32_t curve, const uint8_t *number, uint32_t number_len,
                                                   ECDSA_KEY **out);
/** Makes a random private key (FIPS 186-5, appendix A.2.2). */
TLXCRYPTO_API uint32_t gen_ECDSA_KEY(uint32_t curve, ECDSA_KEY **out);
/** Returns the key itself with one more owner, who frees it with free_ECDSA_KEY(). Null for null. */
TLXCRYPTO_API ECDSA_KEY *dup_ECDSA_KEY(ECDSA_KEY *key);
/** Frees a key with its last owner. Ignores null. */
TLXCRYPTO_API void free_ECDSA_KEY(ECDSA_KEY *key);

/** Returns the TLX_CURVE_ of a key. */
TLXCRYPTO_API uint32_t get_ECDSA_KEY_curve(const ECDSA_KEY *key);
/** Returns how many times the key's point was decoded: 0 before the first operation, then 1; more only when
 * several threads ran the first operation at once. */
TLXCRYPTO_API uint32_t get_ECDSA_KEY_builds(const ECDSA_KEY *key);
/** Returns the octets of r, of s, of a private number and of a shared secret: 32, 48 or 66. */
TLXCRYPTO_API uint32_t get_ECDSA_KEY_length(const ECDSA_KEY *key);
/** Returns the private number, which stays the key's, in get_ECDSA_KEY_length() octets; null for a public
 * key. */
TLXCRYPTO_API const uint8_t *get_ECDSA_KEY_private(const ECDSA_KEY *key);
/** Writes the public key as an uncompressed point.
 * @param point receives up to TLX_ECDSA_MAX_POINT_LENGTH octets
 * @param point_len receives their number, 0 on failure */
TLXCRYPTO_API uint32_t get_ECDSA_KEY_point(const ECDSA_KEY *key, uint8_t *point, uint32_t *point_len);
/** Compares the public keys, whatever form their points have.
 * @return 0 when they are equal; -1 when they differ; 1 for null, for a point that is not of its curve and
 * when memory runs out */
TLXCRYPTO_API int32_t cmp_ECDSA_KEY(const ECDSA_KEY *a, const ECDSA_KEY *b);
/** Decodes the point, if nobody has yet. Returns TLX_ECDSA_BAD_KEY when it is not one of the curve. */
TLXCRYPTO_API uint32_t check_ECDSA_KEY(const ECDSA_KEY *key);

/** Verifies a signature. Any digest will do; of one longer than the curve's order the leftmost bits count. */
TLXCRYPTO_API uint32_t verify_ECDSA(const ECDSA_KEY *key, uint32_t digest_id, const uint8_t *data,
                                    uint32_t len, const uint8_t *r, uint32_t r_len, const uint8_t *s,
                                    uint32_t s_len);
/** Verifies a signature over the digest of a message, of 1 to TLX_DIGEST_MAX_LENGTH octets. */
TLXCRYPTO_API uint32_t verify_ECDSA_digest(const ECDSA_KEY *key, const uint8_t *digest, uint32_t digest_len,
                                           const uint8_t *r, uint32_t r_len, const uint8_t *s,
                                           uint32_t s_len);

/** Signs a message with a private key and a random nonce. */
TLXCRYPTO_API uint32_t sign_ECDSA(const ECDSA_KEY *key, uint32_t digest_id, const uint8_t *data, uint32_t len,
                                  uint8_t *r, uint8_t *s);
/** Signs the digest of a message, of 1 to TLX_DIGEST_MAX_LENGTH octets. */
TLXCRYPTO_API uint32_t sign_ECDSA_digest(const ECDSA_KEY *key, const uint8_t *digest, uint32_t digest_len,
                                         uint8_t *r, uint8_t *s);

/** Agrees on a secret: the x coordinate of the peer's point times the private number. The cofactor of the
 * three curves is 1, so that this is the cofactor Diffie-Hellman primitive also. Returns 1 also for a peer on
 * another curve, and TLX_ECDSA_BAD_KEY for a peer's point that is not one of the curve.
 * @param key a private key
 * @param secret receives get_ECDSA_KEY_length() octets; zeros on failure */
TLXCRYPTO_API uint32_t compute_ECDH(const ECDSA_KEY *key, const ECDSA_KEY *peer, uint8_t *secret);

TLX_END_DECLS

#endif
