// What is printed and dumped of nodes, characters and strings.

#include "support/allocation.hpp"
#include "support/octets.hpp"
#include "support/rows.hpp"

namespace {

using namespace tlx_test;

using namespace std::string_literals;

template <typename Print>
std::string printed(Print print) {
    ::testing::internal::CaptureStdout();
    print();
    return ::testing::internal::GetCapturedStdout();
}

std::string printed_node(const Row &row) {
    const Node node = node_of(row[1]);
    const std::string text = printed([&] { printBERData(node.get()); });
    EXPECT_EQ(printed([&] { printDERData(node.get()); }), text);
    return text;
}

/// The dump, which is what is printed.
std::string dumped_string(const Row &row) {
    const String record = string_of(static_cast<std::int32_t>(row.number(1)), row[2]);
    if (record == nullptr) return "(null)";
    char *dump = dump_ASN1STRING(record.get());
    const std::string text = take(dump, dump == nullptr ? 0 : std::string(dump).size());
    const std::string print = printed([&] { print_ASN1STRING(record.get()); });
    return text == "(null)" || print == text ? text : print.empty() ? "(null)" : "printed " + print;
}

TEST(Print, Rows) {
    expect_rows("print.txt", {{"node", {printed_node}}, {"string", {dumped_string, {"(null)"}}}});
}

TEST(Print, CharactersAndNothing) {
    const LeakCheck leaks;
    ::testing::internal::CaptureStderr();
    EXPECT_EQ(printed([] { printBERData(nullptr); }), "");
    EXPECT_EQ(printed([] { printBERData(new_node().get()); }), "");
    EXPECT_EQ(::testing::internal::GetCapturedStderr(), "Null Pointer\nNull Pointer\n");
    EXPECT_EQ(printed([] { print_PCHAR("a\0bcd", 4); }), "a\0bc\n"s);
    EXPECT_EQ(printed([] { print_PCHAR("", 0); }), "\n");
    EXPECT_EQ(printed([] { print_PCHAR(nullptr, 3); }), "");
    EXPECT_EQ(take(dump_PCHAR("a\0bcd", 4), 6), "a\0bc\0\0"s);
    EXPECT_EQ(dump_PCHAR(nullptr, 3), nullptr);
    const ASN1_STRING no_data{12, nullptr, 3, 0};
    EXPECT_EQ(dump_ASN1STRING(&no_data), nullptr);
    EXPECT_EQ(printed([] { print_ASN1STRING(string_of(12, "").get()); }), "");
}

}  // namespace
