// Host names and IP addresses as options give them.
#include <gtest/gtest.h>

#include "a_label.hpp"
#include "ip_address.hpp"
#include "support/octets.hpp"

namespace command_test {
namespace {

TEST(CommandNames, HangulLabelsBecomeALabels) {
    struct Row {
        const char *host, *labels;
    };
    const std::string syllable = "가";
    const std::string long_label = std::string(60, 'a') + syllable;
    const Row rows[] = {
        {"한글.EXAMPLE", "xn--bj0bj06e.EXAMPLE"},
        {"대한민국.한국A가.중앙-1", "xn--3e0bs9hfvinn1a.xn--a-3x5eu1bl29g.xn---1-oo7jz6j"},
        {"한국어를이해한다면얼마나좋을까", "xn--3e0boq98cg9cezmcnaz2bh86cfc80t6oaf2ins4dea37a"},
        // The label would take 73 octets.
        {"세계의모든사람들이한국어를이해한다면얼마나좋을까", ""},
        {"bücher.example", ""},
        {"\xED\xA0\x80.example", ""},
        {"\xEA\xB0", ""},
        {"a..가", ""},
        {long_label.c_str(), ""},
    };
    for (const Row &row : rows)
        EXPECT_EQ(tool::to_a_labels(row.host), row.labels) << row.host;
}

TEST(CommandNames, AddressesInText) {
    struct Row {
        const char *text, *octets;
    };
    const Row rows[] = {
        {"192.0.2.1", "C0000201"},
        {"::", "00000000000000000000000000000000"},
        {"2001:0DB8:0::7", "20010DB8000000000000000000000007"},
        {"1:2:3:4:5:6:7:8", "00010002000300040005000600070008"},
        {"::ffff:192.0.2.1", "00000000000000000000FFFFC0000201"},
        {"1::", "00010000000000000000000000000000"},
        {"", ""},
        {"192.0.2.256", ""},
        {"192.0.02.1", ""},
        {"192.0.2", ""},
        {"192.0.2.1.", ""},
        {"192.0.2.-1", ""},
        {"1:2:3:4:5:6:7", ""},
        {"1:2:3:4::5:6:7:8", ""},
        {"1::2::3", ""},
        {"::12345", ""},
        {"192.0.2.1::", ""},
        {":1", ""},
        {"1:", ""},
        {"::1%eth0", ""},
    };
    for (const Row &row : rows)
        EXPECT_EQ(tool::parse_ip(row.text), tlx_test::hex(row.octets)) << row.text;
}

}  // namespace
}  // namespace command_test
