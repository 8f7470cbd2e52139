// Derivation of keys: vectors of RFC 6070, RFC 7914, RFC 5869 and SP 800-135, and values of other
// implementations.

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
    return digits(derived);
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

std::string hkdf(const Row &row) {
    const Octets secret = hex(row[2]);
    const Octets salt = hex(row[3]);
    const Octets info = hex(row[4]);
    Octets out(row.number(5) + 1, 0xEE);
    const std::uint32_t status =
        compute_HKDF(row.number(1), secret.data(), length(secret), salt.data(), length(salt), info.data(),
                     length(info), out.data(), row.number(5));
    return result(status, out);
}

std::string x963(const Row &row) {
    const Octets secret = hex(row[2]);
    const Octets info = hex(row[3]);
    Octets out(row.number(4) + 1, 0xEE);
    const std::uint32_t status = compute_X963_KDF(row.number(1), secret.data(), length(secret), info.data(),
                                                  length(info), out.data(), row.number(4));
    return result(status, out);
}

TEST(KeyDerivation, Rows) {
    expect_rows("kdf.txt",
                {{"pbkdf2", {pbkdf2, {"1"}}}, {"scrypt", {scrypt}}, {"hkdf", {hkdf}}, {"x963", {x963}}});
    EXPECT_TRUE(openssl::error_queue_is_empty());
    EXPECT_EQ(compute_PBKDF2(TLX_DIGEST_SHA1, nullptr, 1, nullptr, 0, 1, nullptr, 1), 1U);
    Octets out(1);
    EXPECT_EQ(compute_PBKDF2(TLX_DIGEST_SHA1, nullptr, 1, nullptr, 0, 1, out.data(), 1), 1U);
    EXPECT_EQ(compute_HKDF(TLX_DIGEST_SHA256, nullptr, 0, nullptr, 1, nullptr, 0, out.data(), 1), 1U);
    EXPECT_EQ(compute_X963_KDF(TLX_DIGEST_SHA256, out.data(), 1, nullptr, 1, out.data(), 1), 1U);
    EXPECT_EQ(compute_SCRYPT(nullptr, 0, nullptr, 1, 2, 1, 1, 1 << 20, out.data(), 1), 1U);
}

}  // namespace
