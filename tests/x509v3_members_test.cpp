// What the members of extension records hold, lists, and the functions that make records.
#include <gtest/gtest.h>
#include <tlxpki.h>

#include "support/allocation.hpp"
#include "support/der_text.hpp"

namespace tlx_test {
namespace {

/// A record that is freed with its own function.
template <typename T, void (*Free)(T *)>
struct Freer {
    void operator()(T *object) const { Free(object); }
};
template <typename T, void (*Free)(T *)>
using Held = std::unique_ptr<T, Freer<T, Free>>;
using HeldName = Held<GENERAL_NAME, free_GENERAL_NAME>;
using HeldNames = Held<GENERAL_NAMES, free_GENERAL_NAMES>;
using HeldKeyId = Held<AUTHORITY_KEYID, free_AUTHORITY_KEYID>;
using HeldIdentity = Held<KISA_IDENTIFY_DATA, free_KISA_IDENTIFY_DATA>;
using HeldPolicy = Held<POLICY_CONSTRAINTS, free_POLICY_CONSTRAINTS>;

/// Decodes an encoding; null, and a failed test, when that fails.
template <typename T>
T *decoded(std::uint32_t (*decoder)(const ASN1_UNIT *, T **), std::string_view text) {
    T *record = nullptr;
    EXPECT_EQ(decoder(der_node(text).get(), &record), 0U) << text;
    return record;
}

template <typename T>
std::string encoded(std::uint32_t (*encoder)(const T *, ASN1_UNIT **), const T *record) {
    ASN1_UNIT *node = nullptr;
    EXPECT_EQ(encoder(record, &node), 0U);
    const Node owner(node);
    return hex_of(node);
}

std::string number(const BIGINT *value) {
    if (value == nullptr) return "null";
    char *text = BIGINT_to_decimal(value);
    std::string copy(text);
    tlx_free(text);
    return copy;
}

String oid_of(const char *dotted) {
    return string_of(TLX_TAG_OBJECT_IDENTIFIER, dotted);
}

TEST(BasicConstraints, Members) {
    struct Case {
        const char *text;
        int cA;
        const char *length;
    };
    const Case cases[] = {
        {"30{01:FF}", 0xFF, "null"},       {"30{01:00}", 0, "null"},
        {"30{01:2A 02:03}", 0x2A, "3"},    {"30{01:FF 02:010000000000000000}", 0xFF, "18446744073709551616"},
        {"30{01:FF 04:03}", 0xFF, "null"}, {"30{01:FF 02:03 02:04}", 0xFF, "3"},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.text);
        const Held<BASIC_CONSTRAINTS, free_BASIC_CONSTRAINTS> record(
            decoded(Seq_to_BASIC_CONSTRAINTS, c.text));
        EXPECT_EQ(record->cA, c.cA);
        EXPECT_EQ(number(record->pathLenConstraint), c.length);
    }
}

TEST(PolicyConstraints, NumbersUnderEitherTagging) {
    struct Case {
        const char *text, *require, *inhibit;
    };
    const Case cases[] = {
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
    for (const Case &c : cases) {
        SCOPED_TRACE(c.text);
        const HeldPolicy record(decoded(Seq_to_POLICY_CONSTRAINTS, c.text));
        EXPECT_EQ(number(record->requireExplicitPolicy), c.require);
        EXPECT_EQ(number(record->inhibitPolicyMapping), c.inhibit);
    }
    // Every number is written so that it is read back.
    for (const char *digits : {"00", "7F", "80", "FFFFFFFFFF"}) {
        const HeldPolicy record(new_POLICY_CONSTRAINTS());
        record->inhibitPolicyMapping = hex_to_BIGINT(digits);
        ASN1_UNIT *node = nullptr;
        ASSERT_EQ(POLICY_CONSTRAINTS_to_Seq(record.get(), &node), 0U);
        const Node owner(node);
        POLICY_CONSTRAINTS *again = nullptr;
        ASSERT_EQ(Seq_to_POLICY_CONSTRAINTS(node, &again), 0U);
        const HeldPolicy held(again);
        EXPECT_EQ(cmp_BIGINT(again->inhibitPolicyMapping, record->inhibitPolicyMapping), 0) << digits;
    }
}

TEST(AuthorityKeyId, Members) {
    const HeldKeyId serial(decoded(Seq_to_AUTHORITY_KEYID, "30{82:0102}"));
    EXPECT_EQ(serial->keyIdentifier, nullptr);
    EXPECT_EQ(serial->authorityCertIssuer, nullptr);
    EXPECT_EQ(number(serial->authorityCertSerialNumber), "258");

    const HeldKeyId all(
        decoded(Seq_to_AUTHORITY_KEYID, "30{80:AABB A1{A4{30{31{30{06:550403 0C:41}}}} 82:62} 82:07}"));
    EXPECT_EQ(text_of(all->keyIdentifier), "type 4 extra 0: AA BB");
    ASSERT_EQ(get_GENERAL_NAMES_count(all->authorityCertIssuer), 2U);
    const GENERAL_NAME *name = get_GENERAL_NAMES_child(all->authorityCertIssuer, 0);
    ASSERT_EQ(name->choice, 4U);
    const X509_NAME_CHILD *cn = get_X509_NAME_CHILD(name->value.directoryName, 0);
    EXPECT_EQ(text_of(cn->data), "type 12 extra 0: 41");
    EXPECT_EQ(number(all->authorityCertSerialNumber), "7");

    // Filled again, it keeps nothing of before.
    AUTHORITY_KEYID *record = all.get();
    EXPECT_EQ(Seq_to_AUTHORITY_KEYID(der_node("30{82:05}").get(), &record), 0U);
    EXPECT_EQ(record->keyIdentifier, nullptr);
    EXPECT_EQ(record->authorityCertIssuer, nullptr);
}

TEST(GeneralName, ValueOfEachChoice) {
    struct Case {
        const char *text;
        std::uint32_t choice;
        const char *value;
    };
    const Case strings[] = {
        {"81:6140", 1, "type 22 extra 0: 61 40"},
        {"82:61", 2, "type 22 extra 0: 61"},
        {"A3{30{05:}}", 3, "type 48 extra 0: 05 00"},
        {"A3{30{} 31{}}", 3, "type 163 extra 0: 30 00 31 00"},
        {"86:61", 6, "type 22 extra 0: 61"},
        {"87:7F000001", 7, "type 4 extra 0: 7F 00 00 01"},
        {"88:2A03", 8, "type 6 extra 0: 31 2E 32 2E 33"},
    };
    for (const Case &c : strings) {
        SCOPED_TRACE(c.text);
        const HeldName name(decoded(Seq_to_GENERAL_NAME, c.text));
        EXPECT_EQ(name->choice, c.choice);
        EXPECT_EQ(text_of(static_cast<ASN1_STRING *>(name->value.any)), c.value);
    }
    const HeldName other(decoded(Seq_to_GENERAL_NAME, "A0{06:2A03 A0{0C:C3A9}}"));
    EXPECT_EQ(text_of(other->value.otherName->type_id), "type 6 extra 0: 31 2E 32 2E 33");
    EXPECT_EQ(text_of(other->value.otherName->value), "type 12 extra 0: C3 A9");
    const HeldName edi(decoded(Seq_to_GENERAL_NAME, "A5{30{A0{13:41} A1{1E:AC00}}}"));
    EXPECT_EQ(text_of(edi->value.ediPartyName->nameAssigner), "type 19 extra 0: 41");
    EXPECT_EQ(text_of(edi->value.ediPartyName->partyName), "type 30 extra 0: AC 00");
}

TEST(GeneralName, Made) {
    const LeakCheck leaks;
    const HeldNames names(new_GENERAL_NAMES());
    const Held<X509_NAME, free_X509_NAME> subject(new_X509_NAME());
    ASSERT_EQ(
        add_X509_NAME_child_OID(subject.get(), oid_of("2.5.4.3").get(), TLX_TAG_UTF8_STRING, "A", -1, -1),
        0U);
    const HeldName made[] = {
        HeldName(create_GENERAL_NAME(TLX_GENERAL_NAME_DNS_NAME, "a.b", -1)),
        HeldName(create_GENERAL_NAME(TLX_GENERAL_NAME_IP_ADDRESS, "\x7F\0\0\1", 4)),
        HeldName(create_GENERAL_NAME(TLX_GENERAL_NAME_REGISTERED_ID, "1.2.3", 5)),
        HeldName(create_GENERAL_NAME_directoryName(subject.get())),
        HeldName(create_GENERAL_NAME_otherName(oid_of("1.2.3").get(), string_of(0x30, "\x05").get())),
    };
    for (const HeldName &name : made)
        ASSERT_EQ(add_GENERAL_NAMES_child(names.get(), name.get(), -1), 0U);
    EXPECT_EQ(
        encoded(GENERAL_NAMES_to_Seq, names.get()),
        hex_of(der_node(
                   "30{82:612E62 87:7F000001 88:2A03 A4{30{31{30{06:550403 0C:41}}}} A0{06:2A03 A0{30:05}}}")
                   .get()));

    EXPECT_EQ(create_GENERAL_NAME(TLX_GENERAL_NAME_DIRECTORY_NAME, "a", 1), nullptr);
    EXPECT_EQ(create_GENERAL_NAME(TLX_GENERAL_NAME_URI, nullptr, 0), nullptr);
    EXPECT_EQ(create_GENERAL_NAME_directoryName(nullptr), nullptr);
    EXPECT_EQ(create_GENERAL_NAME_otherName(nullptr, string_of(12, "A").get()), nullptr);

    EXPECT_EQ(get_GENERAL_NAMES_index_by_choice(names.get(), TLX_GENERAL_NAME_IP_ADDRESS, -1), 1);
    EXPECT_EQ(get_GENERAL_NAMES_index_by_choice(names.get(), TLX_GENERAL_NAME_IP_ADDRESS, 1), -1);
    EXPECT_EQ(get_GENERAL_NAMES_index_by_choice(names.get(), TLX_GENERAL_NAME_DNS_NAME, -7), 0);
    EXPECT_EQ(get_GENERAL_NAMES_index_by_choice(nullptr, TLX_GENERAL_NAME_DNS_NAME, -1), -1);

    // A choice that does not belong to the value is refused before the value is looked at.
    made[0]->choice = 9;
    ASN1_UNIT *node = nullptr;
    EXPECT_EQ(GENERAL_NAME_to_Seq(made[0].get(), &node), 0x470C0103U);
    made[0]->choice = TLX_GENERAL_NAME_DNS_NAME;
}

TEST(ExtensionLists, ItemsAreCopiedInAndHandedOut) {
    const LeakCheck leaks;
    const Held<EXTENDED_KEY_USAGE, free_EXTENDED_KEY_USAGE> list(new_EXTENDED_KEY_USAGE());
    EXPECT_EQ(get_EXTENDED_KEY_USAGE_count(nullptr), 0U);
    EXPECT_EQ(get_EXTENDED_KEY_USAGE_child(list.get(), 0), nullptr);
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
              hex_of(der_node("30{06:2A01 06:2A02 06:2A03 06:2A01}").get()));
    EXPECT_NE(get_EXTENDED_KEY_USAGE_child(list.get(), 0), one.get());
    EXPECT_EQ(get_EXTENDED_KEY_USAGE_child(list.get(), 4), nullptr);
    EXPECT_EQ(get_EXTENDED_KEY_USAGE_child(list.get(), -1), nullptr);
    EXPECT_EQ(get_OBJECT_IDENTIFIERS_index(list.get(), three.get()), 2);
    EXPECT_EQ(get_OBJECT_IDENTIFIERS_index(list.get(), oid_of("1.2.30").get()), -1);
    EXPECT_EQ(get_OBJECT_IDENTIFIERS_index(list.get(), nullptr), -1);

    const String taken(remove_EXTENDED_KEY_USAGE_child(list.get(), 1));
    EXPECT_EQ(cmp_OBJECT_IDENTIFIER(taken.get(), two.get()), 0);
    EXPECT_EQ(remove_EXTENDED_KEY_USAGE_child(list.get(), 3), nullptr);
    EXPECT_EQ(get_EXTENDED_KEY_USAGE_count(list.get()), 3U);

    // A failure leaves a caller's list as it was.
    EXTENDED_KEY_USAGE *own = list.get();
    EXPECT_EQ(Seq_to_EXTENDED_KEY_USAGE(der_node("30{06:2A03 05:}").get(), &own), 0x47110104U);
    EXPECT_EQ(get_EXTENDED_KEY_USAGE_count(list.get()), 3U);
}

TEST(NamedBits, ReadAndMade) {
    struct Case {
        const char *text;
        std::uint32_t bits;
    };
    const Case cases[] = {
        {"03:00", 0},
        {"03:0780", TLX_KEY_USAGE_DIGITAL_SIGNATURE},
        {"03:0106", TLX_KEY_USAGE_KEY_CERT_SIGN | TLX_KEY_USAGE_CRL_SIGN},
        {"03:070080", TLX_KEY_USAGE_DECIPHER_ONLY},
        {"03:0000000001", 1U << 31},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.text);
        const String bits(decoded(Seq_to_KEY_USAGE, c.text));
        EXPECT_EQ(get_BIT_STRING_named_bits(bits.get()), c.bits);
        const String made(named_bits_to_BIT_STRING(c.bits));
        EXPECT_EQ(encoded(KEY_USAGE_to_Seq, made.get()), hex_of(der_node(c.text).get()));
    }
    // Bits that the unused-bits octet takes back, bits past the 32nd, no bits at all.
    EXPECT_EQ(get_BIT_STRING_named_bits(string_of(3, hex("FF"), 7).get()), 1U);
    EXPECT_EQ(get_BIT_STRING_named_bits(string_of(3, hex("00000000FF")).get()), 0U);
    EXPECT_EQ(get_BIT_STRING_named_bits(nullptr), 0U);
}

TEST(CertificatePolicies, Qualifiers) {
    const LeakCheck leaks;
    const Held<CERTIFICATE_POLICIES, free_CERTIFICATE_POLICIES> policies(
        decoded(Seq_to_CERTIFICATE_POLICIES,
                "30{30{06:2A831A8C9A45010104 30{30{06:2B06010505070201 16:6162} 30{06:2B06010505070202 "
                "30{30{0C:43 30{02:01 02:02}} 1E:AC00}} 30{06:2A03 02:05}}}}"));
    const POLICY_INFO *policy = get_CERTIFICATE_POLICIES_child(policies.get(), 0);
    EXPECT_EQ(cmp_OBJECT_IDENTIFIER(policy->policyIdentifier, oid_of("1.2.410.200005.1.1.4").get()), 0);
    ASSERT_EQ(get_POLICY_QUALIFIER_INFOS_count(policy->policyQualifiers), 3U);
    const POLICY_QUALIFIER_INFO *cps = get_POLICY_QUALIFIER_INFOS_child(policy->policyQualifiers, 0);
    EXPECT_EQ(text_of(cps->cPSuri), "type 22 extra 0: 61 62");
    EXPECT_EQ(cps->userNotice, nullptr);
    EXPECT_EQ(cps->other, nullptr);
    const USER_NOTICE *notice = get_POLICY_QUALIFIER_INFOS_child(policy->policyQualifiers, 1)->userNotice;
    EXPECT_EQ(text_of(notice->explicitText), "type 30 extra 0: AC 00");
    EXPECT_EQ(text_of(notice->noticeRef->organization), "type 12 extra 0: 43");
    EXPECT_EQ(number(get_NOTICE_NUMBERS_child(notice->noticeRef->noticeNumbers, 1)), "2");
    EXPECT_EQ(hex_of(get_POLICY_QUALIFIER_INFOS_child(policy->policyQualifiers, 2)->other), "02 01 05");

    using Qualifier = Held<POLICY_QUALIFIER_INFO, free_POLICY_QUALIFIER_INFO>;
    const Qualifier made(create_POLICY_QUALIFIER_INFO_cPSuri("ab"));
    EXPECT_EQ(encoded(POLICY_QUALIFIER_INFO_to_Seq, made.get()),
              hex_of(der_node("30{06:2B06010505070201 16:6162}").get()));
    const Qualifier noted(create_POLICY_QUALIFIER_INFO_userNotice(notice));
    EXPECT_EQ(encoded(POLICY_QUALIFIER_INFO_to_Seq, noted.get()),
              hex_of(der_node("30{06:2B06010505070202 30{30{0C:43 30{02:01 02:02}} 1E:AC00}}").get()));
    EXPECT_EQ(create_POLICY_QUALIFIER_INFO_cPSuri(nullptr), nullptr);
    EXPECT_EQ(create_POLICY_QUALIFIER_INFO_userNotice(nullptr), nullptr);
}

TEST(DistributionPoints, Members) {
    const LeakCheck leaks;
    const Held<issuing_DIST_POINT, free_issuing_DIST_POINT> point(
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

    const Held<DIST_POINT, free_DIST_POINT> made(create_DIST_POINT_uri("ldap:a"));
    EXPECT_EQ(encoded(DIST_POINT_to_Seq, made.get()), hex_of(der_node("30{A0{A0{86:6C6461703A61}}}").get()));
    EXPECT_EQ(create_DIST_POINT_uri(nullptr), nullptr);
}

TEST(KisaIdentity, Members) {
    const LeakCheck leaks;
    const HeldIdentity name_only(decoded(Seq_to_KISA_IDENTIFY_DATA, "30{0C:EAB980}"));
    EXPECT_EQ(name_only->idType, nullptr);
    EXPECT_EQ(name_only->vid, nullptr);
    const HeldIdentity both(decoded(Seq_to_KISA_IDENTIFY_DATA,
                                    "30{0C:EAB980 30{30{06:2A831A8C9A440A010101 30{30{06:608648016503040201} "
                                    "30{04:0102}}}}}"));
    EXPECT_EQ(text_of(both->realName), "type 12 extra 0: EA B9 80");
    EXPECT_EQ(cmp_OBJECT_IDENTIFIER(both->idType, oid_of("1.2.410.200004.10.1.1.1").get()), 0);
    EXPECT_EQ(cmp_OBJECT_IDENTIFIER(both->vid->hashAlg, oid_of("2.16.840.1.101.3.4.2.1").get()), 0);
    EXPECT_EQ(text_of(both->vid->virtualID), "type 4 extra 0: 01 02");
    EXPECT_EQ(both->vid->hashAlgParameters, nullptr);
    // One of the two alone cannot be written.
    const HeldIdentity half(dup_KISA_IDENTIFY_DATA(both.get()));
    free_VID(half->vid);
    half->vid = nullptr;
    ASN1_UNIT *node = nullptr;
    EXPECT_EQ(KISA_IDENTIFY_DATA_to_Seq(half.get(), &node), 0x47040103U);
}

TEST(KisaIdentity, ThereAndBackThroughASubjectAltName) {
    const LeakCheck leaks;
    const String sha256 = oid_of("2.16.840.1.101.3.4.2.1");
    const std::uint8_t virtual_id[] = {1, 2, 3};
    const HeldIdentity made(create_KISA_IDENTIFY_DATA("\xEA\xB9\x80", sha256.get(), virtual_id, 3));
    const HeldName name(create_GENERAL_NAME_KISA_IDENTIFY_DATA(made.get()));
    const char *const value =
        "30{0C:EAB980 30{30{06:2A831A8C9A440A010101 30{30{06:608648016503040201} A0{04:010203}}}}}";
    EXPECT_EQ(encoded(GENERAL_NAME_to_Seq, name.get()),
              hex_of(der_node("A0{06:2A831A8C9A440A0101 A0{" + std::string(value) + "}}").get()));

    // Under either type, behind names of other kinds; never under another type.
    struct Case {
        std::string names;
        std::uint32_t status;
    };
    const Case cases[] = {
        {"30{82:61 A0{06:2A03 A0{0C:41}} A0{06:2A831A8C9A440A0101 A0{" + std::string(value) + "}}}", 0},
        {"30{A0{06:2A831A8C9A440601 A0{" + std::string(value) + "}}}", 0},
        {"30{A0{06:2A831A8C9A440A0102 A0{" + std::string(value) + "}}}", 0x473D0047},
        {"30{A0{06:2A831A8C9A440A0101 A0{0C:41}}}", 0x47030104},
        {"30{A0{06:2A831A8C9A440A0101 A0{30{}}}}", 0x4703002B},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.names);
        const HeldNames names(decoded(Seq_to_GENERAL_NAMES, c.names));
        KISA_IDENTIFY_DATA *data = nullptr;
        EXPECT_EQ(get_KISA_IDENTIFY_DATA_from_GENERAL_NAMES(names.get(), &data), c.status);
        const HeldIdentity held(data);
        ASSERT_EQ(data != nullptr, c.status == 0);
        if (data != nullptr) {
            EXPECT_EQ(encoded(KISA_IDENTIFY_DATA_to_Seq, data), hex_of(der_node(value).get()));
        }
    }
    KISA_IDENTIFY_DATA *data = nullptr;
    EXPECT_EQ(get_KISA_IDENTIFY_DATA_from_GENERAL_NAMES(nullptr, &data), 0x473D0049U);
    const HeldNames empty(new_GENERAL_NAMES());
    EXPECT_EQ(get_KISA_IDENTIFY_DATA_from_GENERAL_NAMES(empty.get(), nullptr), 0x473D0049U);
    EXPECT_EQ(create_KISA_IDENTIFY_DATA("A", sha256.get(), virtual_id, 0), nullptr);
    EXPECT_EQ(create_GENERAL_NAME_KISA_IDENTIFY_DATA(nullptr), nullptr);
}

TEST(ExtensionMakers, EveryAllocationMayFail) {
    const String oid = oid_of("1.2.3");
    const String text = string_of(12, "A");
    const std::uint8_t octets[] = {1};
    const Held<X509_NAME, free_X509_NAME> subject(new_X509_NAME());
    add_X509_NAME_child_OID(subject.get(), oid.get(), 12, "A", 1, -1);
    const Held<USER_NOTICE, free_USER_NOTICE> notice(
        decoded(Seq_to_USER_NOTICE, "30{30{0C:41 30{02:01}} 0C:41}"));
    const HeldIdentity identity(create_KISA_IDENTIFY_DATA("A", oid.get(), octets, 1));
    const auto sweep = [](auto make, auto release) {
        sweep_failing_allocations([&] {
            auto *made = make();
            const bool done = made != nullptr;
            release(made);
            return done;
        });
    };
    sweep([&] { return create_GENERAL_NAME(TLX_GENERAL_NAME_URI, "a", 1); }, free_GENERAL_NAME);
    sweep([&] { return create_GENERAL_NAME_directoryName(subject.get()); }, free_GENERAL_NAME);
    sweep([&] { return create_GENERAL_NAME_otherName(oid.get(), text.get()); }, free_GENERAL_NAME);
    sweep([&] { return create_GENERAL_NAME_KISA_IDENTIFY_DATA(identity.get()); }, free_GENERAL_NAME);
    sweep([&] { return create_KISA_IDENTIFY_DATA("A", oid.get(), octets, 1); }, free_KISA_IDENTIFY_DATA);
    sweep([&] { return create_POLICY_QUALIFIER_INFO_cPSuri("a"); }, free_POLICY_QUALIFIER_INFO);
    sweep([&] { return create_POLICY_QUALIFIER_INFO_userNotice(notice.get()); }, free_POLICY_QUALIFIER_INFO);
    sweep([&] { return create_DIST_POINT_uri("a"); }, free_DIST_POINT);
    sweep([&] { return named_bits_to_BIT_STRING(5); }, free_KEY_USAGE);
}

}  // namespace
}  // namespace tlx_test
