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

const std::string kExtensions = " A3{30{30{06:551D13 01:FF 04:3000}}}";
const std::string kWhole =
    "30{30{A0{02:02} 02:05 30{06:2A0304} 30{31{30{06:550403 0C:41}}}"
    " 30{17:3235303130323033303430355A 18:32303530303130323033303430355A}"
    " 30{31{30{06:550403 13:42}}} 30{30{06:2B6570} 03:0001}" +
    kExtensions + "} 30{06:2A0304} 03:00AABB}";

/// The certificate above with other text somewhere.
std::string text_with(const std::string &from, const std::string &to) {
    return std::string(kWhole).replace(kWhole.find(from), from.size(), to);
}
const std::string kOtherSerial = text_with("02:05", "02:06");

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
        {"4612010A", [&] { return set_X509_serial(cert, get_X509_serial(from)); }},
        {"46120108", [&] { return set_X509_signature(cert, get_X509_signature(from)); }},
        {"46120105", [&] { return set_X509_issuer(cert, get_X509_issuer(from)); }},
        {"46120106", [&] { return set_X509_subject(cert, get_X509_subject(from)); }},
        {"46120109", [&] { return set_X509_pub_key(cert, get_X509_SPKI(from)); }},
        {"46120103", [&] { return set_X509_notBefore(cert, get_X509_notBefore(from)); }},
        {"46120103", [&] { return set_X509_notAfter(cert, get_X509_notAfter(from)); }},
    };
    for (const auto &[before, set] : steps) {
        EXPECT_EQ(encoded(X509_TBS_CERT_to_Seq, tbs), before);
        EXPECT_EQ(set(), 0U) << before;
        sweep_failing_allocations([&again = set] { return again() == 0; });
    }
    EXPECT_EQ(encoded(X509_CERT_to_Seq, cert), "46100103");
    EXPECT_EQ(Statuses({set_X509_extensions(cert, get_X509_extensions(from)), set_X509_version(cert, 2),
                        set_X509_sig_alg(cert, get_X509_sig_alg(from)),
                        set_X509_sig_value(cert, get_X509_sig_value(from))}),
              Statuses{0});
    EXPECT_EQ(encoded(X509_CERT_to_Seq, cert), hex_of_text(kWhole));
    sweep_failing_allocations([&] { return set_X509_extensions(cert, get_X509_extensions(from)) == 0; });
    sweep_failing_allocations([&] { return set_X509_sig_value(cert, get_X509_sig_value(from)) == 0; });
    tbs->validity->notBefore.form = 2;
    EXPECT_EQ(encoded(X509_TBS_CERT_to_Seq, tbs), "46120103");
    free_X509_VALIDITY(std::exchange(tbs->validity, nullptr));
    EXPECT_EQ(encoded(X509_TBS_CERT_to_Seq, tbs), "46120107");
}

TEST(Certificate, AFailedDecodingFillsInParts) {
    const LeakCheck leaks;
    const Certificate cert = cert_of(kWhole);
    X509_CERT *out = cert.get();
    EXPECT_EQ(Seq_to_X509_CERT(der_node("30{05:}").get(), &out), 1U);
    EXPECT_EQ(encoded(X509_CERT_to_Seq, out), hex_of_text(kWhole)) << "nothing was filled";
    const std::string cut = kOtherSerial.substr(0, kOtherSerial.size() - 7) + "}";
    EXPECT_EQ(Seq_to_X509_CERT(der_node(cut).get(), &out), 0x460F0104U);
    EXPECT_EQ(encoded(X509_CERT_to_Seq, out), hex_of_text(kOtherSerial)) << "the signed part was";
    EXPECT_EQ(Seq_to_X509_CERT(der_node("30{30{}}").get(), &out), 0x4611002BU);
    EXPECT_EQ(out, cert.get());
    EXPECT_EQ(out->tbsCertificate, nullptr);
    EXPECT_EQ(get_X509_version(out), 0xFFFFFFFFU);
    EXPECT_EQ(get_X509_serial(out), nullptr);
    EXPECT_EQ(encoded(X509_CERT_to_Seq, out), "46100103");
    EXPECT_EQ(set_X509_version(out, 2), 0U) << "a to-be-signed part is made";
    EXPECT_EQ(Seq_to_X509_CERT(der_node(text_with(kExtensions, "")).get(), &out), 0U);
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
    const String no_leap_year = string_of(23, "290229000000Z");
    const X509_TIME no_date = {0, no_leap_year.get()};
    EXPECT_EQ(Statuses({set_X509_notAfter(cert, &no_text), set_X509_notAfter(cert, &no_date),
                        set_X509_notBefore(cert, &no_date)}),
              Statuses{1});
    expect_refuses_null(1, set_X509_serial, cert, get_X509_serial(cert));
    expect_refuses_null(1, set_X509_signature, cert, get_X509_signature(cert));
    expect_refuses_null(1, set_X509_subject, cert, get_X509_subject(cert));
    expect_refuses_null(1, set_X509_notBefore, cert, get_X509_notBefore(cert));
    expect_refuses_null(1, set_X509_pub_key, cert, get_X509_SPKI(cert));
    expect_refuses_null(1, set_X509_sig_alg, cert, get_X509_sig_alg(cert));
    expect_refuses_null(1, set_X509_sig_value, cert, get_X509_sig_value(cert));
    expect_refuses_null(1, set_X509_version, cert, 0);
    expect_refuses_null(1, set_X509_extensions, cert, nullptr);
    EXPECT_EQ(encoded(X509_CERT_to_Seq, cert), hex_of_text(kWhole)) << "unchanged";
    EXPECT_EQ(set_X509_extensions(cert, nullptr), 0U);
    EXPECT_EQ(encoded(X509_CERT_to_Seq, cert), hex_of_text(text_with(kExtensions, "")));
}

TEST(Certificate, DigestAndComparison) {
    const LeakCheck leaks;
    const Certificate cert = cert_of(kWhole);
    Octets digest(32);
    ASSERT_EQ(X509_CERT_digest(cert.get(), TLX_DIGEST_SHA256, digest.data()), 32U);
    EXPECT_EQ(digest, openssl::digest("SHA256", der(kWhole)));
    EXPECT_EQ(X509_CERT_digest(cert.get(), 0x05000900, digest.data()), 0xFFFFFFFFU);
    expect_refuses_null(0xFFFFFFFF, X509_CERT_digest, cert.get(), TLX_DIGEST_SHA256, digest.data());
    const Certificate empty(new_X509_CERT());
    EXPECT_EQ(cmp_X509_CERT(cert.get(), cert_of(kWhole).get()), 0);
    EXPECT_EQ(cmp_X509_CERT(cert.get(), cert_of(kOtherSerial).get()), -1);
    EXPECT_EQ(cmp_X509_CERT(cert.get(), empty.get()), 1);
    expect_refuses_null(1, cmp_X509_CERT, cert.get(), cert.get());
    sweep_failing_allocations([&] {
        const std::int32_t result = cmp_X509_CERT(cert.get(), cert.get());
        EXPECT_TRUE(result == 0 || result == 1);
        return result == 0;
    });
}

std::string june(const Row &row) {
    const ASN1_TIME calendar = {58, 59, 23, 30, 5, static_cast<std::int32_t>(row.number(1)) - 1900, 0, 0, 0};
    const Held<free_X509_TIME> time(new_X509_TIME());
    EXPECT_EQ(set_X509_TIME(time.get(), &calendar), 0U);
    const Held<free_ASN1_TIME> again(X509_TIME_to_ASN1_TIME(time.get()));
    EXPECT_EQ(cmp_ASN1_TIME(again.get(), &calendar), 0);
    return std::to_string(time->form) + " " + octets(time->time);
}

std::string read(const Row &row) {
    const String text = string_of(24, row[1]);
    const X509_TIME time = {1, text.get()};
    return Held<free_ASN1_TIME>(X509_TIME_to_ASN1_TIME(&time)) != nullptr ? "yes" : "no";
}

std::string file(const Row &row) {
    const OwnedCert cert = certificate_of(read_file(row[1]));
    EXPECT_EQ(encode_certificate(cert.get()), read_file(row[1]));
    const ASYMMETRIC_KEY *key = get_X509_PUBKEY_key(get_X509_SPKI(cert.get()));
    return std::to_string(get_X509_version(cert.get())) + " " +
           std::to_string(key == nullptr ? 0 : key->kind);
}

TEST(Certificate, Rows) {
    expect_rows("x509_certificate.txt", {{"june", {june}}, {"read", {read}}, {"file", {file}}});
}

TEST(Certificate, TimesThatAreNone) {
    const ASN1_TIME midnight = {0, 0, 0, 1, 0, 100, 0, 0, 0};
    const ASN1_TIME wrong = {60, 0, 0, 1, 0, 100, 0, 0, 0};
    const ASN1_TIME no_leap_year = {0, 0, 0, 29, 1, 129, 0, 0, 0};
    const Held<free_X509_TIME> time(new_X509_TIME());
    EXPECT_EQ(set_X509_TIME(time.get(), &midnight), 0U);
    for (const ASN1_TIME *none : {&wrong, &no_leap_year})
        EXPECT_EQ(set_X509_TIME(time.get(), none), 1U);
    expect_refuses_null(1, set_X509_TIME, time.get(), &midnight);
    EXPECT_EQ(octets(time->time), "000101000000Z") << "unchanged";
    clean_X509_TIME(time.get());
    EXPECT_EQ(X509_TIME_to_ASN1_TIME(time.get()), nullptr);
}

TEST(Certificate, LosesParametersOfPssTwice) {
    const Octets original = read_file("pss.der");
    const Octets identifier = hex("06 09 2A 86 48 86 F7 0D 01 01 0A 30");
    const auto at = std::search(original.begin(), original.end(), identifier.begin(), identifier.end());
    ASSERT_NE(at, original.end());
    const std::size_t parameters = 2U + at[static_cast<std::ptrdiff_t>(identifier.size())];
    EXPECT_EQ(encode_certificate(certificate_of(original).get()).size(), original.size() - 2 * parameters);
}

TEST(CertificateList, AddingAndFinding) {
    const LeakCheck leaks;
    const Certificate a = cert_of(kWhole);
    const Certificate other_signature = cert_of(text_with("00AABB", "00AB"));
    const Certificate other_serial = cert_of(kOtherSerial);
    const Certificate other_issuer = cert_of(text_with("0C:41", "0C:42"));
    const Certificate unknown = cert_of(text_with("02:05", "02:07"));
    const Certificate empty(new_X509_CERT());
    const Held<free_X509_CERTIFICATES> list(new_X509_CERTIFICATES());
    for (const X509_CERT *cert : {other_issuer.get(), other_serial.get(), other_signature.get(), a.get()})
        EXPECT_EQ(add_X509_CERTIFICATES(list.get(), cert), 0U);
    expect_refuses_null(1, add_X509_CERTIFICATES, list.get(), a.get());
    push_STACK_value(list.get(), new_X509_CERT());

    const X509_CERT *const sought[] = {other_issuer.get(), other_serial.get(), other_signature.get(), a.get(),
                                       empty.get(),        unknown.get()};
    for (std::int32_t i = 0; i < 6; ++i)
        EXPECT_EQ(get_X509_CERTS_index_by_X509_CERT(list.get(), sought[i]), i < 4 ? i : -1);
    expect_refuses_null(-1, get_X509_CERTS_index_by_X509_CERT, list.get(), a.get());

    const X509_NAME *issuer = get_X509_issuer(a.get());
    const Number five = number_of("05");
    const Number seven = number_of("07");
    EXPECT_EQ(find_X509_CERT_by_IssuerAndSerialNumber(list.get(), issuer, five.get()),
              get_X509_CERTIFICATES_child(list.get(), 2))
        << "the first, no copy";
    EXPECT_EQ(find_X509_CERT_by_IssuerAndSerialNumber(list.get(), issuer, seven.get()), nullptr);
    expect_refuses_null(nullptr, find_X509_CERT_by_IssuerAndSerialNumber, list.get(), issuer, five.get());
    sweep_failing_allocations([&] {
        const bool found = get_X509_CERTS_index_by_X509_CERT(list.get(), a.get()) == 3;
        return found && find_X509_CERT_by_IssuerAndSerialNumber(list.get(), issuer, five.get()) != nullptr;
    });
}

TEST(CertificateList, Listing) {
    const LeakCheck leaks;
    const Held<free_X509_CERTIFICATES> list(new_X509_CERTIFICATES());
    push_STACK_value(list.get(), cert_of(text_with("02:05", "02:00C5")).release());
    push_STACK_value(list.get(), new_X509_CERT());
    testing::internal::CaptureStdout();
    print_X509_CERTIFICATES(list.get());
    print_X509_CERTIFICATES(nullptr);
    std::fflush(stdout);
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "[0]\n    Subject: CN=B\n    Issuer: CN=A\n    Serial: C5\n"
              "    Not before: 2025-01-02 03:04:05\n    Not after: 2050-01-02 03:04:05\n"
              "[1]\n    Subject: -\n    Issuer: -\n    Serial: -\n    Not before: -\n    Not after: -\n");
}

}  // namespace
}  // namespace tlx_test
