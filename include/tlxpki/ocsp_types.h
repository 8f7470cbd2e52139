/** @file
 * The records of OCSP requests and responses (RFC 6960, section 4). The contract of all records is in
 * x509_types.h. A record owns its members; those that ASN.1 calls OPTIONAL may be null.
 *
 * The signed parts, OCSP_TBS_REQUEST and OCSP_RESPONSE_DATA, keep the octets that they were decoded from. A
 * signature is verified over these. The functions of <tlxpki/ocsp.h> and <tlxpki/ocsp_respond.h> drop them
 * when they change a record; a change that a caller makes to a member does not, and is not part of what a
 * signature proves. The certificates beside a signature are written as they were received as long as their
 * octets are kept (get_X509_received()).
 *
 * On Windows <tlxpki.h> leaves this header out, because <wincrypt.h> has a type OCSP_CERT_ID of its own.
 * Where <windows.h> was included before, ours takes its name.
 */
/* Before the guard, because <windows.h> may have defined its macros since. */
#include <tlxpki/wincrypt.h>

#ifndef TLXPKI_OCSP_TYPES_H
#define TLXPKI_OCSP_TYPES_H

#include <tlxpki/general_name.h>
#include <tlxpki/x509_types.h>

#ifdef __WINCRYPT_H__
#define OCSP_CERT_ID TLX_OCSP_CERT_ID
#endif

TLX_BEGIN_DECLS

/* ---- Requests ---- */

/** CertID: which certificate a request or an answer is about. */
typedef struct OCSP_CERT_ID {
    X509_ALGO_IDENTIFIER *hashAlgorithm;
    OCTET_STRING *issuerNameHash; /**< digest of the issuer's name */
    OCTET_STRING *issuerKeyHash;  /**< digest of the issuer's public key: the octets of its BIT STRING */
    BIGINT *serialNumber;
} OCSP_CERT_ID;

/** Request: the question about one certificate. */
typedef struct OCSP_SINGLE_REQUEST {
    OCSP_CERT_ID *reqCert;
    X509_EXTENSIONS *singleRequestExtensions; /**< optional */
} OCSP_SINGLE_REQUEST;

/** OCSP_SINGLE_REQUEST entries. */
typedef STACK OCSP_SINGLE_REQUESTS;

/** TBSRequest. */
typedef struct OCSP_TBS_REQUEST {
    uint32_t version;            /**< 0 for version 1, the only one */
    GENERAL_NAME *requestorName; /**< optional */
    OCSP_SINGLE_REQUESTS *requestList;
    X509_EXTENSIONS *requestExtensions; /**< optional */
    struct TLX_RECEIVED *received;      /**< the octets that the decoder was given, or null */
} OCSP_TBS_REQUEST;

/** Signature: that of a request. */
typedef struct OCSP_SIGNATURE {
    X509_ALGO_IDENTIFIER *signatureAlgorithm;
    BIT_STRING *signature;
    X509_CERTIFICATES *certs; /**< optional */
} OCSP_SIGNATURE;

/** OCSPRequest. */
typedef struct OCSP_REQUEST {
    OCSP_TBS_REQUEST *tbsRequest;
    OCSP_SIGNATURE *optionalSignature; /**< optional */
} OCSP_REQUEST;

/**
 * OCSP_CERT_ID.
 * - Decoder: 0x500B0049 null argument; 0x500B002B not exactly four children; 0x500B0104 otherwise.
 * - Encoder: 0x500C0049 null argument; 0x500C0103 a member is missing or cannot be encoded.
 * @{
 */
TLXPKI_API OCSP_CERT_ID *new_OCSP_CERT_ID(void);
TLXPKI_API void clean_OCSP_CERT_ID(OCSP_CERT_ID *id);
TLXPKI_API void free_OCSP_CERT_ID(OCSP_CERT_ID *id);
TLXPKI_API OCSP_CERT_ID *dup_OCSP_CERT_ID(const OCSP_CERT_ID *id);
TLXPKI_API uint32_t Seq_to_OCSP_CERT_ID(const ASN1_UNIT *node, OCSP_CERT_ID **out);
TLXPKI_API uint32_t OCSP_CERT_ID_to_Seq(const OCSP_CERT_ID *id, ASN1_UNIT **out);
/** @} */

/**
 * OCSP_SINGLE_REQUEST.
 * - Decoder: 0x50070049 null argument; 0x5007002B neither one child nor two; 0x50070104 otherwise.
 * - Encoder: 0x50080049 null argument; 0x50080103 reqCert is missing, or a member cannot be encoded.
 * @{
 */
TLXPKI_API OCSP_SINGLE_REQUEST *new_OCSP_SINGLE_REQUEST(void);
TLXPKI_API void clean_OCSP_SINGLE_REQUEST(OCSP_SINGLE_REQUEST *request);
TLXPKI_API void free_OCSP_SINGLE_REQUEST(OCSP_SINGLE_REQUEST *request);
TLXPKI_API OCSP_SINGLE_REQUEST *dup_OCSP_SINGLE_REQUEST(const OCSP_SINGLE_REQUEST *request);
TLXPKI_API uint32_t Seq_to_OCSP_SINGLE_REQUEST(const ASN1_UNIT *node, OCSP_SINGLE_REQUEST **out);
TLXPKI_API uint32_t OCSP_SINGLE_REQUEST_to_Seq(const OCSP_SINGLE_REQUEST *request, ASN1_UNIT **out);
/** @} */

/**
 * OCSP_SINGLE_REQUESTS: a list of OCSP_SINGLE_REQUEST, which may be empty.
 * - Decoder: 0x50090049 null argument; 0x50090104 a child is no Request.
 * - Encoder: 0x500A0049 null argument; 0x500A0103 a request is missing or cannot be encoded.
 * @{
 */
TLXPKI_API OCSP_SINGLE_REQUESTS *new_OCSP_SINGLE_REQUESTS(void);
TLXPKI_API void clean_OCSP_SINGLE_REQUESTS(OCSP_SINGLE_REQUESTS *requests);
TLXPKI_API void free_OCSP_SINGLE_REQUESTS(OCSP_SINGLE_REQUESTS *requests);
TLXPKI_API OCSP_SINGLE_REQUESTS *dup_OCSP_SINGLE_REQUESTS(const OCSP_SINGLE_REQUESTS *requests);
TLXPKI_API uint32_t Seq_to_OCSP_SINGLE_REQUESTS(const ASN1_UNIT *node, OCSP_SINGLE_REQUESTS **out);
TLXPKI_API uint32_t OCSP_SINGLE_REQUESTS_to_Seq(const OCSP_SINGLE_REQUESTS *requests, ASN1_UNIT **out);
TLXPKI_API uint32_t get_OCSP_SINGLE_REQUESTS_count(const OCSP_SINGLE_REQUESTS *requests);
TLXPKI_API OCSP_SINGLE_REQUEST *get_OCSP_SINGLE_REQUESTS_child(const OCSP_SINGLE_REQUESTS *requests,
                                                               int32_t index);
TLXPKI_API uint32_t add_OCSP_SINGLE_REQUESTS_child(OCSP_SINGLE_REQUESTS *requests,
                                                   const OCSP_SINGLE_REQUEST *request, int32_t index);
TLXPKI_API OCSP_SINGLE_REQUEST *remove_OCSP_SINGLE_REQUESTS_child(OCSP_SINGLE_REQUESTS *requests,
                                                                  int32_t index);
/** @} */

/**
 * OCSP_TBS_REQUEST.
 * - Decoder: the version is 0 when it is absent. 0x50030049 null argument; 0x5003002B fewer than one child or
 * more than four; 0x50030104 otherwise.
 * - Encoder: writes the version unless it is 0. 0x50040049 null argument; 0x50040103 requestList is missing,
 * or a member cannot be encoded.
 * @{
 */
TLXPKI_API OCSP_TBS_REQUEST *new_OCSP_TBS_REQUEST(void);
TLXPKI_API void clean_OCSP_TBS_REQUEST(OCSP_TBS_REQUEST *tbs);
TLXPKI_API void free_OCSP_TBS_REQUEST(OCSP_TBS_REQUEST *tbs);
TLXPKI_API OCSP_TBS_REQUEST *dup_OCSP_TBS_REQUEST(const OCSP_TBS_REQUEST *tbs);
TLXPKI_API uint32_t Seq_to_OCSP_TBS_REQUEST(const ASN1_UNIT *node, OCSP_TBS_REQUEST **out);
TLXPKI_API uint32_t OCSP_TBS_REQUEST_to_Seq(const OCSP_TBS_REQUEST *tbs, ASN1_UNIT **out);
/** @} */

/**
 * OCSP_SIGNATURE.
 * - Decoder: 0x50050049 null argument; 0x5005002B neither two children nor three; 0x50050104 otherwise.
 * - Encoder: 0x50060049 null argument; 0x50060103 algorithm or signature is missing, or a member cannot be
 * encoded.
 * @{
 */
TLXPKI_API OCSP_SIGNATURE *new_OCSP_SIGNATURE(void);
TLXPKI_API void clean_OCSP_SIGNATURE(OCSP_SIGNATURE *signature);
TLXPKI_API void free_OCSP_SIGNATURE(OCSP_SIGNATURE *signature);
TLXPKI_API OCSP_SIGNATURE *dup_OCSP_SIGNATURE(const OCSP_SIGNATURE *signature);
TLXPKI_API uint32_t Seq_to_OCSP_SIGNATURE(const ASN1_UNIT *node, OCSP_SIGNATURE **out);
TLXPKI_API uint32_t OCSP_SIGNATURE_to_Seq(const OCSP_SIGNATURE *signature, ASN1_UNIT **out);
/** @} */

/**
 * OCSP_REQUEST.
 * - Decoder: 0x50010049 null argument; 0x5001002B neither one child nor two; 0x50010104 otherwise.
 * - Encoder: 0x50020049 null argument; 0x50020103 tbsRequest is missing, or a member cannot be encoded.
 * @{
 */
TLXPKI_API OCSP_REQUEST *new_OCSP_REQUEST(void);
TLXPKI_API void clean_OCSP_REQUEST(OCSP_REQUEST *request);
TLXPKI_API void free_OCSP_REQUEST(OCSP_REQUEST *request);
TLXPKI_API OCSP_REQUEST *dup_OCSP_REQUEST(const OCSP_REQUEST *request);
TLXPKI_API uint32_t Seq_to_OCSP_REQUEST(const ASN1_UNIT *node, OCSP_REQUEST **out);
TLXPKI_API uint32_t OCSP_REQUEST_to_Seq(const OCSP_REQUEST *request, ASN1_UNIT **out);
/** @} */

/* ---- Responses ---- */

/** What a responder says of a certificate. */
enum {
    TLX_OCSP_GOOD = 0,
    TLX_OCSP_REVOKED = 1,
    TLX_OCSP_UNKNOWN = 2 /**< the responder does not know the certificate */
};

/** RevokedInfo. */
typedef struct OCSP_REVOKED_INFO {
    GENERALIZED_TIME *revocationTime;
    uint32_t revocationReason; /**< CRLReason (RFC 5280, section 5.3.1); 0, unspecified, also when there is
                                    none */
} OCSP_REVOKED_INFO;

/** CertStatus. */
typedef struct OCSP_CERT_STATUS {
    uint32_t status;                /**< TLX_OCSP_GOOD, TLX_OCSP_REVOKED or TLX_OCSP_UNKNOWN */
    OCSP_REVOKED_INFO *revokedInfo; /**< for TLX_OCSP_REVOKED */
} OCSP_CERT_STATUS;

/** How a responder names itself. */
enum { TLX_OCSP_BY_NAME = 0, TLX_OCSP_BY_KEY = 1 };

/** ResponderID. */
typedef struct OCSP_RESPONDER_ID {
    uint32_t type; /**< TLX_OCSP_BY_NAME or TLX_OCSP_BY_KEY; 2, which is never read, is written as by key */
    union {
        X509_NAME *name;       /**< the subject of its certificate */
        OCTET_STRING *keyHash; /**< SHA-1 of its public key: the octets of the BIT STRING */
        void *any;
    } value;
} OCSP_RESPONDER_ID;

/** SingleResponse: the answer about one certificate. */
typedef struct OCSP_SINGLE_RESPONSE {
    OCSP_CERT_ID *certID;
    OCSP_CERT_STATUS *certStatus;
    GENERALIZED_TIME *thisUpdate;
    GENERALIZED_TIME *nextUpdate;      /**< optional */
    X509_EXTENSIONS *singleExtensions; /**< optional */
} OCSP_SINGLE_RESPONSE;

/** OCSP_SINGLE_RESPONSE entries. */
typedef STACK OCSP_SINGLE_RESPONSES;

/** ResponseData: what a responder signs. */
typedef struct OCSP_RESPONSE_DATA {
    uint32_t version; /**< 0 for version 1, the only one */
    OCSP_RESPONDER_ID *responderID;
    GENERALIZED_TIME *producedAt;
    OCSP_SINGLE_RESPONSES *responses;
    X509_EXTENSIONS *responseExtensions; /**< optional */
    struct TLX_RECEIVED *received;       /**< the octets that the decoder was given, or null */
} OCSP_RESPONSE_DATA;

/** BasicOCSPResponse. */
typedef struct BASIC_OCSP_RESPONSE {
    OCSP_RESPONSE_DATA *tbsResponseData;
    X509_ALGO_IDENTIFIER *signatureAlgorithm;
    BIT_STRING *signature;
    X509_CERTIFICATES *certs; /**< optional */
} BASIC_OCSP_RESPONSE;

/** ResponseBytes. */
typedef struct OCSP_RESPONSE_BYTES {
    OBJECT_IDENTIFIER *responseType; /**< "1.3.6.1.5.5.7.48.1.1" for a BasicOCSPResponse */
    OCTET_STRING *response;          /**< its encoding */
} OCSP_RESPONSE_BYTES;

/** OCSPResponseStatus. */
enum {
    TLX_OCSP_SUCCESSFUL = 0,
    TLX_OCSP_MALFORMED_REQUEST = 1,
    TLX_OCSP_INTERNAL_ERROR = 2,
    TLX_OCSP_TRY_LATER = 3,
    TLX_OCSP_SIG_REQUIRED = 5,
    TLX_OCSP_UNAUTHORIZED = 6
};

/** OCSPResponse. */
typedef struct OCSP_RESPONSE {
    uint32_t responseStatus;            /**< TLX_OCSP_SUCCESSFUL and its kin */
    OCSP_RESPONSE_BYTES *responseBytes; /**< optional */
} OCSP_RESPONSE;

/**
 * OCSP_REVOKED_INFO.
 * - Decoder: 0x50290049 null argument; 0x5029002B neither one child nor two; 0x50290104 otherwise.
 * - Encoder: writes the reason unless it is 0. 0x502A0049 null argument; 0x502A0103 the time is missing or
 * cannot be encoded.
 * @{
 */
TLXPKI_API OCSP_REVOKED_INFO *new_OCSP_REVOKED_INFO(void);
TLXPKI_API void clean_OCSP_REVOKED_INFO(OCSP_REVOKED_INFO *info);
TLXPKI_API void free_OCSP_REVOKED_INFO(OCSP_REVOKED_INFO *info);
TLXPKI_API OCSP_REVOKED_INFO *dup_OCSP_REVOKED_INFO(const OCSP_REVOKED_INFO *info);
TLXPKI_API uint32_t Seq_to_OCSP_REVOKED_INFO(const ASN1_UNIT *node, OCSP_REVOKED_INFO **out);
TLXPKI_API uint32_t OCSP_REVOKED_INFO_to_Seq(const OCSP_REVOKED_INFO *info, ASN1_UNIT **out);
/** @} */

/**
 * OCSP_CERT_STATUS.
 * - Decoder: a caller's record is unchanged on failure. 0x50270049 null argument; 0x50270104 another tag, or
 * contents that cannot be read.
 * - Encoder: 0x50280049 null argument; 0x50280103 another status, or a revoked one without its info.
 * @{
 */
TLXPKI_API OCSP_CERT_STATUS *new_OCSP_CERT_STATUS(void);
TLXPKI_API void clean_OCSP_CERT_STATUS(OCSP_CERT_STATUS *status);
TLXPKI_API void free_OCSP_CERT_STATUS(OCSP_CERT_STATUS *status);
TLXPKI_API OCSP_CERT_STATUS *dup_OCSP_CERT_STATUS(const OCSP_CERT_STATUS *status);
TLXPKI_API uint32_t Seq_to_OCSP_CERT_STATUS(const ASN1_UNIT *node, OCSP_CERT_STATUS **out);
TLXPKI_API uint32_t OCSP_CERT_STATUS_to_Seq(const OCSP_CERT_STATUS *status, ASN1_UNIT **out);
/** @} */

/**
 * OCSP_RESPONDER_ID.
 * - Decoder: a caller's record is unchanged on failure. 0x50210049 null argument; 0x50210104 another tag, or
 * contents that cannot be read.
 * - Encoder: 0x50220049 null argument; 0x50220103 another type, or the value is missing or cannot be encoded.
 * @{
 */
TLXPKI_API OCSP_RESPONDER_ID *new_OCSP_RESPONDER_ID(void);
TLXPKI_API void clean_OCSP_RESPONDER_ID(OCSP_RESPONDER_ID *id);
TLXPKI_API void free_OCSP_RESPONDER_ID(OCSP_RESPONDER_ID *id);
TLXPKI_API OCSP_RESPONDER_ID *dup_OCSP_RESPONDER_ID(const OCSP_RESPONDER_ID *id);
TLXPKI_API uint32_t Seq_to_OCSP_RESPONDER_ID(const ASN1_UNIT *node, OCSP_RESPONDER_ID **out);
TLXPKI_API uint32_t OCSP_RESPONDER_ID_to_Seq(const OCSP_RESPONDER_ID *id, ASN1_UNIT **out);
/** @} */

/**
 * OCSP_SINGLE_RESPONSE.
 * - Decoder: 0x50230049 null argument; 0x5023002B fewer than three children or more than five; 0x50230104
 * otherwise.
 * - Encoder: 0x50240049 null argument; 0x50240103 certID, certStatus or thisUpdate is missing, or a member
 * cannot be encoded.
 * @{
 */
TLXPKI_API OCSP_SINGLE_RESPONSE *new_OCSP_SINGLE_RESPONSE(void);
TLXPKI_API void clean_OCSP_SINGLE_RESPONSE(OCSP_SINGLE_RESPONSE *response);
TLXPKI_API void free_OCSP_SINGLE_RESPONSE(OCSP_SINGLE_RESPONSE *response);
TLXPKI_API OCSP_SINGLE_RESPONSE *dup_OCSP_SINGLE_RESPONSE(const OCSP_SINGLE_RESPONSE *response);
TLXPKI_API uint32_t Seq_to_OCSP_SINGLE_RESPONSE(const ASN1_UNIT *node, OCSP_SINGLE_RESPONSE **out);
TLXPKI_API uint32_t OCSP_SINGLE_RESPONSE_to_Seq(const OCSP_SINGLE_RESPONSE *response, ASN1_UNIT **out);
/** @} */

/**
 * OCSP_SINGLE_RESPONSES: a list of OCSP_SINGLE_RESPONSE, which may be empty.
 * - Decoder: 0x50250049 null argument; 0x50250104 a child is no SingleResponse.
 * - Encoder: 0x50260049 null argument; 0x50260103 a response is missing or cannot be encoded.
 * @{
 */
TLXPKI_API OCSP_SINGLE_RESPONSES *new_OCSP_SINGLE_RESPONSES(void);
TLXPKI_API void clean_OCSP_SINGLE_RESPONSES(OCSP_SINGLE_RESPONSES *responses);
TLXPKI_API void free_OCSP_SINGLE_RESPONSES(OCSP_SINGLE_RESPONSES *responses);
TLXPKI_API OCSP_SINGLE_RESPONSES *dup_OCSP_SINGLE_RESPONSES(const OCSP_SINGLE_RESPONSES *responses);
TLXPKI_API uint32_t Seq_to_OCSP_SINGLE_RESPONSES(const ASN1_UNIT *node, OCSP_SINGLE_RESPONSES **out);
TLXPKI_API uint32_t OCSP_SINGLE_RESPONSES_to_Seq(const OCSP_SINGLE_RESPONSES *responses, ASN1_UNIT **out);
TLXPKI_API uint32_t get_OCSP_SINGLE_RESPONSES_count(const OCSP_SINGLE_RESPONSES *responses);
TLXPKI_API OCSP_SINGLE_RESPONSE *get_OCSP_SINGLE_RESPONSES_child(const OCSP_SINGLE_RESPONSES *responses,
                                                                 int32_t index);
TLXPKI_API uint32_t add_OCSP_SINGLE_RESPONSES_child(OCSP_SINGLE_RESPONSES *responses,
                                                    const OCSP_SINGLE_RESPONSE *response, int32_t index);
TLXPKI_API OCSP_SINGLE_RESPONSE *remove_OCSP_SINGLE_RESPONSES_child(OCSP_SINGLE_RESPONSES *responses,
                                                                    int32_t index);
/** @} */

/**
 * OCSP_RESPONSE_DATA.
 * - Decoder: the version is 0 when it is absent. 0x50130049 null argument; 0x5013002B fewer than three
 * children or more than five; 0x50130104 otherwise.
 * - Encoder: writes the version unless it is 0. 0x50140049 null argument; 0x50140103 responderID, producedAt
 * or responses is missing, or a member cannot be encoded.
 * @{
 */
TLXPKI_API OCSP_RESPONSE_DATA *new_OCSP_RESPONSE_DATA(void);
TLXPKI_API void clean_OCSP_RESPONSE_DATA(OCSP_RESPONSE_DATA *data);
TLXPKI_API void free_OCSP_RESPONSE_DATA(OCSP_RESPONSE_DATA *data);
TLXPKI_API OCSP_RESPONSE_DATA *dup_OCSP_RESPONSE_DATA(const OCSP_RESPONSE_DATA *data);
TLXPKI_API uint32_t Seq_to_OCSP_RESPONSE_DATA(const ASN1_UNIT *node, OCSP_RESPONSE_DATA **out);
TLXPKI_API uint32_t OCSP_RESPONSE_DATA_to_Seq(const OCSP_RESPONSE_DATA *data, ASN1_UNIT **out);
/** @} */

/**
 * BASIC_OCSP_RESPONSE.
 * - Decoder: 0x50110049 null argument; 0x5011002B neither three children nor four; 0x50110104 otherwise.
 * - Encoder: writes tbsResponseData from its members, not as it was received. 0x50120049 null argument;
 * 0x50120103 a member other than certs is missing, or one cannot be encoded.
 * @{
 */
TLXPKI_API BASIC_OCSP_RESPONSE *new_BASIC_OCSP_RESPONSE(void);
TLXPKI_API void clean_BASIC_OCSP_RESPONSE(BASIC_OCSP_RESPONSE *response);
TLXPKI_API void free_BASIC_OCSP_RESPONSE(BASIC_OCSP_RESPONSE *response);
TLXPKI_API BASIC_OCSP_RESPONSE *dup_BASIC_OCSP_RESPONSE(const BASIC_OCSP_RESPONSE *response);
TLXPKI_API uint32_t Seq_to_BASIC_OCSP_RESPONSE(const ASN1_UNIT *node, BASIC_OCSP_RESPONSE **out);
TLXPKI_API uint32_t BASIC_OCSP_RESPONSE_to_Seq(const BASIC_OCSP_RESPONSE *response, ASN1_UNIT **out);
/** @} */

/**
 * OCSP_RESPONSE_BYTES.
 * - Decoder: 0x500F0049 null argument; 0x500F002B not exactly two children; 0x500F0104 otherwise.
 * - Encoder: 0x50100049 null argument; 0x50100103 a member is missing or cannot be encoded.
 * @{
 */
TLXPKI_API OCSP_RESPONSE_BYTES *new_OCSP_RESPONSE_BYTES(void);
TLXPKI_API void clean_OCSP_RESPONSE_BYTES(OCSP_RESPONSE_BYTES *bytes);
TLXPKI_API void free_OCSP_RESPONSE_BYTES(OCSP_RESPONSE_BYTES *bytes);
TLXPKI_API OCSP_RESPONSE_BYTES *dup_OCSP_RESPONSE_BYTES(const OCSP_RESPONSE_BYTES *bytes);
TLXPKI_API uint32_t Seq_to_OCSP_RESPONSE_BYTES(const ASN1_UNIT *node, OCSP_RESPONSE_BYTES **out);
TLXPKI_API uint32_t OCSP_RESPONSE_BYTES_to_Seq(const OCSP_RESPONSE_BYTES *bytes, ASN1_UNIT **out);
/** @} */

/**
 * OCSP_RESPONSE.
 * - Decoder: takes any number for the status. 0x500D0049 null argument; 0x500D002B neither one child nor two;
 * 0x500D0104 otherwise.
 * - Encoder: 0x500E0049 null argument; 0x500E0103 the response bytes cannot be encoded.
 * @{
 */
TLXPKI_API OCSP_RESPONSE *new_OCSP_RESPONSE(void);
TLXPKI_API void clean_OCSP_RESPONSE(OCSP_RESPONSE *response);
TLXPKI_API void free_OCSP_RESPONSE(OCSP_RESPONSE *response);
TLXPKI_API OCSP_RESPONSE *dup_OCSP_RESPONSE(const OCSP_RESPONSE *response);
TLXPKI_API uint32_t Seq_to_OCSP_RESPONSE(const ASN1_UNIT *node, OCSP_RESPONSE **out);
TLXPKI_API uint32_t OCSP_RESPONSE_to_Seq(const OCSP_RESPONSE *response, ASN1_UNIT **out);
/** @} */

TLX_END_DECLS

#endif
