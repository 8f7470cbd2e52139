/** @file
 * BIGINT, unsigned integers of any size up to 2^32 - 64 bits.
 *
 * Numbers may be secret: whatever memory held one is wiped before it is freed. Only mod_exp_BIGINT and
 * mod_inverse_BIGINT take care not to reveal secret operands by the time they take.
 *
 * Thread safety: distinct numbers may be used on distinct threads, and one number may be read on several.
 */
#ifndef TLXCRYPTO_BIGINT_H
#define TLXCRYPTO_BIGINT_H

#include <stdint.h>
#include <tlxcrypto/export.h>

TLX_BEGIN_DECLS

/** An unsigned integer of any size. */
typedef struct BIGINT BIGINT;

/** A new zero, freed with free_BIGINT; null on allocation failure. */
TLXCRYPTO_API BIGINT *new_BIGINT(void);

/** Wipes a number; it is zero afterwards. Null is ignored. */
TLXCRYPTO_API void clean_BIGINT(BIGINT *number);

/** Wipes and frees a number. Null is ignored. */
TLXCRYPTO_API void free_BIGINT(BIGINT *number);

/** A new number of the same value; null on null or allocation failure. */
TLXCRYPTO_API BIGINT *dup_BIGINT(const BIGINT *number);

/** *to = *from. Returns 0, or 1 on a null argument or allocation failure (to is unchanged then). */
TLXCRYPTO_API uint32_t copy_BIGINT(BIGINT *to, const BIGINT *from);

/** A new number from len big-endian octets, leading zeros or not; len 0 gives zero.
 *
 * @param octets  May be null when len is 0.
 * @return The number, or null when octets is null, the number is too large, or there is not enough memory.
 */
TLXCRYPTO_API BIGINT *binary_to_BIGINT(const uint8_t *octets, uint32_t len);

/** Writes exactly len big-endian octets, right-aligned with leading zeros.
 *
 * @return 0, or 1 on a null argument or when the number takes more than len octets (nothing is written then).
 */
TLXCRYPTO_API uint32_t BIGINT_to_binary(const BIGINT *number, uint8_t *octets, uint32_t len);

/** A new number from hexadecimal digits of either case, an odd or even number of them.
 *
 * @return The number, or null when hex is null or empty, holds anything else, or there is not enough memory.
 */
TLXCRYPTO_API BIGINT *hex_to_BIGINT(const char *hex);

/** New upper-case hexadecimal text of the fewest whole octets ("00" for zero), freed with tlx_free; null on
 * null or allocation failure. */
TLXCRYPTO_API char *BIGINT_to_hex(const BIGINT *number);

/** New decimal text, freed with tlx_free; null on null or allocation failure. Takes time that grows with the
 * square of the number's length. */
TLXCRYPTO_API char *BIGINT_to_decimal(const BIGINT *number);

/** *number = word. Returns 0, or 1 on null. */
TLXCRYPTO_API uint32_t set_BIGINT_word(BIGINT *number, uint32_t word);

/** The value when it fits 32 bits; 0xFFFFFFFF when it does not, and for null. */
TLXCRYPTO_API uint32_t get_BIGINT_word(const BIGINT *number);

/** Number of significant bits, 0 for zero and null. */
TLXCRYPTO_API uint32_t get_BIGINT_bits(const BIGINT *number);

/** Contents octets of the number as a DER INTEGER (X.690, 8.3): (bits + 8) / 8, which is 1 for zero; 0 for
 * null. */
TLXCRYPTO_API uint32_t get_BIGINT_der_length(const BIGINT *number);

/** 1 for zero, 0 for any other number and for null. */
TLXCRYPTO_API int32_t is_BIGINT_zero(const BIGINT *number);

/** -1, 0 or 1 for a below, equal to or above b. A null pointer is below every number; two are equal. */
TLXCRYPTO_API int32_t cmp_BIGINT(const BIGINT *a, const BIGINT *b);

/** @name Arithmetic
 * Each stores into result, which may be one of the operands, and returns 0; or it returns 1 on a null
 * argument, a result that is not defined or too large, or allocation failure, and result is unchanged.
 * @{ */

/** a + b */
TLXCRYPTO_API uint32_t add_BIGINT(BIGINT *result, const BIGINT *a, const BIGINT *b);
/** a - b; 1 when a is below b. */
TLXCRYPTO_API uint32_t sub_BIGINT(BIGINT *result, const BIGINT *a, const BIGINT *b);
/** a * b */
TLXCRYPTO_API uint32_t mul_BIGINT(BIGINT *result, const BIGINT *a, const BIGINT *b);
/** a / b, rounded down, and what remains. Either result may be null, but they must be two; 1 when b is zero.
 */
TLXCRYPTO_API uint32_t div_BIGINT(BIGINT *quotient, BIGINT *remainder, const BIGINT *a, const BIGINT *b);
/** a modulo modulus; 1 when modulus is zero, as in all that follow. */
TLXCRYPTO_API uint32_t mod_BIGINT(BIGINT *result, const BIGINT *a, const BIGINT *modulus);
/** a * 2^bits */
TLXCRYPTO_API uint32_t shl_BIGINT(BIGINT *result, const BIGINT *a, uint32_t bits);
/** a / 2^bits, rounded down. */
TLXCRYPTO_API uint32_t shr_BIGINT(BIGINT *result, const BIGINT *a, uint32_t bits);
/** a + b modulo modulus */
TLXCRYPTO_API uint32_t mod_add_BIGINT(BIGINT *result, const BIGINT *a, const BIGINT *b,
                                      const BIGINT *modulus);
/** a - b modulo modulus, which is never negative. */
TLXCRYPTO_API uint32_t mod_sub_BIGINT(BIGINT *result, const BIGINT *a, const BIGINT *b,
                                      const BIGINT *modulus);
/** a * b modulo modulus */
TLXCRYPTO_API uint32_t mod_mul_BIGINT(BIGINT *result, const BIGINT *a, const BIGINT *b,
                                      const BIGINT *modulus);
/** base^exponent modulo modulus. The time does not depend on the exponent's bits when modulus is odd. */
TLXCRYPTO_API uint32_t mod_exp_BIGINT(BIGINT *result, const BIGINT *base, const BIGINT *exponent,
                                      const BIGINT *modulus);
/** The number whose product with a is 1 modulo modulus; 1 when there is none. */
TLXCRYPTO_API uint32_t mod_inverse_BIGINT(BIGINT *result, const BIGINT *a, const BIGINT *modulus);
/** A random number, each of 0 .. limit - 1 as likely as the other; 1 when limit is zero. */
TLXCRYPTO_API uint32_t random_BIGINT(BIGINT *result, const BIGINT *limit);
/** @} */

/** Whether a number is prime, by Miller-Rabin tests with random bases.
 *
 * @return 1 when it is (a composite number passes with a chance below 2^-80); 0 when it is not, and on
 * failure.
 */
TLXCRYPTO_API int32_t is_BIGINT_prime(const BIGINT *number);

TLX_END_DECLS

#endif
