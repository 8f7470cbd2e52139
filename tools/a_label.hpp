// Host names in Hangul as DNS knows them.
#pragma once

#include <string>

namespace tool {

/// A host name with each label that has Hangul syllables as an A-label (RFC 5890): "xn--" and Punycode (RFC
/// 3492). Empty when the name has other characters outside ASCII, is no UTF-8, or a label grows too long.
[[nodiscard]] std::string to_a_labels(const std::string &host);

}  // namespace tool
