// Names of tokens and what is on them: the URIs of RFC 7512.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace tool {

/// What a URI says; what it leaves out may be anything.
struct TokenUri {
    std::string source;  ///< the URI itself, for messages
    std::string module;  ///< module-path
    std::optional<uint64_t> slot;
    std::optional<std::string> token;
    std::optional<std::string> manufacturer;
    std::optional<std::string> model;
    std::optional<std::string> serial;
    std::optional<std::string> object;
    std::optional<std::string> id;  ///< octets
    uint32_t kind = 0;              ///< TLX_TOKEN_, 0 without a type
};

[[nodiscard]] bool is_token_uri(std::string_view text);

/// Throws Failure for what is no such URI, for one without module-path, and for attributes that are not
/// supported, a PIN among them.
[[nodiscard]] TokenUri parse_token_uri(const std::string &text);

/// A value as a URI has it, with all but letters, digits, "-", ".", "_" and "~" as "%" and digits.
[[nodiscard]] std::string uri_text(std::string_view value);

}  // namespace tool
