/** @file
 * Keys from passwords: PBKDF2 (RFC 8018, section 5.2) and scrypt (RFC 7914). Keys from shared secrets: HKDF
 * (RFC 5869) and the KDF of ANSI X9.63 (SEC 1, section 3.6.1).
 *
 * - Arguments: password, salt, secret and info are octets, and may be null when their length is 0. out
 *   receives out_len octets, at least 1.
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

/** Derives octets by HKDF, extracting and expanding.
 * @param digest_id the digest of the HMAC (not HAS-160 and no HMAC identifier)
 * @param salt      without octets it stands for zeros
 * @param out_len   at most 255 times the digest's octets */
TLXCRYPTO_API uint32_t compute_HKDF(uint32_t digest_id, const uint8_t *secret, uint32_t secret_len,
                                    const uint8_t *salt, uint32_t salt_len, const uint8_t *info,
                                    uint32_t info_len, uint8_t *out, uint32_t out_len);

/** Derives octets by the KDF of ANSI X9.63.
 * @param digest_id the digest, likewise
 * @param secret    at least 1 octet
 * @param info      what both sides know besides, SharedInfo */
TLXCRYPTO_API uint32_t compute_X963_KDF(uint32_t digest_id, const uint8_t *secret, uint32_t secret_len,
                                        const uint8_t *info, uint32_t info_len, uint8_t *out,
                                        uint32_t out_len);

TLX_END_DECLS

#endif
