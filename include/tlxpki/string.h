/** @file
 * ASN1_STRING: a value of any string or time type together with its tag.
 *
 * A record with null data is read as empty, whatever its length says. cmp_ASN1_STRING() compares it by that
 * length, and the encoders refuse it when the length is not 0.
 *
 * Every function may be called from any thread, on distinct records at the same time.
 */
#ifndef TLXPKI_STRING_H
#define TLXPKI_STRING_H

#include <tlxpki/types.h>

TLX_BEGIN_DECLS

/** Makes an empty record of zeros, freed with free_ASN1_STRING(); null when memory runs out. */
TLXPKI_API ASN1_STRING *new_ASN1_STRING(void);
/** Frees the data of a record and zeroes the record. Ignores null. */
TLXPKI_API void clean_ASN1_STRING(ASN1_STRING *string);
/** Frees a record and its data. Ignores null. */
TLXPKI_API void free_ASN1_STRING(ASN1_STRING *string);
/** Copies a record, with a zero octet after the data; null for null and when memory runs out. */
TLXPKI_API ASN1_STRING *dup_ASN1_STRING(const ASN1_STRING *string);

/** Frees what a record holds and gives it a new type and value; extra becomes 0. Returns 0; 0x41010049 for a
 * null record, null octets where len is not 0 or a len above 0x7FFFFFFF (the record is unchanged then), and
 * when memory runs out (the record is empty then).
 * @param type universal tag, or identifier octet, of the value
 * @param octets len octets, copied with a zero octet after them; may point into the record's own data.
 * Ignored for type 5 (NULL), whose data stays null; the length is len for every type */
TLXPKI_API uint32_t set_ASN1_STRING_value(ASN1_STRING *string, int32_t type, const void *octets,
                                          uint32_t len);

/** Orders two records by length, then by octets, then by type, and ignores extra. Null sorts before every
 * record, and null data before all data. Returns 0 when they are equal, otherwise the difference (a minus b)
 * of the lengths, or the sign of the first difference of the octets, or the difference of the types. */
TLXPKI_API int32_t cmp_ASN1_STRING(const ASN1_STRING *a, const ASN1_STRING *b);

/** Encodes a record as an element of its own type:
 *
 * - OBJECT IDENTIFIER: from its dotted text;
 * - BIT STRING: with extra as its unused-bits octet;
 * - INTEGER, ENUMERATED: as a non-negative number;
 * - SEQUENCE, SET (with or without the constructed bit): around its contents;
 * - 1, 4, 5, 12, 19, 20, 22, 23, 24, 30: with its octets as they are;
 * - context-specific and private types (0x80 and above): the data is the complete element, as it was read.
 *
 * Other constructed strings and type 26 can be read, but not written. *out receives a new node, freed with
 * free_ASN1_UNIT(), whatever it holds before; it is unchanged on failure. Returns 0; 0x41020049 when string
 * or out is null; 0x41020103 for a type that cannot be encoded, a value that is not of its type, and when
 * memory runs out. */
TLXPKI_API uint32_t ASN1_STRING_to_Seq(const ASN1_STRING *string, ASN1_UNIT **out);

/** Encodes as ASN1_STRING_to_Seq() does. *out receives the DER octets, freed with tlx_free(); it is unchanged
 * on failure. Returns their number; 0xFFFFFFFF when an argument is null, the record cannot be encoded or
 * memory runs out. */
TLXPKI_API uint32_t ASN1_STRING_to_binary(const ASN1_STRING *string, uint8_t **out);

TLX_END_DECLS

#endif
