/** @file
 * Authenticated encryption with associated data: AES and ARIA in Galois/Counter Mode (SP 800-38D, RFC 5084,
 * RFC 6209, RFC 5794), in pieces.
 *
 * - Arguments: a key has get_AEAD_key_length() octets. A nonce has 1 to TLX_AEAD_MAX_NONCE_LENGTH octets, of
 *   which 12 are usual, and serves one message under its key. direction is 1 to encrypt, 0 to decrypt. A tag
 *   has 12 to 16 octets. data may be null when len is 0.
 * - Failure: functions return 0; 1 for a bad argument, a cipher that is unknown or not available, calls in a
 *   wrong order, more octets than the mode allows and when memory runs out; or TLX_AEAD_BAD_TAG. A unit takes
 *   nothing more after a failure, until it is keyed again. get_AEAD_key_length() returns 0 instead, and
 *   new_AEAD_UNIT() null.
 * - Threads: distinct units may be used at the same time; one unit by one thread at a time.
 */
#ifndef TLXCRYPTO_AEAD_H
#define TLXCRYPTO_AEAD_H

#include <stdint.h>
#include <tlxcrypto/export.h>

/* Ciphers: the block cipher of <tlxcrypto/cipher.h> with a mode that only this interface has. */
#define TLX_AEAD_AES128_GCM 0x01000180U
#define TLX_AEAD_AES192_GCM 0x01000280U
#define TLX_AEAD_AES256_GCM 0x01000380U
#define TLX_AEAD_ARIA128_GCM 0x03000180U
#define TLX_AEAD_ARIA192_GCM 0x03000280U
#define TLX_AEAD_ARIA256_GCM 0x03000380U

#define TLX_AEAD_TAG_LENGTH 16                     /**< octets of a tag that is written */
#define TLX_AEAD_LEAST_TAG_LENGTH 12               /**< octets of the shortest tag that is accepted */
#define TLX_AEAD_MAX_NONCE_LENGTH 128              /**< octets */
#define TLX_AEAD_MAX_MESSAGE_LENGTH 68719476704ULL /**< octets of the longest message (2^36 - 32) */

/** The message, its associated data or its tag was altered, or the key is another one. */
#define TLX_AEAD_BAD_TAG 2U

TLX_BEGIN_DECLS

/** A cipher with its key, nonce and direction, and what was authenticated so far. */
typedef struct AEAD_UNIT AEAD_UNIT;

/** Returns the octets of a cipher's key: 16, 24 or 32. */
TLXCRYPTO_API uint32_t get_AEAD_key_length(uint32_t cipher_id);

/** Makes a unit without a cipher, freed with free_AEAD_UNIT(). */
TLXCRYPTO_API AEAD_UNIT *new_AEAD_UNIT(void);
/** Wipes the key and frees the unit. Ignores null. */
TLXCRYPTO_API void free_AEAD_UNIT(AEAD_UNIT *unit);

/** Keys a unit, new or used, and drops what was under way. */
TLXCRYPTO_API uint32_t init_AEAD(AEAD_UNIT *unit, uint32_t cipher_id, const uint8_t *key,
                                 const uint8_t *nonce, uint32_t nonce_len, uint32_t direction);

/** Adds octets to the associated data: before the first octet of the message, or all of them after the last.
 * Associated data that become known at the end, as those of CMS do (RFC 5083), so take no second pass; the
 * tag is the same. */
TLXCRYPTO_API uint32_t add_AEAD_data(AEAD_UNIT *unit, const uint8_t *data, uint32_t len);

/** Encrypts or decrypts the next len octets of the message into as many. What is decrypted is not authentic
 * before finish_AEAD_decryption() returns 0.
 * @param out may be in itself, but not overlap it otherwise */
TLXCRYPTO_API uint32_t update_AEAD(AEAD_UNIT *unit, uint8_t *out, const uint8_t *in, uint32_t len);

/** Ends an encryption.
 * @param tag receives TLX_AEAD_TAG_LENGTH octets, of which a shorter tag is the first ones */
TLXCRYPTO_API uint32_t finish_AEAD_encryption(AEAD_UNIT *unit, uint8_t *tag);
/** Ends a decryption. Returns TLX_AEAD_BAD_TAG when the tag is wrong. */
TLXCRYPTO_API uint32_t finish_AEAD_decryption(AEAD_UNIT *unit, const uint8_t *tag, uint32_t tag_len);

TLX_END_DECLS

#endif
