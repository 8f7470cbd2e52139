/** @file
 * Public keys (SubjectPublicKeyInfo, RFC 5280, section 4.1.2.7) and the holder of a key of any kind.
 *
 * Decoding keeps the algorithm, its parameters and the key octets as they are, so that any public key is
 * encoded to the octets it came from. Besides, the key itself is decoded where its algorithm is known:
 *
 * - rsaEncryption (RFC 3279, section 2.3.1) as TLX_KEY_RSA: the octets are an RSAPublicKey, the parameters
 * are not looked at;
 * - KCDSA1 (TTAK.KO-12.0001) as TLX_KEY_KCDSA: the octets are INTEGER y, the parameters SEQUENCE { p, q, g };
 * - id-ecPublicKey (RFC 5480) as TLX_KEY_ECC: the octets are a SEC 1 point, the parameters name a curve.
 *
 * A key whose algorithm or curve is not known, or whose octets or parameters are not of the form above,
 * decodes with a null `key`: reading the certificate of a stranger does not fail because of his key; using
 * the key does. So does a key on a curve when memory runs out while its point is read.
 *
 * Every function may be called from any thread, on distinct objects at the same time; functions that take
 * const objects may share them.
 */
#ifndef TLXPKI_X509_PUBKEY_H
#define TLXPKI_X509_PUBKEY_H

#include <tlxcrypto/ec.h>
#include <tlxcrypto/kcdsa.h>
#include <tlxcrypto/rsa.h>
#include <tlxpki/x509_types.h>

TLX_BEGIN_DECLS

/**
 * Makes a holder without a key.
 * @return the holder, freed with free_ASYMMETRIC_KEY(); null when memory runs out
 */
TLXPKI_API ASYMMETRIC_KEY *new_ASYMMETRIC_KEY(void);

/**
 * Frees the key of a holder, which is empty afterwards.
 * @param key a holder, or null (nothing happens then)
 */
TLXPKI_API void clean_ASYMMETRIC_KEY(ASYMMETRIC_KEY *key);

/**
 * Frees a holder and its key, by the kind. A key of a kind that is not known is left alone.
 * @param key a holder, or null (nothing happens then)
 */
TLXPKI_API void free_ASYMMETRIC_KEY(ASYMMETRIC_KEY *key);

/**
 * Copies a holder with its key.
 * @param key the holder
 * @return the copy, freed with free_ASYMMETRIC_KEY(); null for null, a key of a kind that is not known and
 *         when memory runs out
 */
TLXPKI_API ASYMMETRIC_KEY *dup_ASYMMETRIC_KEY(const ASYMMETRIC_KEY *key);

/**
 * Gives a holder a copy of a key; the one it held is freed.
 * @param key  the holder
 * @param kind TLX_KEY_RSA, TLX_KEY_KCDSA or TLX_KEY_ECC
 * @param unit an RSA_UNIT, KCDSA or ECC_KEY; stays the caller's
 * @return 0; 1 for null arguments, another kind and when memory runs out (the holder is unchanged then)
 */
TLXPKI_API uint32_t set_ASYMMETRIC_KEY(ASYMMETRIC_KEY *key, uint32_t kind, const void *unit);

/**
 * Makes a public key without members.
 * @return the record, freed with free_X509_PUBKEY(); null when memory runs out
 */
TLXPKI_API X509_PUBKEY *new_X509_PUBKEY(void);

/**
 * Frees the members; the record itself stays.
 * @param pubkey a record, or null (nothing happens then)
 */
TLXPKI_API void clean_X509_PUBKEY(X509_PUBKEY *pubkey);

/**
 * Frees a record and its members.
 * @param pubkey a record, or null (nothing happens then)
 */
TLXPKI_API void free_X509_PUBKEY(X509_PUBKEY *pubkey);

/**
 * Copies a record with its members, the decoded key included.
 * @param pubkey the record
 * @return the copy, freed with free_X509_PUBKEY(); null for null and when memory runs out
 */
TLXPKI_API X509_PUBKEY *dup_X509_PUBKEY(const X509_PUBKEY *pubkey);

/**
 * Compares two public keys by algorithm, parameters and key octets. NULL parameters and none are the same.
 * @param a,b the records
 * @return 0 when they are equal, -1 when they are not (which gives no order), 1 for a null argument or a
 *         record without an algorithm or key octets
 */
TLXPKI_API int32_t cmp_X509_PUBKEY(const X509_PUBKEY *a, const X509_PUBKEY *b);

/**
 * The algorithm.
 * @param pubkey the record
 * @return its identifier, which the record owns; null for null
 */
TLXPKI_API OBJECT_IDENTIFIER *get_X509_PUBKEY_algorithm(const X509_PUBKEY *pubkey);

/**
 * The decoded key.
 * @param pubkey the record
 * @return the holder, which the record owns; null for null and without a decoded key
 */
TLXPKI_API ASYMMETRIC_KEY *get_X509_PUBKEY_key(const X509_PUBKEY *pubkey);

/**
 * Makes a record an RSA public key: rsaEncryption with NULL parameters.
 * @param pubkey the record; what it held is freed
 * @param rsa    a unit with a modulus and a public exponent, whose public numbers are copied
 * @return 0; 1 for null arguments, a unit without those numbers and when memory runs out (the record is
 *         unchanged then)
 */
TLXPKI_API uint32_t set_X509_PUBKEY_rsa(X509_PUBKEY *pubkey, const RSA_UNIT *rsa);

/**
 * Makes a record a KCDSA public key: KCDSA1 with the domain parameters.
 * @param pubkey the record; what it held is freed
 * @param kcdsa  a unit with p, q, g and y, which are copied; its private number is not
 * @return 0; 1 for null arguments, a unit without those numbers and when memory runs out (the record is
 *         unchanged then)
 */
TLXPKI_API uint32_t set_X509_PUBKEY_kcdsa(X509_PUBKEY *pubkey, const KCDSA *kcdsa);

/**
 * Makes a record an elliptic-curve public key: id-ecPublicKey with the identifier of the curve, the point
 * uncompressed.
 * @param pubkey the record; what it held is freed
 * @param ecc    a key with a curve that has a name and a public point, which are copied; its private value
 *               is not
 * @return 0; 1 for null arguments, a key without those members, a curve that is not known by name and when
 *         memory runs out (the record is unchanged then)
 */
TLXPKI_API uint32_t set_X509_PUBKEY_ecc(X509_PUBKEY *pubkey, const ECC_KEY *ecc);

/**
 * Decodes a SubjectPublicKeyInfo, as described above.
 * @param node the SEQUENCE
 * @param out  a record it points to is filled, its old members freed; else it receives a new one, freed
 *             with free_X509_PUBKEY(). On failure *out stays as it was, and so do the members of its record
 * @return 0
 * @return 0x46140049 for a null argument
 * @return 0x46140104 when the algorithm identifier or the key octets are missing or broken, or memory runs
 *         out
 */
TLXPKI_API uint32_t Seq_to_X509_PUBKEY(const ASN1_UNIT *node, X509_PUBKEY **out);

/**
 * Encodes a SubjectPublicKeyInfo from the algorithm, its parameters and the key octets.
 * @param pubkey the record
 * @param out    receives a new node, freed with free_ASN1_UNIT(), whatever it holds before. Unchanged on
 * failure
 * @return 0
 * @return 0x46130049 for a null argument
 * @return 0x46130103 when the algorithm or the key octets are missing or cannot be encoded, or memory runs
 *         out
 */
TLXPKI_API uint32_t X509_PUBKEY_to_Seq(const X509_PUBKEY *pubkey, ASN1_UNIT **out);

TLX_END_DECLS

#endif
