// tlxpki verify: the shipped chains and what is wrong with them, settings, several targets, terminals.
#include <sstream>

#include "program.hpp"
#include "support/command.hpp"

namespace command_test {
namespace {

using tlx_test::CommandFolder;

/// "verify" with the words of a text, of which those that end in ".pem" are files among the chains, and more.
Arguments verify(const std::string &text, const Arguments &more = {}) {
    Arguments all{"verify"};
    std::istringstream words(text);
    for (std::string word; words >> word;)
        all.push_back(word.ends_with(".pem") ? chain(word) : word);
    all.insert(all.end(), more.begin(), more.end());
    return all;
}

struct Case {
    const char *name;
    std::string words;
    const char *status;
    const char *states;  ///< of the path, from the anchor down: ok, failed, not checked
    Arguments more = {};
};

void check(const std::vector<Case> &cases) {
    for (const Case &expected : cases) {
        const Result result = run(verify("--json " + expected.words, expected.more));
        const bool good = std::string(expected.status) == "0x00000000";
        EXPECT_EQ(result.status, good ? 0 : 1) << expected.name << result;
        const Json verdict = result.json()["targets"].at(0);
        EXPECT_EQ(verdict["status"]["code"], expected.status) << expected.name;
        EXPECT_EQ(verdict["valid"], good) << expected.name;
        std::string states;
        for (const Json &link : verdict["path"])
            states += (states.empty() ? "" : ", ") + link["state"].get<std::string>();
        EXPECT_EQ(states, expected.states) << expected.name;
    }
}

TEST(CommandVerify, JudgesEachChain) {
    check({
        {"three", "--anchor root.pem --pool ca.pem user.pem", "0x00000000", "ok, ok, ok"},
        {"four with KCDSA, pool in any order",
         "--pool kcdsa-ca.pem --pool ca.pem --anchor root.pem kcdsa-user.pem", "0x00000000",
         "ok, ok, ok, ok"},
        {"a root", "--anchor root.pem --no-explicit-policy root.pem", "0x00000000", "ok"},
        {"one bit flipped", "--anchor root.pem --pool ca.pem flipped.pem", "0x53100054", "ok, ok, failed"},
        {"expired", "--anchor root.pem --pool ca.pem expired.pem", "0x462D0113", "failed"},
        {"another root is trusted", "--anchor other-root.pem --pool root.pem --pool ca.pem user.pem",
         "0x53050116", "failed, not checked, not checked"},
        {"a root of the same name is trusted", "--anchor impostor-root.pem --pool ca.pem user.pem",
         "0x53100054", "ok, failed, not checked"},
        {"no root", "--anchor other-root.pem --pool ca.pem user.pem", "0x53050047", "failed, not checked"},
        {"no CA", "--anchor other-root.pem user.pem", "0x53050047", "failed"},
        // The root is what authorityCertIssuer names, and so gets taken for the missing CA.
        {"no CA, but the root", "--anchor root.pem user.pem", "0x53100054", "ok, failed"},
    });
}

TEST(CommandVerify, ObeysItsSettings) {
    const std::string base = "--anchor root.pem --pool ca.pem ";
    const std::string kcdsa = base + "--pool kcdsa-ca.pem kcdsa-user.pem --max-length ";
    const std::string user = base + "user.pem ";
    const std::string expired = base + "expired.pem --at ";
    const char *const good = "0x00000000";
    const char *const late = "0x462D0113";
    const char *const three = "ok, ok, ok";
    check({
        {"policy of the target", user + "--policy 1.2.410.200005.1.1.1", good, three},
        {"one of two", user + "--policy 1.2.3 --policy 1.2.410.200004.5.9.1.1", good, three},
        {"any policy, by name", user + "--policy anyPolicy", good, three},
        {"another policy", user + "--policy 1.2.410.200004.5.9.1", "0x53070119", three},
        {"none required", user + "--policy 1.2.3 --no-explicit-policy", good, three},
        {"before the first second", user + "--at 2019-12-31T23:59:59Z", late, "failed"},
        {"before the last second", expired + "2021-12-31,23:59:59", good, three},
        {"after it", expired + "2022-01-01", late, "failed"},
        {"an offset to the east", expired + "2022-01-01T08:59:59+09:00", good, three},
        {"an offset past the end", expired + "2022-01-01T09:00:00+09:00", late, "failed"},
        {"an offset to the west", expired + "2021-12-31T23:30:00-01:00", late, "failed"},
        {"a fraction of a second", expired + "2021-12-31t23:59:59.5z", good, three},
        {"length as needed", kcdsa + "2", good, "ok, ok, ok, ok"},
        {"length too short", kcdsa + "1", "0x53050047", "failed, not checked, not checked"},
    });
}

/// Issues certificates with RSA keys, whose issuers are found by key identifiers.
class Issuer {
  public:
    /// Writes NAME.pem and returns its path. A name keeps its key when it is issued another certificate.
    std::string issue(const std::string &name, const std::string &issuer,
                      const std::string &extensions) const {
        const std::string config = " -config " + name + ".cnf", key = name + ".key";
        folder_.write(name + ".cnf", "[req]\ndistinguished_name = name\n[name]\n[ext]\n" + extensions);
        (void)folder_.run(
            "{ [ -f " + key + " ] || openssl genrsa -out " + key + " 1024; } && openssl req -new -key " +
            key + config + " -subj /CN=" + name + " -out csr && openssl x509 -req -in csr -days 30 " +
            (issuer == name ? "-signkey " + key : "-CA " + issuer + ".pem -CAkey " + issuer + ".key") +
            " -set_serial 5 -extfile " + name + ".cnf -extensions ext -out " + name + ".pem");
        return folder_.path(name + ".pem");
    }

  private:
    CommandFolder folder_;
};

constexpr char kCa[] = "basicConstraints = critical,CA:TRUE\nsubjectKeyIdentifier = hash\n";
constexpr char kIssued[] = "authorityKeyIdentifier = keyid\n";

TEST(CommandVerify, RequiresPoliciesUnlessToldNotTo) {
    const Issuer issuer;
    const std::string ca = issuer.issue("ca", "ca", kCa);
    const Arguments user{"--anchor", ca, issuer.issue("user", "ca", kIssued)};
    const Arguments bare{"--anchor", ca, in_source("tests/data/x509/version1.der")};
    check({
        {"no policies", "", "0x5310011C", "ok, failed", user},
        {"not required", "--no-explicit-policy", "0x00000000", "ok, ok", user},
        {"no authority key identifier", "--at 2030-01-01", "0x53050047", "failed", bare},
    });
    EXPECT_TRUE(run(verify("--at 2030-01-01", bare)).says("has no authority key identifier"));
    EXPECT_TRUE(run(verify("", user)).says("--no-explicit-policy"));
}

/// What is printed otherwise stands in the README, whose test runs it.
TEST(CommandVerify, HintsAtWhatIsMissing) {
    const Result short_path = run(verify("--anchor other-root.pem user.pem"));
    EXPECT_TRUE(short_path.says("No path to a trust anchor; as far as it goes:\n\n[FAILED] CN=홍길동"))
        << short_path;

    const Issuer issuer;
    const std::string root = issuer.issue("x", "x", kCa);
    const std::string y = issuer.issue("y", "x", std::string(kCa) + kIssued);
    const std::string user = issuer.issue("user", "y", kIssued);
    const std::string x = issuer.issue("x", "y", std::string(kCa) + kIssued);
    const Arguments loop{"--pool", x, "--pool", y, user};
    const std::string goes_round = "the certificates issue each other, so that no path leads to an anchor";
    const struct {
        std::string words;
        std::string hint;
        Arguments more = {};
    } cases[] = {
        {"--anchor other-root.pem user.pem",
         "no certificate fits its authority key identifier; give its issuer's with --pool or --anchor"},
        {"--anchor root.pem user.pem",
         "its issuer CN=ExampleSign Class 2,OU=AccreditedCA,O=ExampleSign,C=KR is not among the "
         "certificates; give it with --pool"},
        {"--anchor impostor-root.pem root.pem",
         "a trusted certificate has the name of the certificate at the top, but another key"},
        {"--anchor root.pem --pool ca.pem --policy 1.2.3 user.pem",
         "the certificate is good for 1.2.410.200004.5.9.1.1, 1.2.410.200005.1.1.1; --policy has to name one "
         "of these"},
        {"--anchor root.pem", goes_round, loop},
        {"--anchor root.pem --max-length 1", goes_round, loop},
        {"--anchor root.pem --pool ca.pem --pool kcdsa-ca.pem kcdsa-user.pem --max-length 1",
         "more than 2 certificates stand below the anchor's; --max-length N allows more"},
    };
    for (const auto &expected : cases) {
        const Json verdict = run(verify("--json " + expected.words, expected.more)).json()["targets"].at(0);
        EXPECT_EQ(verdict.value("hint", ""), expected.hint) << expected.words;
    }
    // One bit flipped: the issuer is there.
    EXPECT_FALSE(run(verify("--json --anchor root.pem --pool ca.pem flipped.pem")).says("\"hint\""));
}

TEST(CommandVerify, WarnsOfWhatValidationLetsPass) {
    const std::string ca = std::string(kCa) + kIssued;
    const std::string length_1 =
        "basicConstraints = CA:TRUE,pathlen:1\nsubjectKeyIdentifier = hash\nauthorityKeyIdentifier = keyid\n";
    const Issuer issuer;
    const Arguments options{
        "--no-explicit-policy",
        "--max-length",
        "4",
        "--anchor",
        issuer.issue("root", "root", kCa),
        "--pool",
        issuer.issue("one", "root",
                     length_1 + "nameConstraints = permitted;DNS:.kr\npolicyMappings = 1.2.3:1.2.4\n"),
        "--pool",
        issuer.issue("two", "one", length_1)};  // which is exactly what stands below it
    const std::string three = issuer.issue(
        "three", "two",
        std::string(kIssued) + "basicConstraints = DER:30:03:01:01:00\nsubjectKeyIdentifier = hash\n");
    const std::string user =
        issuer.issue("user", "three",
                     std::string(kIssued) +
                         "extendedKeyUsage = critical,serverAuth\nsubjectAltName = "
                         "critical,DNS:a\n1.2.3.4.5 = critical,DER:05:00\n1.2.3.4.6 = DER:05:00\n");
    const Json of_names = {"CN=one: nameConstraints (2.5.29.30) is not applied",
                           "CN=one: policyMappings (2.5.29.33) is not applied"};
    const Json of_all = {"CN=user: 1.2.3.4.5 is critical, but not looked at",
                         "CN=three: issued a certificate, but is no CA by its basicConstraints (2.5.29.19)",
                         "CN=one: has more CAs below it than the pathLenConstraint of its basicConstraints "
                         "(2.5.29.19) allows: "
                         "2, not 1",
                         of_names[0], of_names[1]};

    Arguments arguments = options;
    arguments.insert(arguments.end(), {"--pool", three, user, three});
    const Result both = run(verify("--json", arguments));
    EXPECT_EQ(both.status, 0) << both;
    const Json verdicts = both.json()["targets"];
    EXPECT_EQ(verdicts.at(0)["warnings"], of_all);
    EXPECT_EQ(verdicts.at(1)["warnings"], of_names)
        << "the target issued nothing, and does not count below CAs";
    std::string told;
    for (const Json &warning : of_all)
        told += "tlxpki: warning: " + warning.get<std::string>() + "\n";
    EXPECT_EQ(both.errors, told) << "each once";
    EXPECT_EQ(run(verify("", arguments)).errors, told);
    EXPECT_FALSE(run(verify("--json --anchor root.pem --pool ca.pem user.pem")).says("\"warnings\""));
}

TEST(CommandVerify, SeveralTargetsGetALineEach) {
    const std::string base = "--anchor root.pem --pool ca.pem ";
    const Result result = run(verify(base + "user.pem flipped.pem expired.pem"));
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.errors, "") << "the bar is for terminals";
    const std::string name = ": CN=홍길동(HONG GIL DONG)000104020000123";
    const std::string rest = ",OU=개인,OU=AccreditedCA,O=ExampleSign,C=KR";
    EXPECT_EQ(result.output,
              "[ok] 0x00000000 " + chain("user.pem") + name + "4" + rest + "\n[FAILED] 0x53100054 " +
                  chain("flipped.pem") + name + "5" + rest + ": a signature does not verify\n" +
                  "[FAILED] 0x462D0113 " + chain("expired.pem") + name + "4" + rest +
                  ": the time lies outside the validity period\n\n3 certificates: 1 valid, 2 not valid\n");
    // The same certificates in one file.
    const std::string bundle =
        write_file("bundle.pem", read_file(chain("user.pem")) + read_file(chain("flipped.pem")));
    const Json json = run(verify("--json " + base, {bundle})).json();
    EXPECT_EQ(json["valid"], 1);
    EXPECT_EQ(json["not_valid"], 1);
    EXPECT_EQ(json["targets"][1]["source"], bundle + ", PEM block 2");
    EXPECT_EQ(json["targets"][1]["status"]["code"], "0x53100054");
    EXPECT_EQ(run(verify(base + "user.pem ca.pem")).status, 0);
}

TEST(CommandVerify, TakesDerAndKeysBesideCertificates) {
    const std::string root = write_file("root.der", der_of(chain("root.pem")));
    const std::string user =
        write_file("key-and-user.pem", pem_of("PRIVATE KEY", octets("0500")) + read_file(chain("user.pem")));
    EXPECT_EQ(run(verify("--pool ca.pem --anchor", {root, user})).status, 0);
}

TEST(CommandVerify, WarnsOfWhatCannotVerifyAnything) {
    const Result result = run(verify("--anchor ca.pem user.pem"));
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.errors, "tlxpki: warning: " + chain("ca.pem") +
                                 ": is not self-issued, so that no path can end with it\n");
    const CommandFolder folder;
    (void)folder.run(
        "openssl req -x509 -newkey ec -pkeyopt ec_paramgen_curve:P-256 -nodes -keyout ec.key "
        "-out ec.pem -days 30 -subj /CN=ec 2>&1");
    const Result no_key = run(verify("--anchor", {folder.path("ec.pem"), folder.path("ec.pem")}));
    EXPECT_EQ(no_key.status, 1);
    EXPECT_TRUE(no_key.says("[FAILED] CN=ec\n")) << no_key;
    EXPECT_TRUE(no_key.says("the key is neither RSA nor KCDSA")) << no_key;
}

#ifndef _WIN32
TEST(CommandVerify, ColoursAndTheBarAreForTerminals) {
    constexpr char kGreenMark[] = "\033[32m[ok]\033[0m";
    const Arguments one = verify("--anchor root.pem --pool ca.pem user.pem");
    const Arguments two = verify("--anchor root.pem --pool ca.pem user.pem flipped.pem");
    EXPECT_TRUE(run_on_terminal(one, "TERM=xterm").says(kGreenMark));
    EXPECT_TRUE(run_on_terminal(one, "NO_COLOR= TERM=xterm").says(kGreenMark)) << "empty does not count";
    EXPECT_FALSE(run_on_terminal(one, "NO_COLOR=1 TERM=xterm").says("\033["));
    EXPECT_FALSE(run_on_terminal(one, "TERM=dumb").says("\033["));
    EXPECT_FALSE(run(one).says("\033["));
    const Result several = run_on_terminal(two, "TERM=xterm");
    EXPECT_EQ(several.status, 1) << several;
    EXPECT_TRUE(several.says("[####################                    ] 1/2")) << several;
}
#endif

}  // namespace
}  // namespace command_test
