// tlxpki oid, tlxpki status, and what the command does without or with wrong arguments.
#include "program.hpp"
#include "support/shell.hpp"

namespace command_test {
namespace {

TEST(CommandUsage, HelpAndVersion) {
    const Result version = run({"--version"});
    EXPECT_EQ(version.status, 0);
    EXPECT_EQ(version.output, "tlxpki 5.1.42\n");

    const Result help = run({"--help"});
    EXPECT_EQ(help.status, 0);
    for (const char *command : {"verify", "show", "asn1", "oid", "status", "Exit status: 0 good"}) {
        EXPECT_TRUE(help.says(command)) << command << help;
    }
    EXPECT_TRUE(run({"verify", "--help"}).says("--no-explicit-policy"));
    EXPECT_EQ(help.errors, "");
}

TEST(CommandUsage, WrongArgumentsEndWithStatus2) {
    const std::string root = chain("root.pem");
    const struct {
        Arguments arguments;
        const char *complaint;
    } cases[] = {
        {{}, "a command is required; see tlxpki --help"},
        {{"--json"}, "a command is required; see tlxpki --help"},
        {{"frobnicate", "--help"}, "\"frobnicate\" is no command"},
        {{"show"}, "FILE is required; see tlxpki show --help"},
        {{"show", "--colour", root}, "--colour"},
        {{"asn1", root, root}, "not expected"},
        {{"oid"}, "TEXT is required"},
        {{"status"}, "CODE is required"},
        {{"status", "0xZZ"}, "\"0xZZ\" is no status code"},
        {{"status", "0x100000000"}, "is no status code"},
        {{"verify", root}, "--anchor is required"},
        {{"verify", "--anchor", root}, "TARGET is required"},
        {{"verify", "--anchor", root, "--max-length", "0", root}, "--max-length"},
        {{"verify", "--anchor", root, "--policy", "no-policy", root},
         "\"no-policy\" is no object identifier"},
        {{"verify", "--anchor", root, "--policy", "1.2.3", "--policy", "3.1", root},
         "\"3.1\" is no object identifier"},
        {{"verify", "--anchor", root, "--at", "tomorrow", root}, "\"tomorrow\" is no time"},
        {{"verify", "--anchor", root, "--at", "2026-02-29", root}, "is no time"},
        {{"verify", "--anchor", root, "--at", "2026-01-01T24:00:00Z", root}, "is no time"},
        {{"verify", "--anchor", root, "--at", "2026-01-01T00:00Z", root}, "is no time"},
    };
    for (const auto &wrong : cases) {
        const Result result = run(wrong.arguments);
        EXPECT_EQ(result.status, 2) << wrong.complaint << result;
        EXPECT_TRUE(result.errors.starts_with("tlxpki: ")) << wrong.complaint << result;
        EXPECT_TRUE(result.complains(wrong.complaint)) << wrong.complaint << result;
        EXPECT_EQ(result.output, "") << wrong.complaint;
    }
}

TEST(CommandUsage, OutputThatCannotBeWrittenIsTold) {
    // A full device, or else no device at all.
    const int status = tlx_test::run_program({TLX_COMMAND, "status", "0"}, "/dev/full", scratch("errors"));
    EXPECT_NE(status, 0);
    EXPECT_NE(read_file(scratch("errors")).find("the output cannot be written"), std::string::npos);
}

TEST(CommandOid, FindsRowsByEveryText) {
    const struct {
        const char *text, *row;  ///< index, short name, identifier, digest, cipher, class
    } cases[] = {
        {"CN", R"([13, "CN", "2.5.4.3", null, null, 0])"},
        {"commonName", R"([13, "CN", "2.5.4.3", null, null, 0])"},
        {"2.5.4.3", R"([13, "CN", "2.5.4.3", null, null, 0])"},
        {"13", R"([13, "CN", "2.5.4.3", null, null, 0])"},
        {"sha256WithRSAEncryption",
         R"([668, "RSA-SHA256", "1.2.840.113549.1.1.11", "0x05000300", "0x20000001", 3])"},
        {"HAS-160", R"([781, "HAS-160", "1.2.410.200004.1.2", "0x07000100", null, 1])"},
        {"SEED-CBC", R"([777, "SEED-CBC", "1.2.410.200004.1.4", null, "0x04000120", 2])"},
        {"0", R"([0, "UNDEF", "0.0", null, null, 0])"},
    };
    for (const auto &expected : cases) {
        const Json row = run({"oid", "--json", expected.text}).json().at(0);
        EXPECT_EQ(Json({row["index"], row["short_name"], row["dotted"], row["digest"], row["cipher"],
                        row["class"]}),
                  Json::parse(expected.row));
    }
    const Result text = run({"oid", "SHA1"});
    EXPECT_TRUE(text.says("Dotted      1.3.14.3.2.26\n")) << text;
    EXPECT_TRUE(text.says("Class name  digest or MAC\n")) << text;
}

TEST(CommandOid, WhatIsNotThereEndsWithStatus1) {
    for (const char *text : {"841", "99999999999", "2.5.4.", "commonname", "1.2.3.4.5.6", ""}) {
        const Result result = run({"oid", "--json", text, "C"});
        EXPECT_EQ(result.status, 1) << text;
        EXPECT_TRUE(result.complains(std::string("\"") + text + "\" is not in the registry")) << result;
        EXPECT_EQ(result.json().size(), 1U) << "the other text is still answered";
    }
}

TEST(CommandStatus, NamesModuleOperationAndReason) {
    const char *const missing = "the input is empty or missing, or a list that must not be empty is";
    const struct {
        const char *code, *module, *operation, *reason;
    } cases[] = {
        {"0x53100054", "certification paths", "validate_certpath", "a signature does not verify"},
        {"53100054", "certification paths", "validate_certpath", "a signature does not verify"},
        {"5310011c", "certification paths", "validate_certpath",
         "the certificate has no certificate policies, but a policy is required"},
        {"0x5309000e", "certification paths", "validate_certpath",
         "the issuer's basic constraints cannot be decoded"},
        {"0x46120106", "X.509 certificates, names and keys", "X509_TBS_CERT_to_Seq",
         "the subject is missing"},
        {"0x47230104", "X.509 extensions", "Seq_to_BASIC_CONSTRAINTS",
         "a member is missing or cannot be decoded"},
        {"1124073515", "DER encoding, reading and writing", "readDER_from_Binary", missing},
        {"0x4903002B", "PKCS #1 keys and parameters, PKCS #11", "PBKDF, ", missing},
        // A reason that is not documented for the function, which two operations share.
        {"0x49031234", "PKCS #1 keys and parameters, PKCS #11", "PBKDF, ", "unknown"},
        {"0x54010049", "certificate trust lists", "unknown", "a required argument or member is missing"},
        {"0x99100054", "unknown", "unknown", "unknown"},
    };
    for (const auto &expected : cases) {
        const Result result = run({"status", "--json", expected.code});
        const Json meaning = result.json().at(0);
        EXPECT_EQ(result.status, meaning["module"] == "unknown" ? 1 : 0) << expected.code << result;
        EXPECT_EQ(meaning["module"], expected.module) << expected.code;
        EXPECT_NE(meaning["operation"].get<std::string>().find(expected.operation), std::string::npos)
            << expected.code << meaning;
        EXPECT_EQ(meaning["reason"], expected.reason) << expected.code;
    }
}

TEST(CommandStatus, KnowsThePlainValues) {
    const Json meanings = run({"status", "--json", "0", "00000001", "2", "3", "FFFFFFFF"}).json();
    const char *expected[] = {"success",
                              "no reason given (for a signature: the key is neither RSA nor KCDSA)",
                              "the signature does not verify", "the numbers of the key make no usable key",
                              "failure of an operation that returns a length"};
    ASSERT_EQ(meanings.size(), std::size(expected));
    for (std::size_t i = 0; i < std::size(expected); ++i) {
        EXPECT_EQ(meanings[i]["reason"], expected[i]);
        EXPECT_FALSE(meanings[i].contains("module")) << meanings[i];
    }
}

TEST(CommandStatus, AnswersTheOthersBesideWhatIsNoCode) {
    const Result result = run({"status", "--json", "0x53100054", "foo", "0x99100054", "2"});
    EXPECT_EQ(result.status, 2) << "not 1, for the module that is unknown";
    EXPECT_EQ(result.errors, "tlxpki: \"foo\" is no status code; write it like 0x53100054\n");
    EXPECT_EQ(result.json().size(), 3U) << result;
}

}  // namespace
}  // namespace command_test
