/** @file
 * The records that certificates are made of.
 */
/* Before the guard: what it undefines may have come since. */
#include <tlxpki/wincrypt.h>

#ifndef TLXPKI_X509_TYPES_H
#define TLXPKI_X509_TYPES_H

#include <tlxpki/types.h>

/** A distinguished name: X509_NAME_CHILD entries, one for each relative distinguished name, in encoding
 * order. */
typedef STACK X509_NAME;

/** One attribute type and value of a name. */
typedef struct X509_NAME_CHILD {
    OBJECT_IDENTIFIER *type; /**< owned */
    ASN1_STRING *data;       /**< owned; its type is the tag that was read and is written back */
} X509_NAME_CHILD;

/** Attributes: X509_ATTRIBUTE entries. */
typedef STACK X509_ATTRIBUTES;

/** One attribute with its values. */
typedef struct X509_ATTRIBUTE {
    OBJECT_IDENTIFIER *type; /**< owned */
    STACK *values;           /**< X509_ATTRIBUTE_DATA entries, owned; never null after new_X509_ATTRIBUTE */
} X509_ATTRIBUTE;

/** One attribute value. Bit 0x20 of type tells which of the two forms it is held in. */
typedef struct X509_ATTRIBUTE_DATA {
    uint32_t type; /**< identifier octet */
    union {
        ASN1_UNIT *node;     /**< when bit 0x20 of type is set: the whole constructed value */
        ASN1_STRING *string; /**< otherwise */
    } value;                 /**< owned */
} X509_ATTRIBUTE_DATA;

/** AlgorithmIdentifier. */
typedef struct X509_ALGO_IDENTIFIER {
    OBJECT_IDENTIFIER *algorithm; /**< owned */
    ASN1_UNIT *parameters;        /**< the complete element of the parameters, or null; owned */
} X509_ALGO_IDENTIFIER;

/** X509_ALGO_IDENTIFIER entries. */
typedef STACK X509_ALGO_IDENTIFIERS;

/** A point in time as a certificate writes it. */
typedef struct X509_TIME {
    uint32_t form;     /**< 0 UTCTime, 1 GeneralizedTime */
    ASN1_STRING *time; /**< owned */
} X509_TIME;

/** The interval in which a certificate is valid, ends included. */
typedef struct X509_VALIDITY {
    X509_TIME notBefore;
    X509_TIME notAfter;
} X509_VALIDITY;

enum { TLX_KEY_RSA = 1, TLX_KEY_KCDSA = 2, TLX_KEY_ECC = 3 };

/** A key of any kind. */
typedef struct ASYMMETRIC_KEY {
    uint32_t kind; /**< TLX_KEY_..., 0 when empty */
    void *key;     /**< RSA_UNIT, KCDSA or ECC_KEY by kind, owned */
} ASYMMETRIC_KEY;

/** SubjectPublicKeyInfo. */
typedef struct X509_PUBKEY {
    OBJECT_IDENTIFIER *algorithm; /**< owned */
    BIT_STRING *subjectPublicKey; /**< owned */
    ASYMMETRIC_KEY *key;          /**< the decoded key; null when it is of no known kind and form; owned */
    ASN1_UNIT *parameters;        /**< the algorithm's parameters as received, or null; owned */
} X509_PUBKEY;

/** One extension. */
typedef struct X509_EXTENSION {
    OBJECT_IDENTIFIER *object; /**< owned */
    uint8_t critical;          /**< 0, or the BOOLEAN's contents octet */
    OCTET_STRING *data;        /**< the DER encoding of the extension's value, owned */
} X509_EXTENSION;

/** X509_EXTENSION entries. */
typedef STACK X509_EXTENSIONS;

/** TBSCertificate. It owns its members, each of which may be null. */
typedef struct X509_TBS_CERT {
    uint8_t version; /**< 0 v1, 1 v2, 2 v3 */
    BIGINT *serialNumber;
    OBJECT_IDENTIFIER *signature; /**< the algorithm only, without parameters */
    X509_NAME *issuer;
    X509_VALIDITY *validity;
    X509_NAME *subject;
    X509_PUBKEY *subjectPublicKeyInfo;
    BIT_STRING *issuerUniqueID;  /**< never filled by the decoder */
    BIT_STRING *subjectUniqueID; /**< never filled by the decoder */
    X509_EXTENSIONS *extensions; /**< or null */
} X509_TBS_CERT;

/** Certificate. It owns its members. */
typedef struct X509_CERT {
    X509_TBS_CERT *tbsCertificate;         /**< made together with the certificate */
    OBJECT_IDENTIFIER *signatureAlgorithm; /**< the algorithm only, without parameters */
    BIT_STRING *signatureValue;
    uint8_t *received;       /**< the octets that the decoder was given, or null; never written */
    uint32_t receivedLength; /**< how many */
} X509_CERT;

/** X509_CERT entries. */
typedef STACK X509_CERTIFICATES;

/** General names: GENERAL_NAME entries (x509v3.h). */
typedef STACK GENERAL_NAMES;
/** OBJECT_IDENTIFIER entries. */
typedef STACK OBJECT_IDENTIFIERS;

#endif
