#ifndef TLXPKI_BER_H
#define TLXPKI_BER_H

#include <tlxpki/types.h>

TLX_BEGIN_DECLS

TLXPKI_API uint32_t encodeToBERBoolean(ASN1_UNIT *node, uint32_t tag, const uint8_t *value, int32_t len,
                                       int32_t form);
TLXPKI_API uint32_t encodeToBERInteger(ASN1_UNIT *node, uint32_t tag, const BIGINT *value, int32_t len,
                                       int32_t form);
TLXPKI_API uint32_t encodeToBERBitString(ASN1_UNIT *node, uint32_t tag, const BIT_STRING *value, int32_t len,
                                         int32_t form);
TLXPKI_API uint32_t encodeToBERNull(ASN1_UNIT *node, uint32_t tag, const void *value, int32_t len,
                                    int32_t form);
TLXPKI_API uint32_t encodeToBERObjectIdentifier(ASN1_UNIT *node, uint32_t tag, const OBJECT_IDENTIFIER *value,
                                                int32_t len, int32_t form);
TLXPKI_API uint32_t encodeToBERUTCTime(ASN1_UNIT *node, uint32_t tag, const UTC_TIME *value, int32_t len,
                                       int32_t form);
TLXPKI_API uint32_t encodeToBERGENERALIZEDTime(ASN1_UNIT *node, uint32_t tag, const GENERALIZED_TIME *value,
                                               int32_t len, int32_t form);
TLXPKI_API uint32_t encodeToBERASN1String(ASN1_UNIT *node, uint32_t tag, const ASN1_STRING *value,
                                          int32_t len, int32_t form);

TLXPKI_API uint8_t *decodeToBERBoolean(const uint8_t *element);
TLXPKI_API BIGINT *decodeToBERInteger(const uint8_t *element);
TLXPKI_API BIGINT *decodeToBEREnumerated(const uint8_t *element);
TLXPKI_API BIT_STRING *decodeToBERBitString(const uint8_t *element);
TLXPKI_API OCTET_STRING *decodeToBEROctetString(const uint8_t *element);
TLXPKI_API void *decodeToBERNull(const uint8_t *element);
TLXPKI_API OBJECT_IDENTIFIER *decodeToBERObjectIdentifier(const uint8_t *element);
TLXPKI_API UTF8_STRING *decodeToBERUTF8String(const uint8_t *element);
TLXPKI_API PRINTABLE_STRING *decodeToBERPrintableString(const uint8_t *element);
TLXPKI_API T61_STRING *decodeToBERT61String(const uint8_t *element);
TLXPKI_API IA5_STRING *decodeToBERIA5String(const uint8_t *element);
TLXPKI_API BMP_STRING *decodeToBERBMPString(const uint8_t *element);
TLXPKI_API UTC_TIME *decodeToBERUTCTime(const uint8_t *element);
TLXPKI_API GENERALIZED_TIME *decodeToBERGENERALIZEDTime(const uint8_t *element);
TLXPKI_API ASN1_STRING *decodeToBERASN1String(const uint8_t *element);

TLXPKI_API uint8_t *decodeToDERBoolean(const uint8_t *element);
TLXPKI_API BIGINT *decodeToDERInteger(const uint8_t *element);
TLXPKI_API BIGINT *decodeToDEREnumerated(const uint8_t *element);
TLXPKI_API BIT_STRING *decodeToDERBitString(const uint8_t *element);
TLXPKI_API OCTET_STRING *decodeToDEROctetString(const uint8_t *element);
TLXPKI_API void *decodeToDERNull(const uint8_t *element);
TLXPKI_API OBJECT_IDENTIFIER *decodeToDERObjectIdentifier(const uint8_t *element);
TLXPKI_API UTF8_STRING *decodeToDERUTF8String(const uint8_t *element);
TLXPKI_API PRINTABLE_STRING *decodeToDERPrintableString(const uint8_t *element);
TLXPKI_API T61_STRING *decodeToDERT61String(const uint8_t *element);
TLXPKI_API IA5_STRING *decodeToDERIA5String(const uint8_t *element);
TLXPKI_API BMP_STRING *decodeToDERBMPString(const uint8_t *element);
TLXPKI_API UTC_TIME *decodeToDERUTCTime(const uint8_t *element);
TLXPKI_API GENERALIZED_TIME *decodeToDERGENERALIZEDTime(const uint8_t *element);
TLXPKI_API ASN1_STRING *decodeToDERASN1String(const uint8_t *element);

TLXPKI_API OCTET_STRING *new_OCTET_STRING(void);
TLXPKI_API OBJECT_IDENTIFIER *new_OBJECT_IDENTIFIER(void);
TLXPKI_API UTF8_STRING *new_UTF8_STRING(void);
TLXPKI_API PRINTABLE_STRING *new_PRINTABLE_STRING(void);
TLXPKI_API T61_STRING *new_T61_STRING(void);
TLXPKI_API IA5_STRING *new_IA5_STRING(void);
TLXPKI_API BMP_STRING *new_BMP_STRING(void);
TLXPKI_API UTC_TIME *new_UTC_TIME(void);
TLXPKI_API GENERALIZED_TIME *new_GENERALIZED_TIME(void);
TLXPKI_API void clean_BIT_STRING(BIT_STRING *string);
TLXPKI_API void free_BIT_STRING(BIT_STRING *string);
TLXPKI_API void clean_OCTET_STRING(OCTET_STRING *string);
TLXPKI_API void free_OCTET_STRING(OCTET_STRING *string);
TLXPKI_API void clean_OBJECT_IDENTIFIER(OBJECT_IDENTIFIER *string);
TLXPKI_API void free_OBJECT_IDENTIFIER(OBJECT_IDENTIFIER *string);
TLXPKI_API void clean_UTF8_STRING(UTF8_STRING *string);
TLXPKI_API void free_UTF8_STRING(UTF8_STRING *string);
TLXPKI_API void clean_PRINTABLE_STRING(PRINTABLE_STRING *string);
TLXPKI_API void free_PRINTABLE_STRING(PRINTABLE_STRING *string);
TLXPKI_API void clean_T61_STRING(T61_STRING *string);
TLXPKI_API void free_T61_STRING(T61_STRING *string);
TLXPKI_API void clean_IA5_STRING(IA5_STRING *string);
TLXPKI_API void free_IA5_STRING(IA5_STRING *string);
TLXPKI_API void clean_BMP_STRING(BMP_STRING *string);
TLXPKI_API void free_BMP_STRING(BMP_STRING *string);
TLXPKI_API void clean_UTC_TIME(UTC_TIME *string);
TLXPKI_API void free_UTC_TIME(UTC_TIME *string);
TLXPKI_API void clean_GENERALIZED_TIME(GENERALIZED_TIME *string);
TLXPKI_API void free_GENERALIZED_TIME(GENERALIZED_TIME *string);

TLXPKI_API BIT_STRING *new_BIT_STRING(const char *bits, int32_t count);
TLXPKI_API BIT_STRING *binaryToBIT_STRING(const uint8_t *octets, uint32_t len);
TLXPKI_API BIT_STRING *hexToBIT_STRING(const char *hex);
TLXPKI_API uint32_t addPadToBERBitString(BIT_STRING *string, const char *bits);

TLX_END_DECLS

#endif
