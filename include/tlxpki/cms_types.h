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

/* ---- Recipients ---- */

/** KeyTransRecipientInfo: the key is encrypted with the recipient's public key. */
typedef struct CMS_KEY_TRANS_RECIPIENT {
    uint32_t version;
    CMS_CERT_IDENTIFIER *rid;
    X509_ALGO_IDENTIFIER *keyEncryptionAlgorithm;
    OCTET_STRING *encryptedKey;
} CMS_KEY_TRANS_RECIPIENT;

/** RecipientKeyIdentifier and KEKIdentifier. */
typedef struct CMS_KEY_IDENTIFIER {
    OCTET_STRING *keyIdentifier;
    GENERALIZED_TIME *date; /**< optional */
    ASN1_UNIT *other;       /**< OtherKeyAttribute as received, optional */
} CMS_KEY_IDENTIFIER;

/** OriginatorPublicKey. */
typedef struct CMS_ORIGINATOR_KEY {
    X509_ALGO_IDENTIFIER *algorithm;
    BIT_STRING *publicKey;
} CMS_ORIGINATOR_KEY;

/** How the originator of a key agreement is named. The first two are those of a CMS_CERT_IDENTIFIER. */
enum { TLX_CMS_BY_ORIGINATOR_KEY = 2 };

/** OriginatorIdentifierOrKey. */
typedef struct CMS_ORIGINATOR {
    uint32_t
        type; /**< TLX_CMS_BY_ISSUER_AND_SERIAL, TLX_CMS_BY_KEY_IDENTIFIER or TLX_CMS_BY_ORIGINATOR_KEY */
    union {
        void *any;
        P7_ISSUER_AND_SERIAL_NUMBER *issuerAndSerialNumber;
        OCTET_STRING *subjectKeyIdentifier;
        CMS_ORIGINATOR_KEY *originatorKey; /**< a key made for this message */
    } value;                               /**< by type */
} CMS_ORIGINATOR;

/** KeyAgreeRecipientIdentifier. */
typedef struct CMS_KEY_AGREE_IDENTIFIER {
    uint32_t type; /**< TLX_CMS_BY_ISSUER_AND_SERIAL or TLX_CMS_BY_KEY_IDENTIFIER */
    union {
        void *any;
        P7_ISSUER_AND_SERIAL_NUMBER *issuerAndSerialNumber;
        CMS_KEY_IDENTIFIER *rKeyId;
    } value; /**< by type */
} CMS_KEY_AGREE_IDENTIFIER;

/** RecipientEncryptedKey. */
typedef struct CMS_RECIPIENT_ENCRYPTED_KEY {
    CMS_KEY_AGREE_IDENTIFIER *rid;
    OCTET_STRING *encryptedKey;
} CMS_RECIPIENT_ENCRYPTED_KEY;

/** CMS_RECIPIENT_ENCRYPTED_KEY entries. */
typedef STACK CMS_RECIPIENT_ENCRYPTED_KEYS;

/** KeyAgreeRecipientInfo: the keys are encrypted with one that originator and recipient agree on. */
typedef struct CMS_KEY_AGREE_RECIPIENT {
    uint32_t version;
    CMS_ORIGINATOR *originator;
    OCTET_STRING *ukm; /**< user keying material, optional */
    X509_ALGO_IDENTIFIER
    *keyEncryptionAlgorithm; /**< its parameters are the key wrap: Seq_to_X509_ALGO_IDENTIFIER() */
    CMS_RECIPIENT_ENCRYPTED_KEYS *recipientEncryptedKeys;
} CMS_KEY_AGREE_RECIPIENT;

/** KEKRecipientInfo: the key is encrypted with a key that both sides know. */
typedef struct CMS_KEK_RECIPIENT {
    uint32_t version;
    CMS_KEY_IDENTIFIER *kekid;
    X509_ALGO_IDENTIFIER *keyEncryptionAlgorithm;
    OCTET_STRING *encryptedKey;
} CMS_KEK_RECIPIENT;

/** PasswordRecipientInfo: the key is encrypted with one that a password gives. */
typedef struct CMS_PASSWORD_RECIPIENT {
    uint32_t version;
    X509_ALGO_IDENTIFIER
    *keyDerivationAlgorithm; /**< optional; that of PBKDF2 has CMS_PBKDF2_PARAM parameters */
    X509_ALGO_IDENTIFIER *keyEncryptionAlgorithm; /**< the parameters of id-alg-PWRI-KEK (RFC 3211) are the
                                                     cipher: Seq_to_X509_ALGO_IDENTIFIER() */
    OCTET_STRING *encryptedKey;
} CMS_PASSWORD_RECIPIENT;

/** What a recipient of a message is. */
enum {
    TLX_CMS_KEY_TRANSPORT = 0,
    TLX_CMS_KEY_AGREEMENT = 1,
    TLX_CMS_KEY_ENCRYPTION_KEY = 2,
    TLX_CMS_PASSWORD = 3,
    TLX_CMS_OTHER_RECIPIENT = 4
};

/** RecipientInfo. */
typedef struct CMS_RECIPIENT_INFO {
    uint32_t type; /**< TLX_CMS_KEY_TRANSPORT to TLX_CMS_OTHER_RECIPIENT */
    union {
        void *any;
        CMS_KEY_TRANS_RECIPIENT *ktri;
        CMS_KEY_AGREE_RECIPIENT *kari;
        CMS_KEK_RECIPIENT *kekri;
        CMS_PASSWORD_RECIPIENT *pwri;
        ASN1_UNIT *ori; /**< OtherRecipientInfo: the element as received, with its tag */
    } value;            /**< by type */
} CMS_RECIPIENT_INFO;

/** CMS_RECIPIENT_INFO entries. */
typedef STACK CMS_RECIPIENT_INFOS;

/** OriginatorInfo. */
typedef struct CMS_ORIGINATOR_INFO {
    CMS_CERT_CHOICES *certs;    /**< optional */
    CMS_REVOCATION_INFOS *crls; /**< optional */
} CMS_ORIGINATOR_INFO;

/* ---- Encrypted and authenticated data ---- */

/** EnvelopedData. */
typedef struct CMS_ENVELOPED_DATA {
    uint32_t version;
    CMS_ORIGINATOR_INFO *originatorInfo; /**< optional */
    CMS_RECIPIENT_INFOS *recipientInfos;
    P7_ENCRYPTED_CONTENT_INFO *encryptedContentInfo;
    X509_ATTRIBUTES *unprotectedAttrs; /**< optional */
} CMS_ENVELOPED_DATA;

/** EncryptedData. */
typedef struct CMS_ENCRYPTED_DATA {
    uint32_t version;
    P7_ENCRYPTED_CONTENT_INFO *encryptedContentInfo;
    X509_ATTRIBUTES *unprotectedAttrs; /**< optional */
} CMS_ENCRYPTED_DATA;

/** AuthenticatedData. */
typedef struct CMS_AUTHENTICATED_DATA {
    uint32_t version;
    CMS_ORIGINATOR_INFO *originatorInfo; /**< optional */
    CMS_RECIPIENT_INFOS *recipientInfos;
    X509_ALGO_IDENTIFIER *macAlgorithm;
    X509_ALGO_IDENTIFIER *digestAlgorithm; /**< optional */
    CMS_ENCAP_CONTENT_INFO *encapContentInfo;
    X509_ATTRIBUTES *authAttrs; /**< optional */
    OCTET_STRING *mac;
    X509_ATTRIBUTES *unauthAttrs;  /**< optional */
    ASN1_UNIT *receivedAttributes; /**< the element [2] of authAttrs as received, as in CMS_SIGNER_INFO */
} CMS_AUTHENTICATED_DATA;

/** AuthEnvelopedData (RFC 5083). */
typedef struct CMS_AUTH_ENVELOPED_DATA {
    uint32_t version;
    CMS_ORIGINATOR_INFO *originatorInfo; /**< optional */
    CMS_RECIPIENT_INFOS *recipientInfos;
    P7_ENCRYPTED_CONTENT_INFO *authEncryptedContentInfo;
    X509_ATTRIBUTES *authAttrs; /**< optional */
    OCTET_STRING *mac;
    X509_ATTRIBUTES *unauthAttrs;  /**< optional */
    ASN1_UNIT *receivedAttributes; /**< the element [1] of authAttrs as received, as in CMS_SIGNER_INFO */
} CMS_AUTH_ENVELOPED_DATA;

/* ---- Parameters of algorithms ---- */

/** GCMParameters (RFC 5084, section 3.2), also of ARIA (RFC 5794). */
typedef struct CMS_GCM_PARAM {
    OCTET_STRING *nonce;
    uint32_t icvLen; /**< octets of the authentication code, 12 to 16; 12 when they do not say */
} CMS_GCM_PARAM;

/** ECC-CMS-SharedInfo (RFC 5753, section 7.2): what both sides of a key agreement derive the key from. */
typedef struct CMS_ECC_SHARED_INFO {
    X509_ALGO_IDENTIFIER *keyInfo; /**< the key wrap */
    OCTET_STRING *entityUInfo;     /**< user keying material, optional */
    OCTET_STRING *suppPubInfo;     /**< bits of the key in four octets */
} CMS_ECC_SHARED_INFO;

/** PBKDF2-params (RFC 8018, appendix A.2). */
typedef struct CMS_PBKDF2_PARAM {
    OCTET_STRING *salt;
    uint32_t iterationCount;
    uint32_t keyLength;        /**< octets; 0 when they do not say */
    X509_ALGO_IDENTIFIER *prf; /**< null for HMAC with SHA-1, the default, which DER leaves out */
} CMS_PBKDF2_PARAM;

/* ---- Messages ---- */

/** ContentInfo. One of the members after the first is set: the one of the content type. */
typedef struct CMS_CONTENT_INFO {
    OBJECT_IDENTIFIER *contentType;
    OCTET_STRING *data;
    CMS_SIGNED_DATA *signedData;
    CMS_ENVELOPED_DATA *envelopedData;
    CMS_DIGESTED_DATA *digestedData;
    CMS_ENCRYPTED_DATA *encryptedData;
    CMS_AUTHENTICATED_DATA *authenticatedData;
    CMS_AUTH_ENVELOPED_DATA *authEnvelopedData;
    ASN1_UNIT *other; /**< content of a type that none of these is for, as received */
} CMS_CONTENT_INFO;

#endif
