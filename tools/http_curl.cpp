// Requests over HTTP with libcurl.
#include <curl/curl.h>
#include <tlxpki/version.h>

#include <memory>
#include <new>

#include "http.hpp"

namespace tool {

namespace {

struct Library {
    Library() {
        if (curl_global_init(CURL_GLOBAL_DEFAULT) != CURLE_OK) throw std::bad_alloc();
    }
    ~Library() { curl_global_cleanup(); }
    Library(const Library &) = delete;
    Library &operator=(const Library &) = delete;
};

struct HandleEnd {
    void operator()(CURL *handle) const { curl_easy_cleanup(handle); }
};
using Handle = std::unique_ptr<CURL, HandleEnd>;

struct HeadersEnd {
    void operator()(curl_slist *headers) const { curl_slist_free_all(headers); }
};
using Headers = std::unique_ptr<curl_slist, HeadersEnd>;

/// The body as it comes.
struct Body {
    std::string octets;
    std::size_t most;
    bool is_too_long = false;
    bool has_no_memory = false;
};

/// Takes a part of the body; any other result than its size ends the request.
std::size_t take(const char *octets, std::size_t /*one*/, std::size_t size, void *to) noexcept {
    auto *body = static_cast<Body *>(to);
    body->is_too_long = size > body->most - body->octets.size();
    if (body->is_too_long) return 0;
    try {
        body->octets.append(octets, size);
    } catch (const std::bad_alloc &) {
        body->has_no_memory = true;
        return 0;
    }
    return size;
}

template <typename Value>
void set(const Handle &handle, CURLoption option, Value value) {
    if (curl_easy_setopt(handle.get(), option, value) != CURLE_OK) throw std::bad_alloc();
}

void set_limits(const Handle &handle, const HttpRequest &request, const char *protocols) {
    set(handle, CURLOPT_PROTOCOLS_STR, protocols);
    set(handle, CURLOPT_NOSIGNAL, 1L);
    set(handle, CURLOPT_CONNECTTIMEOUT, static_cast<long>(request.connect_limit.count()));
    set(handle, CURLOPT_TIMEOUT, static_cast<long>(request.limit.count()));
}

/// The headers of a request, which the handle does not own.
Headers set_request(const Handle &handle, const HttpRequest &request) {
    set(handle, CURLOPT_URL, request.url.c_str());
    set(handle, CURLOPT_USERAGENT, (std::string("tlxpki/") + get_PkiVersion()).c_str());
    if (request.content_type.empty()) return nullptr;
    set(handle, CURLOPT_POST, 1L);
    set(handle, CURLOPT_POSTFIELDS, request.body.data());
    set(handle, CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(request.body.size()));
    Headers headers(curl_slist_append(nullptr, ("Content-Type: " + request.content_type).c_str()));
    if (!headers) throw std::bad_alloc();
    set(handle, CURLOPT_HTTPHEADER, headers.get());
    return headers;
}

void expect_answer(const HttpRequest &request, const Body &body, CURLcode result) {
    if (body.has_no_memory || result == CURLE_OUT_OF_MEMORY) throw std::bad_alloc();
    if (body.is_too_long) fail_too_long(request);
    if (result == CURLE_OPERATION_TIMEDOUT) fail_too_slow(request);
    if (result != CURLE_OK) fail_without_answer(request, curl_easy_strerror(result));
}

Handle new_handle() {
    static const Library library;
    Handle handle(curl_easy_init());
    if (!handle) throw std::bad_alloc();
    return handle;
}

Body perform(const Handle &handle, const HttpRequest &request, std::size_t most) {
    Body body{.octets = {}, .most = most};
    set(handle, CURLOPT_WRITEFUNCTION, take);
    set(handle, CURLOPT_WRITEDATA, &body);
    expect_answer(request, body, curl_easy_perform(handle.get()));
    return body;
}

}  // namespace

HttpAnswer ask_http(const HttpRequest &request) {
    expect_http(request);
    const Handle handle = new_handle();
    set_limits(handle, request, "http,https");
    const Headers headers = set_request(handle, request);
    Body body = perform(handle, request, request.most_octets);
    long status = 0;
    const char *content_type = nullptr;
    curl_easy_getinfo(handle.get(), CURLINFO_RESPONSE_CODE, &status);
    curl_easy_getinfo(handle.get(), CURLINFO_CONTENT_TYPE, &content_type);
    return {static_cast<int>(status), content_type == nullptr ? "" : content_type, std::move(body.octets)};
}

std::vector<std::string> ask_ldap(const HttpRequest &request) {
    const Handle handle = new_handle();
    set_limits(handle, request, "ldap,ldaps");
    set(handle, CURLOPT_URL, request.url.c_str());
    // libcurl writes octets in Base64, four characters for three.
    return values_of_entries(perform(handle, request, request.most_octets / 3 * 4).octets);
}

}  // namespace tool
