/** @file
 * Block ciphers in the modes ECB, CBC, CFB and OFB.
 *
 * A cipher identifier packs, from the top octet down: the algorithm, a variant, a key-size class and the
 * mode. ECB and CBC pad by PKCS #7 (RFC 5652, section 6.3); CFB (with full-block feedback) and OFB do not
 * pad.
 *
 * Statuses: 0 success, 1 a bad argument, a cipher that is not available or a failed allocation, and
 * TLX_CIPHER_BAD_PADDING.
 *
 * Threads: distinct units may be used at the same time; one unit by one thread at a time.
 */
#ifndef TLXCRYPTO_CIPHER_H
#define TLXCRYPTO_CIPHER_H

#include <stdint.h>
#include <tlxcrypto/export.h>

/** Modes: the low octet of a cipher identifier. */
#define TLX_CIPHER_MODE_ECB 0x00U
#define TLX_CIPHER_MODE_CBC 0x20U
#define TLX_CIPHER_MODE_CFB 0x40U
#define TLX_CIPHER_MODE_OFB 0x60U
#define TLX_CIPHER_MODE_MASK 0xFFU

/** Ciphers: add a mode. */
#define TLX_CIPHER_AES128 0x01000100U
#define TLX_CIPHER_AES192 0x01000200U
#define TLX_CIPHER_AES256 0x01000300U
#define TLX_CIPHER_DES 0x02000100U
/** Two-key triple DES. */
#define TLX_CIPHER_DES_EDE 0x02000200U
/** Two-key triple DES again, under the number that password-based encryption has for it; CBC only. */
#define TLX_CIPHER_DES_EDE_PBE 0x02001200U
/** Three-key triple DES. */
#define TLX_CIPHER_DES_EDE3 0x02010200U
/** 128-bit keys. */
#define TLX_CIPHER_ARIA 0x03000100U
#define TLX_CIPHER_SEED 0x04000100U
/** Known, but not available in the cryptographic backend: every use fails. */
#define TLX_CIPHER_RC5 0x05000100U
/** 128-bit keys. */
#define TLX_CIPHER_BLOWFISH 0x06000100U
/** 128-bit keys and 128 effective bits. */
#define TLX_CIPHER_RC2 0x07000100U
/** 40-bit keys and 40 effective bits; CBC only. */
#define TLX_CIPHER_RC2_40 0x07000200U

/** The longest IV and the longest block of any cipher here. */
#define TLX_CIPHER_MAX_BLOCK_LENGTH 16
/** The longest key of any cipher here. */
#define TLX_CIPHER_MAX_KEY_LENGTH 32

/** Decryption found padding that no encryption makes, or a ciphertext that is not whole blocks: most often
 * the key is wrong. */
#define TLX_CIPHER_BAD_PADDING 2U

TLX_BEGIN_DECLS

/** A cipher with its key, IV and direction, between blocks. */
typedef struct BLOCK_CIPHER_UNIT BLOCK_CIPHER_UNIT;

/** Key octets of a cipher; 0 for an identifier that is unknown or not available. */
TLXCRYPTO_API uint32_t get_KeyLength(uint32_t cipher_id);
/** IV octets of a cipher: 0 in ECB mode, and for an identifier that is unknown or not available. */
TLXCRYPTO_API uint32_t get_IVLength(uint32_t cipher_id);
/** Block octets of the underlying block cipher in every mode (8 or 16); 0 for an identifier that is unknown
 * or not available. */
TLXCRYPTO_API uint32_t get_BlockLength(uint32_t cipher_id);

/** A unit without a cipher; null when memory is short. Freed with free_BLOCK_CIPHER_UNIT. */
TLXCRYPTO_API BLOCK_CIPHER_UNIT *new_BLOCK_CIPHER_UNIT(void);
/** Wipes the key and frees the unit; null is allowed. */
TLXCRYPTO_API void free_BLOCK_CIPHER_UNIT(BLOCK_CIPHER_UNIT *unit);

/** Keys a unit, which may be used already: what it was doing is dropped.
 * @param unit the unit
 * @param cipher_id algorithm and mode
 * @param key get_KeyLength (cipher_id) octets
 * @param iv get_IVLength (cipher_id) octets, copied; null means all zero
 * @param direction 1 encrypts, 0 decrypts
 * @return 0; 1 on a null unit or key, another direction, a cipher that is not available or an allocation
 *         failure: the unit has no cipher then */
TLXCRYPTO_API uint32_t init_BlockCipher(BLOCK_CIPHER_UNIT *unit, uint32_t cipher_id, const uint8_t *key,
                                        const uint8_t *iv, uint32_t direction);

/** Feeds octets and takes out those that are ready.
 * @param unit a unit that init_BlockCipher succeeded on
 * @param out receives up to in_len + block length - 1 octets; may be in itself, when nothing is held back
 * from earlier calls, but not overlap it otherwise
 * @param out_len receives the octets written
 * @param in the octets; may be null when in_len is 0
 * @param in_len their number, at most 0x7FFFFF00
 * @return 0; 1 on a bad argument or a unit without a cipher (*out_len is 0 then) */
TLXCRYPTO_API uint32_t update_BlockCipher(BLOCK_CIPHER_UNIT *unit, uint8_t *out, uint32_t *out_len,
                                          const uint8_t *in, uint32_t in_len);

/** Ends an encryption or decryption; the unit has no cipher afterwards, but keeps its IV.
 * @param unit a unit that init_BlockCipher succeeded on
 * @param out receives up to one block
 * @param out_len receives the octets written: a whole block when encrypting with padding, fewer than one when
 *        decrypting, 0 in CFB and OFB
 * @return 0; TLX_CIPHER_BAD_PADDING (nothing is written, *out_len is 0; what update_BlockCipher gave out
 * should be wiped by the caller); 1 on a null argument or a unit without a cipher */
TLXCRYPTO_API uint32_t final_BlockCipher(BLOCK_CIPHER_UNIT *unit, uint8_t *out, uint32_t *out_len);

/** The IV that the unit was keyed with, owned by the unit and valid until it is keyed again or freed.
 * @param unit the unit
 * @param len receives its octets, 0 when there is none; may be null
 * @return the octets; null on a null unit or when there is none */
TLXCRYPTO_API const uint8_t *get_BLOCK_CIPHER_UNIT_iv(const BLOCK_CIPHER_UNIT *unit, uint32_t *len);
/** The cipher that the unit was last keyed for; 0 on a null or new unit. */
TLXCRYPTO_API uint32_t get_BLOCK_CIPHER_UNIT_id(const BLOCK_CIPHER_UNIT *unit);

/** Encrypts or decrypts in one call.
 * @param cipher_id algorithm and mode
 * @param direction 1 encrypts, 0 decrypts
 * @param key get_KeyLength (cipher_id) octets
 * @param iv get_IVLength (cipher_id) octets; null means all zero
 * @param out receives the result: up to in_len + block length octets when encrypting, up to in_len when
 *        decrypting; may be in itself, but not overlap it otherwise
 * @param out_len receives the octets written, 0 on failure
 * @param in the octets; may be null when in_len is 0
 * @param in_len their number, at most 0x7FFFFF00
 * @return 0; TLX_CIPHER_BAD_PADDING; 1 on a bad argument, a cipher that is not available or an allocation
 *         failure. On a failure the octets written to out so far are wiped. */
TLXCRYPTO_API uint32_t BlockCipher(uint32_t cipher_id, uint32_t direction, const uint8_t *key,
                                   const uint8_t *iv, uint8_t *out, uint32_t *out_len, const uint8_t *in,
                                   uint32_t in_len);

TLX_END_DECLS

#endif
