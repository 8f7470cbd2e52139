/** @file
 * Certificates (RFC 5280, section 4.1). The contract of all records is in x509_types.h.
 *
 * A certificate is held as records. Signatures are made and checked over what the records encode to. The
 * decoder also keeps the octets of the whole certificate; where the certificate, written anew, differs from
 * them, its signature does not verify. A certificate in DER comes back octet for octet, with these
 * exceptions:
 * - of a relative distinguished name with several types and values only the first is kept;
 * - of a signature algorithm only the identifier is kept. Its parameters are written as NULL for RSA with
 * PKCS #1 v1.5 (RFC 8017, appendix A.2.4) and left out otherwise; so RSASSA-PSS parameters are lost;
 * - a critical flag that is given as FALSE is not written;
 * - a serial number below 0 is read as unsigned.
 *
 * The decoder refuses certificates with issuerUniqueID or subjectUniqueID, and object identifiers with an arc
 * above 32 bits or with more than 99 characters.
 */
#ifndef TLXPKI_X509_H
#define TLXPKI_X509_H

#include <tlxpki/x509_types.h>

TLX_BEGIN_DECLS

/* ---- Times ---- */

/**
 * X509_TIME. A new one is a UTCTime without text.
 * - Decoder: reads a UTCTime or GeneralizedTime and keeps any text. A caller's record is unchanged on
 * failure. 0x462A0049 null argument; 0x462A0104 another type.
 * - Encoder: writes the tag of the form and the text as it is. 0x46290049 null argument; 0x46290103 a form
 * above 1, or no text.
 * @{
 */
TLXPKI_API X509_TIME *new_X509_TIME(void);
TLXPKI_API void clean_X509_TIME(X509_TIME *time);
TLXPKI_API void free_X509_TIME(X509_TIME *time);
TLXPKI_API X509_TIME *dup_X509_TIME(const X509_TIME *time);
TLXPKI_API uint32_t Seq_to_X509_TIME(const ASN1_UNIT *node, X509_TIME **out);
TLXPKI_API uint32_t X509_TIME_to_Seq(const X509_TIME *time, ASN1_UNIT **out);
/** @} */

/**
 * Writes a calendar time in UTC to the second: as UTCTime from 1950 to 2049, else as GeneralizedTime (RFC
 * 5280, section 4.1.2.5). Returns 1 also for a date that does not exist (2029-02-29) and a
 * time that cannot be written.
 */
TLXPKI_API uint32_t set_X509_TIME(X509_TIME *time, const ASN1_TIME *calendar);

/**
 * Reads the text of a time.
 * @return a new time, freed with free_ASN1_TIME(); null for null, for a text that is no time, for a date that
 * does not exist (2029-02-29), and when memory runs out
 */
TLXPKI_API ASN1_TIME *X509_TIME_to_ASN1_TIME(const X509_TIME *time);

/**
 * X509_VALIDITY.
 * - Decoder: 0x461A0049 null argument; 0x461A002B not exactly two children; 0x461A0104 a child that is
 * neither UTCTime nor GeneralizedTime.
 * - Encoder: 0x46190049 null argument; 0x46190103 a time cannot be encoded.
 * @{
 */
TLXPKI_API X509_VALIDITY *new_X509_VALIDITY(void);
TLXPKI_API void clean_X509_VALIDITY(X509_VALIDITY *validity);
TLXPKI_API void free_X509_VALIDITY(X509_VALIDITY *validity);
TLXPKI_API X509_VALIDITY *dup_X509_VALIDITY(const X509_VALIDITY *validity);
TLXPKI_API uint32_t Seq_to_X509_VALIDITY(const ASN1_UNIT *node, X509_VALIDITY **out);
TLXPKI_API uint32_t X509_VALIDITY_to_Seq(const X509_VALIDITY *validity, ASN1_UNIT **out);
/** @} */

/* ---- The to-be-signed part ---- */

/**
 * X509_TBS_CERT.
 * - Decoder: the version is 0 when it is absent, and has one octet otherwise. Only one child after the public
 * key is read, which has to be the extensions. 0x46110049 null argument; 0x4611002B fewer than 6 children;
 * 0x46110104 a member that is missing or unreadable, issuerUniqueID, or subjectUniqueID. After 0x4611002B and
 * 0x46110104 a caller's record is freed and *out is null.
 * - Encoder: writes the octets that are signed. It writes the version unless that is 0, and never
 * issuerUniqueID and subjectUniqueID. The top of this header says which parameters the signature algorithm
 * gets. 0x46120049 null argument; 0x4612010A no serial number; 0x46120108 no signature algorithm, or an empty
 * one; 0x46120105 no issuer; 0x46120107 no validity; 0x46120106 no subject; 0x46120109 no public key;
 * 0x46120103 a member cannot be encoded.
 * @{
 */
TLXPKI_API X509_TBS_CERT *new_X509_TBS_CERT(void);
TLXPKI_API void clean_X509_TBS_CERT(X509_TBS_CERT *tbs);
TLXPKI_API void free_X509_TBS_CERT(X509_TBS_CERT *tbs);
TLXPKI_API X509_TBS_CERT *dup_X509_TBS_CERT(const X509_TBS_CERT *tbs);
TLXPKI_API uint32_t Seq_to_X509_TBS_CERT(const ASN1_UNIT *node, X509_TBS_CERT **out);
TLXPKI_API uint32_t X509_TBS_CERT_to_Seq(const X509_TBS_CERT *tbs, ASN1_UNIT **out);
/** @} */

/* ---- Certificates ---- */

/**
 * X509_CERT. A new one has an empty to-be-signed part; a cleaned one has none.
 * - Decoder: skips parameters of the signature algorithm. 0x460F0049 null argument; 1 no to-be-signed part; a
 * status of Seq_to_X509_TBS_CERT() when that part cannot be decoded (a caller's certificate then has none);
 * 0x460F0104 a signature algorithm or a signature that is missing or unreadable.
 * - Encoder: 0x46100049 null argument; 0x46100103 a member is missing or cannot be encoded; 0x4610003C memory
 * ran out.
 * @{
 */
TLXPKI_API X509_CERT *new_X509_CERT(void);
TLXPKI_API void clean_X509_CERT(X509_CERT *cert);
TLXPKI_API void free_X509_CERT(X509_CERT *cert);
TLXPKI_API X509_CERT *dup_X509_CERT(const X509_CERT *cert);
TLXPKI_API uint32_t Seq_to_X509_CERT(const ASN1_UNIT *node, X509_CERT **out);
TLXPKI_API uint32_t X509_CERT_to_Seq(const X509_CERT *cert, ASN1_UNIT **out);
/** @} */

/**
 * Compares two certificates by their DER encodings.
 * @return 0 when they are equal; -1 when they differ (which gives no order); 1 for a null argument, a
 * certificate that cannot be encoded, and when memory runs out
 */
TLXPKI_API int32_t cmp_X509_CERT(const X509_CERT *a, const X509_CERT *b);

/**
 * Digests a certificate: the octets received as long as they are kept, else its DER encoding.
 * @param digest_id the digest, for example TLX_DIGEST_SHA256
 * @param out       receives the digest, at most TLX_DIGEST_MAX_LENGTH octets
 * @return the octets of the digest; 0xFFFFFFFF for a null argument, a certificate that cannot be encoded, an
 * unavailable digest, and when memory runs out
 */
TLXPKI_API uint32_t X509_CERT_digest(const X509_CERT *cert, uint32_t digest_id, uint8_t *out);

/**
 * The octets that a decoded certificate was read from. A setter that succeeds drops them, and so does
 * signing.
 * @param out receives a copy, freed with tlx_free()
 * @return how many; 0 for a null argument, a certificate without them, and when memory runs out
 */
TLXPKI_API uint32_t get_X509_received(const X509_CERT *cert, uint8_t **out);

/**
 * Checks that a certificate, written anew, is octet for octet what was received. Where it is not, its
 * signature does not verify: also after a change made through a getter's pointer, until a setter is called or
 * the certificate is signed. Returns 0, also for a certificate that was not decoded; 0x46300049 for null;
 * 0x46300048 when the octets differ; 0x4630003C when memory runs out.
 */
TLXPKI_API uint32_t check_X509_received(const X509_CERT *cert);

/** The version: 0 for version 1, 1 for version 2, 2 for version 3; 0xFFFFFFFF for null and without a
 * to-be-signed part. */
TLXPKI_API uint32_t get_X509_version(const X509_CERT *cert);
/** The serial number. */
TLXPKI_API BIGINT *get_X509_serial(const X509_CERT *cert);
/** The signature algorithm inside the to-be-signed part; get_X509_sig_alg() returns the outer one. */
TLXPKI_API OBJECT_IDENTIFIER *get_X509_signature(const X509_CERT *cert);
/** The name of the issuer. */
TLXPKI_API X509_NAME *get_X509_issuer(const X509_CERT *cert);
/** The name of the subject. */
TLXPKI_API X509_NAME *get_X509_subject(const X509_CERT *cert);
/** The beginning of the validity. */
TLXPKI_API X509_TIME *get_X509_notBefore(const X509_CERT *cert);
/** The end of the validity. */
TLXPKI_API X509_TIME *get_X509_notAfter(const X509_CERT *cert);
/** The subject public key. */
TLXPKI_API X509_PUBKEY *get_X509_SPKI(const X509_CERT *cert);
/** The extensions. */
TLXPKI_API X509_EXTENSIONS *get_X509_extensions(const X509_CERT *cert);
/** The outer signature algorithm, beside the signature. */
TLXPKI_API OBJECT_IDENTIFIER *get_X509_sig_alg(const X509_CERT *cert);
/** The signature. */
TLXPKI_API BIT_STRING *get_X509_sig_value(const X509_CERT *cert);

/* These setters make a to-be-signed part where they need one and there is none. */

/** Sets the version: 0 for version 1, 1 for version 2, 2 for version 3. It is written as given. */
TLXPKI_API uint32_t set_X509_version(X509_CERT *cert, uint8_t version);
/** Replaces the serial number. */
TLXPKI_API uint32_t set_X509_serial(X509_CERT *cert, const BIGINT *value);
/** Replaces the signature algorithm inside the to-be-signed part. */
TLXPKI_API uint32_t set_X509_signature(X509_CERT *cert, const OBJECT_IDENTIFIER *value);
/** Replaces the name of the issuer. */
TLXPKI_API uint32_t set_X509_issuer(X509_CERT *cert, const X509_NAME *value);
/** Replaces the name of the subject. */
TLXPKI_API uint32_t set_X509_subject(X509_CERT *cert, const X509_NAME *value);
/** Replaces the beginning of the validity. Returns 1 also for a text that is no time and a date that does not
 * exist. */
TLXPKI_API uint32_t set_X509_notBefore(X509_CERT *cert, const X509_TIME *value);
/** Replaces the end of the validity. Returns 1 also for a text that is no time and a date that does not
 * exist. */
TLXPKI_API uint32_t set_X509_notAfter(X509_CERT *cert, const X509_TIME *value);
/** Replaces the subject public key. */
TLXPKI_API uint32_t set_X509_pub_key(X509_CERT *cert, const X509_PUBKEY *value);
/** Replaces the extensions. A null value removes them. */
TLXPKI_API uint32_t set_X509_extensions(X509_CERT *cert, const X509_EXTENSIONS *value);
/** Replaces the outer signature algorithm. */
TLXPKI_API uint32_t set_X509_sig_alg(X509_CERT *cert, const OBJECT_IDENTIFIER *value);
/** Replaces the signature. */
TLXPKI_API uint32_t set_X509_sig_value(X509_CERT *cert, const BIT_STRING *value);

/* ---- Lists of certificates ---- */

/**
 * X509_CERTIFICATES: a list of X509_CERT, which may be empty.
 * - Decoder: reads a SEQUENCE OF or SET OF, whatever the tag of the node. 0x462C0049 null argument;
 * 0x462C0104 a child is no certificate that can be decoded.
 * - Encoder: writes a SEQUENCE OF in list order. 0x462B0049 null argument; 0x462B0103 a certificate is
 * missing or cannot be encoded.
 * @{
 */
TLXPKI_API X509_CERTIFICATES *new_X509_CERTIFICATES(void);
TLXPKI_API void clean_X509_CERTIFICATES(X509_CERTIFICATES *certificates);
TLXPKI_API void free_X509_CERTIFICATES(X509_CERTIFICATES *certificates);
TLXPKI_API X509_CERTIFICATES *dup_X509_CERTIFICATES(const X509_CERTIFICATES *certificates);
TLXPKI_API uint32_t Seq_to_X509_CERTIFICATES(const ASN1_UNIT *node, X509_CERTIFICATES **out);
TLXPKI_API uint32_t X509_CERTIFICATES_to_Seq(const X509_CERTIFICATES *certificates, ASN1_UNIT **out);
TLXPKI_API uint32_t get_X509_CERTIFICATES_count(const X509_CERTIFICATES *certificates);
TLXPKI_API X509_CERT *get_X509_CERTIFICATES_child(const X509_CERTIFICATES *certificates, int32_t index);
TLXPKI_API uint32_t add_X509_CERTIFICATES_child(X509_CERTIFICATES *certificates, const X509_CERT *cert,
                                                int32_t index);
TLXPKI_API X509_CERT *remove_X509_CERTIFICATES_child(X509_CERTIFICATES *certificates, int32_t index);
/** @} */

/** Appends a copy of a certificate; otherwise as add_X509_CERTIFICATES_child(). */
TLXPKI_API uint32_t add_X509_CERTIFICATES(X509_CERTIFICATES *certificates, const X509_CERT *cert);

/**
 * Finds a certificate that encodes to the same octets.
 * @return the index of the first one; -1 when there is none, for a null argument, when cert cannot be
 * encoded, and when memory runs out
 */
TLXPKI_API int32_t get_X509_CERTS_index_by_X509_CERT(const X509_CERTIFICATES *certificates,
                                                     const X509_CERT *cert);

/**
 * Finds a certificate by issuer and serial number. Names are compared as cmp_X509_NAME() does.
 * @return the first such certificate, which the list goes on owning; null when there is none and for a null
 * argument
 */
TLXPKI_API X509_CERT *find_X509_CERT_by_IssuerAndSerialNumber(const X509_CERTIFICATES *certificates,
                                                              const X509_NAME *issuer, const BIGINT *serial);

/**
 * Prints a listing for people to standard output. It shows each certificate's index, subject and issuer (as
 * dump_X509_NAME() writes them), serial number in hexadecimal, and both ends of the validity as the
 * certificate gives them, YYYY-MM-DD hh:mm:ss. A "-" replaces what is missing or cannot be shown. Null prints
 * nothing.
 */
TLXPKI_API void print_X509_CERTIFICATES(const X509_CERTIFICATES *certificates);

TLX_END_DECLS

#endif
