// PKCS #12 of libcrypto, behind plain types.
#pragma once

#include <cstdint>
#include <vector>

using Octets = std::vector<std::uint8_t>;

/// Derives the key of a MAC from a 16-bit password.
bool derive_mac_key(const char *digest, Octets &password, Octets &salt, int iterations, Octets &key);

/// A file with an RSA key and its certificate under a scheme by its short name, such as "AES-256-CBC" for
/// PBES2.
Octets peer_file(const char *scheme, const char *password, int iterations, int mac_iterations);
/// From the octets of a file to its key and certificate.
bool peer_open_file(const Octets &file, const char *password);
