/** @file
 * RSA keys, signatures (RSASSA-PKCS1-v1_5 and RSASSA-PSS) and encryption (RSAES-PKCS1-v1_5 and RSAES-OAEP),
 * all by RFC 8017.
 *
 * A unit holds a key's numbers and, besides, what is under way on it: one streaming signature or verification
 * and one choice of encryption scheme. It takes any numbers; the first operation that computes with them says
 * TLX_RSA_BAD_KEY when they make no key: a modulus that is even, below 512 bits or above 16384 bits, a public
 * exponent that is even, below 3 or above 64 bits, or for a private operation a missing private exponent or a
 * prime that is even or as long as the modulus; signing says so, too, when the numbers do not belong
 * together, for a signature is handed out only once it has been verified. What is computed from the numbers
 * once (a key object of the backend) is kept in the unit until they change.
 *
 * Private-key arithmetic runs in constant time with blinding.
 *
 * Statuses: 0 success, 1 a bad argument, a digest or mode that is not available, a wrong order of calls or a
 * failed allocation, and the two TLX_RSA_ codes below.
 *
 * Threads: functions that take a const unit may run at the same time on one unit, as long as none that takes
 * a non-const unit does; distinct units are independent.
 */
#ifndef TLXCRYPTO_RSA_H
#define TLXCRYPTO_RSA_H

#include <stdint.h>
#include <tlxcrypto/bigint.h>
#include <tlxcrypto/digest.h>
#include <tlxcrypto/export.h>

/** Kinds of a unit. A new unit, without numbers, is of the public kind. */
#define TLX_RSA_PUBLIC 0U
#define TLX_RSA_PRIVATE 1U

/** The signature is not one of this key over this data. */
#define TLX_RSA_BAD_SIGNATURE 2U
/** The unit's numbers make no usable key. */
#define TLX_RSA_BAD_KEY 3U

/** Padding modes of signatures. TLX_RSA_MODE_NONE_GIVEN, the low octet of an identifier that names RSA
 * without a scheme, stands for PKCS #1 v1.5 too. */
#define TLX_RSA_MODE_NONE_GIVEN 0U
#define TLX_RSA_MODE_PKCS1 1U
#define TLX_RSA_MODE_PSS 2U

/** Modes of encryption. Both OAEP numbers mean the same; TLX_RSAES_MODE_NONE_GIVEN stands for PKCS #1 v1.5.
 */
#define TLX_RSAES_MODE_NONE_GIVEN 0U
#define TLX_RSAES_MODE_OAEP_SET 8U
#define TLX_RSAES_MODE_OAEP 16U
#define TLX_RSAES_MODE_PKCS1 32U

/** The salt length of RSASSA-PSS unless set_RSA_UNIT_PSS changes it. */
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

/** A unit without numbers; null when memory is short. Freed with free_RSA_UNIT. */
TLXCRYPTO_API RSA_UNIT *new_RSA_UNIT(void);
/** Wipes and frees the unit's numbers and everything under way: it is as new; null is allowed. */
TLXCRYPTO_API void clean_RSA_UNIT(RSA_UNIT *unit);
/** Cleans and frees a unit; null is allowed. */
TLXCRYPTO_API void free_RSA_UNIT(RSA_UNIT *unit);
/** A new unit with copies of the kind, numbers and PSS settings, but nothing under way; null on a null
 * argument or allocation failure. What verifying signatures computes from the numbers is shared with the
 * copy, whichever of the two verifies first. */
TLXCRYPTO_API RSA_UNIT *dup_RSA_UNIT(const RSA_UNIT *unit);

/** Makes the unit a public key, dropping what it held.
 * @param unit the unit
 * @param n modulus, copied
 * @param e public exponent, copied
 * @return 0; 1 on a null argument or allocation failure (the unit is unchanged then) */
TLXCRYPTO_API uint32_t set_RSA_UNIT_public(RSA_UNIT *unit, const BIGINT *n, const BIGINT *e);
/** Makes the unit a private key, dropping what it held. The numbers are copied and are not checked against
 * each other.
 * @param unit the unit
 * @param n modulus
 * @param e public exponent
 * @param d private exponent
 * @param p first prime; this and the following four are either all given or all null, and a key without them
 * works more slowly
 * @param q second prime
 * @param dp d mod (p - 1)
 * @param dq d mod (q - 1)
 * @param qinv q^-1 mod p
 * @return 0; 1 on a bad argument or allocation failure (the unit is unchanged then) */
TLXCRYPTO_API uint32_t set_RSA_UNIT_private(RSA_UNIT *unit, const BIGINT *n, const BIGINT *e, const BIGINT *d,
                                            const BIGINT *p, const BIGINT *q, const BIGINT *dp,
                                            const BIGINT *dq, const BIGINT *qinv);
/** Parameters of RSASSA-PSS other than the message digest, for every PSS signature of the unit from now on.
 * Without them the defaults of RFC 8017, appendix A.2.3 hold: MGF1 with SHA-1 and a salt of 20 octets.
 * @param unit the unit
 * @param mgf_digest_id digest of MGF1
 * @param salt_len octets of the salt; a verification accepts no other
 * @return 0; 1 on a null unit or a digest that is not available here */
TLXCRYPTO_API uint32_t set_RSA_UNIT_PSS(RSA_UNIT *unit, uint32_t mgf_digest_id, uint32_t salt_len);

/** Generates a key pair into the unit, dropping what it held.
 * @param unit the unit
 * @param bits size of the modulus, 512 to 16384
 * @param e public exponent, odd and at least 3, usually 65537
 * @return 0; 1 on a bad argument or failure (the unit is unchanged then) */
TLXCRYPTO_API uint32_t gen_RSA_UNIT(RSA_UNIT *unit, uint32_t bits, uint32_t e);

/** TLX_RSA_PRIVATE or TLX_RSA_PUBLIC, which is also the answer for null. */
TLXCRYPTO_API uint32_t get_RSA_UNIT_kind(const RSA_UNIT *unit);
/** One of the numbers, owned by the unit; null when the unit does not have it. */
TLXCRYPTO_API const BIGINT *get_RSA_UNIT_number(const RSA_UNIT *unit, TLX_RSA_NUMBER which);
/** Octets of the modulus, hence of a signature and of an encrypted key; 0 for null and a unit without
 * numbers. */
TLXCRYPTO_API uint32_t get_RSA_length(const RSA_UNIT *unit);
/** How many times something was computed from the unit's present numbers to be kept: 0 before the first
 * operation (of its copies, too), then 1 for verifying signatures, with which signing ends, and 1 for all
 * other operations together; more only when several threads ran the first operation at once. 0 for null. */
TLXCRYPTO_API uint32_t get_RSA_UNIT_builds(const RSA_UNIT *unit);

/** Begins a signature or a verification on the unit, dropping one that is under way.
 * @param unit the key
 * @param digest_id digest of the message: MD5, SHA-1, SHA-2 or HAS-160; PSS knows no HAS-160
 * @param mode TLX_RSA_MODE_
 * @param direction 1 signs, 0 verifies
 * @return 0; 1 on a bad argument, a digest or mode that is not available, a public unit for signing or an
 *         allocation failure */
TLXCRYPTO_API uint32_t init_RSASSA(RSA_UNIT *unit, uint32_t digest_id, uint32_t mode, uint32_t direction);
/** Feeds the next len octets of the message. 0; 1 on a null argument (data may be null when len is 0) or
 * before init_RSASSA. */
TLXCRYPTO_API uint32_t update_RSASSA(RSA_UNIT *unit, const uint8_t *data, uint32_t len);
/** Ends what init_RSASSA began.
 * @param unit the key
 * @param sig signing: receives the signature, get_RSA_length octets; verifying: the signature, only read
 * @param sig_len signing: receives the signature's length; verifying: its length, only read
 * @return 0; TLX_RSA_BAD_SIGNATURE; TLX_RSA_BAD_KEY; 1 on a null argument, before init_RSASSA or on a failure
 *         inside. A failing signature stores length 0 and leaves no signature in sig. */
TLXCRYPTO_API uint32_t final_RSASSA(RSA_UNIT *unit, uint8_t *sig, uint32_t *sig_len);
/** Ends a verification, as final_RSASSA does, with a signature that is const. 0; TLX_RSA_BAD_SIGNATURE;
 * TLX_RSA_BAD_KEY; 1 as there, and when it is a signature that is under way (which stays so). */
TLXCRYPTO_API uint32_t verify_RSASSA(RSA_UNIT *unit, const uint8_t *sig, uint32_t sig_len);

/** Signs in one call, leaving what is under way on the unit alone.
 * @param unit a private key
 * @param digest_id as for init_RSASSA
 * @param mode TLX_RSA_MODE_
 * @param data the message; may be null when len is 0
 * @param len its octets
 * @param sig receives get_RSA_length octets
 * @param sig_len receives their number, 0 on failure
 * @return 0; TLX_RSA_BAD_KEY; 1 as for init_RSASSA and final_RSASSA */
TLXCRYPTO_API uint32_t sign_RSA(const RSA_UNIT *unit, uint32_t digest_id, uint32_t mode, const uint8_t *data,
                                uint32_t len, uint8_t *sig, uint32_t *sig_len);
/** Verifies in one call, leaving what is under way on the unit alone.
 * @param unit a public or private key
 * @param digest_id as for init_RSASSA
 * @param mode TLX_RSA_MODE_
 * @param data the message; may be null when len is 0
 * @param len its octets
 * @param sig the signature
 * @param sig_len its octets; other than get_RSA_length is TLX_RSA_BAD_SIGNATURE
 * @return 0; TLX_RSA_BAD_SIGNATURE; TLX_RSA_BAD_KEY; 1 as for init_RSASSA */
TLXCRYPTO_API uint32_t verify_RSA(const RSA_UNIT *unit, uint32_t digest_id, uint32_t mode,
                                  const uint8_t *data, uint32_t len, const uint8_t *sig, uint32_t sig_len);

/** Chooses the scheme of the encryptions or decryptions that follow.
 * @param unit the key
 * @param mode TLX_RSAES_MODE_; OAEP has an empty label and MGF1 with SHA-1
 * @param direction 0 encrypts, 1 decrypts
 * @param digest_id digest of OAEP (not HAS-160), where 0 means SHA-1; not used by PKCS #1 v1.5
 * @return 0; 1 on a bad argument, a digest that is not available or a public unit for decrypting */
TLXCRYPTO_API uint32_t init_RSAES(RSA_UNIT *unit, uint32_t mode, uint32_t direction, uint32_t digest_id);
/** Encrypts a short message, for example a key.
 * @param unit a unit that init_RSAES prepared for encryption
 * @param out receives get_RSA_length octets
 * @param out_len receives their number, 0 on failure
 * @param in the message; may be null when in_len is 0
 * @param in_len its octets: at most get_RSA_length - 11 in PKCS #1 v1.5, get_RSA_length - 2 - 2 digest
 * lengths in OAEP
 * @return 0; TLX_RSA_BAD_KEY; 1 on a bad argument, a message that is too long or a failure inside */
TLXCRYPTO_API uint32_t encrypt_RSAES(const RSA_UNIT *unit, uint8_t *out, uint32_t *out_len, const uint8_t *in,
                                     uint32_t in_len);
/** Decrypts. A caller that tells others of a failure opens the way for attacks on PKCS #1 v1.5 (RFC 8017,
 * section 7.2); it should rather go on with a random message.
 * @param unit a unit that init_RSAES prepared for decryption
 * @param out receives the message
 * @param out_len octets that out has room for; receives the octets written, 0 on failure
 * @param in the ciphertext
 * @param in_len its octets, which have to be get_RSA_length
 * @return 0; TLX_RSA_BAD_KEY; 1 on a bad argument, a ciphertext that does not decrypt, a message longer than
 * out or a failure inside */
TLXCRYPTO_API uint32_t decrypt_RSAES(const RSA_UNIT *unit, uint8_t *out, uint32_t *out_len, const uint8_t *in,
                                     uint32_t in_len);

TLX_END_DECLS

#endif
