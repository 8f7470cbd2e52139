/** @file
 * KISA's signed list of hardware security tokens: which tokens there are, and where their drivers are
 * distributed. The contract of all records is in x509_types.h.
 *
 * What the strings of a driver's entry mean is left to those who publish the list.
 */
#ifndef TLXPKI_TOKEN_LIST_H
#define TLXPKI_TOKEN_LIST_H

#include <tlxpki/general_name.h>
#include <tlxpki/pkcs7_types.h>

TLX_BEGIN_DECLS

/** A token, and the digest by which it is known. */
typedef struct KISA_HSM_SIGNATURE_TOKEN {
    PRINTABLE_STRING *name;
    X509_ALGO_IDENTIFIER *digestAlgorithm;
    OCTET_STRING *digest;
} KISA_HSM_SIGNATURE_TOKEN;

/** A driver. The general names are never null after new_ and clean_, which make empty ones. */
typedef struct KISA_HSM_DRIVER_INFO {
    PRINTABLE_STRING *string1;
    PRINTABLE_STRING *string2;
    GENERAL_NAME *name1;
    BIGINT *number;
    GENERAL_NAME *name2;
    PRINTABLE_STRING *string3; /**< optional */
} KISA_HSM_DRIVER_INFO;

/** Where drivers are distributed. */
typedef struct KISA_HSM_TOKEN_DISTRIBUTION_URL {
    IA5_STRING *url;
    STACK *drivers; /**< KISA_HSM_DRIVER_INFO entries */
} KISA_HSM_TOKEN_DISTRIBUTION_URL;

enum { TLX_HSM_SIGNATURE_BIT_STRING = 1, TLX_HSM_SIGNATURE_OCTET_STRING = 2 };

/** The signed list. */
typedef struct KISA_HSM_SIGNATURE_VALUE {
    uint32_t kind;            /**< the type of the signature, TLX_HSM_SIGNATURE_... */
    OCTET_STRING *signedPart; /**< the element that is signed, as it was received; null writes the tokens and
                                 URLs */
    STACK *tokens;            /**< KISA_HSM_SIGNATURE_TOKEN entries */
    STACK *urls;              /**< KISA_HSM_TOKEN_DISTRIBUTION_URL entries */
    X509_ALGO_IDENTIFIER *signatureAlgorithm;
    P7_ISSUER_AND_SERIAL_NUMBER *signer;
    ASN1_STRING *signature; /**< a BIT STRING or an OCTET STRING by kind */
} KISA_HSM_SIGNATURE_VALUE;

/**
 * KISA_HSM_SIGNATURE_VALUE.
 * - Decoder: 0x30010049 null argument; 0x3001002B not exactly four children; 0x30010104 otherwise.
 * - Encoder: 0x30030049 null argument; 0x30030103 a member is missing, or the kind is unknown.
 * @{
 */
TLXPKI_API KISA_HSM_SIGNATURE_VALUE *new_KISA_HSM_SIGNATURE_VALUE(void);
TLXPKI_API void clean_KISA_HSM_SIGNATURE_VALUE(KISA_HSM_SIGNATURE_VALUE *value);
TLXPKI_API void free_KISA_HSM_SIGNATURE_VALUE(KISA_HSM_SIGNATURE_VALUE *value);
TLXPKI_API KISA_HSM_SIGNATURE_VALUE *dup_KISA_HSM_SIGNATURE_VALUE(const KISA_HSM_SIGNATURE_VALUE *value);
TLXPKI_API uint32_t Seq_to_KISA_HSM_SIGNATURE_VALUE(const ASN1_UNIT *node, KISA_HSM_SIGNATURE_VALUE **out);
TLXPKI_API uint32_t KISA_HSM_SIGNATURE_VALUE_to_Seq(const KISA_HSM_SIGNATURE_VALUE *value, ASN1_UNIT **out);
/** @} */

/**
 * Verifies the signature of a list with RSASSA-PKCS1-v1_5 and SHA-1, whatever signatureAlgorithm says. It
 * does not check the certificate, nor whether that is the one which signer names: the caller has to know
 * whose it is (cmp_P7_ISSUER_AND_SERIAL_NUMBER(), validate_certpath()). SHA-1 no longer proves that the list
 * is what the signer saw, when somebody else may have chosen parts of it.
 * @param cert the signer's certificate
 * @return 0 when the signature is good; 0x30020049 for a null argument; 0x30020010 when signedPart is missing
 * or empty; 0x30020011 when the signature is missing; 0x3002002B for a certificate without a public key that
 * was decoded; 0x30020029 for a key that is not RSA; otherwise the status of verify_RSA() unchanged, such as
 * TLX_RSA_BAD_SIGNATURE
 */
TLXPKI_API uint32_t verify_KISA_HSM_SIGNATURE_VALUE(const KISA_HSM_SIGNATURE_VALUE *value,
                                                    const X509_CERT *cert);

/**
 * KISA_HSM_SIGNATURE_TOKEN.
 * - Decoder: 0x30040049 null argument; 0x3004002B not exactly three children; 0x30040104 otherwise.
 * - Encoder: 0x30050049 null argument; 0x30050103 a member is missing.
 * @{
 */
TLXPKI_API KISA_HSM_SIGNATURE_TOKEN *new_KISA_HSM_SIGNATURE_TOKEN(void);
TLXPKI_API void clean_KISA_HSM_SIGNATURE_TOKEN(KISA_HSM_SIGNATURE_TOKEN *token);
TLXPKI_API void free_KISA_HSM_SIGNATURE_TOKEN(KISA_HSM_SIGNATURE_TOKEN *token);
TLXPKI_API KISA_HSM_SIGNATURE_TOKEN *dup_KISA_HSM_SIGNATURE_TOKEN(const KISA_HSM_SIGNATURE_TOKEN *token);
TLXPKI_API uint32_t Seq_to_KISA_HSM_SIGNATURE_TOKEN(const ASN1_UNIT *node, KISA_HSM_SIGNATURE_TOKEN **out);
TLXPKI_API uint32_t KISA_HSM_SIGNATURE_TOKEN_to_Seq(const KISA_HSM_SIGNATURE_TOKEN *token, ASN1_UNIT **out);
/** @} */

/**
 * KISA_HSM_TOKEN_DISTRIBUTION_URL.
 * - Decoder: 0x30060049 null argument; 0x3006002B not exactly two children; 0x30060104 otherwise.
 * - Encoder: 0x30070049 null argument; 0x30070103 a member is missing.
 * @{
 */
TLXPKI_API KISA_HSM_TOKEN_DISTRIBUTION_URL *new_KISA_HSM_TOKEN_DISTRIBUTION_URL(void);
TLXPKI_API void clean_KISA_HSM_TOKEN_DISTRIBUTION_URL(KISA_HSM_TOKEN_DISTRIBUTION_URL *url);
TLXPKI_API void free_KISA_HSM_TOKEN_DISTRIBUTION_URL(KISA_HSM_TOKEN_DISTRIBUTION_URL *url);
TLXPKI_API KISA_HSM_TOKEN_DISTRIBUTION_URL *dup_KISA_HSM_TOKEN_DISTRIBUTION_URL(
    const KISA_HSM_TOKEN_DISTRIBUTION_URL *url);
TLXPKI_API uint32_t Seq_to_KISA_HSM_TOKEN_DISTRIBUTION_URL(const ASN1_UNIT *node,
                                                           KISA_HSM_TOKEN_DISTRIBUTION_URL **out);
TLXPKI_API uint32_t KISA_HSM_TOKEN_DISTRIBUTION_URL_to_Seq(const KISA_HSM_TOKEN_DISTRIBUTION_URL *url,
                                                           ASN1_UNIT **out);
/** @} */

/**
 * KISA_HSM_DRIVER_INFO.
 * - Decoder: 0x30080049 null argument; 0x3008002B neither five children nor six; 0x30080104 otherwise.
 * - Encoder: 0x30090049 null argument; 0x30090103 a member that is not optional is missing or empty.
 * - new_ and clean_ make empty general names; those of clean_ are null when memory runs out.
 * @{
 */
TLXPKI_API KISA_HSM_DRIVER_INFO *new_KISA_HSM_DRIVER_INFO(void);
TLXPKI_API void clean_KISA_HSM_DRIVER_INFO(KISA_HSM_DRIVER_INFO *driver);
TLXPKI_API void free_KISA_HSM_DRIVER_INFO(KISA_HSM_DRIVER_INFO *driver);
TLXPKI_API KISA_HSM_DRIVER_INFO *dup_KISA_HSM_DRIVER_INFO(const KISA_HSM_DRIVER_INFO *driver);
TLXPKI_API uint32_t Seq_to_KISA_HSM_DRIVER_INFO(const ASN1_UNIT *node, KISA_HSM_DRIVER_INFO **out);
TLXPKI_API uint32_t KISA_HSM_DRIVER_INFO_to_Seq(const KISA_HSM_DRIVER_INFO *driver, ASN1_UNIT **out);
/** @} */

TLX_END_DECLS

#endif
