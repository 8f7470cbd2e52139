/** @file
 * Signing and verifying certificates, their validity period, and the signature values of ECDSA and KCDSA.
 *
 * What is signed and verified is the to-be-signed part as this library encodes it, never octets kept from
 * reading. A certificate that was read from another encoding (lengths that are not DER, a name whose
 * multi-valued parts were dropped) fails verification.
 *
 * More than one signature value may stand for the same signature: its unused-bits octet is not looked at,
 * nor, for KCDSA, what follows the SEQUENCE of r and s. So the digest of a whole certificate does not
 * identify it; that of its to-be-signed part, or issuer and serial number, do. A negative serial number reads
 * as a positive one, whose signature does not verify.
 *
 * The signature algorithm gives the digest and the scheme (get_DigestID_from_OID() and
 * get_CipherID_from_OID(), whose low octet is the padding mode of RSA). Of a signature algorithm only the
 * identifier counts: id-RSASSA-PSS, whose digest stands in its parameters, is not supported.
 *
 * Functions may run at the same time as long as no two of them write to the same object: one key may verify
 * or sign in several threads at once. No function disturbs a signature or verification that is under way on
 * the key.
 */
#ifndef TLXPKI_X509_SIGN_H
#define TLXPKI_X509_SIGN_H

#include <tlxcrypto/kcdsa.h>
#include <tlxcrypto/rsa.h>
#include <tlxpki/x509_types.h>

TLX_BEGIN_DECLS

/* ---- Certificates ---- */

/**
 * Signs a certificate with the algorithm named inside its to-be-signed part. The outer signature algorithm
 * becomes a copy of that one, and the signature value the new signature; nothing is changed on failure.
 * @param cert        the certificate; all members of the to-be-signed part but the extensions are required
 * @param private_key a private key of kind TLX_KEY_RSA or TLX_KEY_KCDSA
 * @return 0
 * @return 1 for a null argument, a certificate without a to-be-signed part or an algorithm in it, an empty
 *         key holder, a key of any other kind (elliptic curves included), and when memory runs out
 * @return otherwise as gen_RSA_SIG_X509_TBS_CERT() or gen_KCDSA_SIG_X509_TBS_CERT()
 */
TLXPKI_API uint32_t gen_SIG_X509_Cert(X509_CERT *cert, const ASYMMETRIC_KEY *private_key);

/**
 * Signs a to-be-signed part with RSA.
 * @param tbs       the to-be-signed part
 * @param signature receives the signature, freed with free_BIT_STRING(); unchanged on failure, and not read
 * @param algorithm the signature algorithm; that it is the one inside the to-be-signed part is up to the
 *                  caller
 * @param key       a private key
 * @return 0
 * @return 0x46150049 when tbs, signature or key is null
 * @return 0x4615002B when the algorithm gives no digest or no scheme
 * @return 0x4615003B when memory for the signature runs out
 * @return a status of X509_TBS_CERT_to_Seq() when the part cannot be encoded
 * @return a status of sign_RSA(), which is no packed one, when the key does not sign
 */
TLXPKI_API uint32_t gen_RSA_SIG_X509_TBS_CERT(const X509_TBS_CERT *tbs, BIT_STRING **signature,
                                              const OBJECT_IDENTIFIER *algorithm, const RSA_UNIT *key);

/**
 * Signs a to-be-signed part with KCDSA. The signature is the DER encoding of a KCDSASignatureValue. The
 * digest is the one the algorithm names; an algorithm that names none (KCDSA1) stands for HAS-160.
 *
 * A key whose q is longer than 160 bits signs, too, but verify_KCDSA_SIG_X509_CERT() does not accept its
 * signatures.
 * @param tbs       the to-be-signed part
 * @param signature receives the signature, freed with free_BIT_STRING(); unchanged on failure, and not read
 * @param algorithm the signature algorithm
 * @param key       a private key with its domain parameters
 * @return 0
 * @return 0x46160049 when tbs, signature or key is null
 * @return 0x4616002B when the algorithm gives no scheme
 * @return 0x4616003B when memory for the signature runs out
 * @return a status of X509_TBS_CERT_to_Seq() when the part cannot be encoded
 * @return a status of sign_KCDSA_data(), which is no packed one, when the key does not sign
 */
TLXPKI_API uint32_t gen_KCDSA_SIG_X509_TBS_CERT(const X509_TBS_CERT *tbs, BIT_STRING **signature,
                                                const OBJECT_IDENTIFIER *algorithm, const KCDSA *key);

/**
 * Verifies the signature of a certificate.
 * @param cert       the certificate
 * @param issuer_key the issuer's public key, of kind TLX_KEY_RSA or TLX_KEY_KCDSA
 * @return 0 when the signature is good
 * @return 1 for a null argument, a certificate without a to-be-signed part, a public key that was not
 * decoded, and a key of any other kind (elliptic curves included)
 * @return otherwise as verify_RSA_SIG_X509_CERT() or verify_KCDSA_SIG_X509_CERT()
 */
TLXPKI_API uint32_t verify_SIG_X509_CERT(const X509_CERT *cert, const X509_PUBKEY *issuer_key);

/**
 * Verifies the RSA signature of a certificate by its outer signature algorithm.
 * @param cert the certificate
 * @param key  the issuer's key
 * @return 0 when the signature is good
 * @return 0x46170049 for a null argument and a certificate without a to-be-signed part
 * @return 0x4617002B when the algorithm gives no digest or no scheme
 * @return a status of X509_TBS_CERT_to_Seq() when the to-be-signed part cannot be encoded
 * @return otherwise the status of verify_RSA() unchanged, such as TLX_RSA_BAD_SIGNATURE
 */
TLXPKI_API uint32_t verify_RSA_SIG_X509_CERT(const X509_CERT *cert, const RSA_UNIT *key);

/**
 * Verifies the KCDSA signature of a certificate by its outer signature algorithm, whose digest is the one of
 * gen_KCDSA_SIG_X509_TBS_CERT().
 * @param cert the certificate
 * @param key  the issuer's key
 * @return 0 when the signature is good
 * @return 0x46180049 for a null argument and a certificate without a to-be-signed part
 * @return 0x4618002B when the algorithm gives no scheme
 * @return 0x46180104 when the signature is no KCDSASignatureValue, its s is longer than 20 octets, and when
 *         memory for it runs out
 * @return a status of X509_TBS_CERT_to_Seq() when the to-be-signed part cannot be encoded
 * @return otherwise the status of verify_KCDSA_data() unchanged, such as TLX_KCDSA_BAD_SIGNATURE
 */
TLXPKI_API uint32_t verify_KCDSA_SIG_X509_CERT(const X509_CERT *cert, const KCDSA *key);

/**
 * Tells whether a certificate is within its validity period, both ends included, to the second.
 * @param cert the certificate
 * @param time the point in time, in UTC; null for the present
 * @return 0 when it is
 * @return 0x462D0049 for a null certificate and one without a validity period
 * @return 0x462D0104 when one of the two dates cannot be read or does not exist
 * @return 0x462D003C when the present time is not to be had
 * @return 0x462D0113 when the time is before notBefore or after notAfter
 */
TLXPKI_API uint32_t verify_X509_validity(const X509_CERT *cert, const ASN1_TIME *time);

/* ---- Signature values ----
 *
 * An INTEGER has (bits + 8) / 8 contents octets, hence a leading zero octet when its highest bit would be
 * set, and one octet when it is zero. */

/**
 * Encodes an ECDSA signature: SEQUENCE { r INTEGER, s INTEGER } (RFC 3279, section 2.2.3).
 * @param out     receives the octets, freed with tlx_free(); unchanged on failure
 * @param out_len receives their number
 * @param r,s     unsigned big-endian numbers; leading zero octets do not count
 * @param r_len,s_len octets of r and s, at least 1
 * @return 0
 * @return 0x462E0049 for a null argument and a length below 1
 * @return 0x462E003C when there is no memory for a number
 * @return 0x462E0104 when there is no memory for the encoding
 */
TLXPKI_API uint32_t encode_ECDSASignatureValue(uint8_t **out, uint32_t *out_len, const uint8_t *r,
                                               int32_t r_len, const uint8_t *s, int32_t s_len);

/**
 * Decodes an ECDSA signature. Further members of the SEQUENCE are ignored.
 * @param r,s receive unsigned big-endian numbers of (bits + 8) / 8 octets, freed with tlx_free(); unchanged
 *            on failure
 * @param r_len,s_len receive the octets of r and s
 * @param der the SEQUENCE, for example from decodeToDERSequence_n()
 * @return 0
 * @return 0x462F0049 for a null argument
 * @return 0x462F0104 when der is no SEQUENCE, an INTEGER is missing, and when memory runs out
 */
TLXPKI_API uint32_t decode_ECDSASignatureValue(uint8_t **r, uint32_t *r_len, uint8_t **s, uint32_t *s_len,
                                               const ASN1_UNIT *der);

/**
 * Encodes a KCDSA signature: SEQUENCE { r BIT STRING, s INTEGER }.
 * @param out   receives the octets, freed with tlx_free(); unchanged on failure
 * @param r     r, which is kept octet by octet
 * @param r_len its octets, at least 1
 * @param s     an unsigned big-endian number; leading zero octets do not count
 * @param s_len its octets, at least 1
 * @return the number of octets, and not 0, on success
 * @return 0x4F00002B for a null argument and a length below 1
 * @return 0x4F00003C when memory runs out
 */
TLXPKI_API uint32_t encode_KCDSASignatureValue(uint8_t **out, const uint8_t *r, int32_t r_len,
                                               const uint8_t *s, int32_t s_len);

/**
 * Decodes a KCDSA signature. Further members of the SEQUENCE are ignored, and so is the number of unused bits
 * of r.
 * @param r     receives r as it is, freed with tlx_free(); unchanged on failure
 * @param r_len receives its octets
 * @param s     receives an unsigned big-endian number of (bits + 8) / 8 octets, freed with tlx_free();
 *              unchanged on failure
 * @param s_len receives its octets
 * @param der   the SEQUENCE, for example from decodeToDERSequence_n()
 * @return 0
 * @return 1 for a null argument, a der that is no SEQUENCE, a missing member (an ECDSA signature has no BIT
 *         STRING), and when memory runs out
 */
TLXPKI_API uint32_t decode_KCDSASignatureValue(uint8_t **r, uint32_t *r_len, uint8_t **s, uint32_t *s_len,
                                               const ASN1_UNIT *der);

/** encode_KCDSASignatureValue() under the misspelt name that programs already link against. */
TLXPKI_API uint32_t encode_KCDSASignatrueValue(uint8_t **out, const uint8_t *r, int32_t r_len,
                                               const uint8_t *s, int32_t s_len);

/** decode_KCDSASignatureValue() under the misspelt name that programs already link against. */
TLXPKI_API uint32_t decode_KCDSASignatrueValue(uint8_t **r, uint32_t *r_len, uint8_t **s, uint32_t *s_len,
                                               const ASN1_UNIT *der);

TLX_END_DECLS

#endif
