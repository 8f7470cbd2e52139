/** @file
 * Extensions of a certificate (RFC 5280, section 4.2) as a list of identifier, critical flag and value
 * octets. x509v3.h decodes the values. The contract of all records is in x509_types.h.
 */
#ifndef TLXPKI_X509_EXTENSION_H
#define TLXPKI_X509_EXTENSION_H

#include <tlxpki/x509_types.h>

TLX_BEGIN_DECLS

/**
 * X509_EXTENSION.
 * - Decoder: keeps the octet of a critical flag; 0 means FALSE or no flag. A caller's record is unchanged on
 * failure. 0x461E0049 null argument; 0x461E0104 the identifier or the value is missing, or an element is
 * broken.
 * - Encoder: writes the critical flag only when it is set, as 0xFF. 0x461D0049 null argument; 0x461D0103 the
 * identifier or the value is missing or cannot be encoded.
 * @{
 */
TLXPKI_API X509_EXTENSION *new_X509_EXTENSION(void);
TLXPKI_API void clean_X509_EXTENSION(X509_EXTENSION *extension);
TLXPKI_API void free_X509_EXTENSION(X509_EXTENSION *extension);
TLXPKI_API X509_EXTENSION *dup_X509_EXTENSION(const X509_EXTENSION *extension);
TLXPKI_API uint32_t Seq_to_X509_EXTENSION(const ASN1_UNIT *node, X509_EXTENSION **out);
TLXPKI_API uint32_t X509_EXTENSION_to_Seq(const X509_EXTENSION *extension, ASN1_UNIT **out);
/** @} */

/** The identifier. */
TLXPKI_API OBJECT_IDENTIFIER *get_X509_EXTENSION_object(const X509_EXTENSION *extension);
/** The critical flag: 0 for not critical and for null, otherwise the octet as read or set (0xFF in DER). */
TLXPKI_API uint8_t get_X509_EXTENSION_critical(const X509_EXTENSION *extension);
/** The octets of the value's encoding. */
TLXPKI_API OCTET_STRING *get_X509_EXTENSION_data(const X509_EXTENSION *extension);

/** Replaces the identifier. */
TLXPKI_API uint32_t set_X509_EXTENSION_object(X509_EXTENSION *extension, const OBJECT_IDENTIFIER *oid);
/** Sets the critical flag: 0 for not critical; any other octet means critical and is encoded as 0xFF. */
TLXPKI_API uint32_t set_X509_EXTENSION_critical(X509_EXTENSION *extension, uint8_t critical);
/** Replaces the octets of the value's encoding. */
TLXPKI_API uint32_t set_X509_EXTENSION_data(X509_EXTENSION *extension, const OCTET_STRING *data);

/**
 * Makes or fills an extension.
 * @param extension may be null. An extension that *extension points to is filled, its old members freed; a
 * null *extension receives the new one
 * @param critical  as for set_X509_EXTENSION_critical()
 * @param data      the octets of the value's encoding
 * @return the extension, freed with free_X509_EXTENSION() when it is new; null for a null oid or data and
 * when memory runs out (a given extension is unchanged then)
 */
TLXPKI_API X509_EXTENSION *create_X509_EXTENSION_by_OID(X509_EXTENSION **extension,
                                                        const OBJECT_IDENTIFIER *oid, uint8_t critical,
                                                        const OCTET_STRING *data);
/** create_X509_EXTENSION_by_OID() with a row of the registry. */
TLXPKI_API X509_EXTENSION *create_X509_EXTENSION_by_OID_index(X509_EXTENSION **extension, int32_t oid_index,
                                                              uint8_t critical, const OCTET_STRING *data);

/**
 * X509_EXTENSIONS: a list of X509_EXTENSION, which may be empty. The operations on its items have names of
 * their own and follow the contract of lists.
 * - Decoder: 0x46200049 null argument; 0x46200104 an extension cannot be decoded.
 * - Encoder: writes the extensions in list order. 0x461F0049 null argument; 0x461F0103 an extension is
 * missing or cannot be encoded.
 * @{
 */
TLXPKI_API X509_EXTENSIONS *new_X509_EXTENSIONS(void);
TLXPKI_API void clean_X509_EXTENSIONS(X509_EXTENSIONS *extensions);
TLXPKI_API void free_X509_EXTENSIONS(X509_EXTENSIONS *extensions);
TLXPKI_API X509_EXTENSIONS *dup_X509_EXTENSIONS(const X509_EXTENSIONS *extensions);
TLXPKI_API uint32_t Seq_to_X509_EXTENSIONS(const ASN1_UNIT *node, X509_EXTENSIONS **out);
TLXPKI_API uint32_t X509_EXTENSIONS_to_Seq(const X509_EXTENSIONS *extensions, ASN1_UNIT **out);
TLXPKI_API uint32_t get_X509_EXTENSION_count(const X509_EXTENSIONS *extensions);
TLXPKI_API X509_EXTENSION *get_X509_EXTENSION(const X509_EXTENSIONS *extensions, int32_t index);
TLXPKI_API uint32_t add_X509_EXTENSION(X509_EXTENSIONS *extensions, const X509_EXTENSION *extension,
                                       int32_t index);
TLXPKI_API X509_EXTENSION *remove_X509_EXTENSION(X509_EXTENSIONS *extensions, int32_t index);
/** @} */

/** Searches for an extension with an identifier. */
TLXPKI_API int32_t get_X509_EXTENSION_index_by_OID(const X509_EXTENSIONS *extensions,
                                                   const OBJECT_IDENTIFIER *oid, int32_t lastpos);
/** get_X509_EXTENSION_index_by_OID() with a row of the registry, for example TLX_OID_BASIC_CONSTRAINTS. */
TLXPKI_API int32_t get_X509_EXTENSION_index_by_OID_index(const X509_EXTENSIONS *extensions, int32_t oid_index,
                                                         int32_t lastpos);

TLX_END_DECLS

#endif
