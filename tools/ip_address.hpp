// IP addresses in text.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace tool {

/// The 4 octets of an IPv4 address, or the 16 of an IPv6 address (RFC 4291, section 2.2). Empty for other
/// texts.
[[nodiscard]] std::vector<uint8_t> parse_ip(const std::string &text);

}  // namespace tool
