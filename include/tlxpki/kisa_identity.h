/** @file
 * The identity of a person or company in the subjectAltName of a Korean certificate: an otherName with the
 * real name and the virtual identifier (VID), a digest made from the resident or business registration number
 * and a random number that only the holder has. The contract of all records is in x509_types.h.
 *
 * The profile is KCAC.TG.SIVID. gen_KISA_VID() makes a virtual identifier, and verify_KISA_VID() says whether
 * that of a certificate belongs to a number and a random number. The random number is an attribute of the
 * private key (get_PRIV_KEY_random() of <tlxpki/pkcs8.h>). Copies of the number are wiped.
 */
#ifndef TLXPKI_KISA_IDENTITY_H
#define TLXPKI_KISA_IDENTITY_H

#include <tlxpki/general_name.h>

TLX_BEGIN_DECLS

/** VID ::= SEQUENCE { hashAlg AlgorithmIdentifier, virtualID [0] EXPLICIT OCTET STRING OPTIONAL } */
typedef struct VID {
    OBJECT_IDENTIFIER *hashAlg;   /**< owned */
    OCTET_STRING *virtualID;      /**< or null; owned */
    ASN1_UNIT *hashAlgParameters; /**< the parameters of hashAlg as received, or null; owned */
} VID;

/**
 * VID. The decoder takes the virtual identifier out of any constructed element; the encoder writes [0].
 * - Decoder: 0x47010049 null argument; 0x4701002B neither one nor two children; 0x47010104 a child cannot be
 * read.
 * - Encoder: 0x47020049 null argument; 0x47020103 hashAlg is missing or a member cannot be encoded.
 * @{
 */
TLXPKI_API VID *new_VID(void);
TLXPKI_API void clean_VID(VID *record);
TLXPKI_API void free_VID(VID *record);
TLXPKI_API VID *dup_VID(const VID *record);
TLXPKI_API uint32_t Seq_to_VID(const ASN1_UNIT *node, VID **out);
TLXPKI_API uint32_t VID_to_Seq(const VID *record, ASN1_UNIT **out);
/** @} */

/** IdentifyData ::= SEQUENCE { realName UTF8String, userInfos SEQUENCE OF SEQUENCE { idType OBJECT
 * IDENTIFIER, idValue VID } OPTIONAL }, with the first entry of userInfos only. */
typedef struct KISA_IDENTIFY_DATA {
    UTF8_STRING *realName;     /**< owned */
    OBJECT_IDENTIFIER *idType; /**< null together with vid; owned */
    VID *vid;                  /**< or null; owned */
} KISA_IDENTIFY_DATA;

/**
 * KISA_IDENTIFY_DATA. The decoder ignores entries of userInfos after the first.
 * - Decoder: 0x47030049 null argument; 0x4703002B neither one nor two children; 0x47030104 a child cannot be
 * read.
 * - Encoder: 0x47040049 null argument; 0x47040103 realName is missing, only one of idType and vid is there,
 * or a member cannot be encoded.
 * @{
 */
TLXPKI_API KISA_IDENTIFY_DATA *new_KISA_IDENTIFY_DATA(void);
TLXPKI_API void clean_KISA_IDENTIFY_DATA(KISA_IDENTIFY_DATA *record);
TLXPKI_API void free_KISA_IDENTIFY_DATA(KISA_IDENTIFY_DATA *record);
TLXPKI_API KISA_IDENTIFY_DATA *dup_KISA_IDENTIFY_DATA(const KISA_IDENTIFY_DATA *record);
TLXPKI_API uint32_t Seq_to_KISA_IDENTIFY_DATA(const ASN1_UNIT *node, KISA_IDENTIFY_DATA **out);
TLXPKI_API uint32_t KISA_IDENTIFY_DATA_to_Seq(const KISA_IDENTIFY_DATA *record, ASN1_UNIT **out);
/** @} */

/**
 * Makes the identity data that Korean certification authorities issue, with the idType
 * 1.2.410.200004.10.1.1.1 (VID).
 * @param real_name UTF-8 text
 * @param hash_alg  the digest that made virtual_id
 * @param len       octets at virtual_id
 * @return the record; null for a null argument, len 0, and when memory runs out
 */
TLXPKI_API KISA_IDENTIFY_DATA *create_KISA_IDENTIFY_DATA(const char *real_name,
                                                         const OBJECT_IDENTIFIER *hash_alg,
                                                         const uint8_t *virtual_id, uint32_t len);

/**
 * Decodes the identity data in the names of a subjectAltName: the first otherName whose type is
 * 1.2.410.200004.10.1.1 (in use today) or 1.2.410.200004.6.1 (before).
 * @param out as for Seq_to_KISA_IDENTIFY_DATA()
 * @return 0; 0x473D0049 for a null argument; 0x473D0047 when there is no such name; the failure of
 * Seq_to_KISA_IDENTIFY_DATA() (0x4703....) when its value cannot be read
 */
TLXPKI_API uint32_t get_KISA_IDENTIFY_DATA_from_GENERAL_NAMES(const GENERAL_NAMES *names,
                                                              KISA_IDENTIFY_DATA **out);

/** Makes the general name that carries identity data, an otherName of type 1.2.410.200004.10.1.1; null for
 * null, data that cannot be encoded, and when memory runs out. */
TLXPKI_API GENERAL_NAME *create_GENERAL_NAME_KISA_IDENTIFY_DATA(const KISA_IDENTIFY_DATA *data);

/**
 * Makes a virtual identifier: the digest of the digest of SEQUENCE { idn PrintableString, randomNum BIT
 * STRING }.
 * @param hash_alg the digest
 * @param number   number_len digits of the resident or business registration number; hyphens are left out
 * @param random   20 octets
 * @param out      as for Seq_to_VID()
 * @return 0; 0x47600049 for a null argument; 0x4760002B for a number that holds anything but digits and
 * hyphens, or no digit, and for a random number that is not 20 whole octets; 0x47600048 for a digest that is
 * unknown or not available; 0x4760003C when memory runs out
 */
TLXPKI_API uint32_t gen_KISA_VID(const OBJECT_IDENTIFIER *hash_alg, const char *number, uint32_t number_len,
                                 const BIT_STRING *random, VID **out);
/**
 * Checks whether a certificate, a number and the random number of its private key belong together.
 * @param number,random as for gen_KISA_VID()
 * @return 0 when they do; 0x4761005E when they do not; 0x47610049 for a null argument; 0x47610047 for a
 * certificate whose subjectAltName has no virtual identifier that can be read; 0x4761002B and 0x47610048 as
 * 0x4760002B and 0x47600048 of gen_KISA_VID(); 0x4761003C when memory runs out
 */
TLXPKI_API uint32_t verify_KISA_VID(const X509_CERT *cert, const char *number, uint32_t number_len,
                                    const BIT_STRING *random);

TLX_END_DECLS

#endif
