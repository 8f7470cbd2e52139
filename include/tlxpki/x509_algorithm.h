/** @file
 * Algorithm identifiers (RFC 5280, section 4.1.1.2). The contract of all records is in x509_types.h.
 */
#ifndef TLXPKI_X509_ALGORITHM_H
#define TLXPKI_X509_ALGORITHM_H

#include <tlxpki/x509_types.h>

TLX_BEGIN_DECLS

/**
 * X509_ALGO_IDENTIFIER.
 * - Decoder: keeps any parameters as they are; nothing may follow them. A caller's record is unchanged on
 * failure. 0x46260049 null argument; 0x46260104 the algorithm is missing, or an element is broken.
 * - Encoder: writes the algorithm and the parameters as they are; without parameters it writes no NULL. 1
 * null argument; 0x46250103 the algorithm is missing, or a member cannot be encoded.
 * @{
 */
TLXPKI_API X509_ALGO_IDENTIFIER *new_X509_ALGO_IDENTIFIER(void);
TLXPKI_API void clean_X509_ALGO_IDENTIFIER(X509_ALGO_IDENTIFIER *algorithm);
TLXPKI_API void free_X509_ALGO_IDENTIFIER(X509_ALGO_IDENTIFIER *algorithm);
TLXPKI_API X509_ALGO_IDENTIFIER *dup_X509_ALGO_IDENTIFIER(const X509_ALGO_IDENTIFIER *algorithm);
TLXPKI_API uint32_t Seq_to_X509_ALGO_IDENTIFIER(const ASN1_UNIT *node, X509_ALGO_IDENTIFIER **out);
TLXPKI_API uint32_t X509_ALGO_IDENTIFIER_to_Seq(const X509_ALGO_IDENTIFIER *algorithm, ASN1_UNIT **out);
/** @} */

/** The algorithm. */
TLXPKI_API OBJECT_IDENTIFIER *get_X509_ALGO_IDENTIFIER_OID(const X509_ALGO_IDENTIFIER *algorithm);
/** The complete element of the parameters. */
TLXPKI_API ASN1_UNIT *get_X509_ALGO_IDENTIFIER_parameters(const X509_ALGO_IDENTIFIER *algorithm);

/** Replaces the algorithm; the parameters stay. */
TLXPKI_API uint32_t set_X509_ALGO_IDENTIFIER_OID(X509_ALGO_IDENTIFIER *algorithm,
                                                 const OBJECT_IDENTIFIER *oid);
/** Replaces the parameters by a complete element. Null parameters remove them. */
TLXPKI_API uint32_t set_X509_ALGO_IDENTIFIER_parameters(X509_ALGO_IDENTIFIER *algorithm,
                                                        const ASN1_UNIT *parameters);
/** Replaces the parameters by NULL. */
TLXPKI_API uint32_t set_X509_ALGO_IDENTIFIER_null(X509_ALGO_IDENTIFIER *algorithm);

/**
 * X509_ALGO_IDENTIFIERS: a list of X509_ALGO_IDENTIFIER, which may be empty.
 * - Decoder: reads a SET OF or SEQUENCE OF, whatever the tag of the node. 0x46280049 null argument;
 * 0x46280104 an algorithm identifier cannot be decoded.
 * - Encoder: writes a SET OF in list order, as the DigestAlgorithmIdentifiers of PKCS #7; it does not sort.
 * 0x46270049 null argument; 0x46270103 an algorithm identifier is missing or cannot be encoded.
 * @{
 */
TLXPKI_API X509_ALGO_IDENTIFIERS *new_X509_ALGO_IDENTIFIERS(void);
TLXPKI_API void clean_X509_ALGO_IDENTIFIERS(X509_ALGO_IDENTIFIERS *algorithms);
TLXPKI_API void free_X509_ALGO_IDENTIFIERS(X509_ALGO_IDENTIFIERS *algorithms);
TLXPKI_API X509_ALGO_IDENTIFIERS *dup_X509_ALGO_IDENTIFIERS(const X509_ALGO_IDENTIFIERS *algorithms);
TLXPKI_API uint32_t Seq_to_X509_ALGO_IDENTIFIERS(const ASN1_UNIT *node, X509_ALGO_IDENTIFIERS **out);
TLXPKI_API uint32_t X509_ALGO_IDENTIFIERS_to_Seq(const X509_ALGO_IDENTIFIERS *algorithms, ASN1_UNIT **out);
TLXPKI_API uint32_t get_X509_ALGO_IDENTIFIERS_count(const X509_ALGO_IDENTIFIERS *algorithms);
TLXPKI_API X509_ALGO_IDENTIFIER *get_X509_ALGO_IDENTIFIERS_child(const X509_ALGO_IDENTIFIERS *algorithms,
                                                                 int32_t index);
TLXPKI_API uint32_t add_X509_ALGO_IDENTIFIERS_child(X509_ALGO_IDENTIFIERS *algorithms,
                                                    const X509_ALGO_IDENTIFIER *algorithm, int32_t index);
TLXPKI_API X509_ALGO_IDENTIFIER *remove_X509_ALGO_IDENTIFIERS_child(X509_ALGO_IDENTIFIERS *algorithms,
                                                                    int32_t index);
/** @} */

TLX_END_DECLS

#endif
