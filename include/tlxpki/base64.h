/** @file
 * Base64 (RFC 4648, section 4).
 *
 * Every function may be called from any thread. On failure the result is 0 and *out stays as it was.
 */
#ifndef TLXPKI_BASE64_H
#define TLXPKI_BASE64_H

#include <tlxpki/types.h>

TLX_BEGIN_DECLS

/**
 * Encodes octets.
 * @param in   the octets
 * @param len  how many
 * @param out  receives a NUL-terminated text, freed with tlx_free()
 * @param wrap 1: a line feed stands after every 64 characters, but not at the end; any other value: one
 *             line
 * @return the length of the text without the NUL
 * @return 0 for a null argument, len 0, a text that would be longer than 0xFFFFFFFE, and when memory runs
 *         out
 */
TLXPKI_API uint32_t encode_Base64(const uint8_t *in, uint32_t len, char **out, uint32_t wrap);

/**
 * Encodes octets to one line.
 * @param in,len,out as encode_Base64()
 * @return as encode_Base64()
 */
TLXPKI_API uint32_t encode_Base64_Line(const uint8_t *in, uint32_t len, char **out);

/**
 * Decodes a text. Carriage returns and line feeds are passed over wherever they stand. Everything else has to
 * be as the encoder writes it: characters of the alphabet, in groups of four, the last of which is padded
 * with "=" and has no bits set in what the padding leaves unused.
 * @param in  the text, which needs no NUL
 * @param len characters at `in`
 * @param out receives the octets, freed with tlx_free()
 * @return the number of octets
 * @return 0 for a null argument, a text without characters, any other text, and when memory runs out
 */
TLXPKI_API uint32_t decode_Base64(const char *in, uint32_t len, uint8_t **out);

TLX_END_DECLS

#endif
