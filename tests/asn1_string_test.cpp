// String records: values, order, copies, encodings.

#include "support/allocation.hpp"
#include "support/octets.hpp"
#include "support/rows.hpp"

namespace {

using namespace tlx_test;

std::int32_t type_of(const Row &row, std::size_t i) {
    return static_cast<std::int32_t>(row.number(i));
}

std::string encode(const Row &row) {
    const String record = string_of(type_of(row, 1), row[2]);
    if (record == nullptr || (record->data == nullptr && !row[2].empty())) return "41020103";
    record->extra = 5;
    ASN1_UNIT *made = nullptr;
    const std::uint32_t status = ASN1_STRING_to_Seq(record.get(), &made);
    const Node node(made);
    if (made == nullptr) return status_text(status);
    std::uint8_t *der = nullptr;
    const std::uint32_t size = ASN1_STRING_to_binary(record.get(), &der);
    const tlx::OwnedOctets<std::uint8_t> owner(der);
    return size == 0xFFFFFFFF ? "41020103" : hex_of(der, size);
}

std::string compare(const Row &row) {
    return std::to_string(
        cmp_ASN1_STRING(string_of(type_of(row, 1), row[2]).get(), string_of(type_of(row, 3), row[4]).get()));
}

std::string copy(const Row &row) {
    const String record = string_of(type_of(row, 1), row[2]);
    if (record == nullptr || record->data == nullptr) return "null";
    record->extra = 6;
    return text_of(String(dup_ASN1_STRING(record.get())).get());
}

using Strings = LeakFreeTest;

TEST_F(Strings, Rows) {
    expect_rows("string.txt",
                {{"encode", {encode, {"41020103"}}}, {"compare", {compare}}, {"copy", {copy, {"null"}}}});
}

TEST_F(Strings, TakeValues) {
    const String record(new_ASN1_STRING());
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
    tlx_fail_allocation(1);
    EXPECT_EQ(set_ASN1_STRING_value(record.get(), 12, "xyz", 3), 0x41010049U);
    EXPECT_EQ(record->data, nullptr);
}

TEST_F(Strings, MayBeNullOrWithoutData) {
    const String full = string_of(12, "abcde");
    const ASN1_STRING no_data{12, nullptr, 5, 0};
    const ASN1_STRING shortest{12, nullptr, INT32_MIN, 0};
    EXPECT_EQ(cmp_ASN1_STRING(full.get(), &no_data), 1);
    EXPECT_EQ(cmp_ASN1_STRING(full.get(), &shortest), INT32_MAX);
    EXPECT_EQ(cmp_ASN1_STRING(nullptr, full.get()), -1);
    EXPECT_EQ(String(dup_ASN1_STRING(String(new_ASN1_STRING()).get()))->data, nullptr);
    EXPECT_EQ(dup_ASN1_STRING(nullptr), nullptr);
    ASN1_UNIT *node = nullptr;
    EXPECT_EQ(ASN1_STRING_to_Seq(nullptr, &node), 0x41020049U);
    EXPECT_EQ(ASN1_STRING_to_Seq(full.get(), nullptr), 0x41020049U);
    EXPECT_EQ(node, nullptr);
}

}  // namespace
