/** @file
 * Base64 (RFC 4648, section 4).
 *
 * - Ownership: the caller frees *out with tlx_free().
 * - Failure: a function returns 0 for a null argument, an empty input and when memory runs out. *out is
 *   unchanged then.
 * - Threads: every function may be called from any thread.
 */
#ifndef TLXPKI_BASE64_H
#define TLXPKI_BASE64_H

#include <tlxpki/types.h>

TLX_BEGIN_DECLS

/** Encodes len octets. wrap 1 puts a line feed after every 64 characters, but not at the end; any other value
 * makes one line. *out receives a NUL-terminated text. Returns its length without the NUL; 0 also for one
 * above 0xFFFFFFFE. */
TLXPKI_API uint32_t encode_Base64(const uint8_t *in, uint32_t len, char **out, uint32_t wrap);

/** Encodes as encode_Base64() does, to one line. */
TLXPKI_API uint32_t encode_Base64_Line(const uint8_t *in, uint32_t len, char **out);

/** Decodes a text of len characters, which needs no NUL. It skips carriage returns and line feeds anywhere.
 * Everything else has to be as the encoder writes it: characters of the alphabet in groups of four, the last
 * of which is padded with "=" and has no bits set where the padding leaves them unused. *out receives the
 * octets. Returns their number; 0 also for any other text. */
TLXPKI_API uint32_t decode_Base64(const char *in, uint32_t len, uint8_t **out);

TLX_END_DECLS

#endif
