/** @file
 * Signed certificate trust lists: signed data (PKCS #7) whose content is a CERT_TRUST_LIST and whose set of
 * certificates holds those that the list names.
 *
 * What the functions of an authority check, and the plain ones do not:
 *
 * - Who signed. Anybody can sign a list with a certificate of his own and put it into the set: the plain
 * functions accept that. The set also holds the certificates of the signers, which become anchors with the
 * others.
 * - What was signed. The signature covers the list and not the set, to which anybody can add certificates.
 * The plain functions take the whole set. The functions of an authority take the certificates whose digests
 * the list names.
 * - Whether it is a list, of the type "kisa-ctl", and the present one by thisUpdate and nextUpdate.
 */
#ifndef TLXPKI_SIGNED_TRUST_LIST_H
#define TLXPKI_SIGNED_TRUST_LIST_H

#include <tlxpki/pkcs7_sign.h>

TLX_BEGIN_DECLS

/* ---- Lists of anybody ---- */

/**
 * Verifies the signers of a list by verify_PKCS7_Signers() at the present time, without anchors. A list
 * without a signer, or without the certificate of one, is refused. It proves nothing about who the signers
 * are, nor about the certificates.
 * @return 0; 0x53020049 for null and for anything else than signed data; otherwise a status of
 * verify_PKCS7_Signers()
 */
TLXPKI_API uint32_t verify_ctlSignedData(const P7_CONTENT_INFO *info);

/**
 * Appends an anchor for each certificate of the set, in order, those of the signers included, when
 * verify_ctlSignedData() accepts the list.
 * @return 0; 0x53020049 for a null argument and when the list is not accepted; 0x5302000E for a certificate
 * without subject or public key, and when memory runs out (earlier anchors stay then)
 */
TLXPKI_API uint32_t add_TRUST_ANCHORS_from_CTL(TRUST_ANCHORS *anchors, const P7_CONTENT_INFO *info);

/**
 * Appends a copy of each certificate of the set, in order, without checking any signature.
 * @return 0; 0x53020049 for a null argument and for anything else than signed data; 0x5302000E for a
 * certificate without subject, and when memory runs out (earlier certificates stay then)
 */
TLXPKI_API uint32_t add_CERTIFICATES_from_CTL(X509_CERTIFICATES *pool, const P7_CONTENT_INFO *info);

/* ---- Lists of an authority ---- */

/**
 * Verifies that a list is one of an authority. verify_PKCS7_Signers_ex() finds nothing wrong with any signer
 * when the authorities, self-issued or not, are the anchors: the certificate of each is that of an authority
 * or has a path up to one. Any certificate below an authority that may sign messages counts, unless its
 * extended key usage names other purposes than msCTLSign and anyExtendedKeyUsage. The settings are those of
 * verify_PKCS7_Signers(), which refuse keys below 2048 bits and certificates that are signed with SHA-1: for
 * old lists there is verify_CTL_of_authority_ex().
 * @param authorities certificates that are trusted to sign lists, and CAs trusted to issue such certificates
 * @param time        the point in time, in UTC; null for the present
 * @param reports     receives a new list in place of *reports when signers were checked; may be null
 * @return 0; 0x54100049 for a null list or null authorities, and for anything else than signed data;
 * 0x54100048 when the content is no trust list; 0x54100116 when a signer is neither an authority nor below
 * one; 0x54100118 when a signer below an authority may not sign lists; 0x54100113 when the time lies before
 * thisUpdate or after nextUpdate, or one of them cannot be read; 0x5410003C when memory runs out; otherwise a
 * status of verify_PKCS7_Signers_ex()
 */
TLXPKI_API uint32_t verify_CTL_of_authority(const P7_CONTENT_INFO *info, const X509_CERTIFICATES *authorities,
                                            const ASN1_TIME *time, P7_SIGNER_REPORTS **reports);
/** The same with settings, as verify_PKCS7_Signers_ex() takes them. Its accepted_faults also counts for the
 * authorities. */
TLXPKI_API uint32_t verify_CTL_of_authority_ex(const P7_CONTENT_INFO *info,
                                               const X509_CERTIFICATES *authorities,
                                               const VERIFY_SETTINGS *settings, P7_SIGNER_REPORTS **reports);

/**
 * Appends an anchor for each certificate of the set that the list names, in order, when
 * verify_CTL_of_authority() accepts the list. On failure the anchors are unchanged.
 * @return 0; 0x54110049 for null anchors; 0x54110048 when the digest of the list is unknown or not available;
 * 0x54110047 when the set has no certificate that the list names; 0x5411003C for one without subject or
 * public key, and when memory runs out; otherwise a status of verify_CTL_of_authority()
 */
TLXPKI_API uint32_t add_TRUST_ANCHORS_from_CTL_of_authority(TRUST_ANCHORS *anchors,
                                                            const P7_CONTENT_INFO *info,
                                                            const X509_CERTIFICATES *authorities,
                                                            const ASN1_TIME *time);
/** The same with settings. */
TLXPKI_API uint32_t add_TRUST_ANCHORS_from_CTL_of_authority_ex(TRUST_ANCHORS *anchors,
                                                               const P7_CONTENT_INFO *info,
                                                               const X509_CERTIFICATES *authorities,
                                                               const VERIFY_SETTINGS *settings);

/**
 * Appends a copy of each certificate of the set that the list names, in order, when verify_CTL_of_authority()
 * accepts the list. On failure the pool is unchanged.
 * @return 0; 0x54120049 for a null pool; 0x54120048 when the digest of the list is unknown or not available;
 * 0x54120047 when the set has no certificate that the list names; 0x5412003C when memory runs out; otherwise
 * a status of verify_CTL_of_authority()
 */
TLXPKI_API uint32_t add_CERTIFICATES_from_CTL_of_authority(X509_CERTIFICATES *pool,
                                                           const P7_CONTENT_INFO *info,
                                                           const X509_CERTIFICATES *authorities,
                                                           const ASN1_TIME *time);
/** The same with settings. */
TLXPKI_API uint32_t add_CERTIFICATES_from_CTL_of_authority_ex(X509_CERTIFICATES *pool,
                                                              const P7_CONTENT_INFO *info,
                                                              const X509_CERTIFICATES *authorities,
                                                              const VERIFY_SETTINGS *settings);

/* ---- Making ---- */

/**
 * Makes a content info of the type "kisa-ctl" with a copy of a list, for set_PKCS7_Content().
 * @return a new content info; null for null and when memory runs out
 */
TLXPKI_API P7_CONTENT_INFO *gen_PKCS7_from_CERT_TRUST_LIST(const CERT_TRUST_LIST *list);

TLX_END_DECLS

#endif
