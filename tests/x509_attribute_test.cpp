#include <gtest/gtest.h>
#include <tlxpki.h>

#include "asn1/oid_lookup.hpp"
#include "support/octets.hpp"
#include "support/x509_records.hpp"

namespace tlx_test {
namespace {

using Attribute = Held<free_X509_ATTRIBUTE>;
using Attributes = Held<free_X509_ATTRIBUTES>;

TEST(Attribute, ValuesThatCannotBeEncoded) {
    const LeakCheck leaks;
    const Attributes list(new_X509_ATTRIBUTES());
    push_STACK_value(list.get(), new_X509_ATTRIBUTE());
    EXPECT_EQ(encoded(X509_ATTRIBUTES_to_Seq, list.get()), "46210103") << "no type";
    const Attribute attribute(decoded(Seq_to_X509_ATTRIBUTE, "30{06:2A03 31{}}"));
    X509_ATTRIBUTE_DATA empty = {};
    EXPECT_EQ(push_STACK_value(attribute->values, &empty), 0U);
    for (const std::uint32_t type : {12U, 0x30U}) {
        empty.type = type;
        EXPECT_EQ(encoded(X509_ATTRIBUTE_to_Seq, attribute.get()), "46210103") << "no value";
    }
    remove_STACK_value(attribute->values, 0);
}

TEST(Attribute, Values) {
    const LeakCheck leaks;
    const Attribute attribute(new_X509_ATTRIBUTE());
    const String oid = oid_of("1.2.840");
    const String text = string_of(TLX_TAG_UTF8_STRING, "A");
    const String contents = string_of(TLX_TAG_SEQUENCE, hex("020105"));
    const String constructed = string_of(0x30, hex("0500"));
    const Node node = der_node("30{02:05}");
    String own = string_of(TLX_TAG_IA5_STRING, "B");
    ASN1_STRING *const taken_over = own.get();
    EXPECT_EQ(
        Statuses(
            {add_X509_ATTRIBUTE_set(nullptr, own.get()), add_X509_ATTRIBUTE_set(attribute.get(), nullptr),
             add_X509_ATTRIBUTE_set(attribute.get(), constructed.get()),  // it would be a node
             set_X509_ATTRIBUTE_OID(attribute.get(), nullptr), set_X509_ATTRIBUTE_OID(nullptr, oid.get()),
             add_X509_ATTRIBUTE_data(attribute.get(), 12, nullptr),
             add_X509_ATTRIBUTE_data(nullptr, 12, text.get())}),
        Statuses{1});
    EXPECT_EQ(Statuses({set_X509_ATTRIBUTE_OID(attribute.get(), oid.get()),
                        add_X509_ATTRIBUTE_data(attribute.get(), 19, text.get()),
                        add_X509_ATTRIBUTE_data(attribute.get(), 0x30, node.get()),
                        add_X509_ATTRIBUTE_data(attribute.get(), TLX_TAG_SEQUENCE, contents.get()),
                        add_X509_ATTRIBUTE_set(attribute.get(), own.release())}),
              Statuses{0});
    // A value is written under the type that it was added with, not under that of its string.
    EXPECT_EQ(encoded(X509_ATTRIBUTE_to_Seq, attribute.get()),
              hex_of_text("30{06:2A8648 31{13:41 30{02:05} 30{02:05} 16:42}}"));

    ASSERT_EQ(get_X509_ATTRIBUTE_count(attribute.get()), 4U);
    EXPECT_NE(get_X509_ATTRIBUTE_data(attribute.get(), 0), text.get()) << "a copy";
    EXPECT_EQ(hex_of(static_cast<ASN1_UNIT *>(get_X509_ATTRIBUTE_data(attribute.get(), 1))),
              "30 03 02 01 05");
    EXPECT_EQ(get_X509_ATTRIBUTE_data(attribute.get(), 3), taken_over) << "no copy";
    EXPECT_EQ(get_X509_ATTRIBUTE_data_type(attribute.get(), 3), 22U);
    EXPECT_EQ(get_X509_ATTRIBUTE_data(attribute.get(), 4), nullptr);
    EXPECT_EQ(get_X509_ATTRIBUTE_data(attribute.get(), -1), nullptr);
    EXPECT_EQ(get_X509_ATTRIBUTE_data_type(attribute.get(), 4), 0xFFFFFFFFU);
    const auto *value = static_cast<X509_ATTRIBUTE_DATA *>(get_STACK_value(attribute->values, 1));
    const Held<free_X509_ATTRIBUTE_DATA> copy(dup_X509_ATTRIBUTE_DATA(value));
    EXPECT_EQ(copy->type, value->type);
    EXPECT_NE(copy->value.string, value->value.string);
    EXPECT_EQ(dup_X509_ATTRIBUTE_DATA(nullptr), nullptr);
    EXPECT_EQ(octets(get_X509_ATTRIBUTE_OID(attribute.get())), "1.2.840");
    clean_X509_ATTRIBUTE(attribute.get());
    sweep_failing_allocations([&] {
        String given(new_ASN1_STRING());
        if (given == nullptr || add_X509_ATTRIBUTE_set(attribute.get(), given.get()) != 0) return false;
        (void)given.release();
        clean_X509_ATTRIBUTE(attribute.get());
        return true;
    });
}

TEST(Attribute, MadeAloneAndInLists) {
    const LeakCheck leaks;
    const String oid = oid_of("1.2.3");
    const String text = string_of(TLX_TAG_UTF8_STRING, "A");
    X509_ATTRIBUTE *made = nullptr;
    EXPECT_EQ(create_X509_ATTRIBUTE_OID(&made, nullptr, 12, text.get()), nullptr);
    EXPECT_EQ(create_X509_ATTRIBUTE_OID(&made, oid.get(), 12, nullptr), nullptr);
    EXPECT_EQ(create_X509_ATTRIBUTE_index(&made, 33, 12, text.get()), nullptr);
    EXPECT_EQ(made, nullptr);
    EXPECT_EQ(create_X509_ATTRIBUTE_index(&made, tlx::oid::kContentType, 12, text.get()), made);
    const Attribute attribute(made);
    ASSERT_NE(attribute, nullptr);
    EXPECT_EQ(create_X509_ATTRIBUTE_OID(&made, oid.get(), 22, text.get()), attribute.get());
    EXPECT_EQ(create_X509_ATTRIBUTE_OID(&made, oid.get(), 22, nullptr), nullptr);
    EXPECT_EQ(made, attribute.get());
    EXPECT_EQ(encoded(X509_ATTRIBUTE_to_Seq, made), hex_of_text("30{06:2A03 31{0C:41 16:41}}"));

    const Attributes list(new_X509_ATTRIBUTES());
    EXPECT_EQ(Statuses({add_X509_ATTRIBUTES_child(list.get(), attribute.get(), 7),
                        add_X509_ATTRIBUTES_child_OID(list.get(), oid.get(), 12, text.get(), 0),
                        add_X509_ATTRIBUTES_OID_INDEX(list.get(), tlx::oid::kCommonName, 19, text.get(), 1)}),
              Statuses{0});
    EXPECT_EQ(Statuses({add_X509_ATTRIBUTES_child_OID(list.get(), oid.get(), 12, nullptr, 0),
                        add_X509_ATTRIBUTES_OID_INDEX(list.get(), 0, 12, text.get(), 0)}),
              Statuses{1});
    EXPECT_EQ(encoded(X509_ATTRIBUTES_to_Seq, list.get()),
              hex_of_text("31{30{06:2A03 31{0C:41}} 30{06:550403 31{13:41}} 30{06:2A03 31{0C:41 16:41}}}"));
    const std::pair<std::int32_t, std::int32_t> hits[] = {{-1, 0}, {0, 2}, {2, -1}};
    for (const auto &[last, expected] : hits)
        EXPECT_EQ(get_X509_ATTRIBUTES_index_by_OID(list.get(), oid.get(), last), expected) << last;
    clean_X509_ATTRIBUTES(list.get());
    sweep_failing_allocations([&] {
        const bool added = add_X509_ATTRIBUTES_child_OID(list.get(), oid.get(), 12, text.get(), 0) == 0;
        EXPECT_EQ(get_X509_ATTRIBUTES_count(list.get()), added ? 1U : 0U);
        clean_X509_ATTRIBUTES(list.get());
        return added;
    });
}

}  // namespace
}  // namespace tlx_test
