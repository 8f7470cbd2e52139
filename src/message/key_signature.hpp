// Signing and verifying with the key of a signer, whose unit keeps a signature that is under way.
#pragma once

#include "message/message_records.hpp"

namespace tlx {

/// What a signer's algorithms stand for; either is 0 when it is not known.
struct SignerAlgorithms {
    explicit SignerAlgorithms(const P7_SIGNER_INFO &signer) noexcept;
    /// The padding mode of RSA.
    [[nodiscard]] u32 padding_mode() const noexcept { return cipher_id & 0xFF; }
    [[nodiscard]] bool is_rsa() const noexcept { return cipher_id >> 24 == 0x20 && digest_id != 0; }

    u32 digest_id;
    u32 cipher_id;
};

/// The unit of a KCDSA key; null for another kind.
[[nodiscard]] KCDSA *kcdsa_unit(const ASYMMETRIC_KEY *key) noexcept;

/// The copy of a public key that one verification works with; null when there is none and when memory runs
/// out.
[[nodiscard]] Owned<ASYMMETRIC_KEY> copy_public_key(const X509_CERT *cert) noexcept;
/// Makes an RSA key verify PSS with the parameters of the signer. False for parameters that cannot be read,
/// or that name another digest than the signer.
[[nodiscard]] bool apply_pss_parameters(const P7_SIGNER_INFO &signer, const SignerAlgorithms &algorithms,
                                        const ASYMMETRIC_KEY &key) noexcept;

/// Encodes the attributes that a signer signs: as a SET, whatever tag carries them. False when there are
/// none, and when they cannot be encoded.
[[nodiscard]] bool encode_attributes(const P7_SIGNER_INFO &signer, Encoder &set) noexcept;

/// Begins a signature. 0x4B1C0048 for a key that is neither RSA nor KCDSA; otherwise the status of
/// init_RSASSA() or init_KCDSA().
[[nodiscard]] u32 begin_signature(const ASYMMETRIC_KEY *key, const SignerAlgorithms &algorithms) noexcept;
/// Adds octets to what is signed. `other_kind` for another key, or the status of the key.
[[nodiscard]] u32 update_signature(const ASYMMETRIC_KEY *key, Bytes octets, u32 other_kind) noexcept;
/// Ends a signature. 0; 0x4B1C0048 for a key of another kind, 0x4B1C003B when memory runs out, 0x4B1C0054 and
/// 0x4B190012 for a KCDSA signature that is empty or cannot be encoded, otherwise a status of the key.
[[nodiscard]] u32 finish_signature(const ASYMMETRIC_KEY *key, Owned<OCTET_STRING> &signature) noexcept;
/// Signs a digest, for KCDSA one of init_KCDSA_digest(). Statuses likewise.
[[nodiscard]] u32 sign_digest(const ASYMMETRIC_KEY *key, const SignerAlgorithms &algorithms, Bytes digest,
                              Owned<OCTET_STRING> &signature) noexcept;
/// Finds what a key refuses, before anything is verified with it. 0x4B210048 for a key of another kind,
/// otherwise a status likewise.
[[nodiscard]] u32 begin_verification(const ASYMMETRIC_KEY &key, const SignerAlgorithms &algorithms) noexcept;
/// Verifies a signature of octets. 0 when it is good; 0x4B210048 for a key of another kind, 0x4B21000E for a
/// KCDSA signature that cannot be decoded, otherwise a status of the key.
[[nodiscard]] u32 verify_octets(const ASYMMETRIC_KEY &key, const SignerAlgorithms &algorithms, Bytes octets,
                                Bytes signature) noexcept;

}  // namespace tlx
