// What contentEncryptionAlgorithm says of a message: a block cipher with its IV (RFC 3370, RFC 3565, RFC
// 4010, RFC 5794), or AES or ARIA in Galois/Counter Mode with its nonce (RFC 5084, RFC 5794).
#pragma once

#include <tlxcrypto/aead.h>

#include "keyinfo/content_cipher.hpp"

namespace tlx {

struct ContentAlgorithm {
    u32 cipher_id = 0;
    bool authenticates = false;
    u32 iv_len = 0;   ///< or of the nonce
    u32 tag_len = 0;  ///< of a cipher that authenticates
    u8 iv[TLX_AEAD_MAX_NONCE_LENGTH] = {};

    [[nodiscard]] u32 key_length() const noexcept {
        return authenticates ? get_AEAD_key_length(cipher_id) : get_KeyLength(cipher_id);
    }
    /// Makes the IV a random one. False without random octets.
    [[nodiscard]] bool draw_iv() noexcept;
};

enum class AlgorithmRead : u8 {
    known,
    ccm,      ///< AES or ARIA in CCM mode, which nothing here decrypts
    unknown,  ///< or with parameters that cannot be read
};
[[nodiscard]] AlgorithmRead read_algorithm(const X509_ALGO_IDENTIFIER &identifier,
                                           ContentAlgorithm &algorithm) noexcept;

/// The cipher of a name that get_MESSAGE_cipher_name() gives, without an IV. False for any other name and a
/// cipher that is not available.
[[nodiscard]] bool find_algorithm(std::string_view name, ContentAlgorithm &algorithm) noexcept;
/// What read_algorithm() reads; null when memory runs out.
[[nodiscard]] Owned<X509_ALGO_IDENTIFIER> make_identifier(const ContentAlgorithm &algorithm) noexcept;

}  // namespace tlx
