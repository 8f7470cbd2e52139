/** @file
 * Key agreement by X25519 and X448 (RFC 7748).
 *
 * A key never changes, so that a copy is the same key with one more owner. Private octets are wiped before
 * they are freed.
 *
 * - Arguments: octets are copied, and are as many as the curve's keys have. out receives a key, freed with
 *   free_XDH_KEY(), or null.
 * - Failure: functions return 0; 1 for a bad argument and when memory runs out; or TLX_XDH_BAD_KEY.
 *   binary_to_XDH_KEY() returns null for a bad argument and when memory runs out. get_ functions return 0 or
 *   null for null.
 * - Threads: several threads may use one key at the same time.
 */
#ifndef TLXCRYPTO_XDH_H
#define TLXCRYPTO_XDH_H

#include <stdint.h>
#include <tlxcrypto/export.h>

/* Curves, with the octets of a key, public or private, and of a shared secret. */
#define TLX_CURVE_X25519 125519U /**< 32 */
#define TLX_CURVE_X448 1448U     /**< 56 */

#define TLX_XDH_MAX_LENGTH 56 /**< octets of the longest key and shared secret */

/** The shared secret would be zeros: the peer's point is one of small order (RFC 7748, section 6). */
#define TLX_XDH_BAD_KEY 3U

TLX_BEGIN_DECLS

/** A public key, or a private key with its public one. */
typedef struct XDH_KEY XDH_KEY;

/** Makes a public key.
 * @param curve TLX_CURVE_X25519 or TLX_CURVE_X448 */
TLXCRYPTO_API XDH_KEY *binary_to_XDH_KEY(uint32_t curve, const uint8_t *point, uint32_t point_len);
/** Makes a private key and computes its public one. */
TLXCRYPTO_API uint32_t private_binary_to_XDH_KEY(uint32_t curve, const uint8_t *octets, uint32_t len,
                                                 XDH_KEY **out);
/** Makes a random private key. */
TLXCRYPTO_API uint32_t gen_XDH_KEY(uint32_t curve, XDH_KEY **out);
/** Returns the key itself with one more owner, who frees it with free_XDH_KEY(). Null for null. */
TLXCRYPTO_API XDH_KEY *dup_XDH_KEY(XDH_KEY *key);
/** Frees a key with its last owner. Ignores null. */
TLXCRYPTO_API void free_XDH_KEY(XDH_KEY *key);

/** Returns the TLX_CURVE_ of a key. */
TLXCRYPTO_API uint32_t get_XDH_KEY_curve(const XDH_KEY *key);
/** Returns the octets of a key, public or private, and of a shared secret: 32 or 56. */
TLXCRYPTO_API uint32_t get_XDH_KEY_length(const XDH_KEY *key);
/** Returns the public key, which stays the key's, in get_XDH_KEY_length() octets. */
TLXCRYPTO_API const uint8_t *get_XDH_KEY_point(const XDH_KEY *key);
/** Returns the private key likewise; null for a public key. */
TLXCRYPTO_API const uint8_t *get_XDH_KEY_private(const XDH_KEY *key);

/** Agrees on a secret. Returns 1 also for a peer on another curve, and for a public key in place of a private
 * one.
 * @param secret receives get_XDH_KEY_length() octets; zeros on failure */
TLXCRYPTO_API uint32_t compute_XDH(const XDH_KEY *key, const XDH_KEY *peer, uint8_t *secret);

TLX_END_DECLS

#endif
