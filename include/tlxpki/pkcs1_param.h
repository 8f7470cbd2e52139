/** @file
 * Parameters of RSASSA-PSS and RSAES-OAEP in algorithm identifiers (RFC 4055; RFC 8017, appendices A.2.1 and
 * A.2.3).
 *
 * A member that is null is not written, and no defaults are filled in when reading: what RFC 4055 says of an
 * absent field is for the code that signs or encrypts to apply.
 *
 * Setters copy what they are given and free what the member held; on failure nothing is changed.
 *
 * Functions may run at the same time as long as no two of them work on the same object.
 */
#ifndef TLXPKI_PKCS1_PARAM_H
#define TLXPKI_PKCS1_PARAM_H

#include <tlxpki/x509_types.h>

TLX_BEGIN_DECLS

/** RSASSA-PSS-params. There is no trailer field: it is neither read nor written. */
typedef struct RSASSA_PSS_PARAM {
    X509_ALGO_IDENTIFIER *hashAlgorithm;    /**< [0], or null */
    X509_ALGO_IDENTIFIER *maskGenAlgorithm; /**< [1], or null */
    BIGINT *saltLength;                     /**< [2], or null */
} RSASSA_PSS_PARAM;

/** RSAES-OAEP-params. */
typedef struct RSAES_OAEP_PARAM {
    X509_ALGO_IDENTIFIER *hashAlgorithm;    /**< [0], or null */
    X509_ALGO_IDENTIFIER *maskGenAlgorithm; /**< [1], or null */
    X509_ALGO_IDENTIFIER *pSourceAlgorithm; /**< [2], or null */
} RSAES_OAEP_PARAM;

/**
 * Makes an empty record.
 * @return the record, all members null; null when memory runs out
 */
TLXPKI_API RSASSA_PSS_PARAM *new_RSASSA_PSS_PARAM(void);
/**
 * Frees the members and sets them to null.
 * @param param the record, may be null
 */
TLXPKI_API void clean_RSASSA_PSS_PARAM(RSASSA_PSS_PARAM *param);
/**
 * Frees a record and its members.
 * @param param the record, may be null
 */
TLXPKI_API void free_RSASSA_PSS_PARAM(RSASSA_PSS_PARAM *param);
/**
 * Copies a record with everything in it.
 * @param param the record, may be null
 * @return the copy; null for null and when memory runs out
 */
TLXPKI_API RSASSA_PSS_PARAM *dup_RSASSA_PSS_PARAM(const RSASSA_PSS_PARAM *param);

/**
 * Makes an empty record.
 * @return the record, all members null; null when memory runs out
 */
TLXPKI_API RSAES_OAEP_PARAM *new_RSAES_OAEP_PARAM(void);
/**
 * Frees the members and sets them to null.
 * @param param the record, may be null
 */
TLXPKI_API void clean_RSAES_OAEP_PARAM(RSAES_OAEP_PARAM *param);
/**
 * Frees a record and its members.
 * @param param the record, may be null
 */
TLXPKI_API void free_RSAES_OAEP_PARAM(RSAES_OAEP_PARAM *param);
/**
 * Copies a record with everything in it.
 * @param param the record, may be null
 * @return the copy; null for null and when memory runs out
 */
TLXPKI_API RSAES_OAEP_PARAM *dup_RSAES_OAEP_PARAM(const RSAES_OAEP_PARAM *param);

/**
 * Reads RSASSA-PSS-params. All three fields have to be there: an empty SEQUENCE, which stands for all
 * defaults, and one with a trailer field are refused, so that a caller never has to know the defaults. A
 * child that carries no context tag leaves its member null.
 * @param node  the SEQUENCE
 * @param param points to the record to fill, which is cleaned first and left cleaned on failure. When *param
 *              is null the parameters are only checked: no record is handed out
 * @return 0
 * @return 0x49160049 for a null argument
 * @return 0x4916002B when there are not exactly three children
 * @return 0x49110104 when the context tags are not 0, 1 and 2 in this order, or do not hold a SEQUENCE, a
 *         SEQUENCE and an INTEGER
 * @return 0x49160104 when an algorithm identifier cannot be decoded, and when memory runs out
 */
TLXPKI_API uint32_t Seq_to_RSASSA_PSS_PARAM(const ASN1_UNIT *node, RSASSA_PSS_PARAM **param);
/**
 * Writes RSASSA-PSS-params.
 * @param param the record
 * @param out   receives a new node, freed with free_ASN1_UNIT(), whatever it holds before. Unchanged on
 * failure
 * @return 0
 * @return 0x49150049 for a null argument
 * @return 0x49150103 when an algorithm identifier has no algorithm, and when memory runs out
 */
TLXPKI_API uint32_t RSASSA_PSS_PARAM_to_Seq(const RSASSA_PSS_PARAM *param, ASN1_UNIT **out);

/**
 * Reads RSAES-OAEP-params, in the way and with the statuses of Seq_to_RSASSA_PSS_PARAM(); the third field
 * holds a SEQUENCE.
 * @param node  the SEQUENCE
 * @param param as there
 * @return as there
 */
TLXPKI_API uint32_t Seq_to_RSAES_OAEP_PARAM(const ASN1_UNIT *node, RSAES_OAEP_PARAM **param);
/**
 * Writes RSAES-OAEP-params.
 * @param param the record
 * @param out   receives a new node, freed with free_ASN1_UNIT(), whatever it holds before. Unchanged on
 * failure
 * @return 0
 * @return 0x49100049 for a null argument
 * @return 0x49100103 when an algorithm identifier has no algorithm, and when memory runs out
 */
TLXPKI_API uint32_t RSAES_OAEP_PARAM_to_Seq(const RSAES_OAEP_PARAM *param, ASN1_UNIT **out);

/**
 * Sets the message digest: an algorithm identifier with NULL parameters.
 * @param param the record
 * @param oid   the digest
 * @return 0; 0x49120049 for a null argument; 0x49120103 when memory runs out
 */
TLXPKI_API uint32_t set_RSASSA_PSS_PARAM_hashAlgorithm_OID(RSASSA_PSS_PARAM *param,
                                                           const OBJECT_IDENTIFIER *oid);
/**
 * The same by the digest's row in the registry of object identifiers.
 * @param param the record
 * @param index the row
 * @return as set_RSASSA_PSS_PARAM_hashAlgorithm_OID(); 0x49120049 also for a row without an identifier
 */
TLXPKI_API uint32_t set_RSASSA_PSS_PARAM_hashAlgorithm(RSASSA_PSS_PARAM *param, int32_t index);
/**
 * Sets the mask generation function to MGF1. Its digest is SHA-1, whatever the message digest is.
 * @param param the record
 * @param oid   id-mgf1, 1.2.840.113549.1.1.8
 * @return 0
 * @return 0x49130049 for a null argument
 * @return 0x49130048 for any other identifier
 * @return 0x4913003C when there is no memory for id-mgf1
 * @return 0x49130103 when memory runs out otherwise
 */
TLXPKI_API uint32_t set_RSASSA_PSS_PARAM_maskGenAlgorithm_OID(RSASSA_PSS_PARAM *param,
                                                              const OBJECT_IDENTIFIER *oid);
/**
 * The same by the row of id-mgf1 in the registry of object identifiers.
 * @param param the record
 * @param index the row
 * @return as set_RSASSA_PSS_PARAM_maskGenAlgorithm_OID(); 0x49130049 also for a row without an identifier
 */
TLXPKI_API uint32_t set_RSASSA_PSS_PARAM_maskGenAlgorithm(RSASSA_PSS_PARAM *param, int32_t index);
/**
 * Sets the salt length, in spite of its name: programs call it with the octets of their salt.
 * @param param the record
 * @param value octets of the salt, at least 1
 * @return 0; 0x49140049 for a null record, the value 0 and when memory runs out
 */
TLXPKI_API uint32_t set_RSASSA_PSS_PARAM_trailerField(RSASSA_PSS_PARAM *param, uint8_t value);

/**
 * Sets the message digest: an algorithm identifier with NULL parameters.
 * @param param the record
 * @param oid   the digest
 * @return 0; 0x490F0049 for a null argument; 0x490F0103 when memory runs out
 */
TLXPKI_API uint32_t set_RSAES_OAEP_PARAM_hashAlgorithm_OID(RSAES_OAEP_PARAM *param,
                                                           const OBJECT_IDENTIFIER *oid);
/**
 * The same by the digest's row in the registry of object identifiers.
 * @param param the record
 * @param index the row
 * @return as set_RSAES_OAEP_PARAM_hashAlgorithm_OID(); 0x490F0049 also for a row without an identifier
 */
TLXPKI_API uint32_t set_RSAES_OAEP_PARAM_hashAlgorithm(RSAES_OAEP_PARAM *param, int32_t index);
/**
 * Sets the mask generation function to MGF1. Its digest is SHA-1, whatever the message digest is.
 * @param param the record
 * @param oid   id-mgf1, 1.2.840.113549.1.1.8
 * @return 0
 * @return 0x490F0049 for a null argument
 * @return otherwise as set_RSASSA_PSS_PARAM_maskGenAlgorithm_OID()
 */
TLXPKI_API uint32_t set_RSAES_OAEP_PARAM_maskGenAlgorithm_OID(RSAES_OAEP_PARAM *param,
                                                              const OBJECT_IDENTIFIER *oid);
/**
 * The same by the row of id-mgf1 in the registry of object identifiers.
 * @param param the record
 * @param index the row
 * @return as set_RSAES_OAEP_PARAM_maskGenAlgorithm_OID(); 0x490F0049 also for a row without an identifier
 */
TLXPKI_API uint32_t set_RSAES_OAEP_PARAM_maskGenAlgorithm(RSAES_OAEP_PARAM *param, int32_t index);
/**
 * Sets the source of the label, with the label as an OCTET STRING, or with NULL parameters when there is
 * none. The mask generation function has to be set before.
 * @param param     the record
 * @param oid       the source, usually id-pSpecified, 1.2.840.113549.1.1.9
 * @param label     the label, or null
 * @param label_len its octets, not negative; not looked at without a label
 * @return 0
 * @return 0x490F0049 when param or oid is null
 * @return 0x490D0103 for a negative length, when maskGenAlgorithm is null, and when memory runs out
 */
TLXPKI_API uint32_t set_RSAES_OAEP_PARAM_pSourceAlgorithm_OID(RSAES_OAEP_PARAM *param,
                                                              const OBJECT_IDENTIFIER *oid,
                                                              const uint8_t *label, int32_t label_len);
/**
 * The same by the source's row in the registry of object identifiers.
 * @param param     the record
 * @param index     the row
 * @param label     the label, or null
 * @param label_len its octets
 * @return as set_RSAES_OAEP_PARAM_pSourceAlgorithm_OID(); 0x490F0049 also for a row without an identifier
 */
TLXPKI_API uint32_t set_RSAES_OAEP_PARAM_pSourceAlgorithm(RSAES_OAEP_PARAM *param, int32_t index,
                                                          const uint8_t *label, int32_t label_len);

/**
 * Makes the encoding of a record the parameters of an algorithm identifier; its algorithm stays.
 * @param algorithm the algorithm identifier
 * @param param     the record
 * @return 0; 0x490F0049 for a null argument; 0x490F0103 when the record cannot be encoded or memory runs out
 */
TLXPKI_API uint32_t set_X509_ALGO_IDENTIFIER_with_RSASSA_PSS_PARAM(X509_ALGO_IDENTIFIER *algorithm,
                                                                   const RSASSA_PSS_PARAM *param);
/**
 * Makes the encoding of a record the parameters of an algorithm identifier; its algorithm stays.
 * @param algorithm the algorithm identifier
 * @param param     the record
 * @return as set_X509_ALGO_IDENTIFIER_with_RSASSA_PSS_PARAM()
 */
TLXPKI_API uint32_t set_X509_ALGO_IDENTIFIER_with_RSAES_OAEP_PARAM(X509_ALGO_IDENTIFIER *algorithm,
                                                                   const RSAES_OAEP_PARAM *param);

TLX_END_DECLS

#endif
