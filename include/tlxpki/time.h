#ifndef TLXPKI_TIME_H
#define TLXPKI_TIME_H

#include <tlxpki/types.h>

TLX_BEGIN_DECLS

TLXPKI_API ASN1_TIME *new_ASN1_TIME(void);
TLXPKI_API void clean_ASN1_TIME(ASN1_TIME *time);
TLXPKI_API void free_ASN1_TIME(ASN1_TIME *time);
TLXPKI_API ASN1_TIME *dup_ASN1_TIME(const ASN1_TIME *time);
TLXPKI_API uint32_t check_ASN1_TIME(const ASN1_TIME *time);
TLXPKI_API int32_t cmp_ASN1_TIME(const ASN1_TIME *a, const ASN1_TIME *b);
TLXPKI_API ASN1_TIME *charToASN1_TIME(const char *text);
TLXPKI_API ASN1_TIME *utcTimeToASN1_TIME(const UTC_TIME *utc);
TLXPKI_API ASN1_TIME *generalizedTimeToASN1_TIME(const GENERALIZED_TIME *generalized);
TLXPKI_API UTC_TIME *asn1TimeToUTC_TIME(const ASN1_TIME *time, uint32_t form);
TLXPKI_API GENERALIZED_TIME *asn1TimeToGENERALIZED_TIME(const ASN1_TIME *time, uint32_t form);
TLXPKI_API uint32_t add_UTC_TIME(UTC_TIME **time, int32_t seconds);
TLXPKI_API uint32_t add_GENERALIZED_TIME(GENERALIZED_TIME **time, int32_t seconds);
TLXPKI_API int32_t cmp_UTC_TIME(const UTC_TIME *a, const UTC_TIME *b);
TLXPKI_API int32_t cmp_GENERALIZED_TIME(const GENERALIZED_TIME *a, const GENERALIZED_TIME *b);
TLXPKI_API ASN1_TIME *getCurrentGMTime(void);
TLXPKI_API ASN1_TIME *getCurrentLocalTime(void);

TLX_END_DECLS

#endif
