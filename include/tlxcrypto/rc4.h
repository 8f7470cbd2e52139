/** @file
 * The stream cipher RC4. It is broken; it is here to read what older systems wrote (RFC 7465 tells the
 * story).
 *
 * Threads: distinct units may be used at the same time; one unit by one thread at a time.
 */
#ifndef TLXCRYPTO_RC4_H
#define TLXCRYPTO_RC4_H

#include <stdint.h>
#include <tlxcrypto/export.h>

TLX_BEGIN_DECLS

/** An RC4 key stream at some position. */
typedef struct RC4_UNIT RC4_UNIT;

/** A unit without a key; null when memory is short. Freed with free_RC4_UNIT. */
TLXCRYPTO_API RC4_UNIT *new_RC4_UNIT(void);
/** Wipes the key stream and frees the unit; null is allowed. */
TLXCRYPTO_API void free_RC4_UNIT(RC4_UNIT *unit);

/** Starts the key stream of a key.
 * @param unit the unit, new or used
 * @param key the key
 * @param key_len its octets, 1 to 256
 * @return 0; 1 on a bad argument, an RC4 that is not available or an allocation failure: the unit has no key
 * then */
TLXCRYPTO_API uint32_t init_RC4(RC4_UNIT *unit, const uint8_t *key, uint32_t key_len);

/** Encrypts or decrypts, which is the same, with the next octets of the key stream.
 * @param unit a unit that init_RC4 succeeded on
 * @param out receives len octets; may be in itself, but not overlap it otherwise
 * @param in the octets; may be null when len is 0
 * @param len their number, at most 0x7FFFFFFF
 * @return 0; 1 on a bad argument or a unit without a key */
TLXCRYPTO_API uint32_t update_RC4(RC4_UNIT *unit, uint8_t *out, const uint8_t *in, uint32_t len);

TLX_END_DECLS

#endif
