/** @file
 * RSA keys as PKCS #1 (RFC 8017, appendix A.1) writes them, and the text files that hold them: PEM
 * "RSA PRIVATE KEY", plain or encrypted in the way that predates PKCS #8, "RSA PUBLIC KEY" and "PUBLIC KEY".
 *
 * Records own their numbers. What a function hands out is freed with the matching free_ function, texts with
 * tlx_free(). A decoder Seq_to_ fills the record that *out points to, after cleaning it, or makes a new one
 * when *out is null. When it fails, a record made by it is freed and *out stays null; the caller's own record
 * is left cleaned and stays the caller's.
 *
 * Numbers are wiped when they are freed, and so is every buffer that held a private key, a derived key or
 * decrypted octets on the way. The text of a private key that is handed to the caller is the caller's to
 * wipe.
 *
 * Functions may run at the same time as long as no two of them work on the same object.
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
    ASN1_UNIT *otherPrimeInfos; /**< neither read nor written: keys of more than two primes are unsupported */
} PKCS1_RSA_PRIVATE_KEY;

/**
 * Makes an empty record.
 * @return the record, all members null; null when memory runs out
 */
TLXPKI_API PKCS1_RSA_PUBLIC_KEY *new_PKCS1_RSA_PUBLIC_KEY(void);
/**
 * Frees the members and sets them to null.
 * @param key the record, may be null
 */
TLXPKI_API void clean_PKCS1_RSA_PUBLIC_KEY(PKCS1_RSA_PUBLIC_KEY *key);
/**
 * Frees a record and its members.
 * @param key the record, may be null
 */
TLXPKI_API void free_PKCS1_RSA_PUBLIC_KEY(PKCS1_RSA_PUBLIC_KEY *key);
/**
 * Copies a record with everything in it.
 * @param key the record, may be null
 * @return the copy; null for null and when memory runs out
 */
TLXPKI_API PKCS1_RSA_PUBLIC_KEY *dup_PKCS1_RSA_PUBLIC_KEY(const PKCS1_RSA_PUBLIC_KEY *key);

/**
 * Makes an empty record.
 * @return the record, all members null; null when memory runs out
 */
TLXPKI_API PKCS1_RSA_PRIVATE_KEY *new_PKCS1_RSA_PRIVATE_KEY(void);
/**
 * Wipes and frees the members and sets them to null.
 * @param key the record, may be null
 */
TLXPKI_API void clean_PKCS1_RSA_PRIVATE_KEY(PKCS1_RSA_PRIVATE_KEY *key);
/**
 * Frees a record and its members, which are wiped.
 * @param key the record, may be null
 */
TLXPKI_API void free_PKCS1_RSA_PRIVATE_KEY(PKCS1_RSA_PRIVATE_KEY *key);
/**
 * Copies a record with everything in it.
 * @param key the record, may be null
 * @return the copy; null for null and when memory runs out
 */
TLXPKI_API PKCS1_RSA_PRIVATE_KEY *dup_PKCS1_RSA_PRIVATE_KEY(const PKCS1_RSA_PRIVATE_KEY *key);

/**
 * Reads an RSAPublicKey, or the RSAPublicKey inside a SubjectPublicKeyInfo (RFC 5280, section 4.1), whose
 * algorithm is not looked at. Which of the two it is goes by the first child, an INTEGER or a SEQUENCE.
 * Further children are ignored.
 * @param node the SEQUENCE
 * @param out  points to the record to fill, or to null for a new one
 * @return 0
 * @return 0x49080049 when node or out is null
 * @return 0x49080000 for any other first child, a missing INTEGER, octets after the children that are none,
 * and when memory runs out
 */
TLXPKI_API uint32_t Seq_to_PKCS1_RSA_PUBLIC_KEY(const ASN1_UNIT *node, PKCS1_RSA_PUBLIC_KEY **out);
/**
 * Writes an RSAPublicKey.
 * @param key the record
 * @param out receives a new node, freed with free_ASN1_UNIT(), whatever it holds before. Unchanged on failure
 * @return 0
 * @return 0x49070049 when key or out is null
 * @return 0x49070000 when a number is missing or memory runs out
 */
TLXPKI_API uint32_t PKCS1_RSA_PUBLIC_KEY_to_Seq(const PKCS1_RSA_PUBLIC_KEY *key, ASN1_UNIT **out);

/**
 * Reads an RSAPrivateKey from the first nine children. The version may have any value, and further children
 * are ignored.
 * @param node the SEQUENCE
 * @param out  points to the record to fill, or to null for a new one
 * @return 0
 * @return 0x49030049 when node or out is null
 * @return 0x49030000 when one of the nine INTEGERs is missing, octets after the children are none, or memory
 *         runs out
 */
TLXPKI_API uint32_t Seq_to_PKCS1_RSA_PRIVATE_KEY(const ASN1_UNIT *node, PKCS1_RSA_PRIVATE_KEY **out);
/**
 * Writes an RSAPrivateKey of nine INTEGERs.
 * @param key the record
 * @param out receives a new node, freed with free_ASN1_UNIT(), whatever it holds before. Unchanged on
 * failure. The node holds the private key; free_ASN1_UNIT() does not wipe it
 * @return 0
 * @return 0x49040049 when key or out is null
 * @return 0x49040000 when a number is missing or memory runs out
 */
TLXPKI_API uint32_t PKCS1_RSA_PRIVATE_KEY_to_Seq(const PKCS1_RSA_PRIVATE_KEY *key, ASN1_UNIT **out);

/**
 * Copies the numbers of a private RSA unit. Numbers that the unit does not have become zeros, and
 * otherPrimeInfos an empty node.
 * @param unit the unit; null counts as a private unit without numbers
 * @param key  points to the record to fill, which is cleaned first, or to null for a new one
 * @return 0
 * @return 0x49090000 when key is null, for a public unit, and when memory runs out; the record is then as
 *         after a failed decoder
 */
TLXPKI_API uint32_t set_RSA_UNIT_to_PKCS1_RSA_PRIVATE_KEY(const RSA_UNIT *unit, PKCS1_RSA_PRIVATE_KEY **key);
/**
 * Copies modulus and public exponent of an RSA unit of either kind. Numbers that the unit does not have
 * become zeros.
 * @param unit the unit
 * @param key  points to the record to fill, which is cleaned first, or to null for a new one
 * @return 0
 * @return 0x490A0000 when an argument is null and when memory runs out; the record is then as after a failed
 *         decoder
 */
TLXPKI_API uint32_t set_RSA_UNIT_to_PKCS1_RSA_PUBLIC_KEY(const RSA_UNIT *unit, PKCS1_RSA_PUBLIC_KEY **key);
/**
 * Makes an RSA unit a private key. The numbers are copied and not checked against each other. When one of
 * the primes or what is derived from them is zero, the unit gets n, e and d alone.
 * @param unit receives the key; unchanged on failure
 * @param key  the record
 * @return 0
 * @return 0x490B0000 when an argument is null, a number other than the version is missing, and when memory
 * runs out
 */
TLXPKI_API uint32_t get_RSA_UNIT_from_PKCS1_RSA_PRIVATE_KEY(RSA_UNIT *unit, const PKCS1_RSA_PRIVATE_KEY *key);
/**
 * Makes an RSA unit a public key.
 * @param unit receives the key; unchanged on failure
 * @param key  the record
 * @return 0
 * @return 0x490C0000 when an argument is null, a number is missing, and when memory runs out
 */
TLXPKI_API uint32_t get_RSA_UNIT_from_PKCS1_RSA_PUBLIC_KEY(RSA_UNIT *unit, const PKCS1_RSA_PUBLIC_KEY *key);

/**
 * Derives the key of an encrypted "RSA PRIVATE KEY" file (the derivation of PEM as SSLeay introduced it; not
 * PBKDF1 or PBKDF2 of PKCS #5): D1 = MD5 (password || salt), Di = MD5 (D(i-1) || password || salt), and the
 * key is the front of D1 || D2 || ...
 * @param password     octets of the password, without regard to their encoding; need no NUL
 * @param password_len how many, at least 1
 * @param salt         8 octets
 * @param key          receives the key; all zeros when memory runs out, which the status does not tell
 * @param key_len      how many octets to derive, at least 1
 * @return 0
 * @return 0x4903002B for a null argument and a length below 1
 */
TLXPKI_API uint32_t PBKDF(const char *password, int32_t password_len, const uint8_t *salt, uint8_t *key,
                          int32_t key_len);

/**
 * Writes the text of a private key file: PEM "RSA PRIVATE KEY" with lines of 64 characters. With a password
 * the key is encrypted with DES-EDE3-CBC under a key from PBKDF(), whose salt is the initialisation vector,
 * 8 octets drawn at random and written to the header "DEK-Info".
 * @param unit         a private key
 * @param password     octets of the password, or null to write the key in the clear
 * @param password_len how many, at least 1 when there is a password
 * @param out          receives a NUL-terminated text, freed with tlx_free(); unchanged on failure
 * @return 0
 * @return 0xFFFFFFFF when unit or out is null, and for a public unit
 * @return 0x4903002B for a password that is empty
 * @return 0x49000012 when Base64 or PEM encoding runs out of memory
 * @return 0x4900003A when memory for anything else runs out
 * @return 0x49000000 when no random octets are to be had
 */
TLXPKI_API uint32_t writePKCS1PrivateKey_to_Binary(const RSA_UNIT *unit, const char *password,
                                                   int32_t password_len, char **out);
/**
 * Writes a private key file anew, as binary_to_private_File() does: it is its owner's alone.
 * @param unit,password,password_len as for writePKCS1PrivateKey_to_Binary()
 * @param path the file
 * @return as writePKCS1PrivateKey_to_Binary(); 0xFFFFFFFF also when path is null or cannot be written
 */
TLXPKI_API uint32_t writePKCS1PrivateKey_to_File(const RSA_UNIT *unit, const char *password,
                                                 int32_t password_len, const char *path);

/**
 * Writes the text of a public key file. A private unit is refused, although it holds the public key as well:
 * what was meant to be published is then most likely the wrong object.
 * @param unit      a public key
 * @param algorithm the algorithm to write (usually rsaEncryption, 1.2.840.113549.1.1.1) with NULL parameters
 *                  into a SubjectPublicKeyInfo, PEM "PUBLIC KEY"; or null for the bare key, PEM
 *                  "RSA PUBLIC KEY"
 * @param out       receives a NUL-terminated text, freed with tlx_free(); unchanged on failure
 * @return 0
 * @return 0xFFFFFFFF when unit or out is null, and for a private unit
 * @return 0x49000012 when Base64 or PEM encoding runs out of memory
 * @return 0x4900003A when memory for anything else runs out, and for an algorithm that is no object
 *         identifier
 */
TLXPKI_API uint32_t writePKCS1PublicKey_to_Binary(const RSA_UNIT *unit, const OBJECT_IDENTIFIER *algorithm,
                                                  char **out);
/**
 * Writes a public key file anew.
 * @param unit,algorithm as for writePKCS1PublicKey_to_Binary()
 * @param path the file
 * @return as writePKCS1PublicKey_to_Binary(); 0xFFFFFFFF also when path is null or cannot be written
 */
TLXPKI_API uint32_t writePKCS1PublicKey_to_File(const RSA_UNIT *unit, const OBJECT_IDENTIFIER *algorithm,
                                                const char *path);

/**
 * Reads a private or public key file. Lines may end in LF or CR LF. The label is not looked at: a SEQUENCE of
 * exactly two children is a public key, any other a private one, so that "PUBLIC KEY" files are read as well
 * (PKCS #8 files are not). When headers stand before the Base64 text, the key is encrypted; its cipher is
 * taken for DES-EDE3-CBC whatever "DEK-Info" calls it.
 * @param unit         receives the key; unchanged on failure
 * @param password     octets of the password; may be null when the file is not encrypted
 * @param password_len how many, at least 1 when the file is encrypted
 * @param text         the text, which needs no NUL
 * @param text_len     its length, at least 1
 * @return 0
 * @return 0x4900002B when unit or text is null, text_len is below 1, the text does not begin with
 *         "-----BEGIN", has no "-----END" or no end of its first line, and when headers lack "DEK-Info: ",
 *         a comma on its line or 16 hexadecimal digits after the comma
 * @return 0x4903002B when the file is encrypted and the password null or empty
 * @return 0x4900004F when the body is not Base64, the password is wrong, the DER is no RSA key, and when
 * memory for decoding runs out
 * @return 0x4900003A when there is no memory for the cipher
 * @return 0x4900003C when there is no memory for the key
 */
TLXPKI_API uint32_t readPKCS1_from_Binary(RSA_UNIT *unit, const char *password, int32_t password_len,
                                          const char *text, int32_t text_len);
/**
 * Reads a private or public key file.
 * @param unit,password,password_len as for readPKCS1_from_Binary()
 * @param path the file
 * @return as readPKCS1_from_Binary(); 0x4900002B also when path is null or the file cannot be read
 */
TLXPKI_API uint32_t readPKCS1_from_File(RSA_UNIT *unit, const char *password, int32_t password_len,
                                        const char *path);

TLX_END_DECLS

#endif
