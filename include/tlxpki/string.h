/** @file
 * ASN1_STRING: a value of any string or time type together with its tag.
 *
 * Every function may be called from any thread, on distinct records at the same time. A record may have null
 * data; it is then read as empty, whatever its length says, but compared by that length, and not encoded when
 * it is not 0.
 */
#ifndef TLXPKI_STRING_H
#define TLXPKI_STRING_H

#include <tlxpki/types.h>

TLX_BEGIN_DECLS

/**
 * Makes an empty record: type 0, null data, length 0, extra 0.
 * @return the record, freed with free_ASN1_STRING(); null when memory runs out
 */
TLXPKI_API ASN1_STRING *new_ASN1_STRING(void);

/**
 * Frees the data of a record and zeroes it; the record itself stays.
 * @param string a record, or null (nothing happens then)
 */
TLXPKI_API void clean_ASN1_STRING(ASN1_STRING *string);

/**
 * Frees a record and its data.
 * @param string a record, or null (nothing happens then)
 */
TLXPKI_API void free_ASN1_STRING(ASN1_STRING *string);

/**
 * Copies a record with all four fields. Data is copied with a zero octet after it; null data stays null.
 * @param string the record to copy
 * @return the copy, freed with free_ASN1_STRING(); null for a null record and when memory runs out
 */
TLXPKI_API ASN1_STRING *dup_ASN1_STRING(const ASN1_STRING *string);

/**
 * Gives a record a new type and value. What it held before is freed; extra becomes 0.
 * @param string the record
 * @param type   universal tag, or identifier octet, of the value
 * @param octets the value; copied, with a zero octet after it. May be null when len is 0, may point into
 *               the record's own data, and is not read for type 5 (NULL), whose data stays null
 * @param len    octets at `octets`, at most 0x7FFFFFFF; stored as the length for every type
 * @return 0
 * @return 0x41010049 for a null record, null octets where len is not 0 or a longer len (the record is
 *         unchanged then), and when memory runs out (the record is empty then)
 */
TLXPKI_API uint32_t set_ASN1_STRING_value(ASN1_STRING *string, int32_t type, const void *octets,
                                          uint32_t len);

/**
 * Orders two records by length, then by their octets, then by type. extra takes no part.
 * @param a,b records; null comes before every record, and null data before every data
 * @return 0 when they are equal, otherwise the difference of the lengths, else a number with the sign of
 *         the first difference of the octets, else the difference of the types (a minus b)
 */
TLXPKI_API int32_t cmp_ASN1_STRING(const ASN1_STRING *a, const ASN1_STRING *b);

/**
 * Encodes a record as an element of its own type: an OBJECT IDENTIFIER from its dotted text, a BIT STRING
 * with extra as its unused-bits octet, an INTEGER or ENUMERATED as a non-negative number, a SEQUENCE or SET
 * (with or without the constructed bit) around its contents, every other supported type (1, 4, 5, 12, 19, 20,
 * 22, 23, 24, 30) with its octets as they are. Other constructed strings and type 26 can be read, but not
 * written. The data of a context-specific or private type (0x80 and above) is
 * itself the complete element, as reading such a member yields it.
 * @param string the record
 * @param out    receives a new node, freed with free_ASN1_UNIT(), whatever it holds before. Unchanged on
 * failure
 * @return 0
 * @return 0x41020049 when string or out is null
 * @return 0x41020103 for a type that cannot be encoded, a value that is not of its type, and when memory
 *         runs out
 */
TLXPKI_API uint32_t ASN1_STRING_to_Seq(const ASN1_STRING *string, ASN1_UNIT **out);

/**
 * Encodes a record to DER as ASN1_STRING_to_Seq() does.
 * @param string the record
 * @param out    receives the octets, freed with tlx_free(); unchanged on failure
 * @return the number of octets, or 0xFFFFFFFF when an argument is null, the record cannot be encoded or
 *         memory runs out
 */
TLXPKI_API uint32_t ASN1_STRING_to_binary(const ASN1_STRING *string, uint8_t **out);

TLX_END_DECLS

#endif
