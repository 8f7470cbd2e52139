#ifndef TLXCRYPTO_FILE_H
#define TLXCRYPTO_FILE_H

#include <stdint.h>
#include <tlxcrypto/export.h>

TLX_BEGIN_DECLS

/** Reads a whole file into a new buffer with a zero octet after it. 0, or 1 on failure (nothing is stored
 * then). */
TLXCRYPTO_API uint32_t File_to_binary(const char *path, uint8_t **octets, uint32_t *len);
/** Writes the file anew. 0 or 1. */
TLXCRYPTO_API uint32_t binary_to_File(const char *path, const uint8_t *octets, uint32_t len);
/** Prints the octets as upper-case hexadecimal digits to standard output. */
TLXCRYPTO_API void print_hex(const uint8_t *octets, uint32_t len);
/** New upper-case hexadecimal text, freed with tlx_free. */
TLXCRYPTO_API char *binary_to_hex(const uint8_t *octets, uint32_t len);
/** New octets from an even number of hexadecimal digits of either case. 0 or 1. */
TLXCRYPTO_API uint32_t hex_to_binary(const char *hex, uint32_t hex_len, uint8_t **octets, uint32_t *len);

TLX_END_DECLS

#endif
