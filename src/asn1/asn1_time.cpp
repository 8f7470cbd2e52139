// ASN1_TIME records: lifecycle, checks, comparison, the present time.
#include <tlxpki/time.h>

#include <ctime>

#include "asn1/asn1_time_calendar.hpp"
#include "asn1/platform_time.hpp"
#include "der/memory.hpp"

using namespace tlx;

namespace {

constexpr bool within(i32 value, i32 least, i32 most) noexcept {
    return value >= least && value <= most;
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
