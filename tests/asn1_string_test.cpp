#include <gtest/gtest.h>
#include <tlxcrypto/file.h>
#include <tlxpki/asn1.h>
#include <tlxpki/string.h>

#include "support/allocation.hpp"
#include "support/strings.hpp"

namespace {

using namespace std::string_literals;
using tlx_test::make_string;
using tlx_test::octets;
using tlx_test::StringRecord;

class StringTest : public ::testing::Test {
    tlx_test::LeakCheck leaks_;
};

TEST_F(StringTest, TakesValues) {
    const StringRecord record(new_ASN1_STRING());
    record->extra = 5;
    ASSERT_EQ(set_ASN1_STRING_value(record.get(), 12, "abc", 3), 0U);
    EXPECT_EQ(record->type, 12);
    EXPECT_EQ(record->extra, 0);
    EXPECT_EQ(octets(record.get()) + char(record->data[3]), "abc\0"s);
    ASSERT_EQ(set_ASN1_STRING_value(record.get(), 19, record->data + 1, 2), 0U);
    EXPECT_EQ(octets(record.get()), "bc") << "a part of its own data";
    ASSERT_EQ(set_ASN1_STRING_value(record.get(), 12, nullptr, 0), 0U);
    EXPECT_EQ(octets(record.get()), "");
    ASSERT_EQ(set_ASN1_STRING_value(record.get(), 5, "abc", 3), 0U);
    EXPECT_EQ(record->data, nullptr) << "NULL has no value";
    EXPECT_EQ(record->length, 3);
}

TEST_F(StringTest, RefusesValues) {
    const StringRecord record = make_string(12, "abc");
    EXPECT_EQ(set_ASN1_STRING_value(nullptr, 12, "abc", 3), 0x41010049U);
    EXPECT_EQ(set_ASN1_STRING_value(record.get(), 12, nullptr, 3), 0x41010049U);
    EXPECT_EQ(set_ASN1_STRING_value(record.get(), 5, nullptr, 0x80000000U), 0x41010049U);
    EXPECT_EQ(octets(record.get()), "abc");
}

TEST_F(StringTest, Compares) {
    const auto sign = [](std::int32_t type_a, const std::string &a, std::int32_t type_b,
                         const std::string &b) {
        const std::int32_t order =
            cmp_ASN1_STRING(make_string(type_a, a).get(), make_string(type_b, b).get());
        return (order > 0 ? 1 : 0) - (order < 0 ? 1 : 0);
    };
    EXPECT_EQ(sign(12, "b", 12, "aa"), -1) << "the length comes first";
    EXPECT_EQ(sign(12, "ab", 19, "aa"), 1) << "then the octets";
    EXPECT_EQ(sign(12, "a\0b"s, 12, "a\0c"s), -1);
    EXPECT_EQ(sign(12, "\x7F", 12, "\x80"), -1) << "octets are unsigned";
    EXPECT_EQ(sign(12, "a", 19, "a"), -1) << "then the type";
    EXPECT_EQ(sign(12, "", 12, ""), 0);
    const StringRecord full = make_string(12, "abcde");
    EXPECT_EQ(cmp_ASN1_STRING(full.get(), make_string(12, "ab").get()), 3);
    EXPECT_EQ(cmp_ASN1_STRING(make_string(30, "abcde").get(), full.get()), 18);
    const ASN1_STRING no_data{12, nullptr, 5, 0};
    const ASN1_STRING shortest{12, nullptr, INT32_MIN, 0};
    EXPECT_EQ(cmp_ASN1_STRING(full.get(), &no_data), 1);
    EXPECT_EQ(cmp_ASN1_STRING(full.get(), &shortest), INT32_MAX);
    EXPECT_EQ(cmp_ASN1_STRING(nullptr, full.get()), -1);
    EXPECT_EQ(cmp_ASN1_STRING(nullptr, nullptr), 0);
}

TEST_F(StringTest, Copies) {
    const StringRecord record = make_string(3, "a\0b"s);
    record->extra = 6;
    const StringRecord copy(dup_ASN1_STRING(record.get()));
    ASSERT_EQ(cmp_ASN1_STRING(copy.get(), record.get()), 0);
    EXPECT_EQ(copy->extra, 6);
    EXPECT_NE(copy->data, record->data);
    EXPECT_EQ(StringRecord(dup_ASN1_STRING(StringRecord(new_ASN1_STRING()).get()))->data, nullptr);
    EXPECT_EQ(dup_ASN1_STRING(nullptr), nullptr);
}

TEST_F(StringTest, EncodesUnderItsOwnType) {
    const auto der_of = [](std::int32_t type, const std::string &value) {
        const StringRecord record = make_string(type, value);
        record->extra = 5;
        std::uint8_t *der = nullptr;
        const std::uint32_t size = ASN1_STRING_to_binary(record.get(), &der);
        EXPECT_EQ(der == nullptr, size == 0xFFFFFFFF);
        char *hex = der != nullptr ? binary_to_hex(der, size) : nullptr;
        tlx_free(der);
        return tlx_test::take(hex, 2 * std::size_t{size});
    };
    EXPECT_EQ(der_of(12, "abc"), "0C03616263");
    EXPECT_EQ(der_of(4, ""), "0400");
    EXPECT_EQ(der_of(3, "\xA0"), "030205A0");
    EXPECT_EQ(der_of(2, "\xFF"), "020200FF");
    EXPECT_EQ(der_of(6, "1.2.840.113549"), "06062A864886F70D");
    EXPECT_EQ(der_of(0x30, "\x02\x01\x05"), "3003020105");
    EXPECT_EQ(der_of(0x11, "\x02\x01\x05"), "3103020105");
    EXPECT_EQ(der_of(0xA1, "\xA1\x03\x02\x01\x05"), "A103020105") << "holds its own element";
    EXPECT_EQ(der_of(0xA1, "\xA1\x03\x02\x01"), "(null)");
    EXPECT_EQ(der_of(0xA1, "\x81\x01\x05"), "(null)");
    EXPECT_EQ(der_of(6, "1.2.x"), "(null)");
    EXPECT_EQ(der_of(2, ""), "(null)");
    EXPECT_EQ(der_of(0, "abc"), "(null)");
    ASN1_UNIT *node = nullptr;
    EXPECT_EQ(ASN1_STRING_to_Seq(nullptr, &node), 0x41020049U);
    EXPECT_EQ(ASN1_STRING_to_Seq(make_string(12, "abc").get(), nullptr), 0x41020049U);
    EXPECT_EQ(ASN1_STRING_to_Seq(make_string(0, "abc").get(), &node), 0x41020103U);
    EXPECT_EQ(node, nullptr);
}

TEST_F(StringTest, SurvivesFailingAllocations) {
    const StringRecord record = make_string(12, "abc");
    EXPECT_EQ(tlx_test::sweep_failing_allocations(
                  [&] { return StringRecord(dup_ASN1_STRING(record.get())) != nullptr; }),
              2U);
    tlx_test::sweep_failing_allocations([&] {
        ASN1_UNIT *node = nullptr;
        const std::uint32_t status = ASN1_STRING_to_Seq(record.get(), &node);
        EXPECT_EQ(status, node == nullptr ? 0x41020103U : 0U);
        free_ASN1_UNIT(node);
        return status == 0;
    });
    const StringRecord target(new_ASN1_STRING());
    tlx_test::sweep_failing_allocations([&] {
        const std::uint32_t status = set_ASN1_STRING_value(target.get(), 19, "xy", 2);
        EXPECT_EQ(status, target->data == nullptr ? 0x41010049U : 0U);
        clean_ASN1_STRING(target.get());
        return status == 0;
    });
}

}  // namespace
