/** @file
 * The extensions about keys (RFC 5280, sections 4.2.1.1 to 4.2.1.3 and 4.2.1.12): their identifiers and their
 * uses. The contract of all records is in x509_types.h.
 */
#ifndef TLXPKI_X509V3_KEY_H
#define TLXPKI_X509V3_KEY_H

#include <tlxpki/general_name.h>
#include <tlxpki/wincrypt.h>

TLX_BEGIN_DECLS

/** AuthorityKeyIdentifier. */
typedef struct AUTHORITY_KEYID {
    OCTET_STRING *keyIdentifier;        /**< or null; owned */
    GENERAL_NAMES *authorityCertIssuer; /**< or null; owned */
    BIGINT *authorityCertSerialNumber;  /**< or null; owned */
} AUTHORITY_KEYID;

/**
 * AUTHORITY_KEYID. The low five bits of the identifier octets distinguish the children; the decoder ignores
 * numbers above 2. The encoder writes a record without members as 30 00, which the decoder refuses.
 * - Decoder: 0x47090049 null argument; 0x4709002B no children; 0x47090104 a child cannot be read; the failure
 * of Seq_to_GENERAL_NAMES() (0x470D....) for an authorityCertIssuer.
 * - Encoder: 0x470A0049 null argument; 0x470A0103 a member cannot be encoded.
 * @{
 */
TLXPKI_API AUTHORITY_KEYID *new_AUTHORITY_KEYID(void);
TLXPKI_API void clean_AUTHORITY_KEYID(AUTHORITY_KEYID *record);
TLXPKI_API void free_AUTHORITY_KEYID(AUTHORITY_KEYID *record);
TLXPKI_API AUTHORITY_KEYID *dup_AUTHORITY_KEYID(const AUTHORITY_KEYID *record);
TLXPKI_API uint32_t Seq_to_AUTHORITY_KEYID(const ASN1_UNIT *node, AUTHORITY_KEYID **out);
TLXPKI_API uint32_t AUTHORITY_KEYID_to_Seq(const AUTHORITY_KEYID *record, ASN1_UNIT **out);
/** @} */

/** What create_AUTHORITY_KEYID() fills in. */
enum { TLX_KEYID_KEY = 1, TLX_KEYID_ISSUER_AND_SERIAL = 2 };

/**
 * Makes the identifier that names a CA in the certificates that it issues. RFC 5280 asks for the key
 * identifier; Korean profiles also ask for issuer and serial number.
 * @param issuer the CA's certificate
 * @param parts  TLX_KEYID_KEY: its subjectKeyIdentifier, or the one that create_SUBJECT_KEYID() makes where
 * it has none; TLX_KEYID_ISSUER_AND_SERIAL: its issuer as a directoryName, and its serial number; or both
 * @return the record; null for a null certificate, other parts, a certificate that lacks a member needed or
 * has an unreadable subjectKeyIdentifier, and when memory runs out
 */
TLXPKI_API AUTHORITY_KEYID *create_AUTHORITY_KEYID(const X509_CERT *issuer, uint32_t parts);

/** SubjectKeyIdentifier. */
typedef OCTET_STRING SUBJECT_KEYID;

/**
 * SUBJECT_KEYID.
 * - Decoder: 0x47150049 null argument; 0x47150104 no OCTET STRING.
 * - Encoder: 0x47160049 null argument; 0x47160103 memory ran out.
 * @{
 */
TLXPKI_API SUBJECT_KEYID *new_SUBJECT_KEYID(void);
TLXPKI_API void clean_SUBJECT_KEYID(SUBJECT_KEYID *record);
TLXPKI_API void free_SUBJECT_KEYID(SUBJECT_KEYID *record);
TLXPKI_API SUBJECT_KEYID *dup_SUBJECT_KEYID(const SUBJECT_KEYID *record);
TLXPKI_API uint32_t Seq_to_SUBJECT_KEYID(const ASN1_UNIT *node, SUBJECT_KEYID **out);
TLXPKI_API uint32_t SUBJECT_KEYID_to_Seq(const SUBJECT_KEYID *record, ASN1_UNIT **out);
/** @} */

/** Makes the usual identifier of a key: the SHA-1 digest of the subjectPublicKey's octets (RFC 5280, section
 * 4.2.1.2, method 1). Returns 20 octets; null for null, a key without octets, and when memory runs out. */
TLXPKI_API SUBJECT_KEYID *create_SUBJECT_KEYID(const X509_PUBKEY *key);

/** Bits of a KeyUsage, as get_BIT_STRING_named_bits() gives them. */
enum {
    TLX_KEY_USAGE_DIGITAL_SIGNATURE = 1 << 0,
    TLX_KEY_USAGE_NON_REPUDIATION = 1 << 1,
    TLX_KEY_USAGE_KEY_ENCIPHERMENT = 1 << 2,
    TLX_KEY_USAGE_DATA_ENCIPHERMENT = 1 << 3,
    TLX_KEY_USAGE_KEY_AGREEMENT = 1 << 4,
    TLX_KEY_USAGE_KEY_CERT_SIGN = 1 << 5,
    TLX_KEY_USAGE_CRL_SIGN = 1 << 6,
    TLX_KEY_USAGE_ENCIPHER_ONLY = 1 << 7,
    TLX_KEY_USAGE_DECIPHER_ONLY = 1 << 8
};

/** KeyUsage: a BIT STRING of named bits, the first bit of the first octet being number 0. */
typedef BIT_STRING KEY_USAGE;

/**
 * KEY_USAGE. The encoder omits trailing zero bits, as DER requires of named bits.
 * - Decoder: 0x47130049 null argument; 0x47130104 no BIT STRING, or one without contents.
 * - Encoder: 0x47140049 null argument; 0x47140103 memory ran out.
 * @{
 */
TLXPKI_API KEY_USAGE *new_KEY_USAGE(void);
TLXPKI_API void clean_KEY_USAGE(KEY_USAGE *record);
TLXPKI_API void free_KEY_USAGE(KEY_USAGE *record);
TLXPKI_API KEY_USAGE *dup_KEY_USAGE(const KEY_USAGE *record);
TLXPKI_API uint32_t Seq_to_KEY_USAGE(const ASN1_UNIT *node, KEY_USAGE **out);
TLXPKI_API uint32_t KEY_USAGE_to_Seq(const KEY_USAGE *record, ASN1_UNIT **out);
/** @} */

/** Returns the first 32 named bits of a BIT STRING as a number, bit n as 1 << n; 0 for null. */
TLXPKI_API uint32_t get_BIT_STRING_named_bits(const BIT_STRING *bits);

/** Makes the BIT STRING of named bits, bit n given as 1 << n, without trailing zero bits. free_KEY_USAGE()
 * or free_ASN1_STRING() frees it. Returns null when memory runs out. */
TLXPKI_API BIT_STRING *named_bits_to_BIT_STRING(uint32_t bits);

/**
 * OBJECT_IDENTIFIERS: a list of object identifiers, which may be empty.
 * - Decoder: 0x470F0049 null argument; 0x470F0104 a child is no object identifier.
 * - Encoder: 0x47100049 null argument; 0x47100103 an identifier cannot be encoded.
 * @{
 */
TLXPKI_API OBJECT_IDENTIFIERS *new_OBJECT_IDENTIFIERS(void);
TLXPKI_API void clean_OBJECT_IDENTIFIERS(OBJECT_IDENTIFIERS *list);
TLXPKI_API void free_OBJECT_IDENTIFIERS(OBJECT_IDENTIFIERS *list);
TLXPKI_API OBJECT_IDENTIFIERS *dup_OBJECT_IDENTIFIERS(const OBJECT_IDENTIFIERS *list);
TLXPKI_API uint32_t Seq_to_OBJECT_IDENTIFIERS(const ASN1_UNIT *node, OBJECT_IDENTIFIERS **out);
TLXPKI_API uint32_t OBJECT_IDENTIFIERS_to_Seq(const OBJECT_IDENTIFIERS *list, ASN1_UNIT **out);
TLXPKI_API uint32_t get_OBJECT_IDENTIFIERS_count(const OBJECT_IDENTIFIERS *list);
TLXPKI_API OBJECT_IDENTIFIER *get_OBJECT_IDENTIFIERS_child(const OBJECT_IDENTIFIERS *list, int32_t index);
TLXPKI_API uint32_t add_OBJECT_IDENTIFIERS_child(OBJECT_IDENTIFIERS *list, const OBJECT_IDENTIFIER *item,
                                                 int32_t index);
TLXPKI_API OBJECT_IDENTIFIER *remove_OBJECT_IDENTIFIERS_child(OBJECT_IDENTIFIERS *list, int32_t index);
/** @} */

/** Appends a copy of an identifier. Returns 0; 1 for a null argument and when memory runs out (the list is
 * unchanged then). */
TLXPKI_API uint32_t add_OBJECT_IDENTIFIERS(OBJECT_IDENTIFIERS *list, const OBJECT_IDENTIFIER *oid);
/** Returns the zero-based index of the first item equal to oid; -1 when there is none and for a null
 * argument. */
TLXPKI_API int32_t get_OBJECT_IDENTIFIERS_index_by_OBJECT_IDENTIFIER(const OBJECT_IDENTIFIERS *list,
                                                                     const OBJECT_IDENTIFIER *oid);

/** ExtKeyUsageSyntax: the object identifiers of purposes.
 * get_OBJECT_IDENTIFIERS_index_by_OBJECT_IDENTIFIER() finds one. */
typedef OBJECT_IDENTIFIERS EXTENDED_KEY_USAGE;

/**
 * EXTENDED_KEY_USAGE: a list of object identifiers.
 * - Decoder: 0x47110049 null argument; 0x4711002B no purposes; 0x47110104 a child is no object identifier.
 * - Encoder: 0x47120049 null argument; 0x4712002B no purposes; 0x47120103 an identifier cannot be encoded.
 * @{
 */
TLXPKI_API EXTENDED_KEY_USAGE *new_EXTENDED_KEY_USAGE(void);
TLXPKI_API void clean_EXTENDED_KEY_USAGE(EXTENDED_KEY_USAGE *list);
TLXPKI_API void free_EXTENDED_KEY_USAGE(EXTENDED_KEY_USAGE *list);
TLXPKI_API EXTENDED_KEY_USAGE *dup_EXTENDED_KEY_USAGE(const EXTENDED_KEY_USAGE *list);
TLXPKI_API uint32_t Seq_to_EXTENDED_KEY_USAGE(const ASN1_UNIT *node, EXTENDED_KEY_USAGE **out);
TLXPKI_API uint32_t EXTENDED_KEY_USAGE_to_Seq(const EXTENDED_KEY_USAGE *list, ASN1_UNIT **out);
TLXPKI_API uint32_t get_EXTENDED_KEY_USAGE_count(const EXTENDED_KEY_USAGE *list);
TLXPKI_API OBJECT_IDENTIFIER *get_EXTENDED_KEY_USAGE_child(const EXTENDED_KEY_USAGE *list, int32_t index);
TLXPKI_API uint32_t add_EXTENDED_KEY_USAGE_child(EXTENDED_KEY_USAGE *list, const OBJECT_IDENTIFIER *item,
                                                 int32_t index);
TLXPKI_API OBJECT_IDENTIFIER *remove_EXTENDED_KEY_USAGE_child(EXTENDED_KEY_USAGE *list, int32_t index);
/** @} */

TLX_END_DECLS

#endif
