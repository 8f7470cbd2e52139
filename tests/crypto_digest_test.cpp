#include <gtest/gtest.h>
#include <tlxcrypto/digest.h>

#include <algorithm>
#include <cstdint>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "support/allocation.hpp"
#include "support/crypto_values.hpp"
#include "support/openssl_peer.hpp"
#include "support/rhash_peer.hpp"

namespace {

using namespace tlx_test;

struct Algorithm {
    std::uint32_t id;
    const char *peer;  // libcrypto's name; null for HAS-160
    std::uint32_t length;
    std::uint32_t block_length;
};

constexpr Algorithm kAlgorithms[] = {
    {TLX_DIGEST_SHA1, "SHA1", 20, 64},      {TLX_DIGEST_SHA224, "SHA224", 28, 64},
    {TLX_DIGEST_SHA256, "SHA256", 32, 64},  {TLX_DIGEST_SHA384, "SHA384", 48, 128},
    {TLX_DIGEST_SHA512, "SHA512", 64, 128}, {TLX_DIGEST_MD5, "MD5", 16, 64},
    {TLX_DIGEST_HAS160, nullptr, 20, 64},
};

Octets one_shot(std::uint32_t id, const Octets &data) {
    Octets digest(TLX_DIGEST_MAX_LENGTH);
    std::uint32_t len = 99;
    const std::uint32_t status = Digest(id, data.data(), length(data), digest.data(), &len);
    EXPECT_EQ(status == 0, len != 0);
    digest.resize(len);
    return digest;
}

class DigestPeers : public ::testing::TestWithParam<Algorithm> {};

// Every length around the block and padding boundaries, then longer ones, each in random pieces on a unit
// that is used again and again.
TEST_P(DigestPeers, AgreeOverLengthsAndPieces) {
    const auto &[id, peer, digest_length, block_length] = GetParam();
    if (peer == nullptr && !rhash::kAvailable) GTEST_SKIP() << "no librhash";
    const LeakCheck leaks;
    std::mt19937 random(160);
    const Owned<DIGEST_UNIT> unit(new_DIGEST_UNIT());
    EXPECT_EQ(get_DigestLength(id), digest_length);
    EXPECT_EQ(get_DigestBlockLength(id), block_length);
    for (std::size_t round = 0; round < 400; ++round) {
        Octets data(round < 300 ? round : random() % 5000);
        std::generate(data.begin(), data.end(), [&random] { return static_cast<std::uint8_t>(random()); });
        const Octets expected = peer == nullptr ? rhash::has160(data) : openssl::digest(peer, data);
        ASSERT_EQ(expected.size(), digest_length);
        ASSERT_EQ(one_shot(id, data), expected) << data.size();

        ASSERT_EQ(init_Digest(unit.get(), id), 0U);
        for (std::size_t done = 0; done < data.size();) {
            const std::size_t piece = std::min<std::size_t>(random() % 200, data.size() - done);
            ASSERT_EQ(update_Digest(unit.get(), data.data() + done, static_cast<std::uint32_t>(piece)), 0U);
            done += piece;
        }
        Octets digest(digest_length);
        std::uint32_t len = 0;
        ASSERT_EQ(final_Digest(unit.get(), digest.data(), &len), 0U);
        ASSERT_EQ(len, digest_length);
        ASSERT_EQ(digest, expected) << data.size() << " in pieces";
    }
}

INSTANTIATE_TEST_SUITE_P(Digest, DigestPeers, ::testing::ValuesIn(kAlgorithms), [](const auto &algorithm) {
    return std::string(algorithm.param.peer == nullptr ? "HAS160" : algorithm.param.peer);
});

TEST(Digest, GivesThePublishedHas160Value) {
    EXPECT_EQ(hex(one_shot(TLX_DIGEST_HAS160, {'a', 'b', 'c'})), "975E810488CF2A3D49838478124AFCE4B1C78804");
}

TEST(Digest, RefusesWhatItDoesNotHave) {
    const LeakCheck leaks;
    const Owned<DIGEST_UNIT> unit(new_DIGEST_UNIT());
    for (const std::uint32_t id : {0U, 0x05000101U, 0x05000600U, TLX_HMAC_SHA1, 0xFFFFFFFFU}) {
        EXPECT_EQ(one_shot(id, {1}), Octets{});
        EXPECT_EQ(get_DigestLength(id), 0U);
        EXPECT_EQ(get_DigestBlockLength(id), 0U);
        ASSERT_EQ(init_Digest(unit.get(), TLX_DIGEST_SHA1), 0U);
        EXPECT_EQ(init_Digest(unit.get(), id), 1U);
        EXPECT_EQ(get_DIGEST_UNIT_id(unit.get()), 0U);
        EXPECT_EQ(update_Digest(unit.get(), nullptr, 0), 1U) << "nothing is left of the digest before";
    }
    EXPECT_TRUE(openssl::error_queue_is_empty());
}

// MDC-2 stands in the legacy provider, and only in some builds of it.
TEST(Digest, HasMdc2WhereLibcryptoHas) {
    const Octets expected = openssl::legacy_digest("MDC2", {'a', 'b', 'c'});
    EXPECT_EQ(one_shot(TLX_DIGEST_MDC2, {'a', 'b', 'c'}), expected);
    EXPECT_EQ(get_DigestLength(TLX_DIGEST_MDC2), expected.size());
}

TEST(Digest, KeepsItsOrderOfCalls) {
    const LeakCheck leaks;
    std::uint8_t digest[TLX_DIGEST_MAX_LENGTH] = {};
    for (const std::uint32_t id : {TLX_DIGEST_SHA256, TLX_DIGEST_HAS160}) {
        const Owned<DIGEST_UNIT> unit(new_DIGEST_UNIT());
        std::uint32_t len = 99;
        EXPECT_EQ(get_DIGEST_UNIT_id(unit.get()), 0U);
        EXPECT_EQ(update_Digest(unit.get(), digest, 4), 1U) << "not initialised";
        EXPECT_EQ(final_Digest(unit.get(), digest, &len), 1U) << "not initialised";
        EXPECT_EQ(len, 0U);
        ASSERT_EQ(init_Digest(unit.get(), id), 0U);
        EXPECT_EQ(update_Digest(unit.get(), nullptr, 1), 1U);
        EXPECT_EQ(final_Digest(unit.get(), nullptr, &len), 1U);
        EXPECT_EQ(final_Digest(unit.get(), digest, &len), 0U) << "a refused call changes nothing";
        EXPECT_EQ(Octets(digest, digest + len), one_shot(id, {}));
        EXPECT_EQ(get_DIGEST_UNIT_id(unit.get()), id);
        EXPECT_EQ(final_Digest(unit.get(), digest, &len), 1U) << "already ended";
        EXPECT_EQ(update_Digest(unit.get(), digest, 4), 1U) << "already ended";
        EXPECT_EQ(Digest(id, nullptr, 1, digest, &len), 1U);
        EXPECT_EQ(Digest(id, digest, 4, nullptr, &len), 1U);
        EXPECT_EQ(Digest(id, digest, 4, digest, nullptr), 1U);
    }
}

TEST(Digest, MayBeFirstUsedFromManyThreads) {
    std::vector<std::thread> threads;
    std::vector<Octets> digests(8);
    for (Octets &digest : digests) {
        threads.emplace_back([&digest] { digest = one_shot(TLX_DIGEST_MD5, {'a', 'b', 'c'}); });
    }
    for (std::thread &thread : threads)
        thread.join();
    for (const Octets &digest : digests)
        EXPECT_EQ(hex(digest), "900150983CD24FB0D6963F7D28E17F72");
}

}  // namespace
