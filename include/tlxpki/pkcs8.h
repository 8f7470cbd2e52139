/** @file
 * Private keys of PKCS #8 (RFC 5208), plain and encrypted, and the parameters of password-based encryption
 * (RFC 8018, appendix A). <tlxpki/pkcs5.h> encrypts and decrypts them. The contract of all records is in
 * x509_types.h.
 *
 * Blocks that held a private key are wiped before they are freed.
 */
#ifndef TLXPKI_PKCS8_H
#define TLXPKI_PKCS8_H

#include <tlxpki/x509_attribute.h>
#include <tlxpki/x509_pubkey.h>

TLX_BEGIN_DECLS

/* ---- Private keys ---- */

/**
 * PrivateKeyInfo ::= SEQUENCE {
 *     version Version, privateKeyAlgorithm AlgorithmIdentifier, privateKey OCTET STRING,
 *     attributes [0] IMPLICIT Attributes OPTIONAL }
 *
 * An RSA or KCDSA key is in privateKey. A key of any other kind has an empty privateKey, and its algorithm
 * and octets are in the last two members, so that it is written back as it was read. read_PRIV_KEY() makes a
 * key of them.
 */
typedef struct P8_PRIV_KEY_INFO {
    BIGINT *version;                      /**< 0; owned */
    void *reserved;                       /**< null */
    ASYMMETRIC_KEY *privateKey;           /**< TLX_KEY_RSA or TLX_KEY_KCDSA, or empty; owned */
    X509_ATTRIBUTES *attributes;          /**< or null; owned */
    X509_ALGO_IDENTIFIER *otherAlgorithm; /**< the algorithm of a key of another kind, or null; owned */
    OCTET_STRING *otherKey;               /**< the octets of that key, or null; owned */
} P8_PRIV_KEY_INFO;

/**
 * P8_PRIV_KEY_INFO. new_P8_PRIV_KEY_INFO() makes a record with version 0, an empty key and no attributes.
 * - Decoder: an RSA key (rsaEncryption) is the RSAPrivateKey of RFC 8017 with any version; without all of its
 * primes and their exponents it becomes one without any. A KCDSA key (KCDSA1) is INTEGER x, with the
 * parameters SEQUENCE { p, q, g }. The decoder ignores what follows the attributes, such as the public key of
 * RFC 5958. 0x4C030049 null argument; 1 a parameter of KCDSA is missing; 0x4C030104 the version, the
 * algorithm or the key is missing, or a child cannot be read.
 * - Encoder: rsaEncryption has NULL parameters. It leaves out attributes when there are none. 0x4C040049 null
 * argument; 0x4C040103 the version or the key is missing, the key is not a private one of RSA or KCDSA, or a
 * member cannot be encoded.
 * @{
 */
TLXPKI_API P8_PRIV_KEY_INFO *new_P8_PRIV_KEY_INFO(void);
TLXPKI_API void clean_P8_PRIV_KEY_INFO(P8_PRIV_KEY_INFO *info);
TLXPKI_API void free_P8_PRIV_KEY_INFO(P8_PRIV_KEY_INFO *info);
TLXPKI_API P8_PRIV_KEY_INFO *dup_P8_PRIV_KEY_INFO(const P8_PRIV_KEY_INFO *info);
TLXPKI_API uint32_t Seq_to_P8_PRIV_KEY_INFO(const ASN1_UNIT *node, P8_PRIV_KEY_INFO **out);
TLXPKI_API uint32_t P8_PRIV_KEY_INFO_to_Seq(const P8_PRIV_KEY_INFO *info, ASN1_UNIT **out);
/** @} */

/**
 * Makes the record of a key.
 * @param key a private RSA key or a KCDSA key with parameters and x
 * @return 0; 0x4C070049 for a null argument; 0x4C070048 for a key of another kind and an empty one;
 * 0x4C07003C when memory runs out
 */
TLXPKI_API uint32_t gen_P8_PRIV_KEY_INFO(const ASYMMETRIC_KEY *key, P8_PRIV_KEY_INFO **out);

/** Replaces the version. */
TLXPKI_API uint32_t set_PRIV_KEY_version(P8_PRIV_KEY_INFO *info, uint8_t version);
/** The version. */
TLXPKI_API BIGINT *get_PRIV_KEY_version(const P8_PRIV_KEY_INFO *info);
/** Replaces the key by a copy and frees a key of another kind. Returns 1 also for a key that is neither of
 * RSA nor of KCDSA. */
TLXPKI_API uint32_t set_PRIV_KEY_KeyParams(P8_PRIV_KEY_INFO *info, const ASYMMETRIC_KEY *key);

/**
 * Makes the key to compute with of a private key of any kind: RSA, KCDSA, id-ecPublicKey on P-256, P-384 and
 * P-521 (RFC 5915) as TLX_KEY_ECDSA, Ed25519 and Ed448 (RFC 8410) as TLX_KEY_EDDSA, X25519 and X448 as
 * TLX_KEY_XDH.
 * @param out receives the key; null makes a new holder
 * @return 0; 0x4C090049 for a null argument; 0x4C090048 for an unknown algorithm or curve; 0x4C090104 when
 * the octets or the parameters are not those of the algorithm, the number is out of range, or the public key
 * beside it is another one; 0x4C09003C when memory runs out
 */
TLXPKI_API uint32_t read_PRIV_KEY(const P8_PRIV_KEY_INFO *info, ASYMMETRIC_KEY **out);

/**
 * Makes the record of a private key of any kind, as read_PRIV_KEY() reads it. A key on a curve gets its
 * public key beside it (RFC 5915), other keys none.
 * @return 0; 0x4C0A0049 for a null argument; 0x4C0A0048 for an empty holder, a public key and TLX_KEY_ECC;
 * 0x4C0A003C when memory runs out
 */
TLXPKI_API uint32_t write_PRIV_KEY(const ASYMMETRIC_KEY *key, P8_PRIV_KEY_INFO **out);

/**
 * Makes the record of the ECPrivateKey (RFC 5915) that a file with the PEM label "EC PRIVATE KEY" holds. It
 * has to name its curve, of which any will do.
 * @param octets len octets
 * @return 0; 0x4C0B0049 for a null argument; 0x4C0B0104 when the octets are no ECPrivateKey with parameters;
 * 0x4C0B003C when memory runs out
 */
TLXPKI_API uint32_t decode_EC_PRIVATE_KEY(const uint8_t *octets, uint32_t len, P8_PRIV_KEY_INFO **out);

/** The random number that a virtual identifier is made with (<tlxpki/kisa_identity.h>): the value of the
 * attribute 1.2.410.200004.10.1.1.3. Null also when that holds no BIT STRING. */
TLXPKI_API BIT_STRING *get_PRIV_KEY_random(const P8_PRIV_KEY_INFO *info);

/* ---- Encrypted keys ---- */

/** How a key was encrypted: scheme of P8_ENCRYPTED_KEY. */
enum { TLX_P8_SCHEME_NATIONAL = 0, TLX_P8_SCHEME_PBES1 = 1, TLX_P8_SCHEME_PBES2 = 2 };

/** EncryptedPrivateKeyInfo ::= SEQUENCE { encryptionAlgorithm AlgorithmIdentifier, encryptedData OCTET
 * STRING } */
typedef struct P8_ENCRYPTED_KEY {
    uint32_t scheme; /**< set by what encrypts: national forms (KISA and GPKI) 0, PBES1 1, PBES2 2 */
    X509_ALGO_IDENTIFIER *encryptionAlgorithm; /**< or null; owned */
    OCTET_STRING *encryptedData;               /**< owned */
} P8_ENCRYPTED_KEY;

/** The same type under the name that its functions have. */
typedef P8_ENCRYPTED_KEY PKCS8;

/**
 * P8_ENCRYPTED_KEY.
 * - Decoder: sets scheme to 0. It joins encryptedData from the segments of BER. 0x4C020049 null argument;
 * 0x4C020104 the data are missing, or a child cannot be read.
 * - Encoder: leaves out an algorithm that is null; a failure of its encoder (0x46250103) goes up. 0x4C010049
 * null argument; 0x4C010103 the data are missing or cannot be encoded.
 * @{
 */
TLXPKI_API PKCS8 *new_PKCS8(void);
TLXPKI_API void clean_PKCS8(PKCS8 *container);
TLXPKI_API void free_PKCS8(PKCS8 *container);
TLXPKI_API PKCS8 *dup_PKCS8(const PKCS8 *container);
TLXPKI_API uint32_t Seq_to_P8_ENCRYPTED_KEY(const ASN1_UNIT *node, P8_ENCRYPTED_KEY **out);
TLXPKI_API uint32_t P8_ENCRYPTED_KEY_to_Seq(const P8_ENCRYPTED_KEY *container, ASN1_UNIT **out);
/** @} */

/** Replaces the identifier of the encryption algorithm and keeps its parameters. */
TLXPKI_API uint32_t set_OID_PKCS8(PKCS8 *container, const OBJECT_IDENTIFIER *oid);
/** The identifier of the encryption algorithm. */
TLXPKI_API OBJECT_IDENTIFIER *get_OID_PKCS8(const PKCS8 *container);
/** Replaces the encrypted data. */
TLXPKI_API uint32_t set_encryptedData_PKCS8(PKCS8 *container, const OCTET_STRING *data);
/** The encrypted data. */
TLXPKI_API OCTET_STRING *get_encryptedData_PKCS8(const PKCS8 *container);

/* ---- Parameters of password-based encryption ---- */

/**
 * Without encryptionScheme the parameters of PBES1 (RFC 8018, appendix A.3), otherwise those of PBES2 with
 * PBKDF2 (appendices A.2 and A.4):
 *
 * PBEParameter ::= SEQUENCE { salt OCTET STRING, iterationCount INTEGER }
 * PBES2-params ::= SEQUENCE { keyDerivationFunc SEQUENCE { id-PBKDF2, PBKDF2-params }, encryptionScheme
 *                             AlgorithmIdentifier }
 * PBKDF2-params ::= SEQUENCE { salt OCTET STRING, iterationCount INTEGER, keyLength INTEGER OPTIONAL,
 *                              prf AlgorithmIdentifier DEFAULT algid-hmacWithSHA1 }
 */
typedef struct P5_PBE_PARAM {
    OCTET_STRING *salt;                     /**< owned */
    BIGINT *iterationCount;                 /**< owned */
    X509_ALGO_IDENTIFIER *encryptionScheme; /**< null for PBES1; owned */
    BIGINT *keyLength;                      /**< octets, or null; owned */
    X509_ALGO_IDENTIFIER *prf;              /**< or null, which means HMAC with SHA-1; owned */
} P5_PBE_PARAM;

/**
 * P5_PBE_PARAM.
 * - Decoder: 0x4C050049 null argument; 0x4C050104 a child is missing or cannot be read, the key derivation is
 * not PBKDF2, or the salt comes from another source than the parameters.
 * - Encoder: writes keyLength and prf when they are there. 0x4C060049 null argument; 0x4C060103 the salt or
 * the iteration count is missing, or a member cannot be encoded.
 * @{
 */
TLXPKI_API P5_PBE_PARAM *new_P5_PBE_PARAM(void);
TLXPKI_API void clean_P5_PBE_PARAM(P5_PBE_PARAM *param);
TLXPKI_API void free_P5_PBE_PARAM(P5_PBE_PARAM *param);
TLXPKI_API P5_PBE_PARAM *dup_P5_PBE_PARAM(const P5_PBE_PARAM *param);
TLXPKI_API uint32_t Seq_to_P5_PBE_PARAM(const ASN1_UNIT *node, P5_PBE_PARAM **out);
TLXPKI_API uint32_t P5_PBE_PARAM_to_Seq(const P5_PBE_PARAM *param, ASN1_UNIT **out);
/** @} */

/**
 * Replaces the first three members. The other two stay.
 * @param salt   salt_len octets
 * @param scheme null for PBES1
 * @return 0; 1 for null parameters or a null salt, and when memory runs out
 */
TLXPKI_API uint32_t set_P5_PBE_PARAM(P5_PBE_PARAM *param, const uint8_t *salt, uint32_t salt_len,
                                     uint32_t iterations, const X509_ALGO_IDENTIFIER *scheme);

/**
 * Replaces the parameters of the encryption algorithm by these and keeps its identifier.
 * @return 0; a status of P5_PBE_PARAM_to_Seq(); 0x4C080049 for a null container; 0x4C08003C when memory runs
 * out
 */
TLXPKI_API uint32_t set_PKCS8_P5_PBE_PARAM(PKCS8 *container, const P5_PBE_PARAM *param);
/** Decodes the parameters of the encryption algorithm into a new record. Returns null for null, parameters
 * that are missing or that Seq_to_P5_PBE_PARAM() refuses, and when memory runs out. */
TLXPKI_API P5_PBE_PARAM *get_PKCS8_P5_PBE_PARAM(const PKCS8 *container);
/** The same of an algorithm identifier. */
TLXPKI_API P5_PBE_PARAM *get_P5_PBE_PARAM_from_X509_ALGO_IDENTIFIER(const X509_ALGO_IDENTIFIER *algorithm);

TLX_END_DECLS

#endif
