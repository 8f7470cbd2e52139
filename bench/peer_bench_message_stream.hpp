// libcrypto's digest, behind plain types.
#pragma once

#include <cstdint>

/// Digests octets `times` times with SHA-256.
bool digest_with_libcrypto(const std::uint8_t *octets, std::uint32_t size, std::uint32_t times);
