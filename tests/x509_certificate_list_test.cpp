#include <gtest/gtest.h>
#include <tlxpki.h>

#include "support/x509_files.hpp"
#include "support/x509_records.hpp"

namespace tlx_test {
namespace {

const RecordType kCertificates = TLX_RECORD_TYPE(X509_CERTIFICATES, 0x462C0049, 0x462B0049);

using OwnedCertificates =
    std::unique_ptr<X509_CERTIFICATES, Freer<X509_CERTIFICATES, free_X509_CERTIFICATES>>;
using OwnedName = std::unique_ptr<X509_NAME, Freer<X509_NAME, free_X509_NAME>>;

/// A certificate told apart by serial number, issuer and signature.
std::string text_of_cert(const std::string &serial, const std::string &issuer,
                         const std::string &signature = "AA") {
    return "30{30{02:" + serial + " 30{06:2A03} 30{31{30{06:550403 0C:" + issuer +
           "}}} 30{17:3235303130323033303430355A 18:7468656E} 30{31{30{06:550406 13:4B52}}} 30{30{06:2B6570} "
           "03:0001}}"
           " 30{06:2A03} 03:00" +
           signature + "}";
}

OwnedCert make_cert(const std::string &serial, const std::string &issuer,
                    const std::string &signature = "AA") {
    X509_CERT *cert = nullptr;
    EXPECT_EQ(Seq_to_X509_CERT(der_node(text_of_cert(serial, issuer, signature)).get(), &cert), 0U);
    return OwnedCert(cert);
}

OwnedCertificates list_of(std::initializer_list<const X509_CERT *> certificates) {
    OwnedCertificates list(new_X509_CERTIFICATES());
    for (const X509_CERT *cert : certificates)
        EXPECT_EQ(add_X509_CERTIFICATES(list.get(), cert), 0U);
    return list;
}

TEST(CertificateList, Encodings) {
    const std::string one = text_of_cert("01", "41");
    expect_comes_back(kCertificates, "30{}");
    expect_comes_back(kCertificates, "30{" + one + "}");
    expect_reencodes(kCertificates, "A0{" + one + "}", "30{" + one + "}");
    expect_refused(kCertificates, "30{05:}", 0x462C0104);
    expect_refused(kCertificates, "30:3005", 0x462C0104);
    expect_refused(kCertificates, "30{30{}}", 0x462C0104);
    expect_refused(kCertificates, "30{30{30{}}}", 0x462C0104);
    expect_refused(kCertificates, "30{30{" + one.substr(3, one.find(" 30{06:2A03} 03:") - 3) + "}}",
                   0x462C0104);
    expect_null_arguments_refused(kCertificates);
    const LeakCheck leaks;
    const OwnedCertificates list(new_X509_CERTIFICATES());
    push_STACK_value(list.get(), nullptr);
    EXPECT_EQ(encoding_or_status(kCertificates, list.get()), "status " + std::to_string(0x462B0103));
}

TEST(CertificateList, AddingAndTakingOut) {
    const LeakCheck leaks;
    const OwnedCert a = make_cert("01", "41");
    const OwnedCert b = make_cert("02", "41");
    const OwnedCert c = make_cert("03", "41");
    const OwnedCertificates list = list_of({a.get(), b.get()});
    EXPECT_EQ(add_X509_CERTIFICATES_child(list.get(), c.get(), 0), 0U);
    EXPECT_EQ(get_X509_CERTIFICATES_count(list.get()), 3U);
    EXPECT_NE(get_X509_CERTIFICATES_child(list.get(), 0), c.get()) << "a copy";
    EXPECT_EQ(cmp_X509_CERT(get_X509_CERTIFICATES_child(list.get(), 0), c.get()), 0);
    EXPECT_EQ(add_X509_CERTIFICATES(list.get(), nullptr), 1U);
    EXPECT_EQ(add_X509_CERTIFICATES(nullptr, a.get()), 1U);
    const OwnedCert taken(remove_X509_CERTIFICATES_child(list.get(), 1));
    EXPECT_EQ(cmp_X509_CERT(taken.get(), a.get()), 0);
    EXPECT_EQ(remove_X509_CERTIFICATES_child(list.get(), 2), nullptr);
    EXPECT_EQ(get_X509_CERTIFICATES_child(list.get(), -1), nullptr);
    EXPECT_EQ(get_X509_CERTIFICATES_count(nullptr), 0U);
}

TEST(CertificateList, FindingByEncoding) {
    const LeakCheck leaks;
    const OwnedCert a = make_cert("01", "41");
    const OwnedCert other_signature = make_cert("01", "41", "AB");
    const OwnedCert b = make_cert("02", "41");
    const OwnedCert empty(new_X509_CERT());
    const OwnedCertificates list = list_of({other_signature.get(), a.get(), b.get(), a.get()});
    EXPECT_EQ(get_X509_CERTS_index_by_X509_CERT(list.get(), a.get()), 1);
    EXPECT_EQ(get_X509_CERTS_index_by_X509_CERT(list.get(), other_signature.get()), 0);
    EXPECT_EQ(get_X509_CERTS_index_by_X509_CERT(list.get(), make_cert("03", "41").get()), -1);
    EXPECT_EQ(get_X509_CERTS_index_by_X509_CERT(list.get(), empty.get()), -1);
    EXPECT_EQ(get_X509_CERTS_index_by_X509_CERT(list.get(), nullptr), -1);
    EXPECT_EQ(get_X509_CERTS_index_by_X509_CERT(nullptr, a.get()), -1);
}

TEST(CertificateList, FindingByIssuerAndSerialNumber) {
    const LeakCheck leaks;
    const OwnedCert other_issuer = make_cert("05", "42");
    const OwnedCert other_serial = make_cert("06", "41");
    const OwnedCert wanted = make_cert("05", "41");
    const OwnedCertificates list =
        list_of({other_issuer.get(), other_serial.get(), wanted.get(), wanted.get()});
    const OwnedName issuer(dup_X509_NAME(get_X509_issuer(wanted.get())));
    const Number five = number_of("05");
    const Number seven = number_of("07");
    EXPECT_EQ(find_X509_CERT_by_IssuerAndSerialNumber(list.get(), issuer.get(), five.get()),
              get_X509_CERTIFICATES_child(list.get(), 2))
        << "the first one itself, not a copy";
    EXPECT_EQ(find_X509_CERT_by_IssuerAndSerialNumber(list.get(), issuer.get(), seven.get()), nullptr);
    EXPECT_EQ(find_X509_CERT_by_IssuerAndSerialNumber(list.get(), nullptr, five.get()), nullptr);
    EXPECT_EQ(find_X509_CERT_by_IssuerAndSerialNumber(list.get(), issuer.get(), nullptr), nullptr);
    EXPECT_EQ(find_X509_CERT_by_IssuerAndSerialNumber(nullptr, issuer.get(), five.get()), nullptr);
    push_STACK_value(list.get(), new_X509_CERT());
    EXPECT_EQ(find_X509_CERT_by_IssuerAndSerialNumber(list.get(), issuer.get(), seven.get()), nullptr);
}

TEST(CertificateList, Listing) {
    const LeakCheck leaks;
    const OwnedCert cert = make_cert("00C5", "41");
    const OwnedCertificates list = list_of({cert.get()});
    push_STACK_value(list.get(), new_X509_CERT());
    testing::internal::CaptureStdout();
    print_X509_CERTIFICATES(list.get());
    print_X509_CERTIFICATES(nullptr);
    std::fflush(stdout);
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "[0]\n"
              "    Subject: C=KR\n"
              "    Issuer: CN=A\n"
              "    Serial: C5\n"
              "    Not before: 2025-01-02 03:04:05\n"
              "    Not after: -\n"
              "[1]\n"
              "    Subject: -\n"
              "    Issuer: -\n"
              "    Serial: -\n"
              "    Not before: -\n"
              "    Not after: -\n");
}

TEST(CertificateList, EveryAllocationMayFail) {
    const std::string one = text_of_cert("01", "41");
    expect_allocations_may_fail(kCertificates, der_node("30{" + one + "}").get(), {0x462C0104}, {0x462B0103});
    const OwnedCert cert = make_cert("01", "41");
    sweep_failing_allocations([&] {
        const OwnedCertificates list(new_X509_CERTIFICATES());
        bool added = list != nullptr;
        for (int i = 0; i < 5 && added; ++i)
            added = add_X509_CERTIFICATES(list.get(), cert.get()) == 0;
        return added && get_X509_CERTS_index_by_X509_CERT(list.get(), cert.get()) == 0 &&
               find_X509_CERT_by_IssuerAndSerialNumber(list.get(), get_X509_issuer(cert.get()),
                                                       get_X509_serial(cert.get())) != nullptr;
    });
}

}  // namespace
}  // namespace tlx_test
