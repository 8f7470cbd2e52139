/** @file
 * The recipients of CMS messages and the parameters of their algorithms: the records of <tlxpki/cms_types.h>
 * in DER and back. What <tlxpki/cms.h> says of decoding and encoding also holds here.
 */
#ifndef TLXPKI_CMS_RECIPIENT_H
#define TLXPKI_CMS_RECIPIENT_H

#include <tlxpki/cms_types.h>

TLX_BEGIN_DECLS

/* ---- Recipients ---- */

/**
 * CMS_RECIPIENT_INFO: a caller's record is unchanged when decoding fails.
 * - Decoder: 0x52240049 null argument; 0x52240104 another tag.
 * - Encoder: 0x52230049 null argument; 0x52230103 another type, or its value is missing.
 * @{
 */
TLXPKI_API CMS_RECIPIENT_INFO *new_CMS_RECIPIENT_INFO(void);
TLXPKI_API void clean_CMS_RECIPIENT_INFO(CMS_RECIPIENT_INFO *recipient);
TLXPKI_API void free_CMS_RECIPIENT_INFO(CMS_RECIPIENT_INFO *recipient);
TLXPKI_API CMS_RECIPIENT_INFO *dup_CMS_RECIPIENT_INFO(const CMS_RECIPIENT_INFO *recipient);
TLXPKI_API uint32_t Seq_to_CMS_RECIPIENT_INFO(const ASN1_UNIT *node, CMS_RECIPIENT_INFO **out);
TLXPKI_API uint32_t CMS_RECIPIENT_INFO_to_Seq(const CMS_RECIPIENT_INFO *recipient, ASN1_UNIT **out);
/** @} */

/**
 * CMS_RECIPIENT_INFOS: a list of CMS_RECIPIENT_INFO, at least one.
 * - Decoder: 0x52260049 null argument; 0x5226002B no recipients; 0x52260104 a child cannot be read.
 * - Encoder: writes a SET OF in list order. 0x52250049 null argument; 0x5225002B no recipients; 0x52250103 a
 * recipient is missing.
 * @{
 */
TLXPKI_API CMS_RECIPIENT_INFOS *new_CMS_RECIPIENT_INFOS(void);
TLXPKI_API void clean_CMS_RECIPIENT_INFOS(CMS_RECIPIENT_INFOS *recipients);
TLXPKI_API void free_CMS_RECIPIENT_INFOS(CMS_RECIPIENT_INFOS *recipients);
TLXPKI_API CMS_RECIPIENT_INFOS *dup_CMS_RECIPIENT_INFOS(const CMS_RECIPIENT_INFOS *recipients);
TLXPKI_API uint32_t Seq_to_CMS_RECIPIENT_INFOS(const ASN1_UNIT *node, CMS_RECIPIENT_INFOS **out);
TLXPKI_API uint32_t CMS_RECIPIENT_INFOS_to_Seq(const CMS_RECIPIENT_INFOS *recipients, ASN1_UNIT **out);
TLXPKI_API uint32_t get_CMS_RECIPIENT_INFOS_count(const CMS_RECIPIENT_INFOS *recipients);
TLXPKI_API CMS_RECIPIENT_INFO *get_CMS_RECIPIENT_INFOS_child(const CMS_RECIPIENT_INFOS *recipients,
                                                             int32_t index);
TLXPKI_API uint32_t add_CMS_RECIPIENT_INFOS_child(CMS_RECIPIENT_INFOS *recipients,
                                                  const CMS_RECIPIENT_INFO *recipient, int32_t index);
TLXPKI_API CMS_RECIPIENT_INFO *remove_CMS_RECIPIENT_INFOS_child(CMS_RECIPIENT_INFOS *recipients,
                                                                int32_t index);
/** @} */

/**
 * CMS_KEY_TRANS_RECIPIENT.
 * - Decoder: 0x52280049 null argument; 0x5228002B not exactly four children; 0x52280104 otherwise.
 * - Encoder: 0x52270049 null argument; 0x52270103 rid, keyEncryptionAlgorithm or encryptedKey is missing.
 * @{
 */
TLXPKI_API CMS_KEY_TRANS_RECIPIENT *new_CMS_KEY_TRANS_RECIPIENT(void);
TLXPKI_API void clean_CMS_KEY_TRANS_RECIPIENT(CMS_KEY_TRANS_RECIPIENT *recipient);
TLXPKI_API void free_CMS_KEY_TRANS_RECIPIENT(CMS_KEY_TRANS_RECIPIENT *recipient);
TLXPKI_API CMS_KEY_TRANS_RECIPIENT *dup_CMS_KEY_TRANS_RECIPIENT(const CMS_KEY_TRANS_RECIPIENT *recipient);
TLXPKI_API uint32_t Seq_to_CMS_KEY_TRANS_RECIPIENT(const ASN1_UNIT *node, CMS_KEY_TRANS_RECIPIENT **out);
TLXPKI_API uint32_t CMS_KEY_TRANS_RECIPIENT_to_Seq(const CMS_KEY_TRANS_RECIPIENT *recipient, ASN1_UNIT **out);
/** @} */

/**
 * CMS_KEY_AGREE_RECIPIENT.
 * - Decoder: 0x522A0049 null argument; 0x522A002B neither four children nor five; 0x522A0104 otherwise.
 * - Encoder: 0x52290049 null argument; 0x52290103 originator, keyEncryptionAlgorithm or
 * recipientEncryptedKeys is missing.
 * @{
 */
TLXPKI_API CMS_KEY_AGREE_RECIPIENT *new_CMS_KEY_AGREE_RECIPIENT(void);
TLXPKI_API void clean_CMS_KEY_AGREE_RECIPIENT(CMS_KEY_AGREE_RECIPIENT *recipient);
TLXPKI_API void free_CMS_KEY_AGREE_RECIPIENT(CMS_KEY_AGREE_RECIPIENT *recipient);
TLXPKI_API CMS_KEY_AGREE_RECIPIENT *dup_CMS_KEY_AGREE_RECIPIENT(const CMS_KEY_AGREE_RECIPIENT *recipient);
TLXPKI_API uint32_t Seq_to_CMS_KEY_AGREE_RECIPIENT(const ASN1_UNIT *node, CMS_KEY_AGREE_RECIPIENT **out);
TLXPKI_API uint32_t CMS_KEY_AGREE_RECIPIENT_to_Seq(const CMS_KEY_AGREE_RECIPIENT *recipient, ASN1_UNIT **out);
/** @} */

/**
 * CMS_ORIGINATOR: a caller's record is unchanged when decoding fails.
 * - Decoder: 0x522C0049 null argument; 0x522C0104 another tag.
 * - Encoder: 0x522B0049 null argument; 0x522B0103 another type, or its value is missing.
 * @{
 */
TLXPKI_API CMS_ORIGINATOR *new_CMS_ORIGINATOR(void);
TLXPKI_API void clean_CMS_ORIGINATOR(CMS_ORIGINATOR *originator);
TLXPKI_API void free_CMS_ORIGINATOR(CMS_ORIGINATOR *originator);
TLXPKI_API CMS_ORIGINATOR *dup_CMS_ORIGINATOR(const CMS_ORIGINATOR *originator);
TLXPKI_API uint32_t Seq_to_CMS_ORIGINATOR(const ASN1_UNIT *node, CMS_ORIGINATOR **out);
TLXPKI_API uint32_t CMS_ORIGINATOR_to_Seq(const CMS_ORIGINATOR *originator, ASN1_UNIT **out);
/** @} */

/**
 * CMS_ORIGINATOR_KEY.
 * - Decoder: 0x522E0049 null argument; 0x522E002B not exactly two children; 0x522E0104 otherwise.
 * - Encoder: 0x522D0049 null argument; 0x522D0103 a member is missing.
 * @{
 */
TLXPKI_API CMS_ORIGINATOR_KEY *new_CMS_ORIGINATOR_KEY(void);
TLXPKI_API void clean_CMS_ORIGINATOR_KEY(CMS_ORIGINATOR_KEY *key);
TLXPKI_API void free_CMS_ORIGINATOR_KEY(CMS_ORIGINATOR_KEY *key);
TLXPKI_API CMS_ORIGINATOR_KEY *dup_CMS_ORIGINATOR_KEY(const CMS_ORIGINATOR_KEY *key);
TLXPKI_API uint32_t Seq_to_CMS_ORIGINATOR_KEY(const ASN1_UNIT *node, CMS_ORIGINATOR_KEY **out);
TLXPKI_API uint32_t CMS_ORIGINATOR_KEY_to_Seq(const CMS_ORIGINATOR_KEY *key, ASN1_UNIT **out);
/** @} */

/**
 * CMS_RECIPIENT_ENCRYPTED_KEY.
 * - Decoder: 0x52300049 null argument; 0x5230002B not exactly two children; 0x52300104 otherwise.
 * - Encoder: 0x522F0049 null argument; 0x522F0103 a member is missing.
 * @{
 */
TLXPKI_API CMS_RECIPIENT_ENCRYPTED_KEY *new_CMS_RECIPIENT_ENCRYPTED_KEY(void);
TLXPKI_API void clean_CMS_RECIPIENT_ENCRYPTED_KEY(CMS_RECIPIENT_ENCRYPTED_KEY *key);
TLXPKI_API void free_CMS_RECIPIENT_ENCRYPTED_KEY(CMS_RECIPIENT_ENCRYPTED_KEY *key);
TLXPKI_API CMS_RECIPIENT_ENCRYPTED_KEY *dup_CMS_RECIPIENT_ENCRYPTED_KEY(
    const CMS_RECIPIENT_ENCRYPTED_KEY *key);
TLXPKI_API uint32_t Seq_to_CMS_RECIPIENT_ENCRYPTED_KEY(const ASN1_UNIT *node,
                                                       CMS_RECIPIENT_ENCRYPTED_KEY **out);
TLXPKI_API uint32_t CMS_RECIPIENT_ENCRYPTED_KEY_to_Seq(const CMS_RECIPIENT_ENCRYPTED_KEY *key,
                                                       ASN1_UNIT **out);
/** @} */

/**
 * CMS_RECIPIENT_ENCRYPTED_KEYS: a list of CMS_RECIPIENT_ENCRYPTED_KEY, which may be empty.
 * - Decoder: 0x52320049 null argument; 0x52320104 a child is no SEQUENCE.
 * - Encoder: 0x52310049 null argument; 0x52310103 a key is missing.
 * @{
 */
TLXPKI_API CMS_RECIPIENT_ENCRYPTED_KEYS *new_CMS_RECIPIENT_ENCRYPTED_KEYS(void);
TLXPKI_API void clean_CMS_RECIPIENT_ENCRYPTED_KEYS(CMS_RECIPIENT_ENCRYPTED_KEYS *keys);
TLXPKI_API void free_CMS_RECIPIENT_ENCRYPTED_KEYS(CMS_RECIPIENT_ENCRYPTED_KEYS *keys);
TLXPKI_API CMS_RECIPIENT_ENCRYPTED_KEYS *dup_CMS_RECIPIENT_ENCRYPTED_KEYS(
    const CMS_RECIPIENT_ENCRYPTED_KEYS *keys);
TLXPKI_API uint32_t Seq_to_CMS_RECIPIENT_ENCRYPTED_KEYS(const ASN1_UNIT *node,
                                                        CMS_RECIPIENT_ENCRYPTED_KEYS **out);
TLXPKI_API uint32_t CMS_RECIPIENT_ENCRYPTED_KEYS_to_Seq(const CMS_RECIPIENT_ENCRYPTED_KEYS *keys,
                                                        ASN1_UNIT **out);
TLXPKI_API uint32_t get_CMS_RECIPIENT_ENCRYPTED_KEYS_count(const CMS_RECIPIENT_ENCRYPTED_KEYS *keys);
TLXPKI_API CMS_RECIPIENT_ENCRYPTED_KEY *get_CMS_RECIPIENT_ENCRYPTED_KEYS_child(
    const CMS_RECIPIENT_ENCRYPTED_KEYS *keys, int32_t index);
TLXPKI_API uint32_t add_CMS_RECIPIENT_ENCRYPTED_KEYS_child(CMS_RECIPIENT_ENCRYPTED_KEYS *keys,
                                                           const CMS_RECIPIENT_ENCRYPTED_KEY *key,
                                                           int32_t index);
TLXPKI_API CMS_RECIPIENT_ENCRYPTED_KEY *remove_CMS_RECIPIENT_ENCRYPTED_KEYS_child(
    CMS_RECIPIENT_ENCRYPTED_KEYS *keys, int32_t index);
/** @} */

/**
 * CMS_KEY_AGREE_IDENTIFIER: a caller's record is unchanged when decoding fails.
 * - Decoder: 0x52340049 null argument; 0x52340104 another tag.
 * - Encoder: 0x52330049 null argument; 0x52330103 another type, or its value is missing.
 * @{
 */
TLXPKI_API CMS_KEY_AGREE_IDENTIFIER *new_CMS_KEY_AGREE_IDENTIFIER(void);
TLXPKI_API void clean_CMS_KEY_AGREE_IDENTIFIER(CMS_KEY_AGREE_IDENTIFIER *identifier);
TLXPKI_API void free_CMS_KEY_AGREE_IDENTIFIER(CMS_KEY_AGREE_IDENTIFIER *identifier);
TLXPKI_API CMS_KEY_AGREE_IDENTIFIER *dup_CMS_KEY_AGREE_IDENTIFIER(const CMS_KEY_AGREE_IDENTIFIER *identifier);
TLXPKI_API uint32_t Seq_to_CMS_KEY_AGREE_IDENTIFIER(const ASN1_UNIT *node, CMS_KEY_AGREE_IDENTIFIER **out);
TLXPKI_API uint32_t CMS_KEY_AGREE_IDENTIFIER_to_Seq(const CMS_KEY_AGREE_IDENTIFIER *identifier,
                                                    ASN1_UNIT **out);
/** @} */

/**
 * CMS_KEY_IDENTIFIER.
 * - Decoder: 0x52360049 null argument; 0x5236002B fewer than one child or more than three; 0x52360104
 * otherwise.
 * - Encoder: 0x52350049 null argument; 0x52350103 keyIdentifier is missing.
 * @{
 */
TLXPKI_API CMS_KEY_IDENTIFIER *new_CMS_KEY_IDENTIFIER(void);
TLXPKI_API void clean_CMS_KEY_IDENTIFIER(CMS_KEY_IDENTIFIER *identifier);
TLXPKI_API void free_CMS_KEY_IDENTIFIER(CMS_KEY_IDENTIFIER *identifier);
TLXPKI_API CMS_KEY_IDENTIFIER *dup_CMS_KEY_IDENTIFIER(const CMS_KEY_IDENTIFIER *identifier);
TLXPKI_API uint32_t Seq_to_CMS_KEY_IDENTIFIER(const ASN1_UNIT *node, CMS_KEY_IDENTIFIER **out);
TLXPKI_API uint32_t CMS_KEY_IDENTIFIER_to_Seq(const CMS_KEY_IDENTIFIER *identifier, ASN1_UNIT **out);
/** @} */

/**
 * CMS_KEK_RECIPIENT.
 * - Decoder: 0x52380049 null argument; 0x5238002B not exactly four children; 0x52380104 otherwise.
 * - Encoder: 0x52370049 null argument; 0x52370103 kekid, keyEncryptionAlgorithm or encryptedKey is missing.
 * @{
 */
TLXPKI_API CMS_KEK_RECIPIENT *new_CMS_KEK_RECIPIENT(void);
TLXPKI_API void clean_CMS_KEK_RECIPIENT(CMS_KEK_RECIPIENT *recipient);
TLXPKI_API void free_CMS_KEK_RECIPIENT(CMS_KEK_RECIPIENT *recipient);
TLXPKI_API CMS_KEK_RECIPIENT *dup_CMS_KEK_RECIPIENT(const CMS_KEK_RECIPIENT *recipient);
TLXPKI_API uint32_t Seq_to_CMS_KEK_RECIPIENT(const ASN1_UNIT *node, CMS_KEK_RECIPIENT **out);
TLXPKI_API uint32_t CMS_KEK_RECIPIENT_to_Seq(const CMS_KEK_RECIPIENT *recipient, ASN1_UNIT **out);
/** @} */

/**
 * CMS_PASSWORD_RECIPIENT.
 * - Decoder: 0x523A0049 null argument; 0x523A002B neither three children nor four; 0x523A0104 otherwise.
 * - Encoder: 0x52390049 null argument; 0x52390103 keyEncryptionAlgorithm or encryptedKey is missing.
 * @{
 */
TLXPKI_API CMS_PASSWORD_RECIPIENT *new_CMS_PASSWORD_RECIPIENT(void);
TLXPKI_API void clean_CMS_PASSWORD_RECIPIENT(CMS_PASSWORD_RECIPIENT *recipient);
TLXPKI_API void free_CMS_PASSWORD_RECIPIENT(CMS_PASSWORD_RECIPIENT *recipient);
TLXPKI_API CMS_PASSWORD_RECIPIENT *dup_CMS_PASSWORD_RECIPIENT(const CMS_PASSWORD_RECIPIENT *recipient);
TLXPKI_API uint32_t Seq_to_CMS_PASSWORD_RECIPIENT(const ASN1_UNIT *node, CMS_PASSWORD_RECIPIENT **out);
TLXPKI_API uint32_t CMS_PASSWORD_RECIPIENT_to_Seq(const CMS_PASSWORD_RECIPIENT *recipient, ASN1_UNIT **out);
/** @} */

/* ---- Parameters of algorithms ---- */

/**
 * CMS_GCM_PARAM.
 * - Decoder: 0x523C0049 null argument; 0x523C002B neither one child nor two; 0x523C0104 otherwise, and for a
 * code of another length than 12 to 16 octets.
 * - Encoder: leaves out a length of 12, the default. 0x523B0049 null argument; 0x523B0103 the nonce is
 * missing, or the length of the code is no number from 12 to 16.
 * @{
 */
TLXPKI_API CMS_GCM_PARAM *new_CMS_GCM_PARAM(void);
TLXPKI_API void clean_CMS_GCM_PARAM(CMS_GCM_PARAM *param);
TLXPKI_API void free_CMS_GCM_PARAM(CMS_GCM_PARAM *param);
TLXPKI_API CMS_GCM_PARAM *dup_CMS_GCM_PARAM(const CMS_GCM_PARAM *param);
TLXPKI_API uint32_t Seq_to_CMS_GCM_PARAM(const ASN1_UNIT *node, CMS_GCM_PARAM **out);
TLXPKI_API uint32_t CMS_GCM_PARAM_to_Seq(const CMS_GCM_PARAM *param, ASN1_UNIT **out);
/** @} */

/**
 * CMS_ECC_SHARED_INFO.
 * - Decoder: 0x523E0049 null argument; 0x523E002B neither two children nor three; 0x523E0104 otherwise.
 * - Encoder: 0x523D0049 null argument; 0x523D0103 keyInfo or suppPubInfo is missing.
 * @{
 */
TLXPKI_API CMS_ECC_SHARED_INFO *new_CMS_ECC_SHARED_INFO(void);
TLXPKI_API void clean_CMS_ECC_SHARED_INFO(CMS_ECC_SHARED_INFO *info);
TLXPKI_API void free_CMS_ECC_SHARED_INFO(CMS_ECC_SHARED_INFO *info);
TLXPKI_API CMS_ECC_SHARED_INFO *dup_CMS_ECC_SHARED_INFO(const CMS_ECC_SHARED_INFO *info);
TLXPKI_API uint32_t Seq_to_CMS_ECC_SHARED_INFO(const ASN1_UNIT *node, CMS_ECC_SHARED_INFO **out);
TLXPKI_API uint32_t CMS_ECC_SHARED_INFO_to_Seq(const CMS_ECC_SHARED_INFO *info, ASN1_UNIT **out);
/** @} */

/**
 * CMS_PBKDF2_PARAM.
 * - Decoder: 0x52400049 null argument; 0x5240002B fewer than two children or more than four; 0x52400104
 * otherwise, for a salt from another source, and for a number of more than 32 bits.
 * - Encoder: 0x523F0049 null argument; 0x523F0103 the salt is missing, or iterationCount is 0.
 * @{
 */
TLXPKI_API CMS_PBKDF2_PARAM *new_CMS_PBKDF2_PARAM(void);
TLXPKI_API void clean_CMS_PBKDF2_PARAM(CMS_PBKDF2_PARAM *param);
TLXPKI_API void free_CMS_PBKDF2_PARAM(CMS_PBKDF2_PARAM *param);
TLXPKI_API CMS_PBKDF2_PARAM *dup_CMS_PBKDF2_PARAM(const CMS_PBKDF2_PARAM *param);
TLXPKI_API uint32_t Seq_to_CMS_PBKDF2_PARAM(const ASN1_UNIT *node, CMS_PBKDF2_PARAM **out);
TLXPKI_API uint32_t CMS_PBKDF2_PARAM_to_Seq(const CMS_PBKDF2_PARAM *param, ASN1_UNIT **out);
/** @} */

TLX_END_DECLS

#endif
