#ifndef TLXCRYPTO_DIGEST_H
#define TLXCRYPTO_DIGEST_H

#include <stdint.h>
#include <tlxcrypto/export.h>

#define TLX_DIGEST_SHA1 0x05000100U
#define TLX_DIGEST_SHA224 0x05000200U
#define TLX_DIGEST_SHA256 0x05000300U
#define TLX_DIGEST_SHA384 0x05000400U
#define TLX_DIGEST_SHA512 0x05000500U
#define TLX_DIGEST_MD5 0x06000100U
#define TLX_DIGEST_HAS160 0x07000100U
#define TLX_DIGEST_MDC2 0x08000100U
#define TLX_HMAC_SHA1 0x15000100U

/** No digest of this library is longer. */
#define TLX_DIGEST_MAX_LENGTH 64

TLX_BEGIN_DECLS

typedef struct DIGEST_UNIT DIGEST_UNIT;

/** Output octets of a digest; 0 for an identifier that is unknown or not available. */
TLXCRYPTO_API uint32_t get_DigestLength(uint32_t digest_id);
/** Block octets of a digest; 0 likewise. */
TLXCRYPTO_API uint32_t get_DigestBlockLength(uint32_t digest_id);
/** One-shot. 0, or 1 on failure (*digest_len is 0 then). */
TLXCRYPTO_API uint32_t Digest(uint32_t digest_id, const uint8_t *data, uint32_t len, uint8_t *digest,
                              uint32_t *digest_len);

TLXCRYPTO_API DIGEST_UNIT *new_DIGEST_UNIT(void);
TLXCRYPTO_API void free_DIGEST_UNIT(DIGEST_UNIT *unit);
TLXCRYPTO_API uint32_t init_Digest(DIGEST_UNIT *unit, uint32_t digest_id);
TLXCRYPTO_API uint32_t update_Digest(DIGEST_UNIT *unit, const uint8_t *data, uint32_t len);
TLXCRYPTO_API uint32_t final_Digest(DIGEST_UNIT *unit, uint8_t *digest, uint32_t *digest_len);
/** The digest a unit was initialised for, 0 before. */
TLXCRYPTO_API uint32_t get_DIGEST_UNIT_id(const DIGEST_UNIT *unit);

TLX_END_DECLS

#endif
