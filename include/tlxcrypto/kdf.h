/** @file
 * Keys from passwords: PBKDF2 (RFC 8018, section 5.2) and scrypt (RFC 7914).
 *
 * - Arguments: password and salt are octets, and may be null when their length is 0. out receives out_len
 *   octets, at least 1.
 * - Failure: functions return 0, or 1 for a null argument, a number that is out of range, a digest that is
 *   unknown or not available, and when memory runs out. out holds zeros then.
 * - Threads: every function may be called from any thread.
 */
#ifndef TLXCRYPTO_KDF_H
#define TLXCRYPTO_KDF_H

#include <stdint.h>
#include <tlxcrypto/export.h>

TLX_BEGIN_DECLS

/** Derives octets by PBKDF2 with HMAC.
 * @param digest_id  the digest of the HMAC, as hmac.h takes it
 * @param iterations 1 to 0x7FFFFFFF */
TLXCRYPTO_API uint32_t compute_PBKDF2(uint32_t digest_id, const uint8_t *password, uint32_t password_len,
                                      const uint8_t *salt, uint32_t salt_len, uint32_t iterations,
                                      uint8_t *out, uint32_t out_len);

/** Derives octets by scrypt, which takes 128 * block_size * (cost + parallelization) octets of memory.
 * @param cost            N, a power of 2 above 1
 * @param block_size      r
 * @param parallelization p; p * r is below 2^30
 * @param most_memory     octets; the function fails before it takes more */
TLXCRYPTO_API uint32_t compute_SCRYPT(const uint8_t *password, uint32_t password_len, const uint8_t *salt,
                                      uint32_t salt_len, uint64_t cost, uint32_t block_size,
                                      uint32_t parallelization, uint64_t most_memory, uint8_t *out,
                                      uint32_t out_len);

TLX_END_DECLS

#endif
