/** @file
 * PKCS #7 messages (RFC 2315): the records of <tlxpki/pkcs7_types.h> in DER and back, and what puts a message
 * together. The contract of all records is in x509_types.h.
 *
 * A message is a P7_CONTENT_INFO. Its content type is one of
 *
 * | row of the registry       | content                        | version that set_PKCS7_Type() gives |
 * |---------------------------|--------------------------------|-------------------------------------|
 * | 21 pkcs7-data             | data                           |                                     |
 * | 22 pkcs7-signedData       | signedData                     | 1                                   |
 * | 23 pkcs7-envelopedData    | envelopedData                  | 0                                   |
 * | 24 pkcs7-signedAndEnvelopedData | signedAndEnvelopedData   | 1                                   |
 * | 25 pkcs7-digestData       | digestedData                   | 0                                   |
 * | 26 pkcs7-encryptedData    | encryptedData                  | 0                                   |
 * | 837 kisa-ctl              | trustList                      |                                     |
 *
 * Decoding:
 * - It reads BER as other programs write it: indefinite lengths, and octet strings in segments, also in
 * encryptedContent, which are joined.
 * - A status of the decoder of a member goes up unchanged; the statuses of its own are given here. Where it
 * distinguishes members by their tags, the later of two with the same tag counts.
 * - Content that lies more than 64 elements deep is refused.
 *
 * Encoding writes DER, with lists in their own order; it does not sort. Algorithm parameters, attribute
 * values, certificates and revocation lists are written as they were received. A status of the encoder of a
 * member that is there goes up unchanged. An optional member that is null is left out.
 */
#ifndef TLXPKI_PKCS7_H
#define TLXPKI_PKCS7_H

#include <tlxpki/pkcs7_types.h>

TLX_BEGIN_DECLS

/* ---- Records ---- */

/**
 * P7_CONTENT_INFO. clean_ and free_ free the content by its type, and leave content of an unknown type alone;
 * dup_ returns null for such content.
 * - Decoder: 0x4B1A0049 null argument; 0x4B1A002B neither one child nor two; 1 a content type that is none of
 * the seven; 0x4B1A0104 the content type is missing, or the second child is not [0] around one element that
 * the content type allows.
 * - Encoder: 0x4B190049 null argument; 0x4B190103 the content type is missing, or there is content of a type
 * that is none of the seven.
 * @{
 */
TLXPKI_API P7_CONTENT_INFO *new_P7_CONTENT_INFO(void);
TLXPKI_API void clean_P7_CONTENT_INFO(P7_CONTENT_INFO *info);
TLXPKI_API void free_P7_CONTENT_INFO(P7_CONTENT_INFO *info);
TLXPKI_API P7_CONTENT_INFO *dup_P7_CONTENT_INFO(const P7_CONTENT_INFO *info);
TLXPKI_API uint32_t Seq_to_P7_CONTENT_INFO(const ASN1_UNIT *node, P7_CONTENT_INFO **out);
TLXPKI_API uint32_t P7_CONTENT_INFO_to_Seq(const P7_CONTENT_INFO *info, ASN1_UNIT **out);
/** @} */

/**
 * P7_SIGNED_DATA.
 * - Decoder: after the first three children come certificates [0], crls [1] and signerInfos in any order. A
 * child with another tag ends the reading, and the decoder returns 0: a caller's record keeps what was read
 * until then; without one, *out stays null. An empty [0] or [1] gives an empty list. 0x4B0A0049 null
 * argument; 0x4B0A002B fewer than 4 children or more than 6; 0x4B0A0104 otherwise.
 * - Encoder: 0x4B090049 null argument; 0x4B090103 version, digestAlgorithms or contentInfo is missing. It
 * writes the content whatever detached says.
 * @{
 */
TLXPKI_API P7_SIGNED_DATA *new_P7_SIGNED_DATA(void);
TLXPKI_API void clean_P7_SIGNED_DATA(P7_SIGNED_DATA *data);
TLXPKI_API void free_P7_SIGNED_DATA(P7_SIGNED_DATA *data);
TLXPKI_API P7_SIGNED_DATA *dup_P7_SIGNED_DATA(const P7_SIGNED_DATA *data);
TLXPKI_API uint32_t Seq_to_P7_SIGNED_DATA(const ASN1_UNIT *node, P7_SIGNED_DATA **out);
TLXPKI_API uint32_t P7_SIGNED_DATA_to_Seq(const P7_SIGNED_DATA *data, ASN1_UNIT **out);
/** @} */

/**
 * P7_SIGNED_AND_ENVELOPED_DATA.
 * - Decoder: after the first four children as for P7_SIGNED_DATA. 0x4B140049 null argument; 0x4B14002B fewer
 * than 5 children; 0x4B140104 otherwise.
 * - Encoder: 0x4B130049 null argument; 0x4B130103 version, recipientInfos, digestAlgorithms or
 * encryptedContentInfo is missing.
 * @{
 */
TLXPKI_API P7_SIGNED_AND_ENVELOPED_DATA *new_P7_SIGNED_AND_ENVELOPED_DATA(void);
TLXPKI_API void clean_P7_SIGNED_AND_ENVELOPED_DATA(P7_SIGNED_AND_ENVELOPED_DATA *data);
TLXPKI_API void free_P7_SIGNED_AND_ENVELOPED_DATA(P7_SIGNED_AND_ENVELOPED_DATA *data);
TLXPKI_API P7_SIGNED_AND_ENVELOPED_DATA *dup_P7_SIGNED_AND_ENVELOPED_DATA(
    const P7_SIGNED_AND_ENVELOPED_DATA *data);
TLXPKI_API uint32_t Seq_to_P7_SIGNED_AND_ENVELOPED_DATA(const ASN1_UNIT *node,
                                                        P7_SIGNED_AND_ENVELOPED_DATA **out);
TLXPKI_API uint32_t P7_SIGNED_AND_ENVELOPED_DATA_to_Seq(const P7_SIGNED_AND_ENVELOPED_DATA *data,
                                                        ASN1_UNIT **out);
/** @} */

/**
 * P7_ENVELOPED_DATA.
 * - Decoder: 0x4B120049 null argument; 0x4B12002B not exactly three children; 0x4B120104 otherwise.
 * - Encoder: 0x4B110049 null argument; 0x4B110103 a member is missing.
 * @{
 */
TLXPKI_API P7_ENVELOPED_DATA *new_P7_ENVELOPED_DATA(void);
TLXPKI_API void clean_P7_ENVELOPED_DATA(P7_ENVELOPED_DATA *data);
TLXPKI_API void free_P7_ENVELOPED_DATA(P7_ENVELOPED_DATA *data);
TLXPKI_API P7_ENVELOPED_DATA *dup_P7_ENVELOPED_DATA(const P7_ENVELOPED_DATA *data);
TLXPKI_API uint32_t Seq_to_P7_ENVELOPED_DATA(const ASN1_UNIT *node, P7_ENVELOPED_DATA **out);
TLXPKI_API uint32_t P7_ENVELOPED_DATA_to_Seq(const P7_ENVELOPED_DATA *data, ASN1_UNIT **out);
/** @} */

/**
 * P7_DIGESTED_DATA.
 * - Decoder: 0x4B160049 null argument; 0x4B16002B not exactly four children; 0x4B160104 otherwise.
 * - Encoder: 0x4B150049 null argument; 0x4B150103 a member is missing.
 * @{
 */
TLXPKI_API P7_DIGESTED_DATA *new_P7_DIGESTED_DATA(void);
TLXPKI_API void clean_P7_DIGESTED_DATA(P7_DIGESTED_DATA *data);
TLXPKI_API void free_P7_DIGESTED_DATA(P7_DIGESTED_DATA *data);
TLXPKI_API P7_DIGESTED_DATA *dup_P7_DIGESTED_DATA(const P7_DIGESTED_DATA *data);
TLXPKI_API uint32_t Seq_to_P7_DIGESTED_DATA(const ASN1_UNIT *node, P7_DIGESTED_DATA **out);
TLXPKI_API uint32_t P7_DIGESTED_DATA_to_Seq(const P7_DIGESTED_DATA *data, ASN1_UNIT **out);
/** @} */

/**
 * P7_ENCRYPTED_DATA.
 * - Decoder: 0x4B180049 null argument; 0x4B18002B not exactly two children; 0x4B180104 otherwise.
 * - Encoder: 0x4B170049 null argument; 0x4B170103 a member is missing.
 * @{
 */
TLXPKI_API P7_ENCRYPTED_DATA *new_P7_ENCRYPTED_DATA(void);
TLXPKI_API void clean_P7_ENCRYPTED_DATA(P7_ENCRYPTED_DATA *data);
TLXPKI_API void free_P7_ENCRYPTED_DATA(P7_ENCRYPTED_DATA *data);
TLXPKI_API P7_ENCRYPTED_DATA *dup_P7_ENCRYPTED_DATA(const P7_ENCRYPTED_DATA *data);
TLXPKI_API uint32_t Seq_to_P7_ENCRYPTED_DATA(const ASN1_UNIT *node, P7_ENCRYPTED_DATA **out);
TLXPKI_API uint32_t P7_ENCRYPTED_DATA_to_Seq(const P7_ENCRYPTED_DATA *data, ASN1_UNIT **out);
/** @} */

/**
 * P7_ENCRYPTED_CONTENT_INFO.
 * - Decoder: 0x4B100049 null argument; 0x4B10002B neither two children nor three; 0x4B100104 otherwise.
 * - Encoder: 0x4B0F0049 null argument; 0x4B0F0103 contentType or contentEncryptionAlgorithm is missing.
 * @{
 */
TLXPKI_API P7_ENCRYPTED_CONTENT_INFO *new_P7_ENCRYPTED_CONTENT_INFO(void);
TLXPKI_API void clean_P7_ENCRYPTED_CONTENT_INFO(P7_ENCRYPTED_CONTENT_INFO *info);
TLXPKI_API void free_P7_ENCRYPTED_CONTENT_INFO(P7_ENCRYPTED_CONTENT_INFO *info);
TLXPKI_API P7_ENCRYPTED_CONTENT_INFO *dup_P7_ENCRYPTED_CONTENT_INFO(const P7_ENCRYPTED_CONTENT_INFO *info);
TLXPKI_API uint32_t Seq_to_P7_ENCRYPTED_CONTENT_INFO(const ASN1_UNIT *node, P7_ENCRYPTED_CONTENT_INFO **out);
TLXPKI_API uint32_t P7_ENCRYPTED_CONTENT_INFO_to_Seq(const P7_ENCRYPTED_CONTENT_INFO *info, ASN1_UNIT **out);
/** @} */

/**
 * P7_SIGNER_INFO.
 * - Decoder: after the first three children come the others in any order. Those that are missing are null. It
 * keeps the authenticated attributes also as received. 0x4B040049 null argument; 0x4B04002B fewer than 5
 * children; 0x4B040104 otherwise; 0x4624002B an attribute set without attributes.
 * - Encoder: leaves out all members from authenticatedAttributes on that are null; an attribute set without
 * attributes is written as an empty [0] or [1]. 0x4B030049 null argument; 0x4B030103 version,
 * issuerAndSerialNumber or digestAlgorithm is missing, or an empty set cannot be written.
 * @{
 */
TLXPKI_API P7_SIGNER_INFO *new_P7_SIGNER_INFO(void);
TLXPKI_API void clean_P7_SIGNER_INFO(P7_SIGNER_INFO *signer);
TLXPKI_API void free_P7_SIGNER_INFO(P7_SIGNER_INFO *signer);
TLXPKI_API P7_SIGNER_INFO *dup_P7_SIGNER_INFO(const P7_SIGNER_INFO *signer);
TLXPKI_API uint32_t Seq_to_P7_SIGNER_INFO(const ASN1_UNIT *node, P7_SIGNER_INFO **out);
TLXPKI_API uint32_t P7_SIGNER_INFO_to_Seq(const P7_SIGNER_INFO *signer, ASN1_UNIT **out);
/** @} */

/**
 * P7_SIGNER_INFOS: a list of P7_SIGNER_INFO, which may be empty.
 * - Decoder: reads a SET OF or SEQUENCE OF, whatever the tag of the node. 0x4B080049 null argument;
 * 0x4B080104 a child is no SEQUENCE.
 * - Encoder: writes a SET OF in list order. 0x4B070049 null argument; 0x4B070103 a signer is missing.
 * @{
 */
TLXPKI_API P7_SIGNER_INFOS *new_P7_SIGNER_INFOS(void);
TLXPKI_API void clean_P7_SIGNER_INFOS(P7_SIGNER_INFOS *signers);
TLXPKI_API void free_P7_SIGNER_INFOS(P7_SIGNER_INFOS *signers);
TLXPKI_API P7_SIGNER_INFOS *dup_P7_SIGNER_INFOS(const P7_SIGNER_INFOS *signers);
TLXPKI_API uint32_t Seq_to_P7_SIGNER_INFOS(const ASN1_UNIT *node, P7_SIGNER_INFOS **out);
TLXPKI_API uint32_t P7_SIGNER_INFOS_to_Seq(const P7_SIGNER_INFOS *signers, ASN1_UNIT **out);
TLXPKI_API uint32_t get_P7_SIGNER_INFOS_count(const P7_SIGNER_INFOS *signers);
TLXPKI_API P7_SIGNER_INFO *get_P7_SIGNER_INFOS_child(const P7_SIGNER_INFOS *signers, int32_t index);
TLXPKI_API uint32_t add_P7_SIGNER_INFOS_child(P7_SIGNER_INFOS *signers, const P7_SIGNER_INFO *signer,
                                              int32_t index);
TLXPKI_API P7_SIGNER_INFO *remove_P7_SIGNER_INFOS_child(P7_SIGNER_INFOS *signers, int32_t index);
/** @} */

/**
 * P7_RECIPIENT_INFO.
 * - Decoder: 0x4B0C0049 null argument; 0x4B0C002B not exactly four children; 0x4B0C0104 otherwise.
 * - Encoder: 0x4B0B0049 null argument; 0x4B0B0103 a member is missing.
 * @{
 */
TLXPKI_API P7_RECIPIENT_INFO *new_P7_RECIPIENT_INFO(void);
TLXPKI_API void clean_P7_RECIPIENT_INFO(P7_RECIPIENT_INFO *recipient);
TLXPKI_API void free_P7_RECIPIENT_INFO(P7_RECIPIENT_INFO *recipient);
TLXPKI_API P7_RECIPIENT_INFO *dup_P7_RECIPIENT_INFO(const P7_RECIPIENT_INFO *recipient);
TLXPKI_API uint32_t Seq_to_P7_RECIPIENT_INFO(const ASN1_UNIT *node, P7_RECIPIENT_INFO **out);
TLXPKI_API uint32_t P7_RECIPIENT_INFO_to_Seq(const P7_RECIPIENT_INFO *recipient, ASN1_UNIT **out);
/** @} */

/**
 * P7_RECIPIENT_INFOS: a list of P7_RECIPIENT_INFO, which may be empty.
 * - Decoder: reads a SET OF or SEQUENCE OF, whatever the tag of the node. 0x4B0E0049 null argument;
 * 0x4B0E0104 a child is no SEQUENCE.
 * - Encoder: writes a SET OF in list order. 0x4B0D0049 null argument; 0x4B0D0103 a recipient is missing.
 * @{
 */
TLXPKI_API P7_RECIPIENT_INFOS *new_P7_RECIPIENT_INFOS(void);
TLXPKI_API void clean_P7_RECIPIENT_INFOS(P7_RECIPIENT_INFOS *recipients);
TLXPKI_API void free_P7_RECIPIENT_INFOS(P7_RECIPIENT_INFOS *recipients);
TLXPKI_API P7_RECIPIENT_INFOS *dup_P7_RECIPIENT_INFOS(const P7_RECIPIENT_INFOS *recipients);
TLXPKI_API uint32_t Seq_to_P7_RECIPIENT_INFOS(const ASN1_UNIT *node, P7_RECIPIENT_INFOS **out);
TLXPKI_API uint32_t P7_RECIPIENT_INFOS_to_Seq(const P7_RECIPIENT_INFOS *recipients, ASN1_UNIT **out);
TLXPKI_API uint32_t get_P7_RECIPIENT_INFOS_count(const P7_RECIPIENT_INFOS *recipients);
TLXPKI_API P7_RECIPIENT_INFO *get_P7_RECIPIENT_INFOS_child(const P7_RECIPIENT_INFOS *recipients,
                                                           int32_t index);
TLXPKI_API uint32_t add_P7_RECIPIENT_INFOS_child(P7_RECIPIENT_INFOS *recipients,
                                                 const P7_RECIPIENT_INFO *recipient, int32_t index);
TLXPKI_API P7_RECIPIENT_INFO *remove_P7_RECIPIENT_INFOS_child(P7_RECIPIENT_INFOS *recipients, int32_t index);
/** @} */

/**
 * P7_ISSUER_AND_SERIAL_NUMBER.
 * - Decoder: 0x4B020049 null argument; 0x4B02002B not exactly two children; 0x4B020104 otherwise.
 * - Encoder: 0x4B010049 null argument; 0x4B010103 a member is missing.
 * @{
 */
TLXPKI_API P7_ISSUER_AND_SERIAL_NUMBER *new_P7_ISSUER_AND_SERIAL_NUMBER(void);
TLXPKI_API void clean_P7_ISSUER_AND_SERIAL_NUMBER(P7_ISSUER_AND_SERIAL_NUMBER *number);
TLXPKI_API void free_P7_ISSUER_AND_SERIAL_NUMBER(P7_ISSUER_AND_SERIAL_NUMBER *number);
TLXPKI_API P7_ISSUER_AND_SERIAL_NUMBER *dup_P7_ISSUER_AND_SERIAL_NUMBER(
    const P7_ISSUER_AND_SERIAL_NUMBER *number);
TLXPKI_API uint32_t Seq_to_P7_ISSUER_AND_SERIAL_NUMBER(const ASN1_UNIT *node,
                                                       P7_ISSUER_AND_SERIAL_NUMBER **out);
TLXPKI_API uint32_t P7_ISSUER_AND_SERIAL_NUMBER_to_Seq(const P7_ISSUER_AND_SERIAL_NUMBER *number,
                                                       ASN1_UNIT **out);
/** @} */

/**
 * ISSUER_AND_SERIAL_NUMBER: the same record and encoding, with statuses of its own.
 * - Decoder: 0x51020049 null argument; 0x5102002B not exactly two children; 0x51020104 otherwise.
 * - Encoder: 0x51010049 null argument; 0x51010103 a member is missing or cannot be encoded.
 * @{
 */
TLXPKI_API ISSUER_AND_SERIAL_NUMBER *new_ISSUER_AND_SERIAL_NUMBER(void);
TLXPKI_API void clean_ISSUER_AND_SERIAL_NUMBER(ISSUER_AND_SERIAL_NUMBER *number);
TLXPKI_API void free_ISSUER_AND_SERIAL_NUMBER(ISSUER_AND_SERIAL_NUMBER *number);
TLXPKI_API ISSUER_AND_SERIAL_NUMBER *dup_ISSUER_AND_SERIAL_NUMBER(const ISSUER_AND_SERIAL_NUMBER *number);
TLXPKI_API uint32_t Seq_to_ISSUER_AND_SERIAL_NUMBER(const ASN1_UNIT *node, ISSUER_AND_SERIAL_NUMBER **out);
TLXPKI_API uint32_t ISSUER_AND_SERIAL_NUMBER_to_Seq(const ISSUER_AND_SERIAL_NUMBER *number, ASN1_UNIT **out);
/** @} */

/**
 * P7_DIGEST_INFO.
 * - Decoder: 0x4B060049 null argument; 0x4B06002B not exactly two children; 0x4B060104 otherwise.
 * - Encoder: 0x4B050049 null argument; 0x4B050103 a member is missing.
 * @{
 */
TLXPKI_API P7_DIGEST_INFO *new_P7_DIGEST_INFO(void);
TLXPKI_API void clean_P7_DIGEST_INFO(P7_DIGEST_INFO *info);
TLXPKI_API void free_P7_DIGEST_INFO(P7_DIGEST_INFO *info);
TLXPKI_API P7_DIGEST_INFO *dup_P7_DIGEST_INFO(const P7_DIGEST_INFO *info);
TLXPKI_API uint32_t Seq_to_P7_DIGEST_INFO(const ASN1_UNIT *node, P7_DIGEST_INFO **out);
TLXPKI_API uint32_t P7_DIGEST_INFO_to_Seq(const P7_DIGEST_INFO *info, ASN1_UNIT **out);
/** @} */

/* ---- Putting a message together ---- */

/**
 * Compares a certificate with the issuer and serial number that a message names.
 * @return 0 when the certificate has both; -1 when one differs; 1 for a null argument or member, and when
 * memory runs out
 */
TLXPKI_API int32_t cmp_P7_ISSUER_AND_SERIAL_NUMBER(const X509_CERT *cert,
                                                   const P7_ISSUER_AND_SERIAL_NUMBER *number);

/**
 * Gives a content info a type and empty content of this type, with the version of the table above. The old
 * content is freed. Data gets no content.
 * @param type_index TLX_OID_PKCS7_DATA to TLX_OID_PKCS7_ENCRYPTED_DATA
 * @return 0; 1 for null, another row, and when memory runs out (the content info is unchanged then)
 */
TLXPKI_API uint32_t set_PKCS7_Type(P7_CONTENT_INFO *info, int32_t type_index);

/**
 * Sets the version of the content: also that of every signer of signed data, of every recipient of enveloped
 * data, and of both in signed-and-enveloped data.
 * @return 0; 1 for null, content that is missing or of another type, and when memory runs out (some versions
 * are set then)
 */
TLXPKI_API uint32_t set_P7_version(P7_CONTENT_INFO *info, uint32_t version);

/** Makes an empty content info, as new_P7_CONTENT_INFO(). */
TLXPKI_API P7_CONTENT_INFO *new_PKCS7_Content(void);

/**
 * Makes a copy of a content info the content that signed data signs, in place of the one it has.
 * @return 0; 1 for a null argument, content that is not signed data or is missing, and when memory runs out
 * (nothing changes then)
 */
TLXPKI_API uint32_t set_PKCS7_Content(P7_CONTENT_INFO *info, const P7_CONTENT_INFO *inner);

/**
 * Makes a content info of the type data with a copy of the octets.
 * @param octets may be null when len is 0
 * @param len    how many octets, at most 0x7FFFFFFF
 * @return a new content info; null for null octets, a greater len, and when memory runs out
 */
TLXPKI_API P7_CONTENT_INFO *gen_PKCS7_DATA_from_Binary(const uint8_t *octets, uint32_t len);

/**
 * Appends a copy of a certificate to signed data or signed-and-enveloped data; the list is made when there is
 * none. The certificate stays the caller's, also on failure.
 * @return 0; 1 for a null argument, other content, and when memory runs out (the message is unchanged then)
 */
TLXPKI_API uint32_t add_PKCS7_Certificate(P7_CONTENT_INFO *info, const X509_CERT *cert);

/**
 * Appends a revocation list itself, without a copy, to signed data or signed-and-enveloped data; the list is
 * made when there is none. The function takes the revocation list over in every case: it frees it on failure.
 * @return 0; 1 for a null argument, other content, and when memory runs out (the message is unchanged then)
 */
TLXPKI_API uint32_t add_PKCS7_Crl(P7_CONTENT_INFO *info, X509_CRL *crl);

/**
 * Appends an attribute with one value to the authenticated attributes of a signer, which are made when there
 * are none. When only the attribute cannot be appended because memory runs out, it is dropped and the result
 * is 0 all the same.
 * @param oid_index row of the attribute's type
 * @param type      universal type of the value, 1 to 30, without the constructed bit
 * @param octets    contents octets of the value; an object identifier as dotted text, a bit string without
 * the octet that counts unused bits
 * @param len       how many octets
 * @return 0; 1 for a null argument (octets may be null when len is 0), a negative len, a row without an
 * identifier, a value that cannot be encoded, and when memory runs out before (the signer is unchanged then)
 */
TLXPKI_API uint32_t add_PKCS7_Signed_Attribute(P7_SIGNER_INFO *signer, int32_t oid_index, uint32_t type,
                                               const uint8_t *octets, int32_t len);
/** The same for the unauthenticated attributes. */
TLXPKI_API uint32_t add_PKCS7_Unauthenticated_Attribute(P7_SIGNER_INFO *signer, int32_t oid_index,
                                                        uint32_t type, const uint8_t *octets, int32_t len);

TLX_END_DECLS

#endif
