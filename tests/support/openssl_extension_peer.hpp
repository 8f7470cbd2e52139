// libcrypto's reading of certificate extensions.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace tlx_test::openssl {

/// The text that libcrypto prints for an extension's value; empty when it cannot read it.
std::string extension_text(const std::string &dotted, const std::vector<std::uint8_t> &value);

}  // namespace tlx_test::openssl
