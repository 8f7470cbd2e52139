#include "verify/strict_time.hpp"

#include "asn1/asn1_time_calendar.hpp"

namespace tlx {
namespace {

bool read_digits(Bytes text, std::size_t at, std::size_t count, i32 &value) noexcept {
    value = 0;
    for (std::size_t i = at; i < at + count; ++i) {
        if (text[i] < '0' || text[i] > '9') return false;
        value = 10 * value + (text[i] - '0');
    }
    return true;
}

}  // namespace

// Time ::= CHOICE { utcTime UTCTime, generalTime GeneralizedTime }
// YYMMDDHHMMSSZ and YYYYMMDDHHMMSSZ
bool read_time(StrictCursor &in, std::int64_t &seconds) noexcept {
    Element element;
    if (!in.any(element)) return false;
    const bool is_short = element.tag == id::kUtcTime;
    if (!is_short && element.tag != id::kGeneralizedTime) return false;
    const Bytes text = element.contents;
    const std::size_t year_digits = is_short ? 2 : 4;
    if (text.size() != year_digits + 11 || text.back() != 'Z') return false;
    ASN1_TIME time = {};
    i32 *const rest[] = {&time.month, &time.day, &time.hour, &time.minute, &time.second};
    if (!read_digits(text, 0, year_digits, time.year)) return false;
    for (std::size_t i = 0; i < 5; ++i) {
        if (!read_digits(text, year_digits + 2 * i, 2, *rest[i])) return false;
    }
    time.month -= 1;
    if (!is_short) {
        time.year -= 1900;
    } else if (time.year < 50) {
        time.year += 100;
    }
    const bool exists = time.month >= 0 && time.month < 12 && time.day >= 1 &&
                        time.day <= days_of_month(time) && time.hour < 24 && time.minute < 60 &&
                        time.second < 60;
    if (exists) seconds = calendar_seconds(time);
    return exists;
}

bool read_generalized_time(StrictCursor &in, std::int64_t &seconds) noexcept {
    return in.is_next(id::kGeneralizedTime) && read_time(in, seconds);
}

}  // namespace tlx
