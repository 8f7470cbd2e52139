#ifndef TLXCRYPTO_RANDOM_H
#define TLXCRYPTO_RANDOM_H

#include <stdint.h>
#include <tlxcrypto/export.h>

TLX_BEGIN_DECLS

/** Fills len octets from the library's DRBG. 0, or 1 on failure (the buffer is zeroed then). */
TLXCRYPTO_API uint32_t RAND_BYTES(uint8_t *octets, uint32_t len);

TLX_END_DECLS

#endif
