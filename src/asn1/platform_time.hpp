// What the operating system knows about time zones, beyond the C and C++ standard libraries. Beside
// keys/platform_module.cpp the only file of this library that asks it.
#pragma once

#include <tlxpki/types.h>

#include <ctime>

namespace tlx {

/// The calendar fields of a moment in the host's time zone. False when the host does not know it; time is
/// unchanged then.
[[nodiscard]] bool local_calendar(std::time_t moment, ASN1_TIME &time) noexcept;

}  // namespace tlx
