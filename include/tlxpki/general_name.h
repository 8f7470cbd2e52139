/** @file
 * General names (RFC 5280, section 4.2.1.6): the contents of subjectAltName and issuerAltName, and the names
 * in other extensions. The contract of all records is in x509_types.h.
 */
#ifndef TLXPKI_GENERAL_NAME_H
#define TLXPKI_GENERAL_NAME_H

#include <tlxpki/x509_types.h>

TLX_BEGIN_DECLS

/** OtherName: a value whose type an object identifier names. */
typedef struct OTHERNAME {
    OBJECT_IDENTIFIER *type_id; /**< owned */
    ASN1_STRING *value;         /**< type: identifier octet of the element inside the tag [0]; data: its
                                     contents octets; owned */
} OTHERNAME;

/**
 * OTHERNAME. The decoder reads a SEQUENCE, or the element under the tag [0] of a general name.
 * - Decoder: 0x47050049 null argument; 0x4705002B not exactly two children; 0x47050104 otherwise.
 * - Encoder: 0x47060049 null argument; 0x47060103 a member is missing or cannot be encoded.
 * @{
 */
TLXPKI_API OTHERNAME *new_OTHERNAME(void);
TLXPKI_API void clean_OTHERNAME(OTHERNAME *record);
TLXPKI_API void free_OTHERNAME(OTHERNAME *record);
TLXPKI_API OTHERNAME *dup_OTHERNAME(const OTHERNAME *record);
TLXPKI_API uint32_t Seq_to_OTHERNAME(const ASN1_UNIT *node, OTHERNAME **out);
TLXPKI_API uint32_t OTHERNAME_to_Seq(const OTHERNAME *record, ASN1_UNIT **out);
/** @} */

/** EDIPartyName. The strings keep the type they were read with. */
typedef struct EDIPARTYNAME {
    ASN1_STRING *nameAssigner; /**< or null; owned */
    ASN1_STRING *partyName;    /**< owned */
} EDIPARTYNAME;

/**
 * EDIPARTYNAME.
 * - Decoder: 0x47070049 null argument; 0x4707002B neither one nor two children; 0x47070104 otherwise
 * (partyName is missing, or a member holds anything but one string).
 * - Encoder: 0x47080049 null argument; 0x47080103 partyName is missing or a member cannot be encoded.
 * @{
 */
TLXPKI_API EDIPARTYNAME *new_EDIPARTYNAME(void);
TLXPKI_API void clean_EDIPARTYNAME(EDIPARTYNAME *record);
TLXPKI_API void free_EDIPARTYNAME(EDIPARTYNAME *record);
TLXPKI_API EDIPARTYNAME *dup_EDIPARTYNAME(const EDIPARTYNAME *record);
TLXPKI_API uint32_t Seq_to_EDIPARTYNAME(const ASN1_UNIT *node, EDIPARTYNAME **out);
TLXPKI_API uint32_t EDIPARTYNAME_to_Seq(const EDIPARTYNAME *record, ASN1_UNIT **out);
/** @} */

/** The choice of a general name is its context tag number. */
enum {
    TLX_GENERAL_NAME_OTHER_NAME = 0,
    TLX_GENERAL_NAME_RFC822_NAME = 1,
    TLX_GENERAL_NAME_DNS_NAME = 2,
    TLX_GENERAL_NAME_X400_ADDRESS = 3,
    TLX_GENERAL_NAME_DIRECTORY_NAME = 4,
    TLX_GENERAL_NAME_EDI_PARTY_NAME = 5,
    TLX_GENERAL_NAME_URI = 6,
    TLX_GENERAL_NAME_IP_ADDRESS = 7,
    TLX_GENERAL_NAME_REGISTERED_ID = 8
};

/** GeneralName. The choice says which member of value is in use; a null member counts as missing. */
typedef struct GENERAL_NAME {
    uint32_t choice; /**< TLX_GENERAL_NAME_... */
    union {
        OTHERNAME *otherName;
        IA5_STRING *ia5String;    /**< rfc822Name, dNSName and uniformResourceIdentifier */
        ASN1_STRING *x400Address; /**< the element inside the tag, as TLX_TAG_ANY_STRING reads it; several
                                       elements have type 0xA3 and are the data */
        X509_NAME *directoryName;
        EDIPARTYNAME *ediPartyName;
        OCTET_STRING *iPAddress; /**< 4 or 16 octets; in name constraints 8 or 32 (address and mask) */
        OBJECT_IDENTIFIER *registeredID;
        void *any;
    } value; /**< owned */
} GENERAL_NAME;

/**
 * GENERAL_NAME. The node holds the tagged element. The low five bits of its identifier octet are the choice.
 * The decoder also reads an ediPartyName with a SEQUENCE of its own inside the tag; the encoder writes none.
 * - Decoder: 0x470B0049 null argument; 0x470B0104 a choice above 8, or a value that cannot be read.
 * - Encoder: 0x470C0049 null argument; 0x470C0103 a choice above 8, or a value that is missing or cannot be
 * encoded.
 * @{
 */
TLXPKI_API GENERAL_NAME *new_GENERAL_NAME(void);
TLXPKI_API void clean_GENERAL_NAME(GENERAL_NAME *record);
TLXPKI_API void free_GENERAL_NAME(GENERAL_NAME *record);
TLXPKI_API GENERAL_NAME *dup_GENERAL_NAME(const GENERAL_NAME *record);
TLXPKI_API uint32_t Seq_to_GENERAL_NAME(const ASN1_UNIT *node, GENERAL_NAME **out);
TLXPKI_API uint32_t GENERAL_NAME_to_Seq(const GENERAL_NAME *record, ASN1_UNIT **out);
/** @} */

/**
 * Makes a general name whose value is octets: an e-mail address, host name or URI (an IA5_STRING of the
 * octets as they are), an IP address, or a registered identifier (its dotted text).
 * @param choice TLX_GENERAL_NAME_RFC822_NAME, _DNS_NAME, _URI, _IP_ADDRESS or _REGISTERED_ID
 * @param len    octets at `octets`; a negative length means that they are a NUL-terminated text
 * @return the name; null for another choice, null octets, and when memory runs out
 */
TLXPKI_API GENERAL_NAME *create_GENERAL_NAME(uint32_t choice, const void *octets, int32_t len);

/** Makes a directoryName; null for null and when memory runs out. */
TLXPKI_API GENERAL_NAME *create_GENERAL_NAME_directoryName(const X509_NAME *name);

/** Makes an otherName from its two members; null for a null argument and when memory runs out. */
TLXPKI_API GENERAL_NAME *create_GENERAL_NAME_otherName(const OBJECT_IDENTIFIER *type_id,
                                                       const ASN1_STRING *value);

/**
 * GENERAL_NAMES: a list of GENERAL_NAME.
 * - Decoder: 0x470D0049 null argument; 0x470D002B no names; 0x470D0104 a name cannot be read.
 * - Encoder: 0x470E0049 null argument; 0x470E002B no names; 0x470E0103 a name cannot be encoded.
 * @{
 */
TLXPKI_API GENERAL_NAMES *new_GENERAL_NAMES(void);
TLXPKI_API void clean_GENERAL_NAMES(GENERAL_NAMES *list);
TLXPKI_API void free_GENERAL_NAMES(GENERAL_NAMES *list);
TLXPKI_API GENERAL_NAMES *dup_GENERAL_NAMES(const GENERAL_NAMES *list);
TLXPKI_API uint32_t Seq_to_GENERAL_NAMES(const ASN1_UNIT *node, GENERAL_NAMES **out);
TLXPKI_API uint32_t GENERAL_NAMES_to_Seq(const GENERAL_NAMES *list, ASN1_UNIT **out);
TLXPKI_API uint32_t get_GENERAL_NAMES_count(const GENERAL_NAMES *list);
TLXPKI_API GENERAL_NAME *get_GENERAL_NAMES_child(const GENERAL_NAMES *list, int32_t index);
TLXPKI_API uint32_t add_GENERAL_NAMES_child(GENERAL_NAMES *list, const GENERAL_NAME *item, int32_t index);
TLXPKI_API GENERAL_NAME *remove_GENERAL_NAMES_child(GENERAL_NAMES *list, int32_t index);
/** @} */

/** Searches for a general name of a choice, TLX_GENERAL_NAME_..., with `after` as lastpos. */
TLXPKI_API int32_t get_GENERAL_NAMES_index_by_choice(const GENERAL_NAMES *names, uint32_t choice,
                                                     int32_t after);

TLX_END_DECLS

#endif
