#include <gtest/gtest.h>
#include <tlxpki/base64.h>

#include <random>

#include "support/allocation.hpp"
#include "support/strings.hpp"

namespace tlx_test {
namespace {

using namespace std::string_literals;

std::string encode(const std::string &octets, std::uint32_t wrap = 0) {
    return call(encode_Base64, octets, wrap);
}
std::string decode(const std::string &text) {
    return call(decode_Base64, text);
}

class Base64 : public ::testing::Test {
    LeakCheck leaks_;
};

TEST_F(Base64, KnowsTheStandardsVectors) {
    // RFC 4648, section 10, and the six-bit numbers 0 to 63.
    const std::pair<std::string, std::string> vectors[] = {
        {"f", "Zg=="},
        {"fo", "Zm8="},
        {"foo", "Zm9v"},
        {"foob", "Zm9vYg=="},
        {"fooba", "Zm9vYmE="},
        {"foobar", "Zm9vYmFy"},
        {"\x00\x10\x83\x10\x51\x87\x20\x92\x8B\x30\xD3\x8F\x41\x14\x93\x51\x55\x97\x61\x96\x9B\x71\xD7\x9F"
         "\x82\x18\xA3\x92\x59\xA7\xA2\x9A\xAB\xB2\xDB\xAF\xC3\x1C\xB3\xD3\x5D\xB7\xE3\x9E\xBB\xF3\xDF\xBF"s,
         "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/"}};
    for (const auto &[octets, text] : vectors) {
        EXPECT_EQ(encode(octets), text);
        EXPECT_EQ(decode(text), octets);
    }
}

TEST_F(Base64, WrapsAfter64Characters) {
    const std::string line(64, 'A');
    EXPECT_EQ(encode(std::string(49, '\0'), 1), line + "\nAA==");
    EXPECT_EQ(encode(std::string(96, '\0'), 1), line + "\n" + line);
    EXPECT_EQ(encode(std::string(49, '\0'), 2), line + "AA==") << "only 1 wraps";
    EXPECT_EQ(call(encode_Base64_Line, std::string(49, '\0')), line + "AA==");
}

TEST_F(Base64, DecodesWhatItEncodesWithLineEndsAnywhere) {
    std::mt19937 random(6);
    for (std::size_t size = 1; size < 300; ++size) {
        std::string octets(size, '\0');
        for (char &c : octets)
            c = static_cast<char>(random());
        std::string text = encode(octets, 1);
        EXPECT_EQ(decode(text.insert(random() % (text.size() + 1), "\r\n")), octets) << text;
    }
}

TEST_F(Base64, RefusesBadText) {
    const std::string bad[] = {"",         "\r\n",    "Z",        "Zg",       "Zg=",      "Zm8",
                               "Zg==Zg==", "Zm9vYg",  "=Zg=",     "Z===",     "====",     "Zg=v",
                               "Zg== ",    " Zg==",   "Zm 9v",    "Zm9v=",    "Zm9-",     "Zm9_",
                               "Zm9\xFF",  "Zm9v\0"s, "Zm9vZh==", "Zm9vZm9=", "Zg=\n=\nA"};
    for (const std::string &text : bad)
        EXPECT_EQ(decode(text), "(null)") << text;
    EXPECT_EQ(decode("Zg=\r\n=\r\n"), "f") << "line ends in the padding";

    char *text = nullptr;
    const std::uint8_t octet = 1;
    EXPECT_EQ(encode(""), "(null)");
    EXPECT_EQ(encode_Base64(&octet, 0xC0000000U, &text, 0), 0U) << "2^32 characters";
    EXPECT_EQ(encode_Base64(nullptr, 1, &text, 0), 0U);
    EXPECT_EQ(decode_Base64(nullptr, 4, nullptr), 0U);
}

TEST_F(Base64, SurvivesFailingAllocations) {
    EXPECT_EQ(sweep_failing_allocations([] { return encode("foo") == "Zm9v"; }), 1U);
    EXPECT_EQ(sweep_failing_allocations([] { return decode("Zm9v") == "foo"; }), 1U);
}

}  // namespace
}  // namespace tlx_test
