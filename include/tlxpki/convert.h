#ifndef TLXPKI_CONVERT_H
#define TLXPKI_CONVERT_H

#include <tlxpki/types.h>

TLX_BEGIN_DECLS

TLXPKI_API uint32_t cp949ToUnicode(uint8_t lead, uint8_t trail);
TLXPKI_API uint8_t *unicodeToCP949(uint32_t code_point);
TLXPKI_API uint32_t bmpToCP949(const BMP_STRING *string, char **out);
TLXPKI_API uint32_t utf8ToCP949(const UTF8_STRING *string, char **out);
TLXPKI_API uint32_t cp949ToBMP(const char *text, BMP_STRING **out);
TLXPKI_API uint32_t cp949ToUTF8(const char *text, UTF8_STRING **out);
TLXPKI_API uint32_t ascTouni(const char *text, uint32_t len, uint8_t **out);
TLXPKI_API uint32_t uniToasc(const uint8_t *units, uint32_t len, char **out);
TLXPKI_API uint32_t hexToASCII(const char *hex, uint32_t len, uint8_t **out);

TLX_END_DECLS

#endif
