// tlxpki ocsp check over HTTP, with openssl as the responder.
#include "folder.hpp"
#include "http_server.hpp"

namespace command_test {
namespace {

using CommandOcsp = InFolder;

TEST_F(CommandOcsp, AsksTheResponderThatItIsGivenOrThatTheCertificateNames) {
    const HttpServer server([this](const HttpQuestion &question) -> std::optional<std::string> {
        if (question.path() == "/lost") return "HTTP/1.1 404 Not Found\r\nContent-Length: 0\r\n\r\n";
        if (question.path() == "/text") return "HTTP/1.1 200 OK\r\nContent-Length: 4\r\n\r\ntext";
        const bool is_request = question.head.find("application/ocsp-request") != std::string::npos;
        folder_.write("asked.der", is_request ? question.body : "");
        folder_.run(
            "openssl ocsp -index index -CA authority.pem -rsigner authority.pem -rkey authority.key "
            "-reqin asked.der -respout answer.der");
        const std::string body = read_file("answer.der");
        return "HTTP/1.1 200 OK\r\nContent-Type: application/ocsp-response\r\nContent-Length: " +
               std::to_string(body.size()) + "\r\n\r\n" + body;
    });
    folder_.write("index",
                  "V\t491231000000Z\t\t0C\tunknown\t/CN=good\n"
                  "R\t491231000000Z\t290102030405Z,keyCompromise\t0D\tunknown\t/CN=bad\n");
    folder_.run("sh issue.sh authority authority 'basicConstraints = critical, CA:TRUE' 2> issue.log");
    for (const std::string name : {"12 good", "13 bad"})
        folder_.run("serial=" + name.substr(0, 2) + " sh issue.sh " + name.substr(3) +
                    " authority 'authorityInfoAccess = OCSP;URI:" + server.url("/ocsp") + "' 2> issue.log");
    const auto check = [](Arguments more) {
        Arguments arguments = {"ocsp", "check", "--issuer", "authority.pem"};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return run(arguments);
    };
    const Result good = check({"--require-nonce", "good.pem"});
    EXPECT_EQ(good.status, 0) << good;
    EXPECT_NE(good.output.find("good.pem: good\n"), std::string::npos) << good;
    const Result bad = check({"--url", server.url("/other"), "bad.pem"});
    EXPECT_EQ(bad.status, 1) << bad;
    EXPECT_NE(bad.output.find("keyCompromise"), std::string::npos) << bad;

    const Result lost = check({"--url", server.url("/lost"), "good.pem"});
    EXPECT_EQ(lost.status, 2) << lost;
    EXPECT_NE(lost.errors.find("answers with HTTP status 404"), std::string::npos) << lost;
    const Result text = check({"--url", server.url("/text"), "good.pem"});
    EXPECT_EQ(text.status, 2) << text;
    const Result unnamed = check({"authority.pem"});
    EXPECT_EQ(unnamed.status, 2) << unnamed;
    EXPECT_NE(unnamed.errors.find("names no OCSP responder"), std::string::npos) << unnamed;
}

}  // namespace
}  // namespace command_test
