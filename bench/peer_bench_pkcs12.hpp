// libcrypto's PKCS #12, behind plain types.
#pragma once

#include <cstdint>
#include <vector>

using Octets = std::vector<std::uint8_t>;

/// Derives the key of a MAC with a digest that libcrypto names.
bool derive_mac_key(const char *digest, Octets &password, Octets &salt, int iterations, Octets &key);
