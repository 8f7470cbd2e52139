/** @file
 * HMAC (RFC 2104, FIPS 198-1) over the digests of digest.h.
 *
 * - Arguments: digest_id is a digest's identifier, or TLX_HMAC_SHA1 for HMAC with SHA-1. key is key_len
 *   octets; a key longer than the digest's block is replaced by its digest. data is a message or its next len
 *   octets. key and data may be null when their length is 0. mac receives get_HMAC_length() octets, at most
 *   TLX_DIGEST_MAX_LENGTH. mac_len receives their number, 0 on failure.
 * - Failure: functions return 0, or 1 for a null argument, an identifier that is unknown or not available,
 *   calls in a wrong order and when memory runs out. get_HMAC_length() returns 0 instead, and new_HMAC_UNIT()
 *   null.
 * - Threads: distinct units may be used at the same time; one unit by one thread at a time.
 */
#ifndef TLXCRYPTO_HMAC_H
#define TLXCRYPTO_HMAC_H

#include <stdint.h>
#include <tlxcrypto/digest.h>
#include <tlxcrypto/export.h>

TLX_BEGIN_DECLS

/** A key, and the message authentication code in progress under it. */
typedef struct HMAC_UNIT HMAC_UNIT;

/** Returns the octets of a code. */
TLXCRYPTO_API uint32_t get_HMAC_length(uint32_t digest_id);

/** Makes a unit for init_HMAC(), freed with free_HMAC_UNIT(). */
TLXCRYPTO_API HMAC_UNIT *new_HMAC_UNIT(void);
/** Wipes and frees a unit. Ignores null. */
TLXCRYPTO_API void free_HMAC_UNIT(HMAC_UNIT *unit);

/** Keys a unit in any state and starts a message. It keeps no copy of the key. On failure it has no key. */
TLXCRYPTO_API uint32_t init_HMAC(HMAC_UNIT *unit, uint32_t digest_id, const uint8_t *key, uint32_t key_len);

/** Drops an unfinished message and starts the next one under the same key, without hashing the key again. */
TLXCRYPTO_API uint32_t reset_HMAC(HMAC_UNIT *unit);

/** Adds octets to the message, after init_HMAC() or reset_HMAC() and before final_HMAC(). */
TLXCRYPTO_API uint32_t update_HMAC(HMAC_UNIT *unit, const uint8_t *data, uint32_t len);

/** Ends the message. The unit keeps its key for reset_HMAC(). */
TLXCRYPTO_API uint32_t final_HMAC(HMAC_UNIT *unit, uint8_t *mac, uint32_t *mac_len);

/** Computes a code in one call. */
TLXCRYPTO_API uint32_t compute_HMAC(uint32_t digest_id, const uint8_t *key, uint32_t key_len,
                                    const uint8_t *data, uint32_t len, uint8_t *mac, uint32_t *mac_len);

TLX_END_DECLS

#endif
