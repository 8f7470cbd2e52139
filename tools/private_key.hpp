// Private keys in files.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "input.hpp"

namespace tool {

/// The text of octets before their first line end.
[[nodiscard]] std::string_view first_line(Octets octets);

/// The password of encrypted keys: the first line of a file, or without a file what is typed on the terminal.
class Password {
  public:
    /// Throws Failure when the file cannot be read.
    explicit Password(const std::string &path);

    /// That of the key of a source, until the next call. Throws Failure when there is none.
    [[nodiscard]] std::string_view of_key(const std::string &source);
    /// That of a key to be written, which is typed twice, until the next call. Throws Failure when there is
    /// none.
    [[nodiscard]] std::string_view of_new_key();

  private:
    [[nodiscard]] std::optional<std::string_view> type(const std::string &prompt, Buffer &room);

    std::optional<Input> file_;
    Buffer typed_;
};

/// Decrypts an RSA key file that is encrypted as PEM, with "Proc-Type" and "DEK-Info" before the Base64.
/// Throws Failure.
[[nodiscard]] RsaKey decrypt_key(const Block &block, Password &password);

/// The RSA key of a block that is not encrypted. Throws Failure.
[[nodiscard]] RsaKey decode_private_key(const Block &block);

}  // namespace tool
