#include <gtest/gtest.h>
#include <tlxpki.h>

#include "asn1/oid_lookup.hpp"
#include "support/strings.hpp"
#include "support/x509_records.hpp"
#include "x509/certificate_records.hpp"

namespace tlx_test {
namespace {

const RecordType kAttribute = TLX_RECORD_TYPE(X509_ATTRIBUTE, 0x46220049, 0x46210049);
const RecordType kAttributes = TLX_RECORD_TYPE(X509_ATTRIBUTES, 0x46240049, 0x46230049);

using Attribute = tlx::Owned<X509_ATTRIBUTE>;

TEST(Attribute, EncodingsComeBack) {
    for (const std::string text : {
             "30{06:2A864886F70D010903 31{06:2A864886F70D010701}}",          // contentType
             "30{06:2A864886F70D010904 31{04:000102}}",                      // messageDigest
             "30{06:2A864886F70D010905 31{17:3235303130323033303430355A}}",  // signingTime
             "30{06:2A03 31{}}",
             "30{06:2A03 31{0C:41 30{02:01 31{05:}} 02:0001 03:0560 80:41 A0{02:05} 01:01}}",
             "30{06:2A03 31{31{0C:41}}}", "30{06:2A03 31{2C{0C:41 0C:42}}}",
             "30{06:2A03 31{7F:4142}}",  // a tag number of 31 is one octet like any other
         }) {
        expect_come_back(kAttribute, {text});
        expect_come_back(kAttributes, {"31{" + text + "}"});
    }
    const char *const unsorted = "31{30{06:2A04 31{05:}} 30{06:2A03 31{05:}} 30{06:2A03 31{05:}}}";
    expect_come_back(kAttributes, {unsorted});
    expect_reencodes(kAttributes, "A0{30{06:2A03 31{05:}}}", "31{30{06:2A03 31{05:}}}");
    expect_reencodes(kAttribute, "30{06:2A03 31{05:} 05:}", "30{06:2A03 31{05:}}");
}

TEST(Attribute, RefusedEncodings) {
    for (const std::string text : {"30{}", "30{06:2A03}", "30{31{05:} 06:2A03}", "30{06:2A03 30{05:}}",
                                   "30{06:2A03 05:}", "30{06: 31{05:}}", "30{06:2A03 31{12:31}}",
                                   "30{06:2A03 31{03:}}", "30{06:2A03 31:0501}", "30:06022A"}) {
        expect_refused(kAttribute, 0x46220104, {text});
        expect_refused(kAttributes, 0x46240104, {"31{" + text + "}"});
    }
    expect_refused(kAttributes, 0x46240104, {"31{05:}"});
    expect_refused(kAttributes, 0x4624002B, {"31{}", "31{12:31}"});  // that type does not count as a child
    expect_null_arguments_refused(kAttribute);
    expect_null_arguments_refused(kAttributes);
}

TEST(Attribute, AFailedDecodingAndTheCallersRecords) {
    const LeakCheck leaks;
    const Attribute attribute(decoded(Seq_to_X509_ATTRIBUTE, "30{06:2A03 31{05:}}"));
    X509_ATTRIBUTE *out = attribute.get();
    EXPECT_EQ(Seq_to_X509_ATTRIBUTE(der_node("30{06:2A04 31{12:31}}").get(), &out), 0x46220104U);
    EXPECT_EQ(out, nullptr) << "the attribute itself stays the caller's, and as it was";
    EXPECT_EQ(encoded(X509_ATTRIBUTE_to_Seq, attribute.get()), hex_of_text("30{06:2A03 31{05:}}"));

    const tlx::OwnedAttributes list(decoded(Seq_to_X509_ATTRIBUTES, "31{30{06:2A03 31{05:}}}"));
    X509_ATTRIBUTES *place = list.get();
    EXPECT_EQ(Seq_to_X509_ATTRIBUTES(new_node().get(), &place), 0x4624002BU) << "a node without children";
    const Node broken = der_node("31{30{06:2A04 31{05:}} 30{06:2A03}}");
    EXPECT_EQ(Seq_to_X509_ATTRIBUTES(broken.get(), &place), 0x46240104U);
    EXPECT_EQ(place, list.get());
    EXPECT_EQ(encoded(X509_ATTRIBUTES_to_Seq, place), hex_of_text("31{30{06:2A03 31{05:}}}"));
}

TEST(Attribute, StatusesOfTheEncoders) {
    const LeakCheck leaks;
    const tlx::OwnedAttributes list(new_X509_ATTRIBUTES());
    EXPECT_EQ(encoded(X509_ATTRIBUTES_to_Seq, list.get()), "status 4623002B") << "an empty list";
    push_STACK_value(list.get(), new_X509_ATTRIBUTE());
    EXPECT_EQ(encoded(X509_ATTRIBUTES_to_Seq, list.get()), "status 46210103")
        << "an attribute without a type";
    push_STACK_value(list.get(), nullptr);
    EXPECT_EQ(encoded(X509_ATTRIBUTES_to_Seq, list.get()), "status 4623002B") << "a missing attribute";

    const Attribute attribute(decoded(Seq_to_X509_ATTRIBUTE, "30{06:2A03 31{}}"));
    X509_ATTRIBUTE_DATA empty = {};
    EXPECT_EQ(push_STACK_value(attribute->values, &empty), 0U);
    for (const std::uint32_t type : {12U, 0x30U}) {
        empty.type = type;
        EXPECT_EQ(encoded(X509_ATTRIBUTE_to_Seq, attribute.get()), "status 46210103") << "no value";
    }
    remove_STACK_value(attribute->values, 0);
}

TEST(Attribute, Values) {
    const LeakCheck leaks;
    const Attribute attribute(new_X509_ATTRIBUTE());
    const String oid = oid_of("1.2.840");
    const String text = string_of(TLX_TAG_UTF8_STRING, "A");
    const String contents = string_of(TLX_TAG_SEQUENCE, hex("020105"));
    const Node node = der_node("30{02:05}");
    EXPECT_EQ(set_X509_ATTRIBUTE_OID(attribute.get(), oid.get()), 0U);
    EXPECT_EQ(add_X509_ATTRIBUTE_data(attribute.get(), 19, text.get()), 0U);
    EXPECT_EQ(add_X509_ATTRIBUTE_data(attribute.get(), 0x30, node.get()), 0U);
    EXPECT_EQ(add_X509_ATTRIBUTE_data(attribute.get(), TLX_TAG_SEQUENCE, contents.get()), 0U);
    String own = string_of(TLX_TAG_IA5_STRING, "B");
    ASN1_STRING *const taken_over = own.get();
    const String constructed = string_of(0x30, hex("0500"));
    EXPECT_EQ(add_X509_ATTRIBUTE_set(attribute.get(), constructed.get()), 1U) << "would be taken for a node";
    EXPECT_EQ(Statuses({add_X509_ATTRIBUTE_set(nullptr, own.get()),
                        set_X509_ATTRIBUTE_OID(attribute.get(), nullptr),
                        set_X509_ATTRIBUTE_OID(nullptr, oid.get()),
                        add_X509_ATTRIBUTE_data(attribute.get(), 12, nullptr),
                        add_X509_ATTRIBUTE_data(nullptr, 12, text.get()),
                        add_X509_ATTRIBUTE_set(attribute.get(), nullptr)}),
              Statuses{1});
    ASSERT_EQ(add_X509_ATTRIBUTE_set(attribute.get(), own.release()), 0U);
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
    const tlx::Owned<X509_ATTRIBUTE_DATA> copy(dup_X509_ATTRIBUTE_DATA(value));
    EXPECT_EQ(copy->type, value->type);
    EXPECT_NE(copy->value.string, value->value.string);
    EXPECT_EQ(dup_X509_ATTRIBUTE_DATA(nullptr), nullptr);
    clean_X509_ATTRIBUTE(attribute.get());
    EXPECT_EQ(get_X509_ATTRIBUTE_count(attribute.get()), 0U);
    EXPECT_EQ(get_X509_ATTRIBUTE_OID(attribute.get()), nullptr);
}

TEST(Attribute, CreatingOne) {
    const LeakCheck leaks;
    const String oid = oid_of("1.2.3");
    const String text = string_of(TLX_TAG_UTF8_STRING, "A");
    X509_ATTRIBUTE *attribute = nullptr;
    EXPECT_EQ(create_X509_ATTRIBUTE_OID(&attribute, nullptr, 12, text.get()), nullptr);
    EXPECT_EQ(create_X509_ATTRIBUTE_OID(&attribute, oid.get(), 12, nullptr), nullptr);
    EXPECT_EQ(create_X509_ATTRIBUTE_index(&attribute, 33, 12, text.get()), nullptr);
    EXPECT_EQ(attribute, nullptr);
    EXPECT_EQ(create_X509_ATTRIBUTE_index(&attribute, tlx::oid::kContentType, 12, text.get()), attribute);
    const Attribute first(attribute);
    ASSERT_NE(first, nullptr);
    EXPECT_EQ(create_X509_ATTRIBUTE_OID(&attribute, oid.get(), 22, text.get()), first.get());
    EXPECT_EQ(create_X509_ATTRIBUTE_OID(&attribute, oid.get(), 22, nullptr), nullptr);
    EXPECT_EQ(attribute, first.get());
    EXPECT_EQ(encoded(X509_ATTRIBUTE_to_Seq, attribute), hex_of_text("30{06:2A03 31{0C:41 16:41}}"));
}

TEST(Attribute, Lists) {
    const LeakCheck leaks;
    const tlx::OwnedAttributes list(new_X509_ATTRIBUTES());
    const String oid = oid_of("1.2.3");
    const String text = string_of(TLX_TAG_UTF8_STRING, "A");
    const Attribute attribute(decoded(Seq_to_X509_ATTRIBUTE, "30{06:2A04 31{05:}}"));
    EXPECT_EQ(add_X509_ATTRIBUTES_child(list.get(), attribute.get(), 7), 0U);
    EXPECT_EQ(add_X509_ATTRIBUTES_child_OID(list.get(), oid.get(), 12, text.get(), 0), 0U);
    EXPECT_EQ(add_X509_ATTRIBUTES_OID_INDEX(list.get(), tlx::oid::kCommonName, 19, text.get(), 1), 0U);
    EXPECT_EQ(Statuses({add_X509_ATTRIBUTES_child(nullptr, attribute.get(), 0),
                        add_X509_ATTRIBUTES_child(list.get(), nullptr, 0),
                        add_X509_ATTRIBUTES_child_OID(list.get(), oid.get(), 12, nullptr, 0),
                        add_X509_ATTRIBUTES_OID_INDEX(list.get(), 0, 12, text.get(), 0)}),
              Statuses{1});
    EXPECT_EQ(encoded(X509_ATTRIBUTES_to_Seq, list.get()),
              hex_of_text("31{30{06:2A03 31{0C:41}} 30{06:550403 31{13:41}} 30{06:2A04 31{05:}}}"));
    EXPECT_EQ(get_X509_ATTRIBUTES_count(list.get()), 3U);
    EXPECT_EQ(get_X509_ATTRIBUTES_count(nullptr), 0U);
    EXPECT_EQ(get_X509_ATTRIBUTES_index_by_OID(list.get(), oid.get(), -1), 0);
    EXPECT_EQ(get_X509_ATTRIBUTES_index_by_OID(list.get(), oid.get(), 0), -1);
    EXPECT_EQ(remove_X509_ATTRIBUTES_child(list.get(), 3), nullptr);
    const Attribute taken(remove_X509_ATTRIBUTES_child(list.get(), 1));
    EXPECT_EQ(octets(get_X509_ATTRIBUTE_OID(taken.get())), "2.5.4.3");
    EXPECT_EQ(get_X509_ATTRIBUTES_child(list.get(), 2), nullptr);
}

TEST(Attribute, EveryAllocationMayFail) {
    const std::string one = "30{06:2A03 31{0C:41 30{02:05} 03:0560}}";
    expect_allocations_may_fail(kAttribute, der_node(one).get(), {0x46220104}, {0x46210103});
    expect_allocations_may_fail(kAttributes, der_node("31{" + one + one + one + one + one + "}").get(),
                                {0x46240104, 0x4624010C}, {0x46210103, 0x46230103});
    const String oid = oid_of("1.2.3");
    const String text = string_of(TLX_TAG_UTF8_STRING, "A");
    const tlx::OwnedAttributes list(new_X509_ATTRIBUTES());
    sweep_failing_allocations([&] {
        clean_X509_ATTRIBUTES(list.get());
        const bool added = add_X509_ATTRIBUTES_child_OID(list.get(), oid.get(), 12, text.get(), 0) == 0;
        EXPECT_EQ(get_X509_ATTRIBUTES_count(list.get()), added ? 1U : 0U);
        clean_X509_ATTRIBUTES(list.get());
        return added;
    });
    const Attribute attribute(new_X509_ATTRIBUTE());
    sweep_failing_allocations([&] {
        String own(new_ASN1_STRING());
        if (own == nullptr || add_X509_ATTRIBUTE_set(attribute.get(), own.get()) != 0) return false;
        (void)own.release();
        clean_X509_ATTRIBUTE(attribute.get());
        return true;
    });
}

}  // namespace
}  // namespace tlx_test
