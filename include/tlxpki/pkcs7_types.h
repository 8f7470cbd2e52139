/** @file
 * The records that PKCS #7 messages are made of (RFC 2315). Their functions are in <tlxpki/pkcs7.h>.
 *
 * A record owns what it points to, and each pointer may be null. Members that are said to be in memory only
 * are never written, and empty after decoding.
 */
#ifndef TLXPKI_PKCS7_TYPES_H
#define TLXPKI_PKCS7_TYPES_H

#include <tlxcrypto/cipher.h>
#include <tlxpki/trust_list.h>
#include <tlxpki/x509_crl.h>
#include <tlxpki/x509_types.h>

/** IssuerAndSerialNumber: the name of a certificate. */
typedef struct ISSUER_AND_SERIAL_NUMBER {
    X509_NAME *issuer;
    BIGINT *serialNumber;
} ISSUER_AND_SERIAL_NUMBER;
typedef ISSUER_AND_SERIAL_NUMBER P7_ISSUER_AND_SERIAL_NUMBER;

/** DigestInfo. */
typedef struct P7_DIGEST_INFO {
    X509_ALGO_IDENTIFIER *digestAlgorithm;
    OCTET_STRING *digest;
} P7_DIGEST_INFO;

/** SignerInfo. */
typedef struct P7_SIGNER_INFO {
    BIGINT *version;
    P7_ISSUER_AND_SERIAL_NUMBER *issuerAndSerialNumber;
    X509_ALGO_IDENTIFIER *digestAlgorithm;
    X509_ATTRIBUTES *authenticatedAttributes; /**< optional */
    X509_ALGO_IDENTIFIER *digestEncryptionAlgorithm;
    OCTET_STRING *encryptedDigest;              /**< the signature; null until the signer has signed */
    X509_ATTRIBUTES *unauthenticatedAttributes; /**< optional */
    ASYMMETRIC_KEY *key; /**< in memory only: the key that signs or verifies, TLX_KEY_RSA or TLX_KEY_KCDSA */
    ASN1_UNIT *receivedAttributes; /**< the element [0] of the authenticated attributes as received, never
                                      written; null when they were not decoded, or were changed by a
                                      function of this library */
} P7_SIGNER_INFO;

/** P7_SIGNER_INFO entries. */
typedef STACK P7_SIGNER_INFOS;

/** RecipientInfo. */
typedef struct P7_RECIPIENT_INFO {
    BIGINT *version;
    P7_ISSUER_AND_SERIAL_NUMBER *issuerAndSerialNumber;
    X509_ALGO_IDENTIFIER *keyEncryptionAlgorithm;
    OCTET_STRING *encryptedKey;
    ASYMMETRIC_KEY *publicKey; /**< in memory only: the recipient's public key */
} P7_RECIPIENT_INFO;

/** P7_RECIPIENT_INFO entries. */
typedef STACK P7_RECIPIENT_INFOS;

/** EncryptedContentInfo. A copy has no cipher unit. */
typedef struct P7_ENCRYPTED_CONTENT_INFO {
    OBJECT_IDENTIFIER *contentType;
    X509_ALGO_IDENTIFIER *contentEncryptionAlgorithm;
    OCTET_STRING *encryptedContent; /**< optional */
    BLOCK_CIPHER_UNIT *cipher;      /**< in memory only: the unit that encrypts the content */
} P7_ENCRYPTED_CONTENT_INFO;

/** A content type with content of this type. */
typedef struct P7_CONTENT_INFO {
    OBJECT_IDENTIFIER *contentType;
    union {
        void *any; /**< null when there is no content, which may be kept elsewhere or not be there yet */
        OCTET_STRING *data;
        struct P7_SIGNED_DATA *signedData;
        struct P7_ENVELOPED_DATA *envelopedData;
        struct P7_SIGNED_AND_ENVELOPED_DATA *signedAndEnvelopedData;
        struct P7_DIGESTED_DATA *digestedData;
        struct P7_ENCRYPTED_DATA *encryptedData;
        CERT_TRUST_LIST *trustList; /**< of the type "kisa-ctl" */
    } content;                      /**< by contentType */
    ASN1_UNIT *received; /**< in content that was decoded as signed or digested and is not data: the element
                            of content as received, whose contents octets are what was digested; null
                            otherwise and when content was replaced by a function of this library. It is
                            written in place of a trust list, and never of other content */
} P7_CONTENT_INFO;

/** SignedData. */
typedef struct P7_SIGNED_DATA {
    BIGINT *version;
    X509_ALGO_IDENTIFIERS *digestAlgorithms; /**< those of all signers */
    P7_CONTENT_INFO *contentInfo;            /**< what is signed */
    X509_CERTIFICATES *certificates;         /**< optional */
    X509_CRLS *crls;                         /**< optional */
    P7_SIGNER_INFOS *signerInfos;
    uint32_t detached; /**< in memory only: 1 when the message does not carry the content */
} P7_SIGNED_DATA;

/** EnvelopedData. */
typedef struct P7_ENVELOPED_DATA {
    BIGINT *version;
    P7_RECIPIENT_INFOS *recipientInfos;
    P7_ENCRYPTED_CONTENT_INFO *encryptedContentInfo;
    uint32_t outputFlag; /**< in memory only: 0 collects the ciphertext in the message; any other value only
                            hands it to the caller */
} P7_ENVELOPED_DATA;

/** SignedAndEnvelopedData. */
typedef struct P7_SIGNED_AND_ENVELOPED_DATA {
    BIGINT *version;
    P7_RECIPIENT_INFOS *recipientInfos;
    X509_ALGO_IDENTIFIERS *digestAlgorithms; /**< those of all signers */
    P7_ENCRYPTED_CONTENT_INFO *encryptedContentInfo;
    X509_CERTIFICATES *certificates; /**< optional */
    X509_CRLS *crls;                 /**< optional */
    P7_SIGNER_INFOS *signerInfos;
} P7_SIGNED_AND_ENVELOPED_DATA;

/** DigestedData. */
typedef struct P7_DIGESTED_DATA {
    BIGINT *version;
    X509_ALGO_IDENTIFIER *digestAlgorithm;
    P7_CONTENT_INFO *contentInfo; /**< what is digested */
    OCTET_STRING *digest;
} P7_DIGESTED_DATA;

/** EncryptedData. */
typedef struct P7_ENCRYPTED_DATA {
    BIGINT *version;
    P7_ENCRYPTED_CONTENT_INFO *encryptedContentInfo;
    uint32_t outputFlag; /**< in memory only: as in P7_ENVELOPED_DATA */
} P7_ENCRYPTED_DATA;

#endif
