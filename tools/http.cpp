// What requests over HTTP share on every system.
#include "http.hpp"

#include <algorithm>
#include <cctype>
#include <string_view>

#include "failure.hpp"

namespace tool {

namespace {

/// Whether the URL begins with a scheme, in any case, and "://".
bool has_scheme(const std::string &url, std::string_view scheme) {
    const std::size_t end = url.find("://");
    if (end != scheme.size()) return false;
    return std::equal(scheme.begin(), scheme.end(), url.begin(), [](char wanted, char given) {
        return wanted == std::tolower(static_cast<unsigned char>(given));
    });
}

}  // namespace

void expect_http(const HttpRequest &request) {
    if (has_scheme(request.url, "http") || has_scheme(request.url, "https")) return;
    throw Failure(request.url + ": begins with neither http:// nor https://");
}

void fail_too_slow(const HttpRequest &request) {
    throw Failure(request.url + ": does not answer within " + std::to_string(request.limit.count()) + " s");
}

void fail_too_long(const HttpRequest &request) {
    throw Failure(request.url + ": answers with more than " + std::to_string(request.most_octets) +
                  " octets");
}

void fail_without_answer(const HttpRequest &request, const std::string &why) {
    throw Failure(request.url + ": gives no answer: " + why);
}

}  // namespace tool
