/** @file
 * Random octets.
 *
 * Thread safety: may be called from any thread.
 */
#ifndef TLXCRYPTO_RANDOM_H
#define TLXCRYPTO_RANDOM_H

#include <stdint.h>
#include <tlxcrypto/export.h>

TLX_BEGIN_DECLS

/** Fills a buffer from the library's deterministic random bit generator (NIST SP 800-90A), which the
 * operating system seeds. Fit for keys, nonces and salts.
 *
 * @param octets  Receives len octets; may be null when len is 0.
 * @return 0, or 1 on a null buffer or when the generator fails (the buffer is zeroed then).
 */
TLXCRYPTO_API uint32_t RAND_BYTES(uint8_t *octets, uint32_t len);

TLX_END_DECLS

#endif
