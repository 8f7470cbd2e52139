/** @file
 * Message digests: MD5 (RFC 1321), SHA-1 and SHA-2 (FIPS 180-4), HAS-160 (TTAS.KO-12.0011), and MDC-2
 * (ISO/IEC 10118-2) where the installed libcrypto has it.
 *
 * Thread safety: the functions may be called from any thread, on distinct units.
 */
#ifndef TLXCRYPTO_DIGEST_H
#define TLXCRYPTO_DIGEST_H

#include <stdint.h>
#include <tlxcrypto/export.h>

/** @name Digest identifiers
 * @{ */
#define TLX_DIGEST_SHA1 0x05000100U
#define TLX_DIGEST_SHA224 0x05000200U
#define TLX_DIGEST_SHA256 0x05000300U
#define TLX_DIGEST_SHA384 0x05000400U
#define TLX_DIGEST_SHA512 0x05000500U
#define TLX_DIGEST_MD5 0x06000100U
#define TLX_DIGEST_HAS160 0x07000100U
#define TLX_DIGEST_MDC2 0x08000100U
/** Names HMAC with SHA-1; known to the functions of hmac.h, not a digest. */
#define TLX_HMAC_SHA1 0x15000100U
/** @} */

/** No digest of this library is longer. */
#define TLX_DIGEST_MAX_LENGTH 64

TLX_BEGIN_DECLS

/** A running digest. */
typedef struct DIGEST_UNIT DIGEST_UNIT;

/** Output octets of a digest; 0 for an identifier that is unknown or not available. */
TLXCRYPTO_API uint32_t get_DigestLength(uint32_t digest_id);

/** Octets of the blocks in which a digest takes its input (64, or 128 for SHA-384 and SHA-512); 0 likewise.
 */
TLXCRYPTO_API uint32_t get_DigestBlockLength(uint32_t digest_id);

/** Digests len octets in one call.
 *
 * @param data        The message; may be null when len is 0.
 * @param digest      Receives get_DigestLength octets; TLX_DIGEST_MAX_LENGTH are always enough.
 * @param digest_len  Receives their number.
 * @return 0, or 1 on a null argument, an identifier that is unknown or not available, or a failure of the
 *         algorithm; *digest_len is 0 then.
 */
TLXCRYPTO_API uint32_t Digest(uint32_t digest_id, const uint8_t *data, uint32_t len, uint8_t *digest,
                              uint32_t *digest_len);

/** A new unit, to be initialised; freed with free_DIGEST_UNIT. Null on allocation failure. */
TLXCRYPTO_API DIGEST_UNIT *new_DIGEST_UNIT(void);

/** Wipes and frees a unit. Null is ignored. */
TLXCRYPTO_API void free_DIGEST_UNIT(DIGEST_UNIT *unit);

/** Starts a digest, whatever state the unit is in. A unit may be used for any number of messages.
 *
 * @return 0, or 1 on a null unit, an identifier that is unknown or not available, or allocation failure; the
 * unit takes no data then.
 */
TLXCRYPTO_API uint32_t init_Digest(DIGEST_UNIT *unit, uint32_t digest_id);

/** Adds the next len octets of the message; data may be null when len is 0.
 *
 * @return 0, or 1 on a null argument or a unit that is not between init and final.
 */
TLXCRYPTO_API uint32_t update_Digest(DIGEST_UNIT *unit, const uint8_t *data, uint32_t len);

/** Ends the message. The unit must be initialised again before it takes another.
 *
 * @param digest      As for Digest.
 * @param digest_len  As for Digest.
 * @return 0, or 1 on a null argument or a unit that is not between init and final; *digest_len is 0 then.
 */
TLXCRYPTO_API uint32_t final_Digest(DIGEST_UNIT *unit, uint8_t *digest, uint32_t *digest_len);

/** The identifier that the unit was last initialised with, also after final_Digest; 0 for null, before the
 * first init and after one that failed. */
TLXCRYPTO_API uint32_t get_DIGEST_UNIT_id(const DIGEST_UNIT *unit);

TLX_END_DECLS

#endif
