/** @file
 * PKCS #12 (RFC 7292): the derivation of keys from passwords (appendix B), and the code that protects a whole
 * file (section 4; PBMAC1 of RFC 9579 is read).
 *
 * - Passwords: a 16-bit password is the big-endian units of its characters with two zero octets after them
 * (RFC 7292, appendix B.1), as ascTouni() makes it. An 8-bit password is octets, which ascTouni() widens.
 * - Secrets: buffers that held a password or derived octets are wiped before they are freed.
 * - Threads: every function may run at once on distinct records and units.
 */
#ifndef TLXPKI_PKCS12_H
#define TLXPKI_PKCS12_H

#include <tlxcrypto/digest.h>
#include <tlxpki/pkcs12_types.h>

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

/**
 * Computes the message authentication code of a file and stores it in the MAC data, which is made when it is
 * missing. MAC data that has a salt or an iteration count keeps salt, count and digest, and only gets a new
 * code; so do the parameters of PBMAC1.
 * @param pfx          a file whose authSafe is data
 * @param password     an 8-bit password as for gen_PKCS12_key_ASC()
 * @param salt         salt_len octets, or null for random ones. Where MAC data gets its parameters here, the
 * call copies the salt and frees it with tlx_free(), also when it fails; otherwise the salt stays the
 * caller's
 * @param salt_len     0 means 8, also for the octets at salt
 * @param iterations   stored as a number of one octet less than its hexadecimal digits call for: 2 to 16
 * become 0, of 256 to 271 the last octet remains, and 0 and 1 are not stored. The code is computed with what
 * is stored, where 0 counts as 1. At most 10,000,000
 * @param digest_id    TLX_DIGEST_SHA1 (also for 0), _SHA256, _SHA384, _SHA512 or _HAS160
 * @return 0; 0x4D10000D for a null file, a digest that is none of the five, and when memory runs out;
 * 0x4D10000E when the code cannot be computed (see verify_PKCS12_mac()) or stored
 */
TLXPKI_API uint32_t set_PKCS12_mac(P12_PFX *pfx, const char *password, uint32_t password_len, uint8_t *salt,
                                   uint32_t salt_len, uint32_t iterations, uint32_t digest_id);
/**
 * Compares the stored code of a file with the one of a password.
 * @param password an 8-bit password as for gen_PKCS12_key_ASC(); PBMAC1 takes its octets as they are
 * @return 0 when they agree; 0xFFFFFFFF when they differ; 1 for a null file, one without MAC data and one
 * whose code cannot be computed: authSafe is not data, the digest is unknown, the parameters of PBMAC1 name
 * an unknown function or a key of fewer than 20 octets or more than 64, there are more than 10,000,000
 * iterations, or memory ran out
 */
TLXPKI_API uint32_t verify_PKCS12_mac(const P12_PFX *pfx, const char *password, uint32_t password_len);

TLX_END_DECLS

#endif
