#include <gtest/gtest.h>
#include <tlxpki.h>

#include "support/x509_records.hpp"

namespace tlx_test {
namespace {

using Certificate = Held<free_X509_CERT>;

/// A certificate that differs from others in its serial number, issuer and signature.
Certificate make_cert(const std::string &serial, const std::string &issuer,
                      const std::string &signature = "AA") {
    return Certificate(
        decoded(Seq_to_X509_CERT, "30{30{02:" + serial + " 30{06:2A03} 30{31{30{06:550403 0C:" + issuer +
                                      "}}} 30{17:3235303130323033303430355A 18:7468656E} "
                                      "30{31{30{06:550406 13:4B52}}} 30{30{06:2B6570} 03:0001}} 30{06:2A03} "
                                      "03:00" +
                                      signature + "}"));
}

TEST(CertificateList, AddingAndFinding) {
    const LeakCheck leaks;
    const Certificate a = make_cert("05", "41");
    const Certificate other_signature = make_cert("05", "41", "AB");
    const Certificate other_serial = make_cert("06", "41");
    const Certificate other_issuer = make_cert("05", "42");
    const Certificate unknown = make_cert("07", "41");
    const Certificate empty(new_X509_CERT());
    const Held<free_X509_CERTIFICATES> list(new_X509_CERTIFICATES());
    for (const X509_CERT *cert : {other_issuer.get(), other_serial.get(), other_signature.get(), a.get()})
        EXPECT_EQ(add_X509_CERTIFICATES(list.get(), cert), 0U);
    EXPECT_EQ(get_X509_CERTIFICATES_count(list.get()), 4U);
    EXPECT_NE(get_X509_CERTIFICATES_child(list.get(), 0), other_issuer.get()) << "a copy";
    EXPECT_EQ(add_X509_CERTIFICATES(list.get(), nullptr), 1U);
    EXPECT_EQ(add_X509_CERTIFICATES(nullptr, a.get()), 1U);
    push_STACK_value(list.get(), new_X509_CERT());

    const std::pair<const X509_CERT *, std::int32_t> by_encoding[] = {{other_issuer.get(), 0},
                                                                      {other_serial.get(), 1},
                                                                      {other_signature.get(), 2},
                                                                      {a.get(), 3},
                                                                      {empty.get(), -1},
                                                                      {unknown.get(), -1},
                                                                      {nullptr, -1}};
    for (const auto &[cert, index] : by_encoding)
        EXPECT_EQ(get_X509_CERTS_index_by_X509_CERT(list.get(), cert), index);
    EXPECT_EQ(get_X509_CERTS_index_by_X509_CERT(nullptr, a.get()), -1);

    const X509_NAME *issuer = get_X509_issuer(a.get());
    const Number five = number_of("05");
    const Number seven = number_of("07");
    EXPECT_EQ(find_X509_CERT_by_IssuerAndSerialNumber(list.get(), issuer, five.get()),
              get_X509_CERTIFICATES_child(list.get(), 2))
        << "the first, no copy";
    EXPECT_EQ(find_X509_CERT_by_IssuerAndSerialNumber(list.get(), issuer, seven.get()), nullptr);
    EXPECT_EQ(find_X509_CERT_by_IssuerAndSerialNumber(list.get(), nullptr, five.get()), nullptr);
    EXPECT_EQ(find_X509_CERT_by_IssuerAndSerialNumber(nullptr, issuer, five.get()), nullptr);
    EXPECT_EQ(find_X509_CERT_by_IssuerAndSerialNumber(list.get(), issuer, nullptr), nullptr);
    sweep_failing_allocations([&] {
        const bool found = get_X509_CERTS_index_by_X509_CERT(list.get(), a.get()) == 3;
        return found && find_X509_CERT_by_IssuerAndSerialNumber(list.get(), issuer, five.get()) != nullptr;
    });
}

TEST(CertificateList, Listing) {
    const LeakCheck leaks;
    const Held<free_X509_CERTIFICATES> list(new_X509_CERTIFICATES());
    push_STACK_value(list.get(), make_cert("00C5", "41").release());
    push_STACK_value(list.get(), new_X509_CERT());
    testing::internal::CaptureStdout();
    print_X509_CERTIFICATES(list.get());
    print_X509_CERTIFICATES(nullptr);
    std::fflush(stdout);
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "[0]\n    Subject: C=KR\n    Issuer: CN=A\n    Serial: C5\n"
              "    Not before: 2025-01-02 03:04:05\n    Not after: -\n"
              "[1]\n    Subject: -\n    Issuer: -\n    Serial: -\n    Not before: -\n    Not after: -\n");
}

}  // namespace
}  // namespace tlx_test
