// KCDSA: the published vectors, what a verification refuses, keys and parameters of our own, threads.
#include <gtest/gtest.h>
#include <tlxcrypto/digest.h>
#include <tlxcrypto/kcdsa.h>

#include <fstream>
#include <map>
#include <string>
#include <thread>
#include <vector>

#include "support/allocation.hpp"
#include "support/crypto_values.hpp"

namespace {

using namespace tlx_test;
using Unit = Owned<KCDSA>;

const std::string kMessage = "This is a test message for KCDSA usage!";

Octets message() {
    return {kMessage.begin(), kMessage.end()};
}

struct Vector {
    std::string name;
    std::uint32_t digest_id = 0;
    std::map<std::string, std::string> values;
};

// The sections of data/kcdsa.txt.
const std::vector<Vector> &vectors() {
    static const std::vector<Vector> all = [] {
        const std::map<std::string, std::uint32_t> digests = {
            {"SHA224", TLX_DIGEST_SHA224}, {"SHA256", TLX_DIGEST_SHA256}, {"HAS160", TLX_DIGEST_HAS160}};
        std::vector<Vector> read;
        std::ifstream file(TLX_TEST_DATA "/kcdsa.txt");
        for (std::string line; std::getline(file, line);) {
            if (line.empty() || line[0] == '#') continue;
            if (line[0] == '[') {
                const std::string name = line.substr(1, line.size() - 2);
                read.push_back({name, digests.at(name.substr(name.size() - 6)), {}});
            } else {
                read.back().values[line.substr(0, 1)] = line.substr(4);
            }
        }
        return read;
    }();
    return all;
}

const Vector &smallest() {
    return vectors().back();
}

// The vector's parameters with the keys named.
Unit key_of(const Vector &vector, const std::string &keys) {
    Unit unit(new_KCDSA());
    EXPECT_EQ(set_KCDSA_params(unit.get(), number(vector.values.at("p")).get(),
                               number(vector.values.at("q")).get(), number(vector.values.at("g")).get()),
              0U);
    if (keys.find('x') != std::string::npos) {
        EXPECT_EQ(set_KCDSA_private(unit.get(), number(vector.values.at("x")).get()), 0U);
    }
    if (keys.find('y') != std::string::npos) {
        EXPECT_EQ(set_KCDSA_public(unit.get(), number(vector.values.at("y")).get()), 0U);
    }
    return unit;
}

struct Signature {
    Octets r = Octets(TLX_KCDSA_MAX_LENGTH);
    Octets s = Octets(TLX_KCDSA_MAX_LENGTH);

    void trim(std::uint32_t r_len, std::uint32_t s_len) {
        r.resize(r_len);
        s.resize(s_len);
    }
};

std::uint32_t sign(const KCDSA *unit, std::uint32_t digest_id, const Octets &data, Signature &signature) {
    std::uint32_t r_len = 0;
    std::uint32_t s_len = 0;
    const std::uint32_t status = sign_KCDSA_data(unit, digest_id, data.data(), length(data),
                                                 signature.r.data(), &r_len, signature.s.data(), &s_len);
    signature.trim(r_len, s_len);
    return status;
}

std::uint32_t verify(const KCDSA *unit, std::uint32_t digest_id, const Octets &data, const Octets &r,
                     const Octets &s) {
    return verify_KCDSA_data(unit, digest_id, data.data(), length(data), r.data(), length(r), s.data(),
                             length(s));
}

TEST(Kcdsa, SignsAndVerifiesThePublishedVectors) {
    const LeakCheck leaks;
    ASSERT_EQ(vectors().size(), 5U);
    const Octets data = message();
    for (const Vector &vector : vectors()) {
        SCOPED_TRACE(vector.name);
        const Unit key = key_of(vector, "x");
        ASSERT_EQ(compute_KCDSA_public(key.get()), 0U);
        EXPECT_EQ(cmp_BIGINT(get_KCDSA_number(key.get(), TLX_KCDSA_Y), number(vector.values.at("y")).get()),
                  0);

        Signature made;
        std::uint32_t r_len = 0;
        std::uint32_t s_len = 0;
        ASSERT_EQ(sign_KCDSA_with_k(key.get(), vector.digest_id, data.data(), length(data),
                                    number(vector.values.at("k")).get(), made.r.data(), &r_len, made.s.data(),
                                    &s_len),
                  0U);
        made.trim(r_len, s_len);
        EXPECT_EQ(made.r, octets(vector.values.at("r")));
        EXPECT_EQ(made.s, octets(vector.values.at("s")));

        const Unit public_key = key_of(vector, "y");
        EXPECT_EQ(verify(public_key.get(), vector.digest_id, data, made.r, made.s), 0U);
    }
}

TEST(Kcdsa, StreamsInAnyPieces) {
    const LeakCheck leaks;
    const Vector &vector = vectors()[2];
    // The private key alone: the public one, which the hash begins with, follows from it.
    const Unit unit = key_of(vector, "x");
    ASSERT_EQ(set_KCDSA_digest(unit.get(), TLX_DIGEST_SHA384), 0U);
    const Octets data(1000, 0xA5);
    for (const std::uint32_t piece : {1U, 63U, 1000U}) {
        SCOPED_TRACE(piece);
        Signature made;
        std::uint32_t r_len = 0;
        std::uint32_t s_len = 0;
        ASSERT_EQ(init_KCDSA(unit.get(), 1), 0U);
        for (std::uint32_t at = 0; at < data.size(); at += piece) {
            const std::uint32_t left = length(data) - at;
            ASSERT_EQ(update_KCDSA(unit.get(), data.data() + at, std::min(piece, left)), 0U);
        }
        ASSERT_EQ(final_KCDSA(unit.get(), made.r.data(), &r_len, made.s.data(), &s_len), 0U);
        // 48 octets of SHA-384 are cut to the 32 of q.
        EXPECT_EQ(r_len, 32U);
        EXPECT_EQ(s_len, 32U);
        made.trim(r_len, s_len);
        EXPECT_EQ(verify(unit.get(), TLX_DIGEST_SHA384, data, made.r, made.s), 0U);

        ASSERT_EQ(init_KCDSA(unit.get(), 0), 0U);
        ASSERT_EQ(update_KCDSA(unit.get(), data.data(), length(data)), 0U);
        EXPECT_EQ(final_KCDSA(unit.get(), made.r.data(), &r_len, made.s.data(), &s_len), 0U);
        ASSERT_EQ(init_KCDSA(unit.get(), 0), 0U);
        EXPECT_EQ(verify_KCDSA(unit.get(), made.r.data(), r_len, made.s.data(), s_len),
                  TLX_KCDSA_BAD_SIGNATURE)
            << "another message";
    }
}

TEST(Kcdsa, LengthsFollowDigestAndQ) {
    const LeakCheck leaks;
    const struct {
        std::size_t vector;
        std::uint32_t digest_id;
        std::size_t r_length;
        std::size_t s_length;
    } kCases[] = {
        {4, TLX_DIGEST_MD5, 16, 20},    {4, TLX_DIGEST_SHA1, 20, 20},   {4, TLX_DIGEST_SHA512, 20, 20},
        {1, TLX_DIGEST_HAS160, 20, 28}, {2, TLX_DIGEST_SHA512, 32, 32},
    };
    for (const auto &c : kCases) {
        SCOPED_TRACE(c.digest_id);
        const Unit unit = key_of(vectors()[c.vector], "xy");
        EXPECT_EQ(get_KCDSA_length(unit.get()), c.s_length);
        Signature made;
        ASSERT_EQ(sign(unit.get(), c.digest_id, message(), made), 0U);
        EXPECT_EQ(made.r.size(), c.r_length);
        EXPECT_EQ(made.s.size(), c.s_length);
        EXPECT_EQ(verify(unit.get(), c.digest_id, message(), made.r, made.s), 0U);
    }
}

TEST(Kcdsa, RefusesEveryOtherSignature) {
    const LeakCheck leaks;
    const Vector &vector = smallest();
    const Unit unit = key_of(vector, "y");
    const Octets data = message();
    const Octets r = octets(vector.values.at("r"));
    const Octets s = octets(vector.values.at("s"));
    for (std::size_t bit = 0; bit < 8 * r.size(); ++bit) {
        Octets changed = r;
        changed[bit / 8] ^= static_cast<std::uint8_t>(1U << bit % 8);
        EXPECT_EQ(verify(unit.get(), vector.digest_id, data, changed, s), TLX_KCDSA_BAD_SIGNATURE)
            << "r " << bit;
        changed = s;
        changed[bit / 8] ^= static_cast<std::uint8_t>(1U << bit % 8);
        EXPECT_EQ(verify(unit.get(), vector.digest_id, data, r, changed), TLX_KCDSA_BAD_SIGNATURE)
            << "s " << bit;
    }
    EXPECT_EQ(verify(unit.get(), vector.digest_id, data, r, octets("0000" + vector.values.at("s"))), 0U)
        << "leading zeros of s";

    // s + q is the same exponent of y, yet no signature.
    const Number shifted = number("00");
    ASSERT_EQ(
        add_BIGINT(shifted.get(), number(vector.values.at("s")).get(), number(vector.values.at("q")).get()),
        0U);
    Octets s_and_q(21);
    ASSERT_EQ(BIGINT_to_binary(shifted.get(), s_and_q.data(), 21), 0U);
    const Octets q = octets(vector.values.at("q"));
    const struct {
        const char *what;
        Octets r;
        Octets s;
        std::uint32_t digest_id;
    } kCases[] = {
        {"s + q", r, s_and_q, TLX_DIGEST_HAS160},
        {"s = q", r, q, TLX_DIGEST_HAS160},
        {"s = 0", r, Octets(20), TLX_DIGEST_HAS160},
        {"s = 0 in one octet", r, Octets(1), TLX_DIGEST_HAS160},
        {"s far too long", r, Octets(5000, 0xFF), TLX_DIGEST_HAS160},
        {"r = 0", Octets(20), s, TLX_DIGEST_HAS160},
        {"r too long", octets("00" + vector.values.at("r")), s, TLX_DIGEST_HAS160},
        {"r too short", Octets(r.begin(), r.end() - 1), s, TLX_DIGEST_HAS160},
        {"another digest", r, s, TLX_DIGEST_SHA1},
    };
    for (const auto &c : kCases) {
        EXPECT_EQ(verify(unit.get(), c.digest_id, data, c.r, c.s), TLX_KCDSA_BAD_SIGNATURE) << c.what;
    }
}

TEST(Kcdsa, RefusesNumbersThatMakeNoKey) {
    const LeakCheck leaks;
    const Vector &good = smallest();
    const std::string p = good.values.at("p");
    const std::string q = good.values.at("q");
    std::string even_p = p;
    even_p.back() = '8';
    std::string p_minus_1 = p;
    p_minus_1.back() = 'e';
    std::string even_q = q;
    even_q.back() = 'a';
    std::string other_q = q;
    other_q.back() = 'd';
    const struct {
        const char *what;
        const char *name;
        std::string value;
    } kCases[] = {
        {"even p", "p", even_p},
        {"small p", "p", std::string(126, 'f')},
        {"huge p", "p", "1" + std::string(2048, '0') + "1"},
        {"zero p", "p", "00"},
        {"even q", "q", even_q},
        {"q does not divide p - 1", "q", other_q},
        {"q = 1", "q", "01"},
        {"long q", "q", "1" + std::string(128, '0') + "1"},
        {"g = 0", "g", "00"},
        {"g = 1", "g", "01"},
        {"g = p - 1", "g", p_minus_1},
        {"g = p", "g", p},
        {"y = 1", "y", "01"},
        {"y = p - 1", "y", p_minus_1},
        {"y = p", "y", p},
        {"x = 0", "x", "00"},
        {"x = q", "x", q},
    };
    for (const auto &c : kCases) {
        Vector bad = good;
        bad.values[c.name] = c.value;
        const Unit unit = key_of(bad, "xy");
        EXPECT_EQ(verify(unit.get(), TLX_DIGEST_HAS160, message(), Octets(20, 1), Octets(20, 1)),
                  TLX_KCDSA_BAD_KEY)
            << c.what;
        Signature made;
        EXPECT_EQ(sign(unit.get(), TLX_DIGEST_HAS160, message(), made), TLX_KCDSA_BAD_KEY) << c.what;
        EXPECT_EQ(made.r.size() + made.s.size(), 0U) << c.what;
        EXPECT_EQ(get_KCDSA_builds(unit.get()), 0U) << c.what;
    }
    const Unit empty(new_KCDSA());
    EXPECT_EQ(init_KCDSA(empty.get(), 0), TLX_KCDSA_BAD_KEY);
    EXPECT_EQ(gen_KCDSA_key(empty.get()), TLX_KCDSA_BAD_KEY);
    EXPECT_EQ(compute_KCDSA_public(empty.get()), TLX_KCDSA_BAD_KEY);
}

TEST(Kcdsa, RefusesBadArgumentsAndOrder) {
    const LeakCheck leaks;
    const Unit public_key = key_of(smallest(), "y");
    const Unit private_key = key_of(smallest(), "xy");
    std::uint8_t out[TLX_KCDSA_MAX_LENGTH];
    std::uint32_t r_len = 7;
    std::uint32_t s_len = 7;
    EXPECT_EQ(init_KCDSA(nullptr, 0), 1U);
    EXPECT_EQ(init_KCDSA(public_key.get(), 1), 1U) << "signing takes a private key";
    EXPECT_EQ(init_KCDSA(public_key.get(), 2), 1U);
    EXPECT_EQ(init_KCDSA(key_of(smallest(), "").get(), 0), 1U) << "parameters alone";
    EXPECT_EQ(update_KCDSA(public_key.get(), out, 1), 1U) << "before init";
    EXPECT_EQ(final_KCDSA(private_key.get(), out, &r_len, out, &s_len), 1U) << "before init";
    EXPECT_EQ(r_len + s_len, 0U);
    ASSERT_EQ(init_KCDSA(private_key.get(), 1), 0U);
    EXPECT_EQ(verify_KCDSA(private_key.get(), out, 20, out, 20), 1U) << "a signature is under way";
    EXPECT_EQ(update_KCDSA(private_key.get(), nullptr, 1), 1U);
    EXPECT_EQ(update_KCDSA(private_key.get(), nullptr, 0), 0U);
    EXPECT_EQ(final_KCDSA(private_key.get(), out, nullptr, out, &s_len), 1U);
    EXPECT_EQ(final_KCDSA(private_key.get(), out, &r_len, out, &s_len), 0U) << "still under way";
    ASSERT_EQ(init_KCDSA(private_key.get(), 1), 0U);
    ASSERT_EQ(set_KCDSA_private(private_key.get(), number("05").get()), 0U);
    EXPECT_EQ(update_KCDSA(private_key.get(), out, 1), 1U) << "new numbers end what was under way";

    EXPECT_EQ(set_KCDSA_digest(private_key.get(), 0x12345678), 1U);
    EXPECT_EQ(sign_KCDSA_data(private_key.get(), 0x12345678, out, 1, out, &r_len, out, &s_len), 1U);
    EXPECT_EQ(sign_KCDSA_data(public_key.get(), TLX_DIGEST_SHA1, out, 1, out, &r_len, out, &s_len), 1U);
    EXPECT_EQ(sign_KCDSA_data(private_key.get(), TLX_DIGEST_SHA1, nullptr, 1, out, &r_len, out, &s_len), 1U);
    EXPECT_EQ(verify_KCDSA_data(public_key.get(), TLX_DIGEST_SHA1, out, 1, nullptr, 20, out, 20), 1U);
    for (const char *k : {"00", "c3ddd3717bf05b8f8dd725c162f0b9432c6f77fb"}) {
        EXPECT_EQ(sign_KCDSA_with_k(private_key.get(), TLX_DIGEST_SHA1, out, 1, number(k).get(), out, &r_len,
                                    out, &s_len),
                  1U)
            << "k " << k;
    }
    EXPECT_EQ(
        sign_KCDSA_with_k(private_key.get(), TLX_DIGEST_SHA1, out, 1, nullptr, out, &r_len, out, &s_len), 1U)
        << "no k is not a k of the library's choice";
    EXPECT_EQ(set_KCDSA_params(private_key.get(), nullptr, nullptr, nullptr), 1U);
    EXPECT_EQ(gen_KCDSA_params(private_key.get(), 504, 160, TLX_DIGEST_SHA1), 1U);
    EXPECT_EQ(gen_KCDSA_params(private_key.get(), 1024, 520, TLX_DIGEST_SHA1), 1U);
    EXPECT_EQ(gen_KCDSA_params(private_key.get(), 1024, 161, TLX_DIGEST_SHA1), 1U);
    EXPECT_EQ(gen_KCDSA_params(private_key.get(), 1024, 160, 0), 1U);
    EXPECT_EQ(
        cmp_BIGINT(get_KCDSA_number(private_key.get(), TLX_KCDSA_P), number(smallest().values.at("p")).get()),
        0)
        << "a failure leaves the unit as it was";
}

TEST(Kcdsa, GeneratesParametersAndKeys) {
    const LeakCheck leaks;
    const struct {
        std::uint32_t p_bits;
        std::uint32_t q_bits;
        std::uint32_t digest_id;
    } kCases[] = {
        {512, 112, TLX_DIGEST_SHA256}, {640, 160, TLX_DIGEST_HAS160}, {1024, 160, TLX_DIGEST_HAS160}};
    for (const auto &c : kCases) {
        SCOPED_TRACE(c.p_bits);
        const Unit unit = key_of(smallest(), "xy");
        ASSERT_EQ(gen_KCDSA_params(unit.get(), c.p_bits, c.q_bits, c.digest_id), 0U);
        EXPECT_EQ(get_BIGINT_bits(get_KCDSA_number(unit.get(), TLX_KCDSA_P)), c.p_bits);
        EXPECT_EQ(get_BIGINT_bits(get_KCDSA_number(unit.get(), TLX_KCDSA_Q)), c.q_bits);
        EXPECT_EQ(get_KCDSA_number(unit.get(), TLX_KCDSA_X), nullptr);
        EXPECT_EQ(get_KCDSA_number(unit.get(), TLX_KCDSA_Y), nullptr);
        EXPECT_EQ(check_KCDSA_params(unit.get()), 0U);
        ASSERT_EQ(gen_KCDSA_key(unit.get()), 0U);
        Signature made;
        ASSERT_EQ(sign(unit.get(), c.digest_id, message(), made), 0U);
        EXPECT_EQ(verify(unit.get(), c.digest_id, message(), made.r, made.s), 0U);
    }
}

TEST(Kcdsa, ChecksParametersInFull) {
    const LeakCheck leaks;
    for (const Vector &vector : vectors()) {
        EXPECT_EQ(check_KCDSA_params(key_of(vector, "").get()), 0U) << vector.name;
    }
    Vector bad = smallest();
    // 2 is of another order than q.
    bad.values["g"] = "02";
    EXPECT_EQ(check_KCDSA_params(key_of(bad, "").get()), TLX_KCDSA_BAD_KEY);
    // p + 2q: q still divides p - 1, but p is composite.
    const Number p = number(smallest().values.at("p"));
    const Number q = number(smallest().values.at("q"));
    ASSERT_EQ(add_BIGINT(p.get(), p.get(), q.get()), 0U);
    ASSERT_EQ(add_BIGINT(p.get(), p.get(), q.get()), 0U);
    bad = smallest();
    bad.values["p"] = hex(p.get());
    EXPECT_EQ(check_KCDSA_params(key_of(bad, "").get()), TLX_KCDSA_BAD_KEY);
}

TEST(Kcdsa, PreparesItsNumbersOnceAndForgetsThemWhenTheyChange) {
    const LeakCheck leaks;
    const Vector &vector = smallest();
    const Unit unit = key_of(vector, "y");
    const Octets r = octets(vector.values.at("r"));
    const Octets s = octets(vector.values.at("s"));
    EXPECT_EQ(get_KCDSA_builds(unit.get()), 0U);
    for (int i = 0; i < 100; ++i)
        ASSERT_EQ(verify(unit.get(), vector.digest_id, message(), r, s), 0U);
    EXPECT_EQ(get_KCDSA_builds(unit.get()), 1U);
    ASSERT_EQ(set_KCDSA_public(unit.get(), number("05").get()), 0U);
    EXPECT_EQ(get_KCDSA_builds(unit.get()), 0U);
    EXPECT_EQ(verify(unit.get(), vector.digest_id, message(), r, s), TLX_KCDSA_BAD_SIGNATURE);
}

TEST(Kcdsa, OneUnitServesManyThreads) {
    const LeakCheck leaks;
    const Unit unit = key_of(smallest(), "x");
    constexpr unsigned kThreads = 4;
    unsigned good[kThreads] = {};
    std::vector<std::thread> threads;
    for (unsigned &count : good) {
        threads.emplace_back([&unit, &count] {
            for (int i = 0; i < 20; ++i) {
                Signature made;
                if (sign(unit.get(), TLX_DIGEST_HAS160, message(), made) == 0 &&
                    verify(unit.get(), TLX_DIGEST_HAS160, message(), made.r, made.s) == 0) {
                    ++count;
                }
            }
        });
    }
    for (std::thread &thread : threads)
        thread.join();
    for (const unsigned count : good)
        EXPECT_EQ(count, 20U);
    EXPECT_GE(get_KCDSA_builds(unit.get()), 1U);
    EXPECT_LE(get_KCDSA_builds(unit.get()), kThreads);
}

TEST(Kcdsa, CopiesShareNothing) {
    const LeakCheck leaks;
    const Vector &vector = smallest();
    const Octets r = octets(vector.values.at("r"));
    const Octets s = octets(vector.values.at("s"));
    const Unit original = key_of(vector, "xy");
    const Unit copy(dup_KCDSA(original.get()));
    ASSERT_NE(copy, nullptr);
    clean_KCDSA(original.get());
    for (const auto which : {TLX_KCDSA_P, TLX_KCDSA_Q, TLX_KCDSA_G, TLX_KCDSA_X, TLX_KCDSA_Y}) {
        EXPECT_EQ(get_KCDSA_number(original.get(), which), nullptr);
        EXPECT_NE(get_KCDSA_number(copy.get(), which), nullptr);
    }
    EXPECT_EQ(get_KCDSA_number(copy.get(), TLX_KCDSA_NUMBER_COUNT), nullptr);
    EXPECT_EQ(verify(copy.get(), vector.digest_id, message(), r, s), 0U);
    EXPECT_EQ(dup_KCDSA(nullptr), nullptr);
}

TEST(Kcdsa, SurvivesFailingAllocations) {
    const Vector &vector = smallest();
    const Number numbers[] = {number(vector.values.at("p")), number(vector.values.at("q")),
                              number(vector.values.at("g"))};
    const unsigned failures = sweep_failing_allocations([&] {
        const Unit unit(new_KCDSA());
        if (unit == nullptr) return false;
        Signature made;
        for (const std::uint32_t status :
             {set_KCDSA_params(unit.get(), numbers[0].get(), numbers[1].get(), numbers[2].get()),
              gen_KCDSA_key(unit.get()), sign(unit.get(), vector.digest_id, message(), made)}) {
            EXPECT_LE(status, 1U);
            if (status != 0) return false;
        }
        const Unit copy(dup_KCDSA(unit.get()));
        if (copy == nullptr) return false;
        const std::uint32_t status = verify(copy.get(), vector.digest_id, message(), made.r, made.s);
        EXPECT_LE(status, 1U) << "a good signature is never called bad";
        return status == 0;
    });
    EXPECT_GT(failures, 10U);
}

}  // namespace
