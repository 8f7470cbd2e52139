// How the content key is encrypted for a recipient.
#pragma once

#include <tlxcrypto/rsa.h>

#include "message/message_records.hpp"
#include "message/rsa_parameters.hpp"

namespace tlx {

/// What a keyEncryptionAlgorithm says.
struct KeyScheme {
    u32 mode = TLX_RSAES_MODE_PKCS1;  ///< this or TLX_RSAES_MODE_OAEP, and the others are for OAEP
    RsaDigests digests;
    Bytes label;  ///< in the parameters of the algorithm

    /// The only OAEP that init_RSAES() has: SHA-1 for both, without a label.
    [[nodiscard]] bool is_plain() const noexcept {
        return digests.digest_id == TLX_DIGEST_SHA1 && digests.mgf_digest_id == TLX_DIGEST_SHA1 &&
               label.empty();
    }
};

/// False for an algorithm that is none of RSA, and for parameters of OAEP that are broken.
[[nodiscard]] bool read_key_scheme(const X509_ALGO_IDENTIFIER *algorithm, KeyScheme &scheme) noexcept;

/// Prepares a unit for what a keyEncryptionAlgorithm says: direction 0 encrypts, 1 decrypts. A status of the
/// unit, or kUnknownScheme when read_key_scheme() fails.
constexpr u32 kUnknownScheme = 0xFFFFFFFF;
[[nodiscard]] u32 prepare_unit(RSA_UNIT *unit, const X509_ALGO_IDENTIFIER *algorithm, KeyScheme &scheme,
                               u32 direction) noexcept;

/// Fills an empty algorithm identifier with OAEP and its parameters. False for an unknown digest and when
/// memory runs out.
[[nodiscard]] bool write_oaep_scheme(const KeyScheme &scheme, X509_ALGO_IDENTIFIER &algorithm) noexcept;

/// Whether a number is a mode of RSAES; 0 means PKCS #1 v1.5.
constexpr bool is_rsaes_mode(u32 mode) noexcept {
    return mode == TLX_RSAES_MODE_NONE_GIVEN || mode == TLX_RSAES_MODE_OAEP_SET ||
           mode == TLX_RSAES_MODE_OAEP || mode == TLX_RSAES_MODE_PKCS1;
}
/// In place of a mode: that of each recipient's keyEncryptionAlgorithm.
constexpr u32 kModeOfRecipient = 0xFFFFFFFF;
constexpr bool is_oaep(u32 mode) noexcept {
    return mode == TLX_RSAES_MODE_OAEP_SET || mode == TLX_RSAES_MODE_OAEP;
}

/// Makes what encrypt_RSAES() gives for the content key the recipient's encryptedKey, with a unit that was
/// prepared. A status of encrypt_RSAES(), or 0x4B20003A when memory runs out.
[[nodiscard]] u32 encrypt_key(P7_RECIPIENT_INFO &recipient, const RSA_UNIT *unit, Bytes key) noexcept;

}  // namespace tlx
