/** @file
 * Public keys (SubjectPublicKeyInfo, RFC 5280, section 4.1.2.7) and the holder of a key of any kind. The
 * contract of all records is in x509_types.h.
 *
 * Decoding keeps the algorithm, its parameters and the key octets as they are, so that any public key is
 * encoded to the octets it came from. It also decodes the key itself where it knows the algorithm:
 *
 * - rsaEncryption (RFC 3279, section 2.3.1) as TLX_KEY_RSA: the octets are an RSAPublicKey, and the
 * parameters are ignored;
 * - KCDSA1 (TTAK.KO-12.0001) as TLX_KEY_KCDSA: the octets are INTEGER y, the parameters SEQUENCE { p, q, g };
 * - id-ecPublicKey (RFC 5480) as TLX_KEY_ECC: the octets are a SEC 1 point, the parameters name a curve.
 *
 * A key decodes with a null `key` when its algorithm or curve is unknown, or its octets or parameters have
 * another form. Reading a stranger's certificate does not fail because of its key; using the key does. A key
 * on a curve also decodes with a null `key` when memory runs out while its point is read.
 */
#ifndef TLXPKI_X509_PUBKEY_H
#define TLXPKI_X509_PUBKEY_H

#include <tlxcrypto/ec.h>
#include <tlxcrypto/ecdsa.h>
#include <tlxcrypto/eddsa.h>
#include <tlxcrypto/kcdsa.h>
#include <tlxcrypto/rsa.h>
#include <tlxcrypto/xdh.h>
#include <tlxpki/x509_types.h>

TLX_BEGIN_DECLS

/* ---- Keys of any kind ---- */

/**
 * ASYMMETRIC_KEY: the holder of one key. clean_ and free_ free the key by its kind, and leave a key of an
 * unknown kind alone; dup_ returns null for such a key.
 * @{
 */
TLXPKI_API ASYMMETRIC_KEY *new_ASYMMETRIC_KEY(void);
TLXPKI_API void clean_ASYMMETRIC_KEY(ASYMMETRIC_KEY *key);
TLXPKI_API void free_ASYMMETRIC_KEY(ASYMMETRIC_KEY *key);
TLXPKI_API ASYMMETRIC_KEY *dup_ASYMMETRIC_KEY(const ASYMMETRIC_KEY *key);
/** @} */

/**
 * Replaces the key of a holder. Returns 1 also for another kind.
 * @param kind TLX_KEY_
 * @param unit the unit of that kind
 */
TLXPKI_API uint32_t set_ASYMMETRIC_KEY(ASYMMETRIC_KEY *key, uint32_t kind, const void *unit);

/* ---- Public keys ---- */

/**
 * X509_PUBKEY.
 * - Decoder: a caller's record is unchanged on failure. 0x46140049 null argument; 0x46140104 the algorithm
 * identifier or the key octets are missing or broken.
 * - Encoder: writes the algorithm, its parameters and the key octets. 0x46130049 null argument; 0x46130103
 * the algorithm or the key octets are missing or cannot be encoded.
 * @{
 */
TLXPKI_API X509_PUBKEY *new_X509_PUBKEY(void);
TLXPKI_API void clean_X509_PUBKEY(X509_PUBKEY *pubkey);
TLXPKI_API void free_X509_PUBKEY(X509_PUBKEY *pubkey);
TLXPKI_API X509_PUBKEY *dup_X509_PUBKEY(const X509_PUBKEY *pubkey);
TLXPKI_API uint32_t Seq_to_X509_PUBKEY(const ASN1_UNIT *node, X509_PUBKEY **out);
TLXPKI_API uint32_t X509_PUBKEY_to_Seq(const X509_PUBKEY *pubkey, ASN1_UNIT **out);
/** @} */

/**
 * Compares two public keys by algorithm, parameters and key octets. NULL parameters equal absent ones.
 * @return 0 when they are equal; -1 when they differ (which gives no order); 1 for a null argument and a
 * record without an algorithm or key octets
 */
TLXPKI_API int32_t cmp_X509_PUBKEY(const X509_PUBKEY *a, const X509_PUBKEY *b);

/** The algorithm. */
TLXPKI_API OBJECT_IDENTIFIER *get_X509_PUBKEY_algorithm(const X509_PUBKEY *pubkey);
/** The decoded key. */
TLXPKI_API ASYMMETRIC_KEY *get_X509_PUBKEY_key(const X509_PUBKEY *pubkey);

/* These setters replace all members. They return 1 also for a unit without a member that they copy. */

/** Makes the record an RSA public key: rsaEncryption with NULL parameters. Copies modulus and public
 * exponent. */
TLXPKI_API uint32_t set_X509_PUBKEY_rsa(X509_PUBKEY *pubkey, const RSA_UNIT *rsa);
/** Makes the record a KCDSA public key: KCDSA1 with its domain parameters. Copies p, q, g and y, no private
 * number. */
TLXPKI_API uint32_t set_X509_PUBKEY_kcdsa(X509_PUBKEY *pubkey, const KCDSA *kcdsa);
/**
 * Makes the record an elliptic-curve public key: id-ecPublicKey with the identifier of the curve. Copies the
 * public point, uncompressed, and no private number. Returns 1 also for a curve whose name is unknown.
 */
TLXPKI_API uint32_t set_X509_PUBKEY_ecc(X509_PUBKEY *pubkey, const ECC_KEY *ecc);
/**
 * Makes the record the public key of a key of any kind, private or public. KCDSA without y gets it computed.
 * Keys of TLX_KEY_ECDSA become id-ecPublicKey with an uncompressed point (RFC 5480), those of TLX_KEY_EDDSA
 * and TLX_KEY_XDH what RFC 8410 says.
 */
TLXPKI_API uint32_t set_X509_PUBKEY_key(X509_PUBKEY *pubkey, const ASYMMETRIC_KEY *key);

TLX_END_DECLS

#endif
