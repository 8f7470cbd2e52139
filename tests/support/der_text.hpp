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
        const bool nested = !bare && text[2] == '{';
        Octets head = bare ? Octets() : hex(text.substr(0, 2));
        text.remove_prefix(bare ? 1 : 3);
        const std::size_t digits = nested ? 0 : std::min(text.size(), text.find_first_of(" }"));
        const Octets contents = nested ? assemble(text) : hex(text.substr(0, digits));
        text.remove_prefix(nested ? 1 : digits);
        const std::size_t size = contents.size();
        if (!bare && size > 0x7F) head.push_back(size > 0xFFFF ? 0x83 : size > 0xFF ? 0x82 : 0x81);
        if (!bare && size > 0xFFFF) head.push_back(static_cast<std::uint8_t>(size >> 16));
        if (!bare && size > 0xFF) head.push_back(static_cast<std::uint8_t>(size >> 8));
        if (!bare) head.push_back(static_cast<std::uint8_t>(size));
        all.insert(all.end(), head.begin(), head.end());
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
