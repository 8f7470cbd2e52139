// libcrypto's ciphers and messages, behind plain types.
#pragma once

#include <cstdint>

/// Encrypts or decrypts octets `times` times with AES-256 into one buffer.
bool cipher_with_libcrypto(bool gcm, bool encrypts, const std::uint8_t *octets, std::uint32_t size,
                           std::uint32_t times);

/// Makes an enveloped message of octets, `times` times, for a key encryption key, and opens it.
bool message_with_libcrypto(bool gcm, const std::uint8_t *octets, std::uint32_t size, std::uint32_t times);
