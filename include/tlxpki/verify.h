/** @file
 * Verification of certificates by RFC 5280: building of paths over all candidates and validation by
 * section 6.1, strict unless the settings say otherwise. It judges the octets that were received; nothing is
 * decoded to records.
 *
 * A store holds trust anchors and intermediates. It is made once and then serves all threads. One call
 * verifies one certificate and tells every finding with its certificate, section and status. Revocation is
 * not consulted.
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

/* Faults of real certificates that may be let pass; bits. */
#define TLX_ACCEPT_CRITICAL_FALSE 1U  /**< critical FALSE is written out */
#define TLX_ACCEPT_BOOLEAN 2U         /**< TRUE is another octet than FF */
#define TLX_ACCEPT_KEY_USAGE_ZEROS 4U /**< the key usage ends in zero bits */
#define TLX_ACCEPT_SERIAL 8U          /**< a serial number is not in the fewest octets */

/** How much one verification may do; 0 for the default. Reaching one ends the search with a finding. */
typedef struct VERIFY_BUDGET {
    uint32_t signatures;       /**< signatures verified; 100 */
    uint32_t candidates;       /**< certificates tried as issuers; 20000 */
    uint32_t path_length;      /**< certificates of a path; 64 */
    uint32_t policy_nodes;     /**< policies of a path, over all its certificates; 10000 */
    uint32_t name_comparisons; /**< names compared with constraints; 250000 */
} VERIFY_BUDGET;

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
} VERIFY_SETTINGS;

/** Anchors and intermediates. */
typedef struct VERIFY_STORE VERIFY_STORE;

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

/** Returns how many policies the user-constrained set has. */
TLXPKI_API uint32_t get_VERIFY_RESULT_policy_count(const VERIFY_RESULT *result);
/** Stores the dotted text of a policy of the anchor's domain. A caller's record at *policy is replaced.
 * Returns 0; 1 for a null argument, an index out of range and when memory runs out. */
TLXPKI_API uint32_t get_VERIFY_RESULT_policy(const VERIFY_RESULT *result, uint32_t index,
                                             OBJECT_IDENTIFIER **policy);

/** Returns how many certificates were tried as issuers. */
TLXPKI_API uint32_t get_VERIFY_RESULT_candidates(const VERIFY_RESULT *result);
/** Returns how many paths reached an anchor and were validated. */
TLXPKI_API uint32_t get_VERIFY_RESULT_paths(const VERIFY_RESULT *result);

TLX_END_DECLS

#endif
