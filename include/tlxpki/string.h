#ifndef TLXPKI_STRING_H
#define TLXPKI_STRING_H

#include <tlxpki/types.h>

TLX_BEGIN_DECLS

TLXPKI_API ASN1_STRING *new_ASN1_STRING(void);
TLXPKI_API void clean_ASN1_STRING(ASN1_STRING *string);
TLXPKI_API void free_ASN1_STRING(ASN1_STRING *string);
TLXPKI_API ASN1_STRING *dup_ASN1_STRING(const ASN1_STRING *string);
TLXPKI_API uint32_t set_ASN1_STRING_value(ASN1_STRING *string, int32_t type, const void *octets,
                                          uint32_t len);
TLXPKI_API int32_t cmp_ASN1_STRING(const ASN1_STRING *a, const ASN1_STRING *b);
TLXPKI_API uint32_t ASN1_STRING_to_Seq(const ASN1_STRING *string, ASN1_UNIT **out);
TLXPKI_API uint32_t ASN1_STRING_to_binary(const ASN1_STRING *string, uint8_t **out);

TLX_END_DECLS

#endif
