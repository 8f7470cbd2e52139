// libcrypto behind plain types: its own type names would clash with ours in one translation unit.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace tlx_test::openssl {

/// Digest by libcrypto's algorithm name; empty when it does not know the name.
std::vector<std::uint8_t> digest(const std::string &name, const std::vector<std::uint8_t> &data);

/// The same with the legacy provider's algorithms.
std::vector<std::uint8_t> legacy_digest(const std::string &name, const std::vector<std::uint8_t> &data);

/// HMAC by libcrypto's digest name.
std::vector<std::uint8_t> hmac(const std::string &name, const std::vector<std::uint8_t> &key,
                               const std::vector<std::uint8_t> &data);

/// Big-number arithmetic on upper-case hexadecimal numbers, where operation is one of "+", "-", "*", "/",
/// "%", "<<" and ">>", or the first three and "^" followed by "%", which take the modulus as a third operand.
/// A shift's count is b.
std::string calculate(const std::string &operation, const std::string &a, const std::string &b,
                      const std::string &modulus = "");

/// Whether this thread's libcrypto error queue is empty.
bool error_queue_is_empty();

/// A row of libcrypto's object table; empty texts where the number is unassigned.
struct ObjectRow {
    std::string short_name;
    std::string long_name;
    std::string dotted;
};
ObjectRow object_row(int nid);

}  // namespace tlx_test::openssl
