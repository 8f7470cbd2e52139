// Makers and members of attributes, extensions and algorithm identifiers.
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
    expect_refuses_null(1, add_X509_ATTRIBUTE_set, attribute.get(), own.get());
    expect_refuses_null(1, set_X509_ATTRIBUTE_OID, attribute.get(), oid.get());
    expect_refuses_null(1, add_X509_ATTRIBUTE_data, attribute.get(), 12, text.get());
    EXPECT_EQ(add_X509_ATTRIBUTE_set(attribute.get(), constructed.get()), 1U) << "it would be a node";
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
    expect_refuses_null(nullptr, dup_X509_ATTRIBUTE_DATA, value);
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
    expect_made<free_X509_ATTRIBUTE>("30{06:2A03 31{0C:41}}", X509_ATTRIBUTE_to_Seq,
                                     create_X509_ATTRIBUTE_OID, nullptr, oid.get(), 12, text.get());
    X509_ATTRIBUTE *made = nullptr;
    EXPECT_EQ(create_X509_ATTRIBUTE_index(&made, 33, 12, text.get()), nullptr);
    EXPECT_EQ(made, nullptr);
    EXPECT_EQ(create_X509_ATTRIBUTE_index(&made, tlx::oid::kContentType, 12, text.get()), made);
    const Attribute attribute(made);
    ASSERT_NE(attribute, nullptr);
    EXPECT_EQ(create_X509_ATTRIBUTE_OID(&made, oid.get(), 22, text.get()), attribute.get());
    EXPECT_EQ(create_X509_ATTRIBUTE_OID(&made, oid.get(), 22, nullptr), nullptr);
    EXPECT_EQ(encoded(X509_ATTRIBUTE_to_Seq, made), hex_of_text("30{06:2A03 31{0C:41 16:41}}"));

    const Attributes list(new_X509_ATTRIBUTES());
    EXPECT_EQ(Statuses({add_X509_ATTRIBUTES_child(list.get(), attribute.get(), 7),
                        add_X509_ATTRIBUTES_child_OID(list.get(), oid.get(), 12, text.get(), 0),
                        add_X509_ATTRIBUTES_OID_INDEX(list.get(), tlx::oid::kCommonName, 19, text.get(), 1)}),
              Statuses{0});
    expect_refuses_null(1, add_X509_ATTRIBUTES_child_OID, list.get(), oid.get(), 12, text.get(), 0);
    EXPECT_EQ(add_X509_ATTRIBUTES_OID_INDEX(list.get(), 0, 12, text.get(), 0), 1U);
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

using Extension = Held<free_X509_EXTENSION>;

TEST(Extension, MadeAndFilled) {
    const LeakCheck leaks;
    const Extension owner(new_X509_EXTENSION());
    X509_EXTENSION *extension = owner.get();
    const String oid = oid_of("2.5.29.19");
    const String data = string_of(TLX_TAG_OCTET_STRING, hex("3000"));
    EXPECT_EQ(set_X509_EXTENSION_object(extension, oid.get()), 0U);
    EXPECT_EQ(encoded(X509_EXTENSION_to_Seq, extension), "461D0103") << "no value";
    EXPECT_EQ(set_X509_EXTENSION_data(extension, data.get()), 0U);
    EXPECT_EQ(set_X509_EXTENSION_critical(extension, 0x55), 0U);
    EXPECT_EQ(get_X509_EXTENSION_critical(extension), 0x55);
    EXPECT_EQ(octets(get_X509_EXTENSION_object(extension)), "2.5.29.19");
    EXPECT_EQ(text_of(get_X509_EXTENSION_data(extension)), "type 4 extra 0: 30 00");
    EXPECT_EQ(encoded(X509_EXTENSION_to_Seq, extension), hex_of_text("30{06:551D13 01:FF 04:3000}"));
    expect_refuses_null(1, set_X509_EXTENSION_object, extension, oid.get());
    expect_refuses_null(1, set_X509_EXTENSION_data, extension, data.get());
    expect_refuses_null(1, set_X509_EXTENSION_critical, extension, 1);
    expect_refuses_null(0, get_X509_EXTENSION_critical, extension);
    expect_refuses_null(nullptr, get_X509_EXTENSION_object, extension);
    expect_refuses_null(nullptr, get_X509_EXTENSION_data, extension);

    EXPECT_EQ(create_X509_EXTENSION_by_OID(&extension, nullptr, 0, data.get()), nullptr);
    EXPECT_EQ(create_X509_EXTENSION_by_OID(&extension, oid.get(), 1, nullptr), nullptr);
    EXPECT_EQ(create_X509_EXTENSION_by_OID(&extension, oid.get(), 0, data.get()), owner.get());
    EXPECT_EQ(encoded(X509_EXTENSION_to_Seq, extension), hex_of_text("30{06:551D13 04:3000}"));
    X509_EXTENSION *made = nullptr;
    EXPECT_EQ(create_X509_EXTENSION_by_OID_index(&made, 33, 1, data.get()), nullptr);
    EXPECT_EQ(made, nullptr);
    EXPECT_EQ(create_X509_EXTENSION_by_OID_index(&made, tlx::oid::kKeyUsage, 1, data.get()), made);
    const Extension made_owner(made);
    expect_made<free_X509_EXTENSION>("30{06:551D0F 01:FF 04:3000}", X509_EXTENSION_to_Seq,
                                     create_X509_EXTENSION_by_OID_index, nullptr, tlx::oid::kKeyUsage, 1,
                                     data.get());
}

TEST(Extension, FoundInLists) {
    const LeakCheck leaks;
    const Held<free_X509_EXTENSIONS> list(
        decoded(Seq_to_X509_EXTENSIONS, "30{30{06:00 04:} 30{06:551D0F 04:} 30{06:551D0F 04:}}"));
    const String key_usage = oid_of("2.5.29.15");
    const std::pair<std::int32_t, std::int32_t> hits[] = {{-3, 1}, {-1, 1}, {0, 1}, {1, 2}, {2, -1}};
    for (const auto &[last, expected] : hits) {
        EXPECT_EQ(get_X509_EXTENSION_index_by_OID(list.get(), key_usage.get(), last), expected) << last;
        EXPECT_EQ(get_X509_EXTENSION_index_by_OID_index(list.get(), tlx::oid::kKeyUsage, last), expected);
    }
    // 0.0 is the type of row 0, which stands for what the registry does not have.
    for (const std::int32_t row : {std::int32_t{tlx::oid::kSubjectAltName}, -1, 0, 33, 841})
        EXPECT_EQ(get_X509_EXTENSION_index_by_OID_index(list.get(), row, -1), -1) << row;
    EXPECT_EQ(get_X509_EXTENSION_index_by_OID(list.get(), nullptr, -1), -1);
}

TEST(AlgorithmIdentifier, Members) {
    const LeakCheck leaks;
    const Held<free_X509_ALGO_IDENTIFIER> owner(new_X509_ALGO_IDENTIFIER());
    X509_ALGO_IDENTIFIER *algorithm = owner.get();
    const String oid = oid_of("1.2.3");
    const Node parameters = der_node("30{02:05}");
    EXPECT_EQ(set_X509_ALGO_IDENTIFIER_OID(algorithm, oid.get()), 0U);
    EXPECT_EQ(set_X509_ALGO_IDENTIFIER_parameters(algorithm, parameters.get()), 0U);
    EXPECT_EQ(octets(get_X509_ALGO_IDENTIFIER_OID(algorithm)), "1.2.3");
    EXPECT_EQ(hex_of(get_X509_ALGO_IDENTIFIER_parameters(algorithm)), "30 03 02 01 05");
    expect_refuses_null(1, set_X509_ALGO_IDENTIFIER_OID, algorithm, oid.get());
    expect_refuses_null(1, set_X509_ALGO_IDENTIFIER_parameters, algorithm, nullptr);
    expect_refuses_null(1, set_X509_ALGO_IDENTIFIER_null, algorithm);
    EXPECT_EQ(set_X509_ALGO_IDENTIFIER_null(algorithm), 0U);
    EXPECT_EQ(encoded(X509_ALGO_IDENTIFIER_to_Seq, algorithm), hex_of_text("30{06:2A03 05:}"));
    EXPECT_EQ(set_X509_ALGO_IDENTIFIER_parameters(algorithm, nullptr), 0U);
    EXPECT_EQ(encoded(X509_ALGO_IDENTIFIER_to_Seq, algorithm), hex_of_text("30{06:2A03}"));
    EXPECT_EQ(get_X509_ALGO_IDENTIFIER_parameters(algorithm), nullptr);
    algorithm->parameters = new_ASN1_UNIT();
    EXPECT_EQ(encoded(X509_ALGO_IDENTIFIER_to_Seq, algorithm), "46250103") << "a node that is not started";
}

}  // namespace
}  // namespace tlx_test
