// Requests over HTTP with WinHTTP.
#include <windows.h>
// After windows.h, which it needs.
#include <winhttp.h>

#include <tlxpki/version.h>

#include <algorithm>
#include <array>
#include <memory>
#include <new>

#include "failure.hpp"
#include "http.hpp"

namespace tool {

namespace {

using Clock = std::chrono::steady_clock;

struct HandleEnd {
    void operator()(void *handle) const { WinHttpCloseHandle(handle); }
};
using Handle = std::unique_ptr<void, HandleEnd>;

/// Why a request failed, in words.
std::string reason_of(DWORD error) {
    switch (error) {
        case ERROR_WINHTTP_NAME_NOT_RESOLVED:
            return "there is no host of this name";
        case ERROR_WINHTTP_CANNOT_CONNECT:
            return "the host does not take the connection";
        case ERROR_WINHTTP_INVALID_SERVER_RESPONSE:
            return "what the host sends is not HTTP";
        case ERROR_WINHTTP_CONNECTION_ERROR:
            return "the connection broke off";
        case ERROR_WINHTTP_SECURE_FAILURE:
            return "the certificate of the host is not valid";
        default:
            return "error " + std::to_string(error);
    }
}

/// A request under way, and when it has to be over.
class Exchange {
  public:
    explicit Exchange(const HttpRequest &request)
        : request_(request), end_(Clock::now() + request.limit), url_(wide(request.url)) {}

    [[nodiscard]] HttpAnswer run() {
        open();
        follow_nothing();
        send();
        HttpAnswer answer;
        answer.status = status();
        answer.content_type = content_type();
        answer.body = body();
        expect_whole(answer.body);
        return answer;
    }

  private:
    void expect(bool succeeded) const {
        if (succeeded) return;
        const DWORD error = GetLastError();
        if (error == ERROR_NOT_ENOUGH_MEMORY) throw std::bad_alloc();
        if (error == ERROR_WINHTTP_TIMEOUT) fail_too_slow(request_);
        fail_without_answer(request_, reason_of(error));
    }

    /// Milliseconds that are left, at least one.
    [[nodiscard]] int left() const {
        const auto rest = std::chrono::duration_cast<std::chrono::milliseconds>(end_ - Clock::now());
        if (rest.count() <= 0) fail_too_slow(request_);
        return static_cast<int>(rest.count());
    }

    /// Windows counts the time of each step by itself.
    void limit_next_step() const {
        const int rest = left();
        const int connecting =
            std::min(rest, static_cast<int>(std::chrono::milliseconds(request_.connect_limit).count()));
        expect(WinHttpSetTimeouts(handle_.get(), connecting, connecting, rest, rest) != 0);
        auto waiting = static_cast<DWORD>(rest);
        expect(WinHttpSetOption(handle_.get(), WINHTTP_OPTION_RECEIVE_RESPONSE_TIMEOUT, &waiting,
                                sizeof waiting) != 0);
    }

    [[nodiscard]] static std::wstring wide(const std::string &utf8) {
        const auto size = static_cast<int>(utf8.size());
        const int wide_size = MultiByteToWideChar(CP_UTF8, 0, utf8.data(), size, nullptr, 0);
        std::wstring text(static_cast<std::size_t>(std::max(wide_size, 0)), L'\0');
        MultiByteToWideChar(CP_UTF8, 0, utf8.data(), size, text.data(), wide_size);
        return text;
    }

    void open() {
        URL_COMPONENTS parts{};
        parts.dwStructSize = sizeof parts;
        parts.dwHostNameLength = parts.dwUrlPathLength = parts.dwExtraInfoLength = static_cast<DWORD>(-1);
        expect(WinHttpCrackUrl(url_.c_str(), 0, 0, &parts) != 0);
        const std::wstring host(parts.lpszHostName, parts.dwHostNameLength);
        std::wstring path(parts.lpszUrlPath, parts.dwUrlPathLength);
        path.append(parts.lpszExtraInfo, parts.dwExtraInfoLength);
        const std::wstring agent = wide(std::string("tlxpki/") + get_PkiVersion());
        session_.reset(WinHttpOpen(agent.c_str(), WINHTTP_ACCESS_TYPE_DEFAULT_PROXY, WINHTTP_NO_PROXY_NAME,
                                   WINHTTP_NO_PROXY_BYPASS, 0));
        expect(session_ != nullptr);
        connection_.reset(WinHttpConnect(session_.get(), host.c_str(), parts.nPort, 0));
        expect(connection_ != nullptr);
        handle_.reset(WinHttpOpenRequest(
            connection_.get(), request_.content_type.empty() ? L"GET" : L"POST", path.c_str(), nullptr,
            WINHTTP_NO_REFERER, WINHTTP_DEFAULT_ACCEPT_TYPES,
            parts.nScheme == INTERNET_SCHEME_HTTPS ? static_cast<DWORD>(WINHTTP_FLAG_SECURE) : 0));
        expect(handle_ != nullptr);
    }

    void follow_nothing() const {
        DWORD features = WINHTTP_DISABLE_REDIRECTS;
        expect(WinHttpSetOption(handle_.get(), WINHTTP_OPTION_DISABLE_FEATURE, &features, sizeof features) !=
               0);
    }

    void send() {
        const std::wstring header =
            request_.content_type.empty() ? L"" : L"Content-Type: " + wide(request_.content_type);
        const auto size = static_cast<DWORD>(request_.body.size());
        // The body is not written to.
        auto *body = const_cast<char *>(request_.body.data());
        limit_next_step();
        expect(WinHttpSendRequest(handle_.get(), header.empty() ? nullptr : header.c_str(),
                                  static_cast<DWORD>(header.size()), body, size, size, 0) != 0);
        limit_next_step();
        expect(WinHttpReceiveResponse(handle_.get(), nullptr) != 0);
    }

    /// The number in a header. False when there is none.
    [[nodiscard]] bool number_of(DWORD header, DWORD &number) const {
        DWORD size = sizeof number;
        return WinHttpQueryHeaders(handle_.get(), header | WINHTTP_QUERY_FLAG_NUMBER, nullptr, &number, &size,
                                   nullptr) != 0;
    }

    [[nodiscard]] int status() const {
        DWORD status = 0;
        expect(number_of(WINHTTP_QUERY_STATUS_CODE, status));
        return static_cast<int>(status);
    }

    /// A connection that breaks off looks like the end of the body.
    void expect_whole(const std::string &body) const {
        DWORD length = 0;
        if (number_of(WINHTTP_QUERY_CONTENT_LENGTH, length) && body.size() < length) {
            fail_without_answer(request_, reason_of(ERROR_WINHTTP_CONNECTION_ERROR));
        }
    }

    [[nodiscard]] std::string content_type() const {
        std::array<wchar_t, 200> text{};
        DWORD size = sizeof text;
        if (WinHttpQueryHeaders(handle_.get(), WINHTTP_QUERY_CONTENT_TYPE, nullptr, text.data(), &size,
                                nullptr) == 0) {
            return "";
        }
        std::string ascii;
        for (std::size_t i = 0; i < size / sizeof(wchar_t); ++i) {
            ascii += text[i] < 0x80 ? static_cast<char>(text[i]) : '?';
        }
        return ascii;
    }

    [[nodiscard]] std::string body() const {
        constexpr std::size_t kStep = 16384;
        std::string octets;
        std::array<char, kStep> part{};
        for (;;) {
            DWORD size = 0;
            limit_next_step();
            expect(WinHttpReadData(handle_.get(), part.data(), kStep, &size) != 0);
            if (size == 0) return octets;
            if (size > request_.most_octets - octets.size()) fail_too_long(request_);
            octets.append(part.data(), size);
        }
    }

    const HttpRequest &request_;
    Clock::time_point end_;
    std::wstring url_;
    Handle session_;
    Handle connection_;
    Handle handle_;
};

}  // namespace

HttpAnswer ask_http(const HttpRequest &request) {
    expect_http(request);
    return Exchange(request).run();
}

std::vector<std::string> ask_ldap(const HttpRequest &request) {
    throw Failure(request.url + ": is not fetched: this tlxpki has no LDAP");
}

}  // namespace tool
