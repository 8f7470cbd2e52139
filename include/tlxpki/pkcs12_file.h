/** @file
 * PKCS #12 files (RFC 7292): private keys, certificates, revocation lists and secrets under a password. A
 * file is a P12_PFX (<tlxpki/pkcs12_types.h>), which readDER_from_File() and writeDER_to_File() read and
 * write; what it holds is a list of entries. The contract of all records is in x509_types.h.
 *
 * - Passwords are password_len octets of any encoding, as a rule UTF-8. A null password is an absent one.
 * Where PKCS #12 wants 16-bit characters, UTF-8 becomes UTF-16, and any other text is widened octet by octet.
 * - Secrets: values of entries, passwords and what was derived or decrypted are wiped before they are freed.
 */
#ifndef TLXPKI_PKCS12_FILE_H
#define TLXPKI_PKCS12_FILE_H

#include <tlxpki/pkcs12_types.h>
#include <tlxpki/pkcs8.h>

TLX_BEGIN_DECLS

/** What an entry is, and what its value holds as the file has it. */
enum {
    TLX_P12_PRIVATE_KEY = 1, /**< a PrivateKeyInfo (RFC 5208), for Seq_to_P8_PRIV_KEY_INFO() */
    TLX_P12_CERTIFICATE = 2, /**< a Certificate, for Seq_to_X509_CERT() */
    TLX_P12_CRL = 3,         /**< a CertificateList, for Seq_to_X509_CRL() */
    TLX_P12_SECRET = 4,      /**< the element that a secret bag holds */
    TLX_P12_UNREAD = 5       /**< nothing: a bag or a part of the file that could not be read */
};

/** One thing that a file holds. */
typedef struct P12_ENTRY {
    uint32_t kind;   /**< TLX_P12_... */
    uint32_t status; /**< of TLX_P12_UNREAD why, as open_PKCS12() says; otherwise 0 */
    OBJECT_IDENTIFIER
    *type;               /**< of a secret its type; of TLX_P12_UNREAD what is unknown or does not open: the
                            scheme of encryption, what is unknown in PBES2 (the cipher, the derivation or its
                            function), the type of the bag or of the content; otherwise null */
    OCTET_STRING *value; /**< null for TLX_P12_UNREAD */
    UTF8_STRING *friendlyName; /**< or null */
    OCTET_STRING *localKeyId;  /**< or null */
    int32_t owner; /**< of a certificate the index of the private key that it belongs to; otherwise
                      and without one -1 */
} P12_ENTRY;

/** P12_ENTRY entries. */
typedef STACK P12_ENTRIES;

/**
 * P12_ENTRY and the list of them, which have no encoding. new_P12_ENTRY() sets owner to -1.
 * @{
 */
TLXPKI_API P12_ENTRY *new_P12_ENTRY(void);
TLXPKI_API void clean_P12_ENTRY(P12_ENTRY *entry);
TLXPKI_API void free_P12_ENTRY(P12_ENTRY *entry);
TLXPKI_API P12_ENTRY *dup_P12_ENTRY(const P12_ENTRY *entry);
TLXPKI_API P12_ENTRIES *new_P12_ENTRIES(void);
TLXPKI_API void clean_P12_ENTRIES(P12_ENTRIES *entries);
TLXPKI_API void free_P12_ENTRIES(P12_ENTRIES *entries);
TLXPKI_API P12_ENTRIES *dup_P12_ENTRIES(const P12_ENTRIES *entries);
TLXPKI_API uint32_t get_P12_ENTRIES_count(const P12_ENTRIES *entries);
TLXPKI_API P12_ENTRY *get_P12_ENTRIES_child(const P12_ENTRIES *entries, int32_t index);
TLXPKI_API uint32_t add_P12_ENTRIES_child(P12_ENTRIES *entries, const P12_ENTRY *entry, int32_t index);
TLXPKI_API P12_ENTRY *remove_P12_ENTRIES_child(P12_ENTRIES *entries, int32_t index);
/** @} */

/**
 * Appends an entry.
 * @param kind          TLX_P12_PRIVATE_KEY, TLX_P12_CERTIFICATE, TLX_P12_CRL or TLX_P12_SECRET
 * @param type          of a secret, its type; otherwise null
 * @param value         len octets, which are copied; may be null when len is 0
 * @param friendly_name a text in UTF-8 that ends in a NUL, or null
 * @param owner         of a certificate the index of its private key, or -1
 * @return 0; 1 for a null list or value and when memory runs out
 */
TLXPKI_API uint32_t add_PKCS12_entry(P12_ENTRIES *entries, uint32_t kind, const OBJECT_IDENTIFIER *type,
                                     const uint8_t *value, uint32_t len, const char *friendly_name,
                                     int32_t owner);

/**
 * Checks the code of a file and reads everything that it holds.
 *
 * Passwords are tried in two forms where PKCS #12 wants 16-bit characters: UTF-16 and then octets that were
 * widened one by one, as older programs did; of a password without octets, the empty and the absent one. A
 * file without a code is read without a check, so that a wrong password shows in entries alone.
 *
 * A certificate belongs to the private key with the same localKeyId; without one, to the RSA key with its
 * modulus, the KCDSA key that gives its y, which counts as 100,000 iterations, or the elliptic key that says
 * its public point.
 *
 * @param password     decrypts, and checks the code when mac_password is null
 * @param mac_password checks the code of a file that has a password of its own for it; otherwise null
 * @param out          receives a new list. What cannot be read is an entry TLX_P12_UNREAD with one of these
 * statuses: 0x4D310012 a wrong password or an altered ciphertext; 0x4D31002B parameters or a ciphertext that
 * are broken, or memory ran out; 0x4D310047 too much work; 0x4D310048 a scheme, a content or a bag that is
 * unknown or not available; 0x4D310104 a bag or its contents cannot be decoded, or memory ran out
 * @return 0; 0x4D300049 a null file or out, or a null password with a length; 0x4D300012 the code differs: a
 * wrong password or an altered file; 0x4D300047 the code takes more work than is done for a file; 0x4D300048
 * the file is signed instead, or the code is made in an unknown way; 0x4D300104 the content is missing or is
 * no AuthenticatedSafe; 0x4D30003C memory ran out. A file may take 20,000,000 iterations, a derivation
 * 10,000,000
 */
TLXPKI_API uint32_t open_PKCS12(const P12_PFX *pfx, const char *password, uint32_t password_len,
                                const char *mac_password, uint32_t mac_password_len, P12_ENTRIES **out);

/** How make_PKCS12() protects a file. All zeros is what a file should have today. */
typedef struct P12_SETTINGS {
    const char *keyScheme;  /**< of private keys: a name of get_PKCS8_scheme_name(), "none" for no encryption;
                               null means "pbes2" */
    const char *safeScheme; /**< the same of everything else */
    const char *cipher;     /**< of "pbes2", a name of get_PKCS7_cipher_name(); null means "aes-256-cbc" */
    const char *prf;        /**< of "pbes2", a name of get_PKCS8_prf_name(); null means "sha256" */
    uint32_t iterations;    /**< of each derivation, 1 to 10,000,000; 0 means 65,536 */
    uint32_t macDigest; /**< as for set_PKCS12_mac(), TLX_P12_NO_MAC for no code; 0 means TLX_DIGEST_SHA256 */
} P12_SETTINGS;

/** A file without a code, which nobody can tell from an altered one. */
#define TLX_P12_NO_MAC 0xFFFFFFFFU

/**
 * Makes a file. Private keys go into bags of their own; everything else is encrypted as one part. A key and
 * its certificates without a localKeyId receive the SHA-1 digest of the first of these certificates. With the
 * scheme "none" the file holds its keys in the open, and freeing it does not wipe them.
 * @param settings may be null
 * @param out      receives a new file
 * @return 0; 0x4D320049 null entries or out, or a null password with a length; 0x4D320048 an unknown name or
 * digest, or an algorithm that is not available; 0x4D320047 too many iterations; 0x4D32002B an entry without
 * a value, of a kind that cannot be written, or with an owner that is no private key; 0x4D320103 a name that
 * is no UTF-8, or a member that cannot be encoded; 0x4D32003C memory ran out, or random octets cannot be had
 */
TLXPKI_API uint32_t make_PKCS12(const P12_ENTRIES *entries, const P12_SETTINGS *settings,
                                const char *password, uint32_t password_len, P12_PFX **out);

TLX_END_DECLS

#endif
