// Typed values from elements, by the type that the caller expects.
#pragma once

#include "der/element.hpp"

namespace tlx {

/// The value of an element as the type `expected` (a universal tag, a SEQUENCE or SET octet, or
/// TLX_TAG_ANY_STRING), whatever the element's identifier says. A new object that the caller frees with the
/// function of its type; null when the contents are not of that type, for any other `expected`, and when
/// memory runs out.
void *decode_as(const Element &element, u32 expected) noexcept;

}  // namespace tlx
