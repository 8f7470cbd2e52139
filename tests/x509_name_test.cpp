#include <gtest/gtest.h>
#include <tlxpki.h>

#include "asn1/oid_lookup.hpp"
#include "support/openssl_peer.hpp"
#include "support/strings.hpp"
#include "support/x509_records.hpp"

namespace tlx_test {
namespace {

using OwnedName = Held<free_X509_NAME>;
using Child = Held<free_X509_NAME_CHILD>;

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

TEST(Name, AddingAndTakingOut) {
    const LeakCheck leaks;
    const OwnedName name(new_X509_NAME());
    const String oid = oid_of("2.5.4.3");
    const Child child(new_X509_NAME_CHILD());
    child->type = dup_OBJECT_IDENTIFIER(oid.get());
    child->data = string_of(TLX_TAG_UTF8_STRING, "b").release();
    EXPECT_EQ(add_X509_NAME_child(name.get(), child.get(), 999), 0U);
    EXPECT_EQ(add_X509_NAME_child_OID(name.get(), oid.get(), TLX_TAG_PRINTABLE_STRING, "axx", 1, 0), 0U);
    EXPECT_EQ(add_X509_NAME_child_OID(name.get(), oid.get(), TLX_TAG_IA5_STRING, "d", -1, -7), 0U);
    EXPECT_EQ(add_X509_NAME_child_OID_index(name.get(), tlx::oid::kOrganizationName, 12, "c\0c", 3, 2), 0U);
    child->data->data[0] = 'x';  // an entry is a copy
    EXPECT_EQ(encoded(X509_NAME_to_Seq, name.get()),
              hex_of_text("30{31{30{06:550403 13:61}} 31{30{06:550403 0C:62}} 31{30{06:55040A 0C:630063}} "
                          "31{30{06:550403 16:64}}}"));
    EXPECT_EQ(
        Statuses({add_X509_NAME_child(nullptr, child.get(), 0), add_X509_NAME_child(name.get(), nullptr, 0),
                  add_X509_NAME_child_OID(name.get(), nullptr, 12, "a", 1, 0),
                  add_X509_NAME_child_OID(name.get(), oid.get(), 12, nullptr, 0, 0)}),
        Statuses{1});
    EXPECT_EQ(add_X509_NAME_child_OID_index(name.get(), 33, 12, "a", 1, 0), 1U)
        << "a row without an identifier";

    EXPECT_EQ(remove_X509_NAME_child(name.get(), 4), nullptr);
    EXPECT_EQ(remove_X509_NAME_child(name.get(), -1), nullptr);
    const Child taken(remove_X509_NAME_child(name.get(), 2));
    EXPECT_EQ(octets(get_X509_NAME_CHILD_OID(taken.get())), "2.5.4.10");
    EXPECT_EQ(octets(get_X509_NAME_CHILD_data(taken.get())), std::string("c\0c", 3));
    EXPECT_EQ(get_X509_NAME_CHILD(name.get(), 3), nullptr);
}

TEST(Name, LookupByType) {
    const OwnedName name = name_of(
        "30{31{30{06:55040B 0C:41}} 31{30{06:550403 0C:42}} 31{30{06:55040B 0C:43}} 31{30{06:55040B "
        "0C:44}}}");
    const String ou = oid_of("2.5.4.11");
    const std::pair<std::int32_t, std::int32_t> hits[] = {{-5, 0}, {0, 2},  {1, 2},
                                                          {2, 3},  {3, -1}, {INT32_MAX, -1}};
    for (const auto &[last, expected] : hits)
        EXPECT_EQ(get_X509_NAME_index_by_OID(name.get(), ou.get(), last), expected) << last;
    EXPECT_EQ(get_X509_NAME_index_by_OID(name.get(), oid_of("2.5.4.111").get(), -1), -1);
    EXPECT_EQ(get_X509_NAME_index_by_OID(name.get(), nullptr, -1), -1);
    EXPECT_EQ(get_X509_NAME_index_by_OID(nullptr, ou.get(), -1), -1);
}

TEST(Name, Comparison) {
    const LeakCheck leaks;
    const OwnedName printable = name_of("30{31{30{06:550403 13:4142}}}");
    const std::pair<const char *, std::int32_t> cases[] = {
        {"30{31{30{06:550403 13:4142}}}", 0},    {"30{31{30{06:550403 0C:4142}}}", -1},
        {"30{31{30{06:550403 13:6162}}}", -1},   {"30{31{30{06:550404 13:4142}}}", -1},
        {"30{31{30{06:550403 13:414220}}}", -1}, {"30{}", -1},
    };
    for (const auto &[other, expected] : cases)
        EXPECT_EQ(cmp_X509_NAME(printable.get(), name_of(other).get()), expected) << other;
    EXPECT_EQ(cmp_X509_NAME(nullptr, printable.get()), 1);
    EXPECT_EQ(cmp_X509_NAME(printable.get(), nullptr), 1);
    EXPECT_EQ(cmp_X509_NAME(name_of("30{}").get(), name_of("30{}").get()), 0);

    // A name that cannot be encoded is told only when the counts are the same.
    const OwnedName broken(new_X509_NAME());
    push_STACK_value(broken.get(), nullptr);
    EXPECT_EQ(cmp_X509_NAME(printable.get(), broken.get()), 1);
    EXPECT_EQ(cmp_X509_NAME(name_of("30{}").get(), broken.get()), -1);
}

TEST(Name, ComparisonOfMadeUpRecords) {
    const auto name_with = [](const char *type, std::int32_t tag, const char *value) {
        OwnedName name(new_X509_NAME());
        EXPECT_EQ(add_X509_NAME_child_OID(name.get(), oid_of(type).get(), tag, value, -1, -1), 0U);
        return name;
    };
    const struct {
        const char *type, *other_type;
        std::int32_t tag, other_tag;
        const char *value, *other_value;
        std::int32_t expected;
    } cases[] = {
        {"2.5.4.3", "2.5.4.03", 12, 12, "A", "A", 0},  // the encodings are the same
        {"2.5.4.3", "2.5.4.4", 12, 12, "A", "A", -1},
        {"2.5.4.3", "2.5.4.3", 6, 6, "1.2.3", "1.2.03", 0},
        {"2.5.4.3", "2.5.4.3", 16, 48, "", "", 0},  // a SEQUENCE with and without the constructed bit
        {"2.5.4.3", "2.5.4.3", 12, 12 + 256, "A", "A", 1},
        {"2.5.4.3", "2.5.4.3", 0, 0, "A", "A", 1},
        {"2.5.4.x", "2.5.4.x", 12, 12, "A", "A", 1},
        {"2", "2", 12, 12, "A", "A", 1},
        {"2.5.", "2.5.", 12, 12, "A", "A", 0},
        {"2..5", "2..5", 12, 12, "A", "A", 1},
        {"2.5.4294967296", "2.5.4294967296", 12, 12, "A", "B", 1},
        {"2.5.4294967295", "2.5.4294967295", 12, 12, "A", "A", 0},
    };
    for (const auto &c : cases) {
        EXPECT_EQ(cmp_X509_NAME(name_with(c.type, c.tag, c.value).get(),
                                name_with(c.other_type, c.other_tag, c.other_value).get()),
                  c.expected)
            << c.type << " " << c.tag;
    }
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

TEST(Name, AsText) {
    const std::pair<const char *, const char *> cases[] = {
        {"30{}", ""},
        {"30{31{30{06:550406 13:4B52}} 31{30{06:550403 1E:D64DAE38B3D9}}}", "CN=홍길동,C=KR"},
        {"30{31{30{06:2A864886F70D010901 16:6140622E63}}}", "emailAddress=a@b.c"},
        {"30{31{30{06:550403 14:E92C20}}}", "CN=é\\,\\ "},
        {"30{31{30{06:550403 13:232B20}}}", "CN=\\#\\+\\ "},
        {"30{31{30{06:550403 13:20612320223C3E3B5C3D}}}", "CN=\\ a# \\\"\\<\\>\\;\\\\="},
        {"30{31{30{06:550403 0C:41007F0A}}}", "CN=A\\00\\7F\\0A"},
        {"30{31{30{06:2A030405 0C:41}}}", "1.2.3.4.5=A"},
        {"30{31{30{06:55042D 03:0560}}}", "x500UniqueIdentifier=#03020560"},
        {"30{31{30{06:550403 1E:41}}}", "CN=#1E0141"},      // half a unit
        {"30{31{30{06:550403 1E:D800}}}", "CN=#1E02D800"},  // a surrogate
        // Korean text, "한국", in whatever type it stands.
        {"30{31{30{06:550403 13:C7D1B1B9}}}", "CN=한국"},
        {"30{31{30{06:550403 14:C7D1B1B92C41}}}", "CN=한국\\,A"},
        {"30{31{30{06:550403 16:C7D1B1B9}}}", "CN=한국"},
        {"30{31{30{06:550403 1A:C7D1B1B9}}}", "CN=한국"},
        {"30{31{30{06:550403 0C:C7D1B1B9}}}", "CN=한국"},
        {"30{31{30{06:550403 0C:B8CDB9E6B0A28C63C7CF}}}", "CN=맹방각똠하"},  // beyond KS X 1001
        {"30{31{30{06:550403 14:ED959CEAB5AD}}}", "CN=한국"},                // UTF-8
        {"30{31{30{06:550403 14:C467797074}}}", "CN=Ägypt"},                 // not "Ä" and "g" as one
        {"30{31{30{06:550403 14:B1B9C7}}}", "CN=±¹Ç"},
        {"30{31{30{06:550403 0C:B1B9C7}}}", "CN=#0C03B1B9C7"},
        {"30{31{30{06:550403 0C:EDA080}}}", "CN=#0C03EDA080"},  // a surrogate in UTF-8
        {"30{31{30{06:550403 30{}}}}", "CN=#3000"},
    };
    const LeakCheck leaks;
    for (const auto &[name, expected] : cases) {
        char *text = dump_X509_NAME(name_of(name).get());
        EXPECT_STREQ(text, expected) << name;
        tlx_free(text);
    }
    EXPECT_EQ(dump_X509_NAME(nullptr), nullptr);
    const OwnedName two = name_of("30{31{30{06:550406 13:4B52}} 31{30{06:550403 13:412C}}}");
    char *entry = dump_X509_NAME_CHILD(get_X509_NAME_CHILD(two.get(), 1));
    EXPECT_STREQ(entry, "CN=A\\,");
    tlx_free(entry);
    EXPECT_EQ(dump_X509_NAME_CHILD(nullptr), nullptr);
    const X509_NAME_CHILD no_members = {};
    EXPECT_EQ(dump_X509_NAME_CHILD(&no_members), nullptr);
}

TEST(Name, EveryAllocationMayFail) {
    const char *text =
        "30{31{30{06:550406 13:4B52}} 31{30{06:55040A 0C:41}} 31{30{06:55040B 0C:42}} 31{30{06:55040B 0C:43}}"
        " 31{30{06:550403 1E:D64D}}}";
    const OwnedName name = name_of(text);
    const OwnedName same = name_of(text);
    const String oid = oid_of("2.5.4.3");
    sweep_failing_allocations([&] {
        const OwnedName grown(new_X509_NAME());
        bool done = grown != nullptr;
        for (std::uint32_t i = 0; i < 6 && done; ++i) {
            done = 0 == (i % 2 == 0 ? add_X509_NAME_child(grown.get(), get_X509_NAME_CHILD(name.get(), 0), 0)
                                    : add_X509_NAME_child_OID(grown.get(), oid.get(), 12, "a", 1, 0));
            EXPECT_EQ(get_X509_NAME_count(grown.get()), i + (done ? 1 : 0));
        }
        return done;
    });
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
