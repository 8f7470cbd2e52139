// Signing and verifying with the key of a signer: its unit keeps what is under way between the calls.
#pragma once

#include "message/message_records.hpp"

namespace tlx {

enum class SigningDirection : u32 { verify = 0, sign = 1 };

/// What a signer's algorithms stand for; either is 0 when it is not known.
struct SignerAlgorithms {
    explicit SignerAlgorithms(const P7_SIGNER_INFO &signer) noexcept;
    /// The padding mode of RSA.
    [[nodiscard]] u32 padding_mode() const noexcept { return cipher_id & 0xFF; }
    [[nodiscard]] bool is_rsa() const noexcept { return cipher_id >> 24 == 0x20 && digest_id != 0; }

    u32 digest_id;
    u32 cipher_id;
};

/// The copy of a public key that one verification works with; null when there is none and when memory runs
/// out.
[[nodiscard]] Owned<ASYMMETRIC_KEY> copy_public_key(const X509_CERT *cert) noexcept;
/// Makes an RSA key verify PSS with the parameters of the signer. False for parameters that cannot be read,
/// or that name another digest than the signer.
[[nodiscard]] bool apply_pss_parameters(const P7_SIGNER_INFO &signer, const SignerAlgorithms &algorithms,
                                        const ASYMMETRIC_KEY &key) noexcept;

/// Begins a signature or a verification. `other_kind` for a key that is neither RSA nor KCDSA; otherwise the
/// status of init_RSASSA() or init_KCDSA().
[[nodiscard]] u32 begin_signature(const ASYMMETRIC_KEY *key, const SignerAlgorithms &algorithms,
                                  SigningDirection direction, u32 other_kind) noexcept;
/// Adds octets to the message. Statuses likewise.
[[nodiscard]] u32 update_signature(const ASYMMETRIC_KEY *key, Bytes octets, u32 other_kind) noexcept;

/// Ends a signature. 0; 0x4B1C0048 for a key of another kind, 0x4B1C003B when memory runs out, 0x4B1C0054 and
/// 0x4B190012 for a KCDSA signature that is empty or cannot be encoded, otherwise a status of the key.
[[nodiscard]] u32 finish_signature(const ASYMMETRIC_KEY *key, Owned<OCTET_STRING> &signature) noexcept;
/// Makes zeros as many as the octets of a signature with the key: for KCDSA of one whose number s begins with
/// a zero bit, as about half of them do. False for a key of another kind and when memory runs out.
[[nodiscard]] bool reserve_signature(const P7_SIGNER_INFO &signer, Owned<OCTET_STRING> &zeros) noexcept;
/// Ends a verification. 0 when the signature is good; 0x4B210048 for a key of another kind, 0x4B21000E for a
/// KCDSA signature that cannot be decoded, otherwise a status of the key.
[[nodiscard]] u32 check_signature(const ASYMMETRIC_KEY *key, Bytes signature) noexcept;

}  // namespace tlx
