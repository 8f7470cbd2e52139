#include <gtest/gtest.h>
#include <tlxpki.h>

#include "support/x509_files.hpp"
#include "support/x509_records.hpp"
#include "trust/trust_records.hpp"

namespace tlx_test {
namespace {

using tlx::OwnedCertificates;

const RecordType kCertificates = TLX_RECORD_TYPE(X509_CERTIFICATES, 0x462C0049, 0x462B0049);

/// A certificate told apart by serial number, issuer and signature.
std::string text_of_cert(const std::string &serial, const std::string &issuer,
                         const std::string &signature = "AA") {
    return "30{30{02:" + serial + " 30{06:2A03} 30{31{30{06:550403 0C:" + issuer +
           "}}} 30{17:3235303130323033303430355A 18:7468656E} 30{31{30{06:550406 13:4B52}}} 30{30{06:2B6570} "
           "03:0001}} 30{06:2A03} 03:00" +
           signature + "}";
}

OwnedCert make_cert(const std::string &serial, const std::string &issuer,
                    const std::string &signature = "AA") {
    return OwnedCert(decoded(Seq_to_X509_CERT, text_of_cert(serial, issuer, signature)));
}

OwnedCertificates list_of(std::initializer_list<const X509_CERT *> certificates) {
    OwnedCertificates list(new_X509_CERTIFICATES());
    for (const X509_CERT *cert : certificates)
        EXPECT_EQ(add_X509_CERTIFICATES(list.get(), cert), 0U);
    return list;
}

TEST(CertificateList, Encodings) {
    const std::string one = text_of_cert("01", "41");
    expect_come_back(kCertificates, {"30{}", "30{" + one + "}"});
    expect_reencodes(kCertificates, "A0{" + one + "}", "30{" + one + "}");
    expect_refused(kCertificates, 0x462C0104,
                   {"30{05:}", "30:3005", "30{30{}}", "30{30{30{}}}",
                    "30{30{" + one.substr(3, one.find(" 30{06:2A03} 03:") - 3) + "}}"});
    expect_null_arguments_refused(kCertificates);
    const OwnedCertificates list(new_X509_CERTIFICATES());
    push_STACK_value(list.get(), nullptr);
    EXPECT_EQ(encoded(X509_CERTIFICATES_to_Seq, list.get()), "status 462B0103");
}

TEST(CertificateList, AddingTakingOutAndFinding) {
    const LeakCheck leaks;
    const OwnedCert a = make_cert("05", "41");
    const OwnedCert other_signature = make_cert("05", "41", "AB");
    const OwnedCert other_serial = make_cert("06", "41");
    const OwnedCert other_issuer = make_cert("05", "42");
    const OwnedCert unknown = make_cert("07", "41");
    const OwnedCert empty(new_X509_CERT());
    const OwnedCertificates list = list_of({other_serial.get(), other_signature.get(), a.get(), a.get()});
    EXPECT_EQ(add_X509_CERTIFICATES_child(list.get(), other_issuer.get(), 0), 0U);
    EXPECT_EQ(get_X509_CERTIFICATES_count(list.get()), 5U);
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

    const auto found = [](const X509_CERTIFICATES *certificates, const X509_NAME *issuer,
                          const char *serial) {
        const Number number = number_of(serial);
        return find_X509_CERT_by_IssuerAndSerialNumber(certificates, issuer, number.get());
    };
    const X509_NAME *issuer = get_X509_issuer(a.get());
    EXPECT_EQ(found(list.get(), issuer, "05"), get_X509_CERTIFICATES_child(list.get(), 2))
        << "the first, no copy";
    EXPECT_EQ(found(list.get(), issuer, "07"), nullptr);
    EXPECT_EQ(found(list.get(), nullptr, "05"), nullptr);
    EXPECT_EQ(found(nullptr, issuer, "05"), nullptr);
    EXPECT_EQ(find_X509_CERT_by_IssuerAndSerialNumber(list.get(), issuer, nullptr), nullptr);

    const OwnedCert taken(remove_X509_CERTIFICATES_child(list.get(), 1));
    EXPECT_EQ(cmp_X509_CERT(taken.get(), other_serial.get()), 0);
    EXPECT_EQ(remove_X509_CERTIFICATES_child(list.get(), 5), nullptr);
    EXPECT_EQ(get_X509_CERTIFICATES_child(list.get(), -1), nullptr);
}

TEST(CertificateList, Listing) {
    const LeakCheck leaks;
    const OwnedCertificates list = list_of({make_cert("00C5", "41").get()});
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
    const Node node = der_node("30{" + text_of_cert("01", "41") + "}");
    expect_allocations_may_fail(kCertificates, node.get(), {0x462C0104}, {0x462B0103});
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
