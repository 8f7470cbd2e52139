// Times in the forms of RFC 5280, section 4.1.2.5.
#pragma once

#include <cstdint>

#include "verify/strict_cursor.hpp"

namespace tlx {

/// Takes a UTCTime or a GeneralizedTime, in seconds since 1970. False for another form and for a time that
/// does not exist.
[[nodiscard]] bool read_time(StrictCursor &in, std::int64_t &seconds) noexcept;
/// Takes a GeneralizedTime.
[[nodiscard]] bool read_generalized_time(StrictCursor &in, std::int64_t &seconds) noexcept;

/// Whether a time lies in the span, both ends included.
[[nodiscard]] constexpr bool is_between(std::int64_t time, std::int64_t from, std::int64_t until) noexcept {
    return from <= time && time <= until;
}

}  // namespace tlx
