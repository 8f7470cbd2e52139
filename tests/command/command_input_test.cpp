// Files that cannot be used, for every command that reads files: a clear message, status 2, and nothing
// worse.
#include <filesystem>
#include <fstream>

#include "program.hpp"

namespace command_test {
namespace {

/// The commands with a file to read in each place where one may stand.
std::vector<Arguments> readers_of(const std::string &path) {
    const std::string root = chain("root.pem");
    return {{"show", path},
            {"asn1", path},
            {"verify", "--anchor", path, root},
            {"verify", "--anchor", root, "--pool", path, root},
            {"verify", "--anchor", root, path}};
}

void expect_refusal(const std::string &path, const std::string &complaint,
                    const std::vector<Arguments> &readers) {
    for (const Arguments &arguments : readers) {
        const Result result = run(arguments);
        EXPECT_EQ(result.status, 2) << arguments[0] << " " << path << result;
        EXPECT_TRUE(result.complains("tlxpki: " + path)) << arguments[0] << result;
        EXPECT_TRUE(result.complains(complaint)) << arguments[0] << " wanted: " << complaint << result;
    }
}

void expect_refusal(const std::string &path, const std::string &complaint) {
    expect_refusal(path, complaint, readers_of(path));
}

/// Those that want a certificate (or key), and leave alone what asn1 can show.
void expect_no_certificate(const std::string &path, const std::string &complaint) {
    std::vector<Arguments> readers = readers_of(path);
    readers.erase(readers.begin() + 1);
    expect_refusal(path, complaint, readers);
}

TEST(CommandInput, KoreanNamesOfFiles) {
    const std::string path = write_file("인증서 홍길동.pem", read_file(chain("root.pem")));
    for (const Arguments &arguments : readers_of(path)) {
        const Result result = run(arguments);
        EXPECT_EQ(result.status, 0) << arguments[0] << result;
        EXPECT_EQ(result.errors, "") << arguments[0];
    }
    EXPECT_TRUE(run({"verify", "--anchor", path, path}).says("홍길동.pem: valid\n"));
    expect_refusal(scratch("없는 파일"), "cannot be read: No such file or directory");
}

TEST(CommandInput, FilesThatCannotBeRead) {
    expect_refusal(scratch("missing"), "cannot be read: No such file or directory");
    expect_refusal(std::filesystem::path(chain("root.pem")).parent_path().string(), "is a directory");
    expect_refusal(chain("root.pem") + "/child", "cannot be read");
    expect_refusal(scratch(std::string(300, 'x')), "cannot be read");
    expect_refusal(write_file("empty", ""), "is empty");
}

#ifndef _WIN32
TEST(CommandInput, FilesThatRefuseToBeRead) {
    // Nothing is at address 0 of a process.
    expect_refusal("/proc/self/mem", "cannot be read: Input/output error");
    const std::string path = write_file("secret.pem", read_file(chain("root.pem")));
    std::filesystem::permissions(path, std::filesystem::perms::none);
    const bool reads_everything = std::ifstream(path).is_open();
    if (!reads_everything) expect_refusal(path, "cannot be read: Permission denied");
}
#endif

TEST(CommandInput, PemThatIsNotWhole) {
    const std::string begin = "-----BEGIN CERTIFICATE-----\n";
    const std::string end = "-----END CERTIFICATE-----\n";
    const std::string root = read_file(chain("root.pem"));
    const std::pair<std::string, const char *> cases[] = {
        {root.substr(0, root.find("-----END")), "has no \"-----END CERTIFICATE-----\""},
        {"-----BEGIN CERTIFICATE--\nAAAA\n" + end, "is not complete"},
        {begin + "AAAA\n-----END CERTIFICATE", "is not complete"},
        {begin + "AAAA\n-----END X509 CRL-----\n", "does not end so"},
        {begin + "A=*A\n" + end, "is not Base64"},
        {begin + end, "is not Base64"},
        {"-----BEGIN X-----END X-----\n", "has no \"-----END X-----\""},
        {begin + "Comment: x\n" + end, "is not Base64"},
        {begin + "Comment: x\n\n" + end, "is not Base64"},
        {begin + "Proc-Type: 4,ENCRYPTED\n\nAAAA\n" + end, ""},
        {root + begin + "AAA\n" + end, "PEM block 2: the text of the CERTIFICATE is not Base64"},
    };
    for (const auto &[text, complaint] : cases)
        expect_refusal(write_file("broken.pem", text), complaint);
}

TEST(CommandInput, WhatIsNoCertificate) {
    expect_refusal(write_file("text", "This is no certificate.\n"), "");
    expect_no_certificate(write_file("text", "This is no certificate.\n"),
                          "is neither PEM nor DER: its length is 104");
    expect_no_certificate(write_file("null", octets("0500")), "is n");
    expect_no_certificate(write_file("null", octets("2000")), "is n");
    expect_no_certificate(write_file("null.pem", pem_of("CERTIFICATE", octets("0500"))), "is n");
    const std::string crl = write_file("crl.pem", pem_of("X509 CRL", octets("3000")));
    expect_no_certificate(crl, "");
    EXPECT_TRUE(run({"verify", "--anchor", chain("root.pem"), crl}).complains("holds no certificate"));
    EXPECT_TRUE(run({"show", crl}).complains("the X509 CRL is neither a certificate nor an RSA key"));
    const std::string der = der_of(chain("root.pem"));
    expect_no_certificate(write_file("trailing.der", der + "\n"), "1 octets follow the end of the element");
}

TEST(CommandInput, CertificatesCutAnywhereOrChangedSomewhere) {
    const std::string der = der_of(chain("user.pem"));
    for (std::size_t size = 1; size < der.size(); size += 97) {
        const std::string path = write_file("cut.der", der.substr(0, size));
        expect_refusal(path, "",
                       {{"show", path}, {"asn1", path}, {"verify", "--anchor", chain("root.pem"), path}});
    }
    // Whatever a flipped bit makes of it: one of the three exit statuses, and 0 only where the certificate is
    // shown.
    for (std::size_t at = 0; at < der.size(); at += 31) {
        std::string changed = der;
        changed[at] = static_cast<char>(changed[at] ^ 0x10);
        const std::string path = write_file("changed.der", changed);
        const Result verdict =
            run({"verify", "--anchor", chain("root.pem"), "--pool", chain("ca.pem"), path});
        EXPECT_TRUE(verdict.status == 1 || verdict.status == 2) << at << verdict;
        const Result shown = run({"show", path});
        EXPECT_TRUE(shown.status == 0 || shown.status == 2) << at << shown;
        EXPECT_EQ(shown.status == 2, shown.output.empty()) << at << shown;
    }
}

/// A file of 100 MB that repeats a pattern.
std::string large_file(const std::string &name, const std::string &front, const std::string &pattern) {
    constexpr std::size_t kSize = 100'000'000;
    const std::string path = scratch(name);
    std::ofstream file(path, std::ios::binary);
    file << front;
    std::string chunk;
    while (chunk.size() < 1'000'000)
        chunk += pattern;
    for (std::size_t written = 0; written < kSize; written += chunk.size())
        file << chunk;
    EXPECT_TRUE(file.flush()) << path;
    return path;
}

TEST(CommandInput, FilesOf100MB) {
    expect_refusal(large_file("zeros", "", std::string(1, '\0')), "");
    expect_refusal(large_file("text", "", "no certificate here\n"), "");
    expect_refusal(large_file("begins", "", "-----BEGIN CERTIFICATE-----\n"), "has no \"-----END",
                   {{"show", scratch("begins")}});
    expect_refusal(large_file("deep", "", octets("3080")), "",
                   {{"show", scratch("deep")}, {"asn1", scratch("deep")}});
    expect_refusal(large_file("base64", "-----BEGIN CERTIFICATE-----\n", "MIIBAAAA\n"), "has no",
                   readers_of(scratch("base64")));
    // One element that fills the file.
    const std::string octet_string = large_file("octets", octets("0485 0005F5E100"), "x");
    const Result shown = run({"asn1", octet_string});
    EXPECT_EQ(shown.status, 0) << shown;
    EXPECT_TRUE(shown.says("100000000  OCTET STRING  7878")) << shown;
    expect_no_certificate(octet_string, "is n");
}

}  // namespace
}  // namespace command_test
