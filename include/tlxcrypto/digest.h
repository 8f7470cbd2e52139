/** @file
 * Message digests: MD5 (RFC 1321), SHA-1 and SHA-2 (FIPS 180-4), SHA-3 and SHAKE256 with 64 octets (FIPS
 * 202), HAS-160 (TTAS.KO-12.0011), and MD4 (RFC 1320) and MDC-2 (ISO/IEC 10118-2) where the installed
 * libcrypto has them.
 *
 * - Arguments: data is a message or its next len octets, and may be null when len is 0. digest receives
 *   get_DigestLength() octets, at most TLX_DIGEST_MAX_LENGTH. digest_len receives their number, 0 on failure.
 * - Failure: functions return 0, or 1 for a null argument, an identifier that is unknown or not available, a
 *   unit that is not between init and final, a failing algorithm and when memory runs out. get_ functions
 *   return 0 instead, and new_DIGEST_UNIT() null.
 * - Threads: distinct units may be used at the same time; one unit by one thread at a time.
 */
#ifndef TLXCRYPTO_DIGEST_H
#define TLXCRYPTO_DIGEST_H

#include <stdint.h>
#include <tlxcrypto/export.h>

/* Digest identifiers. */
#define TLX_DIGEST_SHA1 0x05000100U
#define TLX_DIGEST_SHA224 0x05000200U
#define TLX_DIGEST_SHA256 0x05000300U
#define TLX_DIGEST_SHA384 0x05000400U
#define TLX_DIGEST_SHA512 0x05000500U
#define TLX_DIGEST_SHA512_224 0x05000700U
#define TLX_DIGEST_SHA512_256 0x05000800U
#define TLX_DIGEST_MD5 0x06000100U
#define TLX_DIGEST_MD4 0x06000200U
#define TLX_DIGEST_HAS160 0x07000100U
#define TLX_DIGEST_MDC2 0x08000100U
#define TLX_DIGEST_SHA3_224 0x09000200U
#define TLX_DIGEST_SHA3_256 0x09000300U
#define TLX_DIGEST_SHA3_384 0x09000400U
#define TLX_DIGEST_SHA3_512 0x09000500U
#define TLX_DIGEST_SHAKE256 \
    0x09000600U                   /**< 64 octets (RFC 8419, section 2.3); no digest of HMAC and of RSA */
#define TLX_HMAC_SHA1 0x15000100U /**< HMAC with SHA-1: for the functions of hmac.h, not a digest */

/** Octets of the longest digest. */
#define TLX_DIGEST_MAX_LENGTH 64

TLX_BEGIN_DECLS

/** A running digest. */
typedef struct DIGEST_UNIT DIGEST_UNIT;

/** Returns the octets of a digest. */
TLXCRYPTO_API uint32_t get_DigestLength(uint32_t digest_id);
/** Returns the octets of a digest's input block: 64, for SHA-384 and all of SHA-512 128, for SHA-3 144, 136,
 * 104 and 72, for SHAKE256 136. */
TLXCRYPTO_API uint32_t get_DigestBlockLength(uint32_t digest_id);

/** Digests a message in one call. */
TLXCRYPTO_API uint32_t Digest(uint32_t digest_id, const uint8_t *data, uint32_t len, uint8_t *digest,
                              uint32_t *digest_len);

/** Makes a unit for init_Digest(), freed with free_DIGEST_UNIT(). */
TLXCRYPTO_API DIGEST_UNIT *new_DIGEST_UNIT(void);
/** Wipes and frees a unit. Ignores null. */
TLXCRYPTO_API void free_DIGEST_UNIT(DIGEST_UNIT *unit);

/** Starts the next message on a unit in any state. On failure the unit takes no data. */
TLXCRYPTO_API uint32_t init_Digest(DIGEST_UNIT *unit, uint32_t digest_id);
/** Adds octets to the message. */
TLXCRYPTO_API uint32_t update_Digest(DIGEST_UNIT *unit, const uint8_t *data, uint32_t len);
/** Ends the message; the next one takes another init_Digest(). */
TLXCRYPTO_API uint32_t final_Digest(DIGEST_UNIT *unit, uint8_t *digest, uint32_t *digest_len);

/** Returns the identifier of the last init_Digest(); 0 before the first one and when the last one failed. */
TLXCRYPTO_API uint32_t get_DIGEST_UNIT_id(const DIGEST_UNIT *unit);

TLX_END_DECLS

#endif
