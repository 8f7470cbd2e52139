/** @file
 * Certification paths: building them from a pool of certificates up to a trust anchor, and validating them in
 * the manner of RFC 5280, section 6.
 *
 * Validation checks signatures, validity periods, name chaining, the issuers' basic constraints and key
 * usage, and runs the valid-policy tree with the explicit-policy counter. It does not apply policy mappings,
 * name constraints and inhibitAnyPolicy, does not consult revocation lists, and does not fail on critical
 * extensions that it does not know.
 *
 * A path is a list of certificates whose first is the target (the end entity) and whose last is the
 * self-issued certificate of the trust anchor.
 *
 * What differs from RFC 5280, and stays so because callers rely on it:
 * - Self-issued certificates, also in the middle of a path, have to be signed with their own key; they take
 * no part in policy processing, and a certificate that follows two of them finds no level of the policy tree
 * to extend.
 * - An issuer whose basic constraints say that it is no CA is refused when it has a key usage, whatever that
 * allows; one without a key usage passes.
 * - A pathLenConstraint is enforced when it is zero and the certificate below is a CA's; larger ones are not.
 * - The maximum path length limits building, not validation.
 * - anyPolicy goes on matching whatever inhibitAnyPolicy and the initial any-policy inhibit say.
 *
 * Threads: the settings are one set for the process. Each is read once, when an operation begins, and may be
 * changed at any time from any thread; operations with their own settings (_ex) do not look at them. Any
 * number of operations may run at once on distinct results; certificates, pools, anchors and paths may be
 * shared.
 */
#ifndef TLXPKI_CPV_H
#define TLXPKI_CPV_H

#include <tlxpki/x509_types.h>

TLX_BEGIN_DECLS

/* ---- Trust anchors ---- */

/** A name and a key that are trusted. */
typedef struct TRUST_ANCHOR {
    uint32_t kind;          /**< free for the caller; not looked at */
    X509_NAME *name;        /**< owned */
    X509_PUBKEY *publicKey; /**< owned */
} TRUST_ANCHOR;

/** TRUST_ANCHOR entries. */
typedef STACK TRUST_ANCHORS;

/** An empty anchor, freed with free_TRUST_ANCHOR(); null when memory runs out. */
TLXPKI_API TRUST_ANCHOR *new_TRUST_ANCHOR(void);
/** Frees the members and empties the anchor; null is ignored. */
TLXPKI_API void clean_TRUST_ANCHOR(TRUST_ANCHOR *anchor);
/** Frees an anchor with its members; null is ignored. */
TLXPKI_API void free_TRUST_ANCHOR(TRUST_ANCHOR *anchor);
/** A deep copy, freed with free_TRUST_ANCHOR(); null for null and when memory runs out. */
TLXPKI_API TRUST_ANCHOR *dup_TRUST_ANCHOR(const TRUST_ANCHOR *anchor);
/**
 * An anchor with the subject and the public key of a certificate.
 * @param cert the certificate, as a rule a self-issued one; stays the caller's
 * @return the anchor, freed with free_TRUST_ANCHOR(); null for null, a certificate without subject or key,
 * and when memory runs out
 */
TLXPKI_API TRUST_ANCHOR *create_TRUST_ANCHOR_from_X509_CERT(const X509_CERT *cert);
/**
 * Decodes SEQUENCE { Name, SubjectPublicKeyInfo }.
 * @param node the node
 * @param out  the anchor it points to is filled, else it receives a new one; unchanged on failure but for a
 * filled one
 * @return 0; 0x53040049 for a null argument; 0x5304002B when there are not exactly two children; 0x53040104
 * when the name or the key cannot be read, and when memory runs out
 */
TLXPKI_API uint32_t Seq_to_TRUST_ANCHOR(const ASN1_UNIT *node, TRUST_ANCHOR **out);
/**
 * Encodes SEQUENCE { Name, SubjectPublicKeyInfo }.
 * @param anchor the anchor
 * @param out    receives a new node, freed with free_ASN1_UNIT(), whatever it holds before. Unchanged on
 * failure
 * @return 0; 0x53030049 for a null argument and an anchor without name or key; 0x53030103 when the name or
 * the key cannot be encoded, and when memory runs out
 */
TLXPKI_API uint32_t TRUST_ANCHOR_to_Seq(const TRUST_ANCHOR *anchor, ASN1_UNIT **out);

/** An empty list, freed with free_TRUST_ANCHORS(); null when memory runs out. */
TLXPKI_API TRUST_ANCHORS *new_TRUST_ANCHORS(void);
/** Frees a list with its anchors; null is ignored. */
TLXPKI_API void free_TRUST_ANCHORS(TRUST_ANCHORS *anchors);
/** Appends a copy of an anchor. 0; 1 for a null argument and when memory runs out. */
TLXPKI_API uint32_t add_TRUST_ANCHORS(TRUST_ANCHORS *anchors, const TRUST_ANCHOR *anchor);
/** The number of anchors; 0 for null. */
TLXPKI_API uint32_t get_TRUST_ANCHORS_count(const TRUST_ANCHORS *anchors);
/** The anchor at a zero-based index, which the list owns; null when there is none. */
TLXPKI_API TRUST_ANCHOR *get_TRUST_ANCHORS_child(const TRUST_ANCHORS *anchors, int32_t index);
/** The index of the first anchor with the same name and public key; -1 when there is none or an argument is
 * null. */
TLXPKI_API int32_t get_TRUST_ANCHORS_index_by_TRUST_ANCHOR(const TRUST_ANCHORS *anchors,
                                                           const TRUST_ANCHOR *anchor);

/* ---- Settings ---- */

/** What validation starts from; for operations with settings of their own. */
typedef struct CPV_SETTINGS {
    const ASN1_TIME *time; /**< the point in time to validate at, in UTC; null for the present */
    uint32_t initial_any_policy_inhibit; /**< has no effect yet */
    uint32_t initial_explicit_policy;    /**< nonzero requires an acceptable policy on every path */
    int32_t max_certificatePath_length;  /**< most certificates below the anchor's, less one; see
                                            build_certPath() */
} CPV_SETTINGS;

/** The process-wide settings at this moment, with the present as the time. Null is ignored. */
TLXPKI_API void get_CPV_SETTINGS(CPV_SETTINGS *settings);

/** The initial any-policy inhibit; 0 until it is set. */
TLXPKI_API uint32_t get_initial_any_policy_inhibit(void);
/** Sets it. It has no effect yet: anyPolicy goes on matching. */
TLXPKI_API void set_initial_any_policy_inhibit(uint32_t inhibit);
/** The initial explicit policy; 255 until it is set. */
TLXPKI_API uint32_t get_initial_explicit_policy(void);
/** Sets it for all validations that start from now on: nonzero requires an acceptable policy on every path.
 */
TLXPKI_API void set_initial_explicit_policy(uint32_t required);
/** Always 0: policy mappings are not processed, and the pair exists for symmetry only. */
TLXPKI_API uint32_t get_initial_policy_mapping_inhibit(void);
/** Stores nothing. */
TLXPKI_API void set_initial_policy_mapping_inhibit(uint32_t inhibit);
/** The maximum path length; 3 until it is set. */
TLXPKI_API int32_t get_max_certificatePath_length(void);
/** Sets the maximum path length. 0; 1 for a length below 1 (nothing changes then). */
TLXPKI_API uint32_t set_max_certificatePath_length(int32_t length);

/* ---- Building ---- */

/**
 * Tells whether a certificate is self-issued. Only the names are compared; no signature is checked.
 * @param cert the certificate
 * @return 0 (yes) when issuer and subject are equal, 1 (no) otherwise and for null: mind the sense
 */
TLXPKI_API uint32_t is_selfSigned(const X509_CERT *cert);

/**
 * Builds the path from a certificate to a trust anchor, with the process-wide settings.
 *
 * From the target on, each certificate has to be within its validity period. Its issuer is the first of the
 * pool, in pool order, that fits its authority key identifier: by keyIdentifier (equal to the candidate's
 * subject key identifier over the length of that), by authorityCertSerialNumber, or by a directory name that
 * comes first in authorityCertIssuer. A certificate that is self-issued ends the path; its subject and key
 * have to be an anchor's. Each call makes its own index of a large pool, in one pass.
 *
 * @param pool    the certificates to choose issuers from, the anchor's own among them
 * @param anchors the trust anchors
 * @param target  the certificate to begin with; need not be in the pool
 * @param path    copies of the certificates are appended to the list it points to, or to a new one (freed
 * with free_X509_CERTIFICATES()). On failure a caller's list keeps what was appended, and none is made
 * @return 0
 * @return 0x53050049 for a null argument
 * @return 0x53050047 when more than the maximum path length plus one certificates, or more than there are,
 *         stand below the anchor's (certificates that issue each other end here), when one that is not
 * self-issued has no authority key identifier that can be read, and when no certificate of the pool fits it
 * @return 0x53050116 when the self-issued certificate is no trust anchor
 * @return 0x5305003C when memory runs out
 * @return a status of verify_X509_validity()
 */
TLXPKI_API uint32_t build_certPath(const X509_CERTIFICATES *pool, const TRUST_ANCHORS *anchors,
                                   const X509_CERT *target, X509_CERTIFICATES **path);

/**
 * The same with settings of one's own, of which time and maximum path length count.
 * @param settings null for the process-wide ones
 * @return a status of build_certPath()
 */
TLXPKI_API uint32_t build_certPath_ex(const X509_CERTIFICATES *pool, const TRUST_ANCHORS *anchors,
                                      const X509_CERT *target, X509_CERTIFICATES **path,
                                      const CPV_SETTINGS *settings);

/* ---- The valid-policy tree ---- */

typedef struct VALID_POLICY_DATA {
    int32_t criticality_indicator;           /**< -1 critical, and in a new record; 0 not */
    OBJECT_IDENTIFIER *valid_policy;         /**< owned */
    STACK *qualifier_set;                    /**< always null */
    OBJECT_IDENTIFIERS *expected_policy_set; /**< owned */
} VALID_POLICY_DATA;

typedef struct VALID_POLICY_NODE {
    int32_t child_count;              /**< nodes of the next level whose parent this is */
    VALID_POLICY_DATA *data;          /**< owned */
    struct VALID_POLICY_NODE *parent; /**< the node of the previous level; null for the root; not owned */
} VALID_POLICY_NODE;

/** VALID_POLICY_NODE entries. */
typedef STACK VALID_POLICY_NODES;

/** One level of the tree, and the levels below it. */
typedef struct node_LIST {
    int32_t depth;             /**< -1 in a list without levels; 0 for the root's level */
    uint32_t marker;           /**< TLX_NODE_LIST_MARKER in a level */
    VALID_POLICY_NODES *nodes; /**< owned; null in a level without nodes */
    struct node_LIST *next;    /**< the next deeper level, or null; owned */
} node_LIST;

#define TLX_NODE_LIST_MARKER 64U

/** A record with the criticality indicator -1, freed with free_VALID_POLICY_DATA(); null when memory runs
 * out. */
TLXPKI_API VALID_POLICY_DATA *new_VALID_POLICY_DATA(void);
/** Frees a record with its members; null is ignored. */
TLXPKI_API void free_VALID_POLICY_DATA(VALID_POLICY_DATA *data);
/** A node without data, freed with free_VALID_POLICY_NODE(); null when memory runs out. */
TLXPKI_API VALID_POLICY_NODE *new_VALID_POLICY_NODE(void);
/** Frees a node with its data; null is ignored. */
TLXPKI_API void free_VALID_POLICY_NODE(VALID_POLICY_NODE *node);
/** An empty list of nodes, freed with free_VALID_POLICY_NODES(); null when memory runs out. */
TLXPKI_API VALID_POLICY_NODES *new_VALID_POLICY_NODES(void);
/** Frees a list with its nodes; null is ignored. */
TLXPKI_API void free_VALID_POLICY_NODES(VALID_POLICY_NODES *nodes);
/** A list without levels (depth -1), freed with free_node_LIST(); null when memory runs out. */
TLXPKI_API node_LIST *new_node_LIST(void);
/** Frees a list with all its levels and their nodes; null is ignored. */
TLXPKI_API void free_node_LIST(node_LIST *list);
/** Reverses the order of the levels and returns the new head; null for null. */
TLXPKI_API node_LIST *reverse_node_LIST(node_LIST *list);
/** Frees every level from the n-th on (0 for the head, which stays as a list without levels), with their
 * nodes. */
TLXPKI_API void remove_node_LIST(node_LIST *list, uint32_t n);
/** The number of levels; 0 for null and for a list without levels. */
TLXPKI_API uint32_t get_count_from_node_LIST(const node_LIST *list);
/**
 * Adds a level that holds copies of nodes: as depth 0 to a list without levels, else after the deepest.
 * @return 0; 0x530B0049 for a null argument; 0x530B003C when memory runs out
 */
TLXPKI_API uint32_t add_VALID_POLICY_TREE_LIST(node_LIST *list, const VALID_POLICY_NODES *nodes);
/**
 * Prints the valid policies of each level that has nodes to standard output. Prints nothing for null and for
 * a list whose head is not marked as a level.
 */
TLXPKI_API void print_VALID_POLICY_TREE_LIST(const node_LIST *list);

/* ---- Validation ---- */

/** The certificates of a path at most, the anchor's among them. */
#define TLX_CPV_MAX_CERTIFICATES 1000U
/** The nodes of the policy tree that one validation makes at most. They take some 40 MB. */
#define TLX_CPV_MAX_POLICY_NODES 100000U

/**
 * Validates a path with the process-wide settings, at the present time.
 *
 * Each node of the policy tree gets children of its own, so that certificates which name both anyPolicy and
 * many policies make a tree that grows with the square of the path's length. TLX_CPV_MAX_POLICY_NODES limits
 * it: 100 policies beside anyPolicy exceed it with 45 certificates below the anchor's.
 *
 * @param path                    the path, target first, the anchor's self-issued certificate last. That it
 * ends in a trust anchor is for build_certPath() or the caller to see to
 * @param user_initial_policy_set the policies that are acceptable to the caller, or null for any. Those that
 * the final step compared are freed and taken out of the list; the others, and the list, stay the caller's.
 * anyPolicy accepts everything
 * @param tree                    on success receives the valid-policy tree, freed with free_node_LIST(); a
 * list it points to is emptied and filled instead, and on failure keeps the levels built so far. May be null
 * @return 0
 * @return 0x53070049 for a null path
 * @return 0x5307002B for an empty path
 * @return 0x53070047 when the path has more than TLX_CPV_MAX_CERTIFICATES certificates, and when the maximum
 * path length is below 0
 * @return 0x53070119 when no acceptable policy is left while an explicit policy is required
 * @return 0x53100047 when the policy tree takes more than TLX_CPV_MAX_POLICY_NODES nodes
 * @return 0x53100049 when the path does not end in a self-issued certificate, and when a certificate has no
 * level of the tree to extend
 * @return 0x53100054 when a signature does not verify with the issuer's key
 * @return 0x53100106 when the issuer's name is not the subject of the issuer's certificate
 * @return 0x5310011C when an explicit policy is required and the certificate has no certificate policies
 * @return 0x5309000E when the issuer's basic constraints cannot be read; 0x5309011B when its basic
 * constraints are missing, are not those of a CA while its key usage has keyCertSign, or allow no CA below it
 * @return 0x530A0118 when the issuer's key usage lacks keyCertSign
 * @return 0x530A002B when the certificate or its issuer has no extensions at all
 * @return 0x530A0047 when the certificate policies cannot be read
 * @return 0x5307003C when memory runs out; where it runs out within a step, that step's status
 * @return a status of verify_X509_validity(); a status of verify_SIG_X509_CERT() for a self-issued
 * certificate
 */
TLXPKI_API uint32_t validate_certpath(const X509_CERTIFICATES *path,
                                      OBJECT_IDENTIFIERS *user_initial_policy_set, node_LIST **tree);

/**
 * The same with settings of one's own.
 * @param settings   null for the process-wide ones
 * @param stopped_at receives the index in the path of the certificate that failed, -1 when none did (also
 * when the final step over all of them failed). May be null
 * @return a status of validate_certpath()
 */
TLXPKI_API uint32_t validate_certpath_ex(const X509_CERTIFICATES *path,
                                         OBJECT_IDENTIFIERS *user_initial_policy_set, node_LIST **tree,
                                         const CPV_SETTINGS *settings, int32_t *stopped_at);

TLX_END_DECLS

#endif
