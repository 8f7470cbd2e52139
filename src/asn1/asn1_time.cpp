// ASN1_TIME records: lifecycle, checks, sums, comparison, the present time.
#include <tlxpki/time.h>

#include <algorithm>
#include <ctime>

#include "asn1/asn1_time_calendar.hpp"
#include "asn1/platform_time.hpp"
#include "der/memory.hpp"

using namespace tlx;

namespace {

using i64 = std::int64_t;

constexpr i64 kSecondsPerDay = 86400;
// Sums stay in the years that GeneralizedTime can write: 0000-01-01 00:00:00 to 9999-12-31 23:59:59.
constexpr i64 kFirstSecond = -62167219200;
constexpr i64 kLastSecond = 253402300799;
constexpr i64 kLastMonth = 12 * 10000 - 1;

constexpr bool within(i64 value, i64 least, i64 most) noexcept {
    return value >= least && value <= most;
}

/// The statuses of one sum.
struct SumStatuses {
    u32 no_time;
    u32 out_of_range;
};

/// Stores a sum of calendar seconds.
u32 store_sum(ASN1_TIME &time, i64 seconds, u32 out_of_range) noexcept {
    if (!within(seconds, kFirstSecond, kLastSecond)) return out_of_range;
    time = calendar_time(seconds);
    return 0;
}

u32 add_months(ASN1_TIME *time, i64 months, const SumStatuses &statuses) noexcept {
    if (check_ASN1_TIME_date(time) != 0) return statuses.no_time;
    const i64 month = 12 * (i64{1900} + time->year) + time->month + months;
    if (!within(month, 0, kLastMonth)) return statuses.out_of_range;
    ASN1_TIME sum = *time;
    sum.year = static_cast<i32>(month / 12 - 1900);
    sum.month = static_cast<i32>(month % 12);
    sum.day = std::min(sum.day, days_of_month(sum));
    return store_sum(*time, calendar_seconds(sum), statuses.out_of_range);
}

}  // namespace

ASN1_TIME *new_ASN1_TIME(void) {
    return TLX_NEW(ASN1_TIME);
}

void clean_ASN1_TIME(ASN1_TIME *time) {
    if (time != nullptr) *time = ASN1_TIME{};
}

void free_ASN1_TIME(ASN1_TIME *time) {
    tlx_free(time);
}

ASN1_TIME *dup_ASN1_TIME(const ASN1_TIME *time) {
    if (check_ASN1_TIME(time) != 0) return nullptr;
    ASN1_TIME *copy = new_ASN1_TIME();
    if (copy != nullptr) *copy = *time;
    return copy;
}

uint32_t check_ASN1_TIME(const ASN1_TIME *time) {
    if (time == nullptr) return 0x4103002B;
    const bool valid = within(time->month, 0, 11) && within(time->day, 1, 31) && within(time->hour, 0, 23) &&
                       within(time->minute, 0, 59) && within(time->second, 0, 59);
    return valid ? 0 : 0x4103002B;
}

uint32_t check_ASN1_TIME_date(const ASN1_TIME *time) {
    return check_ASN1_TIME(time) == 0 && time->day <= days_of_month(*time) ? 0 : 0x4104002B;
}

uint32_t add_ASN1_TIME_days(ASN1_TIME *time, int32_t days) {
    if (check_ASN1_TIME_date(time) != 0) return 0x4105002B;
    return store_sum(*time, calendar_seconds(*time) + kSecondsPerDay * days, 0x4105001C);
}

uint32_t add_ASN1_TIME_months(ASN1_TIME *time, int32_t months) {
    return add_months(time, months, {0x4106002B, 0x4106001C});
}

uint32_t add_ASN1_TIME_years(ASN1_TIME *time, int32_t years) {
    return add_months(time, i64{12} * years, {0x4107002B, 0x4107001C});
}

int32_t cmp_ASN1_TIME(const ASN1_TIME *a, const ASN1_TIME *b) {
    if (a == nullptr || b == nullptr) return (a != nullptr ? 1 : 0) - (b != nullptr ? 1 : 0);
    const std::int64_t left = calendar_seconds(*a);
    const std::int64_t right = calendar_seconds(*b);
    return (left > right ? 1 : 0) - (left < right ? 1 : 0);
}

ASN1_TIME *getCurrentGMTime(void) {
    const ASN1_TIME now = calendar_time(std::time(nullptr));
    return dup_ASN1_TIME(&now);
}

ASN1_TIME *getCurrentLocalTime(void) {
    ASN1_TIME now{};
    return local_calendar(std::time(nullptr), now) ? dup_ASN1_TIME(&now) : nullptr;
}
