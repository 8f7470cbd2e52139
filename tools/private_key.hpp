// Private keys in files.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "input.hpp"

namespace tool {

/// The first line of a file, for which the file has to live; none without a file.
class Password {
  public:
    /// Throws Failure when the file cannot be read.
    explicit Password(const std::string &path);
    [[nodiscard]] std::optional<std::string_view> text() const { return text_; }

  private:
    std::optional<Input> file_;
    std::optional<std::string_view> text_;
};

/// Decrypts an RSA key file that is encrypted as PEM, with "Proc-Type" and "DEK-Info" before the Base64.
/// Throws Failure.
[[nodiscard]] RsaKey decrypt_key(const Block &block, std::optional<std::string_view> password);

/// The RSA key of a block that is not encrypted. Throws Failure.
[[nodiscard]] RsaKey decode_private_key(const Block &block);

/// The private key of a file. Throws Failure when it holds none in a form that can be read.
[[nodiscard]] Key load_private_key(const std::string &path, const Password &password);

}  // namespace tool
