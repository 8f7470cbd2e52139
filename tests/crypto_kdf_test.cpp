// Derivation of keys from passwords: vectors of RFC 6070 and RFC 7914, and values of other implementations.

#include "support/allocation.hpp"
#include "support/crypto_values.hpp"
#include "support/openssl_peer.hpp"
#include "support/rows.hpp"

namespace {

using namespace tlx_test;

/// Octets of a text; null for "null".
const std::uint8_t *octets_of(const std::string &text) {
    return text == "null" ? nullptr : reinterpret_cast<const std::uint8_t *>(text.data());
}
std::uint32_t size_of(const std::string &text) {
    return text == "null" ? 0 : static_cast<std::uint32_t>(text.size());
}

/// The derived octets, which are zeros after a failure; no octet is written after them.
std::string result(std::uint32_t status, const Octets &out) {
    EXPECT_EQ(out.back(), 0xEE);
    const Octets derived(out.begin(), out.end() - 1);
    if (status != 0) {
        EXPECT_EQ(derived, Octets(derived.size()));
        return std::to_string(status);
    }
    std::string digits = hex_of(derived.data(), derived.size());
    std::erase(digits, ' ');
    return digits;
}

std::string pbkdf2(const Row &row) {
    Octets out(row.number(5) + 1, 0xEE);
    const std::uint32_t status =
        compute_PBKDF2(row.number(1), octets_of(row[2]), size_of(row[2]), octets_of(row[3]), size_of(row[3]),
                       row.number(4), out.data(), row.number(5));
    return result(status, out);
}

std::string scrypt(const Row &row) {
    Octets out(row.number(7) + 1, 0xEE);
    const std::uint32_t status = compute_SCRYPT(
        octets_of(row[1]), size_of(row[1]), octets_of(row[2]), size_of(row[2]), row.number(3), row.number(4),
        row.number(5), std::uint64_t{row.number(6)} << 10, out.data(), row.number(7));
    return result(status, out);
}

TEST(KeyDerivation, Rows) {
    expect_rows("kdf.txt", {{"pbkdf2", {pbkdf2, {"1"}}}, {"scrypt", {scrypt}}});
    EXPECT_TRUE(openssl::error_queue_is_empty());
    EXPECT_EQ(compute_PBKDF2(TLX_DIGEST_SHA1, nullptr, 1, nullptr, 0, 1, nullptr, 1), 1U);
    Octets out(1);
    EXPECT_EQ(compute_PBKDF2(TLX_DIGEST_SHA1, nullptr, 1, nullptr, 0, 1, out.data(), 1), 1U);
    EXPECT_EQ(compute_SCRYPT(nullptr, 0, nullptr, 1, 2, 1, 1, 1 << 20, out.data(), 1), 1U);
}

}  // namespace
