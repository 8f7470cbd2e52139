/** @file
 * Typed primitive values: one encoder and one decoder per type, the string records by type name, and how BIT
 * STRINGs are made.
 *
 * Encoders and decoders copy contents as they are. They enforce no more than these comments say: no alphabet,
 * no canonical form, which the DER functions of <tlxpki/asn1.h> apply. Every function may be called from any
 * thread, on distinct records at the same time.
 */
#ifndef TLXPKI_BER_H
#define TLXPKI_BER_H

#include <tlxpki/types.h>

TLX_BEGIN_DECLS

/*
 * Encoders
 *
 * Each encoder fills a node with one primitive element and frees what the node held before. It writes `tag`
 * as the identifier octet, so that the same encoder serves implicit tags. `len` counts the octets of the
 * value. `form` is TLX_FORM_SHORT, for contents of up to 127 octets, or TLX_FORM_LONG. The value stays the
 * caller's.
 *
 * Each encoder returns 0 or its one code: for a null node, a null value, a tag above 0xFF, a `len` that is
 * negative or more than the value has, another form, the short form for longer contents, when memory runs
 * out, and as each encoder says. The node is empty then.
 */

/** BOOLEAN: the octet as it is; `len` is 1. Its code is 0x42010101. */
TLXPKI_API uint32_t encodeToBERBoolean(ASN1_UNIT *node, uint32_t tag, const uint8_t *value, int32_t len,
                                       int32_t form);

/**
 * INTEGER or ENUMERATED: the number in exactly `len` octets, with zeros before it; get_BIGINT_der_length()
 * octets give DER. Its code is 0x42020101, also for a `len` of 0 and a number that does not fit.
 */
TLXPKI_API uint32_t encodeToBERInteger(ASN1_UNIT *node, uint32_t tag, const BIGINT *value, int32_t len,
                                       int32_t form);

/**
 * BIT STRING: the unused-bits octet (extra), then `len` octets of data, so that the contents have `len` + 1.
 * Its code is 0x42030101.
 */
TLXPKI_API uint32_t encodeToBERBitString(ASN1_UNIT *node, uint32_t tag, const BIT_STRING *value, int32_t len,
                                         int32_t form);

/** NULL: no contents; `len` is 0, and the encoder ignores `value`. Its code is 0x42040101. */
TLXPKI_API uint32_t encodeToBERNull(ASN1_UNIT *node, uint32_t tag, const void *value, int32_t len,
                                    int32_t form);

/**
 * OBJECT IDENTIFIER: from `len` characters of dotted text, of at least two arcs; a dot may end it. Arcs are
 * 32-bit numbers. Those above 0x7FFFFFFF may also be written as the negative numbers that decoding makes of
 * them. The encoder does not check the second arc against the first: it writes "1.50" as it writes "2.10",
 * but 40 times the first plus the second has to be a 32-bit number. Its code is 0x42050101, also for a `len`
 * of 0 and a text that is no object identifier.
 */
TLXPKI_API uint32_t encodeToBERObjectIdentifier(ASN1_UNIT *node, uint32_t tag, const OBJECT_IDENTIFIER *value,
                                                int32_t len, int32_t form);

/** UTCTime: `len` characters of the text as it is. Its code is 0x42070101, also for a `len` of 0. */
TLXPKI_API uint32_t encodeToBERUTCTime(ASN1_UNIT *node, uint32_t tag, const UTC_TIME *value, int32_t len,
                                       int32_t form);

/** GeneralizedTime: `len` characters of the text as it is. Its code is 0x42060101, also for a `len` of 0. */
TLXPKI_API uint32_t encodeToBERGENERALIZEDTime(ASN1_UNIT *node, uint32_t tag, const GENERALIZED_TIME *value,
                                               int32_t len, int32_t form);

/** Any other string type: `len` octets of data as they are, of a record of any type. Its code is 0x42080101.
 */
TLXPKI_API uint32_t encodeToBERASN1String(ASN1_UNIT *node, uint32_t tag, const ASN1_STRING *value,
                                          int32_t len, int32_t form);

/*
 * Decoders
 *
 * Each decoder takes the identifier octet of an element and ignores what it says. It returns a new value,
 * which the caller frees with the function of its type, or null: for a null pointer, a length that is
 * refused, contents that the decoder does not accept, and when memory runs out. It is told no length: see
 * "Functions without a length" in <tlxpki/asn1.h>. getBERChildAt() decodes the children of a node within its
 * bounds.
 *
 * The data of a string record has one zero octet more than its length says, so that texts end with a NUL. The
 * DER names denote the same operations.
 */

/** BOOLEAN: the octet as it is, freed with tlx_free(). Null unless the contents are one octet. */
TLXPKI_API uint8_t *decodeToBERBoolean(const uint8_t *element);
/** INTEGER: the contents as an unsigned number, so that FF is 255, as 00 FF is. Null for no contents. */
TLXPKI_API BIGINT *decodeToBERInteger(const uint8_t *element);
/** ENUMERATED: the same as decodeToBERInteger(). */
TLXPKI_API BIGINT *decodeToBEREnumerated(const uint8_t *element);
/** BIT STRING: extra is the first contents octet, whatever its value, data the others. Null for no contents.
 */
TLXPKI_API BIT_STRING *decodeToBERBitString(const uint8_t *element);
/** OCTET STRING. */
TLXPKI_API OCTET_STRING *decodeToBEROctetString(const uint8_t *element);
/** NULL: a block that only marks the NULL, freed with tlx_free(). */
TLXPKI_API void *decodeToBERNull(const uint8_t *element);
/**
 * OBJECT IDENTIFIER: dotted text of up to 99 characters. Null for a longer one, no contents, and contents
 * that end within an arc. Arcs are 32-bit numbers: those above 0x7FFFFFFF read as negative, and of a longer
 * one only the last 32 bits count.
 */
TLXPKI_API OBJECT_IDENTIFIER *decodeToBERObjectIdentifier(const uint8_t *element);
/** UTF8String. */
TLXPKI_API UTF8_STRING *decodeToBERUTF8String(const uint8_t *element);
/** PrintableString. */
TLXPKI_API PRINTABLE_STRING *decodeToBERPrintableString(const uint8_t *element);
/** T61String. */
TLXPKI_API T61_STRING *decodeToBERT61String(const uint8_t *element);
/** IA5String. */
TLXPKI_API IA5_STRING *decodeToBERIA5String(const uint8_t *element);
/** BMPString; the data stays UCS-2, big-endian. */
TLXPKI_API BMP_STRING *decodeToBERBMPString(const uint8_t *element);
/** UTCTime: extra is 1 for a text of 11 or 13 characters, which ends in "Z", else 0. */
TLXPKI_API UTC_TIME *decodeToBERUTCTime(const uint8_t *element);
/** GeneralizedTime: extra is 1 for a text of 13 or 15 characters, which ends in "Z", else 0. */
TLXPKI_API GENERALIZED_TIME *decodeToBERGENERALIZEDTime(const uint8_t *element);
/**
 * Any type as a string record whose type is the element's identifier octet. The record of a context-specific
 * or private element holds the whole element with its header. The record of a universal or application
 * element holds the contents as the decoder of its tag number does: BIT STRING with extra, OBJECT IDENTIFIER
 * as dotted text, times with extra. Null for tag numbers other than 1-6, 10, 12, 16, 17, 19, 20, 22, 23, 24,
 * 26 and 30.
 */
TLXPKI_API ASN1_STRING *decodeToBERASN1String(const uint8_t *element);

/** decodeToBERBoolean(). */
TLXPKI_API uint8_t *decodeToDERBoolean(const uint8_t *element);
/** decodeToBERInteger(). */
TLXPKI_API BIGINT *decodeToDERInteger(const uint8_t *element);
/** decodeToBEREnumerated(). */
TLXPKI_API BIGINT *decodeToDEREnumerated(const uint8_t *element);
/** decodeToBERBitString(). */
TLXPKI_API BIT_STRING *decodeToDERBitString(const uint8_t *element);
/** decodeToBEROctetString(). */
TLXPKI_API OCTET_STRING *decodeToDEROctetString(const uint8_t *element);
/** decodeToBERNull(). */
TLXPKI_API void *decodeToDERNull(const uint8_t *element);
/** decodeToBERObjectIdentifier(). */
TLXPKI_API OBJECT_IDENTIFIER *decodeToDERObjectIdentifier(const uint8_t *element);
/** decodeToBERUTF8String(). */
TLXPKI_API UTF8_STRING *decodeToDERUTF8String(const uint8_t *element);
/** decodeToBERPrintableString(). */
TLXPKI_API PRINTABLE_STRING *decodeToDERPrintableString(const uint8_t *element);
/** decodeToBERT61String(). */
TLXPKI_API T61_STRING *decodeToDERT61String(const uint8_t *element);
/** decodeToBERIA5String(). */
TLXPKI_API IA5_STRING *decodeToDERIA5String(const uint8_t *element);
/** decodeToBERBMPString(). */
TLXPKI_API BMP_STRING *decodeToDERBMPString(const uint8_t *element);
/** decodeToBERUTCTime(). */
TLXPKI_API UTC_TIME *decodeToDERUTCTime(const uint8_t *element);
/** decodeToBERGENERALIZEDTime(). */
TLXPKI_API GENERALIZED_TIME *decodeToDERGENERALIZEDTime(const uint8_t *element);
/** decodeToBERASN1String(). */
TLXPKI_API ASN1_STRING *decodeToDERASN1String(const uint8_t *element);

/*
 * String records by type name
 *
 * new_ makes a record of its type with null data; null when memory runs out. new_BIT_STRING(), below, makes a
 * BIT STRING. clean_ frees the data and zeroes the record, the type included. free_ cleans a record and frees
 * it. Both ignore null.
 */

/** An empty record of type 4, freed with free_OCTET_STRING(). */
TLXPKI_API OCTET_STRING *new_OCTET_STRING(void);
/** An empty record of type 6, freed with free_OBJECT_IDENTIFIER(). */
TLXPKI_API OBJECT_IDENTIFIER *new_OBJECT_IDENTIFIER(void);
/** An empty record of type 12, freed with free_UTF8_STRING(). */
TLXPKI_API UTF8_STRING *new_UTF8_STRING(void);
/** An empty record of type 19, freed with free_PRINTABLE_STRING(). */
TLXPKI_API PRINTABLE_STRING *new_PRINTABLE_STRING(void);
/** An empty record of type 20, freed with free_T61_STRING(). */
TLXPKI_API T61_STRING *new_T61_STRING(void);
/** An empty record of type 22, freed with free_IA5_STRING(). */
TLXPKI_API IA5_STRING *new_IA5_STRING(void);
/** An empty record of type 30, freed with free_BMP_STRING(). */
TLXPKI_API BMP_STRING *new_BMP_STRING(void);
/** An empty record of type 23, freed with free_UTC_TIME(). */
TLXPKI_API UTC_TIME *new_UTC_TIME(void);
/** An empty record of type 24, freed with free_GENERALIZED_TIME(). */
TLXPKI_API GENERALIZED_TIME *new_GENERALIZED_TIME(void);
/** Frees the data of a record and zeroes it. */
TLXPKI_API void clean_BIT_STRING(BIT_STRING *string);
/** Frees a record and its data. */
TLXPKI_API void free_BIT_STRING(BIT_STRING *string);
/** Frees the data of a record and zeroes it. */
TLXPKI_API void clean_OCTET_STRING(OCTET_STRING *string);
/** Frees a record and its data. */
TLXPKI_API void free_OCTET_STRING(OCTET_STRING *string);
/** Frees the data of a record and zeroes it. */
TLXPKI_API void clean_OBJECT_IDENTIFIER(OBJECT_IDENTIFIER *string);
/** Frees a record and its data. */
TLXPKI_API void free_OBJECT_IDENTIFIER(OBJECT_IDENTIFIER *string);
/** Frees the data of a record and zeroes it. */
TLXPKI_API void clean_UTF8_STRING(UTF8_STRING *string);
/** Frees a record and its data. */
TLXPKI_API void free_UTF8_STRING(UTF8_STRING *string);
/** Frees the data of a record and zeroes it. */
TLXPKI_API void clean_PRINTABLE_STRING(PRINTABLE_STRING *string);
/** Frees a record and its data. */
TLXPKI_API void free_PRINTABLE_STRING(PRINTABLE_STRING *string);
/** Frees the data of a record and zeroes it. */
TLXPKI_API void clean_T61_STRING(T61_STRING *string);
/** Frees a record and its data. */
TLXPKI_API void free_T61_STRING(T61_STRING *string);
/** Frees the data of a record and zeroes it. */
TLXPKI_API void clean_IA5_STRING(IA5_STRING *string);
/** Frees a record and its data. */
TLXPKI_API void free_IA5_STRING(IA5_STRING *string);
/** Frees the data of a record and zeroes it. */
TLXPKI_API void clean_BMP_STRING(BMP_STRING *string);
/** Frees a record and its data. */
TLXPKI_API void free_BMP_STRING(BMP_STRING *string);
/** Frees the data of a record and zeroes it. */
TLXPKI_API void clean_UTC_TIME(UTC_TIME *string);
/** Frees a record and its data. */
TLXPKI_API void free_UTC_TIME(UTC_TIME *string);
/** Frees the data of a record and zeroes it. */
TLXPKI_API void clean_GENERALIZED_TIME(GENERALIZED_TIME *string);
/** Frees a record and its data. */
TLXPKI_API void free_GENERALIZED_TIME(GENERALIZED_TIME *string);

/**
 * Makes a BIT STRING from `count` characters "0" and "1". The first becomes the top bit of the first octet,
 * and extra counts the unused bits of the last. Returns null for a null text, a negative count, any other
 * character within count, and when memory runs out; otherwise a record that the caller frees with
 * free_BIT_STRING().
 */
TLXPKI_API BIT_STRING *new_BIT_STRING(const char *bits, int32_t count);

/**
 * Makes a BIT STRING from `len` octets, at most 0x7FFFFFFF, all of whose bits are used. Returns null for a
 * longer len, null octets unless len is 0, and when memory runs out; otherwise a record that the caller frees
 * with free_BIT_STRING().
 */
TLXPKI_API BIT_STRING *binaryToBIT_STRING(const uint8_t *octets, uint32_t len);

/** binaryToBIT_STRING() from an even number of hexadecimal digits of either case. Null for any other text. */
TLXPKI_API BIT_STRING *hexToBIT_STRING(const char *hex);

/**
 * Sets unused low bits of the last octet. `bits` has exactly extra characters "0" and "1", the first of which
 * belongs to the highest unused bit. The function only ever sets bits, and keeps extra.
 * @return 0x42120101 for a null argument, another text, an extra outside 0-7, and a record without data that
 * has unused bits; the record is unchanged then
 */
TLXPKI_API uint32_t addPadToBERBitString(BIT_STRING *string, const char *bits);

TLX_END_DECLS

#endif
