// What needs a system's terminals, shell, devices and file modes, and what the documents say of the command.
#include <filesystem>
#include <fstream>
#include <iterator>
#include <regex>
#include <set>
#include <sstream>

#include "folder.hpp"
#include "support/shell.hpp"

namespace command_test {
namespace {

using CommandSystem = InFolder;

TEST_F(CommandSystem, OutputThatCannotBeWrittenIsReported) {
    // A full device, or else no device at all.
    EXPECT_NE(tlx_test::run_program({TLX_COMMAND, "status", "0"}, "/dev/full", "err.txt"), 0);
    EXPECT_NE(read_file("err.txt").find("the output cannot be written"), std::string::npos);
}

/// Whatever a flipped bit makes of a certificate: it is not valid, and only a good exit status comes with
/// output.
TEST_F(CommandSystem, CertificatesChangedAnywhere) {
    (void)folder_.run("openssl x509 -in user.pem -outform DER -out certificate");
    const std::string der = read_file("certificate");
    for (std::size_t at = 0; at < der.size(); at += 31) {
        std::string changed = der;
        changed[at] = static_cast<char>(changed[at] ^ 0x10);
        folder_.write("changed", changed);
        const Result verdict = run({"verify", "--anchor", "root.pem", "--pool", "ca.pem", "changed"});
        EXPECT_TRUE(verdict.status == 1 || verdict.status == 2) << at << verdict;
        const Result shown = run({"show", "changed"});
        EXPECT_EQ(shown.status, shown.output == "changed: not shown\n" ? 2 : 0) << at << shown;
    }
}

#ifndef _WIN32
TEST_F(CommandSystem, FilesThatRefuseToBeRead) {
    // Nothing is at address 0 of a process.
    const Result failed = run({"show", "/proc/self/mem"});
    EXPECT_EQ(failed.status, 2) << failed;
    EXPECT_EQ(failed.errors, "tlxpki: /proc/self/mem: cannot be read: Input/output error\n");
    std::filesystem::permissions("root.pem", std::filesystem::perms::none);
    if (std::ifstream("root.pem").is_open()) return;  // root may read everything
    EXPECT_EQ(run({"show", "root.pem"}).errors, "tlxpki: root.pem: cannot be read: Permission denied\n");
}

TEST_F(CommandSystem, KeysAreForTheirOwnerAlone) {
    using std::filesystem::perms;
    const Result converted = run({"key", "convert", "--scheme", "none", "-o", "key.pem", "rsa-0.pem"});
    EXPECT_EQ(converted.status, 0) << converted;
    folder_.run(
        "openssl pkcs12 -export -inkey key.pem -nocerts -passout pass: -out key.p12; mkdir keys; "
        "openssl req -x509 -key key.pem -subj /CN=a -out own.pem");
    const Result opened = run({"pkcs12", "open", "-o", "keys", "key.p12"});
    EXPECT_EQ(opened.status, 0) << opened;
    const Result made = run(
        {"pkcs12", "make", "--key", "key.pem", "--cert", "own.pem", "--scheme", "none", "-o", "made.p12"});
    EXPECT_EQ(made.status, 0) << made;
    for (const char *key : {"key.pem", "keys/key-1.key", "made.p12"})
        EXPECT_EQ(std::filesystem::status(key).permissions(), perms::owner_read | perms::owner_write) << key;
}

TEST_F(CommandSystem, ReadsStandardInputAndStreams) {
    const std::string command = " " TLX_COMMAND " verify --anchor root.pem --pool ";
    EXPECT_NE(folder_.run("cat ca.pem |" + command + "- user.pem").find("user.pem: valid\n"),
              std::string::npos);
    EXPECT_NE(folder_.run("cat user.pem |" + command + "ca.pem -").find("standard input: valid\n"),
              std::string::npos);
    EXPECT_NE(folder_.run("mkfifo pipe; cat ca.pem > pipe &" + command + "pipe user.pem").find("valid\n"),
              std::string::npos);
    EXPECT_EQ(run({"show", "/dev/zero"}).errors, "tlxpki: /dev/zero: does not end within 256 MB\n");
    EXPECT_EQ(run({"asn1", "/dev/null"}).errors, "tlxpki: /dev/null: is empty\n");
}

TEST_F(CommandSystem, ColoursAndTheBarAreForTerminals) {
    const std::string one = " verify --anchor root.pem --pool ca.pem user.pem";
    const auto has = [this](const std::string &command, const std::string &part) {
        return folder_.run(command).find(part) != std::string::npos;
    };
    const auto on_terminal = [](const std::string &arguments) {
        return " script -qc '" TLX_COMMAND + arguments + "' /dev/null";
    };
    constexpr char kGreenMark[] = "\033[32m[ok]\033[0m";
    EXPECT_TRUE(has("TERM=xterm" + on_terminal(one), kGreenMark));
    EXPECT_TRUE(has("NO_COLOR= TERM=xterm" + on_terminal(one), kGreenMark)) << "empty does not count";
    EXPECT_FALSE(has("NO_COLOR=1 TERM=xterm" + on_terminal(one), "\033["));
    EXPECT_FALSE(has("TERM=dumb" + on_terminal(one), "\033["));
    EXPECT_FALSE(has(TLX_COMMAND + one, "\033["));
    const std::string two = "TERM=xterm" + on_terminal(one + " flipped.pem; echo status $?");
    EXPECT_TRUE(has(two, "[####################                    ] 1/2"));
    EXPECT_TRUE(has(two, "status 1"));
    const std::string slow =
        "(sleep 2; cat root.pem) | " TLX_COMMAND " message encrypt --to user.pem -o sealed -";
    EXPECT_TRUE(has("script -qc '" + slow + "' /dev/null", "\rEncrypting, 1 s"));
    EXPECT_FALSE(has(slow, "Encrypting"));
}

/// A key and certificate of its own, of which the paths of these tests are made.
void make_signer(tlx_test::CommandFolder &folder) {
    folder.run("openssl req -x509 -newkey rsa:2048 -nodes -keyout own.key -out own.pem -subj /CN=own 2>&1");
}

TEST_F(CommandSystem, MessagesGoThroughPipes) {
    make_signer(folder_);
    const std::string sign = TLX_COMMAND " message sign --cert own.pem --key own.key ";
    const std::string verify = TLX_COMMAND " message verify --anchor own.pem ";
    const auto has = [this](const std::string &command, const std::string &part) {
        const std::string printed = folder_.run("(" + command + ") 2>&1 || true");
        EXPECT_NE(printed.find(part), std::string::npos) << command << "\n" << printed;
    };
    folder_.run("head -c 8000000 /dev/zero > content; mkfifo pipe");
    has("cat content | " + sign + "--der - | " + verify + "-o found - && cmp content found && echo same",
        "standard input: valid\n  Status  0x00000000\n  Reason  success\nsame\n");
    has("(cat pipe > copy &) ; " + sign + "-o pipe own.pem; " + verify + "copy", "copy: valid\n");
    has("cat own.pem | " + sign +
            "- | openssl cms -verify -inform PEM -CAfile own.pem -binary | cmp own.pem -",
        "");
    has(sign + "-o /dev/full own.pem", "/dev/full: cannot be written: No space left on device\n");
    has(sign + "own.pem > /dev/full", "the output cannot be written\n");
    has(sign + "content | " + verify + "-o /dev/stdout - | wc -c", "has more than 1 MB of content");
    has(sign + "content | " + verify +
            "-o /dev/stdout --unverified-output - 2> /dev/null | head -c 8000000 | "
            "cmp - content && echo same",
        "same");
    folder_.run(
        "openssl req -x509 -newkey rsa:2048 -nodes -keyout tsa.key -out tsa.pem -subj /CN=tsa "
        "-addext extendedKeyUsage=critical,timeStamping 2> /dev/null; echo '[tsa]\ndefault_tsa = t\n[t]\n"
        "serial = serial\nsigner_digest = sha256\ndefault_policy = 1.2\ndigests = sha256\n"
        "ess_cert_id_alg = sha256' > tsa.cnf");
    has(sign +
            "-o signed content; " TLX_COMMAND
            " timestamp request --message signed -o asked; "
            "openssl ts -reply -config tsa.cnf -queryfile asked -signer tsa.pem -inkey tsa.key -out token; "
            "cat signed | " TLX_COMMAND " message stamp --token token - | " +
            verify +
            "--anchor tsa.pem --json -o found - | grep -A2 time_stamps | grep -q '\"ok\"' && "
            "cmp content found && echo same",
        "same");
}

TEST_F(CommandSystem, NothingIsLeftOfWhatIsInterrupted) {
    make_signer(folder_);
    folder_.write("signed", "before");
    const std::string left = folder_.run(
        "mkfifo pipe; sleep 60 > pipe & holder=$!; " TLX_COMMAND
        " message sign --cert own.pem --key own.key -o signed pipe & command=$!; "
        "until ls -A | grep -qF .tlxpki-; do sleep 0.05; done; kill $command; wait $command; echo status $?; "
        "kill $holder; ls -A | grep -F .tlxpki-; cat signed");
    EXPECT_NE(left.find("status 143\nbefore"), std::string::npos) << left;
}

TEST_F(CommandSystem, PasswordsAreTypedUnseen) {
    (void)folder_.run("openssl rsa -in rsa-0.pem -traditional -des3 -passout pass:secret -out des3.pem");
    struct Row {
        const char *typed;
        const char *printed;
    };
    for (const Row &row : {Row{"secret\\n", "RSA private key"}, Row{"wrong\\n", "is the password right?"},
                           Row{"\\n", "no password was typed"}, Row{"sec\\003", "no password was typed"}}) {
        const std::string shown = folder_.run("(until grep -qs Password log; do sleep 0.1; done; printf '" +
                                              std::string(row.typed) +
                                              "') | script -qfc '" TLX_COMMAND " show des3.pem' log; rm log");
        EXPECT_NE(shown.find("Password of des3.pem: "), std::string::npos) << shown;
        EXPECT_NE(shown.find(row.printed), std::string::npos) << shown;
        EXPECT_EQ(shown.find("secret"), std::string::npos) << shown;
    }
}

/// A key and certificate on a token of SoftHSM, which no file of the command's holds.
TEST_F(CommandSystem, SignsAndDecryptsWithTokens) {
    const std::string configuration = "directories.tokendir = " + folder_.path("tokens") + "\n";
    folder_.write("softhsm2.conf", configuration);
    folder_.write("pin", "1234\n");
    folder_.write("wrong", "4321\n");
    folder_.write("content", "to sign");
    ASSERT_EQ(setenv("SOFTHSM2_CONF", folder_.path("softhsm2.conf").c_str(), 1), 0);
    folder_.run(
        "mkdir tokens && softhsm2-util --init-token --free --label 'my token' --pin 1234 --so-pin 123456 &&"
        "openssl req -x509 -newkey rsa:2048 -nodes -days 2 -keyout key.pem -out cert.pem -subj /CN=Token &&"
        "openssl x509 -in cert.pem -outform DER -out cert.der && "
        "softhsm2-util --import key.pem --token 'my token' --label 'the key' --id AB0C --pin 1234 &&"
        "pkcs11-tool --module " TLX_SOFTHSM
        " --token-label 'my token' --login --pin 1234"
        " --write-object cert.der --type cert --id AB0C --label 'the key' && rm key.pem");
    const std::string query = "?module-path=" TLX_SOFTHSM;
    const std::string uri = "pkcs11:token=my%20token;id=%AB%0c" + query;
    struct Row {
        std::vector<std::string> arguments;
        int status;
        const char *printed;
    };
    const Row rows[] = {
        {{"token", "slots", TLX_SOFTHSM}, 0, "pkcs11:token=my%20token;serial="},
        {{"token", "objects", "pkcs11:token=my%20token" + query}, 0, "2 objects"},
        {{"token", "objects", "--pin-file", "pin", uri}, 0, "id=%AB%0C;object=the%20key;type=private?"},
        {{"token", "objects", "pkcs11:token=my%20token;type=cert" + query}, 0, ": 1 object\n"},
        {{"token", "objects", "--pin-file", "wrong", uri}, 2, "0x492000A0, the PIN is wrong"},
        {{"token", "objects", "pkcs11:token=none" + query}, 2, "there is no such token"},
        {{"token", "certificate", "-o", "read.pem", uri}, 0, ""},
        {{"token", "certificate", "pkcs11:object=none" + query}, 2, "the token has no such certificate"},
        {{"message", "sign", "--pin-file", "pin", "--cert", uri, "--key", uri, "--scheme", "pss", "-o",
          "signed", "content"},
         0,
         ""},
        {{"message", "sign", "--pin-file", "pin", "--cert", "user.pem", "--key", uri, "content"},
         2,
         "is not the key of user.pem"},
        {{"message", "sign", "--cert", uri, "--key", uri, "content"},
         2,
         "give the PIN of the token with --pin-file"},
        {{"message", "verify", "--anchor", "cert.pem", "signed"}, 0, "valid"},
        {{"crl", "make", "--pin-file", "pin", "--issuer", uri, "--key", uri, "--revoke", "1F", "-o", "list"},
         0,
         ""},
        {{"ocsp", "request", "--issuer", "cert.pem", "-o", "question", "cert.pem"}, 0, ""},
        {{"ocsp", "respond", "--pin-file", "pin", "--issuer", "cert.pem", "--responder", uri, "--key", uri,
          "--crl", "list", "-o", "answer", "question"},
         0,
         ""},
        {{"ocsp", "check", "--issuer", "cert.pem", "--response", "answer", "cert.pem"}, 0, "good"},
        {{"message", "encrypt", "--to", "cert.pem", "-o", "sealed", "content"}, 0, ""},
        {{"message", "decrypt", "--pin-file", "pin", "--cert", "cert.pem", "--key", uri, "sealed"},
         0,
         "to sign"},
    };
    for (const Row &row : rows) {
        const Result result = run(row.arguments);
        EXPECT_EQ(result.status, row.status) << row.arguments[1] << result;
        EXPECT_NE((result.output + result.errors).find(row.printed), std::string::npos) << result;
    }
    folder_.run(
        "cmp read.pem cert.pem && openssl cms -verify -in signed -inform PEM -CAfile cert.pem &&"
        "openssl crl -in list -CAfile cert.pem -noout");
}

/// The first certificate of the bundle, whatever it is and whether it has expired.
TEST_F(CommandSystem, TrustsWhatTheSystemTrusts) {
    folder_.run("openssl x509 -in /etc/ssl/certs/ca-certificates.crt -out first.pem");
    const Result trusted =
        run({"verify", "--system-anchors", "--anchor-rules", "none", "--profile", "any", "first.pem"});
    EXPECT_EQ(trusted.status, 0) << trusted;
    const Result other = run({"verify", "--system-anchors", "--anchor", "other-root.pem", "root.pem"});
    EXPECT_NE(other.output.find("0x53050116"), std::string::npos) << other;
}

TEST_F(CommandSystem, CompletionCompletes) {
    folder_.write("unique.file", "");
    const auto completions = [this](const std::string &words, int current) {
        return folder_.run("bash -c 'source " + in_source("tools/completion/tlxpki") +
                           "; COMP_WORDS=(tlxpki " + words + "); COMP_CWORD=" + std::to_string(current) +
                           "; _tlxpki; echo \"${COMPREPLY[*]}\"'");
    };
    EXPECT_EQ(completions("s", 1), "show status\n");
    EXPECT_EQ(completions("token o", 2), "objects\n");
    EXPECT_EQ(completions("verify --po", 2), "--pool --policy\n");
    EXPECT_EQ(completions("verify --purpose tls", 3), "tls-server tls-client\n");
    EXPECT_EQ(completions("verify --anchor uni", 3), "unique.file\n");
    EXPECT_EQ(completions("verify --at \"\"", 3), "\n");
    EXPECT_EQ(completions("oid uni", 2), "\n");
    EXPECT_EQ(completions("message d", 2), "decrypt\n");
    EXPECT_EQ(completions("crl make --rev", 3), "--revoke --revoke-file\n");
    EXPECT_EQ(completions("key convert --scheme s", 4), "seed seed-cbc\n");
    EXPECT_EQ(completions("key convert --to \"\"", 4), "pkcs8 pkcs1\n");
    EXPECT_EQ(completions("message encrypt --cipher se", 4), "seed-cbc\n");
    EXPECT_EQ(completions("message sign --scheme p", 4), "pkcs1 pss\n");
    EXPECT_EQ(completions("message verify --co", 3), "--content\n");
}
#endif

using CommandDocuments = InFolder;
using Words = std::set<std::string>;

/// What an expression matches in a text.
Words matches(const std::string &text, const std::regex &expression) {
    Words words;
    for (std::sregex_iterator at(text.begin(), text.end(), expression), end; at != end; ++at)
        words.insert(at->str());
    return words;
}

Words options_in(const std::string &text) {
    return matches(text, std::regex("--[a-z][a-z0-9-]*"));
}

/// The text between two others.
std::string between(const std::string &text, const std::string &first, const std::string &last) {
    const std::size_t begin = text.find(first);
    EXPECT_NE(begin, std::string::npos) << first;
    const std::size_t start = begin + first.size();
    return text.substr(start, text.find(last, start) - start);
}

TEST_F(CommandDocuments, ManPageAndCompletionNameEveryOption) {
    std::string page = read_file(in_source("docs/tlxpki.1"));
    page = std::regex_replace(page, std::regex(R"(\\-)"), "-");
    const std::string common = between(page, ".SH OPTIONS", ".SH EXIT STATUS");
    const std::string completion = read_file(in_source("tools/completion/tlxpki"));
    for (const std::string command : {"verify",
                                      "show",
                                      "asn1",
                                      "oid",
                                      "status",
                                      "message sign",
                                      "message verify",
                                      "message encrypt",
                                      "message decrypt",
                                      "message show",
                                      "pkcs12 open",
                                      "pkcs12 show",
                                      "pkcs12 make",
                                      "key show",
                                      "key convert",
                                      "key password",
                                      "key make",
                                      "identity check",
                                      "trustlist show",
                                      "trustlist import",
                                      "trustlist make",
                                      "token slots",
                                      "token objects",
                                      "token certificate",
                                      "ocsp request",
                                      "ocsp respond",
                                      "ocsp show",
                                      "ocsp check",
                                      "crl show",
                                      "crl check",
                                      "crl make",
                                      "timestamp request",
                                      "timestamp show",
                                      "timestamp verify",
                                      "message stamp"}) {
        std::istringstream words(command + " --help");
        const std::string help = run({std::istream_iterator<std::string>(words), {}}).output;
        const Words options = options_in(help.substr(0, help.find("Example: ")));
        EXPECT_GE(options.size(), 2U) << command;
        Words in_page = options_in(between(page, ".SS " + command, ".S") + common);
        in_page.erase("--version");
        EXPECT_EQ(in_page, options) << command;
        const bool looks_up = command == "oid" || command == "status";
        const std::string name =
            looks_up ? "oid | status" : std::regex_replace(command, std::regex(" "), "-");
        const std::string words_of = between(completion, " " + name + ")", ";;");
        EXPECT_EQ(options_in(words_of), options) << command;
    }
}

/// The README shows an example as it is compiled. Its blocks of "```console" hold a line "$ tlxpki ...", run
/// among the chains, and what it prints.
TEST_F(CommandDocuments, ReadmeShowsWhatIsCompiledAndWhatTheCommandPrints) {
    const std::string readme = read_file(in_source("README.md"));
    const std::string example = read_file(in_source("examples/verify_chain.c"));
    EXPECT_NE(readme.find("```c\n" + example + "```\n"), std::string::npos);
    const std::regex block("```console\n(\\$ tlxpki [^`]*)```");
    int commands = 0;
    for (std::sregex_iterator at(readme.begin(), readme.end(), block), end; at != end; ++at) {
        const std::string text = at->str(1);
        const std::size_t line_end = text.find('\n');
        std::istringstream words(text.substr(9, line_end - 9));
        const Result result = run({std::istream_iterator<std::string>(words), {}});
        EXPECT_EQ(text.substr(line_end + 1), result.output + result.errors) << text.substr(0, line_end);
        ++commands;
    }
    EXPECT_GE(commands, 6);
}

}  // namespace
}  // namespace command_test
