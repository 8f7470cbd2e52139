// KCDSA: the published vectors, what a verification refuses, keys and parameters of our own, threads.
#include <gtest/gtest.h>
#include <tlxcrypto/digest.h>
#include <tlxcrypto/kcdsa.h>

#include <fstream>
#include <map>
#include <string>
#include <tuple>
#include <vector>

#include "support/allocation.hpp"
#include "support/crypto_values.hpp"
#include "support/libcrypto_faults.hpp"
#include "support/threads.hpp"

namespace {

using namespace tlx_test;
using Unit = Owned<KCDSA>;

const std::string kText = "This is a test message for KCDSA usage!";
const Octets kMessage(kText.begin(), kText.end());

struct Vector {
    std::string name;
    std::uint32_t digest_id = 0;
    std::map<char, std::string> values;

    const std::string &operator[](char number) const { return values.at(number); }
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
                read.push_back({line, digests.at(line.substr(line.size() - 7, 6)), {}});
            } else {
                read.back().values[line[0]] = line.substr(4);
            }
        }
        return read;
    }();
    return all;
}

// The vector's parameters with the keys named.
Unit key_of(const Vector &vector, const std::string &keys) {
    Unit unit(new_KCDSA());
    EXPECT_EQ(set_KCDSA_params(unit.get(), number(vector['p']).get(), number(vector['q']).get(),
                               number(vector['g']).get()),
              0U);
    if (keys.find('x') != std::string::npos) {
        EXPECT_EQ(set_KCDSA_private(unit.get(), number(vector['x']).get()), 0U);
    }
    if (keys.find('y') != std::string::npos) {
        EXPECT_EQ(set_KCDSA_public(unit.get(), number(vector['y']).get()), 0U);
    }
    return unit;
}

struct Signature {
    Octets r = Octets(TLX_KCDSA_MAX_LENGTH);
    Octets s = Octets(TLX_KCDSA_MAX_LENGTH);
    std::uint32_t r_len = 0;
    std::uint32_t s_len = 0;

    std::uint32_t trim(std::uint32_t status) {
        r.resize(r_len);
        s.resize(s_len);
        return status;
    }
};

std::uint32_t sign(const KCDSA *unit, std::uint32_t digest_id, Signature &made) {
    return made.trim(sign_KCDSA_data(unit, digest_id, kMessage.data(), length(kMessage), made.r.data(),
                                     &made.r_len, made.s.data(), &made.s_len));
}

std::uint32_t verify(const KCDSA *unit, std::uint32_t digest_id, const Octets &r, const Octets &s) {
    return verify_KCDSA_data(unit, digest_id, kMessage.data(), length(kMessage), r.data(), length(r),
                             s.data(), length(s));
}

class Kcdsa : public ::testing::Test {
    LeakCheck leaks_;

  protected:
    const Vector &vector_ = vectors().back();  // the one of the smallest numbers
    const Octets r_ = octets(vector_['r']);
    const Octets s_ = octets(vector_['s']);
    const Unit unit_ = key_of(vector_, "xy");
    const Unit public_key_ = key_of(vector_, "y");
};

TEST_F(Kcdsa, SignsAndVerifiesThePublishedVectors) {
    ASSERT_EQ(vectors().size(), 5U);
    for (const Vector &vector : vectors()) {
        SCOPED_TRACE(vector.name);
        const Unit key = key_of(vector, "x");
        EXPECT_EQ(check_KCDSA_params(key_of(vector, "xy").get()), 0U);
        ASSERT_EQ(compute_KCDSA_public(key.get()), 0U);
        EXPECT_EQ(cmp_BIGINT(get_KCDSA_number(key.get(), TLX_KCDSA_Y), number(vector['y']).get()), 0);
        Signature made;
        EXPECT_EQ(made.trim(sign_KCDSA_with_k(key.get(), vector.digest_id, kMessage.data(), length(kMessage),
                                              number(vector['k']).get(), made.r.data(), &made.r_len,
                                              made.s.data(), &made.s_len)),
                  0U);
        EXPECT_EQ(made.r, octets(vector['r']));
        EXPECT_EQ(made.s, octets(vector['s']));
        EXPECT_EQ(verify(key_of(vector, "y").get(), vector.digest_id, made.r, made.s), 0U);
    }
}

TEST_F(Kcdsa, StreamsWithEveryDigestAndCutsItToQ) {
    const struct {
        std::size_t vector;
        std::uint32_t digest_id, r_length, s_length;
    } kCases[] = {
        {4, TLX_DIGEST_MD5, 16, 20},    {4, TLX_DIGEST_SHA1, 20, 20},   {4, TLX_DIGEST_SHA512, 20, 20},
        {1, TLX_DIGEST_HAS160, 20, 28}, {2, TLX_DIGEST_SHA384, 32, 32},
    };
    for (const auto &c : kCases) {
        SCOPED_TRACE(c.digest_id);
        // The private key alone: the public one, which the hash begins with, follows from it.
        const Unit owned = key_of(vectors()[c.vector], "x");
        KCDSA *unit = owned.get();
        EXPECT_EQ(get_KCDSA_length(unit), c.s_length);
        ASSERT_EQ(set_KCDSA_digest(unit, c.digest_id), 0U);
        Signature made;
        ASSERT_EQ(init_KCDSA(unit, 1), 0U);
        for (const std::uint8_t octet : kMessage)
            ASSERT_EQ(update_KCDSA(unit, &octet, 1), 0U);
        EXPECT_EQ(made.trim(final_KCDSA(unit, made.r.data(), &made.r_len, made.s.data(), &made.s_len)), 0U);
        EXPECT_EQ(made.r_len, c.r_length);
        EXPECT_EQ(made.s_len, c.s_length);
        EXPECT_EQ(verify(unit, c.digest_id, made.r, made.s), 0U);

        ASSERT_EQ(init_KCDSA(unit, 0), 0U);
        ASSERT_EQ(update_KCDSA(unit, kMessage.data(), length(kMessage)), 0U);
        EXPECT_EQ(final_KCDSA(unit, made.r.data(), &made.r_len, made.s.data(), &made.s_len), 0U);
        ASSERT_EQ(init_KCDSA(unit, 0), 0U);
        EXPECT_EQ(verify_KCDSA(unit, made.r.data(), made.r_len, made.s.data(), made.s_len),
                  TLX_KCDSA_BAD_SIGNATURE)
            << "another message";
    }
}

TEST_F(Kcdsa, RefusesEveryOtherSignature) {
    const Octets both = octets(vector_['r'] + vector_['s']);
    for (std::size_t bit = 0; bit < 8 * both.size(); ++bit) {
        Octets changed = both;
        changed[bit / 8] ^= static_cast<std::uint8_t>(1U << bit % 8);
        EXPECT_EQ(verify(public_key_.get(), vector_.digest_id, Octets(changed.begin(), changed.begin() + 20),
                         Octets(changed.begin() + 20, changed.end())),
                  TLX_KCDSA_BAD_SIGNATURE)
            << bit;
    }
    // s + q is the same exponent of y, yet no signature.
    const Number shifted = number("00");
    ASSERT_EQ(add_BIGINT(shifted.get(), number(vector_['s']).get(), number(vector_['q']).get()), 0U);
    const struct {
        const char *what;
        Octets r, s;
    } kCases[] = {
        {"s + q", r_, octets(hex(shifted.get()))},
        {"s = q", r_, octets(vector_['q'])},
        {"s = 0", r_, Octets(20)},
        {"s far too long", r_, Octets(5000, 0xFF)},
        {"r = 0", Octets(20), s_},
        {"r too long", octets("00" + vector_['r']), s_},
        {"r too short", Octets(r_.begin(), r_.end() - 1), s_},
    };
    for (const auto &c : kCases)
        EXPECT_EQ(verify(public_key_.get(), vector_.digest_id, c.r, c.s), TLX_KCDSA_BAD_SIGNATURE) << c.what;
    EXPECT_EQ(verify(public_key_.get(), TLX_DIGEST_SHA1, r_, s_), TLX_KCDSA_BAD_SIGNATURE)
        << "another digest";
    EXPECT_EQ(verify(public_key_.get(), vector_.digest_id, r_, octets("0000" + vector_['s'])), 0U)
        << "leading zeros";
}

TEST_F(Kcdsa, RefusesNumbersThatMakeNoKey) {
    const Vector &good = vector_;
    const auto ending = [&good](char which, char digit) {
        std::string value = good[which];
        value.back() = digit;
        return value;
    };
    const struct {
        const char *what;
        char name;
        std::string value;
    } kCases[] = {
        {"even p", 'p', ending('p', '8')},
        {"small p", 'p', std::string(126, 'f')},
        {"huge p", 'p', "1" + std::string(2048, '0') + "1"},
        {"zero p", 'p', "00"},
        {"even q", 'q', ending('q', 'a')},
        {"q does not divide p - 1", 'q', ending('q', 'd')},
        {"q = 1", 'q', "01"},
        {"long q", 'q', "1" + std::string(128, '0') + "1"},
        {"g = 0", 'g', "00"},
        {"g = 1", 'g', "01"},
        {"g = p - 1", 'g', ending('p', 'e')},
        {"g = p", 'g', good['p']},
        {"y = 1", 'y', "01"},
        {"y = p - 1", 'y', ending('p', 'e')},
        {"y = p", 'y', good['p']},
        {"g is of another order than q", 'g', "02"},
        {"y belongs to another x", 'y', good['g']},
        {"x = 0", 'x', "00"},
        {"x = q", 'x', good['q']},
    };
    for (const auto &c : kCases) {
        Vector bad = good;
        bad.values[c.name] = c.value;
        const Unit unit = key_of(bad, "xy");
        EXPECT_EQ(verify(unit.get(), TLX_DIGEST_HAS160, Octets(20, 1), Octets(20, 1)), TLX_KCDSA_BAD_KEY)
            << c.what;
        Signature made;
        EXPECT_EQ(sign(unit.get(), TLX_DIGEST_HAS160, made), TLX_KCDSA_BAD_KEY) << c.what;
        EXPECT_EQ(made.r_len + made.s_len, 0U) << c.what;
        EXPECT_EQ(get_KCDSA_builds(unit.get()), 0U) << c.what;
    }
    const Unit empty(new_KCDSA());
    EXPECT_EQ(init_KCDSA(empty.get(), 0), TLX_KCDSA_BAD_KEY);
    EXPECT_EQ(gen_KCDSA_key(empty.get()), TLX_KCDSA_BAD_KEY);
    EXPECT_EQ(compute_KCDSA_public(empty.get()), TLX_KCDSA_BAD_KEY);
}

TEST_F(Kcdsa, ChecksInFullWhatVerifyingTakesOnTrust) {
    const Number p_plus_2q = number(vector_['p']);
    for (int i = 0; i < 2; ++i)
        ASSERT_EQ(add_BIGINT(p_plus_2q.get(), p_plus_2q.get(), number(vector_['q']).get()), 0U);
    const struct {
        const char *what;
        char name;
        std::string value;
    } kCases[] = {
        {"g is of another order than q", 'g', "02"},
        {"y is of another order than q", 'y', "02"},
        {"p is composite", 'p', hex(p_plus_2q.get())},
    };
    for (const auto &c : kCases) {
        Vector bad = vector_;
        bad.values[c.name] = c.value;
        const Unit unit = key_of(bad, "y");
        EXPECT_EQ(check_KCDSA_params(unit.get()), TLX_KCDSA_BAD_KEY) << c.what;
        EXPECT_EQ(verify(unit.get(), TLX_DIGEST_HAS160, r_, s_), TLX_KCDSA_BAD_SIGNATURE) << c.what;
    }
}

TEST_F(Kcdsa, RefusesBadArgumentsAndOrder) {
    KCDSA *key = unit_.get();
    std::uint8_t out[TLX_KCDSA_MAX_LENGTH];
    std::uint32_t r_len = 7;
    std::uint32_t s_len = 7;
    EXPECT_EQ(init_KCDSA(public_key_.get(), 1), 1U) << "signing takes a private key";
    EXPECT_EQ(init_KCDSA(key, 2), 1U) << "no direction";
    EXPECT_EQ(init_KCDSA(key_of(vector_, "").get(), 0), 1U) << "parameters alone";
    EXPECT_EQ(update_KCDSA(key, out, 1), 1U) << "before init";
    EXPECT_EQ(final_KCDSA(key, out, &r_len, out, &s_len), 1U) << "before init";
    EXPECT_EQ(r_len + s_len, 0U);
    ASSERT_EQ(init_KCDSA(key, 1), 0U);
    EXPECT_EQ(verify_KCDSA(key, out, 20, out, 20), 1U) << "a signature is under way";
    EXPECT_EQ(final_KCDSA(key, out, nullptr, out, &s_len), 1U);
    EXPECT_EQ(final_KCDSA(key, out, &r_len, out, &s_len), 0U) << "still under way";
    ASSERT_EQ(init_KCDSA(key, 1), 0U);
    ASSERT_EQ(set_KCDSA_private(key, number(vector_['x']).get()), 0U);
    EXPECT_EQ(update_KCDSA(key, out, 1), 1U) << "new numbers end what was under way";

    Signature made;
    EXPECT_EQ(set_KCDSA_digest(key, 0x12345678), 1U);
    EXPECT_EQ(sign(key, 0x12345678, made), 1U);
    EXPECT_EQ(sign(public_key_.get(), TLX_DIGEST_SHA1, made), 1U);
    // No k is not a k of the library's choice; 0; q.
    for (const std::string &k : {std::string(), std::string("00"), vector_['q']}) {
        EXPECT_EQ(sign_KCDSA_with_k(key, TLX_DIGEST_SHA1, out, 1, number(k).get(), out, &r_len, out, &s_len),
                  1U)
            << "k " << k;
    }
    EXPECT_EQ(set_KCDSA_params(key, nullptr, nullptr, nullptr), 1U);
    for (const auto &[p_bits, q_bits] : {std::pair(504U, 160U), {1024U, 520U}, {1024U, 161U}})
        EXPECT_EQ(gen_KCDSA_params(key, p_bits, q_bits, TLX_DIGEST_SHA1), 1U) << p_bits << ' ' << q_bits;
    EXPECT_EQ(gen_KCDSA_params(key, 1024, 160, 0), 1U);
    EXPECT_EQ(get_KCDSA_length(key), 20U) << "the failures left the unit as it was";
}

TEST_F(Kcdsa, GeneratesParametersAndKeys) {
    for (const auto &[p_bits, q_bits, digest_id] : {std::tuple(512U, 112U, TLX_DIGEST_SHA256),
                                                    {640U, 160U, TLX_DIGEST_HAS160},
                                                    {1024U, 160U, TLX_DIGEST_HAS160}}) {
        SCOPED_TRACE(p_bits);
        ASSERT_EQ(gen_KCDSA_params(unit_.get(), p_bits, q_bits, digest_id), 0U);
        EXPECT_EQ(get_BIGINT_bits(get_KCDSA_number(unit_.get(), TLX_KCDSA_P)), p_bits);
        EXPECT_EQ(get_BIGINT_bits(get_KCDSA_number(unit_.get(), TLX_KCDSA_Q)), q_bits);
        EXPECT_EQ(get_KCDSA_number(unit_.get(), TLX_KCDSA_X), nullptr);
        EXPECT_EQ(get_KCDSA_number(unit_.get(), TLX_KCDSA_Y), nullptr);
        EXPECT_EQ(check_KCDSA_params(unit_.get()), 0U);
        ASSERT_EQ(gen_KCDSA_key(unit_.get()), 0U);
        Signature made;
        ASSERT_EQ(sign(unit_.get(), digest_id, made), 0U);
        EXPECT_EQ(verify(unit_.get(), digest_id, made.r, made.s), 0U);
    }
}

TEST_F(Kcdsa, PreparesItsNumbersOnceAndForgetsThemWhenTheyChange) {
    for (int i = 0; i < 100; ++i)
        ASSERT_EQ(verify(public_key_.get(), vector_.digest_id, r_, s_), 0U);
    EXPECT_EQ(get_KCDSA_builds(public_key_.get()), 1U);
    const Unit copy(dup_KCDSA(public_key_.get()));
    ASSERT_EQ(set_KCDSA_public(public_key_.get(), number("05").get()), 0U);
    EXPECT_EQ(get_KCDSA_builds(public_key_.get()), 0U);
    EXPECT_EQ(verify(public_key_.get(), vector_.digest_id, r_, s_), TLX_KCDSA_BAD_SIGNATURE);
    clean_KCDSA(public_key_.get());
    EXPECT_EQ(get_KCDSA_number(public_key_.get(), TLX_KCDSA_P), nullptr);
    EXPECT_EQ(verify(copy.get(), vector_.digest_id, r_, s_), 0U) << "the copy shares nothing";
    EXPECT_EQ(get_KCDSA_number(copy.get(), TLX_KCDSA_NUMBER_COUNT), nullptr);
    EXPECT_EQ(dup_KCDSA(nullptr), nullptr);
}

TEST_F(Kcdsa, OneUnitServesManyThreads) {
    // Without the public key, which the first thread computes.
    const Unit unit = key_of(vector_, "x");
    const auto sign_and_verify = [&unit] {
        for (int i = 0; i < 20; ++i) {
            Signature made;
            if (sign(unit.get(), TLX_DIGEST_HAS160, made) != 0) return false;
            if (verify(unit.get(), TLX_DIGEST_HAS160, made.r, made.s) != 0) return false;
        }
        return true;
    };
    EXPECT_EQ(successes_on_threads(4, sign_and_verify), 4U);
    EXPECT_GE(get_KCDSA_builds(unit.get()), 1U);
    EXPECT_LE(get_KCDSA_builds(unit.get()), 4U);
}

TEST_F(Kcdsa, SurvivesFailingAllocations) {
    const Number numbers[] = {number(vector_['p']), number(vector_['q']), number(vector_['g'])};
    const unsigned failures = sweep_failing_allocations([&] {
        const Unit unit(new_KCDSA());
        if (unit == nullptr) return false;
        Signature made;
        for (const std::uint32_t status :
             {set_KCDSA_params(unit.get(), numbers[0].get(), numbers[1].get(), numbers[2].get()),
              gen_KCDSA_key(unit.get()), sign(unit.get(), vector_.digest_id, made)}) {
            EXPECT_LE(status, 1U);
            if (status != 0) return false;
        }
        const Unit copy(dup_KCDSA(unit.get()));
        if (copy == nullptr) return false;
        const std::uint32_t status = verify(copy.get(), vector_.digest_id, made.r, made.s);
        EXPECT_LE(status, 1U) << "a good signature is never called bad";
        return status == 0;
    });
    EXPECT_GT(failures, 10U);
    const auto verify_anew = [this] { return verify(key_of(vector_, "y").get(), vector_.digest_id, r_, s_); };
    EXPECT_EQ(sweep_failing_libcrypto_allocations(verify_anew) > 10, kSharesLibcrypto);
}

}  // namespace
