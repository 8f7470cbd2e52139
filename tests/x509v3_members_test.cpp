// What the members of extension records hold, lists, and the functions that make records.
#include <gtest/gtest.h>
#include <tlxpki.h>

#include <functional>

#include "support/x509_records.hpp"
#include "x509/certificate_records.hpp"
#include "x509/extension_records.hpp"

namespace tlx_test {
namespace {

using tlx::Owned;
using Names = Held<GENERAL_NAMES, free_GENERAL_NAMES>;

std::string number(const BIGINT *value) {
    if (value == nullptr) return "null";
    char *text = BIGINT_to_decimal(value);
    std::string copy(text);
    tlx_free(text);
    return copy;
}

TEST(BasicConstraints, Members) {
    const struct {
        const char *text;
        int cA;
        const char *length;
    } cases[] = {
        {"30{01:FF 04:03}", 0xFF, "null"},
        {"30{01:2A 02:03}", 0x2A, "3"},
        {"30{01:FF 02:03 02:04}", 0xFF, "3"},
        {"30{01:FF 80:03}", 0xFF, "3"},
        {"30{01:00 02:010000000000000000}", 0, "18446744073709551616"},
    };
    for (const auto &c : cases) {
        const Owned<BASIC_CONSTRAINTS> record(decoded(Seq_to_BASIC_CONSTRAINTS, c.text));
        EXPECT_EQ(record->cA, c.cA) << c.text;
        EXPECT_EQ(number(record->pathLenConstraint), c.length) << c.text;
    }
}

TEST(PolicyConstraints, NumbersUnderEitherTagging) {
    const struct {
        const char *text, *require, *inhibit;
    } cases[] = {
        {"30{80:02}", "2", "null"},
        {"30{80:FF 81:00}", "255", "0"},
        {"30{A0{02:05} A1{02:0100}}", "5", "256"},
        {"30{80:020107}", "7", "null"},   // an INTEGER inside, whatever the constructed bit says
        {"30{80:0100}", "null", "null"},  // two octets: an element without contents
        {"30{80:012C}", "null", "null"},
        {"30{80: 81:}", "null", "null"},
        {"30{A0{0C:41} A1{02:}}", "null", "null"},
        {"30{82:01 04:02 80:03}", "3", "null"},
        {"30{00:04 01:05}", "4", "5"},   // the tag number alone counts
        {"30:8001028205", "2", "null"},  // a broken child ends the walk
    };
    for (const auto &c : cases) {
        const Owned<POLICY_CONSTRAINTS> record(decoded(Seq_to_POLICY_CONSTRAINTS, c.text));
        EXPECT_EQ(number(record->requireExplicitPolicy), c.require) << c.text;
        EXPECT_EQ(number(record->inhibitPolicyMapping), c.inhibit) << c.text;
    }
}

TEST(GeneralName, ValueOfEachChoice) {
    const struct {
        const char *text;
        std::uint32_t choice;
        const char *value;
    } strings[] = {
        {"81:6140", 1, "type 22 extra 0: 61 40"},
        {"82:61", 2, "type 22 extra 0: 61"},
        {"A3{30{05:}}", 3, "type 48 extra 0: 05 00"},
        {"A3{30{} 31{}}", 3, "type 163 extra 0: 30 00 31 00"},
        {"86:61", 6, "type 22 extra 0: 61"},
        {"87:7F000001", 7, "type 4 extra 0: 7F 00 00 01"},
        {"88:2A03", 8, "type 6 extra 0: 31 2E 32 2E 33"},
    };
    for (const auto &c : strings) {
        const Owned<GENERAL_NAME> name(decoded(Seq_to_GENERAL_NAME, c.text));
        EXPECT_EQ(name->choice, c.choice) << c.text;
        EXPECT_EQ(text_of(static_cast<ASN1_STRING *>(name->value.any)), c.value) << c.text;
    }
    const Owned<GENERAL_NAME> other(decoded(Seq_to_GENERAL_NAME, "A0{06:2A03 A0{0C:C3A9}}"));
    EXPECT_EQ(text_of(other->value.otherName->type_id), "type 6 extra 0: 31 2E 32 2E 33");
    EXPECT_EQ(text_of(other->value.otherName->value), "type 12 extra 0: C3 A9");
    const Owned<GENERAL_NAME> edi(decoded(Seq_to_GENERAL_NAME, "A5{30{A0{13:41} A1{1E:AC00}}}"));
    EXPECT_EQ(text_of(edi->value.ediPartyName->nameAssigner), "type 19 extra 0: 41");
    EXPECT_EQ(text_of(edi->value.ediPartyName->partyName), "type 30 extra 0: AC 00");
}

TEST(GeneralName, Made) {
    const LeakCheck leaks;
    const Names names(new_GENERAL_NAMES());
    const tlx::OwnedName subject(decoded(Seq_to_X509_NAME, "30{31{30{06:550403 0C:41}}}"));
    const Owned<GENERAL_NAME> made[] = {
        Owned<GENERAL_NAME>(create_GENERAL_NAME(TLX_GENERAL_NAME_DNS_NAME, "a.b", -1)),
        Owned<GENERAL_NAME>(create_GENERAL_NAME(TLX_GENERAL_NAME_IP_ADDRESS, "\x7F\0\0\1", 4)),
        Owned<GENERAL_NAME>(create_GENERAL_NAME(TLX_GENERAL_NAME_REGISTERED_ID, "1.2.3", 5)),
        Owned<GENERAL_NAME>(create_GENERAL_NAME_directoryName(subject.get())),
        Owned<GENERAL_NAME>(
            create_GENERAL_NAME_otherName(oid_of("1.2.3").get(), string_of(0x30, "\x05").get())),
    };
    for (const auto &name : made)
        ASSERT_EQ(add_GENERAL_NAMES_child(names.get(), name.get(), -1), 0U);
    EXPECT_EQ(encoded(GENERAL_NAMES_to_Seq, names.get()),
              hex_of_text("30{82:612E62 87:7F000001 88:2A03 A4{30{31{30{06:550403 0C:41}}}} "
                          "A0{06:2A03 A0{30:05}}}"));
    EXPECT_EQ(create_GENERAL_NAME(TLX_GENERAL_NAME_DIRECTORY_NAME, "a", 1), nullptr);
    EXPECT_EQ(create_GENERAL_NAME(TLX_GENERAL_NAME_URI, nullptr, 0), nullptr);
    EXPECT_EQ(create_GENERAL_NAME_directoryName(nullptr), nullptr);
    EXPECT_EQ(create_GENERAL_NAME_otherName(nullptr, oid_of("1.2.3").get()), nullptr);

    EXPECT_EQ(get_GENERAL_NAMES_index_by_choice(names.get(), TLX_GENERAL_NAME_IP_ADDRESS, -1), 1);
    EXPECT_EQ(get_GENERAL_NAMES_index_by_choice(names.get(), TLX_GENERAL_NAME_IP_ADDRESS, 1), -1);
    EXPECT_EQ(get_GENERAL_NAMES_index_by_choice(names.get(), TLX_GENERAL_NAME_DNS_NAME, -7), 0);
    EXPECT_EQ(get_GENERAL_NAMES_index_by_choice(nullptr, TLX_GENERAL_NAME_DNS_NAME, -1), -1);

    // A choice that does not belong to the value is refused before the value is looked at.
    made[0]->choice = 9;
    EXPECT_EQ(encoded(GENERAL_NAME_to_Seq, made[0].get()), "status 470C0103");
    made[0]->choice = TLX_GENERAL_NAME_DNS_NAME;
}

TEST(ExtensionLists, ItemsAreCopiedInAndHandedOut) {
    const LeakCheck leaks;
    const Held<EXTENDED_KEY_USAGE, free_EXTENDED_KEY_USAGE> list(new_EXTENDED_KEY_USAGE());
    const String one = oid_of("1.2.1");
    const String two = oid_of("1.2.2");
    const String three = oid_of("1.2.3");
    EXPECT_EQ(add_EXTENDED_KEY_USAGE_child(list.get(), three.get(), 0), 0U);
    EXPECT_EQ(add_EXTENDED_KEY_USAGE_child(list.get(), one.get(), 0), 0U);
    EXPECT_EQ(add_EXTENDED_KEY_USAGE_child(list.get(), two.get(), 1), 0U);
    EXPECT_EQ(add_EXTENDED_KEY_USAGE_child(list.get(), one.get(), 99), 0U);
    EXPECT_EQ(add_EXTENDED_KEY_USAGE_child(nullptr, one.get(), 0), 1U);
    EXPECT_EQ(add_EXTENDED_KEY_USAGE_child(list.get(), nullptr, 0), 1U);
    EXPECT_EQ(encoded(EXTENDED_KEY_USAGE_to_Seq, list.get()),
              hex_of_text("30{06:2A01 06:2A02 06:2A03 06:2A01}"));
    EXPECT_NE(get_EXTENDED_KEY_USAGE_child(list.get(), 0), one.get()) << "a copy";
    EXPECT_EQ(get_EXTENDED_KEY_USAGE_child(list.get(), 4), nullptr);
    EXPECT_EQ(get_EXTENDED_KEY_USAGE_child(list.get(), -1), nullptr);
    EXPECT_EQ(get_EXTENDED_KEY_USAGE_count(nullptr), 0U);
    EXPECT_EQ(get_OBJECT_IDENTIFIERS_index(list.get(), three.get()), 2);
    EXPECT_EQ(get_OBJECT_IDENTIFIERS_index(list.get(), oid_of("1.2.30").get()), -1);
    EXPECT_EQ(get_OBJECT_IDENTIFIERS_index(list.get(), nullptr), -1);

    const String taken(remove_EXTENDED_KEY_USAGE_child(list.get(), 1));
    EXPECT_EQ(cmp_OBJECT_IDENTIFIER(taken.get(), two.get()), 0);
    EXPECT_EQ(remove_EXTENDED_KEY_USAGE_child(list.get(), 3), nullptr);
    EXTENDED_KEY_USAGE *own = list.get();
    EXPECT_EQ(Seq_to_EXTENDED_KEY_USAGE(der_node("30{06:2A03 05:}").get(), &own), 0x47110104U);
    EXPECT_EQ(get_EXTENDED_KEY_USAGE_count(list.get()), 3U) << "a failure leaves the list as it was";
}

TEST(NamedBits, ReadAndMade) {
    const std::pair<const char *, std::uint32_t> cases[] = {
        {"03:00", 0},
        {"03:0780", TLX_KEY_USAGE_DIGITAL_SIGNATURE},
        {"03:0106", TLX_KEY_USAGE_KEY_CERT_SIGN | TLX_KEY_USAGE_CRL_SIGN},
        {"03:070080", TLX_KEY_USAGE_DECIPHER_ONLY},
        {"03:0000000001", 1U << 31},
    };
    for (const auto &[text, value] : cases) {
        const String bits(decoded(Seq_to_KEY_USAGE, text));
        EXPECT_EQ(get_BIT_STRING_named_bits(bits.get()), value) << text;
        const String made(named_bits_to_BIT_STRING(value));
        EXPECT_EQ(encoded(KEY_USAGE_to_Seq, made.get()), hex_of_text(text));
    }
    // Bits that the unused-bits octet takes back, bits past the 32nd, no bits at all.
    EXPECT_EQ(get_BIT_STRING_named_bits(string_of(3, hex("FF"), 7).get()), 1U);
    EXPECT_EQ(get_BIT_STRING_named_bits(string_of(3, hex("00000000FF")).get()), 0U);
    EXPECT_EQ(get_BIT_STRING_named_bits(nullptr), 0U);
}

TEST(CertificatePolicies, Qualifiers) {
    const char *const cps = "30{06:2B06010505070201 16:6162}";
    const char *const user_notice = "30{06:2B06010505070202 30{30{0C:43 30{02:01 02:02}} 1E:AC00}}";
    const LeakCheck leaks;
    const Held<CERTIFICATE_POLICIES, free_CERTIFICATE_POLICIES> policies(
        decoded(Seq_to_CERTIFICATE_POLICIES,
                std::string("30{30{06:2A831A8C9A45010104 30{") + cps + user_notice + "30{06:2A03 02:05}}}}"));
    const POLICY_INFO *policy = get_CERTIFICATE_POLICIES_child(policies.get(), 0);
    EXPECT_EQ(cmp_OBJECT_IDENTIFIER(policy->policyIdentifier, oid_of("1.2.410.200005.1.1.4").get()), 0);
    const POLICY_QUALIFIER_INFO *first = get_POLICY_QUALIFIER_INFOS_child(policy->policyQualifiers, 0);
    EXPECT_EQ(text_of(first->cPSuri), "type 22 extra 0: 61 62");
    EXPECT_EQ(first->userNotice, nullptr);
    EXPECT_EQ(first->other, nullptr);
    const USER_NOTICE *notice = get_POLICY_QUALIFIER_INFOS_child(policy->policyQualifiers, 1)->userNotice;
    EXPECT_EQ(text_of(notice->explicitText), "type 30 extra 0: AC 00");
    EXPECT_EQ(text_of(notice->noticeRef->organization), "type 12 extra 0: 43");
    EXPECT_EQ(number(get_NOTICE_NUMBERS_child(notice->noticeRef->noticeNumbers, 1)), "2");
    EXPECT_EQ(hex_of(get_POLICY_QUALIFIER_INFOS_child(policy->policyQualifiers, 2)->other), "02 01 05");

    const Owned<POLICY_QUALIFIER_INFO> made(create_POLICY_QUALIFIER_INFO_cPSuri("ab"));
    EXPECT_EQ(encoded(POLICY_QUALIFIER_INFO_to_Seq, made.get()), hex_of_text(cps));
    const Owned<POLICY_QUALIFIER_INFO> noted(create_POLICY_QUALIFIER_INFO_userNotice(notice));
    EXPECT_EQ(encoded(POLICY_QUALIFIER_INFO_to_Seq, noted.get()), hex_of_text(user_notice));
    EXPECT_EQ(create_POLICY_QUALIFIER_INFO_cPSuri(nullptr), nullptr);
    EXPECT_EQ(create_POLICY_QUALIFIER_INFO_userNotice(nullptr), nullptr);
}

TEST(DistributionPoints, Members) {
    const LeakCheck leaks;
    const Owned<issuing_DIST_POINT> point(
        decoded(Seq_to_issuing_DIST_POINT,
                "30{A0{A1{30{06:550403 0C:41} 30{06:55040B 0C:42}}} 81:FF 83:0560 84:01}"));
    ASSERT_EQ(point->distributionPoint->choice, static_cast<std::uint32_t>(TLX_DIST_POINT_RELATIVE_NAME));
    EXPECT_EQ(get_X509_NAME_count(point->distributionPoint->value.nameRelativeToCRLIssuer), 2U);
    EXPECT_EQ(point->onlyContainsUserCerts, 0xFF);
    EXPECT_EQ(point->onlyContainsCACerts, 0);
    EXPECT_EQ(point->indirectCRL, 0x01);
    EXPECT_EQ(point->onlyContainsAttributeCerts, 0);
    EXPECT_EQ(get_BIT_STRING_named_bits(point->onlySomeReasons),
              static_cast<std::uint32_t>(TLX_REASON_KEY_COMPROMISE | TLX_REASON_CA_COMPROMISE));

    const Owned<DIST_POINT> made(create_DIST_POINT_uri("ldap:a"));
    EXPECT_EQ(encoded(DIST_POINT_to_Seq, made.get()), hex_of_text("30{A0{A0{86:6C6461703A61}}}"));
    EXPECT_EQ(create_DIST_POINT_uri(nullptr), nullptr);
}

TEST(KisaIdentity, ThereAndBackThroughASubjectAltName) {
    const LeakCheck leaks;
    const String sha256 = oid_of("2.16.840.1.101.3.4.2.1");
    const std::uint8_t virtual_id[] = {1, 2, 3};
    const Owned<KISA_IDENTIFY_DATA> made(
        create_KISA_IDENTIFY_DATA("\xEA\xB9\x80", sha256.get(), virtual_id, 3));
    EXPECT_EQ(text_of(made->realName), "type 12 extra 0: EA B9 80");
    EXPECT_EQ(text_of(made->vid->virtualID), "type 4 extra 0: 01 02 03");
    EXPECT_EQ(made->vid->hashAlgParameters, nullptr);
    const Owned<GENERAL_NAME> name(create_GENERAL_NAME_KISA_IDENTIFY_DATA(made.get()));
    const std::string value =
        "A0{30{0C:EAB980 30{30{06:2A831A8C9A440A010101 30{30{06:608648016503040201} A0{04:010203}}}}}}";
    EXPECT_EQ(encoded(GENERAL_NAME_to_Seq, name.get()),
              hex_of_text("A0{06:2A831A8C9A440A0101 " + value + "}"));

    // Under either type, behind names of other kinds; never under another type.
    const std::pair<std::string, std::uint32_t> cases[] = {
        {"30{82:61 A0{06:2A03 A0{0C:41}} A0{06:2A831A8C9A440A0101 " + value + "}}", 0},
        {"30{A0{06:2A831A8C9A440601 " + value + "}}", 0},
        {"30{A0{06:2A831A8C9A440A0102 " + value + "}}", 0x473D0047},
        {"30{A0{06:2A831A8C9A440A0101 A0{0C:41}}}", 0x47030104},
        {"30{A0{06:2A831A8C9A440A0101 A0{30{}}}}", 0x4703002B},
    };
    KISA_IDENTIFY_DATA *out = nullptr;
    for (const auto &[text, status] : cases) {
        const Names names(decoded(Seq_to_GENERAL_NAMES, text));
        EXPECT_EQ(get_KISA_IDENTIFY_DATA_from_GENERAL_NAMES(names.get(), &out), status) << text;
        const Owned<KISA_IDENTIFY_DATA> data(std::exchange(out, nullptr));
        EXPECT_EQ(encoded(KISA_IDENTIFY_DATA_to_Seq, data.get()),
                  status == 0 ? encoded(KISA_IDENTIFY_DATA_to_Seq, made.get()) : "status 47040049");
    }
    EXPECT_EQ(get_KISA_IDENTIFY_DATA_from_GENERAL_NAMES(nullptr, &out), 0x473D0049U);
    const Names empty(new_GENERAL_NAMES());
    EXPECT_EQ(get_KISA_IDENTIFY_DATA_from_GENERAL_NAMES(empty.get(), nullptr), 0x473D0049U);
    EXPECT_EQ(create_KISA_IDENTIFY_DATA("A", sha256.get(), virtual_id, 0), nullptr);
    EXPECT_EQ(create_GENERAL_NAME_KISA_IDENTIFY_DATA(nullptr), nullptr);

    free_VID(std::exchange(made->vid, nullptr));
    EXPECT_EQ(encoded(KISA_IDENTIFY_DATA_to_Seq, made.get()), "status 47040103") << "a type alone";
}

TEST(ExtensionMakers, EveryAllocationMayFail) {
    const String oid = oid_of("1.2.3");
    const std::uint8_t octets[] = {1};
    const tlx::OwnedName subject(decoded(Seq_to_X509_NAME, "30{31{30{06:2A03 0C:41}}}"));
    const Owned<USER_NOTICE> notice(decoded(Seq_to_USER_NOTICE, "30{30{0C:41 30{02:01}} 0C:41}"));
    const Owned<KISA_IDENTIFY_DATA> identity(create_KISA_IDENTIFY_DATA("A", oid.get(), octets, 1));
    const std::function<GENERAL_NAME *()> names[] = {
        [] { return create_GENERAL_NAME(TLX_GENERAL_NAME_URI, "a", 1); },
        [&] { return create_GENERAL_NAME_directoryName(subject.get()); },
        [&] { return create_GENERAL_NAME_otherName(oid.get(), oid.get()); },
        [&] { return create_GENERAL_NAME_KISA_IDENTIFY_DATA(identity.get()); },
    };
    for (const auto &make : names)
        expect_making_may_fail(make, free_GENERAL_NAME);
    expect_making_may_fail([&] { return create_KISA_IDENTIFY_DATA("A", oid.get(), octets, 1); },
                           free_KISA_IDENTIFY_DATA);
    expect_making_may_fail([] { return create_POLICY_QUALIFIER_INFO_cPSuri("a"); },
                           free_POLICY_QUALIFIER_INFO);
    expect_making_may_fail([&] { return create_POLICY_QUALIFIER_INFO_userNotice(notice.get()); },
                           free_POLICY_QUALIFIER_INFO);
    expect_making_may_fail([] { return create_DIST_POINT_uri("a"); }, free_DIST_POINT);
    expect_making_may_fail([] { return named_bits_to_BIT_STRING(5); }, free_KEY_USAGE);
}

}  // namespace
}  // namespace tlx_test
