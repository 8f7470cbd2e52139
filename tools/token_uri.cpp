#include "token_uri.hpp"

#include <tlxpki.h>

#include <charconv>
#include <set>

#include "failure.hpp"

namespace tool {

namespace {

constexpr std::string_view kScheme = "pkcs11:";
constexpr std::string_view kDigits = "0123456789ABCDEF";

/// The value of a hexadecimal digit; 16 for another character.
unsigned digit(char character) {
    const std::size_t value = kDigits.find(character >= 'a' ? static_cast<char>(character - 32) : character);
    return value == std::string_view::npos ? 16 : static_cast<unsigned>(value);
}

/// A value without its "%41".
std::string decoded(const std::string &source, std::string_view value) {
    std::string text;
    for (std::size_t i = 0; i < value.size(); ++i) {
        if (value[i] != '%') {
            text += value[i];
            continue;
        }
        const unsigned high = i + 2 < value.size() ? digit(value[i + 1]) : 16;
        const unsigned low = high < 16 ? digit(value[i + 2]) : 16;
        if (low > 15) throw Failure(source + ": \"%\" has two hexadecimal digits after it");
        text += static_cast<char>(high * 16 + low);
        i += 2;
    }
    return text;
}

uint64_t slot_number(const std::string &source, const std::string &text) {
    uint64_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || end != text.data() + text.size()) {
        throw Failure(source + ": slot-id is a decimal number");
    }
    return number;
}

uint32_t kind_of_type(const std::string &source, const std::string &type) {
    if (type == "cert") return TLX_TOKEN_CERTIFICATE;
    if (type == "private") return TLX_TOKEN_PRIVATE_KEY;
    if (type == "public") return TLX_TOKEN_PUBLIC_KEY;
    throw Failure(source + ": the type is cert, private or public");
}

/// Takes one attribute of the path.
void take_attribute(TokenUri &uri, const std::string &name, const std::string &value) {
    struct Text {
        std::string_view name;
        std::optional<std::string> TokenUri::*member;
    };
    constexpr Text kTexts[] = {{"token", &TokenUri::token},   {"manufacturer", &TokenUri::manufacturer},
                               {"model", &TokenUri::model},   {"serial", &TokenUri::serial},
                               {"object", &TokenUri::object}, {"id", &TokenUri::id}};
    for (const Text &text : kTexts) {
        if (text.name == name) {
            uri.*text.member = value;
            return;
        }
    }
    if (name == "slot-id") {
        uri.slot = slot_number(uri.source, value);
    } else if (name == "type") {
        uri.kind = kind_of_type(uri.source, value);
    } else {
        throw Failure(uri.source + ": the attribute \"" + name + "\" is not supported");
    }
}

void take_query(TokenUri &uri, const std::string &name, const std::string &value) {
    if (name == "pin-value" || name == "pin-source") {
        throw Failure("a PIN is given with --pin-file, not in the URI");
    }
    if (name != "module-path")
        throw Failure(uri.source + ": the attribute \"" + name + "\" is not supported");
    uri.module = value;
}

/// Splits "name=value;name=value" and takes each once.
template <typename Take>
void take_all(TokenUri &uri, std::string_view text, char separator, std::set<std::string> &seen, Take take) {
    while (!text.empty()) {
        const std::string_view part = text.substr(0, text.find(separator));
        text.remove_prefix(part.size() == text.size() ? part.size() : part.size() + 1);
        const std::size_t equals = part.find('=');
        if (equals == std::string_view::npos || equals == 0) {
            throw Failure(uri.source + ": \"" + std::string(part) + "\" has no name and value");
        }
        const std::string name(part.substr(0, equals));
        if (!seen.insert(name).second) throw Failure(uri.source + ": gives \"" + name + "\" twice");
        take(uri, name, decoded(uri.source, part.substr(equals + 1)));
    }
}

bool is_unreserved(char character) {
    const auto between = [character](char first, char last) {
        return character >= first && character <= last;
    };
    return between('0', '9') || between('A', 'Z') || between('a', 'z') ||
           std::string_view("-._~").find(character) != std::string_view::npos;
}

}  // namespace

bool is_token_uri(std::string_view text) {
    return text.starts_with(kScheme);
}

TokenUri parse_token_uri(const std::string &text) {
    TokenUri uri;
    if (!is_token_uri(text)) throw Failure(text + ": a URI of a token begins with pkcs11:");
    const std::string_view rest = std::string_view(text).substr(kScheme.size());
    const std::string_view path = rest.substr(0, rest.find('?'));
    // A PIN may stand behind the question mark, and is never shown.
    uri.source = std::string(kScheme) + std::string(path);
    std::set<std::string> seen;
    take_all(uri, path, ';', seen, take_attribute);
    if (path.size() < rest.size()) take_all(uri, rest.substr(path.size() + 1), '&', seen, take_query);
    if (uri.module.empty())
        throw Failure(uri.source + ": needs ?module-path= with the path of a PKCS #11 module");
    return uri;
}

std::string uri_text(std::string_view value) {
    std::string text;
    for (const char character : value) {
        const auto octet = static_cast<unsigned char>(character);
        if (is_unreserved(character)) {
            text += character;
        } else {
            text += {'%', kDigits[octet >> 4], kDigits[octet & 15U]};
        }
    }
    return text;
}

}  // namespace tool
