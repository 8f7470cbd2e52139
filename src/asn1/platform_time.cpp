#include "asn1/platform_time.hpp"

#include <algorithm>

namespace tlx {
namespace {

bool break_down(std::time_t moment, std::tm &fields) noexcept {
#ifdef _WIN32
    return localtime_s(&fields, &moment) == 0;
#else
    return localtime_r(&moment, &fields) != nullptr;
#endif
}

}  // namespace

bool local_calendar(std::time_t moment, ASN1_TIME &time) noexcept {
    std::tm fields{};
    if (!break_down(moment, fields)) return false;
    time.second = std::min(fields.tm_sec, 59);  // a zone that counts leap seconds has a second 60
    time.minute = fields.tm_min;
    time.hour = fields.tm_hour;
    time.day = fields.tm_mday;
    time.month = fields.tm_mon;
    time.year = fields.tm_year;
    time.day_of_week = fields.tm_wday;
    time.day_of_year = fields.tm_yday;
    time.daylight = fields.tm_isdst;
    return true;
}

}  // namespace tlx
