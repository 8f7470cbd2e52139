/** @file
 * Distinguished names (RFC 5280, section 4.1.2.4) as a flat list of attribute types and values, one for each
 * relative distinguished name. Of a multi-valued relative distinguished name only the first type and value
 * are read.
 *
 * Values keep the string type they were read with, and every copy and encoding writes it back. Nothing here
 * converts texts.
 *
 * Every function may be called from any thread, on distinct objects at the same time; functions that take
 * const objects may share them.
 */
#ifndef TLXPKI_X509_NAME_H
#define TLXPKI_X509_NAME_H

#include <tlxpki/x509_types.h>

TLX_BEGIN_DECLS

/**
 * Makes a name without entries.
 * @return the name, freed with free_X509_NAME(); null when memory runs out
 */
TLXPKI_API X509_NAME *new_X509_NAME(void);

/**
 * Frees the entries of a name, which is empty afterwards.
 * @param name a name, or null (nothing happens then)
 */
TLXPKI_API void clean_X509_NAME(X509_NAME *name);

/**
 * Frees a name and its entries.
 * @param name a name, or null (nothing happens then)
 */
TLXPKI_API void free_X509_NAME(X509_NAME *name);

/**
 * Copies a name with all its entries, in order.
 * @param name the name
 * @return the copy, freed with free_X509_NAME(); null for null and when memory runs out
 */
TLXPKI_API X509_NAME *dup_X509_NAME(const X509_NAME *name);

/**
 * Makes an entry without type and value.
 * @return the entry, freed with free_X509_NAME_CHILD(); null when memory runs out
 */
TLXPKI_API X509_NAME_CHILD *new_X509_NAME_CHILD(void);

/**
 * Frees an entry with its type and value.
 * @param child an entry that is in no name, or null (nothing happens then)
 */
TLXPKI_API void free_X509_NAME_CHILD(X509_NAME_CHILD *child);

/**
 * Copies an entry with its type and value.
 * @param child the entry
 * @return the copy, freed with free_X509_NAME_CHILD(); null for null and when memory runs out
 */
TLXPKI_API X509_NAME_CHILD *dup_X509_NAME_CHILD(const X509_NAME_CHILD *child);

/**
 * Counts the entries.
 * @param name the name
 * @return their number; 0 for null
 */
TLXPKI_API uint32_t get_X509_NAME_count(const X509_NAME *name);

/**
 * Finds an entry by its place.
 * @param name  the name
 * @param index 0 for the first
 * @return the entry itself, which the name owns; null for null and an index that there is not
 */
TLXPKI_API X509_NAME_CHILD *get_X509_NAME_CHILD(const X509_NAME *name, int32_t index);

/**
 * The type of an entry.
 * @param child the entry
 * @return its type, which the entry owns; null for null
 */
TLXPKI_API OBJECT_IDENTIFIER *get_X509_NAME_CHILD_OID(const X509_NAME_CHILD *child);

/**
 * The value of an entry.
 * @param child the entry
 * @return its value, which the entry owns; null for null
 */
TLXPKI_API ASN1_STRING *get_X509_NAME_CHILD_data(const X509_NAME_CHILD *child);

/**
 * Finds the next entry of a type. Feeding the result back as lastpos walks all entries of that type.
 * @param name    the name
 * @param oid     the type
 * @param lastpos the search begins after this index; a negative one searches from the first entry on
 * @return the index; -1 when there is none and for null arguments
 */
TLXPKI_API int32_t get_X509_NAME_index_by_OID(const X509_NAME *name, const OBJECT_IDENTIFIER *oid,
                                              int32_t lastpos);

/**
 * Inserts a copy of an entry.
 * @param name  the name
 * @param child the entry; stays the caller's
 * @param index the copy goes before the entry at this index; below 0 or above the count it goes to the end
 * @return 0; 1 for null arguments and when memory runs out (the name is unchanged then)
 */
TLXPKI_API uint32_t add_X509_NAME_child(X509_NAME *name, const X509_NAME_CHILD *child, int32_t index);

/**
 * Inserts an entry made of a type and a value.
 * @param name   the name
 * @param oid    the type; copied
 * @param type   string type of the value, for example TLX_TAG_UTF8_STRING
 * @param data   the value as octets of that type; copied
 * @param length how many; a negative number says that data is a NUL-terminated text
 * @param index  as for add_X509_NAME_child()
 * @return 0; 1 for null arguments and when memory runs out (the name is unchanged then)
 */
TLXPKI_API uint32_t add_X509_NAME_child_OID(X509_NAME *name, const OBJECT_IDENTIFIER *oid, int32_t type,
                                            const void *data, int32_t length, int32_t index);

/**
 * Inserts an entry whose type is a row of the registry of object identifiers, for example
 * TLX_OID_COMMON_NAME.
 * @param name      the name
 * @param oid_index the row
 * @param type,data,length,index as for add_X509_NAME_child_OID()
 * @return as there; 1 also for a row without an identifier
 */
TLXPKI_API uint32_t add_X509_NAME_child_OID_index(X509_NAME *name, int32_t oid_index, int32_t type,
                                                  const void *data, int32_t length, int32_t index);

/**
 * Takes an entry out of a name.
 * @param name  the name
 * @param index 0 for the first
 * @return the entry, now the caller's, freed with free_X509_NAME_CHILD(); null for null and an index that
 *         there is not
 */
TLXPKI_API X509_NAME_CHILD *remove_X509_NAME_child(X509_NAME *name, int32_t index);

/**
 * Compares two names by their DER encodings: the same text in another string type, case or spacing makes
 * another name.
 * @param a,b the names
 * @return 0 when the encodings are equal
 * @return -1 when they are not, or the numbers of entries differ; -1 gives no order
 * @return 1 for a null argument, a name that cannot be encoded and when memory runs out
 */
TLXPKI_API int32_t cmp_X509_NAME(const X509_NAME *a, const X509_NAME *b);

/**
 * Digests the DER encoding of a name.
 * @param name      the name
 * @param digest_id the digest, for example TLX_DIGEST_SHA1
 * @param out       receives the digest, at most TLX_DIGEST_MAX_LENGTH octets
 * @return the length of the digest
 * @return 0xFFFFFFFF for null arguments, a name without entries or that cannot be encoded, a digest that is
 *         not available and when memory runs out
 */
TLXPKI_API uint32_t get_X509_NAME_hash(const X509_NAME *name, uint32_t digest_id, uint8_t *out);

/**
 * A name as text by RFC 4514, in UTF-8: last entry first, attribute types by their registered short names or
 * as dotted texts. A value is what ASN1_STRING_to_UTF8_STRING() makes of it, with control characters and what
 * else has to be escaped escaped; one that is no text is "#" and the hexadecimal digits of its encoding.
 * @param name the name
 * @return a NUL-terminated text, freed with tlx_free(); null for null, entries without type or value,
 *         values that cannot be encoded and when memory runs out
 */
TLXPKI_API char *dump_X509_NAME(const X509_NAME *name);

/**
 * One entry as text in the way of dump_X509_NAME(): "CN=HONG GIL DONG".
 * @param child the entry
 * @return as there
 */
TLXPKI_API char *dump_X509_NAME_CHILD(const X509_NAME_CHILD *child);

/**
 * Decodes a Name. An empty one decodes to a name without entries.
 * @param node the SEQUENCE
 * @param out  receives a new name, freed with free_X509_NAME(); a name it points to already gets the new
 *             entries in place of its own. Unchanged on failure
 * @return 0
 * @return 0x461C0049 for a null argument
 * @return 0x461C0104 when a relative distinguished name lacks its SET, SEQUENCE, type or value, or memory
 *         runs out
 */
TLXPKI_API uint32_t Seq_to_X509_NAME(const ASN1_UNIT *node, X509_NAME **out);

/**
 * Encodes a Name, each entry as a relative distinguished name of its own. A name without entries is an empty
 * SEQUENCE.
 * @param name the name
 * @param out  receives the node: a node it points to already is filled, else *out becomes a new one, freed
 *             with free_ASN1_UNIT(). On failure a node it pointed to is freed and *out becomes null
 * @return 0
 * @return 0x461B0049 for a null argument (*out stays as it was)
 * @return 0x461B002B when an entry is missing
 * @return 0x461B0103 when an entry has no type or value, they cannot be encoded, or memory runs out
 */
TLXPKI_API uint32_t X509_NAME_to_Seq(const X509_NAME *name, ASN1_UNIT **out);

TLX_END_DECLS

#endif
