#ifndef TLXPKI_PRINT_H
#define TLXPKI_PRINT_H

#include <tlxpki/types.h>

TLX_BEGIN_DECLS

TLXPKI_API void printBERData(const ASN1_UNIT *node);
TLXPKI_API void printDERData(const ASN1_UNIT *node);
TLXPKI_API char *dump_PCHAR(const char *text, uint32_t len);
TLXPKI_API void print_PCHAR(const char *text, uint32_t len);
TLXPKI_API char *dump_ASN1STRING(const ASN1_STRING *string);
TLXPKI_API void print_ASN1STRING(const ASN1_STRING *string);

TLX_END_DECLS

#endif
