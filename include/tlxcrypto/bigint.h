/** @file
 * BIGINT: unsigned integers of up to 2^32 - 64 bits.
 *
 * - Ownership: the caller frees a new number with free_BIGINT() and a new text with tlx_free().
 * - Failure: functions that make something return null for a null argument and when memory runs out. All
 *   others return 0, or 1 for the same reasons, unless they say otherwise. On failure nothing changes.
 * - Secrets: every block that held a number is wiped before it is freed. Only mod_exp_BIGINT() and
 *   mod_inverse_BIGINT() take care that their time does not reveal secret operands.
 * - Threads: distinct numbers may be used at the same time, and several threads may read one number.
 */
#ifndef TLXCRYPTO_BIGINT_H
#define TLXCRYPTO_BIGINT_H

#include <stdint.h>
#include <tlxcrypto/export.h>

TLX_BEGIN_DECLS

/** An unsigned integer of any size. */
typedef struct BIGINT BIGINT;

/** Makes a zero. */
TLXCRYPTO_API BIGINT *new_BIGINT(void);
/** Wipes a number and makes it zero. Ignores null. */
TLXCRYPTO_API void clean_BIGINT(BIGINT *number);
/** Wipes and frees a number. Ignores null. */
TLXCRYPTO_API void free_BIGINT(BIGINT *number);
/** Makes a copy. */
TLXCRYPTO_API BIGINT *dup_BIGINT(const BIGINT *number);
/** *to = *from. */
TLXCRYPTO_API uint32_t copy_BIGINT(BIGINT *to, const BIGINT *from);

/** Makes a number from len big-endian octets; leading zeros may be there. octets may be null when len is 0,
 * which gives zero. Returns null also when the number is too large. */
TLXCRYPTO_API BIGINT *binary_to_BIGINT(const uint8_t *octets, uint32_t len);

/** Writes len big-endian octets, with leading zeros. Returns 1 also when the number takes more octets. */
TLXCRYPTO_API uint32_t BIGINT_to_binary(const BIGINT *number, uint8_t *octets, uint32_t len);

/** Makes a number from hexadecimal digits of either case, an odd or even number of them. Returns null also
 * when the text is empty or holds any other character. */
TLXCRYPTO_API BIGINT *hex_to_BIGINT(const char *hex);

/** Makes upper-case hexadecimal text of the fewest whole octets ("00" for zero). */
TLXCRYPTO_API char *BIGINT_to_hex(const BIGINT *number);
/** Makes decimal text. The time grows with the square of the number's length. */
TLXCRYPTO_API char *BIGINT_to_decimal(const BIGINT *number);

/** *number = word. */
TLXCRYPTO_API uint32_t set_BIGINT_word(BIGINT *number, uint32_t word);
/** Returns the value; 0xFFFFFFFF when it takes more than 32 bits, and for null. */
TLXCRYPTO_API uint32_t get_BIGINT_word(const BIGINT *number);
/** Returns the number of significant bits; 0 for zero and null. */
TLXCRYPTO_API uint32_t get_BIGINT_bits(const BIGINT *number);
/** Returns the contents octets of a DER INTEGER (X.690, 8.3), (bits + 8) / 8; 0 for null. */
TLXCRYPTO_API uint32_t get_BIGINT_der_length(const BIGINT *number);
/** Returns 1 for zero, 0 for any other number and for null. */
TLXCRYPTO_API int32_t is_BIGINT_zero(const BIGINT *number);
/** Returns -1, 0 or 1 for a below, equal to or above b. Null is below every number and equal to null. */
TLXCRYPTO_API int32_t cmp_BIGINT(const BIGINT *a, const BIGINT *b);

/** @name Arithmetic
 * Each function stores into result, which may be one of the operands, and returns 1 also for a result that is
 * too large or not defined. No result modulo zero is defined.
 * @{ */

/** a + b */
TLXCRYPTO_API uint32_t add_BIGINT(BIGINT *result, const BIGINT *a, const BIGINT *b);
/** a - b. Returns 1 when a is below b. */
TLXCRYPTO_API uint32_t sub_BIGINT(BIGINT *result, const BIGINT *a, const BIGINT *b);
/** a * b */
TLXCRYPTO_API uint32_t mul_BIGINT(BIGINT *result, const BIGINT *a, const BIGINT *b);
/** a / b, rounded down, and the remainder. One result may be null. Returns 1 when both are one number
 * or b is zero. */
TLXCRYPTO_API uint32_t div_BIGINT(BIGINT *quotient, BIGINT *remainder, const BIGINT *a, const BIGINT *b);
/** a modulo modulus */
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
/** The number whose product with a is 1 modulo modulus. Returns 1 when there is none. */
TLXCRYPTO_API uint32_t mod_inverse_BIGINT(BIGINT *result, const BIGINT *a, const BIGINT *modulus);
/** A random number; each of 0 .. limit - 1 is equally likely. Returns 1 when limit is zero. */
TLXCRYPTO_API uint32_t random_BIGINT(BIGINT *result, const BIGINT *limit);
/** @} */

/** Tests whether a number is prime, by Miller-Rabin with random bases. Returns 1 for a prime number (and for
 * a composite one with a chance below 2^-80), 0 for any other number and on failure. */
TLXCRYPTO_API int32_t is_BIGINT_prime(const BIGINT *number);

TLX_END_DECLS

#endif
