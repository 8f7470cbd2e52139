/** @file
 * Parameters of RSASSA-PSS and RSAES-OAEP in algorithm identifiers (RFC 4055; RFC 8017, appendices A.2.1 and
 * A.2.3). The contract of all records is in x509_types.h; the setters return statuses of their own.
 *
 * A null member is not written, and reading fills in no defaults. The code that signs or encrypts applies
 * what RFC 4055 says of an absent field. Setters that take an index read the identifier from that row of the
 * registry (objects.h); a row without an identifier counts as null.
 */
#ifndef TLXPKI_PKCS1_PARAM_H
#define TLXPKI_PKCS1_PARAM_H

#include <tlxpki/x509_types.h>

TLX_BEGIN_DECLS

/** RSASSA-PSS-params. The trailer field is never read or written. */
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
 * RSASSA_PSS_PARAM.
 * - Decoder: requires all three fields, so that a caller never needs the defaults. It refuses an empty
 * SEQUENCE, which means all defaults, and one with a trailer field. A child without a context tag leaves its
 * member null. A caller's record is cleaned on failure. A null *param is not filled: the parameters are only
 * checked. 0x49160049 null argument; 0x4916002B not exactly three children; 0x49110104 the context tags are
 * not 0, 1 and 2 in this order, or do not hold a SEQUENCE, a SEQUENCE and an INTEGER; 0x49160104 an algorithm
 * identifier cannot be decoded.
 * - Encoder: 0x49150049 null argument; 0x49150103 an algorithm identifier has no algorithm.
 * @{
 */
TLXPKI_API RSASSA_PSS_PARAM *new_RSASSA_PSS_PARAM(void);
TLXPKI_API void clean_RSASSA_PSS_PARAM(RSASSA_PSS_PARAM *param);
TLXPKI_API void free_RSASSA_PSS_PARAM(RSASSA_PSS_PARAM *param);
TLXPKI_API RSASSA_PSS_PARAM *dup_RSASSA_PSS_PARAM(const RSASSA_PSS_PARAM *param);
TLXPKI_API uint32_t Seq_to_RSASSA_PSS_PARAM(const ASN1_UNIT *node, RSASSA_PSS_PARAM **param);
TLXPKI_API uint32_t RSASSA_PSS_PARAM_to_Seq(const RSASSA_PSS_PARAM *param, ASN1_UNIT **out);
/** @} */

/**
 * Sets the message digest, with NULL parameters.
 * @return 0; 0x49120049 for a null argument; 0x49120103 when memory runs out
 */
TLXPKI_API uint32_t set_RSASSA_PSS_PARAM_hashAlgorithm_OID(RSASSA_PSS_PARAM *param,
                                                           const OBJECT_IDENTIFIER *oid);
/** set_RSASSA_PSS_PARAM_hashAlgorithm_OID() with a row of the registry. */
TLXPKI_API uint32_t set_RSASSA_PSS_PARAM_hashAlgorithm(RSASSA_PSS_PARAM *param, int32_t index);
/**
 * Sets the mask generation function to MGF1 with SHA-1, whatever the message digest is.
 * @param oid id-mgf1, 1.2.840.113549.1.1.8
 * @return 0; 0x49130049 for a null argument; 0x49130048 for any other identifier; 0x4913003C when memory for
 * id-mgf1 runs out; 0x49130103 when memory runs out otherwise
 */
TLXPKI_API uint32_t set_RSASSA_PSS_PARAM_maskGenAlgorithm_OID(RSASSA_PSS_PARAM *param,
                                                              const OBJECT_IDENTIFIER *oid);
/** set_RSASSA_PSS_PARAM_maskGenAlgorithm_OID() with a row of the registry. */
TLXPKI_API uint32_t set_RSASSA_PSS_PARAM_maskGenAlgorithm(RSASSA_PSS_PARAM *param, int32_t index);
/**
 * Sets the salt length, in spite of its name: programs call it with the octets of their salt, at least 1.
 * @return 0; 0x49140049 for a null record and the value 0, and when memory runs out
 */
TLXPKI_API uint32_t set_RSASSA_PSS_PARAM_trailerField(RSASSA_PSS_PARAM *param, uint8_t value);

/**
 * RSAES_OAEP_PARAM.
 * - Decoder: as for RSASSA_PSS_PARAM, with the same statuses; the third field holds a SEQUENCE.
 * - Encoder: 0x49100049 null argument; 0x49100103 an algorithm identifier has no algorithm.
 * @{
 */
TLXPKI_API RSAES_OAEP_PARAM *new_RSAES_OAEP_PARAM(void);
TLXPKI_API void clean_RSAES_OAEP_PARAM(RSAES_OAEP_PARAM *param);
TLXPKI_API void free_RSAES_OAEP_PARAM(RSAES_OAEP_PARAM *param);
TLXPKI_API RSAES_OAEP_PARAM *dup_RSAES_OAEP_PARAM(const RSAES_OAEP_PARAM *param);
TLXPKI_API uint32_t Seq_to_RSAES_OAEP_PARAM(const ASN1_UNIT *node, RSAES_OAEP_PARAM **param);
TLXPKI_API uint32_t RSAES_OAEP_PARAM_to_Seq(const RSAES_OAEP_PARAM *param, ASN1_UNIT **out);
/** @} */

/**
 * Sets the message digest, with NULL parameters.
 * @return 0; 0x490F0049 for a null argument; 0x490F0103 when memory runs out
 */
TLXPKI_API uint32_t set_RSAES_OAEP_PARAM_hashAlgorithm_OID(RSAES_OAEP_PARAM *param,
                                                           const OBJECT_IDENTIFIER *oid);
/** set_RSAES_OAEP_PARAM_hashAlgorithm_OID() with a row of the registry. */
TLXPKI_API uint32_t set_RSAES_OAEP_PARAM_hashAlgorithm(RSAES_OAEP_PARAM *param, int32_t index);
/** Sets the mask generation function to MGF1 with SHA-1. Returns 0x490F0049 for a null argument, otherwise a
 * status of set_RSASSA_PSS_PARAM_maskGenAlgorithm_OID(). */
TLXPKI_API uint32_t set_RSAES_OAEP_PARAM_maskGenAlgorithm_OID(RSAES_OAEP_PARAM *param,
                                                              const OBJECT_IDENTIFIER *oid);
/** set_RSAES_OAEP_PARAM_maskGenAlgorithm_OID() with a row of the registry. */
TLXPKI_API uint32_t set_RSAES_OAEP_PARAM_maskGenAlgorithm(RSAES_OAEP_PARAM *param, int32_t index);
/**
 * Sets the source of the label: its parameters are the label as an OCTET STRING, or NULL without a label. The
 * mask generation function has to be set before.
 * @param oid       the source, usually id-pSpecified, 1.2.840.113549.1.1.9
 * @param label     the label, or null
 * @param label_len its octets, not negative; ignored without a label
 * @return 0; 0x490F0049 when param or oid is null; 0x490D0103 for a negative length, when maskGenAlgorithm is
 * null, and when memory runs out
 */
TLXPKI_API uint32_t set_RSAES_OAEP_PARAM_pSourceAlgorithm_OID(RSAES_OAEP_PARAM *param,
                                                              const OBJECT_IDENTIFIER *oid,
                                                              const uint8_t *label, int32_t label_len);
/** set_RSAES_OAEP_PARAM_pSourceAlgorithm_OID() with a row of the registry. */
TLXPKI_API uint32_t set_RSAES_OAEP_PARAM_pSourceAlgorithm(RSAES_OAEP_PARAM *param, int32_t index,
                                                          const uint8_t *label, int32_t label_len);

/**
 * Makes the encoding of a record the parameters of an algorithm identifier, whose algorithm stays.
 * @return 0; 0x490F0049 for a null argument; 0x490F0103 when the record cannot be encoded or memory runs out
 * @{
 */
TLXPKI_API uint32_t set_X509_ALGO_IDENTIFIER_with_RSASSA_PSS_PARAM(X509_ALGO_IDENTIFIER *algorithm,
                                                                   const RSASSA_PSS_PARAM *param);
TLXPKI_API uint32_t set_X509_ALGO_IDENTIFIER_with_RSAES_OAEP_PARAM(X509_ALGO_IDENTIFIER *algorithm,
                                                                   const RSAES_OAEP_PARAM *param);
/** @} */

TLX_END_DECLS

#endif
