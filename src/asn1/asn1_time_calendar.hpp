// Calendar arithmetic: broken-down times to and from a count of seconds, independent of the host's time zone.
#pragma once

#include <tlxpki/types.h>

#include <cstdint>

namespace tlx {

/// Seconds since 1970-01-01 00:00:00. Fields past their range carry over; every combination has a count.
std::int64_t calendar_seconds(const ASN1_TIME &time) noexcept;

/// The time of a count, with day of week and day of year filled. The year has to fit ASN1_TIME, which reaches
/// two billion years either way: far past every time text and every clock.
ASN1_TIME calendar_time(std::int64_t seconds) noexcept;

/// How many days the month of a time has.
std::int32_t days_of_month(const ASN1_TIME &time) noexcept;

}  // namespace tlx
