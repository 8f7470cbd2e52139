// Passwords from files and from the terminal.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "input.hpp"

namespace tool {

/// The text of octets before their first line end.
[[nodiscard]] std::string_view first_line(Octets octets);

/// A password: the first line of a file, or without a file what is typed on the terminal. What a function
/// gives out lasts until the next call.
class Password {
  public:
    /// Of an empty path there is no file. Throws Failure when the file cannot be read.
    explicit Password(const std::string &path);

    /// That of the key of a source. Throws Failure when there is none.
    [[nodiscard]] std::string_view of_key(const std::string &source);
    /// That of a key to be written, which is typed twice. Throws Failure when there is none.
    [[nodiscard]] std::string_view of_new_key();

    /// That of a message that is read, which somebody chose for its recipients. Throws Failure when there is
    /// none.
    [[nodiscard]] std::string_view of_message(const std::string &source);
    /// That of a message to be written, which is typed twice. Throws Failure when there is none.
    [[nodiscard]] std::string_view of_new_message();

    /// The line of the file, which may be empty; nothing without a file.
    [[nodiscard]] std::optional<std::string_view> in_file() const;
    /// What is typed for a source, which may be empty; nothing when there is no terminal.
    [[nodiscard]] std::optional<std::string_view> typed_for(const std::string &source);

  private:
    [[nodiscard]] std::string_view twice(const char *empty_file, const char *no_terminal,
                                         const char *not_typed);
    [[nodiscard]] std::optional<std::string_view> type(const std::string &prompt, Buffer &room);

    bool has_file_;
    Buffer file_;
    Buffer typed_;
};

}  // namespace tool
