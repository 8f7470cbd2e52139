// What the members of extension records hold, lists, and the functions that make records.
#include <gtest/gtest.h>
#include <tlxpki.h>

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

/// The members of a policy qualifier.
std::string qualifier(const Row &row) {
    const Held<free_POLICY_QUALIFIER_INFO> info(decoded(Seq_to_POLICY_QUALIFIER_INFO, row[1]));
    const USER_NOTICE *notice = info->userNotice;
    const std::string other = info->other == nullptr ? "null" : hex_of(info->other);
    const std::string text = text_of(info->cPSuri) + ", " + other + ", ";
    if (notice == nullptr) return text + "null";
    const BIGINT *number = get_NOTICE_NUMBERS_child(notice->noticeRef->noticeNumbers, 1);
    return text + text_of(notice->explicitText) + ", " + text_of(notice->noticeRef->organization) + ", " +
           std::to_string(get_BIGINT_word(number));
}

TEST(ExtensionMembers, Rows) {
    expect_rows(
        "x509v3_members.txt",
        {{"choice", {choice}}, {"bits", {bits}}, {"identity", {identity}}, {"qualifier", {qualifier}}});
}

TEST(ExtensionMembers, OfRecordsThatAreMade) {
    const LeakCheck leaks;
    const String oid = oid_of("1.2.3");
    const String sha256 = oid_of("2.16.840.1.101.3.4.2.1");
    const String null = string_of(TLX_TAG_NULL, "");
    const std::uint8_t virtual_id[] = {1, 2, 3};
    const std::string identity_text =
        "30{0C:EAB980 30{30{06:2A831A8C9A440A010101 30{30{06:608648016503040201} A0{04:010203}}}}}";
    const Held<free_X509_NAME> subject(decoded(Seq_to_X509_NAME, "30{31{30{06:550403 0C:41}}}"));
    const Held<free_USER_NOTICE> notice(decoded(Seq_to_USER_NOTICE, "30{30{0C:43 30{02:01 02:02}} 1E:AC00}"));
    const Held<free_KISA_IDENTIFY_DATA> identity(
        create_KISA_IDENTIFY_DATA("\xEA\xB9\x80", sha256.get(), virtual_id, 3));
    expect_made<free_GENERAL_NAME>("82:612E62", GENERAL_NAME_to_Seq, create_GENERAL_NAME,
                                   TLX_GENERAL_NAME_DNS_NAME, "a.b", -1);
    expect_made<free_GENERAL_NAME>("86:61", GENERAL_NAME_to_Seq, create_GENERAL_NAME, TLX_GENERAL_NAME_URI,
                                   "ab", 1);
    expect_made<free_GENERAL_NAME>("87:7F000001", GENERAL_NAME_to_Seq, create_GENERAL_NAME,
                                   TLX_GENERAL_NAME_IP_ADDRESS, "\x7F\0\0\1", 4);
    expect_made<free_GENERAL_NAME>("88:2A03", GENERAL_NAME_to_Seq, create_GENERAL_NAME,
                                   TLX_GENERAL_NAME_REGISTERED_ID, "1.2.3", 5);
    expect_made<free_GENERAL_NAME>("A4{30{31{30{06:550403 0C:41}}}}", GENERAL_NAME_to_Seq,
                                   create_GENERAL_NAME_directoryName, subject.get());
    expect_made<free_GENERAL_NAME>("A0{06:2A03 A0{05:}}", GENERAL_NAME_to_Seq, create_GENERAL_NAME_otherName,
                                   oid.get(), null.get());
    expect_made<free_GENERAL_NAME>("A0{06:2A831A8C9A440A0101 A0{" + identity_text + "}}", GENERAL_NAME_to_Seq,
                                   create_GENERAL_NAME_KISA_IDENTIFY_DATA, identity.get());
    expect_made<free_KISA_IDENTIFY_DATA>(identity_text, KISA_IDENTIFY_DATA_to_Seq, create_KISA_IDENTIFY_DATA,
                                         "\xEA\xB9\x80", sha256.get(), virtual_id, 3);
    expect_made<free_POLICY_QUALIFIER_INFO>("30{06:2B06010505070201 16:6162}", POLICY_QUALIFIER_INFO_to_Seq,
                                            create_POLICY_QUALIFIER_INFO_cPSuri, "ab");
    expect_made<free_POLICY_QUALIFIER_INFO>("30{06:2B06010505070202 30{30{0C:43 30{02:01 02:02}} 1E:AC00}}",
                                            POLICY_QUALIFIER_INFO_to_Seq,
                                            create_POLICY_QUALIFIER_INFO_userNotice, notice.get());
    expect_made<free_DIST_POINT>("30{A0{A0{86:6C6461703A61}}}", DIST_POINT_to_Seq, create_DIST_POINT_uri,
                                 "ldap:a");
    expect_made<free_KEY_USAGE>("03:05A0", KEY_USAGE_to_Seq, named_bits_to_BIT_STRING, 5);
    EXPECT_EQ(create_GENERAL_NAME(TLX_GENERAL_NAME_DIRECTORY_NAME, "a", 1), nullptr);
    EXPECT_EQ(create_KISA_IDENTIFY_DATA("A", sha256.get(), virtual_id, 0), nullptr);

    free_VID(std::exchange(identity->vid, nullptr));
    EXPECT_EQ(encoded(KISA_IDENTIFY_DATA_to_Seq, identity.get()), "47040103") << "a type alone";
}

TEST(ExtensionMembers, KeepTheOctetsOfBooleans) {
    const Held<free_BASIC_CONSTRAINTS> record(decoded(Seq_to_BASIC_CONSTRAINTS, "30{01:2A 02:03}"));
    EXPECT_EQ(record->cA, 0x2A);
    EXPECT_EQ(get_BIGINT_word(record->pathLenConstraint), 3U);
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
}

TEST(ExtensionMembers, AreFoundInLists) {
    const LeakCheck leaks;
    const Names names(decoded(Seq_to_GENERAL_NAMES, "30{82:61 87:7F000001 86:61}"));
    EXPECT_EQ(get_GENERAL_NAMES_index_by_choice(names.get(), TLX_GENERAL_NAME_IP_ADDRESS, -1), 1);
    EXPECT_EQ(get_GENERAL_NAMES_index_by_choice(names.get(), TLX_GENERAL_NAME_IP_ADDRESS, 1), -1);
    EXPECT_EQ(get_GENERAL_NAMES_index_by_choice(names.get(), TLX_GENERAL_NAME_DNS_NAME, -7), 0);
    EXPECT_EQ(get_GENERAL_NAMES_index_by_choice(nullptr, TLX_GENERAL_NAME_DNS_NAME, -1), -1);
    // A choice that does not belong to the value is refused before the value is looked at.
    GENERAL_NAME *first = get_GENERAL_NAMES_child(names.get(), 0);
    first->choice = 9;
    EXPECT_EQ(encoded(GENERAL_NAME_to_Seq, first), "470C0103");
    first->choice = TLX_GENERAL_NAME_DNS_NAME;

    const Held<free_OBJECT_IDENTIFIERS> list(
        decoded(Seq_to_OBJECT_IDENTIFIERS, "30{06:2A01 06:2A03 06:2A03}"));
    const std::pair<const char *, std::int32_t> places[] = {{"1.2.1", 0}, {"1.2.3", 1}, {"1.2.30", -1}};
    for (const auto &[dotted, place] : places)
        EXPECT_EQ(get_OBJECT_IDENTIFIERS_index(list.get(), oid_of(dotted).get()), place) << dotted;
    expect_refuses_null(-1, get_OBJECT_IDENTIFIERS_index, list.get(), oid_of("1.2.3").get());

    KISA_IDENTIFY_DATA *out = nullptr;
    expect_refuses_null(0x473D0049, get_KISA_IDENTIFY_DATA_from_GENERAL_NAMES, names.get(), &out);
}

TEST(NamedBits, BeyondWhatAnEncodingHolds) {
    // Bits that the unused-bits octet takes back, bits past the 32nd, no bits at all.
    EXPECT_EQ(get_BIT_STRING_named_bits(string_of(3, hex("FF"), 7).get()), 1U);
    EXPECT_EQ(get_BIT_STRING_named_bits(string_of(3, hex("00000000FF")).get()), 0U);
    EXPECT_EQ(get_BIT_STRING_named_bits(nullptr), 0U);
}

}  // namespace
}  // namespace tlx_test
