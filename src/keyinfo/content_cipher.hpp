// The ciphers that messages and keys are encrypted with, as other programs name them.
#pragma once

#include <tlxcrypto/cipher.h>

#include <string_view>

#include "keyinfo/key_records.hpp"

namespace tlx {

/// How the parameters of an algorithm hold the IV.
enum class IvForm : u8 { octets, rc2, cast5 };

struct ContentCipher {
    std::string_view name;  ///< empty for a cipher that is only read
    std::string_view dotted;
    u32 cipher_id;
    IvForm form = IvForm::octets;
    u8 rc2_version = 0;  ///< what RC2ParameterVersion says of the effective bits of the key
};

/// The ciphers with a name, and after them the others.
[[nodiscard]] std::span<const ContentCipher> content_ciphers() noexcept;

/// The cipher of a name; null for an unknown one.
[[nodiscard]] const ContentCipher *find_content_cipher(std::string_view name) noexcept;

/// An algorithm identifier with the IV in its parameters; null when memory runs out.
[[nodiscard]] X509_ALGO_IDENTIFIER *make_content_algorithm(const ContentCipher &cipher,
                                                           const u8 *iv) noexcept;

/// What an algorithm identifier says: a cipher, and octets that stay the identifier's. False for an unknown
/// cipher and for parameters without an IV of its length.
[[nodiscard]] bool read_content_algorithm(const X509_ALGO_IDENTIFIER *algorithm, u32 &cipher_id,
                                          const u8 *&iv) noexcept;

}  // namespace tlx
