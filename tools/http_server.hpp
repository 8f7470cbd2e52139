// A server over HTTP: with cpp-httplib, or with nothing (on Windows, without that library,
// TLX_HTTP_SERVER=OFF).
#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <string>

#include "http.hpp"

namespace tool {

/// What a client sends.
struct HttpQuestion {
    bool is_post = false;
    std::string octets;  ///< the body of a POST; of a GET the path after its first "/", percent-decoded
};

struct HttpService {
    std::string address;       ///< as in 127.0.0.1:8080 and [::1]:8080; port 0 is one that is free
    std::string content_type;  ///< of the bodies of POST
    std::size_t most_octets = std::size_t{64} << 10;  ///< of a body
    std::chrono::seconds limit{10};                   ///< for a body, and for a step before and after
    /// Called by several threads at once. A client gets status 500 when it throws.
    std::function<HttpAnswer(const HttpQuestion &)> answer;
    /// Called once with the address and the port that it listens on.
    std::function<void(const std::string &)> begun;
};

/// Listens on the address, and on no other, until SIGINT or SIGTERM comes. Throws Failure when it cannot.
void serve_http(const HttpService &service);

}  // namespace tool
