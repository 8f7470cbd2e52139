#include <gtest/gtest.h>
#include <tlxpki/ber.h>
#include <tlxpki/convert.h>

#include "support/allocation.hpp"
#include "support/korean_peer.hpp"
#include "support/strings.hpp"

namespace tlx_test {
namespace {

using namespace std::string_literals;

std::string pair_of(std::uint32_t value) {
    return {static_cast<char>(value >> 8), static_cast<char>(value)};
}

template <std::uint32_t (*Convert)(const ASN1_STRING *, char **), std::int32_t Type>
std::string from_record(const std::string &octets) {
    char *text = nullptr;
    const std::uint32_t size = Convert(make_string(Type, octets).get(), &text);
    EXPECT_EQ(text == nullptr, size == 0);
    return take(text, size);
}
constexpr auto from_bmp = from_record<bmpToCP949, TLX_TAG_BMP_STRING>;
constexpr auto from_utf8 = from_record<utf8ToCP949, TLX_TAG_UTF8_STRING>;

template <std::uint32_t (*Convert)(const char *, ASN1_STRING **), std::int32_t Type>
std::string to_record(const std::string &text) {
    ASN1_STRING *made = nullptr;
    const std::uint32_t size = Convert(text.c_str(), &made);
    const StringRecord record(made);
    EXPECT_EQ(size, record ? static_cast<std::uint32_t>(record->length) : 0U);
    if (record) {
        EXPECT_EQ(record->type, Type);
        EXPECT_EQ(record->data[size], 0);
    }
    return octets(made);
}
constexpr auto to_bmp = to_record<cp949ToBMP, TLX_TAG_BMP_STRING>;
constexpr auto to_utf8 = to_record<cp949ToUTF8, TLX_TAG_UTF8_STRING>;

class Convert : public ::testing::Test {
    LeakCheck leaks_;
};

TEST_F(Convert, KnowsThePlaneOfTheSystemBothWays) {
    const auto in_plane = [](std::uint32_t pair) {
        return pair >= 0xA1A1 && pair <= 0xFDFE && (pair & 0xFF) >= 0xA1 && (pair & 0xFF) <= 0xFE;
    };
    unsigned characters = 0;
    for (std::uint32_t value = 0; value < 0x10000; ++value) {
        const std::uint32_t code_point =
            cp949ToUnicode(static_cast<std::uint8_t>(value >> 8), static_cast<std::uint8_t>(value));
        const std::string found = code_point == 0 ? "" : pair_of(code_point);
        ASSERT_EQ(found, in_plane(value) ? korean::euc_to_utf16(pair_of(value)) : "") << std::hex << value;
        characters += found.empty() ? 0U : 1U;

        // A system also takes U+20A9, which the plane has in full width only, and what lies outside the
        // plane.
        const std::string euc = korean::utf16_to_euc(pair_of(value));
        const bool known = euc.size() == 2 && static_cast<std::uint8_t>(euc[0]) >= 0xA1 &&
                           static_cast<std::uint8_t>(euc[1]) >= 0xA1 &&
                           korean::euc_to_utf16(euc) == pair_of(value);
        ASSERT_EQ(take(unicodeToCP949(value), 2), known ? euc : "(null)") << std::hex << value;
    }
    EXPECT_EQ(characters, 8227U);
    EXPECT_EQ(cp949ToUnicode(0xA1, 0xA4), 0x00B7U);
    for (const std::uint32_t code_point : {0x10000U, 0x13000U, 0x1AC00U, 0xFFFF3000U})
        EXPECT_EQ(unicodeToCP949(code_point), nullptr) << std::hex << code_point;
}

std::string as_utf8(std::int32_t type, const std::string &contents) {
    return octets(StringRecord(ASN1_STRING_to_UTF8_STRING(make_string(type, contents).get())).get());
}

TEST_F(Convert, KnowsTheHangulThatCodePage949Adds) {
    const auto in_plane = [](std::uint32_t pair) { return pair >= 0xA1A1 && (pair & 0xFF) >= 0xA1; };
    unsigned characters = 0;
    for (std::uint32_t value = 0x8000; value < 0x10000; ++value) {
        if (in_plane(value)) continue;
        // Behind a character of the plane. What is no pair makes Latin-1 of it.
        const std::string unit = korean::cp949_to_utf16(pair_of(value));
        const std::string text = as_utf8(TLX_TAG_T61_STRING, "\xB0\xA1" + pair_of(value));
        if (unit.empty()) {
            ASSERT_TRUE(text.starts_with("\xC2\xB0\xC2\xA1")) << std::hex << value;
            continue;
        }
        ASSERT_EQ(text, as_utf8(TLX_TAG_BMP_STRING, "\xAC\x00"s + unit)) << std::hex << value;
        ++characters;
    }
    EXPECT_EQ(characters, 8822U);
}

TEST_F(Convert, AnyStringAsUtf8) {
    const struct {
        std::int32_t type;
        std::string contents;
        const char *text;
    } cases[] = {
        {TLX_TAG_UTF8_STRING, "", ""},
        {TLX_TAG_UTF8_STRING, "\xB0\xA1", "가"},
        {TLX_TAG_UTF8_STRING, "\x8C\x63", "(null)"},
        {TLX_TAG_UTF8_STRING, "A\xFF", "(null)"},
        {18, "12", "12"},
        {TLX_TAG_PRINTABLE_STRING, "\xB0\xA1\x8C\x63", "가똠"},
        {TLX_TAG_T61_STRING, "\xEA\xB0\x80", "가"},
        {TLX_TAG_T61_STRING, "\xC1\x61", "Áa"},
        {TLX_TAG_UTC_TIME, "240229123456Z", "240229123456Z"},
        {TLX_TAG_BMP_STRING, "\xAC"s, "(null)"},
        {28, "\0\x01\xF6\0"s, "\xF0\x9F\x98\x80"},
        {TLX_TAG_OCTET_STRING, "A", "(null)"},
        {TLX_TAG_OBJECT_IDENTIFIER, "1.2", "(null)"},
        {0x8C, "A", "(null)"},
    };
    for (const auto &c : cases)
        EXPECT_EQ(as_utf8(c.type, c.contents), c.text) << c.type << " " << testing::PrintToString(c.contents);
    EXPECT_EQ(ASN1_STRING_to_UTF8_STRING(nullptr), nullptr);
}

TEST_F(Convert, BmpText) {
    EXPECT_EQ(from_bmp("\xAC\x00\0!\xD5\x58"s), "\xB0\xA1!\xC7\xCF");
    EXPECT_EQ(from_bmp("\x7F\xFC\x80\x00"s), "|\xE9\xA5") << "both Hanja of the plane";
    // Below U+8000 the low octet is all that counts, even of a character that the table has.
    EXPECT_EQ(from_bmp("\x30\x00"s), "\0"s);
    EXPECT_EQ(from_bmp("\x00\xC1"s), "A");
    EXPECT_EQ(from_bmp("\0A\xAC\x02"s), "(null)") << "Hangul outside the plane";
    EXPECT_EQ(from_bmp("\0A\xAC"s), "(null)") << "half a unit";
    EXPECT_EQ(from_bmp(""), "(null)");
    char *text = nullptr;
    EXPECT_EQ(bmpToCP949(nullptr, &text), 0U);
    EXPECT_EQ(bmpToCP949(make_string(30, "\0A"s).get(), nullptr), 0U);
}

TEST_F(Convert, Utf8Text) {
    EXPECT_EQ(from_utf8("A\xEA\xB0\x80!\xE3\x80\x80"), "A\xB0\xA1!\xA1\xA1");
    // Sequences of two and four octets leave two zero octets, even when the table has the character.
    EXPECT_EQ(from_utf8("caf\xC3\xA9s"), "caf\0\0s"s);
    EXPECT_EQ(from_utf8("\xC2\xB7"), "\0\0"s);
    EXPECT_EQ(from_utf8("x\xF0\x9F\x98\x80y"), "x\0\0y"s);
    // Hangul outside the plane; truncated; no lead, no continuation; overlong; no code points.
    for (const char *text : {"\xEA\xB0\x82", "\xEA\xB0", "A\xC3", "\xF0\x9F\x98", "\x80", "\xC3(",
                             "\xEA\xB0(", "\xC0\x80", "\xC1\xBF", "\xE0\x82\xB7", "\xF0\x83\x80\x80",
                             "\xED\xA0\x80", "\xF4\x90\x80\x80", "\xF8\x88\x80\x80\x80", "\xFF", ""})
        EXPECT_EQ(from_utf8(text), "(null)") << testing::PrintToString(text);
}

TEST_F(Convert, KoreanText) {
    EXPECT_EQ(to_bmp("A\xB0\xA1!\xA1\xA4"), "\0A\xAC\x00\0!\x00\xB7"s);
    EXPECT_EQ(to_utf8("A\xB0\xA1!\xA1\xA4\xA2\xE6"), "A\xEA\xB0\x80!\xC2\xB7\xE2\x82\xAC");
    // A lead octet alone, pairs outside the plane, an empty place.
    for (const char *bad : {"A\xB0", "\xB0\x41", "\x80\xA1", "\xFE\xA1", "\xC9\xA1", "\x81\x41", ""}) {
        EXPECT_EQ(to_bmp(bad), "(null)") << testing::PrintToString(bad);
        EXPECT_EQ(to_utf8(bad), "(null)") << testing::PrintToString(bad);
    }
    EXPECT_EQ(cp949ToBMP(nullptr, nullptr), 0U);
}

TEST_F(Convert, WidensNarrowsAndReadsHexadecimal) {
    const auto widen = [](const std::string &text) { return call(ascTouni, text); };
    const auto narrow = [](const std::string &units) { return call(uniToasc, units); };
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

    EXPECT_EQ(call(hexToASCII, "414a6B00Ff"s), "AJk\0\xFF"s);
    for (const std::string &bad : {""s, "414"s, "4g"s, "0x41"s})
        EXPECT_EQ(call(hexToASCII, bad), "(null)") << bad;
}

TEST_F(Convert, FailingAllocations) {
    // Those of the record that a text is converted from count too.
    const auto sweep = [](auto convert, const std::string &in, const std::string &expected,
                          unsigned failures) {
        EXPECT_EQ(sweep_failing_allocations([&] {
                      const std::string result = convert(in);
                      EXPECT_TRUE(result == expected || result == "(null)");
                      return result == expected;
                  }),
                  failures);
    };
    sweep(from_utf8, "\xEA\xB0\x80", "\xB0\xA1", 3);
    sweep(from_bmp, "\xAC\x00"s, "\xB0\xA1", 3);
    sweep(to_bmp, "\xB0\xA1", "\xAC\x00"s, 2);
    sweep(to_utf8, "\xB0\xA1", "\xEA\xB0\x80", 2);
    sweep([](const std::string &text) { return call(ascTouni, text); }, "a", "\0a\0\0"s, 1);
    sweep([](const std::string &units) { return call(uniToasc, units); }, "\0a"s, "a", 1);
}

}  // namespace
}  // namespace tlx_test
