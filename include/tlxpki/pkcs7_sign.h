/** @file
 * Signing and verifying PKCS #7 messages: signed data, and the signatures of signed-and-enveloped data
 * (RFC 2315, sections 9 and 11). The contract of all records is in x509_types.h.
 *
 * A signer has an RSA or a KCDSA key. It signs its authenticated attributes, or without any the content: the
 * octets of data, and of other content the contents octets of its element.
 *
 * What differs from RFC 2315, and stays so because callers rely on it:
 *
 * - verify_PKCS7() returns 0 for what it did not check, and is no proof of anything; verify_PKCS7_Signers()
 * gives one. It returns 0 for a message without signers or without certificates and for a certificate that
 * belongs to no signer. It skips the digest of the content when there is no messageDigest attribute, and when
 * there is no content. It looks at no contentType attribute, takes the certificates of the message without
 * question, and does not compare the digest algorithm with that of the signature.
 * - sign_PKCS7() adds no attribute by itself. Attributes are signed in list order, which other programs
 * verify only when it is DER order.
 * - A signer of version 0 signs and verifies the content, whatever attributes it has.
 * - Signing names the signature algorithm anew: "rsaEncryption" for a signer of version 0, whatever scheme it
 * has, and for an RSA signer of version 1 with attributes unless its scheme is PSS; "KCDSA1" for every KCDSA
 * signer.
 * - RSASSA-PSS is written with NULL parameters, which other programs refuse. A signature has the settings of
 * the key (set_RSA_UNIT_PSS()), while NULL means MGF1 with SHA-1 and a salt of 20 octets, the settings of a
 * new key, and the signer's digest.
 *
 * The status of a key (<tlxcrypto/rsa.h>, <tlxcrypto/kcdsa.h>) goes up unchanged and is no packed one.
 */
#ifndef TLXPKI_PKCS7_SIGN_H
#define TLXPKI_PKCS7_SIGN_H

#include <tlxpki/cpv.h>
#include <tlxpki/pkcs1_param.h>
#include <tlxpki/pkcs7.h>
#include <tlxpki/verify.h>

TLX_BEGIN_DECLS

/* ---- Signers ---- */

/** Schemes of RSA signers; a KCDSA signer may have either. */
enum {
    TLX_P7_RSA_PKCS1 = 1, /**< RSASSA-PKCS1-v1_5 */
    TLX_P7_RSA_PSS = 2    /**< RSASSA-PSS */
};

/**
 * Fills a signer: version 1, issuer and serial number of the certificate, a copy of the key, and the
 * algorithms with NULL parameters. The signature algorithm is "id-RSASSA-PSS" in the scheme PSS, otherwise
 * that of RSA with the digest, or "rsaEncryption" when there is none. Attributes and signature stay.
 * @param key          a private key; null when the signature will come from elsewhere
 * @param digest_index row of the digest, such as TLX_OID_SHA256
 * @param scheme       TLX_P7_RSA_PKCS1 or TLX_P7_RSA_PSS
 * @param pss_params   ignored
 * @return 0; 0x4B1E0049 for a null signer, a certificate without issuer or serial number and another scheme;
 * 0x4B1E0048 for a key of another kind and a row without an identifier; 1 when memory runs out. The signer is
 * unchanged unless the result is 0
 */
TLXPKI_API uint32_t set_PKCS7_P7_SIGNER_INFO(P7_SIGNER_INFO *signer, const X509_CERT *cert,
                                             const ASYMMETRIC_KEY *key, int32_t digest_index, uint32_t scheme,
                                             const RSASSA_PSS_PARAM *pss_params);

/**
 * Appends a signer itself, without a copy, to signed data or signed-and-enveloped data, and a copy of its
 * digest algorithm to digestAlgorithms, also when the same is there. Lists are made when there are none.
 * @return 0; 1 for a null argument, other content, a signer without digest algorithm, and when memory runs
 * out (the signer stays the caller's then)
 */
TLXPKI_API uint32_t add_PKCS7_Signer(P7_CONTENT_INFO *info, P7_SIGNER_INFO *signer);

/** add_PKCS7_Signature_withEncryptedAlgorithm() with TLX_P7_RSA_PKCS1. */
TLXPKI_API P7_SIGNER_INFO *add_PKCS7_Signature(P7_CONTENT_INFO *info, const X509_CERT *cert,
                                               const ASYMMETRIC_KEY *key, int32_t digest_index);
/**
 * Makes a signer by set_PKCS7_P7_SIGNER_INFO() and adds it by add_PKCS7_Signer(). It does not add the
 * certificate (add_PKCS7_Certificate()).
 * @return the signer, which the message owns; null when one of the two fails
 */
TLXPKI_API P7_SIGNER_INFO *add_PKCS7_Signature_withEncryptedAlgorithm(P7_CONTENT_INFO *info,
                                                                      const X509_CERT *cert,
                                                                      const ASYMMETRIC_KEY *key,
                                                                      int32_t digest_index, uint32_t scheme,
                                                                      const RSASSA_PSS_PARAM *pss_params);

/* ---- Signing ----
 *
 * The three steps begin with the same checks: 0x4B1C0049 for a null message; 0x4B1C0048 for content that is
 * missing or neither signed data nor signed-and-enveloped data; 0x4B1C002B for a message without signers.
 * They pass over signers that have a signature, so that signers can be added to a signed message. */

/**
 * Begins a signature with the key of every signer without one.
 * @param detached stored in signed data: nonzero when the message will not carry its content
 * @return 0; 0x4B1C002B for a digest or signature algorithm that is not known; 0x4B1C0048 for a signer
 * without a key and a key of another kind; a status of the key
 */
TLXPKI_API uint32_t init_PKCS7_Sign(P7_CONTENT_INFO *info, uint32_t detached);
/**
 * Gives signed data its content. A message that has content keeps it, and the data is ignored; so it is for a
 * detached message and for signed-and-enveloped data.
 * @return 0; 0x4B1C0049 for null data and a length below 1; 0x4B1C0048 for a content type that is not data;
 * 0x4B1C003B when memory runs out
 */
TLXPKI_API uint32_t update_PKCS7_Sign(P7_CONTENT_INFO *info, const uint8_t *data, int32_t length);
/**
 * Signs with every signer that init_PKCS7_Sign() prepared, and gives it the version of the message. It
 * signs the content of a detached message that the caller put in place with set_PKCS7_Content().
 * @return 0; 0x4B1C005F for attributes that are empty or cannot be encoded; 0x4B1C0049 for a signer that has
 * neither attributes nor content to sign, and a message without version; 0x4B1C0048 for a key of another kind
 * with content, 0x001C0048 with attributes; 0x4B1C0054 and 0x4B190012 for a KCDSA signature that is empty or
 * cannot be encoded; 0x4B1C003B when memory runs out, also for the content; a status of the key. Earlier
 * signers keep their signatures
 */
TLXPKI_API uint32_t final_PKCS7_Sign(P7_CONTENT_INFO *info);
/** init_PKCS7_Sign(), update_PKCS7_Sign() and final_PKCS7_Sign(). Returns the first status that is not 0. */
TLXPKI_API uint32_t sign_PKCS7(P7_CONTENT_INFO *info, const uint8_t *data, int32_t length, uint32_t detached);

/**
 * Signs as other programs verify it (RFC 2315, section 9.2): gives every signer of signed data without a
 * signature the attributes contentType, messageDigest and signingTime, in place of those it has, puts its
 * attributes in DER order, and signs. Signers of the scheme PSS use their digest in MGF1 and a salt as long
 * as the digest, and real parameters say so.
 * @param data     the content of the type data; null when the message has its content
 * @param length   its octets, which may be 0
 * @param detached nonzero leaves the content out of the message, also content that it had
 * @param time     the signing time, in UTC; null for the present
 * @return 0; 0x4B310049 when there is no content or the length is negative; 0x4B31001C when the message has
 * content and data is not null; 0x4B310048 for signed-and-enveloped data, a message of version 0 and a
 * content type other than data for data; 0x4B31003C when memory runs out, for a time that cannot be written
 * and a digest that is not available; a status of init_PKCS7_Sign() or final_PKCS7_Sign(). On failure some
 * signers may be signed, others may have the attributes, and the content may be in the message
 */
TLXPKI_API uint32_t sign_PKCS7_withAttributes(P7_CONTENT_INFO *info, const uint8_t *data, int32_t length,
                                              uint32_t detached, const ASN1_TIME *time);
/** Puts the authenticated attributes of a signer, and the values of each, in DER order (X.690, 11.6). Returns
 * 0, also without attributes; 1 for null, attributes that cannot be encoded, and when memory runs out (the
 * signer is unchanged then). */
TLXPKI_API uint32_t sort_PKCS7_Signed_Attributes(P7_SIGNER_INFO *signer);
/** Frees the content of signed data and keeps its type, and marks the message as detached. Returns 0, also
 * without content; 1 for null, other content and content that is missing. */
TLXPKI_API uint32_t remove_PKCS7_Content(P7_CONTENT_INFO *info);

/**
 * Fills digested data: content of the type data with a copy of the octets, the digest, and as its algorithm
 * what get_OID_from_DigestID() gives, without parameters. For a SHA-2 digest that is its RSA signature, which
 * other programs and ENVELOPED_MESSAGE_READER refuse.
 * @param digest_id TLX_DIGEST_
 * @return 0; 1 for content that is not digested data, null data unless the length is 0, a negative length, a
 * digest without an algorithm or not available, and when memory runs out (the message is unchanged then)
 */
TLXPKI_API uint32_t digest_PKCS7(P7_CONTENT_INFO *info, uint32_t digest_id, const uint8_t *data,
                                 int32_t length);

/* ---- Verifying ---- */

/**
 * Checks the signatures of a message, but proves nothing: 0 also means that there was nothing to check. See
 * the list at the beginning of this file, and call verify_PKCS7_Signers() for a proof.
 * @param info   signed data without content is marked as detached
 * @param cert   verifies the signers with this issuer and serial number only; null verifies every signer with
 * its certificate in the message
 * @param data   the content when the message carries none
 * @param length its octets; a negative one verifies a detached message without its content
 * @return 0; 0x4B1B0049 for a null message; 1 for a certificate or public key that is missing, an unknown
 * algorithm, parameters of PSS that cannot be read or name another digest, a detached message without data
 * and a length of 0 or more, and when memory runs out
 * @return 0x4B210048 for a key of another kind and a signer with neither attributes nor data; 0x4B21005E when
 * the messageDigest attribute differs, is shorter or is constructed (octets after the digest do not count);
 * 0x4B21000E for a KCDSA signature that cannot be decoded, and when memory for it runs out; a status of the
 * key, such as TLX_RSA_BAD_SIGNATURE. The first failing signer ends the call
 */
TLXPKI_API uint32_t verify_PKCS7(P7_CONTENT_INFO *info, const X509_CERT *cert, const uint8_t *data,
                                 int32_t length);

/** What verify_PKCS7_Signers() finds about one signer. A status of 0 means that the check was made and
 * passed. Checks that take the certificate have the status 0x4B300047 when there is none. */
typedef struct P7_SIGNER_REPORT {
    uint32_t status;            /**< the first that is not 0 of certificateStatus, algorithmStatus,
                                   contentStatus, signingCertificateStatus, protectionStatus, signatureStatus,
                                   with anchors pathStatus, and timestampStatus */
    uint32_t certificateStatus; /**< 0x4B300047 there is no certificate with the issuer and serial number, or
                                   with the key identifier;
                                   0x4B300118 its key usage allows neither digital signatures nor
                                   nonRepudiation; a status of verify_X509_validity() */
    uint32_t algorithmStatus;   /**< 0x4B300048 an algorithm is unknown or not available, is not one for the
                                   key, or has another digest or other parameters than the signer's;
                                   0x55020206 the key and 0x55020207 the digest is none of the profile's, where
                                   the settings have one; 0x55020202 the key's numbers make no key */
    uint32_t
        contentStatus;        /**< 0x4B30002B there are attributes, but not exactly one contentType and one
                                 messageDigest with one value each, or there are none although the content
                                 is not data or is itself such a set of attributes; 0x4B300106 contentType is
                                 not the      content's; 0x4B30005E messageDigest is not the digest of the content */
    uint32_t signatureStatus; /**< 0x4B300054 the signature does not verify; 0x4B300048 as algorithmStatus */
    uint32_t pathStatus;      /**< a status of verify_CERTIFICATE(), or of build_certPath() or
                                 validate_certpath() by the compatible rules; 0x4B300116 without anchors:
                                 nothing proves whose key it is */
    uint32_t digestAlgorithm; /**< row of the registry; 0 for an unknown one */
    uint32_t signatureAlgorithm; /**< likewise */
    X509_CERT *certificate;      /**< the signer's, owned; null when there is none */
    ASN1_TIME *signingTime;      /**< what the signer says, owned; null when it says none */
    VERIFY_RESULT *path;         /**< the path and all findings about it, owned; null without anchors and by
                                    the compatible rules */
    uint32_t signingCertificateStatus; /**< 0x5282005E the attribute signingCertificate or
                                          signingCertificateV2 (RFC 5035) names another certificate, is there
                                          twice or cannot be decoded; its own digest is not judged */
    uint32_t protectionStatus;  /**< 0x52820106 the attribute CMSAlgorithmProtection (RFC 6211) has other
                                   algorithms than the signer, is there twice or cannot be decoded */
    uint32_t countersignatures; /**< how many the signer has; nothing verifies them */
    OCTET_STRING *signature;    /**< owned; null when there is none */
    X509_ATTRIBUTES *unsignedAttributes; /**< such as time stamps, owned; null when there are none */
    uint32_t timestampStatus; /**< the status of the first time stamp of the signature that is not good
                                 (verify_CMS_TIMESTAMP() of <tlxpki/timestamp.h>); 0x52C7001C there are more
                                 than 8, and the others were not verified */
    STACK *timestamps; /**< CMS_TIMESTAMP_REPORT entries about the time stamps of the signature, owned; null
                          when there are none */
} P7_SIGNER_REPORT;

/** P7_SIGNER_REPORT entries in the order of the signers, freed with free_P7_SIGNER_REPORTS(). */
typedef STACK P7_SIGNER_REPORTS;

/**
 * Verifies a message, so that 0 proves: there is at least one signer, and of every signer the signature
 * verifies with its certificate, which is valid at the time and may sign; its algorithms agree; the signature
 * covers the content, directly or by the attributes contentType and messageDigest. With anchors, a path leads
 * from each certificate to one of them. Without anchors nothing proves who the signers are.
 *
 * Attributes count as they were received, with the tag of a SET; when that does not verify, in DER order.
 * Certificates are looked for in the pool first. The time is linear in the number of signers.
 *
 * Paths are verified by verify_CERTIFICATE() with the purpose TLX_PURPOSE_SIGNING and its other defaults:
 * keys of RSA and KCDSA below 2048 bits and signatures with SHA-1 and HAS-160 are too weak for certificates.
 * verify_PKCS7_Signers_ex() takes other settings. Revocation lists that the message carries count: who is on
 * one is revoked. No digest of the signer's own signature is refused for being weak, unless settings and
 * a store are given. It trusts no signing time, and of unauthenticated attributes counts time stamps alone.
 *
 * Time stamps of a signature (RFC 3161, the unsigned attribute id-aa-timeStampToken) are verified with the
 * same anchors and the purpose TLX_PURPOSE_TIME_STAMPING. The earliest that is good is the time of the
 * signer's path and of certificateStatus, unless the caller gives one. One that is not good gives no time,
 * and is a finding.
 *
 * @param info    signed data, or signed-and-enveloped data with the decrypted content
 * @param content the content of a detached message; null when the message has content
 * @param length  its octets, at most 0x7FFFFFFF
 * @param pool    further certificates, those of the anchors among them; may be null
 * @param anchors null checks no paths
 * @param time    the point in time to verify at, in UTC; null for the present
 * @param reports receives a new list in place of *reports, which is freed, when signers were checked; may be
 * null
 * @return 0; 0x4B300049 for a null message; 0x4B300048 for content that is missing or of another type;
 * 0x4B30002B without signers; 0x4B30001C for content that is given for a message with content; 0x4B30003B
 * for a message without content when none is given; 0x4B30003C when memory runs out, the content cannot be
 * encoded, and when the present time is unavailable; otherwise the status of the first signer that fails
 */
TLXPKI_API uint32_t verify_PKCS7_Signers(const P7_CONTENT_INFO *info, const uint8_t *content, uint32_t length,
                                         const X509_CERTIFICATES *pool, const TRUST_ANCHORS *anchors,
                                         const ASN1_TIME *time, P7_SIGNER_REPORTS **reports);
/**
 * The same with a store and settings.
 * @param pool     further certificates of signers and of issuers; may be null. Its certificates and those of
 * the message count as they were received
 * @param store    anchors and intermediates; null checks no paths
 * @param settings null for those of verify_PKCS7_Signers() at the present time. Their time also is that of
 * certificateStatus, accepted_faults also counts for certificates of the pool and the message, and a signer's
 * own key and algorithms have to pass profile and least_rsa_bits when there is a store
 * @return as verify_PKCS7_Signers() does
 */
TLXPKI_API uint32_t verify_PKCS7_Signers_ex(const P7_CONTENT_INFO *info, const uint8_t *content,
                                            uint32_t length, const X509_CERTIFICATES *pool,
                                            const VERIFY_STORE *store, const VERIFY_SETTINGS *settings,
                                            P7_SIGNER_REPORTS **reports);
/**
 * verify_PKCS7_Signers() with paths of build_certPath() and validate_certpath(), which <tlxpki/cpv.h> says
 * what they leave out. No policies are required. The maximum path length is the process-wide one.
 */
TLXPKI_API uint32_t verify_PKCS7_Signers_by_CPV(const P7_CONTENT_INFO *info, const uint8_t *content,
                                                uint32_t length, const X509_CERTIFICATES *pool,
                                                const TRUST_ANCHORS *anchors, const ASN1_TIME *time,
                                                P7_SIGNER_REPORTS **reports);
/** Frees reports. Ignores null. */
TLXPKI_API void free_P7_SIGNER_REPORTS(P7_SIGNER_REPORTS *reports);
/** The number of reports; 0 for null. */
TLXPKI_API uint32_t get_P7_SIGNER_REPORTS_count(const P7_SIGNER_REPORTS *reports);
/** The report of a signer by its zero-based place, which the list owns; null when there is none. */
TLXPKI_API const P7_SIGNER_REPORT *get_P7_SIGNER_REPORTS_child(const P7_SIGNER_REPORTS *reports,
                                                               int32_t index);

TLX_END_DECLS

#endif
