// What requests over HTTP share on every system.
#include "http.hpp"

#include <algorithm>
#include <cctype>
#include <string_view>

#include "failure.hpp"
#include "owned.hpp"

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

bool is_ldap(const std::string &url) {
    return has_scheme(url, "ldap") || has_scheme(url, "ldaps");
}

std::vector<std::string> values_of_entries(const std::string &text) {
    std::vector<std::string> values;
    for (std::size_t begin = 0; begin < text.size();) {
        const std::size_t end = std::min(text.find('\n', begin), text.size());
        const std::string_view line = std::string_view(text).substr(begin, end - begin);
        begin = end + 1;
        const std::size_t mark = line.find(":: ");
        if (!line.starts_with('\t') || mark == std::string_view::npos) continue;
        const std::string_view base64 = line.substr(mark + 3);
        uint8_t *octets = nullptr;
        const uint32_t size = decode_Base64(base64.data(), static_cast<uint32_t>(base64.size()), &octets);
        const Owned<uint8_t, tlx_free> owner(octets);
        if (size > 0) values.emplace_back(reinterpret_cast<const char *>(octets), size);
    }
    return values;
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
