#include <gtest/gtest.h>
#include <tlxpki/ber.h>
#include <tlxpki/time.h>

#include <chrono>
#include <ctime>
#include <random>
#include <string>

#include "support/allocation.hpp"
#include "support/strings.hpp"
#include "support/time_zone.hpp"

namespace tlx_test {
namespace {

using Time = std::unique_ptr<ASN1_TIME, Freer<ASN1_TIME, free_ASN1_TIME>>;

/// The fields that a text carries, then day of week and day of year.
std::string show(const ASN1_TIME *time) {
    if (time == nullptr) return "none";
    char text[160];
    std::snprintf(text, sizeof text, "%d-%02d-%02d %02d:%02d:%02d %d/%d", time->year + 1900, time->month + 1,
                  time->day, time->hour, time->minute, time->second, time->day_of_week, time->day_of_year);
    return text;
}

std::string read_utc(const std::string &text) {
    return show(Time(utcTimeToASN1_TIME(make_string(23, text).get())).get());
}
std::string read_generalized(const std::string &text) {
    return show(Time(generalizedTimeToASN1_TIME(make_string(24, text).get())).get());
}

class TimeTest : public ::testing::Test {
    LeakCheck leaks_;
};

TEST_F(TimeTest, ReadsUtcTime) {
    // Without an offset the fields go through the calendar; with one they are taken as they stand.
    EXPECT_EQ(read_utc("491231235959Z"), "2049-12-31 23:59:59 5/364");
    EXPECT_EQ(read_utc("500101000000Z"), "1950-01-01 00:00:00 0/0");
    EXPECT_EQ(read_utc("230000240060Z"), "2022-12-01 00:01:00 4/334");
    EXPECT_EQ(read_utc("2402291234+0900"), "2024-02-29 12:34:00 0/0");
    EXPECT_EQ(read_utc("230231123456-0330"), "2023-02-31 12:34:56 0/0");
    for (const char *bad :
         {"231301123456+0900", "230100123456+0900", "2301012400+0900", "230101123460+0900", "",
          "240229123456", "240229123456z", "2402291234567", "24022912345 Z", "2402291234+5Z", "24022/123456Z",
          "24022:123456Z", "240229123456 0900", "240229123456+090Z", "20240229123456Z"})
        EXPECT_EQ(read_utc(bad), "none") << bad;

    // No further than the record.
    std::uint8_t text[] = {'2', '4', '0', '2', '2', '9', '1', '2', '3', '4', 'Z'};
    const UTC_TIME exact{TLX_TAG_UTC_TIME, text, 11, 1};
    const UTC_TIME negative{TLX_TAG_UTC_TIME, text, -1, 1};
    const UTC_TIME no_data{TLX_TAG_UTC_TIME, nullptr, 11, 1};
    EXPECT_EQ(show(Time(utcTimeToASN1_TIME(&exact)).get()), "2024-02-29 12:34:00 4/59");
    for (const UTC_TIME *bad : {&negative, &no_data, static_cast<const UTC_TIME *>(nullptr)})
        EXPECT_EQ(utcTimeToASN1_TIME(bad), nullptr);
}

TEST_F(TimeTest, ReadsGeneralizedTime) {
    EXPECT_EQ(read_generalized("202402291234+0900"), "2024-02-29 12:34:00 0/0");
    EXPECT_EQ(read_generalized("99991231235960Z"), "10000-01-01 00:00:00 6/0");
    // The length of a UTCTime with seconds is that of a GeneralizedTime without: year 2402, month 29, day 12.
    EXPECT_EQ(read_generalized("240229123456Z"), "2404-05-13 10:56:00 4/133");
    for (const char *bad : {"20241301123456+0900", "20240229123456.5Z", "20240229123456", "2024022912Z"})
        EXPECT_EQ(read_generalized(bad), "none") << bad;
}

// The standard library's calendar is the oracle, for every combination of digits that a text can hold.
TEST_F(TimeTest, AgreesWithTheCalendarOfTheStandardLibrary) {
    using namespace std::chrono;
    std::mt19937 random(5);
    for (int run = 0; run < 20000; ++run) {
        std::string text(14, '0');
        for (char &digit : text)
            digit = static_cast<char>('0' + random() % 10);
        const auto number = [&](std::size_t at, std::size_t digits) {
            return std::stoi(text.substr(at, digits));
        };
        const year_month_day month = year(number(0, 4)) / January / 1 + months(number(4, 2) - 1);
        const sys_seconds moment = sys_days(month) + days(number(6, 2) - 1) + hours(number(8, 2)) +
                                   minutes(number(10, 2)) + seconds(number(12, 2));
        const sys_days day = floor<days>(moment);
        const year_month_day date(day);
        const hh_mm_ss clock(moment - day);
        const auto narrow = [](auto value) { return static_cast<std::int32_t>(value); };
        const ASN1_TIME expected{narrow(clock.seconds().count()),
                                 narrow(clock.minutes().count()),
                                 narrow(clock.hours().count()),
                                 narrow(unsigned{date.day()}),
                                 narrow(unsigned{date.month()}) - 1,
                                 int{date.year()} - 1900,
                                 narrow(weekday(day).c_encoding()),
                                 narrow((day - sys_days(date.year() / January / 1)).count()),
                                 0};
        ASSERT_EQ(read_generalized(text + "Z"), show(&expected)) << text;
    }
}

TEST_F(TimeTest, WritesTheFourForms) {
    const char *utc[] = {"2402291234Z", "2402291234+0000", "240229123456Z", "240229123456+0000"};
    const ASN1_TIME time{56, 34, 12, 29, 1, 124, 0, 0, 0};
    for (std::uint32_t form = 0; form < 4; ++form) {
        const StringRecord two(asn1TimeToUTC_TIME(&time, form));
        const StringRecord four(asn1TimeToGENERALIZED_TIME(&time, form));
        EXPECT_EQ(octets(two.get()), utc[form]);
        EXPECT_EQ(octets(four.get()), std::string("20") + utc[form]);
        EXPECT_EQ(two->type, 23);
        EXPECT_EQ(four->type, 24);
        EXPECT_EQ(two->extra, form % 2 == 0 ? 1 : 0);
        EXPECT_EQ(four->extra, two->extra);
    }
    EXPECT_EQ(asn1TimeToUTC_TIME(&time, 4), nullptr);
}

TEST_F(TimeTest, ChecksTheFields) {
    const ASN1_TIME good{59, 59, 23, 31, 11, 6, 7, 8, 9};
    const Time copy(dup_ASN1_TIME(&good));
    EXPECT_EQ(show(copy.get()), show(&good));
    EXPECT_EQ(copy->daylight, 9);
    EXPECT_EQ(check_ASN1_TIME(nullptr), 0x4103002BU);
    for (const auto field :
         {&ASN1_TIME::second, &ASN1_TIME::minute, &ASN1_TIME::hour, &ASN1_TIME::day, &ASN1_TIME::month}) {
        ASN1_TIME time = good;
        time.*field = field == &ASN1_TIME::day ? 1 : 0;
        EXPECT_EQ(check_ASN1_TIME(&time), 0U) << show(&time);
        for (const std::int32_t bad : {good.*field + 1, time.*field - 1}) {
            time.*field = bad;
            EXPECT_EQ(check_ASN1_TIME(&time), 0x4103002BU) << show(&time);
            EXPECT_EQ(dup_ASN1_TIME(&time), nullptr) << show(&time);
            EXPECT_EQ(asn1TimeToGENERALIZED_TIME(&time, 2), nullptr) << show(&time);
        }
    }
}

TEST_F(TimeTest, AddsDaysMonthsAndYearsOfTheCalendar) {
    const auto read = [](const std::string &date) {
        return Time(charToASN1_TIME((date + ",12:34:56").c_str()));
    };
    const struct {
        const char *from;
        std::uint32_t (*add)(ASN1_TIME *, std::int32_t);
        std::int32_t count;
        std::uint32_t status;
        const char *sum;
    } cases[] = {
        {"2024-02-29", add_ASN1_TIME_days, 366, 0, "2025-03-01 12:34:56 6/59"},
        {"2000-01-01", add_ASN1_TIME_days, -1, 0, "1999-12-31 12:34:56 5/364"},
        {"9999-12-31", add_ASN1_TIME_days, 1, 0x4105001C, nullptr},
        {"0000-01-01", add_ASN1_TIME_days, -1, 0x4105001C, nullptr},
        {"2024-01-01", add_ASN1_TIME_days, INT32_MAX, 0x4105001C, nullptr},
        {"2029-02-29", add_ASN1_TIME_days, 1, 0x4105002B, nullptr},
        {"2024-01-31", add_ASN1_TIME_months, 1, 0, "2024-02-29 12:34:56 4/59"},
        {"2023-12-31", add_ASN1_TIME_months, 2, 0, "2024-02-29 12:34:56 4/59"},
        {"1900-03-31", add_ASN1_TIME_months, -1, 0, "1900-02-28 12:34:56 3/58"},
        {"0000-01-15", add_ASN1_TIME_months, -1, 0x4106001C, nullptr},
        {"9999-12-01", add_ASN1_TIME_months, 1, 0x4106001C, nullptr},
        {"2100-02-29", add_ASN1_TIME_months, 0, 0x4106002B, nullptr},
        {"2028-02-29", add_ASN1_TIME_years, 1, 0, "2029-02-28 12:34:56 3/58"},
        {"2028-02-29", add_ASN1_TIME_years, -4, 0, "2024-02-29 12:34:56 4/59"},
        {"1850-06-30", add_ASN1_TIME_years, 8149, 0, "9999-06-30 12:34:56 3/180"},
        {"2024-01-01", add_ASN1_TIME_years, INT32_MIN, 0x4107001C, nullptr},
        {"2023-04-31", add_ASN1_TIME_years, 1, 0x4107002B, nullptr},
    };
    for (const auto &c : cases) {
        const Time time = read(c.from);
        EXPECT_EQ(c.add(time.get(), c.count), c.status) << c.from << " and " << c.count;
        EXPECT_EQ(show(time.get()), c.sum != nullptr ? c.sum : show(read(c.from).get())) << c.from;
    }
    for (const auto &[date, status] : {std::pair("2024-02-29", 0U),
                                       {"2029-02-29", 0x4104002BU},
                                       {"2000-02-29", 0U},
                                       {"1900-02-29", 0x4104002BU},
                                       {"2024-06-31", 0x4104002BU},
                                       {"2024-12-31", 0U}})
        EXPECT_EQ(check_ASN1_TIME_date(read(date).get()), status) << date;
    EXPECT_EQ(check_ASN1_TIME_date(nullptr), 0x4104002BU);
    EXPECT_EQ(add_ASN1_TIME_days(nullptr, 1), 0x4105002BU);
}

TEST_F(TimeTest, ReadsCharacterTimes) {
    const auto read = [](const std::string &text) { return show(Time(charToASN1_TIME(text.c_str())).get()); };
    const std::string good = "2024-02-29,12:34:56";
    EXPECT_EQ(read(good), "2024-02-29 12:34:56 0/0");
    for (std::size_t i = 0; i < good.size(); ++i) {
        EXPECT_EQ(read(good.substr(0, i)), "none") << "cut at " << i;
        EXPECT_EQ(read(std::string(good).replace(i, 1, "/")), "none") << "bad at " << i;
    }
    for (const char *bad : {"2024-02-29,12:34:567", "2024-13-29,12:34:56", "2024-02-00,12:34:56"})
        EXPECT_EQ(read(bad), "none") << bad;
    EXPECT_EQ(charToASN1_TIME(nullptr), nullptr);
}

TEST_F(TimeTest, Compares) {
    const ASN1_TIME new_year{0, 0, 0, 1, 0, 124, 0, 0, 0};
    const ASN1_TIME carried{0, 0, 24, 31, 11, 123, 6, 77, 1};
    const ASN1_TIME before{59, 59, 23, 31, 11, 123, 0, 0, 0};
    constexpr std::int32_t kMost = INT32_MAX;
    const ASN1_TIME latest{kMost, kMost, kMost, kMost, kMost, kMost, 0, 0, 0};
    const ASN1_TIME earliest{-kMost, -kMost, -kMost, -kMost, -kMost, -kMost, 0, 0, 0};
    EXPECT_EQ(cmp_ASN1_TIME(&new_year, &carried), 0);
    EXPECT_EQ(cmp_ASN1_TIME(&new_year, &before), 1);
    EXPECT_EQ(cmp_ASN1_TIME(&earliest, &latest), -1);
    EXPECT_EQ(cmp_ASN1_TIME(nullptr, &earliest), -1);
    const auto utc = [](const char *a, const char *b) {
        return cmp_UTC_TIME(make_string(23, a).get(), make_string(23, b).get());
    };
    EXPECT_EQ(utc("991231235959Z", "0001010000Z"), -1);
    EXPECT_EQ(utc("9912312359", "991231235959Z"), -1) << "unreadable";
    EXPECT_EQ(cmp_GENERALIZED_TIME(make_string(24, "200001010000+0900").get(),
                                   make_string(24, "200001010000Z").get()),
              0)
        << "the offset is not applied";
}

TEST_F(TimeTest, AddsSeconds) {
    struct {
        std::uint32_t (*add)(ASN1_STRING **time, std::int32_t seconds);
        const char *text;
        std::int32_t seconds;
        std::uint32_t status;
        const char *expected;
    } const cases[] = {{add_UTC_TIME, "231231235959Z", 1, 0, "240101000000Z"},
                       {add_UTC_TIME, "2312312359+0900", 60, 0, "2401010000+0900"},
                       {add_UTC_TIME, "231231235959-0330", 1, 0, "240101000000-0330"},
                       {add_UTC_TIME, "491231235959Z", 1, 0x45020030, "491231235959Z"},
                       {add_UTC_TIME, "500101000000Z", -1, 0x45020030, "500101000000Z"},
                       {add_UTC_TIME, "500101000000", 1, 0x4502003C, "500101000000"},
                       {add_GENERALIZED_TIME, "00000101000000Z", -1, 0x45030030, "00000101000000Z"},
                       {add_GENERALIZED_TIME, "20491231235959Z", 1, 0, "20500101000000Z"},
                       {add_GENERALIZED_TIME, "202312312359Z", INT32_MAX, 0, "209201190313Z"},
                       {add_GENERALIZED_TIME, "202312312359+0900", INT32_MIN, 0, "195512132044+0900"},
                       {add_GENERALIZED_TIME, "99991231235959Z", 1, 0x45030030, "99991231235959Z"},
                       {add_GENERALIZED_TIME, "2023123123595Z", 1, 0x4503003C, "2023123123595Z"}};
    for (const auto &c : cases) {
        ASN1_STRING *time = make_string(0, c.text).release();
        EXPECT_EQ(c.add(&time, c.seconds), c.status) << c.text;
        EXPECT_EQ(octets(time), c.expected) << c.text << " and " << c.seconds;
        free_ASN1_STRING(time);
    }
    ASN1_STRING *none = nullptr;
    for (ASN1_STRING **missing : {static_cast<ASN1_STRING **>(nullptr), &none}) {
        EXPECT_EQ(add_UTC_TIME(missing, 1), 0x45020049U);
        EXPECT_EQ(add_GENERALIZED_TIME(missing, 1), 0x45030049U);
    }
}

TEST_F(TimeTest, TellsThePresentTimeInEveryZone) {
    const auto is_present = [](ASN1_TIME *made, std::tm *(*fields_of)(const std::time_t *)) {
        const std::string shown = show(Time(made).get());
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
        EXPECT_EQ(read_utc("240310023000Z"), "2024-03-10 02:30:00 0/69") << zone;
    }
    set_time_zone("");
}

TEST_F(TimeTest, SurvivesFailingAllocations) {
    EXPECT_EQ(sweep_failing_allocations([] { return Time(getCurrentGMTime()) != nullptr; }), 1U);
    ASN1_STRING *sum = make_string(23, "240229123456Z").release();
    sweep_failing_allocations([&] {
        const std::uint32_t status = add_UTC_TIME(&sum, 1);
        EXPECT_TRUE(status == 0 || status == 0x45020030) << status;
        EXPECT_EQ(octets(sum), status == 0 ? "240229123457Z" : "240229123456Z");
        return status == 0;
    });
    free_ASN1_STRING(sum);
}

}  // namespace
}  // namespace tlx_test
