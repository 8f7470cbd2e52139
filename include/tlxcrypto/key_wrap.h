/** @file
 * Keys encrypted under keys: AES key wrap (RFC 3394, SP 800-38F), and the same with other ciphers of 16-octet
 * blocks, such as SEED (RFC 4010) and ARIA.
 *
 * - Arguments: cipher_id is a cipher of <tlxcrypto/cipher.h> in the mode ECB, of 16-octet blocks; kek is its
 * key of get_KeyLength() octets. in is a key, or a wrapped one, of in_len octets: a multiple of 8. out_len
 *   receives the octets written, 0 on failure.
 * - Failure: functions return 0; 1 for a bad argument, a cipher that is not available and when memory runs
 *   out; or TLX_KEY_WRAP_BAD_KEY.
 * - Threads: every function may be called from any thread.
 */
#ifndef TLXCRYPTO_KEY_WRAP_H
#define TLXCRYPTO_KEY_WRAP_H

#include <stdint.h>
#include <tlxcrypto/export.h>

#define TLX_KEY_WRAP_MAX_LENGTH 4096 /**< octets of the longest key that is wrapped */
#define TLX_KEY_WRAP_OVERHEAD 8      /**< octets by which a wrapped key is longer */

/** The wrapped key was altered, or wrapped under another key. */
#define TLX_KEY_WRAP_BAD_KEY 2U

TLX_BEGIN_DECLS

/** Wraps a key of 16 to TLX_KEY_WRAP_MAX_LENGTH octets.
 * @param out receives in_len + TLX_KEY_WRAP_OVERHEAD octets */
TLXCRYPTO_API uint32_t wrap_KEY(uint32_t cipher_id, const uint8_t *kek, uint8_t *out, uint32_t *out_len,
                                const uint8_t *in, uint32_t in_len);
/** Unwraps a key.
 * @param out receives in_len - TLX_KEY_WRAP_OVERHEAD octets; zeros on failure */
TLXCRYPTO_API uint32_t unwrap_KEY(uint32_t cipher_id, const uint8_t *kek, uint8_t *out, uint32_t *out_len,
                                  const uint8_t *in, uint32_t in_len);

TLX_END_DECLS

#endif
