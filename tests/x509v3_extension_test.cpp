// Real certificates and their extensions, what the members of extension records hold, and the functions that
// make records.
#include <gtest/gtest.h>
#include <tlxpki.h>

#include <algorithm>

#include "support/command.hpp"
#include "support/record_types.hpp"
#include "support/x509_files.hpp"
#include "support/x509_records.hpp"

namespace tlx_test {
namespace {

using Extension = Held<free_X509_EXTENSION>;

/// The record of an extension by its object identifier.
const RecordType *type_of_extension(const std::string &dotted) {
    static const std::vector<Row> kTypes = read_rows("x509v3_types.txt");
    const auto is_it = [&dotted](const Row &row) { return row[0] == dotted; };
    const auto found = std::find_if(kTypes.begin(), kTypes.end(), is_it);
    const auto has_name = [&found](const RecordType &type) { return type.name == (*found)[1]; };
    return found == kTypes.end() ? nullptr
                                 : &*std::find_if(std::begin(kRecordTypes), std::end(kRecordTypes), has_name);
}

/// The key usage of Trustwave's two "Global ECC" authorities, P256 and P384, has a trailing octet of zero
/// bits, which DER does not allow. Everything else comes back.
std::string in_der(const std::string &value) {
    return value == "type 4 extra 0: 03 03 07 06 00" ? "type 4 extra 0: 03 02 01 06" : value;
}

/// Decodes every extension whose type is known and encodes it again. Returns how many there were.
unsigned expect_extensions_come_back(const X509_CERT *certificate) {
    unsigned count = 0;
    const X509_EXTENSIONS *extensions = get_X509_extensions(certificate);
    for (std::uint32_t i = 0; i < get_X509_EXTENSION_count(extensions); ++i) {
        const X509_EXTENSION *extension = get_X509_EXTENSION(extensions, static_cast<std::int32_t>(i));
        const RecordType *type = type_of_extension(octets(extension->object));
        if (type == nullptr) continue;
        SCOPED_TRACE(type->name);
        ++count;
        void *record = nullptr;
        EXPECT_EQ(decode_X509_EXTENSION(extension, type->decode, &record), 0U);
        const Extension made(create_X509_EXTENSION_record_by_OID(nullptr, extension->object,
                                                                 extension->critical, record, type->encode));
        EXPECT_EQ(made == nullptr ? "null" : text_of(made->data), in_der(text_of(extension->data)));
        type->free(record);
    }
    return count;
}

/// A certificate with every extension that the openssl command can make.
const Octets &openssl_certificate() {
    static const Octets der = [] {
        const CommandFolder folder;
        (void)folder.run("openssl req -x509 -newkey rsa:2048 -nodes -config '" TLX_TEST_DATA
                         "/extensions.cnf' -keyout key.pem -out certificate.pem");
        return read_pem_file(folder.path("certificate.pem")).at(0);
    }();
    return der;
}

TEST(Extensions, OfTheOpensslCommand) {
    const Octets &der = openssl_certificate();
    const LeakCheck leaks;
    EXPECT_EQ(expect_extensions_come_back(certificate_of(der).get()), 16U);
}

/// They decode, copy and come back byte for byte; those with RSA keys verify under their own.
TEST(Extensions, AndCertificatesThatDebianTrusts) {
    if (!std::ifstream(kDebianCertificates)) GTEST_SKIP() << "no ca-certificates here";
    const LeakCheck leaks;
    unsigned count = 0;
    unsigned with_rsa = 0;
    for (const Octets &original : read_pem_file(kDebianCertificates)) {
        SCOPED_TRACE("certificate " + std::to_string(++count));
        const OwnedCert cert = certificate_of(original);
        ASSERT_NE(cert, nullptr);
        EXPECT_EQ(encode_certificate(cert.get()), original);
        EXPECT_EQ(encode_certificate(OwnedCert(dup_X509_CERT(cert.get())).get()), original);
        EXPECT_GT(expect_extensions_come_back(cert.get()), 0U);
        const X509_PUBKEY *key = get_X509_SPKI(cert.get());
        if (key->key == nullptr || key->key->kind != TLX_KEY_RSA) continue;
        ++with_rsa;
        EXPECT_EQ(verify_SIG_X509_CERT(cert.get(), key), 0U);
    }
    EXPECT_GT(count, 100U);
    EXPECT_GT(with_rsa, 80U);
}

TEST(Extensions, KeyIdentifiersMadeAsOpensslMakesThem) {
    const Octets &der = openssl_certificate();
    const LeakCheck leaks;
    const OwnedCert certificate = certificate_of(der);
    const X509_EXTENSIONS *extensions = get_X509_extensions(certificate.get());
    const auto expect_made = [&](std::int32_t row, const void *record, ASN1_ENCODER encoder) {
        const Extension made(create_X509_EXTENSION_record_by_OID_index(nullptr, row, 0, record, encoder));
        const std::int32_t index = get_X509_EXTENSION_index_by_OID_index(extensions, row, -1);
        EXPECT_EQ(text_of(made->data), text_of(get_X509_EXTENSION(extensions, index)->data));
    };
    const auto authority_of = [&](std::uint32_t what) {
        return Held<free_AUTHORITY_KEYID>(create_AUTHORITY_KEYID(certificate.get(), what));
    };
    const String subject(create_SUBJECT_KEYID(get_X509_SPKI(certificate.get())));
    expect_made(82, subject.get(), TLX_ENCODER(SUBJECT_KEYID_to_Seq));
    expect_made(90, authority_of(TLX_KEYID_KEY | TLX_KEYID_ISSUER_AND_SERIAL).get(),
                TLX_ENCODER(AUTHORITY_KEYID_to_Seq));

    // Without a statement of its own the key is digested; what is not asked for stays away.
    clean_X509_EXTENSIONS(certificate->tbsCertificate->extensions);
    const auto authority = authority_of(TLX_KEYID_KEY);
    EXPECT_EQ(text_of(authority->keyIdentifier), text_of(subject.get()));
    EXPECT_EQ(authority->authorityCertIssuer, nullptr);
    EXPECT_EQ(authority_of(0), nullptr);
    EXPECT_EQ(authority_of(4), nullptr);
    expect_refuses_null(nullptr, create_AUTHORITY_KEYID, certificate.get(), TLX_KEYID_KEY);
    expect_refuses_null(nullptr, create_SUBJECT_KEYID, get_X509_SPKI(certificate.get()));
    expect_making_may_fail([&] { return create_AUTHORITY_KEYID(certificate.get(), 3); },
                           free_AUTHORITY_KEYID);
}

/// What decodes from a value of the extension basicConstraints: the status.
std::string value(const Row &row) {
    const Extension extension(decoded(Seq_to_X509_EXTENSION, "30{06:551D13 04:}"));
    const String data = string_of(TLX_TAG_OCTET_STRING, hex(row[1]));
    EXPECT_EQ(set_X509_EXTENSION_data(extension.get(), data.get()), 0U);
    void *record = nullptr;
    const std::uint32_t status =
        decode_X509_EXTENSION(extension.get(), TLX_DECODER(Seq_to_BASIC_CONSTRAINTS), &record);
    EXPECT_EQ(record, nullptr);
    return status_text(status);
}

TEST(Extensions, Rows) {
    expect_rows("x509v3_extension.txt", {{"value", {value}}});
}

TEST(Extensions, FoundDecodedAndMade) {
    const LeakCheck leaks;
    const ASN1_DECODER decoder = TLX_DECODER(Seq_to_BASIC_CONSTRAINTS);
    const ASN1_ENCODER encoder = TLX_ENCODER(BASIC_CONSTRAINTS_to_Seq);
    const String oid = oid_of("2.5.29.19");
    BASIC_CONSTRAINTS constraints = {0xFF, nullptr};
    expect_made<free_X509_EXTENSION>("30{06:551D13 01:FF 04:30030101FF}", X509_EXTENSION_to_Seq,
                                     create_X509_EXTENSION_record_by_OID, nullptr, oid.get(), 1, &constraints,
                                     encoder);
    expect_made<free_X509_EXTENSION>("30{06:551D13 01:FF 04:30030101FF}", X509_EXTENSION_to_Seq,
                                     create_X509_EXTENSION_record_by_OID_index, nullptr, 87, 1, &constraints,
                                     encoder);
    const Held<free_X509_EXTENSIONS> list(
        decoded(Seq_to_X509_EXTENSIONS, "30{30{06:551D13 01:FF 04:30030101FF}}"));

    // A given extension is filled, and left alone on failure.
    const Extension owner(new_X509_EXTENSION());
    X509_EXTENSION *extension = owner.get();
    constraints.cA = 0;
    EXPECT_EQ(create_X509_EXTENSION_record_by_OID_index(&extension, 87, 0, &constraints, encoder),
              owner.get());
    const GENERAL_NAME empty = {};
    EXPECT_EQ(create_X509_EXTENSION_record_by_OID(&extension, oid.get(), 1, &empty,
                                                  TLX_ENCODER(GENERAL_NAME_to_Seq)),
              nullptr);
    EXPECT_EQ(encoded(X509_EXTENSION_to_Seq, extension), hex_of_text("30{06:551D13 04:3003010100}"));
    EXPECT_EQ(create_X509_EXTENSION_record_by_OID_index(nullptr, 0, 0, &constraints, encoder), nullptr);

    void *record = nullptr;
    EXPECT_EQ(decode_X509_EXTENSION_by_OID_index(list.get(), 87, decoder, &record), 0U);
    EXPECT_EQ(static_cast<BASIC_CONSTRAINTS *>(record)->cA, 0xFF);
    free_BASIC_CONSTRAINTS(static_cast<BASIC_CONSTRAINTS *>(std::exchange(record, nullptr)));
    EXPECT_EQ(decode_X509_EXTENSION_by_OID(list.get(), oid_of("2.5.29.15").get(), decoder, &record),
              0x473F0047U);
    EXPECT_EQ(decode_X509_EXTENSION_by_OID(nullptr, oid.get(), decoder, &record), 0x473F0047U);
    EXPECT_EQ(decode_X509_EXTENSION_by_OID_index(list.get(), 0, decoder, &record), 0x473F0047U);
    expect_refuses_null(0x473F0049, decode_X509_EXTENSION_by_OID, nullptr, oid.get(), decoder, &record);
    expect_refuses_null(0x473F0049, decode_X509_EXTENSION_by_OID_index, nullptr, 87, decoder, &record);
    expect_refuses_null(0x473E0049, decode_X509_EXTENSION, owner.get(), decoder, &record);
    sweep_statuses({0x473E003C, 0x47230104}, [&] {
        void *made = nullptr;
        const std::uint32_t status = decode_X509_EXTENSION_by_OID(list.get(), oid.get(), decoder, &made);
        free_BASIC_CONSTRAINTS(static_cast<BASIC_CONSTRAINTS *>(made));
        return status;
    });
}

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
    expect_made<free_GENERAL_NAME>("86:", GENERAL_NAME_to_Seq, create_GENERAL_NAME, TLX_GENERAL_NAME_URI,
                                   "ab", 0);
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

    const Held<free_OBJECT_IDENTIFIERS> list(decoded(Seq_to_OBJECT_IDENTIFIERS, "30{06:2A01 06:2A03}"));
    EXPECT_EQ(add_OBJECT_IDENTIFIERS(list.get(), oid_of("1.2.3").get()), 0U);
    EXPECT_EQ(add_OBJECT_IDENTIFIERS(list.get(), oid_of("1.2.4").get()), 0U);
    const std::pair<const char *, std::int32_t> places[] = {
        {"1.2.1", 0}, {"1.2.3", 1}, {"1.2.4", 3}, {"1.2.30", -1}};
    for (const auto &[dotted, place] : places)
        EXPECT_EQ(get_OBJECT_IDENTIFIERS_index_by_OBJECT_IDENTIFIER(list.get(), oid_of(dotted).get()), place)
            << dotted;
    expect_refuses_null(-1, get_OBJECT_IDENTIFIERS_index_by_OBJECT_IDENTIFIER, list.get(),
                        oid_of("1.2.3").get());
    expect_refuses_null(1, add_OBJECT_IDENTIFIERS, list.get(), oid_of("1.2.3").get());

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
