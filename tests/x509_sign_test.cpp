// Signing and verifying certificates, with the openssl and certtool programs as peers.
#include <gtest/gtest.h>
#include <tlxpki/pkcs1.h>
#include <tlxpki/x509_sign.h>

#include <algorithm>
#include <fstream>
#include <map>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "support/allocation.hpp"
#include "support/command.hpp"
#include "support/octets.hpp"
#include "x509/codecs.hpp"

namespace {

using tlx_test::CommandFolder;
using tlx_test::Octets;

struct Free {
    void operator()(RSA_UNIT *unit) const { free_RSA_UNIT(unit); }
    void operator()(KCDSA *unit) const { free_KCDSA(unit); }
};
using Rsa = std::unique_ptr<RSA_UNIT, Free>;
using Kcdsa = std::unique_ptr<KCDSA, Free>;
using Cert = tlx::Owned<X509_CERT>;
using Key = tlx::Owned<ASYMMETRIC_KEY>;
using PublicKey = tlx::Owned<X509_PUBKEY>;
using Oid = tlx::Owned<OBJECT_IDENTIFIER>;

Oid oid(const char *name) {
    return Oid(get_OBJECT_IDENTIFIER(name, 0));
}

Octets octets_of(const std::string &text) {
    Octets octets(text.begin(), text.end());
    octets.shrink_to_fit();
    return octets;
}

Cert decode(const Octets &der) {
    X509_CERT *cert = nullptr;
    void *out = nullptr;
    if (readDER_from_Buffer(&out, TLX_DECODER(Seq_to_X509_CERT), der.data(),
                            static_cast<std::uint32_t>(der.size())) == 0) {
        cert = static_cast<X509_CERT *>(out);
    }
    return Cert(cert);
}

Octets encode(const Cert &cert) {
    std::uint8_t *der = nullptr;
    const std::uint32_t size = writeDER_to_Binary(cert.get(), TLX_ENCODER(X509_CERT_to_Seq), &der);
    EXPECT_NE(size, 0xFFFFFFFF);
    const Octets octets(der, der + (size == 0xFFFFFFFF ? 0 : size));
    tlx_free(der);
    return octets;
}

std::uint32_t verify_own(const Cert &cert) {
    return verify_SIG_X509_CERT(cert.get(), get_X509_SPKI(cert.get()));
}

void use_algorithm(const Cert &cert, const char *name) {
    ASSERT_EQ(set_X509_signature(cert.get(), oid(name).get()), 0U) << name;
}

/// A self-signed certificate with a critical extension, made by openssl once and for all tests, and its key.
class Authority {
  public:
    static const Authority &instance() {
        static const Authority authority;
        return authority;
    }
    [[nodiscard]] const CommandFolder &folder() const { return folder_; }
    [[nodiscard]] const Octets &der() const { return der_; }
    [[nodiscard]] const ASYMMETRIC_KEY *key() const { return key_.get(); }
    [[nodiscard]] Cert cert() const { return decode(der_); }

  private:
    Authority() : key_(new_ASYMMETRIC_KEY()) {
        folder_.run(
            "openssl req -x509 -newkey rsa:2048 -nodes -sha256 -days 2 -keyout ca.p8 "
            "-subj /C=KR/O=Example/CN=Authority -outform DER -out ca.der && "
            "openssl rsa -in ca.p8 -traditional -out ca.key && "
            "openssl x509 -in ca.der -inform DER -out ca.pem");
        der_ = octets_of(folder_.read("ca.der"));
        const Rsa unit(new_RSA_UNIT());
        EXPECT_EQ(readPKCS1_from_File(unit.get(), nullptr, 0, folder_.path("ca.key").c_str()), 0U);
        EXPECT_EQ(set_ASYMMETRIC_KEY(key_.get(), TLX_KEY_RSA, unit.get()), 0U);
    }
    CommandFolder folder_;
    Octets der_;
    Key key_;
};

/// A key of the published test vectors, named by section.
Kcdsa vector_key(const std::string &section) {
    std::ifstream file(TLX_TEST_DATA "/kcdsa.txt");
    std::map<std::string, tlx_test::Number> numbers;
    std::string line;
    bool found = false;
    while (std::getline(file, line)) {
        if (line.starts_with("[")) found = line == "[" + section + "]";
        const std::size_t equals = line.find(" = ");
        if (found && equals != std::string::npos)
            numbers[line.substr(0, equals)] = tlx_test::number_of(line.substr(equals + 3).c_str());
    }
    Kcdsa unit(new_KCDSA());
    EXPECT_EQ(set_KCDSA_params(unit.get(), numbers["p"].get(), numbers["q"].get(), numbers["g"].get()), 0U);
    EXPECT_EQ(set_KCDSA_public(unit.get(), numbers["y"].get()), 0U);
    EXPECT_EQ(set_KCDSA_private(unit.get(), numbers["x"].get()), 0U);
    return unit;
}

Key holder(std::uint32_t kind, const void *unit) {
    Key key(new_ASYMMETRIC_KEY());
    EXPECT_EQ(set_ASYMMETRIC_KEY(key.get(), kind, unit), 0U);
    return key;
}

PublicKey kcdsa_public_key(const KCDSA *unit) {
    PublicKey key(new_X509_PUBKEY());
    EXPECT_EQ(set_X509_PUBKEY_kcdsa(key.get(), unit), 0U);
    return key;
}

/// The authority's certificate, for a KCDSA key and signed with it.
Cert kcdsa_cert(const KCDSA *unit, const char *algorithm) {
    Cert cert = Authority::instance().cert();
    EXPECT_EQ(set_X509_pub_key(cert.get(), kcdsa_public_key(unit).get()), 0U);
    use_algorithm(cert, algorithm);
    EXPECT_EQ(gen_SIG_X509_Cert(cert.get(), holder(TLX_KEY_KCDSA, unit).get()), 0U) << algorithm;
    return cert;
}

Octets tbs_of(const Cert &cert) {
    std::uint8_t *der = nullptr;
    const std::uint32_t size =
        writeDER_to_Binary(cert->tbsCertificate, TLX_ENCODER(X509_TBS_CERT_to_Seq), &der);
    const Octets octets(der, der + size);
    tlx_free(der);
    return octets;
}

// ---- RSA, both ways ----

TEST(RsaCertificates, OfOpensslVerify) {
    EXPECT_EQ(verify_own(Authority::instance().cert()), 0U);
    const tlx_test::LeakCheck leaks;
    const CommandFolder folder;
    for (const char *digest : {"md5", "sha1", "sha224", "sha256", "sha384", "sha512"}) {
        SCOPED_TRACE(digest);
        folder.run("openssl req -x509 -newkey rsa:1024 -nodes -" + std::string(digest) +
                   " -days 2 -keyout key.pem -subj /C=KR/CN=Root -outform DER -out cert.der");
        const Cert cert = decode(octets_of(folder.read("cert.der")));
        ASSERT_NE(cert, nullptr);
        EXPECT_EQ(verify_own(cert), 0U);
        const Octets before = encode(cert);
        cert->signatureValue->data[5] ^= 0x10;
        EXPECT_EQ(verify_own(cert), TLX_RSA_BAD_SIGNATURE);
        cert->signatureValue->data[5] ^= 0x10;
        EXPECT_EQ(encode(cert), before) << "verifying changes nothing";
        EXPECT_EQ(set_X509_version(cert.get(), 0), 0U);
        EXPECT_EQ(verify_own(cert), TLX_RSA_BAD_SIGNATURE);
    }
}

TEST(RsaCertificates, OfOursVerifyByOpensslAndCerttool) {
    const Authority &authority = Authority::instance();
    const CommandFolder folder;
    const std::pair<const char *, const char *> algorithms[] = {
        {"RSA-MD5", "md5WithRSAEncryption"},
        {"RSA-SHA1", "sha1WithRSAEncryption"},
        {"RSA-SHA1-2", "sha1WithRSA"},
        {"RSA-SHA224", "sha224WithRSAEncryption"},
        {"RSA-SHA256", "sha256WithRSAEncryption"},
        {"RSA-SHA384", "sha384WithRSAEncryption"},
        {"RSA-SHA512", "sha512WithRSAEncryption"},
    };
    for (const auto &[ours, theirs] : algorithms) {
        SCOPED_TRACE(ours);
        const Cert cert = authority.cert();
        use_algorithm(cert, ours);
        ASSERT_EQ(gen_SIG_X509_Cert(cert.get(), authority.key()), 0U);
        EXPECT_EQ(cmp_OBJECT_IDENTIFIER(cert->signatureAlgorithm, oid(ours).get()), 0);
        EXPECT_EQ(verify_own(cert), 0U);
        ASSERT_NE(
            writeDER_to_FILE(cert.get(), TLX_ENCODER(X509_CERT_to_Seq), folder.path("ours.der").c_str()),
            0xFFFFFFFF);
        const std::string printed = folder.run(
            "openssl x509 -in ours.der -inform DER -out ours.pem && openssl x509 -in ours.pem -noout -text");
        EXPECT_NE(printed.find("Signature Algorithm: " + std::string(theirs)), std::string::npos) << printed;
        EXPECT_EQ(folder.run("openssl verify -auth_level 0 -check_ss_sig -CAfile ours.pem ours.pem"),
                  "ours.pem: OK\n");
    }
    const std::string chain =
        folder.run("certtool --verify --load-ca-certificate ours.pem --infile ours.pem");
    EXPECT_NE(chain.find("Chain verification output: Verified. The certificate is trusted."),
              std::string::npos)
        << chain;
}

TEST(RsaCertificates, OfAnIssuerGoBothWays) {
    const Authority &authority = Authority::instance();
    const CommandFolder folder;
    folder.write("ca.pem", authority.folder().read("ca.pem"));
    folder.write("ca.key", authority.folder().read("ca.key"));
    folder.run(
        "openssl req -newkey rsa:1024 -nodes -keyout user.key -subj /C=KR/CN=User -out user.csr && "
        "openssl x509 -req -in user.csr -CA ca.pem -CAkey ca.key -CAcreateserial -sha384"
        " -days 1 -outform DER -out user.der");
    const Cert user = decode(octets_of(folder.read("user.der")));
    ASSERT_NE(user, nullptr);
    const Cert issuer = authority.cert();
    EXPECT_EQ(verify_SIG_X509_CERT(user.get(), get_X509_SPKI(issuer.get())), 0U);
    EXPECT_EQ(verify_own(user), TLX_RSA_BAD_SIGNATURE) << "the key of another size";

    ASSERT_EQ(set_X509_serial(user.get(), tlx_test::number_of("0123456789ABCDEF").get()), 0U);
    ASSERT_EQ(gen_SIG_X509_Cert(user.get(), authority.key()), 0U);
    ASSERT_NE(writeDER_to_FILE(user.get(), TLX_ENCODER(X509_CERT_to_Seq), folder.path("ours.der").c_str()),
              0xFFFFFFFF);
    EXPECT_EQ(folder.run("openssl x509 -in ours.der -inform DER -out ours.pem && "
                         "openssl verify -CAfile ca.pem ours.pem"),
              "ours.pem: OK\n");
}

TEST(RsaCertificates, ShareOneKeyObject) {
    const Cert cert = Authority::instance().cert();
    const auto *unit = static_cast<RSA_UNIT *>(get_X509_SPKI(cert.get())->key->key);
    for (int i = 0; i < 1000; ++i)
        ASSERT_EQ(verify_own(cert), 0U);
    EXPECT_EQ(get_RSA_UNIT_builds(unit), 1U);
    std::vector<std::thread> threads;
    std::vector<std::uint32_t> results(4, 1);
    for (std::uint32_t &result : results) {
        threads.emplace_back([&] {
            result = 0;
            for (int i = 0; i < 50; ++i)
                result |= verify_own(cert);
        });
    }
    for (std::thread &thread : threads)
        thread.join();
    EXPECT_EQ(results, std::vector<std::uint32_t>(4, 0));
}

TEST(RsaCertificates, LeaveWhatIsUnderWayAlone) {
    const Authority &authority = Authority::instance();
    const Cert cert = authority.cert();
    auto *signer = static_cast<RSA_UNIT *>(authority.key()->key);
    auto *verifier = static_cast<RSA_UNIT *>(get_X509_SPKI(cert.get())->key->key);
    const std::uint8_t message[] = {1, 2, 3};
    std::uint8_t signature[256];
    std::uint32_t len = 0;
    ASSERT_EQ(init_RSASSA(signer, TLX_DIGEST_SHA1, TLX_RSA_MODE_PKCS1, 1), 0U);
    ASSERT_EQ(update_RSASSA(signer, message, 2), 0U);
    EXPECT_EQ(gen_SIG_X509_Cert(cert.get(), authority.key()), 0U);
    ASSERT_EQ(update_RSASSA(signer, message + 2, 1), 0U);
    ASSERT_EQ(final_RSASSA(signer, signature, &len), 0U);
    ASSERT_EQ(init_RSASSA(verifier, TLX_DIGEST_SHA1, TLX_RSA_MODE_PKCS1, 0), 0U);
    ASSERT_EQ(update_RSASSA(verifier, message, 3), 0U);
    EXPECT_EQ(verify_own(cert), 0U);
    EXPECT_EQ(final_RSASSA(verifier, signature, &len), 0U);
}

// ---- KCDSA ----

TEST(KcdsaCertificates, UseTheDigestOfTheirAlgorithm) {
    static_cast<void>(Authority::instance());
    const tlx_test::LeakCheck leaks;
    const Kcdsa unit = vector_key("A1024B160HAS160");
    const std::pair<const char *, std::uint32_t> algorithms[] = {
        {"KCDSA1", TLX_DIGEST_HAS160},       {"HAS160withKCDSA1", TLX_DIGEST_HAS160},
        {"KCDSA1withSHA1", TLX_DIGEST_SHA1}, {"KCDSAwithHAS160", TLX_DIGEST_HAS160},
        {"KCDSAwithSHA1", TLX_DIGEST_SHA1},
    };
    for (const auto &[algorithm, digest] : algorithms) {
        SCOPED_TRACE(algorithm);
        const Cert cert = decode(encode(kcdsa_cert(unit.get(), algorithm)));
        ASSERT_NE(cert, nullptr);
        EXPECT_EQ(verify_own(cert), 0U);

        const BIT_STRING &value = *cert->signatureValue;
        const tlx_test::Node node(
            decodeToDERSequence_n(value.data, static_cast<std::uint32_t>(value.length)));
        std::uint8_t *r = nullptr;
        std::uint8_t *s = nullptr;
        std::uint32_t r_len = 0;
        std::uint32_t s_len = 0;
        ASSERT_EQ(decode_KCDSASignatureValue(&r, &r_len, &s, &s_len, node.get()), 0U);
        EXPECT_EQ(r_len, 20U);
        const Octets tbs = tbs_of(cert);
        EXPECT_EQ(verify_KCDSA_data(unit.get(), digest, tbs.data(), static_cast<std::uint32_t>(tbs.size()), r,
                                    r_len, s, s_len),
                  0U);
        tlx_free(r);
        tlx_free(s);

        value.data[value.length - 1] ^= 1;  // the lowest bit of s
        EXPECT_EQ(verify_own(cert), TLX_KCDSA_BAD_SIGNATURE);
        value.data[value.length - 1] ^= 1;
        EXPECT_EQ(set_X509_version(cert.get(), 0), 0U);
        EXPECT_EQ(verify_own(cert), TLX_KCDSA_BAD_SIGNATURE);
    }
}

TEST(KcdsaCertificates, TakeAnSOf20Octets) {
    static_cast<void>(Authority::instance());
    const tlx_test::LeakCheck leaks;
    const Kcdsa longer = vector_key("A2048B256SHA256");
    const Cert cert = kcdsa_cert(longer.get(), "KCDSA1");
    EXPECT_EQ(verify_own(cert), 0x46180104U) << "s of 32 octets: signed, but not accepted";

    const Kcdsa unit = vector_key("A1024B160HAS160");
    const struct {
        const char *what, *signature;
        std::uint32_t status;
    } cases[] = {
        {"20 octets",
         "30 1A 03 02 00 01 02 14 01 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 02",
         TLX_KCDSA_BAD_SIGNATURE},
        {"21 octets",
         "30 1B 03 02 00 01 02 15 01 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 02",
         0x46180104},
        {"no s", "30 04 03 02 00 01", 0x46180104},
        {"no r", "30 03 02 01 01", 0x46180104},
        {"an ECDSA signature", "30 06 02 01 01 02 01 02", 0x46180104},
        {"a SET", "31 07 03 02 00 01 02 01 02", 0x46180104},
        {"cut short", "30 07 03 02 00 01 02 01", 0x46180104},
        {"nothing", "", 0x46180104},
    };
    const Cert broken = kcdsa_cert(unit.get(), "KCDSA1");
    for (const auto &each : cases) {
        const tlx_test::String value = tlx_test::string_of(TLX_TAG_BIT_STRING, tlx_test::hex(each.signature));
        ASSERT_EQ(set_X509_sig_value(broken.get(), value.get()), 0U);
        EXPECT_EQ(verify_own(broken), each.status) << each.what;
    }
}

// ---- What is refused ----

TEST(Refusals, AreToldApart) {
    const Authority &authority = Authority::instance();
    const tlx_test::LeakCheck leaks;
    const Cert cert = authority.cert();
    const auto *rsa = static_cast<const RSA_UNIT *>(authority.key()->key);
    const Kcdsa kcdsa = vector_key("A1024B160HAS160");
    const Oid sha256 = oid("RSA-SHA256");
    const X509_TBS_CERT *tbs = cert->tbsCertificate;
    BIT_STRING *bits = nullptr;

    EXPECT_EQ(gen_RSA_SIG_X509_TBS_CERT(nullptr, &bits, sha256.get(), rsa), 0x46150049U);
    EXPECT_EQ(gen_RSA_SIG_X509_TBS_CERT(tbs, nullptr, sha256.get(), rsa), 0x46150049U);
    EXPECT_EQ(gen_RSA_SIG_X509_TBS_CERT(tbs, &bits, sha256.get(), nullptr), 0x46150049U);
    EXPECT_EQ(gen_RSA_SIG_X509_TBS_CERT(tbs, &bits, nullptr, rsa), 0x4615002BU);
    EXPECT_EQ(gen_RSA_SIG_X509_TBS_CERT(tbs, &bits, oid("rsaEncryption").get(), rsa), 0x4615002BU)
        << "no digest";
    EXPECT_EQ(gen_RSA_SIG_X509_TBS_CERT(tbs, &bits, oid("SHA256").get(), rsa), 0x4615002BU) << "no scheme";
    EXPECT_EQ(gen_RSA_SIG_X509_TBS_CERT(tbs, &bits, oid("id-RSASSA-PSS").get(), rsa), 0x4615002BU);
    const auto *public_unit = static_cast<const RSA_UNIT *>(get_X509_SPKI(cert.get())->key->key);
    EXPECT_EQ(gen_RSA_SIG_X509_TBS_CERT(tbs, &bits, sha256.get(), public_unit), 1U) << "a public key";
    EXPECT_EQ(gen_KCDSA_SIG_X509_TBS_CERT(tbs, &bits, oid("KCDSA1").get(), nullptr), 0x46160049U);
    EXPECT_EQ(gen_KCDSA_SIG_X509_TBS_CERT(tbs, &bits, oid("ecdsa-with-SHA1").get(), kcdsa.get()),
              0x4616002BU);
    const tlx::Owned<X509_TBS_CERT> empty(new_X509_TBS_CERT());
    EXPECT_EQ(gen_RSA_SIG_X509_TBS_CERT(empty.get(), &bits, sha256.get(), rsa), 0x4612010AU)
        << "the encoder's status";
    EXPECT_EQ(bits, nullptr);

    const Octets before = encode(cert);
    ASYMMETRIC_KEY odd = *authority.key();
    EXPECT_EQ(gen_SIG_X509_Cert(nullptr, &odd), 1U);
    EXPECT_EQ(gen_SIG_X509_Cert(cert.get(), nullptr), 1U);
    for (const std::uint32_t kind : {0U, std::uint32_t{TLX_KEY_ECC}, 4U}) {
        odd.kind = kind;
        EXPECT_EQ(gen_SIG_X509_Cert(cert.get(), &odd), 1U) << kind;
    }
    odd = {TLX_KEY_RSA, nullptr};
    EXPECT_EQ(gen_SIG_X509_Cert(cert.get(), &odd), 1U);
    EXPECT_EQ(encode(cert), before);

    EXPECT_EQ(verify_SIG_X509_CERT(nullptr, get_X509_SPKI(cert.get())), 1U);
    EXPECT_EQ(verify_SIG_X509_CERT(cert.get(), nullptr), 1U);
    const PublicKey key(dup_X509_PUBKEY(get_X509_SPKI(cert.get())));
    key->key->kind = TLX_KEY_ECC;
    EXPECT_EQ(verify_SIG_X509_CERT(cert.get(), key.get()), 1U);
    key->key->kind = TLX_KEY_RSA;
    clean_X509_PUBKEY(key.get());
    EXPECT_EQ(verify_SIG_X509_CERT(cert.get(), key.get()), 1U) << "a key that was not decoded";

    EXPECT_EQ(verify_RSA_SIG_X509_CERT(cert.get(), nullptr), 0x46170049U);
    EXPECT_EQ(verify_KCDSA_SIG_X509_CERT(nullptr, kcdsa.get()), 0x46180049U);
    EXPECT_EQ(verify_KCDSA_SIG_X509_CERT(cert.get(), kcdsa.get()), 0x46180104U) << "an RSA signature";
    ASSERT_EQ(set_X509_sig_alg(cert.get(), oid("id-RSASSA-PSS").get()), 0U);
    EXPECT_EQ(verify_own(cert), 0x4617002BU);
    ASSERT_EQ(set_X509_sig_alg(cert.get(), oid("ecdsa-with-SHA1").get()), 0U);
    EXPECT_EQ(verify_KCDSA_SIG_X509_CERT(cert.get(), kcdsa.get()), 0x4618002BU);
    free_BIT_STRING(cert->signatureValue);
    cert->signatureValue = nullptr;
    ASSERT_EQ(set_X509_sig_alg(cert.get(), sha256.get()), 0U);
    EXPECT_NE(verify_own(cert), 0U) << "no signature";
    free_X509_TBS_CERT(cert->tbsCertificate);
    cert->tbsCertificate = nullptr;
    EXPECT_EQ(gen_SIG_X509_Cert(cert.get(), authority.key()), 1U);
    EXPECT_EQ(verify_RSA_SIG_X509_CERT(cert.get(), rsa), 0x46170049U);
}

// ---- The validity period ----

X509_TIME time_of(std::uint32_t form, const char *text) {
    return {form,
            tlx_test::string_of(form == 0 ? TLX_TAG_UTC_TIME : TLX_TAG_GENERALIZED_TIME, text).release()};
}

TEST(Validity, CountsToTheSecondWithBothEnds) {
    const Authority &authority = Authority::instance();
    const tlx_test::LeakCheck leaks;
    const Cert cert = authority.cert();
    EXPECT_EQ(verify_X509_validity(cert.get(), nullptr), 0U) << "made now";
    const struct {
        X509_TIME from, to;
        const char *time;
        std::uint32_t status;
    } cases[] = {
        {time_of(0, "240229235958Z"), time_of(0, "240301000001Z"), "2024-02-29,23:59:57", 0x462D0113},
        {time_of(0, "240229235958Z"), time_of(0, "240301000001Z"), "2024-02-29,23:59:58", 0},
        {time_of(0, "240229235958Z"), time_of(0, "240301000001Z"), "2024-03-01,00:00:01", 0},
        {time_of(0, "240229235958Z"), time_of(0, "240301000001Z"), "2024-03-01,00:00:02", 0x462D0113},
        {time_of(0, "500101000000Z"), time_of(0, "491231235959Z"), "2049-12-31,23:59:59", 0},
        {time_of(1, "20500101000000Z"), time_of(1, "20991231235959Z"), "2049-12-31,23:59:59", 0x462D0113},
        {time_of(1, "20500101000000Z"), time_of(1, "20991231235959Z"), "2050-01-01,00:00:00", 0},
        {time_of(0, "990101000000Z"), time_of(0, "200101000000Z"), nullptr, 0x462D0113},
        {time_of(0, "20O101000000Z"), time_of(0, "990101000000Z"), nullptr, 0x462D0104},
        {time_of(0, "200101000000Z"), time_of(1, "99990101"), "2024-01-01,00:00:00", 0x462D0104},
        {time_of(0, "250101000000Z"), time_of(0, "240101000000Z"), "2024-06-01,00:00:00", 0x462D0113},
    };
    for (const auto &each : cases) {
        X509_VALIDITY period = {each.from, each.to};
        std::swap(*cert->tbsCertificate->validity, period);
        const std::unique_ptr<ASN1_TIME, tlx::FreeWith<free_ASN1_TIME>> time(charToASN1_TIME(each.time));
        EXPECT_EQ(verify_X509_validity(cert.get(), time.get()), each.status)
            << each.from.time->data << " " << each.to.time->data << " "
            << (each.time != nullptr ? each.time : "now");
        std::swap(*cert->tbsCertificate->validity, period);
        free_ASN1_STRING(each.from.time);
        free_ASN1_STRING(each.to.time);
    }
    EXPECT_EQ(verify_X509_validity(nullptr, nullptr), 0x462D0049U);
    free_X509_VALIDITY(cert->tbsCertificate->validity);
    cert->tbsCertificate->validity = nullptr;
    EXPECT_EQ(verify_X509_validity(cert.get(), nullptr), 0x462D0049U);
}

// ---- One bit at a time ----

enum class Part { identifier, length, contents };

/// A place in a certificate: the child numbers from the outermost element on ("0.3" is the fourth member of
/// the to-be-signed part), and where in that element.
struct Place {
    std::string path;
    Part part;
    std::size_t index;  ///< within the part
};

Place place_of(const Octets &der, std::size_t offset) {
    std::string path;
    for (std::size_t start = 0, child = 0;;) {
        const std::size_t header = 1 + getASN1LengthSize(&der[start + 1]);
        const std::size_t end = start + header + getASN1ValueLengthFromLO(&der[start + 1]);
        if (offset >= end) {
            start = end;
            ++child;
            continue;
        }
        if (start != 0) path += (path.empty() ? "" : ".") + std::to_string(child);
        if (offset == start) return {path, Part::identifier, 0};
        if (offset < start + header) return {path, Part::length, offset - start - 1};
        if ((der[start] & 0x20) == 0) return {path, Part::contents, offset - start - header};
        start += header;
        child = 0;
    }
}

/// Whether a flipped bit leaves the to-be-signed part as it is encoded anew, and the signature's octets, as
/// they were. The certificate has names of three attributes and a critical flag on its third extension.
bool is_ignored(const Place &place, unsigned bit) {
    const auto starts = [&](const char *path) { return place.path.starts_with(path); };
    // Parameters of the signature algorithms are dropped, inside as outside.
    if (place.path == "0.2.1" || place.path == "1.1") return true;
    if (place.part == Part::contents) {
        // Unused bits of the signature do not count, and a critical flag is critical when it is not 0.
        return (place.path == "2" || place.path == "0.7.0.2.1") && place.index == 0;
    }
    if (place.part == Part::length) return false;
    // Identifiers: the outermost is not looked at; elsewhere only the tag number counts, and not even that in
    // an element of another class, which is taken for what is expected.
    if (place.path.empty()) return true;
    if (place.path == "0.0") return false;                 // version: [0] as it is, or none
    if (place.path == "0.7") return bit == 4 || bit == 5;  // extensions: context-specific, number mod 16
    if (place.path == "0.7.0.2.1") return bit == 5 || bit == 6;  // critical: told apart by its class
    if (place.path == "0.6.0.1") return false;                   // the public key's parameters are kept
    const bool attribute_value = (starts("0.3.") || starts("0.5.")) && place.path.ends_with(".0.1");
    return !attribute_value && bit >= 5;  // a string keeps its identifier
}

TEST(EveryBit, OfACertificateIsSignedOrIgnoredByRule) {
    const Authority &authority = Authority::instance();
    const PublicKey key(dup_X509_PUBKEY(get_X509_SPKI(authority.cert().get())));
    Octets der = authority.der();
    unsigned passed = 0;
    for (std::size_t offset = 0; offset < der.size(); ++offset) {
        const Place place = place_of(authority.der(), offset);
        for (unsigned bit = 0; bit < 8; ++bit) {
            const auto mask = static_cast<std::uint8_t>(1U << bit);
            der[offset] ^= mask;
            const Cert flipped = decode(der);
            const bool verifies = flipped && verify_SIG_X509_CERT(flipped.get(), key.get()) == 0;
            der[offset] ^= mask;
            EXPECT_EQ(verifies, is_ignored(place, bit))
                << place.path << ", octet " << offset << ", bit " << bit;
            passed += verifies ? 1 : 0;
        }
    }
    EXPECT_EQ(passed, 195U) << "of " << 8 * der.size();
}

// ---- Memory ----

TEST(Memory, MayRunOutAnywhere) {
    const Authority &authority = Authority::instance();
    const Cert rsa = authority.cert();
    const Kcdsa unit = vector_key("A1024B160HAS160");
    const Cert kcdsa = kcdsa_cert(unit.get(), "KCDSA1");
    const Key key = holder(TLX_KEY_KCDSA, unit.get());
    const std::uint32_t no_memory[] = {1,          0x46120103, 0x4612003C, 0x4615003B,
                                       0x4616003B, 0x46180104, 0x462D003C, 0x462D0104};
    const auto sweep = [&](auto run) {
        return tlx_test::sweep_failing_allocations([&] {
            const std::uint32_t status = run();
            EXPECT_TRUE(status == 0 || std::count(std::begin(no_memory), std::end(no_memory), status) == 1)
                << std::hex << status;
            return status == 0;
        });
    };
    // The keys prepare themselves once, at their first use.
    EXPECT_EQ(verify_own(rsa), 0U);
    EXPECT_EQ(verify_own(kcdsa), 0U);
    EXPECT_EQ(gen_SIG_X509_Cert(kcdsa.get(), key.get()), 0U);
    EXPECT_EQ(gen_SIG_X509_Cert(rsa.get(), authority.key()), 0U);
    EXPECT_GT(sweep([&] { return verify_own(rsa); }), 0U);
    EXPECT_GT(sweep([&] { return verify_own(kcdsa); }), 1U);
    EXPECT_GT(sweep([&] { return gen_SIG_X509_Cert(rsa.get(), authority.key()); }), 4U);
    EXPECT_GT(sweep([&] { return gen_SIG_X509_Cert(kcdsa.get(), key.get()); }), 4U);
    EXPECT_EQ(sweep([&] { return verify_X509_validity(rsa.get(), nullptr); }), 3U);
    EXPECT_EQ(verify_own(rsa), 0U);
    EXPECT_EQ(verify_own(kcdsa), 0U);
}

}  // namespace
