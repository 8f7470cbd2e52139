/** @file
 * Block ciphers in the modes ECB, CBC, CFB and OFB.
 *
 * A cipher identifier packs, from the top octet down: the algorithm, a variant, a key-size class and the
 * mode. ECB and CBC pad by PKCS #7 (RFC 5652, section 6.3); CFB (full-block feedback) and OFB do not pad.
 *
 * - Arguments: a key has get_KeyLength() octets, an iv get_IVLength() octets or is null, which means all
 *   zero; a unit copies them. direction is 1 to encrypt, 0 to decrypt. in may be null when in_len is 0, which
 *   is at most 0x7FFFFF00. out_len receives the octets written, 0 on failure.
 * - Failure: functions return 0; 1 for a bad argument, a cipher that is unknown or not available, a unit
 *   without a cipher and when memory runs out; or TLX_CIPHER_BAD_PADDING. get_ functions return 0 instead,
 *   and new_BLOCK_CIPHER_UNIT() null.
 * - Threads: distinct units may be used at the same time; one unit by one thread at a time.
 */
#ifndef TLXCRYPTO_CIPHER_H
#define TLXCRYPTO_CIPHER_H

#include <stdint.h>
#include <tlxcrypto/export.h>

/* Modes: the low octet of a cipher identifier. */
#define TLX_CIPHER_MODE_ECB 0x00U
#define TLX_CIPHER_MODE_CBC 0x20U
#define TLX_CIPHER_MODE_CFB 0x40U
#define TLX_CIPHER_MODE_OFB 0x60U
#define TLX_CIPHER_MODE_MASK 0xFFU

/* Ciphers: add a mode. */
#define TLX_CIPHER_AES128 0x01000100U
#define TLX_CIPHER_AES192 0x01000200U
#define TLX_CIPHER_AES256 0x01000300U
#define TLX_CIPHER_DES 0x02000100U
#define TLX_CIPHER_DES_EDE 0x02000200U     /**< two-key triple DES */
#define TLX_CIPHER_DES_EDE_PBE 0x02001200U /**< the same for password-based encryption; CBC only */
#define TLX_CIPHER_DES_EDE3 0x02010200U    /**< three-key triple DES */
#define TLX_CIPHER_ARIA 0x03000100U        /**< 128-bit keys */
#define TLX_CIPHER_ARIA192 0x03000200U     /**< CBC only, as ARIA256 */
#define TLX_CIPHER_ARIA256 0x03000300U
#define TLX_CIPHER_SEED 0x04000100U
#define TLX_CIPHER_RC5 0x05000100U         /**< known, but not available: every use fails */
#define TLX_CIPHER_BLOWFISH 0x06000100U    /**< 128-bit keys */
#define TLX_CIPHER_RC2 0x07000100U         /**< 128-bit keys and 128 effective bits */
#define TLX_CIPHER_RC2_40 0x07000200U      /**< 40-bit keys and 40 effective bits; CBC only */
#define TLX_CIPHER_RC2_64 0x07000300U      /**< 64-bit keys and 64 effective bits; CBC only */
#define TLX_CIPHER_CAMELLIA128 0x08000100U /**< CBC only, as the two others */
#define TLX_CIPHER_CAMELLIA192 0x08000200U
#define TLX_CIPHER_CAMELLIA256 0x08000300U
#define TLX_CIPHER_CAST5 0x09000100U /**< 128-bit keys; CBC only */

#define TLX_CIPHER_MAX_BLOCK_LENGTH 16 /**< octets of the longest IV and of the longest block */
#define TLX_CIPHER_MAX_KEY_LENGTH 32   /**< octets of the longest key */

/** Decryption found wrong padding or a ciphertext that is not whole blocks: most often the key is wrong. */
#define TLX_CIPHER_BAD_PADDING 2U

TLX_BEGIN_DECLS

/** A cipher with its key, IV and direction, between blocks. */
typedef struct BLOCK_CIPHER_UNIT BLOCK_CIPHER_UNIT;

/** Returns the octets of a cipher's key. */
TLXCRYPTO_API uint32_t get_KeyLength(uint32_t cipher_id);
/** Returns the octets of a cipher's IV; 0 in ECB mode. */
TLXCRYPTO_API uint32_t get_IVLength(uint32_t cipher_id);
/** Returns the octets of the block cipher's block, 8 or 16 in every mode. */
TLXCRYPTO_API uint32_t get_BlockLength(uint32_t cipher_id);

/** Makes a unit without a cipher, freed with free_BLOCK_CIPHER_UNIT(). */
TLXCRYPTO_API BLOCK_CIPHER_UNIT *new_BLOCK_CIPHER_UNIT(void);
/** Wipes the key and frees the unit. Ignores null. */
TLXCRYPTO_API void free_BLOCK_CIPHER_UNIT(BLOCK_CIPHER_UNIT *unit);

/** Keys a unit, new or used, and drops what was under way. On failure the unit has no cipher. */
TLXCRYPTO_API uint32_t init_BlockCipher(BLOCK_CIPHER_UNIT *unit, uint32_t cipher_id, const uint8_t *key,
                                        const uint8_t *iv, uint32_t direction);

/** Takes octets in and gives out those that are ready.
 * @param out receives up to in_len + block length - 1 octets; may be in itself when the unit holds nothing
 * back from earlier calls, but not overlap it otherwise */
TLXCRYPTO_API uint32_t update_BlockCipher(BLOCK_CIPHER_UNIT *unit, uint8_t *out, uint32_t *out_len,
                                          const uint8_t *in, uint32_t in_len);

/** Ends an encryption or decryption. The unit has no cipher afterwards, but keeps its IV. On
 * TLX_CIPHER_BAD_PADDING it writes nothing, and the caller should wipe what update_BlockCipher() gave out.
 * @param out receives one block when encrypting with padding, less when decrypting, nothing in CFB and OFB */
TLXCRYPTO_API uint32_t final_BlockCipher(BLOCK_CIPHER_UNIT *unit, uint8_t *out, uint32_t *out_len);

/** Returns the IV that the unit was keyed with, which stays the unit's until it is keyed again or freed; null
 * for a null unit and when there is none. len, which may be null, receives its octets or 0. */
TLXCRYPTO_API const uint8_t *get_BLOCK_CIPHER_UNIT_iv(const BLOCK_CIPHER_UNIT *unit, uint32_t *len);
/** Returns the cipher that the unit was last keyed for; 0 for null and a new unit. */
TLXCRYPTO_API uint32_t get_BLOCK_CIPHER_UNIT_id(const BLOCK_CIPHER_UNIT *unit);

/** Returns how many octets update_BlockCipher() would give out for in_len more; 0 for null, a unit without a
 * cipher and an in_len that it refuses. */
TLXCRYPTO_API uint32_t get_BLOCK_CIPHER_UNIT_output(const BLOCK_CIPHER_UNIT *unit, uint32_t in_len);
/** Returns the most octets that final_BlockCipher() gives out: one block in ECB and CBC, otherwise 0; 0 also
 * for null and a unit without a cipher. */
TLXCRYPTO_API uint32_t get_BLOCK_CIPHER_UNIT_final(const BLOCK_CIPHER_UNIT *unit);

/** Encrypts or decrypts in one call. On failure it wipes what it wrote to out.
 * @param out receives up to in_len + block length octets when encrypting, up to in_len when decrypting; may
 * be in itself, but not overlap it otherwise */
TLXCRYPTO_API uint32_t BlockCipher(uint32_t cipher_id, uint32_t direction, const uint8_t *key,
                                   const uint8_t *iv, uint8_t *out, uint32_t *out_len, const uint8_t *in,
                                   uint32_t in_len);

TLX_END_DECLS

#endif
