/** @file
 * The ASN.1 node tree: reading BER (X.690), and building BER and DER.
 *
 * Bounds: an element whose length is above 0x7FFFFFFF or takes more than four length octets is refused, and
 * so are indefinite lengths nested more than 64 deep. What is nested is never read past its container: a
 * child that claims more counts as missing.
 *
 * Every function may be called from any thread, on distinct nodes at the same time.
 */
#ifndef TLXPKI_ASN1_H
#define TLXPKI_ASN1_H

#include <tlxpki/types.h>

TLX_BEGIN_DECLS

/**
 * Makes an empty node: all four fields null.
 * @return the node, freed with free_ASN1_UNIT(); null when memory runs out
 */
TLXPKI_API ASN1_UNIT *new_ASN1_UNIT(void);

/**
 * Frees identifier, length octets and contents of a node and makes it empty.
 * @param node a node, or null (nothing happens then)
 */
TLXPKI_API void clean_ASN1_UNIT(ASN1_UNIT *node);

/**
 * Frees a node and what it holds.
 * @param node a node, or null (nothing happens then)
 */
TLXPKI_API void free_ASN1_UNIT(ASN1_UNIT *node);

/**
 * Copies a node with its contents; the copy of an empty node is empty.
 * @param node the node to copy
 * @return the copy, freed with free_ASN1_UNIT(); null for a null node, one whose length cannot be read, and
 *         when memory runs out
 */
TLXPKI_API ASN1_UNIT *dup_ASN1_UNIT(const ASN1_UNIT *node);

/* Parsing and measuring */

/**
 * Reads the element at `element` into a new node. No size is passed, so the outermost header is believed: the
 * caller vouches for a complete element. Use decodeToDERSequence_n() for octets that come from elsewhere. The
 * contents of an indefinite length are measured with getASN1IndefiniteValueLength(). Whatever the identifier
 * is, the element is accepted.
 * @param element the identifier octet of the element
 * @return the node, freed with free_ASN1_UNIT(); null for a null pointer, a length that is refused, and when
 *         memory runs out
 */
TLXPKI_API ASN1_UNIT *decodeToBERSequence(const uint8_t *element);

/** The same as decodeToBERSequence(). */
TLXPKI_API ASN1_UNIT *decodeToDERSequence(const uint8_t *element);

/**
 * Reads the element at the start of `len` octets into a new node. Octets after the element are ignored.
 * @param element the identifier octet of the element
 * @param len     octets at `element`, none of which is read past the last
 * @return the node, freed with free_ASN1_UNIT(); null for a null pointer, an element that does not end within
 *         `len` octets, a length that is refused, and when memory runs out
 */
TLXPKI_API ASN1_UNIT *decodeToDERSequence_n(const uint8_t *element, uint32_t len);

/**
 * Counts length octets.
 * @param length the first of them
 * @return 1 for the short and the indefinite form, 1 + n for the long form 0x80 + n; 0 for null
 */
TLXPKI_API uint32_t getASN1LengthSize(const uint8_t *length);

/**
 * The contents length that length octets give. For the indefinite form the contents, which have to follow,
 * are measured with getASN1IndefiniteValueLength().
 * @param length the first length octet
 * @return octets of contents, without end-of-contents octets; 0xFFFFFFFF for null and a length that is
 * refused
 */
TLXPKI_API uint32_t getASN1ValueLengthFromLO(const uint8_t *length);

/**
 * The contents length of a node: what its length octets give, or eoc - value for the indefinite form.
 * @param node the node
 * @return octets of contents; 0xFFFFFFFF for null, an empty node and a length that is refused
 */
TLXPKI_API uint32_t getASN1ValueLength(const ASN1_UNIT *node);

/**
 * Measures the contents of an indefinite length, up to the end-of-contents octets. The headers in the
 * contents are believed.
 *
 * Once an element of indefinite length has been met in the contents, every later element of the same contents
 * is measured as if its length were indefinite too. BER is therefore read correctly only where no element of
 * definite length follows one of indefinite length inside the same indefinite length.
 * @param contents the first contents octet
 * @return the offset of the end-of-contents octets; 0xFFFFFFFF for null, a length that is refused, and
 *         indefinite lengths nested too deep
 */
TLXPKI_API uint32_t getASN1IndefiniteValueLength(const uint8_t *contents);

/**
 * The shorter definite length form for a value.
 * @param tag universal tag; for 3 (BIT STRING) the unused-bits octet is counted in
 * @param len octets of the value
 * @return 0 (short form) for contents of up to 127 octets, else 1 (long form)
 */
TLXPKI_API uint32_t getASN1LengthForm(uint32_t tag, int32_t len);

/**
 * Rewrites the length octets of a node. TLX_FORM_SHORT writes one octet; TLX_FORM_LONG turns a short length
 * into 81 and the length, and leaves a long one alone; TLX_FORM_INDEFINITE writes 80 and puts end-of-contents
 * octets after the contents. A node of indefinite length becomes definite by the first two. A node that has
 * the form already keeps its octets.
 * @param node the node
 * @param form a TLX_FORM_ value
 * @return 0
 * @return 0x42100101 for a null or empty node, another form, the short form for 128 octets or more, the
 *         indefinite form for a primitive identifier, and when memory runs out; the node is unchanged then
 */
TLXPKI_API uint32_t setBERLengthForm(ASN1_UNIT *node, uint32_t form);

/* Child access */

/**
 * Decodes a child of a node as the type that is expected.
 *
 * A universal or application child has to carry the tag number that is expected; only the low five bits
 * count, so that 16 and 48 both match a child 10 and a child 30. A context-specific or private child is taken
 * for the expected type, which is how members with implicit tags are read: [0] IMPLICIT INTEGER is read
 * with 2.
 *
 * | expected       | result                                                                              |
 * |----------------|-------------------------------------------------------------------------------------|
 * | 1              | one octet, freed with tlx_free()                                                     |
 * | 2, 10          | BIGINT                                                                               |
 * | 3              | BIT_STRING                                                                           |
 * | 4              | OCTET_STRING                                                                         |
 * | 5              | a block that only marks the NULL, freed with tlx_free()                              |
 * | 6              | OBJECT_IDENTIFIER                                                                    |
 * | 12             | UTF8_STRING                                                                          |
 * | 16, 17, 48, 49 | ASN1_UNIT, a copy of the child                                                       |
 * | 19, 20, 22, 30 | PRINTABLE_STRING, T61_STRING, IA5_STRING, BMP_STRING                                 |
 * | 23, 24         | UTC_TIME, GENERALIZED_TIME                                                           |
 * | 32             | ASN1_STRING for a child of any type that decodeToBERASN1String() takes               |
 * | 33             | ASN1_UNIT for a universal child of type 3, 4, 12, 19, 20, 22, 23, 24 or 30           |
 *
 * Finding a child walks over those before it: see getBERChildOffset() for long lists.
 * @param node     the parent
 * @param index    number of the child, from 0
 * @param expected a TLX_TAG_ value
 * @return a new object, freed with the function of its type; null for a null or empty node, a child that does
 *         not exist, reaches past the parent or does not match, contents that are not of the type, any other
 *         expected, and when memory runs out
 */
TLXPKI_API void *getBERChildAt(const ASN1_UNIT *node, uint32_t index, uint32_t expected);

/** The same as getBERChildAt(). */
TLXPKI_API void *getDERChildAt(const ASN1_UNIT *node, uint32_t index, uint32_t expected);

/**
 * getBERChildAt() with a cursor, so that walking over n children takes n steps. When *cursor is 0, the child
 * at `index` is looked for from the start. Otherwise *cursor is the offset of the child returned before, the
 * child after it is returned, and `index` plays no part.
 *
 * The first child stands at offset 0, which means "from the start" again; a loop therefore has to count its
 * index:
 *
 *     uint32_t cursor = 0;
 *     for (uint32_t i = 0; (child = getBERChildOffset(node, i, TLX_TAG_INTEGER, &cursor)) != NULL; ++i) ...
 *
 * @param node     the parent
 * @param index    number of the child, from 0, while *cursor is 0
 * @param expected a TLX_TAG_ value
 * @param cursor   receives the offset of the returned child in the contents; unchanged when null is returned
 * @return as getBERChildAt(); null also for a null cursor and one that lies outside the contents
 */
TLXPKI_API void *getBERChildOffset(const ASN1_UNIT *node, uint32_t index, uint32_t expected,
                                   uint32_t *cursor);

/** The same as getBERChildOffset(). */
TLXPKI_API void *getDERChildOffset(const ASN1_UNIT *node, uint32_t index, uint32_t expected,
                                   uint32_t *cursor);

/**
 * The identifier octet of a child.
 * @param node  the parent
 * @param index number of the child, from 0
 * @return the octet; 0xFFFFFFFF when there is no such child
 */
TLXPKI_API uint32_t getChildType(const ASN1_UNIT *node, uint32_t index);

/**
 * Counts the children of a node. End-of-contents octets among them are passed over; a universal child of a
 * type other than 1-6, 10, 12, 16, 17, 19, 20, 22, 23, 24, 26 and 30 makes the whole count 0; a child that
 * reaches past the parent ends it.
 * @param node the parent
 * @return number of children; 0 for a null or empty node
 */
TLXPKI_API uint32_t getSequenceChildNum(const ASN1_UNIT *node);

/*
 * Building, BER layer
 *
 * `tag`, `value` and `len` describe a value:
 *
 * | tag                          | value                                    | len                          |
 * |------------------------------|------------------------------------------|------------------------------|
 * | 1                            | one octet                                | 1                            |
 * | 2, 10                        | BIGINT                                   | contents octets to write     |
 * | 3, 4, 12, 19, 20, 22, 23, 24, 30 | string record                        | its length                   |
 * | 5                            | null                                     | 0                            |
 * | 6                            | OBJECT_IDENTIFIER                        | characters of its text       |
 * | 16, 17, 48, 49               | a finished ASN1_UNIT, which is copied    | not used                     |
 * | 32                           | ASN1_STRING, written under its own type  | not used: the record's holds |
 * | 33                           | a finished ASN1_UNIT, which is taken over | not used                    |
 *
 * Appends take any of these, and copy what they append; they never free a value, except that a node passed
 * with tag 33 is freed by the append in every case, whether it succeeds or fails. A node may be appended to
 * itself with tag 16, 48, 17 or 49; with tag 33 that is refused, and the node is cleaned but not freed. An
 * INTEGER takes (bits + 8) / 8 contents octets, get_BIGINT_der_length().
 *
 * Apart from that, a value must not lie in the contents of the container, which move as they grow.
 *
 * Appending n children to one container takes O(n) steps in total; only addToBERStringSequence() looks at all
 * segments of a BIT STRING each time.
 */

/**
 * Fills a node with one primitive element of a universal type. What the node held before is freed.
 *
 * An ASN1_STRING of type INTEGER or ENUMERATED, passed with tag 32, is written as the non-negative number
 * that its octets are, in as few octets as DER takes.
 * @param node  the node
 * @param tag   1, 2, 3, 4, 5, 6, 10, 12, 19, 20, 22, 23, 24, 30, or 32 for a record of one of these types
 * @param value the value; stays the caller's
 * @param len   its length
 * @param form  TLX_FORM_SHORT or TLX_FORM_LONG
 * @return 0
 * @return 0x42090101 for a null node, a null value where tag is not 5, a negative len or one that is more
 * than the value has, another tag or form, the short form for a len or contents of 128 octets or more, an
 *         unencodable value, and when memory runs out; the node is empty then
 */
TLXPKI_API uint32_t encodeToBER(ASN1_UNIT *node, uint32_t tag, const void *value, int32_t len, uint32_t form);

/**
 * encodeToBER() under the identifier 80 | ctx: a primitive element with an implicit context-specific tag.
 * @param ctx tag number; a value above 0xFF is refused
 * @return 0, or 0x420A0101 where encodeToBER() fails; the node is empty then
 */
TLXPKI_API uint32_t encodeToBER_CS(ASN1_UNIT *node, uint32_t ctx, uint32_t tag, const void *value,
                                   int32_t len, uint32_t form);

/**
 * Appends a child to a container. An empty container becomes a SEQUENCE first; one that has an identifier
 * keeps it. The container's length is rewritten in DER form, and a container of indefinite length becomes
 * definite.
 *
 * With tag 32 the octets of a SEQUENCE or SET record become the contents of such an element, also in the
 * indefinite form, and a record of a context-specific or private type, whose octets are a complete element,
 * is appended as it is.
 * @param seq   the container
 * @param tag   what kind of value; see above
 * @param value the value
 * @param len   its length
 * @param form  a TLX_FORM_ value for the child's length; not used for finished nodes
 * @return 0
 * @return 0x420B0101 for a null container, where encodeToBER() fails, for a node that is empty, when the
 *         contents grow past 0x7FFFFFFF octets, and when memory runs out; the container is empty then
 */
TLXPKI_API uint32_t addToBERSequence(ASN1_UNIT *seq, uint32_t tag, const void *value, uint32_t len,
                                     int32_t form);

/**
 * addToBERSequence(), after which the container's identifier is A0 | ctx: a container with an explicit tag,
 * or a SEQUENCE with an implicit one.
 * @param ctx tag number; a value above 0xFF is refused
 * @return 0, or 0x420F0101 where addToBERSequence() fails; the container is empty then
 */
TLXPKI_API uint32_t addToBERSequence_CS(ASN1_UNIT *seq, uint32_t ctx, uint32_t tag, const void *value,
                                        uint32_t len, int32_t form);

/**
 * addToBERSequence() for a SEQUENCE OF that may be empty: with len 0 and a tag other than 16, 17, 48 and 49
 * the container is made an empty list, whatever it held and whatever value is.
 *
 * An empty list has the identifier 10, without the constructed bit, and encodes as 10 00. That also holds for
 * an empty string, a NULL and a string record with tag 32 or a node with tag 33 that come with len 0: they
 * are not appended.
 * @return 0, or 0x420C0101 where addToBERSequence() fails; the container is empty then
 */
TLXPKI_API uint32_t addToBERSequenceOf(ASN1_UNIT *seq, uint32_t tag, const void *value, uint32_t len,
                                       int32_t form);

/**
 * addToBERSequence(), after which the container is a SET (31). Elements stay in the order of their insertion:
 * a DER SET OF (X.690 11.6) has to be filled in ascending order.
 * @return 0, or 0x420D0101 where addToBERSequence() fails; the container is empty then
 */
TLXPKI_API uint32_t addToBERSet(ASN1_UNIT *seq, uint32_t tag, const void *value, uint32_t len, int32_t form);

/**
 * addToBERSet() for a SET OF that may be empty, as addToBERSequenceOf() is for a SEQUENCE OF. An empty list
 * has the identifier 11 and encodes as 11 00.
 * @return 0, or 0x420E0101 where addToBERSequence() fails; the container is empty then
 */
TLXPKI_API uint32_t addToBERSetOf(ASN1_UNIT *seq, uint32_t tag, const void *value, uint32_t len,
                                  int32_t form);

/**
 * Appends a segment to a string in constructed form (X.690 8.6.4, 8.7.3), whose identifier becomes tag | 20.
 * Only the last segment of a BIT STRING may have unused bits: the segments present are looked at each time,
 * so that n of them take O(n * n) steps. Once there is a first segment, a caller who knows that none has
 * unused bits appends the others with addToBERSequence(), which looks at none and keeps the identifier.
 * @param seq the string so far, empty before the first segment
 * @param tag 3, 4, 12, 19, 20, 22, 23, 24 or 30, the tag number of seq
 * @return 0
 * @return 0x42110101 for another tag, a BIT STRING that holds a segment with unused bits, and where
 *         addToBERSequence() fails; the container is empty then
 */
TLXPKI_API uint32_t addToBERStringSequence(ASN1_UNIT *seq, uint32_t tag, const void *value, uint32_t len,
                                           int32_t form);

/*
 * Building, DER layer
 *
 * These put a value into its canonical form with checkDER(), which may rewrite it, choose the shortest length
 * form for it, and build as the BER functions of the same names do. Nodes and BIGINTs are never written to.
 */

/**
 * Puts a value into its canonical form (X.690 11.1, 11.8): a BOOLEAN octet that is not 0 becomes FF; a
 * UTCTime of 17 characters, with seconds and an offset, becomes one of 13 characters that ends in "Z", with
 * the digits it has (the offset is not applied). Every other tag passes.
 * @param tag   1 or 23 for values that are looked at
 * @param value the octet, or the UTC_TIME, which is rewritten
 * @param len   characters of the time, updated with it; for a BOOLEAN it only may not be null
 * @return 0
 * @return 0x43010101 for a null value or len of a type that is looked at, a UTCTime without seconds (11 or 15
 *         characters), one of 17 characters that is no time, and when memory runs out; nothing is changed
 * then
 */
TLXPKI_API uint32_t checkDER(uint32_t tag, void *value, uint32_t *len);

/**
 * encodeToBER() in DER.
 * @return 0, or 0x43020101 where checkDER() or encodeToBER() fails; the node is empty then
 */
TLXPKI_API uint32_t encodeToDER(ASN1_UNIT *node, uint32_t tag, void *value, int32_t len);

/**
 * encodeToBER_CS() in DER.
 * @return 0, or 0x43030101 where checkDER() or encodeToBER_CS() fails; the node is empty then
 */
TLXPKI_API uint32_t encodeToDER_CS(ASN1_UNIT *node, uint32_t ctx, uint32_t tag, void *value, int32_t len);

/**
 * addToBERSequence() in DER.
 * @return 0, or 0x43040101 where checkDER() or addToBERSequence() fails; the container is empty then
 */
TLXPKI_API uint32_t addToDERSequence(ASN1_UNIT *seq, uint32_t tag, void *value, uint32_t len);

/**
 * addToBERSequence_CS() in DER.
 * @return 0, or 0x43080101 where checkDER() or addToBERSequence_CS() fails; the container is empty then
 */
TLXPKI_API uint32_t addToDERSequence_CS(ASN1_UNIT *seq, uint32_t ctx, uint32_t tag, void *value,
                                        uint32_t len);

/**
 * addToBERSequenceOf() in DER.
 * @return 0, or 0x43050101 where checkDER() or addToBERSequenceOf() fails; the container is empty then
 */
TLXPKI_API uint32_t addToDERSequenceOf(ASN1_UNIT *seq, uint32_t tag, void *value, uint32_t len);

/**
 * addToBERSet() in DER.
 * @return 0, or 0x43060101 where checkDER() or addToBERSet() fails; the container is empty then
 */
TLXPKI_API uint32_t addToDERSet(ASN1_UNIT *seq, uint32_t tag, void *value, uint32_t len);

/**
 * addToBERSetOf() in DER.
 * @return 0, or 0x43070101 where checkDER() or addToBERSetOf() fails; the container is empty then
 */
TLXPKI_API uint32_t addToDERSetOf(ASN1_UNIT *seq, uint32_t tag, void *value, uint32_t len);

TLX_END_DECLS

#endif
