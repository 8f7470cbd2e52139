#include <gtest/gtest.h>
#include <tlxpki/asn1.h>
#include <tlxpki/string.h>

#include "support/allocation.hpp"
#include "support/octets.hpp"
#include "support/strings.hpp"

namespace tlx_test {
namespace {

using namespace std::string_literals;

class Strings : public ::testing::Test {
    LeakCheck leaks_;
};

TEST_F(Strings, TakeValues) {
    const StringRecord record(new_ASN1_STRING());
    record->extra = 5;
    ASSERT_EQ(set_ASN1_STRING_value(record.get(), 12, "abc", 3), 0U);
    EXPECT_EQ(text_of(record.get()), "type 12 extra 0: 61 62 63");
    ASSERT_EQ(set_ASN1_STRING_value(record.get(), 19, record->data + 1, 2), 0U);
    EXPECT_EQ(text_of(record.get()), "type 19 extra 0: 62 63") << "a part of its own data";
    EXPECT_EQ(set_ASN1_STRING_value(nullptr, 12, "abc", 3), 0x41010049U);
    EXPECT_EQ(set_ASN1_STRING_value(record.get(), 12, nullptr, 3), 0x41010049U);
    EXPECT_EQ(set_ASN1_STRING_value(record.get(), 5, nullptr, 0x80000000U), 0x41010049U);
    EXPECT_EQ(text_of(record.get()), "type 19 extra 0: 62 63") << "unchanged on failure";
    ASSERT_EQ(set_ASN1_STRING_value(record.get(), 12, nullptr, 0), 0U);
    EXPECT_EQ(text_of(record.get()), "type 12 extra 0: ");
    ASSERT_EQ(set_ASN1_STRING_value(record.get(), 5, "abc", 3), 0U);
    EXPECT_EQ(record->data, nullptr) << "NULL has no value";
    EXPECT_EQ(record->length, 3);
}

TEST_F(Strings, Compare) {
    const auto compare = [](std::int32_t type_a, const std::string &a, std::int32_t type_b,
                            const std::string &b) {
        return cmp_ASN1_STRING(make_string(type_a, a).get(), make_string(type_b, b).get());
    };
    EXPECT_LT(compare(12, "b", 12, "aa"), 0) << "the length comes first";
    EXPECT_GT(compare(12, "ab", 19, "aa"), 0) << "then the octets";
    EXPECT_LT(compare(12, "a\0b"s, 12, "a\0c"s), 0);
    EXPECT_LT(compare(12, "\x7F", 12, "\x80"), 0) << "octets are unsigned";
    EXPECT_EQ(compare(12, "abcde", 12, "ab"), 3);
    EXPECT_EQ(compare(30, "abcde", 12, "abcde"), 18) << "then the type";
    const StringRecord full = make_string(12, "abcde");
    const ASN1_STRING no_data{12, nullptr, 5, 0};
    const ASN1_STRING shortest{12, nullptr, INT32_MIN, 0};
    EXPECT_EQ(cmp_ASN1_STRING(full.get(), &no_data), 1);
    EXPECT_EQ(cmp_ASN1_STRING(full.get(), &shortest), INT32_MAX);
    EXPECT_EQ(cmp_ASN1_STRING(nullptr, full.get()), -1);
}

TEST_F(Strings, AreCopied) {
    const StringRecord record = make_string(3, "a\0b"s);
    record->extra = 6;
    EXPECT_EQ(text_of(StringRecord(dup_ASN1_STRING(record.get())).get()), "type 3 extra 6: 61 00 62");
    EXPECT_EQ(StringRecord(dup_ASN1_STRING(StringRecord(new_ASN1_STRING()).get()))->data, nullptr);
    EXPECT_EQ(dup_ASN1_STRING(nullptr), nullptr);
}

TEST_F(Strings, AreEncodedUnderTheirOwnType) {
    const auto der_of = [](std::int32_t type, const std::string &value) {
        const StringRecord record = make_string(type, value);
        record->extra = 5;
        std::uint8_t *der = nullptr;
        const std::uint32_t size = ASN1_STRING_to_binary(record.get(), &der);
        const tlx::OwnedOctets<std::uint8_t> owner(der);
        return size == 0xFFFFFFFF ? "none" : hex_of(der, size);
    };
    EXPECT_EQ(der_of(3, "\xA0"), "03 02 05 A0");
    EXPECT_EQ(der_of(6, "1.2.840.113549"), "06 06 2A 86 48 86 F7 0D");
    EXPECT_EQ(der_of(0x11, "\x02\x01\x05"), "31 03 02 01 05");
    EXPECT_EQ(der_of(0xA1, "\xA1\x03\x02\x01\x05"), "A1 03 02 01 05") << "holds its own element";
    EXPECT_EQ(der_of(0xA1, "\xA1\x03\x02\x01"), "none");
    EXPECT_EQ(der_of(0xA1, "\x81\x01\x05"), "none");
    EXPECT_EQ(der_of(0xA1, "\xA1\x00\x00"s), "none") << "an octet after it";
    ASN1_UNIT *node = nullptr;
    EXPECT_EQ(ASN1_STRING_to_Seq(nullptr, &node), 0x41020049U);
    EXPECT_EQ(ASN1_STRING_to_Seq(make_string(12, "abc").get(), nullptr), 0x41020049U);
    EXPECT_EQ(ASN1_STRING_to_Seq(make_string(0, "abc").get(), &node), 0x41020103U);
    EXPECT_EQ(node, nullptr);
}

TEST_F(Strings, FailingAllocations) {
    const StringRecord record = make_string(12, "abc");
    EXPECT_EQ(
        sweep_failing_allocations([&] { return StringRecord(dup_ASN1_STRING(record.get())) != nullptr; }),
        2U);
    sweep_failing_allocations([&] {
        ASN1_UNIT *node = nullptr;
        const std::uint32_t status = ASN1_STRING_to_Seq(record.get(), &node);
        EXPECT_EQ(status, node == nullptr ? 0x41020103U : 0U);
        free_ASN1_UNIT(node);
        return status == 0;
    });
    const StringRecord target(new_ASN1_STRING());
    sweep_failing_allocations([&] {
        const std::uint32_t status = set_ASN1_STRING_value(target.get(), 19, "xy", 2);
        EXPECT_EQ(status, target->data == nullptr ? 0x41010049U : 0U);
        clean_ASN1_STRING(target.get());
        return status == 0;
    });
}

}  // namespace
}  // namespace tlx_test
