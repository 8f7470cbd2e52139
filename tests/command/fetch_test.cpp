// tlxpki verify --fetch: issuers, lists and responses come from a server of the test.
#include "folder.hpp"
#include "http_server.hpp"

namespace command_test {
namespace {

using CommandFetch = InFolder;

TEST_F(CommandFetch, AsksWhereTheCertificatesSay) {
    const HttpServer server([this](const HttpQuestion &question) -> std::optional<std::string> {
        const std::string path = question.path();
        if (path == "/ocsp") return "HTTP/1.1 503 Busy\r\nContent-Length: 0\r\n\r\n";
        const std::string body = read_file(path.substr(1));
        return "HTTP/1.1 200 OK\r\nContent-Length: " + std::to_string(body.size()) + "\r\n\r\n" + body;
    });
    const std::string url = server.url("/");
    folder_.run(
        "ca='basicConstraints = critical, CA:TRUE'; id='subjectKeyIdentifier = hash'; "
        "sh issue.sh authority authority \"$ca\" \"$id\" 2> issue.log; "
        "sh issue.sh middle authority \"$ca\" \"$id\" 2> issue.log; "
        "sh issue.sh below middle 'authorityInfoAccess = "
        "caIssuers;URI:ldap://127.0.0.1:1/c=KR,caIssuers;URI:" +
        url + "issuers.p7c,OCSP;URI:" + url + "ocsp' 'crlDistributionPoints = URI:" + url +
        "list' 2> issue.log; "
        "openssl crl2pkcs7 -nocrl -certfile middle.pem -outform DER -out issuers.p7c");
    const Result made =
        run({"crl", "make", "--issuer", "middle.pem", "--key", "middle.key", "--der", "-o", "list"});
    ASSERT_EQ(made.status, 0) << made;

    const Arguments arguments = {"verify", "--json",   "--profile",     "korean_legacy", "--revocation",
                                 "target", "--anchor", "authority.pem", "below.pem"};
    Arguments fetching = arguments;
    fetching.emplace_back("--fetch");
    const Result fetched = run(fetching);
    EXPECT_EQ(fetched.status, 0) << fetched;
    const Json target = Json::parse(fetched.output)["targets"][0];
    ASSERT_EQ(target["path"].size(), 3U) << fetched;
    EXPECT_EQ(target["path"][2]["revocation"], Json({{"state", "good"}, {"source", "crl"}})) << fetched;
    EXPECT_NE(fetched.errors.find("tlxpki: warning: ldap://127.0.0.1:1/c=KR: "), std::string::npos)
        << fetched;
    EXPECT_NE(fetched.errors.find("ocsp: answers with HTTP status 503\n"), std::string::npos) << fetched;

    const Result alone = run(arguments);
    EXPECT_NE(alone.output.find("0x55030047"), std::string::npos) << alone;
}

}  // namespace
}  // namespace command_test
