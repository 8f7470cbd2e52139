#include <gtest/gtest.h>
#include <tlxpki/ber.h>
#include <tlxpki/convert.h>

#include "support/allocation.hpp"
#include "support/korean_peer.hpp"
#include "support/strings.hpp"

namespace {

using namespace std::string_literals;
using tlx_test::make_string;
using tlx_test::StringRecord;

std::string pair_of(std::uint32_t value) {
    return {static_cast<char>(value >> 8), static_cast<char>(value)};
}

template <std::uint32_t (*Convert)(const ASN1_STRING *, char **)>
std::string from_record(const ASN1_STRING *record) {
    char *text = nullptr;
    const std::uint32_t size = Convert(record, &text);
    EXPECT_EQ(text == nullptr, size == 0);
    return tlx_test::take(text, size);
}
std::string from_bmp(const std::string &units) {
    return from_record<bmpToCP949>(make_string(30, units).get());
}
std::string from_utf8(const std::string &octets) {
    return from_record<utf8ToCP949>(make_string(12, octets).get());
}

template <std::uint32_t (*Convert)(const char *, ASN1_STRING **), std::int32_t Type>
std::string to_record(const char *text) {
    ASN1_STRING *made = nullptr;
    const std::uint32_t size = Convert(text, &made);
    const StringRecord record(made);
    EXPECT_EQ(size, record ? static_cast<std::uint32_t>(record->length) : 0U);
    if (record) {
        EXPECT_EQ(record->type, Type);
        EXPECT_EQ(record->data[size], 0);
    }
    return tlx_test::octets(record.get());
}
constexpr auto to_bmp = to_record<cp949ToBMP, TLX_TAG_BMP_STRING>;
constexpr auto to_utf8 = to_record<cp949ToUTF8, TLX_TAG_UTF8_STRING>;

class ConvertTest : public ::testing::Test {
    tlx_test::LeakCheck leaks_;
};

TEST_F(ConvertTest, KnowsThePlaneOfTheSystem) {
    unsigned characters = 0;
    for (std::uint32_t pair = 0; pair < 0x10000; ++pair) {
        const auto lead = static_cast<std::uint8_t>(pair >> 8);
        const auto trail = static_cast<std::uint8_t>(pair);
        const bool in_plane = lead >= 0xA1 && lead <= 0xFD && trail >= 0xA1 && trail <= 0xFE;
        const std::uint32_t code_point = cp949ToUnicode(lead, trail);
        const std::string found = code_point == 0 ? "" : pair_of(code_point);
        ASSERT_EQ(found, in_plane ? tlx_test::korean::euc_to_utf16(pair_of(pair)) : "") << std::hex << pair;
        characters += found.empty() ? 0U : 1U;
    }
    EXPECT_EQ(characters, 8227U);
    EXPECT_EQ(cp949ToUnicode(0xA1, 0xA1), 0x3000U);
    EXPECT_EQ(cp949ToUnicode(0xA1, 0xA4), 0x00B7U);
}

TEST_F(ConvertTest, KnowsTheWayBack) {
    const auto in_both_octets = [](char octet) { return static_cast<unsigned char>(octet) >= 0xA1; };
    for (std::uint32_t code_point = 0; code_point < 0x10000; ++code_point) {
        const std::string euc = tlx_test::korean::utf16_to_euc(pair_of(code_point));
        // A system also takes U+20A9, which the plane has in full width only, and what lies outside the
        // plane.
        const bool in_plane = euc.size() == 2 && in_both_octets(euc[0]) && in_both_octets(euc[1]) &&
                              tlx_test::korean::euc_to_utf16(euc) == pair_of(code_point);
        ASSERT_EQ(tlx_test::take(unicodeToCP949(code_point), 2), in_plane ? euc : "(null)")
            << std::hex << code_point;
    }
    for (const std::uint32_t code_point : {0x10000U, 0x13000U, 0x1AC00U, 0xFFFF3000U})
        EXPECT_EQ(unicodeToCP949(code_point), nullptr) << std::hex << code_point;
}

TEST_F(ConvertTest, ConvertsBmpText) {
    EXPECT_EQ(from_bmp("\0A"s), "A");
    EXPECT_EQ(from_bmp("\xAC\x00\0!\xD5\x58"s), "\xB0\xA1!\xC7\xCF");
    EXPECT_EQ(from_bmp("\x7F\xFC\x80\x00"s), "|\xE9\xA5") << "both Hanja of the plane";
    // Below U+8000 the low octet is all that counts, even of a character that the table has.
    EXPECT_EQ(from_bmp("\x30\x00"s), "\0"s);
    EXPECT_EQ(from_bmp("\x4E\x7E"s), "~");
    EXPECT_EQ(from_bmp("\x00\xC1"s), "A");
    EXPECT_EQ(from_bmp("\0A\xAC\x02"s), "(null)") << "Hangul outside the plane";
    EXPECT_EQ(from_bmp("\0A\xAC"s), "(null)") << "half a unit";
    EXPECT_EQ(from_bmp(""), "(null)");
    char *text = nullptr;
    EXPECT_EQ(bmpToCP949(nullptr, &text), 0U);
    EXPECT_EQ(bmpToCP949(make_string(30, "\0A"s).get(), nullptr), 0U);
}

TEST_F(ConvertTest, ConvertsUtf8Text) {
    EXPECT_EQ(from_utf8("A~"), "A~");
    EXPECT_EQ(from_utf8("\xEA\xB0\x80!\xE3\x80\x80"), "\xB0\xA1!\xA1\xA1");
    // Sequences of two and four octets leave two zero octets, even when the table has the character.
    EXPECT_EQ(from_utf8("caf\xC3\xA9s"), "caf\0\0s"s);
    EXPECT_EQ(from_utf8("\xC2\xB7"), "\0\0"s);
    EXPECT_EQ(from_utf8("x\xF0\x9F\x98\x80y"), "x\0\0y"s);
    const char *bad[] = {"",
                         "\xEA\xB0\x82",  // Hangul outside the plane
                         "\xEA\xB0",
                         "A\xC3",
                         "\xF0\x9F\x98",  // truncated
                         "\x80",
                         "\xC3(",
                         "\xEA\xB0(",  // no lead, no continuation
                         "\xC0\x80",
                         "\xC1\xBF",
                         "\xE0\x82\xB7",
                         "\xF0\x83\x80\x80",  // overlong
                         "\xED\xA0\x80",
                         "\xF4\x90\x80\x80",
                         "\xF8\x88\x80\x80\x80",
                         "\xFF"};
    for (const char *text : bad)
        EXPECT_EQ(from_utf8(text), "(null)") << testing::PrintToString(text);
}

TEST_F(ConvertTest, ConvertsFromKoreanText) {
    EXPECT_EQ(to_bmp("A\xB0\xA1!\xA1\xA4"), "\0A\xAC\x00\0!\x00\xB7"s);
    EXPECT_EQ(to_utf8("A\xB0\xA1!\xA1\xA4\xA2\xE6"), "A\xEA\xB0\x80!\xC2\xB7\xE2\x82\xAC");
    // A lead octet alone, pairs outside the plane, an empty place.
    for (const char *bad : {"A\xB0", "\xB0\x41", "\x80\xA1", "\xFE\xA1", "\xC9\xA1", "\x81\x41", ""}) {
        EXPECT_EQ(to_bmp(bad), "(null)") << testing::PrintToString(bad);
        EXPECT_EQ(to_utf8(bad), "(null)") << testing::PrintToString(bad);
    }
    EXPECT_EQ(to_bmp(nullptr), "(null)");
}

TEST_F(ConvertTest, WidensAndNarrows) {
    const auto widen = [](const std::string &text) { return tlx_test::call(ascTouni, text); };
    const auto narrow = [](const std::string &units) { return tlx_test::call(uniToasc, units); };
    EXPECT_EQ(widen("Beavis"), "\0B\0e\0a\0v\0i\0s\0\0"s) << "RFC 7292, appendix B.1";
    EXPECT_EQ(widen(""), "\0\0"s);
    EXPECT_EQ(widen("\xE9"), "\0\xE9\0\0"s);
    EXPECT_EQ(narrow("\0B\0e\0\0"s), "Be");
    EXPECT_EQ(narrow("\0B\0\xE9"s), "B\xE9") << "the terminator may be missing";
    EXPECT_EQ(narrow("\0B\0\0\0\0"s), "B\0"s) << "and is one unit";
    for (const std::string &bad : {"\x01\x42\0\0"s, "\0B\0"s, "\0\0"s, ""s})
        EXPECT_EQ(narrow(bad), "(null)");
    std::uint8_t *units = nullptr;
    EXPECT_EQ(ascTouni(nullptr, 0, &units), 0U);
    EXPECT_EQ(ascTouni("a", 0x7FFFFFFF, &units), 0U);
    EXPECT_EQ(units, nullptr);
}

TEST_F(ConvertTest, ReadsHexadecimal) {
    EXPECT_EQ(tlx_test::call(hexToASCII, "414a6B00Ff"s), "AJk\0\xFF"s);
    for (const char *bad : {"", "4", "414", "4g", "4 ", "0x41"})
        EXPECT_EQ(tlx_test::call(hexToASCII, std::string(bad)), "(null)") << bad;
}

TEST_F(ConvertTest, SurvivesFailingAllocations) {
    const auto sweep = [](auto convert, const auto &in, const std::string &expected) {
        return tlx_test::sweep_failing_allocations([&] {
            const std::string result = convert(in);
            EXPECT_TRUE(result == expected || result == "(null)");
            return result == expected;
        });
    };
    const StringRecord utf8 = make_string(12, "\xEA\xB0\x80");
    const StringRecord bmp = make_string(30, "\xAC\x00"s);
    EXPECT_EQ(sweep(from_record<utf8ToCP949>, utf8.get(), "\xB0\xA1"), 1U);
    EXPECT_EQ(sweep(from_record<bmpToCP949>, bmp.get(), "\xB0\xA1"), 1U);
    EXPECT_EQ(sweep(to_bmp, "\xB0\xA1", "\xAC\x00"s), 2U);
    EXPECT_EQ(sweep(to_utf8, "\xB0\xA1", "\xEA\xB0\x80"), 2U);
    EXPECT_EQ(sweep([](const std::string &text) { return tlx_test::call(ascTouni, text); }, "a"s, "\0a\0\0"s),
              1U);
}

}  // namespace
