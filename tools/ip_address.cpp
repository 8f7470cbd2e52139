#include "ip_address.hpp"

#include <algorithm>
#include <charconv>
#include <optional>
#include <string_view>

namespace tool {

namespace {

using Address = std::vector<uint8_t>;

constexpr std::size_t kIpv4Octets = 4;
constexpr std::size_t kIpv6Octets = 16;

/// A whole text as a number of so many digits at most.
std::optional<unsigned> number_of(std::string_view text, int base, std::size_t most_digits) {
    unsigned number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number, base);
    const bool is_number = error == std::errc() && end == text.data() + text.size();
    return is_number && text.size() <= most_digits ? std::optional(number) : std::nullopt;
}

/// The parts of a text between separators.
std::vector<std::string_view> split(std::string_view text, char separator) {
    std::vector<std::string_view> parts;
    for (std::size_t begin = 0; begin <= text.size();) {
        const std::size_t end = std::min(text.find(separator, begin), text.size());
        parts.push_back(text.substr(begin, end - begin));
        begin = end + 1;
    }
    return parts;
}

/// Appends "192.0.2.1". A part with a leading zero could be octal, and is none.
bool append_ipv4(std::string_view text, Address &address) {
    const std::vector<std::string_view> parts = split(text, '.');
    if (parts.size() != kIpv4Octets) return false;
    for (const std::string_view part : parts) {
        const auto number = number_of(part, 10, 3);
        if (!number || *number > 255 || (part.size() > 1 && part[0] == '0')) return false;
        address.push_back(static_cast<uint8_t>(*number));
    }
    return true;
}

/// Appends groups like "2001:db8:1", of which the last may be an IPv4 address. An empty text has none.
bool append_groups(std::string_view text, bool is_end, Address &address) {
    if (text.empty()) return true;
    const std::vector<std::string_view> groups = split(text, ':');
    for (const std::string_view &group : groups) {
        if (is_end && &group == &groups.back() && group.find('.') != std::string_view::npos) {
            return append_ipv4(group, address);
        }
        const auto number = number_of(group, 16, 4);
        if (!number) return false;
        address.push_back(static_cast<uint8_t>(*number >> 8));
        address.push_back(static_cast<uint8_t>(*number & 0xFF));
    }
    return true;
}

/// "::" stands for at least one group of zeros.
Address parse_ipv6(std::string_view text) {
    const std::size_t gap = text.find("::");
    const bool has_gap = gap != std::string_view::npos;
    Address address, tail;
    if (!append_groups(text.substr(0, gap), !has_gap, address)) return {};
    if (has_gap && !append_groups(text.substr(gap + 2), true, tail)) return {};
    const std::size_t given = address.size() + tail.size();
    if (has_gap ? given > kIpv6Octets - 2 : given != kIpv6Octets) return {};
    address.resize(kIpv6Octets - tail.size());
    address.insert(address.end(), tail.begin(), tail.end());
    return address;
}

}  // namespace

std::vector<uint8_t> parse_ip(const std::string &text) {
    if (text.find(':') != std::string::npos) return parse_ipv6(text);
    Address address;
    return append_ipv4(text, address) ? address : Address();
}

}  // namespace tool
