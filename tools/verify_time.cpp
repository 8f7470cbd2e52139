#include <chrono>
#include <regex>

#include "failure.hpp"
#include "verify.hpp"

namespace tool {

namespace {

/// Null for a text that is no time.
Time parse_time(const std::string &text) {
    static const std::regex kForm(
        R"((\d{4})-(\d\d)-(\d\d)(?:[,Tt ](\d\d):(\d\d):(\d\d)(?:\.\d+)?(Z|z|([+-])(\d\d):(\d\d))?)?)");
    std::smatch match;
    if (text.size() > 64 || !std::regex_match(text, match, kForm)) return nullptr;
    const auto number = [&match](std::size_t group) {
        return match[group].matched ? std::stoi(match[group]) : 0;
    };

    using namespace std::chrono;
    const year_month_day date(year(number(1)), month(static_cast<unsigned>(number(2))),
                              day(static_cast<unsigned>(number(3))));
    if (!date.ok() || number(4) > 23 || number(5) > 59 || number(6) > 59 || number(9) > 23 ||
        number(10) > 59) {
        return nullptr;
    }
    const minutes offset = (hours(number(9)) + minutes(number(10))) * (match[8] == "-" ? -1 : 1);
    const sys_seconds moment =
        sys_days(date) + hours(number(4)) + minutes(number(5)) + seconds(number(6)) - offset;

    const sys_days midnight = floor<days>(moment);
    const year_month_day utc(midnight);
    const hh_mm_ss clock(moment - midnight);
    auto time = made<Time>(new_ASN1_TIME());
    time->year = static_cast<int>(utc.year()) - 1900;
    time->month = static_cast<int>(static_cast<unsigned>(utc.month())) - 1;
    time->day = static_cast<int>(static_cast<unsigned>(utc.day()));
    time->hour = static_cast<int>(clock.hours().count());
    time->minute = static_cast<int>(clock.minutes().count());
    time->second = static_cast<int>(clock.seconds().count());
    return time;
}

}  // namespace

Time time_of_option(const std::string &text) {
    Time time = parse_time(text);
    if (time == nullptr && !text.empty()) {
        throw Failure("--at: \"" + text + "\" is no time; write it like 2026-01-31 or 2026-01-31T12:00:00Z");
    }
    return time;
}

}  // namespace tool
