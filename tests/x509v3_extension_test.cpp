// Real certificates and their extensions, and extensions that libcrypto reads.
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

/// What the openssl command prints of a certificate with the extension, which we decode and encode.
std::string printed(const Row &row) {
    const CommandFolder folder;
    const OwnedCert certificate = certificate_of(read_file("user.der"));
    const RecordType &type = *type_of_extension(row[1]);
    void *record = nullptr;
    EXPECT_EQ(type.decode(der_node(row[2]).get(), &record), 0U);
    const Held<free_X509_EXTENSIONS> list(new_X509_EXTENSIONS());
    const Extension extension(
        create_X509_EXTENSION_record_by_OID(nullptr, oid_of(row[1].c_str()).get(), 0, record, type.encode));
    EXPECT_EQ(add_X509_EXTENSION(list.get(), extension.get(), 0), 0U);
    EXPECT_EQ(set_X509_extensions(certificate.get(), list.get()), 0U);
    type.free(record);
    (void)writeDER_to_FILE(certificate.get(), TLX_ENCODER(X509_CERT_to_Seq), folder.path("made.der").c_str());
    const std::string text = folder.run("openssl x509 -inform DER -in made.der -noout -text");
    return text.find(row[3]) != std::string::npos ? row[3] : text;
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
    expect_rows("x509v3_extension.txt", {{"printed", {printed}}, {"value", {value}}});
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
    sweep_failing_allocations([&] {
        void *made = nullptr;
        const std::uint32_t status = decode_X509_EXTENSION_by_OID(list.get(), oid.get(), decoder, &made);
        EXPECT_TRUE(Statuses({0, 0x473E003C, 0x47230104}).contains(status)) << std::hex << status;
        free_BASIC_CONSTRAINTS(static_cast<BASIC_CONSTRAINTS *>(made));
        return status == 0;
    });
}

}  // namespace
}  // namespace tlx_test
