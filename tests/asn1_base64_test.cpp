// Base64: the standard's vectors, lines, what is refused.

#include "support/allocation.hpp"
#include "support/octets.hpp"
#include "support/rows.hpp"

namespace {

using namespace tlx_test;

std::string encode(const std::string &octets, std::uint32_t wrap) {
    return call(encode_Base64, octets, wrap);
}
std::string decode(const std::string &text) {
    return call(decode_Base64, text);
}

using Base64 = LeakFreeTest;

TEST_F(Base64, Rows) {
    const auto both_ways = [](const Row &row) {
        const std::string text = encode(row[1], 0);
        return text == "(null)" || decode(text) == row[1] ? text : "(null)";
    };
    expect_rows("base64.txt", {{"both ways", {both_ways, {"(null)"}}},
                               {"decode", {[](const Row &row) { return decode(row[1]); }, {"(null)"}}}});
    char *text = nullptr;
    const std::uint8_t octet = 1;
    EXPECT_EQ(encode_Base64(&octet, 0xC0000000U, &text, 0), 0U) << "2^32 characters";
    EXPECT_EQ(encode_Base64(nullptr, 1, &text, 0), 0U);
    EXPECT_EQ(decode_Base64(nullptr, 4, nullptr), 0U);
}

TEST_F(Base64, WrapsAfter64CharactersAndReadsLineEndsAnywhere) {
    const std::string line(64, 'A');
    EXPECT_EQ(encode(std::string(49, '\0'), 1), line + "\nAA==");
    EXPECT_EQ(encode(std::string(96, '\0'), 1), line + "\n" + line);
    EXPECT_EQ(encode(std::string(49, '\0'), 2), line + "AA==") << "only 1 wraps";
    EXPECT_EQ(call(encode_Base64_Line, std::string(49, '\0')), line + "AA==");
    for (std::size_t size = 1; size < 300; ++size) {
        std::string octets(size, '\0');
        for (std::size_t i = 0; i < size; ++i)
            octets[i] = static_cast<char>(i * 167 + size);
        std::string text = encode(octets, 1);
        EXPECT_EQ(decode(text.insert(size * 31 % (text.size() + 1), "\r\n")), octets) << text;
    }
}

}  // namespace
