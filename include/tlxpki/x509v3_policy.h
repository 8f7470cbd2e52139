/** @file
 * Certificate policies and policy mappings (RFC 5280, sections 4.2.1.4 and 4.2.1.5). The contract of all
 * records is in x509_types.h.
 */
#ifndef TLXPKI_X509V3_POLICY_H
#define TLXPKI_X509V3_POLICY_H

#include <tlxpki/x509_types.h>

TLX_BEGIN_DECLS

/** INTEGER values, as BIGINT entries. */
typedef STACK NOTICE_NUMBERS;

/**
 * NOTICE_NUMBERS: a list of numbers, which may be empty.
 * - Decoder: 0x47250049 null argument; 0x47250104 a child is no INTEGER.
 * - Encoder: 0x47260049 null argument; 0x47260103 a number cannot be encoded.
 * @{
 */
TLXPKI_API NOTICE_NUMBERS *new_NOTICE_NUMBERS(void);
TLXPKI_API void clean_NOTICE_NUMBERS(NOTICE_NUMBERS *list);
TLXPKI_API void free_NOTICE_NUMBERS(NOTICE_NUMBERS *list);
TLXPKI_API NOTICE_NUMBERS *dup_NOTICE_NUMBERS(const NOTICE_NUMBERS *list);
TLXPKI_API uint32_t Seq_to_NOTICE_NUMBERS(const ASN1_UNIT *node, NOTICE_NUMBERS **out);
TLXPKI_API uint32_t NOTICE_NUMBERS_to_Seq(const NOTICE_NUMBERS *list, ASN1_UNIT **out);
TLXPKI_API uint32_t get_NOTICE_NUMBERS_count(const NOTICE_NUMBERS *list);
TLXPKI_API BIGINT *get_NOTICE_NUMBERS_child(const NOTICE_NUMBERS *list, int32_t index);
TLXPKI_API uint32_t add_NOTICE_NUMBERS_child(NOTICE_NUMBERS *list, const BIGINT *item, int32_t index);
TLXPKI_API BIGINT *remove_NOTICE_NUMBERS_child(NOTICE_NUMBERS *list, int32_t index);
/** @} */

/** NoticeReference. The string keeps the type it was read with. */
typedef struct NOTICE_REFERENCE {
    ASN1_STRING *organization;     /**< owned */
    NOTICE_NUMBERS *noticeNumbers; /**< owned */
} NOTICE_REFERENCE;

/**
 * NOTICE_REFERENCE.
 * - Decoder: 0x47210049 null argument; 0x4721002B not exactly two children; 0x47210104 a child cannot be
 * read.
 * - Encoder: 0x47220049 null argument; 0x47220103 a member is missing or cannot be encoded.
 * @{
 */
TLXPKI_API NOTICE_REFERENCE *new_NOTICE_REFERENCE(void);
TLXPKI_API void clean_NOTICE_REFERENCE(NOTICE_REFERENCE *record);
TLXPKI_API void free_NOTICE_REFERENCE(NOTICE_REFERENCE *record);
TLXPKI_API NOTICE_REFERENCE *dup_NOTICE_REFERENCE(const NOTICE_REFERENCE *record);
TLXPKI_API uint32_t Seq_to_NOTICE_REFERENCE(const ASN1_UNIT *node, NOTICE_REFERENCE **out);
TLXPKI_API uint32_t NOTICE_REFERENCE_to_Seq(const NOTICE_REFERENCE *record, ASN1_UNIT **out);
/** @} */

/** UserNotice. The string keeps the type it was read with. */
typedef struct USER_NOTICE {
    NOTICE_REFERENCE *noticeRef; /**< or null; owned */
    ASN1_STRING *explicitText;   /**< or null; owned */
} USER_NOTICE;

/**
 * USER_NOTICE.
 * - Decoder: 0x471F0049 null argument; 0x471F002B more than two children; 0x471F0104 a child cannot be read.
 * - Encoder: 0x47200049 null argument; 0x47200103 a member cannot be encoded.
 * @{
 */
TLXPKI_API USER_NOTICE *new_USER_NOTICE(void);
TLXPKI_API void clean_USER_NOTICE(USER_NOTICE *record);
TLXPKI_API void free_USER_NOTICE(USER_NOTICE *record);
TLXPKI_API USER_NOTICE *dup_USER_NOTICE(const USER_NOTICE *record);
TLXPKI_API uint32_t Seq_to_USER_NOTICE(const ASN1_UNIT *node, USER_NOTICE **out);
TLXPKI_API uint32_t USER_NOTICE_to_Seq(const USER_NOTICE *record, ASN1_UNIT **out);
/** @} */

/** PolicyQualifierInfo. The identifier says which of the other three members holds the qualifier. */
typedef struct POLICY_QUALIFIER_INFO {
    OBJECT_IDENTIFIER *policyQualifierId; /**< owned */
    ASN1_STRING *cPSuri; /**< for id-qt-cps (1.3.6.1.5.5.7.2.1): an IA5String, or the string found; owned */
    USER_NOTICE *userNotice; /**< for id-qt-unotice (1.3.6.1.5.5.7.2.2); owned */
    ASN1_UNIT *other;        /**< for any other: the complete element; owned */
} POLICY_QUALIFIER_INFO;

/**
 * POLICY_QUALIFIER_INFO.
 * - Decoder: 0x47170049 null argument; 0x4717002B not exactly two children; 0x47170104 a child cannot be
 * read.
 * - Encoder: 0x47180049 null argument; 0x47180103 the identifier or the qualifier that belongs to it is
 * missing or cannot be encoded.
 * @{
 */
TLXPKI_API POLICY_QUALIFIER_INFO *new_POLICY_QUALIFIER_INFO(void);
TLXPKI_API void clean_POLICY_QUALIFIER_INFO(POLICY_QUALIFIER_INFO *record);
TLXPKI_API void free_POLICY_QUALIFIER_INFO(POLICY_QUALIFIER_INFO *record);
TLXPKI_API POLICY_QUALIFIER_INFO *dup_POLICY_QUALIFIER_INFO(const POLICY_QUALIFIER_INFO *record);
TLXPKI_API uint32_t Seq_to_POLICY_QUALIFIER_INFO(const ASN1_UNIT *node, POLICY_QUALIFIER_INFO **out);
TLXPKI_API uint32_t POLICY_QUALIFIER_INFO_to_Seq(const POLICY_QUALIFIER_INFO *record, ASN1_UNIT **out);
/** @} */

/** Makes the qualifier that points to a certification practice statement, with its URI as an IA5String; null
 * for null and when memory runs out. */
TLXPKI_API POLICY_QUALIFIER_INFO *create_POLICY_QUALIFIER_INFO_cPSuri(const char *uri);

/** Makes the qualifier that holds a notice to be shown; null for null and when memory runs out. */
TLXPKI_API POLICY_QUALIFIER_INFO *create_POLICY_QUALIFIER_INFO_userNotice(const USER_NOTICE *notice);

/** POLICY_QUALIFIER_INFO entries. */
typedef STACK POLICY_QUALIFIER_INFOS;

/**
 * POLICY_QUALIFIER_INFOS: a list of POLICY_QUALIFIER_INFO.
 * - Decoder: 0x47190049 null argument; 0x4719002B no qualifiers; 0x47190104 a qualifier cannot be read.
 * - Encoder: 0x471A0049 null argument; 0x471A002B no qualifiers; 0x471A0103 a qualifier cannot be encoded.
 * @{
 */
TLXPKI_API POLICY_QUALIFIER_INFOS *new_POLICY_QUALIFIER_INFOS(void);
TLXPKI_API void clean_POLICY_QUALIFIER_INFOS(POLICY_QUALIFIER_INFOS *list);
TLXPKI_API void free_POLICY_QUALIFIER_INFOS(POLICY_QUALIFIER_INFOS *list);
TLXPKI_API POLICY_QUALIFIER_INFOS *dup_POLICY_QUALIFIER_INFOS(const POLICY_QUALIFIER_INFOS *list);
TLXPKI_API uint32_t Seq_to_POLICY_QUALIFIER_INFOS(const ASN1_UNIT *node, POLICY_QUALIFIER_INFOS **out);
TLXPKI_API uint32_t POLICY_QUALIFIER_INFOS_to_Seq(const POLICY_QUALIFIER_INFOS *list, ASN1_UNIT **out);
TLXPKI_API uint32_t get_POLICY_QUALIFIER_INFOS_count(const POLICY_QUALIFIER_INFOS *list);
TLXPKI_API POLICY_QUALIFIER_INFO *get_POLICY_QUALIFIER_INFOS_child(const POLICY_QUALIFIER_INFOS *list,
                                                                   int32_t index);
TLXPKI_API uint32_t add_POLICY_QUALIFIER_INFOS_child(POLICY_QUALIFIER_INFOS *list,
                                                     const POLICY_QUALIFIER_INFO *item, int32_t index);
TLXPKI_API POLICY_QUALIFIER_INFO *remove_POLICY_QUALIFIER_INFOS_child(POLICY_QUALIFIER_INFOS *list,
                                                                      int32_t index);
/** @} */

/** PolicyInformation. */
typedef struct POLICY_INFO {
    OBJECT_IDENTIFIER *policyIdentifier;      /**< owned */
    POLICY_QUALIFIER_INFOS *policyQualifiers; /**< or null; owned */
} POLICY_INFO;

/**
 * POLICY_INFO.
 * - Decoder: 0x471B0049 null argument; 0x471B002B neither one nor two children; 0x471B0104 a child cannot be
 * read.
 * - Encoder: 0x471C0049 null argument; 0x471C0103 the identifier is missing, the qualifiers are an empty
 * list, or a member cannot be encoded.
 * @{
 */
TLXPKI_API POLICY_INFO *new_POLICY_INFO(void);
TLXPKI_API void clean_POLICY_INFO(POLICY_INFO *record);
TLXPKI_API void free_POLICY_INFO(POLICY_INFO *record);
TLXPKI_API POLICY_INFO *dup_POLICY_INFO(const POLICY_INFO *record);
TLXPKI_API uint32_t Seq_to_POLICY_INFO(const ASN1_UNIT *node, POLICY_INFO **out);
TLXPKI_API uint32_t POLICY_INFO_to_Seq(const POLICY_INFO *record, ASN1_UNIT **out);
/** @} */

/** POLICY_INFO entries. */
typedef STACK CERTIFICATE_POLICIES;

/**
 * CERTIFICATE_POLICIES: a list of POLICY_INFO.
 * - Decoder: 0x471D0049 null argument; 0x471D002B no policies; 0x471D0104 a policy cannot be read.
 * - Encoder: 0x471E0049 null argument; 0x471E002B no policies; 0x471E0103 a policy cannot be encoded.
 * @{
 */
TLXPKI_API CERTIFICATE_POLICIES *new_CERTIFICATE_POLICIES(void);
TLXPKI_API void clean_CERTIFICATE_POLICIES(CERTIFICATE_POLICIES *list);
TLXPKI_API void free_CERTIFICATE_POLICIES(CERTIFICATE_POLICIES *list);
TLXPKI_API CERTIFICATE_POLICIES *dup_CERTIFICATE_POLICIES(const CERTIFICATE_POLICIES *list);
TLXPKI_API uint32_t Seq_to_CERTIFICATE_POLICIES(const ASN1_UNIT *node, CERTIFICATE_POLICIES **out);
TLXPKI_API uint32_t CERTIFICATE_POLICIES_to_Seq(const CERTIFICATE_POLICIES *list, ASN1_UNIT **out);
TLXPKI_API uint32_t get_CERTIFICATE_POLICIES_count(const CERTIFICATE_POLICIES *list);
TLXPKI_API POLICY_INFO *get_CERTIFICATE_POLICIES_child(const CERTIFICATE_POLICIES *list, int32_t index);
TLXPKI_API uint32_t add_CERTIFICATE_POLICIES_child(CERTIFICATE_POLICIES *list, const POLICY_INFO *item,
                                                   int32_t index);
TLXPKI_API POLICY_INFO *remove_CERTIFICATE_POLICIES_child(CERTIFICATE_POLICIES *list, int32_t index);
/** @} */

/** One member of PolicyMappings. */
typedef struct POLICY_MAPPING {
    OBJECT_IDENTIFIER *issuerDomainPolicy;  /**< owned */
    OBJECT_IDENTIFIER *subjectDomainPolicy; /**< owned */
} POLICY_MAPPING;

/**
 * POLICY_MAPPING.
 * - Decoder: 0x47270049 null argument; 0x4727002B not exactly two children; 0x47270104 a child is no object
 * identifier.
 * - Encoder: 0x47280049 null argument; 0x47280103 a member is missing or cannot be encoded.
 * @{
 */
TLXPKI_API POLICY_MAPPING *new_POLICY_MAPPING(void);
TLXPKI_API void clean_POLICY_MAPPING(POLICY_MAPPING *record);
TLXPKI_API void free_POLICY_MAPPING(POLICY_MAPPING *record);
TLXPKI_API POLICY_MAPPING *dup_POLICY_MAPPING(const POLICY_MAPPING *record);
TLXPKI_API uint32_t Seq_to_POLICY_MAPPING(const ASN1_UNIT *node, POLICY_MAPPING **out);
TLXPKI_API uint32_t POLICY_MAPPING_to_Seq(const POLICY_MAPPING *record, ASN1_UNIT **out);
/** @} */

/** POLICY_MAPPING entries. */
typedef STACK POLICY_MAPPINGS;

/**
 * POLICY_MAPPINGS: a list of POLICY_MAPPING.
 * - Decoder: 0x47290049 null argument; 0x4729002B no mappings; 0x47290104 a mapping cannot be read.
 * - Encoder: 0x472A0049 null argument; 0x472A002B no mappings; 0x472A0103 a mapping cannot be encoded.
 * @{
 */
TLXPKI_API POLICY_MAPPINGS *new_POLICY_MAPPINGS(void);
TLXPKI_API void clean_POLICY_MAPPINGS(POLICY_MAPPINGS *list);
TLXPKI_API void free_POLICY_MAPPINGS(POLICY_MAPPINGS *list);
TLXPKI_API POLICY_MAPPINGS *dup_POLICY_MAPPINGS(const POLICY_MAPPINGS *list);
TLXPKI_API uint32_t Seq_to_POLICY_MAPPINGS(const ASN1_UNIT *node, POLICY_MAPPINGS **out);
TLXPKI_API uint32_t POLICY_MAPPINGS_to_Seq(const POLICY_MAPPINGS *list, ASN1_UNIT **out);
TLXPKI_API uint32_t get_POLICY_MAPPINGS_count(const POLICY_MAPPINGS *list);
TLXPKI_API POLICY_MAPPING *get_POLICY_MAPPINGS_child(const POLICY_MAPPINGS *list, int32_t index);
TLXPKI_API uint32_t add_POLICY_MAPPINGS_child(POLICY_MAPPINGS *list, const POLICY_MAPPING *item,
                                              int32_t index);
TLXPKI_API POLICY_MAPPING *remove_POLICY_MAPPINGS_child(POLICY_MAPPINGS *list, int32_t index);
/** @} */

TLX_END_DECLS

#endif
