/** @file
 * Ed25519 and Ed448 signatures (RFC 8032).
 *
 * A key never changes, so that a copy is the same key with one more owner. The first operation prepares it
 * once for all of them. Private octets are wiped before they are freed.
 *
 * - Arguments: octets are copied. data is a message, and may be null when len is 0. out receives a key, freed
 *   with free_EDDSA_KEY(), or null.
 * - Failure: functions return 0; 1 for a bad argument (also for a public key where a private one is needed)
 *   and when memory runs out; or TLX_EDDSA_BAD_SIGNATURE where they verify. binary_to_EDDSA_KEY() returns
 * null for a bad argument and when memory runs out. get_ functions return 0 or null for null.
 * - Threads: several threads may use one key at the same time.
 */
#ifndef TLXCRYPTO_EDDSA_H
#define TLXCRYPTO_EDDSA_H

#include <stdint.h>
#include <tlxcrypto/export.h>

/* Curves (RFC 7748), with the octets of a key, public or private, and of a signature. */
#define TLX_CURVE_ED25519 25519U /**< 32 and 64 octets */
#define TLX_CURVE_ED448 448U     /**< 57 and 114 octets */

/** The signature is not one of this key over this data, or the key's octets are no point of the curve. */
#define TLX_EDDSA_BAD_SIGNATURE 2U

TLX_BEGIN_DECLS

#define TLX_EDDSA_MAX_LENGTH 114 /**< octets of the longest signature */

/** A public key, or a private key with its public one. */
typedef struct EDDSA_KEY EDDSA_KEY;

/** Makes a key, freed with free_EDDSA_KEY(). Returns null also when the octets are not as many as the curve's
 * keys have.
 * @param curve TLX_CURVE_ED25519 or TLX_CURVE_ED448
 * @param point the public key as RFC 8032 encodes it */
TLXCRYPTO_API EDDSA_KEY *binary_to_EDDSA_KEY(uint32_t curve, const uint8_t *point, uint32_t point_len);
/** Makes a private key and computes its public one. Returns 1 also when the octets are not as many as the
 * curve's keys have.
 * @param octets the private key of RFC 8032, section 5.1.5 or 5.2.5 */
TLXCRYPTO_API uint32_t private_binary_to_EDDSA_KEY(uint32_t curve, const uint8_t *octets, uint32_t len,
                                                   EDDSA_KEY **out);
/** Makes a random private key. */
TLXCRYPTO_API uint32_t gen_EDDSA_KEY(uint32_t curve, EDDSA_KEY **out);
/** Returns the key itself with one more owner, who frees it with free_EDDSA_KEY(). Null for null. */
TLXCRYPTO_API EDDSA_KEY *dup_EDDSA_KEY(EDDSA_KEY *key);
/** Frees a key with its last owner. Ignores null. */
TLXCRYPTO_API void free_EDDSA_KEY(EDDSA_KEY *key);

/** Returns the TLX_CURVE_ of a key. */
TLXCRYPTO_API uint32_t get_EDDSA_KEY_curve(const EDDSA_KEY *key);
/** Returns the octets of a key, public or private: 32 or 57. */
TLXCRYPTO_API uint32_t get_EDDSA_KEY_length(const EDDSA_KEY *key);
/** Returns the public key, which stays the key's, in get_EDDSA_KEY_length() octets. */
TLXCRYPTO_API const uint8_t *get_EDDSA_KEY_point(const EDDSA_KEY *key);
/** Returns the private key likewise; null for a public key. */
TLXCRYPTO_API const uint8_t *get_EDDSA_KEY_private(const EDDSA_KEY *key);
/** Returns how many times the key was prepared: 0 before the first verification, then 1; more only when
 * several threads ran the first one at once. A private key is prepared when it is made. */
TLXCRYPTO_API uint32_t get_EDDSA_KEY_builds(const EDDSA_KEY *key);

/** Verifies a signature without context (RFC 8032: Ed25519, and Ed448 with an empty one). A signature of
 * another length is bad. */
TLXCRYPTO_API uint32_t verify_EDDSA(const EDDSA_KEY *key, const uint8_t *data, uint32_t len,
                                    const uint8_t *sig, uint32_t sig_len);
/** The same for data of any length, such as a file that is mapped into memory. */
TLXCRYPTO_API uint32_t verify_EDDSA_ex(const EDDSA_KEY *key, const uint8_t *data, uint64_t len,
                                       const uint8_t *sig, uint32_t sig_len);

/** Signs a message without context. It verifies the signature before it gives it out, because a faulty one
 * could give the private key away.
 * @param sig receives 64 or 114 octets, at most TLX_EDDSA_MAX_LENGTH
 * @param sig_len receives their number, 0 on failure */
TLXCRYPTO_API uint32_t sign_EDDSA(const EDDSA_KEY *key, const uint8_t *data, uint32_t len, uint8_t *sig,
                                  uint32_t *sig_len);

TLX_END_DECLS

#endif
