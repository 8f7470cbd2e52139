// Signing with private keys of any kind, as verify_signature() of public_key.hpp verifies.
#pragma once

#include <tlxpki/x509_pubkey.h>

#include "der/encoder.hpp"
#include "verify/public_key.hpp"

namespace tlx {

/// The algorithm is not one of the key, or the key is a public one. No key returns this.
inline constexpr u32 kNotOfKey = 0xFFFFFFFE;

/// Signs octets and appends the value of the signature to `signature`. 0, kNotOfKey or the status of the key,
/// which is 1 when memory runs out.
[[nodiscard]] u32 make_signature(const ASYMMETRIC_KEY &key, const SignatureAlgorithm &algorithm, Bytes octets,
                                 Encoder &signature) noexcept;

/// The same of octets whose digest, that of the algorithm and for KCDSA that of init_KCDSA_digest(), is
/// known. EdDSA signs no digest: kNotOfKey.
[[nodiscard]] u32 make_signature_of_digest(const ASYMMETRIC_KEY &key, const SignatureAlgorithm &algorithm,
                                           Bytes digest, Encoder &signature) noexcept;

}  // namespace tlx
