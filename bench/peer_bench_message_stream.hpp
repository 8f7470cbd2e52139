// libcrypto's digest and signed messages, behind plain types.
#pragma once

#include <cstdint>

/// Digests octets `times` times with SHA-256.
bool digest_with_libcrypto(const std::uint8_t *octets, std::uint32_t size, std::uint32_t times);

/// Signs octets, `times` times, with RSA-2048 and SHA-256 in a message that is dropped as it is written.
bool sign_with_libcrypto(const std::uint8_t *octets, std::uint32_t size, std::uint32_t times);

/// Reads a message with its content and verifies the signature, but no path.
bool verify_with_libcrypto(const std::uint8_t *message, std::size_t size);
