// Encodings as text with the lengths left out: "30{01:FF 02:03}" for 30 06 01 01 FF 02 01 03. After "=" come
// octets as they are: "=3080 05: =0000".
#pragma once

#include <string>
#include <string_view>

#include "support/octets.hpp"

namespace tlx_test {

/// Assembles elements, one after the other, from the front of `text` up to its end or a closing brace.
inline Octets assemble(std::string_view &text) {
    Octets all;
    while (!text.empty() && text.front() != '}') {
        if (text.front() == ' ') {
            text.remove_prefix(1);
            continue;
        }
        const bool bare = text.front() == '=';
        const Octets tag = bare ? Octets() : hex(text.substr(0, 2));
        const bool nested = !bare && text[2] == '{';
        text.remove_prefix(bare ? 1 : 3);
        Octets contents;
        if (nested) {
            contents = assemble(text);
            text.remove_prefix(1);
        } else {
            const std::size_t digits = std::min(text.size(), text.find_first_of(" }"));
            contents = hex(text.substr(0, digits));
            text.remove_prefix(digits);
        }
        if (bare) {
            all.insert(all.end(), contents.begin(), contents.end());
            continue;
        }
        all.push_back(tag[0]);
        if (contents.size() > 0x7F) all.push_back(contents.size() > 0xFF ? 0x82 : 0x81);
        if (contents.size() > 0xFF) all.push_back(static_cast<std::uint8_t>(contents.size() >> 8));
        all.push_back(static_cast<std::uint8_t>(contents.size()));
        all.insert(all.end(), contents.begin(), contents.end());
    }
    all.shrink_to_fit();
    return all;
}

/// The octets of one element, or of several.
inline Octets der(std::string_view text) {
    return assemble(text);
}

/// The node of one element.
inline Node der_node(std::string_view text) {
    const Octets octets = der(text);
    return Node(decodeToDERSequence_n(octets.data(), static_cast<std::uint32_t>(octets.size())));
}

}  // namespace tlx_test
