/** @file
 * The extensions that limit a certification path (RFC 5280, sections 4.2.1.9 to 4.2.1.11). The contract of
 * all records is in x509_types.h.
 */
#ifndef TLXPKI_X509V3_CONSTRAINTS_H
#define TLXPKI_X509V3_CONSTRAINTS_H

#include <tlxpki/general_name.h>

TLX_BEGIN_DECLS

/** BasicConstraints. */
typedef struct BASIC_CONSTRAINTS {
    uint8_t cA;                /**< the BOOLEAN's contents octet: 0 false, anything else true */
    BIGINT *pathLenConstraint; /**< or null; owned */
} BASIC_CONSTRAINTS;

/**
 * BASIC_CONSTRAINTS. The decoder requires cA. DER omits a FALSE, so a value without cA (the empty SEQUENCE 30
 * 00 for one) does not decode. The decoder ignores a second child that is no INTEGER, and further children.
 * The encoder always writes cA, a FALSE as 01 01 00, which strict DER omits. For strict DER, omit the
 * extension from a certificate that is no CA, which means the same.
 * - Decoder: 0x47230049 null argument; 0x47230104 no BOOLEAN cA, or a pathLenConstraint without contents.
 * - Encoder: 0x47240049 null argument; 0x47240103 memory ran out.
 * @{
 */
TLXPKI_API BASIC_CONSTRAINTS *new_BASIC_CONSTRAINTS(void);
TLXPKI_API void clean_BASIC_CONSTRAINTS(BASIC_CONSTRAINTS *record);
TLXPKI_API void free_BASIC_CONSTRAINTS(BASIC_CONSTRAINTS *record);
TLXPKI_API BASIC_CONSTRAINTS *dup_BASIC_CONSTRAINTS(const BASIC_CONSTRAINTS *record);
TLXPKI_API uint32_t Seq_to_BASIC_CONSTRAINTS(const ASN1_UNIT *node, BASIC_CONSTRAINTS **out);
TLXPKI_API uint32_t BASIC_CONSTRAINTS_to_Seq(const BASIC_CONSTRAINTS *record, ASN1_UNIT **out);
/** @} */

/** PolicyConstraints. */
typedef struct POLICY_CONSTRAINTS {
    BIGINT *requireExplicitPolicy; /**< or null; owned */
    BIGINT *inhibitPolicyMapping;  /**< or null; owned */
} POLICY_CONSTRAINTS;

/**
 * POLICY_CONSTRAINTS. Two ways of tagging the numbers are in use, and the decoder reads both. Contents of
 * exactly one octet are the number itself (implicit tagging, as in RFC 5280). Contents of any other length
 * hold an INTEGER element (explicit tagging), so the decoder mistakes a number of two octets under an
 * implicit tag for an element. The low five bits of the identifier octets distinguish the children. A child
 * that cannot be read leaves its member null, without a failure, and other children are ignored. The encoder
 * writes a number below 128 under an implicit tag, and a larger one under an explicit tag, because the
 * decoder would misread its two octets.
 * - Decoder: 0x47450049 null argument; 0x4745003C memory ran out.
 * - Encoder: 0x47460049 null argument; 0x47460103 memory ran out.
 * @{
 */
TLXPKI_API POLICY_CONSTRAINTS *new_POLICY_CONSTRAINTS(void);
TLXPKI_API void clean_POLICY_CONSTRAINTS(POLICY_CONSTRAINTS *record);
TLXPKI_API void free_POLICY_CONSTRAINTS(POLICY_CONSTRAINTS *record);
TLXPKI_API POLICY_CONSTRAINTS *dup_POLICY_CONSTRAINTS(const POLICY_CONSTRAINTS *record);
TLXPKI_API uint32_t Seq_to_POLICY_CONSTRAINTS(const ASN1_UNIT *node, POLICY_CONSTRAINTS **out);
TLXPKI_API uint32_t POLICY_CONSTRAINTS_to_Seq(const POLICY_CONSTRAINTS *record, ASN1_UNIT **out);
/** @} */

/** GeneralSubtree. */
typedef struct GENERAL_SUBTREE {
    GENERAL_NAME *base; /**< owned */
    BIGINT *minimum;    /**< null means 0, which is never written; owned */
    BIGINT *maximum;    /**< or null; owned */
} GENERAL_SUBTREE;

/**
 * GENERAL_SUBTREE.
 * - Decoder: 0x472B0049 null argument; 0x472B002B not one to three children; 0x472B0104 a child cannot be
 * read.
 * - Encoder: 0x472C0049 null argument; 0x472C0103 base is missing or cannot be encoded.
 * @{
 */
TLXPKI_API GENERAL_SUBTREE *new_GENERAL_SUBTREE(void);
TLXPKI_API void clean_GENERAL_SUBTREE(GENERAL_SUBTREE *record);
TLXPKI_API void free_GENERAL_SUBTREE(GENERAL_SUBTREE *record);
TLXPKI_API GENERAL_SUBTREE *dup_GENERAL_SUBTREE(const GENERAL_SUBTREE *record);
TLXPKI_API uint32_t Seq_to_GENERAL_SUBTREE(const ASN1_UNIT *node, GENERAL_SUBTREE **out);
TLXPKI_API uint32_t GENERAL_SUBTREE_to_Seq(const GENERAL_SUBTREE *record, ASN1_UNIT **out);
/** @} */

/** GENERAL_SUBTREE entries. */
typedef STACK GENERAL_SUBTREES;

/**
 * GENERAL_SUBTREES: a list of GENERAL_SUBTREE.
 * - Decoder: 0x472D0049 null argument; 0x472D002B no subtrees; 0x472D0104 a subtree cannot be read.
 * - Encoder: 0x472E0049 null argument; 0x472E002B no subtrees; 0x472E0103 a subtree cannot be encoded.
 * @{
 */
TLXPKI_API GENERAL_SUBTREES *new_GENERAL_SUBTREES(void);
TLXPKI_API void clean_GENERAL_SUBTREES(GENERAL_SUBTREES *list);
TLXPKI_API void free_GENERAL_SUBTREES(GENERAL_SUBTREES *list);
TLXPKI_API GENERAL_SUBTREES *dup_GENERAL_SUBTREES(const GENERAL_SUBTREES *list);
TLXPKI_API uint32_t Seq_to_GENERAL_SUBTREES(const ASN1_UNIT *node, GENERAL_SUBTREES **out);
TLXPKI_API uint32_t GENERAL_SUBTREES_to_Seq(const GENERAL_SUBTREES *list, ASN1_UNIT **out);
TLXPKI_API uint32_t get_GENERAL_SUBTREES_count(const GENERAL_SUBTREES *list);
TLXPKI_API GENERAL_SUBTREE *get_GENERAL_SUBTREES_child(const GENERAL_SUBTREES *list, int32_t index);
TLXPKI_API uint32_t add_GENERAL_SUBTREES_child(GENERAL_SUBTREES *list, const GENERAL_SUBTREE *item,
                                               int32_t index);
TLXPKI_API GENERAL_SUBTREE *remove_GENERAL_SUBTREES_child(GENERAL_SUBTREES *list, int32_t index);
/** @} */

/** NameConstraints. */
typedef struct NAME_CONSTRAINTS {
    GENERAL_SUBTREES *permittedSubtrees; /**< or null; owned */
    GENERAL_SUBTREES *excludedSubtrees;  /**< or null; owned */
} NAME_CONSTRAINTS;

/**
 * NAME_CONSTRAINTS.
 * - Decoder: 0x472F0049 null argument; 0x472F002B more than two children; 0x472F0104 a child cannot be read.
 * - Encoder: 0x47300049 null argument; 0x47300103 a list is empty or cannot be encoded.
 * @{
 */
TLXPKI_API NAME_CONSTRAINTS *new_NAME_CONSTRAINTS(void);
TLXPKI_API void clean_NAME_CONSTRAINTS(NAME_CONSTRAINTS *record);
TLXPKI_API void free_NAME_CONSTRAINTS(NAME_CONSTRAINTS *record);
TLXPKI_API NAME_CONSTRAINTS *dup_NAME_CONSTRAINTS(const NAME_CONSTRAINTS *record);
TLXPKI_API uint32_t Seq_to_NAME_CONSTRAINTS(const ASN1_UNIT *node, NAME_CONSTRAINTS **out);
TLXPKI_API uint32_t NAME_CONSTRAINTS_to_Seq(const NAME_CONSTRAINTS *record, ASN1_UNIT **out);
/** @} */

TLX_END_DECLS

#endif
