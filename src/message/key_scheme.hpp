// How the content key is encrypted for a recipient.
#pragma once

#include <tlxcrypto/rsa.h>

#include "message/message_records.hpp"
#include "message/rsa_parameters.hpp"

namespace tlx {

/// What a keyEncryptionAlgorithm says.
struct KeyScheme {
    u32 mode = TLX_RSAES_MODE_PKCS1;  ///< one of RSAES; the other members are for OAEP
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

/// What read_key_scheme() reads. Null for an unknown digest of OAEP and when memory runs out.
[[nodiscard]] Owned<X509_ALGO_IDENTIFIER> make_key_algorithm(const KeyScheme &scheme) noexcept;

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

/// Replaces an encryptedKey by the content key under a scheme. A status of encrypt_RSAES(), or `no_memory`
/// when memory runs out.
[[nodiscard]] u32 encrypt_key(const RSA_UNIT *unit, const KeyScheme &scheme, Bytes key,
                              OCTET_STRING *&encrypted, u32 no_memory) noexcept;

/// What the caller of decrypt_key() returns.
struct KeyStatuses {
    u32 no_memory;
    u32 unknown_scheme;
    u32 not_decrypted;
};
/// The octets of a random key in place of one of unknown length.
constexpr u32 kRandomKeyLength = 32;

/// Decrypts a content key of `expected` octets, or of any number for 0, into `key`. Wrong padding of PKCS #1
/// v1.5 gives a random key, so that the content fails to decrypt as with any wrong key (RFC 3218); OAEP needs
/// no such care. 0, one of the statuses, or that of a key elsewhere, which may lack its PIN.
[[nodiscard]] u32 decrypt_key(const RSA_UNIT *unit, const X509_ALGO_IDENTIFIER *algorithm, Bytes sealed,
                              u32 expected, std::span<u8> key, u32 &key_len,
                              const KeyStatuses &statuses) noexcept;

}  // namespace tlx
