// Requests over HTTP and HTTPS: with libcurl, on Windows with WinHTTP, or with nothing (TLX_HTTP=OFF).
// Requests to directories over LDAP: with libcurl alone.
#pragma once

#include <chrono>
#include <cstddef>
#include <string>
#include <vector>

namespace tool {

struct HttpRequest {
    std::string url;           ///< begins with http:// or https://
    std::string content_type;  ///< of the body; empty asks with GET, any other with POST
    std::string body;
    std::chrono::seconds connect_limit{10};
    std::chrono::seconds limit{30};  ///< from the beginning to the last octet
    std::size_t most_octets = std::size_t{16} << 20;
};

struct HttpAnswer {
    int status = 0;            ///< 200 when the server did what was asked
    std::string content_type;  ///< as the server wrote it; "" for none
    std::string body;
};

/// Asks a server, or the proxy that the system's settings name. An answer with any status is one, and no
/// redirection is followed. Throws Failure when there is no whole answer within the limits.
[[nodiscard]] HttpAnswer ask_http(const HttpRequest &request);

/// Whether the URL begins with ldap:// or ldaps://.
[[nodiscard]] bool is_ldap(const std::string &url);

/// The values in octets of the entries that an LDAP URL (RFC 4516) names, asked for anonymously. The type and
/// the body of the request are ignored. Throws Failure when there is no whole answer within the limits.
[[nodiscard]] std::vector<std::string> ask_ldap(const HttpRequest &request);

/// The values in Base64 in what libcurl makes of entries: lines like "\tattribute:: MAA=". Others are text.
[[nodiscard]] std::vector<std::string> values_of_entries(const std::string &text);

/// What the implementations share. They throw Failure.
void expect_http(const HttpRequest &request);
[[noreturn]] void fail_too_slow(const HttpRequest &request);
[[noreturn]] void fail_too_long(const HttpRequest &request);
[[noreturn]] void fail_without_answer(const HttpRequest &request, const std::string &why);

}  // namespace tool
