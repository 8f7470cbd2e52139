/** @file
 * Distinguished names (RFC 5280, section 4.1.2.4) as a flat list of attribute types and values, one for each
 * relative distinguished name. Of a relative distinguished name with several types and values only the first
 * is read. The contract of all records is in x509_types.h.
 *
 * Values keep the string type that they were read with. Every copy and encoding writes it back. Nothing here
 * converts texts, except dump_X509_NAME() and dump_X509_NAME_CHILD().
 */
#ifndef TLXPKI_X509_NAME_H
#define TLXPKI_X509_NAME_H

#include <tlxpki/x509_types.h>

TLX_BEGIN_DECLS

/* ---- Entries ---- */

/**
 * X509_NAME_CHILD: one entry. It is decoded and encoded with its name.
 * @{
 */
TLXPKI_API X509_NAME_CHILD *new_X509_NAME_CHILD(void);
TLXPKI_API void free_X509_NAME_CHILD(X509_NAME_CHILD *child);
TLXPKI_API X509_NAME_CHILD *dup_X509_NAME_CHILD(const X509_NAME_CHILD *child);
/** @} */

/** The type of an entry. */
TLXPKI_API OBJECT_IDENTIFIER *get_X509_NAME_CHILD_OID(const X509_NAME_CHILD *child);
/** The value of an entry. */
TLXPKI_API ASN1_STRING *get_X509_NAME_CHILD_data(const X509_NAME_CHILD *child);

/* ---- Names ---- */

/**
 * X509_NAME: a list of X509_NAME_CHILD, which may be empty. get_X509_NAME_CHILD() returns the entry at an
 * index.
 * - Decoder: 0x461C0049 null argument; 0x461C0104 a relative distinguished name lacks its SET, SEQUENCE, type
 * or value.
 * - Encoder: writes each entry as a relative distinguished name of its own. Unlike other encoders it fills a
 * node that *out points to; on failure it frees that node and *out becomes null. 0x461B0049 null argument
 * (*out is unchanged); 0x461B002B an entry is missing; 0x461B0103 an entry has no type or value, or they
 * cannot be encoded.
 * @{
 */
TLXPKI_API X509_NAME *new_X509_NAME(void);
TLXPKI_API void clean_X509_NAME(X509_NAME *name);
TLXPKI_API void free_X509_NAME(X509_NAME *name);
TLXPKI_API X509_NAME *dup_X509_NAME(const X509_NAME *name);
TLXPKI_API uint32_t Seq_to_X509_NAME(const ASN1_UNIT *node, X509_NAME **out);
TLXPKI_API uint32_t X509_NAME_to_Seq(const X509_NAME *name, ASN1_UNIT **out);
TLXPKI_API uint32_t get_X509_NAME_count(const X509_NAME *name);
TLXPKI_API X509_NAME_CHILD *get_X509_NAME_CHILD(const X509_NAME *name, int32_t index);
TLXPKI_API uint32_t add_X509_NAME_child(X509_NAME *name, const X509_NAME_CHILD *child, int32_t index);
TLXPKI_API X509_NAME_CHILD *remove_X509_NAME_child(X509_NAME *name, int32_t index);
/** @} */

/** Searches for an entry of a type. */
TLXPKI_API int32_t get_X509_NAME_index_by_OID(const X509_NAME *name, const OBJECT_IDENTIFIER *oid,
                                              int32_t lastpos);

/**
 * Inserts an entry made of a type and a value.
 * @param type   string type of the value, for example TLX_TAG_UTF8_STRING
 * @param data   the value as octets of that type
 * @param length octets at data; a negative length means that data is a NUL-terminated text
 * @param index  as for add_X509_NAME_child()
 * @return as add_X509_NAME_child()
 */
TLXPKI_API uint32_t add_X509_NAME_child_OID(X509_NAME *name, const OBJECT_IDENTIFIER *oid, int32_t type,
                                            const void *data, int32_t length, int32_t index);
/** add_X509_NAME_child_OID() with a row of the registry, for example TLX_OID_COMMON_NAME. */
TLXPKI_API uint32_t add_X509_NAME_child_OID_index(X509_NAME *name, int32_t oid_index, int32_t type,
                                                  const void *data, int32_t length, int32_t index);

/**
 * Compares two names by their DER encodings. The same text in another string type, case or spacing makes
 * another name.
 * @return 0 when the encodings are equal; -1 when they or the numbers of entries differ (which gives no
 * order); 1 for a null argument, a name that cannot be encoded, and when memory runs out
 */
TLXPKI_API int32_t cmp_X509_NAME(const X509_NAME *a, const X509_NAME *b);

/**
 * Digests the DER encoding of a name.
 * @param digest_id the digest, for example TLX_DIGEST_SHA1
 * @param out       receives the digest, at most TLX_DIGEST_MAX_LENGTH octets
 * @return the octets of the digest; 0xFFFFFFFF for a null argument, a name that has no entries or cannot be
 * encoded, an unavailable digest, and when memory runs out
 */
TLXPKI_API uint32_t get_X509_NAME_hash(const X509_NAME *name, uint32_t digest_id, uint8_t *out);

/**
 * Writes a name as text by RFC 4514, in UTF-8: last entry first, types as registered short names or dotted
 * texts. A value is what ASN1_STRING_to_UTF8_STRING() makes of it, with control characters and all else that
 * RFC 4514 demands escaped. A value that is no text is "#" and the hexadecimal digits of its encoding.
 * @return a NUL-terminated text, freed with tlx_free(); null for null, an entry without type or value, a
 * value that cannot be encoded, and when memory runs out
 */
TLXPKI_API char *dump_X509_NAME(const X509_NAME *name);
/** Writes one entry as dump_X509_NAME() does, for example "CN=HONG GIL DONG". */
TLXPKI_API char *dump_X509_NAME_CHILD(const X509_NAME_CHILD *child);

TLX_END_DECLS

#endif
