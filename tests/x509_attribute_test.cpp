#include <gtest/gtest.h>
#include <tlxpki.h>

#include "asn1/oid_lookup.hpp"
#include "support/strings.hpp"
#include "support/x509_records.hpp"

namespace tlx_test {
namespace {

const RecordType kAttribute = TLX_RECORD_TYPE(X509_ATTRIBUTE, 0x46220049, 0x46210049);
const RecordType kAttributes = TLX_RECORD_TYPE(X509_ATTRIBUTES, 0x46240049, 0x46230049);

using OwnedAttribute = std::unique_ptr<X509_ATTRIBUTE, Freer<X509_ATTRIBUTE, free_X509_ATTRIBUTE>>;
using OwnedAttributes = std::unique_ptr<X509_ATTRIBUTES, Freer<X509_ATTRIBUTES, free_X509_ATTRIBUTES>>;
using OwnedData = std::unique_ptr<X509_ATTRIBUTE_DATA, Freer<X509_ATTRIBUTE_DATA, free_X509_ATTRIBUTE_DATA>>;

OwnedAttribute attribute_of(std::string_view text) {
    X509_ATTRIBUTE *attribute = nullptr;
    EXPECT_EQ(Seq_to_X509_ATTRIBUTE(der_node(text).get(), &attribute), 0U) << text;
    return OwnedAttribute(attribute);
}

/// The encoding in the notation of these tests is easier to read in hexadecimal.
std::string hex_of_text(std::string_view text) {
    return hex_of(der_node(text).get());
}

TEST(Attribute, EncodingsComeBack) {
    const char *const cases[] = {
        "30{06:2A864886F70D010903 31{06:2A864886F70D010701}}",          // contentType
        "30{06:2A864886F70D010904 31{04:000102}}",                      // messageDigest
        "30{06:2A864886F70D010905 31{17:3235303130323033303430355A}}",  // signingTime
        "30{06:2A03 31{}}",
        "30{06:2A03 31{0C:41 30{02:01 31{05:}} 02:0001 03:0560 80:41 A0{02:05} 01:01}}",
        "30{06:2A03 31{31{0C:41}}}",
        "30{06:2A03 31{2C{0C:41 0C:42}}}",
        "30{06:2A03 31{7F:4142}}",  // a tag number of 31 is one octet like any other
    };
    for (const char *text : cases) {
        expect_comes_back(kAttribute, text);
        expect_comes_back(kAttributes, "31{" + std::string(text) + "}");
    }
    expect_comes_back(kAttributes,
                      "31{30{06:2A04 31{05:}} 30{06:2A03 31{05:}} 30{06:2A03 31{05:}}}");  // not sorted
    expect_reencodes(kAttributes, "A0{30{06:2A03 31{05:}}}", "31{30{06:2A03 31{05:}}}");
    expect_reencodes(kAttribute, "30{06:2A03 31{05:} 05:}", "30{06:2A03 31{05:}}");
}

TEST(Attribute, ConstructedValuesAreNodes) {
    const LeakCheck leaks;
    X509_ATTRIBUTES *attributes = nullptr;
    ASSERT_EQ(Seq_to_X509_ATTRIBUTES(der_node("31{30{06:2A03 31{30{02:05} 0C:41}}}").get(), &attributes), 0U);
    const OwnedAttributes owner(attributes);
    const X509_ATTRIBUTE *attribute = get_X509_ATTRIBUTES_child(attributes, 0);
    ASSERT_EQ(get_X509_ATTRIBUTE_count(attribute), 2U);
    EXPECT_EQ(get_X509_ATTRIBUTE_data_type(attribute, 0), 0x30U);
    EXPECT_EQ(hex_of(static_cast<ASN1_UNIT *>(get_X509_ATTRIBUTE_data(attribute, 0))), "30 03 02 01 05");
    EXPECT_EQ(get_X509_ATTRIBUTE_data_type(attribute, 1), 12U);
    EXPECT_EQ(octets(static_cast<ASN1_STRING *>(get_X509_ATTRIBUTE_data(attribute, 1))), "A");
    EXPECT_EQ(get_X509_ATTRIBUTE_data(attribute, 2), nullptr);
    EXPECT_EQ(get_X509_ATTRIBUTE_data(attribute, -1), nullptr);
    EXPECT_EQ(get_X509_ATTRIBUTE_data_type(attribute, 2), 0xFFFFFFFFU);
}

TEST(Attribute, RefusedEncodings) {
    for (const char *text : {"30{}", "30{06:2A03}", "30{31{05:} 06:2A03}", "30{06:2A03 30{05:}}",
                             "30{06:2A03 05:}", "30{06: 31{05:}}", "30{06:2A03 31{12:31}}",
                             "30{06:2A03 31{03:}}", "30{06:2A03 31:0501}", "30:06022A"}) {
        expect_refused(kAttribute, text, 0x46220104);
        expect_refused(kAttributes, "31{" + std::string(text) + "}", 0x46240104);
    }
    expect_refused(kAttributes, "31{}", 0x4624002B);
    expect_refused(kAttributes, "31{12:31}",
                   0x4624002B);  // an element of that type does not count as a child
    expect_refused(kAttributes, "31{05:}", 0x46240104);
    expect_null_arguments_refused(kAttribute);
    expect_null_arguments_refused(kAttributes);
}

TEST(Attribute, AFailedDecodingAndTheCallersRecords) {
    const LeakCheck leaks;
    const Node broken = der_node("31{30{06:2A04 31{05:}} 30{06:2A03}}");
    OwnedAttribute attribute = attribute_of("30{06:2A03 31{05:}}");
    X509_ATTRIBUTE *out = attribute.get();
    EXPECT_EQ(Seq_to_X509_ATTRIBUTE(der_node("30{06:2A04 31{12:31}}").get(), &out), 0x46220104U);
    EXPECT_EQ(out, nullptr) << "the attribute itself stays the caller's";

    OwnedAttributes list(new_X509_ATTRIBUTES());
    const OwnedAttribute kept = attribute_of("30{06:2A03 31{05:}}");
    EXPECT_EQ(add_X509_ATTRIBUTES_child(list.get(), kept.get(), -1), 0U);
    X509_ATTRIBUTES *place = list.get();
    EXPECT_EQ(Seq_to_X509_ATTRIBUTES(broken.get(), &place), 0x46240104U);
    EXPECT_EQ(place, list.get());
    EXPECT_EQ(encoding_or_status(kAttributes, place), hex_of_text("31{30{06:2A03 31{05:}}}"));
}

TEST(Attribute, StatusesOfTheEncoders) {
    const LeakCheck leaks;
    OwnedAttributes list(new_X509_ATTRIBUTES());
    ASN1_UNIT *node = nullptr;
    EXPECT_EQ(X509_ATTRIBUTES_to_Seq(list.get(), &node), 0x4623002BU) << "an empty list";
    push_STACK_value(list.get(), new_X509_ATTRIBUTE());
    EXPECT_EQ(X509_ATTRIBUTES_to_Seq(list.get(), &node), 0x46210103U) << "an attribute without a type";
    EXPECT_EQ(X509_ATTRIBUTE_to_Seq(get_X509_ATTRIBUTES_child(list.get(), 0), &node), 0x46210103U);
    push_STACK_value(list.get(), nullptr);
    EXPECT_EQ(X509_ATTRIBUTES_to_Seq(list.get(), &node), 0x4623002BU) << "a missing attribute";
    EXPECT_EQ(node, nullptr);

    // A value is written under the type that it was added with, not under that of its string.
    const String oid = string_of(TLX_TAG_OBJECT_IDENTIFIER, "1.2.3");
    const String text = string_of(TLX_TAG_UTF8_STRING, "A");
    const String contents = string_of(TLX_TAG_SEQUENCE, hex("020105"));
    OwnedAttribute attribute(
        create_X509_ATTRIBUTE_OID(nullptr, oid.get(), TLX_TAG_PRINTABLE_STRING, text.get()));
    EXPECT_EQ(add_X509_ATTRIBUTE_data(attribute.get(), TLX_TAG_SEQUENCE, contents.get()), 0U);
    EXPECT_EQ(encoding_or_status(kAttribute, attribute.get()),
              hex_of_text("30{06:2A03 31{13:41 30{02:05}}}"));
    X509_ATTRIBUTE_DATA empty = {};
    EXPECT_EQ(push_STACK_value(attribute->values, &empty), 0U);
    for (const std::uint32_t type : {12U, 0x30U}) {
        empty.type = type;
        EXPECT_EQ(X509_ATTRIBUTE_to_Seq(attribute.get(), &node), 0x46210103U) << "a value that is not there";
    }
    remove_STACK_value(attribute->values, 2);
}

TEST(Attribute, AddingValues) {
    const LeakCheck leaks;
    const OwnedAttribute attribute(new_X509_ATTRIBUTE());
    EXPECT_EQ(get_X509_ATTRIBUTE_count(attribute.get()), 0U);
    EXPECT_EQ(get_X509_ATTRIBUTE_OID(attribute.get()), nullptr);
    const String oid = string_of(TLX_TAG_OBJECT_IDENTIFIER, "1.2.840");
    const String text = string_of(TLX_TAG_UTF8_STRING, "A");
    const Node node = der_node("30{02:05}");
    EXPECT_EQ(set_X509_ATTRIBUTE_OID(attribute.get(), oid.get()), 0U);
    EXPECT_EQ(set_X509_ATTRIBUTE_OID(attribute.get(), nullptr), 1U);
    EXPECT_EQ(set_X509_ATTRIBUTE_OID(nullptr, oid.get()), 1U);
    EXPECT_EQ(add_X509_ATTRIBUTE_data(attribute.get(), 12, text.get()), 0U);
    EXPECT_EQ(add_X509_ATTRIBUTE_data(attribute.get(), 0x30, node.get()), 0U);
    EXPECT_EQ(add_X509_ATTRIBUTE_data(attribute.get(), 12, nullptr), 1U);
    EXPECT_EQ(add_X509_ATTRIBUTE_data(nullptr, 12, text.get()), 1U);
    EXPECT_NE(get_X509_ATTRIBUTE_data(attribute.get(), 0), text.get()) << "a copy";

    String own = string_of(TLX_TAG_IA5_STRING, "B");
    EXPECT_EQ(add_X509_ATTRIBUTE_set(attribute.get(), nullptr), 1U);
    EXPECT_EQ(add_X509_ATTRIBUTE_set(nullptr, own.get()), 1U);
    const String constructed = string_of(0x30, hex("0500"));
    EXPECT_EQ(add_X509_ATTRIBUTE_set(attribute.get(), constructed.get()), 1U) << "would be taken for a node";
    ASN1_STRING *taken_over = own.release();
    ASSERT_EQ(add_X509_ATTRIBUTE_set(attribute.get(), taken_over), 0U);
    EXPECT_EQ(get_X509_ATTRIBUTE_data(attribute.get(), 2), taken_over) << "no copy";
    EXPECT_EQ(get_X509_ATTRIBUTE_data_type(attribute.get(), 2), 22U);
    EXPECT_EQ(encoding_or_status(kAttribute, attribute.get()),
              hex_of_text("30{06:2A8648 31{0C:41 30{02:05} 16:42}}"));

    for (std::int32_t i = 0; i < 3; ++i) {
        const auto *value = static_cast<X509_ATTRIBUTE_DATA *>(
            get_STACK_value(attribute->values, static_cast<std::uint32_t>(i)));
        const OwnedData copy(dup_X509_ATTRIBUTE_DATA(value));
        ASSERT_NE(copy, nullptr);
        EXPECT_EQ(copy->type, value->type);
        EXPECT_NE(copy->value.string, value->value.string);
    }
    EXPECT_EQ(dup_X509_ATTRIBUTE_DATA(nullptr), nullptr);
    clean_X509_ATTRIBUTE(attribute.get());
    EXPECT_EQ(get_X509_ATTRIBUTE_count(attribute.get()), 0U);
    EXPECT_EQ(add_X509_ATTRIBUTE_data(attribute.get(), 12, text.get()), 0U);
}

TEST(Attribute, CreatingOne) {
    const LeakCheck leaks;
    const String oid = string_of(TLX_TAG_OBJECT_IDENTIFIER, "1.2.3");
    const String text = string_of(TLX_TAG_UTF8_STRING, "A");
    X509_ATTRIBUTE *attribute = nullptr;
    EXPECT_EQ(create_X509_ATTRIBUTE_OID(&attribute, nullptr, 12, text.get()), nullptr);
    EXPECT_EQ(create_X509_ATTRIBUTE_OID(&attribute, oid.get(), 12, nullptr), nullptr);
    EXPECT_EQ(create_X509_ATTRIBUTE_index(&attribute, 33, 12, text.get()), nullptr);
    EXPECT_EQ(attribute, nullptr);
    EXPECT_EQ(create_X509_ATTRIBUTE_index(&attribute, tlx::oid::kContentType, 12, text.get()), attribute);
    ASSERT_NE(attribute, nullptr);
    X509_ATTRIBUTE *const first = attribute;
    EXPECT_EQ(create_X509_ATTRIBUTE_OID(&attribute, oid.get(), 22, text.get()), first);
    EXPECT_EQ(encoding_or_status(kAttribute, first), hex_of_text("30{06:2A03 31{0C:41 16:41}}"));
    EXPECT_EQ(create_X509_ATTRIBUTE_OID(&attribute, oid.get(), 22, nullptr), nullptr);
    EXPECT_EQ(attribute, first);
    free_X509_ATTRIBUTE(attribute);
}

TEST(Attribute, Lists) {
    const LeakCheck leaks;
    const OwnedAttributes list(new_X509_ATTRIBUTES());
    const String oid = string_of(TLX_TAG_OBJECT_IDENTIFIER, "1.2.3");
    const String text = string_of(TLX_TAG_UTF8_STRING, "A");
    const OwnedAttribute attribute = attribute_of("30{06:2A04 31{05:}}");
    EXPECT_EQ(add_X509_ATTRIBUTES_child(list.get(), attribute.get(), 7), 0U);
    EXPECT_EQ(add_X509_ATTRIBUTES_child_OID(list.get(), oid.get(), 12, text.get(), 0), 0U);
    EXPECT_EQ(add_X509_ATTRIBUTES_OID_INDEX(list.get(), tlx::oid::kCommonName, 19, text.get(), 1), 0U);
    EXPECT_EQ(encoding_or_status(kAttributes, list.get()),
              hex_of_text("31{30{06:2A03 31{0C:41}} 30{06:550403 31{13:41}} 30{06:2A04 31{05:}}}"));
    EXPECT_EQ(add_X509_ATTRIBUTES_child(nullptr, attribute.get(), 0), 1U);
    EXPECT_EQ(add_X509_ATTRIBUTES_child(list.get(), nullptr, 0), 1U);
    EXPECT_EQ(add_X509_ATTRIBUTES_child_OID(list.get(), oid.get(), 12, nullptr, 0), 1U);
    EXPECT_EQ(add_X509_ATTRIBUTES_OID_INDEX(list.get(), 0, 12, text.get(), 0), 1U);
    EXPECT_EQ(get_X509_ATTRIBUTES_count(list.get()), 3U);
    EXPECT_EQ(get_X509_ATTRIBUTES_count(nullptr), 0U);
    EXPECT_EQ(get_X509_ATTRIBUTES_index_by_OID(list.get(), oid.get(), -1), 0);
    EXPECT_EQ(get_X509_ATTRIBUTES_index_by_OID(list.get(), oid.get(), 0), -1);
    EXPECT_EQ(remove_X509_ATTRIBUTES_child(list.get(), 3), nullptr);
    const OwnedAttribute taken(remove_X509_ATTRIBUTES_child(list.get(), 1));
    EXPECT_EQ(octets(get_X509_ATTRIBUTE_OID(taken.get())), "2.5.4.3");
    EXPECT_EQ(get_X509_ATTRIBUTES_child(list.get(), 2), nullptr);
}

TEST(Attribute, EveryAllocationMayFail) {
    const char *one = "30{06:2A03 31{0C:41 30{02:05} 03:0560}}";
    expect_allocations_may_fail(kAttribute, der_node(one).get(), {0x46220104}, {0x46210103});
    std::string five = "31{";
    for (int i = 0; i < 5; ++i)
        five += one;
    expect_allocations_may_fail(kAttributes, der_node(five + "}").get(), {0x46240104, 0x4624010C},
                                {0x46210103, 0x46230103});
    const String oid = string_of(TLX_TAG_OBJECT_IDENTIFIER, "1.2.3");
    const String text = string_of(TLX_TAG_UTF8_STRING, "A");
    sweep_failing_allocations([&] {
        const OwnedAttributes list(new_X509_ATTRIBUTES());
        if (list == nullptr) return false;
        const bool added = add_X509_ATTRIBUTES_child_OID(list.get(), oid.get(), 12, text.get(), 0) == 0;
        EXPECT_EQ(get_X509_ATTRIBUTES_count(list.get()), added ? 1U : 0U);
        return added;
    });
    const OwnedAttribute attribute(new_X509_ATTRIBUTE());
    sweep_failing_allocations([&] {
        ASN1_STRING *own = new_ASN1_STRING();
        if (own == nullptr) return false;
        if (add_X509_ATTRIBUTE_set(attribute.get(), own) == 0) {
            clean_X509_ATTRIBUTE(attribute.get());
            return true;
        }
        free_ASN1_STRING(own);
        return false;
    });
}

}  // namespace
}  // namespace tlx_test
