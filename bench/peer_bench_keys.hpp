// libcrypto's derivations and encrypted keys, behind plain types.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

using Octets = std::vector<std::uint8_t>;

bool peer_pbkdf2(const char *digest, const char *password, std::size_t password_len, const std::uint8_t *salt,
                 std::size_t salt_len, int iterations, std::uint8_t *out, std::size_t out_len);
bool peer_pkcs12_key(const char *password, std::size_t password_len, const std::uint8_t *salt,
                     std::size_t salt_len, int iterations, std::uint8_t *out, std::size_t out_len);

/// A key of RSA-2048, encrypted by a scheme of PKCS #12 or, without a name, by PBES2 with AES-256 and
/// SHA-256.
Octets peer_encrypted_key(const char *scheme, const char *password, int iterations);
/// Decrypts and decodes it and frees the key.
bool peer_open_key(const Octets &container, const char *password);
