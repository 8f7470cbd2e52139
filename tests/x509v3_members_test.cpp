// What the members of extension records hold, lists, and the functions that make records.
#include <gtest/gtest.h>
#include <tlxpki.h>

#include <functional>

#include "support/x509_records.hpp"

namespace tlx_test {
namespace {

using Names = Held<free_GENERAL_NAMES>;

/// The choice of a general name, and its value as far as that is text.
std::string choice(const Row &row) {
    const Held<free_GENERAL_NAME> name(decoded(Seq_to_GENERAL_NAME, row[1]));
    const std::string text = std::to_string(name->choice) + ", ";
    if (name->choice == TLX_GENERAL_NAME_OTHER_NAME)
        return text + text_of(name->value.otherName->type_id) + ", " + text_of(name->value.otherName->value);
    if (name->choice == TLX_GENERAL_NAME_EDI_PARTY_NAME)
        return text + text_of(name->value.ediPartyName->nameAssigner) + ", " +
               text_of(name->value.ediPartyName->partyName);
    return text + text_of(static_cast<ASN1_STRING *>(name->value.any));
}

/// The named bits of a key usage, which come back from them.
std::string bits(const Row &row) {
    const String bits(decoded(Seq_to_KEY_USAGE, row[1]));
    const std::uint32_t value = get_BIT_STRING_named_bits(bits.get());
    const String made(named_bits_to_BIT_STRING(value));
    EXPECT_EQ(encoded(KEY_USAGE_to_Seq, made.get()), hex_of_text(row[1]));
    return status_text(value);
}

/// The identity in a list of names, or the status.
std::string identity(const Row &row) {
    const Names names(decoded(Seq_to_GENERAL_NAMES, row[1]));
    KISA_IDENTIFY_DATA *out = nullptr;
    const std::uint32_t status = get_KISA_IDENTIFY_DATA_from_GENERAL_NAMES(names.get(), &out);
    const Held<free_KISA_IDENTIFY_DATA> data(out);
    EXPECT_EQ(data != nullptr, status == 0);
    return status == 0 ? encoded(KISA_IDENTIFY_DATA_to_Seq, data.get()) : status_text(status);
}

TEST(ExtensionMembers, Rows) {
    expect_rows("x509v3_members.txt", {{"choice", {choice}}, {"bits", {bits}}, {"identity", {identity}}});
}

TEST(BasicConstraints, KeepTheOctetOfTheBoolean) {
    const Held<free_BASIC_CONSTRAINTS> record(decoded(Seq_to_BASIC_CONSTRAINTS, "30{01:2A 02:03}"));
    EXPECT_EQ(record->cA, 0x2A);
    EXPECT_EQ(get_BIGINT_word(record->pathLenConstraint), 3U);
}

TEST(GeneralName, Made) {
    const LeakCheck leaks;
    const Names names(new_GENERAL_NAMES());
    const Held<free_X509_NAME> subject(decoded(Seq_to_X509_NAME, "30{31{30{06:550403 0C:41}}}"));
    const Held<free_GENERAL_NAME> made[] = {
        Held<free_GENERAL_NAME>(create_GENERAL_NAME(TLX_GENERAL_NAME_DNS_NAME, "a.b", -1)),
        Held<free_GENERAL_NAME>(create_GENERAL_NAME(TLX_GENERAL_NAME_IP_ADDRESS, "\x7F\0\0\1", 4)),
        Held<free_GENERAL_NAME>(create_GENERAL_NAME(TLX_GENERAL_NAME_REGISTERED_ID, "1.2.3", 5)),
        Held<free_GENERAL_NAME>(create_GENERAL_NAME_directoryName(subject.get())),
        Held<free_GENERAL_NAME>(
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
    EXPECT_EQ(encoded(GENERAL_NAME_to_Seq, made[0].get()), "470C0103");
    made[0]->choice = TLX_GENERAL_NAME_DNS_NAME;
}

TEST(ObjectIdentifiers, AreFound) {
    const LeakCheck leaks;
    const Held<free_OBJECT_IDENTIFIERS> list(
        decoded(Seq_to_OBJECT_IDENTIFIERS, "30{06:2A01 06:2A03 06:2A03}"));
    EXPECT_EQ(get_OBJECT_IDENTIFIERS_index(list.get(), oid_of("1.2.3").get()), 1);
    EXPECT_EQ(get_OBJECT_IDENTIFIERS_index(list.get(), oid_of("1.2.30").get()), -1);
    EXPECT_EQ(get_OBJECT_IDENTIFIERS_index(list.get(), nullptr), -1);
    EXPECT_EQ(get_OBJECT_IDENTIFIERS_index(nullptr, oid_of("1.2.3").get()), -1);
}

TEST(NamedBits, BeyondWhatAnEncodingHolds) {
    // Bits that the unused-bits octet takes back, bits past the 32nd, no bits at all.
    EXPECT_EQ(get_BIT_STRING_named_bits(string_of(3, hex("FF"), 7).get()), 1U);
    EXPECT_EQ(get_BIT_STRING_named_bits(string_of(3, hex("00000000FF")).get()), 0U);
    EXPECT_EQ(get_BIT_STRING_named_bits(nullptr), 0U);
}

TEST(CertificatePolicies, Qualifiers) {
    const char *const cps = "30{06:2B06010505070201 16:6162}";
    const char *const user_notice = "30{06:2B06010505070202 30{30{0C:43 30{02:01 02:02}} 1E:AC00}}";
    const LeakCheck leaks;
    const Held<free_CERTIFICATE_POLICIES> policies(
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
    EXPECT_EQ(get_BIGINT_word(get_NOTICE_NUMBERS_child(notice->noticeRef->noticeNumbers, 1)), 2U);
    EXPECT_EQ(hex_of(get_POLICY_QUALIFIER_INFOS_child(policy->policyQualifiers, 2)->other), "02 01 05");

    const Held<free_POLICY_QUALIFIER_INFO> made(create_POLICY_QUALIFIER_INFO_cPSuri("ab"));
    EXPECT_EQ(encoded(POLICY_QUALIFIER_INFO_to_Seq, made.get()), hex_of_text(cps));
    const Held<free_POLICY_QUALIFIER_INFO> noted(create_POLICY_QUALIFIER_INFO_userNotice(notice));
    EXPECT_EQ(encoded(POLICY_QUALIFIER_INFO_to_Seq, noted.get()), hex_of_text(user_notice));
    EXPECT_EQ(create_POLICY_QUALIFIER_INFO_cPSuri(nullptr), nullptr);
    EXPECT_EQ(create_POLICY_QUALIFIER_INFO_userNotice(nullptr), nullptr);
}

TEST(DistributionPoints, Members) {
    const LeakCheck leaks;
    const Held<free_issuing_DIST_POINT> point(
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

    const Held<free_DIST_POINT> made(create_DIST_POINT_uri("ldap:a"));
    EXPECT_EQ(encoded(DIST_POINT_to_Seq, made.get()), hex_of_text("30{A0{A0{86:6C6461703A61}}}"));
    EXPECT_EQ(create_DIST_POINT_uri(nullptr), nullptr);
}

TEST(KisaIdentity, ThereAndBackThroughASubjectAltName) {
    const LeakCheck leaks;
    const String sha256 = oid_of("2.16.840.1.101.3.4.2.1");
    const std::uint8_t virtual_id[] = {1, 2, 3};
    const Held<free_KISA_IDENTIFY_DATA> made(
        create_KISA_IDENTIFY_DATA("\xEA\xB9\x80", sha256.get(), virtual_id, 3));
    EXPECT_EQ(text_of(made->realName), "type 12 extra 0: EA B9 80");
    EXPECT_EQ(text_of(made->vid->virtualID), "type 4 extra 0: 01 02 03");
    EXPECT_EQ(made->vid->hashAlgParameters, nullptr);
    const Held<free_GENERAL_NAME> name(create_GENERAL_NAME_KISA_IDENTIFY_DATA(made.get()));
    EXPECT_EQ(encoded(GENERAL_NAME_to_Seq, name.get()),
              hex_of_text("A0{06:2A831A8C9A440A0101 A0{30{0C:EAB980 30{30{06:2A831A8C9A440A010101 "
                          "30{30{06:608648016503040201} A0{04:010203}}}}}}}"));
    KISA_IDENTIFY_DATA *out = nullptr;
    EXPECT_EQ(get_KISA_IDENTIFY_DATA_from_GENERAL_NAMES(nullptr, &out), 0x473D0049U);
    const Names empty(new_GENERAL_NAMES());
    EXPECT_EQ(get_KISA_IDENTIFY_DATA_from_GENERAL_NAMES(empty.get(), nullptr), 0x473D0049U);
    EXPECT_EQ(create_KISA_IDENTIFY_DATA("A", sha256.get(), virtual_id, 0), nullptr);
    EXPECT_EQ(create_GENERAL_NAME_KISA_IDENTIFY_DATA(nullptr), nullptr);

    free_VID(std::exchange(made->vid, nullptr));
    EXPECT_EQ(encoded(KISA_IDENTIFY_DATA_to_Seq, made.get()), "47040103") << "a type alone";
}

TEST(ExtensionMakers, EveryAllocationMayFail) {
    const String oid = oid_of("1.2.3");
    const std::uint8_t octets[] = {1};
    const Held<free_X509_NAME> subject(decoded(Seq_to_X509_NAME, "30{31{30{06:2A03 0C:41}}}"));
    const Held<free_USER_NOTICE> notice(decoded(Seq_to_USER_NOTICE, "30{30{0C:41 30{02:01}} 0C:41}"));
    const Held<free_KISA_IDENTIFY_DATA> identity(create_KISA_IDENTIFY_DATA("A", oid.get(), octets, 1));
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
