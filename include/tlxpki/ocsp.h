/** @file
 * Asking about certificates by OCSP (RFC 6960): requests, and the verification of the answers.
 *
 *     OCSP_REQUEST *request = NULL;
 *     generate_OCSP_REQUEST(&request, cert, issuer, TLX_DIGEST_SHA1);
 *     generate_OCSP_REQUEST_nonce(request, 32);
 *     // ... the responder answers ...
 *     OCSP_ANSWER answer;
 *     status = check_OCSP_RESPONSE(response, cert, issuer, get_OCSP_REQUEST_nonce(request),
 *                                  get_OCSP_REQUEST_nonce_length(request), NULL, &answer);
 *     if (status == 0 && answer.status == TLX_OCSP_GOOD) ...
 *
 * The contract of all records is in x509_types.h; <tlxpki/ocsp_respond.h> has the responder's side.
 *
 * A nonce is the value of its extension as it stands. By RFC 8954 that value is an OCTET STRING, whose header
 * then is part of the nonce: a responder that echoes what get_OCSP_REQUEST_nonce() gives answers such clients
 * and those that send bare octets.
 *
 * Signatures are those of RSA with PKCS #1 v1.5 and of KCDSA. No digest is refused for being weak.
 */
#ifndef TLXPKI_OCSP_H
#define TLXPKI_OCSP_H

#include <tlxcrypto/digest.h>
#include <tlxpki/ocsp_types.h>
#include <tlxpki/pkcs8.h>

TLX_BEGIN_DECLS

/* ---- IDs of certificates ---- */

/**
 * Makes the ID of a certificate, or fills one: digests of its issuer's name and public key, and its serial
 * number. The name counts as the certificate has it, octet for octet when it was decoded.
 * @param digestId TLX_DIGEST_SHA1, which every responder knows, or TLX_DIGEST_SHA256; also SHA-224, SHA-384
 * and SHA-512
 * @return 0; 0x50190049 for a null argument; 0x5019002B for another digest; 0x5019003B for a certificate
 * without issuer or serial number and an issuer without public key; 0x5019003C when memory runs out. The
 * caller's record is unchanged on failure
 */
TLXPKI_API uint32_t generate_OCSP_CERT_ID(OCSP_CERT_ID **id, const X509_CERT *cert, const X509_CERT *issuer,
                                          uint32_t digestId);

/**
 * Checks that an ID is one of a certificate that this CA issued, as far as names and keys tell.
 * @param issuer the CA's certificate
 * @return 0; 0x501D0049 for a null argument; 0x501D0048 for a digest that is not known; 0x501D0106 for
 * another CA and an ID with members missing; 0x501D003C when memory runs out
 */
TLXPKI_API uint32_t match_OCSP_CERT_ID(const OCSP_CERT_ID *id, const X509_CERT *issuer);

/* ---- Requests ---- */

/**
 * Adds a question about a certificate to a request, or makes a request of it.
 * @param digestId as for generate_OCSP_CERT_ID()
 * @return 0; 0x501E0049 for a null argument; 0x501E002B for a digest that generate_OCSP_CERT_ID() refuses;
 * 0x501E003B for a certificate without issuer or serial number and an issuer without public key; 0x501E003C
 * when memory runs out. The caller's request is unchanged on failure
 */
TLXPKI_API uint32_t generate_OCSP_REQUEST(OCSP_REQUEST **request, const X509_CERT *cert,
                                          const X509_CERT *issuer, uint32_t digestId);

/**
 * Gives a request a nonce in place of the one it has.
 * @param nonce  the value of the extension, as it stands
 * @param length its octets, at most 0x7FFFFFFF
 * @return 0; 0x501F0049 for a null argument and a request without tbsRequest; 0x501F003C when memory runs out
 * (the request is unchanged then) and for a longer nonce
 */
TLXPKI_API uint32_t set_OCSP_REQUEST_nonce(OCSP_REQUEST *request, const uint8_t *nonce, uint32_t length);

/**
 * Gives a request a random nonce in the form of RFC 9654, an OCTET STRING.
 * @param octets how many random octets, 1 to 128; RFC 9654 wants at least 32, responders by RFC 8954 take no
 * more than these
 * @return 0; 0x502B0049 for a null argument and a request without tbsRequest; 0x502B002B for another number;
 * 0x502B003C when memory runs out and when there are no random octets
 */
TLXPKI_API uint32_t generate_OCSP_REQUEST_nonce(OCSP_REQUEST *request, uint32_t octets);

/** The nonce of a request, which goes on owning it; null when there is none. */
TLXPKI_API const uint8_t *get_OCSP_REQUEST_nonce(const OCSP_REQUEST *request);
/** The octets of the nonce of a request; 0 when there is none. */
TLXPKI_API uint32_t get_OCSP_REQUEST_nonce_length(const OCSP_REQUEST *request);

/**
 * Signs a request: names the signer's subject as requestorName and adds a copy of the certificate. What an
 * earlier signature was is replaced.
 * @param digestId as for generate_BASIC_OCSP_RESPONSE_ex(), and so are the algorithms
 * @return 0; 0x502C0049 for a null argument and a request without tbsRequest; 0x502C002B for a key of another
 * kind and another digest; a status of OCSP_TBS_REQUEST_to_Seq(); 0x502C001C when signing fails; 0x502C003C
 * when memory runs out. On failure the request may have the requestorName, and otherwise is unchanged
 */
TLXPKI_API uint32_t sign_OCSP_REQUEST(OCSP_REQUEST *request, const X509_CERT *signer,
                                      const P8_PRIV_KEY_INFO *key, uint32_t digestId);

/**
 * Verifies the signature of a request. It proves that the owner of the certificate's key signed; who that is
 * and what he may ask is for the caller to check.
 * @param signer the certificate to verify with; null for the first one of the request
 * @return 0; 0x502D0049 for a null request and one without tbsRequest; 0x502D002B for a request without
 * signature; 0x502D0047 when there is no certificate; 0x502D0048 for an unknown algorithm and one that is not
 * for the key; 0x502D0054 when the signature does not verify; 0x502D003C when memory runs out
 */
TLXPKI_API uint32_t verify_OCSP_REQUEST(const OCSP_REQUEST *request, const X509_CERT *signer);

/* ---- Responses ---- */

/**
 * Reads the basic response in a response, whatever its responseStatus.
 * @param out as for Seq_to_BASIC_OCSP_RESPONSE()
 * @return 0; 0x502E0049 for a null argument; 0x502E002B for a response without bytes; 0x502E0048 for bytes of
 * another type; 0x502E004F for bytes that are not one element; a status of Seq_to_BASIC_OCSP_RESPONSE()
 */
TLXPKI_API uint32_t decode_BASIC_OCSP_RESPONSE(const OCSP_RESPONSE *response, BASIC_OCSP_RESPONSE **out);

/** The nonce of a response, which goes on owning it; null when there is none. */
TLXPKI_API const uint8_t *get_OCSP_RESPONSE_DATA_nonce(const OCSP_RESPONSE_DATA *data);
/** The octets of the nonce of a response; 0 when there is none. */
TLXPKI_API uint32_t get_OCSP_RESPONSE_DATA_nonce_length(const OCSP_RESPONSE_DATA *data);

/**
 * Verifies a basic response as RFC 6960, section 3.2, wants it:
 *
 * - The responder ID is that of the CA, or of a certificate that the CA issued itself, that has
 * id-kp-OCSPSigning, may sign by its key usage and is valid at the time (section 4.2.2.2). An ID by key is
 * the digest of the key or the subjectKeyIdentifier.
 * - The signature verifies with that certificate over the octets received.
 * - Every answer holds at the time: from thisUpdate on, and up to nextUpdate when there is one.
 * - No extension is critical, except those of RFC 6960 that say no more than when and from where.
 *
 * It proves what the responder said, not that this is an answer to a question; check_OCSP_RESPONSE() does
 * that. The CA's certificate is trusted as it is, and no revocation of the responder's certificate is looked
 * for.
 * @param issuer the certificate of the CA that issued the certificates asked about
 * @param certs  where the responder's certificate may be besides the response; may be null
 * @param time   the point in time to verify at, in UTC; null for the present
 * @return 0; 0x501B0049 for a null response or issuer and a response without data, algorithm or signature;
 * 0x501B0047 when no certificate is that of the responder; 0x501B0106 when the CA did not issue it;
 * 0x501B0118 when it has no id-kp-OCSPSigning or its key usage allows no signatures; 0x501B0113 when it is
 * not valid at the time, and when an answer does not hold; 0x501B0048 for an unknown signature algorithm and
 * one that is not for the key; 0x501B0054 when the signature does not verify; 0x501B0104 for another critical
 * extension and a time that cannot be read; 0x501B003C when memory runs out and when the present time is
 * unavailable; memory that runs out inside a check may also look as if the check had failed. Of several
 * certificates with the responder's ID the first one says why
 */
TLXPKI_API uint32_t verify_BASIC_OCSP_RESPONSE(const BASIC_OCSP_RESPONSE *basic, const X509_CERT *issuer,
                                               const X509_CERTIFICATES *certs, const ASN1_TIME *time);
/** verify_BASIC_OCSP_RESPONSE() under a misspelt name, which callers use. */
TLXPKI_API uint32_t verfy_BASIC_OCSP_RESPONSE(const BASIC_OCSP_RESPONSE *basic, const X509_CERT *issuer,
                                              const X509_CERTIFICATES *certs, const ASN1_TIME *time);

/** What a responder answers about a certificate. A time with the day 0 is one that it does not say. */
typedef struct OCSP_ANSWER {
    uint32_t status;          /**< TLX_OCSP_GOOD, TLX_OCSP_REVOKED or TLX_OCSP_UNKNOWN */
    uint32_t reason;          /**< of a revocation: CRLReason, 0 also when there is none */
    ASN1_TIME revocationTime; /**< of a revocation */
    ASN1_TIME producedAt;
    ASN1_TIME thisUpdate;
    ASN1_TIME nextUpdate;
} OCSP_ANSWER;

/** Days for which an answer without nextUpdate holds, unless a nonce proves that it is new. */
#define TLX_OCSP_MOST_DAYS 3

/**
 * What a response says of a certificate. The responder and the signature are checked as
 * verify_BASIC_OCSP_RESPONSE() does, and so is the answer about this certificate; answers about others do not
 * count. An answer without nextUpdate holds for TLX_OCSP_MOST_DAYS days, or for as long as one likes when the
 * nonce is right.
 * @param nonce       what the request had as its nonce; null when it had none, and a nonce in the response is
 * ignored
 * @param nonceLength its octets
 * @param time        the point in time to ask about, in UTC; null for the present
 * @param answer      receives the answer; unchanged unless the result is 0
 * @return 0 for any answer one can rely on, good or not
 * @return 0x501C0049 for a null argument and a certificate or issuer without what an ID takes; 0x501C0012
 * when the responder reports an error (responseStatus); 0x501C0047 when the response is about other
 * certificates; 0x501C0113 when the answer does not hold at the time; 0x501C003B when the nonce is missing;
 * 0x501C005E when it is another one; 0x501C0104 for an answer that cannot be read, or has an unknown critical
 * extension; 0x501C003C when memory runs out and when the present time is unavailable; a status of
 * decode_BASIC_OCSP_RESPONSE(); a status of verify_BASIC_OCSP_RESPONSE() about the responder and the
 * signature
 */
TLXPKI_API uint32_t check_OCSP_RESPONSE(const OCSP_RESPONSE *response, const X509_CERT *cert,
                                        const X509_CERT *issuer, const uint8_t *nonce, uint32_t nonceLength,
                                        const ASN1_TIME *time, OCSP_ANSWER *answer);

TLX_END_DECLS

#endif
