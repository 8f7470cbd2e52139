/** @file
 * Random octets. Every function may be called from any thread.
 */
#ifndef TLXCRYPTO_RANDOM_H
#define TLXCRYPTO_RANDOM_H

#include <stdint.h>
#include <tlxcrypto/export.h>

TLX_BEGIN_DECLS

/** Fills a buffer with len octets, fit for keys, nonces and salts, from the library's deterministic random
 * bit generator (NIST SP 800-90A), which the operating system seeds. octets may be null when len is 0.
 * Returns 0, or 1 for null octets and when the generator fails, which leaves a buffer of zeros. */
TLXCRYPTO_API uint32_t RAND_BYTES(uint8_t *octets, uint32_t len);

TLX_END_DECLS

#endif
