/** @file
 * HMAC (RFC 2104, FIPS 198-1) over the digests of digest.h.
 *
 * A digest_id is a digest's identifier, or TLX_HMAC_SHA1 for HMAC with SHA-1.
 *
 * Thread safety: the functions may be called from any thread, on distinct units.
 */
#ifndef TLXCRYPTO_HMAC_H
#define TLXCRYPTO_HMAC_H

#include <stdint.h>
#include <tlxcrypto/digest.h>
#include <tlxcrypto/export.h>

TLX_BEGIN_DECLS

/** A key, and the message authentication code in progress under it. */
typedef struct HMAC_UNIT HMAC_UNIT;

/** Octets of a code; 0 for an identifier that is unknown or not available. */
TLXCRYPTO_API uint32_t get_HMAC_length(uint32_t digest_id);

/** A new unit, to be initialised; freed with free_HMAC_UNIT. Null on allocation failure. */
TLXCRYPTO_API HMAC_UNIT *new_HMAC_UNIT(void);

/** Wipes and frees a unit. Null is ignored. */
TLXCRYPTO_API void free_HMAC_UNIT(HMAC_UNIT *unit);

/** Sets the key and starts a message, whatever state the unit is in.
 *
 * @param key      key_len octets, of which no copy is kept; may be null when key_len is 0.
 * @param key_len  Any length; a key longer than the digest's block is replaced by its digest.
 * @return 0, or 1 on a null argument, an identifier that is unknown or not available, or allocation failure;
 * the unit has no key then.
 */
TLXCRYPTO_API uint32_t init_HMAC(HMAC_UNIT *unit, uint32_t digest_id, const uint8_t *key, uint32_t key_len);

/** Starts the next message under the same key, without hashing the key again. What was added to an unfinished
 * message is dropped.
 *
 * @return 0, or 1 on a null unit, one without a key, or allocation failure.
 */
TLXCRYPTO_API uint32_t reset_HMAC(HMAC_UNIT *unit);

/** Adds the next len octets of the message; data may be null when len is 0.
 *
 * @return 0, or 1 on a null argument or a unit that is not between init or reset and final.
 */
TLXCRYPTO_API uint32_t update_HMAC(HMAC_UNIT *unit, const uint8_t *data, uint32_t len);

/** Ends the message. The unit keeps its key: reset_HMAC starts the next message.
 *
 * @param mac      Receives get_HMAC_length octets; TLX_DIGEST_MAX_LENGTH are always enough.
 * @param mac_len  Receives their number.
 * @return 0, or 1 on a null argument, a unit that is not between init or reset and final, or allocation
 * failure; *mac_len is 0 then.
 */
TLXCRYPTO_API uint32_t final_HMAC(HMAC_UNIT *unit, uint8_t *mac, uint32_t *mac_len);

/** Computes a code in one call; the arguments are those of init_HMAC, update_HMAC and final_HMAC.
 *
 * @return 0, or 1 when one of these would fail; *mac_len is 0 then.
 */
TLXCRYPTO_API uint32_t compute_HMAC(uint32_t digest_id, const uint8_t *key, uint32_t key_len,
                                    const uint8_t *data, uint32_t len, uint8_t *mac, uint32_t *mac_len);

TLX_END_DECLS

#endif
