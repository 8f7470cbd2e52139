// libcrypto behind plain types: its own type names would clash with ours in one translation unit.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace tlx_test::openssl {

/// Digest by libcrypto's algorithm name; empty when it does not know the name.
std::vector<std::uint8_t> digest(const std::string &name, const std::vector<std::uint8_t> &data);

/// A row of libcrypto's object table; empty texts where the number is unassigned.
struct ObjectRow {
    std::string short_name;
    std::string long_name;
    std::string dotted;
};
ObjectRow object_row(int nid);

}  // namespace tlx_test::openssl
