// Makers and members of extensions and of algorithm identifiers.
#include <gtest/gtest.h>
#include <tlxpki.h>

#include "asn1/oid_lookup.hpp"
#include "support/octets.hpp"
#include "support/x509_records.hpp"

namespace tlx_test {
namespace {

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
    EXPECT_EQ(
        Statuses({set_X509_EXTENSION_object(extension, nullptr), set_X509_EXTENSION_data(nullptr, data.get()),
                  set_X509_EXTENSION_critical(nullptr, 1)}),
        Statuses{1});
    EXPECT_EQ(get_X509_EXTENSION_critical(nullptr), 0);
    EXPECT_EQ(get_X509_EXTENSION_object(nullptr), nullptr);
    EXPECT_EQ(get_X509_EXTENSION_data(nullptr), nullptr);

    EXPECT_EQ(create_X509_EXTENSION_by_OID(&extension, nullptr, 0, data.get()), nullptr);
    EXPECT_EQ(create_X509_EXTENSION_by_OID(&extension, oid.get(), 1, nullptr), nullptr);
    EXPECT_EQ(create_X509_EXTENSION_by_OID(&extension, oid.get(), 0, data.get()), owner.get());
    EXPECT_EQ(encoded(X509_EXTENSION_to_Seq, extension), hex_of_text("30{06:551D13 04:3000}"));
    X509_EXTENSION *made = nullptr;
    EXPECT_EQ(create_X509_EXTENSION_by_OID_index(&made, 33, 1, data.get()), nullptr);
    EXPECT_EQ(made, nullptr);
    EXPECT_EQ(create_X509_EXTENSION_by_OID_index(&made, tlx::oid::kKeyUsage, 1, data.get()), made);
    const Extension made_owner(made);
    EXPECT_EQ(encoded(X509_EXTENSION_to_Seq, made), hex_of_text("30{06:551D0F 01:FF 04:3000}"));
    expect_making_may_fail([&] { return create_X509_EXTENSION_by_OID(nullptr, oid.get(), 1, oid.get()); },
                           free_X509_EXTENSION);
}

TEST(Extension, FoundInLists) {
    const LeakCheck leaks;
    const Held<free_X509_EXTENSIONS> list(
        decoded(Seq_to_X509_EXTENSIONS, "30{30{06:551D13 04:} 30{06:551D0F 04:} 30{06:551D0F 04:}}"));
    const String key_usage = oid_of("2.5.29.15");
    const std::pair<std::int32_t, std::int32_t> hits[] = {{-3, 1}, {-1, 1}, {0, 1}, {1, 2}, {2, -1}};
    for (const auto &[last, expected] : hits) {
        EXPECT_EQ(get_X509_EXTENSION_index_by_OID(list.get(), key_usage.get(), last), expected) << last;
        EXPECT_EQ(get_X509_EXTENSION_index_by_OID_index(list.get(), tlx::oid::kKeyUsage, last), expected);
    }
    for (const std::int32_t row : {std::int32_t{tlx::oid::kSubjectAltName}, -1, 0, 33, 841}) {
        EXPECT_EQ(get_X509_EXTENSION_index_by_OID_index(list.get(), row, -1), -1) << row;
    }
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
    EXPECT_EQ(Statuses({set_X509_ALGO_IDENTIFIER_OID(algorithm, nullptr),
                        set_X509_ALGO_IDENTIFIER_OID(nullptr, oid.get()),
                        set_X509_ALGO_IDENTIFIER_parameters(nullptr, nullptr),
                        set_X509_ALGO_IDENTIFIER_null(nullptr)}),
              Statuses{1});
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
