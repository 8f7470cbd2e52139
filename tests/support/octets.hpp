// Octets, nodes and string records as text, so that tests show the encodings they expect.
#pragma once

#include <tlxpki.h>

#include <cstdint>
#include <cstdio>
#include <string>
#include <string_view>
#include <vector>

#include "held.hpp"

namespace tlx_test {

using Octets = std::vector<std::uint8_t>;

/// Octets from hexadecimal digits, with or without spaces. The block has exactly the size of its octets.
inline Octets hex(std::string_view text) {
    Octets octets;
    int high = -1;
    for (const char c : text) {
        if (c == ' ') continue;
        const int digit = c <= '9' ? c - '0' : (c & ~0x20) - 'A' + 10;
        if (high >= 0) octets.push_back(static_cast<std::uint8_t>(high << 4 | digit));
        high = high >= 0 ? -1 : digit;
    }
    octets.shrink_to_fit();
    return octets;
}

inline std::string hex_of(const std::uint8_t *octets, std::size_t size) {
    std::string text;
    char digits[4];
    for (std::size_t i = 0; i < size; ++i) {
        std::snprintf(digits, sizeof digits, "%s%02X", i > 0 ? " " : "", static_cast<unsigned>(octets[i]));
        text += digits;
    }
    return text;
}

/// The encoding of a node, or "empty" for one without an identifier.
inline std::string hex_of(const ASN1_UNIT *node) {
    std::uint8_t *octets = nullptr;
    const std::uint32_t size = ASN1_to_binary(node, &octets);
    if (size == 0xFFFFFFFF) return "empty";
    std::string text = hex_of(octets, size);
    tlx_free(octets);
    return text;
}

using Node = tlx::Owned<ASN1_UNIT>;
using String = tlx::Owned<ASN1_STRING>;
using Number = tlx::Owned<BIGINT>;

inline Node new_node() {
    return Node(new_ASN1_UNIT());
}

/// The node of an encoding; null when the library refuses it.
inline Node node_of(std::string_view text) {
    const Octets octets = hex(text);
    return Node(decodeToDERSequence_n(octets.data(), static_cast<std::uint32_t>(octets.size())));
}

/// A string record; its data is the text as it is.
inline String string_of(std::int32_t type, std::string_view text, std::int32_t extra = 0) {
    String string(new_ASN1_STRING());
    set_ASN1_STRING_value(string.get(), type, text.data(), static_cast<std::uint32_t>(text.size()));
    if (string != nullptr) string->extra = extra;
    return string;
}
inline String string_of(std::int32_t type, const Octets &octets, std::int32_t extra = 0) {
    return string_of(type, std::string_view(reinterpret_cast<const char *>(octets.data()), octets.size()),
                     extra);
}

inline Number number_of(const char *digits) {
    return Number(hex_to_BIGINT(digits));
}

/// "type 12 extra 0: 41 42"
inline std::string text_of(const ASN1_STRING *string) {
    if (string == nullptr) return "null";
    const auto length = static_cast<std::size_t>(string->length);
    if (string->data == nullptr || string->data[length] != 0) return "not terminated";
    return "type " + std::to_string(string->type) + " extra " + std::to_string(string->extra) + ": " +
           hex_of(string->data, length);
}

/// The octets of a record; "(null)" for a null record or null data.
inline std::string octets(const ASN1_STRING *record) {
    if (record == nullptr || record->data == nullptr) return "(null)";
    return {reinterpret_cast<const char *>(record->data), static_cast<std::size_t>(record->length)};
}

inline bool takes_node(std::uint32_t type) {
    return type == 16 || type == 17 || type == 33 || type == 48 || type == 49;
}

/// Owns what getDERChildAt made under a type.
struct Child {
    Child(void *made, std::uint32_t type) {
        if (type == 1 || type == 5) {
            octet.reset(static_cast<std::uint8_t *>(made));
        } else if (type == 2 || type == 10) {
            number.reset(static_cast<BIGINT *>(made));
        } else if (takes_node(type)) {
            node.reset(static_cast<ASN1_UNIT *>(made));
        } else {
            string.reset(static_cast<ASN1_STRING *>(made));
        }
    }
    tlx::OwnedOctets<std::uint8_t> octet;
    Number number;
    Node node;
    String string;
};

/// Copies `length` octets of a result and frees the result; "(null)" for null.
template <typename T>
std::string take(T *result, std::size_t length) {
    if (result == nullptr) return "(null)";
    std::string copy(reinterpret_cast<const char *>(result), length);
    tlx_free(result);
    return copy;
}

/// Calls `function (text, its length, &out)` and returns its result. Checks that the length is 0 exactly when
/// out is unchanged.
template <typename Out, typename In, typename... Rest>
std::string call(std::uint32_t (*function)(const In *, std::uint32_t, Out **, Rest...),
                 const std::string &text, Rest... rest) {
    Out *out = nullptr;
    const std::uint32_t size = function(reinterpret_cast<const In *>(text.data()),
                                        static_cast<std::uint32_t>(text.size()), &out, rest...);
    if ((out == nullptr) != (size == 0)) return "length and result disagree";
    return take(out, size);
}

}  // namespace tlx_test
