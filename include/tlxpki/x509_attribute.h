/** @file
 * Attributes (X.501): a type with a set of values each. They are found in PKCS #7 signer information, PKCS #8
 * keys and trust lists.
 *
 * A value is held in one of two forms, told apart by bit 0x20 of its type: constructed values as an ASN1_UNIT
 * with the whole element, primitive ones as an ASN1_STRING. Functions that take or give a value as void *
 * follow that bit.
 *
 * Every function may be called from any thread, on distinct objects at the same time; functions that take
 * const objects may share them.
 */
#ifndef TLXPKI_X509_ATTRIBUTE_H
#define TLXPKI_X509_ATTRIBUTE_H

#include <tlxpki/x509_types.h>

TLX_BEGIN_DECLS

/**
 * Makes an empty list.
 * @return the list, freed with free_X509_ATTRIBUTES(); null when memory runs out
 */
TLXPKI_API X509_ATTRIBUTES *new_X509_ATTRIBUTES(void);

/**
 * Frees the attributes of a list, which is empty afterwards.
 * @param attributes a list, or null (nothing happens then)
 */
TLXPKI_API void clean_X509_ATTRIBUTES(X509_ATTRIBUTES *attributes);

/**
 * Frees a list and its attributes.
 * @param attributes a list, or null (nothing happens then)
 */
TLXPKI_API void free_X509_ATTRIBUTES(X509_ATTRIBUTES *attributes);

/**
 * Copies a list with all its attributes, in order.
 * @param attributes the list
 * @return the copy, freed with free_X509_ATTRIBUTES(); null for null and when memory runs out
 */
TLXPKI_API X509_ATTRIBUTES *dup_X509_ATTRIBUTES(const X509_ATTRIBUTES *attributes);

/**
 * Makes an attribute without a type, with an empty list of values.
 * @return the attribute, freed with free_X509_ATTRIBUTE(); null when memory runs out
 */
TLXPKI_API X509_ATTRIBUTE *new_X509_ATTRIBUTE(void);

/**
 * Frees the type and the values of an attribute, whose list of values is empty afterwards.
 * @param attribute an attribute, or null (nothing happens then)
 */
TLXPKI_API void clean_X509_ATTRIBUTE(X509_ATTRIBUTE *attribute);

/**
 * Frees an attribute with its type and values.
 * @param attribute an attribute that is in no list, or null (nothing happens then)
 */
TLXPKI_API void free_X509_ATTRIBUTE(X509_ATTRIBUTE *attribute);

/**
 * Copies an attribute with its type and values.
 * @param attribute the attribute
 * @return the copy, freed with free_X509_ATTRIBUTE(); null for null and when memory runs out
 */
TLXPKI_API X509_ATTRIBUTE *dup_X509_ATTRIBUTE(const X509_ATTRIBUTE *attribute);

/**
 * Makes an empty value.
 * @return the value, freed with free_X509_ATTRIBUTE_DATA(); null when memory runs out
 */
TLXPKI_API X509_ATTRIBUTE_DATA *new_X509_ATTRIBUTE_DATA(void);

/**
 * Frees a value.
 * @param data a value that is in no attribute, or null (nothing happens then)
 */
TLXPKI_API void free_X509_ATTRIBUTE_DATA(X509_ATTRIBUTE_DATA *data);

/**
 * Copies a value in whichever form it is held.
 * @param data the value
 * @return the copy, freed with free_X509_ATTRIBUTE_DATA(); null for null and when memory runs out
 */
TLXPKI_API X509_ATTRIBUTE_DATA *dup_X509_ATTRIBUTE_DATA(const X509_ATTRIBUTE_DATA *data);

/**
 * Counts the attributes.
 * @param attributes the list
 * @return their number; 0 for null
 */
TLXPKI_API uint32_t get_X509_ATTRIBUTES_count(const X509_ATTRIBUTES *attributes);

/**
 * Finds an attribute by its place.
 * @param attributes the list
 * @param index      0 for the first
 * @return the attribute itself, which the list owns; null for null and an index that there is not
 */
TLXPKI_API X509_ATTRIBUTE *get_X509_ATTRIBUTES_child(const X509_ATTRIBUTES *attributes, int32_t index);

/**
 * Finds the next attribute of a type. Feeding the result back as lastpos walks all attributes of that type.
 * @param attributes the list
 * @param oid        the type
 * @param lastpos    the search begins after this index; a negative one searches from the first attribute on
 * @return the index; -1 when there is none and for null arguments
 */
TLXPKI_API int32_t get_X509_ATTRIBUTES_index_by_OID(const X509_ATTRIBUTES *attributes,
                                                    const OBJECT_IDENTIFIER *oid, int32_t lastpos);

/**
 * Takes an attribute out of a list.
 * @param attributes the list
 * @param index      0 for the first
 * @return the attribute, now the caller's, freed with free_X509_ATTRIBUTE(); null for null and an index
 *         that there is not
 */
TLXPKI_API X509_ATTRIBUTE *remove_X509_ATTRIBUTES_child(X509_ATTRIBUTES *attributes, int32_t index);

/**
 * The type of an attribute.
 * @param attribute the attribute
 * @return its type, which the attribute owns; null for null
 */
TLXPKI_API OBJECT_IDENTIFIER *get_X509_ATTRIBUTE_OID(const X509_ATTRIBUTE *attribute);

/**
 * Counts the values of an attribute.
 * @param attribute the attribute
 * @return their number; 0 for null
 */
TLXPKI_API uint32_t get_X509_ATTRIBUTE_count(const X509_ATTRIBUTE *attribute);

/**
 * A value of an attribute.
 * @param attribute the attribute
 * @param index     0 for the first
 * @return the ASN1_UNIT or ASN1_STRING, which the attribute owns; null for null and an index that there is
 *         not
 */
TLXPKI_API void *get_X509_ATTRIBUTE_data(const X509_ATTRIBUTE *attribute, int32_t index);

/**
 * The type of a value.
 * @param attribute the attribute
 * @param index     0 for the first
 * @return its identifier octet; 0xFFFFFFFF for null and an index that there is not
 */
TLXPKI_API uint32_t get_X509_ATTRIBUTE_data_type(const X509_ATTRIBUTE *attribute, int32_t index);

/**
 * Replaces the type of an attribute.
 * @param attribute the attribute
 * @param oid       the new type; copied
 * @return 0; 1 for null arguments and when memory runs out (the type is unchanged then)
 */
TLXPKI_API uint32_t set_X509_ATTRIBUTE_OID(X509_ATTRIBUTE *attribute, const OBJECT_IDENTIFIER *oid);

/**
 * Appends a copy of a value.
 * @param attribute the attribute
 * @param type      identifier octet of the value
 * @param value     an ASN1_UNIT when bit 0x20 of type is set, otherwise an ASN1_STRING; stays the caller's
 * @return 0; 1 for null arguments and when memory runs out (the attribute is unchanged then)
 */
TLXPKI_API uint32_t add_X509_ATTRIBUTE_data(X509_ATTRIBUTE *attribute, uint32_t type, const void *value);

/**
 * Appends a string itself; no copy is made.
 * @param attribute the attribute, which owns the string from then on
 * @param string    the value; its type becomes the type of the value. A string type with bit 0x20 cannot be
 *                  held as a string and is refused
 * @return 0; 1 for null arguments, such a type and when memory runs out (the string stays the caller's
 *         then)
 */
TLXPKI_API uint32_t add_X509_ATTRIBUTE_set(X509_ATTRIBUTE *attribute, ASN1_STRING *string);

/**
 * Makes or fills an attribute with a type and one more value.
 * @param attribute may be null. An attribute that *attribute points to is filled; when *attribute is null
 *                  it receives the new attribute
 * @param oid       the type; copied
 * @param type,value as for add_X509_ATTRIBUTE_data()
 * @return the attribute. A new one is freed with free_X509_ATTRIBUTE()
 * @return null for a null oid or value and when memory runs out; a given attribute is unchanged then
 */
TLXPKI_API X509_ATTRIBUTE *create_X509_ATTRIBUTE_OID(X509_ATTRIBUTE **attribute, const OBJECT_IDENTIFIER *oid,
                                                     uint32_t type, const void *value);

/**
 * create_X509_ATTRIBUTE_OID() with a row of the registry of object identifiers.
 * @param attribute,type,value as there
 * @param oid_index the row
 * @return as there; null also for a row without an identifier
 */
TLXPKI_API X509_ATTRIBUTE *create_X509_ATTRIBUTE_index(X509_ATTRIBUTE **attribute, int32_t oid_index,
                                                       uint32_t type, const void *value);

/**
 * Inserts a copy of an attribute.
 * @param attributes the list
 * @param attribute  the attribute; stays the caller's
 * @param index      the copy goes before the attribute at this index; below 0 or above the count it goes to
 *                   the end
 * @return 0; 1 for null arguments and when memory runs out (the list is unchanged then)
 */
TLXPKI_API uint32_t add_X509_ATTRIBUTES_child(X509_ATTRIBUTES *attributes, const X509_ATTRIBUTE *attribute,
                                              int32_t index);

/**
 * Inserts an attribute with one value.
 * @param attributes the list
 * @param oid        the type; copied
 * @param type,value as for add_X509_ATTRIBUTE_data()
 * @param index      as for add_X509_ATTRIBUTES_child()
 * @return 0; 1 for null arguments and when memory runs out (the list is unchanged then)
 */
TLXPKI_API uint32_t add_X509_ATTRIBUTES_child_OID(X509_ATTRIBUTES *attributes, const OBJECT_IDENTIFIER *oid,
                                                  uint32_t type, const void *value, int32_t index);

/**
 * add_X509_ATTRIBUTES_child_OID() with a row of the registry of object identifiers.
 * @param attributes,type,value,index as there
 * @param oid_index the row
 * @return as there; 1 also for a row without an identifier
 */
TLXPKI_API uint32_t add_X509_ATTRIBUTES_OID_INDEX(X509_ATTRIBUTES *attributes, int32_t oid_index,
                                                  uint32_t type, const void *value, int32_t index);

/**
 * Decodes an Attribute.
 * @param node the SEQUENCE { type, SET of values }
 * @param out  an attribute it points to is filled, its old type and values freed; else it receives a new
 *             one, freed with free_X509_ATTRIBUTE()
 * @return 0
 * @return 0x46220049 for a null argument (*out stays as it was)
 * @return 0x46220104 when the type, the SET or a value is missing or cannot be decoded, or memory runs out.
 *         *out is null then; an attribute it pointed to stays the caller's, as it was
 */
TLXPKI_API uint32_t Seq_to_X509_ATTRIBUTE(const ASN1_UNIT *node, X509_ATTRIBUTE **out);

/**
 * Encodes an Attribute with its values in list order.
 * @param attribute the attribute
 * @param out       receives a new node, freed with free_ASN1_UNIT(), whatever it holds before. Unchanged on
 * failure
 * @return 0
 * @return 0x46210049 for a null argument
 * @return 0x46210103 when the type or a value is missing or cannot be encoded, or memory runs out
 */
TLXPKI_API uint32_t X509_ATTRIBUTE_to_Seq(const X509_ATTRIBUTE *attribute, ASN1_UNIT **out);

/**
 * Decodes a SET OF Attribute, whatever the tag of the node.
 * @param node the set
 * @param out  a list it points to gets the attributes in place of its own; else it receives a new one,
 *             freed with free_X509_ATTRIBUTES(). Unchanged on failure
 * @return 0
 * @return 0x46240049 for a null argument
 * @return 0x4624002B when there are no attributes
 * @return 0x46240104 when an attribute, its type, its SET or a value is missing or cannot be decoded
 * @return 0x4624010C when an attribute cannot be added to the list
 */
TLXPKI_API uint32_t Seq_to_X509_ATTRIBUTES(const ASN1_UNIT *node, X509_ATTRIBUTES **out);

/**
 * Encodes a SET OF Attribute in list order; the attributes are not sorted.
 * @param attributes the list
 * @param out        receives a new node, freed with free_ASN1_UNIT(), whatever it holds before. Unchanged on
 * failure
 * @return 0
 * @return 0x46230049 for a null argument
 * @return 0x4623002B for an empty list and one with a missing attribute
 * @return 0x46210103 when an attribute cannot be encoded, as X509_ATTRIBUTE_to_Seq()
 * @return 0x46230103 when the node cannot be made
 */
TLXPKI_API uint32_t X509_ATTRIBUTES_to_Seq(const X509_ATTRIBUTES *attributes, ASN1_UNIT **out);

TLX_END_DECLS

#endif
