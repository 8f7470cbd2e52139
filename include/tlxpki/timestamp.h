/** @file
 * Time stamps (RFC 3161, RFC 5816): asking an authority for one, reading its answer and verifying it.
 *
 *     CMS_TIMESTAMP_REQUEST *request = NULL;
 *     generate_CMS_TIMESTAMP_REQUEST(&request, TLX_DIGEST_SHA256, octets, len);
 *     generate_CMS_TIMESTAMP_REQUEST_nonce(request, 8);
 *     // ... the authority answers ...
 *     CMS_TST_INFO *info = NULL;
 *     status = check_CMS_TIMESTAMP_RESPONSE(response, request, &info);
 *
 * The records are those of <tlxpki/cms_timestamp.h>; the contract of all records is in x509_types.h. A
 * signature of a message is stamped by a request for the octets of its value (the member signature of a
 * CMS_SIGNER_INFO, encryptedDigest of a P7_SIGNER_INFO).
 */
/* Before the guard, because <windows.h> may have defined its macros since. */
#include <tlxpki/wincrypt.h>

#ifndef TLXPKI_TIMESTAMP_H
#define TLXPKI_TIMESTAMP_H

#include <tlxcrypto/digest.h>
#include <tlxpki/cms_timestamp.h>
#include <tlxpki/pkcs7_sign.h>

TLX_BEGIN_DECLS

/* ---- Requests ---- */

/**
 * Makes a request for a time stamp of octets, or fills one anew: version 1, with the digest of the octets,
 * and certReq set.
 * @param digestId TLX_DIGEST_SHA256 or another of SHA-1, SHA-2, SHA-3 and HAS-160
 * @param octets   may be null when length is 0
 * @return 0; 0x52C00049 for a null argument; 0x52C0002B for another digest; 0x52C0003C when memory runs out
 * and when the digest is not available. The caller's request is unchanged on failure
 */
TLXPKI_API uint32_t generate_CMS_TIMESTAMP_REQUEST(CMS_TIMESTAMP_REQUEST **request, uint32_t digestId,
                                                   const uint8_t *octets, uint32_t length);
/**
 * Does so for octets of which the digest is known.
 * @param length that of the digest
 * @return 0; 0x52C10049 for a null argument; 0x52C1002B for another digest, and a length that is not its own;
 * 0x52C1003C when memory runs out. The caller's request is unchanged on failure
 */
TLXPKI_API uint32_t generate_CMS_TIMESTAMP_REQUEST_of_digest(CMS_TIMESTAMP_REQUEST **request,
                                                             uint32_t digestId, const uint8_t *digest,
                                                             uint32_t length);
/**
 * Gives a request a random nonce in place of the one it has.
 * @param octets how many random octets, 1 to 64; 8 are usual
 * @return 0; 0x52C20049 for null; 0x52C2002B for another number; 0x52C2003C when memory runs out and when
 * there are no random octets. The request is unchanged on failure
 */
TLXPKI_API uint32_t generate_CMS_TIMESTAMP_REQUEST_nonce(CMS_TIMESTAMP_REQUEST *request, uint32_t octets);
/**
 * Gives a request a copy of a policy in place of the one it has.
 * @return 0; 0x52C30049 for a null argument; 0x52C3003C when memory runs out (the request is unchanged then)
 */
TLXPKI_API uint32_t set_CMS_TIMESTAMP_REQUEST_policy(CMS_TIMESTAMP_REQUEST *request,
                                                     const OBJECT_IDENTIFIER *policy);

/* ---- Answers ---- */

/**
 * Reads what a token says. The signature is not verified.
 * @param out as for Seq_to_CMS_TST_INFO()
 * @return 0; 0x52C40049 for a null argument; 0x52C40048 for a message that is not signed data with content of
 * the type 1.2.840.113549.1.9.16.1.4; 0x52C4003B for one without its content; 0x52C4004F for content that is
 * not one element; 0x52C4001C for another version than 1; 0x52C40104 for a genTime that is none by RFC 3161,
 * section 2.4.2 (in UTC, with seconds, without zeros at the end of a fraction); a status of
 * Seq_to_CMS_TST_INFO()
 */
TLXPKI_API uint32_t decode_CMS_TST_INFO(const CMS_CONTENT_INFO *token, CMS_TST_INFO **out);

/**
 * Compares the token of a response with the request that it answers. The signature is not verified.
 * @param info receives what the token says, as Seq_to_CMS_TST_INFO() stores it; may be null. It is unchanged
 * unless the result is 0
 * @return 0; 0x52C50049 for a null argument, a response without status and a request without messageImprint;
 * 0x52C50012 when the authority reports another status than TLX_TIMESTAMP_GRANTED and
 * TLX_TIMESTAMP_GRANTED_WITH_MODS (the response says why); 0x52C5003B when there is no token; a status of
 * decode_CMS_TST_INFO(); 0x52C5005E when the token is for another digest; 0x52C50047 when it lacks the nonce
 * of the request; 0x52C50048 when it has another nonce; 0x52C50119 when the request wants another policy
 */
TLXPKI_API uint32_t check_CMS_TIMESTAMP_RESPONSE(const CMS_TIMESTAMP_RESPONSE *response,
                                                 const CMS_TIMESTAMP_REQUEST *request, CMS_TST_INFO **info);

/** Returns the digest of an imprint, TLX_DIGEST_SHA256 and its kin; 0 for null and a digest that is not
 * known. */
TLXPKI_API uint32_t get_CMS_MESSAGE_IMPRINT_digest(const CMS_MESSAGE_IMPRINT *imprint);

/**
 * Compares an imprint with octets.
 * @param octets may be null when length is 0
 * @return 0 when it is that of the octets; 0x52C60049 for a null argument; 0x52C60048 for a digest that is
 * not known or not available; 0x52C6005E for an imprint of other octets; 0x52C6003C when memory runs out
 */
TLXPKI_API uint32_t match_CMS_MESSAGE_IMPRINT(const CMS_MESSAGE_IMPRINT *imprint, const uint8_t *octets,
                                              uint32_t length);

/**
 * Adds a token to the unsigned attributes of the signer whose signature it stamps (RFC 3161, appendix A),
 * beside those that are there. The signature of the token is not verified.
 * @return 0; 0x52C80049 for a null argument and a signer without signature; a status of decode_CMS_TST_INFO()
 * for what is no token; 0x52C60048, 0x52C6005E or 0x52C6003C as match_CMS_MESSAGE_IMPRINT() returns them
 * about the signature; 0x52C8003C when memory runs out, and for a member that cannot be encoded. The signer
 * is unchanged unless the result is 0
 */
TLXPKI_API uint32_t add_CMS_SIGNER_INFO_timestamp(CMS_SIGNER_INFO *signer, const CMS_CONTENT_INFO *token);

/* ---- Verification ---- */

/** What a token is verified with. At least one of octets, digest and request is given; what is null is not
 * compared. All members stay the caller's. */
typedef struct CMS_TIMESTAMP_SETTINGS {
    const uint8_t *octets; /**< what is stamped; not null for octets of which there are none */
    uint32_t octets_len;
    const uint8_t *digest; /**< or its digest, by get_CMS_MESSAGE_IMPRINT_digest() of the token */
    uint32_t digest_len;
    const CMS_TIMESTAMP_REQUEST *request; /**< what the token answers */
    const X509_CERTIFICATES *pool;        /**< certificates beside those of the token */
    const VERIFY_STORE *store;            /**< anchors and intermediates; null checks no path */
    const VERIFY_SETTINGS *settings;      /**< those of the path; null for the defaults. The purpose is
                                             TLX_PURPOSE_TIME_STAMPING whatever they say, names and policies
                                             do not count, and the time of the stamp stands for one that is
                                             not given */
} CMS_TIMESTAMP_SETTINGS;

/** What verify_CMS_TIMESTAMP() finds. A status of 0 means that the check was made and passed, or that there
 * was nothing to compare with. When the token cannot be read, all have the same status. */
typedef struct CMS_TIMESTAMP_REPORT {
    uint32_t status;     /**< the first of those that follow that is not 0 */
    uint32_t infoStatus; /**< a status of Seq_to_CMS_CONTENT_INFO() or decode_CMS_TST_INFO(); 0x52C70048 the
                            time stamp has a critical extension, of which none is known */
    uint32_t imprintStatus; /**< a status of match_CMS_MESSAGE_IMPRINT(); 0x55020207 the digest is none of the
                               profile's */
    uint32_t requestStatus; /**< a status of check_CMS_TIMESTAMP_RESPONSE() about digest, nonce and policy */
    uint32_t signerStatus;  /**< 0x52C7002B there is not exactly one signer; the status of its report;
                               0x52C7003B it has no attribute signingCertificate or signingCertificateV2;
                               0x52C70106 its certificate lacks the name that the time stamp has for it */
    CMS_TST_INFO *info;     /**< owned; null when it cannot be read */
    ASN1_TIME *time;        /**< genTime without its fraction, owned; likewise */
    P7_SIGNER_REPORT *signer; /**< owned; null when there is not exactly one */
} CMS_TIMESTAMP_REPORT;

/** CMS_TIMESTAMP_REPORT entries. */
typedef STACK CMS_TIMESTAMP_REPORTS;

/**
 * Verifies a token: its signature, whose signer has to be named by an attribute of RFC 5035, the path of the
 * authority, and what is stamped. Without a store it proves nothing: the pathStatus of the signer, which does
 * not count then, is 0x4B300116.
 * @param report receives a new report in place of *report, which is freed; may be null
 * @return 0; 0x52C70049 for a null argument, settings with nothing to compare with and a request without
 * messageImprint; 0x52C7003C when memory runs out (*report is unchanged then); the status of the report
 */
TLXPKI_API uint32_t verify_CMS_TIMESTAMP(const CMS_CONTENT_INFO *token,
                                         const CMS_TIMESTAMP_SETTINGS *settings,
                                         CMS_TIMESTAMP_REPORT **report);
/** Frees a report. Ignores null. */
TLXPKI_API void free_CMS_TIMESTAMP_REPORT(CMS_TIMESTAMP_REPORT *report);
/** Frees reports. Ignores null. */
TLXPKI_API void free_CMS_TIMESTAMP_REPORTS(CMS_TIMESTAMP_REPORTS *reports);
/** Returns how many reports there are; 0 for null. */
TLXPKI_API uint32_t get_CMS_TIMESTAMP_REPORTS_count(const CMS_TIMESTAMP_REPORTS *reports);
/** Returns a report, which the list goes on owning; null when there is none at the index. */
TLXPKI_API const CMS_TIMESTAMP_REPORT *get_CMS_TIMESTAMP_REPORTS_child(const CMS_TIMESTAMP_REPORTS *reports,
                                                                       int32_t index);

TLX_END_DECLS

#endif
