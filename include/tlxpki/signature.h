/** @file
 * Signatures over octets with keys of any kind: RSA (PKCS #1 v1.5 and PSS; RFC 8017), ECDSA (RFC 5758),
 * Ed25519 and Ed448 (RFC 8410), KCDSA (TTAK.KO-12.0001), and for verification DSA. Ownership and threads are
 * as x509_types.h says.
 *
 * The algorithm identifier says all: the digest, the scheme, and for id-RSASSA-PSS the digest of MGF1 and the
 * length of the salt in its parameters. It has to be DER, with the parameters that its standard asks for.
 * read_PRIV_KEY() of <tlxpki/pkcs8.h> makes keys to sign with.
 */
#ifndef TLXPKI_SIGNATURE_H
#define TLXPKI_SIGNATURE_H

#include <tlxpki/x509_types.h>

TLX_BEGIN_DECLS

/**
 * Signs octets with a private key. One key may sign in several threads at once.
 * @param key       of kind TLX_KEY_RSA, TLX_KEY_KCDSA, TLX_KEY_ECDSA or TLX_KEY_EDDSA
 * @param data      len octets; may be null when len is 0
 * @param signature receives a new string with the value as certificates and messages have it: ECDSA and KCDSA
 *                  as DER; unchanged on failure
 * @return 0; 0x550D0049 for a null argument; 0x55020203 for an unknown algorithm, 0x55020204 for its
 * parameters, 0x55020205 when it is not one of the key or the key is a public one; 0x55020202 when the
 * numbers of the key make no key; 0x5502003C when memory runs out; a status of the functions of an external
 * key
 */
TLXPKI_API uint32_t make_SIGNATURE(const ASYMMETRIC_KEY *key, const X509_ALGO_IDENTIFIER *algorithm,
                                   const uint8_t *data, uint32_t len, OCTET_STRING **signature);

/**
 * Verifies a signature of octets.
 * @param key the public key, with its parameters
 * @return 0 when the signature is good; 0x550E0049 for a null argument; 0x53100054 when it is not one of this
 * key over this data; 0x55020201 for an unknown key, 0x55010208 when its octets or parameters are not in the
 * form of its algorithm, 0x55020202 when its numbers make no key; otherwise as make_SIGNATURE()
 */
TLXPKI_API uint32_t verify_SIGNATURE(const X509_PUBKEY *key, const X509_ALGO_IDENTIFIER *algorithm,
                                     const uint8_t *data, uint32_t len, const uint8_t *signature,
                                     uint32_t signature_len);

TLX_END_DECLS

#endif
