/** @file
 * Password-based encryption: PKCS #5 (RFC 8018), the forms of KISA and GPKI, and private keys encrypted with
 * them as PKCS #8 containers (<tlxpki/pkcs8.h>).
 *
 * - Passwords are octets, password_len of them. The functions of sections one to three take them as they are;
 *   open_PKCS8() and its kin also as UTF-8.
 * - Secrets: buffers that held a password, a derived key or a decrypted key are wiped before they are freed.
 * - A salt of no octets needs a pointer that is not null.
 * - Threads: every function may run at once on distinct records.
 */
#ifndef TLXPKI_PKCS5_H
#define TLXPKI_PKCS5_H

#include <tlxpki/pkcs8.h>

TLX_BEGIN_DECLS

/* ---- Derivation of keys ---- */

/**
 * PBKDF1 (RFC 8018, section 5.1).
 * @param iterations how often the digest is applied
 * @param digest_id  a digest of <tlxcrypto/digest.h>
 * @param out        receives out_len octets
 * @return 0; 0x4A040049 null password, salt or out, or no iterations; 0x4A04002B an out_len of 0 or above the
 * octets of the digest, or a digest that is unknown; 0x4A04003C memory ran out
 */
TLXPKI_API uint32_t PBKDF1(const char *password, uint32_t password_len, const uint8_t *salt,
                           uint32_t salt_len, uint32_t iterations, uint32_t digest_id, uint8_t *out,
                           uint32_t out_len);
/**
 * PBKDF2 (RFC 8018, section 5.2) with HMAC.
 * @param iterations 1 to 0x7FFFFFFF
 * @param digest_id  the digest of the HMAC
 * @param out        receives out_len octets
 * @return 0; 0x4A050049 null password, salt or out, or no iterations; 0x4A05002B an out_len of 0, or a digest
 * that is unknown; 0x4A05003C memory ran out, or a length or the iterations are above 0x7FFFFFFF
 */
TLXPKI_API uint32_t PBKDF2(const char *password, uint32_t password_len, const uint8_t *salt,
                           uint32_t salt_len, uint32_t iterations, uint32_t digest_id, uint8_t *out,
                           uint32_t out_len);

/* ---- Encryption of octets ---- */

/* What these functions share:
 *
 * - out receives the result. out_len says how many octets out has room for, and receives those of the result,
 *   0 on failure. Encrypting takes room for in_len and one block more, decrypting for in_len.
 * - cipher_id and digest_id are those of <tlxcrypto/cipher.h> and <tlxcrypto/digest.h>.
 * - They return 0 or a status: reason 0x0049 for a null pointer and for no iterations; 0x002B for a cipher or
 *   digest that is unknown or does not fit the scheme, and for too little room; 0x003C when memory runs out;
 *   and TLX_CIPHER_BAD_PADDING, when decrypting, for a wrong password and an altered ciphertext. A wrong
 *   password may also give octets of no meaning. */

/** PBES1 (RFC 8018, section 6.1) with a cipher of 8-octet keys and blocks, and a digest of 16 octets or more.
 * Statuses 0x4A01.... */
TLXPKI_API uint32_t encrypt_PBES1(uint8_t *out, uint32_t *out_len, const char *password,
                                  uint32_t password_len, const uint8_t *salt, uint32_t salt_len,
                                  uint32_t iterations, const uint8_t *in, uint32_t in_len, uint32_t cipher_id,
                                  uint32_t digest_id);
/** The inverse. Statuses 0x4A02.... */
TLXPKI_API uint32_t decrypt_PBES1(uint8_t *out, uint32_t *out_len, const char *password,
                                  uint32_t password_len, const uint8_t *salt, uint32_t salt_len,
                                  uint32_t iterations, const uint8_t *in, uint32_t in_len, uint32_t cipher_id,
                                  uint32_t digest_id);

/**
 * PBES2 (RFC 8018, section 6.2) with PBKDF2. Statuses 0x4A10....
 * @param digest_id the digest of the HMAC; 0 means SHA-1
 * @param iv        with *iv_len above 0 the IV, of the cipher's length; with *iv_len 0 it has room for that
 * length and receives a random one
 * @param iv_len    receives the octets of the IV
 */
TLXPKI_API uint32_t encrypt_PBES2(uint8_t *out, uint32_t *out_len, const char *password,
                                  uint32_t password_len, const uint8_t *salt, uint32_t salt_len,
                                  uint32_t iterations, const uint8_t *in, uint32_t in_len, uint32_t cipher_id,
                                  uint32_t digest_id, uint8_t *iv, uint32_t *iv_len);
/** The inverse. iv has the cipher's length. Statuses 0x4A11.... */
TLXPKI_API uint32_t decrypt_PBES2(uint8_t *out, uint32_t *out_len, const char *password,
                                  uint32_t password_len, const uint8_t *salt, uint32_t salt_len,
                                  uint32_t iterations, const uint8_t *in, uint32_t in_len, uint32_t cipher_id,
                                  uint32_t digest_id, const uint8_t *iv);

/**
 * The forms of KISA, with SEED or ARIA in CBC mode and a digest of 20 octets or more: the key is octets 0 to
 * 15 of PBKDF1. Statuses 0x4A09....
 * @param cipher_id with or without TLX_CIPHER_MODE_CBC
 * @param iv_mode   1: the IV is the front of the digest of octets 16 to 19 of PBKDF1; 0: it is
 * "5820463917582046"; any other gives 0x4A09002B
 */
TLXPKI_API uint32_t encrypt_PBES1_KISA(uint8_t *out, uint32_t *out_len, const char *password,
                                       uint32_t password_len, const uint8_t *salt, uint32_t salt_len,
                                       uint32_t iterations, const uint8_t *in, uint32_t in_len,
                                       uint32_t cipher_id, uint32_t digest_id, uint32_t iv_mode);
/** The inverse. */
TLXPKI_API uint32_t decrypt_PBES1_KISA(uint8_t *out, uint32_t *out_len, const char *password,
                                       uint32_t password_len, const uint8_t *salt, uint32_t salt_len,
                                       uint32_t iterations, const uint8_t *in, uint32_t in_len,
                                       uint32_t cipher_id, uint32_t digest_id, uint32_t iv_mode);

/** The form of GPKI: key and IV are derived in the manner of PKCS #12 (RFC 7292, appendix B), from the octets
 * of the password as characters. Statuses 0x4A13....
 * @param cipher_id with or without TLX_CIPHER_MODE_CBC */
TLXPKI_API uint32_t encrypt_PBES1_GPKI(uint8_t *out, uint32_t *out_len, const char *password,
                                       uint32_t password_len, const uint8_t *salt, uint32_t salt_len,
                                       uint32_t iterations, const uint8_t *in, uint32_t in_len,
                                       uint32_t cipher_id, uint32_t digest_id);
/** The inverse. */
TLXPKI_API uint32_t decrypt_PBES1_GPKI(uint8_t *out, uint32_t *out_len, const char *password,
                                       uint32_t password_len, const uint8_t *salt, uint32_t salt_len,
                                       uint32_t iterations, const uint8_t *in, uint32_t in_len,
                                       uint32_t cipher_id, uint32_t digest_id);

/* ---- Private keys ---- */

/**
 * Encrypts a private key. The algorithm is a row of the registry (<tlxpki/objects.h>):
 *
 * | row                                                | scheme                                            |
 * |----------------------------------------------------|---------------------------------------------------|
 * | pbeWithSHA1AndSEED-CBC, pbeWithSHA1AndARIA_CBC     | KISA, IV mode 1                                   |
 * | SEED-CBC                                           | KISA with SEED, IV mode 0                         |
 * | GPKIpbeWithSHA1AndSEED-CBC                         | GPKI                                              |
 * | PBE-MD5-DES, PBE-SHA1-DES and others with DES      | PBES1 with the digest of the row, SHA-1 without   |
 * | another symmetric cipher, as AES-256-CBC           | PBES2 with that cipher and HMAC with SHA-1        |
 *
 * SEED-CBC is for callers that read with the same function. Other programs expect another IV with that row:
 * seal_PKCS8() writes it.
 * @param out        receives a new container
 * @param salt       salt_len octets; null or none for 8 random ones
 * @param iterations at least 1
 * @param oid_index  the row
 * @return 0; 0x4A060049 a null info, out or password, a password_len of 0 or no iterations; 0x4A060047 an
 * algorithm without a scheme here, which PBES2 alone is, or one that is not available; 0x4A060030 a key that
 * cannot be encoded; 0x4A06003C memory ran out, or random octets cannot be had
 */
TLXPKI_API uint32_t encrypt_PKCS5(const P8_PRIV_KEY_INFO *info, P8_ENCRYPTED_KEY **out, const char *password,
                                  uint32_t password_len, const uint8_t *salt, uint32_t salt_len,
                                  uint32_t iterations, uint32_t oid_index);
/**
 * The same, always by PBES2, with the cipher of oid_index. A pseudorandom function other than HMAC with SHA-1
 * is written into the container, since nobody could open it otherwise.
 * @param prf_index the row of the digest of the HMAC; 0 for SHA-1. A row without such a function gives
 * 0x4A060047
 */
TLXPKI_API uint32_t encrypt_PKCS5_ex(const P8_PRIV_KEY_INFO *info, P8_ENCRYPTED_KEY **out,
                                     const char *password, uint32_t password_len, const uint8_t *salt,
                                     uint32_t salt_len, uint32_t iterations, uint32_t oid_index,
                                     uint32_t prf_index);

/**
 * Decrypts a private key by the schemes of encrypt_PKCS5(), and by PBES2 with the functions and ciphers that
 * other programs write. With SEED-CBC it takes the IV of either kind. A key whose encoding has fewer than 256
 * octets is refused, as by a wrong password; open_PKCS8() takes keys of any length and kind.
 * @param out as for Seq_to_P8_PRIV_KEY_INFO()
 * @return 0; 0x4A070049 a null container, out or password, or a password_len of 0; 0x4A07003B parameters that
 * cannot be read; 0x4A070047 another algorithm, one that is not available, or more than 10,000,000
 * iterations; TLX_CIPHER_BAD_PADDING or 0x4A070012 a wrong password, an altered ciphertext or no
 * PrivateKeyInfo; 0x4A07003C memory ran out
 */
TLXPKI_API uint32_t decrypt_PKCS5(const P8_ENCRYPTED_KEY *container, P8_PRIV_KEY_INFO **out,
                                  const char *password, uint32_t password_len);

/* ---- Private keys as other programs exchange them ---- */

/** Returns the name of a scheme that seal_PKCS8() knows, by index from 0 on; null from the end of the list
 * on. The first are "pbes2", "seed", "aria", "seed-cbc" and "gpki"; the others have names like
 * "pbe-sha1-3des". */
TLXPKI_API const char *get_PKCS8_scheme_name(uint32_t index);
/** The same of the pseudorandom functions of PBES2: "sha1", "sha256", "sha3-256" and so on. */
TLXPKI_API const char *get_PKCS8_prf_name(uint32_t index);

/**
 * Encrypts a private key of any kind by a scheme that other programs know: those of RFC 8018, of RFC 7292,
 * appendix C, of KISA ("seed", "aria", and "seed-cbc" with the IV "0123456789012345", which files in
 * circulation have), and of GPKI.
 * @param scheme     a name of get_PKCS8_scheme_name(); null means "pbes2"
 * @param cipher     of "pbes2", a name of get_PKCS7_cipher_name(); null means "aes-256-cbc". Ignored
 * otherwise
 * @param prf        of "pbes2", a name of get_PKCS8_prf_name(); null means "sha256". Ignored otherwise
 * @param iterations 1 to 10,000,000; 0 means 600,000
 * @param out        receives a new container
 * @return 0; 0x4A400049 a null info, out or password; 0x4A400048 an unknown name, or an algorithm that is not
 * available; 0x4A400047 too many iterations; 0x4A400030 a key that cannot be encoded; 0x4A40003C memory ran
 * out, or random octets cannot be had
 */
TLXPKI_API uint32_t seal_PKCS8(const P8_PRIV_KEY_INFO *info, const char *scheme, const char *cipher,
                               const char *prf, uint32_t iterations, const char *password,
                               uint32_t password_len, P8_ENCRYPTED_KEY **out);

/** How a container is encrypted, in the names of seal_PKCS8(). The texts are constant and never null. */
typedef struct PKCS8_SCHEME {
    const char *scheme;
    const char *cipher;  /**< of "pbes2"; empty for one that seal_PKCS8() does not write, and otherwise */
    const char *prf;     /**< of "pbes2" likewise */
    uint32_t iterations; /**< 0 for another derivation than PBKDF2; 0xFFFFFFFF for that number and above */
} PKCS8_SCHEME;

/** Says how a container is encrypted. Returns 0; 0x4A420049 for a null argument; 0x4A420048 for an algorithm
 * that open_PKCS8() does not know; 0x4A42002B for parameters that are broken, and when memory runs out. */
TLXPKI_API uint32_t get_PKCS8_scheme(const P8_ENCRYPTED_KEY *container, PKCS8_SCHEME *out);

/**
 * Decrypts a private key of any kind and length. It takes the schemes of seal_PKCS8(), and PBES2 also with
 * scrypt (RFC 7914) and with ciphers that are too weak to write. A derivation may take 10,000,000 iterations,
 * or 256 MB of memory.
 * @param out as for Seq_to_P8_PRIV_KEY_INFO()
 * @return 0; 0x4A410049 a null argument; 0x4A410012 a wrong password or an altered ciphertext; 0x4A41002B
 * parameters or a ciphertext that are broken, or none; 0x4A41004F the password is right as far as can be
 * told, but the octets are no PrivateKeyInfo; 0x4A410047 too much work; 0x4A410048 an algorithm that is
 * unknown or not available; 0x4A41003C memory ran out
 */
TLXPKI_API uint32_t open_PKCS8(const P8_ENCRYPTED_KEY *container, const char *password, uint32_t password_len,
                               P8_PRIV_KEY_INFO **out);
/**
 * The same without decoding.
 * @param octets receives the encoding of the PrivateKeyInfo, which the caller wipes and frees with tlx_free()
 * @param len    receives their number
 * @return 0, or a status of open_PKCS8() other than 0x4A41004F
 */
TLXPKI_API uint32_t open_PKCS8_octets(const P8_ENCRYPTED_KEY *container, const char *password,
                                      uint32_t password_len, uint8_t **octets, uint32_t *len);

TLX_END_DECLS

#endif
