#ifndef TLXCRYPTO_BIGINT_H
#define TLXCRYPTO_BIGINT_H

#include <stdint.h>
#include <tlxcrypto/export.h>

TLX_BEGIN_DECLS

/** An unsigned integer of any size. */
typedef struct BIGINT BIGINT;

TLXCRYPTO_API BIGINT *new_BIGINT(void);
TLXCRYPTO_API void clean_BIGINT(BIGINT *number);
TLXCRYPTO_API void free_BIGINT(BIGINT *number);
TLXCRYPTO_API BIGINT *dup_BIGINT(const BIGINT *number);
/** *to = *from. 0, or 1 on a null argument or allocation failure (to is unchanged). */
TLXCRYPTO_API uint32_t copy_BIGINT(BIGINT *to, const BIGINT *from);

/** A new number from len big-endian octets (len 0 gives zero); null on failure. */
TLXCRYPTO_API BIGINT *binary_to_BIGINT(const uint8_t *octets, uint32_t len);
/** Writes exactly len octets, right-aligned with leading zeros. 0, or 1 on a null argument or when it does
 * not fit. */
TLXCRYPTO_API uint32_t BIGINT_to_binary(const BIGINT *number, uint8_t *octets, uint32_t len);
TLXCRYPTO_API BIGINT *hex_to_BIGINT(const char *hex);
/** New upper-case hexadecimal text of an even number of digits ("00" for zero), freed with tlx_free. */
TLXCRYPTO_API char *BIGINT_to_hex(const BIGINT *number);
/** New decimal text, freed with tlx_free. */
TLXCRYPTO_API char *BIGINT_to_decimal(const BIGINT *number);

TLXCRYPTO_API uint32_t set_BIGINT_word(BIGINT *number, uint32_t word);
/** The value when it fits 32 bits, 0xFFFFFFFF when it does not or number is null. */
TLXCRYPTO_API uint32_t get_BIGINT_word(const BIGINT *number);
/** Number of significant bits, 0 for zero and null. */
TLXCRYPTO_API uint32_t get_BIGINT_bits(const BIGINT *number);
/** Contents octets of the number as a DER INTEGER: (bits + 8) / 8, which is 1 for zero. */
TLXCRYPTO_API uint32_t get_BIGINT_der_length(const BIGINT *number);
TLXCRYPTO_API int32_t is_BIGINT_zero(const BIGINT *number);
/** -1, 0 or 1; a null pointer is below every number, two null pointers are equal. */
TLXCRYPTO_API int32_t cmp_BIGINT(const BIGINT *a, const BIGINT *b);

/* Arithmetic: each stores into result, which may be an operand. 0 on success, 1 on failure (result
 * unchanged). */
TLXCRYPTO_API uint32_t add_BIGINT(BIGINT *result, const BIGINT *a, const BIGINT *b);
TLXCRYPTO_API uint32_t sub_BIGINT(BIGINT *result, const BIGINT *a, const BIGINT *b); /* fails when a < b */
TLXCRYPTO_API uint32_t mul_BIGINT(BIGINT *result, const BIGINT *a, const BIGINT *b);
TLXCRYPTO_API uint32_t div_BIGINT(BIGINT *quotient, BIGINT *remainder, const BIGINT *a, const BIGINT *b);
TLXCRYPTO_API uint32_t mod_BIGINT(BIGINT *result, const BIGINT *a, const BIGINT *modulus);
TLXCRYPTO_API uint32_t shl_BIGINT(BIGINT *result, const BIGINT *a, uint32_t bits);
TLXCRYPTO_API uint32_t shr_BIGINT(BIGINT *result, const BIGINT *a, uint32_t bits);
TLXCRYPTO_API uint32_t mod_add_BIGINT(BIGINT *result, const BIGINT *a, const BIGINT *b,
                                      const BIGINT *modulus);
TLXCRYPTO_API uint32_t mod_sub_BIGINT(BIGINT *result, const BIGINT *a, const BIGINT *b,
                                      const BIGINT *modulus);
TLXCRYPTO_API uint32_t mod_mul_BIGINT(BIGINT *result, const BIGINT *a, const BIGINT *b,
                                      const BIGINT *modulus);
/** Constant-time in the exponent for an odd modulus. */
TLXCRYPTO_API uint32_t mod_exp_BIGINT(BIGINT *result, const BIGINT *base, const BIGINT *exponent,
                                      const BIGINT *modulus);
TLXCRYPTO_API uint32_t mod_inverse_BIGINT(BIGINT *result, const BIGINT *a, const BIGINT *modulus);
/** Uniform in 0 .. limit - 1, from the DRBG. */
TLXCRYPTO_API uint32_t random_BIGINT(BIGINT *result, const BIGINT *limit);
/** 1 prime (but for a chance below 2^-80), 0 not, also on failure. */
TLXCRYPTO_API int32_t is_BIGINT_prime(const BIGINT *number);

TLX_END_DECLS

#endif
