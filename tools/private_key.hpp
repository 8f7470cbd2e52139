// Private keys in files.
#pragma once

#include "password.hpp"

namespace tool {

/// Decrypts an RSA key file that is encrypted as PEM, with "Proc-Type" and "DEK-Info" before the Base64.
/// Throws Failure.
[[nodiscard]] RsaKey decrypt_key(const Block &block, Password &password);

/// The RSA key of a block that is not encrypted. Throws Failure.
[[nodiscard]] RsaKey decode_private_key(const Block &block);

}  // namespace tool
