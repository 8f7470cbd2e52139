#ifndef TLXCRYPTO_HMAC_H
#define TLXCRYPTO_HMAC_H

#include <stdint.h>
#include <tlxcrypto/export.h>

TLX_BEGIN_DECLS

typedef struct HMAC_UNIT HMAC_UNIT;

TLXCRYPTO_API HMAC_UNIT *new_HMAC_UNIT(void);
TLXCRYPTO_API void free_HMAC_UNIT(HMAC_UNIT *unit);
TLXCRYPTO_API uint32_t init_HMAC(HMAC_UNIT *unit, uint32_t digest_id, const uint8_t *key, uint32_t key_len);
/** Starts the next message under the same key, without hashing the key again. 0, or 1 on a unit without a key. */
TLXCRYPTO_API uint32_t reset_HMAC(HMAC_UNIT *unit);
TLXCRYPTO_API uint32_t update_HMAC(HMAC_UNIT *unit, const uint8_t *data, uint32_t len);
TLXCRYPTO_API uint32_t final_HMAC(HMAC_UNIT *unit, uint8_t *mac, uint32_t *mac_len);
/** Octets of a code; 0 for an identifier that is unknown or not available. */
TLXCRYPTO_API uint32_t get_HMAC_length(uint32_t digest_id);
/** One-shot. 0, or 1 on failure (*mac_len is 0 then). */
TLXCRYPTO_API uint32_t compute_HMAC(uint32_t digest_id, const uint8_t *key, uint32_t key_len,
                                    const uint8_t *data, uint32_t len, uint8_t *mac, uint32_t *mac_len);

TLX_END_DECLS

#endif
