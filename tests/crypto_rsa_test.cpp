// RSA against libcrypto in both directions, keys that are none, the cache, threads.
#include <gtest/gtest.h>
#include <tlxcrypto/digest.h>
#include <tlxcrypto/rsa.h>

#include <string>
#include <thread>
#include <vector>

#include "support/allocation.hpp"
#include "support/crypto_values.hpp"
#include "support/openssl_key_peer.hpp"
#include "support/openssl_peer.hpp"

namespace {

namespace peer = tlx_test::openssl;
using namespace tlx_test;
using Unit = Owned<RSA_UNIT>;

std::uint32_t set_private(RSA_UNIT *unit, const peer::RsaNumbers &key) {
    Number numbers[8];
    for (std::size_t i = 0; i < 8; ++i)
        numbers[i] = number(key.values[i]);
    return set_RSA_UNIT_private(unit, numbers[0].get(), numbers[1].get(), numbers[2].get(), numbers[3].get(),
                                numbers[4].get(), numbers[5].get(), numbers[6].get(), numbers[7].get());
}

Unit private_unit(const peer::RsaNumbers &key) {
    Unit unit(new_RSA_UNIT());
    EXPECT_EQ(set_private(unit.get(), key), 0U);
    return unit;
}

Unit public_unit(const peer::RsaNumbers &key) {
    Unit unit(new_RSA_UNIT());
    EXPECT_EQ(set_RSA_UNIT_public(unit.get(), number(key.values[0]).get(), number(key.values[1]).get()), 0U);
    return unit;
}

const peer::RsaNumbers &test_key() {
    static const peer::RsaNumbers key = peer::generate_rsa(1024);
    return key;
}

const Octets kData = {'s', 'i', 'g', 'n', ' ', 'm', 'e'};

std::uint32_t sign(const RSA_UNIT *unit, std::uint32_t digest_id, std::uint32_t mode, Octets &signature) {
    signature.assign(get_RSA_length(unit) + 1, 0);
    std::uint32_t size = 99;
    const std::uint32_t status =
        sign_RSA(unit, digest_id, mode, kData.data(), length(kData), signature.data(), &size);
    signature.resize(size);
    return status;
}

std::uint32_t verify(const RSA_UNIT *unit, std::uint32_t digest_id, std::uint32_t mode,
                     const Octets &signature) {
    return verify_RSA(unit, digest_id, mode, kData.data(), length(kData), signature.data(),
                      length(signature));
}

const struct {
    std::uint32_t id;
    const char *name;
} kDigests[] = {
    {TLX_DIGEST_MD5, "MD5"},       {TLX_DIGEST_SHA1, "SHA1"},     {TLX_DIGEST_SHA224, "SHA224"},
    {TLX_DIGEST_SHA256, "SHA256"}, {TLX_DIGEST_SHA384, "SHA384"}, {TLX_DIGEST_SHA512, "SHA512"},
};

TEST(Rsa, SignaturesGoBothWaysWithLibcrypto) {
    const LeakCheck leaks;
    const Unit private_key = private_unit(test_key());
    const Unit public_key = public_unit(test_key());
    const struct {
        std::uint32_t mode;
        const char *mgf_digest;
    } kModes[] = {{TLX_RSA_MODE_PKCS1, ""}, {TLX_RSA_MODE_NONE_GIVEN, ""}, {TLX_RSA_MODE_PSS, "SHA1"}};
    for (const auto &digest : kDigests) {
        for (const auto &mode : kModes) {
            SCOPED_TRACE(std::string(digest.name) + " mode " + std::to_string(mode.mode));
            // Without parameters PSS has the standard's: MGF1 with SHA-1 and a salt of 20 octets.
            const peer::RsaScheme scheme = {digest.name, mode.mgf_digest, 20};
            Octets signature;
            ASSERT_EQ(sign(private_key.get(), digest.id, mode.mode, signature), 0U);
            EXPECT_EQ(signature.size(), 128U);
            EXPECT_TRUE(peer::rsa_verify(test_key(), scheme, kData, signature));
            EXPECT_EQ(
                verify(public_key.get(), digest.id, mode.mode, peer::rsa_sign(test_key(), scheme, kData)),
                0U);
        }
    }
}

TEST(Rsa, PssTakesItsParametersExactly) {
    const LeakCheck leaks;
    const Unit unit = private_unit(test_key());
    const peer::RsaScheme scheme = {"SHA256", "SHA256", 32};
    const Octets theirs = peer::rsa_sign(test_key(), scheme, kData);
    EXPECT_EQ(verify(unit.get(), TLX_DIGEST_SHA256, TLX_RSA_MODE_PSS, theirs), TLX_RSA_BAD_SIGNATURE);
    ASSERT_EQ(set_RSA_UNIT_PSS(unit.get(), TLX_DIGEST_SHA256, 31), 0U);
    EXPECT_EQ(verify(unit.get(), TLX_DIGEST_SHA256, TLX_RSA_MODE_PSS, theirs), TLX_RSA_BAD_SIGNATURE);
    ASSERT_EQ(set_RSA_UNIT_PSS(unit.get(), TLX_DIGEST_SHA256, 32), 0U);
    EXPECT_EQ(verify(unit.get(), TLX_DIGEST_SHA256, TLX_RSA_MODE_PSS, theirs), 0U);
    const Unit copy(dup_RSA_UNIT(unit.get()));
    Octets ours;
    ASSERT_EQ(sign(copy.get(), TLX_DIGEST_SHA256, TLX_RSA_MODE_PSS, ours), 0U);
    EXPECT_TRUE(peer::rsa_verify(test_key(), scheme, kData, ours));

    ASSERT_EQ(set_RSA_UNIT_PSS(unit.get(), TLX_DIGEST_SHA256, 0), 0U);
    ASSERT_EQ(sign(unit.get(), TLX_DIGEST_SHA256, TLX_RSA_MODE_PSS, ours), 0U);
    EXPECT_TRUE(peer::rsa_verify(test_key(), {"SHA256", "SHA256", 0}, kData, ours)) << "no salt";
    ASSERT_EQ(set_RSA_UNIT_PSS(unit.get(), TLX_DIGEST_SHA256, 500), 0U);
    EXPECT_EQ(sign(unit.get(), TLX_DIGEST_SHA256, TLX_RSA_MODE_PSS, ours), 1U) << "a salt that does not fit";
    EXPECT_EQ(set_RSA_UNIT_PSS(unit.get(), TLX_DIGEST_SHA256, 0xFFFFFFFF), 1U);
    EXPECT_EQ(set_RSA_UNIT_PSS(unit.get(), TLX_DIGEST_HAS160, 20), 1U);
}

TEST(Rsa, SignsHas160WithItsIdentifier) {
    const LeakCheck leaks;
    const Unit unit = private_unit(test_key());
    Octets signature;
    ASSERT_EQ(sign(unit.get(), TLX_DIGEST_HAS160, TLX_RSA_MODE_PKCS1, signature), 0U);
    // SEQUENCE { SEQUENCE { 1.2.410.200004.1.2, NULL }, OCTET STRING }
    Octets info = {0x30, 0x24, 0x30, 0x0C, 0x06, 0x08, 0x2A, 0x83, 0x1A,
                   0x8C, 0x9A, 0x44, 0x01, 0x02, 0x05, 0x00, 0x04, 0x14};
    info.resize(info.size() + 20);
    std::uint32_t size = 0;
    ASSERT_EQ(Digest(TLX_DIGEST_HAS160, kData.data(), length(kData), info.data() + info.size() - 20, &size),
              0U);
    EXPECT_EQ(peer::rsa_recover(test_key(), signature), info);
    EXPECT_EQ(verify(unit.get(), TLX_DIGEST_HAS160, TLX_RSA_MODE_PKCS1, signature), 0U);
    EXPECT_EQ(sign(unit.get(), TLX_DIGEST_HAS160, TLX_RSA_MODE_PSS, signature), 1U);
}

TEST(Rsa, RefusesEveryOtherSignature) {
    const LeakCheck leaks;
    const Unit unit = private_unit(test_key());
    for (const std::uint32_t mode : {TLX_RSA_MODE_PKCS1, TLX_RSA_MODE_PSS}) {
        Octets good;
        ASSERT_EQ(sign(unit.get(), TLX_DIGEST_SHA1, mode, good), 0U);
        for (std::size_t bit = 0; bit < 8 * good.size(); bit += 7) {
            Octets bad = good;
            bad[bit / 8] ^= static_cast<std::uint8_t>(1U << bit % 8);
            EXPECT_EQ(verify(unit.get(), TLX_DIGEST_SHA1, mode, bad), TLX_RSA_BAD_SIGNATURE) << bit;
        }
        Octets longer = good;
        longer.push_back(0);
        EXPECT_EQ(verify(unit.get(), TLX_DIGEST_SHA1, mode, longer), TLX_RSA_BAD_SIGNATURE);
        EXPECT_EQ(verify(unit.get(), TLX_DIGEST_SHA1, mode, Octets(good.begin(), good.end() - 1)),
                  TLX_RSA_BAD_SIGNATURE);
        EXPECT_EQ(verify(unit.get(), TLX_DIGEST_SHA1, mode, Octets(128, 0xFF)), TLX_RSA_BAD_SIGNATURE)
            << "above n";
        EXPECT_EQ(verify(unit.get(), TLX_DIGEST_SHA1, mode, Octets(128, 0)), TLX_RSA_BAD_SIGNATURE);
        EXPECT_EQ(verify(unit.get(), TLX_DIGEST_SHA256, mode, good), TLX_RSA_BAD_SIGNATURE)
            << "another digest";
        EXPECT_EQ(verify(unit.get(), TLX_DIGEST_HAS160, TLX_RSA_MODE_PKCS1, good), TLX_RSA_BAD_SIGNATURE);
        const std::uint32_t other_mode = TLX_RSA_MODE_PKCS1 + TLX_RSA_MODE_PSS - mode;
        EXPECT_EQ(verify(unit.get(), TLX_DIGEST_SHA1, other_mode, good), TLX_RSA_BAD_SIGNATURE);
        EXPECT_EQ(verify(unit.get(), TLX_DIGEST_SHA1, mode, good), 0U) << "the failures left no trace";
    }
    EXPECT_TRUE(peer::error_queue_is_empty());
}

TEST(Rsa, VerifiesUnderModuliAndExponentsOfAnySize) {
    const LeakCheck leaks;
    const struct {
        std::uint32_t bits, exponent;
    } cases[] = {{512, 3}, {521, 5}, {1023, 17}, {1024, 0xFFFFFFFF}, {1025, 65537}, {1088, 7}, {2047, 65537}};
    for (const auto &c : cases) {
        SCOPED_TRACE(c.bits);
        const Unit unit(new_RSA_UNIT());
        ASSERT_EQ(gen_RSA_UNIT(unit.get(), c.bits, c.exponent), 0U);
        Octets good;
        ASSERT_EQ(sign(unit.get(), TLX_DIGEST_SHA256, 1, good), 0U);
        EXPECT_EQ(verify(unit.get(), TLX_DIGEST_SHA256, 1, good), 0U);
        EXPECT_EQ(verify(unit.get(), TLX_DIGEST_SHA1, 1, good), TLX_RSA_BAD_SIGNATURE);
        if (c.bits < 752) {
            EXPECT_EQ(verify(unit.get(), TLX_DIGEST_SHA512, 1, good), TLX_RSA_BAD_SIGNATURE)
                << "no room for the digest";
        }
        if (c.bits % 8 == 0) continue;
        // The same value modulo n, in as many octets.
        const Number sum(new_BIGINT());
        ASSERT_EQ(add_BIGINT(sum.get(), number(good).get(), get_RSA_UNIT_number(unit.get(), TLX_RSA_N)), 0U);
        Octets raised(good.size());
        ASSERT_EQ(BIGINT_to_binary(sum.get(), raised.data(), length(raised)), 0U);
        EXPECT_EQ(verify(unit.get(), TLX_DIGEST_SHA256, 1, raised), TLX_RSA_BAD_SIGNATURE);
    }
    // With the exponents exchanged the public one is as long as the modulus.
    const Unit swapped(new_RSA_UNIT());
    const auto &values = test_key().values;
    ASSERT_EQ(set_RSA_UNIT_private(swapped.get(), number(values[0]).get(), number(values[2]).get(),
                                   number(values[1]).get(), nullptr, nullptr, nullptr, nullptr, nullptr),
              0U);
    Octets good;
    ASSERT_EQ(sign(swapped.get(), TLX_DIGEST_SHA256, 1, good), 0U);
    EXPECT_EQ(verify(swapped.get(), TLX_DIGEST_SHA256, 1, good), 0U);
    good.back() ^= 1U;
    EXPECT_EQ(verify(swapped.get(), TLX_DIGEST_SHA256, 1, good), TLX_RSA_BAD_SIGNATURE);
}

TEST(Rsa, StreamsInAnyPieces) {
    const LeakCheck leaks;
    const Unit unit = private_unit(test_key());
    Octets one_shot;
    ASSERT_EQ(sign(unit.get(), TLX_DIGEST_SHA256, TLX_RSA_MODE_PKCS1, one_shot), 0U);
    Octets streamed(129);
    std::uint32_t size = 0;
    ASSERT_EQ(init_RSASSA(unit.get(), TLX_DIGEST_SHA256, TLX_RSA_MODE_PKCS1, 1), 0U);
    for (const std::uint8_t octet : kData)
        ASSERT_EQ(update_RSASSA(unit.get(), &octet, 1), 0U);
    ASSERT_EQ(final_RSASSA(unit.get(), streamed.data(), &size), 0U);
    streamed.resize(size);
    EXPECT_EQ(streamed, one_shot);

    const auto feed = [&] {
        ASSERT_EQ(init_RSASSA(unit.get(), TLX_DIGEST_SHA256, TLX_RSA_MODE_PKCS1, 0), 0U);
        ASSERT_EQ(update_RSASSA(unit.get(), kData.data(), length(kData)), 0U);
    };
    feed();
    EXPECT_EQ(final_RSASSA(unit.get(), streamed.data(), &size), 0U);
    feed();
    EXPECT_EQ(verify_RSASSA(unit.get(), streamed.data(), size), 0U);
    EXPECT_EQ(verify_RSASSA(unit.get(), streamed.data(), size), 1U) << "it has ended";
    feed();
    ASSERT_EQ(update_RSASSA(unit.get(), kData.data(), 1), 0U);
    EXPECT_EQ(final_RSASSA(unit.get(), streamed.data(), &size), TLX_RSA_BAD_SIGNATURE);
    // An empty message.
    ASSERT_EQ(init_RSASSA(unit.get(), TLX_DIGEST_SHA256, TLX_RSA_MODE_PKCS1, 0), 0U);
    EXPECT_EQ(final_RSASSA(unit.get(), streamed.data(), &size), TLX_RSA_BAD_SIGNATURE);
}

TEST(Rsa, RefusesBadArgumentsAndOrder) {
    const LeakCheck leaks;
    const Unit private_key = private_unit(test_key());
    const Unit public_key = public_unit(test_key());
    std::uint8_t out[256] = {};
    std::uint32_t size = 7;
    EXPECT_EQ(init_RSASSA(nullptr, TLX_DIGEST_SHA1, 1, 0), 1U);
    EXPECT_EQ(init_RSASSA(public_key.get(), TLX_DIGEST_SHA1, 1, 1), 1U) << "signing takes a private key";
    EXPECT_EQ(init_RSASSA(public_key.get(), TLX_DIGEST_SHA1, 3, 0), 1U) << "no such mode";
    EXPECT_EQ(init_RSASSA(public_key.get(), TLX_DIGEST_SHA1, 1, 2), 1U) << "no such direction";
    EXPECT_EQ(init_RSASSA(public_key.get(), TLX_HMAC_SHA1, 1, 0), 1U) << "no digest";
    EXPECT_EQ(init_RSASSA(public_key.get(), TLX_DIGEST_MDC2, 1, 0), 1U) << "no DigestInfo for it";
    EXPECT_EQ(update_RSASSA(public_key.get(), out, 1), 1U) << "before init";
    EXPECT_EQ(final_RSASSA(public_key.get(), out, &size), 1U) << "before init";
    EXPECT_EQ(size, 0U);
    ASSERT_EQ(init_RSASSA(private_key.get(), TLX_DIGEST_SHA1, 1, 1), 0U);
    EXPECT_EQ(verify_RSASSA(private_key.get(), out, 128), 1U) << "a signature is under way";
    EXPECT_EQ(update_RSASSA(private_key.get(), nullptr, 1), 1U);
    EXPECT_EQ(final_RSASSA(private_key.get(), nullptr, &size), 1U);
    EXPECT_EQ(final_RSASSA(private_key.get(), out, &size), 0U) << "still under way";
    ASSERT_EQ(init_RSASSA(private_key.get(), TLX_DIGEST_SHA1, 1, 1), 0U);
    ASSERT_EQ(set_private(private_key.get(), test_key()), 0U);
    EXPECT_EQ(update_RSASSA(private_key.get(), out, 1), 1U) << "new numbers end what was under way";

    Octets signature;
    EXPECT_EQ(sign(public_key.get(), TLX_DIGEST_SHA1, 1, signature), 1U);
    EXPECT_EQ(sign(private_key.get(), 0x12345678, 1, signature), 1U);
    EXPECT_EQ(verify_RSA(public_key.get(), TLX_DIGEST_SHA1, 1, nullptr, 1, out, 128), 1U);
    EXPECT_EQ(verify_RSA(public_key.get(), TLX_DIGEST_SHA1, 1, out, 1, nullptr, 128), 1U);
    EXPECT_EQ(set_RSA_UNIT_public(public_key.get(), nullptr, number("03").get()), 1U);
    EXPECT_EQ(
        set_RSA_UNIT_private(public_key.get(), number("07").get(), number("03").get(), number("03").get(),
                             number("07").get(), nullptr, nullptr, nullptr, nullptr),
        1U)
        << "one prime alone";
    EXPECT_EQ(gen_RSA_UNIT(public_key.get(), 511, 65537), 1U);
    EXPECT_EQ(gen_RSA_UNIT(public_key.get(), 16392, 65537), 1U);
    EXPECT_EQ(gen_RSA_UNIT(public_key.get(), 1024, 1), 1U);
    EXPECT_EQ(gen_RSA_UNIT(public_key.get(), 1024, 65536), 1U);
    EXPECT_EQ(get_RSA_length(public_key.get()), 128U) << "the failures left the unit as it was";
    EXPECT_EQ(get_RSA_length(nullptr), 0U);
}

TEST(Rsa, RefusesNumbersThatMakeNoKey) {
    const LeakCheck leaks;
    const Octets &n = test_key().values[0];
    Octets even = n;
    even.back() ^= 1U;
    const Octets exponent = {1, 0, 1};
    Octets huge(2049, 0xFF);
    huge[0] = 1;
    const struct {
        const char *what;
        Octets n;
        Octets e;
    } kCases[] = {
        {"even modulus", even, exponent},
        {"zero modulus", {0}, exponent},
        {"modulus of 511 bits", Octets(n.begin() + 64, n.end()), exponent},
        {"modulus of 16385 bits", huge, exponent},
        {"zero exponent", n, {0}},
        {"exponent 1", n, {1}},
        {"even exponent", n, {1, 0, 0}},
        {"exponent of the modulus", n, n},
        {"long exponent under a long modulus", Octets(512, 0xFF), Octets(9, 0xFF)},
    };
    for (const auto &c : kCases) {
        const Unit unit(new_RSA_UNIT());
        Octets modulus = c.n;
        if (modulus.size() == 64) modulus[0] &= 0x7FU;
        ASSERT_EQ(set_RSA_UNIT_public(unit.get(), number(modulus).get(), number(c.e).get()), 0U) << c.what;
        EXPECT_EQ(verify(unit.get(), TLX_DIGEST_SHA1, 1, Octets(get_RSA_length(unit.get()) + 1, 1)),
                  TLX_RSA_BAD_KEY)
            << c.what;
        EXPECT_EQ(get_RSA_UNIT_builds(unit.get()), 0U) << c.what;
    }
    for (std::size_t i = 2; i < 8; ++i) {
        peer::RsaNumbers broken = test_key();
        broken.values[i] = {0};
        Octets signature;
        EXPECT_EQ(sign(private_unit(broken).get(), TLX_DIGEST_SHA1, 1, signature), TLX_RSA_BAD_KEY)
            << "number " << i;
        EXPECT_EQ(signature.size(), 0U);
    }
    const Unit empty(new_RSA_UNIT());
    EXPECT_EQ(verify(empty.get(), TLX_DIGEST_SHA1, 1, Octets(128)), TLX_RSA_BAD_KEY);
}

TEST(Rsa, GeneratesKeys) {
    const LeakCheck leaks;
    const struct {
        std::uint32_t bits;
        std::uint32_t e;
    } kCases[] = {{512, 3}, {1000, 65537}, {2048, 65537}};
    for (const auto &c : kCases) {
        SCOPED_TRACE(c.bits);
        const Unit unit = public_unit(test_key());
        ASSERT_EQ(gen_RSA_UNIT(unit.get(), c.bits, c.e), 0U);
        EXPECT_EQ(get_RSA_UNIT_kind(unit.get()), TLX_RSA_PRIVATE);
        const auto get = [&](TLX_RSA_NUMBER which) { return get_RSA_UNIT_number(unit.get(), which); };
        EXPECT_EQ(get_BIGINT_bits(get(TLX_RSA_N)), c.bits);
        EXPECT_EQ(get_BIGINT_word(get(TLX_RSA_E)), c.e);
        const Number value(new_BIGINT());
        ASSERT_EQ(mul_BIGINT(value.get(), get(TLX_RSA_P), get(TLX_RSA_Q)), 0U);
        EXPECT_EQ(cmp_BIGINT(value.get(), get(TLX_RSA_N)), 0) << "n = pq";
        ASSERT_EQ(mod_mul_BIGINT(value.get(), get(TLX_RSA_QINV), get(TLX_RSA_Q), get(TLX_RSA_P)), 0U);
        EXPECT_EQ(get_BIGINT_word(value.get()), 1U) << "qinv";
        // d = dp modulo p - 1, and likewise for q.
        for (const auto &[prime, part] :
             {std::pair(TLX_RSA_P, TLX_RSA_DP), std::pair(TLX_RSA_Q, TLX_RSA_DQ)}) {
            ASSERT_EQ(sub_BIGINT(value.get(), get(prime), number("01").get()), 0U);
            ASSERT_EQ(mod_BIGINT(value.get(), get(TLX_RSA_D), value.get()), 0U);
            EXPECT_EQ(cmp_BIGINT(value.get(), get(part)), 0);
        }
        Octets signature;
        ASSERT_EQ(sign(unit.get(), TLX_DIGEST_SHA1, 1, signature), 0U);
        EXPECT_EQ(verify(unit.get(), TLX_DIGEST_SHA1, 1, signature), 0U);
        EXPECT_EQ(sign(unit.get(), TLX_DIGEST_SHA512, 1, signature), c.bits == 512 ? 1U : 0U)
            << "64 octets of modulus have no room for a SHA-512 DigestInfo";
    }
}

TEST(Rsa, NeedsNoPrimes) {
    const LeakCheck leaks;
    const Unit with = private_unit(test_key());
    const Unit without(new_RSA_UNIT());
    ASSERT_EQ(set_RSA_UNIT_private(without.get(), get_RSA_UNIT_number(with.get(), TLX_RSA_N),
                                   get_RSA_UNIT_number(with.get(), TLX_RSA_E),
                                   get_RSA_UNIT_number(with.get(), TLX_RSA_D), nullptr, nullptr, nullptr,
                                   nullptr, nullptr),
              0U);
    Octets one;
    Octets other;
    ASSERT_EQ(sign(with.get(), TLX_DIGEST_SHA256, 1, one), 0U);
    ASSERT_EQ(sign(without.get(), TLX_DIGEST_SHA256, 1, other), 0U);
    EXPECT_EQ(one, other);
}

TEST(Rsa, BuildsItsKeyOnceAndForgetsItWhenTheNumbersChange) {
    const LeakCheck leaks;
    const Unit signer = private_unit(test_key());
    const Unit unit = public_unit(test_key());
    Octets signature;
    ASSERT_EQ(sign(signer.get(), TLX_DIGEST_SHA256, 1, signature), 0U);
    EXPECT_EQ(get_RSA_UNIT_builds(unit.get()), 0U);
    for (int i = 0; i < 1000; ++i)
        ASSERT_EQ(verify(unit.get(), TLX_DIGEST_SHA256, 1, signature), 0U);
    EXPECT_EQ(get_RSA_UNIT_builds(unit.get()), 1U);

    const peer::RsaNumbers other = peer::generate_rsa(1024);
    ASSERT_EQ(set_private(unit.get(), other), 0U);
    EXPECT_EQ(get_RSA_UNIT_builds(unit.get()), 0U);
    EXPECT_EQ(verify(unit.get(), TLX_DIGEST_SHA256, 1, signature), TLX_RSA_BAD_SIGNATURE);
    EXPECT_EQ(verify(unit.get(), TLX_DIGEST_SHA256, 1, peer::rsa_sign(other, {"SHA256", "", 0}, kData)), 0U);
}

TEST(Rsa, OneUnitServesManyThreads) {
    const LeakCheck leaks;
    const Unit unit = private_unit(test_key());
    constexpr unsigned kThreads = 4;
    unsigned good[kThreads] = {};
    std::vector<std::thread> threads;
    for (unsigned &count : good) {
        threads.emplace_back([&unit, &count] {
            for (unsigned i = 0; i < 50; ++i) {
                const std::uint32_t mode = i % 4 == 0 ? TLX_RSA_MODE_PSS : TLX_RSA_MODE_PKCS1;
                Octets signature;
                if (sign(unit.get(), TLX_DIGEST_SHA256, mode, signature) == 0 &&
                    verify(unit.get(), TLX_DIGEST_SHA256, mode, signature) == 0) {
                    ++count;
                }
            }
        });
    }
    for (std::thread &thread : threads)
        thread.join();
    for (const unsigned count : good)
        EXPECT_EQ(count, 50U);
    EXPECT_GE(get_RSA_UNIT_builds(unit.get()), 2U);
    EXPECT_LE(get_RSA_UNIT_builds(unit.get()), 2 * kThreads);
}

TEST(Rsa, CopiesShareWhatIsComputedOnce) {
    const LeakCheck leaks;
    const Unit signer = private_unit(test_key());
    Octets signature;
    ASSERT_EQ(sign(signer.get(), TLX_DIGEST_SHA256, 1, signature), 0U);
    Unit original = public_unit(test_key());
    const Unit first(dup_RSA_UNIT(original.get()));
    const Unit second(dup_RSA_UNIT(first.get()));
    EXPECT_EQ(verify(second.get(), TLX_DIGEST_SHA256, 1, signature), 0U);
    EXPECT_EQ(get_RSA_UNIT_builds(original.get()), 1U);
    EXPECT_EQ(verify(original.get(), TLX_DIGEST_SHA256, 1, signature), 0U);
    EXPECT_EQ(get_RSA_UNIT_builds(second.get()), 1U);

    const peer::RsaNumbers other = peer::generate_rsa(1024);
    ASSERT_EQ(set_private(first.get(), other), 0U);
    EXPECT_EQ(verify(first.get(), TLX_DIGEST_SHA256, 1, peer::rsa_sign(other, {"SHA256", "", 0}, kData)), 0U);
    original.reset();
    EXPECT_EQ(verify(second.get(), TLX_DIGEST_SHA256, 1, signature), 0U) << "outlives the original";

    // Copies made, used and freed on several threads at once.
    std::vector<std::thread> threads;
    std::vector<std::uint32_t> results(4, 1);
    const Unit unused = public_unit(test_key());
    for (std::uint32_t &result : results) {
        threads.emplace_back([&] {
            result = 0;
            for (int i = 0; i < 50; ++i) {
                const Unit copy(dup_RSA_UNIT(unused.get()));
                result |= verify(copy.get(), TLX_DIGEST_SHA256, 1, signature);
            }
        });
    }
    for (std::thread &thread : threads)
        thread.join();
    EXPECT_EQ(results, std::vector<std::uint32_t>(4, 0));
    EXPECT_LE(get_RSA_UNIT_builds(unused.get()), 4U);
}

TEST(Rsa, CopiesShareNoNumbers) {
    const LeakCheck leaks;
    const Unit original = private_unit(test_key());
    const Unit copy(dup_RSA_UNIT(original.get()));
    ASSERT_NE(copy, nullptr);
    EXPECT_EQ(get_RSA_UNIT_kind(copy.get()), TLX_RSA_PRIVATE);
    clean_RSA_UNIT(original.get());
    EXPECT_EQ(get_RSA_UNIT_kind(original.get()), TLX_RSA_PUBLIC);
    EXPECT_EQ(get_RSA_length(original.get()), 0U);
    for (unsigned i = 0; i < TLX_RSA_NUMBER_COUNT; ++i) {
        const auto which = static_cast<TLX_RSA_NUMBER>(i);
        EXPECT_EQ(get_RSA_UNIT_number(original.get(), which), nullptr);
        EXPECT_EQ(cmp_BIGINT(get_RSA_UNIT_number(copy.get(), which), number(test_key().values[i]).get()), 0)
            << i;
    }
    EXPECT_EQ(get_RSA_UNIT_number(copy.get(), TLX_RSA_NUMBER_COUNT), nullptr);
    Octets signature;
    EXPECT_EQ(sign(copy.get(), TLX_DIGEST_SHA1, 1, signature), 0U);
    EXPECT_EQ(dup_RSA_UNIT(nullptr), nullptr);
}

TEST(Rsa, EncryptionGoesBothWaysWithLibcrypto) {
    const LeakCheck leaks;
    const Unit decryptor = private_unit(test_key());
    const Unit encryptor = public_unit(test_key());
    const struct {
        std::uint32_t mode;
        std::uint32_t digest_id;
        peer::RsaScheme scheme;
        std::size_t most;
    } kCases[] = {
        {TLX_RSAES_MODE_NONE_GIVEN, 0, {"", "", 0}, 117},
        {TLX_RSAES_MODE_PKCS1, 0, {"", "", 0}, 117},
        {TLX_RSAES_MODE_OAEP_SET, 0, {"SHA1", "SHA1", 0}, 86},
        {TLX_RSAES_MODE_OAEP, 0, {"SHA1", "SHA1", 0}, 86},
        {TLX_RSAES_MODE_OAEP, TLX_DIGEST_SHA256, {"SHA256", "SHA1", 0}, 62},
    };
    for (const auto &c : kCases) {
        SCOPED_TRACE(std::to_string(c.mode) + " " + c.scheme.digest);
        ASSERT_EQ(init_RSAES(encryptor.get(), c.mode, 0, c.digest_id), 0U);
        ASSERT_EQ(init_RSAES(decryptor.get(), c.mode, 1, c.digest_id), 0U);
        const Octets message(c.most, 0x5A);
        Octets sealed(128);
        std::uint32_t size = 0;
        ASSERT_EQ(encrypt_RSAES(encryptor.get(), sealed.data(), &size, message.data(), length(message)), 0U);
        ASSERT_EQ(size, 128U);
        EXPECT_EQ(peer::rsa_decrypt(test_key(), c.scheme, sealed), message);
        EXPECT_EQ(encrypt_RSAES(encryptor.get(), sealed.data(), &size, message.data(), length(message) + 1),
                  1U)
            << "one octet more";

        Octets opened(c.most);
        const auto open = [&](const RSA_UNIT *unit, const Octets &ciphertext, std::size_t room) {
            size = static_cast<std::uint32_t>(room);
            return decrypt_RSAES(unit, opened.data(), &size, ciphertext.data(), length(ciphertext));
        };
        const Octets theirs = peer::rsa_encrypt(test_key(), c.scheme, message);
        // 1 decrypts to 1, which has no padding.
        Octets unpadded(128);
        unpadded.back() = 1;
        EXPECT_EQ(open(decryptor.get(), theirs, c.most - 1), 1U) << "no room";
        EXPECT_EQ(open(decryptor.get(), unpadded, c.most), 1U);
        EXPECT_EQ(open(decryptor.get(), Octets(theirs.begin(), theirs.end() - 1), c.most), 1U);
        EXPECT_EQ(open(encryptor.get(), theirs, c.most), 1U) << "prepared for the other direction";
        EXPECT_EQ(size, 0U);
        EXPECT_EQ(opened, Octets(c.most)) << "nothing is written";
        EXPECT_EQ(open(decryptor.get(), theirs, c.most), 0U);
        EXPECT_EQ(size, c.most);
        EXPECT_EQ(opened, message);
    }
    EXPECT_EQ(init_RSAES(encryptor.get(), TLX_RSAES_MODE_PKCS1, 1, 0), 1U)
        << "decrypting takes a private key";
    EXPECT_EQ(init_RSAES(encryptor.get(), 1, 0, 0), 1U) << "no such mode";
    EXPECT_EQ(init_RSAES(encryptor.get(), TLX_RSAES_MODE_OAEP, 0, TLX_DIGEST_HAS160), 1U);
    std::uint8_t out[128];
    std::uint32_t size = 128;
    EXPECT_EQ(encrypt_RSAES(encryptor.get(), out, &size, out, 1), 1U)
        << "a failed init leaves nothing prepared";
    EXPECT_TRUE(peer::error_queue_is_empty());
}

TEST(Rsa, SurvivesFailingAllocations) {
    Number numbers[8];
    for (std::size_t i = 0; i < 8; ++i)
        numbers[i] = number(test_key().values[i]);
    const unsigned failures = sweep_failing_allocations([&] {
        const Unit unit(new_RSA_UNIT());
        if (unit == nullptr) return false;
        std::uint32_t status = set_RSA_UNIT_private(unit.get(), numbers[0].get(), numbers[1].get(),
                                                    numbers[2].get(), numbers[3].get(), numbers[4].get(),
                                                    numbers[5].get(), numbers[6].get(), numbers[7].get());
        EXPECT_LE(status, 1U);
        if (status != 0) return false;
        const Unit copy(dup_RSA_UNIT(unit.get()));
        if (copy == nullptr) return false;
        std::uint8_t signature[129];
        std::uint32_t size = 0;
        status = init_RSASSA(copy.get(), TLX_DIGEST_HAS160, 1, 1);
        if (status == 0) status = final_RSASSA(copy.get(), signature, &size);
        EXPECT_LE(status, 1U);
        if (status != 0) return false;
        std::uint8_t message[128];
        size = sizeof message;
        status = init_RSAES(unit.get(), TLX_RSAES_MODE_PKCS1, 0, 0);
        if (status == 0) status = encrypt_RSAES(unit.get(), message, &size, message, 8);
        if (status == 0) status = init_RSAES(unit.get(), TLX_RSAES_MODE_PKCS1, 1, 0);
        if (status == 0) status = decrypt_RSAES(unit.get(), message, &size, message, 128);
        EXPECT_LE(status, 1U);
        return status == 0;
    });
    EXPECT_GT(failures, 15U);
}

}  // namespace
