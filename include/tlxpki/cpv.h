/** @file
 * Certification paths: building them from a pool of certificates up to a trust anchor, and validating them in
 * the manner of RFC 5280, section 6. The contract of all records is in x509_types.h. New programs use
 * verify.h, which follows the standard.
 *
 * A path is a list of certificates. The first is the target (the end entity), and the last is the self-issued
 * certificate of the trust anchor. Validation checks signatures, validity periods, name chaining, the
 * issuers' basic constraints and key usage, and policies.
 *
 * What differs from RFC 5280, and stays so because callers rely on it:
 *
 * What validation leaves out:
 * - It does not consult revocation lists. It ignores name constraints, policy mappings, inhibitPolicyMapping,
 * inhibitAnyPolicy, and every extension that it does not know, critical or not.
 * - It does not look for a trust anchor. It trusts the certificate at the end of the path, which
 * build_certPath() or the caller compared with an anchor.
 * - It does not enforce the maximum path length, which limits building only.
 *
 * Self-issued certificates:
 * - A certificate is self-issued when its issuer and subject are equal. Anywhere in a path, it has to be
 * signed with its own key, not with that of the certificate above. Nothing else of it is checked: no validity
 * period, no policies, no policy constraints. A self-issued target therefore passes below any anchor.
 * - Any other certificate below a self-issued one fails with 0x53100049, unless that is the anchor's.
 *
 * The anchor's certificate:
 * - It counts as an issuer: its extensions, basic constraints and key usage have to allow what it signed. Its
 * validity period, policies and policy constraints are not checked.
 *
 * Names and keys:
 * - Names are equal when their DER encodings are; the comparison of RFC 5280, section 7.1, which ignores case
 * and spacing, is not used. Of a relative distinguished name only the first type and value counts.
 * - A key without its algorithm's parameters does not inherit the issuer's.
 *
 * Extensions:
 * - Every certificate that is not self-issued, and every issuer, needs extensions, whatever its version: one
 * without any fails with 0x530A002B.
 * - Of duplicate extensions the first counts; the others are ignored.
 *
 * Basic constraints and key usage of an issuer:
 * - Without basic constraints it fails with 0x5309011B. With a cA that is omitted, as DER writes FALSE, it
 * fails with 0x5309000E. With a FALSE written out it fails with 0x5309011B when the key usage has
 * keyCertSign, fails with 0x530A0118 when the key usage lacks that, and passes without a key usage.
 * - A pathLenConstraint counts when it is 0 and cA is true: a certificate directly below may then not say
 * that it is a CA, not even the target. Larger values, and CAs further down, are not checked.
 * - A key usage that cannot be read counts as one without keyCertSign.
 *
 * Policies:
 * - An explicit policy is required unless the settings say otherwise.
 * - A requireExplicitPolicy of 0 changes nothing. Policy constraints that cannot be read are ignored.
 * - anyPolicy in a certificate matches a node that expects anyPolicy, and no other: below a certificate with
 * the policy A alone it ends A. No inhibit stops it from matching.
 * - A node that expects anyPolicy gets a child for every policy of the next certificate, those that other
 * nodes also match included. So a level may hold a policy several times.
 * - While an explicit policy is required, a certificate without certificate policies fails at once with
 * 0x5310011C. A tree that has run empty fails only at the end, with 0x53070119.
 * - The user's policies are compared with the deepest level alone, in its order. A node stays when it equals
 * one of them or follows a node that stayed. A node with anyPolicy equals no other policy of the user, and is
 * not replaced by the user's policies. anyPolicy among the user's policies accepts a tree whose deepest level
 * has nodes, as it is.
 * - Qualifiers are ignored. A policy that a certificate names twice counts once.
 *
 * Settings and threads. The settings are one set for the process, which any thread may change at any time. An
 * operation reads each setting once, when it begins; operations with settings of their own (_ex) ignore those
 * of the process. Certificates, pools, anchors and paths may be shared.
 */
#ifndef TLXPKI_CPV_H
#define TLXPKI_CPV_H

#include <tlxpki/x509_types.h>

TLX_BEGIN_DECLS

/* ---- Trust anchors ---- */

/** A name and a key that are trusted. */
typedef struct TRUST_ANCHOR {
    uint32_t kind;          /**< free for the caller; ignored */
    X509_NAME *name;        /**< owned */
    X509_PUBKEY *publicKey; /**< owned */
} TRUST_ANCHOR;

/** TRUST_ANCHOR entries. */
typedef STACK TRUST_ANCHORS;

/**
 * TRUST_ANCHOR. It encodes as SEQUENCE { Name, SubjectPublicKeyInfo }, without kind; dup_ copies kind.
 * - Decoder: 0x53040049 null argument; 0x5304002B not exactly two children; 0x53040104 the name or the key
 * cannot be read.
 * - Encoder: 0x53030049 null argument, name or key; 0x53030103 the name or the key cannot be encoded.
 * @{
 */
TLXPKI_API TRUST_ANCHOR *new_TRUST_ANCHOR(void);
TLXPKI_API void clean_TRUST_ANCHOR(TRUST_ANCHOR *anchor);
TLXPKI_API void free_TRUST_ANCHOR(TRUST_ANCHOR *anchor);
TLXPKI_API TRUST_ANCHOR *dup_TRUST_ANCHOR(const TRUST_ANCHOR *anchor);
TLXPKI_API uint32_t Seq_to_TRUST_ANCHOR(const ASN1_UNIT *node, TRUST_ANCHOR **out);
TLXPKI_API uint32_t TRUST_ANCHOR_to_Seq(const TRUST_ANCHOR *anchor, ASN1_UNIT **out);
/** @} */

/** Makes an anchor with the subject and the public key of a certificate, as a rule a self-issued one. Returns
 * null for null, a certificate without subject or key, and when memory runs out. */
TLXPKI_API TRUST_ANCHOR *create_TRUST_ANCHOR_from_X509_CERT(const X509_CERT *cert);

/**
 * TRUST_ANCHORS: a list of TRUST_ANCHOR without an encoding. add_TRUST_ANCHORS() appends a copy.
 * @{
 */
TLXPKI_API TRUST_ANCHORS *new_TRUST_ANCHORS(void);
TLXPKI_API void free_TRUST_ANCHORS(TRUST_ANCHORS *anchors);
TLXPKI_API uint32_t add_TRUST_ANCHORS(TRUST_ANCHORS *anchors, const TRUST_ANCHOR *anchor);
TLXPKI_API uint32_t get_TRUST_ANCHORS_count(const TRUST_ANCHORS *anchors);
TLXPKI_API TRUST_ANCHOR *get_TRUST_ANCHORS_child(const TRUST_ANCHORS *anchors, int32_t index);
/** @} */

/** Returns the index of the first anchor with the same name and public key; -1 when there is none and for a
 * null argument. */
TLXPKI_API int32_t get_TRUST_ANCHORS_index_by_TRUST_ANCHOR(const TRUST_ANCHORS *anchors,
                                                           const TRUST_ANCHOR *anchor);

/* ---- Settings ---- */

/** What building and validation start from; for operations with settings of their own. */
typedef struct CPV_SETTINGS {
    const ASN1_TIME *time; /**< the point in time to validate at, in UTC; null for the present */
    uint32_t initial_any_policy_inhibit; /**< has no effect */
    uint32_t initial_explicit_policy;    /**< nonzero requires an acceptable policy on every path */
    int32_t max_certificatePath_length;  /**< most certificates below the anchor's, less one; see
                                            build_certPath() */
} CPV_SETTINGS;

/** Stores the process-wide settings of this moment, with a null time. Ignores null. */
TLXPKI_API void get_CPV_SETTINGS(CPV_SETTINGS *settings);

/** The initial any-policy inhibit; 0 until it is set. */
TLXPKI_API uint32_t get_initial_any_policy_inhibit(void);
/** Sets it, without an effect: anyPolicy goes on matching. */
TLXPKI_API void set_initial_any_policy_inhibit(uint32_t inhibit);
/** The initial explicit policy; 255 until it is set. */
TLXPKI_API uint32_t get_initial_explicit_policy(void);
/** Sets it: nonzero requires an acceptable policy on every path. */
TLXPKI_API void set_initial_explicit_policy(uint32_t required);
/** Always 0: policy mappings are not processed, and the pair exists for symmetry only. */
TLXPKI_API uint32_t get_initial_policy_mapping_inhibit(void);
/** Stores nothing. */
TLXPKI_API void set_initial_policy_mapping_inhibit(uint32_t inhibit);
/** The maximum path length; 3 until it is set. */
TLXPKI_API int32_t get_max_certificatePath_length(void);
/** Sets the maximum path length. Returns 0; 1 for a length below 1 (nothing changes then). */
TLXPKI_API uint32_t set_max_certificatePath_length(int32_t length);

/* ---- Building ---- */

/**
 * Compares issuer and subject of a certificate, without checking a signature.
 * @return 0 (yes) when they are equal, that is, the certificate is self-issued; 1 (no) otherwise and for
 * null: mind the sense
 */
TLXPKI_API uint32_t is_selfSigned(const X509_CERT *cert);

/**
 * Builds the path from a certificate to a trust anchor, with the process-wide settings.
 *
 * Each certificate from the target on has to be within its validity period. Its issuer is the first of the
 * pool, in pool order, that fits its authority key identifier in one of three ways: by keyIdentifier, which
 * has to begin with the candidate's subject key identifier; by authorityCertSerialNumber; or by a directory
 * name that comes first in authorityCertIssuer. No other candidate is tried. A self-issued certificate ends
 * the path, and its subject and key have to be an anchor's. Each call makes its own index of a large pool, in
 * one pass.
 *
 * @param pool    the certificates to choose issuers from, the anchor's own among them
 * @param target  the certificate to begin with; need not be in the pool
 * @param path    copies of the certificates are appended to the list it points to, or to a new one. On
 * failure a caller's list keeps what was appended, and none is made
 * @return 0; 0x53050049 for a null argument; 0x53050116 when the self-issued certificate is no trust anchor;
 * 0x5305003C when memory runs out; a status of verify_X509_validity()
 * @return 0x53050047 when more certificates than the maximum path length plus one, or than the pool and the
 * target, are below the anchor's (so certificates that issue each other end); when one that is not
 * self-issued has no authority key identifier that can be read; and when no certificate of the pool fits it
 */
TLXPKI_API uint32_t build_certPath(const X509_CERTIFICATES *pool, const TRUST_ANCHORS *anchors,
                                   const X509_CERT *target, X509_CERTIFICATES **path);

/** build_certPath() with settings of the caller's, of which time and maximum path length count; null for the
 * process-wide ones. */
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

/**
 * The parts of the tree. new_ and free_ follow the contract of records. New data has the criticality
 * indicator -1, a new node has no data, and a new list has no levels (depth -1). free_ also frees a node's
 * data, a list's nodes and all levels.
 * @{
 */
TLXPKI_API VALID_POLICY_DATA *new_VALID_POLICY_DATA(void);
TLXPKI_API void free_VALID_POLICY_DATA(VALID_POLICY_DATA *data);
TLXPKI_API VALID_POLICY_NODE *new_VALID_POLICY_NODE(void);
TLXPKI_API void free_VALID_POLICY_NODE(VALID_POLICY_NODE *node);
TLXPKI_API VALID_POLICY_NODES *new_VALID_POLICY_NODES(void);
TLXPKI_API void free_VALID_POLICY_NODES(VALID_POLICY_NODES *nodes);
TLXPKI_API node_LIST *new_node_LIST(void);
TLXPKI_API void free_node_LIST(node_LIST *list);
/** @} */

/** Reverses the order of the levels and returns the new head; null for null. */
TLXPKI_API node_LIST *reverse_node_LIST(node_LIST *list);
/** Frees every level from the n-th on with its nodes. Level 0 is the head, which stays as a list without
 * levels. */
TLXPKI_API void remove_node_LIST(node_LIST *list, uint32_t n);
/** The number of levels; 0 for null and for a list without levels. */
TLXPKI_API uint32_t get_count_from_node_LIST(const node_LIST *list);
/** Adds a level that holds copies of nodes: as depth 0 to a list without levels, else after the deepest.
 * Returns 0; 0x530B0049 for a null argument; 0x530B003C when memory runs out. */
TLXPKI_API uint32_t add_VALID_POLICY_TREE_LIST(node_LIST *list, const VALID_POLICY_NODES *nodes);
/** Prints the valid policies of each level that has nodes to standard output. Prints nothing for null and for
 * a list whose head is not marked as a level. */
TLXPKI_API void print_VALID_POLICY_TREE_LIST(const node_LIST *list);

/* ---- Validation ---- */

/** The most certificates that a path may have, the anchor's included. */
#define TLX_CPV_MAX_CERTIFICATES 1000U
/** The most nodes of the policy tree that one validation makes. They take some 40 MB. */
#define TLX_CPV_MAX_POLICY_NODES 100000U

/**
 * Validates a path with the process-wide settings, at the present time.
 *
 * Certificates that name both anyPolicy and many policies make a tree that grows with the square of the
 * path's length. TLX_CPV_MAX_POLICY_NODES limits it: 100 policies beside anyPolicy exceed it with 45
 * certificates below the anchor's.
 *
 * @param path                    the path, target first, the anchor's self-issued certificate last
 * @param user_initial_policy_set the policies that the caller accepts; null for any. The policies that the
 * final step compared are freed and leave the list; the others and the list stay the caller's
 * @param tree                    on success receives the valid-policy tree, freed with free_node_LIST(). A
 * list that it points to is emptied and filled instead, and keeps the levels built so far on failure. May be
 * null
 * @return 0; 0x53070049 for a null path; 0x5307002B for an empty path; 0x53070047 when the path has
 * more than TLX_CPV_MAX_CERTIFICATES certificates, and when the maximum path length is below 0; 0x53070119
 * when no acceptable policy is left while an explicit policy is required
 * @return 0x53100047 when the policy tree takes more than TLX_CPV_MAX_POLICY_NODES nodes; 0x53100049 when the
 * path does not end in a self-issued certificate, and when a certificate has no level of the tree to extend;
 * 0x53100054 when a signature does not verify with the issuer's key; 0x53100106 when the issuer's name is not
 * the subject of the issuer's certificate; 0x5310011C when an explicit policy is required and the certificate
 * has no certificate policies
 * @return 0x5309000E when the issuer's basic constraints cannot be read; 0x5309011B when they are missing,
 * are not those of a CA while its key usage has keyCertSign, or allow no CA below it; 0x530A0118 when the
 * issuer's key usage lacks keyCertSign; 0x530A002B when the certificate or its issuer has no extensions at
 * all; 0x530A0047 when the certificate policies cannot be read
 * @return 0x5307003C when memory runs out; where it runs out within a step, that step's status
 * @return a status of verify_X509_validity(); for a self-issued certificate a status of
 * verify_SIG_X509_CERT()
 */
TLXPKI_API uint32_t validate_certpath(const X509_CERTIFICATES *path,
                                      OBJECT_IDENTIFIERS *user_initial_policy_set, node_LIST **tree);

/**
 * validate_certpath() with settings of the caller's.
 * @param settings   null for the process-wide ones
 * @param stopped_at receives the index in the path of the certificate that failed; -1 when none did (also
 * when the final step over all of them failed). May be null
 */
TLXPKI_API uint32_t validate_certpath_ex(const X509_CERTIFICATES *path,
                                         OBJECT_IDENTIFIERS *user_initial_policy_set, node_LIST **tree,
                                         const CPV_SETTINGS *settings, int32_t *stopped_at);

TLX_END_DECLS

#endif
