/** @file
 * Signatures that are made elsewhere and come later: on a phone, by a remote service, by a colleague.
 *
 * A message, a certificate or a revocation list is prepared, what is to be signed is handed out, and the
 * signature is put back when it has come; <tlxpki/ocsp_respond.h> does so for answers of OCSP. Between the
 * two steps the caller keeps the record: a signer without a signature cannot be written. A signature is
 * verified before it is put back. A key that is at hand but cannot be read needs none of this
 * (<tlxcrypto/rsa_external.h>).
 *
 * Two forms of the same are handed out, and a signing service takes one of them: the octets that are to be
 * digested and signed, or their digest as RSA_SIGNATURE_INPUT, which has the DigestInfo too.
 *
 * Functions return 0 on success and change nothing on failure, except where they say so. Ownership and
 * threads are as x509_types.h says.
 */
#ifndef TLXPKI_EXTERNAL_SIGNATURE_H
#define TLXPKI_EXTERNAL_SIGNATURE_H

#include <tlxcrypto/rsa_external.h>
#include <tlxpki/pkcs7_types.h>
#include <tlxpki/x509_crl.h>
#include <tlxpki/x509_types.h>

TLX_BEGIN_DECLS

/* ---- Signers of messages ---- */

/**
 * Prepares every signer of signed data that has neither a key nor a signature, as sign_PKCS7_withAttributes()
 * does before it signs: with the attributes contentType, messageDigest and signingTime, and for PSS with
 * parameters. set_PKCS7_P7_SIGNER_INFO() and add_PKCS7_Signature() make such a signer from a null key.
 * @param data,length,detached,time as sign_PKCS7_withAttributes() takes them
 * @return 0; 0x4B1C0049 for a null message; 0x4B310047 when no signer waits for its signature; 0x4B31002B for
 * a digest or signature algorithm that is unknown; a status of sign_PKCS7_withAttributes(). On failure some
 * signers may be prepared, and the content may be in the message
 */
TLXPKI_API uint32_t prepare_PKCS7_Signatures(P7_CONTENT_INFO *info, const uint8_t *data, int32_t length,
                                             uint32_t detached, const ASN1_TIME *time);

/**
 * Hands out the octets that a prepared signer signs: its authenticated attributes as a SET in DER.
 * @param octets receives the octets, freed with tlx_free()
 * @param len    receives their number
 * @return 0; 0x4B320049 for a null argument; 0x4B32005F for attributes that are missing, empty or cannot be
 * encoded, and when memory runs out
 */
TLXPKI_API uint32_t get_PKCS7_Signer_octets(const P7_SIGNER_INFO *signer, uint8_t **octets, uint32_t *len);

/**
 * Hands out the digest that a prepared signer signs with RSA.
 * @param input receives the digest of the octets of get_PKCS7_Signer_octets(), and how it is signed
 * @return 0; 0x4B330049 for a null argument; 0x4B330048 for algorithms that are unknown or not RSA, and PSS
 * parameters that cannot be read; 0x4B33005F for attributes that are missing, empty or cannot be encoded, and
 * when memory runs out
 */
TLXPKI_API uint32_t get_PKCS7_Signer_input(const P7_SIGNER_INFO *signer, RSA_SIGNATURE_INPUT *input);

/**
 * Puts the signature of a prepared signer into it. init_PKCS7_Sign() passes over the signer from then on.
 * @param cert      the signer's certificate, with whose key the signature is verified
 * @param signature the octets of an RSA signature, or the DER of a KCDSASignatureValue (then the signature
 * algorithm becomes "KCDSA1"); copied
 * @return 0; 0x4B340049 for a null argument and a length of 0; 0x4B340047 when the signer names another
 * certificate; 0x4B34001C when it has a signature; 0x4B340048 for a certificate whose key is neither RSA nor
 * KCDSA, and algorithms or PSS parameters that are unknown or cannot be read; 0x4B34005F for attributes that
 * are missing, empty or cannot be encoded; 0x4B34003B when memory runs out; 0x4B340054 when the signature
 * does not verify
 */
TLXPKI_API uint32_t set_PKCS7_Signer_signature(P7_SIGNER_INFO *signer, const X509_CERT *cert,
                                               const uint8_t *signature, uint32_t len);

/* ---- Certificates ---- */

/**
 * Hands out the digest that the issuer of a certificate signs with RSA. The octets that are digested are
 * those of X509_TBS_CERT_to_Seq().
 * @param cert  needs what gen_SIG_X509_Cert() needs, with the signature algorithm inside the to-be-signed
 * part
 * @param input receives the digest, and how it is signed
 * @return 0; 0x463A0049 for a null argument and a missing to-be-signed part or algorithm; 0x463A0048 for an
 * algorithm that is unknown or not RSA; a status of X509_TBS_CERT_to_Seq()
 */
TLXPKI_API uint32_t get_X509_CERT_input(const X509_CERT *cert, RSA_SIGNATURE_INPUT *input);

/**
 * Puts its signature into a certificate. The outer signature algorithm becomes a copy of the inner one.
 * @param issuer_key the key that the signature is verified with
 * @param signature  the octets of an RSA signature, or the DER of a KCDSASignatureValue; copied
 * @return 0; 0x463B0049 for a null argument, a length of 0, and a missing to-be-signed part or algorithm;
 * 0x463B003B when memory runs out; 0x463B0054 when the signature does not verify with the key
 */
TLXPKI_API uint32_t set_X509_CERT_signature(X509_CERT *cert, const X509_PUBKEY *issuer_key,
                                            const uint8_t *signature, uint32_t len);

/* ---- Revocation lists ---- */

/**
 * Hands out the octets that the issuer of a list signs: its to-be-signed part.
 * @param crl    needs what gen_SIG_X509_CRL() needs
 * @param octets receives the octets, freed with tlx_free()
 * @param len    receives their number
 * @return 0; 0x48110049 for a null argument and a list without an algorithm; 0x48110103 when the list cannot
 * be encoded; 0x4811003B when memory runs out
 */
TLXPKI_API uint32_t get_X509_CRL_octets(const X509_CRL *crl, uint8_t **octets, uint32_t *len);

/**
 * Hands out the digest that the issuer of a list signs with RSA.
 * @param input receives the digest of the octets of get_X509_CRL_octets(), and how it is signed
 * @return 0; 0x48120049 for a null argument and a list without an algorithm; 0x48120048 for an algorithm that
 * is unknown or not RSA; 0x48120103 when the list cannot be encoded; 0x4812003B when memory runs out
 */
TLXPKI_API uint32_t get_X509_CRL_input(const X509_CRL *crl, RSA_SIGNATURE_INPUT *input);

/**
 * Puts its signature into a list. The outer signature algorithm becomes a copy of the inner one.
 * @param issuer_key the key that the signature is verified with
 * @param signature  the octets of an RSA signature, or the DER of a KCDSASignatureValue; copied
 * @return 0; 0x48130049 for a null argument, a length of 0, a list without an algorithm and a key that was
 * not decoded; 0x48130103 when the list cannot be encoded; 0x4813003B when memory runs out; 0x48130054 when
 * the signature does not verify with the key
 */
TLXPKI_API uint32_t set_X509_CRL_sig_value(X509_CRL *crl, const X509_PUBKEY *issuer_key,
                                           const uint8_t *signature, uint32_t len);

TLX_END_DECLS

#endif
