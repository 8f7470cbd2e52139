// RSA against libcrypto in both directions, keys that are none, what is computed once, threads.
#include <gtest/gtest.h>
#include <tlxcrypto/digest.h>
#include <tlxcrypto/rsa.h>

#include <string>
#include <utility>
#include <vector>

#include "support/allocation.hpp"
#include "support/crypto_values.hpp"
#include "support/libcrypto_faults.hpp"
#include "support/openssl_peer.hpp"
#include "support/threads.hpp"

namespace {

namespace peer = tlx_test::openssl;
using namespace tlx_test;
using Unit = Owned<RSA_UNIT>;

std::uint32_t set_private(RSA_UNIT *unit, const Octets (&values)[8]) {
    Number n[8];
    for (std::size_t i = 0; i < 8; ++i)
        n[i] = number(values[i]);
    return set_RSA_UNIT_private(unit, n[0].get(), n[1].get(), n[2].get(), n[3].get(), n[4].get(), n[5].get(),
                                n[6].get(), n[7].get());
}

Unit private_unit(const peer::RsaKey &key) {
    Unit unit(new_RSA_UNIT());
    EXPECT_EQ(set_private(unit.get(), key.numbers), 0U);
    return unit;
}

Unit public_unit(const Octets &n, const Octets &e) {
    Unit unit(new_RSA_UNIT());
    EXPECT_EQ(set_RSA_UNIT_public(unit.get(), number(n).get(), number(e).get()), 0U);
    return unit;
}

const peer::RsaKey &test_key() {
    static const peer::RsaKey key = peer::generate_rsa(1024);
    return key;
}

Unit public_unit() {
    return public_unit(test_key().numbers[0], test_key().numbers[1]);
}

const Octets kData = {'s', 'i', 'g', 'n', ' ', 'm', 'e'};
constexpr std::uint32_t kSha256 = TLX_DIGEST_SHA256;
constexpr std::uint32_t kPkcs1 = TLX_RSA_MODE_PKCS1;
constexpr std::uint32_t kPss = TLX_RSA_MODE_PSS;

std::uint32_t sign(const Unit &unit, std::uint32_t digest_id, std::uint32_t mode, Octets &signature) {
    signature.assign(get_RSA_length(unit.get()) + 1, 0);
    std::uint32_t size = 99;
    const std::uint32_t status =
        sign_RSA(unit.get(), digest_id, mode, kData.data(), length(kData), signature.data(), &size);
    signature.resize(size);
    return status;
}

std::uint32_t verify(const Unit &unit, std::uint32_t digest_id, std::uint32_t mode, const Octets &signature) {
    return verify_RSA(unit.get(), digest_id, mode, kData.data(), length(kData), signature.data(),
                      length(signature));
}

class Rsa : public ::testing::Test {
    LeakCheck leaks_;

  protected:
    const Unit private_key_ = private_unit(test_key());
    const Unit public_key_ = public_unit();
};

TEST_F(Rsa, SignaturesGoBothWaysWithLibcrypto) {
    const std::pair<std::uint32_t, const char *> kDigests[] = {
        {TLX_DIGEST_MD5, "MD5"}, {TLX_DIGEST_SHA1, "SHA1"},     {TLX_DIGEST_SHA224, "SHA224"},
        {kSha256, "SHA256"},     {TLX_DIGEST_SHA384, "SHA384"}, {TLX_DIGEST_SHA512, "SHA512"},
    };
    for (const auto &[digest, name] : kDigests) {
        for (const std::uint32_t mode : {kPkcs1, TLX_RSA_MODE_NONE_GIVEN, kPss}) {
            SCOPED_TRACE(std::string(name) + " mode " + std::to_string(mode));
            // Without parameters PSS has the standard's: MGF1 with SHA-1 and a salt of 20 octets.
            const peer::RsaScheme scheme = {name, mode == kPss ? "SHA1" : "", 20};
            Octets signature;
            ASSERT_EQ(sign(private_key_, digest, mode, signature), 0U);
            EXPECT_TRUE(peer::rsa_verify(test_key(), scheme, kData, signature));
            EXPECT_EQ(verify(public_key_, digest, mode, peer::rsa_sign(test_key(), scheme, kData)), 0U);
        }
    }
}

TEST_F(Rsa, PssTakesItsParametersExactly) {
    const peer::RsaScheme scheme = {"SHA256", "SHA256", 32};
    const Octets theirs = peer::rsa_sign(test_key(), scheme, kData);
    EXPECT_EQ(verify(private_key_, kSha256, kPss, theirs), TLX_RSA_BAD_SIGNATURE);
    ASSERT_EQ(set_RSA_UNIT_PSS(private_key_.get(), kSha256, 31), 0U);
    EXPECT_EQ(verify(private_key_, kSha256, kPss, theirs), TLX_RSA_BAD_SIGNATURE);
    ASSERT_EQ(set_RSA_UNIT_PSS(private_key_.get(), kSha256, 32), 0U);
    EXPECT_EQ(verify(private_key_, kSha256, kPss, theirs), 0U);
    const Unit copy(dup_RSA_UNIT(private_key_.get()));
    Octets ours;
    ASSERT_EQ(sign(copy, kSha256, kPss, ours), 0U);
    EXPECT_TRUE(peer::rsa_verify(test_key(), scheme, kData, ours));

    ASSERT_EQ(set_RSA_UNIT_PSS(private_key_.get(), kSha256, 0), 0U);
    ASSERT_EQ(sign(private_key_, kSha256, kPss, ours), 0U);
    EXPECT_TRUE(peer::rsa_verify(test_key(), {"SHA256", "SHA256", 0}, kData, ours)) << "no salt";
    for (const auto &[salt_length, status] : {std::pair(94U, 0U), {95U, 1U}, {500U, 1U}, {0xFFFFU, 1U}}) {
        ASSERT_EQ(set_RSA_UNIT_PSS(private_key_.get(), kSha256, salt_length), 0U);
        EXPECT_EQ(sign(private_key_, kSha256, kPss, ours), status) << salt_length << ": 94 octets fit";
        EXPECT_EQ(verify(private_key_, kSha256, kPss, theirs), TLX_RSA_BAD_SIGNATURE) << salt_length;
    }
    EXPECT_EQ(set_RSA_UNIT_PSS(private_key_.get(), kSha256, 0xFFFFFFFF), 1U);
    EXPECT_EQ(set_RSA_UNIT_PSS(private_key_.get(), TLX_DIGEST_HAS160, 20), 1U);
}

// octets^exponent mod n, in as many octets.
Octets power(const Unit &unit, const Octets &base, TLX_RSA_NUMBER exponent) {
    const Number value = number(base);
    EXPECT_EQ(mod_exp_BIGINT(value.get(), value.get(), get_RSA_UNIT_number(unit.get(), exponent),
                             get_RSA_UNIT_number(unit.get(), TLX_RSA_N)),
              0U);
    Octets result(base.size());
    EXPECT_EQ(BIGINT_to_binary(value.get(), result.data(), length(result)), 0U);
    return result;
}

TEST_F(Rsa, PssLooksAtEveryPartOfTheEncodedMessage) {
    // With SHA-256: padding 00 ... 00 01, 20 octets of salt, both masked, then 32 of hash and BC.
    const struct {
        const char *what;
        std::uint32_t bits;
        std::size_t index;
        std::uint8_t change;
        std::uint32_t status;
    } kCases[] = {
        {"nothing", 1024, 0, 0x00, 0},
        {"the bit beyond the encoded message", 1024, 0, 0x80, TLX_RSA_BAD_SIGNATURE},
        {"first padding octet", 1024, 0, 0x01, TLX_RSA_BAD_SIGNATURE},
        {"last zero of the padding", 1024, 73, 0x01, TLX_RSA_BAD_SIGNATURE},
        {"end of the padding", 1024, 74, 0x02, TLX_RSA_BAD_SIGNATURE},
        {"first octet of the salt", 1024, 75, 0x01, TLX_RSA_BAD_SIGNATURE},
        {"last octet of the salt", 1024, 94, 0x01, TLX_RSA_BAD_SIGNATURE},
        {"first octet of the hash", 1024, 95, 0x01, TLX_RSA_BAD_SIGNATURE},
        {"last octet of the hash", 1024, 126, 0x01, TLX_RSA_BAD_SIGNATURE},
        {"trailer", 1024, 127, 0x01, TLX_RSA_BAD_SIGNATURE},
        {"nothing", 1025, 0, 0x00, 0},
        {"the octet beyond the encoded message", 1025, 0, 0x01, TLX_RSA_BAD_SIGNATURE},
    };
    const Unit longer(new_RSA_UNIT());
    ASSERT_EQ(gen_RSA_UNIT(longer.get(), 1025, 65537), 0U);
    for (const auto &c : kCases) {
        const Unit &unit = c.bits == 1024 ? private_key_ : longer;
        Octets encoded;
        do {  // until the changed message is below n
            Octets signature;
            ASSERT_EQ(sign(unit, kSha256, kPss, signature), 0U);
            encoded = power(unit, signature, TLX_RSA_E);
            encoded[c.index] ^= c.change;
        } while (cmp_BIGINT(number(encoded).get(), get_RSA_UNIT_number(unit.get(), TLX_RSA_N)) >= 0);
        EXPECT_EQ(verify(unit, kSha256, kPss, power(unit, encoded, TLX_RSA_D)), c.status)
            << c.bits << ' ' << c.what;
    }
}

TEST_F(Rsa, SignsHas160WithItsIdentifier) {
    Octets signature;
    ASSERT_EQ(sign(private_key_, TLX_DIGEST_HAS160, kPkcs1, signature), 0U);
    Octets hash(20);
    std::uint32_t size = 0;
    ASSERT_EQ(Digest(TLX_DIGEST_HAS160, kData.data(), length(kData), hash.data(), &size), 0U);
    // SEQUENCE { SEQUENCE { 1.2.410.200004.1.2, NULL }, OCTET STRING }
    EXPECT_EQ(hex(peer::rsa_recover(test_key(), signature)),
              "3024300C06082A831A8C9A44010205000414" + hex(hash));
    EXPECT_EQ(verify(private_key_, TLX_DIGEST_HAS160, kPkcs1, signature), 0U);
    EXPECT_EQ(sign(private_key_, TLX_DIGEST_HAS160, kPss, signature), 1U);
}

TEST_F(Rsa, RefusesEveryOtherSignature) {
    for (const std::uint32_t mode : {kPkcs1, kPss}) {
        Octets good;
        ASSERT_EQ(sign(private_key_, TLX_DIGEST_SHA1, mode, good), 0U);
        for (std::size_t bit = 0; bit < 8 * good.size(); bit += 7) {
            Octets bad = good;
            bad[bit / 8] ^= static_cast<std::uint8_t>(1U << bit % 8);
            EXPECT_EQ(verify(private_key_, TLX_DIGEST_SHA1, mode, bad), TLX_RSA_BAD_SIGNATURE) << bit;
        }
        Octets longer = good;
        longer.push_back(0);
        const struct {
            const char *what;
            std::uint32_t digest_id, mode;
            Octets signature;
        } kCases[] = {
            {"too long", TLX_DIGEST_SHA1, mode, longer},
            {"empty", TLX_DIGEST_SHA1, mode, {}},
            {"too short", TLX_DIGEST_SHA1, mode, Octets(good.begin(), good.end() - 1)},
            {"above n", TLX_DIGEST_SHA1, mode, Octets(128, 0xFF)},
            {"zero", TLX_DIGEST_SHA1, mode, Octets(128)},
            {"another digest", kSha256, mode, good},
            {"HAS-160", TLX_DIGEST_HAS160, kPkcs1, good},
            {"the other mode", TLX_DIGEST_SHA1, kPkcs1 + kPss - mode, good},
        };
        for (const auto &c : kCases)
            EXPECT_EQ(verify(private_key_, c.digest_id, c.mode, c.signature), TLX_RSA_BAD_SIGNATURE)
                << c.what;
        EXPECT_EQ(verify(private_key_, TLX_DIGEST_SHA1, mode, good), 0U) << "the failures left no trace";
    }
    EXPECT_TRUE(peer::error_queue_is_empty());
}

TEST_F(Rsa, GeneratesAndUsesKeysOfAnySize) {
    for (const auto &[bits, exponent] : {std::pair(512U, 3U),
                                         {521U, 5U},
                                         {1023U, 17U},
                                         {1024U, 0xFFFFFFFFU},
                                         {1025U, 65537U},
                                         {2047U, 65537U}}) {
        SCOPED_TRACE(bits);
        const Unit unit = public_unit();
        ASSERT_EQ(gen_RSA_UNIT(unit.get(), bits, exponent), 0U);
        EXPECT_EQ(get_RSA_UNIT_kind(unit.get()), TLX_RSA_PRIVATE);
        const auto get = [&](TLX_RSA_NUMBER which) { return get_RSA_UNIT_number(unit.get(), which); };
        EXPECT_EQ(get_BIGINT_bits(get(TLX_RSA_N)), bits);
        EXPECT_EQ(get_BIGINT_word(get(TLX_RSA_E)), exponent);
        const Number value(new_BIGINT());
        ASSERT_EQ(mod_mul_BIGINT(value.get(), get(TLX_RSA_QINV), get(TLX_RSA_Q), get(TLX_RSA_P)), 0U);
        EXPECT_EQ(get_BIGINT_word(value.get()), 1U) << "qinv";
        // d = dp modulo p - 1, and likewise for q.
        for (const auto &[prime, part] :
             {std::pair(TLX_RSA_P, TLX_RSA_DP), std::pair(TLX_RSA_Q, TLX_RSA_DQ)}) {
            ASSERT_EQ(sub_BIGINT(value.get(), get(prime), number("01").get()), 0U);
            ASSERT_EQ(mod_BIGINT(value.get(), get(TLX_RSA_D), value.get()), 0U);
            EXPECT_EQ(cmp_BIGINT(value.get(), get(part)), 0);
        }
        Octets good;
        ASSERT_EQ(sign(unit, kSha256, kPkcs1, good), 0U);
        EXPECT_EQ(verify(unit, kSha256, kPkcs1, good), 0U);
        EXPECT_EQ(verify(unit, TLX_DIGEST_SHA1, kPkcs1, good), TLX_RSA_BAD_SIGNATURE);
        if (bits % 8 == 0) continue;
        // The same value modulo n, in as many octets.
        ASSERT_EQ(add_BIGINT(value.get(), number(good).get(), get(TLX_RSA_N)), 0U);
        Octets raised(good.size());
        ASSERT_EQ(BIGINT_to_binary(value.get(), raised.data(), length(raised)), 0U);
        EXPECT_EQ(verify(unit, kSha256, kPkcs1, raised), TLX_RSA_BAD_SIGNATURE);
        if (bits > 752) continue;
        EXPECT_EQ(verify(unit, TLX_DIGEST_SHA512, kPkcs1, good), TLX_RSA_BAD_SIGNATURE);
        EXPECT_EQ(sign(unit, TLX_DIGEST_SHA512, kPkcs1, good), 1U) << "no room for the DigestInfo";
    }
}

TEST_F(Rsa, NeedsNoPrimes) {
    const Unit unit(new_RSA_UNIT());
    const auto &values = test_key().numbers;
    ASSERT_EQ(set_RSA_UNIT_private(unit.get(), number(values[0]).get(), number(values[1]).get(),
                                   number(values[2]).get(), nullptr, nullptr, nullptr, nullptr, nullptr),
              0U);
    Octets good;
    ASSERT_EQ(sign(unit, kSha256, kPkcs1, good), 0U);
    EXPECT_EQ(verify(unit, kSha256, kPkcs1, good), 0U);
}

TEST_F(Rsa, RefusesNumbersThatMakeNoKey) {
    const Octets &n = test_key().numbers[0];
    const Octets exponent = {1, 0, 1};
    Octets even = n;
    even.back() ^= 1U;
    Octets small(64, 0xFF);
    small[0] = 0x7F;
    Octets huge(2049, 0xFF);
    huge[0] = 1;
    const struct {
        const char *what;
        Octets n, e;
    } kCases[] = {
        {"even modulus", even, exponent},
        {"zero modulus", {0}, exponent},
        {"modulus of 511 bits", small, exponent},
        {"modulus of 16385 bits", huge, exponent},
        {"zero exponent", n, {0}},
        {"exponent 1", n, {1}},
        {"even exponent", n, {1, 0, 0}},
        {"exponent of the modulus", n, n},
        {"exponent of 65 bits", n, {1, 0, 0, 0, 0, 0, 0, 0, 1}},
    };
    for (const auto &c : kCases) {
        const Unit unit = public_unit(c.n, c.e);
        EXPECT_EQ(verify(unit, TLX_DIGEST_SHA1, kPkcs1, Octets(c.n.size())), TLX_RSA_BAD_KEY) << c.what;
        EXPECT_EQ(get_RSA_UNIT_builds(unit.get()), 0U) << c.what;
    }
    const Unit long_exponent = public_unit(n, Octets(8, 0xFF));
    EXPECT_EQ(verify(long_exponent, TLX_DIGEST_SHA1, kPkcs1, Octets(n.size())), TLX_RSA_BAD_SIGNATURE);
    for (const auto prime : {TLX_RSA_P, TLX_RSA_Q}) {
        peer::RsaKey long_prime = test_key();
        long_prime.numbers[prime] = n;
        Octets signature;
        EXPECT_EQ(sign(private_unit(long_prime), kSha256, kPkcs1, signature), TLX_RSA_BAD_KEY);
    }
    for (std::size_t i = 2; i < 8; ++i) {
        peer::RsaKey broken = test_key();
        broken.numbers[i] = {0};
        Octets signature;
        EXPECT_EQ(sign(private_unit(broken), TLX_DIGEST_SHA1, kPkcs1, signature), TLX_RSA_BAD_KEY)
            << "number " << i;
        EXPECT_EQ(signature, Octets{});
    }
    EXPECT_EQ(verify(Unit(new_RSA_UNIT()), TLX_DIGEST_SHA1, kPkcs1, Octets(128)), TLX_RSA_BAD_KEY);
}

// libcrypto signs with them all the same; of wrong numbers for the remainder theorem alone it makes up for by
// d.
TEST_F(Rsa, HandsOutNoSignatureOfNumbersThatDoNotBelongTogether) {
    const peer::RsaKey other = peer::generate_rsa(1024);
    const struct {
        const char *what;
        std::vector<std::size_t> changed;
    } kCases[] = {
        {"e", {1}}, {"d and dp", {2, 5}}, {"d and dq", {2, 6}}, {"d and qinv", {2, 7}}, {"n", {0}},
    };
    for (const auto &c : kCases) {
        for (const std::uint32_t mode : {kPkcs1, kPss}) {
            SCOPED_TRACE(std::string(c.what) + " mode " + std::to_string(mode));
            peer::RsaKey broken = test_key();
            for (const std::size_t i : c.changed)
                broken.numbers[i] = i == 1 ? Octets{1, 0, 3} : other.numbers[i];
            Octets out(128, 0xEE);
            std::uint32_t size = 99;
            EXPECT_EQ(sign_RSA(private_unit(broken).get(), kSha256, mode, kData.data(), length(kData),
                               out.data(), &size),
                      TLX_RSA_BAD_KEY);
            EXPECT_EQ(size, 0U);
            EXPECT_EQ(out, Octets(128)) << "wiped";
        }
    }
}

TEST_F(Rsa, StreamsInItsOrder) {
    RSA_UNIT *unit = private_key_.get();
    Octets one_shot;
    ASSERT_EQ(sign(private_key_, kSha256, kPkcs1, one_shot), 0U);
    const auto feed = [unit](std::uint32_t direction, std::size_t octets) {
        ASSERT_EQ(init_RSASSA(unit, kSha256, kPkcs1, direction), 0U);
        for (std::size_t i = 0; i < octets; ++i)
            ASSERT_EQ(update_RSASSA(unit, &kData[i], 1), 0U);
    };
    Octets made(128);
    std::uint32_t size = 7;
    EXPECT_EQ(update_RSASSA(unit, made.data(), 1), 1U) << "before init";
    EXPECT_EQ(final_RSASSA(unit, made.data(), &size), 1U) << "before init";
    EXPECT_EQ(size, 0U);
    feed(1, kData.size());
    EXPECT_EQ(verify_RSASSA(unit, one_shot.data(), 128), 1U) << "a signature is under way";
    ASSERT_EQ(final_RSASSA(unit, made.data(), &size), 0U);
    EXPECT_EQ(size, 128U);
    EXPECT_EQ(made, one_shot);
    feed(0, kData.size());
    EXPECT_EQ(final_RSASSA(unit, made.data(), &size), 0U);
    feed(0, kData.size());
    EXPECT_EQ(verify_RSASSA(unit, made.data(), size), 0U);
    EXPECT_EQ(verify_RSASSA(unit, made.data(), size), 1U) << "it has ended";
    for (const std::size_t octets : {kData.size() - 1, std::size_t{0}}) {
        feed(0, octets);
        EXPECT_EQ(final_RSASSA(unit, made.data(), &size), TLX_RSA_BAD_SIGNATURE) << octets;
    }
    feed(1, 1);
    ASSERT_EQ(set_private(unit, test_key().numbers), 0U);
    EXPECT_EQ(update_RSASSA(unit, made.data(), 1), 1U) << "new numbers end what was under way";
}

TEST_F(Rsa, RefusesBadArguments) {
    RSA_UNIT *unit = public_key_.get();
    const Number one = number("01");
    EXPECT_EQ(init_RSASSA(unit, kSha256, kPkcs1, 1), 1U) << "signing takes a private key";
    EXPECT_EQ(init_RSASSA(unit, kSha256, 3, 0), 1U) << "no such mode";
    EXPECT_EQ(init_RSASSA(unit, kSha256, kPkcs1, 2), 1U) << "no such direction";
    EXPECT_EQ(init_RSASSA(unit, TLX_HMAC_SHA1, kPkcs1, 0), 1U) << "no digest";
    EXPECT_EQ(init_RSASSA(unit, TLX_DIGEST_MDC2, kPkcs1, 0), 1U) << "no DigestInfo for it";
    Octets signature;
    EXPECT_EQ(sign(public_key_, kSha256, kPkcs1, signature), 1U);
    EXPECT_EQ(sign(private_key_, 0x12345678, kPkcs1, signature), 1U);
    EXPECT_EQ(set_RSA_UNIT_private(unit, one.get(), one.get(), one.get(), one.get(), nullptr, nullptr,
                                   nullptr, nullptr),
              1U)
        << "one prime alone";
    for (const auto &[bits, e] : {std::pair(511U, 65537U), {16392U, 65537U}, {1024U, 1U}, {1024U, 65536U}})
        EXPECT_EQ(gen_RSA_UNIT(unit, bits, e), 1U) << bits << ' ' << e;
    EXPECT_EQ(get_RSA_length(unit), 128U) << "the failures left the unit as it was";
}

TEST_F(Rsa, ComputesOnceForAllCopiesAndForgetsWhenTheNumbersChange) {
    Unit original = public_unit();
    const Octets signature = peer::rsa_sign(test_key(), {"SHA256", "", 0}, kData);
    const Unit first(dup_RSA_UNIT(original.get()));
    const Unit second(dup_RSA_UNIT(first.get()));
    for (int i = 0; i < 100; ++i) {
        for (const Unit *unit : {&std::as_const(original), &second})
            ASSERT_EQ(verify(*unit, kSha256, kPkcs1, signature), 0U);
    }
    EXPECT_EQ(get_RSA_UNIT_builds(original.get()), 1U);
    EXPECT_EQ(get_RSA_UNIT_builds(second.get()), 1U);

    const peer::RsaKey other = peer::generate_rsa(1024);
    Octets made;
    ASSERT_EQ(set_private(first.get(), test_key().numbers), 0U);
    ASSERT_EQ(sign(first, kSha256, kPkcs1, made), 0U);
    ASSERT_EQ(set_private(first.get(), other.numbers), 0U);
    EXPECT_EQ(get_RSA_UNIT_builds(first.get()), 0U);
    ASSERT_EQ(sign(first, kSha256, kPkcs1, made), 0U);
    EXPECT_TRUE(peer::rsa_verify(other, {"SHA256", "", 0}, kData, made));
    EXPECT_EQ(verify(first, kSha256, kPkcs1, signature), TLX_RSA_BAD_SIGNATURE);
    EXPECT_EQ(verify(first, kSha256, kPkcs1, peer::rsa_sign(other, {"SHA256", "", 0}, kData)), 0U);
    original.reset();
    EXPECT_EQ(verify(second, kSha256, kPkcs1, signature), 0U) << "outlives the original";

    const Unit copy(dup_RSA_UNIT(first.get()));
    clean_RSA_UNIT(first.get());
    EXPECT_EQ(get_RSA_UNIT_kind(first.get()), TLX_RSA_PUBLIC);
    EXPECT_EQ(get_RSA_length(first.get()), 0U);
    for (unsigned i = 0; i < TLX_RSA_NUMBER_COUNT; ++i) {
        const BIGINT *copied = get_RSA_UNIT_number(copy.get(), static_cast<TLX_RSA_NUMBER>(i));
        EXPECT_EQ(cmp_BIGINT(copied, number(other.numbers[i]).get()), 0)
            << "the numbers are not shared " << i;
    }
    EXPECT_EQ(get_RSA_UNIT_number(copy.get(), TLX_RSA_NUMBER_COUNT), nullptr);
    EXPECT_EQ(dup_RSA_UNIT(nullptr), nullptr);
}

TEST_F(Rsa, OneUnitAndItsCopiesServeManyThreads) {
    const auto sign_and_verify = [this] {
        for (unsigned i = 0; i < 50; ++i) {
            const std::uint32_t mode = i % 4 == 0 ? kPss : kPkcs1;
            const Unit copy(dup_RSA_UNIT(private_key_.get()));
            Octets signature;
            if (sign(private_key_, kSha256, mode, signature) != 0) return false;
            if (verify(private_key_, kSha256, mode, signature) != 0) return false;
            if (verify(copy, kSha256, mode, signature) != 0) return false;
        }
        return true;
    };
    EXPECT_EQ(successes_on_threads(4, sign_and_verify), 4U);
    EXPECT_GE(get_RSA_UNIT_builds(private_key_.get()), 2U);
    EXPECT_LE(get_RSA_UNIT_builds(private_key_.get()), 8U);
}

const struct {
    std::uint32_t mode, digest_id;
    peer::RsaScheme scheme;
    std::size_t most;  // octets of a message
} kEncryptions[] = {
    {TLX_RSAES_MODE_NONE_GIVEN, 0, {"", "", 0}, 117},
    {TLX_RSAES_MODE_PKCS1, 0, {"", "", 0}, 117},
    {TLX_RSAES_MODE_OAEP_SET, 0, {"SHA1", "SHA1", 0}, 86},
    {TLX_RSAES_MODE_OAEP, 0, {"SHA1", "SHA1", 0}, 86},
    {TLX_RSAES_MODE_OAEP, kSha256, {"SHA256", "SHA1", 0}, 62},
};

TEST_F(Rsa, EncryptionGoesBothWaysWithLibcrypto) {
    for (const auto &c : kEncryptions) {
        SCOPED_TRACE(std::to_string(c.mode) + " " + c.scheme.digest);
        ASSERT_EQ(init_RSAES(public_key_.get(), c.mode, 0, c.digest_id), 0U);
        ASSERT_EQ(init_RSAES(private_key_.get(), c.mode, 1, c.digest_id), 0U);
        const Octets message(c.most, 0x5A);
        Octets sealed(128);
        std::uint32_t size = 0;
        EXPECT_EQ(encrypt_RSAES(public_key_.get(), sealed.data(), &size, sealed.data(), length(message) + 1),
                  1U);
        ASSERT_EQ(encrypt_RSAES(public_key_.get(), sealed.data(), &size, message.data(), length(message)),
                  0U);
        EXPECT_EQ(size, 128U);
        EXPECT_EQ(peer::rsa_decrypt(test_key(), c.scheme, sealed), message);

        const Octets theirs = peer::rsa_encrypt(test_key(), c.scheme, message);
        Octets opened(c.most);
        size = length(opened);
        EXPECT_EQ(decrypt_RSAES(private_key_.get(), opened.data(), &size, theirs.data(), 128), 0U);
        EXPECT_EQ(size, c.most);
        EXPECT_EQ(opened, message);
    }
}

TEST_F(Rsa, WritesNothingOfWhatDoesNotDecrypt) {
    // 1 decrypts to 1, which has no padding.
    Octets unpadded(128);
    unpadded.back() = 1;
    for (const auto &c : kEncryptions) {
        SCOPED_TRACE(std::to_string(c.mode) + " " + c.scheme.digest);
        ASSERT_EQ(init_RSAES(public_key_.get(), c.mode, 0, c.digest_id), 0U);
        ASSERT_EQ(init_RSAES(private_key_.get(), c.mode, 1, c.digest_id), 0U);
        const Octets theirs = peer::rsa_encrypt(test_key(), c.scheme, Octets(c.most, 0x5A));
        const struct {
            const char *what;
            RSA_UNIT *unit;
            Octets ciphertext;
            std::size_t room;
        } kCases[] = {
            {"no room", private_key_.get(), theirs, c.most - 1},
            {"no padding", private_key_.get(), unpadded, c.most},
            {"one octet short", private_key_.get(), Octets(theirs.begin(), theirs.end() - 1), c.most},
            {"prepared for the other direction", public_key_.get(), theirs, c.most},
        };
        for (const auto &bad : kCases) {
            Octets opened(c.most);
            auto size = static_cast<std::uint32_t>(bad.room);
            EXPECT_EQ(
                decrypt_RSAES(bad.unit, opened.data(), &size, bad.ciphertext.data(), length(bad.ciphertext)),
                1U)
                << bad.what;
            EXPECT_EQ(size, 0U) << bad.what;
            EXPECT_EQ(opened, Octets(c.most)) << bad.what;
        }
    }
    EXPECT_TRUE(peer::error_queue_is_empty());
}

TEST_F(Rsa, RefusesToPrepareWhatItCannotEncrypt) {
    EXPECT_EQ(init_RSAES(public_key_.get(), TLX_RSAES_MODE_PKCS1, 1, 0), 1U) << "it takes a private key";
    EXPECT_EQ(init_RSAES(public_key_.get(), 1, 0, 0), 1U) << "no such mode";
    EXPECT_EQ(init_RSAES(public_key_.get(), TLX_RSAES_MODE_OAEP, 0, TLX_DIGEST_HAS160), 1U);
    Octets out(128);
    std::uint32_t size = 128;
    EXPECT_EQ(encrypt_RSAES(public_key_.get(), out.data(), &size, out.data(), 1), 1U)
        << "nothing is prepared";
    EXPECT_TRUE(peer::error_queue_is_empty());
}

TEST_F(Rsa, SurvivesFailingAllocations) {
    const unsigned failures = sweep_failing_allocations([&] {
        const Unit unit(new_RSA_UNIT());
        if (unit == nullptr) return false;
        std::uint32_t status = set_private(unit.get(), test_key().numbers);
        EXPECT_LE(status, 1U);
        if (status != 0) return false;
        const Unit copy(dup_RSA_UNIT(unit.get()));
        if (copy == nullptr) return false;
        std::uint8_t octets[129];
        std::uint32_t size = 0;
        status = init_RSASSA(copy.get(), TLX_DIGEST_HAS160, kPkcs1, 1);
        if (status == 0) status = final_RSASSA(copy.get(), octets, &size);
        if (status == 0) status = init_RSAES(unit.get(), TLX_RSAES_MODE_PKCS1, 0, 0);
        if (status == 0) status = encrypt_RSAES(unit.get(), octets, &size, octets, 8);
        if (status == 0) status = init_RSAES(unit.get(), TLX_RSAES_MODE_PKCS1, 1, 0);
        if (status == 0) status = decrypt_RSAES(unit.get(), octets, &size, octets, 128);
        EXPECT_LE(status, 1U);
        return status == 0;
    });
    EXPECT_GT(failures, 15U);
}

TEST_F(Rsa, CallsNoGoodSignatureBadWhenLibcryptoRunsOutOfMemory) {
    for (const std::uint32_t mode : {kPkcs1, kPss}) {
        Octets signature;
        ASSERT_EQ(sign(private_key_, kSha256, mode, signature), 0U);
        const auto verify_anew = [&] { return verify(public_unit(), kSha256, mode, signature); };
        EXPECT_EQ(sweep_failing_libcrypto_allocations(verify_anew) > 10, kSharesLibcrypto) << mode;
        const auto sign_anew = [&] { return sign(private_unit(test_key()), kSha256, mode, signature); };
        EXPECT_EQ(sweep_failing_libcrypto_allocations(sign_anew) > 10, kSharesLibcrypto) << mode;
    }
}

}  // namespace
