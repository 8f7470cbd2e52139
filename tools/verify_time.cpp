#include <chrono>
#include <string_view>

#include "failure.hpp"
#include "verify.hpp"

namespace tool {

namespace {

/// Takes a text to pieces from its front.
class TimeText {
  public:
    explicit TimeText(std::string_view text) : rest_(text) {}

    /// Takes a number of so many digits.
    int number(std::size_t digits) {
        int value = 0;
        for (std::size_t i = 0; i < digits; ++i) {
            const char digit = take("0123456789");
            value = value * 10 + (digit - '0');
        }
        return value;
    }
    /// Takes one of these characters.
    char take(std::string_view characters) {
        good_ = good_ && !rest_.empty() && characters.find(rest_.front()) != std::string_view::npos;
        if (!good_) return '0';
        const char taken = rest_.front();
        rest_.remove_prefix(1);
        return taken;
    }
    [[nodiscard]] bool begins_with(char c) const { return !rest_.empty() && rest_.front() == c; }
    [[nodiscard]] bool at_end() const { return rest_.empty(); }
    [[nodiscard]] bool good() const { return good_ && rest_.empty(); }
    /// Takes any number of digits, at least one.
    void digits() {
        do {
            (void)number(1);
        } while (good_ && !rest_.empty() && rest_.front() >= '0' && rest_.front() <= '9');
    }

  private:
    std::string_view rest_;
    bool good_ = true;
};

struct Clock {
    int hour = 0, minute = 0, second = 0;
    int offset = 0;  ///< in minutes east of UTC
    bool exists = true;
};

/// hh:mm:ss, with a fraction that does not count, and "Z" or an offset.
Clock take_clock(TimeText &text) {
    Clock clock;
    clock.hour = text.number(2);
    (void)text.take(":");
    clock.minute = text.number(2);
    (void)text.take(":");
    clock.second = text.number(2);
    if (text.begins_with('.')) {
        (void)text.take(".");
        text.digits();
    }
    clock.exists = clock.hour <= 23 && clock.minute <= 59 && clock.second <= 59;
    const char zone = text.at_end() ? 'Z' : text.take("Zz+-");
    if (zone != '+' && zone != '-') return clock;
    const int hours = text.number(2);
    (void)text.take(":");
    const int minutes = text.number(2);
    clock.exists = clock.exists && hours <= 23 && minutes <= 59;
    clock.offset = (hours * 60 + minutes) * (zone == '-' ? -1 : 1);
    return clock;
}

}  // namespace

Time parse_time(const std::string &text) {
    TimeText rest(text);
    const int year_number = rest.number(4);
    (void)rest.take("-");
    const auto month_number = static_cast<unsigned>(rest.number(2));
    (void)rest.take("-");
    const auto day_number = static_cast<unsigned>(rest.number(2));
    Clock read;
    if (!rest.at_end()) {
        (void)rest.take(",Tt ");
        read = take_clock(rest);
    }
    if (!rest.good() || !read.exists) return nullptr;

    using namespace std::chrono;
    const year_month_day date{year(year_number), month(month_number), day(day_number)};
    if (!date.ok()) return nullptr;
    const sys_seconds moment = sys_days(date) + hours(read.hour) + minutes(read.minute) +
                               seconds(read.second) - minutes(read.offset);

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

Time time_of_option(const std::string &text) {
    Time time = parse_time(text);
    if (time == nullptr && !text.empty()) {
        throw Failure("--at: \"" + text + "\" is no time; write it like 2026-01-31 or 2026-01-31T12:00:00Z");
    }
    return time;
}

}  // namespace tool
