#include "http_server.hpp"

#include <gtest/gtest.h>

#include <array>
#include <cstdlib>

#ifdef _WIN32
#include <winsock2.h>
#else
#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>
#endif

namespace command_test {
namespace {

#ifdef _WIN32
using Socket = SOCKET;
using Length = int;
constexpr int kQuietly = 0;
void close_socket(Socket socket) {
    closesocket(socket);
}
void start_sockets() {
    WSADATA data;
    EXPECT_EQ(WSAStartup(MAKEWORD(2, 2), &data), 0);
}
#else
using Socket = int;
using Length = socklen_t;
constexpr int kQuietly = MSG_NOSIGNAL;
void close_socket(Socket socket) {
    close(socket);
}
/// No proxy of this machine comes between.
void start_sockets() {
    setenv("no_proxy", "127.0.0.1", 1);
}
#endif

Socket socket_of(std::uintptr_t number) {
    return static_cast<Socket>(number);
}

sockaddr_in loopback(unsigned port) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(static_cast<std::uint16_t>(port));
    return address;
}

std::size_t body_size(const std::string &head) {
    const std::size_t at = head.find("Content-Length: ");
    return at == std::string::npos ? 0 : std::stoul(head.substr(at + 16));
}

HttpQuestion receive(Socket socket) {
    std::string all;
    std::array<char, 4096> part;
    HttpQuestion question;
    for (;;) {
        const std::size_t end = all.find("\r\n\r\n");
        if (end != std::string::npos) {
            question = {all.substr(0, end + 2), all.substr(end + 4)};
            if (question.body.size() >= body_size(question.head)) return question;
        }
        const auto size = recv(socket, part.data(), part.size(), 0);
        if (size <= 0) return question;
        all.append(part.data(), static_cast<std::size_t>(size));
    }
}

/// Says that the connection ends, so that no client sends its next request on it.
std::string with_end(std::string answer) {
    const std::size_t line = answer.find("\r\n");
    return line == std::string::npos ? answer : answer.insert(line + 2, "Connection: close\r\n");
}

void give(Socket socket, const std::string &octets) {
    std::size_t sent = 0;
    while (sent < octets.size()) {
        const auto size =
            send(socket, octets.data() + sent, static_cast<Length>(octets.size() - sent), kQuietly);
        if (size <= 0) return;
        sent += static_cast<std::size_t>(size);
    }
}

}  // namespace

std::string HttpQuestion::path() const {
    const std::size_t begin = head.find(' ') + 1;
    return head.substr(begin, head.find(' ', begin) - begin);
}

HttpServer::HttpServer(Answer answer) : answer_(std::move(answer)) {
    start_sockets();
    const Socket listener = socket(AF_INET, SOCK_STREAM, 0);
    listener_ = static_cast<std::uintptr_t>(listener);
    sockaddr_in address = loopback(0);
    Length size = sizeof address;
    EXPECT_EQ(bind(listener, reinterpret_cast<sockaddr *>(&address), size), 0);
    EXPECT_EQ(listen(listener, 8), 0);
    EXPECT_EQ(getsockname(listener, reinterpret_cast<sockaddr *>(&address), &size), 0);
    port_ = ntohs(address.sin_port);
    thread_ = std::thread([this] { serve(); });
}

HttpServer::~HttpServer() {
    ends_ = true;
    const Socket last = socket(AF_INET, SOCK_STREAM, 0);
    const sockaddr_in address = loopback(port_);
    EXPECT_EQ(connect(last, reinterpret_cast<const sockaddr *>(&address), sizeof address), 0);
    thread_.join();
    close_socket(last);
    close_socket(socket_of(listener_));
    for (const std::uintptr_t each : held_)
        close_socket(socket_of(each));
}

std::string HttpServer::url(const std::string &path) const {
    return "http://127.0.0.1:" + std::to_string(port_) + path;
}

void HttpServer::serve() {
    for (;;) {
        const Socket connection = accept(socket_of(listener_), nullptr, nullptr);
        if (ends_) return close_socket(connection);
        const std::optional<std::string> answer = answer_(receive(connection));
        if (!answer) {
            held_.push_back(static_cast<std::uintptr_t>(connection));
            continue;
        }
        give(connection, with_end(*answer));
        close_socket(connection);
    }
}

}  // namespace command_test
