/** @file
 * How a content key reaches the recipients of a CMS message (RFC 5652, section 6.2), and how a recipient
 * opens it. Ownership and threads are as x509_types.h says.
 *
 * - Key transport (RFC 3370, RFC 4055): RSA with PKCS #1 v1.5, or OAEP with any of its parameters.
 * - Key agreement (RFC 5753): P-256, P-384 and P-521 with the KDF of X9.63 and SHA-1 or SHA-2, named as
 *   standard or as one with the cofactor. The key of the originator is one made for the message.
 * - Key agreement (RFC 8418): X25519 and X448 with the KDF of X9.63 likewise, or HKDF with SHA-256, SHA-384
 *   or SHA-512.
 * - Key encryption key: a key that both sides know, for a key wrap.
 * - Password (RFC 3211): PBKDF2 and PWRI-KEK. It is written with AES and read with any CBC cipher of
 * messages.
 *
 * Key wraps are those of AES (RFC 3565), SEED (RFC 4010) and ARIA with 128 bits (RFC 5794); that of triple
 * DES (RFC 3217) is only read. Recipients of other kinds, and agreements with a key of the originator's
 * certificate, are not opened.
 */
#ifndef TLXPKI_CMS_KEYS_H
#define TLXPKI_CMS_KEYS_H

#include <tlxpki/cms_types.h>

TLX_BEGIN_DECLS

#define TLX_CMS_KEY_MAX_LENGTH 256 /**< octets of the longest content key that is wrapped and opened */

/** What somebody has to open messages with. Members that are not used are null and 0; everything stays the
 * caller's. */
typedef struct CMS_KEY_HOLDER {
    const X509_CERT *certificate; /**< that of private_key; null tries every recipient of the key's kind */
    const ASYMMETRIC_KEY *private_key; /**< of kind TLX_KEY_RSA, TLX_KEY_ECDSA or TLX_KEY_XDH */
    const uint8_t *kek;                /**< a key encryption key */
    uint32_t kek_len;
    const uint8_t *kek_id; /**< its identifier; null tries every recipient of its kind */
    uint32_t kek_id_len;
    const uint8_t *password; /**< octets as they are, in UTF-8 by custom */
    uint32_t password_len;
} CMS_KEY_HOLDER;

/**
 * Opens the content key of a recipient with what fits its kind.
 *
 * PKCS #1 v1.5 with wrong padding, or a key of another length than expected_len, gives a random key and 0, so
 * that nobody learns which ciphertexts are good (RFC 3218): the content fails to decrypt then. A holder
 * without a certificate therefore opens any recipient of PKCS #1 v1.5.
 * @param expected_len octets of the key that the content's algorithm takes; 0 when any will do, which gives
 * 32 octets for a random one
 * @param key     receives the key; holds nothing of it on failure
 * @param key_len octets that key has room for; receives those of the key, 0 on failure.
 * TLX_CMS_KEY_MAX_LENGTH are always enough
 * @return 0; 0x52B10049 an argument or a member of the recipient is missing; 0x52B10047 the recipient is not
 * the holder, or the holder lacks what its kind takes; 0x52B10048 an algorithm is unknown, its parameters are
 * broken, or the key of the originator is none of the curve of the holder's certificate (without one:
 * 0x52B10047); 0x52B1001C a derivation from a password takes more than 10,000,000 iterations, or key has too
 * little room; 0x52B10012 the key does not decrypt, is of another length, or memory ran out for RSA;
 * 0x52B1003C memory ran out otherwise; a status of the functions of an external key
 */
TLXPKI_API uint32_t open_CMS_RECIPIENT_INFO(const CMS_RECIPIENT_INFO *recipient, const CMS_KEY_HOLDER *holder,
                                            uint32_t expected_len, uint8_t *key, uint32_t *key_len);

/** How a key agreement derives its key. 0 is what most programs expect of the curve. */
enum { TLX_CMS_KDF_X963 = 1, TLX_CMS_KDF_HKDF = 2 };

/** Who receives a content key, and how. Exactly one of certificate, kek and password is set. Zeros stand for
 * what is said beside them; everything stays the caller's. */
typedef struct CMS_RECIPIENT_SETTINGS {
    const X509_CERT *certificate; /**< with a key of RSA, on P-256, P-384 or P-521, or X25519 or X448 */
    uint32_t by_key_identifier;   /**< not 0: named by its subjectKeyIdentifier, which it has to have */

    uint32_t pkcs1_v15;          /**< RSA: not 0: PKCS #1 v1.5 in place of OAEP */
    uint32_t oaep_digest_id;     /**< RSA: SHA-1 or SHA-2; 0 for SHA-256 */
    uint32_t oaep_mgf_digest_id; /**< RSA: likewise; 0 for the digest of OAEP */
    const uint8_t *oaep_label;   /**< RSA: null for none */
    uint32_t oaep_label_len;

    uint32_t kdf;           /**< agreement: TLX_CMS_KDF_; 0 for X9.63, and HKDF on X25519 and X448 */
    uint32_t kdf_digest_id; /**< agreement: SHA-1 (X9.63 alone) or SHA-2 (HKDF: of 256 bits or more); 0 for
                               SHA-256, SHA-384 on P-384, SHA-512 on P-521 and X448 */
    uint32_t cofactor;      /**< agreement on P-256, P-384 and P-521: not 0: named as one with the cofactor */
    const uint8_t *ukm;     /**< agreement: user keying material; null for none */
    uint32_t ukm_len;

    const uint8_t *kek; /**< kek_len octets: the key of the key wrap */
    uint32_t kek_len;
    const uint8_t *kek_id; /**< its identifier, which may be empty */
    uint32_t kek_id_len;
    uint32_t wrap_cipher_id; /**< agreement, key encryption key: TLX_CIPHER_AES128, 192, 256, TLX_CIPHER_SEED
                                or TLX_CIPHER_ARIA; 0 for AES: 256 bits, or as many as the kek */

    const uint8_t *password; /**< octets as they are, in UTF-8 by custom */
    uint32_t password_len;
    uint32_t iterations;    /**< 1 to 10,000,000; 0 for 600,000 */
    uint32_t prf_digest_id; /**< of HMAC: SHA-1, SHA-2 or SHA-3; 0 for SHA-256 */
} CMS_RECIPIENT_SETTINGS;

/**
 * Makes the recipient of a content key, with the version that its members call for.
 * @param content_key len octets: 1 to TLX_CMS_KEY_MAX_LENGTH, of which a key wrap takes 16 and more, in
 * multiples of 8, a password 4 to 255, and RSA what its modulus has room for
 * @param out receives a new record; unchanged on failure
 * @return 0; 0x52B00049 an argument is null, or not exactly one of certificate, kek and password is set;
 * 0x52B00047 the certificate lacks a name, a number, a known key, or the key identifier; 0x52B00048 a digest,
 * cipher or derivation is unknown or does not fit the key; 0x52B0001C a length or number is out of range;
 * 0x52B0003C memory ran out, or random octets cannot be had
 */
TLXPKI_API uint32_t make_CMS_RECIPIENT_INFO(const CMS_RECIPIENT_SETTINGS *settings,
                                            const uint8_t *content_key, uint32_t len,
                                            CMS_RECIPIENT_INFO **out);

TLX_END_DECLS

#endif
