#include <gtest/gtest.h>
#include <tlxpki.h>

#include "asn1/oid_lookup.hpp"
#include "support/octets.hpp"
#include "support/openssl_peer.hpp"
#include "support/x509_records.hpp"

namespace tlx_test {
namespace {

using OwnedName = Held<free_X509_NAME>;

OwnedName name_of(std::string_view text) {
    return OwnedName(decoded(Seq_to_X509_NAME, text));
}

TEST(Name, StatusesOfTheEncoder) {
    const LeakCheck leaks;
    const OwnedName name = name_of("30{31{30{06:550403 0C:41}}}");
    const auto status_with_caller_node = [&name] {
        ASN1_UNIT *node = new_ASN1_UNIT();
        const std::uint32_t status = X509_NAME_to_Seq(name.get(), &node);
        EXPECT_EQ(node == nullptr, status != 0) << "the node of a failed encoding is freed";
        free_ASN1_UNIT(node);
        return status;
    };
    EXPECT_EQ(status_with_caller_node(), 0U);
    X509_NAME_CHILD *child = get_X509_NAME_CHILD(name.get(), 0);
    for (const std::int32_t type : {0, 0x100, 0x80}) {  // 0x80 would have to hold an element
        child->data->type = type;
        EXPECT_EQ(status_with_caller_node(), 0x461B0103U) << type;
    }
    child->data->type = 12;
    set_ASN1_STRING_value(child->type, 6, "cn", 2);
    EXPECT_EQ(status_with_caller_node(), 0x461B0103U);
    free_ASN1_STRING(std::exchange(child->data, nullptr));
    EXPECT_EQ(status_with_caller_node(), 0x461B0103U);
    EXPECT_EQ(dump_X509_NAME(name.get()), nullptr);
    push_STACK_value(name.get(), nullptr);
    EXPECT_EQ(status_with_caller_node(), 0x461B002BU);
}

std::string compare(const Row &row) {
    return std::to_string(cmp_X509_NAME(name_of(row[1]).get(), name_of(row[2]).get()));
}

std::string compare_made(const Row &row) {
    OwnedName names[2];
    for (std::size_t i = 0; i < 2; ++i) {
        names[i].reset(new_X509_NAME());
        EXPECT_EQ(add_X509_NAME_child_OID(names[i].get(), oid_of(row[3 * i + 1].c_str()).get(),
                                          static_cast<std::int32_t>(row.number(3 * i + 2)),
                                          row[3 * i + 3].c_str(), -1, -1),
                  0U);
    }
    return std::to_string(cmp_X509_NAME(names[0].get(), names[1].get()));
}

std::string next(const Row &row) {
    const OwnedName name = name_of(
        "30{31{30{06:55040B 0C:41}} 31{30{06:550403 0C:42}} 31{30{06:55040B 0C:43}} 31{30{06:55040B "
        "0C:44}}}");
    return std::to_string(get_X509_NAME_index_by_OID(name.get(), oid_of("2.5.4.11").get(),
                                                     static_cast<std::int32_t>(row.number(1))));
}

std::string text(const Row &row) {
    const tlx::OwnedOctets<char> text(dump_X509_NAME(name_of(row[1]).get()));
    return text.get();
}

TEST(Name, Rows) {
    expect_rows(
        "x509_name.txt",
        {{"compare", {compare}}, {"compare made", {compare_made}}, {"next", {next}}, {"text", {text}}});
}

TEST(Name, ComparisonAndLookupWithoutNames) {
    const LeakCheck leaks;
    const OwnedName one = name_of("30{31{30{06:550403 13:4142}}}");
    const OwnedName none = name_of("30{}");
    EXPECT_EQ(cmp_X509_NAME(nullptr, one.get()), 1);
    EXPECT_EQ(cmp_X509_NAME(one.get(), nullptr), 1);
    // A name that cannot be encoded is told only when the counts are the same.
    const OwnedName broken(new_X509_NAME());
    push_STACK_value(broken.get(), nullptr);
    EXPECT_EQ(cmp_X509_NAME(one.get(), broken.get()), 1);
    EXPECT_EQ(cmp_X509_NAME(none.get(), broken.get()), -1);
    EXPECT_EQ(get_X509_NAME_index_by_OID(one.get(), oid_of("2.5.4.33").get(), -1), -1);
    EXPECT_EQ(get_X509_NAME_index_by_OID(one.get(), nullptr, -1), -1);
    EXPECT_EQ(get_X509_NAME_index_by_OID(nullptr, oid_of("2.5.4.3").get(), -1), -1);
    EXPECT_EQ(dump_X509_NAME(nullptr), nullptr);
    EXPECT_EQ(dump_X509_NAME_CHILD(nullptr), nullptr);
    const X509_NAME_CHILD no_members = {};
    EXPECT_EQ(dump_X509_NAME_CHILD(&no_members), nullptr);
    const tlx::OwnedOctets<char> entry(dump_X509_NAME_CHILD(get_X509_NAME_CHILD(one.get(), 0)));
    EXPECT_STREQ(entry.get(), "CN=AB");
}

TEST(Name, MadeFromTypesAndTexts) {
    const LeakCheck leaks;
    const OwnedName name = name_of("30{31{30{06:550403 0C:62}}}");
    const String oid = oid_of("2.5.4.3");
    EXPECT_EQ(add_X509_NAME_child_OID(name.get(), oid.get(), TLX_TAG_PRINTABLE_STRING, "axx", 1, 0), 0U);
    EXPECT_EQ(add_X509_NAME_child_OID(name.get(), oid.get(), TLX_TAG_IA5_STRING, "d", -1, -7), 0U);
    EXPECT_EQ(add_X509_NAME_child_OID_index(name.get(), tlx::oid::kOrganizationName, 12, "c\0c", 3, 2), 0U);
    EXPECT_EQ(encoded(X509_NAME_to_Seq, name.get()),
              hex_of_text("30{31{30{06:550403 13:61}} 31{30{06:550403 0C:62}} 31{30{06:55040A 0C:630063}} "
                          "31{30{06:550403 16:64}}}"));
    EXPECT_EQ(Statuses({add_X509_NAME_child_OID(name.get(), nullptr, 12, "a", 1, 0),
                        add_X509_NAME_child_OID(name.get(), oid.get(), 12, nullptr, 0, 0),
                        add_X509_NAME_child_OID_index(name.get(), 33, 12, "a", 1, 0)}),
              Statuses{1})
        << "33 is a row without an identifier";
    const X509_NAME_CHILD *entry = get_X509_NAME_CHILD(name.get(), 2);
    EXPECT_EQ(octets(get_X509_NAME_CHILD_OID(entry)), "2.5.4.10");
    EXPECT_EQ(octets(get_X509_NAME_CHILD_data(entry)), std::string("c\0c", 3));
    sweep_failing_allocations([&] {
        const OwnedName made(new_X509_NAME());
        return made != nullptr && add_X509_NAME_child_OID(made.get(), oid.get(), 12, "a", 1, 0) == 0;
    });
}

TEST(Name, Hash) {
    const char *text = "30{31{30{06:550406 13:4B52}} 31{30{06:550403 0C:ED998D}}}";
    const OwnedName name = name_of(text);
    Octets digest(TLX_DIGEST_MAX_LENGTH);
    EXPECT_EQ(get_X509_NAME_hash(name.get(), 0x05000900, digest.data()), 0xFFFFFFFFU);
    EXPECT_EQ(get_X509_NAME_hash(name.get(), TLX_DIGEST_SHA1, nullptr), 0xFFFFFFFFU);
    EXPECT_EQ(get_X509_NAME_hash(nullptr, TLX_DIGEST_SHA1, digest.data()), 0xFFFFFFFFU);
    EXPECT_EQ(get_X509_NAME_hash(name_of("30{}").get(), TLX_DIGEST_SHA1, digest.data()), 0xFFFFFFFFU);
    ASSERT_EQ(get_X509_NAME_hash(name.get(), TLX_DIGEST_SHA1, digest.data()), 20U);
    digest.resize(20);
    EXPECT_EQ(digest, openssl::digest("SHA1", der(text)));
}

TEST(Name, EveryAllocationMayFail) {
    const char *text =
        "30{31{30{06:550406 13:4B52}} 31{30{06:55040A 0C:41}} 31{30{06:55040B 0C:42}} 31{30{06:55040B 0C:43}}"
        " 31{30{06:550403 1E:D64D}}}";
    const OwnedName name = name_of(text);
    const OwnedName same = name_of(text);
    sweep_failing_allocations([&] {
        const std::int32_t result = cmp_X509_NAME(name.get(), same.get());
        EXPECT_TRUE(result == 0 || result == 1);
        return result == 0;
    });
    const OwnedName korean = name_of("30{31{30{06:550403 13:C7D1B1B9}} 31{30{06:55042D 03:0560}}}");
    for (const X509_NAME *each : {name.get(), korean.get()})
        expect_making_may_fail([&] { return dump_X509_NAME(each); }, tlx_free);
}

}  // namespace
}  // namespace tlx_test
