// Times: texts and their fields, the calendar beside the standard library's, zones.

#include <chrono>
#include <ctime>
#include <random>

#include "support/allocation.hpp"
#include "support/octets.hpp"
#include "support/rows.hpp"

namespace {

using namespace tlx_test;

using Time = Held<free_ASN1_TIME>;

/// The fields that a text carries, then day of week and day of year, of a time that is freed.
std::string show(ASN1_TIME *made) {
    const Time time(made);
    if (time == nullptr) return "none";
    char text[160];
    std::snprintf(text, sizeof text, "%d-%02d-%02d %02d:%02d:%02d %d/%d", time->year + 1900, time->month + 1,
                  time->day, time->hour, time->minute, time->second, time->day_of_week, time->day_of_year);
    return text;
}

/// What a reader makes of a text in a block of its own size, which a sanitizer guards.
std::string read(ASN1_TIME *(*reader)(const ASN1_STRING *), const std::string &text) {
    std::vector<std::uint8_t> block(text.begin(), text.end());
    const ASN1_STRING record{0, block.data(), static_cast<std::int32_t>(block.size()), 1};
    return show(reader(&record));
}

template <typename Reader>
Operation reads(Reader reader) {
    return {[reader](const Row &row) { return read(reader, row[1]); }, {"none"}};
}

using Adder = std::uint32_t (*)(ASN1_STRING **, std::int32_t);
Operation adds(Adder add, const std::set<std::string> &without_memory) {
    return {[add](const Row &row) -> std::string {
                ASN1_STRING *time = string_of(0, row[1]).release();
                if (octets(time) != row[1]) return free_ASN1_STRING(time), "no text";
                const std::uint32_t status = add(&time, static_cast<std::int32_t>(row.number(2)));
                const String owner(time);
                EXPECT_TRUE(status == 0 || octets(time) == row[1]) << "unchanged on failure";
                return status == 0 ? octets(time) : status_text(status);
            },
            without_memory};
}

using Comparer = std::int32_t (*)(const ASN1_STRING *, const ASN1_STRING *);
Operation compares(Comparer compare) {
    return {[compare](const Row &row) {
        return std::to_string(compare(string_of(0, row[1]).get(), string_of(0, row[2]).get()));
    }};
}

/// A time of "second minute hour day month year", as the record has them.
ASN1_TIME time_of(const std::string &text) {
    ASN1_TIME time{0, 0, 0, 0, 0, 0, 7, 8, 9};
    std::istringstream(text) >> time.second >> time.minute >> time.hour >> time.day >> time.month >>
        time.year;
    return time;
}

/// The status of a check, which copying and writing agree with.
std::string check(const Row &row) {
    const ASN1_TIME time = time_of(row[1]);
    const Time copy(dup_ASN1_TIME(&time));
    const bool good = check_ASN1_TIME(&time) == 0;
    EXPECT_EQ(good, String(asn1TimeToGENERALIZED_TIME(&time, 2)) != nullptr);
    EXPECT_EQ(good,
              copy != nullptr && copy->day_of_week == 7 && copy->day_of_year == 8 && copy->daylight == 9);
    return status_text(check_ASN1_TIME(&time));
}

/// The text of a form, with its type and whether it is in UTC.
template <typename Writer>
Operation writes(Writer writer) {
    return {[writer](const Row &row) -> std::string {
                const ASN1_TIME time = time_of(row[1]);
                const String text(writer(&time, row.number(2)));
                if (text == nullptr) return "none";
                return octets(text.get()) + " " + std::to_string(text->type) + " " +
                       std::to_string(text->extra);
            },
            {"none"}};
}

std::string compare(const Row &row) {
    const ASN1_TIME a = time_of(row[1]);
    const ASN1_TIME b = time_of(row[2]);
    return std::to_string(cmp_ASN1_TIME(&a, &b));
}

ASN1_TIME *noon_of(const Row &row) {
    return charToASN1_TIME((row[1] + ",12:34:56").c_str());
}

/// The sum, or the status; a time that it is refused for stays as it was.
Operation adds_to_date(std::uint32_t (*add)(ASN1_TIME *, std::int32_t)) {
    return {[add](const Row &row) {
        ASN1_TIME *time = noon_of(row);
        const std::uint32_t status = add(time, static_cast<std::int32_t>(row.number(2)));
        const std::string sum = show(time);
        EXPECT_TRUE(status == 0 || sum == show(noon_of(row))) << sum;
        return status == 0 ? sum : status_text(status);
    }};
}

using TimeTest = LeakFreeTest;

TEST_F(TimeTest, Rows) {
    expect_rows("time.txt",
                {{"UTCTime", reads(utcTimeToASN1_TIME)},
                 {"GeneralizedTime", reads(generalizedTimeToASN1_TIME)},
                 {"text", {[](const Row &row) { return show(charToASN1_TIME(row[1].c_str())); }, {"none"}}},
                 {"add UTCTime", adds(add_UTC_TIME, {"45020030", "4502003C", "no text"})},
                 {"add GeneralizedTime", adds(add_GENERALIZED_TIME, {"45030030", "4503003C", "no text"})},
                 {"add days", adds_to_date(add_ASN1_TIME_days)},
                 {"add months", adds_to_date(add_ASN1_TIME_months)},
                 {"add years", adds_to_date(add_ASN1_TIME_years)},
                 {"date", {[](const Row &row) {
                      return status_text(check_ASN1_TIME_date(Time(noon_of(row)).get()));
                  }}},
                 {"write UTCTime", writes(asn1TimeToUTC_TIME)},
                 {"write GeneralizedTime", writes(asn1TimeToGENERALIZED_TIME)},
                 {"check", {check}},
                 {"compare", {compare}},
                 {"compare UTCTime", compares(cmp_UTC_TIME)},
                 {"compare GeneralizedTime", compares(cmp_GENERALIZED_TIME)}});
    std::uint8_t digits[] = "240229123456Z";
    const UTC_TIME negative{TLX_TAG_UTC_TIME, digits, -1, 1};
    const UTC_TIME no_data{TLX_TAG_UTC_TIME, nullptr, 11, 1};
    for (const UTC_TIME *bad : {&negative, &no_data, static_cast<const UTC_TIME *>(nullptr)})
        EXPECT_EQ(utcTimeToASN1_TIME(bad), nullptr);
    EXPECT_EQ(charToASN1_TIME(nullptr), nullptr);
    EXPECT_EQ(check_ASN1_TIME(nullptr), 0x4103002BU);
    EXPECT_EQ(check_ASN1_TIME_date(nullptr), 0x4104002BU);
    EXPECT_EQ(add_ASN1_TIME_days(nullptr, 1), 0x4105002BU);
    const ASN1_TIME epoch = time_of("0 0 0 1 0 70");
    ASN1_TIME cleaned = epoch;
    clean_ASN1_TIME(&cleaned);
    EXPECT_EQ(cleaned.day, 0);
    EXPECT_EQ(cmp_ASN1_TIME(nullptr, &epoch), -1);
    const std::string good = "2024-02-29,12:34:56";
    for (std::size_t i = 0; i < good.size(); ++i) {
        EXPECT_EQ(show(charToASN1_TIME(good.substr(0, i).c_str())), "none") << "cut at " << i;
        EXPECT_EQ(show(charToASN1_TIME(std::string(good).replace(i, 1, "/").c_str())), "none")
            << "bad at " << i;
    }
    ASN1_STRING *none = nullptr;
    for (ASN1_STRING **missing : {static_cast<ASN1_STRING **>(nullptr), &none}) {
        EXPECT_EQ(add_UTC_TIME(missing, 1), 0x45020049U);
        EXPECT_EQ(add_GENERALIZED_TIME(missing, 1), 0x45030049U);
    }
}

// For every combination of digits that a text can hold.
TEST_F(TimeTest, AgreesWithTheCalendarOfTheStandardLibrary) {
    using namespace std::chrono;
    std::mt19937 random(5);
    for (int run = 0; run < 20000; ++run) {
        int fields[6];  // from the year on
        for (int &field : fields)
            field = static_cast<int>(random() % (&field == fields ? 10000 : 100));
        char text[32];
        std::snprintf(text, sizeof text, "%04d%02d%02d%02d%02d%02dZ", fields[0], fields[1], fields[2],
                      fields[3], fields[4], fields[5]);
        const year_month_day month = year(fields[0]) / January / 1 + months(fields[1] - 1);
        const sys_seconds moment = sys_days(month) + days(fields[2] - 1) + hours(fields[3]) +
                                   minutes(fields[4]) + seconds(fields[5]);
        const sys_days day = floor<days>(moment);
        const year_month_day date(day);
        const hh_mm_ss clock(moment - day);
        char expected[160];
        std::snprintf(expected, sizeof expected, "%d-%02u-%02u %02d:%02d:%02d %u/%d", int{date.year()},
                      unsigned{date.month()}, unsigned{date.day()}, static_cast<int>(clock.hours().count()),
                      static_cast<int>(clock.minutes().count()), static_cast<int>(clock.seconds().count()),
                      weekday(day).c_encoding(),
                      static_cast<int>((day - sys_days(date.year() / January / 1)).count()));
        ASSERT_EQ(read(generalizedTimeToASN1_TIME, text), expected) << text;
    }
}

void set_time_zone(const char *zone) {
#ifdef _WIN32
    _putenv_s("TZ", zone);
    _tzset();
#else
    setenv("TZ", zone, 1);
    tzset();
#endif
}

TEST_F(TimeTest, TellsThePresentTimeInEveryZone) {
    const auto is_present = [](ASN1_TIME *made, std::tm *(*fields_of)(const std::time_t *)) {
        const std::string shown = show(made);
        const std::time_t now = std::time(nullptr);
        for (const std::time_t moment : {now, now - 1}) {
            const std::tm fields = *fields_of(&moment);
            char text[32];
            std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S ", &fields);
            if (shown == text + std::to_string(fields.tm_wday) + "/" + std::to_string(fields.tm_yday))
                return true;
        }
        return false;
    };
    for (const char *zone : {"UTC0", "KST-9", "EST5EDT,M3.2.0,M11.1.0"}) {
        set_time_zone(zone);
        EXPECT_TRUE(is_present(getCurrentGMTime(), std::gmtime)) << zone;
        EXPECT_TRUE(is_present(getCurrentLocalTime(), std::localtime)) << zone;
        EXPECT_EQ(read(utcTimeToASN1_TIME, "240310023000Z"), "2024-03-10 02:30:00 0/69") << zone;
    }
    EXPECT_EQ(sweep_failing_allocations([] { return Time(getCurrentGMTime()) != nullptr; }), 1U);
}

}  // namespace
