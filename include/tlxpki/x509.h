/** @file
 * Certificates (RFC 5280, section 4.1).
 *
 * A certificate is held as owned records, not as the octets it came from, and signatures are made and checked
 * over what the records encode to. A certificate in DER comes back byte for byte, with these exceptions, each
 * of which therefore fails verification:
 * - of a relative distinguished name with several types and values only the first is kept;
 * - of a signature algorithm only the identifier is kept. Its parameters are written as NULL for RSA with
 * PKCS #1 v1.5 (RFC 8017, appendix A.2.4) and left out otherwise; so RSASSA-PSS parameters are lost;
 * - a critical flag that is given as FALSE is not written;
 * - a serial number below 0 is read as unsigned;
 * - arcs of object identifiers above 32 bits lose their high bits. Identifiers of more than 99 characters
 * cannot be read at all.
 *
 * Certificates with issuerUniqueID or subjectUniqueID are refused.
 *
 * Every function may be called from any thread, on distinct objects at the same time; functions that take
 * const objects may share them. Getters return members, which the record keeps owning; setters copy what they
 * are given.
 */
#ifndef TLXPKI_X509_H
#define TLXPKI_X509_H

#include <tlxpki/x509_types.h>

TLX_BEGIN_DECLS

/* ---- Times ---- */

/**
 * Makes a time without text, of the form of UTCTime.
 * @return the time, freed with free_X509_TIME(); null when memory runs out
 */
TLXPKI_API X509_TIME *new_X509_TIME(void);

/**
 * Frees the text; the record itself stays.
 * @param time a time, or null (nothing happens then)
 */
TLXPKI_API void clean_X509_TIME(X509_TIME *time);

/**
 * Frees a time that was made by new_X509_TIME(), dup_X509_TIME() or Seq_to_X509_TIME(), and its text.
 * @param time a time, or null (nothing happens then)
 */
TLXPKI_API void free_X509_TIME(X509_TIME *time);

/**
 * Copies a time with its text.
 * @param time the time
 * @return the copy, freed with free_X509_TIME(); null for null and when memory runs out
 */
TLXPKI_API X509_TIME *dup_X509_TIME(const X509_TIME *time);

/**
 * Writes a calendar time to the second, in UTC: as UTCTime from 1950 to 2049, as GeneralizedTime otherwise
 * (RFC 5280, section 4.1.2.5).
 * @param time     the record; its old text is freed
 * @param calendar the time
 * @return 0; 1 for null arguments, a date that does not exist (2029-02-29), a time that cannot be written and
 *         when memory runs out (the record is unchanged then)
 */
TLXPKI_API uint32_t set_X509_TIME(X509_TIME *time, const ASN1_TIME *calendar);

/**
 * The calendar time that a text gives.
 * @param time the time
 * @return a new time, freed with free_ASN1_TIME(); null for null, a text that is no time, a date that does
 *         not exist (2029-02-29) and when memory runs out
 */
TLXPKI_API ASN1_TIME *X509_TIME_to_ASN1_TIME(const X509_TIME *time);

/**
 * Decodes a Time.
 * @param node the UTCTime or GeneralizedTime; its text is not looked at
 * @param out  a time it points to is filled, its old text freed; else it receives a new one, freed with
 *             free_X509_TIME(). Unchanged on failure
 * @return 0
 * @return 0x462A0049 for a null argument
 * @return 0x462A0104 for another type, and when memory runs out
 */
TLXPKI_API uint32_t Seq_to_X509_TIME(const ASN1_UNIT *node, X509_TIME **out);

/**
 * Encodes a Time with the tag of its form and the text as it is.
 * @param time the time
 * @param out  receives a new node, freed with free_ASN1_UNIT(), whatever it holds before. Unchanged on
 * failure
 * @return 0
 * @return 0x46290049 for a null argument
 * @return 0x46290103 for a form above 1, a missing text, and when memory runs out
 */
TLXPKI_API uint32_t X509_TIME_to_Seq(const X509_TIME *time, ASN1_UNIT **out);

/**
 * Makes a validity without times.
 * @return the record, freed with free_X509_VALIDITY(); null when memory runs out
 */
TLXPKI_API X509_VALIDITY *new_X509_VALIDITY(void);

/**
 * Frees the texts of both times; the record itself stays.
 * @param validity a record, or null (nothing happens then)
 */
TLXPKI_API void clean_X509_VALIDITY(X509_VALIDITY *validity);

/**
 * Frees a record and its times.
 * @param validity a record, or null (nothing happens then)
 */
TLXPKI_API void free_X509_VALIDITY(X509_VALIDITY *validity);

/**
 * Copies a record with its times.
 * @param validity the record
 * @return the copy, freed with free_X509_VALIDITY(); null for null and when memory runs out
 */
TLXPKI_API X509_VALIDITY *dup_X509_VALIDITY(const X509_VALIDITY *validity);

/**
 * Decodes a Validity.
 * @param node the SEQUENCE of exactly two times
 * @param out  a record it points to is filled, its old times freed; else it receives a new one, freed with
 *             free_X509_VALIDITY(). On failure *out stays as it was, and a record of the caller's as far as
 *             it was filled
 * @return 0
 * @return 0x461A0049 for a null argument
 * @return 0x461A002B when there are not two children
 * @return 0x461A0104 when one of them is neither UTCTime nor GeneralizedTime, or memory runs out
 */
TLXPKI_API uint32_t Seq_to_X509_VALIDITY(const ASN1_UNIT *node, X509_VALIDITY **out);

/**
 * Encodes a Validity.
 * @param validity the record
 * @param out      receives a new node, freed with free_ASN1_UNIT(), whatever it holds before. Unchanged on
 * failure
 * @return 0
 * @return 0x46190049 for a null argument
 * @return 0x46190103 when a time cannot be encoded, or memory runs out
 */
TLXPKI_API uint32_t X509_VALIDITY_to_Seq(const X509_VALIDITY *validity, ASN1_UNIT **out);

/* ---- The to-be-signed part ---- */

/**
 * Makes a to-be-signed part without members.
 * @return the record, freed with free_X509_TBS_CERT(); null when memory runs out
 */
TLXPKI_API X509_TBS_CERT *new_X509_TBS_CERT(void);

/**
 * Frees the members; the record itself stays.
 * @param tbs a record, or null (nothing happens then)
 */
TLXPKI_API void clean_X509_TBS_CERT(X509_TBS_CERT *tbs);

/**
 * Frees a record and its members.
 * @param tbs a record, or null (nothing happens then)
 */
TLXPKI_API void free_X509_TBS_CERT(X509_TBS_CERT *tbs);

/**
 * Copies a record with its members.
 * @param tbs the record
 * @return the copy, freed with free_X509_TBS_CERT(); null for null and when memory runs out
 */
TLXPKI_API X509_TBS_CERT *dup_X509_TBS_CERT(const X509_TBS_CERT *tbs);

/**
 * Decodes a TBSCertificate. The version is 0 when it is not given, and has one octet otherwise. Of what
 * follows the public key, only the next child is looked at: it has to be the extensions.
 * @param node the SEQUENCE
 * @param out  a record it points to is filled, its old members freed; else it receives a new one, freed
 *             with free_X509_TBS_CERT()
 * @return 0
 * @return 0x46110049 for a null argument (*out stays as it was)
 * @return 0x4611002B with fewer than 6 children; for this and the next status a record that *out pointed to
 *         is freed and *out becomes null
 * @return 0x46110104 when a member is missing or cannot be decoded, issuerUniqueID or subjectUniqueID is
 *         there, or memory runs out
 */
TLXPKI_API uint32_t Seq_to_X509_TBS_CERT(const ASN1_UNIT *node, X509_TBS_CERT **out);

/**
 * Encodes a TBSCertificate: the octets that are signed. The version is written unless it is 0; issuerUniqueID
 * and subjectUniqueID are not written. How the parameters of the signature algorithm are written is said at
 * the top.
 * @param tbs the record
 * @param out receives a new node, freed with free_ASN1_UNIT(), whatever it holds before. Unchanged on failure
 * @return 0
 * @return 0x46120049 for a null argument
 * @return 0x4612010A without a serial number
 * @return 0x46120108 without a signature algorithm, or an empty one
 * @return 0x46120105 without an issuer
 * @return 0x46120107 without a validity
 * @return 0x46120106 without a subject
 * @return 0x46120109 without a public key
 * @return 0x46120103 when a member cannot be encoded, or memory runs out
 */
TLXPKI_API uint32_t X509_TBS_CERT_to_Seq(const X509_TBS_CERT *tbs, ASN1_UNIT **out);

/* ---- Certificates ---- */

/**
 * Makes a certificate with an empty to-be-signed part.
 * @return the certificate, freed with free_X509_CERT(); null when memory runs out
 */
TLXPKI_API X509_CERT *new_X509_CERT(void);

/**
 * Frees the members, the to-be-signed part too; the record itself stays.
 * @param cert a certificate, or null (nothing happens then)
 */
TLXPKI_API void clean_X509_CERT(X509_CERT *cert);

/**
 * Frees a certificate and its members.
 * @param cert a certificate that is in no list, or null (nothing happens then)
 */
TLXPKI_API void free_X509_CERT(X509_CERT *cert);

/**
 * Copies a certificate with its members; what is done to one is not seen in the other.
 * @param cert the certificate
 * @return the copy, freed with free_X509_CERT(); null for null and when memory runs out
 */
TLXPKI_API X509_CERT *dup_X509_CERT(const X509_CERT *cert);

/**
 * Compares two certificates by their DER encodings.
 * @param a,b the certificates
 * @return 0 when they are equal, -1 when they are not (which gives no order), 1 for a null argument, a
 *         certificate that cannot be encoded and when memory runs out
 */
TLXPKI_API int32_t cmp_X509_CERT(const X509_CERT *a, const X509_CERT *b);

/**
 * Decodes a Certificate. Parameters of the signature algorithm are passed over.
 * @param node the SEQUENCE
 * @param out  a certificate it points to is filled, its old members freed; else it receives a new one,
 *             freed with free_X509_CERT(). On failure *out stays as it was, and a certificate of the
 *             caller's as far as it was filled: without a to-be-signed part when that could not be decoded
 * @return 0
 * @return 1 when the to-be-signed part is missing
 * @return 0x460F0049 for a null argument
 * @return a status of Seq_to_X509_TBS_CERT()
 * @return 0x460F0104 when the signature algorithm or the signature is missing or cannot be decoded, or
 *         memory runs out
 */
TLXPKI_API uint32_t Seq_to_X509_CERT(const ASN1_UNIT *node, X509_CERT **out);

/**
 * Encodes a Certificate.
 * @param cert the certificate
 * @param out  receives a new node, freed with free_ASN1_UNIT(), whatever it holds before. Unchanged on
 * failure
 * @return 0
 * @return 0x46100049 for a null argument
 * @return 0x46100103 when a member is missing or cannot be encoded
 * @return 0x4610003C when memory runs out
 */
TLXPKI_API uint32_t X509_CERT_to_Seq(const X509_CERT *cert, ASN1_UNIT **out);

/**
 * Digests the DER encoding of a certificate.
 * @param cert      the certificate
 * @param digest_id the digest, for example TLX_DIGEST_SHA256
 * @param out       receives the digest, at most TLX_DIGEST_MAX_LENGTH octets
 * @return the length of the digest
 * @return 0xFFFFFFFF for null arguments, a certificate that cannot be encoded, a digest that is not
 *         available and when memory runs out
 */
TLXPKI_API uint32_t X509_CERT_digest(const X509_CERT *cert, uint32_t digest_id, uint8_t *out);

/**
 * The version.
 * @param cert the certificate
 * @return 0 for version 1, 1 for version 2, 2 for version 3; 0xFFFFFFFF for null and without a to-be-signed
 *         part
 */
TLXPKI_API uint32_t get_X509_version(const X509_CERT *cert);

/**
 * The serial number.
 * @param cert the certificate
 * @return the number; null for null and when there is none
 */
TLXPKI_API BIGINT *get_X509_serial(const X509_CERT *cert);

/**
 * The signature algorithm inside the to-be-signed part; get_X509_sig_alg() gives the one beside the
 * signature.
 * @param cert the certificate
 * @return its identifier; null for null and when there is none
 */
TLXPKI_API OBJECT_IDENTIFIER *get_X509_signature(const X509_CERT *cert);

/**
 * The name of the issuer.
 * @param cert the certificate
 * @return the name; null for null and when there is none
 */
TLXPKI_API X509_NAME *get_X509_issuer(const X509_CERT *cert);

/**
 * The name of the subject.
 * @param cert the certificate
 * @return the name; null for null and when there is none
 */
TLXPKI_API X509_NAME *get_X509_subject(const X509_CERT *cert);

/**
 * The beginning of the validity.
 * @param cert the certificate
 * @return the time; null for null and when there is none
 */
TLXPKI_API X509_TIME *get_X509_notBefore(const X509_CERT *cert);

/**
 * The end of the validity.
 * @param cert the certificate
 * @return the time; null for null and when there is none
 */
TLXPKI_API X509_TIME *get_X509_notAfter(const X509_CERT *cert);

/**
 * The subject public key.
 * @param cert the certificate
 * @return the key; null for null and when there is none
 */
TLXPKI_API X509_PUBKEY *get_X509_SPKI(const X509_CERT *cert);

/**
 * The extensions.
 * @param cert the certificate
 * @return the list; null for null and when there is none
 */
TLXPKI_API X509_EXTENSIONS *get_X509_extensions(const X509_CERT *cert);

/**
 * The signature algorithm beside the signature.
 * @param cert the certificate
 * @return its identifier; null for null and when there is none
 */
TLXPKI_API OBJECT_IDENTIFIER *get_X509_sig_alg(const X509_CERT *cert);

/**
 * The signature.
 * @param cert the certificate
 * @return the bits; null for null and when there are none
 */
TLXPKI_API BIT_STRING *get_X509_sig_value(const X509_CERT *cert);

/**
 * Sets the version.
 * @param cert    the certificate; a to-be-signed part is made when there is none, here and in the functions
 *                below
 * @param version 0 for version 1, 1 for version 2, 2 for version 3; other numbers are written as they are
 * @return 0; 1 for null and when memory runs out
 */
TLXPKI_API uint32_t set_X509_version(X509_CERT *cert, uint8_t version);

/**
 * Replaces the serial number.
 * @param cert  the certificate
 * @param value the number; copied
 * @return 0; 1 for null arguments and when memory runs out (the serial number is unchanged then)
 */
TLXPKI_API uint32_t set_X509_serial(X509_CERT *cert, const BIGINT *value);

/**
 * Replaces the signature algorithm inside the to-be-signed part.
 * @param cert  the certificate
 * @param value the algorithm; copied
 * @return 0; 1 for null arguments and when memory runs out (the signature algorithm inside the to-be-signed
 *         part is unchanged then)
 */
TLXPKI_API uint32_t set_X509_signature(X509_CERT *cert, const OBJECT_IDENTIFIER *value);

/**
 * Replaces the name of the issuer.
 * @param cert  the certificate
 * @param value the name; copied
 * @return 0; 1 for null arguments and when memory runs out (the name of the issuer is unchanged then)
 */
TLXPKI_API uint32_t set_X509_issuer(X509_CERT *cert, const X509_NAME *value);

/**
 * Replaces the name of the subject.
 * @param cert  the certificate
 * @param value the name; copied
 * @return 0; 1 for null arguments and when memory runs out (the name of the subject is unchanged then)
 */
TLXPKI_API uint32_t set_X509_subject(X509_CERT *cert, const X509_NAME *value);

/**
 * Replaces the beginning of the validity.
 * @param cert  the certificate
 * @param value the time; copied
 * @return 0; 1 for null arguments, a text that is no time, a date that does not exist and when memory runs
 * out (the beginning of the validity is unchanged then)
 */
TLXPKI_API uint32_t set_X509_notBefore(X509_CERT *cert, const X509_TIME *value);

/**
 * Replaces the end of the validity.
 * @param cert  the certificate
 * @param value the time; copied
 * @return 0; 1 for null arguments, a text that is no time, a date that does not exist and when memory runs
 * out (the end of the validity is unchanged then)
 */
TLXPKI_API uint32_t set_X509_notAfter(X509_CERT *cert, const X509_TIME *value);

/**
 * Replaces the subject public key.
 * @param cert  the certificate
 * @param value the key; copied
 * @return 0; 1 for null arguments and when memory runs out (the subject public key is unchanged then)
 */
TLXPKI_API uint32_t set_X509_pub_key(X509_CERT *cert, const X509_PUBKEY *value);

/**
 * Replaces the extensions by a copy.
 * @param cert  the certificate
 * @param value the extensions; copied. Null takes them away
 * @return 0; 1 for a null certificate and when memory runs out (the extensions are unchanged then)
 */
TLXPKI_API uint32_t set_X509_extensions(X509_CERT *cert, const X509_EXTENSIONS *value);

/**
 * Replaces the signature algorithm beside the signature.
 * @param cert  the certificate
 * @param value the algorithm; copied
 * @return 0; 1 for null arguments and when memory runs out (nothing is changed then)
 */
TLXPKI_API uint32_t set_X509_sig_alg(X509_CERT *cert, const OBJECT_IDENTIFIER *value);

/**
 * Replaces the signature.
 * @param cert  the certificate
 * @param value the bits; copied
 * @return 0; 1 for null arguments and when memory runs out (nothing is changed then)
 */
TLXPKI_API uint32_t set_X509_sig_value(X509_CERT *cert, const BIT_STRING *value);

/* ---- Lists of certificates ---- */

/**
 * Makes an empty list.
 * @return the list, freed with free_X509_CERTIFICATES(); null when memory runs out
 */
TLXPKI_API X509_CERTIFICATES *new_X509_CERTIFICATES(void);

/**
 * Frees the certificates of a list, which is empty afterwards.
 * @param certificates a list, or null (nothing happens then)
 */
TLXPKI_API void clean_X509_CERTIFICATES(X509_CERTIFICATES *certificates);

/**
 * Frees a list and its certificates.
 * @param certificates a list, or null (nothing happens then)
 */
TLXPKI_API void free_X509_CERTIFICATES(X509_CERTIFICATES *certificates);

/**
 * Copies a list with all its certificates, in order.
 * @param certificates the list
 * @return the copy, freed with free_X509_CERTIFICATES(); null for null and when memory runs out
 */
TLXPKI_API X509_CERTIFICATES *dup_X509_CERTIFICATES(const X509_CERTIFICATES *certificates);

/**
 * Counts the certificates.
 * @param certificates the list
 * @return their number; 0 for null
 */
TLXPKI_API uint32_t get_X509_CERTIFICATES_count(const X509_CERTIFICATES *certificates);

/**
 * Finds a certificate by its place.
 * @param certificates the list
 * @param index        0 for the first
 * @return the certificate itself, which the list owns; null for null and an index that there is not
 */
TLXPKI_API X509_CERT *get_X509_CERTIFICATES_child(const X509_CERTIFICATES *certificates, int32_t index);

/**
 * Appends a copy of a certificate.
 * @param certificates the list
 * @param cert         the certificate; stays the caller's
 * @return 0; 1 for null arguments and when memory runs out (the list is unchanged then)
 */
TLXPKI_API uint32_t add_X509_CERTIFICATES(X509_CERTIFICATES *certificates, const X509_CERT *cert);

/**
 * Inserts a copy of a certificate.
 * @param certificates the list
 * @param cert         the certificate; stays the caller's
 * @param index        the copy goes before the certificate at this index; below 0 or above the count it
 *                     goes to the end
 * @return 0; 1 for null arguments and when memory runs out (the list is unchanged then)
 */
TLXPKI_API uint32_t add_X509_CERTIFICATES_child(X509_CERTIFICATES *certificates, const X509_CERT *cert,
                                                int32_t index);

/**
 * Takes a certificate out of a list.
 * @param certificates the list
 * @param index        0 for the first
 * @return the certificate, now the caller's, freed with free_X509_CERT(); null for null and an index that
 *         there is not
 */
TLXPKI_API X509_CERT *remove_X509_CERTIFICATES_child(X509_CERTIFICATES *certificates, int32_t index);

/**
 * Finds a certificate by its encoding.
 * @param certificates the list
 * @param cert         a certificate that encodes to the same octets
 * @return the index of the first one; -1 when there is none, for null arguments, when cert cannot be
 *         encoded and when memory runs out
 */
TLXPKI_API int32_t get_X509_CERTS_index_by_X509_CERT(const X509_CERTIFICATES *certificates,
                                                     const X509_CERT *cert);

/**
 * Finds a certificate by issuer and serial number.
 * @param certificates the list
 * @param issuer       the issuer's name, compared as cmp_X509_NAME() does
 * @param serial       the serial number
 * @return the first such certificate itself, which the list owns; null when there is none and for null
 *         arguments
 */
TLXPKI_API X509_CERT *find_X509_CERT_by_IssuerAndSerialNumber(const X509_CERTIFICATES *certificates,
                                                              const X509_NAME *issuer, const BIGINT *serial);

/**
 * Decodes a SEQUENCE OF or SET OF Certificate, whatever the tag of the node.
 * @param node the sequence
 * @param out  a list it points to gets the certificates in place of its own; else it receives a new one,
 *             freed with free_X509_CERTIFICATES(). Unchanged on failure
 * @return 0
 * @return 0x462C0049 for a null argument
 * @return 0x462C0104 when a child is no certificate that can be decoded, or memory runs out
 */
TLXPKI_API uint32_t Seq_to_X509_CERTIFICATES(const ASN1_UNIT *node, X509_CERTIFICATES **out);

/**
 * Encodes a SEQUENCE OF Certificate in list order.
 * @param certificates the list
 * @param out          receives a new node, freed with free_ASN1_UNIT(), whatever it holds before. Unchanged
 * on failure
 * @return 0
 * @return 0x462B0049 for a null argument
 * @return 0x462B0103 when a certificate is missing or cannot be encoded, or memory runs out
 */
TLXPKI_API uint32_t X509_CERTIFICATES_to_Seq(const X509_CERTIFICATES *certificates, ASN1_UNIT **out);

/**
 * Prints a listing to standard output, for people: for each certificate its place in the list, subject and
 * issuer (as dump_X509_NAME() gives them), serial number in hexadecimal and both ends of the validity,
 * YYYY-MM-DD hh:mm:ss as they stand in the certificate. What is missing or cannot be shown is a "-".
 * @param certificates the list; for null nothing is printed
 */
TLXPKI_API void print_X509_CERTIFICATES(const X509_CERTIFICATES *certificates);

TLX_END_DECLS

#endif
