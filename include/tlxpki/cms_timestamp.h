/** @file
 * Time stamps (RFC 3161): requests, responses and what a token says. What <tlxpki/cms.h> says of decoding and
 * encoding also holds here.
 *
 * A token is a CMS_CONTENT_INFO with signed data. Its content, of the type 1.2.840.113549.1.9.16.1.4, is the
 * encoding of a CMS_TST_INFO: TLX_READ_DER(CMS_TST_INFO, ...) of the octets of eContent.
 */
/* Before the guard, because <windows.h> may have defined its macros since. */
#include <tlxpki/wincrypt.h>

#ifndef TLXPKI_CMS_TIMESTAMP_H
#define TLXPKI_CMS_TIMESTAMP_H

#include <tlxpki/cms_types.h>
#include <tlxpki/x509v3.h>

TLX_BEGIN_DECLS

/** MessageImprint: the digest that is stamped. */
typedef struct CMS_MESSAGE_IMPRINT {
    X509_ALGO_IDENTIFIER *hashAlgorithm;
    OCTET_STRING *hashedMessage;
} CMS_MESSAGE_IMPRINT;

/** Accuracy: how far the time may be off. A member that is null counts as 0. */
typedef struct CMS_ACCURACY {
    BIGINT *seconds; /**< optional */
    BIGINT *millis;  /**< 1 to 999, optional */
    BIGINT *micros;  /**< 1 to 999, optional */
} CMS_ACCURACY;

/** TSTInfo: what the authority signs. */
typedef struct CMS_TST_INFO {
    uint32_t version; /**< 1 */
    OBJECT_IDENTIFIER *policy;
    CMS_MESSAGE_IMPRINT *messageImprint;
    BIGINT *serialNumber;
    GENERALIZED_TIME *genTime;   /**< may have a fraction of a second */
    CMS_ACCURACY *accuracy;      /**< optional */
    uint8_t ordering;            /**< not 0: all stamps of the authority can be ordered by genTime */
    BIGINT *nonce;               /**< that of the request, optional */
    GENERAL_NAME *tsa;           /**< name of the authority, optional */
    X509_EXTENSIONS *extensions; /**< optional */
} CMS_TST_INFO;

/** TimeStampReq. */
typedef struct CMS_TIMESTAMP_REQUEST {
    uint32_t version; /**< 1 */
    CMS_MESSAGE_IMPRINT *messageImprint;
    OBJECT_IDENTIFIER *reqPolicy; /**< optional */
    BIGINT *nonce;                /**< optional */
    uint8_t certReq;              /**< not 0: the token is to carry the authority's certificate */
    X509_EXTENSIONS *extensions;  /**< optional */
} CMS_TIMESTAMP_REQUEST;

/** PKIStatus. */
enum {
    TLX_TIMESTAMP_GRANTED = 0,
    TLX_TIMESTAMP_GRANTED_WITH_MODS = 1,
    TLX_TIMESTAMP_REJECTION = 2,
    TLX_TIMESTAMP_WAITING = 3,
    TLX_TIMESTAMP_REVOCATION_WARNING = 4,
    TLX_TIMESTAMP_REVOCATION_NOTIFICATION = 5
};

/** PKIStatusInfo. */
typedef struct CMS_PKI_STATUS_INFO {
    uint32_t status;      /**< TLX_TIMESTAMP_GRANTED and its kin */
    STACK *statusString;  /**< UTF8_STRING entries, at least one; optional */
    BIT_STRING *failInfo; /**< PKIFailureInfo, optional */
} CMS_PKI_STATUS_INFO;

/** TimeStampResp. */
typedef struct CMS_TIMESTAMP_RESPONSE {
    CMS_PKI_STATUS_INFO *status;
    CMS_CONTENT_INFO *timeStampToken; /**< optional */
} CMS_TIMESTAMP_RESPONSE;

/**
 * CMS_MESSAGE_IMPRINT.
 * - Decoder: 0x52520049 null argument; 0x5252002B not exactly two children; 0x52520104 otherwise.
 * - Encoder: 0x52510049 null argument; 0x52510103 a member is missing.
 * @{
 */
TLXPKI_API CMS_MESSAGE_IMPRINT *new_CMS_MESSAGE_IMPRINT(void);
TLXPKI_API void clean_CMS_MESSAGE_IMPRINT(CMS_MESSAGE_IMPRINT *imprint);
TLXPKI_API void free_CMS_MESSAGE_IMPRINT(CMS_MESSAGE_IMPRINT *imprint);
TLXPKI_API CMS_MESSAGE_IMPRINT *dup_CMS_MESSAGE_IMPRINT(const CMS_MESSAGE_IMPRINT *imprint);
TLXPKI_API uint32_t Seq_to_CMS_MESSAGE_IMPRINT(const ASN1_UNIT *node, CMS_MESSAGE_IMPRINT **out);
TLXPKI_API uint32_t CMS_MESSAGE_IMPRINT_to_Seq(const CMS_MESSAGE_IMPRINT *imprint, ASN1_UNIT **out);
/** @} */

/**
 * CMS_ACCURACY.
 * - Decoder: 0x52540049 null argument; 0x5254002B more than three children; 0x52540104 otherwise, and for
 * thousandths outside 1 to 999.
 * - Encoder: 0x52530049 null argument; 0x52530103 a member cannot be encoded.
 * @{
 */
TLXPKI_API CMS_ACCURACY *new_CMS_ACCURACY(void);
TLXPKI_API void clean_CMS_ACCURACY(CMS_ACCURACY *accuracy);
TLXPKI_API void free_CMS_ACCURACY(CMS_ACCURACY *accuracy);
TLXPKI_API CMS_ACCURACY *dup_CMS_ACCURACY(const CMS_ACCURACY *accuracy);
TLXPKI_API uint32_t Seq_to_CMS_ACCURACY(const ASN1_UNIT *node, CMS_ACCURACY **out);
TLXPKI_API uint32_t CMS_ACCURACY_to_Seq(const CMS_ACCURACY *accuracy, ASN1_UNIT **out);
/** @} */

/**
 * CMS_TST_INFO.
 * - Decoder: 0x52560049 null argument; 0x5256002B fewer than 5 children or more than 10; 0x52560104
 * otherwise.
 * - Encoder: 0x52550049 null argument; 0x52550103 policy, messageImprint, serialNumber or genTime is
 * missing, or a member cannot be encoded.
 * @{
 */
TLXPKI_API CMS_TST_INFO *new_CMS_TST_INFO(void);
TLXPKI_API void clean_CMS_TST_INFO(CMS_TST_INFO *info);
TLXPKI_API void free_CMS_TST_INFO(CMS_TST_INFO *info);
TLXPKI_API CMS_TST_INFO *dup_CMS_TST_INFO(const CMS_TST_INFO *info);
TLXPKI_API uint32_t Seq_to_CMS_TST_INFO(const ASN1_UNIT *node, CMS_TST_INFO **out);
TLXPKI_API uint32_t CMS_TST_INFO_to_Seq(const CMS_TST_INFO *info, ASN1_UNIT **out);
/** @} */

/**
 * CMS_TIMESTAMP_REQUEST.
 * - Decoder: 0x52580049 null argument; 0x5258002B fewer than two children or more than six; 0x52580104
 * otherwise.
 * - Encoder: 0x52570049 null argument; 0x52570103 messageImprint is missing, or a member cannot be encoded.
 * @{
 */
TLXPKI_API CMS_TIMESTAMP_REQUEST *new_CMS_TIMESTAMP_REQUEST(void);
TLXPKI_API void clean_CMS_TIMESTAMP_REQUEST(CMS_TIMESTAMP_REQUEST *request);
TLXPKI_API void free_CMS_TIMESTAMP_REQUEST(CMS_TIMESTAMP_REQUEST *request);
TLXPKI_API CMS_TIMESTAMP_REQUEST *dup_CMS_TIMESTAMP_REQUEST(const CMS_TIMESTAMP_REQUEST *request);
TLXPKI_API uint32_t Seq_to_CMS_TIMESTAMP_REQUEST(const ASN1_UNIT *node, CMS_TIMESTAMP_REQUEST **out);
TLXPKI_API uint32_t CMS_TIMESTAMP_REQUEST_to_Seq(const CMS_TIMESTAMP_REQUEST *request, ASN1_UNIT **out);
/** @} */

/**
 * CMS_PKI_STATUS_INFO.
 * - Decoder: 0x525A0049 null argument; 0x525A002B fewer than one child or more than three; 0x525A0104
 * otherwise.
 * - Encoder: 0x52590049 null argument; 0x52590103 a text is missing or cannot be encoded, or there is a list
 * without one.
 * @{
 */
TLXPKI_API CMS_PKI_STATUS_INFO *new_CMS_PKI_STATUS_INFO(void);
TLXPKI_API void clean_CMS_PKI_STATUS_INFO(CMS_PKI_STATUS_INFO *info);
TLXPKI_API void free_CMS_PKI_STATUS_INFO(CMS_PKI_STATUS_INFO *info);
TLXPKI_API CMS_PKI_STATUS_INFO *dup_CMS_PKI_STATUS_INFO(const CMS_PKI_STATUS_INFO *info);
TLXPKI_API uint32_t Seq_to_CMS_PKI_STATUS_INFO(const ASN1_UNIT *node, CMS_PKI_STATUS_INFO **out);
TLXPKI_API uint32_t CMS_PKI_STATUS_INFO_to_Seq(const CMS_PKI_STATUS_INFO *info, ASN1_UNIT **out);
/** @} */

/**
 * CMS_TIMESTAMP_RESPONSE.
 * - Decoder: 0x525C0049 null argument; 0x525C002B neither one child nor two; 0x525C0104 otherwise.
 * - Encoder: 0x525B0049 null argument; 0x525B0103 status is missing.
 * @{
 */
TLXPKI_API CMS_TIMESTAMP_RESPONSE *new_CMS_TIMESTAMP_RESPONSE(void);
TLXPKI_API void clean_CMS_TIMESTAMP_RESPONSE(CMS_TIMESTAMP_RESPONSE *response);
TLXPKI_API void free_CMS_TIMESTAMP_RESPONSE(CMS_TIMESTAMP_RESPONSE *response);
TLXPKI_API CMS_TIMESTAMP_RESPONSE *dup_CMS_TIMESTAMP_RESPONSE(const CMS_TIMESTAMP_RESPONSE *response);
TLXPKI_API uint32_t Seq_to_CMS_TIMESTAMP_RESPONSE(const ASN1_UNIT *node, CMS_TIMESTAMP_RESPONSE **out);
TLXPKI_API uint32_t CMS_TIMESTAMP_RESPONSE_to_Seq(const CMS_TIMESTAMP_RESPONSE *response, ASN1_UNIT **out);
/** @} */

TLX_END_DECLS

#endif
