/** @file
 * RSA keys as PKCS #1 (RFC 8017, appendix A.1) writes them, and the text files that hold them: PEM "RSA
 * PRIVATE KEY", plain or encrypted in the way that predates PKCS #8, "RSA PUBLIC KEY" and "PUBLIC KEY". The
 * contract of all records is in x509_types.h.
 *
 * The decoders and set_ functions here clean a caller's record before they fill it, and again when they fail.
 *
 * Numbers are wiped when they are freed, and so is every buffer that held a private key, a derived key or
 * decrypted octets on the way. The caller wipes the text of a private key that it receives.
 *
 * A password is octets of any encoding, without a NUL at their end; password_len is their number, at least 1.
 */
#ifndef TLXPKI_PKCS1_H
#define TLXPKI_PKCS1_H

#include <tlxcrypto/rsa.h>
#include <tlxpki/types.h>

TLX_BEGIN_DECLS

/** RSAPublicKey. */
typedef struct PKCS1_RSA_PUBLIC_KEY {
    BIGINT *modulus;        /**< n */
    BIGINT *publicExponent; /**< e */
} PKCS1_RSA_PUBLIC_KEY;

/** RSAPrivateKey. */
typedef struct PKCS1_RSA_PRIVATE_KEY {
    BIGINT *version;            /**< 0 in a record that set_RSA_UNIT_to_PKCS1_RSA_PRIVATE_KEY() filled */
    BIGINT *modulus;            /**< n */
    BIGINT *publicExponent;     /**< e */
    BIGINT *privateExponent;    /**< d */
    BIGINT *prime1;             /**< p */
    BIGINT *prime2;             /**< q */
    BIGINT *exponent1;          /**< d mod (p - 1) */
    BIGINT *exponent2;          /**< d mod (q - 1) */
    BIGINT *coefficient;        /**< q^-1 mod p */
    ASN1_UNIT *otherPrimeInfos; /**< never read or written: keys of more than two primes are unsupported */
} PKCS1_RSA_PRIVATE_KEY;

/**
 * PKCS1_RSA_PUBLIC_KEY.
 * - Decoder: reads an RSAPublicKey, or the one inside a SubjectPublicKeyInfo (RFC 5280, section 4.1), whose
 * algorithm it ignores. The first child, an INTEGER or a SEQUENCE, distinguishes the two. Further children
 * are ignored. 0x49080049 null argument; 0x49080000 any other first child, a missing INTEGER, or octets after
 * the children that are no element, and when memory runs out.
 * - Encoder: 0x49070049 null argument; 0x49070000 a number is missing, or memory ran out.
 * @{
 */
TLXPKI_API PKCS1_RSA_PUBLIC_KEY *new_PKCS1_RSA_PUBLIC_KEY(void);
TLXPKI_API void clean_PKCS1_RSA_PUBLIC_KEY(PKCS1_RSA_PUBLIC_KEY *key);
TLXPKI_API void free_PKCS1_RSA_PUBLIC_KEY(PKCS1_RSA_PUBLIC_KEY *key);
TLXPKI_API PKCS1_RSA_PUBLIC_KEY *dup_PKCS1_RSA_PUBLIC_KEY(const PKCS1_RSA_PUBLIC_KEY *key);
TLXPKI_API uint32_t Seq_to_PKCS1_RSA_PUBLIC_KEY(const ASN1_UNIT *node, PKCS1_RSA_PUBLIC_KEY **out);
TLXPKI_API uint32_t PKCS1_RSA_PUBLIC_KEY_to_Seq(const PKCS1_RSA_PUBLIC_KEY *key, ASN1_UNIT **out);
/** @} */

/**
 * PKCS1_RSA_PRIVATE_KEY.
 * - Decoder: reads an RSAPrivateKey from the first nine children. The version may have any value. Further
 * children are ignored. 0x49030049 null argument; 0x49030000 one of the nine INTEGERs is missing, or octets
 * after the children are no element, and when memory runs out.
 * - Encoder: writes nine INTEGERs. The node holds the private key, and free_ASN1_UNIT() does not wipe it.
 * 0x49040049 null argument; 0x49040000 a number is missing, or memory ran out.
 * @{
 */
TLXPKI_API PKCS1_RSA_PRIVATE_KEY *new_PKCS1_RSA_PRIVATE_KEY(void);
TLXPKI_API void clean_PKCS1_RSA_PRIVATE_KEY(PKCS1_RSA_PRIVATE_KEY *key);
TLXPKI_API void free_PKCS1_RSA_PRIVATE_KEY(PKCS1_RSA_PRIVATE_KEY *key);
TLXPKI_API PKCS1_RSA_PRIVATE_KEY *dup_PKCS1_RSA_PRIVATE_KEY(const PKCS1_RSA_PRIVATE_KEY *key);
TLXPKI_API uint32_t Seq_to_PKCS1_RSA_PRIVATE_KEY(const ASN1_UNIT *node, PKCS1_RSA_PRIVATE_KEY **out);
TLXPKI_API uint32_t PKCS1_RSA_PRIVATE_KEY_to_Seq(const PKCS1_RSA_PRIVATE_KEY *key, ASN1_UNIT **out);
/** @} */

/* ---- RSA units ---- */

/**
 * Copies the numbers of a private RSA unit. Numbers that the unit lacks become zeros, and otherPrimeInfos an
 * empty node.
 * @param unit the unit; null counts as a private unit without numbers
 * @param key  points to the record to fill, or to null for a new one
 * @return 0; 0x49090000 for a null key and a public unit, and when memory runs out
 */
TLXPKI_API uint32_t set_RSA_UNIT_to_PKCS1_RSA_PRIVATE_KEY(const RSA_UNIT *unit, PKCS1_RSA_PRIVATE_KEY **key);
/**
 * Copies modulus and public exponent of an RSA unit of either kind. Numbers that the unit lacks become zeros.
 * @param key points to the record to fill, or to null for a new one
 * @return 0; 0x490A0000 for a null argument and when memory runs out
 */
TLXPKI_API uint32_t set_RSA_UNIT_to_PKCS1_RSA_PUBLIC_KEY(const RSA_UNIT *unit, PKCS1_RSA_PUBLIC_KEY **key);
/**
 * Makes an RSA unit a private key. The numbers are copied and not checked against each other. When a prime or
 * a number derived from the primes is zero, the unit gets n, e and d alone.
 * @param unit receives the key; unchanged on failure
 * @return 0; 0x490B0000 for a null argument, when a number other than the version is missing, and when memory
 * runs out
 */
TLXPKI_API uint32_t get_RSA_UNIT_from_PKCS1_RSA_PRIVATE_KEY(RSA_UNIT *unit, const PKCS1_RSA_PRIVATE_KEY *key);
/**
 * Makes an RSA unit a public key.
 * @param unit receives the key; unchanged on failure
 * @return 0; 0x490C0000 for a null argument, when a number is missing, and when memory runs out
 */
TLXPKI_API uint32_t get_RSA_UNIT_from_PKCS1_RSA_PUBLIC_KEY(RSA_UNIT *unit, const PKCS1_RSA_PUBLIC_KEY *key);

/* ---- Key files ---- */

/**
 * Derives the key of an encrypted "RSA PRIVATE KEY" file by the derivation of PEM as SSLeay introduced it,
 * which is neither PBKDF1 nor PBKDF2 of PKCS #5. D1 = MD5 (password || salt), Di = MD5 (D(i-1) || password ||
 * salt), and the key is the front of D1 || D2 || ...
 * @param salt    8 octets
 * @param key     receives the key; all zeros when memory runs out, which the status does not tell
 * @param key_len octets to derive, at least 1
 * @return 0; 0x4903002B for a null argument and a length below 1
 */
TLXPKI_API uint32_t PBKDF(const char *password, int32_t password_len, const uint8_t *salt, uint8_t *key,
                          int32_t key_len);

/**
 * Writes the text of a private key file: PEM "RSA PRIVATE KEY" with lines of 64 characters. A password
 * encrypts the key with DES-EDE3-CBC under a key from PBKDF(). The salt is the initialisation vector, 8
 * random octets in the header "DEK-Info".
 * @param unit     a private key
 * @param password null writes the key in the clear
 * @param out      receives a NUL-terminated text; unchanged on failure
 * @return 0; 0xFFFFFFFF when unit or out is null, and for a public unit; 0x4903002B for an empty password;
 * 0x49000012 when memory for Base64 or PEM encoding runs out; 0x4900003A when memory for anything else runs
 * out; 0x49000000 when random octets are unavailable
 */
TLXPKI_API uint32_t writePKCS1PrivateKey_to_Binary(const RSA_UNIT *unit, const char *password,
                                                   int32_t password_len, char **out);
/** writePKCS1PrivateKey_to_Binary() into a new file for its owner alone, as binary_to_private_File() writes
 * it. Returns 0xFFFFFFFF also when path is null or cannot be written. */
TLXPKI_API uint32_t writePKCS1PrivateKey_to_File(const RSA_UNIT *unit, const char *password,
                                                 int32_t password_len, const char *path);

/**
 * Writes the text of a public key file. It refuses a private unit, although that also holds the public key:
 * most likely the caller passed the wrong object.
 * @param unit      a public key
 * @param algorithm the algorithm (usually rsaEncryption, 1.2.840.113549.1.1.1) to write with NULL parameters
 * into a SubjectPublicKeyInfo, PEM "PUBLIC KEY"; null writes the bare key, PEM "RSA PUBLIC KEY"
 * @param out       receives a NUL-terminated text; unchanged on failure
 * @return 0; 0xFFFFFFFF when unit or out is null, and for a private unit; 0x49000012 when memory for Base64
 * or PEM encoding runs out; 0x4900003A when memory for anything else runs out, and for an algorithm that is
 * no object identifier
 */
TLXPKI_API uint32_t writePKCS1PublicKey_to_Binary(const RSA_UNIT *unit, const OBJECT_IDENTIFIER *algorithm,
                                                  char **out);
/** writePKCS1PublicKey_to_Binary() into a new file. Returns 0xFFFFFFFF also when path is null or cannot be
 * written. */
TLXPKI_API uint32_t writePKCS1PublicKey_to_File(const RSA_UNIT *unit, const OBJECT_IDENTIFIER *algorithm,
                                                const char *path);

/**
 * Reads a private or public key file. Lines may end in LF or CR LF. The label is ignored: a SEQUENCE of
 * exactly two children is a public key, any other a private one. So "PUBLIC KEY" files are also read, but
 * PKCS #8 files are not. Headers before the Base64 text mean an encrypted key. Its cipher counts as
 * DES-EDE3-CBC whatever "DEK-Info" names.
 * @param unit     receives the key; unchanged on failure
 * @param password may be null when the file is not encrypted
 * @param text     the text, which needs no NUL
 * @param text_len its octets, at least 1
 * @return 0
 * @return 0x4900002B when unit or text is null, text_len is below 1, the text does not begin with
 * "-----BEGIN", has no "-----END" or no end of its first line, and when headers lack "DEK-Info: ", a comma on
 * its line or 16 hexadecimal digits after the comma
 * @return 0x4903002B when the file is encrypted and the password null or empty
 * @return 0x4900004F when the body is not Base64, the password is wrong, the DER is no RSA key, and when
 * memory for decoding runs out; 0x4900003A when memory for the cipher runs out; 0x4900003C when memory for
 * the key runs out
 */
TLXPKI_API uint32_t readPKCS1_from_Binary(RSA_UNIT *unit, const char *password, int32_t password_len,
                                          const char *text, int32_t text_len);
/** readPKCS1_from_Binary() from a file. Returns 0x4900002B also when path is null or the file cannot be
 * read. */
TLXPKI_API uint32_t readPKCS1_from_File(RSA_UNIT *unit, const char *password, int32_t password_len,
                                        const char *path);

TLX_END_DECLS

#endif
