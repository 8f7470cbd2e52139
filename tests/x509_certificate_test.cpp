#include <gtest/gtest.h>
#include <tlxpki.h>

#include <map>

#include "support/openssl_peer.hpp"
#include "support/strings.hpp"
#include "support/x509_files.hpp"
#include "support/x509_records.hpp"

namespace tlx_test {
namespace {

const RecordType kTbs = TLX_RECORD_TYPE(X509_TBS_CERT, 0x46110049, 0x46120049);
const RecordType kCert = TLX_RECORD_TYPE(X509_CERT, 0x460F0049, 0x46100049);
const RecordType kTime = TLX_RECORD_TYPE(X509_TIME, 0x462A0049, 0x46290049);
const RecordType kValidity = TLX_RECORD_TYPE(X509_VALIDITY, 0x461A0049, 0x46190049);

/// The members of a to-be-signed part, each of which a test may replace.
struct Parts {
    std::string version = "A0{02:02}";
    std::string serial = "02:05";
    std::string signature = "30{06:2A0304}";
    std::string issuer = "30{31{30{06:550403 0C:41}}}";
    std::string validity = "30{17:3235303130323033303430355A 18:32303530303130323033303430355A}";
    std::string subject = "30{31{30{06:550403 13:42}}}";
    std::string key = "30{30{06:2B6570} 03:0001}";
    std::string rest = "A3{30{30{06:551D13 01:FF 04:3000}}}";

    [[nodiscard]] std::string tbs() const {
        std::string text = "30{";
        for (const std::string &part : {version, serial, signature, issuer, validity, subject, key, rest}) {
            text += part + " ";
        }
        return text + "}";
    }
    [[nodiscard]] std::string cert(const std::string &others = "30{06:2A0304} 03:00AABB") const {
        return "30{" + tbs() + " " + others + "}";
    }
};

/// The parts with one of them replaced.
Parts with(std::string Parts::*part, std::string text) {
    Parts parts;
    parts.*part = std::move(text);
    return parts;
}

OwnedCert cert_of(const Parts &parts) {
    X509_CERT *cert = nullptr;
    EXPECT_EQ(Seq_to_X509_CERT(der_node(parts.cert()).get(), &cert), 0U);
    return OwnedCert(cert);
}

std::string hex_of_text(std::string_view text) {
    return hex_of(der_node(text).get());
}

TEST(TbsCertificate, EncodingsComeBack) {
    const Parts cases[] = {
        Parts(),
        with(&Parts::version, ""),
        with(&Parts::version, "A0{02:01}"),
        with(&Parts::version, "A0{02:C8}"),  // one octet, whatever its top bit
        with(&Parts::serial, "02:00"),
        with(&Parts::serial, "02:0080"),
        with(&Parts::serial, "02:7FFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFF"),
        with(&Parts::issuer, "30{}"),
        with(&Parts::validity, "30{18:30 17:}"),  // the texts are not looked at
        with(&Parts::rest, ""),
        with(&Parts::rest, "A3{30{}}"),
        with(&Parts::signature, "30{06:2A864886F70D01010B 05:}"),  // sha256WithRSAEncryption
        with(&Parts::signature, "30{06:2A864886F70D010105 05:}"),  // sha1WithRSAEncryption
        with(&Parts::signature, "30{06:2B0E03021D 05:}"),          // RSA-SHA1-2
        with(&Parts::signature, "30{06:2A864886F70D01010A}"),      // id-RSASSA-PSS
        with(&Parts::signature, "30{06:2A8648CE3D040302}"),        // ecdsa-with-SHA256
        with(&Parts::signature, "30{06:2A831A8C9A440116}"),        // HAS160withKCDSA1
    };
    for (const Parts &parts : cases) {
        expect_comes_back(kTbs, parts.tbs());
        expect_comes_back(kCert, parts.cert());
    }
}

TEST(TbsCertificate, WhatIsWrittenAnew) {
    const auto expect = [](std::string Parts::*part, const char *input, const char *output) {
        expect_reencodes(kTbs, with(part, input).tbs(), with(part, output).tbs());
    };
    expect(&Parts::version, "A0{02:00}", "");
    expect(&Parts::version, "A0{02:}", "");
    expect(&Parts::version, "A0{02:01 02:02}", "A0{02:01}");
    expect(&Parts::version, "A0{82:01}", "A0{02:01}");
    expect(&Parts::serial, "02:000005", "02:05");
    expect(&Parts::serial, "02:FF", "02:00FF");  // numbers have no sign
    expect(&Parts::serial, "82:05", "02:05");
    expect(&Parts::signature, "30{06:2A0304 05:}", "30{06:2A0304}");
    expect(&Parts::signature, "30{06:2A864886F70D01010B}", "30{06:2A864886F70D01010B 05:}");
    expect(&Parts::signature, "30{06:2A864886F70D01010A 30{A0{30{06:2A03}}}}", "30{06:2A864886F70D01010A}");
    expect(&Parts::validity, "30{97:41 98:42}", "30{17:41 17:42}");
    expect(&Parts::validity, "30{57:41 38:42 00:}", "30{17:41 18:42}");
    // The tag number of the extensions is looked at in four bits; what follows them is not looked at.
    expect(&Parts::rest, "83{30{}}", "A3{30{}}");
    expect(&Parts::rest, "B3{30{} 05:}", "A3{30{}}");
    expect(&Parts::rest, "A3{30{}} 81:0001 A3{05:}", "A3{30{}}");
    expect(&Parts::rest, "00:", "");  // end-of-contents octets are no child
}

TEST(TbsCertificate, RefusedEncodings) {
    const Parts cases[] = {
        with(&Parts::version, "A0{02:0102}"),
        with(&Parts::version, "A0{02:0002}"),
        with(&Parts::version, "A0{}"),
        with(&Parts::version, "A0{05:}"),
        with(&Parts::version, "A0:0201"),
        with(&Parts::version, "80:02"),
        with(&Parts::serial, ""),
        with(&Parts::serial, "02:"),
        with(&Parts::serial, "04:05"),
        with(&Parts::signature, "30{}"),
        with(&Parts::signature, "30{05:}"),
        with(&Parts::signature, "06:2A0304"),
        with(&Parts::issuer, "31{}"),
        with(&Parts::issuer, "30{31{}}"),
        with(&Parts::validity, "30{17:41}"),
        with(&Parts::validity, "30{17:41 17:42 17:43}"),
        with(&Parts::validity, "30{17:41 16:42}"),
        with(&Parts::validity, "30{00: 17:41 17:42}"),
        with(&Parts::validity, "31{17:41 17:42}"),
        with(&Parts::subject, "05:"),
        with(&Parts::subject, "30{05:}"),
        with(&Parts::key, "30{}"),
        with(&Parts::key, "03:0001"),
        with(&Parts::rest, "81:0001 A3{30{}}"),  // issuerUniqueID
        with(&Parts::rest, "82:0001 A3{30{}}"),  // subjectUniqueID
        with(&Parts::rest, "A1{03:0001}"),
        with(&Parts::rest, "A3{}"),
        with(&Parts::rest, "A3{31{}}"),
        with(&Parts::rest, "A3{30{05:}}"),
        with(&Parts::rest, "23{30{}}"),
        with(&Parts::rest, "E3{30{}}"),
        with(&Parts::rest, "30{}"),
        with(&Parts::rest, "05:"),
        with(&Parts::rest, "00: A3{30{}}"),
    };
    for (const Parts &parts : cases) {
        expect_refused(kTbs, parts.tbs(), 0x46110104);
        expect_refused(kCert, parts.cert(), 0x46110104);
    }
    expect_refused(kTbs, "30{}", 0x4611002B);
    expect_refused(kTbs, "30{A0{02:02} 02:05 30{} 30{} 30{}}", 0x4611002B);
    expect_refused(kTbs, with(&Parts::rest, "07:").tbs(), 0x4611002B);  // hides all children from the count
    expect_refused(kTbs, "30{02:05 30{06:2A0304} 30{} 30{17:41 17:42} 30{} 05:}", 0x46110104);
    expect_null_arguments_refused(kTbs);

    // An element that ends beyond its parent is no end of the members.
    Octets broken = der(with(&Parts::rest, "A3{30{}}").tbs());
    broken[broken.size() - 3] = 0x7F;
    X509_TBS_CERT *tbs = nullptr;
    const Node node(decodeToDERSequence_n(broken.data(), static_cast<std::uint32_t>(broken.size())));
    EXPECT_EQ(Seq_to_X509_TBS_CERT(node.get(), &tbs), 0x46110104U);
}

TEST(TbsCertificate, AFailedDecodingFreesTheCallersRecord) {
    const LeakCheck leaks;
    for (const char *text : {"30{}", "30{02:05 30{} 30{} 30{} 30{} 30{}}"}) {
        X509_TBS_CERT *tbs = nullptr;
        ASSERT_EQ(Seq_to_X509_TBS_CERT(der_node(Parts().tbs()).get(), &tbs), 0U);
        EXPECT_NE(Seq_to_X509_TBS_CERT(der_node(text).get(), &tbs), 0U);
        EXPECT_EQ(tbs, nullptr);
    }
    X509_TBS_CERT *tbs = new_X509_TBS_CERT();
    EXPECT_EQ(Seq_to_X509_TBS_CERT(nullptr, &tbs), 0x46110049U);
    EXPECT_NE(tbs, nullptr) << "null arguments change nothing";
    // Filling a record drops what the new encoding does not have.
    EXPECT_EQ(Seq_to_X509_TBS_CERT(der_node(Parts().tbs()).get(), &tbs), 0U);
    EXPECT_EQ(Seq_to_X509_TBS_CERT(der_node(with(&Parts::rest, "").tbs()).get(), &tbs), 0U);
    EXPECT_EQ(tbs->extensions, nullptr);
    free_X509_TBS_CERT(tbs);
}

TEST(TbsCertificate, MissingMembersInTheirOrder) {
    const LeakCheck leaks;
    const OwnedCert cert = cert_of(Parts());
    const OwnedCert empty(new_X509_CERT());
    X509_TBS_CERT &tbs = *empty->tbsCertificate;
    ASN1_UNIT *node = nullptr;
    EXPECT_EQ(X509_TBS_CERT_to_Seq(&tbs, &node), 0x4612010AU);
    EXPECT_EQ(set_X509_serial(empty.get(), get_X509_serial(cert.get())), 0U);
    EXPECT_EQ(X509_TBS_CERT_to_Seq(&tbs, &node), 0x46120108U);
    tbs.signature = new_OBJECT_IDENTIFIER();
    EXPECT_EQ(X509_TBS_CERT_to_Seq(&tbs, &node), 0x46120108U) << "an empty one is none";
    EXPECT_EQ(set_X509_signature(empty.get(), get_X509_signature(cert.get())), 0U);
    EXPECT_EQ(X509_TBS_CERT_to_Seq(&tbs, &node), 0x46120105U);
    EXPECT_EQ(set_X509_issuer(empty.get(), get_X509_issuer(cert.get())), 0U);
    EXPECT_EQ(X509_TBS_CERT_to_Seq(&tbs, &node), 0x46120107U);
    tbs.validity = new_X509_VALIDITY();
    EXPECT_EQ(X509_TBS_CERT_to_Seq(&tbs, &node), 0x46120106U);
    EXPECT_EQ(set_X509_subject(empty.get(), get_X509_subject(cert.get())), 0U);
    EXPECT_EQ(X509_TBS_CERT_to_Seq(&tbs, &node), 0x46120109U);
    EXPECT_EQ(set_X509_pub_key(empty.get(), get_X509_SPKI(cert.get())), 0U);
    EXPECT_EQ(X509_TBS_CERT_to_Seq(&tbs, &node), 0x46120103U) << "no times";
    EXPECT_EQ(X509_CERT_to_Seq(empty.get(), &node), 0x46100103U);
    EXPECT_EQ(set_X509_notBefore(empty.get(), get_X509_notBefore(cert.get())), 0U);
    EXPECT_EQ(set_X509_notAfter(empty.get(), get_X509_notAfter(cert.get())), 0U);
    EXPECT_EQ(set_X509_extensions(empty.get(), get_X509_extensions(cert.get())), 0U);
    EXPECT_EQ(set_X509_version(empty.get(), 2), 0U);
    EXPECT_EQ(encoding_or_status(kTbs, &tbs), hex_of_text(Parts().tbs()));
    tbs.validity->notBefore.form = 2;
    EXPECT_EQ(X509_TBS_CERT_to_Seq(&tbs, &node), 0x46120103U);
    EXPECT_EQ(node, nullptr);
}

TEST(Certificate, StatusesOfTheDecoder) {
    expect_refused(kCert, "30{}", 1);
    expect_refused(kCert, "30{05:}", 1);
    expect_refused(kCert, "30:3005", 1);
    expect_refused(kCert, "30{30{}}", 0x4611002B);
    for (const char *others : {"", "30{06:2A03}", "06:2A03 03:00AA", "30{} 03:00AA", "30{05:} 03:00AA",
                               "30{06:} 03:00AA", "30{06:2A03} 04:00AA", "30{06:2A03} 03:"}) {
        expect_refused(kCert, Parts().cert(others), 0x460F0104);
    }
    expect_null_arguments_refused(kCert);
    // Parameters of the algorithm beside the signature, and elements after the signature, are passed over.
    expect_reencodes(kCert, Parts().cert("30{06:2A0304 05: 05:} 03:00AABB 05:"), Parts().cert());
    expect_reencodes(kCert, Parts().cert("30{06:2A864886F70D010104} 03:00"),
                     Parts().cert("30{06:2A864886F70D010104 05:} 03:00"));
    expect_comes_back(kCert, Parts().cert("30{06:2A0304} 03:07AA80"));
}

TEST(Certificate, AFailedDecodingAndTheCallersCertificate) {
    const LeakCheck leaks;
    const OwnedCert cert = cert_of(Parts());
    X509_CERT *out = cert.get();
    EXPECT_EQ(Seq_to_X509_CERT(der_node("30{05:}").get(), &out), 1U);
    EXPECT_EQ(encoding_or_status(kCert, out), hex_of_text(Parts().cert())) << "nothing was filled";
    Parts other = with(&Parts::serial, "02:06");
    EXPECT_EQ(Seq_to_X509_CERT(der_node(other.cert("30{06:2A0304} 03:")).get(), &out), 0x460F0104U);
    EXPECT_EQ(encoding_or_status(kCert, out), hex_of_text(other.cert())) << "the signed part was";
    EXPECT_EQ(Seq_to_X509_CERT(der_node("30{30{}}").get(), &out), 0x4611002BU);
    EXPECT_EQ(out, cert.get());
    EXPECT_EQ(out->tbsCertificate, nullptr);
    EXPECT_EQ(get_X509_version(out), 0xFFFFFFFFU);
    EXPECT_EQ(get_X509_serial(out), nullptr);
    EXPECT_EQ(encoding_or_status(kCert, out), "status " + std::to_string(0x46100103));
    EXPECT_EQ(Seq_to_X509_CERT(der_node(Parts().cert()).get(), &out), 0U) << "it can be filled again";
    EXPECT_EQ(encoding_or_status(kCert, out), hex_of_text(Parts().cert()));
}

TEST(Certificate, Members) {
    const LeakCheck leaks;
    const OwnedCert cert = cert_of(Parts());
    EXPECT_EQ(get_X509_version(cert.get()), 2U);
    EXPECT_EQ(get_BIGINT_word(get_X509_serial(cert.get())), 5U);
    EXPECT_EQ(octets(get_X509_signature(cert.get())), "1.2.3.4");
    EXPECT_EQ(octets(get_X509_sig_alg(cert.get())), "1.2.3.4");
    EXPECT_EQ(text_of(get_X509_sig_value(cert.get())), "type 3 extra 0: AA BB");
    EXPECT_EQ(get_X509_issuer(cert.get()), cert->tbsCertificate->issuer);
    EXPECT_EQ(get_X509_subject(cert.get()), cert->tbsCertificate->subject);
    EXPECT_EQ(get_X509_SPKI(cert.get()), cert->tbsCertificate->subjectPublicKeyInfo);
    EXPECT_EQ(get_X509_extensions(cert.get()), cert->tbsCertificate->extensions);
    EXPECT_EQ(get_X509_notBefore(cert.get())->form, 0U);
    EXPECT_EQ(text_of(get_X509_notBefore(cert.get())->time),
              "type 23 extra 1: 32 35 30 31 30 32 30 33 30 34 30 35 5A");
    EXPECT_EQ(get_X509_notAfter(cert.get())->form, 1U);
    EXPECT_EQ(octets(get_X509_notAfter(cert.get())->time), "20500102030405Z");

    const OwnedCert empty(new_X509_CERT());
    EXPECT_EQ(get_X509_version(empty.get()), 0U);
    EXPECT_EQ(get_X509_notBefore(empty.get()), nullptr);
    EXPECT_EQ(get_X509_notAfter(nullptr), nullptr);
    EXPECT_EQ(get_X509_issuer(nullptr), nullptr);
    EXPECT_EQ(get_X509_sig_alg(empty.get()), nullptr);
    EXPECT_EQ(get_X509_sig_value(nullptr), nullptr);
}

TEST(Certificate, Setters) {
    const LeakCheck leaks;
    const OwnedCert from = cert_of(Parts());
    const OwnedCert cert(new_X509_CERT());
    clean_X509_CERT(cert.get());
    EXPECT_EQ(cert->tbsCertificate, nullptr);
    EXPECT_EQ(set_X509_version(cert.get(), 2), 0U) << "a to-be-signed part is made";
    EXPECT_EQ(set_X509_serial(cert.get(), get_X509_serial(from.get())), 0U);
    EXPECT_EQ(set_X509_signature(cert.get(), get_X509_signature(from.get())), 0U);
    EXPECT_EQ(set_X509_issuer(cert.get(), get_X509_issuer(from.get())), 0U);
    EXPECT_EQ(set_X509_notAfter(cert.get(), get_X509_notAfter(from.get())), 0U);
    EXPECT_EQ(set_X509_notBefore(cert.get(), get_X509_notBefore(from.get())), 0U);
    EXPECT_EQ(set_X509_subject(cert.get(), get_X509_subject(from.get())), 0U);
    EXPECT_EQ(set_X509_pub_key(cert.get(), get_X509_SPKI(from.get())), 0U);
    EXPECT_EQ(set_X509_extensions(cert.get(), get_X509_extensions(from.get())), 0U);
    EXPECT_EQ(set_X509_sig_alg(cert.get(), get_X509_sig_alg(from.get())), 0U);
    EXPECT_EQ(set_X509_sig_value(cert.get(), get_X509_sig_value(from.get())), 0U);
    EXPECT_EQ(encoding_or_status(kCert, cert.get()), hex_of_text(Parts().cert()));

    EXPECT_EQ(set_X509_serial(cert.get(), nullptr), 1U);
    EXPECT_EQ(set_X509_signature(cert.get(), nullptr), 1U);
    EXPECT_EQ(set_X509_issuer(nullptr, get_X509_issuer(from.get())), 1U);
    EXPECT_EQ(set_X509_subject(cert.get(), nullptr), 1U);
    EXPECT_EQ(set_X509_notBefore(cert.get(), nullptr), 1U);
    const X509_TIME no_text = {};
    EXPECT_EQ(set_X509_notAfter(cert.get(), &no_text), 1U);
    EXPECT_EQ(set_X509_pub_key(cert.get(), nullptr), 1U);
    EXPECT_EQ(set_X509_sig_alg(cert.get(), nullptr), 1U);
    EXPECT_EQ(set_X509_sig_value(nullptr, get_X509_sig_value(from.get())), 1U);
    EXPECT_EQ(set_X509_version(nullptr, 0), 1U);
    EXPECT_EQ(set_X509_extensions(nullptr, nullptr), 1U);
    EXPECT_EQ(encoding_or_status(kCert, cert.get()), hex_of_text(Parts().cert())) << "unchanged";
    EXPECT_EQ(set_X509_extensions(cert.get(), nullptr), 0U);
    EXPECT_EQ(encoding_or_status(kCert, cert.get()), hex_of_text(with(&Parts::rest, "").cert()));
}

TEST(Certificate, DigestAndComparison) {
    const LeakCheck leaks;
    const OwnedCert cert = cert_of(Parts());
    Octets digest(TLX_DIGEST_MAX_LENGTH);
    ASSERT_EQ(X509_CERT_digest(cert.get(), TLX_DIGEST_SHA256, digest.data()), 32U);
    digest.resize(32);
    EXPECT_EQ(digest, openssl::digest("SHA256", der(Parts().cert())));
    EXPECT_EQ(X509_CERT_digest(cert.get(), 0x05000900, digest.data()), 0xFFFFFFFFU);
    EXPECT_EQ(X509_CERT_digest(cert.get(), TLX_DIGEST_SHA256, nullptr), 0xFFFFFFFFU);
    EXPECT_EQ(X509_CERT_digest(nullptr, TLX_DIGEST_SHA256, digest.data()), 0xFFFFFFFFU);

    const OwnedCert empty(new_X509_CERT());
    EXPECT_EQ(cmp_X509_CERT(cert.get(), cert_of(Parts()).get()), 0);
    EXPECT_EQ(cmp_X509_CERT(cert.get(), cert_of(with(&Parts::serial, "02:06")).get()), -1);
    EXPECT_EQ(cmp_X509_CERT(cert.get(), empty.get()), 1);
    EXPECT_EQ(cmp_X509_CERT(nullptr, cert.get()), 1);
}

/// Overwrites everything that a certificate holds, in place.
void scramble(X509_CERT *cert) {
    const auto flip = [](ASN1_STRING *string) {
        for (std::int32_t i = 0; string != nullptr && i < string->length; ++i)
            string->data[i] ^= 0xFF;
    };
    X509_TBS_CERT *tbs = cert->tbsCertificate;
    set_BIGINT_word(tbs->serialNumber, 77);
    for (X509_NAME *name : {tbs->issuer, tbs->subject}) {
        for (std::uint32_t i = 0; i < get_X509_NAME_count(name); ++i) {
            X509_NAME_CHILD *child = get_X509_NAME_CHILD(name, static_cast<std::int32_t>(i));
            flip(child->type);
            flip(child->data);
        }
    }
    for (std::uint32_t i = 0; i < get_X509_EXTENSION_count(tbs->extensions); ++i) {
        X509_EXTENSION *extension = get_X509_EXTENSION(tbs->extensions, static_cast<std::int32_t>(i));
        extension->critical ^= 0xFF;
        flip(extension->object);
        flip(extension->data);
    }
    for (ASN1_STRING *string :
         {tbs->signature, tbs->validity->notBefore.time, tbs->validity->notAfter.time,
          tbs->subjectPublicKeyInfo->algorithm, tbs->subjectPublicKeyInfo->subjectPublicKey,
          cert->signatureAlgorithm, cert->signatureValue}) {
        flip(string);
    }
    if (tbs->subjectPublicKeyInfo->parameters != nullptr) *tbs->subjectPublicKeyInfo->parameters->tag ^= 0xFF;
    clean_ASYMMETRIC_KEY(tbs->subjectPublicKeyInfo->key);
}

TEST(Certificate, CopiesShareNothing) {
    const LeakCheck leaks;
    const OwnedCert original = read_certificate("user.der");
    const std::string encoding = encoding_or_status(kCert, original.get());
    const OwnedCert copy(dup_X509_CERT(original.get()));
    scramble(original.get());
    EXPECT_NE(encoding_or_status(kCert, original.get()), encoding);
    EXPECT_EQ(encoding_or_status(kCert, copy.get()), encoding);
    EXPECT_EQ(get_RSA_length(static_cast<RSA_UNIT *>(get_X509_SPKI(copy.get())->key->key)), 256U);
    const OwnedCert second(dup_X509_CERT(copy.get()));
    scramble(copy.get());
    EXPECT_EQ(encoding_or_status(kCert, second.get()), encoding);
}

TEST(Certificate, Times) {
    for (const char *text : {"17:3235303130323033303430355A", "18:32303530303130323033303430355A", "17:"}) {
        expect_comes_back(kTime, text);
    }
    expect_comes_back(kValidity, "30{18:41 17:42}");
    expect_refused(kTime, "16:41", 0x462A0104);
    expect_refused(kValidity, "30{17:41}", 0x461A002B);
    expect_refused(kValidity, "30{17:41 05:}", 0x461A0104);
    expect_null_arguments_refused(kTime);
    expect_null_arguments_refused(kValidity);

    const LeakCheck leaks;
    struct Case {
        std::int32_t year;
        std::uint32_t form;
        const char *text;
    };
    X509_TIME *time = new_X509_TIME();
    for (const Case &c : {Case{1949, 1, "19490630235958Z"}, Case{1950, 0, "500630235958Z"},
                          Case{2049, 0, "490630235958Z"}, Case{2050, 1, "20500630235958Z"}}) {
        const ASN1_TIME calendar = {58, 59, 23, 30, 5, c.year - 1900, 0, 0, 0};
        ASSERT_EQ(set_X509_TIME(time, &calendar), 0U);
        EXPECT_EQ(time->form, c.form);
        EXPECT_EQ(octets(time->time), c.text);
        ASN1_TIME *read = X509_TIME_to_ASN1_TIME(time);
        EXPECT_EQ(cmp_ASN1_TIME(read, &calendar), 0) << c.year;
        free_ASN1_TIME(read);
    }
    const ASN1_TIME wrong = {60, 0, 0, 1, 0, 100, 0, 0, 0};
    EXPECT_EQ(set_X509_TIME(time, &wrong), 1U);
    EXPECT_EQ(set_X509_TIME(time, nullptr), 1U);
    EXPECT_EQ(octets(time->time), "20500630235958Z") << "unchanged";
    clean_X509_TIME(time);
    EXPECT_EQ(X509_TIME_to_ASN1_TIME(time), nullptr);
    EXPECT_EQ(encoding_or_status(kTime, time), "status " + std::to_string(0x46290103));
    free_X509_TIME(time);
}

TEST(Certificate, EveryAllocationMayFail) {
    const Octets user = read_file("user.der");
    const Node node(decodeToDERSequence(user.data()));
    expect_allocations_may_fail(kCert, node.get(), {0x460F0104, 0x46110104}, {0x46100103, 0x4610003C});
    expect_allocations_may_fail(kTbs, der_node(Parts().tbs()).get(), {0x46110104}, {0x46120103});
    expect_allocations_may_fail(kValidity, der_node(Parts().validity).get(), {0x461A0104}, {0x46190103});
    const OwnedCert from = cert_of(Parts());
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
    struct Case {
        const char *file;
        std::uint32_t version, kind;
    };
    for (const Case &c : {Case{"user.der", 2, 1}, Case{"version1.der", 0, 1}, Case{"ec-p256.der", 2, 3},
                          Case{"ec-p384.der", 2, 0}, Case{"ed25519.der", 2, 0}}) {
        const LeakCheck leaks;
        const OwnedCert cert = read_certificate(c.file);
        EXPECT_EQ(encode_certificate(cert.get()), read_file(c.file)) << c.file;
        EXPECT_EQ(get_X509_version(cert.get()), c.version) << c.file;
        const ASYMMETRIC_KEY *key = get_X509_PUBKEY_key(get_X509_SPKI(cert.get()));
        EXPECT_EQ(key == nullptr ? 0 : key->kind, c.kind) << c.file;
    }
    // RSASSA-PSS parameters are lost, twice.
    const OwnedCert pss = read_certificate("pss.der");
    const Octets original = read_file("pss.der");
    const Octets identifier = hex("06 09 2A 86 48 86 F7 0D 01 01 0A 30");
    const auto at = std::search(original.begin(), original.end(), identifier.begin(), identifier.end());
    ASSERT_NE(at, original.end());
    const std::size_t parameters = 2U + at[static_cast<std::ptrdiff_t>(identifier.size())];
    EXPECT_EQ(encode_certificate(pss.get()).size(), original.size() - 2 * parameters);
}

/// Every certificate that Debian trusts decodes, and comes back byte for byte; those with RSA keys verify under
/// their own. The exceptions, by the text of their subjects and the rule that makes them so.
TEST(CertificateFiles, CertificatesOfDebianComeBackAndVerify) {
    const std::string path = "/etc/ssl/certs/ca-certificates.crt";
    if (!std::ifstream(path)) GTEST_SKIP() << "no ca-certificates here";
    const std::map<std::string, std::string> exceptions = {};
    std::uint32_t with_rsa = 0;
    std::uint32_t certificates = 0;
    for (const Octets &original : read_pem_file(path)) {
        const LeakCheck leaks;
        ++certificates;
        void *cert = nullptr;
        ASSERT_EQ(readDER_from_Buffer(&cert, TLX_DECODER(Seq_to_X509_CERT), original.data(),
                                      static_cast<std::uint32_t>(original.size())),
                  0U)
            << hex_of(original.data(), original.size());
        const OwnedCert owner(static_cast<X509_CERT *>(cert));
        char *subject = dump_X509_NAME(get_X509_subject(owner.get()));
        EXPECT_EQ(encode_certificate(owner.get()) == original, exceptions.count(subject) == 0) << subject;
        const OwnedCert copy(dup_X509_CERT(owner.get()));
        EXPECT_EQ(encode_certificate(copy.get()), encode_certificate(owner.get())) << subject;
        const X509_PUBKEY *key = get_X509_SPKI(owner.get());
        if (key->key != nullptr && key->key->kind == TLX_KEY_RSA) {
            ++with_rsa;
            EXPECT_EQ(verify_SIG_X509_CERT(owner.get(), key), 0U) << subject;
        }
        tlx_free(subject);
    }
    EXPECT_GT(certificates, 100U);
    EXPECT_GT(with_rsa, 80U);
}

}  // namespace
}  // namespace tlx_test
