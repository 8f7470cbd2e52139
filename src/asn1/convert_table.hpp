// The KS X 1001 plane: 93 rows of 94 double-octet characters, lead octets 0xA1-0xFD, trail octets 0xA1-0xFE.
#pragma once

#include "der/types.hpp"

namespace tlx {

/// A code point of the basic plane; 0 when an octet is out of range or the place is empty.
std::uint16_t ksx1001_to_unicode(u8 lead, u8 trail) noexcept;

/// The same for code page 949, which adds the Hangul that the plane lacks: lead octets 0x81-0xC6, trail
/// octets 0x41-0x5A, 0x61-0x7A and 0x81-0xFE.
std::uint16_t cp949_to_unicode(u8 lead, u8 trail) noexcept;

/// The lead octet in the high half and the trail octet in the low one; 0 when the plane has no such
/// character.
std::uint16_t unicode_to_ksx1001(u32 code_point) noexcept;

}  // namespace tlx
