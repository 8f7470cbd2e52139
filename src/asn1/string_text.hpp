// What a string value says.
#pragma once

#include "der/buffer.hpp"
#include "der/types.hpp"

namespace tlx {

/// Appends the characters of a value of a string or time type as UTF-8. False for another type and for
/// contents that are no text; `out` may hold a part of it then.
[[nodiscard]] bool append_text(Buffer &out, i32 type, Bytes contents) noexcept;

}  // namespace tlx
