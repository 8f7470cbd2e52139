/** @file
 * Certificate trust lists: what a trust authority publishes of the certificates that it trusts. The contract
 * of all records is in x509_types.h; <tlxpki/trust_list_import.h> takes certificates out of a signed list.
 *
 * A list names its certificates by their digests. The certificates themselves are in the signed data (PKCS
 * #7) that carries the list as content of the type "kisa-ctl" (1.3.6.1.4.1.311.10.1).
 */
#ifndef TLXPKI_TRUST_LIST_H
#define TLXPKI_TRUST_LIST_H

#include <tlxpki/x509_types.h>

TLX_BEGIN_DECLS

/** TrustedSubject: one certificate of a trust list. */
typedef struct TRUSTED_CERTIFICATE {
    OCTET_STRING *subjectIdentifier; /**< the digest of the certificate by the list's subjectAlgorithm */
    X509_ATTRIBUTES *attributes;     /**< optional; may be empty */
} TRUSTED_CERTIFICATE;

/** TRUSTED_CERTIFICATE entries. */
typedef STACK TRUSTED_SUBJECTS;

/** CertificateTrustList. It owns its members. */
typedef struct CERT_TRUST_LIST {
    BIGINT *version;                  /**< optional */
    OBJECT_IDENTIFIERS *subjectUsage; /**< what the certificates are trusted for */
    BIGINT *sequenceNumber;
    X509_TIME *thisUpdate;
    X509_TIME *nextUpdate;
    X509_ALGO_IDENTIFIER *subjectAlgorithm; /**< the digest of the subjects' identifiers */
    TRUSTED_SUBJECTS *trustedSubjects;
    X509_EXTENSIONS *extensions; /**< optional */
} CERT_TRUST_LIST;

/**
 * CERT_TRUST_LIST.
 * - Decoder: a version is in [0], and any constructed element may be around the extensions. 0x54020049 null
 * argument; 0x5402002B fewer than six children or more than eight; 0x54020104 otherwise.
 * - Encoder: the extensions are in [0], as the version is. 0x54010049 null argument; 0x54010103 a member that
 * is not optional is missing, or one cannot be encoded.
 * @{
 */
TLXPKI_API CERT_TRUST_LIST *new_CERT_TRUST_LIST(void);
TLXPKI_API void clean_CERT_TRUST_LIST(CERT_TRUST_LIST *list);
TLXPKI_API void free_CERT_TRUST_LIST(CERT_TRUST_LIST *list);
TLXPKI_API CERT_TRUST_LIST *dup_CERT_TRUST_LIST(const CERT_TRUST_LIST *list);
TLXPKI_API uint32_t Seq_to_CERT_TRUST_LIST(const ASN1_UNIT *node, CERT_TRUST_LIST **out);
TLXPKI_API uint32_t CERT_TRUST_LIST_to_Seq(const CERT_TRUST_LIST *list, ASN1_UNIT **out);
/** @} */

/**
 * TRUSTED_SUBJECTS: a list of TRUSTED_CERTIFICATE, which may be empty.
 * - Decoder: 0x54040049 null argument; 0x54040104 a child is no TrustedSubject.
 * - Encoder: 0x54030049 null argument; 0x54030103 a subject is missing or cannot be encoded.
 * @{
 */
TLXPKI_API TRUSTED_SUBJECTS *new_TRUSTED_SUBJECTS(void);
TLXPKI_API void clean_TRUSTED_SUBJECTS(TRUSTED_SUBJECTS *subjects);
TLXPKI_API void free_TRUSTED_SUBJECTS(TRUSTED_SUBJECTS *subjects);
TLXPKI_API TRUSTED_SUBJECTS *dup_TRUSTED_SUBJECTS(const TRUSTED_SUBJECTS *subjects);
TLXPKI_API uint32_t Seq_to_TRUSTED_SUBJECTS(const ASN1_UNIT *node, TRUSTED_SUBJECTS **out);
TLXPKI_API uint32_t TRUSTED_SUBJECTS_to_Seq(const TRUSTED_SUBJECTS *subjects, ASN1_UNIT **out);
TLXPKI_API uint32_t get_TRUSTED_SUBJECTS_count(const TRUSTED_SUBJECTS *subjects);
TLXPKI_API TRUSTED_CERTIFICATE *get_TRUSTED_SUBJECTS_child(const TRUSTED_SUBJECTS *subjects, int32_t index);
TLXPKI_API uint32_t add_TRUSTED_SUBJECTS_child(TRUSTED_SUBJECTS *subjects, const TRUSTED_CERTIFICATE *subject,
                                               int32_t index);
TLXPKI_API TRUSTED_CERTIFICATE *remove_TRUSTED_SUBJECTS_child(TRUSTED_SUBJECTS *subjects, int32_t index);
/** @} */

/**
 * TRUSTED_CERTIFICATE.
 * - Decoder: 0x54060049 null argument; 0x5406002B neither one child nor two; 0x54060104 otherwise.
 * - Encoder: 0x54050049 null argument; 0x54050103 subjectIdentifier is missing, or an attribute cannot be
 * encoded.
 * @{
 */
TLXPKI_API TRUSTED_CERTIFICATE *new_TRUSTED_CERTIFICATE(void);
TLXPKI_API void clean_TRUSTED_CERTIFICATE(TRUSTED_CERTIFICATE *subject);
TLXPKI_API void free_TRUSTED_CERTIFICATE(TRUSTED_CERTIFICATE *subject);
TLXPKI_API TRUSTED_CERTIFICATE *dup_TRUSTED_CERTIFICATE(const TRUSTED_CERTIFICATE *subject);
TLXPKI_API uint32_t Seq_to_TRUSTED_CERTIFICATE(const ASN1_UNIT *node, TRUSTED_CERTIFICATE **out);
TLXPKI_API uint32_t TRUSTED_CERTIFICATE_to_Seq(const TRUSTED_CERTIFICATE *subject, ASN1_UNIT **out);
/** @} */

TLX_END_DECLS

#endif
