/** @file
 * Certificate revocation lists (CertificateList, RFC 5280, section 5.1) as messages carry them. The contract
 * of all records is in x509_types.h.
 *
 * A list is held as the octets that it was decoded from, and written back as these. Its entries cannot be
 * read yet.
 */
#ifndef TLXPKI_X509_CRL_H
#define TLXPKI_X509_CRL_H

#include <tlxpki/x509_types.h>

TLX_BEGIN_DECLS

/** A certificate revocation list. */
typedef struct X509_CRL {
    struct TLX_RECEIVED *received; /**< the octets that the decoder was given; null in a new one; owned */
} X509_CRL;

/** X509_CRL entries. */
typedef STACK X509_CRLS;

/**
 * X509_CRL.
 * - Decoder: keeps the element as it is. 0x48020049 null argument; 0x4802002B not exactly three children;
 * 0x48020104 the children are not SEQUENCE, SEQUENCE and BIT STRING.
 * - Encoder: writes the octets that were decoded. 0x48010049 null argument; 0x48010103 there are none.
 * @{
 */
TLXPKI_API X509_CRL *new_X509_CRL(void);
TLXPKI_API void clean_X509_CRL(X509_CRL *crl);
TLXPKI_API void free_X509_CRL(X509_CRL *crl);
TLXPKI_API X509_CRL *dup_X509_CRL(const X509_CRL *crl);
TLXPKI_API uint32_t Seq_to_X509_CRL(const ASN1_UNIT *node, X509_CRL **out);
TLXPKI_API uint32_t X509_CRL_to_Seq(const X509_CRL *crl, ASN1_UNIT **out);
/** @} */

/**
 * X509_CRLS: a list of X509_CRL, which may be empty.
 * - Decoder: reads a SEQUENCE OF or SET OF, whatever the tag of the node. 0x48040049 null argument;
 * 0x48040104 a child is no revocation list.
 * - Encoder: writes a SEQUENCE OF in list order. 0x48030049 null argument; 0x48030103 a revocation list is
 * missing or cannot be encoded.
 * @{
 */
TLXPKI_API X509_CRLS *new_X509_CRLS(void);
TLXPKI_API void clean_X509_CRLS(X509_CRLS *crls);
TLXPKI_API void free_X509_CRLS(X509_CRLS *crls);
TLXPKI_API X509_CRLS *dup_X509_CRLS(const X509_CRLS *crls);
TLXPKI_API uint32_t Seq_to_X509_CRLS(const ASN1_UNIT *node, X509_CRLS **out);
TLXPKI_API uint32_t X509_CRLS_to_Seq(const X509_CRLS *crls, ASN1_UNIT **out);
TLXPKI_API uint32_t get_X509_CRLS_count(const X509_CRLS *crls);
TLXPKI_API X509_CRL *get_X509_CRLS_child(const X509_CRLS *crls, int32_t index);
TLXPKI_API uint32_t add_X509_CRLS_child(X509_CRLS *crls, const X509_CRL *crl, int32_t index);
TLXPKI_API X509_CRL *remove_X509_CRLS_child(X509_CRLS *crls, int32_t index);
/** @} */

TLX_END_DECLS

#endif
