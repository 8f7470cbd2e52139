/** @file
 * Answering OCSP requests (RFC 6960): the steps of a responder, in the order in which it takes them.
 *
 *     OCSP_RESPONSE_DATA *data = NULL;
 *     generate_OCSP_RESPONSE_DATA(&data, responder, TLX_OCSP_BY_NAME, 0,
 *                                 get_OCSP_REQUEST_nonce(request), get_OCSP_REQUEST_nonce_length(request));
 *     add_single_OCSP_RESPONSE(data, &id, TLX_OCSP_GOOD, NULL, this_update, next_update);
 *     generate_BASIC_OCSP_RESPONSE_ex(&basic, data, responder, key, TLX_DIGEST_SHA256);
 *     generate_OCSP_RESPONSE_BYTES(&bytes, basic);
 *     generate_OCSP_RESPONSE(&response, bytes, TLX_OCSP_SUCCESSFUL);
 *
 * The contract of all records is in x509_types.h. The first argument of a step is the address of a pointer: a
 * null one receives a new record, which the caller frees; a record is filled. Where a step says that it frees
 * the caller's record, the pointer becomes null.
 */
#ifndef TLXPKI_OCSP_RESPOND_H
#define TLXPKI_OCSP_RESPOND_H

#include <tlxcrypto/digest.h>
#include <tlxcrypto/rsa_external.h>
#include <tlxpki/ocsp_types.h>
#include <tlxpki/pkcs8.h>

TLX_BEGIN_DECLS

/**
 * Begins the response data: version, responder ID, producedAt (the present time) and the nonce. A record that
 * is given keeps its responses and its extensions.
 * @param responder       the responder's certificate
 * @param responderIdType TLX_OCSP_BY_NAME: the subject of the certificate. TLX_OCSP_BY_KEY, or 2: the
 * contents of its subjectKeyIdentifier, which need not be what RFC 6960 calls KeyHash
 * @param version         0 for version 1
 * @param nonce           the value of the request's nonce extension, which goes into an extension of the
 * response as it is; null for none
 * @param nonceLength     its octets
 * @return 0; 0x5015002B for a null address or certificate, a responderIdType of 3 or more and a nonceLength
 * above 0x7FFFFFFF; 0x5015001C for a certificate without subjectKeyIdentifier, or with one that is no OCTET
 * STRING (the caller's record is freed); 0x5015003C when memory runs out, when the present time is
 * unavailable and for a certificate without subject (the caller's record is unchanged)
 */
TLXPKI_API uint32_t generate_OCSP_RESPONSE_DATA(OCSP_RESPONSE_DATA **data, const X509_CERT *responder,
                                                uint32_t responderIdType, uint32_t version,
                                                const uint8_t *nonce, uint32_t nonceLength);

/**
 * generate_OCSP_RESPONSE_DATA() by key, with the hash that RFC 6960 means: SHA-1 of the public key, whatever
 * subjectKeyIdentifier says.
 * @return 0; 0x5016002B for a null address or certificate and a nonceLength above 0x7FFFFFFF; 0x5016001C for
 * a certificate without public key; 0x5016003C when memory runs out and when the present time is unavailable.
 * The caller's record is unchanged on failure
 */
TLXPKI_API uint32_t generate_OCSP_RESPONSE_DATA_withKeyHash(OCSP_RESPONSE_DATA **data,
                                                            const X509_CERT *responder, uint32_t version,
                                                            const uint8_t *nonce, uint32_t nonceLength);

/**
 * Adds the answer about one certificate.
 * @param certId     the address of the certificate's ID, which is copied
 * @param status     TLX_OCSP_GOOD, TLX_OCSP_REVOKED or TLX_OCSP_UNKNOWN
 * @param info       when and why it was revoked, copied; ignored for other statuses
 * @param thisUpdate when the status was known to be true, copied
 * @param nextUpdate when newer information will be there, copied; may be null
 * @return 0; 0x5017002B for null data, a null ID or its address, a null thisUpdate, a status of 3 or more and
 * a revoked one without info; 0x5017003C when memory runs out (the data are unchanged then)
 */
TLXPKI_API uint32_t add_single_OCSP_RESPONSE(OCSP_RESPONSE_DATA *data, OCSP_CERT_ID **certId, uint32_t status,
                                             const OCSP_REVOKED_INFO *info,
                                             const GENERALIZED_TIME *thisUpdate,
                                             const GENERALIZED_TIME *nextUpdate);

/**
 * Signs the data. On success the response owns them (other data that it held are freed), and a copy of the
 * responder's certificate is the last one in certs. A KCDSA key signs with "kcdsaWithHAS160", whatever the
 * digest. The signature algorithm has NULL parameters.
 * @param digestId for an RSA key: SHA-1, SHA-224, SHA-256, SHA-384, SHA-512 or MD5, with PKCS #1 v1.5
 * @return 0; 0x5018002B for a null argument; 0x5018002B for a key of another kind and another digest; a
 * status of OCSP_RESPONSE_DATA_to_Seq(); 0x5018001C when signing fails; 0x5018003C when memory runs out. Data
 * that the response does not hold stay the caller's on failure. Unless an argument is null, a failure frees a
 * response that *basic held
 */
TLXPKI_API uint32_t generate_BASIC_OCSP_RESPONSE_ex(BASIC_OCSP_RESPONSE **basic, OCSP_RESPONSE_DATA *data,
                                                    const X509_CERT *responder, const P8_PRIV_KEY_INFO *key,
                                                    uint32_t digestId);
/** generate_BASIC_OCSP_RESPONSE_ex() with TLX_DIGEST_SHA1. */
TLXPKI_API uint32_t generate_BASIC_OCSP_RESPONSE(BASIC_OCSP_RESPONSE **basic, OCSP_RESPONSE_DATA *data,
                                                 const X509_CERT *responder, const P8_PRIV_KEY_INFO *key);

/**
 * Hands out the digest that a responder signs with RSA whose key is elsewhere: with a remote service, with a
 * colleague. The octets that are digested are those of OCSP_RESPONSE_DATA_to_Seq(). A key that is at hand but
 * cannot be read needs none of this (<tlxcrypto/rsa_external.h>).
 * @param digestId as for generate_BASIC_OCSP_RESPONSE_ex()
 * @param input    receives the digest, and how it is signed
 * @return 0; 0x502F0049 for a null argument; 0x502F002B for another digest; a status of
 * OCSP_RESPONSE_DATA_to_Seq(); 0x502F003C when memory runs out
 */
TLXPKI_API uint32_t get_OCSP_RESPONSE_DATA_input(const OCSP_RESPONSE_DATA *data, uint32_t digestId,
                                                 RSA_SIGNATURE_INPUT *input);

/**
 * Puts the signature of a key elsewhere over the data, and does otherwise what
 * generate_BASIC_OCSP_RESPONSE_ex() does.
 * @param responder the responder's certificate, with whose key the signature is verified
 * @param digestId  what the data were signed with; ignored for a KCDSA key
 * @param signature the octets of an RSA signature, or the DER of a KCDSASignatureValue; copied
 * @param len       its octets
 * @return 0; 0x50300049 for a null argument and a length of 0; 0x5030002B for a key of another kind and
 * another digest; a status of OCSP_RESPONSE_DATA_to_Seq(); 0x50300054 when the signature does not verify;
 * 0x5030003C when memory runs out. On failure data that the response does not hold stay the caller's, and his
 * response is unchanged
 */
TLXPKI_API uint32_t set_BASIC_OCSP_RESPONSE_signature(BASIC_OCSP_RESPONSE **basic, OCSP_RESPONSE_DATA *data,
                                                      const X509_CERT *responder, uint32_t digestId,
                                                      const uint8_t *signature, uint32_t len);

/**
 * Wraps a basic response.
 * @return 0; 0x5020002B for a null address or response; a status of BASIC_OCSP_RESPONSE_to_Seq(); 0x5020001C
 * when memory runs out. The caller's record is unchanged on failure
 */
TLXPKI_API uint32_t generate_OCSP_RESPONSE_BYTES(OCSP_RESPONSE_BYTES **bytes,
                                                 const BASIC_OCSP_RESPONSE *basic);

/**
 * Makes the response. On success it owns the response bytes; others that it held are freed.
 * @param bytes  may be null, and is for every status but TLX_OCSP_SUCCESSFUL; stored as given in either case
 * @param status TLX_OCSP_SUCCESSFUL and its kin, 0 to 6
 * @return 0; 0x501A002B for a null address and another status; 0x501A003A when memory runs out. The bytes
 * stay the caller's on failure, and his response is unchanged
 */
TLXPKI_API uint32_t generate_OCSP_RESPONSE(OCSP_RESPONSE **response, OCSP_RESPONSE_BYTES *bytes,
                                           int32_t status);

TLX_END_DECLS

#endif
