/** @file
 * The standard extensions (RFC 5280, section 4.2): from an extension's octets to its record and back. This
 * header brings in all of them: general_name.h, x509v3_constraints.h, x509v3_distribution.h, x509v3_key.h,
 * x509v3_policy.h and kisa_identity.h.
 *
 * Which record belongs to which extension:
 *
 * | extension | record |
 * |---|---|
 * | authorityKeyIdentifier | AUTHORITY_KEYID |
 * | subjectKeyIdentifier | SUBJECT_KEYID |
 * | keyUsage | KEY_USAGE |
 * | extKeyUsage | EXTENDED_KEY_USAGE |
 * | certificatePolicies | CERTIFICATE_POLICIES |
 * | policyMappings | POLICY_MAPPINGS |
 * | subjectAltName, issuerAltName | GENERAL_NAMES |
 * | basicConstraints | BASIC_CONSTRAINTS |
 * | nameConstraints | NAME_CONSTRAINTS |
 * | policyConstraints | POLICY_CONSTRAINTS |
 * | cRLDistributionPoints, freshestCRL | CRL_DIST_POINTS |
 * | issuingDistributionPoint | issuing_DIST_POINT |
 * | authorityInfoAccess, subjectInfoAccess | AUTHORITY_INFO_ACCESS |
 *
 * Every record type T of these headers has the same operations:
 *
 * - new_T() makes an empty record, in which pointers are null and numbers 0; null when memory runs out.
 * - clean_T() frees the members and empties the record; free_T() frees the record too. Both ignore null.
 * - dup_T() copies a record with everything in it; null for null and when memory runs out.
 * - Seq_to_T() decodes a node, which has to hold a complete element. When *out is null it receives a new
 * record, freed with free_T(); on failure it stays null. A record that *out points to is filled instead: old
 * members are freed, and those that the node does not have become null or 0. On failure it is filled as far
 * as decoding got. The results are 0 and the statuses listed with each type, whose reason is 0x0049 for a
 * null argument, 0x002B for a wrong number of children, and 0x0104 for a child that is missing, misplaced, of
 * the wrong type or cannot be read, and when memory runs out. A node that is not started has no children. So
 * has, for a count, one with a child of a universal type that decodeToDER() does not know.
 * - T_to_Seq() encodes a record in DER. *out receives a new node, freed with free_ASN1_UNIT(), whatever it
 * holds before; on failure nothing changes. The results are 0 and the statuses listed, whose
 * reason is 0x0049 for a null argument and 0x0103 for a member that is missing or cannot be encoded, and when
 * memory runs out.
 *
 * A list type has, in place of members, items that it owns. Seq_to_ replaces the items of a caller's list,
 * which is unchanged on failure; a list that must not be empty gives the reason 0x002B in both directions.
 * And it has:
 *
 * - get_T_count(), the number of items; 0 for null.
 * - get_T_child(), the item at a zero-based index, which stays the list's; null when there is none.
 * - add_T_child() inserts a copy of an item before index, or appends it when index is below 0 or above the
 * count; 0, or 1 for a null argument and when memory runs out (the list is unchanged then).
 * - remove_T_child() takes the item at an index out and returns it, the caller's to free; null when there is
 * none.
 *
 * DER that these decoders accept is encoded again to the same octets, but for what their own texts say, for
 * numbers below 0, which are read as unsigned, and for names, of whose relative distinguished names only the
 * first type and value is kept.
 *
 * Every function may be called from any thread, on distinct objects at the same time; functions that take
 * const objects may share them.
 */
#ifndef TLXPKI_X509V3_H
#define TLXPKI_X509V3_H

#include <tlxpki/general_name.h>
#include <tlxpki/kisa_identity.h>
#include <tlxpki/wincrypt.h>
#include <tlxpki/x509v3_constraints.h>
#include <tlxpki/x509v3_distribution.h>
#include <tlxpki/x509v3_key.h>
#include <tlxpki/x509v3_policy.h>

TLX_BEGIN_DECLS

/**
 * Decodes the value of an extension, which has to be one element and nothing else.
 * @param extension the extension
 * @param decoder   the Seq_to_ function of its record, converted with TLX_DECODER
 * @param out       address of the record's pointer, handed to the decoder
 * @return 0
 * @return 0x473E0049 when an argument is null or the extension has no value
 * @return 0x473E004F when the value is not one complete element
 * @return 0x473E003C when memory runs out
 * @return what the decoder returns otherwise
 */
TLXPKI_API uint32_t decode_X509_EXTENSION(const X509_EXTENSION *extension, ASN1_DECODER decoder, void **out);

/**
 * Finds an extension in a list and decodes its value:
 * @code
 *   BASIC_CONSTRAINTS *constraints = NULL;
 *   uint32_t status = decode_X509_EXTENSION_by_OID_index(
 *       certificate->tbsCertificate->extensions, TLX_OID_BASIC_CONSTRAINTS,
 *       TLX_DECODER(Seq_to_BASIC_CONSTRAINTS), (void **)&constraints);
 * @endcode
 * @param extensions the list; null counts as empty
 * @param oid        which extension; of several the first is taken
 * @param decoder,out as for decode_X509_EXTENSION()
 * @return as decode_X509_EXTENSION()
 * @return 0x473F0049 when oid, decoder or out is null
 * @return 0x473F0047 when the extension is not there
 */
TLXPKI_API uint32_t decode_X509_EXTENSION_by_OID(const X509_EXTENSIONS *extensions,
                                                 const OBJECT_IDENTIFIER *oid, ASN1_DECODER decoder,
                                                 void **out);

/**
 * decode_X509_EXTENSION_by_OID() with a row of the registry of object identifiers.
 * @param extensions,decoder,out as there
 * @param oid_index the row
 * @return as there, with 0x473F0047 also for a row without an identifier
 */
TLXPKI_API uint32_t decode_X509_EXTENSION_by_OID_index(const X509_EXTENSIONS *extensions, int32_t oid_index,
                                                       ASN1_DECODER decoder, void **out);

/**
 * Makes or fills an extension from a record.
 * @param extension may be null. An extension that *extension points to is filled, its old members freed; when
 *                  *extension is null it receives the new extension
 * @param oid       the identifier; copied
 * @param critical  0 for not critical; any other octet means critical
 * @param record    the value
 * @param encoder   the _to_Seq function of the record's type, converted with TLX_ENCODER
 * @return the extension. A new one is freed with free_X509_EXTENSION()
 * @return null for a null oid, record or encoder, a record that cannot be encoded, and when memory runs out;
 * a given extension is unchanged then
 */
TLXPKI_API X509_EXTENSION *create_X509_EXTENSION_record_by_OID(X509_EXTENSION **extension,
                                                               const OBJECT_IDENTIFIER *oid, uint8_t critical,
                                                               const void *record, ASN1_ENCODER encoder);

/**
 * create_X509_EXTENSION_record_by_OID() with a row of the registry of object identifiers.
 * @param extension,critical,record,encoder as there
 * @param oid_index the row
 * @return as there; null also for a row without an identifier
 */
TLXPKI_API X509_EXTENSION *create_X509_EXTENSION_record_by_OID_index(X509_EXTENSION **extension,
                                                                     int32_t oid_index, uint8_t critical,
                                                                     const void *record,
                                                                     ASN1_ENCODER encoder);

TLX_END_DECLS

#endif
