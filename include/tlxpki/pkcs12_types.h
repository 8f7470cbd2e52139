/** @file
 * The records that PKCS #12 files are made of (RFC 7292, section 4). The contract of all records is in
 * x509_types.h. PKCS #12 files are read in BER and written in DER.
 *
 * A PFX holds an AuthenticatedSafe in the octets of its content, and every ContentInfo of that holds a
 * SafeContents: in the octets of data, or encrypted in encrypted data.
 */
#ifndef TLXPKI_PKCS12_TYPES_H
#define TLXPKI_PKCS12_TYPES_H

#include <tlxpki/pkcs7_types.h>

TLX_BEGIN_DECLS

/** MacData. */
typedef struct P12_MAC_DATA {
    OBJECT_IDENTIFIER *digestAlgorithm; /**< a digest, or PBMAC1 (RFC 9579) */
    ASN1_UNIT *digestParameters;        /**< the element of the digest's parameters, or null */
    OCTET_STRING *mac;                  /**< the code */
    OCTET_STRING *macSalt;
    BIGINT *iterations; /**< null stands for 1 */
} P12_MAC_DATA;

/** PFX: a whole file. */
typedef struct P12_PFX {
    BIGINT *version;       /**< 3 in every file */
    P12_MAC_DATA *macData; /**< optional */
    P7_CONTENT_INFO *authSafe;
} P12_PFX;

/** AuthenticatedSafe: P7_CONTENT_INFO entries. */
typedef STACK P12_AUTHENTICATED_SAFE;

/** SafeBag. The value is wiped before it is freed: it may hold a key or another secret. */
typedef struct P12_SAFE_BAG {
    OBJECT_IDENTIFIER *bagId;
    ASN1_UNIT *bagValue;            /**< the element inside [0] as received */
    X509_ATTRIBUTES *bagAttributes; /**< optional; may be empty */
} P12_SAFE_BAG;

/** SafeContents: P12_SAFE_BAG entries. */
typedef STACK P12_SAFE_CONTENTS;

/** CertBag, the value of a "certBag". */
typedef struct P12_CERT_BAG {
    OBJECT_IDENTIFIER *certId;
    ASN1_STRING *certValue; /**< for "1.2.840.113549.1.9.22.1" an OCTET STRING that holds a Certificate */
} P12_CERT_BAG;

/** CRLBag, the value of a "crlBag". */
typedef struct P12_CRL_BAG {
    OBJECT_IDENTIFIER *crlId;
    ASN1_STRING *crlValue; /**< for "1.2.840.113549.1.9.23.1" an OCTET STRING that holds a CertificateList */
} P12_CRL_BAG;

/** SecretBag, the value of a "secretBag". The value is wiped before it is freed. */
typedef struct P12_SECRET_BAG {
    OBJECT_IDENTIFIER *secretTypeId;
    ASN1_STRING *secretValue; /**< its type is the identifier octet */
} P12_SECRET_BAG;

/**
 * P12_PFX.
 * - Decoder: 0x4D210049 null argument; 0x4D21002B neither two children nor three; 0x4D210104 otherwise.
 * - Encoder: 0x4D200049 null argument; 0x4D200103 version or authSafe is missing, or the MAC data cannot be
 * encoded; a status of the encoders of PKCS #7.
 * @{
 */
TLXPKI_API P12_PFX *new_P12_PFX(void);
TLXPKI_API void clean_P12_PFX(P12_PFX *pfx);
TLXPKI_API void free_P12_PFX(P12_PFX *pfx);
TLXPKI_API P12_PFX *dup_P12_PFX(const P12_PFX *pfx);
TLXPKI_API uint32_t Seq_to_P12_PFX(const ASN1_UNIT *node, P12_PFX **out);
TLXPKI_API uint32_t P12_PFX_to_Seq(const P12_PFX *pfx, ASN1_UNIT **out);
/** @} */

/**
 * P12_MAC_DATA.
 * - Decoder: reads an iteration count without octets as 0. 0x4D230049 null argument; 0x4D23002B neither two
 * children nor three; 0x4D230104 otherwise.
 * - Encoder: writes the iteration count in as few octets as it takes. 0x4D220049 null argument; 0x4D220103 a
 * member other than digestParameters and iterations is missing.
 * @{
 */
TLXPKI_API P12_MAC_DATA *new_P12_MAC_DATA(void);
TLXPKI_API void clean_P12_MAC_DATA(P12_MAC_DATA *data);
TLXPKI_API void free_P12_MAC_DATA(P12_MAC_DATA *data);
TLXPKI_API P12_MAC_DATA *dup_P12_MAC_DATA(const P12_MAC_DATA *data);
TLXPKI_API uint32_t Seq_to_P12_MAC_DATA(const ASN1_UNIT *node, P12_MAC_DATA **out);
TLXPKI_API uint32_t P12_MAC_DATA_to_Seq(const P12_MAC_DATA *data, ASN1_UNIT **out);
/** @} */

/**
 * P12_AUTHENTICATED_SAFE: a list of P7_CONTENT_INFO, which may be empty.
 * - Decoder: 0x4D250049 null argument; 0x4D250104 a child is no ContentInfo of a known type.
 * - Encoder: 0x4D240049 null argument; 0x4D240103 a child is missing or cannot be encoded; a status of the
 * encoders of PKCS #7.
 * @{
 */
TLXPKI_API P12_AUTHENTICATED_SAFE *new_P12_AUTHENTICATED_SAFE(void);
TLXPKI_API void clean_P12_AUTHENTICATED_SAFE(P12_AUTHENTICATED_SAFE *safe);
TLXPKI_API void free_P12_AUTHENTICATED_SAFE(P12_AUTHENTICATED_SAFE *safe);
TLXPKI_API P12_AUTHENTICATED_SAFE *dup_P12_AUTHENTICATED_SAFE(const P12_AUTHENTICATED_SAFE *safe);
TLXPKI_API uint32_t Seq_to_P12_AUTHENTICATED_SAFE(const ASN1_UNIT *node, P12_AUTHENTICATED_SAFE **out);
TLXPKI_API uint32_t P12_AUTHENTICATED_SAFE_to_Seq(const P12_AUTHENTICATED_SAFE *safe, ASN1_UNIT **out);
TLXPKI_API uint32_t get_P12_AUTHENTICATED_SAFE_count(const P12_AUTHENTICATED_SAFE *safe);
TLXPKI_API P7_CONTENT_INFO *get_P12_AUTHENTICATED_SAFE_child(const P12_AUTHENTICATED_SAFE *safe,
                                                             int32_t index);
TLXPKI_API uint32_t add_P12_AUTHENTICATED_SAFE_child(P12_AUTHENTICATED_SAFE *safe,
                                                     const P7_CONTENT_INFO *info, int32_t index);
TLXPKI_API P7_CONTENT_INFO *remove_P12_AUTHENTICATED_SAFE_child(P12_AUTHENTICATED_SAFE *safe, int32_t index);
/** @} */

/**
 * P12_SAFE_BAG.
 * - Decoder: takes any bagId and any element as its value. 0x4D270049 null argument; 0x4D27002B neither two
 * children nor three; 0x4D270104 otherwise.
 * - Encoder: writes the attributes in list order. The node is not wiped. 0x4D260049 null argument; 0x4D260103
 * bagId or bagValue is missing, or an attribute cannot be encoded.
 * @{
 */
TLXPKI_API P12_SAFE_BAG *new_P12_SAFE_BAG(void);
TLXPKI_API void clean_P12_SAFE_BAG(P12_SAFE_BAG *bag);
TLXPKI_API void free_P12_SAFE_BAG(P12_SAFE_BAG *bag);
TLXPKI_API P12_SAFE_BAG *dup_P12_SAFE_BAG(const P12_SAFE_BAG *bag);
TLXPKI_API uint32_t Seq_to_P12_SAFE_BAG(const ASN1_UNIT *node, P12_SAFE_BAG **out);
TLXPKI_API uint32_t P12_SAFE_BAG_to_Seq(const P12_SAFE_BAG *bag, ASN1_UNIT **out);
/** @} */

/**
 * P12_SAFE_CONTENTS: a list of P12_SAFE_BAG, which may be empty.
 * - Decoder: 0x4D290049 null argument; 0x4D290104 a child is no SafeBag.
 * - Encoder: the node is not wiped. 0x4D280049 null argument; 0x4D280103 a bag is missing or cannot be
 * encoded; a status of the encoders of PKCS #7.
 * @{
 */
TLXPKI_API P12_SAFE_CONTENTS *new_P12_SAFE_CONTENTS(void);
TLXPKI_API void clean_P12_SAFE_CONTENTS(P12_SAFE_CONTENTS *contents);
TLXPKI_API void free_P12_SAFE_CONTENTS(P12_SAFE_CONTENTS *contents);
TLXPKI_API P12_SAFE_CONTENTS *dup_P12_SAFE_CONTENTS(const P12_SAFE_CONTENTS *contents);
TLXPKI_API uint32_t Seq_to_P12_SAFE_CONTENTS(const ASN1_UNIT *node, P12_SAFE_CONTENTS **out);
TLXPKI_API uint32_t P12_SAFE_CONTENTS_to_Seq(const P12_SAFE_CONTENTS *contents, ASN1_UNIT **out);
TLXPKI_API uint32_t get_P12_SAFE_CONTENTS_count(const P12_SAFE_CONTENTS *contents);
TLXPKI_API P12_SAFE_BAG *get_P12_SAFE_CONTENTS_child(const P12_SAFE_CONTENTS *contents, int32_t index);
TLXPKI_API uint32_t add_P12_SAFE_CONTENTS_child(P12_SAFE_CONTENTS *contents, const P12_SAFE_BAG *bag,
                                                int32_t index);
TLXPKI_API P12_SAFE_BAG *remove_P12_SAFE_CONTENTS_child(P12_SAFE_CONTENTS *contents, int32_t index);
/** @} */

/**
 * P12_CERT_BAG.
 * - Decoder: takes a value of any type, and joins the segments of an OCTET STRING. 0x4D2B0049 null argument;
 * 0x4D2B002B not exactly two children; 0x4D2B0104 otherwise.
 * - Encoder: 0x4D2A0049 null argument; 0x4D2A0103 a member is missing.
 * @{
 */
TLXPKI_API P12_CERT_BAG *new_P12_CERT_BAG(void);
TLXPKI_API void clean_P12_CERT_BAG(P12_CERT_BAG *bag);
TLXPKI_API void free_P12_CERT_BAG(P12_CERT_BAG *bag);
TLXPKI_API P12_CERT_BAG *dup_P12_CERT_BAG(const P12_CERT_BAG *bag);
TLXPKI_API uint32_t Seq_to_P12_CERT_BAG(const ASN1_UNIT *node, P12_CERT_BAG **out);
TLXPKI_API uint32_t P12_CERT_BAG_to_Seq(const P12_CERT_BAG *bag, ASN1_UNIT **out);
/** @} */

/**
 * P12_CRL_BAG.
 * - Decoder: as that of P12_CERT_BAG. 0x4D2D0049 null argument; 0x4D2D002B not exactly two children;
 * 0x4D2D0104 otherwise.
 * - Encoder: 0x4D2C0049 null argument; 0x4D2C0103 a member is missing.
 * @{
 */
TLXPKI_API P12_CRL_BAG *new_P12_CRL_BAG(void);
TLXPKI_API void clean_P12_CRL_BAG(P12_CRL_BAG *bag);
TLXPKI_API void free_P12_CRL_BAG(P12_CRL_BAG *bag);
TLXPKI_API P12_CRL_BAG *dup_P12_CRL_BAG(const P12_CRL_BAG *bag);
TLXPKI_API uint32_t Seq_to_P12_CRL_BAG(const ASN1_UNIT *node, P12_CRL_BAG **out);
TLXPKI_API uint32_t P12_CRL_BAG_to_Seq(const P12_CRL_BAG *bag, ASN1_UNIT **out);
/** @} */

/**
 * P12_SECRET_BAG.
 * - Decoder: as that of P12_CERT_BAG. 0x4D2F0049 null argument; 0x4D2F002B not exactly two children;
 * 0x4D2F0104 otherwise.
 * - Encoder: the node is not wiped. 0x4D2E0049 null argument; 0x4D2E0103 a member is missing.
 * @{
 */
TLXPKI_API P12_SECRET_BAG *new_P12_SECRET_BAG(void);
TLXPKI_API void clean_P12_SECRET_BAG(P12_SECRET_BAG *bag);
TLXPKI_API void free_P12_SECRET_BAG(P12_SECRET_BAG *bag);
TLXPKI_API P12_SECRET_BAG *dup_P12_SECRET_BAG(const P12_SECRET_BAG *bag);
TLXPKI_API uint32_t Seq_to_P12_SECRET_BAG(const ASN1_UNIT *node, P12_SECRET_BAG **out);
TLXPKI_API uint32_t P12_SECRET_BAG_to_Seq(const P12_SECRET_BAG *bag, ASN1_UNIT **out);
/** @} */

TLX_END_DECLS

#endif
