// Algorithms and signatures of the signers of a message that is being written.
#pragma once

#include <tlxpki/message_stream.h>

#include "message/signer_scheme.hpp"

namespace tlx {

/// The digest that a key signs with unless its owner says otherwise.
[[nodiscard]] u32 default_digest(const PublicKey &key) noexcept;

/// Null for a digest that no identifier is known for, and when memory runs out.
[[nodiscard]] Owned<X509_ALGO_IDENTIFIER> make_digest_algorithm(u32 digest_id) noexcept;
/// The algorithm of signatures with a key, of RSASSA-PSS with the digest in MGF1 and a salt as long. Null for
/// none that an identifier is known for, and when memory runs out.
[[nodiscard]] Owned<X509_ALGO_IDENTIFIER> make_signature_algorithm(const PublicKey &key, u32 digest_id,
                                                                   bool pss) noexcept;

/// Zeros as many as the octets of a signature with the key. Of ECDSA and KCDSA most have another length, but
/// every third or so has this one. Null for a key that does not sign, and when memory runs out.
[[nodiscard]] Owned<OCTET_STRING> reserve_signature(const ASYMMETRIC_KEY &key, u32 digest_id) noexcept;
/// A holder that does not own the key; without one for DSA.
[[nodiscard]] ASYMMETRIC_KEY holder_of(const PublicKey &key) noexcept;

/// Calls sign(), which makes the signature, until that has a length other than 0: its status, or 0x52840047
/// after 64 tries.
template <typename Sign>
[[nodiscard]] u32 sign_to_length(std::size_t length, const Owned<OCTET_STRING> &signature,
                                 Sign sign) noexcept {
    constexpr u32 kMostTries = 64;
    for (u32 tries = 0; tries < kMostTries; ++tries) {
        if (const u32 status = sign(); status != 0) return status;
        if (length == 0 || octets_of(signature.get()).size() == length) return 0;
    }
    return 0x52840047;
}

/// What is signed.
struct SignedInput {
    const MESSAGE_SIGNER &signer;
    const X509_ALGO_IDENTIFIER *algorithm;
    Bytes octets;  ///< of a signer without attributes the digest of the content, for KCDSA that of its key
};

/// Signs by sign_to_length(), and verifies the signature with the certificate. A status of
/// final_SIGNED_MESSAGE_WRITER().
[[nodiscard]] u32 sign_and_verify(const SignedInput &input, const SignerView &view, std::size_t length,
                                  Owned<OCTET_STRING> &signature) noexcept;

}  // namespace tlx
