#include "asn1/asn1_time_calendar.hpp"

#include <algorithm>

#include "der/types.hpp"

namespace tlx {
namespace {

using i64 = std::int64_t;

constexpr i64 kSecondsPerDay = 86400;
// A year is counted from 1 March here, so that the day to leap comes last and months have a regular rhythm of
// 31 and 30 days: 153 in five months. Year 0 began 719468 days before 1970-01-01.
constexpr i64 kDaysFromMarch0ToEpoch = 719468;
constexpr i64 kDaysPer400Years = 146097;
constexpr i64 kDaysPer100Years = 36524;
constexpr i64 kDaysPer4Years = 1461;
constexpr i64 kDaysPerYear = 365;
constexpr i32 kEpochWeekday = 4;  // a Thursday

constexpr i64 floor_div(i64 a, i64 b) noexcept {
    return a / b - (a % b < 0 ? 1 : 0);
}
constexpr i64 floor_mod(i64 a, i64 b) noexcept {
    return a - b * floor_div(a, b);
}

/// Days from 1970-01-01 to a day counted from the first of a month (0-11).
i64 days_to(i64 year, i64 month, i64 day_of_month) noexcept {
    const bool after_new_year = month < 2;  // January and February end the year that began in March
    const i64 march_month = after_new_year ? month + 10 : month - 2;
    const i64 march_year = after_new_year ? year - 1 : year;
    const i64 leaps = floor_div(march_year, 4) - floor_div(march_year, 100) + floor_div(march_year, 400);
    return kDaysPerYear * march_year + leaps + (153 * march_month + 2) / 5 + day_of_month - 1 -
           kDaysFromMarch0ToEpoch;
}

struct Date {
    i64 year;
    i32 month;
    i32 day_of_month;
};

Date date_of(i64 days) noexcept {
    i64 rest = days + kDaysFromMarch0ToEpoch;
    const i64 cycle = floor_div(rest, kDaysPer400Years);
    rest -= cycle * kDaysPer400Years;
    // The last century of a cycle, and the last year of four, is the one with a day more.
    const i64 century = std::min<i64>(rest / kDaysPer100Years, 3);
    rest -= century * kDaysPer100Years;
    const i64 leap_cycle = rest / kDaysPer4Years;
    rest -= leap_cycle * kDaysPer4Years;
    const i64 year_of_four = std::min<i64>(rest / kDaysPerYear, 3);
    rest -= year_of_four * kDaysPerYear;

    const i64 march_year = 400 * cycle + 100 * century + 4 * leap_cycle + year_of_four;
    const auto march_month = static_cast<i32>((5 * rest + 2) / 153);
    const auto day = static_cast<i32>(rest - (153 * march_month + 2) / 5 + 1);
    if (march_month >= 10) return {march_year + 1, march_month - 10, day};
    return {march_year, march_month + 2, day};
}

}  // namespace

std::int64_t calendar_seconds(const ASN1_TIME &time) noexcept {
    const i64 year = i64{1900} + time.year + floor_div(time.month, 12);
    const i64 days = days_to(year, floor_mod(time.month, 12), time.day);
    return days * kSecondsPerDay + i64{3600} * time.hour + i64{60} * time.minute + time.second;
}

ASN1_TIME calendar_time(std::int64_t seconds) noexcept {
    const i64 days = floor_div(seconds, kSecondsPerDay);
    const auto second_of_day = static_cast<i32>(floor_mod(seconds, kSecondsPerDay));
    const Date date = date_of(days);

    ASN1_TIME time{};
    time.second = second_of_day % 60;
    time.minute = second_of_day / 60 % 60;
    time.hour = second_of_day / 3600;
    time.day = date.day_of_month;
    time.month = date.month;
    time.year = static_cast<i32>(date.year - 1900);
    time.day_of_week = static_cast<i32>(floor_mod(days + kEpochWeekday, 7));
    time.day_of_year = static_cast<i32>(days - days_to(date.year, 0, 1));
    return time;
}

i32 days_of_month(const ASN1_TIME &time) noexcept {
    const i64 year = i64{1900} + time.year;
    return static_cast<i32>(days_to(year, i64{time.month} + 1, 1) - days_to(year, time.month, 1));
}

}  // namespace tlx
