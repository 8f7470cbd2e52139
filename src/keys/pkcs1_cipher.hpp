// The encryption of "RSA PRIVATE KEY" files that predates PKCS #8: DES-EDE3-CBC under a key derived with MD5
// from the password and the initialisation vector.
#pragma once

#include "der/buffer.hpp"
#include "der/types.hpp"

namespace tlx {

/// Octets of the initialisation vector, which is also the salt of the key derivation.
constexpr std::size_t kPemIvLength = 8;

/// Derives `len` octets into `key`. False when memory runs out, which a
/// password of at most 1000 octets takes none of here, or MD5 is not available; the key is all zeros then.
[[nodiscard]] bool derive_pem_key(Bytes password, const u8 *salt, u8 *key, std::size_t len) noexcept;

enum class PemCipherResult : u8 { done, no_memory, wrong_key };

/// Encrypts into `out`, which has room for `in` and one block more.
[[nodiscard]] PemCipherResult encrypt_pem_key(Bytes password, const u8 *iv, Bytes in, u8 *out,
                                              u32 &out_len) noexcept;
/// Decrypts into `out`, which has as much room as `in`.
[[nodiscard]] PemCipherResult decrypt_pem_key(Bytes password, const u8 *iv, Bytes in, u8 *out,
                                              u32 &out_len) noexcept;

}  // namespace tlx
