/** @file
 * Where to find revocation lists and services (RFC 5280, sections 4.2.1.13, 4.2.1.15, 4.2.2.1, 4.2.2.2 and
 * 5.2.5). The contract of all records is in x509_types.h.
 */
#ifndef TLXPKI_X509V3_DISTRIBUTION_H
#define TLXPKI_X509V3_DISTRIBUTION_H

#include <tlxpki/general_name.h>
#include <tlxpki/wincrypt.h>

TLX_BEGIN_DECLS

/** Which member of a DIST_POINT_NAME is in use. */
enum { TLX_DIST_POINT_FULL_NAME = 0, TLX_DIST_POINT_RELATIVE_NAME = 1 };

/** DistributionPointName. */
typedef struct DIST_POINT_NAME {
    uint32_t choice; /**< TLX_DIST_POINT_... */
    union {
        GENERAL_NAMES *fullName;
        X509_NAME *nameRelativeToCRLIssuer; /**< one relative distinguished name: all entries belong to it */
        void *any;
    } value; /**< owned */
} DIST_POINT_NAME;

/**
 * DIST_POINT_NAME. The node holds the tagged element. The low five bits of its identifier octet are the
 * choice.
 * - Decoder: 0x47310049 null argument; 0x47310104 a choice above 1, or a value that is empty or cannot be
 * read.
 * - Encoder: 0x47320049 null argument; 0x47320103 a choice above 1, or a value that is missing, empty or
 * cannot be encoded.
 * @{
 */
TLXPKI_API DIST_POINT_NAME *new_DIST_POINT_NAME(void);
TLXPKI_API void clean_DIST_POINT_NAME(DIST_POINT_NAME *record);
TLXPKI_API void free_DIST_POINT_NAME(DIST_POINT_NAME *record);
TLXPKI_API DIST_POINT_NAME *dup_DIST_POINT_NAME(const DIST_POINT_NAME *record);
TLXPKI_API uint32_t Seq_to_DIST_POINT_NAME(const ASN1_UNIT *node, DIST_POINT_NAME **out);
TLXPKI_API uint32_t DIST_POINT_NAME_to_Seq(const DIST_POINT_NAME *record, ASN1_UNIT **out);
/** @} */

/** Bits of ReasonFlags, as get_BIT_STRING_named_bits() gives them. */
enum {
    TLX_REASON_UNUSED = 1 << 0,
    TLX_REASON_KEY_COMPROMISE = 1 << 1,
    TLX_REASON_CA_COMPROMISE = 1 << 2,
    TLX_REASON_AFFILIATION_CHANGED = 1 << 3,
    TLX_REASON_SUPERSEDED = 1 << 4,
    TLX_REASON_CESSATION_OF_OPERATION = 1 << 5,
    TLX_REASON_CERTIFICATE_HOLD = 1 << 6,
    TLX_REASON_PRIVILEGE_WITHDRAWN = 1 << 7,
    TLX_REASON_AA_COMPROMISE = 1 << 8
};

/** DistributionPoint. */
typedef struct DIST_POINT {
    DIST_POINT_NAME *distributionPoint; /**< or null; owned */
    BIT_STRING *reasons;                /**< named bits, or null; owned */
    GENERAL_NAMES *cRLIssuer;           /**< or null; owned */
} DIST_POINT;

/**
 * DIST_POINT.
 * - Decoder: 0x47330049 null argument; 0x4733002B more than three children; 0x47330104 a child cannot be
 * read.
 * - Encoder: 0x47340049 null argument; 0x47340103 a member cannot be encoded.
 * @{
 */
TLXPKI_API DIST_POINT *new_DIST_POINT(void);
TLXPKI_API void clean_DIST_POINT(DIST_POINT *record);
TLXPKI_API void free_DIST_POINT(DIST_POINT *record);
TLXPKI_API DIST_POINT *dup_DIST_POINT(const DIST_POINT *record);
TLXPKI_API uint32_t Seq_to_DIST_POINT(const ASN1_UNIT *node, DIST_POINT **out);
TLXPKI_API uint32_t DIST_POINT_to_Seq(const DIST_POINT *record, ASN1_UNIT **out);
/** @} */

/** Makes a distribution point with the URI of a list as its full name; null for null and when memory runs
 * out. */
TLXPKI_API DIST_POINT *create_DIST_POINT_uri(const char *uri);

/** DIST_POINT entries; also the contents of freshestCRL. */
typedef STACK CRL_DIST_POINTS;

/**
 * CRL_DIST_POINTS: a list of DIST_POINT.
 * - Decoder: 0x47350049 null argument; 0x4735002B no points; 0x47350104 a point cannot be read.
 * - Encoder: 0x47360049 null argument; 0x4736002B no points; 0x47360103 a point cannot be encoded.
 * @{
 */
TLXPKI_API CRL_DIST_POINTS *new_CRL_DIST_POINTS(void);
TLXPKI_API void clean_CRL_DIST_POINTS(CRL_DIST_POINTS *list);
TLXPKI_API void free_CRL_DIST_POINTS(CRL_DIST_POINTS *list);
TLXPKI_API CRL_DIST_POINTS *dup_CRL_DIST_POINTS(const CRL_DIST_POINTS *list);
TLXPKI_API uint32_t Seq_to_CRL_DIST_POINTS(const ASN1_UNIT *node, CRL_DIST_POINTS **out);
TLXPKI_API uint32_t CRL_DIST_POINTS_to_Seq(const CRL_DIST_POINTS *list, ASN1_UNIT **out);
TLXPKI_API uint32_t get_CRL_DIST_POINTS_count(const CRL_DIST_POINTS *list);
TLXPKI_API DIST_POINT *get_CRL_DIST_POINTS_child(const CRL_DIST_POINTS *list, int32_t index);
TLXPKI_API uint32_t add_CRL_DIST_POINTS_child(CRL_DIST_POINTS *list, const DIST_POINT *item, int32_t index);
TLXPKI_API DIST_POINT *remove_CRL_DIST_POINTS_child(CRL_DIST_POINTS *list, int32_t index);
/** @} */

/** IssuingDistributionPoint, an extension of revocation lists. The flags hold the BOOLEAN's contents octet: 0
 * false, anything else true; false is not written. */
typedef struct issuing_DIST_POINT {
    DIST_POINT_NAME *distributionPoint; /**< or null; owned */
    uint8_t onlyContainsUserCerts;
    uint8_t onlyContainsCACerts;
    BIT_STRING *onlySomeReasons; /**< named bits, or null; owned */
    uint8_t indirectCRL;
    uint8_t onlyContainsAttributeCerts;
} issuing_DIST_POINT;

/**
 * issuing_DIST_POINT.
 * - Decoder: 0x47370049 null argument; 0x4737002B more than six children; 0x47370104 a child cannot be read.
 * - Encoder: 0x47380049 null argument; 0x47380103 a member cannot be encoded.
 * @{
 */
TLXPKI_API issuing_DIST_POINT *new_issuing_DIST_POINT(void);
TLXPKI_API void clean_issuing_DIST_POINT(issuing_DIST_POINT *record);
TLXPKI_API void free_issuing_DIST_POINT(issuing_DIST_POINT *record);
TLXPKI_API issuing_DIST_POINT *dup_issuing_DIST_POINT(const issuing_DIST_POINT *record);
TLXPKI_API uint32_t Seq_to_issuing_DIST_POINT(const ASN1_UNIT *node, issuing_DIST_POINT **out);
TLXPKI_API uint32_t issuing_DIST_POINT_to_Seq(const issuing_DIST_POINT *record, ASN1_UNIT **out);
/** @} */

/** AccessDescription. */
typedef struct ACCESS_DESCRIPTION {
    OBJECT_IDENTIFIER *accessMethod; /**< owned */
    GENERAL_NAME *accessLocation;    /**< owned */
} ACCESS_DESCRIPTION;

/**
 * ACCESS_DESCRIPTION.
 * - Decoder: 0x47390049 null argument; 0x4739002B not exactly two children; 0x47390104 a child cannot be
 * read.
 * - Encoder: 0x473A0049 null argument; 0x473A0103 a member is missing or cannot be encoded.
 * @{
 */
TLXPKI_API ACCESS_DESCRIPTION *new_ACCESS_DESCRIPTION(void);
TLXPKI_API void clean_ACCESS_DESCRIPTION(ACCESS_DESCRIPTION *record);
TLXPKI_API void free_ACCESS_DESCRIPTION(ACCESS_DESCRIPTION *record);
TLXPKI_API ACCESS_DESCRIPTION *dup_ACCESS_DESCRIPTION(const ACCESS_DESCRIPTION *record);
TLXPKI_API uint32_t Seq_to_ACCESS_DESCRIPTION(const ASN1_UNIT *node, ACCESS_DESCRIPTION **out);
TLXPKI_API uint32_t ACCESS_DESCRIPTION_to_Seq(const ACCESS_DESCRIPTION *record, ASN1_UNIT **out);
/** @} */

/** ACCESS_DESCRIPTION entries; also the contents of subjectInfoAccess. */
typedef STACK AUTHORITY_INFO_ACCESS;

/**
 * AUTHORITY_INFO_ACCESS: a list of ACCESS_DESCRIPTION.
 * - Decoder: 0x473B0049 null argument; 0x473B002B no descriptions; 0x473B0104 a description cannot be read.
 * - Encoder: 0x473C0049 null argument; 0x473C002B no descriptions; 0x473C0103 a description cannot be
 * encoded.
 * @{
 */
TLXPKI_API AUTHORITY_INFO_ACCESS *new_AUTHORITY_INFO_ACCESS(void);
TLXPKI_API void clean_AUTHORITY_INFO_ACCESS(AUTHORITY_INFO_ACCESS *list);
TLXPKI_API void free_AUTHORITY_INFO_ACCESS(AUTHORITY_INFO_ACCESS *list);
TLXPKI_API AUTHORITY_INFO_ACCESS *dup_AUTHORITY_INFO_ACCESS(const AUTHORITY_INFO_ACCESS *list);
TLXPKI_API uint32_t Seq_to_AUTHORITY_INFO_ACCESS(const ASN1_UNIT *node, AUTHORITY_INFO_ACCESS **out);
TLXPKI_API uint32_t AUTHORITY_INFO_ACCESS_to_Seq(const AUTHORITY_INFO_ACCESS *list, ASN1_UNIT **out);
TLXPKI_API uint32_t get_AUTHORITY_INFO_ACCESS_count(const AUTHORITY_INFO_ACCESS *list);
TLXPKI_API ACCESS_DESCRIPTION *get_AUTHORITY_INFO_ACCESS_child(const AUTHORITY_INFO_ACCESS *list,
                                                               int32_t index);
TLXPKI_API uint32_t add_AUTHORITY_INFO_ACCESS_child(AUTHORITY_INFO_ACCESS *list,
                                                    const ACCESS_DESCRIPTION *item, int32_t index);
TLXPKI_API ACCESS_DESCRIPTION *remove_AUTHORITY_INFO_ACCESS_child(AUTHORITY_INFO_ACCESS *list, int32_t index);
/** @} */

TLX_END_DECLS

#endif
