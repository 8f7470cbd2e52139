/** @file
 * Messages of the Cryptographic Message Syntax (RFC 5652): the records of <tlxpki/cms_types.h> in DER and
 * back. The contract of all records is in x509_types.h.
 *
 * A message is a CMS_CONTENT_INFO. Its content type is one of
 *
 * | content type                                      | member            |
 * |---------------------------------------------------|-------------------|
 * | 1.2.840.113549.1.7.1 id-data                      | data              |
 * | 1.2.840.113549.1.7.2 id-signedData                | signedData        |
 * | 1.2.840.113549.1.7.3 id-envelopedData             | envelopedData     |
 * | 1.2.840.113549.1.7.5 id-digestedData              | digestedData      |
 * | 1.2.840.113549.1.7.6 id-encryptedData             | encryptedData     |
 * | 1.2.840.113549.1.9.16.1.2 id-ct-authData          | authenticatedData |
 * | 1.2.840.113549.1.9.16.1.23 id-ct-authEnvelopedData | authEnvelopedData |
 * | any other                                         | other             |
 *
 * Decoding:
 * - It reads BER: indefinite lengths, and octet strings in segments, which are joined.
 * - The children of a record come in the order of the standard, under the tags of the standard.
 * - A version is a number from 0 to 5. Versions that contradict the members are read: RFC 5652 lets a reader
 * go by the members.
 * - A status of the decoder of a member goes up unchanged; the statuses of its own are given here.
 *
 * Encoding writes DER, with sets in their own order; it does not sort. The version is that of the record;
 * set_CMS_versions() sets those that the standard wants. Algorithm parameters, attribute values, certificates
 * and revocation lists are written as they were received. A status of the encoder of a member that is there
 * goes up unchanged. An optional member that is null is left out.
 */
#ifndef TLXPKI_CMS_H
#define TLXPKI_CMS_H

#include <tlxpki/cms_types.h>

TLX_BEGIN_DECLS

/* ---- Messages ---- */

/**
 * CMS_CONTENT_INFO.
 * - Decoder: 0x52020049 null argument; 0x5202002B not exactly two children; 0x52020104 the content type is
 * missing, or the second child is not [0] around one element that the content type allows.
 * - Encoder: 0x52010049 null argument; 0x52010103 contentType or the content of this type is missing.
 * @{
 */
TLXPKI_API CMS_CONTENT_INFO *new_CMS_CONTENT_INFO(void);
TLXPKI_API void clean_CMS_CONTENT_INFO(CMS_CONTENT_INFO *info);
TLXPKI_API void free_CMS_CONTENT_INFO(CMS_CONTENT_INFO *info);
TLXPKI_API CMS_CONTENT_INFO *dup_CMS_CONTENT_INFO(const CMS_CONTENT_INFO *info);
TLXPKI_API uint32_t Seq_to_CMS_CONTENT_INFO(const ASN1_UNIT *node, CMS_CONTENT_INFO **out);
TLXPKI_API uint32_t CMS_CONTENT_INFO_to_Seq(const CMS_CONTENT_INFO *info, ASN1_UNIT **out);
/** @} */

/**
 * CMS_SIGNED_DATA: the children come in the order of the standard. An empty [0] or [1] gives an empty list.
 * - Decoder: 0x52040049 null argument; 0x5204002B fewer than 4 children or more than 6; 0x52040104
 * otherwise.
 * - Encoder: 0x52030049 null argument; 0x52030103 digestAlgorithms, encapContentInfo or signerInfos is
 * missing.
 * @{
 */
TLXPKI_API CMS_SIGNED_DATA *new_CMS_SIGNED_DATA(void);
TLXPKI_API void clean_CMS_SIGNED_DATA(CMS_SIGNED_DATA *data);
TLXPKI_API void free_CMS_SIGNED_DATA(CMS_SIGNED_DATA *data);
TLXPKI_API CMS_SIGNED_DATA *dup_CMS_SIGNED_DATA(const CMS_SIGNED_DATA *data);
TLXPKI_API uint32_t Seq_to_CMS_SIGNED_DATA(const ASN1_UNIT *node, CMS_SIGNED_DATA **out);
TLXPKI_API uint32_t CMS_SIGNED_DATA_to_Seq(const CMS_SIGNED_DATA *data, ASN1_UNIT **out);
/** @} */

/**
 * CMS_ENCAP_CONTENT_INFO.
 * - Decoder: 0x52060049 null argument; 0x5206002B neither one child nor two; 0x52060104 otherwise.
 * - Encoder: 0x52050049 null argument; 0x52050103 eContentType is missing, or the record has both eContent
 * and otherContent.
 * @{
 */
TLXPKI_API CMS_ENCAP_CONTENT_INFO *new_CMS_ENCAP_CONTENT_INFO(void);
TLXPKI_API void clean_CMS_ENCAP_CONTENT_INFO(CMS_ENCAP_CONTENT_INFO *info);
TLXPKI_API void free_CMS_ENCAP_CONTENT_INFO(CMS_ENCAP_CONTENT_INFO *info);
TLXPKI_API CMS_ENCAP_CONTENT_INFO *dup_CMS_ENCAP_CONTENT_INFO(const CMS_ENCAP_CONTENT_INFO *info);
TLXPKI_API uint32_t Seq_to_CMS_ENCAP_CONTENT_INFO(const ASN1_UNIT *node, CMS_ENCAP_CONTENT_INFO **out);
TLXPKI_API uint32_t CMS_ENCAP_CONTENT_INFO_to_Seq(const CMS_ENCAP_CONTENT_INFO *info, ASN1_UNIT **out);
/** @} */

/**
 * CMS_DIGESTED_DATA.
 * - Decoder: 0x52080049 null argument; 0x5208002B not exactly four children; 0x52080104 otherwise.
 * - Encoder: 0x52070049 null argument; 0x52070103 digestAlgorithm, encapContentInfo or digest is missing.
 * @{
 */
TLXPKI_API CMS_DIGESTED_DATA *new_CMS_DIGESTED_DATA(void);
TLXPKI_API void clean_CMS_DIGESTED_DATA(CMS_DIGESTED_DATA *data);
TLXPKI_API void free_CMS_DIGESTED_DATA(CMS_DIGESTED_DATA *data);
TLXPKI_API CMS_DIGESTED_DATA *dup_CMS_DIGESTED_DATA(const CMS_DIGESTED_DATA *data);
TLXPKI_API uint32_t Seq_to_CMS_DIGESTED_DATA(const ASN1_UNIT *node, CMS_DIGESTED_DATA **out);
TLXPKI_API uint32_t CMS_DIGESTED_DATA_to_Seq(const CMS_DIGESTED_DATA *data, ASN1_UNIT **out);
/** @} */

/**
 * CMS_ENVELOPED_DATA.
 * - Decoder: 0x521A0049 null argument; 0x521A002B fewer than 3 children or more than 5; 0x521A0104
 * otherwise.
 * - Encoder: 0x52190049 null argument; 0x52190103 recipientInfos is missing or empty, or
 * encryptedContentInfo is missing.
 * @{
 */
TLXPKI_API CMS_ENVELOPED_DATA *new_CMS_ENVELOPED_DATA(void);
TLXPKI_API void clean_CMS_ENVELOPED_DATA(CMS_ENVELOPED_DATA *data);
TLXPKI_API void free_CMS_ENVELOPED_DATA(CMS_ENVELOPED_DATA *data);
TLXPKI_API CMS_ENVELOPED_DATA *dup_CMS_ENVELOPED_DATA(const CMS_ENVELOPED_DATA *data);
TLXPKI_API uint32_t Seq_to_CMS_ENVELOPED_DATA(const ASN1_UNIT *node, CMS_ENVELOPED_DATA **out);
TLXPKI_API uint32_t CMS_ENVELOPED_DATA_to_Seq(const CMS_ENVELOPED_DATA *data, ASN1_UNIT **out);
/** @} */

/**
 * CMS_ENCRYPTED_DATA.
 * - Decoder: 0x521C0049 null argument; 0x521C002B neither two children nor three; 0x521C0104 otherwise.
 * - Encoder: 0x521B0049 null argument; 0x521B0103 encryptedContentInfo is missing.
 * @{
 */
TLXPKI_API CMS_ENCRYPTED_DATA *new_CMS_ENCRYPTED_DATA(void);
TLXPKI_API void clean_CMS_ENCRYPTED_DATA(CMS_ENCRYPTED_DATA *data);
TLXPKI_API void free_CMS_ENCRYPTED_DATA(CMS_ENCRYPTED_DATA *data);
TLXPKI_API CMS_ENCRYPTED_DATA *dup_CMS_ENCRYPTED_DATA(const CMS_ENCRYPTED_DATA *data);
TLXPKI_API uint32_t Seq_to_CMS_ENCRYPTED_DATA(const ASN1_UNIT *node, CMS_ENCRYPTED_DATA **out);
TLXPKI_API uint32_t CMS_ENCRYPTED_DATA_to_Seq(const CMS_ENCRYPTED_DATA *data, ASN1_UNIT **out);
/** @} */

/**
 * CMS_AUTHENTICATED_DATA: the decoder keeps the authenticated attributes also as received.
 * - Decoder: 0x521E0049 null argument; 0x521E002B fewer than 5 children or more than 9; 0x521E0104
 * otherwise.
 * - Encoder: 0x521D0049 null argument; 0x521D0103 recipientInfos is missing or empty, or macAlgorithm,
 * encapContentInfo or mac is missing.
 * @{
 */
TLXPKI_API CMS_AUTHENTICATED_DATA *new_CMS_AUTHENTICATED_DATA(void);
TLXPKI_API void clean_CMS_AUTHENTICATED_DATA(CMS_AUTHENTICATED_DATA *data);
TLXPKI_API void free_CMS_AUTHENTICATED_DATA(CMS_AUTHENTICATED_DATA *data);
TLXPKI_API CMS_AUTHENTICATED_DATA *dup_CMS_AUTHENTICATED_DATA(const CMS_AUTHENTICATED_DATA *data);
TLXPKI_API uint32_t Seq_to_CMS_AUTHENTICATED_DATA(const ASN1_UNIT *node, CMS_AUTHENTICATED_DATA **out);
TLXPKI_API uint32_t CMS_AUTHENTICATED_DATA_to_Seq(const CMS_AUTHENTICATED_DATA *data, ASN1_UNIT **out);
/** @} */

/**
 * CMS_AUTH_ENVELOPED_DATA: the decoder keeps the authenticated attributes also as received.
 * - Decoder: 0x52200049 null argument; 0x5220002B fewer than 4 children or more than 7; 0x52200104
 * otherwise.
 * - Encoder: 0x521F0049 null argument; 0x521F0103 recipientInfos is missing or empty, or
 * authEncryptedContentInfo or mac is missing.
 * @{
 */
TLXPKI_API CMS_AUTH_ENVELOPED_DATA *new_CMS_AUTH_ENVELOPED_DATA(void);
TLXPKI_API void clean_CMS_AUTH_ENVELOPED_DATA(CMS_AUTH_ENVELOPED_DATA *data);
TLXPKI_API void free_CMS_AUTH_ENVELOPED_DATA(CMS_AUTH_ENVELOPED_DATA *data);
TLXPKI_API CMS_AUTH_ENVELOPED_DATA *dup_CMS_AUTH_ENVELOPED_DATA(const CMS_AUTH_ENVELOPED_DATA *data);
TLXPKI_API uint32_t Seq_to_CMS_AUTH_ENVELOPED_DATA(const ASN1_UNIT *node, CMS_AUTH_ENVELOPED_DATA **out);
TLXPKI_API uint32_t CMS_AUTH_ENVELOPED_DATA_to_Seq(const CMS_AUTH_ENVELOPED_DATA *data, ASN1_UNIT **out);
/** @} */

/**
 * CMS_ORIGINATOR_INFO.
 * - Decoder: 0x52220049 null argument; 0x5222002B more than two children; 0x52220104 otherwise.
 * - Encoder: 0x52210049 null argument; 0x52210103 a member cannot be encoded.
 * @{
 */
TLXPKI_API CMS_ORIGINATOR_INFO *new_CMS_ORIGINATOR_INFO(void);
TLXPKI_API void clean_CMS_ORIGINATOR_INFO(CMS_ORIGINATOR_INFO *info);
TLXPKI_API void free_CMS_ORIGINATOR_INFO(CMS_ORIGINATOR_INFO *info);
TLXPKI_API CMS_ORIGINATOR_INFO *dup_CMS_ORIGINATOR_INFO(const CMS_ORIGINATOR_INFO *info);
TLXPKI_API uint32_t Seq_to_CMS_ORIGINATOR_INFO(const ASN1_UNIT *node, CMS_ORIGINATOR_INFO **out);
TLXPKI_API uint32_t CMS_ORIGINATOR_INFO_to_Seq(const CMS_ORIGINATOR_INFO *info, ASN1_UNIT **out);
/** @} */

/* ---- Signers ---- */

/**
 * CMS_CERT_IDENTIFIER: a caller's record is unchanged when decoding fails.
 * - Decoder: 0x520A0049 null argument; 0x520A0104 neither an IssuerAndSerialNumber nor [0] around octets.
 * - Encoder: 0x52090049 null argument; 0x52090103 another type, or its value is missing.
 * @{
 */
TLXPKI_API CMS_CERT_IDENTIFIER *new_CMS_CERT_IDENTIFIER(void);
TLXPKI_API void clean_CMS_CERT_IDENTIFIER(CMS_CERT_IDENTIFIER *identifier);
TLXPKI_API void free_CMS_CERT_IDENTIFIER(CMS_CERT_IDENTIFIER *identifier);
TLXPKI_API CMS_CERT_IDENTIFIER *dup_CMS_CERT_IDENTIFIER(const CMS_CERT_IDENTIFIER *identifier);
TLXPKI_API uint32_t Seq_to_CMS_CERT_IDENTIFIER(const ASN1_UNIT *node, CMS_CERT_IDENTIFIER **out);
TLXPKI_API uint32_t CMS_CERT_IDENTIFIER_to_Seq(const CMS_CERT_IDENTIFIER *identifier, ASN1_UNIT **out);
/** @} */

/**
 * CMS_SIGNER_INFO: the decoder keeps the signed attributes also as received.
 * - Decoder: 0x520C0049 null argument; 0x520C002B fewer than 5 children or more than 7; 0x520C0104
 * otherwise.
 * - Encoder: 0x520B0049 null argument; 0x520B0103 sid, digestAlgorithm, signatureAlgorithm or signature is
 * missing.
 * @{
 */
TLXPKI_API CMS_SIGNER_INFO *new_CMS_SIGNER_INFO(void);
TLXPKI_API void clean_CMS_SIGNER_INFO(CMS_SIGNER_INFO *signer);
TLXPKI_API void free_CMS_SIGNER_INFO(CMS_SIGNER_INFO *signer);
TLXPKI_API CMS_SIGNER_INFO *dup_CMS_SIGNER_INFO(const CMS_SIGNER_INFO *signer);
TLXPKI_API uint32_t Seq_to_CMS_SIGNER_INFO(const ASN1_UNIT *node, CMS_SIGNER_INFO **out);
TLXPKI_API uint32_t CMS_SIGNER_INFO_to_Seq(const CMS_SIGNER_INFO *signer, ASN1_UNIT **out);
/** @} */

/**
 * CMS_SIGNER_INFOS: a list of CMS_SIGNER_INFO, which may be empty.
 * - Decoder: 0x520E0049 null argument; 0x520E0104 a child is no SEQUENCE.
 * - Encoder: writes a SET OF in list order. 0x520D0049 null argument; 0x520D0103 a signer is missing.
 * @{
 */
TLXPKI_API CMS_SIGNER_INFOS *new_CMS_SIGNER_INFOS(void);
TLXPKI_API void clean_CMS_SIGNER_INFOS(CMS_SIGNER_INFOS *signers);
TLXPKI_API void free_CMS_SIGNER_INFOS(CMS_SIGNER_INFOS *signers);
TLXPKI_API CMS_SIGNER_INFOS *dup_CMS_SIGNER_INFOS(const CMS_SIGNER_INFOS *signers);
TLXPKI_API uint32_t Seq_to_CMS_SIGNER_INFOS(const ASN1_UNIT *node, CMS_SIGNER_INFOS **out);
TLXPKI_API uint32_t CMS_SIGNER_INFOS_to_Seq(const CMS_SIGNER_INFOS *signers, ASN1_UNIT **out);
TLXPKI_API uint32_t get_CMS_SIGNER_INFOS_count(const CMS_SIGNER_INFOS *signers);
TLXPKI_API CMS_SIGNER_INFO *get_CMS_SIGNER_INFOS_child(const CMS_SIGNER_INFOS *signers, int32_t index);
TLXPKI_API uint32_t add_CMS_SIGNER_INFOS_child(CMS_SIGNER_INFOS *signers, const CMS_SIGNER_INFO *signer,
                                               int32_t index);
TLXPKI_API CMS_SIGNER_INFO *remove_CMS_SIGNER_INFOS_child(CMS_SIGNER_INFOS *signers, int32_t index);
/** @} */

/* ---- Certificates and revocation information ---- */

/**
 * CMS_CERT_CHOICE: a caller's record is unchanged when decoding fails.
 * - Decoder: 0x52100049 null argument; 0x52100104 another tag.
 * - Encoder: writes a certificate as it was received, as long as its octets are kept
 * (get_X509_received()). 0x520F0049 null argument; 0x520F0103 another type, or its value is missing.
 * @{
 */
TLXPKI_API CMS_CERT_CHOICE *new_CMS_CERT_CHOICE(void);
TLXPKI_API void clean_CMS_CERT_CHOICE(CMS_CERT_CHOICE *choice);
TLXPKI_API void free_CMS_CERT_CHOICE(CMS_CERT_CHOICE *choice);
TLXPKI_API CMS_CERT_CHOICE *dup_CMS_CERT_CHOICE(const CMS_CERT_CHOICE *choice);
TLXPKI_API uint32_t Seq_to_CMS_CERT_CHOICE(const ASN1_UNIT *node, CMS_CERT_CHOICE **out);
TLXPKI_API uint32_t CMS_CERT_CHOICE_to_Seq(const CMS_CERT_CHOICE *choice, ASN1_UNIT **out);
/** @} */

/**
 * CMS_CERT_CHOICES: a list of CMS_CERT_CHOICE, which may be empty.
 * - Decoder: 0x52120049 null argument; 0x52120104 a child has another tag than those of the five types.
 * - Encoder: writes a SET OF in list order. 0x52110049 null argument; 0x52110103 an item is missing.
 * @{
 */
TLXPKI_API CMS_CERT_CHOICES *new_CMS_CERT_CHOICES(void);
TLXPKI_API void clean_CMS_CERT_CHOICES(CMS_CERT_CHOICES *choices);
TLXPKI_API void free_CMS_CERT_CHOICES(CMS_CERT_CHOICES *choices);
TLXPKI_API CMS_CERT_CHOICES *dup_CMS_CERT_CHOICES(const CMS_CERT_CHOICES *choices);
TLXPKI_API uint32_t Seq_to_CMS_CERT_CHOICES(const ASN1_UNIT *node, CMS_CERT_CHOICES **out);
TLXPKI_API uint32_t CMS_CERT_CHOICES_to_Seq(const CMS_CERT_CHOICES *choices, ASN1_UNIT **out);
TLXPKI_API uint32_t get_CMS_CERT_CHOICES_count(const CMS_CERT_CHOICES *choices);
TLXPKI_API CMS_CERT_CHOICE *get_CMS_CERT_CHOICES_child(const CMS_CERT_CHOICES *choices, int32_t index);
TLXPKI_API uint32_t add_CMS_CERT_CHOICES_child(CMS_CERT_CHOICES *choices, const CMS_CERT_CHOICE *choice,
                                               int32_t index);
TLXPKI_API CMS_CERT_CHOICE *remove_CMS_CERT_CHOICES_child(CMS_CERT_CHOICES *choices, int32_t index);
/** @} */

/**
 * CMS_REVOCATION_INFO: a caller's record is unchanged when decoding fails.
 * - Decoder: 0x52140049 null argument; 0x52140104 another tag.
 * - Encoder: 0x52130049 null argument; 0x52130103 another type, or its value is missing.
 * @{
 */
TLXPKI_API CMS_REVOCATION_INFO *new_CMS_REVOCATION_INFO(void);
TLXPKI_API void clean_CMS_REVOCATION_INFO(CMS_REVOCATION_INFO *info);
TLXPKI_API void free_CMS_REVOCATION_INFO(CMS_REVOCATION_INFO *info);
TLXPKI_API CMS_REVOCATION_INFO *dup_CMS_REVOCATION_INFO(const CMS_REVOCATION_INFO *info);
TLXPKI_API uint32_t Seq_to_CMS_REVOCATION_INFO(const ASN1_UNIT *node, CMS_REVOCATION_INFO **out);
TLXPKI_API uint32_t CMS_REVOCATION_INFO_to_Seq(const CMS_REVOCATION_INFO *info, ASN1_UNIT **out);
/** @} */

/**
 * CMS_REVOCATION_INFOS: a list of CMS_REVOCATION_INFO, which may be empty.
 * - Decoder: 0x52160049 null argument; 0x52160104 a child has another tag than those of the two types.
 * - Encoder: writes a SET OF in list order. 0x52150049 null argument; 0x52150103 an item is missing.
 * @{
 */
TLXPKI_API CMS_REVOCATION_INFOS *new_CMS_REVOCATION_INFOS(void);
TLXPKI_API void clean_CMS_REVOCATION_INFOS(CMS_REVOCATION_INFOS *infos);
TLXPKI_API void free_CMS_REVOCATION_INFOS(CMS_REVOCATION_INFOS *infos);
TLXPKI_API CMS_REVOCATION_INFOS *dup_CMS_REVOCATION_INFOS(const CMS_REVOCATION_INFOS *infos);
TLXPKI_API uint32_t Seq_to_CMS_REVOCATION_INFOS(const ASN1_UNIT *node, CMS_REVOCATION_INFOS **out);
TLXPKI_API uint32_t CMS_REVOCATION_INFOS_to_Seq(const CMS_REVOCATION_INFOS *infos, ASN1_UNIT **out);
TLXPKI_API uint32_t get_CMS_REVOCATION_INFOS_count(const CMS_REVOCATION_INFOS *infos);
TLXPKI_API CMS_REVOCATION_INFO *get_CMS_REVOCATION_INFOS_child(const CMS_REVOCATION_INFOS *infos,
                                                               int32_t index);
TLXPKI_API uint32_t add_CMS_REVOCATION_INFOS_child(CMS_REVOCATION_INFOS *infos,
                                                   const CMS_REVOCATION_INFO *info, int32_t index);
TLXPKI_API CMS_REVOCATION_INFO *remove_CMS_REVOCATION_INFOS_child(CMS_REVOCATION_INFOS *infos, int32_t index);
/** @} */

/**
 * CMS_OTHER_REVOCATION_INFO.
 * - Decoder: 0x52180049 null argument; 0x5218002B not exactly two children; 0x52180104 otherwise.
 * - Encoder: 0x52170049 null argument; 0x52170103 a member is missing.
 * @{
 */
TLXPKI_API CMS_OTHER_REVOCATION_INFO *new_CMS_OTHER_REVOCATION_INFO(void);
TLXPKI_API void clean_CMS_OTHER_REVOCATION_INFO(CMS_OTHER_REVOCATION_INFO *info);
TLXPKI_API void free_CMS_OTHER_REVOCATION_INFO(CMS_OTHER_REVOCATION_INFO *info);
TLXPKI_API CMS_OTHER_REVOCATION_INFO *dup_CMS_OTHER_REVOCATION_INFO(const CMS_OTHER_REVOCATION_INFO *info);
TLXPKI_API uint32_t Seq_to_CMS_OTHER_REVOCATION_INFO(const ASN1_UNIT *node, CMS_OTHER_REVOCATION_INFO **out);
TLXPKI_API uint32_t CMS_OTHER_REVOCATION_INFO_to_Seq(const CMS_OTHER_REVOCATION_INFO *info, ASN1_UNIT **out);
/** @} */

/* ---- Versions ---- */

/**
 * Sets the versions that RFC 5652 gives to a message with these members: that of its content (sections 5.1,
 * 6.1, 7, 8 and 9.1; RFC 5083) and those of signers and recipients (sections 5.3 and 6.2). Content of other
 * types has no version and stays.
 * @return 0; 1 for null and for content of the message's type that is missing
 */
TLXPKI_API uint32_t set_CMS_versions(CMS_CONTENT_INFO *info);

TLX_END_DECLS

#endif
