// Big numbers as octets and texts, arithmetic beside libcrypto's; random octets.
#include <gtest/gtest.h>
#include <tlxcrypto/bigint.h>
#include <tlxcrypto/random.h>

#include <random>
#include <set>

#include "support/allocation.hpp"
#include "support/crypto_values.hpp"
#include "support/openssl_peer.hpp"

namespace {

using namespace tlx_test;

// With any number of leading zeros, and never with too little room.
void expect_written(const BIGINT *value, const std::string &shortest_hex) {
    const auto shortest = static_cast<std::uint32_t>(shortest_hex.size() / 2);
    const std::uint32_t bits = get_BIGINT_bits(value);
    for (const std::uint32_t more : {0U, 1U, 8U, 30U}) {
        Octets written(shortest + more + 1, 0xEE);
        ASSERT_EQ(BIGINT_to_binary(value, written.data(), shortest + more), 0U);
        EXPECT_EQ(hex(written), std::string(std::size_t{2} * more, '0') + shortest_hex + "EE");
    }
    Octets untouched(1, 0xEE);
    const std::uint32_t short_of_it = bits == 0 ? 0 : (bits - 1) / 8;
    EXPECT_EQ(BIGINT_to_binary(value, untouched.data(), short_of_it), bits == 0 ? 0U : 1U);
    EXPECT_EQ(untouched[0], 0xEE);
}

TEST(Bigint, IsReadAndWrittenAsTextAndOctets) {
    const LeakCheck leaks;
    const struct {
        const char *text;
        std::string hex;
        const char *decimal;
        std::uint32_t bits, der_length, word;
    } kCases[] = {
        {"00000", "00", "0", 0, 1, 0},
        {"a", "0A", "10", 4, 1, 10},
        {"7F", "7F", "127", 7, 1, 127},
        {"080", "80", "128", 8, 2, 128},
        {"fFfFfFfF", "FFFFFFFF", "4294967295", 32, 5, 0xFFFFFFFF},
        {"100000001", "0100000001", "4294967297", 33, 5, 0xFFFFFFFF},
        {"0102030405060708", "0102030405060708", "72623859790382856", 57, 8, 0xFFFFFFFF},
        {"FF0203040506070809", "FF0203040506070809", "4704064702828564121609", 72, 10, 0xFFFFFFFF},
        {"00000000000000000123456789ABCDEF0123", "0123456789ABCDEF0123", "5373003642731685151011", 73, 10,
         0xFFFFFFFF},
    };
    for (const auto &c : kCases) {
        SCOPED_TRACE(c.text);
        const Octets with_zeros = octets("0000" + c.hex);
        const std::uint64_t before = tlx_live_blocks();
        const Number value(binary_to_BIGINT(with_zeros.data(), length(with_zeros)));
        EXPECT_EQ(tlx_live_blocks() - before, 1U) << "decoding takes one allocation";
        EXPECT_EQ(cmp_BIGINT(value.get(), number(c.text).get()), 0);
        EXPECT_EQ(hex(value.get()), c.hex);
        EXPECT_EQ(taken(BIGINT_to_decimal(value.get())), c.decimal);
        EXPECT_EQ(get_BIGINT_bits(value.get()), c.bits);
        EXPECT_EQ(get_BIGINT_der_length(value.get()), c.der_length);
        EXPECT_EQ(get_BIGINT_word(value.get()), c.word);
        EXPECT_EQ(is_BIGINT_zero(value.get()), c.bits == 0 ? 1 : 0);
        expect_written(value.get(), c.hex);
    }
    for (const char *text : {"", "12G4", "-1", "1 2"})
        EXPECT_EQ(number(text), nullptr) << text;
    EXPECT_EQ(taken(BIGINT_to_hex(nullptr)), "null");
    EXPECT_EQ(taken(BIGINT_to_decimal(nullptr)), "null");
    EXPECT_EQ(get_BIGINT_word(nullptr), 0xFFFFFFFFU);
    EXPECT_EQ(cmp_BIGINT(nullptr, number("0").get()), -1) << "below every number";
}

std::uint32_t quotient(BIGINT *result, const BIGINT *a, const BIGINT *b) {
    return div_BIGINT(result, nullptr, a, b);
}
std::uint32_t remainder(BIGINT *result, const BIGINT *a, const BIGINT *b) {
    return div_BIGINT(nullptr, result, a, b);
}
std::uint32_t shift_left(BIGINT *result, const BIGINT *a, const BIGINT *b) {
    return shl_BIGINT(result, a, get_BIGINT_word(b));
}
std::uint32_t shift_right(BIGINT *result, const BIGINT *a, const BIGINT *b) {
    return shr_BIGINT(result, a, get_BIGINT_word(b));
}
std::uint32_t copy(BIGINT *result, const BIGINT *a, const BIGINT * /*b*/) {
    return copy_BIGINT(result, a);
}

using Binary = std::uint32_t (*)(BIGINT *, const BIGINT *, const BIGINT *);
constexpr std::pair<const char *, Binary> kBinary[] = {
    {"+", add_BIGINT}, {"-", sub_BIGINT}, {"*", mul_BIGINT},  {"/", quotient},
    {"%", remainder},  {"%", mod_BIGINT}, {"<<", shift_left}, {">>", shift_right}};
using Modular = std::uint32_t (*)(BIGINT *, const BIGINT *, const BIGINT *, const BIGINT *);
constexpr std::pair<const char *, Modular> kModular[] = {
    {"+%", mod_add_BIGINT}, {"-%", mod_sub_BIGINT}, {"*%", mod_mul_BIGINT}, {"^%", mod_exp_BIGINT}};

// Numbers of many lengths, with runs of ones and zeros, where carries go far.
std::string random_hex(std::mt19937 &random) {
    std::string text = "1";
    for (std::size_t runs = random() % 5; runs != 0; --runs)
        text += std::string(random() % 24, "0F7A"[random() % 4]);
    return random() % 16 == 0 ? "0" : text;
}

TEST(Bigint, CalculatesAsLibcryptoDoes) {
    const LeakCheck leaks;
    std::mt19937 random(64);
    for (int round = 0; round < 500; ++round) {
        const std::string left = random_hex(random);
        const std::string right = random_hex(random);
        const std::string modulus = random_hex(random) + "12"[random() % 2];
        const std::string difference = openssl::calculate("-", left, right);
        const int order = difference[0] == '-' ? -1 : (difference == "00" ? 0 : 1);
        ASSERT_EQ(cmp_BIGINT(number(left).get(), number(right).get()), order) << left << ' ' << right;
        for (const auto &[name, operation] : kBinary) {
            const bool shift = name[0] == '<' || name[0] == '>';
            const std::string other = shift ? std::string(1, "0134789ABCF"[random() % 11]) + "0" : right;
            std::string expected = openssl::calculate(name, left, other);
            if (expected[0] == '-') expected = "failed";
            // The result is a number of its own, then the first operand, then the second.
            for (int which = 0; which < 3; ++which) {
                const Number numbers[] = {number("DEAD"), number(left), number(other)};
                BIGINT *result = numbers[which].get();
                const std::string before = hex(result);
                const bool failed = operation(result, numbers[1].get(), numbers[2].get()) != 0;
                ASSERT_EQ(failed ? "failed" : hex(result), expected) << left << ' ' << name << ' ' << other;
                ASSERT_TRUE(!failed || hex(result) == before) << "a failure leaves the result alone";
            }
        }
        for (const auto &[name, operation] : kModular) {
            const Number result = number("0");
            ASSERT_EQ(operation(result.get(), number(left).get(), number(right).get(), number(modulus).get()),
                      0U);
            ASSERT_EQ(hex(result.get()), openssl::calculate(name, left, right, modulus))
                << left << ' ' << name << ' ' << right << " mod " << modulus;
        }
    }
}

TEST(Bigint, CalculatesAtTheEdgesAndRefusesWhatIsNotDefined) {
    const LeakCheck leaks;
    const struct {
        Binary operation;
        const char *a, *b, *result;
    } kCases[] = {
        {add_BIGINT, "FFFFFFFFFFFFFFFF", "1", "010000000000000000"},
        {shift_left, "0", "FFFFFFFF", "00"},
        {shift_left, "A", "FFFFFFFF", "77"},
        {mod_inverse_BIGINT, "3", "B", "04"},
        {mod_inverse_BIGINT, "5", "A", "77"},  // 5 and 10 share a factor
        {mod_inverse_BIGINT, "0", "A", "77"},
        {mod_inverse_BIGINT, "5", "0", "77"},
        {quotient, "5", "0", "77"},
        {mod_BIGINT, "5", "0", "77"},
    };
    for (const auto &c : kCases) {
        const Number result = number("77");
        const std::uint32_t status = c.operation(result.get(), number(c.a).get(), number(c.b).get());
        EXPECT_EQ(hex(result.get()), c.result) << c.a << ' ' << c.b;
        EXPECT_EQ(status, c.result == std::string("77") ? 1U : 0U) << c.a << ' ' << c.b;
    }
    const Number five = number("5");
    const Number result = number("77");
    BIGINT *r = result.get();
    EXPECT_EQ(div_BIGINT(r, r, five.get(), five.get()), 1U) << "two values do not fit one number";
    EXPECT_EQ(random_BIGINT(r, number("0").get()), 1U);
    for (const auto &[name, operation] : kModular) {
        EXPECT_EQ(operation(r, five.get(), five.get(), number("0").get()), 1U) << name;
        EXPECT_EQ(operation(r, five.get(), five.get(), nullptr), 1U) << name;
    }
    for (const auto &[name, operation] : kBinary) {
        EXPECT_EQ(operation(r, nullptr, five.get()), 1U) << name;
        EXPECT_EQ(operation(nullptr, five.get(), five.get()), 1U) << name;
    }
    EXPECT_EQ(hex(r), "77") << "failures leave the result alone";
    EXPECT_TRUE(openssl::error_queue_is_empty()) << "the queue belongs to the host program";

    const Number a = number("123456789ABCDEF0123456789");
    ASSERT_EQ(div_BIGINT(a.get(), r, a.get(), number("1000000000000").get()), 0U);
    EXPECT_EQ(hex(a.get()) + " rest " + hex(r), "0123456789ABCD rest EF0123456789");
}

TEST(Bigint, TellsPrimes) {
    // 2^127 - 1; 561, a Carmichael number.
    for (const char *prime : {"2", "7FFFFFFFFFFFFFFFFFFFFFFFFFFFFFFF"})
        EXPECT_EQ(is_BIGINT_prime(number(prime).get()), 1) << prime;
    for (const char *other : {"0", "1", "231", "7FFFFFFFFFFFFFFFFFFFFFFFFFFFFFFD"})
        EXPECT_EQ(is_BIGINT_prime(number(other).get()), 0) << other;
}

TEST(Random, DrawsNumbersBelowTheLimitAndFillsBuffers) {
    const LeakCheck leaks;
    const Number value = number("0");
    std::set<std::uint32_t> seen;
    for (int i = 0; i < 500; ++i) {
        ASSERT_EQ(random_BIGINT(value.get(), number("5").get()), 0U);
        seen.insert(get_BIGINT_word(value.get()));
    }
    EXPECT_EQ(seen, (std::set<std::uint32_t>{0, 1, 2, 3, 4}));

    Octets octets(1000, 0);
    ASSERT_EQ(RAND_BYTES(octets.data(), 999), 0U);
    EXPECT_NE(Octets(octets.end() - 33, octets.end()), Octets(33, 0));
    EXPECT_EQ(octets.back(), 0);
    EXPECT_EQ(RAND_BYTES(nullptr, 1), 1U);
}

TEST(Bigint, MeetsEveryFailingAllocation) {
    const Number a = number(std::string(128, 'F'));
    const Number b = number(std::string(129, 'F'));
    const Number c = number(std::string(140, 'F'));
    const Number hundred = number("64");
    const struct {
        Binary operation;
        const Number &a, &b;
    } kCases[] = {{copy, a, b},
                  {add_BIGINT, a, b},
                  {sub_BIGINT, b, a},
                  {shift_left, a, hundred},
                  {shift_right, a, hundred},
                  {mul_BIGINT, a, b},
                  {remainder, a, c}};
    for (const auto &each : kCases) {
        const unsigned failures = sweep_failing_allocations([&each] {
            const Number result = number("77");
            if (result == nullptr) return false;
            if (each.operation(result.get(), each.a.get(), each.b.get()) == 0) return true;
            EXPECT_EQ(get_BIGINT_word(result.get()), 0x77U) << "the result is left alone";
            return false;
        });
        EXPECT_EQ(failures, 2U) << "the number, and its wider limbs";
    }
}

}  // namespace
