/** @file
 * Verification of certificates by RFC 5280: building of paths over all candidates and validation by
 * section 6.1, strict unless the settings say otherwise. It judges the octets that were received; nothing is
 * decoded to records.
 *
 * A store holds trust anchors, intermediates, revocation lists and OCSP responses. It is made once and then
 * serves all threads. One call verifies one certificate and tells every finding with its certificate, section
 * and status.
 *
 * What it decides where standards leave a choice:
 * - Input is DER. Refused are, among others, trailing octets, duplicate extensions, a critical FALSE that is
 * written out, and a signature algorithm that differs from that of the signed part. A serial number of any
 * sign and length, GeneralizedTime before 2050, unique identifiers and relative names of several attributes
 * are read as they are. A cA FALSE that is written out is FALSE, with a warning.
 * - Names are equal by section 7.1: PrintableString, UTF8String and IA5String without regard to the case of
 * ASCII letters and to spaces, other types octet by octet.
 * - All issuers of the right name are tried, first those whose key identifier agrees. Cross-certificates and
 * self-issued certificates count; no name and key occurs twice in a path. A target with the name and key of
 * an anchor is a path of one, of which everything but the signature is judged.
 * - An anchor's signature is not verified. Its key, validity and constraints count, unless anchor_rules says
 * otherwise. It may be of any version and without extensions.
 * - Name constraints are applied to every form that section 4.2.1.10 defines, and to emailAddress in a
 * subject without rfc822Name. A name of another form is refused when a critical extension constrains that
 * form. A minimum other than 0 and a maximum are refused. Common names are no host names.
 * - That an extension ought to be critical is not enforced. An absent key usage lets a CA sign.
 *
 * How it learns of revocation (section 6.3, RFC 6960):
 * - Lists and responses come from the store, the pool and the fetch callback. Complete, indirect and delta
 * lists count, with their distribution points and reasons. Serial numbers are compared as octets.
 * - A list is signed by an issuer in the path or by one whose own path ends at the same anchor, with cRLSign
 * where it has a key usage. A response is signed by the issuer of the certificate or by one that it issued
 * directly for OCSP signing, whose certificate came with the response or is in the store or the pool under
 * the responder's name. The responder's own revocation is looked up in the lists, unless its certificate has
 * id-pkix-ocsp-nocheck; without any list it counts.
 * - All that there is counts: one valid "revoked" beats every "good". A list or response that is stale, of a
 * wrong signer, not for the certificate or with an unknown critical extension says nothing.
 * - A list without nextUpdate says nothing. A response without it holds for a day, or for the time that the
 * settings give.
 *
 * - Ownership: functions copy what they are given. A store stays the caller's and may be freed once no
 * verification uses it; results do not refer to it.
 * - Failure: adding returns 0 or a status of group 0x55, 0x5502003C when memory runs out. new_ functions
 * return null then. get_ functions return 0 or null for null and for an index out of range.
 * - Threads: verifications may run at once with one store, while nobody adds to it.
 */
#ifndef TLXPKI_VERIFY_H
#define TLXPKI_VERIFY_H

#include <tlxpki/x509_types.h>

TLX_BEGIN_DECLS

/* Profiles of strength. */
#define TLX_PROFILE_CURRENT 0U       /**< RSA of 2048 bits, ECDSA, EdDSA; SHA-2 and SHA-3 */
#define TLX_PROFILE_KOREAN_LEGACY 1U /**< also RSA and KCDSA of 1024 bits, SHA-1 and HAS-160 */
#define TLX_PROFILE_ANY 2U           /**< every algorithm, also DSA, without least sizes */

/* What counts of an anchor's certificate besides its name and key. */
#define TLX_ANCHOR_RULES_DEFAULT 0U /**< validity and constraints */
#define TLX_ANCHOR_RULES_NONE 1U
#define TLX_ANCHOR_RULES_VALIDITY 2U
#define TLX_ANCHOR_RULES_CONSTRAINTS 3U

/* Purposes of a target. */
#define TLX_PURPOSE_ANY 0U
#define TLX_PURPOSE_TLS_SERVER 1U
#define TLX_PURPOSE_TLS_CLIENT 2U
#define TLX_PURPOSE_EMAIL 3U
#define TLX_PURPOSE_CODE 4U
#define TLX_PURPOSE_TIME_STAMPING 5U
#define TLX_PURPOSE_OCSP_SIGNING 6U
#define TLX_PURPOSE_SIGNING                                                         \
    7U /**< digitalSignature or nonRepudiation, as Korean certificates to sign with \
        */
#define TLX_PURPOSE_KEY_MANAGEMENT 8U /**< keyEncipherment or keyAgreement */

/* Which certificates below the anchor need an answer that they are not revoked. A revoked one is a finding in
 * every mode but off. */
#define TLX_REVOCATION_DEFAULT 0U /**< present with any list, response or callback; else off */
#define TLX_REVOCATION_OFF 1U     /**< nothing is looked up */
#define TLX_REVOCATION_PRESENT 2U /**< none */
#define TLX_REVOCATION_TARGET 3U  /**< the target */
#define TLX_REVOCATION_PATH 4U    /**< all */

/* What is known of a certificate. */
#define TLX_REVOCATION_NOT_CHECKED 0U  /**< an anchor, or revocation is off */
#define TLX_REVOCATION_GOOD 1U         /**< not revoked */
#define TLX_REVOCATION_REVOKED 2U      /**< also on hold */
#define TLX_REVOCATION_UNDETERMINED 3U /**< nothing that counts answers */
#define TLX_REVOCATION_EXEMPT 4U       /**< an OCSP responder with id-pkix-ocsp-nocheck */

/* Where an answer comes from. */
#define TLX_REVOCATION_SOURCE_NONE 0U
#define TLX_REVOCATION_SOURCE_CRL 1U
#define TLX_REVOCATION_SOURCE_OCSP 2U

/* What a callback is asked for. */
#define TLX_FETCH_ISSUERS 1U /**< certificates of issuers */
#define TLX_FETCH_CRL 2U     /**< revocation lists */
#define TLX_FETCH_OCSP 3U    /**< an OCSP response */

/* Faults of real certificates that may be let pass; bits. */
#define TLX_ACCEPT_CRITICAL_FALSE 1U  /**< critical FALSE is written out */
#define TLX_ACCEPT_BOOLEAN 2U         /**< TRUE is another octet than FF */
#define TLX_ACCEPT_KEY_USAGE_ZEROS 4U /**< the key usage ends in zero bits */
#define TLX_ACCEPT_SERIAL 8U          /**< a serial number is not in the fewest octets */

/** How much one verification may do; 0 for the default. Reaching one ends the search with a finding. */
typedef struct VERIFY_BUDGET {
    uint32_t signatures;       /**< signatures verified; 100 */
    uint32_t candidates;       /**< issuers, revocation lists and answers that are tried; 20000 */
    uint32_t path_length;      /**< certificates of a path; 64 */
    uint32_t policy_nodes;     /**< policies of a path, over all its certificates; 10000 */
    uint32_t name_comparisons; /**< names compared with constraints; 250000 */
    uint32_t fetches;          /**< calls of the fetch callback; 16 */
} VERIFY_BUDGET;

/** Anchors, intermediates, revocation lists and OCSP responses. */
typedef struct VERIFY_STORE VERIFY_STORE;

/** What is missing, for a callback. All members are the verification's. */
typedef struct VERIFY_REQUEST {
    uint32_t kind;              /**< TLX_FETCH_ */
    const uint8_t *certificate; /**< the certificate concerned, in DER */
    uint32_t certificate_len;
    const uint8_t *issuer; /**< its issuer; null for TLX_FETCH_ISSUERS and for an anchor that is a name */
    uint32_t issuer_len;
    const char *const *urls; /**< those that the certificate names for it, at least one */
    uint32_t url_count;
} VERIFY_REQUEST;

/** Fetches what is missing and adds it to a store with the add_ functions; anchors there do not count. It is
 * called in the thread of the verification, once for each kind and certificate.
 * @param context what the settings name
 * @param fetched belongs to the verification
 * @return 0; any other value ends the asking, not the verification */
typedef uint32_t (*VERIFY_FETCH)(void *context, const VERIFY_REQUEST *request, VERIFY_STORE *fetched);

/** What a verification starts from. A record of zeros has the defaults. All members stay the caller's. */
typedef struct VERIFY_SETTINGS {
    const ASN1_TIME *time;              /**< the point in time to verify at, in UTC; null for the present */
    uint32_t profile;                   /**< TLX_PROFILE_ */
    uint32_t least_rsa_bits;            /**< 0 for the profile's */
    uint32_t accepted_faults;           /**< TLX_ACCEPT_, of the target; add_ functions take their own */
    uint32_t anchor_rules;              /**< TLX_ANCHOR_RULES_ */
    const OBJECT_IDENTIFIERS *policies; /**< user-initial-policy-set; null for any policy */
    uint32_t explicit_policy;           /**< nonzero requires a policy; initial-explicit-policy */
    uint32_t inhibit_mapping;           /**< initial-policy-mapping-inhibit */
    uint32_t inhibit_any_policy;        /**< initial-any-policy-inhibit */
    uint32_t purpose;                   /**< TLX_PURPOSE_ */
    const char *host;                   /**< DNS name that the target has to have, in ASCII; null for none */
    const uint8_t *address;             /**< IP address that it has to have; null for none */
    uint32_t address_len;               /**< 4 or 16 */
    const char *mailbox;                /**< mail address that it has to have; null for none */
    VERIFY_BUDGET budget;
    uint32_t revocation;   /**< TLX_REVOCATION_DEFAULT to TLX_REVOCATION_PATH */
    uint32_t response_age; /**< seconds that a response without nextUpdate holds; 0 for 86400 */
    VERIFY_FETCH fetch;    /**< null for none */
    void *fetch_context;
} VERIFY_SETTINGS;

/** Makes an empty store, freed with free_VERIFY_STORE(). */
TLXPKI_API VERIFY_STORE *new_VERIFY_STORE(void);
/** Frees a store with its certificates. Ignores null. */
TLXPKI_API void free_VERIFY_STORE(VERIFY_STORE *store);

/** Adds a trust anchor: a certificate in DER, self-issued or not. One that is in the store is not added
 * again.
 * @param accepted_faults TLX_ACCEPT_
 * @return 0; 0x55070049 for a null argument; a status of reading (0x5501....), 0x55020201 for a key that is
 * not supported */
TLXPKI_API uint32_t add_VERIFY_STORE_anchor(VERIFY_STORE *store, const uint8_t *certificate, uint32_t len,
                                            uint32_t accepted_faults);
/** Adds a trust anchor that is a Name and a SubjectPublicKeyInfo, in DER.
 * @return 0; 0x55080049 for a null argument; 0x55010206 for a bad name; 0x55010208 for a bad key; 0x55020201
 * for one that is not supported */
TLXPKI_API uint32_t add_VERIFY_STORE_anchor_key(VERIFY_STORE *store, const uint8_t *name, uint32_t name_len,
                                                const uint8_t *key_info, uint32_t key_info_len);
/** Adds an intermediate. Statuses as of add_VERIFY_STORE_anchor(), with 0x55090049 for a null argument. */
TLXPKI_API uint32_t add_VERIFY_STORE_certificate(VERIFY_STORE *store, const uint8_t *certificate,
                                                 uint32_t len, uint32_t accepted_faults);
/** Adds a revocation list in DER, with all its entries indexed. Extensions with a critical FALSE that is
 * written out, or another TRUE than FF, are let pass.
 * @return 0; 0x550B0049 for a null argument; 0x5501004F, 0x55010201 or 0x55060301 for what is no list */
TLXPKI_API uint32_t add_VERIFY_STORE_crl(VERIFY_STORE *store, const uint8_t *crl, uint32_t len);
/** Adds an OCSPResponse or a BasicOCSPResponse in DER.
 * @return 0; 0x550C0049 for a null argument; 0x55060302 for what is no response; 0x55060303 for one without
 * an answer, such as tryLater */
TLXPKI_API uint32_t add_VERIFY_STORE_ocsp(VERIFY_STORE *store, const uint8_t *response, uint32_t len);
/** Returns how many anchors and intermediates a store has. */
TLXPKI_API uint32_t get_VERIFY_STORE_count(const VERIFY_STORE *store);

/** What was found about one certificate. The texts are constant. */
typedef struct VERIFY_FINDING {
    uint32_t certificate; /**< its index in the path */
    uint32_t status;      /**< also of the compatible rules, where they name the same fault */
    const char *rule;     /**< a name in one word, such as "NotCa" */
    const char *section;  /**< of RFC 5280 */
    const char *text;     /**< a sentence without a full stop */
} VERIFY_FINDING;

/** What a verification found. */
typedef struct VERIFY_RESULT VERIFY_RESULT;

/**
 * Verifies a certificate.
 * @param store       anchors and intermediates
 * @param pool        more intermediates, such as came with a message; null for none. Anchors in it do not
 * count
 * @param certificate the target, in DER
 * @param settings    null for the defaults
 * @param result      receives what was found, also when it is not valid; freed with free_VERIFY_RESULT(). May
 * be null
 * @return 0 when it is valid; else the status of the first finding
 * @return 0x550A0049 for a null store or certificate; 0x550A0048 for settings that are not as documented;
 * 0x5502003C when memory runs out. There is no result then
 */
TLXPKI_API uint32_t verify_CERTIFICATE(const VERIFY_STORE *store, const VERIFY_STORE *pool,
                                       const uint8_t *certificate, uint32_t len,
                                       const VERIFY_SETTINGS *settings, VERIFY_RESULT **result);

/** Frees a result. Ignores null. */
TLXPKI_API void free_VERIFY_RESULT(VERIFY_RESULT *result);

/** Returns how many findings there are: none when the certificate is valid. */
TLXPKI_API uint32_t get_VERIFY_RESULT_finding_count(const VERIFY_RESULT *result);
/** Stores a finding. Returns 0; 1 for a null argument and an index out of range. */
TLXPKI_API uint32_t get_VERIFY_RESULT_finding(const VERIFY_RESULT *result, uint32_t index,
                                              VERIFY_FINDING *finding);
/** Returns how many warnings there are. They do not change the verdict. */
TLXPKI_API uint32_t get_VERIFY_RESULT_warning_count(const VERIFY_RESULT *result);
/** Stores a warning. Returns 0; 1 for a null argument and an index out of range. */
TLXPKI_API uint32_t get_VERIFY_RESULT_warning(const VERIFY_RESULT *result, uint32_t index,
                                              VERIFY_FINDING *warning);

/** Returns the length of the path: of the valid one, or of the most promising one that reached an anchor.
 * Without any the path is the target alone. */
TLXPKI_API uint32_t get_VERIFY_RESULT_path_count(const VERIFY_RESULT *result);
/** Returns a certificate of the path in DER, anchor first, which stays the result's, and stores its length.
 * Null also for an anchor that is a name and a key, with a length of 0. */
TLXPKI_API const uint8_t *get_VERIFY_RESULT_certificate(const VERIFY_RESULT *result, uint32_t index,
                                                        uint32_t *len);

/** What is known of the revocation of one certificate. */
typedef struct VERIFY_REVOCATION {
    uint32_t state;   /**< TLX_REVOCATION_NOT_CHECKED to TLX_REVOCATION_EXEMPT */
    uint32_t source;  /**< TLX_REVOCATION_SOURCE_ */
    uint32_t reason;  /**< of a revoked one, TLX_CRL_REASON_ */
    ASN1_TIME time;   /**< of a revoked one, in UTC */
    uint32_t status;  /**< of an undetermined one, why: the status of a rule; else 0 */
    const char *text; /**< the sentence for it; null for 0 */
} VERIFY_REVOCATION;

/** Stores what is known of the certificate at a place of the path. Returns 0; 1 for a null argument and an
 * index out of range. */
TLXPKI_API uint32_t get_VERIFY_RESULT_revocation(const VERIFY_RESULT *result, uint32_t index,
                                                 VERIFY_REVOCATION *revocation);

/** Returns how many policies the user-constrained set has. */
TLXPKI_API uint32_t get_VERIFY_RESULT_policy_count(const VERIFY_RESULT *result);
/** Stores the dotted text of a policy of the anchor's domain. A caller's record at *policy is replaced.
 * Returns 0; 1 for a null argument, an index out of range and when memory runs out. */
TLXPKI_API uint32_t get_VERIFY_RESULT_policy(const VERIFY_RESULT *result, uint32_t index,
                                             OBJECT_IDENTIFIER **policy);

/** Returns the qualifiers of a policy, a SEQUENCE OF PolicyQualifierInfo in DER (RFC 5280, section 4.2.1.4),
 * which stay the result's, and stores their length. They are those of the certificate that the policy of the
 * anchor's domain stands in, and of anyPolicy where it stands for the policy. Null for none, with a length of
 * 0. */
TLXPKI_API const uint8_t *get_VERIFY_RESULT_policy_qualifiers(const VERIFY_RESULT *result, uint32_t index,
                                                              uint32_t *len);

/** Returns how many issuers, revocation lists and answers were tried. */
TLXPKI_API uint32_t get_VERIFY_RESULT_candidates(const VERIFY_RESULT *result);
/** Returns how many paths reached an anchor and were validated. */
TLXPKI_API uint32_t get_VERIFY_RESULT_paths(const VERIFY_RESULT *result);

/** What the search gave up. */
typedef struct VERIFY_ATTEMPT {
    const uint8_t *certificate; /**< in DER, the result's; null for an anchor that is a name and a key */
    uint32_t certificate_len;
    VERIFY_FINDING finding; /**< its certificate counts from the target, which is 0 */
} VERIFY_ATTEMPT;

/** Returns how many attempts are known: issuers that were refused, certificates without issuers, and complete
 * paths that are not valid, each by its first finding. Those that get_VERIFY_RESULT_finding() tells are left
 * out, and all after the first 32. */
TLXPKI_API uint32_t get_VERIFY_RESULT_attempt_count(const VERIFY_RESULT *result);
/** Stores an attempt, in the order of the search. Returns 0; 1 for a null argument and an index out of range.
 */
TLXPKI_API uint32_t get_VERIFY_RESULT_attempt(const VERIFY_RESULT *result, uint32_t index,
                                              VERIFY_ATTEMPT *attempt);

TLX_END_DECLS

#endif
