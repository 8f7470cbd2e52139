// Requests over HTTP, to a server on the loopback address.
#include "http.hpp"

#include <gtest/gtest.h>

#include "failure.hpp"
#include "http_server.hpp"

namespace command_test {
namespace {

using tool::ask_http;
using tool::HttpAnswer;
using tool::HttpRequest;

std::string with_body(const std::string &body, const std::string &first_lines = "HTTP/1.1 200 OK\r\n") {
    return first_lines + "Content-Length: " + std::to_string(body.size()) + "\r\n\r\n" + body;
}

/// What each path of the server gives.
std::optional<std::string> answer(const HttpQuestion &question) {
    const std::string path = question.path();
    if (path == "/echo") return with_body(question.head + question.body);
    if (path == "/typed") return with_body("A", "HTTP/1.1 200 OK\r\nContent-Type: application/a; b=c\r\n");
    if (path == "/missing") return with_body("no such page", "HTTP/1.1 404 Not Found\r\n");
    if (path == "/100") return with_body(std::string(100, 'x'));
    if (path == "/endless") return "HTTP/1.1 200 OK\r\n\r\n" + std::string(1 << 20, 'x');
    if (path == "/half") return "HTTP/1.1 200 OK\r\nContent-Length: 10\r\n\r\nhalf";
    if (path == "/moved") return with_body("to", "HTTP/1.1 302 Found\r\nLocation: file:///etc/hostname\r\n");
    if (path == "/garbage") return "\x30\x03\x02\x01\x05";
    if (path == "/nothing") return "";
    return std::nullopt;  // and the connection stays open
}

/// What came out: "200 type body", or the sentence of a failure with URL in the place of the URL.
std::string outcome(const HttpRequest &request) {
    try {
        const HttpAnswer given = ask_http(request);
        return std::to_string(given.status) + " " + given.content_type + " " + given.body;
    } catch (const tool::Failure &failure) {
        std::string text = failure.what();
        EXPECT_TRUE(text.starts_with(request.url)) << text;
        return "URL" + text.substr(request.url.size());
    }
}

TEST(Http, GivesTheWholeAnswerOrOneSentence) {
    const HttpServer server(answer);
    HttpRequest request;
    request.most_octets = 100;
    request.limit = std::chrono::seconds(1);
    struct Row {
        const char *path;
        const char *expected;  // the beginning
    };
    for (const Row &row :
         {Row{"/typed", "200 application/a; b=c A"}, Row{"/missing", "404  no such page"},
          Row{"/moved", "302  to"}, Row{"/100", "200  xxxx"},
          Row{"/endless", "URL: answers with more than 100 octets"}, Row{"/half", "URL: gives no answer: "},
          Row{"/garbage", "URL: gives no answer: "}, Row{"/nothing", "URL: gives no answer: "},
          Row{"/silence", "URL: does not answer within 1 s"}}) {
        request.url = server.url(row.path);
        const std::string result = outcome(request);
        EXPECT_TRUE(result.starts_with(row.expected)) << row.path << ": " << result;
    }
    request.most_octets = 99;
    request.url = server.url("/100");
    EXPECT_EQ(outcome(request), "URL: answers with more than 99 octets");
}

TEST(Http, ValuesOfEntriesAreThoseInBase64) {
    using Values = std::vector<std::string>;
    EXPECT_EQ(
        tool::values_of_entries("DN: cn=x\n\tcn: x\n\n\tcACertificate;binary:: QUI=\n\n\tb:: QUJD\n\n\n"),
        Values({"AB", "ABC"}));
    EXPECT_EQ(tool::values_of_entries("b:: QUI=\n\tb:: Q=\n\tb: QUI=\n\tb:: QUI="), Values({"AB"}));
    EXPECT_EQ(tool::values_of_entries(""), Values());
}

TEST(Http, SendsWhatItIsGiven) {
    const HttpServer server(answer);
    HttpRequest request;
    request.url = server.url("/echo");
    EXPECT_TRUE(outcome(request).starts_with("200  GET /echo HTTP/1.1\r\n"));
    request.content_type = "application/ocsp-request";
    request.body = std::string("\0\xFF\r\n", 4);
    const std::string sent = outcome(request);
    EXPECT_TRUE(sent.starts_with("200  POST /echo HTTP/1.1\r\n")) << sent;
    EXPECT_NE(sent.find("\r\nContent-Type: application/ocsp-request\r\n"), std::string::npos) << sent;
    EXPECT_NE(sent.find("\r\nContent-Length: 4\r\n"), std::string::npos) << sent;
    EXPECT_TRUE(sent.ends_with("\r\n" + request.body)) << sent;
}

TEST(Http, AsksNobodyElse) {
    HttpRequest request;
    for (const char *url :
         {"file:///etc/hostname", "ftp://127.0.0.1/", "127.0.0.1", "httpx://127.0.0.1", ""}) {
        request.url = url;
        EXPECT_EQ(outcome(request), "URL: begins with neither http:// nor https://") << url;
    }
    {
        const HttpServer server(answer);
        request.url = server.url("/");
    }
    EXPECT_TRUE(outcome(request).starts_with("URL: gives no answer: ")) << "the server has ended";
}

}  // namespace
}  // namespace command_test
