/** @file
 * The records that certificates are made of, and the contract of all functions that work on records: those of
 * x509*.h, general_name.h, kisa_identity.h, trust_list.h, pkcs1*.h, pkcs7*.h, cms*.h, pkcs12_types.h,
 * token_list.h and cpv.h. These headers say only what differs from it.
 *
 * Ownership. A record owns its members, and a list owns its items. What a function returns or stores as new
 * belongs to the caller, who frees it with the free_ function of its type, or with tlx_free() when it is text
 * or octets. A function copies its arguments unless its text says otherwise.
 *
 * Records. Every record type T has six operations, which its header declares in one group:
 *
 * - new_T() makes an empty record: pointers are null and numbers are 0. It returns null when memory runs out.
 * - clean_T() frees the members and empties the record. free_T() also frees the record, which is in no list.
 * Both ignore null.
 * - dup_T() copies a record with all its members. It returns null for null and when memory runs out.
 * - Seq_to_T(), the decoder, reads a node, which has to hold a complete element. When *out is null, *out
 * receives a new record, and stays null on failure. When *out points to a record, the decoder fills that: it
 * frees the old members, and members that the node lacks become null or 0. After a failure this record holds
 * what was decoded so far. The decoder returns 0 or a status of its group. The reasons are 0x0049 for a null
 * argument, 0x002B for a wrong number of children, and 0x0104 for a child that is missing, misplaced, of the
 * wrong type or unreadable, and when memory runs out. An empty node has no children. Where children are
 * counted, a child of a universal type that decodeToDER() does not know makes the count 0.
 * - T_to_Seq(), the encoder, writes a record in DER. *out receives a new node, freed with free_ASN1_UNIT(),
 * whatever it held before; on failure it is unchanged. The encoder returns 0 or a status of its group. The
 * reasons are 0x0049 for a null argument and 0x0103 for a member that is missing or cannot be encoded, and
 * when memory runs out.
 *
 * Lists. A list type has the same six operations. clean_T() leaves it empty. The decoder replaces the items
 * of the caller's list, which is unchanged on failure. A list that must not be empty gives the reason 0x002B
 * in both directions. Four operations work on the items:
 *
 * - get_T_count() returns the number of items; 0 for null.
 * - get_T_child() returns the item at a zero-based index; null when there is none.
 * - add_T_child() inserts a copy of an item before index, or appends it when index is below 0 or above the
 * count. It returns 0; 1 for a null argument and when memory runs out (the list is unchanged then).
 * - remove_T_child() takes the item at an index out of the list and gives it to the caller; null when there
 * is none.
 *
 * Getters (get_) return a member or an item, which its record or list goes on owning; null for a null
 * argument and when there is none.
 *
 * Setters (set_) replace a member by a copy of a value and free the old one. They return 0; 1 for a null
 * argument and when memory runs out (the member is unchanged then).
 *
 * Searches (get_..._index_by_...) return the zero-based index of the first match after the index lastpos,
 * from the first item on when lastpos is negative; -1 when there is none and for a null argument. With the
 * last result as lastpos they find the next match.
 *
 * Rows. A function that takes oid_index reads the identifier from that row of the registry (objects.h). A row
 * without an identifier counts as a null one.
 *
 * Threads. Any thread may call any function, at the same time on distinct objects. Functions that take const
 * objects may share them.
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

/** One attribute with its values. clean_ keeps the list of values, empty. */
typedef struct X509_ATTRIBUTE {
    OBJECT_IDENTIFIER *type; /**< owned */
    STACK *values;           /**< X509_ATTRIBUTE_DATA entries, owned; never null after new_X509_ATTRIBUTE */
} X509_ATTRIBUTE;

/** One attribute value. Bit 0x20 of type says which form holds it. */
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

enum {
    TLX_KEY_RSA = 1,
    TLX_KEY_KCDSA = 2,
    TLX_KEY_ECC = 3,    /**< the numbers of a public key on any curve */
    TLX_KEY_ECDSA = 16, /**< a key to sign, verify and agree with */
    TLX_KEY_EDDSA = 17, /**< Ed25519, Ed448 */
    TLX_KEY_XDH = 18    /**< X25519, X448 */
};

/** A key of any kind. */
typedef struct ASYMMETRIC_KEY {
    uint32_t kind; /**< TLX_KEY_..., 0 when empty */
    void *key;     /**< RSA_UNIT, KCDSA, ECC_KEY, ECDSA_KEY, EDDSA_KEY or XDH_KEY by kind, owned */
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
    struct TLX_RECEIVED
        *received; /**< the octets that the decoder was given, for get_X509_received(); or null */
} X509_CERT;

/** X509_CERT entries. */
typedef STACK X509_CERTIFICATES;

/** General names: GENERAL_NAME entries (x509v3.h). */
typedef STACK GENERAL_NAMES;
/** OBJECT_IDENTIFIER entries. */
typedef STACK OBJECT_IDENTIFIERS;

#endif
