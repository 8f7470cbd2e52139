/** @file
 * Values of the attributes that signers of CMS messages have: which certificate is theirs (RFC 5035), and
 * which algorithms they use (RFC 6211). What <tlxpki/cms.h> says of decoding and encoding also holds here.
 *
 * The decoder takes a value of the attribute as it is, get_X509_ATTRIBUTE_data(attribute, 0):
 *
 * | attribute                                       | record                     |
 * |-------------------------------------------------|----------------------------|
 * | 1.2.840.113549.1.9.16.2.12 signingCertificate   | CMS_SIGNING_CERTIFICATE    |
 * | 1.2.840.113549.1.9.16.2.47 signingCertificateV2 | CMS_SIGNING_CERTIFICATE_V2 |
 * | 1.2.840.113549.1.9.52 CMSAlgorithmProtect       | CMS_ALGORITHM_PROTECTION   |
 * | 1.2.840.113549.1.9.16.2.14 timeStampToken       | CMS_CONTENT_INFO           |
 * | 1.2.840.113549.1.9.6 countersignature           | CMS_SIGNER_INFO            |
 */
/* Before the guard, because <windows.h> may have defined its macros since. */
#include <tlxpki/wincrypt.h>

#ifndef TLXPKI_CMS_ATTRIBUTE_H
#define TLXPKI_CMS_ATTRIBUTE_H

#include <tlxpki/cms_types.h>
#include <tlxpki/x509v3.h>
#include <tlxpki/x509v3_policy.h>

TLX_BEGIN_DECLS

/** IssuerSerial. */
typedef struct CMS_ISSUER_SERIAL {
    GENERAL_NAMES *issuer; /**< one directoryName, for a certificate */
    BIGINT *serialNumber;
} CMS_ISSUER_SERIAL;

/** ESSCertID: a certificate by its SHA-1 digest. */
typedef struct CMS_ESS_CERT_ID {
    OCTET_STRING *certHash;          /**< digest of the whole certificate */
    CMS_ISSUER_SERIAL *issuerSerial; /**< optional */
} CMS_ESS_CERT_ID;

/** CMS_ESS_CERT_ID entries. */
typedef STACK CMS_ESS_CERT_IDS;

/** ESSCertIDv2: a certificate by any digest. */
typedef struct CMS_ESS_CERT_ID_V2 {
    X509_ALGO_IDENTIFIER *hashAlgorithm; /**< null for SHA-256, the default, which DER leaves out */
    OCTET_STRING *certHash;              /**< digest of the whole certificate */
    CMS_ISSUER_SERIAL *issuerSerial;     /**< optional */
} CMS_ESS_CERT_ID_V2;

/** CMS_ESS_CERT_ID_V2 entries. */
typedef STACK CMS_ESS_CERT_IDS_V2;

/** SigningCertificate. */
typedef struct CMS_SIGNING_CERTIFICATE {
    CMS_ESS_CERT_IDS *certs;        /**< the first names the signer's certificate */
    CERTIFICATE_POLICIES *policies; /**< optional */
} CMS_SIGNING_CERTIFICATE;

/** SigningCertificateV2. */
typedef struct CMS_SIGNING_CERTIFICATE_V2 {
    CMS_ESS_CERT_IDS_V2 *certs;     /**< the first names the signer's certificate */
    CERTIFICATE_POLICIES *policies; /**< optional */
} CMS_SIGNING_CERTIFICATE_V2;

/** CMSAlgorithmProtection: of a signer with signatureAlgorithm, of authenticated data with macAlgorithm. */
typedef struct CMS_ALGORITHM_PROTECTION {
    X509_ALGO_IDENTIFIER *digestAlgorithm;
    X509_ALGO_IDENTIFIER *signatureAlgorithm; /**< or null */
    X509_ALGO_IDENTIFIER *macAlgorithm;       /**< or null */
} CMS_ALGORITHM_PROTECTION;

/**
 * CMS_ISSUER_SERIAL.
 * - Decoder: 0x52420049 null argument; 0x5242002B not exactly two children; 0x52420104 otherwise.
 * - Encoder: 0x52410049 null argument; 0x52410103 a member is missing or cannot be encoded.
 * @{
 */
TLXPKI_API CMS_ISSUER_SERIAL *new_CMS_ISSUER_SERIAL(void);
TLXPKI_API void clean_CMS_ISSUER_SERIAL(CMS_ISSUER_SERIAL *serial);
TLXPKI_API void free_CMS_ISSUER_SERIAL(CMS_ISSUER_SERIAL *serial);
TLXPKI_API CMS_ISSUER_SERIAL *dup_CMS_ISSUER_SERIAL(const CMS_ISSUER_SERIAL *serial);
TLXPKI_API uint32_t Seq_to_CMS_ISSUER_SERIAL(const ASN1_UNIT *node, CMS_ISSUER_SERIAL **out);
TLXPKI_API uint32_t CMS_ISSUER_SERIAL_to_Seq(const CMS_ISSUER_SERIAL *serial, ASN1_UNIT **out);
/** @} */

/**
 * CMS_ESS_CERT_ID.
 * - Decoder: 0x52440049 null argument; 0x5244002B neither one child nor two; 0x52440104 otherwise.
 * - Encoder: 0x52430049 null argument; 0x52430103 certHash is missing.
 * @{
 */
TLXPKI_API CMS_ESS_CERT_ID *new_CMS_ESS_CERT_ID(void);
TLXPKI_API void clean_CMS_ESS_CERT_ID(CMS_ESS_CERT_ID *id);
TLXPKI_API void free_CMS_ESS_CERT_ID(CMS_ESS_CERT_ID *id);
TLXPKI_API CMS_ESS_CERT_ID *dup_CMS_ESS_CERT_ID(const CMS_ESS_CERT_ID *id);
TLXPKI_API uint32_t Seq_to_CMS_ESS_CERT_ID(const ASN1_UNIT *node, CMS_ESS_CERT_ID **out);
TLXPKI_API uint32_t CMS_ESS_CERT_ID_to_Seq(const CMS_ESS_CERT_ID *id, ASN1_UNIT **out);
/** @} */

/**
 * CMS_ESS_CERT_IDS: a list of CMS_ESS_CERT_ID, which may be empty.
 * - Decoder: 0x52460049 null argument; 0x52460104 a child is no SEQUENCE.
 * - Encoder: 0x52450049 null argument; 0x52450103 an item is missing.
 * @{
 */
TLXPKI_API CMS_ESS_CERT_IDS *new_CMS_ESS_CERT_IDS(void);
TLXPKI_API void clean_CMS_ESS_CERT_IDS(CMS_ESS_CERT_IDS *ids);
TLXPKI_API void free_CMS_ESS_CERT_IDS(CMS_ESS_CERT_IDS *ids);
TLXPKI_API CMS_ESS_CERT_IDS *dup_CMS_ESS_CERT_IDS(const CMS_ESS_CERT_IDS *ids);
TLXPKI_API uint32_t Seq_to_CMS_ESS_CERT_IDS(const ASN1_UNIT *node, CMS_ESS_CERT_IDS **out);
TLXPKI_API uint32_t CMS_ESS_CERT_IDS_to_Seq(const CMS_ESS_CERT_IDS *ids, ASN1_UNIT **out);
TLXPKI_API uint32_t get_CMS_ESS_CERT_IDS_count(const CMS_ESS_CERT_IDS *ids);
TLXPKI_API CMS_ESS_CERT_ID *get_CMS_ESS_CERT_IDS_child(const CMS_ESS_CERT_IDS *ids, int32_t index);
TLXPKI_API uint32_t add_CMS_ESS_CERT_IDS_child(CMS_ESS_CERT_IDS *ids, const CMS_ESS_CERT_ID *id,
                                               int32_t index);
TLXPKI_API CMS_ESS_CERT_ID *remove_CMS_ESS_CERT_IDS_child(CMS_ESS_CERT_IDS *ids, int32_t index);
/** @} */

/**
 * CMS_ESS_CERT_ID_V2.
 * - Decoder: 0x52480049 null argument; 0x5248002B fewer than one child or more than three; 0x52480104
 * otherwise.
 * - Encoder: 0x52470049 null argument; 0x52470103 certHash is missing.
 * @{
 */
TLXPKI_API CMS_ESS_CERT_ID_V2 *new_CMS_ESS_CERT_ID_V2(void);
TLXPKI_API void clean_CMS_ESS_CERT_ID_V2(CMS_ESS_CERT_ID_V2 *id);
TLXPKI_API void free_CMS_ESS_CERT_ID_V2(CMS_ESS_CERT_ID_V2 *id);
TLXPKI_API CMS_ESS_CERT_ID_V2 *dup_CMS_ESS_CERT_ID_V2(const CMS_ESS_CERT_ID_V2 *id);
TLXPKI_API uint32_t Seq_to_CMS_ESS_CERT_ID_V2(const ASN1_UNIT *node, CMS_ESS_CERT_ID_V2 **out);
TLXPKI_API uint32_t CMS_ESS_CERT_ID_V2_to_Seq(const CMS_ESS_CERT_ID_V2 *id, ASN1_UNIT **out);
/** @} */

/**
 * CMS_ESS_CERT_IDS_V2: a list of CMS_ESS_CERT_ID_V2, which may be empty.
 * - Decoder: 0x524A0049 null argument; 0x524A0104 a child is no SEQUENCE.
 * - Encoder: 0x52490049 null argument; 0x52490103 an item is missing.
 * @{
 */
TLXPKI_API CMS_ESS_CERT_IDS_V2 *new_CMS_ESS_CERT_IDS_V2(void);
TLXPKI_API void clean_CMS_ESS_CERT_IDS_V2(CMS_ESS_CERT_IDS_V2 *ids);
TLXPKI_API void free_CMS_ESS_CERT_IDS_V2(CMS_ESS_CERT_IDS_V2 *ids);
TLXPKI_API CMS_ESS_CERT_IDS_V2 *dup_CMS_ESS_CERT_IDS_V2(const CMS_ESS_CERT_IDS_V2 *ids);
TLXPKI_API uint32_t Seq_to_CMS_ESS_CERT_IDS_V2(const ASN1_UNIT *node, CMS_ESS_CERT_IDS_V2 **out);
TLXPKI_API uint32_t CMS_ESS_CERT_IDS_V2_to_Seq(const CMS_ESS_CERT_IDS_V2 *ids, ASN1_UNIT **out);
TLXPKI_API uint32_t get_CMS_ESS_CERT_IDS_V2_count(const CMS_ESS_CERT_IDS_V2 *ids);
TLXPKI_API CMS_ESS_CERT_ID_V2 *get_CMS_ESS_CERT_IDS_V2_child(const CMS_ESS_CERT_IDS_V2 *ids, int32_t index);
TLXPKI_API uint32_t add_CMS_ESS_CERT_IDS_V2_child(CMS_ESS_CERT_IDS_V2 *ids, const CMS_ESS_CERT_ID_V2 *id,
                                                  int32_t index);
TLXPKI_API CMS_ESS_CERT_ID_V2 *remove_CMS_ESS_CERT_IDS_V2_child(CMS_ESS_CERT_IDS_V2 *ids, int32_t index);
/** @} */

/**
 * CMS_SIGNING_CERTIFICATE.
 * - Decoder: 0x524C0049 null argument; 0x524C002B neither one child nor two; 0x524C0104 otherwise.
 * - Encoder: 0x524B0049 null argument; 0x524B0103 certs is missing, or policies cannot be encoded.
 * @{
 */
TLXPKI_API CMS_SIGNING_CERTIFICATE *new_CMS_SIGNING_CERTIFICATE(void);
TLXPKI_API void clean_CMS_SIGNING_CERTIFICATE(CMS_SIGNING_CERTIFICATE *certificate);
TLXPKI_API void free_CMS_SIGNING_CERTIFICATE(CMS_SIGNING_CERTIFICATE *certificate);
TLXPKI_API CMS_SIGNING_CERTIFICATE *dup_CMS_SIGNING_CERTIFICATE(const CMS_SIGNING_CERTIFICATE *certificate);
TLXPKI_API uint32_t Seq_to_CMS_SIGNING_CERTIFICATE(const ASN1_UNIT *node, CMS_SIGNING_CERTIFICATE **out);
TLXPKI_API uint32_t CMS_SIGNING_CERTIFICATE_to_Seq(const CMS_SIGNING_CERTIFICATE *certificate,
                                                   ASN1_UNIT **out);
/** @} */

/**
 * CMS_SIGNING_CERTIFICATE_V2.
 * - Decoder: 0x524E0049 null argument; 0x524E002B neither one child nor two; 0x524E0104 otherwise.
 * - Encoder: 0x524D0049 null argument; 0x524D0103 certs is missing, or policies cannot be encoded.
 * @{
 */
TLXPKI_API CMS_SIGNING_CERTIFICATE_V2 *new_CMS_SIGNING_CERTIFICATE_V2(void);
TLXPKI_API void clean_CMS_SIGNING_CERTIFICATE_V2(CMS_SIGNING_CERTIFICATE_V2 *certificate);
TLXPKI_API void free_CMS_SIGNING_CERTIFICATE_V2(CMS_SIGNING_CERTIFICATE_V2 *certificate);
TLXPKI_API CMS_SIGNING_CERTIFICATE_V2 *dup_CMS_SIGNING_CERTIFICATE_V2(
    const CMS_SIGNING_CERTIFICATE_V2 *certificate);
TLXPKI_API uint32_t Seq_to_CMS_SIGNING_CERTIFICATE_V2(const ASN1_UNIT *node,
                                                      CMS_SIGNING_CERTIFICATE_V2 **out);
TLXPKI_API uint32_t CMS_SIGNING_CERTIFICATE_V2_to_Seq(const CMS_SIGNING_CERTIFICATE_V2 *certificate,
                                                      ASN1_UNIT **out);
/** @} */

/**
 * CMS_ALGORITHM_PROTECTION.
 * - Decoder: 0x52500049 null argument; 0x5250002B not exactly two children; 0x52500104 otherwise.
 * - Encoder: 0x524F0049 null argument; 0x524F0103 digestAlgorithm is missing, or the record has both of the
 * others or none.
 * @{
 */
TLXPKI_API CMS_ALGORITHM_PROTECTION *new_CMS_ALGORITHM_PROTECTION(void);
TLXPKI_API void clean_CMS_ALGORITHM_PROTECTION(CMS_ALGORITHM_PROTECTION *protection);
TLXPKI_API void free_CMS_ALGORITHM_PROTECTION(CMS_ALGORITHM_PROTECTION *protection);
TLXPKI_API CMS_ALGORITHM_PROTECTION *dup_CMS_ALGORITHM_PROTECTION(const CMS_ALGORITHM_PROTECTION *protection);
TLXPKI_API uint32_t Seq_to_CMS_ALGORITHM_PROTECTION(const ASN1_UNIT *node, CMS_ALGORITHM_PROTECTION **out);
TLXPKI_API uint32_t CMS_ALGORITHM_PROTECTION_to_Seq(const CMS_ALGORITHM_PROTECTION *protection,
                                                    ASN1_UNIT **out);
/** @} */

TLX_END_DECLS

#endif
