#include <gtest/gtest.h>
#include <tlxpki/asn1.h>
#include <tlxpki/print.h>

#include "support/allocation.hpp"
#include "support/strings.hpp"

namespace {

using namespace std::string_literals;
using tlx_test::make_string;
using tlx_test::StringRecord;
using Node = std::unique_ptr<ASN1_UNIT, tlx_test::Freer<ASN1_UNIT, free_ASN1_UNIT>>;

class PrintTest : public ::testing::Test {
    tlx_test::LeakCheck leaks_;
};

template <typename Print>
std::string printed(Print print) {
    ::testing::internal::CaptureStdout();
    print();
    return ::testing::internal::GetCapturedStdout();
}

TEST_F(PrintTest, PrintsNodes) {
    const auto print = [](const std::string &der) {
        const Node node(decodeToDERSequence_n(reinterpret_cast<const std::uint8_t *>(der.data()),
                                              static_cast<std::uint32_t>(der.size())));
        const std::string text = printed([&] { printBERData(node.get()); });
        EXPECT_EQ(printed([&] { printDERData(node.get()); }), text);
        return text;
    };
    EXPECT_EQ(print("\x30\x03\x02\x01\x05"), "[Tag] 30 | [Length] 03 | [Value] 020105\n");
    EXPECT_EQ(print("\x30\x00"s), "[Tag] 30 | [Length] 00 | [Value] \n");
    EXPECT_EQ(print("\x04\x81\x02\xAB\xCD"s), "[Tag] 04 | [Length] 8102 | [Value] ABCD\n");
    EXPECT_EQ(print("\x30\x80\x02\x01\x05\x00\x00"s),
              "[Tag] 30 | [Length] 80 | [Value] 02:01:05 | [EOC] 0000");
    EXPECT_EQ(print("\x30\x80\x00\x00"s), "[Tag] 30 | [Length] 80 | [Value]  | [EOC] 0000");
    ::testing::internal::CaptureStderr();
    EXPECT_EQ(printed([] { printBERData(nullptr); }), "");
    EXPECT_EQ(printed([] { printBERData(Node(new_ASN1_UNIT()).get()); }), "");
    EXPECT_EQ(::testing::internal::GetCapturedStderr(), "Null Pointer\nNull Pointer\n");
}

TEST_F(PrintTest, PrintsCharacters) {
    EXPECT_EQ(printed([] { print_PCHAR("a\0bcd", 4); }), "a\0bc\n"s);
    EXPECT_EQ(printed([] { print_PCHAR("", 0); }), "\n");
    EXPECT_EQ(printed([] { print_PCHAR(nullptr, 3); }), "");
    EXPECT_EQ(tlx_test::take(dump_PCHAR("a\0bcd", 4), 6), "a\0bc\0\0"s);
    EXPECT_EQ(tlx_test::take(dump_PCHAR("", 0), 2), "\0\0"s);
    EXPECT_EQ(dump_PCHAR(nullptr, 3), nullptr);
}

TEST_F(PrintTest, DumpsStringsByType) {
    const auto dump = [](std::int32_t type, const std::string &value) -> std::string {
        const StringRecord record = make_string(type, value);
        const std::unique_ptr<char, tlx_test::Freer<void, tlx_free>> text(dump_ASN1STRING(record.get()));
        const std::string shown = printed([&] { print_ASN1STRING(record.get()); });
        EXPECT_EQ(shown, text ? text.get() : "");
        return text ? text.get() : "(null)";
    };
    EXPECT_EQ(dump(3, "\xA0\x0F"), "A00F");
    EXPECT_EQ(dump(4, "\x00\x7F"s), "007F");
    EXPECT_EQ(dump(6, "2.5.4.3"), "2.5.4.3 - (commonName)\n");
    EXPECT_EQ(dump(6, "1.2.3.4.5"), "1.2.3.4.5 - (undefined)\n");
    EXPECT_EQ(dump(12, "\xEA\xB0\x80"), "\xB0\xA1");
    EXPECT_EQ(dump(12, "\xEA\xB0\x82"), "(null)") << "not in the code table";
    EXPECT_EQ(dump(30, "\xAC\x00\0!"s), "\xB0\xA1!");
    for (const std::int32_t type : {19, 20, 22, 23})
        EXPECT_EQ(dump(type, "240229123456Z"), "240229123456Z") << type;
    EXPECT_EQ(dump(24, "20240229123456Z"), "Un-Supported Type (18)\n");
    EXPECT_EQ(dump(2, "\x05"), "Un-Supported Type (02)\n");
    EXPECT_EQ(dump(-1, "x"), "Un-Supported Type (FFFFFFFF)\n");
    EXPECT_EQ(dump(0, "x"), "(null)");
    EXPECT_EQ(dump(12, ""), "(null)");
    const ASN1_STRING no_data{12, nullptr, 3, 0};
    EXPECT_EQ(dump_ASN1STRING(&no_data), nullptr);
    EXPECT_EQ(dump_ASN1STRING(nullptr), nullptr);
}

TEST_F(PrintTest, SurvivesFailingAllocations) {
    for (const std::int32_t type : {4, 6, 12, 19, 2}) {
        const StringRecord record = make_string(type, "1.2");
        const auto dump = [&] { return tlx_test::take(dump_ASN1STRING(record.get()), 3) != "(null)"; };
        EXPECT_EQ(tlx_test::sweep_failing_allocations(dump), 1U) << type;
    }
}

}  // namespace
