/** @file
 * KCDSA, the certificate-based digital signature algorithm of TTAK.KO-12.0001.
 *
 * With domain parameters p, q, g, private key x and public key y = g^(x^-1 mod q) mod p, the signature of a
 * message M under a digest H is (r, s): w = g^k mod p, r = H(w), e = (r xor H(z || M)) mod q, s = x (k - e)
 * mod q, where w is written in as many octets as p and z is the rightmost octets of y, a block of H long. A
 * digest longer than q is cut to its rightmost octets, as many as q has.
 *
 * A unit takes any numbers; the first operation that computes with them says TLX_KCDSA_BAD_KEY when they make
 * no key: p or q even, p outside 512 to 8192 bits, q outside 112 to 512 bits or not a divisor of p - 1, g or
 * y outside 2 to p - 2, x outside 1 to q - 1; with a private key also g not of order q (g^q mod p other than
 * 1) and a y that does not belong to x. That p and q are prime, and without a private key that g and y are of
 * order q, is checked by check_KCDSA_params only: verifying relies on parameters and a public key that can be
 * trusted. What is computed from the numbers once (Montgomery forms) is kept in the unit until they change.
 *
 * Arithmetic on x and k runs in constant time, with blinding where a value is inverted or multiplied.
 *
 * Statuses: 0 success, 1 a bad argument, a digest that is not available, a wrong order of calls or a failed
 * allocation, and the two TLX_KCDSA_ codes below.
 *
 * Threads: functions that take a const unit may run at the same time on one unit, as long as none that takes
 * a non-const unit does; distinct units are independent.
 */
#ifndef TLXCRYPTO_KCDSA_H
#define TLXCRYPTO_KCDSA_H

#include <stdint.h>
#include <tlxcrypto/bigint.h>
#include <tlxcrypto/digest.h>
#include <tlxcrypto/export.h>

/** The signature is not one of this key over this data. */
#define TLX_KCDSA_BAD_SIGNATURE 2U
/** The unit's numbers make no usable key, or check_KCDSA_params found the parameters wrong. */
#define TLX_KCDSA_BAD_KEY 3U

/** r and s of any signature fit this many octets each. */
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

/** A unit without numbers; null when memory is short. Freed with free_KCDSA. */
TLXCRYPTO_API KCDSA *new_KCDSA(void);
/** Wipes and frees the unit's numbers and everything under way: it is as new; null is allowed. */
TLXCRYPTO_API void clean_KCDSA(KCDSA *unit);
/** Cleans and frees a unit; null is allowed. */
TLXCRYPTO_API void free_KCDSA(KCDSA *unit);
/** A new unit with copies of the numbers and the chosen digest, but nothing under way; null on a null
 * argument or allocation failure. */
TLXCRYPTO_API KCDSA *dup_KCDSA(const KCDSA *unit);

/** Stores copies of the domain parameters. The keys are kept. 0; 1 on a null argument or allocation failure
 * (the unit is unchanged then). */
TLXCRYPTO_API uint32_t set_KCDSA_params(KCDSA *unit, const BIGINT *p, const BIGINT *q, const BIGINT *g);
/** Stores a copy of the public key. 0 or 1 likewise. */
TLXCRYPTO_API uint32_t set_KCDSA_public(KCDSA *unit, const BIGINT *y);
/** Stores a copy of the private key; the public key is kept (see compute_KCDSA_public). 0 or 1 likewise. */
TLXCRYPTO_API uint32_t set_KCDSA_private(KCDSA *unit, const BIGINT *x);
/** Stores the public key that belongs to the private one, y = g^(x^-1 mod q) mod p.
 * @param unit a unit with domain parameters and a private key
 * @return 0; TLX_KCDSA_BAD_KEY; 1 on a null argument, a composite q modulo which x has no inverse, or an
 * allocation failure (the unit is unchanged unless the result is 0) */
TLXCRYPTO_API uint32_t compute_KCDSA_public(KCDSA *unit);
/** Chooses the digest of the signatures begun by init_KCDSA from now on; HAS-160 unless chosen.
 * @param unit the unit
 * @param digest_id a digest identifier
 * @return 0; 1 on a null unit or a digest that is not available */
TLXCRYPTO_API uint32_t set_KCDSA_digest(KCDSA *unit, uint32_t digest_id);

/** Generates domain parameters by the standard's method: a random seed gives a prime J of p_bits - q_bits
 * bits and candidates for q, until q and p = 2Jq + 1 are both prime; g is h^2J mod p for a random h. Keys of
 * the unit are dropped.
 * @param unit the unit
 * @param p_bits size of p, 512 to 8192 and a multiple of 8 (the standard has 2048 and 3072, formerly 1024)
 * @param q_bits size of q, 112 to 512, a multiple of 8 and at most half of p_bits
 * @param digest_id digest that stretches the seed
 * @return 0; 1 on a bad argument or failure (the unit is unchanged then) */
TLXCRYPTO_API uint32_t gen_KCDSA_params(KCDSA *unit, uint32_t p_bits, uint32_t q_bits, uint32_t digest_id);
/** Generates a key pair under the unit's domain parameters.
 * @param unit a unit with domain parameters
 * @return 0; TLX_KCDSA_BAD_KEY; 1 on a null argument or failure (the unit is unchanged then) */
TLXCRYPTO_API uint32_t gen_KCDSA_key(KCDSA *unit);
/** Checks the unit's numbers in full: p and q are prime, q divides p - 1, g is of order q; with a public key,
 * that 1 < y < p and y is of order q, too; with a private key, that 0 < x < q; with both, that y belongs to
 * x.
 * @return 0 when they are right; TLX_KCDSA_BAD_KEY; 1 on a null argument or failure inside */
TLXCRYPTO_API uint32_t check_KCDSA_params(const KCDSA *unit);

/** One of the numbers, owned by the unit; null when the unit does not have it. */
TLXCRYPTO_API const BIGINT *get_KCDSA_number(const KCDSA *unit, TLX_KCDSA_NUMBER which);
/** Octets of q, hence of s, and at most those of r; 0 for null and a unit without q. */
TLXCRYPTO_API uint32_t get_KCDSA_length(const KCDSA *unit);
/** How many times the unit's present numbers were prepared for arithmetic: 0 before the first operation, then
 * 1; more only when several threads ran the first operation at once. 0 for null. */
TLXCRYPTO_API uint32_t get_KCDSA_builds(const KCDSA *unit);

/** Begins a signature (direction 1) or a verification (0) on the unit with the digest of set_KCDSA_digest,
 * dropping one that is under way. A private key without a public one is enough for either.
 * @return 0; TLX_KCDSA_BAD_KEY; 1 on a bad argument, a unit without the key it takes or an allocation failure
 */
TLXCRYPTO_API uint32_t init_KCDSA(KCDSA *unit, uint32_t direction);
/** Feeds the next len octets of the message. 0; 1 on a null argument (data may be null when len is 0) or
 * before init_KCDSA. */
TLXCRYPTO_API uint32_t update_KCDSA(KCDSA *unit, const uint8_t *data, uint32_t len);
/** Ends what init_KCDSA began.
 * @param unit the key
 * @param r signing: receives r, the digest's octets or get_KCDSA_length where that is fewer; verifying: r,
 * only read
 * @param r_len its octets, received or read
 * @param s signing: receives s in get_KCDSA_length octets; verifying: s, only read
 * @param s_len its octets, received or read
 * @return 0; TLX_KCDSA_BAD_SIGNATURE; 1 on a null argument, before init_KCDSA or on a failure inside. A
 * failing signature stores two lengths of 0. */
TLXCRYPTO_API uint32_t final_KCDSA(KCDSA *unit, uint8_t *r, uint32_t *r_len, uint8_t *s, uint32_t *s_len);
/** Ends a verification, as final_KCDSA does, with a signature that is const. r has to have its exact length;
 * s may have leading zeros. 0; TLX_KCDSA_BAD_SIGNATURE; 1 as there, and when it is a signature that is under
 * way (which stays so). */
TLXCRYPTO_API uint32_t verify_KCDSA(KCDSA *unit, const uint8_t *r, uint32_t r_len, const uint8_t *s,
                                    uint32_t s_len);

/** Signs in one call, leaving what is under way on the unit alone.
 * @param unit a private key
 * @param digest_id digest of the message
 * @param data the message; may be null when len is 0
 * @param len its octets
 * @param r receives r, at most get_KCDSA_length octets
 * @param r_len receives its octets, 0 on failure
 * @param s receives s, get_KCDSA_length octets
 * @param s_len receives its octets, 0 on failure
 * @return 0; TLX_KCDSA_BAD_KEY; 1 on a bad argument, a public unit, a digest that is not available or a
 * failure inside */
TLXCRYPTO_API uint32_t sign_KCDSA_data(const KCDSA *unit, uint32_t digest_id, const uint8_t *data,
                                       uint32_t len, uint8_t *r, uint32_t *r_len, uint8_t *s,
                                       uint32_t *s_len);
/** Verifies in one call, leaving what is under way on the unit alone.
 * @param unit a public key
 * @param digest_id digest of the message
 * @param data the message; may be null when len is 0
 * @param len its octets
 * @param r r, of its exact length
 * @param r_len its octets
 * @param s s, may have leading zeros
 * @param s_len its octets
 * @return 0; TLX_KCDSA_BAD_SIGNATURE; TLX_KCDSA_BAD_KEY; 1 on a bad argument, a unit without a key, a digest
 * that is not available or a failure inside */
TLXCRYPTO_API uint32_t verify_KCDSA_data(const KCDSA *unit, uint32_t digest_id, const uint8_t *data,
                                         uint32_t len, const uint8_t *r, uint32_t r_len, const uint8_t *s,
                                         uint32_t s_len);

/** sign_KCDSA_data with a given per-message secret k, for known-answer tests and nothing else: a k that
 * others know, or that two signatures share, gives away the private key.
 * @param unit a private key
 * @param digest_id digest of the message
 * @param data the message
 * @param len its octets
 * @param k the secret, 1 to q - 1
 * @param r as for sign_KCDSA_data, and so on
 * @param r_len see there
 * @param s see there
 * @param s_len see there
 * @return as sign_KCDSA_data; 1 also on a k out of range or one that gives r or s zero */
TLXCRYPTO_API uint32_t sign_KCDSA_with_k(const KCDSA *unit, uint32_t digest_id, const uint8_t *data,
                                         uint32_t len, const BIGINT *k, uint8_t *r, uint32_t *r_len,
                                         uint8_t *s, uint32_t *s_len);

TLX_END_DECLS

#endif
