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
 * The contract of all records and lists is in x509_types.h.
 *
 * DER that these decoders accept is encoded again to the same octets, with the exceptions that their own
 * texts name, and two more: numbers below 0 are read as unsigned, and of a relative distinguished name only
 * the first type and value is kept.
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
 * @param decoder the Seq_to_ function of its record, converted with TLX_DECODER
 * @param out     address of the record's pointer, which the decoder fills
 * @return 0; 0x473E0049 when an argument is null or the extension has no value; 0x473E004F when the value is
 * not one complete element; 0x473E003C when memory runs out; otherwise the decoder's status
 */
TLXPKI_API uint32_t decode_X509_EXTENSION(const X509_EXTENSION *extension, ASN1_DECODER decoder, void **out);

/**
 * Finds the first extension with an identifier in a list and decodes its value:
 * @code
 *   BASIC_CONSTRAINTS *constraints = NULL;
 *   uint32_t status = decode_X509_EXTENSION_by_OID_index(
 *       certificate->tbsCertificate->extensions, TLX_OID_BASIC_CONSTRAINTS,
 *       TLX_DECODER(Seq_to_BASIC_CONSTRAINTS), (void **)&constraints);
 * @endcode
 * @param extensions  the list; null counts as empty
 * @param decoder,out as for decode_X509_EXTENSION()
 * @return a status of decode_X509_EXTENSION(); 0x473F0049 when oid, decoder or out is null; 0x473F0047 when
 * the list lacks the extension
 */
TLXPKI_API uint32_t decode_X509_EXTENSION_by_OID(const X509_EXTENSIONS *extensions,
                                                 const OBJECT_IDENTIFIER *oid, ASN1_DECODER decoder,
                                                 void **out);
/** decode_X509_EXTENSION_by_OID() with a row of the registry. A row without an identifier also gives
 * 0x473F0047. */
TLXPKI_API uint32_t decode_X509_EXTENSION_by_OID_index(const X509_EXTENSIONS *extensions, int32_t oid_index,
                                                       ASN1_DECODER decoder, void **out);

/**
 * Makes or fills an extension from a record.
 * @param extension may be null. An extension that *extension points to is filled, its old members freed; a
 * null *extension receives the new one
 * @param critical  0 for not critical; any other octet means critical
 * @param record    the value
 * @param encoder   the _to_Seq function of the record's type, converted with TLX_ENCODER
 * @return the extension, freed with free_X509_EXTENSION() when it is new; null for a null oid, record or
 * encoder, a record that cannot be encoded, and when memory runs out (a given extension is unchanged then)
 */
TLXPKI_API X509_EXTENSION *create_X509_EXTENSION_record_by_OID(X509_EXTENSION **extension,
                                                               const OBJECT_IDENTIFIER *oid, uint8_t critical,
                                                               const void *record, ASN1_ENCODER encoder);
/** create_X509_EXTENSION_record_by_OID() with a row of the registry. */
TLXPKI_API X509_EXTENSION *create_X509_EXTENSION_record_by_OID_index(X509_EXTENSION **extension,
                                                                     int32_t oid_index, uint8_t critical,
                                                                     const void *record,
                                                                     ASN1_ENCODER encoder);

TLX_END_DECLS

#endif
