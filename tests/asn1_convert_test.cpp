// Korean text: the whole plane beside the system's, records and texts, widening, hexadecimal.

#include "support/allocation.hpp"
#include "support/korean_peer.hpp"
#include "support/octets.hpp"
#include "support/rows.hpp"

namespace {

using namespace tlx_test;

std::string pair_of(std::uint32_t value) {
    return {static_cast<char>(value >> 8), static_cast<char>(value)};
}

Operation from_record(std::uint32_t (*convert)(const ASN1_STRING *, char **), std::int32_t type) {
    return {[=](const Row &row) {
                char *text = nullptr;
                const std::uint32_t size = convert(string_of(type, row[1]).get(), &text);
                EXPECT_EQ(text == nullptr, size == 0);
                return take(text, size);
            },
            {"(null)"}};
}

Operation to_record(std::uint32_t (*convert)(const char *, ASN1_STRING **), std::int32_t type) {
    return {[=](const Row &row) {
                ASN1_STRING *made = nullptr;
                const std::uint32_t size = convert(row[1].c_str(), &made);
                const String record(made);
                EXPECT_EQ(size, made != nullptr ? static_cast<std::uint32_t>(made->length) : 0U);
                EXPECT_TRUE(made == nullptr || (made->type == type && made->data[size] == 0));
                return octets(made);
            },
            {"(null)"}};
}

template <typename Function>
Operation of_octets(Function function) {
    return {[=](const Row &row) { return call(function, row[1]); }, {"(null)"}};
}

std::string as_utf8(std::int32_t type, const std::string &contents) {
    return octets(String(ASN1_STRING_to_UTF8_STRING(string_of(type, contents).get())).get());
}

using Convert = LeakFreeTest;

TEST_F(Convert, Rows) {
    const auto any_as_utf8 = [](const Row &row) {
        return as_utf8(static_cast<std::int32_t>(row.number(1)), row[2]);
    };
    expect_rows("convert.txt", {{"BMPString to text", from_record(bmpToCP949, TLX_TAG_BMP_STRING)},
                                {"UTF8String to text", from_record(utf8ToCP949, TLX_TAG_UTF8_STRING)},
                                {"text to BMPString", to_record(cp949ToBMP, TLX_TAG_BMP_STRING)},
                                {"text to UTF8String", to_record(cp949ToUTF8, TLX_TAG_UTF8_STRING)},
                                {"widen", of_octets(ascTouni)},
                                {"narrow", of_octets(uniToasc)},
                                {"hexadecimal", of_octets(hexToASCII)},
                                {"as UTF-8", {any_as_utf8, {"(null)", ""}}}});
    EXPECT_EQ(ASN1_STRING_to_UTF8_STRING(nullptr), nullptr);
    char *text = nullptr;
    std::uint8_t *units = nullptr;
    EXPECT_EQ(bmpToCP949(nullptr, &text), 0U);
    EXPECT_EQ(bmpToCP949(string_of(30, pair_of('A')).get(), nullptr), 0U);
    EXPECT_EQ(cp949ToBMP(nullptr, nullptr), 0U);
    EXPECT_EQ(ascTouni(nullptr, 0, &units), 0U);
    EXPECT_EQ(ascTouni("a", 0x7FFFFFFF, &units), 0U);
    EXPECT_EQ(units, nullptr);
}

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

TEST_F(Convert, KnowsTheHangulThatCodePage949Adds) {
    unsigned characters = 0;
    for (std::uint32_t value = 0x8000; value < 0x10000; ++value) {
        if (value >= 0xA1A1 && (value & 0xFF) >= 0xA1) continue;  // in the plane
        const std::string unit = korean::cp949_to_utf16(pair_of(value));
        // Behind a character of the plane. What is no pair makes Latin-1 of it.
        const std::string text = as_utf8(TLX_TAG_T61_STRING, "\xB0\xA1" + pair_of(value));
        if (unit.empty())
            ASSERT_TRUE(text.starts_with("\xC2\xB0\xC2\xA1")) << std::hex << value;
        else
            ASSERT_EQ(text, as_utf8(TLX_TAG_BMP_STRING, pair_of(0xAC00) + unit)) << std::hex << value;
        characters += unit.empty() ? 0U : 1U;
    }
    EXPECT_EQ(characters, 8822U);
}

}  // namespace
