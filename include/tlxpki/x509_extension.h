/** @file
 * Extensions of a certificate (RFC 5280, section 4.2) as a list of identifier, critical flag and value
 * octets. What the values mean is the business of x509v3.h.
 *
 * Every function may be called from any thread, on distinct objects at the same time; functions that take
 * const objects may share them.
 */
#ifndef TLXPKI_X509_EXTENSION_H
#define TLXPKI_X509_EXTENSION_H

#include <tlxpki/x509_types.h>

TLX_BEGIN_DECLS

/**
 * Makes an extension without members.
 * @return the extension, freed with free_X509_EXTENSION(); null when memory runs out
 */
TLXPKI_API X509_EXTENSION *new_X509_EXTENSION(void);

/**
 * Frees the members; the record itself stays.
 * @param extension an extension, or null (nothing happens then)
 */
TLXPKI_API void clean_X509_EXTENSION(X509_EXTENSION *extension);

/**
 * Frees an extension and its members.
 * @param extension an extension that is in no list, or null (nothing happens then)
 */
TLXPKI_API void free_X509_EXTENSION(X509_EXTENSION *extension);

/**
 * Copies an extension with its members.
 * @param extension the extension
 * @return the copy, freed with free_X509_EXTENSION(); null for null and when memory runs out
 */
TLXPKI_API X509_EXTENSION *dup_X509_EXTENSION(const X509_EXTENSION *extension);

/**
 * What the extension is.
 * @param extension the extension
 * @return its identifier, which the extension owns; null for null
 */
TLXPKI_API OBJECT_IDENTIFIER *get_X509_EXTENSION_object(const X509_EXTENSION *extension);

/**
 * The critical flag.
 * @param extension the extension
 * @return 0 for not critical and for null, otherwise the octet that was read or set (0xFF in DER)
 */
TLXPKI_API uint8_t get_X509_EXTENSION_critical(const X509_EXTENSION *extension);

/**
 * The value.
 * @param extension the extension
 * @return the octets of the value's encoding, which the extension owns; null for null
 */
TLXPKI_API OCTET_STRING *get_X509_EXTENSION_data(const X509_EXTENSION *extension);

/**
 * Replaces the identifier.
 * @param extension the extension
 * @param oid       the identifier; copied
 * @return 0; 1 for null arguments and when memory runs out (the extension is unchanged then)
 */
TLXPKI_API uint32_t set_X509_EXTENSION_object(X509_EXTENSION *extension, const OBJECT_IDENTIFIER *oid);

/**
 * Sets the critical flag.
 * @param extension the extension
 * @param critical  0 for not critical; any other octet means critical and is encoded as 0xFF
 * @return 0; 1 for null
 */
TLXPKI_API uint32_t set_X509_EXTENSION_critical(X509_EXTENSION *extension, uint8_t critical);

/**
 * Replaces the value.
 * @param extension the extension
 * @param data      the octets of the value's encoding; copied
 * @return 0; 1 for null arguments and when memory runs out (the extension is unchanged then)
 */
TLXPKI_API uint32_t set_X509_EXTENSION_data(X509_EXTENSION *extension, const OCTET_STRING *data);

/**
 * Makes or fills an extension.
 * @param extension may be null. An extension that *extension points to is filled, its old members freed;
 *                  when *extension is null it receives the new extension
 * @param oid       the identifier; copied
 * @param critical  as for set_X509_EXTENSION_critical()
 * @param data      the octets of the value's encoding; copied
 * @return the extension. A new one is freed with free_X509_EXTENSION()
 * @return null for a null oid or data and when memory runs out; a given extension is unchanged then
 */
TLXPKI_API X509_EXTENSION *create_X509_EXTENSION_by_OID(X509_EXTENSION **extension,
                                                        const OBJECT_IDENTIFIER *oid, uint8_t critical,
                                                        const OCTET_STRING *data);

/**
 * create_X509_EXTENSION_by_OID() with a row of the registry of object identifiers.
 * @param extension,critical,data as there
 * @param oid_index the row
 * @return as there; null also for a row without an identifier
 */
TLXPKI_API X509_EXTENSION *create_X509_EXTENSION_by_OID_index(X509_EXTENSION **extension, int32_t oid_index,
                                                              uint8_t critical, const OCTET_STRING *data);

/**
 * Makes an empty list.
 * @return the list, freed with free_X509_EXTENSIONS(); null when memory runs out
 */
TLXPKI_API X509_EXTENSIONS *new_X509_EXTENSIONS(void);

/**
 * Frees the extensions of a list, which is empty afterwards.
 * @param extensions a list, or null (nothing happens then)
 */
TLXPKI_API void clean_X509_EXTENSIONS(X509_EXTENSIONS *extensions);

/**
 * Frees a list and its extensions.
 * @param extensions a list, or null (nothing happens then)
 */
TLXPKI_API void free_X509_EXTENSIONS(X509_EXTENSIONS *extensions);

/**
 * Copies a list with all its extensions, in order.
 * @param extensions the list
 * @return the copy, freed with free_X509_EXTENSIONS(); null for null and when memory runs out
 */
TLXPKI_API X509_EXTENSIONS *dup_X509_EXTENSIONS(const X509_EXTENSIONS *extensions);

/**
 * Counts the extensions.
 * @param extensions the list
 * @return their number; 0 for null
 */
TLXPKI_API uint32_t get_X509_EXTENSION_count(const X509_EXTENSIONS *extensions);

/**
 * Finds an extension by its place.
 * @param extensions the list
 * @param index      0 for the first
 * @return the extension itself, which the list owns; null for null and an index that there is not
 */
TLXPKI_API X509_EXTENSION *get_X509_EXTENSION(const X509_EXTENSIONS *extensions, int32_t index);

/**
 * Finds the next extension of a kind. Feeding the result back as lastpos walks all extensions of that kind.
 * @param extensions the list
 * @param oid        the identifier
 * @param lastpos    the search begins after this index; a negative one searches from the first extension on
 * @return the index; -1 when there is none and for null arguments
 */
TLXPKI_API int32_t get_X509_EXTENSION_index_by_OID(const X509_EXTENSIONS *extensions,
                                                   const OBJECT_IDENTIFIER *oid, int32_t lastpos);

/**
 * get_X509_EXTENSION_index_by_OID() with a row of the registry of object identifiers, for example
 * TLX_OID_BASIC_CONSTRAINTS.
 * @param extensions,lastpos as there
 * @param oid_index the row
 * @return as there; -1 also for a row without an identifier
 */
TLXPKI_API int32_t get_X509_EXTENSION_index_by_OID_index(const X509_EXTENSIONS *extensions, int32_t oid_index,
                                                         int32_t lastpos);

/**
 * Inserts a copy of an extension.
 * @param extensions the list
 * @param extension  the extension; stays the caller's
 * @param index      the copy goes before the extension at this index; below 0 or above the count it goes to
 *                   the end
 * @return 0; 1 for null arguments and when memory runs out (the list is unchanged then)
 */
TLXPKI_API uint32_t add_X509_EXTENSION(X509_EXTENSIONS *extensions, const X509_EXTENSION *extension,
                                       int32_t index);

/**
 * Takes an extension out of a list.
 * @param extensions the list
 * @param index      0 for the first
 * @return the extension, now the caller's, freed with free_X509_EXTENSION(); null for null and an index
 *         that there is not
 */
TLXPKI_API X509_EXTENSION *remove_X509_EXTENSION(X509_EXTENSIONS *extensions, int32_t index);

/**
 * Decodes an Extension. A critical flag that is given keeps its octet; 0 stands for FALSE and for
 * none.
 * @param node the SEQUENCE
 * @param out  an extension it points to is filled, its old members freed; else it receives a new one, freed
 *             with free_X509_EXTENSION(). On failure *out stays as it was, and so do the members of its
 *             extension
 * @return 0
 * @return 0x461E0049 for a null argument
 * @return 0x461E0104 when the identifier or the value is missing, an element is broken, or memory runs out
 */
TLXPKI_API uint32_t Seq_to_X509_EXTENSION(const ASN1_UNIT *node, X509_EXTENSION **out);

/**
 * Encodes an Extension. The critical flag is written only when it is set, as 0xFF.
 * @param extension the extension
 * @param out       receives a new node, freed with free_ASN1_UNIT(), whatever it holds before. Unchanged on
 * failure
 * @return 0
 * @return 0x461D0049 for a null argument
 * @return 0x461D0103 when the identifier or the value is missing or cannot be encoded, or memory runs out
 */
TLXPKI_API uint32_t X509_EXTENSION_to_Seq(const X509_EXTENSION *extension, ASN1_UNIT **out);

/**
 * Decodes Extensions. An empty SEQUENCE decodes to an empty list.
 * @param node the SEQUENCE
 * @param out  a list it points to gets the extensions in place of its own; else it receives a new one,
 *             freed with free_X509_EXTENSIONS(). Unchanged on failure
 * @return 0
 * @return 0x46200049 for a null argument
 * @return 0x46200104 when an extension cannot be decoded, or memory runs out
 */
TLXPKI_API uint32_t Seq_to_X509_EXTENSIONS(const ASN1_UNIT *node, X509_EXTENSIONS **out);

/**
 * Encodes Extensions in list order.
 * @param extensions the list
 * @param out        receives a new node, freed with free_ASN1_UNIT(), whatever it holds before. Unchanged on
 * failure
 * @return 0
 * @return 0x461F0049 for a null argument
 * @return 0x461F0103 when an extension is missing or cannot be encoded, or memory runs out
 */
TLXPKI_API uint32_t X509_EXTENSIONS_to_Seq(const X509_EXTENSIONS *extensions, ASN1_UNIT **out);

TLX_END_DECLS

#endif
