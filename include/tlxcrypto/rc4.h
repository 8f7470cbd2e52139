/** @file
 * The stream cipher RC4. It is broken (RFC 7465), and is here only to read what older systems wrote.
 *
 * Distinct units may be used at the same time; one unit by one thread at a time.
 */
#ifndef TLXCRYPTO_RC4_H
#define TLXCRYPTO_RC4_H

#include <stdint.h>
#include <tlxcrypto/export.h>

TLX_BEGIN_DECLS

/** An RC4 key stream at some position. */
typedef struct RC4_UNIT RC4_UNIT;

/** Makes a unit without a key, freed with free_RC4_UNIT(); null when memory runs out. */
TLXCRYPTO_API RC4_UNIT *new_RC4_UNIT(void);
/** Wipes the key stream and frees the unit. Ignores null. */
TLXCRYPTO_API void free_RC4_UNIT(RC4_UNIT *unit);

/** Starts the key stream of a key of 1 to 256 octets on a unit, new or used. Returns 0, or 1 for a bad
 * argument, when RC4 is not available and when memory runs out; the unit has no key then. */
TLXCRYPTO_API uint32_t init_RC4(RC4_UNIT *unit, const uint8_t *key, uint32_t key_len);

/** Encrypts or decrypts, which is the same, len octets (at most 0x7FFFFFFF) with the next octets of the key
 * stream. in may be null when len is 0; out may be in, but not overlap it otherwise. Returns 0, or 1 for a
 * bad argument or a unit without a key. */
TLXCRYPTO_API uint32_t update_RC4(RC4_UNIT *unit, uint8_t *out, const uint8_t *in, uint32_t len);

TLX_END_DECLS

#endif
