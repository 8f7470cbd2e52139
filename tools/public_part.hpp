// Public keys of private ones.
#pragma once

#include "input.hpp"

namespace tool {

/// The public key of a private one. Its octets are missing where the private key does not say them: of DSA,
/// of elliptic keys without their point, and of other kinds. Throws Failure for numbers that make no key.
[[nodiscard]] PublicKey public_part(const P8_PRIV_KEY_INFO *info);

/// Whether a private key is that of a certificate, as far as its public part says.
[[nodiscard]] bool may_belong_to(const P8_PRIV_KEY_INFO *info, const X509_CERT *cert);

/// Throws Failure unless the private key of a file is that of a certificate.
void expect_key_of(const LoadedCertificate &owner, const std::string &path, const ASYMMETRIC_KEY *key);

}  // namespace tool
