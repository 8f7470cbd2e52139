// Signing and verifying certificates, with the openssl and certtool programs as peers.
#include <gtest/gtest.h>
#include <tlxpki/pkcs1.h>
#include <tlxpki/x509_sign.h>

#include "support/chain_builder.hpp"
#include "support/command.hpp"
#include "support/x509_files.hpp"
#include "support/x509_records.hpp"

namespace tlx_test {
namespace {

using Oid = Held<free_OBJECT_IDENTIFIER>;

Oid oid(const char *name) {
    return Oid(get_OBJECT_IDENTIFIER(name, 0));
}

OwnedCert read(const CommandFolder &folder, const std::string &name) {
    const std::string der = folder.read(name);
    return certificate_of(Octets(der.begin(), der.end()));
}

std::uint32_t verify_own(const OwnedCert &cert) {
    return verify_SIG_X509_CERT(cert.get(), get_X509_SPKI(cert.get()));
}

/// Writes the certificate to ours.der and has openssl turn it into ours.pem.
void write(const CommandFolder &folder, const OwnedCert &cert) {
    ASSERT_NE(writeDER_to_FILE(cert.get(), TLX_ENCODER(X509_CERT_to_Seq), folder.path("ours.der").c_str()),
              0xFFFFFFFF);
    folder.run("openssl x509 -in ours.der -inform DER -out ours.pem");
}

/// A self-signed certificate with a critical extension, made by openssl once and for all tests, and its key.
class Authority {
  public:
    static const Authority &instance() {
        static const Authority authority;
        return authority;
    }
    [[nodiscard]] const CommandFolder &folder() const { return folder_; }
    [[nodiscard]] const ASYMMETRIC_KEY *key() const { return key_.get(); }
    [[nodiscard]] RSA_UNIT *rsa() const { return static_cast<RSA_UNIT *>(key_->key); }
    [[nodiscard]] OwnedCert cert() const { return read(folder_, "ca.der"); }

  private:
    Authority() : key_(new_ASYMMETRIC_KEY()) {
        folder_.run(
            "openssl req -x509 -newkey rsa:2048 -nodes -sha256 -days 2 -keyout ca.p8 "
            "-subj /C=KR/O=Example/CN=Authority -outform DER -out ca.der && "
            "openssl rsa -in ca.p8 -traditional -out ca.key && "
            "openssl x509 -in ca.der -inform DER -out ca.pem");
        const Held<free_RSA_UNIT> unit(new_RSA_UNIT());
        EXPECT_EQ(readPKCS1_from_File(unit.get(), nullptr, 0, folder_.path("ca.key").c_str()), 0U);
        EXPECT_EQ(set_ASYMMETRIC_KEY(key_.get(), TLX_KEY_RSA, unit.get()), 0U);
    }
    CommandFolder folder_;
    Held<free_ASYMMETRIC_KEY> key_;
};

/// A certificate for a KCDSA key, signed with it under an algorithm.
Cert kcdsa_cert(const KCDSA *unit, const char *algorithm) {
    Cert cert = valid_chain(1)[0].make();
    const Held<free_X509_PUBKEY> open(new_X509_PUBKEY());
    const Held<free_ASYMMETRIC_KEY> secret(new_ASYMMETRIC_KEY());
    EXPECT_EQ(set_X509_PUBKEY_kcdsa(open.get(), unit), 0U);
    EXPECT_EQ(set_ASYMMETRIC_KEY(secret.get(), TLX_KEY_KCDSA, unit), 0U);
    EXPECT_EQ(set_X509_pub_key(cert.get(), open.get()), 0U);
    EXPECT_EQ(set_X509_signature(cert.get(), oid(algorithm).get()), 0U);
    EXPECT_EQ(gen_SIG_X509_Cert(cert.get(), secret.get()), 0U) << algorithm;
    return cert;
}

/// What openssl and certtool say of a certificate of ours that is signed under an algorithm.
std::string signed_by(const Row &row) {
    const CommandFolder folder;
    const OwnedCert cert = Authority::instance().cert();
    EXPECT_EQ(set_X509_signature(cert.get(), oid(row[1].c_str()).get()), 0U);
    EXPECT_EQ(gen_SIG_X509_Cert(cert.get(), Authority::instance().key()), 0U);
    EXPECT_EQ(cmp_OBJECT_IDENTIFIER(cert->signatureAlgorithm, cert->tbsCertificate->signature), 0);
    EXPECT_EQ(verify_own(cert), 0U);
    write(folder, cert);
    EXPECT_EQ(set_X509_version(cert.get(), 0), 0U);
    EXPECT_EQ(verify_own(cert), TLX_RSA_BAD_SIGNATURE);
    return folder.run(
        "openssl x509 -in ours.pem -noout -text | grep -om1 'Algorithm: .*';"
        "openssl verify -auth_level 0 -check_ss_sig -CAfile ours.pem ours.pem;" +
        row[2]);
}

TEST(RsaCertificates, OfAnIssuerGoBothWays) {
    const Authority &authority = Authority::instance();
    const CommandFolder &folder = authority.folder();
    folder.run(
        "openssl req -newkey rsa:1024 -nodes -keyout user.key -subj /C=KR/CN=User -out user.csr && "
        "openssl x509 -req -in user.csr -CA ca.pem -CAkey ca.key -CAcreateserial -sha384"
        " -days 1 -outform DER -out user.der");
    const OwnedCert user = read(folder, "user.der");
    ASSERT_NE(user, nullptr);
    EXPECT_EQ(verify_SIG_X509_CERT(user.get(), get_X509_SPKI(authority.cert().get())), 0U);
    EXPECT_EQ(verify_own(user), TLX_RSA_BAD_SIGNATURE) << "the key of another size";
    ASSERT_EQ(set_X509_serial(user.get(), number_of("0123456789ABCDEF").get()), 0U);
    ASSERT_EQ(gen_SIG_X509_Cert(user.get(), authority.key()), 0U);
    write(folder, user);
    EXPECT_EQ(folder.run("openssl verify -CAfile ca.pem ours.pem"), "ours.pem: OK\n");
}

TEST(RsaCertificates, UseOneKeyObjectAndLeaveWhatIsUnderWayAlone) {
    const Authority &authority = Authority::instance();
    const OwnedCert cert = authority.cert();
    auto *verifier = static_cast<RSA_UNIT *>(get_X509_SPKI(cert.get())->key->key);
    const std::uint8_t message[] = {1, 2, 3};
    std::uint8_t signature[256];
    std::uint32_t len = 0;
    ASSERT_EQ(init_RSASSA(authority.rsa(), TLX_DIGEST_SHA1, TLX_RSA_MODE_PKCS1, 1), 0U);
    ASSERT_EQ(update_RSASSA(authority.rsa(), message, 2), 0U);
    EXPECT_EQ(gen_SIG_X509_Cert(cert.get(), authority.key()), 0U);
    ASSERT_EQ(update_RSASSA(authority.rsa(), message + 2, 1), 0U);
    ASSERT_EQ(final_RSASSA(authority.rsa(), signature, &len), 0U);
    ASSERT_EQ(init_RSASSA(verifier, TLX_DIGEST_SHA1, TLX_RSA_MODE_PKCS1, 0), 0U);
    ASSERT_EQ(update_RSASSA(verifier, message, 3), 0U);
    EXPECT_EQ(verify_own(cert), 0U);
    EXPECT_EQ(final_RSASSA(verifier, signature, &len), 0U);
    EXPECT_EQ(get_RSA_UNIT_builds(verifier), 1U);
}

/// What verifying the signature value of a certificate with a digest gives.
std::string kcdsa_digest(const Row &row) {
    const Kcdsa unit = kcdsa_key("A1024B160HAS160");
    const OwnedCert cert = certificate_of(encode_certificate(kcdsa_cert(unit.get(), row[1].c_str()).get()));
    EXPECT_EQ(verify_own(cert), 0U);
    const BIT_STRING &value = *cert->signatureValue;
    const Node node(decodeToDERSequence_n(value.data, static_cast<std::uint32_t>(value.length)));
    std::uint8_t *r = nullptr;
    std::uint8_t *s = nullptr;
    std::uint32_t r_len = 0;
    std::uint32_t s_len = 0;
    EXPECT_EQ(decode_KCDSASignatureValue(&r, &r_len, &s, &s_len, node.get()), 0U);
    const Octets tbs = encoding_of(cert->tbsCertificate, TLX_ENCODER(X509_TBS_CERT_to_Seq));
    const auto size = static_cast<std::uint32_t>(tbs.size());
    const std::uint32_t status =
        verify_KCDSA_data(unit.get(), row.number(2), tbs.data(), size, r, r_len, s, s_len);
    tlx_free(r);
    tlx_free(s);
    EXPECT_EQ(set_X509_version(cert.get(), 0), 0U);
    EXPECT_EQ(verify_own(cert), TLX_KCDSA_BAD_SIGNATURE);
    return status_text(status);
}

/// A certificate signed with KCDSA whose signature value is replaced by elements.
std::string kcdsa_signature(const Row &row) {
    const Kcdsa unit = kcdsa_key("A1024B160HAS160");
    const Cert cert = kcdsa_cert(unit.get(), "KCDSA1");
    EXPECT_EQ(verify_own(cert), 0U);
    const String value = string_of(TLX_TAG_BIT_STRING, der(row[1]));
    std::swap(*cert->signatureValue, *value);
    return status_text(verify_own(cert));
}

X509_TIME time_of(const std::string &text) {
    const bool is_utc = text.size() == 13;
    return {is_utc ? 0U : 1U,
            string_of(is_utc ? TLX_TAG_UTC_TIME : TLX_TAG_GENERALIZED_TIME, text).release()};
}

std::string validity(const Row &row) {
    const Cert cert = valid_chain(1)[0].make();
    clean_X509_VALIDITY(cert->tbsCertificate->validity);
    *cert->tbsCertificate->validity = {time_of(row[1]), time_of(row[2])};
    const Held<free_ASN1_TIME> time(row[3] == "now" ? nullptr : charToASN1_TIME(row[3].c_str()));
    return status_text(verify_X509_validity(cert.get(), time.get()));
}

/// The status of signing a to-be-signed part under an algorithm.
std::string sign(const Row &row) {
    const OwnedCert cert = Authority::instance().cert();
    const Kcdsa kcdsa = kcdsa_key("A1024B160HAS160");
    const Oid algorithm = row[2] == "none" ? nullptr : oid(row[2].c_str());
    X509_TBS_CERT *tbs = cert->tbsCertificate;
    BIT_STRING *bits = nullptr;
    const std::uint32_t status =
        row[1] == "RSA" ? gen_RSA_SIG_X509_TBS_CERT(tbs, &bits, algorithm.get(), Authority::instance().rsa())
                        : gen_KCDSA_SIG_X509_TBS_CERT(tbs, &bits, algorithm.get(), kcdsa.get());
    EXPECT_EQ(bits != nullptr, status == 0);
    free_BIT_STRING(bits);
    return status_text(status);
}

/// The statuses of verifying an RSA signature that is said to be of an algorithm, with an RSA and a KCDSA
/// key.
std::string verify(const Row &row) {
    const OwnedCert cert = Authority::instance().cert();
    const Kcdsa kcdsa = kcdsa_key("A1024B160HAS160");
    EXPECT_EQ(set_X509_sig_alg(cert.get(), oid(row[1].c_str()).get()), 0U);
    return status_text(verify_own(cert)) + " " +
           status_text(verify_KCDSA_SIG_X509_CERT(cert.get(), kcdsa.get()));
}

TEST(Signing, Rows) {
    Authority::instance();
    EXPECT_EQ(verify_own(kcdsa_cert(kcdsa_key("A2048B256SHA256").get(), "KCDSA1")), 0x46180104U)
        << "s of 32 octets";
    expect_rows("x509_sign.txt", {{"signed", {signed_by}},
                                  {"KCDSA digest", {kcdsa_digest}},
                                  {"KCDSA signature", {kcdsa_signature}},
                                  {"validity", {validity}},
                                  {"sign", {sign}},
                                  {"verify", {verify}}});
}

TEST(Refusals, OfMissingPartsAndOddKeys) {
    const Authority &authority = Authority::instance();
    const Kcdsa kcdsa = kcdsa_key("A1024B160HAS160");
    const LeakCheck leaks;
    const OwnedCert cert = authority.cert();
    const X509_PUBKEY *open = get_X509_SPKI(cert.get());
    const X509_TBS_CERT *tbs = cert->tbsCertificate;
    const Held<free_X509_TBS_CERT> empty(new_X509_TBS_CERT());
    const Oid sha256 = oid("RSA-SHA256");
    BIT_STRING *bits = nullptr;
    const Octets before = encode_certificate(cert.get());
    expect_refuses_null(0x46150049, gen_RSA_SIG_X509_TBS_CERT, tbs, &bits, nullptr, authority.rsa());
    expect_refuses_null(0x46160049, gen_KCDSA_SIG_X509_TBS_CERT, tbs, &bits, nullptr, kcdsa.get());
    expect_refuses_null(1, gen_SIG_X509_Cert, cert.get(), authority.key());
    expect_refuses_null(1, verify_SIG_X509_CERT, cert.get(), open);
    expect_refuses_null(0x46170049, verify_RSA_SIG_X509_CERT, cert.get(), authority.rsa());
    expect_refuses_null(0x46180049, verify_KCDSA_SIG_X509_CERT, cert.get(), kcdsa.get());
    expect_refuses_null(0x462D0049, verify_X509_validity, cert.get(), nullptr);
    auto *public_key = static_cast<RSA_UNIT *>(open->key->key);
    EXPECT_EQ(gen_RSA_SIG_X509_TBS_CERT(tbs, &bits, sha256.get(), public_key), 1U);
    EXPECT_EQ(gen_RSA_SIG_X509_TBS_CERT(empty.get(), &bits, sha256.get(), authority.rsa()), 0x4612010AU);
    EXPECT_EQ(bits, nullptr);
    const ASYMMETRIC_KEY odd_keys[] = {
        {0, authority.rsa()}, {TLX_KEY_ECC, authority.rsa()}, {4, authority.rsa()}, {TLX_KEY_RSA, nullptr}};
    for (const ASYMMETRIC_KEY &odd : odd_keys)
        EXPECT_EQ(gen_SIG_X509_Cert(cert.get(), &odd), 1U) << odd.kind;
    const Held<free_X509_PUBKEY> key(dup_X509_PUBKEY(open));
    key->key->kind = TLX_KEY_ECC;
    EXPECT_EQ(verify_SIG_X509_CERT(cert.get(), key.get()), 1U);
    key->key->kind = TLX_KEY_RSA;
    clean_X509_PUBKEY(key.get());
    EXPECT_EQ(verify_SIG_X509_CERT(cert.get(), key.get()), 1U) << "a key that was not decoded";
    EXPECT_EQ(encode_certificate(cert.get()), before);

    free_X509_VALIDITY(std::exchange(cert->tbsCertificate->validity, nullptr));
    EXPECT_EQ(verify_X509_validity(cert.get(), nullptr), 0x462D0049U);
    free_BIT_STRING(std::exchange(cert->signatureValue, nullptr));
    EXPECT_NE(verify_own(cert), 0U) << "no signature";
    free_X509_TBS_CERT(std::exchange(cert->tbsCertificate, nullptr));
    EXPECT_EQ(gen_SIG_X509_Cert(cert.get(), authority.key()), 1U);
    EXPECT_EQ(verify_RSA_SIG_X509_CERT(cert.get(), authority.rsa()), 0x46170049U);
}

TEST(EveryBit, OfACertificateIsSigned) {
    const OwnedCert cert = Authority::instance().cert();
    Octets der = encode_certificate(cert.get());
    for (std::size_t bit = 0; bit < 8 * der.size(); ++bit) {
        const auto mask = static_cast<std::uint8_t>(1U << bit % 8);
        der[bit / 8] ^= mask;
        const OwnedCert flipped = certificate_of(der);
        EXPECT_TRUE(flipped == nullptr || verify_SIG_X509_CERT(flipped.get(), get_X509_SPKI(cert.get())) != 0)
            << "octet " << bit / 8 << ", bit " << bit % 8;
        der[bit / 8] ^= mask;
    }
}

TEST(Memory, MayRunOutAnywhere) {
    const auto sweep = [&](auto run, unsigned least) {
        EXPECT_EQ(run(), 0U);  // keys prepare themselves at their first use
        const Statuses no_memory = {1,          0x46120103, 0x4612003C, 0x4615003B,
                                    0x4616003B, 0x46180104, 0x462D003C, 0x462D0104};
        EXPECT_GE(sweep_statuses(no_memory, run), least);
    };
    for (const unsigned number : {0U, kKcdsaKey}) {
        Chain specs = valid_chain(1);
        specs[0].key = specs[0].signer = number;
        const Cert cert = specs[0].make();
        const X509_PUBKEY *open = get_X509_SPKI(cert.get());
        sweep([&] { return verify_SIG_X509_CERT(cert.get(), open); }, number == 0 ? 1 : 2);
        sweep([&] { return gen_SIG_X509_Cert(cert.get(), signing_key(number)); }, 5);
        sweep([&] { return verify_X509_validity(cert.get(), nullptr); }, 3);
    }
}

}  // namespace
}  // namespace tlx_test
