// Names with every type and value that they were received with.
#pragma once

#include "text.hpp"

namespace tool {

/// The text of a name by RFC 4514, given its element, with all pairs of a relative distinguished name, joined
/// by "+", of which the library keeps the first only. Empty when no relative distinguished name has several,
/// and for a name that cannot be decoded.
[[nodiscard]] std::string whole_name(Octets name);

}  // namespace tool
