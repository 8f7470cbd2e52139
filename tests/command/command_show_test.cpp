// tlxpki show: certificates with every extension that is known, and RSA keys in every form.
#include <algorithm>

#include "program.hpp"
#include "support/command.hpp"

namespace command_test {
namespace {

using tlx_test::CommandFolder;

Json show(const std::string &path) {
    const Result result = run({"show", "--json", path});
    EXPECT_EQ(result.status, 0) << path << result;
    return result.json();
}

Json extension(const Json &certificate, const std::string &oid) {
    for (const Json &one : certificate["extensions"]) {
        if (one["oid"] == oid) return one;
    }
    ADD_FAILURE() << "no extension " << oid;
    return Json::object();
}

/// What a member is for each of many names.
struct Member {
    const char *name;
    const char *value;  ///< JSON
};
void expect_members(const Json &object, std::initializer_list<Member> members) {
    for (const Member &member : members)
        EXPECT_EQ(object.at(Json::json_pointer(member.name)), Json::parse(member.value)) << member.name;
}

/// A self-signed certificate with the extensions of an openssl configuration.
std::string certificate_with(const CommandFolder &folder, const std::string &extensions) {
    folder.write("config", "[req]\ndistinguished_name = name\n[name]\n[ext]\n" + extensions);
    (void)folder.run(
        "openssl req -x509 -newkey rsa:1024 -nodes -keyout key.pem -out cert.pem -sha256 -days 30 "
        "-config config -extensions ext -subj /C=KR/CN=test");
    return folder.path("cert.pem");
}

TEST(CommandShow, TellsWhatACertificateSays) {
    const Json cert = show(chain("user.pem")).at(0);
    EXPECT_EQ(cert["source"], chain("user.pem"));
    expect_members(
        cert, {{"/kind", R"("certificate")"},
               {"/version", "3"},
               {"/serial", R"("0x20000001")"},
               {"/serial_decimal", R"("536870913")"},
               {"/subject",
                R"("CN=홍길동(HONG GIL DONG)0001040200001234,OU=개인,OU=AccreditedCA,O=ExampleSign,C=KR")"},
               {"/issuer", R"("CN=ExampleSign Class 2,OU=AccreditedCA,O=ExampleSign,C=KR")"},
               {"/not_before", R"("2020-01-01 00:00:00Z")"},
               {"/not_after", R"("2049-12-31 23:59:59Z")"},
               {"/signature_algorithm", R"("sha256WithRSAEncryption")"},
               {"/public_key/bits", "2048"},
               {"/public_key/exponent", R"("65537")"}});
    EXPECT_EQ(cert["public_key"]["key_identifier"], extension(cert, "2.5.29.14")["value"]);
    EXPECT_FALSE(cert.contains("note"));
    const Json identity = extension(cert, "2.5.29.17")["value"][0]["kisa_identity"];
    expect_members(identity, {{"/real_name", R"("홍길동")"},
                              {"/id_type/name", R"("VID")"},
                              {"/hash_algorithm/name", R"("SHA256")"}});
    EXPECT_EQ(identity["virtual_id"].get<std::string>().size(), 64U);
    expect_members(extension(cert, "2.5.29.32"),
                   {{"/critical", "true"},
                    {"/value/0/policy", R"({"oid": "1.2.410.200004.5.9.1.1"})"},
                    {"/value/0/qualifiers/1/notice/text", R"("이 인증서는 시험용 인증서입니다")"}});

    // The digests that others give for the same file.
    const CommandFolder folder;
    std::string digest =
        folder.run("openssl x509 -in '" + chain("user.pem") + "' -noout -fingerprint -sha256");
    digest.erase(std::remove(digest.begin(), digest.end(), ':'), digest.end());
    EXPECT_NE(digest.find(cert["digests"]["sha256"].get<std::string>()), std::string::npos) << digest;
}

TEST(CommandShow, TellsKeysWithTheirSizeAndCurve) {
    const Json kcdsa = show(chain("kcdsa-user.pem")).at(0);
    EXPECT_EQ(kcdsa["subject"],
              "CN=김철수(KIM CHUL SOO)0001040200005678,OU=개인,OU=AccreditedCA,O=ExampleSign,C=KR")
        << "a BMPString";
    expect_members(kcdsa["public_key"],
                   {{"/type", R"("KCDSA")"}, {"/bits", "1024"}, {"/subgroup_bits", "160"}});
    const struct {
        const char *file, *type, *curve;
        int bits;
    } keys[] = {{"ec-p256.der", "EC", "prime256v1", 256},
                {"ec-p384.der", "EC", "secp384r1", 384},
                {"ed25519.der", "1.3.101.112", "", 0}};
    for (const auto &expected : keys) {
        const Json key = show(in_source(std::string("tests/data/x509/") + expected.file)).at(0)["public_key"];
        EXPECT_EQ(key["type"], expected.type) << expected.file;
        EXPECT_EQ(key.value("curve", ""), expected.curve) << expected.file;
        EXPECT_EQ(key.value("bits", 0), expected.bits) << expected.file;
    }
}

TEST(CommandShow, DecodesEveryExtensionItKnows) {
    const CommandFolder folder;
    const std::string path =
        certificate_with(folder,
                         "basicConstraints = critical, CA:TRUE, pathlen:3\n"
                         "keyUsage = digitalSignature, keyCertSign, decipherOnly\n"
                         "extendedKeyUsage = serverAuth, 1.2.3.4\n"
                         "subjectAltName = @names\n"
                         "issuerAltName = email:a@example.kr\n"
                         "nameConstraints = permitted;DNS:.kr, excluded;IP:10.0.0.0/255.0.0.0\n"
                         "policyConstraints = requireExplicitPolicy:2, inhibitPolicyMapping:0\n"
                         "policyMappings = 1.2.3:1.2.4\n"
                         "inhibitAnyPolicy = 5\n"
                         "crlDistributionPoints = point\n"
                         "freshestCRL = URI:http://example.kr/fresh\n"
                         "authorityInfoAccess = caIssuers;URI:http://example.kr/ca\n"
                         "subjectInfoAccess = 1.3.6.1.5.5.7.48.3;URI:http://example.kr/stamp\n"
                         "1.2.3.4.5 = DER:DE:AD:BE:EF\n"
                         "2.5.29.16 = DER:05:00\n"
                         "[names]\nDNS = example.kr\nIP.1 = 192.0.2.1\nIP.2 = 2001:db8::1\nRID = 1.2.3.4\n"
                         "URI = http://example.kr\ndirName = dn\notherName = 1.2.3.4;FORMAT:UTF8,UTF8:가나\n"
                         "[dn]\nCN = inner\n"
                         "[point]\nfullname = URI:http://example.kr/crl\n"
                         "reasons = keyCompromise, CACompromise\nCRLissuer = dirName:dn\n");
    const Json cert = show(path).at(0);
    const struct {
        const char *oid, *name, *value;
    } cases[] = {
        {"2.5.29.19", "basicConstraints", R"({"ca": true, "path_length": "3"})"},
        {"2.5.29.15", "keyUsage", R"(["digitalSignature", "keyCertSign", "decipherOnly"])"},
        {"2.5.29.37", "extendedKeyUsage",
         R"([{"oid": "1.3.6.1.5.5.7.3.1", "name": "serverAuth"}, {"oid": "1.2.3.4"}])"},
        {"2.5.29.17", "subjectAltName",
         R"([{"dns": "example.kr"}, {"ip": "192.0.2.1"}, {"ip": "2001:db8:0:0:0:0:0:1"},
             {"registered_id": {"oid": "1.2.3.4"}}, {"uri": "http://example.kr"},
             {"directory_name": "CN=inner"}, {"other_name": {"type": {"oid": "1.2.3.4"}, "value": "가나"}}])"},
        {"2.5.29.18", "issuerAltName", R"([{"email": "a@example.kr"}])"},
        {"2.5.29.30", "nameConstraints",
         R"({"permitted": [{"dns": ".kr"}], "excluded": [{"ip": "10.0.0.0/255.0.0.0"}]})"},
        {"2.5.29.36", "policyConstraints",
         R"({"require_explicit_policy": "2", "inhibit_policy_mapping": "0"})"},
        {"2.5.29.33", "policyMappings",
         R"([{"issuer_policy": {"oid": "1.2.3"}, "subject_policy": {"oid": "1.2.4"}}])"},
        {"2.5.29.54", "inhibitAnyPolicy", R"("5")"},
        {"2.5.29.31", "crlDistributionPoints",
         R"([{"names": [{"uri": "http://example.kr/crl"}], "reasons": ["keyCompromise", "cACompromise"],
              "crl_issuer": [{"directory_name": "CN=inner"}]}])"},
        {"2.5.29.46", "", R"([{"names": [{"uri": "http://example.kr/fresh"}]}])"},
        {"1.3.6.1.5.5.7.1.1", "authorityInfoAccess",
         R"([{"method": {"oid": "1.3.6.1.5.5.7.48.2", "name": "caIssuers"}, "uri": "http://example.kr/ca"}])"},
    };
    for (const auto &expected : cases) {
        const Json found = extension(cert, expected.oid);
        EXPECT_EQ(found.value("name", ""), expected.name) << expected.oid;
        EXPECT_EQ(found["value"], Json::parse(expected.value)) << expected.oid;
        EXPECT_FALSE(found.contains("hex")) << expected.oid;
    }
    EXPECT_EQ(extension(cert, "2.5.29.19")["critical"], true);
    EXPECT_EQ(extension(cert, "2.5.29.37")["critical"], false);
    EXPECT_EQ(extension(cert, "1.2.3.4.5")["hex"], "DEADBEEF");
    const Result text = run({"show", path});
    EXPECT_TRUE(text.says("    1.2.3.4.5\n      0000  DE AD BE EF ")) << text;
    EXPECT_TRUE(text.says("    keyUsage (2.5.29.15)\n      digitalSignature, keyCertSign, decipherOnly\n"))
        << text;
}

TEST(CommandShow, MalformedExtensionsAreToldAndDumped) {
    const CommandFolder folder;
    const std::string path =
        certificate_with(folder,
                         "basicConstraints = DER:30:03:02:01:01\nkeyUsage = DER:04:00\n"
                         "subjectAltName = DER:30:00\n2.5.29.54 = DER:01:01:FF\n2.5.29.32 = DER:30:80:05\n");
    const Json cert = show(path).at(0);
    const struct {
        const char *oid, *status, *hex;
    } cases[] = {
        {"2.5.29.19", "0x47230104", "3003020101"}, {"2.5.29.15", "0x47130104", "0400"},
        {"2.5.29.17", "0x470D002B", "3000"},       {"2.5.29.54", "0x00000001", "0101FF"},
        {"2.5.29.32", "0x473E004F", "308005"},
    };
    for (const auto &expected : cases) {
        const Json found = extension(cert, expected.oid);
        EXPECT_EQ(found["malformed"]["code"], expected.status) << expected.oid;
        EXPECT_EQ(found["hex"], expected.hex) << expected.oid;
        EXPECT_FALSE(found.contains("value")) << expected.oid;
    }
    EXPECT_TRUE(run({"show", path}).says("Malformed"));
    // No CA, in the form that DER has for it.
    EXPECT_EQ(extension(show(in_source("tests/data/x509/user.der")).at(0), "2.5.29.19")["value"],
              (Json{{"ca", false}}));
    // The parameters of PSS are not kept, so that such a certificate changes when it is written.
    EXPECT_TRUE(show(in_source("tests/data/x509/pss.der")).at(0).contains("note"));
}

TEST(CommandShow, ControlCharactersOfNamesDoNotReachTheTerminal) {
    std::string der = der_of(chain("user.pem"));
    der.replace(der.find("ExampleSign Class 2"), 4, "\033[2J");
    const Result text = run({"show", write_file("escape.der", der)});
    EXPECT_TRUE(text.says("Issuer               CN=\\1B[2Jple")) << text;
    EXPECT_FALSE(text.says("\033"));
    EXPECT_EQ(show(scratch("escape.der")).at(0)["issuer"].get<std::string>().substr(0, 12), "CN=\\1B[2Jple");
}

TEST(CommandShow, ShowsAllBlocksOfAFile) {
    const std::string both = read_file(chain("root.pem")) + read_file(chain("ca.pem"));
    const Json objects = show(write_file("both.pem", both));
    ASSERT_EQ(objects.size(), 2U);
    EXPECT_EQ(objects[0]["serial"], "0x01");
    EXPECT_EQ(objects[1]["serial"], "0x1001");
    EXPECT_EQ(objects[1]["source"], scratch("both.pem") + ", PEM block 2");
    const Result two_files = run({"show", chain("root.pem"), chain("ca.pem")});
    EXPECT_TRUE(two_files.says("\n\n" + chain("ca.pem") + ": certificate\n")) << two_files;
}

TEST(CommandShow, KeysInEveryFormButNoSecrets) {
    const CommandFolder folder;
    (void)folder.run(
        "openssl genrsa -traditional -out private.pem 1024 2>&1 && for form in pem der; do "
        "openssl rsa -in private.pem -pubout -outform $form -out spki.$form 2>&1; "
        "openssl rsa -in private.pem -RSAPublicKey_out -outform $form -out public.$form 2>&1; done; "
        "openssl rsa -in private.pem -traditional -outform DER -out private.der 2>&1; "
        "for cipher in des3 aes128; do openssl rsa -in private.pem -traditional -$cipher "
        "-passout pass:1234 -out $cipher.pem 2>&1; done");
    const std::string modulus = folder.run("openssl rsa -in private.pem -noout -modulus").substr(8, 256);
    const std::pair<std::string, const char *> cases[] = {
        {"private.pem", "RSA private key"}, {"private.der", "RSA private key"},
        {"spki.pem", "public key"},         {"spki.der", "public key"},
        {"public.pem", "RSA public key"},   {"public.der", "RSA public key"},
        {"des3.pem", "RSA private key"},    {"comment.pem", "RSA private key"}};
    folder.write("password", "1234\n");
    std::string comment = folder.read("private.pem");
    comment.insert(comment.find('\n') + 1, "Comment: x\n and more\n\n");
    folder.write("comment.pem", comment);
    // d, p, q and what is derived from them.
    const Json numbers =
        run({"asn1", "--json", folder.path("private.der")}).json()[0]["elements"][0]["children"];
    std::string identifier;
    for (const auto &[file, kind] : cases) {
        SCOPED_TRACE(file);
        Arguments arguments = {"show", "--password-file", folder.path("password"), folder.path(file)};
        const Result text = run(arguments);
        arguments.emplace_back("--json");
        const Result result = run(arguments);
        const Json key = result.json().at(0);
        EXPECT_EQ(key["kind"], kind);
        EXPECT_EQ(key["bits"], 1024);
        EXPECT_EQ(key["exponent"], "65537");
        EXPECT_EQ(key["modulus"], "0x" + modulus);
        EXPECT_EQ(key.value("encrypted", false), file == "des3.pem");
        if (identifier.empty()) identifier = key["key_identifier"];
        EXPECT_EQ(key["key_identifier"], identifier);
        for (std::size_t i = 3; i < 9; ++i) {
            const std::string secret = numbers.at(i)["hex"].get<std::string>().substr(0, 32);
            EXPECT_FALSE(text.says(secret) || result.says(secret)) << i;
        }
    }
    folder.write("wrong", "12345\n");
    folder.write("blank", "\n1234\n");
    const struct {
        const char *key, *password_file, *complaint;
    } failures[] = {
        {"des3.pem", "", "the key is encrypted; give its password with --password-file"},
        {"des3.pem", "wrong", "is the password right?"},
        {"des3.pem", "none", "none: cannot be read"},
        {"des3.pem", "blank", "the key is encrypted, and the first line of the password file is empty"},
        {"aes128.pem", "password",
         "the key is encrypted with AES-128-CBC, which is not supported, only DES-EDE3-CBC is"},
    };
    for (const auto &[key, password_file, complaint] : failures) {
        Arguments arguments = {"show", folder.path(key)};
        if (*password_file != '\0') {
            arguments.insert(arguments.end(), {"--password-file", folder.path(password_file)});
        }
        const Result result = run(arguments);
        EXPECT_EQ(result.status, 2) << complaint;
        EXPECT_TRUE(result.complains(complaint)) << result;
    }
}

}  // namespace
}  // namespace command_test
