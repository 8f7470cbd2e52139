/** @file
 * KCDSA, the certificate-based digital signature algorithm of TTAK.KO-12.0001.
 *
 * With domain parameters p, q, g, private key x and public key y = g^(x^-1 mod q) mod p, the signature of a
 * message M under a digest H is (r, s): w = g^k mod p, r = H(w), e = (r xor H(z || M)) mod q, s = x (k - e)
 * mod q, where w is written in as many octets as p and z is the rightmost octets of y, a block of H long. A
 * digest longer than q is cut to its rightmost octets, as many as q has.
 *
 * A unit takes any numbers. The first operation that computes with them returns TLX_KCDSA_BAD_KEY when they
 * make no key: one of p, q and g missing, p or q even, p outside 512 to 8192 bits, q outside 112 to 512 bits
 * or not a divisor of p - 1, g or y outside 2 to p - 2, x outside 1 to q - 1; with a private key also g not
 * of order q (g^q mod p other than 1) and a y that does not belong to x. Only check_KCDSA_params() checks
 * that p and q are prime, and, without a private key, that g and y are of order q: verifying relies on
 * parameters and a public key that can be trusted. The unit keeps what it computes from the numbers once
 * (Montgomery forms) until they change.
 *
 * Arithmetic on x and k runs in constant time, with blinding where a value is inverted or multiplied.
 *
 * - Arguments: numbers are copied. data is a message or its next len octets, and may be null when len is 0. r
 *   has the octets of the digest or of q (get_KCDSA_length()), whichever are fewer, and s get_KCDSA_length()
 *   octets; a signature to verify has r in this exact length, while s may have leading zeros. A failing
 *   signature stores lengths of 0.
 * - Failure: functions return 0; 1 for a bad argument, a unit without the key that a signature or
 *   verification takes, a digest that is not available, calls in a wrong order and when memory runs out or
 *   the backend fails; TLX_KCDSA_BAD_SIGNATURE where it verifies; or TLX_KCDSA_BAD_KEY where it computes with
 *   the numbers. They leave the numbers unchanged unless they return 0. new_ and dup_ return null when memory
 *   runs out, dup_ and get_ null or 0 for null.
 * - Threads: functions that take a const unit may run at the same time on one unit, as long as none that
 *   takes a non-const unit does; distinct units are independent.
 */
#ifndef TLXCRYPTO_KCDSA_H
#define TLXCRYPTO_KCDSA_H

#include <stdint.h>
#include <tlxcrypto/bigint.h>
#include <tlxcrypto/digest.h>
#include <tlxcrypto/export.h>

#define TLX_KCDSA_BAD_SIGNATURE 2U /**< the signature is not one of this key over this data */
#define TLX_KCDSA_BAD_KEY 3U       /**< the unit's numbers make no usable key, or the parameters are wrong */

/** Octets that are enough for r and for s of any signature. */
#define TLX_KCDSA_MAX_LENGTH 64

TLX_BEGIN_DECLS

/** A KCDSA key, or domain parameters alone. */
typedef struct KCDSA KCDSA;

/** The numbers of a key. */
typedef enum TLX_KCDSA_NUMBER {
    TLX_KCDSA_P, /**< prime modulus */
    TLX_KCDSA_Q, /**< prime order of g */
    TLX_KCDSA_G, /**< generator */
    TLX_KCDSA_X, /**< private key */
    TLX_KCDSA_Y, /**< public key */
    TLX_KCDSA_NUMBER_COUNT
} TLX_KCDSA_NUMBER;

/** Makes a unit without numbers, freed with free_KCDSA(). */
TLXCRYPTO_API KCDSA *new_KCDSA(void);
/** Wipes and frees the numbers and everything under way, so that the unit is as new. Ignores null. */
TLXCRYPTO_API void clean_KCDSA(KCDSA *unit);
/** Cleans and frees a unit. Ignores null. */
TLXCRYPTO_API void free_KCDSA(KCDSA *unit);
/** Copies the numbers and the chosen digest to a new unit with nothing under way. */
TLXCRYPTO_API KCDSA *dup_KCDSA(const KCDSA *unit);

/** Stores domain parameters and keeps the keys. */
TLXCRYPTO_API uint32_t set_KCDSA_params(KCDSA *unit, const BIGINT *p, const BIGINT *q, const BIGINT *g);
/** Stores the public key. */
TLXCRYPTO_API uint32_t set_KCDSA_public(KCDSA *unit, const BIGINT *y);
/** Stores the private key and keeps the public one (see compute_KCDSA_public()). */
TLXCRYPTO_API uint32_t set_KCDSA_private(KCDSA *unit, const BIGINT *x);
/** Computes the public key from the parameters and the private key and stores it. Returns 1 also for a
 * composite q modulo which x has no inverse, TLX_KCDSA_BAD_KEY also without a private key. */
TLXCRYPTO_API uint32_t compute_KCDSA_public(KCDSA *unit);
/** Chooses the digest for each init_KCDSA() from now on; it is HAS-160 at first. */
TLXCRYPTO_API uint32_t set_KCDSA_digest(KCDSA *unit, uint32_t digest_id);

/** Generates domain parameters by the standard's method and drops the unit's keys: a random seed gives a
 * prime J of p_bits - q_bits bits and candidates for q, until q and p = 2Jq + 1 are both prime; g is h^2J mod
 * p for a random h.
 * @param p_bits size of p, 512 to 8192 and a multiple of 8 (the standard has 2048 and 3072, formerly 1024)
 * @param q_bits size of q, 112 to 512, a multiple of 8 and at most half of p_bits
 * @param digest_id digest that stretches the seed */
TLXCRYPTO_API uint32_t gen_KCDSA_params(KCDSA *unit, uint32_t p_bits, uint32_t q_bits, uint32_t digest_id);
/** Generates a key pair under the unit's domain parameters. */
TLXCRYPTO_API uint32_t gen_KCDSA_key(KCDSA *unit);
/** Checks the unit's numbers in full: p and q are prime, q divides p - 1, g is of order q; with a public key,
 * also that 1 < y < p and y is of order q; with a private key, that 0 < x < q; with both, that y belongs to
 * x. Returns TLX_KCDSA_BAD_KEY when one of these does not hold. */
TLXCRYPTO_API uint32_t check_KCDSA_params(const KCDSA *unit);

/** Returns one of the numbers, which stays the unit's; null when the unit does not have it. */
TLXCRYPTO_API const BIGINT *get_KCDSA_number(const KCDSA *unit, TLX_KCDSA_NUMBER which);
/** Returns the octets of q; 0 for a unit without it. */
TLXCRYPTO_API uint32_t get_KCDSA_length(const KCDSA *unit);
/** Returns how many times the unit prepared its present numbers for arithmetic: 0 before the first operation,
 * then 1; more only when several threads ran the first operation at once. */
TLXCRYPTO_API uint32_t get_KCDSA_builds(const KCDSA *unit);

/** Begins a signature (direction 1) or a verification (0) with the digest of set_KCDSA_digest() and drops one
 * that is under way. A private key without a public one is enough for either. */
TLXCRYPTO_API uint32_t init_KCDSA(KCDSA *unit, uint32_t direction);
/** Adds octets to the message. */
TLXCRYPTO_API uint32_t update_KCDSA(KCDSA *unit, const uint8_t *data, uint32_t len);
/** Ends what init_KCDSA() began: a signature writes r, s and their lengths, a verification reads them. */
TLXCRYPTO_API uint32_t final_KCDSA(KCDSA *unit, uint8_t *r, uint32_t *r_len, uint8_t *s, uint32_t *s_len);
/** Ends a verification of a const signature. Returns 1 also when a signature is under way, which goes on. */
TLXCRYPTO_API uint32_t verify_KCDSA(KCDSA *unit, const uint8_t *r, uint32_t r_len, const uint8_t *s,
                                    uint32_t s_len);

/** Signs in one call with a private key, whatever is under way on the unit. Writes r, s and their lengths. */
TLXCRYPTO_API uint32_t sign_KCDSA_data(const KCDSA *unit, uint32_t digest_id, const uint8_t *data,
                                       uint32_t len, uint8_t *r, uint32_t *r_len, uint8_t *s,
                                       uint32_t *s_len);
/** Verifies in one call, whatever is under way on the unit. */
TLXCRYPTO_API uint32_t verify_KCDSA_data(const KCDSA *unit, uint32_t digest_id, const uint8_t *data,
                                         uint32_t len, const uint8_t *r, uint32_t r_len, const uint8_t *s,
                                         uint32_t s_len);

/** Begins H(z || M), the digest of a message that a signature of the unit covers: takes z, after which
 * update_Digest() adds the message and final_Digest() ends it. A private key without a public one is enough.
 * @param digest in any state; the caller keeps it */
TLXCRYPTO_API uint32_t init_KCDSA_digest(const KCDSA *unit, uint32_t digest_id, DIGEST_UNIT *digest);
/** Signs as sign_KCDSA_data() does, with a digest of init_KCDSA_digest() for the message, as often as the
 * caller likes.
 * @param digest get_DigestLength() octets; returns 1 for another digest_len */
TLXCRYPTO_API uint32_t sign_KCDSA_digest(const KCDSA *unit, uint32_t digest_id, const uint8_t *digest,
                                         uint32_t digest_len, uint8_t *r, uint32_t *r_len, uint8_t *s,
                                         uint32_t *s_len);
/** Verifies as verify_KCDSA_data() does, with a digest likewise. */
TLXCRYPTO_API uint32_t verify_KCDSA_digest(const KCDSA *unit, uint32_t digest_id, const uint8_t *digest,
                                           uint32_t digest_len, const uint8_t *r, uint32_t r_len,
                                           const uint8_t *s, uint32_t s_len);

/** Signs as sign_KCDSA_data() does, with a given per-message secret k of 1 to q - 1, for known-answer tests
 * and nothing else: a k that others know, or that two signatures share, gives away the private key. Returns 1
 * also for a k out of range or one that gives r or s zero. */
TLXCRYPTO_API uint32_t sign_KCDSA_with_k(const KCDSA *unit, uint32_t digest_id, const uint8_t *data,
                                         uint32_t len, const BIGINT *k, uint8_t *r, uint32_t *r_len,
                                         uint8_t *s, uint32_t *s_len);

TLX_END_DECLS

#endif
