// Digests and HMACs beside libcrypto's and librhash's.

#include <algorithm>

#include "support/allocation.hpp"
#include "support/crypto_values.hpp"
#include "support/openssl_peer.hpp"
#include "support/rhash_peer.hpp"
#include "support/rows.hpp"
#include "support/threads.hpp"

namespace {

using namespace tlx_test;
using Digests = LeakFreeTest;

const struct Algorithm {
    std::uint32_t id;
    std::string name;
    std::uint32_t length, block_length;
} kAlgorithms[] = {
    {TLX_DIGEST_SHA1, "SHA1", 20, 64},
    {TLX_DIGEST_SHA224, "SHA224", 28, 64},
    {TLX_DIGEST_SHA256, "SHA256", 32, 64},
    {TLX_DIGEST_SHA384, "SHA384", 48, 128},
    {TLX_DIGEST_SHA512, "SHA512", 64, 128},
    {TLX_DIGEST_MD5, "MD5", 16, 64},
    {TLX_DIGEST_HAS160, "HAS160", 20, 64},
    {TLX_DIGEST_SHA512_224, "SHA512-224", 28, 128},
    {TLX_DIGEST_MD4, "MD4", 16, 64},
    {TLX_DIGEST_SHA512_256, "SHA512-256", 32, 128},
    {TLX_DIGEST_SHA3_224, "SHA3-224", 28, 144},
    {TLX_DIGEST_SHA3_256, "SHA3-256", 32, 136},
    {TLX_DIGEST_SHA3_384, "SHA3-384", 48, 104},
    {TLX_DIGEST_SHA3_512, "SHA3-512", 64, 72},
};

Octets one_shot(std::uint32_t id, const Octets &data) {
    Octets digest(TLX_DIGEST_MAX_LENGTH);
    std::uint32_t size = 99;
    Digest(id, data.data(), length(data), digest.data(), &size);
    digest.resize(size);
    return digest;
}

Octets one_shot_hmac(std::uint32_t id, const Octets &key, const Octets &data) {
    Octets mac(TLX_DIGEST_MAX_LENGTH);
    std::uint32_t size = 99;
    compute_HMAC(id, key.data(), length(key), data.data(), length(data), mac.data(), &size);
    EXPECT_EQ(size, get_HMAC_length(id));
    mac.resize(size);
    return mac;
}

Octets peer_digest(const std::string &name, const Octets &data) {
    return name == "HAS160" ? librhash::has160(data) : openssl::digest(name, data);
}

// RFC 2104 over the peer's digest.
Octets peer_hmac(const Algorithm &algorithm, Octets key, const Octets &data) {
    if (key.size() > algorithm.block_length) key = peer_digest(algorithm.name, key);
    key.resize(algorithm.block_length);
    Octets digest = data;
    for (const unsigned pad : {0x36U, 0x5CU}) {
        Octets padded = key;
        for (std::uint8_t &octet : padded)
            octet ^= static_cast<std::uint8_t>(pad);
        padded.insert(padded.end(), digest.begin(), digest.end());
        digest = peer_digest(algorithm.name, padded);
    }
    return digest;
}

// HAS-160, which is our own, over every length around the block and padding boundaries.
TEST_F(Digests, AgreesOverLengthsAndPieces) {
    for (const auto &[id, name, digest_length, block_length] : kAlgorithms) {
        SCOPED_TRACE(name);
        if (name == "HAS160" && !librhash::kAvailable) continue;
        const Held<free_DIGEST_UNIT> unit(new_DIGEST_UNIT());
        EXPECT_EQ(get_DigestLength(id), digest_length);
        EXPECT_EQ(get_DigestBlockLength(id), block_length);
        for (std::size_t size = 0; size < 1000; size += name == "HAS160" && size < 300 ? 1U : 61U) {
            Octets data(size);
            for (std::size_t i = 0; i < size; ++i)
                data[i] = static_cast<std::uint8_t>(i * 37 + size);
            const Octets expected = peer_digest(name, data);
            ASSERT_EQ(one_shot(id, data), expected) << size;
            ASSERT_EQ(init_Digest(unit.get(), id), 0U);
            for (std::size_t done = 0, piece = 0; done < size; done += piece) {
                piece = std::min(1 + (done * 7 + size) % 150, size - done);
                ASSERT_EQ(update_Digest(unit.get(), &data[done], static_cast<std::uint32_t>(piece)), 0U);
                ASSERT_EQ(update_Digest(unit.get(), &data[done], 0), 0U);
            }
            Octets digest(digest_length);
            std::uint32_t len = 0;
            ASSERT_EQ(final_Digest(unit.get(), digest.data(), &len), 0U);
            ASSERT_EQ(digest, expected) << size << " in pieces";
        }
    }
}

TEST_F(Digests, AgreesOnHmacsOverKeyLengths) {
    const Held<free_HMAC_UNIT> owned(new_HMAC_UNIT());
    HMAC_UNIT *unit = owned.get();
    for (const Algorithm &algorithm : kAlgorithms) {
        SCOPED_TRACE(algorithm.name);
        if (algorithm.name == "HAS160" && !librhash::kAvailable) continue;
        const std::uint32_t id = algorithm.name == "SHA1" ? TLX_HMAC_SHA1 : algorithm.id;
        for (const std::size_t key_length : {0U, 20U, 64U, 65U, 128U, 129U}) {
            const Octets key(key_length, static_cast<std::uint8_t>(key_length));
            ASSERT_EQ(init_HMAC(unit, id, key.data(), length(key)), 0U);
            for (const std::size_t size : {0U, 64U, 201U}) {
                const Octets data(size, 0xC3);
                const Octets expected = peer_hmac(algorithm, key, data);
                EXPECT_EQ(one_shot_hmac(algorithm.id, key, data), expected) << key_length << ' ' << size;

                // The same in two pieces under the key that stays, after a message that is given up.
                Octets mac(expected.size());
                std::uint32_t len = 0;
                const std::uint32_t half = length(data) / 2;
                ASSERT_EQ(reset_HMAC(unit), 0U);
                ASSERT_EQ(update_HMAC(unit, data.data(), half), 0U);
                ASSERT_EQ(reset_HMAC(unit), 0U);
                ASSERT_EQ(update_HMAC(unit, data.data(), half), 0U);
                ASSERT_EQ(update_HMAC(unit, data.data() + half, length(data) - half), 0U);
                ASSERT_EQ(final_HMAC(unit, mac.data(), &len), 0U);
                EXPECT_EQ(mac, expected) << key_length << ' ' << size << " in pieces";
            }
        }
    }
}

/// Steps with a digest unit and an HMAC unit.
std::string run_on_units(const Row &row) {
    const Held<free_DIGEST_UNIT> digest(new_DIGEST_UNIT());
    const Held<free_HMAC_UNIT> hmac(new_HMAC_UNIT());
    const Octets abc = {'a', 'b', 'c'};
    Octets out(TLX_DIGEST_MAX_LENGTH);
    std::uint32_t len = 99;
    using N = const Numbers &;
    const Steps steps = {
        {"init", [&](N n) { return init_Digest(digest.get(), n[0]); }},
        {"update", [&](N n) { return update_Digest(digest.get(), out.data(), n[0]); }},
        {"update-null", [&](N n) { return update_Digest(digest.get(), nullptr, n[0]); }},
        {"final", [&](N) { return final_Digest(digest.get(), out.data(), &len); }},
        {"final-null", [&](N) { return final_Digest(digest.get(), nullptr, &len); }},
        {"is-of-nothing",
         [&](N n) { return Octets(out.begin(), out.begin() + len) == one_shot(n[0], {}) ? 1U : 0U; }},
        {"length", [&](N) { return len; }},
        {"digest", [&](N n) { return Digest(n[0], &abc[0], 3, out.data(), &len); }},
        {"hmac", [&](N n) { return compute_HMAC(n[0], &abc[0], 3, &abc[0], 3, out.data(), &len); }},
        {"lengths",
         [&](N n) { return get_DigestLength(n[0]) + get_DigestBlockLength(n[0]) + get_HMAC_length(n[0]); }},
        {"id", [&](N) { return get_DIGEST_UNIT_id(digest.get()); }},
        {"hmac-init", [&](N n) { return init_HMAC(hmac.get(), n[0], out.data(), n[1]); }},
        {"hmac-init-null", [&](N n) { return init_HMAC(hmac.get(), n[0], nullptr, n[1]); }},
        {"hmac-update", [&](N n) { return update_HMAC(hmac.get(), out.data(), n[0]); }},
        {"hmac-update-none", [&](N n) { return update_HMAC(nullptr, out.data(), n[0]); }},
        {"hmac-reset", [&](N) { return reset_HMAC(hmac.get()); }},
        {"hmac-final", [&](N) { return final_HMAC(hmac.get(), out.data(), &len); }},
    };
    return run_steps(row[1], steps);
}

/// The digest of a message, in one call and octet by octet.
std::string value(const Row &row) {
    const std::uint32_t id = row.number(1);
    const Octets message = hex(row[2]);
    const Held<free_DIGEST_UNIT> unit(new_DIGEST_UNIT());
    Octets digest(TLX_DIGEST_MAX_LENGTH);
    std::uint32_t size = 0;
    EXPECT_EQ(init_Digest(unit.get(), id), 0U);
    for (const std::uint8_t &octet : message)
        EXPECT_EQ(update_Digest(unit.get(), &octet, 1), 0U);
    EXPECT_EQ(final_Digest(unit.get(), digest.data(), &size), 0U);
    digest.resize(size);
    EXPECT_EQ(digest, one_shot(id, message));
    return digits_of(digest);
}

TEST_F(Digests, Rows) {
    expect_rows("digest.txt", {{"steps", {run_on_units}}, {"value", {value}}});
    EXPECT_EQ(digits_of(one_shot(TLX_DIGEST_HAS160, {'a', 'b', 'c'})),
              "975E810488CF2A3D49838478124AFCE4B1C78804");
    // MDC-2 is in the legacy provider, and only in some builds of it.
    EXPECT_EQ(one_shot(TLX_DIGEST_MDC2, {'a', 'b', 'c'}), openssl::digest("MDC2", {'a', 'b', 'c'}));
    EXPECT_TRUE(openssl::error_queue_is_empty());
}

TEST_F(Digests, MayBeFirstUsedFromManyThreads) {
    const auto digest = [] {
        return digits_of(one_shot(TLX_DIGEST_MD5, {'a', 'b', 'c'})) == "900150983CD24FB0D6963F7D28E17F72";
    };
    EXPECT_EQ(successes_on_threads(8, digest), 8U);
}

}  // namespace
