#include <gtest/gtest.h>
#include <tlxpki/base64.h>

#include <random>

#include "support/allocation.hpp"
#include "support/strings.hpp"

namespace {

using namespace std::string_literals;

std::string encode(const std::string &octets, std::uint32_t wrap = 0) {
    return tlx_test::call(encode_Base64, octets, wrap);
}
std::string decode(const std::string &text) {
    return tlx_test::call(decode_Base64, text);
}

class Base64Test : public ::testing::Test {
    tlx_test::LeakCheck leaks_;
};

TEST_F(Base64Test, KnowsTheStandardsVectors) {
    // RFC 4648, section 10.
    const std::pair<const char *, const char *> vectors[] = {{"f", "Zg=="},         {"fo", "Zm8="},
                                                             {"foo", "Zm9v"},       {"foob", "Zm9vYg=="},
                                                             {"fooba", "Zm9vYmE="}, {"foobar", "Zm9vYmFy"}};
    for (const auto &[octets, text] : vectors) {
        EXPECT_EQ(encode(octets), text);
        EXPECT_EQ(decode(text), octets);
    }
    // The six-bit numbers 0 to 63 give every character, in order.
    std::string octets;
    for (unsigned value = 0; value < 64; value += 4) {
        const unsigned bits = value << 18 | (value + 1) << 12 | (value + 2) << 6 | (value + 3);
        octets += {static_cast<char>(bits >> 16), static_cast<char>(bits >> 8), static_cast<char>(bits)};
    }
    EXPECT_EQ(encode(octets), "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/");
    EXPECT_EQ(decode("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/"), octets);
}

TEST_F(Base64Test, WrapsAfter64Characters) {
    const std::string line(64, 'A');
    EXPECT_EQ(encode(std::string(48, '\0'), 1), line);
    EXPECT_EQ(encode(std::string(49, '\0'), 1), line + "\nAA==");
    EXPECT_EQ(encode(std::string(96, '\0'), 1), line + "\n" + line);
    EXPECT_EQ(encode(std::string(49, '\0'), 2), line + "AA==") << "only 1 wraps";
    EXPECT_EQ(tlx_test::call(encode_Base64_Line, std::string(49, '\0')), line + "AA==");
}

TEST_F(Base64Test, DecodesWhatItEncodes) {
    std::mt19937 random(6);
    for (std::size_t size = 1; size < 300; ++size) {
        std::string octets(size, '\0');
        for (char &c : octets)
            c = static_cast<char>(random());
        EXPECT_EQ(decode(encode(octets, 0)), octets) << size;
        std::string text = encode(octets, 1);
        text.insert(random() % (text.size() + 1), "\r\n");
        EXPECT_EQ(decode(text), octets) << "line ends may stand anywhere: " << text;
    }
}

TEST_F(Base64Test, RefusesBadText) {
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
    EXPECT_EQ(text, nullptr);
    EXPECT_EQ(encode_Base64(&octet, 1, nullptr, 0), 0U);
    EXPECT_EQ(decode_Base64(nullptr, 4, nullptr), 0U);
    EXPECT_EQ(decode_Base64("Zg==", 4, nullptr), 0U);
}

TEST_F(Base64Test, SurvivesFailingAllocations) {
    EXPECT_EQ(tlx_test::sweep_failing_allocations([] { return encode("foo") == "Zm9v"; }), 1U);
    EXPECT_EQ(tlx_test::sweep_failing_allocations([] { return decode("Zm9v") == "foo"; }), 1U);
}

}  // namespace
