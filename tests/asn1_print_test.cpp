#include <gtest/gtest.h>
#include <tlxpki/print.h>

#include "support/allocation.hpp"
#include "support/octets.hpp"
#include "support/strings.hpp"

namespace tlx_test {
namespace {

using namespace std::string_literals;

template <typename Print>
std::string printed(Print print) {
    ::testing::internal::CaptureStdout();
    print();
    return ::testing::internal::GetCapturedStdout();
}

class Print : public ::testing::Test {
    LeakCheck leaks_;
};

TEST_F(Print, Nodes) {
    const std::pair<const char *, const char *> cases[] = {
        {"30 00", "[Tag] 30 | [Length] 00 | [Value] \n"},
        {"04 81 02 AB CD", "[Tag] 04 | [Length] 8102 | [Value] ABCD\n"},
        {"30 80 02 01 05 00 00", "[Tag] 30 | [Length] 80 | [Value] 02:01:05 | [EOC] 0000"},
        {"30 80 00 00", "[Tag] 30 | [Length] 80 | [Value]  | [EOC] 0000"}};
    for (const auto &[der, text] : cases) {
        const Node node = node_of(der);
        EXPECT_EQ(printed([&] { printBERData(node.get()); }), text);
        EXPECT_EQ(printed([&] { printDERData(node.get()); }), text);
    }
    ::testing::internal::CaptureStderr();
    EXPECT_EQ(printed([] { printBERData(nullptr); }), "");
    EXPECT_EQ(printed([] { printBERData(new_node().get()); }), "");
    EXPECT_EQ(::testing::internal::GetCapturedStderr(), "Null Pointer\nNull Pointer\n");
}

TEST_F(Print, Characters) {
    EXPECT_EQ(printed([] { print_PCHAR("a\0bcd", 4); }), "a\0bc\n"s);
    EXPECT_EQ(printed([] { print_PCHAR("", 0); }), "\n");
    EXPECT_EQ(printed([] { print_PCHAR(nullptr, 3); }), "");
    EXPECT_EQ(take(dump_PCHAR("a\0bcd", 4), 6), "a\0bc\0\0"s);
    EXPECT_EQ(dump_PCHAR(nullptr, 3), nullptr);
}

TEST_F(Print, StringsByType) {
    const struct {
        std::int32_t type;
        std::string value, text;  // "": none
    } cases[] = {
        {3, "\xA0\x0F", "A00F"},
        {4, "\x00\x7F"s, "007F"},
        {6, "2.5.4.3", "2.5.4.3 - (commonName)\n"},
        {6, "1.2.3.4.5", "1.2.3.4.5 - (undefined)\n"},
        {12, "\xEA\xB0\x80", "\xB0\xA1"},
        {12, "\xEA\xB0\x82", ""},  // not in the code table
        {30, "\xAC\x00\0!"s, "\xB0\xA1!"},
        {19, "text", "text"},
        {20, "text", "text"},
        {22, "text", "text"},
        {23, "240229123456Z", "240229123456Z"},
        {24, "20240229123456Z", "Un-Supported Type (18)\n"},
        {-1, "x", "Un-Supported Type (FFFFFFFF)\n"},
        {0, "x", ""},
        {12, "", ""},
    };
    for (const auto &c : cases) {
        const StringRecord record = make_string(c.type, c.value);
        EXPECT_EQ(printed([&] { print_ASN1STRING(record.get()); }), c.text);
        if (c.text.empty()) {
            EXPECT_EQ(dump_ASN1STRING(record.get()), nullptr) << c.type;
            continue;
        }
        EXPECT_EQ(take(dump_ASN1STRING(record.get()), c.text.size() + 1), c.text + '\0');
        EXPECT_EQ(
            sweep_failing_allocations([&] { return take(dump_ASN1STRING(record.get()), 1) != "(null)"; }), 1U)
            << c.type;
    }
    const ASN1_STRING no_data{12, nullptr, 3, 0};
    EXPECT_EQ(dump_ASN1STRING(&no_data), nullptr);
}

}  // namespace
}  // namespace tlx_test
