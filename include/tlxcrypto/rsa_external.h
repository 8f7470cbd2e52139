/** @file
 * RSA keys that cannot be read: on tokens and smart cards, on a phone, with a remote service.
 *
 * An RSA_UNIT takes the functions that sign and decrypt with such a key, beside its public numbers. All
 * functions that take a private RSA_UNIT then take it: they prepare what is to be signed, and they verify the
 * signature that comes back. The functions of <tlxpki/pkcs7_sign.h> and <tlxpki/x509_sign.h> take it as
 * TLX_KEY_RSA. What writes a private key refuses it.
 *
 * - Failure: as in <tlxcrypto/rsa.h>. The status of a caller's function goes up unchanged through this
 *   library's; values above TLX_RSA_BAD_KEY cannot be mistaken for statuses of <tlxcrypto/rsa.h>.
 * - Threads: this library calls the functions on the thread that uses the unit, and locks nothing. Whoever
 *   uses a unit or its copies on several threads at once needs functions that can be called so.
 */
#ifndef TLXCRYPTO_RSA_EXTERNAL_H
#define TLXCRYPTO_RSA_EXTERNAL_H

#include <tlxcrypto/digest.h>
#include <tlxcrypto/rsa.h>

/** The kind of a unit with external functions, beside TLX_RSA_PUBLIC and TLX_RSA_PRIVATE. */
#define TLX_RSA_EXTERNAL 2U

/** Octets of the longest DigestInfo. */
#define TLX_RSA_DIGEST_INFO_MAX_LENGTH 83

TLX_BEGIN_DECLS

/** What a key signs. */
typedef struct RSA_SIGNATURE_INPUT {
    uint32_t mode;          /**< TLX_RSA_MODE_PKCS1 or TLX_RSA_MODE_PSS */
    uint32_t digest_id;     /**< digest of the message, TLX_DIGEST_ */
    uint32_t mgf_digest_id; /**< digest of MGF1 in PSS; else 0 */
    uint32_t salt_length;   /**< octets of the salt in PSS; else 0 */
    uint8_t digest[TLX_DIGEST_MAX_LENGTH];
    uint32_t digest_length;                              /**< octets */
    uint8_t digest_info[TLX_RSA_DIGEST_INFO_MAX_LENGTH]; /**< DER of DigestInfo (RFC 8017, section 9.2), to be
                                                            padded as for PKCS #1 v1.5 */
    uint32_t digest_info_length; /**< octets; 0 in PSS, which pads the digest itself */
} RSA_SIGNATURE_INPUT;

/** What a key decrypts. The pointers are the library's and end with the call. */
typedef struct RSA_DECRYPTION_INPUT {
    uint32_t mode;          /**< TLX_RSAES_MODE_PKCS1 or TLX_RSAES_MODE_OAEP */
    uint32_t digest_id;     /**< digest of OAEP; else 0 */
    uint32_t mgf_digest_id; /**< digest of MGF1 in OAEP; else 0 */
    const uint8_t *label;   /**< of OAEP; null when it is empty */
    uint32_t label_length;  /**< octets */
    const uint8_t *ciphertext;
    uint32_t ciphertext_length; /**< get_RSA_length() octets */
} RSA_DECRYPTION_INPUT;

/** The functions of a key. A null function makes the key refuse the operation. They return 0 on success. */
typedef struct RSA_EXTERNAL_FUNCTIONS {
    /** Signs. signature has room for *length octets, get_RSA_length(), and *length receives those written. */
    uint32_t (*sign)(void *context, const RSA_SIGNATURE_INPUT *input, uint8_t *signature, uint32_t *length);
    /** Decrypts. message has room for *length octets, get_RSA_length(), and *length receives those written.
     * Returns 1 for a ciphertext that does not decrypt, and for nothing else: with PKCS #1 v1.5 the library
     * then goes on with a random key where decrypt_RSAES_key() does (RFC 3218). */
    uint32_t (*decrypt)(void *context, const RSA_DECRYPTION_INPUT *input, uint8_t *message, uint32_t *length);
    /** Frees the context, once, when the last copy of the unit drops it. */
    void (*free_context)(void *context);
} RSA_EXTERNAL_FUNCTIONS;

/**
 * Makes the unit a private key that these functions compute with, and drops what it held. Copies of the unit
 * share the context.
 * @param n,e       the public key, against which every signature is verified; copied
 * @param functions copied
 * @param context   handed to the functions; the unit owns it from success on
 */
TLXCRYPTO_API uint32_t set_RSA_UNIT_external(RSA_UNIT *unit, const BIGINT *n, const BIGINT *e,
                                             const RSA_EXTERNAL_FUNCTIONS *functions, void *context);

/**
 * Prepares what a key signs that is elsewhere, and whose signature comes back later.
 * @param unit      a unit of any kind, for its PSS settings; null for those of a new one
 * @param digest_id,mode as init_RSASSA() takes them
 * @param input     receives the digest of the data; unchanged on failure
 */
TLXCRYPTO_API uint32_t get_RSA_SIGNATURE_INPUT(const RSA_UNIT *unit, uint32_t digest_id, uint32_t mode,
                                               const uint8_t *data, uint32_t len, RSA_SIGNATURE_INPUT *input);

TLX_END_DECLS

#endif
