// The tags and values of single elements as text.
#pragma once

#include "document.hpp"
#include "element.hpp"

namespace tool {

/// The number of octets shown of a value, unless the user asks for all.
constexpr std::size_t kShortValue = 32;

/// "SEQUENCE", "[0]", "[APPLICATION 3]".
[[nodiscard]] std::string tag_text(const Element &element);

/// The value of a primitive element on one line, with about the given number of octets; "" for others.
[[nodiscard]] std::string value_text(const Element &element, Octets octets, std::size_t most);

/// Adds the value of a primitive element: "value", "name" of an object identifier, "unused_bits" of a BIT
/// STRING, or "hex".
void add_value_json(Json &json, const Element &element, Octets octets);

}  // namespace tool
