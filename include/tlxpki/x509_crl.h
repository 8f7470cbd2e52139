/** @file
 * Certificate revocation lists (RFC 5280, section 5). The contract of all records is in x509_types.h.
 *
 * A decoded list keeps the octets that it was read from, in one copy. It encodes to these, and its signature
 * is checked over them, until a setter succeeds, an entry is added or the list is signed. Its entries stay
 * octets: decoding checks every one, but a record, X509_REVOKED, is made only for an entry that is asked for.
 * The first search makes an index by issuer and serial number, so that later searches take the same time
 * whatever the size of the list. Its hashes have a random key: nobody can make a list that is slow to search.
 * Several threads may search one list at once, the first search included.
 *
 * A list in DER comes back octet for octet. Once it is changed, what certificates lose (x509.h) is lost: of a
 * relative distinguished name with several types and values only the first is kept, of a signature algorithm
 * only the identifier. Entries stay as they are.
 *
 * decode_X509_EXTENSION_by_OID_index() (x509v3.h) reads the extensions of a list: TLX_OID_CRL_NUMBER and
 * TLX_OID_DELTA_CRL_INDICATOR are numbers, for which decode_X509_CRL_number() is there;
 *
 * | extension of a list | record |
 * |---|---|
 * | authorityKeyIdentifier | AUTHORITY_KEYID |
 * | issuingDistributionPoint | issuing_DIST_POINT |
 * | freshestCRL (2.5.29.46) | CRL_DIST_POINTS |
 * | authorityInfoAccess | AUTHORITY_INFO_ACCESS |
 * | certificateIssuer, of an entry | GENERAL_NAMES |
 */
#ifndef TLXPKI_X509_CRL_H
#define TLXPKI_X509_CRL_H

#include <tlxpki/wincrypt.h>
#include <tlxpki/x509_types.h>

TLX_BEGIN_DECLS

/* ---- Entries ---- */

/** Why a certificate was revoked (CRLReason). */
enum {
    TLX_CRL_REASON_UNSPECIFIED = 0,
    TLX_CRL_REASON_KEY_COMPROMISE = 1,
    TLX_CRL_REASON_CA_COMPROMISE = 2,
    TLX_CRL_REASON_AFFILIATION_CHANGED = 3,
    TLX_CRL_REASON_SUPERSEDED = 4,
    TLX_CRL_REASON_CESSATION_OF_OPERATION = 5,
    TLX_CRL_REASON_CERTIFICATE_HOLD = 6,
    TLX_CRL_REASON_REMOVE_FROM_CRL = 8, /**< in a delta list: the certificate is revoked no more */
    TLX_CRL_REASON_PRIVILEGE_WITHDRAWN = 9,
    TLX_CRL_REASON_AA_COMPROMISE = 10
};

/** An entry of a revocation list. */
typedef struct X509_REVOKED {
    BIGINT *serialNumber;        /**< of the certificate; owned */
    X509_TIME *revocationDate;   /**< owned */
    X509_EXTENSIONS *extensions; /**< or null; owned */
} X509_REVOKED;

/**
 * X509_REVOKED.
 * - Decoder: 0x48060049 null argument; 0x4806002B neither two nor three children; 0x48060104 a child cannot
 * be read.
 * - Encoder: 0x48050049 null argument; 0x48050103 the serial number or the date is missing, or a member
 * cannot be encoded.
 * @{
 */
TLXPKI_API X509_REVOKED *new_X509_REVOKED(void);
TLXPKI_API void clean_X509_REVOKED(X509_REVOKED *revoked);
TLXPKI_API void free_X509_REVOKED(X509_REVOKED *revoked);
TLXPKI_API X509_REVOKED *dup_X509_REVOKED(const X509_REVOKED *revoked);
TLXPKI_API uint32_t Seq_to_X509_REVOKED(const ASN1_UNIT *node, X509_REVOKED **out);
TLXPKI_API uint32_t X509_REVOKED_to_Seq(const X509_REVOKED *revoked, ASN1_UNIT **out);
/** @} */

/**
 * Makes an entry.
 * @param serial the certificate's serial number
 * @param time   when it was revoked, in UTC
 * @param reason TLX_CRL_REASON_..., written as an extension. TLX_CRL_REASON_UNSPECIFIED is not written (RFC
 * 5280, section 5.3.1).
 * @return the entry; null for a null argument, a date that does not exist, a reason above 10, and when memory
 * runs out
 */
TLXPKI_API X509_REVOKED *create_X509_REVOKED(const BIGINT *serial, const ASN1_TIME *time, uint32_t reason);

/** Returns the reason of an entry, TLX_CRL_REASON_...; 0xFFFFFFFF for null, and for an entry that says none
 * or an unreadable one. */
TLXPKI_API uint32_t get_X509_REVOKED_reason(const X509_REVOKED *revoked);

/** Returns since when the certificate is suspect, if the entry says so: the invalidityDate as a new time,
 * freed with free_ASN1_TIME(). Null for null, an entry without a readable one, and when memory runs out. */
TLXPKI_API ASN1_TIME *get_X509_REVOKED_invalidityDate(const X509_REVOKED *revoked);

/* ---- Lists ---- */

/** A certificate revocation list. It owns its members. */
typedef struct X509_CRL {
    uint8_t version;              /**< 0 v1, 1 v2 */
    OBJECT_IDENTIFIER *signature; /**< the algorithm only, without parameters */
    X509_NAME *issuer;
    X509_TIME *thisUpdate;
    X509_TIME *nextUpdate;                 /**< or null */
    struct TLX_CRL_ENTRIES *entries;       /**< what was received, and the entries */
    X509_EXTENSIONS *extensions;           /**< or null */
    OBJECT_IDENTIFIER *signatureAlgorithm; /**< the algorithm only, without parameters */
    BIT_STRING *signatureValue;
} X509_CRL;

/**
 * X509_CRL.
 * - Decoder: keeps a copy of the whole element. A caller's record is unchanged on failure. 0x48020049 null
 * argument; 0x4802002B not exactly three children; 0x48020104 a member is missing or cannot be read, or an
 * entry is none.
 * - Encoder: writes the octets that were decoded, as long as they are kept. 0x48010049 null argument;
 * 0x48010103 a member is missing or cannot be encoded.
 * @{
 */
TLXPKI_API X509_CRL *new_X509_CRL(void);
TLXPKI_API void clean_X509_CRL(X509_CRL *crl);
TLXPKI_API void free_X509_CRL(X509_CRL *crl);
TLXPKI_API X509_CRL *dup_X509_CRL(const X509_CRL *crl);
TLXPKI_API uint32_t Seq_to_X509_CRL(const ASN1_UNIT *node, X509_CRL **out);
TLXPKI_API uint32_t X509_CRL_to_Seq(const X509_CRL *crl, ASN1_UNIT **out);
/** @} */

/** The version: 0 for version 1, 1 for version 2; 0xFFFFFFFF for null. */
TLXPKI_API uint32_t get_X509_CRL_version(const X509_CRL *crl);
/** The signature algorithm inside the to-be-signed part; get_X509_CRL_sig_alg() returns the outer one. */
TLXPKI_API OBJECT_IDENTIFIER *get_X509_CRL_signature(const X509_CRL *crl);
/** The name of the issuer. */
TLXPKI_API X509_NAME *get_X509_CRL_issuer(const X509_CRL *crl);
/** When the list was made. */
TLXPKI_API X509_TIME *get_X509_CRL_thisUpdate(const X509_CRL *crl);
/** When the next list comes at the latest. */
TLXPKI_API X509_TIME *get_X509_CRL_nextUpdate(const X509_CRL *crl);
/** The extensions. */
TLXPKI_API X509_EXTENSIONS *get_X509_CRL_extensions(const X509_CRL *crl);
/** The outer signature algorithm, beside the signature. */
TLXPKI_API OBJECT_IDENTIFIER *get_X509_CRL_sig_alg(const X509_CRL *crl);
/** The signature. */
TLXPKI_API BIT_STRING *get_X509_CRL_sig_value(const X509_CRL *crl);

/** Sets the version: 0 for version 1, 1 for version 2, which extensions need. */
TLXPKI_API uint32_t set_X509_CRL_version(X509_CRL *crl, uint8_t version);
/** Replaces the signature algorithm inside the to-be-signed part. */
TLXPKI_API uint32_t set_X509_CRL_signature(X509_CRL *crl, const OBJECT_IDENTIFIER *value);
/** Replaces the name of the issuer. */
TLXPKI_API uint32_t set_X509_CRL_issuer(X509_CRL *crl, const X509_NAME *value);
/** Replaces thisUpdate. Returns 1 also for a text that is no time and a date that does not exist. */
TLXPKI_API uint32_t set_X509_CRL_thisUpdate(X509_CRL *crl, const X509_TIME *value);
/** Replaces nextUpdate likewise. A null value removes it. */
TLXPKI_API uint32_t set_X509_CRL_nextUpdate(X509_CRL *crl, const X509_TIME *value);
/** Replaces the extensions. A null value removes them. */
TLXPKI_API uint32_t set_X509_CRL_extensions(X509_CRL *crl, const X509_EXTENSIONS *value);

/**
 * Reads a number among the extensions of a list.
 * @param oid_index TLX_OID_CRL_NUMBER, or TLX_OID_DELTA_CRL_INDICATOR: the number of the list that a delta
 * list adds to
 * @param out       receives a new number, freed with free_BIGINT()
 * @return 0; 0x48100049 for a null argument; 0x48100047 when the list lacks the extension; 0x48100104 when
 * its value is no INTEGER, and when memory runs out
 */
TLXPKI_API uint32_t decode_X509_CRL_number(const X509_CRL *crl, int32_t oid_index, BIGINT **out);

/**
 * Adds a number to the extensions of a list, or replaces it. The delta list indicator is critical.
 * @param oid_index as for decode_X509_CRL_number()
 */
TLXPKI_API uint32_t set_X509_CRL_number(X509_CRL *crl, int32_t oid_index, const BIGINT *value);

/**
 * The octets that a decoded list was read from, as long as they are kept.
 * @param out receives a copy, freed with tlx_free()
 * @return how many; 0 for a null argument, a list without them, and when memory runs out
 */
TLXPKI_API uint32_t get_X509_CRL_received(const X509_CRL *crl, uint8_t **out);

/** X509_CRL entries. */
typedef STACK X509_CRLS;

/**
 * X509_CRLS: a list of X509_CRL, which may be empty.
 * - Decoder: reads a SEQUENCE OF or SET OF, whatever the tag of the node. 0x48040049 null argument;
 * 0x48040104 a child is no revocation list.
 * - Encoder: writes a SEQUENCE OF in list order. 0x48030049 null argument; 0x48030103 a revocation list is
 * missing or cannot be encoded.
 * @{
 */
TLXPKI_API X509_CRLS *new_X509_CRLS(void);
TLXPKI_API void clean_X509_CRLS(X509_CRLS *crls);
TLXPKI_API void free_X509_CRLS(X509_CRLS *crls);
TLXPKI_API X509_CRLS *dup_X509_CRLS(const X509_CRLS *crls);
TLXPKI_API uint32_t Seq_to_X509_CRLS(const ASN1_UNIT *node, X509_CRLS **out);
TLXPKI_API uint32_t X509_CRLS_to_Seq(const X509_CRLS *crls, ASN1_UNIT **out);
TLXPKI_API uint32_t get_X509_CRLS_count(const X509_CRLS *crls);
TLXPKI_API X509_CRL *get_X509_CRLS_child(const X509_CRLS *crls, int32_t index);
TLXPKI_API uint32_t add_X509_CRLS_child(X509_CRLS *crls, const X509_CRL *crl, int32_t index);
TLXPKI_API X509_CRL *remove_X509_CRLS_child(X509_CRLS *crls, int32_t index);
/** @} */

/* ---- Entries of a list ---- */

/** The number of entries; 0 for null. */
TLXPKI_API uint32_t get_X509_CRL_count(const X509_CRL *crl);

/**
 * Appends a copy of an entry. The time does not depend on the number of entries. Nobody else may use the list
 * meanwhile. In an indirect list an entry without certificateIssuer is of the same issuer as the entry before
 * it, the first one of the list's own (RFC 5280, section 5.3.3).
 * @return 0; 1 for a null argument, an entry that cannot be encoded, and when memory runs out (the list is
 * unchanged then)
 */
TLXPKI_API uint32_t add_X509_CRL_revoked(X509_CRL *crl, const X509_REVOKED *revoked);

/**
 * Reads the entries one after the other:
 * @code
 *   X509_REVOKED *revoked = NULL;
 *   for (uint32_t at = 0; next_X509_CRL_revoked(crl, &at, &revoked) == 0;)
 *       use(revoked);
 *   free_X509_REVOKED(revoked);
 * @endcode
 * @param position 0 for the first entry; receives where the next one begins
 * @param out      as for a decoder
 * @return 0; 0x480F0047 when there are no more; 0x480F0049 for a null argument; otherwise a status of
 * Seq_to_X509_REVOKED()
 */
TLXPKI_API uint32_t next_X509_CRL_revoked(const X509_CRL *crl, uint32_t *position, X509_REVOKED **out);

/**
 * Finds the entry of a certificate by issuer and serial number. In an indirect list the issuer of an entry is
 * its certificateIssuer, or else that of the entry before, or else the list's own. Of several entries of one
 * certificate the first counts.
 * @param issuer the certificate's issuer; null for the list's own. Names are compared as cmp_X509_NAME()
 * does.
 * @param out    as for a decoder; null to ask only whether there is an entry
 * @return 0; 0x480B0047 when there is none; 0x480B0049 for a null crl or serial; 0x480B0104 when a
 * certificateIssuer of the list cannot be read; 0x480B003C when memory, or random octets, run out; otherwise
 * a status of Seq_to_X509_REVOKED()
 */
TLXPKI_API uint32_t find_X509_CRL_revoked(const X509_CRL *crl, const X509_NAME *issuer, const BIGINT *serial,
                                          X509_REVOKED **out);

/**
 * Says whether a certificate is revoked by a list, or by a complete list with a delta list. Proves nothing of
 * the lists: verify_X509_CRL() and check_X509_CRL_delta() do.
 * @param crl   the list
 * @param delta what changed since, or null. Its entries come first; one with the reason removeFromCRL lifts
 * the revocation. So does one of `crl`, if that is itself a delta list.
 * @param out   receives the entry, as for a decoder; may be null
 * @return 0 when it is revoked; 0x480C0047 when it is not; 0x480C0049 for a null crl or cert
 * @return otherwise nothing is known: a status of check_X509_CRL_scope() when there is no entry because the
 * list does not cover the certificate, a status of find_X509_CRL_revoked()
 */
TLXPKI_API uint32_t find_X509_CRL_revoked_by_X509_CERT(const X509_CRL *crl, const X509_CRL *delta,
                                                       const X509_CERT *cert, X509_REVOKED **out);

/* ---- Reliance ---- */

/**
 * Checks that a list would name a certificate if that were revoked: by its issuer (indirect lists are for any
 * issuer) and by the issuingDistributionPoint, which may restrict the list to user or CA certificates, to
 * some reasons, or to a distribution point that the certificate has to name in its crlDistributionPoints. A
 * delta list names only what changed.
 * @return 0; 0x480E0049 for a null argument; 0x480E0106 when it is for another issuer; 0x480E0048 when it is
 * restricted to others, and for a delta list; 0x480E0104 when an extension cannot be read, and when memory
 * runs out
 */
TLXPKI_API uint32_t check_X509_CRL_scope(const X509_CRL *crl, const X509_CERT *cert);

/**
 * Checks that a delta list adds to a complete list (RFC 5280, section 5.2.4): the same issuer, authority key
 * identifier and issuing distribution point, and numbers that fit. The complete list is at least the one that
 * the delta list is based on, and the delta list is not the older one.
 * @return 0; 0x480D0049 for a null argument; 0x480D0048 when crl is a delta list or delta is none; 0x480D0106
 * when issuer or key differ; 0x480D005E when the distribution points differ; 0x480D001C when the numbers do
 * not fit; 0x480D0104 when a number is missing or cannot be read, and when memory runs out
 */
TLXPKI_API uint32_t check_X509_CRL_delta(const X509_CRL *crl, const X509_CRL *delta);

/**
 * Checks that a list can be relied on: it is of this issuer, whose key usage, if it has one, allows cRLSign;
 * the signature is the issuer's; no critical extension of the list or of an entry is unknown (RFC 5280,
 * sections 5.2 and 5.3); and the time is that of the list. Whether the issuer is trustworthy is the caller's
 * concern, as is the scope of the list.
 * @param issuer the certificate of who signed the list
 * @param time   as for verify_X509_CRL_validity()
 * @return 0; 0x480A0049 for a null crl or issuer; 0x480A0106 when the list names another issuer, or by its
 * authority key identifier another key of it; 0x480A0118 when the key usage lacks cRLSign; 0x480A0048 for an
 * unknown critical extension; 0x480A0104 when an extension cannot be read, and when memory runs out
 * @return otherwise a status of verify_SIG_X509_CRL() or verify_X509_CRL_validity()
 */
TLXPKI_API uint32_t verify_X509_CRL(const X509_CRL *crl, const X509_CERT *issuer, const ASN1_TIME *time);

/**
 * Verifies the signature of a list over the octets as received, or over what an own list encodes to. A list
 * whose outer signature algorithm is not the inner one, or whose signature has unused bits, fails as with a
 * wrong signature.
 * @param issuer_key the issuer's public key, of kind TLX_KEY_RSA or TLX_KEY_KCDSA
 * @return 0 when the signature is good; 0x48080049 for a null argument and a public key that was not decoded;
 * 0x4808002B when the algorithm gives no digest or no scheme; 0x48080048 for a key of another kind;
 * 0x48080103 when an own list cannot be encoded; 0x48080104 when a KCDSA signature cannot be read
 * @return otherwise the status of verify_RSA() or verify_KCDSA_data() unchanged, such as
 * TLX_RSA_BAD_SIGNATURE
 */
TLXPKI_API uint32_t verify_SIG_X509_CRL(const X509_CRL *crl, const X509_PUBKEY *issuer_key);

/**
 * Checks that a point in time is not before thisUpdate and not after nextUpdate, to the second. A list
 * without nextUpdate has no end.
 * @param time the point in time, in UTC; null for the present
 * @return 0 when it is; 0x48090049 for a null list and one without thisUpdate; 0x48090104 when a date cannot
 * be read or does not exist; 0x4809003C when the present time is unavailable; 0x48090113 when the time is
 * before thisUpdate or after nextUpdate
 */
TLXPKI_API uint32_t verify_X509_CRL_validity(const X509_CRL *crl, const ASN1_TIME *time);

/**
 * Signs a list with the algorithm inside its to-be-signed part. The outer signature algorithm becomes a copy
 * of that one. On failure the list is unchanged.
 * @param crl         needs a signature algorithm, an issuer and thisUpdate
 * @param private_key a private key of kind TLX_KEY_RSA or TLX_KEY_KCDSA
 * @return 0; 0x48070049 for a null argument, an empty key holder, and a list without an algorithm; 0x4807002B
 * when the algorithm gives no digest or no scheme; 0x48070048 for a key of another kind; 0x48070103 when the
 * list cannot be encoded; 0x4807003B when memory runs out
 * @return otherwise a status of sign_RSA() or sign_KCDSA_data(), when the key does not sign
 */
TLXPKI_API uint32_t gen_SIG_X509_CRL(X509_CRL *crl, const ASYMMETRIC_KEY *private_key);

TLX_END_DECLS

#endif
