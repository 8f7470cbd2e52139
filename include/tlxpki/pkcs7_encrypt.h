/** @file
 * Encrypting the content of PKCS #7 messages (RFC 2315, sections 10, 11 and 13) for recipients with RSA keys,
 * and decrypting it.
 *
 * Enveloped data is made so: set_PKCS7_Type(), a recipient for each certificate, then encrypt_PKCS7(), or
 * init_PKCS7_Encrypt(), update_PKCS7_encrypt() with each piece and final_PKCS7_Encrypt(). Encrypted data has
 * no recipients: set_PKCS7_Cipher() gives it a cipher unit that was keyed beforehand. Nothing here
 * authenticates: who changes a ciphertext is not found out, unless by chance through its padding.
 *
 * - Arguments: info is enveloped, signed-and-enveloped or encrypted data. algorithm is the content-encryption
 *   algorithm, any whose identifier get_CipherID_from_OID() knows; it is copied, and the copy receives the IV
 *   as its parameters, an OCTET STRING. A key has get_KeyLength() octets, an IV get_IVLength() octets or is
 *   null, which means all zero. reserved is ignored. data may not overlap a buffer for results.
 * - mode is how the content key is encrypted: 0 and 32 are RSAES-PKCS1-v1_5, 8 and 16 RSAES-OAEP with SHA-1,
 *   MGF1 with SHA-1 and no label (RFC 8017). It has to be the one that the recipients were added with.
 * - The output flag of enveloped and of encrypted data: with 0 the message collects the ciphertext in its
 *   encryptedContent; with any other value the message keeps none of it, and the caller's buffers receive it.
 *   Signed-and-enveloped data always collects it.
 * - Failure: functions return 0; 1 for a null argument that is not said to be optional; or another status
 *   given here. Those of the cipher and of RSA go up unchanged: 1, TLX_CIPHER_BAD_PADDING, TLX_RSA_BAD_KEY.
 *   An encryption that fails leaves a message that is to be thrown away; its parts may be there.
 * - Threads: distinct messages may be used at the same time, and several threads may decrypt with one key.
 */
#ifndef TLXPKI_PKCS7_ENCRYPT_H
#define TLXPKI_PKCS7_ENCRYPT_H

#include <tlxpki/pkcs1_param.h>
#include <tlxpki/pkcs7_types.h>

TLX_BEGIN_DECLS

/* ---- Recipients ---- */

/**
 * Makes a record a recipient: version 0, copies of issuer, serial number and public key of the certificate,
 * and the algorithm of the mode: rsaEncryption with NULL parameters, or id-RSAES-OAEP with the given ones.
 * @param oaep null writes an empty SEQUENCE, which means the defaults; ignored for the other modes
 * @return 0; 1 also for another mode, a certificate without a name, a number or a known key, parameters that
 * say anything but SHA-1, MGF1 with SHA-1 and no label, and when memory runs out (the record is unchanged
 * then)
 */
TLXPKI_API uint32_t set_PKCS7_P7_RECIPIENT_INFO(P7_RECIPIENT_INFO *recipient, const X509_CERT *cert,
                                                uint32_t mode, const RSAES_OAEP_PARAM *oaep);

/** Appends a recipient, which becomes the message's, to enveloped or signed-and-enveloped data. Returns 1
 * also for any other content and when memory runs out; the recipient stays the caller's then. */
TLXPKI_API uint32_t add_PKCS7_P7_RECIPIENT_INFO(P7_CONTENT_INFO *info, P7_RECIPIENT_INFO *recipient);

/** Makes a recipient and appends it: set_PKCS7_P7_RECIPIENT_INFO(), add_PKCS7_P7_RECIPIENT_INFO(). Returns 1
 * when either fails; nothing changes then. */
TLXPKI_API uint32_t add_PKCS7_Recipient_withEncryptedAlgorithm(P7_CONTENT_INFO *info, const X509_CERT *cert,
                                                               uint32_t mode, const RSAES_OAEP_PARAM *oaep);
/** The same with RSAES-PKCS1-v1_5. */
TLXPKI_API uint32_t add_PKCS7_Recipient(P7_CONTENT_INFO *info, const X509_CERT *cert);

/**
 * Appends a recipient with RSAES-OAEP and any parameters, for seal_PKCS7(); init_PKCS7_Encrypt() refuses it
 * unless they are those of the modes 8 and 16.
 * @param digest_id     digest of OAEP, SHA-1 or SHA-2
 * @param mgf_digest_id digest of MGF1, likewise; most programs expect the same
 * @param label         copied; null when label_len is 0, as most programs expect
 * @return 0; 1 also for another digest, a certificate or content that add_PKCS7_Recipient() refuses, and when
 * memory runs out (nothing changes then)
 */
TLXPKI_API uint32_t add_PKCS7_Recipient_OAEP(P7_CONTENT_INFO *info, const X509_CERT *cert, uint32_t digest_id,
                                             uint32_t mgf_digest_id, const uint8_t *label,
                                             uint32_t label_len);

/* ---- Encrypting with what the caller gives ---- */

/**
 * Begins an encryption. In enveloped and signed-and-enveloped data it makes a new encryptedContentInfo of the
 * type data with a keyed cipher unit, and encrypts the key for each recipient in order. In encrypted data,
 * where key, iv and mode are ignored, it drops an old ciphertext; the algorithm receives the IV of the unit
 * when its parameters are absent or NULL and it is no password-based scheme.
 * @return 0; 0x4B200049 a null info, another mode, missing content, no recipients, or encrypted data without
 * an algorithm or a cipher unit; 0x4B200048 other content, an algorithm that is null or has no cipher, or a
 * recipient without an RSA key or with other parameters of OAEP (the recipients before it have their keys
 * then); 0x4B20003A memory ran out
 */
TLXPKI_API uint32_t init_PKCS7_Encrypt(P7_CONTENT_INFO *info, uint32_t reserved,
                                       const X509_ALGO_IDENTIFIER *algorithm, uint32_t output_flag,
                                       const uint8_t *key, const uint8_t *iv, uint32_t mode);

/**
 * Encrypts the next octets of the content.
 * @param out     with the output flag set, a buffer for the ciphertext, for which in_len + 15 octets are
 * always enough; with it clear, null or a buffer that also receives the ciphertext, and stays as it is when
 * it has less room than in_len or than the ciphertext needs
 * @param out_len octets that out has room for; receives the octets of ciphertext, also when out is left alone
 * @return 0; 0x4B200049 a null info, missing content, no encryption under way, or with the output flag set no
 * buffer or one with less room than in_len or than the ciphertext needs (nothing is encrypted then);
 * 0x4B200048 other content; 0x4B20003A the ciphertext cannot grow
 */
TLXPKI_API uint32_t update_PKCS7_encrypt(P7_CONTENT_INFO *info, const uint8_t *in, uint32_t in_len,
                                         uint8_t *out, uint32_t *out_len);

/** Ends an encryption: the same for the last block, with the same statuses. 16 octets of room are always
 * enough. */
TLXPKI_API uint32_t final_PKCS7_Encrypt(P7_CONTENT_INFO *info, uint8_t *out, uint32_t *out_len);

/** Encrypts all of the data under a random key and IV, which are wiped, and collects the ciphertext. Returns
 * 0x4B00002B for another mode, 1 also when random octets cannot be had, and the statuses of
 * init_PKCS7_Encrypt(), update_PKCS7_encrypt() and final_PKCS7_Encrypt(). */
TLXPKI_API uint32_t encrypt_PKCS7(P7_CONTENT_INFO *info, uint32_t reserved,
                                  const X509_ALGO_IDENTIFIER *algorithm, const uint8_t *data, uint32_t len,
                                  uint32_t mode);
/** The same under the caller's key and IV, which the caller wipes. */
TLXPKI_API uint32_t encrypt_PKCS7_userKEY(P7_CONTENT_INFO *info, uint32_t reserved,
                                          const X509_ALGO_IDENTIFIER *algorithm, const uint8_t *data,
                                          uint32_t len, const uint8_t *key, const uint8_t *iv, uint32_t mode);

/** Gives the message a keyed cipher unit, for example one keyed from a password, in place of its own; the
 * encryptedContentInfo is made when there is none. The unit becomes the message's. Returns 1 also for other
 * content and when memory runs out; the unit stays the caller's then. */
TLXPKI_API uint32_t set_PKCS7_Cipher(P7_CONTENT_INFO *info, BLOCK_CIPHER_UNIT *unit);

/**
 * Fills an encrypted content info; its cipher unit stays.
 * @param type_index row of the content type
 * @param ciphertext the encryptedContent, of len octets, at most 0x7FFFFFFF; null for none
 * @return 0; 1 also for a row without an identifier and when memory runs out (the record is unchanged then)
 */
TLXPKI_API uint32_t set_PKCS7_P7_ENCRYPTED_CONTENT_INFO(P7_ENCRYPTED_CONTENT_INFO *content,
                                                        int32_t type_index,
                                                        const X509_ALGO_IDENTIFIER *algorithm,
                                                        const uint8_t *ciphertext, uint32_t len);

/** Returns the octets of the ciphertext that a message holds; 0 for null, other content and when there is
 * none. */
TLXPKI_API uint32_t get_PKCS7_ENCRYPTED_CONTENT_length(const P7_CONTENT_INFO *info);

/* ---- Decrypting with what the caller knows ---- */

/**
 * Decrypts the content key with the key of a recipient. Its result tells whether RSAES-PKCS1-v1_5 padding is
 * right, and who hears of this again and again can decrypt (RFC 3218).
 * @param cert    the recipient's certificate. With null, which enveloped data refuses, the certificates of
 * the message are searched for the recipients in order, and one that is missing ends the search
 * @param key_len octets that key has room for; receives those of the key, 0 on failure
 * @return 0; 1 also for other content, a certificate of no recipient, a key that is not RSA or does not
 * decrypt, and a buffer without enough room
 */
TLXPKI_API uint32_t decrypt_PKCS7_enveloped_CEK(const P7_CONTENT_INFO *info, const X509_CERT *cert,
                                                const ASYMMETRIC_KEY *private_key, uint8_t *key,
                                                uint32_t *key_len, uint32_t mode);

/**
 * Decrypts the content with its key.
 * @param iv      null for the one in the parameters of the algorithm, which are absent, NULL or an OCTET
 * STRING
 * @param out_len octets that out has room for; receives those of the content, 0 on failure.
 * get_PKCS7_ENCRYPTED_CONTENT_length() octets are always enough
 * @return 0; 1 also for other content, a message without ciphertext, an algorithm without a cipher,
 * parameters that hold no IV, a buffer without enough room, and when memory runs out. out holds nothing of
 * the content then
 */
TLXPKI_API uint32_t decrypt_PKCS7(const P7_CONTENT_INFO *info, const uint8_t *key, const uint8_t *iv,
                                  uint8_t *out, uint32_t *out_len);

/* ---- Signing and encrypting in one message ---- */

/**
 * Signs all of the data with every signer of signed-and-enveloped data (<tlxpki/pkcs7_sign.h>) and encrypts
 * it under a random key and IV, which are wiped. A signer without attributes signs the data itself;
 * attributes are signed as they are. The signatures are not encrypted.
 * @return 0; 0x4B00002B another mode; 1 also for other content and when random octets cannot be had; then the
 * first status of init_PKCS7_Sign(), final_PKCS7_Sign(), init_PKCS7_Encrypt(), update_PKCS7_encrypt() and
 * final_PKCS7_Encrypt() that is not 0
 */
TLXPKI_API uint32_t sign_encrypt_PKCS7(P7_CONTENT_INFO *info, uint32_t reserved,
                                       const X509_ALGO_IDENTIFIER *algorithm, const uint8_t *data,
                                       uint32_t len, uint32_t mode);
/** The same under the caller's key and IV, which the caller wipes. */
TLXPKI_API uint32_t sign_encrypt_PKCS7_userKEY(P7_CONTENT_INFO *info, uint32_t reserved,
                                               const X509_ALGO_IDENTIFIER *algorithm, const uint8_t *data,
                                               uint32_t len, const uint8_t *key, const uint8_t *iv,
                                               uint32_t mode);
/** sign_encrypt_PKCS7() with the scheme and the parameters (SP) of each recipient's keyEncryptionAlgorithm in
 * place of one mode for all: recipients of any kind may be mixed, as for seal_PKCS7(). An algorithm that is
 * unknown gives 0x4B200048. */
TLXPKI_API uint32_t sign_encrypt_PKCS7_SP(P7_CONTENT_INFO *info, uint32_t reserved,
                                          const X509_ALGO_IDENTIFIER *algorithm, const uint8_t *data,
                                          uint32_t len);
/** The same under the caller's key and IV, which the caller wipes. */
TLXPKI_API uint32_t sign_encrypt_PKCS7_userKEY_SP(P7_CONTENT_INFO *info, uint32_t reserved,
                                                  const X509_ALGO_IDENTIFIER *algorithm, const uint8_t *data,
                                                  uint32_t len, const uint8_t *key, const uint8_t *iv);

/**
 * Decrypts signed-and-enveloped data by decrypt_PKCS7() with the IV of the message, then checks the content
 * by verify_PKCS7(), whose 0 is no proof. A content that verify_PKCS7() refuses is wiped.
 * @param cert    as verify_PKCS7() takes it, or null
 * @param key     the content key
 * @param out_len as decrypt_PKCS7()
 * @return the first status of the two that is not 0; 1 also for other content
 */
TLXPKI_API uint32_t verify_decrypt_PKCS7(P7_CONTENT_INFO *info, const X509_CERT *cert, const uint8_t *key,
                                         uint8_t *out, uint32_t *out_len);

/* ---- Encrypting and decrypting as the message says ---- */

/* These take scheme and parameters from each recipient's keyEncryptionAlgorithm, and name ciphers as other
 * programs do: AES (RFC 3565), SEED (RFC 4010), ARIA (RFC 5794), Camellia (RFC 3657), triple DES and RC2 (RFC
 * 3370), CAST5 (RFC 2984). open_PKCS7() also reads RC2 with 40 and 64 bits, DES, Blowfish, the ARIA-CBC of
 * the registry, and CAST5 with a bare IV, as OpenSSL writes it. */

/** Returns the name of a cipher that seal_PKCS7() knows, by index from 0 on: "aes-256-cbc", "seed-cbc",
 * "aria-128-cbc" and so on; null from the end of the list on. */
TLXPKI_API const char *get_PKCS7_cipher_name(uint32_t index);

/**
 * Begins an encryption under a random key and IV in enveloped or signed-and-enveloped data.
 * update_PKCS7_encrypt() and final_PKCS7_Encrypt() go on.
 * @return 0; 0x4B400049 a null argument, missing content or no recipients; 0x4B400048 other content, an
 * unknown cipher or one that libcrypto lacks, or a recipient without an RSA key or with another algorithm;
 * 0x4B40003A no memory or no random octets; a status of encrypt_RSAES() for a key that is too short
 */
TLXPKI_API uint32_t init_PKCS7_Seal(P7_CONTENT_INFO *info, const char *cipher_name, uint32_t output_flag);

/** Encrypts all of the data, which may be null when len is 0, and collects the ciphertext. Returns the
 * statuses of init_PKCS7_Seal() and of update_PKCS7_encrypt(). */
TLXPKI_API uint32_t seal_PKCS7(P7_CONTENT_INFO *info, const char *cipher_name, const uint8_t *data,
                               uint32_t len);

/**
 * Decrypts enveloped or signed-and-enveloped data. A key under PKCS #1 v1.5 whose padding is wrong becomes a
 * random one (RFC 3218), so that it fails as any wrong key does. Content that was changed may still decrypt
 * to something else.
 * @param cert    as decrypt_PKCS7_enveloped_CEK()
 * @param content receives the content with a zero octet after it, freed with tlx_free(); unchanged on
 * failure, which leaves none of it in memory
 * @param len     receives its octets
 * @return 0; 0x4B410049 a null argument other than cert, or missing content; 0x4B410048 other content, a key
 * that is not RSA, or an algorithm or parameters that are unknown or broken; 0x4B410047 the certificate of no
 * recipient, or none to be found; 0x4B410012 key and message do not belong together, or the message was
 * damaged, or memory ran out while they were computed with; 0x4B41003A memory ran out otherwise; the status
 * of a key that cannot be read (<tlxcrypto/rsa_external.h>)
 */
TLXPKI_API uint32_t open_PKCS7(const P7_CONTENT_INFO *info, const X509_CERT *cert,
                               const ASYMMETRIC_KEY *private_key, uint8_t **content, uint32_t *len);

TLX_END_DECLS

#endif
