#include <gtest/gtest.h>
#include <tlxcrypto/hmac.h>

#include <cstdint>
#include <string>
#include <vector>

#include "support/allocation.hpp"
#include "support/crypto_values.hpp"
#include "support/openssl_peer.hpp"
#include "support/rhash_peer.hpp"

namespace {

using namespace tlx_test;

Octets one_shot(std::uint32_t id, const Octets &key, const Octets &data) {
    Octets mac(TLX_DIGEST_MAX_LENGTH);
    std::uint32_t len = 99;
    const std::uint32_t status =
        compute_HMAC(id, key.data(), length(key), data.data(), length(data), mac.data(), &len);
    EXPECT_EQ(len, status == 0 ? get_HMAC_length(id) : 0U);
    mac.resize(len);
    return mac;
}

// RFC 2104 over librhash's HAS-160.
Octets peer_has160(Octets key, const Octets &data) {
    if (key.size() > 64) key = rhash::has160(key);
    key.resize(64);
    Octets inner = key;
    Octets outer = key;
    for (std::uint8_t &octet : inner)
        octet ^= 0x36;
    for (std::uint8_t &octet : outer)
        octet ^= 0x5C;
    inner.insert(inner.end(), data.begin(), data.end());
    const Octets digest = rhash::has160(inner);
    outer.insert(outer.end(), digest.begin(), digest.end());
    return rhash::has160(outer);
}

struct Algorithm {
    std::uint32_t id;
    const char *peer;  // libcrypto's name; null for HAS-160
};

class HmacPeers : public ::testing::TestWithParam<Algorithm> {};

TEST_P(HmacPeers, AgreeOverKeyLengths) {
    const auto &[id, peer] = GetParam();
    if (peer == nullptr && !rhash::kAvailable) GTEST_SKIP() << "no librhash";
    const LeakCheck leaks;
    const Owned<HMAC_UNIT> owned(new_HMAC_UNIT());
    HMAC_UNIT *unit = owned.get();
    for (const std::size_t key_len : {1U, 20U, 64U, 65U, 128U, 129U, 300U}) {
        const Octets key(key_len, static_cast<std::uint8_t>(key_len));
        ASSERT_EQ(init_HMAC(unit, id, key.data(), length(key)), 0U);
        for (const std::size_t data_len : {0U, 1U, 64U, 200U}) {
            const Octets data(data_len, 0xC3);
            const Octets expected = peer == nullptr ? peer_has160(key, data) : openssl::hmac(peer, key, data);
            ASSERT_EQ(expected.size(), get_HMAC_length(id));
            EXPECT_EQ(one_shot(id, key, data), expected) << key_len << ' ' << data_len;

            // The same in two pieces under the key that stays, after a message that is given up.
            Octets mac(expected.size());
            std::uint32_t len = 0;
            ASSERT_EQ(reset_HMAC(unit), 0U);
            ASSERT_EQ(update_HMAC(unit, key.data(), length(key)), 0U);
            ASSERT_EQ(reset_HMAC(unit), 0U);
            ASSERT_EQ(update_HMAC(unit, data.data(), length(data) / 2), 0U);
            ASSERT_EQ(update_HMAC(unit, data.data() + data_len / 2, length(data) - length(data) / 2), 0U);
            ASSERT_EQ(final_HMAC(unit, mac.data(), &len), 0U);
            EXPECT_EQ(mac, expected) << key_len << ' ' << data_len << " in pieces";
        }
    }
}

constexpr Algorithm kAlgorithms[] = {{TLX_DIGEST_MD5, "MD5"},       {TLX_DIGEST_SHA1, "SHA1"},
                                     {TLX_HMAC_SHA1, "SHA1"},       {TLX_DIGEST_SHA256, "SHA256"},
                                     {TLX_DIGEST_SHA384, "SHA384"}, {TLX_DIGEST_HAS160, nullptr}};

INSTANTIATE_TEST_SUITE_P(Hmac, HmacPeers, ::testing::ValuesIn(kAlgorithms), [](const auto &row) {
    const std::string peer = row.param.peer == nullptr ? "HAS160" : row.param.peer;
    return row.param.id == TLX_HMAC_SHA1 ? peer + "_by_the_name_of_its_HMAC" : peer;
});

TEST(Hmac, PadsAnEmptyKeyWithZerosAsAnyShortOne) {
    EXPECT_EQ(one_shot(TLX_DIGEST_SHA256, {}, {1}), one_shot(TLX_DIGEST_SHA256, {0}, {1}));
}

TEST(Hmac, KeepsItsOrderOfCalls) {
    const LeakCheck leaks;
    const Owned<HMAC_UNIT> owned(new_HMAC_UNIT());
    HMAC_UNIT *unit = owned.get();
    std::uint8_t mac[TLX_DIGEST_MAX_LENGTH] = {};
    std::uint32_t len = 99;
    EXPECT_EQ(reset_HMAC(unit), 1U) << "no key";
    EXPECT_EQ(update_HMAC(unit, mac, 4), 1U) << "no key";
    EXPECT_EQ(final_HMAC(unit, mac, &len), 1U) << "no key";
    EXPECT_EQ(len, 0U);
    ASSERT_EQ(init_HMAC(unit, TLX_DIGEST_SHA1, mac, 4), 0U);
    EXPECT_EQ(final_HMAC(unit, mac, &len), 0U);
    EXPECT_EQ(final_HMAC(unit, mac, &len), 1U) << "already ended";
    for (const std::uint32_t id : {0U, 0x25000100U}) {
        ASSERT_EQ(init_HMAC(unit, TLX_DIGEST_SHA1, mac, 4), 0U);
        EXPECT_EQ(init_HMAC(unit, id, mac, 4), 1U);
        EXPECT_EQ(reset_HMAC(unit), 1U) << "the key before is gone";
        EXPECT_EQ(get_HMAC_length(id), 0U);
        EXPECT_EQ(one_shot(id, {1}, {1}), Octets{});
    }
    EXPECT_EQ(init_HMAC(unit, TLX_DIGEST_SHA1, nullptr, 4), 1U);
    EXPECT_EQ(compute_HMAC(TLX_DIGEST_SHA1, mac, 4, mac, 4, mac, nullptr), 1U);
}

}  // namespace
