/** @file
 * PKCS #12 (RFC 7292): the derivation of keys from passwords (appendix B).
 *
 * - Passwords: a 16-bit password is the big-endian units of its characters with two zero octets after them
 * (RFC 7292, appendix B.1), as ascTouni() makes it. An 8-bit password is octets, which ascTouni() widens.
 * - Secrets: buffers that held a password or derived octets are wiped before they are freed.
 * - Threads: every function may run at once on distinct records and units.
 */
#ifndef TLXPKI_PKCS12_H
#define TLXPKI_PKCS12_H

#include <tlxcrypto/digest.h>
#include <tlxpki/types.h>

/* What derived octets are for (RFC 7292, appendix B.3). */
#define TLX_PKCS12_KEY 1U /**< the key of a cipher */
#define TLX_PKCS12_IV 2U  /**< the initialisation vector of a cipher */
#define TLX_PKCS12_MAC 3U /**< the key of a message authentication code */

TLX_BEGIN_DECLS

/**
 * Derives octets from a 16-bit password.
 * @param password     password_len octets, used as they are; may be null when password_len is 0
 * @param salt         salt_len octets; may be null when salt_len is 0
 * @param id           TLX_PKCS12_KEY, TLX_PKCS12_IV or TLX_PKCS12_MAC
 * @param iterations   how often the digest is applied; 0 counts as 1
 * @param key          receives key_len octets; all zeros on failure
 * @param unit         a unit that init_Digest() gave its digest; afterwards it takes another init_Digest()
 * @return 0; 1 for a null argument, a unit without a digest, a password and salt of 0x7FFFFFFF octets or
 * more, and when memory runs out
 */
TLXPKI_API uint32_t get_PKCS12_key_UNI(const uint8_t *password, uint32_t password_len, const uint8_t *salt,
                                       uint32_t salt_len, uint8_t id, uint32_t iterations, uint32_t key_len,
                                       uint8_t *key, DIGEST_UNIT *unit);
/**
 * Widens an 8-bit password with ascTouni() and calls get_PKCS12_key_UNI(). A null password and one of 0
 * octets derive from the salt alone, without the two zero octets. Returns what get_PKCS12_key_UNI() returns,
 * and 1 for a password of more than 0x7FFFFFFE octets.
 */
TLXPKI_API uint32_t gen_PKCS12_key_ASC(const char *password, uint32_t password_len, const uint8_t *salt,
                                       uint32_t salt_len, uint8_t id, uint32_t iterations, uint32_t key_len,
                                       uint8_t *key, DIGEST_UNIT *unit);

TLX_END_DECLS

#endif
