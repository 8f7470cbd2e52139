// Keys that agree on a secret: ECDH on P-256, P-384 and P-521, X25519 and X448.
#pragma once

#include <tlxcrypto/ecdsa.h>

#include "keyinfo/key_curve.hpp"
#include "message/cms_records.hpp"
#include "message/wiped_octets.hpp"

namespace tlx {

/// What two keys agree on.
using AgreedSecret = WipedOctets<TLX_ECDSA_MAX_LENGTH>;

enum class AgreementOutcome : u8 {
    done,
    bad_key,  ///< the public key is no point of the curve, or the secret would be zeros
    no_memory
};

/// The curve of a private key; null for a key that does not agree, a public one and null.
[[nodiscard]] const KeyCurve *find_private_curve(const ASYMMETRIC_KEY *key) noexcept;
/// The curve of a public key in a certificate; null for any other key.
[[nodiscard]] const KeyCurve *find_public_curve(const X509_PUBKEY *key) noexcept;
/// Whether an algorithm identifier stands for keys of a curve. id-ecPublicKey may leave the curve out (RFC
/// 5753, section 3.1.1).
[[nodiscard]] bool is_of_curve(const X509_ALGO_IDENTIFIER &algorithm, const KeyCurve &curve) noexcept;

/// A random private key; null when memory or random octets run out.
[[nodiscard]] Owned<ASYMMETRIC_KEY> generate_agreement_key(const KeyCurve &curve) noexcept;
/// Agrees on a secret with the octets of a public key of the same curve.
[[nodiscard]] AgreementOutcome agree(const ASYMMETRIC_KEY &own, const KeyCurve &curve, const BIT_STRING *peer,
                                     AgreedSecret &secret) noexcept;

}  // namespace tlx
