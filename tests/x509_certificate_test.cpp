// Members of certificates, digests, times, and certificates from files.
#include <gtest/gtest.h>
#include <tlxpki.h>

#include <algorithm>
#include <functional>

#include "support/openssl_peer.hpp"
#include "support/x509_files.hpp"
#include "support/x509_records.hpp"

namespace tlx_test {
namespace {

using Certificate = Held<free_X509_CERT>;

/// A certificate with a serial number and what follows its key.
std::string text_with(const std::string &serial = "05",
                      const std::string &rest = "A3{30{30{06:551D13 01:FF 04:3000}}}") {
    return "30{30{A0{02:02} 02:" + serial +
           " 30{06:2A0304} 30{31{30{06:550403 0C:41}}}"
           " 30{17:3235303130323033303430355A 18:32303530303130323033303430355A}"
           " 30{31{30{06:550403 13:42}}} 30{30{06:2B6570} 03:0001} " +
           rest + "} 30{06:2A0304} 03:00AABB}";
}
const std::string kWhole = text_with();

Certificate cert_of(const std::string &text) {
    return Certificate(decoded(Seq_to_X509_CERT, text));
}

TEST(Certificate, MissingMembersInTheirOrder) {
    const LeakCheck leaks;
    const Certificate from_owner = cert_of(kWhole);
    const Certificate owner(new_X509_CERT());
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
    sweep_failing_allocations([&] {
        const Certificate made(new_X509_CERT());
        return made != nullptr && set_X509_serial(made.get(), get_X509_serial(from)) == 0 &&
               set_X509_issuer(made.get(), get_X509_issuer(from)) == 0 &&
               set_X509_notAfter(made.get(), get_X509_notAfter(from)) == 0 &&
               set_X509_pub_key(made.get(), get_X509_SPKI(from)) == 0 &&
               set_X509_extensions(made.get(), get_X509_extensions(from)) == 0 &&
               set_X509_sig_value(made.get(), get_X509_sig_value(from)) == 0;
    });
}

TEST(Certificate, AFailedDecodingFillsInParts) {
    const LeakCheck leaks;
    const Certificate cert = cert_of(kWhole);
    X509_CERT *out = cert.get();
    EXPECT_EQ(Seq_to_X509_CERT(der_node("30{05:}").get(), &out), 1U);
    EXPECT_EQ(encoded(X509_CERT_to_Seq, out), hex_of_text(kWhole)) << "nothing was filled";
    std::string other = text_with("06");
    other.replace(other.rfind("03:00AABB"), 9, "03:");
    EXPECT_EQ(Seq_to_X509_CERT(der_node(other).get(), &out), 0x460F0104U);
    EXPECT_EQ(encoded(X509_CERT_to_Seq, out), hex_of_text(text_with("06"))) << "the signed part was";
    EXPECT_EQ(Seq_to_X509_CERT(der_node("30{30{}}").get(), &out), 0x4611002BU);
    EXPECT_EQ(out, cert.get());
    EXPECT_EQ(out->tbsCertificate, nullptr);
    EXPECT_EQ(get_X509_version(out), 0xFFFFFFFFU);
    EXPECT_EQ(get_X509_serial(out), nullptr);
    EXPECT_EQ(encoded(X509_CERT_to_Seq, out), "status 46100103");
    EXPECT_EQ(set_X509_version(out, 2), 0U) << "a to-be-signed part is made";
    EXPECT_EQ(Seq_to_X509_CERT(der_node(text_with("05", "")).get(), &out), 0U);
    EXPECT_EQ(get_X509_extensions(out), nullptr);
}

TEST(Certificate, Members) {
    const LeakCheck leaks;
    const Certificate owner = cert_of(kWhole);
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
    const Certificate empty(new_X509_CERT());
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
    EXPECT_EQ(encoded(X509_CERT_to_Seq, cert), hex_of_text(text_with("05", "")));
}

TEST(Certificate, DigestAndComparison) {
    const LeakCheck leaks;
    const Certificate cert = cert_of(kWhole);
    Octets digest(32);
    ASSERT_EQ(X509_CERT_digest(cert.get(), TLX_DIGEST_SHA256, digest.data()), 32U);
    EXPECT_EQ(digest, openssl::digest("SHA256", der(kWhole)));
    EXPECT_EQ(Statuses({X509_CERT_digest(cert.get(), 0x05000900, digest.data()),
                        X509_CERT_digest(cert.get(), TLX_DIGEST_SHA256, nullptr),
                        X509_CERT_digest(nullptr, TLX_DIGEST_SHA256, digest.data())}),
              Statuses{0xFFFFFFFF});
    const Certificate empty(new_X509_CERT());
    EXPECT_EQ(cmp_X509_CERT(cert.get(), cert_of(kWhole).get()), 0);
    EXPECT_EQ(cmp_X509_CERT(cert.get(), cert_of(text_with("06")).get()), -1);
    EXPECT_EQ(cmp_X509_CERT(cert.get(), empty.get()), 1);
    EXPECT_EQ(cmp_X509_CERT(nullptr, cert.get()), 1);
    sweep_failing_allocations([&] {
        const std::int32_t result = cmp_X509_CERT(cert.get(), cert.get());
        EXPECT_TRUE(result == 0 || result == 1);
        return result == 0;
    });
}

TEST(Certificate, Times) {
    const LeakCheck leaks;
    const struct {
        std::int32_t year;
        std::uint32_t form;
        const char *text;
    } cases[] = {{1949, 1, "19490630235958Z"},
                 {1950, 0, "500630235958Z"},
                 {2049, 0, "490630235958Z"},
                 {2050, 1, "20500630235958Z"}};
    const Held<free_X509_TIME> time(new_X509_TIME());
    for (const auto &c : cases) {
        const ASN1_TIME calendar = {58, 59, 23, 30, 5, c.year - 1900, 0, 0, 0};
        ASSERT_EQ(set_X509_TIME(time.get(), &calendar), 0U);
        EXPECT_EQ(time->form, c.form) << c.text;
        EXPECT_EQ(octets(time->time), c.text);
        const Held<free_ASN1_TIME> read(X509_TIME_to_ASN1_TIME(time.get()));
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
        EXPECT_EQ((Held<free_ASN1_TIME>(X509_TIME_to_ASN1_TIME(&from)) != nullptr), good) << text;
    }
    clean_X509_TIME(time.get());
    EXPECT_EQ(X509_TIME_to_ASN1_TIME(time.get()), nullptr);
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

}  // namespace
}  // namespace tlx_test
