// Keys that are derived from passwords, beside libcrypto's.
#include <tlxpki/pkcs12.h>

#include "support/allocation.hpp"
#include "support/crypto_values.hpp"
#include "support/null_arguments.hpp"
#include "support/openssl_peer.hpp"
#include "support/rows.hpp"

namespace tlx_test {
namespace {

using Pkcs12Keys = LeakFreeTest;
using Unit = Held<free_DIGEST_UNIT>;

Unit unit_of(std::uint32_t digest_id) {
    Unit unit(new_DIGEST_UNIT());
    init_Digest(unit.get(), digest_id);
    return unit;
}

/// Octets that show which of them were repeated or cut.
Octets pattern(std::size_t size) {
    Octets octets(size);
    for (std::size_t i = 0; i < size; ++i)
        octets[i] = static_cast<std::uint8_t>(i * 29 + size);
    return octets;
}

// The lengths lie around the blocks of the digests (64 and 128 octets) and their outputs.
TEST_F(Pkcs12Keys, AgreeWithLibcryptoOverLengths) {
    for (const auto &[id, name] : {std::pair(TLX_DIGEST_SHA1, "SHA1"),
                                   {TLX_DIGEST_SHA384, "SHA384"},
                                   {TLX_DIGEST_SHA256, "SHA256"},
                                   {TLX_DIGEST_MD5, "MD5"}}) {
        const Unit unit = unit_of(id);
        for (const std::size_t sizes : {0U, 2U, 62U, 64U, 66U, 128U, 130U}) {
            for (const std::size_t length : {1U, 20U, 21U, 64U, 150U}) {
                const auto purpose = static_cast<std::uint8_t>(1 + length % 3);
                const Octets password = pattern(sizes);
                const Octets salt = pattern(length);
                Octets key(length);
                ASSERT_EQ(get_PKCS12_key_UNI(password.data(), tlx_test::length(password), salt.data(),
                                             tlx_test::length(salt), purpose, 3, tlx_test::length(key),
                                             key.data(), unit.get()),
                          0U);
                EXPECT_EQ(key, openssl::pkcs12_key(name, password, salt, purpose, 3, length))
                    << name << ' ' << sizes << ' ' << length;
            }
        }
    }
}

TEST_F(Pkcs12Keys, Rows) {
    const auto derive = [](const Row &row) -> std::string {
        const Unit unit = unit_of(row.number(2));
        const Octets salt = hex(row[3]);
        const bool absent = row[1] == "null";
        const std::string password = absent ? "" : row[1];
        Octets key(row.number(6), 0xAA);
        const std::uint32_t status = gen_PKCS12_key_ASC(
            absent ? nullptr : password.data(), absent ? 9 : static_cast<std::uint32_t>(password.size()),
            salt.data(), length(salt), static_cast<std::uint8_t>(row.number(4)), row.number(5), length(key),
            key.data(), unit.get());
        if (status == 1) return key == Octets(key.size()) ? "failed" : "failed with octets";
        return std::to_string(status) + ' ' + hex_of(key.data(), key.size());
    };
    expect_rows("pkcs12_key.txt", {{"derive", {derive, {"failed"}}}});
}

TEST_F(Pkcs12Keys, RefusesWhatIsMissing) {
    const Unit unit = unit_of(TLX_DIGEST_SHA1);
    const Octets eight = pattern(8);
    Octets key(20);
    expect_refuses_null(1, get_PKCS12_key_UNI, eight.data(), 8, eight.data(), 8, 1, 1, 20, key.data(),
                        unit.get());
    const Unit without_digest(new_DIGEST_UNIT());
    EXPECT_EQ(gen_PKCS12_key_ASC("secret", 6, eight.data(), 8, 1, 1, 20, key.data(), without_digest.get()),
              1U);
    EXPECT_EQ(gen_PKCS12_key_ASC("secret", 0x7FFFFFFF, eight.data(), 8, 1, 1, 20, key.data(), unit.get()),
              1U);
    EXPECT_EQ(key, Octets(20));
}

}  // namespace
}  // namespace tlx_test
