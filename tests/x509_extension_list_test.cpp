#include <gtest/gtest.h>
#include <tlxpki.h>

#include "asn1/oid_lookup.hpp"
#include "support/strings.hpp"
#include "support/x509_records.hpp"
#include "x509/certificate_records.hpp"

namespace tlx_test {
namespace {

const RecordType kExtension = TLX_RECORD_TYPE(X509_EXTENSION, 0x461E0049, 0x461D0049);
const RecordType kExtensions = TLX_RECORD_TYPE(X509_EXTENSIONS, 0x46200049, 0x461F0049);
const RecordType kAlgorithm = TLX_RECORD_TYPE(X509_ALGO_IDENTIFIER, 0x46260049, 1);
const RecordType kAlgorithms = TLX_RECORD_TYPE(X509_ALGO_IDENTIFIERS, 0x46280049, 0x46270049);

using Extension = tlx::Owned<X509_EXTENSION>;

TEST(Extension, Encodings) {
    for (const std::string text : {"30{06:551D13 01:FF 04:3000}", "30{06:551D0E 04:}", "30{06:2A03 04:00}"}) {
        expect_come_back(kExtension, {text});
        expect_come_back(kExtensions, {"30{" + text + "}"});
    }
    expect_come_back(kExtensions,
                     {"30{}", "30{30{06:551D13 01:FF 04:3000} 30{06:551D0E 04:0401} 30{06:551D0E 04:0402}}"});
    expect_reencodes(kExtension, "30{06:551D13 01:01 04:3000}", "30{06:551D13 01:FF 04:3000}");
    expect_reencodes(kExtension, "30{06:551D13 01:00 04:3000}", "30{06:551D13 04:3000}");
    expect_reencodes(kExtension, "30{86:551D13 21:FF 84:3000}", "30{06:551D13 01:FF 04:3000}");
    for (const std::string text :
         {"30{}", "30{06:551D13}", "30{06:551D13 01:FF}", "30{06:551D13 01: 04:3000}",
          "30{06:551D13 01:FFFF 04:3000}", "30{06:551D13 05: 04:3000}", "30{06:551D13 81:FF 04:3000}",
          "30{06:551D13 04:3000 05:}", "30{06:551D13 01:FF 01:FF 04:3000}", "30{06: 04:3000}",
          "30{04:3000 06:551D13}", "30:0603551D13040230", "30:0603551D130102FF"}) {
        expect_refused(kExtension, 0x461E0104, {text});
        expect_refused(kExtensions, 0x46200104, {"30{30{06:2A03 04:}" + text + "}"});
    }
    expect_refused(kExtensions, 0x46200104, {"30{06:551D13}"});
    expect_null_arguments_refused(kExtension);
    expect_null_arguments_refused(kExtensions);
}

TEST(Extension, Members) {
    const LeakCheck leaks;
    const Extension owner(new_X509_EXTENSION());
    X509_EXTENSION *extension = owner.get();
    const String oid = oid_of("2.5.29.19");
    const String data = string_of(TLX_TAG_OCTET_STRING, hex("3000"));
    EXPECT_EQ(encoded(X509_EXTENSION_to_Seq, extension), "status 461D0103");
    EXPECT_EQ(set_X509_EXTENSION_object(extension, oid.get()), 0U);
    EXPECT_EQ(encoded(X509_EXTENSION_to_Seq, extension), "status 461D0103");
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

    // Creating one, or filling one that is given.
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
}

TEST(Extension, Lists) {
    const LeakCheck leaks;
    const tlx::OwnedExtensions list(new_X509_EXTENSIONS());
    const String data = string_of(TLX_TAG_OCTET_STRING, "A");
    const auto add = [&](std::int32_t row, std::int32_t index) {
        const Extension extension(create_X509_EXTENSION_by_OID_index(nullptr, row, 0, data.get()));
        return add_X509_EXTENSION(list.get(), extension.get(), index);
    };
    EXPECT_EQ(add(tlx::oid::kKeyUsage, 5), 0U);
    EXPECT_EQ(add(tlx::oid::kBasicConstraints, 0), 0U);
    EXPECT_EQ(add(tlx::oid::kKeyUsage, -1), 0U);
    EXPECT_EQ(add(33, 0), 1U);
    EXPECT_EQ(add_X509_EXTENSION(nullptr, get_X509_EXTENSION(list.get(), 0), 0), 1U);
    EXPECT_EQ(get_X509_EXTENSION_count(list.get()), 3U);
    EXPECT_EQ(get_X509_EXTENSION_count(nullptr), 0U);

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

    EXPECT_EQ(remove_X509_EXTENSION(list.get(), 3), nullptr);
    const Extension taken(remove_X509_EXTENSION(list.get(), 0));
    EXPECT_EQ(octets(get_X509_EXTENSION_object(taken.get())), "2.5.29.19");
    EXPECT_EQ(get_X509_EXTENSION(list.get(), 2), nullptr);
}

TEST(AlgorithmIdentifier, Encodings) {
    for (const std::string text :
         {"30{06:2A864886F70D010101 05:}", "30{06:2A864886F70D010101}", "30{06:2A03 30{A0{30{06:2A04 05:}}}}",
          "30{06:2A03 04:0102}", "30{06:2A03 A0{02:05}}", "30{06:2A03 06:2A8648CE3D030107}"}) {
        expect_come_back(kAlgorithm, {text});
        expect_come_back(kAlgorithms, {"31{" + text + "30{06:2A03}}"});
    }
    expect_come_back(kAlgorithms, {"31{}"});
    expect_reencodes(kAlgorithms, "30{30{06:2A03}}", "31{30{06:2A03}}");
    for (const std::string text : {"30{}", "30{05:}", "30{06:}", "30{06:2A03 05: 05:}", "30:06022A030501"}) {
        expect_refused(kAlgorithm, 0x46260104, {text});
        expect_refused(kAlgorithms, 0x46280104, {"31{" + text + "}"});
    }
    expect_null_arguments_refused(kAlgorithm);
    expect_null_arguments_refused(kAlgorithms);
}

TEST(AlgorithmIdentifier, Members) {
    const LeakCheck leaks;
    const tlx::Owned<X509_ALGO_IDENTIFIER> owner(new_X509_ALGO_IDENTIFIER());
    X509_ALGO_IDENTIFIER *algorithm = owner.get();
    const String oid = oid_of("1.2.3");
    const Node parameters = der_node("30{02:05}");
    EXPECT_EQ(encoded(X509_ALGO_IDENTIFIER_to_Seq, algorithm), "status 46250103");
    EXPECT_EQ(set_X509_ALGO_IDENTIFIER_OID(algorithm, oid.get()), 0U);
    EXPECT_EQ(set_X509_ALGO_IDENTIFIER_parameters(algorithm, parameters.get()), 0U);
    EXPECT_EQ(octets(get_X509_ALGO_IDENTIFIER_OID(algorithm)), "1.2.3");
    EXPECT_EQ(hex_of(get_X509_ALGO_IDENTIFIER_parameters(algorithm)), "30 03 02 01 05");
    EXPECT_EQ(Statuses({set_X509_ALGO_IDENTIFIER_OID(algorithm, nullptr),
                        set_X509_ALGO_IDENTIFIER_OID(nullptr, oid.get()),
                        set_X509_ALGO_IDENTIFIER_parameters(nullptr, nullptr),
                        set_X509_ALGO_IDENTIFIER_null(nullptr)}),
              Statuses{1});

    const Held<X509_ALGO_IDENTIFIERS, free_X509_ALGO_IDENTIFIERS> list(new_X509_ALGO_IDENTIFIERS());
    EXPECT_EQ(set_X509_ALGO_IDENTIFIER_parameters(algorithm, nullptr), 0U);
    EXPECT_EQ(add_X509_ALGO_IDENTIFIERS_child(list.get(), algorithm, 0), 0U);
    EXPECT_EQ(set_X509_ALGO_IDENTIFIER_null(algorithm), 0U);
    EXPECT_EQ(add_X509_ALGO_IDENTIFIERS_child(list.get(), algorithm, 0), 0U);
    EXPECT_EQ(encoded(X509_ALGO_IDENTIFIERS_to_Seq, list.get()),
              hex_of_text("31{30{06:2A03 05:} 30{06:2A03}}"));
    EXPECT_EQ(get_X509_ALGO_IDENTIFIERS_count(list.get()), 2U);
    EXPECT_EQ(get_X509_ALGO_IDENTIFIERS_child(list.get(), 2), nullptr);
    free_X509_ALGO_IDENTIFIER(remove_X509_ALGO_IDENTIFIERS_child(list.get(), 0));
    EXPECT_EQ(get_X509_ALGO_IDENTIFIER_parameters(get_X509_ALGO_IDENTIFIERS_child(list.get(), 0)), nullptr);
}

TEST(Extension, EveryAllocationMayFail) {
    const std::string one = "30{06:551D13 01:FF 04:3000}";
    expect_allocations_may_fail(kExtensions, der_node("30{" + one + one + one + one + one + "}").get(),
                                {0x46200104}, {0x461F0103});
    expect_allocations_may_fail(kExtension, der_node(one).get(), {0x461E0104}, {0x461D0103});
    expect_allocations_may_fail(kAlgorithms, der_node("31{30{06:2A03 05:} 30{06:2A03}}").get(), {0x46280104},
                                {0x46270103});
    expect_allocations_may_fail(kAlgorithm, der_node("30{06:2A03 05:}").get(), {0x46260104}, {0x46250103});
    const String oid = oid_of("1.2.3");
    expect_making_may_fail([&] { return create_X509_EXTENSION_by_OID(nullptr, oid.get(), 1, oid.get()); },
                           free_X509_EXTENSION);
}

}  // namespace
}  // namespace tlx_test
