/** @file
 * The ASN.1 node tree: reading BER (X.690), and building BER and DER.
 *
 * A node holds one encoded element: identifier octet, length octets as encoded, contents. Children are cut
 * out of the contents on demand.
 *
 * These rules hold for all functions, and each function names only what differs:
 *
 * - Ownership: a returned node belongs to the caller, who frees it with free_ASN1_UNIT(). Arguments stay the
 *   caller's.
 * - Failure: functions that return a pointer return null for a null argument, an element that cannot be read,
 *   and when memory runs out. Functions that return a length or an identifier return 0xFFFFFFFF instead. A
 *   status is 0 or the one code of its function.
 * - Limits: the readers refuse a length above 0x7FFFFFFF, the reserved length octet FF, and indefinite
 * lengths nested more than 64 deep. Long lengths may begin with zeros, in up to 126 octets (X.690 8.1.3.5),
 * and a node keeps them. The readers accept every identifier of one octet, and an indefinite length ends at
 * the identifier octet 00.
 * - Bounds: a function that knows a length reads no octet past it and follows X.690 8.1.3. A child that
 * claims to reach past its parent counts as missing.
 * - Functions without a length (decodeToBERSequence(), decodeToDERSequence(), getASN1ValueLengthFromLO(),
 *   getASN1IndefiniteValueLength(), the decoders of ber.h and readDER_from_Binary()) believe the headers: the
 *   caller vouches for a complete element. They measure an indefinite length by a rule of their own. Once
 * they meet an element of indefinite length, they measure every later element of the same contents as
 * indefinite too. They fail where that would leave the element as X.690 8.1.3.6 measures it. Both readings
 * agree where no element of definite length follows one of indefinite length inside an indefinite length.
 * Streamed CMS is not of that kind. For octets from elsewhere use decodeToDERSequence_n() or
 * readDER_from_Buffer().
 * - Threads: every function may be called from any thread, on distinct nodes at the same time.
 */
#ifndef TLXPKI_ASN1_H
#define TLXPKI_ASN1_H

#include <tlxpki/types.h>

TLX_BEGIN_DECLS

/** Makes an empty node: all four fields are null. */
TLXPKI_API ASN1_UNIT *new_ASN1_UNIT(void);

/** Frees identifier, length octets and contents of a node and makes it empty. Ignores null. */
TLXPKI_API void clean_ASN1_UNIT(ASN1_UNIT *node);

/** Frees a node and what it holds. Ignores null. */
TLXPKI_API void free_ASN1_UNIT(ASN1_UNIT *node);

/** Copies a node with its contents. The copy of an empty node is empty. */
TLXPKI_API ASN1_UNIT *dup_ASN1_UNIT(const ASN1_UNIT *node);

/* Parsing and measuring */

/**
 * Reads the element whose identifier octet is at `element` into a new node, without a length: see "Functions
 * without a length" above. With a length decodeToDERSequence_n() reads it.
 */
TLXPKI_API ASN1_UNIT *decodeToBERSequence(const uint8_t *element);

/** The same as decodeToBERSequence(). Its sibling with a length is decodeToDERSequence_n(). */
TLXPKI_API ASN1_UNIT *decodeToDERSequence(const uint8_t *element);

/**
 * Reads the element at the start of `len` octets into a new node and ignores the octets after it. Returns
 * null also for an element that does not end within them.
 */
TLXPKI_API ASN1_UNIT *decodeToDERSequence_n(const uint8_t *element, uint32_t len);

/**
 * Counts length octets from the first of them: 1 for the short and the indefinite form, 1 + n for the long
 * form 0x80 + n, 0 for null.
 */
TLXPKI_API uint32_t getASN1LengthSize(const uint8_t *length);

/**
 * Returns the octets of contents that length octets give, without end-of-contents octets. `length` is the
 * first of them. After the indefinite form the contents have to follow: getASN1IndefiniteValueLength()
 * measures them. With a length decodeToDERSequence_n() and getASN1ValueLength() measure an element.
 */
TLXPKI_API uint32_t getASN1ValueLengthFromLO(const uint8_t *length);

/**
 * Returns the octets of contents of a node: what its length octets give, or eoc - value for the indefinite
 * form. An empty node has no length.
 */
TLXPKI_API uint32_t getASN1ValueLength(const ASN1_UNIT *node);

/**
 * Returns the offset of the end-of-contents octets in the contents of an indefinite length, which start at
 * `contents`, by the rule of functions without a length above. With a length decodeToDERSequence_n() and
 * getASN1ValueLength() measure an element.
 */
TLXPKI_API uint32_t getASN1IndefiniteValueLength(const uint8_t *contents);

/**
 * Chooses the shorter definite form for `len` octets of a value of a universal type: TLX_FORM_SHORT for
 * contents of up to 127 octets, else TLX_FORM_LONG. The contents of a BIT STRING (3) have one octet more than
 * its value.
 */
TLXPKI_API uint32_t getASN1LengthForm(uint32_t tag, int32_t len);

/**
 * Rewrites the length octets of a node. TLX_FORM_SHORT writes one octet. TLX_FORM_LONG turns a short length
 * into 81 and the length, and keeps a long one. TLX_FORM_INDEFINITE writes 80 and puts end-of-contents octets
 * after the contents. A node that has the form already keeps its octets.
 * @return 0x42100101 for a null or empty node, another form, the short form for 128 octets or more, the
 *         indefinite form for a primitive identifier, and when memory runs out; the node is unchanged then
 */
TLXPKI_API uint32_t setBERLengthForm(ASN1_UNIT *node, uint32_t form);

/* Child access */

/**
 * Decodes the child with the zero-based `index` as the type `expected`, a TLX_TAG_ value.
 *
 * A universal or application child has to carry the expected tag number. Only the low five bits count, so
 * that 16 and 48 both match a child 10 and a child 30. A context-specific or private child matches every
 * type, which is how members with implicit tags are read: 2 reads [0] IMPLICIT INTEGER.
 *
 * | expected       | result, and the function that frees it                                               |
 * |----------------|--------------------------------------------------------------------------------------|
 * | 1              | one octet; tlx_free()                                                                |
 * | 2, 10          | BIGINT                                                                               |
 * | 3              | BIT_STRING                                                                           |
 * | 4              | OCTET_STRING                                                                         |
 * | 5              | a block that only marks the NULL; tlx_free()                                         |
 * | 6              | OBJECT_IDENTIFIER                                                                    |
 * | 12             | UTF8_STRING                                                                          |
 * | 16, 17, 48, 49 | ASN1_UNIT, a copy of the child                                                       |
 * | 19, 20, 22, 30 | PRINTABLE_STRING, T61_STRING, IA5_STRING, BMP_STRING                                 |
 * | 23, 24         | UTC_TIME, GENERALIZED_TIME                                                           |
 * | 32             | ASN1_STRING for a child of any type that decodeToBERASN1String() takes               |
 * | 33             | ASN1_UNIT for a universal child of type 3, 4, 12, 19, 20, 22, 23, 24 or 30           |
 *
 * The result belongs to the caller; the function of its type frees it. Each call walks over the children
 * before `index`: for long lists see getBERChildOffset(). Returns null also for a child that is missing or
 * does not match, contents that are not of the type, and any other `expected`.
 */
TLXPKI_API void *getBERChildAt(const ASN1_UNIT *node, uint32_t index, uint32_t expected);

/** The same as getBERChildAt(). */
TLXPKI_API void *getDERChildAt(const ASN1_UNIT *node, uint32_t index, uint32_t expected);

/**
 * getBERChildAt() with a cursor, so that walking over n children takes n steps. While *cursor is 0, the
 * function looks for the child at `index` from the start. Otherwise *cursor is the offset of the child
 * returned before, and the function returns the child after it and ignores `index`. It sets *cursor to the
 * offset of the child that it returns, and leaves it alone when it returns null.
 *
 * The first child has the offset 0, which means "from the start" again. A loop therefore has to count:
 *
 *     uint32_t cursor = 0;
 *     for (uint32_t i = 0; (child = getBERChildOffset(node, i, TLX_TAG_INTEGER, &cursor)) != NULL; ++i) ...
 *
 * Returns null also for a cursor outside the contents.
 */
TLXPKI_API void *getBERChildOffset(const ASN1_UNIT *node, uint32_t index, uint32_t expected,
                                   uint32_t *cursor);

/** The same as getBERChildOffset(). */
TLXPKI_API void *getDERChildOffset(const ASN1_UNIT *node, uint32_t index, uint32_t expected,
                                   uint32_t *cursor);

/** Returns the identifier octet of the child with the zero-based `index`; 0xFFFFFFFF when there is none. */
TLXPKI_API uint32_t getChildType(const ASN1_UNIT *node, uint32_t index);

/**
 * Counts the children of a node; 0 for a null or empty one. The count skips end-of-contents octets and stops
 * at a child that reaches past the node. A universal child of a type other than 1-6, 10, 12, 16, 17, 19, 20,
 * 22, 23, 24, 26 and 30 makes the whole count 0.
 */
TLXPKI_API uint32_t getSequenceChildNum(const ASN1_UNIT *node);

/*
 * Building, BER layer
 *
 * `tag`, `value` and `len` describe a value:
 *
 * | tag                              | value                                     | len |
 * |----------------------------------|-------------------------------------------|-----------------------------|
 * | 1                                | one octet                                 | 1 | | 2, 10 | BIGINT |
 * contents octets to write    | | 3, 4, 12, 19, 20, 22, 23, 24, 30 | string record | its length | | 5 | null
 * | 0                           | | 6                                | OBJECT_IDENTIFIER | characters of its
 * text      | | 16, 17, 48, 49                   | a finished ASN1_UNIT, which is copied     | not used | |
 * 32                               | ASN1_STRING, written under its own type   | not used: the record's hold
 * | | 33                               | a finished ASN1_UNIT, which is taken over | not used |
 *
 * An INTEGER takes (bits + 8) / 8 contents octets, get_BIGINT_der_length(). An ASN1_STRING of type INTEGER or
 * ENUMERATED is written as the non-negative number that its octets are, in as few octets as DER takes.
 *
 * Encoders fill a node with one primitive element and free what it held before. Appends take any value of the
 * table and copy it to the end of a container. They never free a value, with one exception: an append frees
 * the node passed with tag 33 in every case. A node may be appended to itself with tag 16, 17, 48 or 49; with
 * tag 33 this fails, and the append cleans the node but does not free it. Otherwise a value must not lie in
 * the contents of the container, which move as they grow.
 *
 * Both return 0 or their one code: for a null node, a null value where the tag is not 5, a value that cannot
 * be written, a `len` that is negative or more than the value has, another tag or form, the short form for a
 * `len` or contents of 128 octets or more, contents that grow past 0x7FFFFFFF octets, and when memory runs
 * out. The node is empty then.
 *
 * Appending n children to one container takes O(n) steps in total; only addToBERStringSequence() visits all
 * segments of a BIT STRING each time.
 */

/**
 * Encodes a value of tag 1, 2, 3, 4, 5, 6, 10, 12, 19, 20, 22, 23, 24, 30, or 32 with a record of one of
 * these types, in TLX_FORM_SHORT or TLX_FORM_LONG. Its code is 0x42090101.
 */
TLXPKI_API uint32_t encodeToBER(ASN1_UNIT *node, uint32_t tag, const void *value, int32_t len, uint32_t form);

/**
 * encodeToBER() under the identifier 80 | ctx: a primitive element with an implicit context-specific tag. Its
 * code is 0x420A0101, also for a `ctx` above 0xFF.
 */
TLXPKI_API uint32_t encodeToBER_CS(ASN1_UNIT *node, uint32_t ctx, uint32_t tag, const void *value,
                                   int32_t len, uint32_t form);

/**
 * Appends a child to a container. An empty container becomes a SEQUENCE first; another one keeps its
 * identifier. The length of the container is rewritten in DER form; an indefinite length becomes definite.
 * `form` is a TLX_FORM_ value for the length of the child; finished nodes ignore it. With tag 32 the octets
 * of a SEQUENCE or SET record become the contents of such an element, also in the indefinite form. A record
 * of a context-specific or private type has to hold a complete element, which is appended as it is. The code
 * is 0x420B0101.
 */
TLXPKI_API uint32_t addToBERSequence(ASN1_UNIT *seq, uint32_t tag, const void *value, uint32_t len,
                                     int32_t form);

/**
 * addToBERSequence(), after which the identifier of the container is A0 | ctx: a container with an explicit
 * tag, or a SEQUENCE with an implicit one. Its code is 0x420F0101, also for a `ctx` above 0xFF.
 */
TLXPKI_API uint32_t addToBERSequence_CS(ASN1_UNIT *seq, uint32_t ctx, uint32_t tag, const void *value,
                                        uint32_t len, int32_t form);

/**
 * addToBERSequence() for a SEQUENCE OF that may be empty. With `len` 0 and a tag other than 16, 17, 48 and 49
 * it makes the container an empty list, whatever the container held and whatever the value is: an empty
 * string, a NULL, a string record with tag 32 and a node with tag 33 are not appended then. An empty list has
 * the identifier 10, without the constructed bit, and encodes as 10 00. The code is 0x420C0101.
 */
TLXPKI_API uint32_t addToBERSequenceOf(ASN1_UNIT *seq, uint32_t tag, const void *value, uint32_t len,
                                       int32_t form);

/**
 * addToBERSequence(), after which the container is a SET (31). Elements keep the order of their insertion:
 * fill a DER SET OF (X.690 11.6) in ascending order. Its code is 0x420D0101.
 */
TLXPKI_API uint32_t addToBERSet(ASN1_UNIT *seq, uint32_t tag, const void *value, uint32_t len, int32_t form);

/**
 * addToBERSet() for a SET OF that may be empty, as addToBERSequenceOf() is for a SEQUENCE OF. An empty list
 * has the identifier 11 and encodes as 11 00. Its code is 0x420E0101.
 */
TLXPKI_API uint32_t addToBERSetOf(ASN1_UNIT *seq, uint32_t tag, const void *value, uint32_t len,
                                  int32_t form);

/**
 * Appends a segment to a string in constructed form (X.690 8.6.4, 8.7.3), whose identifier becomes tag | 20.
 * `seq` is the string so far, empty before the first segment. `tag` is 3, 4, 12, 19, 20, 22, 23, 24 or 30,
 * and the tag number of `seq`. Only the last segment of a BIT STRING may have unused bits: each call visits
 * the segments present, so that n of them take O(n * n) steps. A caller who knows that none has unused bits
 * appends the second and later ones with addToBERSequence(). The code is 0x42110101, also for a BIT STRING
 * that holds a segment with unused bits.
 */
TLXPKI_API uint32_t addToBERStringSequence(ASN1_UNIT *seq, uint32_t tag, const void *value, uint32_t len,
                                           int32_t form);

/*
 * Building, DER layer
 *
 * These functions put a value into its canonical form with checkDER(), which may rewrite it, and choose the
 * shortest length form. Then they build as the BER functions of the same names do, and fail also where
 * checkDER() fails. They never write to nodes and BIGINTs.
 */

/**
 * Puts a value of tag 1 or 23 into its canonical form (X.690 11.1, 11.8). A BOOLEAN octet other than 0
 * becomes FF. A UTCTime of 17 characters, with seconds and an offset, becomes one of 13 characters that ends
 * in "Z" and has the same digits: the offset is not applied. *len, the characters of the time, changes with
 * it. Every other tag passes.
 * @return 0x43010101 for a null value or len with tag 1 or 23, a UTCTime without seconds (11 or 15
 * characters), one of 17 characters that is no time, and when memory runs out; the value is unchanged then
 */
TLXPKI_API uint32_t checkDER(uint32_t tag, void *value, uint32_t *len);

/** encodeToBER() in DER. Its code is 0x43020101. */
TLXPKI_API uint32_t encodeToDER(ASN1_UNIT *node, uint32_t tag, void *value, int32_t len);

/** encodeToBER_CS() in DER. Its code is 0x43030101. */
TLXPKI_API uint32_t encodeToDER_CS(ASN1_UNIT *node, uint32_t ctx, uint32_t tag, void *value, int32_t len);

/** addToBERSequence() in DER. Its code is 0x43040101. */
TLXPKI_API uint32_t addToDERSequence(ASN1_UNIT *seq, uint32_t tag, void *value, uint32_t len);

/** addToBERSequence_CS() in DER. Its code is 0x43080101. */
TLXPKI_API uint32_t addToDERSequence_CS(ASN1_UNIT *seq, uint32_t ctx, uint32_t tag, void *value,
                                        uint32_t len);

/** addToBERSequenceOf() in DER. Its code is 0x43050101. */
TLXPKI_API uint32_t addToDERSequenceOf(ASN1_UNIT *seq, uint32_t tag, void *value, uint32_t len);

/** addToBERSet() in DER. Its code is 0x43060101. */
TLXPKI_API uint32_t addToDERSet(ASN1_UNIT *seq, uint32_t tag, void *value, uint32_t len);

/** addToBERSetOf() in DER. Its code is 0x43070101. */
TLXPKI_API uint32_t addToDERSetOf(ASN1_UNIT *seq, uint32_t tag, void *value, uint32_t len);

TLX_END_DECLS

#endif
