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

// SigningCertificateV2 with the SHA-256 of a certificate (RFC 5035, section 5.4.1)
void write_signing_certificate(Encoder &out, const X509_CERT &cert) noexcept;

/// Zeros as many as the octets of a signature with the key. Of ECDSA and KCDSA most have another length, but
/// every third or so has this one. Null when memory runs out.
[[nodiscard]] Owned<OCTET_STRING> reserve_signature(const PublicKey &key, u32 digest_id) noexcept;

/// What is signed.
struct SignedInput {
    const MESSAGE_SIGNER &signer;
    const X509_ALGO_IDENTIFIER *algorithm;
    Bytes octets;  ///< of a signer without attributes the digest of the content, for KCDSA that of its key
};

/// Signs, and verifies the signature with the certificate. With a length other than 0 it signs until the
/// signature is as long, 64 times at most. A status of final_SIGNED_MESSAGE_WRITER().
[[nodiscard]] u32 sign_to_length(const SignedInput &input, const SignerView &view, std::size_t length,
                                 Owned<OCTET_STRING> &signature) noexcept;

}  // namespace tlx
