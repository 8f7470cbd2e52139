/** @file
 * Typed primitive values: one encoder and one decoder per type, the string records by type name, and how BIT
 * STRINGs are made.
 *
 * Encoders and decoders copy contents as they are and enforce no more than is said here: no alphabet, no
 * canonical form. The DER functions of asn1.h apply those.
 *
 * Every function may be called from any thread, on distinct records at the same time.
 */
#ifndef TLXPKI_BER_H
#define TLXPKI_BER_H

#include <tlxpki/types.h>

TLX_BEGIN_DECLS

/*
 * Encoders
 *
 * Each fills a node with one primitive element; what the node held before is freed. `tag` is written as the
 * identifier octet, so that the same encoder serves implicit tags; a tag above 0xFF is refused. `form` is
 * TLX_FORM_SHORT, for contents of up to 127 octets, or TLX_FORM_LONG. On failure the node is empty and the
 * encoder's one code is returned: for a null node, a null value, a len that is negative or more than the
 * value has, another form, the short form for longer contents, when memory runs out, and as each encoder
 * says.
 */

/**
 * BOOLEAN: the octet as it is.
 * @param value the octet
 * @param len   1
 * @return 0, or 0x42010101
 */
TLXPKI_API uint32_t encodeToBERBoolean(ASN1_UNIT *node, uint32_t tag, const uint8_t *value, int32_t len,
                                       int32_t form);

/**
 * INTEGER or ENUMERATED: the number in exactly len octets, with zeros before it.
 * @param value the number
 * @param len   contents octets; get_BIGINT_der_length() gives DER
 * @return 0, or 0x42020101, also for a len of 0 and a number that does not fit
 */
TLXPKI_API uint32_t encodeToBERInteger(ASN1_UNIT *node, uint32_t tag, const BIGINT *value, int32_t len,
                                       int32_t form);

/**
 * BIT STRING: the unused-bits octet (extra), then the data.
 * @param value the record
 * @param len   octets of data
 * @return 0, or 0x42030101
 */
TLXPKI_API uint32_t encodeToBERBitString(ASN1_UNIT *node, uint32_t tag, const BIT_STRING *value, int32_t len,
                                         int32_t form);

/**
 * NULL: no contents.
 * @param value not used
 * @param len   0
 * @return 0, or 0x42040101
 */
TLXPKI_API uint32_t encodeToBERNull(ASN1_UNIT *node, uint32_t tag, const void *value, int32_t len,
                                    int32_t form);

/**
 * OBJECT IDENTIFIER from dotted text of at least two arcs; a dot may stand at the end. Arcs are 32-bit
 * numbers. Those above 0x7FFFFFFF may also be written as the negative numbers that decoding makes of them.
 * The first is not held against the second: "1.50" is written as "2.10" is, but 40 times the first and the
 * second have to be a 32-bit number together.
 * @param value the record that holds the text
 * @param len   characters of the text
 * @return 0, or 0x42050101, also for a len of 0 and a text that is no object identifier
 */
TLXPKI_API uint32_t encodeToBERObjectIdentifier(ASN1_UNIT *node, uint32_t tag, const OBJECT_IDENTIFIER *value,
                                                int32_t len, int32_t form);

/**
 * UTCTime: the text as it is.
 * @param len characters of the text
 * @return 0, or 0x42070101, also for a len of 0
 */
TLXPKI_API uint32_t encodeToBERUTCTime(ASN1_UNIT *node, uint32_t tag, const UTC_TIME *value, int32_t len,
                                       int32_t form);

/**
 * GeneralizedTime: the text as it is.
 * @param len characters of the text
 * @return 0, or 0x42060101, also for a len of 0
 */
TLXPKI_API uint32_t encodeToBERGENERALIZEDTime(ASN1_UNIT *node, uint32_t tag, const GENERALIZED_TIME *value,
                                               int32_t len, int32_t form);

/**
 * Any other string type: the data as it is.
 * @param value a string record of any type
 * @param len   octets of data
 * @return 0, or 0x42080101
 */
TLXPKI_API uint32_t encodeToBERASN1String(ASN1_UNIT *node, uint32_t tag, const ASN1_STRING *value,
                                          int32_t len, int32_t form);

/*
 * Decoders
 *
 * Each takes the identifier octet of an element and returns a new value, or null: for a null pointer, a
 * length that is refused, contents that are not acceptable, and when memory runs out. The identifier is not
 * looked at, and no size is passed, so the header is believed: the caller vouches for a complete element.
 * Children of a node are read within bounds by getBERChildAt(). The DER names denote the same operations.
 *
 * Data of string records has one zero octet more than its length says, so that texts end with a NUL.
 */

/** BOOLEAN: the octet as it is, freed with tlx_free(); null unless the contents are one octet. */
TLXPKI_API uint8_t *decodeToBERBoolean(const uint8_t *element);
/** INTEGER: the contents as an unsigned number, so that FF is 255, as 00 FF is; null for no contents. */
TLXPKI_API BIGINT *decodeToBERInteger(const uint8_t *element);
/** ENUMERATED: the same as decodeToBERInteger(). */
TLXPKI_API BIGINT *decodeToBEREnumerated(const uint8_t *element);
/** BIT STRING: extra is the first contents octet, whatever its value, and data the others; null for no
 * contents. */
TLXPKI_API BIT_STRING *decodeToBERBitString(const uint8_t *element);
/** OCTET STRING. */
TLXPKI_API OCTET_STRING *decodeToBEROctetString(const uint8_t *element);
/** NULL: a block that only marks the NULL, freed with tlx_free(). */
TLXPKI_API void *decodeToBERNull(const uint8_t *element);
/** OBJECT IDENTIFIER: dotted text of up to 99 characters; null for a longer one, no contents, and contents
 * that end within an arc. Arcs are 32-bit numbers, of which those above 0x7FFFFFFF read as negative; of a
 * longer one the last 32 bits are taken. */
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
 * Any type as a string record whose type is the element's identifier octet.
 *
 * An element of a context-specific or private type is kept whole, with its header. Of a universal or
 * application type, told by its tag number, the contents are kept, as the decoder of the type would: BIT
 * STRING with extra, OBJECT IDENTIFIER as dotted text, times with extra. Tag numbers other than 1-6, 10, 12,
 * 16, 17, 19, 20, 22, 23, 24, 26 and 30 give null.
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
 * new_ makes a record of its type with null data, or returns null when memory runs out. clean_ frees the data
 * and zeroes the record, the type included. free_ cleans a record and frees it. Both ignore null. A BIT
 * STRING is made by new_BIT_STRING(), below.
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
 * A BIT STRING from a text of "0" and "1", the first of which becomes the top bit of the first octet.
 * @param bits  the text
 * @param count characters of it
 * @return a record of as few octets as hold the bits, with extra counting those left unused, freed with
 *         free_BIT_STRING(); null for a null text, a negative count, any other character within count, and
 * when memory runs out
 */
TLXPKI_API BIT_STRING *new_BIT_STRING(const char *bits, int32_t count);

/**
 * A BIT STRING from octets, all of whose bits are used.
 * @param octets the octets; may be null when len is 0
 * @param len    their number, at most 0x7FFFFFFF
 * @return the record, freed with free_BIT_STRING(); null for null octets, a longer len, and when memory runs
 *         out
 */
TLXPKI_API BIT_STRING *binaryToBIT_STRING(const uint8_t *octets, uint32_t len);

/**
 * A BIT STRING from a text of hexadecimal digits of either case, all of whose bits are used.
 * @param hex an even number of digits
 * @return the record, freed with free_BIT_STRING(); null for a null text, any other text, and when memory
 * runs out
 */
TLXPKI_API BIT_STRING *hexToBIT_STRING(const char *hex);

/**
 * Sets unused low bits of the last octet. Bits are only ever set, and extra stays as it is.
 * @param string the record
 * @param bits   a text of exactly extra characters "0" and "1", the first of which belongs to the highest
 *               unused bit
 * @return 0
 * @return 0x42120101 for a null argument, another text, an extra outside 0-7, and a record without data that
 *         has unused bits; the record is unchanged then
 */
TLXPKI_API uint32_t addPadToBERBitString(BIT_STRING *string, const char *bits);

TLX_END_DECLS

#endif
