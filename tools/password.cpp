#include "password.hpp"

#include "failure.hpp"
#include "hidden_line.hpp"

namespace tool {

std::string_view first_line(Octets octets) {
    const std::string_view text(reinterpret_cast<const char *>(octets.data()), octets.size());
    return text.substr(0, text.find_first_of("\r\n"));
}

Password::Password(const std::string &path) : has_file_(!path.empty()) {
    if (has_file_) file_ = read_octets(path);
}

std::optional<std::string_view> Password::in_file() const {
    if (!has_file_) return std::nullopt;
    return first_line(file_.octets());
}

std::optional<std::string_view> Password::type(const std::string &prompt, Buffer &room) {
    constexpr std::size_t kLongest = 4096;  // as a terminal's lines are
    room = Buffer::of_size(kLongest);
    const std::span<char> characters(reinterpret_cast<char *>(room.data()), kLongest);
    const auto size = read_hidden_line(prompt, characters);
    if (!size) return std::nullopt;
    return std::string_view(characters.data(), *size);
}

std::optional<std::string_view> Password::typed_for(const std::string &source) {
    return type("Password of " + printable(source) + ": ", typed_);
}

std::string_view Password::of_key(const std::string &source) {
    if (const auto line = in_file()) {
        if (!line->empty()) return *line;
        throw Failure(source + ": the key is encrypted, and the first line of the password file is empty");
    }
    const auto text = typed_for(source);
    if (!text) throw Failure(source + ": the key is encrypted; give its password with --password-file");
    if (text->empty()) throw Failure(source + ": the key is encrypted, and no password was typed");
    return *text;
}

std::string_view Password::twice(const char *empty_file, const char *no_terminal, const char *not_typed) {
    if (const auto line = in_file()) {
        if (!line->empty()) return *line;
        throw Failure(empty_file);
    }
    Buffer again;
    const auto text = type("New password: ", typed_);
    if (!text) throw Failure(no_terminal);
    if (text->empty()) throw Failure(not_typed);
    if (type("New password again: ", again) != text) throw Failure("the two passwords differ");
    return *text;
}

std::string_view Password::of_new_key() {
    return twice("the first line of the new password file is empty",
                 "give the password of the new key with --new-password-file, or --scheme none",
                 "no new password was typed; --scheme none writes the key without one");
}

std::string_view Password::of_new_message() {
    return twice("the first line of the password file is empty",
                 "give the password of the message with --password-file", "no new password was typed");
}

std::string_view Password::of_message(const std::string &source) {
    const auto text = has_file_ ? in_file() : typed_for(source);
    if (!text) throw Failure(source + ": give its password with --password-file");
    if (text->empty()) throw Failure(source + ": its password is empty");
    return *text;
}

}  // namespace tool
