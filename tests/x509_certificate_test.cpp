#include <gtest/gtest.h>
#include <tlxpki.h>

#include <functional>

#include "support/openssl_peer.hpp"
#include "support/x509_files.hpp"
#include "support/x509_records.hpp"

namespace tlx_test {
namespace {

const RecordType kTbs = TLX_RECORD_TYPE(X509_TBS_CERT, 0x46110049, 0x46120049);
const RecordType kCert = TLX_RECORD_TYPE(X509_CERT, 0x460F0049, 0x46100049);
const RecordType kTime = TLX_RECORD_TYPE(X509_TIME, 0x462A0049, 0x46290049);
const RecordType kValidity = TLX_RECORD_TYPE(X509_VALIDITY, 0x461A0049, 0x46190049);

/// The members of a to-be-signed part, each of which a test may replace.
enum Part { kVersion, kSerial, kSignature, kIssuer, kPeriod, kSubject, kKey, kRest, kNothing };

std::string tbs_with(Part replaced = kNothing, const std::string &replacement = "") {
    const char *const parts[] = {"A0{02:02}",
                                 "02:05",
                                 "30{06:2A0304}",
                                 "30{31{30{06:550403 0C:41}}}",
                                 "30{17:3235303130323033303430355A 18:32303530303130323033303430355A}",
                                 "30{31{30{06:550403 13:42}}}",
                                 "30{30{06:2B6570} 03:0001}",
                                 "A3{30{30{06:551D13 01:FF 04:3000}}}"};
    std::string text = "30{";
    for (int i = kVersion; i <= kRest; ++i)
        text += (i == replaced ? replacement : parts[i]) + " ";
    return text + "}";
}

std::string cert_of(const std::string &tbs, const std::string &others = "30{06:2A0304} 03:00AABB") {
    return "30{" + tbs + " " + others + "}";
}
const std::string kWhole = cert_of(tbs_with());

OwnedCert decoded_cert(const std::string &text) {
    return OwnedCert(decoded(Seq_to_X509_CERT, text));
}

TEST(TbsCertificate, EncodingsComeBack) {
    const std::pair<Part, const char *> cases[] = {
        {kNothing, ""},
        {kVersion, ""},
        {kVersion, "A0{02:01}"},
        {kVersion, "A0{02:C8}"},  // one octet, whatever its top bit
        {kSerial, "02:00"},
        {kSerial, "02:0080"},
        {kSerial, "02:7FFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFF"},
        {kIssuer, "30{}"},
        {kPeriod, "30{18:30 17:}"},  // the texts are not looked at
        {kRest, ""},
        {kRest, "A3{30{}}"},
        {kSignature, "30{06:2A864886F70D01010B 05:}"},  // sha256WithRSAEncryption
        {kSignature, "30{06:2A864886F70D010105 05:}"},  // sha1WithRSAEncryption
        {kSignature, "30{06:2B0E03021D 05:}"},          // RSA-SHA1-2
        {kSignature, "30{06:2A864886F70D01010A}"},      // id-RSASSA-PSS
        {kSignature, "30{06:2A8648CE3D040302}"},        // ecdsa-with-SHA256
        {kSignature, "30{06:2A831A8C9A440116}"},        // HAS160withKCDSA1
    };
    for (const auto &[part, text] : cases) {
        expect_come_back(kTbs, {tbs_with(part, text)});
        expect_come_back(kCert, {cert_of(tbs_with(part, text))});
    }
}

TEST(TbsCertificate, WhatIsWrittenAnew) {
    const struct {
        Part part;
        const char *input, *output;
    } cases[] = {
        {kVersion, "A0{02:00}", ""},
        {kVersion, "A0{02:}", ""},
        {kVersion, "A0{02:01 02:02}", "A0{02:01}"},
        {kVersion, "A0{82:01}", "A0{02:01}"},
        {kSerial, "02:000005", "02:05"},
        {kSerial, "02:FF", "02:00FF"},  // numbers have no sign
        {kSerial, "82:05", "02:05"},
        {kSignature, "30{06:2A0304 05:}", "30{06:2A0304}"},
        {kSignature, "30{06:2A864886F70D01010B}", "30{06:2A864886F70D01010B 05:}"},
        {kSignature, "30{06:2A864886F70D01010A 30{A0{30{06:2A03}}}}", "30{06:2A864886F70D01010A}"},
        {kPeriod, "30{97:41 98:42}", "30{17:41 17:42}"},
        {kPeriod, "30{57:41 38:42 00:}", "30{17:41 18:42}"},
        // The tag number of the extensions is looked at in four bits; what follows them is not looked at.
        {kRest, "83{30{}}", "A3{30{}}"},
        {kRest, "B3{30{} 05:}", "A3{30{}}"},
        {kRest, "A3{30{}} 81:0001 A3{05:}", "A3{30{}}"},
        {kRest, "00:", ""},  // end-of-contents octets are no child
    };
    for (const auto &c : cases)
        expect_reencodes(kTbs, tbs_with(c.part, c.input), tbs_with(c.part, c.output));
}

TEST(TbsCertificate, RefusedEncodings) {
    const std::pair<Part, Texts> cases[] = {
        {kVersion, {"A0{02:0102}", "A0{02:0002}", "A0{}", "A0{05:}", "A0:0201", "80:02"}},
        {kSerial, {"", "02:", "04:05"}},
        {kSignature, {"30{}", "30{05:}", "06:2A0304"}},
        {kIssuer, {"31{}", "30{31{}}"}},
        {kPeriod,
         {"30{17:41}", "30{17:41 17:42 17:43}", "30{17:41 16:42}", "30{00: 17:41 17:42}", "31{17:41 17:42}"}},
        {kSubject, {"05:", "30{05:}"}},
        {kKey, {"30{}", "03:0001"}},
        {kRest, {"81:0001 A3{30{}}", "82:0001 A3{30{}}", "A1{03:0001}"}},  // unique identifiers
        {kRest, {"A3{}", "A3{31{}}", "A3{30{05:}}", "23{30{}}", "E3{30{}}", "30{}", "05:", "00: A3{30{}}"}},
    };
    for (const auto &[part, texts] : cases) {
        for (const std::string &text : texts) {
            expect_refused(kTbs, 0x46110104, {tbs_with(part, text)});
            expect_refused(kCert, 0x46110104, {cert_of(tbs_with(part, text))});
        }
    }
    expect_refused(kTbs, 0x46110104, {"30{02:05 30{06:2A0304} 30{} 30{17:41 17:42} 30{} 05:}"});
    // The last one hides all children from the count.
    expect_refused(kTbs, 0x4611002B, {"30{}", "30{A0{02:02} 02:05 30{} 30{} 30{}}", tbs_with(kRest, "07:")});
    expect_null_arguments_refused(kTbs);

    // An element that ends beyond its parent is no end of the members.
    Octets broken = der(tbs_with(kRest, "A3{30{}}"));
    broken[broken.size() - 3] = 0x7F;
    X509_TBS_CERT *tbs = nullptr;
    const Node node(decodeToDERSequence_n(broken.data(), static_cast<std::uint32_t>(broken.size())));
    EXPECT_EQ(Seq_to_X509_TBS_CERT(node.get(), &tbs), 0x46110104U);
}

TEST(TbsCertificate, AFailedDecodingFreesTheCallersRecord) {
    const LeakCheck leaks;
    X509_TBS_CERT *tbs = nullptr;
    for (const char *text : {"30{}", "30{02:05 30{} 30{} 30{} 30{} 30{}}"}) {
        ASSERT_EQ(Seq_to_X509_TBS_CERT(der_node(tbs_with()).get(), &tbs), 0U);
        EXPECT_NE(Seq_to_X509_TBS_CERT(der_node(text).get(), &tbs), 0U);
        EXPECT_EQ(tbs, nullptr);
    }
    // Filling a record drops what the new encoding does not have.
    EXPECT_EQ(Seq_to_X509_TBS_CERT(der_node(tbs_with()).get(), &tbs), 0U);
    EXPECT_EQ(Seq_to_X509_TBS_CERT(nullptr, &tbs), 0x46110049U);
    EXPECT_EQ(Seq_to_X509_TBS_CERT(der_node(tbs_with(kRest)).get(), &tbs), 0U);
    EXPECT_EQ(tbs->extensions, nullptr);
    free_X509_TBS_CERT(tbs);
}

TEST(TbsCertificate, MissingMembersInTheirOrder) {
    const LeakCheck leaks;
    const OwnedCert from_owner = decoded_cert(kWhole);
    const OwnedCert owner(new_X509_CERT());
    const X509_CERT *from = from_owner.get();
    X509_CERT *cert = owner.get();
    X509_TBS_CERT *tbs = cert->tbsCertificate;
    tbs->signature = new_OBJECT_IDENTIFIER();  // an empty one is none
    tbs->validity = new_X509_VALIDITY();
    const std::pair<const char *, std::function<std::uint32_t()>> steps[] = {
        {"status 4612010A", [&] { return set_X509_serial(cert, get_X509_serial(from)); }},
        {"status 46120108", [&] { return set_X509_signature(cert, get_X509_signature(from)); }},
        {"status 46120105", [&] { return set_X509_issuer(cert, get_X509_issuer(from)); }},
        {"status 46120106", [&] { return set_X509_subject(cert, get_X509_subject(from)); }},
        {"status 46120109", [&] { return set_X509_pub_key(cert, get_X509_SPKI(from)); }},
        {"status 46120103", [&] { return set_X509_notBefore(cert, get_X509_notBefore(from)); }},
        {"status 46120103", [&] { return set_X509_notAfter(cert, get_X509_notAfter(from)); }},
    };
    for (const auto &[before, set] : steps) {
        EXPECT_EQ(encoded(X509_TBS_CERT_to_Seq, tbs), before);
        EXPECT_EQ(set(), 0U) << before;
    }
    EXPECT_EQ(encoded(X509_CERT_to_Seq, cert), "status 46100103");
    EXPECT_EQ(Statuses({set_X509_extensions(cert, get_X509_extensions(from)), set_X509_version(cert, 2),
                        set_X509_sig_alg(cert, get_X509_sig_alg(from)),
                        set_X509_sig_value(cert, get_X509_sig_value(from))}),
              Statuses{0});
    EXPECT_EQ(encoded(X509_CERT_to_Seq, cert), hex_of_text(kWhole));
    tbs->validity->notBefore.form = 2;
    EXPECT_EQ(encoded(X509_TBS_CERT_to_Seq, tbs), "status 46120103");
    free_X509_VALIDITY(std::exchange(tbs->validity, nullptr));
    EXPECT_EQ(encoded(X509_TBS_CERT_to_Seq, tbs), "status 46120107");
}

TEST(Certificate, StatusesOfTheDecoder) {
    expect_refused(kCert, 1, {"30{}", "30{05:}", "30:3005"});
    expect_refused(kCert, 0x4611002B, {"30{30{}}"});
    for (const char *others : {"", "30{06:2A03}", "06:2A03 03:00AA", "30{} 03:00AA", "30{05:} 03:00AA",
                               "30{06:} 03:00AA", "30{06:2A03} 04:00AA", "30{06:2A03} 03:"}) {
        expect_refused(kCert, 0x460F0104, {cert_of(tbs_with(), others)});
    }
    expect_null_arguments_refused(kCert);
    // Parameters of the algorithm beside the signature, and elements after the signature, are passed over.
    expect_reencodes(kCert, cert_of(tbs_with(), "30{06:2A0304 05: 05:} 03:00AABB 05:"), kWhole);
    expect_reencodes(kCert, cert_of(tbs_with(), "30{06:2A864886F70D010104} 03:00"),
                     cert_of(tbs_with(), "30{06:2A864886F70D010104 05:} 03:00"));
    expect_come_back(kCert, {cert_of(tbs_with(), "30{06:2A0304} 03:07AA80")});
}

TEST(Certificate, AFailedDecodingAndTheCallersCertificate) {
    const LeakCheck leaks;
    const OwnedCert cert = decoded_cert(kWhole);
    X509_CERT *out = cert.get();
    EXPECT_EQ(Seq_to_X509_CERT(der_node("30{05:}").get(), &out), 1U);
    EXPECT_EQ(encoded(X509_CERT_to_Seq, out), hex_of_text(kWhole)) << "nothing was filled";
    const std::string other = tbs_with(kSerial, "02:06");
    EXPECT_EQ(Seq_to_X509_CERT(der_node(cert_of(other, "30{06:2A0304} 03:")).get(), &out), 0x460F0104U);
    EXPECT_EQ(encoded(X509_CERT_to_Seq, out), hex_of_text(cert_of(other))) << "the signed part was";
    EXPECT_EQ(Seq_to_X509_CERT(der_node("30{30{}}").get(), &out), 0x4611002BU);
    EXPECT_EQ(out, cert.get());
    EXPECT_EQ(out->tbsCertificate, nullptr);
    EXPECT_EQ(get_X509_version(out), 0xFFFFFFFFU);
    EXPECT_EQ(get_X509_serial(out), nullptr);
    EXPECT_EQ(encoded(X509_CERT_to_Seq, out), "status 46100103");
    EXPECT_EQ(set_X509_version(out, 2), 0U) << "a to-be-signed part is made";
    EXPECT_EQ(Seq_to_X509_CERT(der_node(kWhole).get(), &out), 0U) << "it can be filled again";
    EXPECT_EQ(encoded(X509_CERT_to_Seq, out), hex_of_text(kWhole));
}

TEST(Certificate, Members) {
    const LeakCheck leaks;
    const OwnedCert owner = decoded_cert(kWhole);
    X509_CERT *cert = owner.get();
    EXPECT_EQ(get_X509_version(cert), 2U);
    EXPECT_EQ(get_BIGINT_word(get_X509_serial(cert)), 5U);
    EXPECT_EQ(octets(get_X509_signature(cert)), "1.2.3.4");
    EXPECT_EQ(octets(get_X509_sig_alg(cert)), "1.2.3.4");
    EXPECT_EQ(text_of(get_X509_sig_value(cert)), "type 3 extra 0: AA BB");
    EXPECT_EQ(encoded(X509_NAME_to_Seq, get_X509_issuer(cert)), hex_of_text("30{31{30{06:550403 0C:41}}}"));
    EXPECT_EQ(encoded(X509_NAME_to_Seq, get_X509_subject(cert)), hex_of_text("30{31{30{06:550403 13:42}}}"));
    EXPECT_EQ(get_X509_notBefore(cert)->form, 0U);
    EXPECT_EQ(text_of(get_X509_notBefore(cert)->time),
              "type 23 extra 1: 32 35 30 31 30 32 30 33 30 34 30 35 5A");
    EXPECT_EQ(get_X509_notAfter(cert)->form, 1U);
    EXPECT_EQ(octets(get_X509_notAfter(cert)->time), "20500102030405Z");
    const OwnedCert empty(new_X509_CERT());
    EXPECT_EQ(get_X509_version(empty.get()), 0U);
    EXPECT_EQ(get_X509_notBefore(empty.get()), nullptr);
    EXPECT_EQ(get_X509_issuer(nullptr), nullptr);

    const X509_TIME no_text = {};
    const StringRecord no_leap_year = make_string(23, "290229000000Z");
    const X509_TIME no_date = {0, no_leap_year.get()};
    EXPECT_EQ(
        Statuses({set_X509_serial(cert, nullptr), set_X509_signature(cert, nullptr),
                  set_X509_subject(cert, nullptr), set_X509_notBefore(cert, nullptr),
                  set_X509_notAfter(cert, &no_text), set_X509_notAfter(cert, &no_date),
                  set_X509_notBefore(cert, &no_date), set_X509_pub_key(cert, nullptr),
                  set_X509_sig_alg(cert, nullptr), set_X509_sig_value(nullptr, get_X509_sig_value(cert)),
                  set_X509_version(nullptr, 0), set_X509_extensions(nullptr, nullptr)}),
        Statuses{1});
    EXPECT_EQ(encoded(X509_CERT_to_Seq, cert), hex_of_text(kWhole)) << "unchanged";
    EXPECT_EQ(set_X509_extensions(cert, nullptr), 0U);
    EXPECT_EQ(encoded(X509_CERT_to_Seq, cert), hex_of_text(cert_of(tbs_with(kRest))));
}

TEST(Certificate, DigestAndComparison) {
    const LeakCheck leaks;
    const OwnedCert cert = decoded_cert(kWhole);
    Octets digest(32);
    ASSERT_EQ(X509_CERT_digest(cert.get(), TLX_DIGEST_SHA256, digest.data()), 32U);
    EXPECT_EQ(digest, openssl::digest("SHA256", der(kWhole)));
    EXPECT_EQ(X509_CERT_digest(cert.get(), 0x05000900, digest.data()), 0xFFFFFFFFU);
    EXPECT_EQ(X509_CERT_digest(cert.get(), TLX_DIGEST_SHA256, nullptr), 0xFFFFFFFFU);
    EXPECT_EQ(X509_CERT_digest(nullptr, TLX_DIGEST_SHA256, digest.data()), 0xFFFFFFFFU);

    const OwnedCert empty(new_X509_CERT());
    EXPECT_EQ(cmp_X509_CERT(cert.get(), decoded_cert(kWhole).get()), 0);
    EXPECT_EQ(cmp_X509_CERT(cert.get(), decoded_cert(cert_of(tbs_with(kSerial, "02:06"))).get()), -1);
    EXPECT_EQ(cmp_X509_CERT(cert.get(), empty.get()), 1);
    EXPECT_EQ(cmp_X509_CERT(nullptr, cert.get()), 1);
}

TEST(Certificate, Times) {
    expect_come_back(kTime, {"17:3235303130323033303430355A", "18:32303530303130323033303430355A", "17:"});
    expect_come_back(kValidity, {"30{18:41 17:42}"});
    expect_refused(kTime, 0x462A0104, {"16:41"});
    expect_refused(kValidity, 0x461A002B, {"30{17:41}"});
    expect_refused(kValidity, 0x461A0104, {"30{17:41 05:}"});
    expect_null_arguments_refused(kTime);
    expect_null_arguments_refused(kValidity);

    const LeakCheck leaks;
    const struct {
        std::int32_t year;
        std::uint32_t form;
        const char *text;
    } cases[] = {{1949, 1, "19490630235958Z"},
                 {1950, 0, "500630235958Z"},
                 {2049, 0, "490630235958Z"},
                 {2050, 1, "20500630235958Z"}};
    const Held<X509_TIME, free_X509_TIME> time(new_X509_TIME());
    for (const auto &c : cases) {
        const ASN1_TIME calendar = {58, 59, 23, 30, 5, c.year - 1900, 0, 0, 0};
        ASSERT_EQ(set_X509_TIME(time.get(), &calendar), 0U);
        EXPECT_EQ(time->form, c.form) << c.text;
        EXPECT_EQ(octets(time->time), c.text);
        const Held<ASN1_TIME, free_ASN1_TIME> read(X509_TIME_to_ASN1_TIME(time.get()));
        EXPECT_EQ(cmp_ASN1_TIME(read.get(), &calendar), 0) << c.text;
    }
    const ASN1_TIME wrong = {60, 0, 0, 1, 0, 100, 0, 0, 0};
    const ASN1_TIME no_leap_year = {0, 0, 0, 29, 1, 129, 0, 0, 0};
    EXPECT_EQ(set_X509_TIME(time.get(), &wrong), 1U);
    EXPECT_EQ(set_X509_TIME(time.get(), &no_leap_year), 1U);
    EXPECT_EQ(set_X509_TIME(time.get(), nullptr), 1U);
    EXPECT_EQ(octets(time->time), "20500630235958Z") << "unchanged";
    const std::pair<const char *, bool> read[] = {
        {"20280229000000Z", true},      {"20290229000000Z", false},
        {"20290431000000+0900", false}, {"20161231235960Z", true},  // a leap second
        {"20291301000000Z", false},     {"2029", false}};
    for (const auto &[text, good] : read) {
        const StringRecord string = make_string(24, text);
        const X509_TIME from = {1, string.get()};
        EXPECT_EQ((Held<ASN1_TIME, free_ASN1_TIME>(X509_TIME_to_ASN1_TIME(&from)) != nullptr), good) << text;
    }
    clean_X509_TIME(time.get());
    EXPECT_EQ(X509_TIME_to_ASN1_TIME(time.get()), nullptr);
    EXPECT_EQ(encoded(X509_TIME_to_Seq, time.get()), "status 46290103");
}

TEST(Certificate, EveryAllocationMayFail) {
    const Node node(decodeToDERSequence(read_file("user.der").data()));
    expect_allocations_may_fail(kCert, node.get(), {0x460F0104, 0x46110104}, {0x46100103, 0x4610003C});
    expect_allocations_may_fail(kTbs, der_node(tbs_with()).get(), {0x46110104}, {0x46120103});
    expect_allocations_may_fail(kValidity, der_node("30{17:41 18:42}").get(), {0x461A0104}, {0x46190103});
    const OwnedCert from = decoded_cert(kWhole);
    sweep_failing_allocations([&] {
        const OwnedCert cert(new_X509_CERT());
        return cert != nullptr && set_X509_serial(cert.get(), get_X509_serial(from.get())) == 0 &&
               set_X509_issuer(cert.get(), get_X509_issuer(from.get())) == 0 &&
               set_X509_notAfter(cert.get(), get_X509_notAfter(from.get())) == 0 &&
               set_X509_pub_key(cert.get(), get_X509_SPKI(from.get())) == 0 &&
               set_X509_extensions(cert.get(), get_X509_extensions(from.get())) == 0 &&
               set_X509_sig_value(cert.get(), get_X509_sig_value(from.get())) == 0;
    });
    sweep_failing_allocations([&] {
        const std::int32_t result = cmp_X509_CERT(from.get(), from.get());
        EXPECT_TRUE(result == 0 || result == 1);
        return result == 0;
    });
}

TEST(CertificateFiles, ComeBack) {
    const struct {
        const char *file;
        std::uint32_t version, kind;
    } cases[] = {{"user.der", 2, 1},
                 {"version1.der", 0, 1},
                 {"ec-p256.der", 2, 3},
                 {"ec-p384.der", 2, 0},
                 {"ed25519.der", 2, 0}};
    for (const auto &c : cases) {
        const LeakCheck leaks;
        const OwnedCert cert = certificate_of(read_file(c.file));
        EXPECT_EQ(encode_certificate(cert.get()), read_file(c.file)) << c.file;
        EXPECT_EQ(get_X509_version(cert.get()), c.version) << c.file;
        const ASYMMETRIC_KEY *key = get_X509_PUBKEY_key(get_X509_SPKI(cert.get()));
        EXPECT_EQ(key == nullptr ? 0 : key->kind, c.kind) << c.file;
    }
    // RSASSA-PSS parameters are lost, twice.
    const Octets original = read_file("pss.der");
    const Octets identifier = hex("06 09 2A 86 48 86 F7 0D 01 01 0A 30");
    const auto at = std::search(original.begin(), original.end(), identifier.begin(), identifier.end());
    ASSERT_NE(at, original.end());
    const std::size_t parameters = 2U + at[static_cast<std::ptrdiff_t>(identifier.size())];
    EXPECT_EQ(encode_certificate(certificate_of(original).get()).size(), original.size() - 2 * parameters);
}

/// Every certificate that Debian trusts decodes, and comes back byte for byte; those with RSA keys verify
/// under their own.
TEST(CertificateFiles, CertificatesOfDebianComeBackAndVerify) {
    if (!std::ifstream(kDebianCertificates)) GTEST_SKIP() << "no ca-certificates here";
    std::uint32_t with_rsa = 0;
    std::uint32_t certificates = 0;
    for (const Octets &original : read_pem_file(kDebianCertificates)) {
        SCOPED_TRACE("certificate " + std::to_string(++certificates));
        const LeakCheck leaks;
        const OwnedCert cert = certificate_of(original);
        ASSERT_NE(cert, nullptr);
        EXPECT_EQ(encode_certificate(cert.get()), original);
        const OwnedCert copy(dup_X509_CERT(cert.get()));
        EXPECT_EQ(encode_certificate(copy.get()), original);
        const X509_PUBKEY *key = get_X509_SPKI(cert.get());
        if (key->key == nullptr || key->key->kind != TLX_KEY_RSA) continue;
        ++with_rsa;
        EXPECT_EQ(verify_SIG_X509_CERT(cert.get(), key), 0U);
    }
    EXPECT_GT(certificates, 100U);
    EXPECT_GT(with_rsa, 80U);
}

}  // namespace
}  // namespace tlx_test
