// Extensions of real certificates, and extensions that libcrypto reads.
#include <gtest/gtest.h>
#include <tlxpki.h>

#include <fstream>
#include <map>
#include <set>

#include "support/allocation.hpp"
#include "support/command.hpp"
#include "support/der_text.hpp"
#include "support/extension_types.hpp"
#include "support/openssl_extension_peer.hpp"

namespace tlx_test {
namespace {

struct CertificateFreer {
    void operator()(X509_CERT *certificate) const { free_X509_CERT(certificate); }
};
using Certificate = std::unique_ptr<X509_CERT, CertificateFreer>;

Certificate certificate_of(const std::string &pem) {
    void *certificate = nullptr;
    EXPECT_EQ(readPEM_from_Binary(&certificate, TLX_DECODER(Seq_to_X509_CERT), pem.data(),
                                  static_cast<std::uint32_t>(pem.size())),
              0U);
    return Certificate(static_cast<X509_CERT *>(certificate));
}

/// The type of each extension by its object identifier.
const ExtensionType *type_of_extension(const std::string &dotted) {
    static const std::map<std::string, std::string> kTypes = {
        {"2.5.29.14", "SUBJECT_KEYID"},
        {"2.5.29.15", "KEY_USAGE"},
        {"2.5.29.17", "GENERAL_NAMES"},
        {"2.5.29.18", "GENERAL_NAMES"},
        {"2.5.29.19", "BASIC_CONSTRAINTS"},
        {"2.5.29.28", "issuing_DIST_POINT"},
        {"2.5.29.30", "NAME_CONSTRAINTS"},
        {"2.5.29.31", "CRL_DIST_POINTS"},
        {"2.5.29.32", "CERTIFICATE_POLICIES"},
        {"2.5.29.33", "POLICY_MAPPINGS"},
        {"2.5.29.35", "AUTHORITY_KEYID"},
        {"2.5.29.36", "POLICY_CONSTRAINTS"},
        {"2.5.29.37", "EXTENDED_KEY_USAGE"},
        {"2.5.29.46", "CRL_DIST_POINTS"},
        {"1.3.6.1.5.5.7.1.1", "AUTHORITY_INFO_ACCESS"},
        {"1.3.6.1.5.5.7.1.11", "AUTHORITY_INFO_ACCESS"},
    };
    const auto found = kTypes.find(dotted);
    if (found == kTypes.end()) return nullptr;
    for (const ExtensionType &type : kExtensionTypes) {
        if (type.name == found->second) return &type;
    }
    return nullptr;
}

std::string text(const ASN1_STRING *string) {
    return {reinterpret_cast<const char *>(string->data), static_cast<std::size_t>(string->length)};
}

/// The key usage of Trustwave's two "Global ECC" authorities, P256 and P384, has a trailing octet of zero
/// bits, which DER does not allow. Everything else comes back.
std::string in_der(const std::string &value) {
    return value == "type 4 extra 0: 03 03 07 06 00" ? "type 4 extra 0: 03 02 01 06" : value;
}

/// Decodes every extension whose type is known and encodes it again. Returns their identifiers.
std::set<std::string> expect_extensions_come_back(const X509_CERT &certificate) {
    std::set<std::string> seen;
    const X509_EXTENSIONS *extensions = certificate.tbsCertificate->extensions;
    for (std::uint32_t i = 0; i < get_X509_EXTENSION_count(extensions); ++i) {
        const X509_EXTENSION *extension = get_X509_EXTENSION(extensions, static_cast<std::int32_t>(i));
        const std::string dotted = text(extension->object);
        const ExtensionType *type = type_of_extension(dotted);
        if (type == nullptr) continue;
        SCOPED_TRACE(dotted);
        seen.insert(dotted);
        void *record = nullptr;
        EXPECT_EQ(decode_X509_EXTENSION(extension, type->decode, &record), 0U);
        if (record == nullptr) continue;
        X509_EXTENSION *made = create_X509_EXTENSION_record_by_OID(nullptr, extension->object,
                                                                   extension->critical, record, type->encode);
        EXPECT_NE(made, nullptr);
        if (made != nullptr) {
            EXPECT_EQ(text_of(made->data), in_der(text_of(extension->data)));
            EXPECT_EQ(made->critical, extension->critical);
        }
        free_X509_EXTENSION(made);
        type->free(record);
    }
    return seen;
}

/// A certificate with every extension that the openssl command can make.
const std::string &openssl_certificate() {
    static const std::string pem = [] {
        const CommandFolder folder;
        static_cast<void>(folder.run("openssl req -x509 -newkey rsa:2048 -nodes -config '" TLX_TEST_DATA
                                     "/extensions.cnf' -keyout key.pem -out certificate.pem"));
        return folder.read("certificate.pem");
    }();
    return pem;
}

TEST(Extensions, OfTheOpensslCommand) {
    const std::string &pem = openssl_certificate();
    const LeakCheck leaks;
    const Certificate certificate = certificate_of(pem);
    ASSERT_NE(certificate, nullptr);
    EXPECT_EQ(expect_extensions_come_back(*certificate).size(), 16U);

    // A few members, as the configuration file has them.
    const X509_EXTENSIONS *extensions = certificate->tbsCertificate->extensions;
    const auto decoded = [&](const char *dotted, ASN1_DECODER decoder) {
        void *record = nullptr;
        const String oid = string_of(TLX_TAG_OBJECT_IDENTIFIER, dotted);
        EXPECT_EQ(decode_X509_EXTENSION_by_OID(extensions, oid.get(), decoder, &record), 0U) << dotted;
        return record;
    };
    auto *usage = static_cast<KEY_USAGE *>(decoded("2.5.29.15", TLX_DECODER(Seq_to_KEY_USAGE)));
    EXPECT_EQ(get_BIT_STRING_named_bits(usage),
              static_cast<std::uint32_t>(TLX_KEY_USAGE_KEY_CERT_SIGN | TLX_KEY_USAGE_CRL_SIGN |
                                         TLX_KEY_USAGE_DECIPHER_ONLY));
    free_KEY_USAGE(usage);
    auto *points = static_cast<CRL_DIST_POINTS *>(decoded("2.5.29.31", TLX_DECODER(Seq_to_CRL_DIST_POINTS)));
    const DIST_POINT *full = get_CRL_DIST_POINTS_child(points, 0);
    EXPECT_EQ(get_BIT_STRING_named_bits(full->reasons),
              static_cast<std::uint32_t>(TLX_REASON_KEY_COMPROMISE | TLX_REASON_CA_COMPROMISE |
                                         TLX_REASON_AA_COMPROMISE));
    EXPECT_EQ(text(get_GENERAL_NAMES_child(full->distributionPoint->value.fullName, 0)->value.ia5String),
              "http://crl.example.com/");
    const DIST_POINT_NAME *relative = get_CRL_DIST_POINTS_child(points, 1)->distributionPoint;
    ASSERT_EQ(relative->choice, 1U);
    EXPECT_EQ(text(get_X509_NAME_CHILD(relative->value.nameRelativeToCRLIssuer, 1)->data), "list 2");
    free_CRL_DIST_POINTS(points);
    auto *names = static_cast<GENERAL_NAMES *>(decoded("2.5.29.17", TLX_DECODER(Seq_to_GENERAL_NAMES)));
    EXPECT_EQ(get_GENERAL_NAMES_count(names), 8U);
    const GENERAL_NAME *upn = get_GENERAL_NAMES_child(names, get_GENERAL_NAMES_index_by_choice(names, 0, -1));
    EXPECT_EQ(text(upn->value.otherName->value), "a@example.com");
    free_GENERAL_NAMES(names);
}

TEST(Extensions, OfTheCertificatesThatDebianTrusts) {
    std::ifstream file("/etc/ssl/certs/ca-certificates.crt");
    if (!file) GTEST_SKIP() << "no ca-certificates here";
    const std::string all{std::istreambuf_iterator<char>(file), {}};
    const LeakCheck leaks;
    const std::string begin = "-----BEGIN CERTIFICATE-----";
    unsigned count = 0;
    for (std::size_t at = all.find(begin); at != std::string::npos; at = all.find(begin, at + 1)) {
        const Certificate certificate = certificate_of(all.substr(at, all.find(begin, at + 1) - at));
        ASSERT_NE(certificate, nullptr);
        SCOPED_TRACE("certificate " + std::to_string(++count));
        expect_extensions_come_back(*certificate);
    }
    EXPECT_GT(count, 100U);
}

TEST(Extensions, KeyIdentifiersMadeAsOpensslMakesThem) {
    const std::string &pem = openssl_certificate();
    const LeakCheck leaks;
    const Certificate certificate = certificate_of(pem);
    const X509_EXTENSIONS *extensions = certificate->tbsCertificate->extensions;
    const auto expected = [&](std::int32_t oid_index) {
        const std::int32_t index = get_X509_EXTENSION_index_by_OID_index(extensions, oid_index, -1);
        return text_of(get_X509_EXTENSION(extensions, index)->data);
    };
    const auto made = [](std::int32_t oid_index, const void *record, ASN1_ENCODER encoder) {
        X509_EXTENSION *extension =
            create_X509_EXTENSION_record_by_OID_index(nullptr, oid_index, 0, record, encoder);
        const std::string value = extension != nullptr ? text_of(extension->data) : "null";
        free_X509_EXTENSION(extension);
        return value;
    };
    SUBJECT_KEYID *subject = create_SUBJECT_KEYID(get_X509_SPKI(certificate.get()));
    EXPECT_EQ(made(82, subject, TLX_ENCODER(SUBJECT_KEYID_to_Seq)), expected(82));
    AUTHORITY_KEYID *authority =
        create_AUTHORITY_KEYID(certificate.get(), TLX_KEYID_KEY | TLX_KEYID_ISSUER_AND_SERIAL);
    EXPECT_EQ(made(90, authority, TLX_ENCODER(AUTHORITY_KEYID_to_Seq)), expected(90));
    EXPECT_EQ(text_of(authority->keyIdentifier), text_of(subject));
    free_AUTHORITY_KEYID(authority);

    // Without a statement of its own the key is digested; what is not asked for stays away.
    clean_X509_EXTENSIONS(certificate->tbsCertificate->extensions);
    authority = create_AUTHORITY_KEYID(certificate.get(), TLX_KEYID_KEY);
    EXPECT_EQ(text_of(authority->keyIdentifier), text_of(subject));
    EXPECT_EQ(authority->authorityCertIssuer, nullptr);
    free_AUTHORITY_KEYID(authority);
    free_SUBJECT_KEYID(subject);
    EXPECT_EQ(create_AUTHORITY_KEYID(certificate.get(), 0), nullptr);
    EXPECT_EQ(create_AUTHORITY_KEYID(certificate.get(), 4), nullptr);
    EXPECT_EQ(create_AUTHORITY_KEYID(nullptr, TLX_KEYID_KEY), nullptr);
    EXPECT_EQ(create_SUBJECT_KEYID(nullptr), nullptr);
    sweep_failing_allocations([&] {
        AUTHORITY_KEYID *record = create_AUTHORITY_KEYID(certificate.get(), 3);
        const bool done = record != nullptr;
        free_AUTHORITY_KEYID(record);
        return done;
    });
}

TEST(Extensions, LibcryptoReadsWhatWeWrite) {
    struct Case {
        const char *dotted, *type, *value, *expected;
    };
    // Records decoded from values in another form than DER, or that the openssl command does not make.
    const Case cases[] = {
        {"2.5.29.19", "BASIC_CONSTRAINTS", "30{01:00}", "CA:FALSE"},
        {"2.5.29.36", "POLICY_CONSTRAINTS", "30{A0{02:05}}", "Require Explicit Policy:5"},
        {"2.5.29.15", "KEY_USAGE", "03:00A000", "Digital Signature, Key Encipherment"},
        {"2.5.29.28", "issuing_DIST_POINT", "30{81:01 82:00}", "Only User Certificates"},
        {"2.5.29.17", "GENERAL_NAMES", "30{A5{30{A1{0C:41}}}}", "EdiPartyName:<unsupported>"},
        {"2.5.29.17", "GENERAL_NAMES", "30{A3{30{61{13:4B52}} 30{}}}", "X400Name:<unsupported>"},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(std::string(c.type) + " " + c.value);
        const LeakCheck leaks;
        const ExtensionType *type = type_of_extension(c.dotted);
        ASSERT_NE(type, nullptr);
        void *record = nullptr;
        ASSERT_EQ(type->decode(der_node(c.value).get(), &record), 0U);
        std::uint8_t *octets = nullptr;
        const std::uint32_t size = writeDER_to_Binary(record, type->encode, &octets);
        ASSERT_NE(size, 0xFFFFFFFFU);
        const std::string printed = openssl::extension_text(c.dotted, {octets, octets + size});
        EXPECT_NE(printed.find(c.expected), std::string::npos) << "printed: " << printed;
        tlx_free(octets);
        type->free(record);
    }
}

TEST(Extensions, FoundDecodedAndMade) {
    const LeakCheck leaks;
    const ASN1_DECODER decoder = TLX_DECODER(Seq_to_BASIC_CONSTRAINTS);
    const ASN1_ENCODER encoder = TLX_ENCODER(BASIC_CONSTRAINTS_to_Seq);
    const String oid = string_of(TLX_TAG_OBJECT_IDENTIFIER, "2.5.29.19");
    const String other = string_of(TLX_TAG_OBJECT_IDENTIFIER, "2.5.29.15");
    BASIC_CONSTRAINTS constraints = {0xFF, nullptr};
    X509_EXTENSION *extension =
        create_X509_EXTENSION_record_by_OID(nullptr, oid.get(), 1, &constraints, encoder);
    ASSERT_NE(extension, nullptr);
    EXPECT_EQ(text_of(extension->data), "type 4 extra 0: 30 03 01 01 FF");
    X509_EXTENSIONS *list = new_X509_EXTENSIONS();
    ASSERT_EQ(add_X509_EXTENSION(list, extension, -1), 0U);

    // A given extension is filled, and left alone on failure.
    constraints.cA = 0;
    X509_EXTENSION *const before = extension;
    EXPECT_EQ(create_X509_EXTENSION_record_by_OID_index(&extension, 87, 0, &constraints, encoder), before);
    EXPECT_EQ(text_of(extension->data), "type 4 extra 0: 30 03 01 01 00");
    EXPECT_EQ(extension->critical, 0);
    const GENERAL_NAME empty = {};
    EXPECT_EQ(create_X509_EXTENSION_record_by_OID(&extension, oid.get(), 1, &empty,
                                                  TLX_ENCODER(GENERAL_NAME_to_Seq)),
              nullptr);
    EXPECT_EQ(text_of(extension->data), "type 4 extra 0: 30 03 01 01 00");
    EXPECT_EQ(create_X509_EXTENSION_record_by_OID(nullptr, nullptr, 0, &constraints, encoder), nullptr);
    EXPECT_EQ(create_X509_EXTENSION_record_by_OID_index(nullptr, 0, 0, &constraints, encoder), nullptr);
    EXPECT_EQ(create_X509_EXTENSION_record_by_OID(nullptr, oid.get(), 0, nullptr, encoder), nullptr);

    void *record = nullptr;
    EXPECT_EQ(decode_X509_EXTENSION_by_OID_index(list, 87, decoder, &record), 0U);
    EXPECT_EQ(static_cast<BASIC_CONSTRAINTS *>(record)->cA, 0xFF);
    free_BASIC_CONSTRAINTS(static_cast<BASIC_CONSTRAINTS *>(record));
    record = nullptr;
    EXPECT_EQ(decode_X509_EXTENSION_by_OID(list, other.get(), decoder, &record), 0x473F0047U);
    EXPECT_EQ(decode_X509_EXTENSION_by_OID(nullptr, oid.get(), decoder, &record), 0x473F0047U);
    EXPECT_EQ(decode_X509_EXTENSION_by_OID_index(list, 0, decoder, &record), 0x473F0047U);
    EXPECT_EQ(decode_X509_EXTENSION_by_OID(list, nullptr, decoder, &record), 0x473F0049U);
    EXPECT_EQ(decode_X509_EXTENSION_by_OID(list, oid.get(), nullptr, &record), 0x473F0049U);
    EXPECT_EQ(decode_X509_EXTENSION_by_OID_index(list, 87, decoder, nullptr), 0x473F0049U);
    EXPECT_EQ(decode_X509_EXTENSION(nullptr, decoder, &record), 0x473E0049U);

    struct Case {
        const char *value;
        std::uint32_t status;
    };
    for (const Case &c :
         {Case{"30", 0x473E004F}, Case{"30 05 01 01 FF", 0x473E004F}, Case{"30 03 01 01 FF 00", 0x473E004F},
          Case{"", 0x473E004F}, Case{"30 00", 0x47230104}}) {
        const String value = string_of(TLX_TAG_OCTET_STRING, hex(c.value));
        ASSERT_EQ(set_X509_EXTENSION_data(extension, value.get()), 0U);
        EXPECT_EQ(decode_X509_EXTENSION(extension, decoder, &record), c.status) << c.value;
        EXPECT_EQ(record, nullptr);
    }

    sweep_failing_allocations([&] {
        void *made = nullptr;
        const std::uint32_t status = decode_X509_EXTENSION_by_OID(list, oid.get(), decoder, &made);
        EXPECT_TRUE(status == 0 || status == 0x473E003C || status == 0x47230104) << std::hex << status;
        free_BASIC_CONSTRAINTS(static_cast<BASIC_CONSTRAINTS *>(made));
        return status == 0;
    });
    sweep_failing_allocations([&] {
        X509_EXTENSION *made =
            create_X509_EXTENSION_record_by_OID_index(nullptr, 87, 1, &constraints, encoder);
        const bool done = made != nullptr;
        free_X509_EXTENSION(made);
        return done;
    });
    free_X509_EXTENSIONS(list);
    free_X509_EXTENSION(extension);
}

}  // namespace
}  // namespace tlx_test
