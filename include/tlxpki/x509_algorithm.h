/** @file
 * Algorithm identifiers (RFC 5280, section 4.1.1.2).
 *
 * Every function may be called from any thread, on distinct objects at the same time; functions that take
 * const objects may share them.
 */
#ifndef TLXPKI_X509_ALGORITHM_H
#define TLXPKI_X509_ALGORITHM_H

#include <tlxpki/x509_types.h>

TLX_BEGIN_DECLS

/**
 * Makes an algorithm identifier without members.
 * @return the record, freed with free_X509_ALGO_IDENTIFIER(); null when memory runs out
 */
TLXPKI_API X509_ALGO_IDENTIFIER *new_X509_ALGO_IDENTIFIER(void);

/**
 * Frees the members; the record itself stays.
 * @param algorithm a record, or null (nothing happens then)
 */
TLXPKI_API void clean_X509_ALGO_IDENTIFIER(X509_ALGO_IDENTIFIER *algorithm);

/**
 * Frees a record and its members.
 * @param algorithm a record, or null (nothing happens then)
 */
TLXPKI_API void free_X509_ALGO_IDENTIFIER(X509_ALGO_IDENTIFIER *algorithm);

/**
 * Copies a record with its members.
 * @param algorithm the record
 * @return the copy, freed with free_X509_ALGO_IDENTIFIER(); null for null and when memory runs out
 */
TLXPKI_API X509_ALGO_IDENTIFIER *dup_X509_ALGO_IDENTIFIER(const X509_ALGO_IDENTIFIER *algorithm);

/**
 * The algorithm.
 * @param algorithm the record
 * @return its identifier, which the record owns; null for null
 */
TLXPKI_API OBJECT_IDENTIFIER *get_X509_ALGO_IDENTIFIER_OID(const X509_ALGO_IDENTIFIER *algorithm);

/**
 * The parameters.
 * @param algorithm the record
 * @return the complete element, which the record owns; null for null and without parameters
 */
TLXPKI_API ASN1_UNIT *get_X509_ALGO_IDENTIFIER_parameters(const X509_ALGO_IDENTIFIER *algorithm);

/**
 * Replaces the algorithm; the parameters stay.
 * @param algorithm the record
 * @param oid       the algorithm; copied
 * @return 0; 1 for null arguments and when memory runs out (nothing is changed then)
 */
TLXPKI_API uint32_t set_X509_ALGO_IDENTIFIER_OID(X509_ALGO_IDENTIFIER *algorithm,
                                                 const OBJECT_IDENTIFIER *oid);

/**
 * Replaces the parameters.
 * @param algorithm  the record
 * @param parameters the complete element; copied. Null takes the parameters away
 * @return 0; 1 for a null record and when memory runs out (nothing is changed then)
 */
TLXPKI_API uint32_t set_X509_ALGO_IDENTIFIER_parameters(X509_ALGO_IDENTIFIER *algorithm,
                                                        const ASN1_UNIT *parameters);

/**
 * Replaces the parameters by NULL.
 * @param algorithm the record
 * @return 0; 1 for a null record and when memory runs out (nothing is changed then)
 */
TLXPKI_API uint32_t set_X509_ALGO_IDENTIFIER_null(X509_ALGO_IDENTIFIER *algorithm);

/**
 * Decodes an AlgorithmIdentifier. The parameters are kept as they are, whatever they are; nothing may follow
 * them.
 * @param node the SEQUENCE
 * @param out  a record it points to is filled, its old members freed; else it receives a new one, freed
 *             with free_X509_ALGO_IDENTIFIER(). On failure *out stays as it was, and so do the members of
 *             its record
 * @return 0
 * @return 0x46260049 for a null argument
 * @return 0x46260104 when the algorithm is missing, an element is broken, or memory runs out
 */
TLXPKI_API uint32_t Seq_to_X509_ALGO_IDENTIFIER(const ASN1_UNIT *node, X509_ALGO_IDENTIFIER **out);

/**
 * Encodes an AlgorithmIdentifier: the algorithm and, when there are parameters, their element as it is.
 * Without parameters nothing stands in their place, no NULL either.
 * @param algorithm the record
 * @param out       receives a new node, freed with free_ASN1_UNIT(), whatever it holds before. Unchanged on
 * failure
 * @return 0
 * @return 1 for a null argument
 * @return 0x46250103 when the algorithm is missing, a member cannot be encoded, or memory runs out
 */
TLXPKI_API uint32_t X509_ALGO_IDENTIFIER_to_Seq(const X509_ALGO_IDENTIFIER *algorithm, ASN1_UNIT **out);

/**
 * Makes an empty list.
 * @return the list, freed with free_X509_ALGO_IDENTIFIERS(); null when memory runs out
 */
TLXPKI_API X509_ALGO_IDENTIFIERS *new_X509_ALGO_IDENTIFIERS(void);

/**
 * Frees the algorithm identifiers of a list, which is empty afterwards.
 * @param algorithms a list, or null (nothing happens then)
 */
TLXPKI_API void clean_X509_ALGO_IDENTIFIERS(X509_ALGO_IDENTIFIERS *algorithms);

/**
 * Frees a list and its algorithm identifiers.
 * @param algorithms a list, or null (nothing happens then)
 */
TLXPKI_API void free_X509_ALGO_IDENTIFIERS(X509_ALGO_IDENTIFIERS *algorithms);

/**
 * Copies a list with all its algorithm identifiers, in order.
 * @param algorithms the list
 * @return the copy, freed with free_X509_ALGO_IDENTIFIERS(); null for null and when memory runs out
 */
TLXPKI_API X509_ALGO_IDENTIFIERS *dup_X509_ALGO_IDENTIFIERS(const X509_ALGO_IDENTIFIERS *algorithms);

/**
 * Counts the algorithm identifiers.
 * @param algorithms the list
 * @return their number; 0 for null
 */
TLXPKI_API uint32_t get_X509_ALGO_IDENTIFIERS_count(const X509_ALGO_IDENTIFIERS *algorithms);

/**
 * Finds an algorithm identifier by its place.
 * @param algorithms the list
 * @param index      0 for the first
 * @return the record itself, which the list owns; null for null and an index that there is not
 */
TLXPKI_API X509_ALGO_IDENTIFIER *get_X509_ALGO_IDENTIFIERS_child(const X509_ALGO_IDENTIFIERS *algorithms,
                                                                 int32_t index);

/**
 * Inserts a copy of an algorithm identifier.
 * @param algorithms the list
 * @param algorithm  the record; stays the caller's
 * @param index      the copy goes before the record at this index; below 0 or above the count it goes to
 *                   the end
 * @return 0; 1 for null arguments and when memory runs out (the list is unchanged then)
 */
TLXPKI_API uint32_t add_X509_ALGO_IDENTIFIERS_child(X509_ALGO_IDENTIFIERS *algorithms,
                                                    const X509_ALGO_IDENTIFIER *algorithm, int32_t index);

/**
 * Takes an algorithm identifier out of a list.
 * @param algorithms the list
 * @param index      0 for the first
 * @return the record, now the caller's, freed with free_X509_ALGO_IDENTIFIER(); null for null and an index
 *         that there is not
 */
TLXPKI_API X509_ALGO_IDENTIFIER *remove_X509_ALGO_IDENTIFIERS_child(X509_ALGO_IDENTIFIERS *algorithms,
                                                                    int32_t index);

/**
 * Decodes a SET OF or SEQUENCE OF AlgorithmIdentifier, whatever the tag of the node.
 * @param node the set
 * @param out  a list it points to gets the records in place of its own; else it receives a new one, freed
 *             with free_X509_ALGO_IDENTIFIERS(). Unchanged on failure
 * @return 0
 * @return 0x46280049 for a null argument
 * @return 0x46280104 when an algorithm identifier cannot be decoded, or memory runs out
 */
TLXPKI_API uint32_t Seq_to_X509_ALGO_IDENTIFIERS(const ASN1_UNIT *node, X509_ALGO_IDENTIFIERS **out);

/**
 * Encodes a SET OF AlgorithmIdentifier in list order, as PKCS #7 has it (DigestAlgorithmIdentifiers); the
 * records are not sorted.
 * @param algorithms the list
 * @param out        receives a new node, freed with free_ASN1_UNIT(), whatever it holds before. Unchanged on
 * failure
 * @return 0
 * @return 0x46270049 for a null argument
 * @return 0x46270103 when an algorithm identifier is missing or cannot be encoded, or memory runs out
 */
TLXPKI_API uint32_t X509_ALGO_IDENTIFIERS_to_Seq(const X509_ALGO_IDENTIFIERS *algorithms, ASN1_UNIT **out);

TLX_END_DECLS

#endif
