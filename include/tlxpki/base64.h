#ifndef TLXPKI_BASE64_H
#define TLXPKI_BASE64_H

#include <tlxpki/types.h>

TLX_BEGIN_DECLS

TLXPKI_API uint32_t encode_Base64(const uint8_t *in, uint32_t len, char **out, uint32_t wrap);
TLXPKI_API uint32_t encode_Base64_Line(const uint8_t *in, uint32_t len, char **out);
TLXPKI_API uint32_t decode_Base64(const char *in, uint32_t len, uint8_t **out);

TLX_END_DECLS

#endif
