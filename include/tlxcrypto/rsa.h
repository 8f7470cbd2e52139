/** @file
 * RSA by RFC 8017: signatures (RSASSA-PKCS1-v1_5, RSASSA-PSS), encryption (RSAES-PKCS1-v1_5, RSAES-OAEP).
 *
 * A unit holds a key's numbers, one streaming signature or verification, and one choice of encryption scheme.
 * It takes any numbers. The first operation that computes with them returns TLX_RSA_BAD_KEY when they make no
 * key: a modulus that is even, below 512 bits or above 16384 bits, a public exponent that is even, below 3 or
 * above 64 bits, or for a private operation a missing private exponent or a prime that is even or as long as
 * the modulus. Signing also returns it when the numbers do not belong together: no signature comes out
 * unverified. The unit keeps what it computes from the numbers once (a key object of the backend) until they
 * change. Private-key arithmetic runs in constant time with blinding.
 *
 * - Arguments: numbers are copied. data is a message or its next len octets, and may be null when len is 0.
 *   sig has get_RSA_length() octets. A length that a failing function would store is 0.
 * - Failure: functions return 0; 1 for a bad argument, a digest or mode that is not available, a public unit
 *   for a private operation, calls in a wrong order and when memory runs out or the backend fails;
 *   TLX_RSA_BAD_SIGNATURE where it verifies; or TLX_RSA_BAD_KEY where it computes with the numbers. They
 *   leave the numbers unchanged unless they return 0. new_ and dup_ return null when memory runs out, dup_
 *   and get_ null or 0 for null.
 * - Threads: functions that take a const unit may run at the same time on one unit, as long as none that
 *   takes a non-const unit does; distinct units are independent.
 */
#ifndef TLXCRYPTO_RSA_H
#define TLXCRYPTO_RSA_H

#include <stdint.h>
#include <tlxcrypto/bigint.h>
#include <tlxcrypto/digest.h>
#include <tlxcrypto/export.h>

/* Kinds of a unit. A new unit, without numbers, is of the public kind. */
#define TLX_RSA_PUBLIC 0U
#define TLX_RSA_PRIVATE 1U

#define TLX_RSA_BAD_SIGNATURE 2U /**< the signature is not one of this key over this data */
#define TLX_RSA_BAD_KEY 3U       /**< the unit's numbers make no usable key */

/* Padding modes of signatures. */
#define TLX_RSA_MODE_NONE_GIVEN 0U /**< low octet of an identifier that names RSA alone: PKCS #1 v1.5 */
#define TLX_RSA_MODE_PKCS1 1U
#define TLX_RSA_MODE_PSS 2U

/* Modes of encryption. */
#define TLX_RSAES_MODE_NONE_GIVEN 0U /**< PKCS #1 v1.5 */
#define TLX_RSAES_MODE_OAEP_SET 8U   /**< the same as TLX_RSAES_MODE_OAEP */
#define TLX_RSAES_MODE_OAEP 16U
#define TLX_RSAES_MODE_PKCS1 32U

/** The salt length of RSASSA-PSS unless set_RSA_UNIT_PSS() changes it. */
#define TLX_RSA_PSS_DEFAULT_SALT_LENGTH 20U

TLX_BEGIN_DECLS

/** An RSA key. */
typedef struct RSA_UNIT RSA_UNIT;

/** The numbers of a key, as RFC 8017 calls them. */
typedef enum TLX_RSA_NUMBER {
    TLX_RSA_N,    /**< modulus */
    TLX_RSA_E,    /**< public exponent */
    TLX_RSA_D,    /**< private exponent */
    TLX_RSA_P,    /**< first prime */
    TLX_RSA_Q,    /**< second prime */
    TLX_RSA_DP,   /**< d mod (p - 1) */
    TLX_RSA_DQ,   /**< d mod (q - 1) */
    TLX_RSA_QINV, /**< q^-1 mod p */
    TLX_RSA_NUMBER_COUNT
} TLX_RSA_NUMBER;

/** Makes a unit without numbers, freed with free_RSA_UNIT(). */
TLXCRYPTO_API RSA_UNIT *new_RSA_UNIT(void);
/** Wipes and frees the numbers and everything under way, so that the unit is as new. Ignores null. */
TLXCRYPTO_API void clean_RSA_UNIT(RSA_UNIT *unit);
/** Cleans and frees a unit. Ignores null. */
TLXCRYPTO_API void free_RSA_UNIT(RSA_UNIT *unit);
/** Copies the kind, numbers and PSS settings to a new unit with nothing under way. Copies share what
 * they compute from the numbers, whichever of them computes first, until one gets other numbers. */
TLXCRYPTO_API RSA_UNIT *dup_RSA_UNIT(const RSA_UNIT *unit);

/** Makes a public key from its numbers as unsigned big-endian octets; freed with free_RSA_UNIT(). Null for a
 * null argument. */
TLXCRYPTO_API RSA_UNIT *binary_to_RSA_UNIT(const uint8_t *modulus, uint32_t modulus_len,
                                           const uint8_t *exponent, uint32_t exponent_len);
/** Makes the unit a public key and drops what it held. */
TLXCRYPTO_API uint32_t set_RSA_UNIT_public(RSA_UNIT *unit, const BIGINT *n, const BIGINT *e);
/** Makes the unit a private key and drops what it held, without checking the numbers against each other. p to
 * qinv are either all given or all null; a key without them works more slowly. */
TLXCRYPTO_API uint32_t set_RSA_UNIT_private(RSA_UNIT *unit, const BIGINT *n, const BIGINT *e, const BIGINT *d,
                                            const BIGINT *p, const BIGINT *q, const BIGINT *dp,
                                            const BIGINT *dq, const BIGINT *qinv);
/** Sets the digest of MGF1 and the octets of the salt for the unit's PSS signatures from now on; verifying
 * accepts no other salt length. The defaults are SHA-1 and 20 (RFC 8017, appendix A.2.3). */
TLXCRYPTO_API uint32_t set_RSA_UNIT_PSS(RSA_UNIT *unit, uint32_t mgf_digest_id, uint32_t salt_len);

/** Generates a key pair into the unit and drops what it held.
 * @param bits size of the modulus, 512 to 16384
 * @param e public exponent, odd and at least 3, usually 65537 */
TLXCRYPTO_API uint32_t gen_RSA_UNIT(RSA_UNIT *unit, uint32_t bits, uint32_t e);

/** Returns TLX_RSA_PRIVATE, TLX_RSA_PUBLIC or, of <tlxcrypto/rsa_external.h>, TLX_RSA_EXTERNAL. */
TLXCRYPTO_API uint32_t get_RSA_UNIT_kind(const RSA_UNIT *unit);
/** Returns one of the numbers, which stays the unit's; null when the unit does not have it. */
TLXCRYPTO_API const BIGINT *get_RSA_UNIT_number(const RSA_UNIT *unit, TLX_RSA_NUMBER which);
/** Returns the octets of the modulus, of a signature and of a ciphertext; 0 for a unit without numbers. */
TLXCRYPTO_API uint32_t get_RSA_length(const RSA_UNIT *unit);
/** Returns how many times the unit (or a copy) computed something to keep from its present numbers: 0 before
 * the first operation, then 1 for verifying, with which signing ends, and 1 for all other operations
 * together; more only when several threads ran the first operation at once. */
TLXCRYPTO_API uint32_t get_RSA_UNIT_builds(const RSA_UNIT *unit);

/** Begins a signature (direction 1) or a verification (0) and drops one that is under way.
 * @param digest_id digest of the message: MD5, SHA-1, SHA-2, SHA-3 or, but for PSS, HAS-160
 * @param mode TLX_RSA_MODE_ */
TLXCRYPTO_API uint32_t init_RSASSA(RSA_UNIT *unit, uint32_t digest_id, uint32_t mode, uint32_t direction);
/** Adds octets to the message. */
TLXCRYPTO_API uint32_t update_RSASSA(RSA_UNIT *unit, const uint8_t *data, uint32_t len);
/** Ends what init_RSASSA() began: a signature writes sig and its length, a verification only reads them. A
 * failing signature leaves nothing in sig. */
TLXCRYPTO_API uint32_t final_RSASSA(RSA_UNIT *unit, uint8_t *sig, uint32_t *sig_len);
/** Ends a verification of a const signature. Returns 1 also when a signature is under way, which goes on. */
TLXCRYPTO_API uint32_t verify_RSASSA(RSA_UNIT *unit, const uint8_t *sig, uint32_t sig_len);

/** Signs in one call with a private key, whatever is under way on the unit. digest_id and mode are those of
 * init_RSASSA(). */
TLXCRYPTO_API uint32_t sign_RSA(const RSA_UNIT *unit, uint32_t digest_id, uint32_t mode, const uint8_t *data,
                                uint32_t len, uint8_t *sig, uint32_t *sig_len);
/** Signs the digest of a message likewise.
 * @param digest the digest of digest_id, digest_len octets */
TLXCRYPTO_API uint32_t sign_RSA_digest(const RSA_UNIT *unit, uint32_t digest_id, uint32_t mode,
                                       const uint8_t *digest, uint32_t digest_len, uint8_t *sig,
                                       uint32_t *sig_len);
/** Verifies in one call, whatever is under way on the unit. digest_id and mode are those of init_RSASSA().
 * Returns TLX_RSA_BAD_SIGNATURE also for any other length than get_RSA_length(). */
TLXCRYPTO_API uint32_t verify_RSA(const RSA_UNIT *unit, uint32_t digest_id, uint32_t mode,
                                  const uint8_t *data, uint32_t len, const uint8_t *sig, uint32_t sig_len);
/** The same for a message that is known by its digest: get_DigestLength() octets; returns 1 for another
 * digest_len. */
TLXCRYPTO_API uint32_t verify_RSA_digest(const RSA_UNIT *unit, uint32_t digest_id, uint32_t mode,
                                         const uint8_t *digest, uint32_t digest_len, const uint8_t *sig,
                                         uint32_t sig_len);

/** Chooses the scheme of the encryptions (direction 0) or decryptions (1) that follow.
 * @param mode TLX_RSAES_MODE_; OAEP has an empty label and MGF1 with SHA-1
 * @param digest_id digest of OAEP (not HAS-160), where 0 means SHA-1; ignored for PKCS #1 v1.5 */
TLXCRYPTO_API uint32_t init_RSAES(RSA_UNIT *unit, uint32_t mode, uint32_t direction, uint32_t digest_id);
/** Chooses RSAES-OAEP with other parameters for the encryptions (direction 0) or decryptions (1) that follow.
 * @param digest_id digest of OAEP and of the label (not HAS-160)
 * @param mgf_digest_id digest of MGF1, likewise
 * @param label copied; may be null when label_len is 0 */
TLXCRYPTO_API uint32_t init_RSAES_OAEP(RSA_UNIT *unit, uint32_t direction, uint32_t digest_id,
                                       uint32_t mgf_digest_id, const uint8_t *label, uint32_t label_len);
/** Encrypts a short message, for example a key.
 * @param out receives get_RSA_length() octets, *out_len
 * @param in the message, which may be null when in_len is 0: at most get_RSA_length() - 11 octets in PKCS #1
 * v1.5, get_RSA_length() - 2 - 2 digest lengths in OAEP */
TLXCRYPTO_API uint32_t encrypt_RSAES(const RSA_UNIT *unit, uint8_t *out, uint32_t *out_len, const uint8_t *in,
                                     uint32_t in_len);
/** Decrypts get_RSA_length() octets. Returns 1 also for a ciphertext that does not decrypt and a message
 * longer than out. A caller that tells others of a failure opens the way for attacks on PKCS #1 v1.5 (RFC
 * 8017, section 7.2) and should rather go on with a random message.
 * @param out_len octets that out has room for; receives the octets written */
TLXCRYPTO_API uint32_t decrypt_RSAES(const RSA_UNIT *unit, uint8_t *out, uint32_t *out_len, const uint8_t *in,
                                     uint32_t in_len);
/** Decrypts a key of known length under PKCS #1 v1.5, whatever the unit is prepared for. When the padding or
 * the length is wrong it gives out a random key instead and returns 0 in the same time, so that nobody learns
 * which ciphertexts are good (RFC 3218, section 2.3.2).
 * @param key receives key_len octets, at most get_RSA_length() - 11
 * @param in get_RSA_length() octets; returns 1 for another in_len and for a number that exceeds the modulus
 */
TLXCRYPTO_API uint32_t decrypt_RSAES_key(const RSA_UNIT *unit, uint8_t *key, uint32_t key_len,
                                         const uint8_t *in, uint32_t in_len);

TLX_END_DECLS

#endif
