// A server for tests of requests over HTTP.
#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace command_test {

/// A request as it came.
struct HttpQuestion {
    std::string head;  ///< its first line and headers
    std::string body;
    [[nodiscard]] std::string path() const;
};

/// Listens on the loopback address and answers each connection once, in a thread of its own. Without an
/// answer the connection stays open until the server ends.
class HttpServer {
  public:
    /// Called in the server's thread; gives what is sent, headers and all.
    using Answer = std::function<std::optional<std::string>(const HttpQuestion &)>;

    explicit HttpServer(Answer answer);
    ~HttpServer();
    HttpServer(const HttpServer &) = delete;
    HttpServer &operator=(const HttpServer &) = delete;

    /// "http://127.0.0.1:12345" and the path.
    [[nodiscard]] std::string url(const std::string &path) const;

  private:
    void serve();

    Answer answer_;
    std::uintptr_t listener_;
    unsigned port_ = 0;
    std::atomic<bool> ends_ = false;  ///< set before the last connection, which the destructor makes
    std::vector<std::uintptr_t> held_;
    std::thread thread_;
};

}  // namespace command_test
