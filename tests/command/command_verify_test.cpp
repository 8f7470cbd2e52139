// tlxpki verify: the shipped chains and what is wrong with them, settings, several targets, terminals.
#include "program.hpp"
#include "support/command.hpp"

namespace command_test {
namespace {

using tlx_test::CommandFolder;
using States = std::vector<std::string>;

constexpr char kOk[] = "ok";
constexpr char kFailed[] = "failed";
constexpr char kUnchecked[] = "not checked";

Arguments verify(std::initializer_list<std::string> arguments) {
    Arguments all{"verify", "--json"};
    for (const std::string &argument : arguments)
        all.push_back(argument.ends_with(".pem") ? chain(argument) : argument);
    return all;
}

struct Case {
    const char *name;
    Arguments arguments;
    const char *status;
    States states;  ///< of the path, from the anchor down
};

void check(const std::vector<Case> &cases) {
    for (const Case &expected : cases) {
        const Result result = run(expected.arguments);
        const bool good = std::string(expected.status) == "0x00000000";
        EXPECT_EQ(result.status, good ? 0 : 1) << expected.name << result;
        const Json verdict = result.json()["targets"].at(0);
        EXPECT_EQ(verdict["status"]["code"], expected.status) << expected.name;
        EXPECT_EQ(verdict["valid"], good) << expected.name;
        States states;
        for (const Json &link : verdict["path"])
            states.push_back(link["state"]);
        EXPECT_EQ(states, expected.states) << expected.name;
    }
}

TEST(CommandVerify, JudgesEachChain) {
    check({
        {"chain of three",
         verify({"--anchor", "root.pem", "--pool", "ca.pem", "user.pem"}),
         "0x00000000",
         {kOk, kOk, kOk}},
        {"chain of four with KCDSA",
         verify({"--anchor", "root.pem", "--pool", "ca.pem", "--pool", "kcdsa-ca.pem", "kcdsa-user.pem"}),
         "0x00000000",
         {kOk, kOk, kOk, kOk}},
        {"the same, pool in the other order",
         verify({"--pool", "kcdsa-ca.pem", "--pool", "ca.pem", "--anchor", "root.pem", "kcdsa-user.pem"}),
         "0x00000000",
         {kOk, kOk, kOk, kOk}},
        {"a root by itself",
         verify({"--anchor", "root.pem", "--no-explicit-policy", "root.pem"}),
         "0x00000000",
         {kOk}},
        {"one bit flipped",
         verify({"--anchor", "root.pem", "--pool", "ca.pem", "flipped.pem"}),
         "0x53100054",
         {kOk, kOk, kFailed}},
        {"expired",
         verify({"--anchor", "root.pem", "--pool", "ca.pem", "expired.pem"}),
         "0x462D0113",
         {kFailed}},
        {"another root is trusted",
         verify({"--anchor", "other-root.pem", "--pool", "root.pem", "--pool", "ca.pem", "user.pem"}),
         "0x53050116",
         {kFailed, kUnchecked, kUnchecked}},
        {"a root of the same name is trusted",
         verify({"--anchor", "impostor-root.pem", "--pool", "ca.pem", "user.pem"}),
         "0x53100054",
         {kOk, kFailed, kUnchecked}},
        {"no root at all",
         verify({"--anchor", "other-root.pem", "--pool", "ca.pem", "user.pem"}),
         "0x53050047",
         {kFailed, kUnchecked}},
        {"no CA", verify({"--anchor", "other-root.pem", "user.pem"}), "0x53050047", {kFailed}},
        // The root is what authorityCertIssuer names, and so gets taken for the missing CA.
        {"no CA, but the root", verify({"--anchor", "root.pem", "user.pem"}), "0x53100054", {kOk, kFailed}},
    });
}

TEST(CommandVerify, ObeysItsSettings) {
    const auto user = [](std::initializer_list<std::string> settings) {
        Arguments arguments = verify({"--anchor", "root.pem", "--pool", "ca.pem"});
        arguments.insert(arguments.end(), settings.begin(), settings.end());
        arguments.push_back(chain("user.pem"));
        return arguments;
    };
    const auto expired_at = [](const char *time) {
        return verify({"--anchor", "root.pem", "--pool", "ca.pem", "--at", time, "expired.pem"});
    };
    const auto kcdsa_within = [](const char *length) {
        return verify({"--anchor", "root.pem", "--pool", "ca.pem", "--pool", "kcdsa-ca.pem", "--max-length",
                       length, "kcdsa-user.pem"});
    };
    const States three{kOk, kOk, kOk};
    check({
        {"policy of the target", user({"--policy", "1.2.410.200005.1.1.1"}), "0x00000000", three},
        {"one of two policies", user({"--policy", "1.2.3", "--policy", "1.2.410.200004.5.9.1.1"}),
         "0x00000000", three},
        {"any policy, by name", user({"--policy", "anyPolicy"}), "0x00000000", three},
        {"another policy", user({"--policy", "1.2.410.200004.5.9.1"}), "0x53070119", three},
        {"another policy, none required", user({"--policy", "1.2.3", "--no-explicit-policy"}), "0x00000000",
         three},
        {"before the last second", expired_at("2021-12-31,23:59:59"), "0x00000000", three},
        {"after it", expired_at("2022-01-01"), "0x462D0113", {kFailed}},
        {"an offset to the east", expired_at("2022-01-01T08:59:59+09:00"), "0x00000000", three},
        {"an offset past the end", expired_at("2022-01-01T09:00:00+09:00"), "0x462D0113", {kFailed}},
        {"an offset to the west", expired_at("2021-12-31 23:30:00-01:00"), "0x462D0113", {kFailed}},
        {"a fraction of a second", expired_at("2021-12-31t23:59:59.5z"), "0x00000000", three},
        {"before the first second", user({"--at", "2019-12-31T23:59:59Z"}), "0x462D0113", {kFailed}},
        {"length as needed", kcdsa_within("2"), "0x00000000", {kOk, kOk, kOk, kOk}},
        {"length too short", kcdsa_within("1"), "0x53050047", {kFailed, kUnchecked, kUnchecked}},
    });
}

TEST(CommandVerify, RequiresPoliciesUnlessToldNotTo) {
    const CommandFolder folder;
    folder.write("config",
                 "[req]\ndistinguished_name = name\n[name]\n[ca]\nbasicConstraints = "
                 "CA:TRUE\nsubjectKeyIdentifier = hash\n"
                 "[user]\nauthorityKeyIdentifier = keyid\n");
    (void)folder.run(
        "openssl req -x509 -newkey rsa:1024 -nodes -keyout ca.key -out ca.pem -days 30 -config config "
        "-extensions ca -subj /CN=ca");
    (void)folder.run(
        "openssl req -new -newkey rsa:1024 -nodes -keyout user.key -out user.csr -config config -subj "
        "/CN=user");
    (void)folder.run(
        "openssl x509 -req -in user.csr -CA ca.pem -CAkey ca.key -set_serial 5 -days 30 -extfile config "
        "-extensions user -out user.pem");
    const std::string bare = in_source("tests/data/x509/version1.der");
    const Arguments base{"verify", "--json", "--anchor", folder.path("ca.pem")};
    const auto with = [&base](const Arguments &more) {
        Arguments arguments = base;
        arguments.insert(arguments.end(), more.begin(), more.end());
        return arguments;
    };
    check({
        {"no policies", with({folder.path("user.pem")}), "0x5310011C", {kOk, kFailed}},
        {"not required", with({"--no-explicit-policy", folder.path("user.pem")}), "0x00000000", {kOk, kOk}},
        {"no authority key identifier", with({"--at", "2030-01-01", bare}), "0x53050047", {kFailed}},
    });
    EXPECT_TRUE(run(with({"--at", "2030-01-01", bare})).says("has no authority key identifier"));
    EXPECT_TRUE(run(with({folder.path("user.pem")})).says("--no-explicit-policy"));
}

TEST(CommandVerify, PrintsTheTreeTheStatusAndThePolicies) {
    const Result good =
        run({"verify", "--anchor", chain("root.pem"), "--pool", chain("ca.pem"), chain("user.pem")});
    EXPECT_EQ(good.status, 0);
    EXPECT_EQ(good.errors, "");
    EXPECT_EQ(
        good.output,
        "[ok] CN=Example RootCA 4,OU=Korea Certification Authority Central,O=Example PKI,C=KR\n"
        "│   valid      2020-01-01 00:00:00Z to 2049-12-31 23:59:59Z\n"
        "│   key        RSA 2048 bits\n"
        "│   signature  sha256WithRSAEncryption\n"
        "└── [ok] CN=ExampleSign Class 2,OU=AccreditedCA,O=ExampleSign,C=KR\n"
        "    │   valid      2020-01-01 00:00:00Z to 2049-12-31 23:59:59Z\n"
        "    │   key        RSA 2048 bits\n"
        "    │   signature  sha256WithRSAEncryption\n"
        "    └── [ok] CN=홍길동(HONG GIL DONG)0001040200001234,OU=개인,OU=AccreditedCA,O=ExampleSign,C=KR\n"
        "            valid      2020-01-01 00:00:00Z to 2049-12-31 23:59:59Z\n"
        "            key        RSA 2048 bits\n"
        "            signature  sha256WithRSAEncryption\n"
        "\n"
        "Policies\n"
        "  anyPolicy (2.5.29.32.0)\n"
        "  └── anyPolicy (2.5.29.32.0)\n"
        "      ├── 1.2.410.200004.5.9.1.1\n"
        "      └── 1.2.410.200005.1.1.1\n"
        "\n" +
            chain("user.pem") +
            ": valid\n"
            "  Status  0x00000000\n"
            "  Reason  success\n");
    const Result bad =
        run({"verify", "--anchor", chain("root.pem"), "--pool", chain("ca.pem"), chain("flipped.pem")});
    EXPECT_TRUE(bad.says("    └── [FAILED] CN=홍길동")) << bad;
    EXPECT_TRUE(
        bad.says(": NOT VALID\n  Status     0x53100054\n  Module     certification paths\n  Operation  "
                 "validate_certpath\n"
                 "  Reason     a signature does not verify\n"))
        << bad;
    EXPECT_EQ(bad.output.find("Policies"), std::string::npos);
    const Result short_path = run({"verify", "--anchor", chain("other-root.pem"), chain("user.pem")});
    EXPECT_TRUE(short_path.says("No path to a trust anchor; as far as it goes:\n\n[FAILED] CN=홍길동"))
        << short_path;
    EXPECT_TRUE(short_path.says("Hint       no certificate fits its authority key identifier")) << short_path;
}

TEST(CommandVerify, SeveralTargetsGetALineEach) {
    const Arguments arguments{"verify",        "--anchor",        chain("root.pem"),    "--pool",
                              chain("ca.pem"), chain("user.pem"), chain("flipped.pem"), chain("expired.pem")};
    const Result result = run(arguments);
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.errors, "") << "the bar is for terminals";
    const std::string rest = ",OU=개인,OU=AccreditedCA,O=ExampleSign,C=KR";
    EXPECT_EQ(result.output, "[ok] 0x00000000 " + chain("user.pem") +
                                 ": CN=홍길동(HONG GIL DONG)0001040200001234" + rest +
                                 "\n"
                                 "[FAILED] 0x53100054 " +
                                 chain("flipped.pem") + ": CN=홍길동(HONG GIL DONG)0001040200001235" + rest +
                                 ": a signature does not verify\n"
                                 "[FAILED] 0x462D0113 " +
                                 chain("expired.pem") + ": CN=홍길동(HONG GIL DONG)0001040200001234" + rest +
                                 ": the time lies outside the validity period\n"
                                 "\n"
                                 "3 certificates: 1 valid, 2 not valid\n");
    // The same certificates in one file.
    const std::string bundle =
        write_file("bundle.pem", read_file(chain("user.pem")) + read_file(chain("flipped.pem")));
    const Json json =
        run({"verify", "--json", "--anchor", chain("root.pem"), "--pool", chain("ca.pem"), bundle}).json();
    EXPECT_EQ(json["valid"], 1);
    EXPECT_EQ(json["not_valid"], 1);
    EXPECT_EQ(json["targets"][1]["source"], bundle + ", PEM block 2");
    EXPECT_EQ(json["targets"][1]["status"]["code"], "0x53100054");
    const Result all_good = run({"verify", "--anchor", chain("root.pem"), "--pool", chain("ca.pem"),
                                 chain("user.pem"), chain("ca.pem")});
    EXPECT_EQ(all_good.status, 0) << all_good;
}

TEST(CommandVerify, TakesDerAndKeysBesideCertificates) {
    const std::string root = write_file("root.der", der_of(chain("root.pem")));
    const std::string ca = write_file("ca.der", der_of(chain("ca.pem")));
    const std::string user =
        write_file("key-and-user.pem", pem_of("PRIVATE KEY", octets("0500")) + read_file(chain("user.pem")));
    EXPECT_EQ(run({"verify", "--anchor", root, "--pool", ca, user}).status, 0);
}

TEST(CommandVerify, WarnsOfAnchorsThatNoPathCanEndWith) {
    const Result result = run({"verify", "--anchor", chain("ca.pem"), chain("user.pem")});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.errors, "tlxpki: warning: " + chain("ca.pem") +
                                 ": is not self-issued, so that no path can end with it\n");
}

TEST(CommandVerify, KeysThatVerifyNothingAreNamed) {
    const CommandFolder folder;
    (void)folder.run(
        "openssl req -x509 -newkey ec -pkeyopt ec_paramgen_curve:P-256 -nodes -keyout ec.key -out ec.pem "
        "-days 30 -subj /CN=ec 2>&1");
    const Result result = run({"verify", "--anchor", folder.path("ec.pem"), folder.path("ec.pem")});
    EXPECT_EQ(result.status, 1);
    EXPECT_TRUE(result.says("[FAILED] CN=ec\n")) << result;
    EXPECT_TRUE(result.says("the key is neither RSA nor KCDSA")) << result;
}

#ifndef _WIN32
TEST(CommandVerify, ColoursAndTheBarAreForTerminals) {
    constexpr char kGreenMark[] = "\033[32m[ok]\033[0m";
    const Arguments one{"verify", "--anchor",      chain("root.pem"),
                        "--pool", chain("ca.pem"), chain("user.pem")};
    Arguments two = one;
    two.push_back(chain("flipped.pem"));
    const Result coloured = run_on_terminal(one, "TERM=xterm");
    EXPECT_EQ(coloured.status, 0) << coloured;
    EXPECT_TRUE(coloured.says(kGreenMark)) << coloured;
    for (const char *environment : {"NO_COLOR=1 TERM=xterm", "TERM=dumb"}) {
        EXPECT_FALSE(run_on_terminal(one, environment).says("\033[")) << environment;
    }
    EXPECT_TRUE(run_on_terminal(one, "NO_COLOR= TERM=xterm").says(kGreenMark)) << "empty does not count";
    EXPECT_FALSE(run(one).says("\033["));
    const Result several = run_on_terminal(two, "TERM=xterm");
    EXPECT_EQ(several.status, 1) << several;
    EXPECT_TRUE(several.says("[####################                    ] 1/2")) << several;
}
#endif

}  // namespace
}  // namespace command_test
