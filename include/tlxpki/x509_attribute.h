/** @file
 * Attributes (X.501): a type with a set of values each. PKCS #7 signer information, PKCS #8 keys and trust
 * lists carry them. The contract of all records is in x509_types.h.
 *
 * Bit 0x20 of a value's type says in which form the value is held: set, as an ASN1_UNIT with the whole
 * constructed element; clear, as an ASN1_STRING. Functions that take or return a value as void * follow that
 * bit.
 */
#ifndef TLXPKI_X509_ATTRIBUTE_H
#define TLXPKI_X509_ATTRIBUTE_H

#include <tlxpki/x509_types.h>

TLX_BEGIN_DECLS

/* ---- Values ---- */

/**
 * X509_ATTRIBUTE_DATA: one value. It is decoded and encoded with its attribute.
 * @{
 */
TLXPKI_API X509_ATTRIBUTE_DATA *new_X509_ATTRIBUTE_DATA(void);
TLXPKI_API void free_X509_ATTRIBUTE_DATA(X509_ATTRIBUTE_DATA *data);
TLXPKI_API X509_ATTRIBUTE_DATA *dup_X509_ATTRIBUTE_DATA(const X509_ATTRIBUTE_DATA *data);
/** @} */

/* ---- Attributes ---- */

/**
 * X509_ATTRIBUTE. A new one and a cleaned one have an empty list of values.
 * - Decoder: reads SEQUENCE { type, SET OF value }. 0x46220049 null argument; 0x46220104 the type, the SET or
 * a value is missing or cannot be decoded. After 0x46220104 *out is null; a record that it pointed to is
 * unchanged and stays the caller's.
 * - Encoder: writes the values in list order. 0x46210049 null argument; 0x46210103 the type or a value is
 * missing or cannot be encoded.
 * @{
 */
TLXPKI_API X509_ATTRIBUTE *new_X509_ATTRIBUTE(void);
TLXPKI_API void clean_X509_ATTRIBUTE(X509_ATTRIBUTE *attribute);
TLXPKI_API void free_X509_ATTRIBUTE(X509_ATTRIBUTE *attribute);
TLXPKI_API X509_ATTRIBUTE *dup_X509_ATTRIBUTE(const X509_ATTRIBUTE *attribute);
TLXPKI_API uint32_t Seq_to_X509_ATTRIBUTE(const ASN1_UNIT *node, X509_ATTRIBUTE **out);
TLXPKI_API uint32_t X509_ATTRIBUTE_to_Seq(const X509_ATTRIBUTE *attribute, ASN1_UNIT **out);
/** @} */

/** The type of an attribute. */
TLXPKI_API OBJECT_IDENTIFIER *get_X509_ATTRIBUTE_OID(const X509_ATTRIBUTE *attribute);
/** The number of values; 0 for null. */
TLXPKI_API uint32_t get_X509_ATTRIBUTE_count(const X509_ATTRIBUTE *attribute);
/** The value at a zero-based index, an ASN1_UNIT or an ASN1_STRING. */
TLXPKI_API void *get_X509_ATTRIBUTE_data(const X509_ATTRIBUTE *attribute, int32_t index);
/** The identifier octet of the value at a zero-based index; 0xFFFFFFFF for null and when there is none. */
TLXPKI_API uint32_t get_X509_ATTRIBUTE_data_type(const X509_ATTRIBUTE *attribute, int32_t index);

/** Replaces the type of an attribute. */
TLXPKI_API uint32_t set_X509_ATTRIBUTE_OID(X509_ATTRIBUTE *attribute, const OBJECT_IDENTIFIER *oid);

/**
 * Appends a copy of a value.
 * @param type  identifier octet of the value
 * @param value an ASN1_UNIT when bit 0x20 of type is set, otherwise an ASN1_STRING
 * @return 0; 1 for a null argument and when memory runs out (the attribute is unchanged then)
 */
TLXPKI_API uint32_t add_X509_ATTRIBUTE_data(X509_ATTRIBUTE *attribute, uint32_t type, const void *value);

/**
 * Appends a string itself, without a copy: on success the attribute owns it. Its type becomes the type of the
 * value.
 * @return 0; 1 for a null argument, a type with bit 0x20, and when memory runs out (the string stays the
 * caller's then)
 */
TLXPKI_API uint32_t add_X509_ATTRIBUTE_set(X509_ATTRIBUTE *attribute, ASN1_STRING *string);

/**
 * Makes or fills an attribute with a type and one more value.
 * @param attribute may be null. An attribute that *attribute points to is filled; a null *attribute receives
 * the new one
 * @param type,value as for add_X509_ATTRIBUTE_data()
 * @return the attribute, freed with free_X509_ATTRIBUTE() when it is new; null for a null oid or value and
 * when memory runs out (a given attribute is unchanged then)
 */
TLXPKI_API X509_ATTRIBUTE *create_X509_ATTRIBUTE_OID(X509_ATTRIBUTE **attribute, const OBJECT_IDENTIFIER *oid,
                                                     uint32_t type, const void *value);
/** create_X509_ATTRIBUTE_OID() with a row of the registry. */
TLXPKI_API X509_ATTRIBUTE *create_X509_ATTRIBUTE_index(X509_ATTRIBUTE **attribute, int32_t oid_index,
                                                       uint32_t type, const void *value);

/* ---- Lists of attributes ---- */

/**
 * X509_ATTRIBUTES: a list of X509_ATTRIBUTE.
 * - Decoder: reads a SET OF, whatever the tag of the node. 0x46240049 null argument; 0x4624002B no
 * attributes; 0x46240104 an attribute, its type, its SET or a value is missing or cannot be decoded;
 * 0x4624010C an attribute cannot be added to the list.
 * - Encoder: writes a SET OF in list order; it does not sort. 0x46230049 null argument; 0x4623002B no
 * attributes, or one that is null; 0x46210103 an attribute cannot be encoded, as for X509_ATTRIBUTE_to_Seq();
 * 0x46230103 the node cannot be made.
 * @{
 */
TLXPKI_API X509_ATTRIBUTES *new_X509_ATTRIBUTES(void);
TLXPKI_API void clean_X509_ATTRIBUTES(X509_ATTRIBUTES *attributes);
TLXPKI_API void free_X509_ATTRIBUTES(X509_ATTRIBUTES *attributes);
TLXPKI_API X509_ATTRIBUTES *dup_X509_ATTRIBUTES(const X509_ATTRIBUTES *attributes);
TLXPKI_API uint32_t Seq_to_X509_ATTRIBUTES(const ASN1_UNIT *node, X509_ATTRIBUTES **out);
TLXPKI_API uint32_t X509_ATTRIBUTES_to_Seq(const X509_ATTRIBUTES *attributes, ASN1_UNIT **out);
TLXPKI_API uint32_t get_X509_ATTRIBUTES_count(const X509_ATTRIBUTES *attributes);
TLXPKI_API X509_ATTRIBUTE *get_X509_ATTRIBUTES_child(const X509_ATTRIBUTES *attributes, int32_t index);
TLXPKI_API uint32_t add_X509_ATTRIBUTES_child(X509_ATTRIBUTES *attributes, const X509_ATTRIBUTE *attribute,
                                              int32_t index);
TLXPKI_API X509_ATTRIBUTE *remove_X509_ATTRIBUTES_child(X509_ATTRIBUTES *attributes, int32_t index);
/** @} */

/** Searches for an attribute of a type. */
TLXPKI_API int32_t get_X509_ATTRIBUTES_index_by_OID(const X509_ATTRIBUTES *attributes,
                                                    const OBJECT_IDENTIFIER *oid, int32_t lastpos);

/**
 * Inserts an attribute with one value.
 * @param type,value as for add_X509_ATTRIBUTE_data()
 * @param index      as for add_X509_ATTRIBUTES_child()
 * @return as add_X509_ATTRIBUTES_child()
 */
TLXPKI_API uint32_t add_X509_ATTRIBUTES_child_OID(X509_ATTRIBUTES *attributes, const OBJECT_IDENTIFIER *oid,
                                                  uint32_t type, const void *value, int32_t index);
/** add_X509_ATTRIBUTES_child_OID() with a row of the registry. */
TLXPKI_API uint32_t add_X509_ATTRIBUTES_OID_INDEX(X509_ATTRIBUTES *attributes, int32_t oid_index,
                                                  uint32_t type, const void *value, int32_t index);

TLX_END_DECLS

#endif
