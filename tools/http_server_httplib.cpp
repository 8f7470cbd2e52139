// A server over HTTP with cpp-httplib, whose headers bring libcrypto's names: tlxpki.h has the same ones.
#include <httplib.h>

#include <array>
#include <cerrno>
#include <charconv>
#include <csignal>
#include <cstring>
#include <future>
#include <optional>

#include "failure.hpp"
#include "http_server.hpp"

namespace tool {

namespace {

using Clock = std::chrono::steady_clock;

enum HttpStatus {
    kNotAllowed = 405,
    kTooSlow = 408,
    kTooLong = 413,
    kPathTooLong = 414,
    kOtherType = 415,
    kNoRanges = 416
};

struct Endpoint {
    std::string host;  ///< without brackets
    int port = 0;
    bool is_ipv6 = false;

    [[nodiscard]] std::string text(int with_port) const {
        return (is_ipv6 ? "[" + host + "]" : host) + ":" + std::to_string(with_port);
    }
};

/// Splits "ADDRESS:PORT". Names are not looked up: one may stand for several addresses.
Endpoint endpoint_of(const std::string &text) {
    constexpr int kMostPort = 65535;
    Endpoint endpoint;
    const std::size_t colon = text.rfind(':');
    const std::string port = colon == std::string::npos ? "" : text.substr(colon + 1);
    endpoint.host = text.substr(0, colon);
    if (endpoint.host.size() > 2 && endpoint.host.front() == '[' && endpoint.host.back() == ']') {
        endpoint.is_ipv6 = true;
        endpoint.host = endpoint.host.substr(1, endpoint.host.size() - 2);
    }
    std::array<unsigned char, sizeof(in6_addr)> octets{};
    const char *end = port.data() + port.size();
    const auto number = std::from_chars(port.data(), end, endpoint.port);
    if (number.ec != std::errc() || number.ptr != end || endpoint.port < 0 || endpoint.port > kMostPort ||
        inet_pton(endpoint.is_ipv6 ? AF_INET6 : AF_INET, endpoint.host.c_str(), octets.data()) != 1) {
        throw Failure("\"" + text +
                      "\" is no address with a port; write it like 127.0.0.1:8080 or [::1]:8080");
    }
    return endpoint;
}

/// SIGINT and SIGTERM wait for this thread to take them, and its new threads never get them. They go on
/// waiting after the first one, because some send it twice and the process is about to end.
class EndSignals {
  public:
    EndSignals() {
        sigemptyset(&set_);
        sigaddset(&set_, SIGINT);
        sigaddset(&set_, SIGTERM);
        pthread_sigmask(SIG_BLOCK, &set_, nullptr);
    }
    EndSignals(const EndSignals &) = delete;
    EndSignals &operator=(const EndSignals &) = delete;

    /// Whether one has come within a second.
    [[nodiscard]] bool has_come() const {
        const timespec second{1, 0};
        return sigtimedwait(&set_, nullptr, &second) > 0;
    }

  private:
    sigset_t set_{};
};

void give(httplib::Response &response, const HttpAnswer &answer) {
    response.status = answer.status;
    response.set_content(answer.body, answer.content_type);
}

/// Answers what has no body. Only a POST of the right type goes on. Ranges, with which a short request can
/// ask for the same octets a thousand times, are not for answers that are made anew each time.
bool is_answered_without_body(const HttpService &service, const httplib::Request &request,
                              httplib::Response &response) {
    constexpr std::size_t kLongestPath = 255;  // of a POST
    if (request.has_header("Range")) {
        response.status = kNoRanges;
    } else if (request.method == "GET" || request.method == "HEAD") {
        give(response,
             service.answer({false, request.path.substr(std::min<std::size_t>(1, request.path.size()))}));
    } else if (request.method != "POST") {
        response.status = kNotAllowed;
        response.set_header("Allow", "GET, HEAD, POST");
    } else if (request.path.size() > kLongestPath) {
        response.status = kPathTooLong;
    } else if (request.get_header_value("Content-Type") != service.content_type) {
        response.status = kOtherType;
    } else {
        return false;
    }
    return true;
}

/// Reads a body within the limits, however slowly its parts come, and answers it.
void answer_body(const HttpService &service, httplib::Response &response,
                 const httplib::ContentReader &read_content) {
    const Clock::time_point end = Clock::now() + service.limit;
    HttpQuestion question{true, ""};
    std::optional<HttpStatus> refusal;
    const bool is_whole = read_content([&](const char *octets, std::size_t size) {
        if (Clock::now() > end) refusal = kTooSlow;
        if (size > service.most_octets - question.octets.size()) refusal = kTooLong;
        if (!refusal) question.octets.append(octets, size);
        return !refusal;
    });
    if (is_whole) give(response, service.answer(question));
    if (refusal) response.status = *refusal;
}

void configure(httplib::Server &server, const HttpService &service) {
    server.set_read_timeout(service.limit);
    server.set_write_timeout(service.limit);
    server.set_keep_alive_max_count(1);
    server.set_payload_max_length(service.most_octets);
    // Without SO_REUSEPORT, by which two servers would share a port unnoticed.
    server.set_socket_options([](socket_t socket) {
        const int yes = 1;
        setsockopt(socket, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
    });
    server.set_pre_routing_handler([&service](const httplib::Request &request, httplib::Response &response) {
        return is_answered_without_body(service, request, response)
                   ? httplib::Server::HandlerResponse::Handled
                   : httplib::Server::HandlerResponse::Unhandled;
    });
    server.Post(".*", [&service](const httplib::Request & /*request*/, httplib::Response &response,
                                 const httplib::ContentReader &read_content) {
        answer_body(service, response, read_content);
    });
}

/// The port that the server listens on.
int bind(httplib::Server &server, const Endpoint &endpoint) {
    errno = 0;
    const int port = endpoint.port == 0 ? server.bind_to_any_port(endpoint.host, AI_NUMERICHOST)
                     : server.bind_to_port(endpoint.host, endpoint.port, AI_NUMERICHOST) ? endpoint.port
                                                                                         : -1;
    if (port > 0) return port;
    throw Failure(endpoint.text(endpoint.port) + ": cannot be listened on" +
                  (errno != 0 ? std::string(": ") + std::strerror(errno) : ""));
}

}  // namespace

void serve_http(const HttpService &service) {
    constexpr std::chrono::milliseconds kStep{1};
    const Endpoint endpoint = endpoint_of(service.address);
    const EndSignals signals;
    httplib::Server server;
    configure(server, service);
    const int port = bind(server, endpoint);
    std::future<bool> listening =
        std::async(std::launch::async, [&server] { return server.listen_after_bind(); });
    const auto has_ended = [&listening](std::chrono::milliseconds within) {
        return listening.wait_for(within) == std::future_status::ready;
    };
    // A server that does not run yet cannot be stopped.
    while (!server.is_running() && !has_ended(kStep)) {
    }
    service.begun(endpoint.text(port));
    while (!has_ended(std::chrono::milliseconds::zero()) && !signals.has_come()) {
    }
    server.stop();
    if (!listening.get()) throw Failure(endpoint.text(port) + ": can no longer be listened on");
}

}  // namespace tool
