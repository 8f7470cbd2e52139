// The algorithms of a signer, by their identifiers.
#pragma once

#include "message/signer_view.hpp"
#include "verify/public_key.hpp"

namespace tlx {

/// Finds the digest that an algorithm stands for, 0 for one that is not known. False when memory runs out.
[[nodiscard]] bool find_digest_id(const X509_ALGO_IDENTIFIER *algorithm, u32 &digest_id) noexcept;

/// The key of a signer's certificate: kNone, or a rule of make_key() or check_key().
[[nodiscard]] Rule read_signer_key(const X509_CERT &cert, PublicKey &key) noexcept;

/// The key of a certificate when it is one of KCDSA, which the certificate owns; null for any other.
[[nodiscard]] const KCDSA *kcdsa_key_of(const X509_CERT *cert) noexcept;

struct SignerScheme {
    u32 digest_id = 0;             ///< of the content; 0 for one that is not known
    SignatureAlgorithm signature;  ///< of no kind when it is not known or does not go with the digest

    /// False when memory runs out.
    [[nodiscard]] bool read(const SignerView &signer) noexcept;
};

/// Whether a key verifies signatures of a scheme, whose digest is available.
[[nodiscard]] bool can_verify(const PublicKey &key, const SignerScheme &scheme) noexcept;

}  // namespace tlx
