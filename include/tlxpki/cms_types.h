/** @file
 * The records that messages of the Cryptographic Message Syntax are made of (RFC 5652). Their functions are
 * in <tlxpki/cms.h>.
 *
 * A record owns what it points to. Members that ASN.1 calls OPTIONAL may be null. IssuerAndSerialNumber,
 * EncryptedContentInfo and attributes are the records of PKCS #7.
 */
/* Before the guard, because <windows.h> may have defined its macros since. */
#include <tlxpki/wincrypt.h>

#ifndef TLXPKI_CMS_TYPES_H
#define TLXPKI_CMS_TYPES_H

#include <tlxpki/pkcs7_types.h>

/* ---- Certificates and revocation information ---- */

/** How a message names a certificate. */
enum { TLX_CMS_BY_ISSUER_AND_SERIAL = 0, TLX_CMS_BY_KEY_IDENTIFIER = 1 };

/** SignerIdentifier and RecipientIdentifier. */
typedef struct CMS_CERT_IDENTIFIER {
    uint32_t type; /**< TLX_CMS_BY_ISSUER_AND_SERIAL or TLX_CMS_BY_KEY_IDENTIFIER */
    union {
        void *any;
        P7_ISSUER_AND_SERIAL_NUMBER *issuerAndSerialNumber;
        OCTET_STRING *subjectKeyIdentifier; /**< that of the certificate's extension */
    } value;                                /**< by type */
} CMS_CERT_IDENTIFIER;

/** What stands among the certificates of a message. */
enum {
    TLX_CMS_CERTIFICATE = 0,
    TLX_CMS_EXTENDED_CERTIFICATE = 1, /**< of PKCS #6, obsolete */
    TLX_CMS_V1_ATTRIBUTE_CERTIFICATE = 2,
    TLX_CMS_V2_ATTRIBUTE_CERTIFICATE = 3,
    TLX_CMS_OTHER_CERTIFICATE = 4
};

/** CertificateChoices. */
typedef struct CMS_CERT_CHOICE {
    uint32_t type; /**< TLX_CMS_CERTIFICATE to TLX_CMS_OTHER_CERTIFICATE */
    union {
        void *any;
        X509_CERT *certificate; /**< of TLX_CMS_CERTIFICATE */
        ASN1_UNIT *other;       /**< of the other types: the element as received, with its tag */
    } value;                    /**< by type */
} CMS_CERT_CHOICE;

/** CertificateSet: CMS_CERT_CHOICE entries. */
typedef STACK CMS_CERT_CHOICES;

/** OtherRevocationInfoFormat. */
typedef struct CMS_OTHER_REVOCATION_INFO {
    OBJECT_IDENTIFIER *otherRevInfoFormat; /**< "1.3.6.1.5.5.7.16.2" for an OCSP response (RFC 5940) */
    ASN1_UNIT *otherRevInfo;               /**< Seq_to_OCSP_RESPONSE() reads that of an OCSP response */
} CMS_OTHER_REVOCATION_INFO;

/** What stands among the revocation information of a message. */
enum { TLX_CMS_CRL = 0, TLX_CMS_OTHER_REVOCATION_INFO = 1 };

/** RevocationInfoChoice. */
typedef struct CMS_REVOCATION_INFO {
    uint32_t type; /**< TLX_CMS_CRL or TLX_CMS_OTHER_REVOCATION_INFO */
    union {
        void *any;
        X509_CRL *crl;
        CMS_OTHER_REVOCATION_INFO *other;
    } value; /**< by type */
} CMS_REVOCATION_INFO;

/** RevocationInfoChoices: CMS_REVOCATION_INFO entries. */
typedef STACK CMS_REVOCATION_INFOS;

/* ---- Signed and digested data ---- */

/** EncapsulatedContentInfo. It has no content, one of the two, and never both. */
typedef struct CMS_ENCAP_CONTENT_INFO {
    OBJECT_IDENTIFIER *eContentType;
    OCTET_STRING *eContent;  /**< null when the message does not carry the content */
    ASN1_UNIT *otherContent; /**< content that is no OCTET STRING, as PKCS #7 writes it: its element as
                                received, whose contents octets are what is signed or digested */
} CMS_ENCAP_CONTENT_INFO;

/** SignerInfo. */
typedef struct CMS_SIGNER_INFO {
    uint32_t version;
    CMS_CERT_IDENTIFIER *sid;
    X509_ALGO_IDENTIFIER *digestAlgorithm;
    X509_ATTRIBUTES *signedAttrs; /**< optional */
    X509_ALGO_IDENTIFIER *signatureAlgorithm;
    OCTET_STRING *signature;
    X509_ATTRIBUTES *unsignedAttrs; /**< optional */
    ASN1_UNIT *receivedAttributes;  /**< the element [0] of signedAttrs as received, never written; null when
                                       they were not decoded. Who changes the attributes frees it */
} CMS_SIGNER_INFO;

/** CMS_SIGNER_INFO entries. */
typedef STACK CMS_SIGNER_INFOS;

/** SignedData. */
typedef struct CMS_SIGNED_DATA {
    uint32_t version;
    X509_ALGO_IDENTIFIERS *digestAlgorithms; /**< those of all signers */
    CMS_ENCAP_CONTENT_INFO *encapContentInfo;
    CMS_CERT_CHOICES *certificates; /**< optional */
    CMS_REVOCATION_INFOS *crls;     /**< optional */
    CMS_SIGNER_INFOS *signerInfos;
} CMS_SIGNED_DATA;

/** DigestedData. */
typedef struct CMS_DIGESTED_DATA {
    uint32_t version;
    X509_ALGO_IDENTIFIER *digestAlgorithm;
    CMS_ENCAP_CONTENT_INFO *encapContentInfo;
    OCTET_STRING *digest;
} CMS_DIGESTED_DATA;

/* ---- Messages ---- */

/** ContentInfo. One of the members after the first is set: the one of the content type. */
typedef struct CMS_CONTENT_INFO {
    OBJECT_IDENTIFIER *contentType;
    OCTET_STRING *data;
    CMS_SIGNED_DATA *signedData;
    CMS_DIGESTED_DATA *digestedData;
    ASN1_UNIT *other; /**< content of a type that none of these is for, as received */
} CMS_CONTENT_INFO;

#endif
