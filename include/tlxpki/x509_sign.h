/** @file
 * Signing and verifying certificates, their validity period, and the signature values of ECDSA and KCDSA.
 * Ownership and threads are as x509_types.h says.
 *
 * What is signed and verified is the to-be-signed part as this library encodes it. A certificate fails
 * verification, as with a wrong signature, when it was read from other octets than it is written with
 * (check_X509_received(): lengths that are not DER, a name with a multi-valued part, an element too many),
 * when its signature has unused bits, and when its outer signature algorithm is not the inner one.
 *
 * Several signature values can express one KCDSA signature: verification ignores what follows the SEQUENCE of
 * r and s in it. So the digest of a whole certificate does not identify it; that of its to-be-signed part
 * does, as do issuer and serial number. A negative serial number reads as a positive one, whose signature
 * does not verify.
 *
 * The signature algorithm gives the digest and the scheme (get_DigestID_from_OID() and
 * get_CipherID_from_OID(), whose low octet is the padding mode of RSA). Only its identifier counts.
 * id-RSASSA-PSS, whose digest is in the parameters, is unsupported.
 *
 * One key may sign and verify in several threads at once. No function disturbs a signature or verification
 * that is under way on the key.
 */
#ifndef TLXPKI_X509_SIGN_H
#define TLXPKI_X509_SIGN_H

#include <tlxcrypto/kcdsa.h>
#include <tlxcrypto/rsa.h>
#include <tlxpki/x509_types.h>

TLX_BEGIN_DECLS

/* ---- Certificates ---- */

/**
 * Signs a certificate with the algorithm inside its to-be-signed part. The outer signature algorithm becomes
 * a copy of that one. On failure the certificate is unchanged.
 * @param cert        needs all members of the to-be-signed part but the extensions
 * @param private_key a private key of kind TLX_KEY_RSA or TLX_KEY_KCDSA
 * @return 0; 1 for a null argument, a missing to-be-signed part or algorithm, an empty key holder, a key of
 * another kind (elliptic curves included), and when memory runs out
 * @return otherwise a status of gen_RSA_SIG_X509_TBS_CERT() or gen_KCDSA_SIG_X509_TBS_CERT()
 */
TLXPKI_API uint32_t gen_SIG_X509_Cert(X509_CERT *cert, const ASYMMETRIC_KEY *private_key);

/**
 * Signs a to-be-signed part with RSA.
 * @param signature receives a new string, whatever it held before; unchanged on failure
 * @param algorithm the signature algorithm; the caller sees to it that the to-be-signed part names the same
 * @param key       a private key
 * @return 0; 0x46150049 when tbs, signature or key is null; 0x4615002B when the algorithm gives no digest or
 * no scheme; 0x4615003B when memory for the signature runs out
 * @return a status of X509_TBS_CERT_to_Seq() when the part cannot be encoded; a status of sign_RSA(), which
 * is no packed one, when the key does not sign
 */
TLXPKI_API uint32_t gen_RSA_SIG_X509_TBS_CERT(const X509_TBS_CERT *tbs, BIT_STRING **signature,
                                              const OBJECT_IDENTIFIER *algorithm, const RSA_UNIT *key);

/**
 * Signs a to-be-signed part with KCDSA. The signature is the DER encoding of a KCDSASignatureValue. The
 * algorithm names the digest; one that names none (KCDSA1) means HAS-160. A key whose q is longer than 160
 * bits also signs, but verify_KCDSA_SIG_X509_CERT() refuses its signatures.
 * @param signature,algorithm as for gen_RSA_SIG_X509_TBS_CERT()
 * @param key       a private key with its domain parameters
 * @return 0; 0x46160049 when tbs, signature or key is null; 0x4616002B when the algorithm gives no scheme;
 * 0x4616003B when memory for the signature runs out
 * @return a status of X509_TBS_CERT_to_Seq() when the part cannot be encoded; a status of sign_KCDSA_data(),
 * which is no packed one, when the key does not sign
 */
TLXPKI_API uint32_t gen_KCDSA_SIG_X509_TBS_CERT(const X509_TBS_CERT *tbs, BIT_STRING **signature,
                                                const OBJECT_IDENTIFIER *algorithm, const KCDSA *key);

/**
 * Verifies the signature of a certificate.
 * @param issuer_key the issuer's public key, of kind TLX_KEY_RSA or TLX_KEY_KCDSA
 * @return 0 when the signature is good; 1 for a null argument, a missing to-be-signed part, a public key that
 * was not decoded, and a key of another kind (elliptic curves included)
 * @return otherwise a status of verify_RSA_SIG_X509_CERT() or verify_KCDSA_SIG_X509_CERT()
 */
TLXPKI_API uint32_t verify_SIG_X509_CERT(const X509_CERT *cert, const X509_PUBKEY *issuer_key);

/**
 * Verifies the RSA signature of a certificate by its outer signature algorithm.
 * @param key the issuer's key
 * @return 0 when the signature is good; 0x46170049 for a null argument and a missing to-be-signed part;
 * 0x4617002B when the algorithm gives no digest or no scheme
 * @return a status of X509_TBS_CERT_to_Seq() when the to-be-signed part cannot be encoded; otherwise the
 * status of verify_RSA() unchanged, such as TLX_RSA_BAD_SIGNATURE
 */
TLXPKI_API uint32_t verify_RSA_SIG_X509_CERT(const X509_CERT *cert, const RSA_UNIT *key);

/**
 * Verifies the KCDSA signature of a certificate by its outer signature algorithm. The digest is that of
 * gen_KCDSA_SIG_X509_TBS_CERT().
 * @param key the issuer's key
 * @return 0 when the signature is good; 0x46180049 for a null argument and a missing to-be-signed part;
 * 0x4618002B when the algorithm gives no scheme; 0x46180104 when the signature is no KCDSASignatureValue, its
 * s is longer than 20 octets, and when memory for it runs out
 * @return a status of X509_TBS_CERT_to_Seq() when the to-be-signed part cannot be encoded; otherwise the
 * status of verify_KCDSA_data() unchanged, such as TLX_KCDSA_BAD_SIGNATURE
 */
TLXPKI_API uint32_t verify_KCDSA_SIG_X509_CERT(const X509_CERT *cert, const KCDSA *key);

/**
 * Checks that a point in time is within the validity period of a certificate, both ends included, to the
 * second.
 * @param time the point in time, in UTC; null for the present
 * @return 0 when it is; 0x462D0049 for a null certificate and one without a validity period; 0x462D0104 when
 * one of the two dates cannot be read or does not exist; 0x462D003C when the present time is unavailable;
 * 0x462D0113 when the time is before notBefore or after notAfter
 */
TLXPKI_API uint32_t verify_X509_validity(const X509_CERT *cert, const ASN1_TIME *time);

/* ---- Signature values ----
 *
 * An INTEGER has (bits + 8) / 8 contents octets: a leading zero octet precedes a highest bit that is set, and
 * zero has one octet. Numbers are unsigned and big-endian. Octets that a function stores are freed with
 * tlx_free(); on failure nothing is stored. Decoders take a SEQUENCE, for example from
 * decodeToDERSequence_n(), and ignore its further members. */

/**
 * Encodes an ECDSA signature: SEQUENCE { r INTEGER, s INTEGER } (RFC 3279, section 2.2.3).
 * @param out_len     receives the octets of the encoding
 * @param r,s         numbers, whose leading zero octets do not count
 * @param r_len,s_len octets of r and s, at least 1
 * @return 0; 0x462E0049 for a null argument and a length below 1; 0x462E003C when memory for a number runs
 * out; 0x462E0104 when memory for the encoding runs out
 */
TLXPKI_API uint32_t encode_ECDSASignatureValue(uint8_t **out, uint32_t *out_len, const uint8_t *r,
                                               int32_t r_len, const uint8_t *s, int32_t s_len);

/**
 * Decodes an ECDSA signature.
 * @param r,s         receive numbers of (bits + 8) / 8 octets
 * @param r_len,s_len receive the octets of r and s
 * @return 0; 0x462F0049 for a null argument; 0x462F0104 when der is no SEQUENCE, an INTEGER is missing, and
 * when memory runs out
 */
TLXPKI_API uint32_t decode_ECDSASignatureValue(uint8_t **r, uint32_t *r_len, uint8_t **s, uint32_t *s_len,
                                               const ASN1_UNIT *der);

/**
 * Encodes a KCDSA signature: SEQUENCE { r BIT STRING, s INTEGER }.
 * @param r           octets, which are kept as they are
 * @param s           a number, whose leading zero octets do not count
 * @param r_len,s_len octets of r and s, at least 1
 * @return the octets of the encoding, not 0, on success; 0x4F00002B for a null argument and a length below 1;
 * 0x4F00003C when memory runs out
 */
TLXPKI_API uint32_t encode_KCDSASignatureValue(uint8_t **out, const uint8_t *r, int32_t r_len,
                                               const uint8_t *s, int32_t s_len);

/**
 * Decodes a KCDSA signature. Ignores the unused bits of r.
 * @param r           receives the octets of r as they are
 * @param s           receives a number of (bits + 8) / 8 octets
 * @param r_len,s_len receive the octets of r and s
 * @return 0; 1 for a null argument, a der that is no SEQUENCE, a missing member (an ECDSA signature has no
 * BIT STRING), and when memory runs out
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
