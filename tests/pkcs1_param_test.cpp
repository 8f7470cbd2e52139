// Parameters of RSASSA-PSS and RSAES-OAEP, with the openssl program as peer.
#include <gtest/gtest.h>
#include <tlxpki/pkcs1_param.h>

#include <memory>
#include <string>
#include <string_view>

#include "keyinfo/key_records.hpp"
#include "support/allocation.hpp"
#include "support/command.hpp"
#include "support/octets.hpp"
#include "x509/certificate_records.hpp"

TLX_OWNS(RSASSA_PSS_PARAM);
TLX_OWNS(RSAES_OAEP_PARAM);

namespace {

using tlx_test::CommandFolder;
using tlx_test::hex_of;
using tlx_test::node_of;

using Pss = tlx::Owned<RSASSA_PSS_PARAM>;
using Oaep = tlx::Owned<RSAES_OAEP_PARAM>;
using Oid = tlx::Owned<OBJECT_IDENTIFIER>;
using Algorithm = tlx::Owned<X509_ALGO_IDENTIFIER>;

/// An element of fewer than 128 octets, in hexadecimal text.
std::string element(const std::string &tag, const std::string &contents) {
    const auto size = static_cast<std::uint8_t>((contents.size() + 1) / 3);
    return tag + " " + hex_of(&size, 1) + (contents.empty() ? "" : " ") + contents;
}

// The fields of the parameters.
const std::string kHash = element("A0", "30 0D 06 09 60 86 48 01 65 03 04 02 01 05 00");
const std::string kMask =
    element("A1", "30 16 06 09 2A 86 48 86 F7 0D 01 01 08 30 09 06 05 2B 0E 03 02 1A 05 00");
const std::string kSalt = "A2 03 02 01 14";
const std::string kLabel = element("A2", "30 10 06 09 2A 86 48 86 F7 0D 01 01 09 04 03 61 62 63");
const std::string kPssSha256 = element("30", kHash + " " + kMask + " " + kSalt);
const std::string kOaepSha256 = element("30", kHash + " " + kMask + " " + kLabel);

Oid oid(const char *name) {
    return Oid(get_OBJECT_IDENTIFIER(name, 0));
}

std::int32_t row(const char *name) {
    return static_cast<std::int32_t>(index_from_OBJECT_IDENTIFIER(oid(name).get()));
}

std::string der_of(const Pss &param) {
    ASN1_UNIT *out = nullptr;
    EXPECT_EQ(RSASSA_PSS_PARAM_to_Seq(param.get(), &out), 0U);
    return hex_of(tlx_test::Node(out).get());
}

std::string der_of(const Oaep &param) {
    ASN1_UNIT *out = nullptr;
    EXPECT_EQ(RSAES_OAEP_PARAM_to_Seq(param.get(), &out), 0U);
    return hex_of(tlx_test::Node(out).get());
}

Pss pss_sha256() {
    Pss param(new_RSASSA_PSS_PARAM());
    EXPECT_EQ(set_RSASSA_PSS_PARAM_maskGenAlgorithm(param.get(), row("id-mgf1")), 0U);
    EXPECT_EQ(set_RSASSA_PSS_PARAM_hashAlgorithm(param.get(), row("SHA256")), 0U);
    EXPECT_EQ(set_RSASSA_PSS_PARAM_trailerField(param.get(), 20), 0U);
    return param;
}

Oaep oaep_sha256() {
    const std::uint8_t label[] = {'a', 'b', 'c'};
    Oaep param(new_RSAES_OAEP_PARAM());
    EXPECT_EQ(set_RSAES_OAEP_PARAM_hashAlgorithm(param.get(), row("SHA256")), 0U);
    EXPECT_EQ(set_RSAES_OAEP_PARAM_maskGenAlgorithm(param.get(), row("id-mgf1")), 0U);
    EXPECT_EQ(set_RSAES_OAEP_PARAM_pSourceAlgorithm(param.get(), row("id-pSpecified"), label, 3), 0U);
    return param;
}

/// The element right after the first occurrence of a mark.
tlx_test::Node element_after(const std::string &der, std::string_view digits) {
    const tlx_test::Octets mark = tlx_test::hex(digits);
    const std::size_t at = der.find(std::string(mark.begin(), mark.end())) + mark.size();
    return tlx_test::Node(decodeToDERSequence_n(reinterpret_cast<const std::uint8_t *>(der.data()) + at,
                                                static_cast<std::uint32_t>(der.size() - at)));
}

class Params : public ::testing::Test {
    tlx_test::LeakCheck leaks_;
};

TEST_F(Params, AreWrittenMemberByMember) {
    const Pss pss_copy(dup_RSASSA_PSS_PARAM(pss_sha256().get()));
    EXPECT_EQ(der_of(pss_copy), kPssSha256)
        << "the setter called trailerField writes the salt length; MGF1 keeps SHA-1 beside SHA-256";
    const Oaep oaep(dup_RSAES_OAEP_PARAM(oaep_sha256().get()));
    EXPECT_EQ(der_of(oaep), kOaepSha256);

    const Pss pss(new_RSASSA_PSS_PARAM());
    EXPECT_EQ(der_of(pss), "30 00") << "what is absent is not written";
    ASSERT_EQ(set_RSASSA_PSS_PARAM_trailerField(pss.get(), 200), 0U);
    EXPECT_EQ(der_of(pss), "30 06 A2 04 02 02 00 C8");

    ASSERT_EQ(set_RSAES_OAEP_PARAM_pSourceAlgorithm_OID(oaep.get(), oid("id-pSpecified").get(), nullptr, 7),
              0U);
    EXPECT_EQ(hex_of(oaep->pSourceAlgorithm->parameters), "05 00") << "no label";
    const std::uint8_t empty = 0;
    ASSERT_EQ(set_RSAES_OAEP_PARAM_pSourceAlgorithm_OID(oaep.get(), oid("id-pSpecified").get(), &empty, 0),
              0U);
    EXPECT_EQ(hex_of(oaep->pSourceAlgorithm->parameters), "04 00") << "an empty label";

    const Algorithm algorithm(new_X509_ALGO_IDENTIFIER());
    ASSERT_EQ(set_X509_ALGO_IDENTIFIER_with_RSASSA_PSS_PARAM(algorithm.get(), pss.get()), 0U);
    EXPECT_EQ(hex_of(algorithm->parameters), "30 06 A2 04 02 02 00 C8");
    ASSERT_EQ(set_X509_ALGO_IDENTIFIER_with_RSAES_OAEP_PARAM(algorithm.get(), oaep_sha256().get()), 0U);
    EXPECT_EQ(hex_of(algorithm->parameters), kOaepSha256);
    EXPECT_EQ(algorithm->algorithm, nullptr) << "left to the caller";
}

TEST_F(Params, SettersSayWhatTheyRefuse) {
    const Pss pss(new_RSASSA_PSS_PARAM());
    const Oaep oaep(new_RSAES_OAEP_PARAM());
    const Algorithm algorithm(new_X509_ALGO_IDENTIFIER());
    const Oid sha256 = oid("SHA256");
    const Oid mgf1 = oid("id-mgf1");
    const std::int32_t nothing = 0;

    EXPECT_EQ(set_RSASSA_PSS_PARAM_hashAlgorithm_OID(nullptr, sha256.get()), 0x49120049U);
    EXPECT_EQ(set_RSASSA_PSS_PARAM_hashAlgorithm(pss.get(), nothing), 0x49120049U);
    EXPECT_EQ(set_RSASSA_PSS_PARAM_maskGenAlgorithm_OID(nullptr, mgf1.get()), 0x49130049U);
    EXPECT_EQ(set_RSASSA_PSS_PARAM_maskGenAlgorithm(pss.get(), nothing), 0x49130049U);
    EXPECT_EQ(set_RSASSA_PSS_PARAM_maskGenAlgorithm_OID(pss.get(), sha256.get()), 0x49130048U);
    EXPECT_EQ(set_RSASSA_PSS_PARAM_trailerField(nullptr, 20), 0x49140049U);
    EXPECT_EQ(set_RSASSA_PSS_PARAM_trailerField(pss.get(), 0), 0x49140049U);

    EXPECT_EQ(set_RSAES_OAEP_PARAM_hashAlgorithm(oaep.get(), nothing), 0x490F0049U);
    EXPECT_EQ(set_RSAES_OAEP_PARAM_maskGenAlgorithm(oaep.get(), nothing), 0x490F0049U);
    EXPECT_EQ(set_RSAES_OAEP_PARAM_maskGenAlgorithm_OID(oaep.get(), sha256.get()), 0x49130048U);
    EXPECT_EQ(set_RSAES_OAEP_PARAM_pSourceAlgorithm(oaep.get(), nothing, nullptr, 0), 0x490F0049U);
    const std::uint8_t label = 'a';
    EXPECT_EQ(set_RSAES_OAEP_PARAM_pSourceAlgorithm(oaep.get(), row("id-pSpecified"), &label, 1), 0x490D0103U)
        << "the mask generation function has to be set first";
    EXPECT_EQ(oaep->pSourceAlgorithm, nullptr);
    ASSERT_EQ(set_RSAES_OAEP_PARAM_maskGenAlgorithm_OID(oaep.get(), mgf1.get()), 0U);
    EXPECT_EQ(set_RSAES_OAEP_PARAM_pSourceAlgorithm(oaep.get(), row("id-pSpecified"), &label, -1),
              0x490D0103U);

    EXPECT_EQ(set_X509_ALGO_IDENTIFIER_with_RSASSA_PSS_PARAM(nullptr, pss.get()), 0x490F0049U);
    EXPECT_EQ(set_X509_ALGO_IDENTIFIER_with_RSAES_OAEP_PARAM(algorithm.get(), nullptr), 0x490F0049U);
    clean_X509_ALGO_IDENTIFIER(oaep->maskGenAlgorithm);
    EXPECT_EQ(set_X509_ALGO_IDENTIFIER_with_RSAES_OAEP_PARAM(algorithm.get(), oaep.get()), 0x490F0103U);
    ASN1_UNIT *node = nullptr;
    EXPECT_EQ(RSAES_OAEP_PARAM_to_Seq(oaep.get(), &node), 0x49100103U);
    EXPECT_EQ(RSAES_OAEP_PARAM_to_Seq(nullptr, &node), 0x49100049U);
    ASSERT_EQ(set_RSASSA_PSS_PARAM_hashAlgorithm_OID(pss.get(), sha256.get()), 0U);
    clean_X509_ALGO_IDENTIFIER(pss->hashAlgorithm);
    EXPECT_EQ(RSASSA_PSS_PARAM_to_Seq(pss.get(), &node), 0x49150103U);
    EXPECT_EQ(RSASSA_PSS_PARAM_to_Seq(pss.get(), nullptr), 0x49150049U);
    EXPECT_EQ(node, nullptr);
}

TEST_F(Params, AreReadWithAllThreeFields) {
    const struct {
        const char *what;
        std::string fields;
        std::uint32_t pss;
        std::uint32_t oaep;
    } cases[] = {
        {"PSS", kHash + " " + kMask + " " + kSalt, 0, 0x49110104},
        {"OAEP", kHash + " " + kMask + " " + kLabel, 0x49110104, 0},
        {"all defaults", "", 0x4916002B, 0x4916002B},
        {"hash and mask alone", kHash + " " + kMask, 0x4916002B, 0x4916002B},
        {"a trailer field", kHash + " " + kMask + " " + kSalt + " A3 03 02 01 01", 0x4916002B, 0x4916002B},
        {"[1] first", kMask + " " + kHash + " " + kSalt, 0x49110104, 0x49110104},
        {"[2] in the middle", kHash + " " + kSalt + " " + kMask, 0x49110104, 0x49110104},
        {"[3] at the end", kHash + " " + kMask + " A3 03 02 01 14", 0x49110104, 0x49110104},
        {"[0] around an INTEGER", "A0 03 02 01 14 " + kMask + " " + kSalt, 0x49110104, 0x49110104},
        {"[0] around nothing", "A0 00 " + kMask + " " + kSalt, 0x49110104, 0x49110104},
        {"[0] around an empty SEQUENCE", "A0 02 30 00 " + kMask + " " + kSalt, 0x49160104, 0x49160104},
        {"[1] around an empty SEQUENCE", kHash + " A1 02 30 00 " + kSalt, 0x49160104, 0x49160104},
        {"[2] around an empty INTEGER", kHash + " " + kMask + " A2 02 02 00", 0x49110104, 0x49110104},
        {"[2] around an empty SEQUENCE", kHash + " " + kMask + " A2 02 30 00", 0x49110104, 0x49160104},
        {"NULL in place of [0], then an empty [1]", "05 00 A1 02 30 00 " + kSalt, 0x49160104, 0x49160104},
    };
    for (const auto &each : cases) {
        SCOPED_TRACE(each.what);
        const std::string der = element("30", each.fields);
        const Pss pss = pss_sha256();
        const Oaep oaep = oaep_sha256();
        RSASSA_PSS_PARAM *out = pss.get();
        RSAES_OAEP_PARAM *out_oaep = oaep.get();
        EXPECT_EQ(Seq_to_RSASSA_PSS_PARAM(node_of(der).get(), &out), each.pss);
        EXPECT_EQ(Seq_to_RSAES_OAEP_PARAM(node_of(der).get(), &out_oaep), each.oaep);
        EXPECT_EQ(der_of(pss), each.pss == 0 ? der : "30 00");
        EXPECT_EQ(der_of(oaep), each.oaep == 0 ? der : "30 00");
        RSASSA_PSS_PARAM *none = nullptr;
        RSAES_OAEP_PARAM *no_oaep = nullptr;
        EXPECT_EQ(Seq_to_RSASSA_PSS_PARAM(node_of(der).get(), &none), each.pss);
        EXPECT_EQ(Seq_to_RSAES_OAEP_PARAM(node_of(der).get(), &no_oaep), each.oaep);
        EXPECT_TRUE(none == nullptr && no_oaep == nullptr) << "no record is handed out";
    }
    const Pss pss(new_RSASSA_PSS_PARAM());
    RSASSA_PSS_PARAM *out = pss.get();
    EXPECT_EQ(Seq_to_RSASSA_PSS_PARAM(node_of("30 09 05 00 05 00 A2 03 02 01 14").get(), &out), 0U)
        << "a child without a context tag leaves its member null";
    EXPECT_EQ(der_of(pss), "30 05 A2 03 02 01 14");
    EXPECT_EQ(Seq_to_RSASSA_PSS_PARAM(nullptr, &out), 0x49160049U);
    EXPECT_EQ(Seq_to_RSAES_OAEP_PARAM(node_of("30 00").get(), nullptr), 0x49160049U);
}

TEST_F(Params, OfOpensslAreRead) {
    const CommandFolder folder;
    folder.run(
        "openssl genpkey -quiet -algorithm RSA-PSS -pkeyopt rsa_keygen_bits:1024"
        " -pkeyopt rsa_pss_keygen_md:sha256 -pkeyopt rsa_pss_keygen_mgf1_md:sha384"
        " -pkeyopt rsa_pss_keygen_saltlen:32 -out key.pem 2>&1;"
        "openssl pkey -in key.pem -pubout -outform DER -out public.der");
    const Pss pss(new_RSASSA_PSS_PARAM());
    RSASSA_PSS_PARAM *out = pss.get();
    const tlx_test::Node node = element_after(folder.read("public.der"), "06 09 2A 86 48 86 F7 0D 01 01 0A");
    ASSERT_EQ(Seq_to_RSASSA_PSS_PARAM(node.get(), &out), 0U);
    EXPECT_EQ(get_BIGINT_word(pss->saltLength), 32U);
    EXPECT_EQ(der_of(pss), hex_of(node.get()));

    folder.run(
        "openssl req -x509 -newkey rsa:2048 -nodes -keyout key.pem -out cert.pem -subj /CN=x &&"
        "openssl cms -encrypt -binary -in cert.pem -outform DER -out message.der -recip cert.pem"
        " -keyopt rsa_padding_mode:oaep -keyopt rsa_oaep_md:sha512"
        " -keyopt rsa_mgf1_md:sha256 -keyopt rsa_oaep_label:616263");
    const Oaep oaep(new_RSAES_OAEP_PARAM());
    RSAES_OAEP_PARAM *out_oaep = oaep.get();
    const tlx_test::Node oaep_node =
        element_after(folder.read("message.der"), "06 09 2A 86 48 86 F7 0D 01 01 07");
    ASSERT_EQ(Seq_to_RSAES_OAEP_PARAM(oaep_node.get(), &out_oaep), 0U);
    EXPECT_EQ(hex_of(oaep->pSourceAlgorithm->parameters), "04 03 61 62 63");
    EXPECT_EQ(der_of(oaep), hex_of(oaep_node.get()));
}

TEST_F(Params, OfOursRuleWhatOpensslAccepts) {
    const CommandFolder folder;
    folder.run("openssl genrsa -traditional -out key.pem 1024");
    const std::unique_ptr<RSA_UNIT, tlx::FreeWith<free_RSA_UNIT>> unit(new_RSA_UNIT());
    ASSERT_EQ(readPKCS1_from_File(unit.get(), nullptr, 0, folder.path("key.pem").c_str()), 0U);

    // A public key for nothing but PSS with SHA-256, MGF1 with SHA-1 and 20 octets of salt.
    const tlx::Owned<X509_PUBKEY> key(new_X509_PUBKEY());
    ASSERT_EQ(set_X509_PUBKEY_rsa(key.get(), unit.get()), 0U);
    const Algorithm algorithm(new_X509_ALGO_IDENTIFIER());
    ASSERT_EQ(set_X509_ALGO_IDENTIFIER_with_RSASSA_PSS_PARAM(algorithm.get(), pss_sha256().get()), 0U);
    std::swap(key->parameters, algorithm->parameters);
    free_OBJECT_IDENTIFIER(key->algorithm);
    key->algorithm = oid("id-RSASSA-PSS").release();
    ASSERT_NE(writeDER_to_FILE(key.get(), TLX_ENCODER(X509_PUBKEY_to_Seq), folder.path("key.der").c_str()),
              0xFFFFFFFFU);
    const std::string printed = folder.run("openssl pkey -pubin -inform DER -in key.der -noout -text");
    EXPECT_NE(
        printed.find("PSS parameter restrictions:\n  Hash Algorithm: SHA2-256\n"
                     "  Mask Algorithm: MGF1 with SHA1 (default)\n  Minimum Salt Length: 20 (default)\n"),
        std::string::npos)
        << printed;

    folder.write("data", "abc");
    std::uint8_t signature[128];
    std::uint32_t len = 0;
    ASSERT_EQ(sign_RSA(unit.get(), TLX_DIGEST_SHA256, TLX_RSA_MODE_PSS,
                       reinterpret_cast<const std::uint8_t *>("abc"), 3, signature, &len),
              0U);
    folder.write("signature", {reinterpret_cast<const char *>(signature), len});
    EXPECT_TRUE(
        folder.succeeds("openssl pkeyutl -verify -pubin -keyform DER -inkey key.der -rawin -digest sha256"
                        " -in data -sigfile signature"));
}

TEST(ParamMemory, MayRunOutAnywhere) {
    const tlx_test::Node node = node_of(kOaepSha256);
    const Pss source = pss_sha256();
    EXPECT_GT(tlx_test::sweep_failing_allocations([&] {
                  RSAES_OAEP_PARAM param{};
                  RSAES_OAEP_PARAM *out = &param;
                  const std::uint32_t status = Seq_to_RSAES_OAEP_PARAM(node.get(), &out);
                  EXPECT_TRUE(status == 0 || status == 0x49160104) << std::hex << status;
                  EXPECT_EQ(param.hashAlgorithm != nullptr, status == 0);
                  clean_RSAES_OAEP_PARAM(&param);
                  return status == 0;
              }),
              15U);
    EXPECT_GT(tlx_test::sweep_failing_allocations([&] {
                  const Pss copy(dup_RSASSA_PSS_PARAM(source.get()));
                  if (!copy) return false;
                  const std::uint32_t status = set_RSASSA_PSS_PARAM_maskGenAlgorithm_OID(
                      copy.get(), source->maskGenAlgorithm->algorithm);
                  EXPECT_TRUE(status == 0 || status == 0x4913003C || status == 0x49130103)
                      << std::hex << status;
                  return status == 0;
              }),
              15U);
}

}  // namespace
