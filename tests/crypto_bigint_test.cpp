#include <gtest/gtest.h>
#include <tlxcrypto/bigint.h>

#include <cstdint>
#include <functional>
#include <random>
#include <set>
#include <string>

#include "support/allocation.hpp"
#include "support/crypto_values.hpp"
#include "support/openssl_peer.hpp"

namespace {

using namespace tlx_test;

std::string repeated(const std::string &digits, std::size_t count) {
    std::string text;
    while (count-- != 0)
        text += digits;
    return text;
}

TEST(Bigint, ReadsAndWritesOctets) {
    const LeakCheck leaks;
    const struct {
        Octets octets;
        const char *hex;
        std::uint32_t bits;
        std::uint32_t der_length;
    } kCases[] = {
        {{}, "00", 0, 1},
        {{0, 0, 0}, "00", 0, 1},
        {{0x7F}, "7F", 7, 1},
        {{0x80}, "80", 8, 2},
        {{0, 0, 1}, "01", 1, 1},
        {{1, 2, 3, 4, 5, 6, 7, 8}, "0102030405060708", 57, 8},
        {{0xFF, 2, 3, 4, 5, 6, 7, 8, 9}, "FF0203040506070809", 72, 10},
        {Octets(20, 0xA5), "A5A5A5A5A5A5A5A5A5A5A5A5A5A5A5A5A5A5A5A5", 160, 21},
    };
    for (const auto &[octets, text, bits, der_length] : kCases) {
        const std::uint64_t before = tlx_live_blocks();
        const Number value(binary_to_BIGINT(octets.data(), length(octets)));
        EXPECT_EQ(tlx_live_blocks() - before, 1U) << "decoding takes one allocation";
        EXPECT_EQ(hex(value.get()), text);
        EXPECT_EQ(get_BIGINT_bits(value.get()), bits) << text;
        EXPECT_EQ(get_BIGINT_der_length(value.get()), der_length) << text;
        EXPECT_EQ(is_BIGINT_zero(value.get()), bits == 0 ? 1 : 0);
        const std::uint32_t shortest = (bits + 7) / 8;
        for (const std::uint32_t len : {shortest, der_length, shortest + 7, shortest + 8, shortest + 30}) {
            Octets written(len + 1, 0xEE);
            ASSERT_EQ(BIGINT_to_binary(value.get(), written.data(), len), 0U) << text << " into " << len;
            Octets expected(len - shortest, 0);
            expected.insert(expected.end(), octets.end() - shortest, octets.end());
            expected.push_back(0xEE);
            EXPECT_EQ(written, expected) << text << " into " << len;
        }
        if (shortest == 0) continue;
        Octets untouched(shortest, 0xEE);
        EXPECT_EQ(BIGINT_to_binary(value.get(), untouched.data(), shortest - 1), 1U) << text;
        EXPECT_EQ(untouched, Octets(shortest, 0xEE));
    }
}

TEST(Bigint, ReadsAndWritesText) {
    const LeakCheck leaks;
    const struct {
        std::string text;
        std::string hex;
        std::string decimal;
    } kCases[] = {
        {"00000", "00", "0"},
        {"a", "0A", "10"},
        {"0FfF", "0FFF", "4095"},
        {"10000000000000000", "010000000000000000", "18446744073709551616"},
        {repeated("0", 40) + "123456789ABCDEF0123", "0123456789ABCDEF0123", "5373003642731685151011"},
        {"", "null", "null"},
        {"12G4", "null", "null"},
        {"-1", "null", "null"},
        {"1 2", "null", "null"},
    };
    for (const auto &[text, in_hex, in_decimal] : kCases) {
        const Number value = number(text);
        EXPECT_EQ(hex(value.get()), in_hex) << text;
        EXPECT_EQ(taken(BIGINT_to_decimal(value.get())), in_decimal) << text;
    }
}

TEST(Bigint, ConvertsWords) {
    const LeakCheck leaks;
    const Number value = number(repeated("F", 100));
    EXPECT_EQ(get_BIGINT_word(value.get()), 0xFFFFFFFFU) << "does not fit";
    for (const std::uint32_t word : {0U, 1U, 0x80000000U, 0xFFFFFFFFU}) {
        ASSERT_EQ(set_BIGINT_word(value.get(), word), 0U);
        EXPECT_EQ(get_BIGINT_word(value.get()), word);
        EXPECT_EQ(is_BIGINT_zero(value.get()), word == 0 ? 1 : 0);
    }
    EXPECT_EQ(get_BIGINT_word(number("100000001").get()), 0xFFFFFFFFU);
}

TEST(Bigint, Compares) {
    const LeakCheck leaks;
    // In rising order.
    const char *kOrdered[] = {
        nullptr, "0", "1", "FFFFFFFFFFFFFFFF", "10000000000000000", "10000000000000001", "20000000000000000"};
    for (std::size_t i = 0; i < std::size(kOrdered); ++i) {
        for (std::size_t j = 0; j < std::size(kOrdered); ++j) {
            const Number a(hex_to_BIGINT(kOrdered[i]));
            const Number b(hex_to_BIGINT(kOrdered[j]));
            EXPECT_EQ(cmp_BIGINT(a.get(), b.get()), i < j ? -1 : (i > j ? 1 : 0)) << i << ' ' << j;
        }
    }
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

constexpr struct {
    const char *name;
    std::uint32_t (*operation)(BIGINT *, const BIGINT *, const BIGINT *);
} kBinary[] = {{"+", add_BIGINT}, {"-", sub_BIGINT}, {"*", mul_BIGINT},  {"/", quotient},
               {"%", remainder},  {"%", mod_BIGINT}, {"<<", shift_left}, {">>", shift_right}};
constexpr struct {
    const char *name;
    std::uint32_t (*operation)(BIGINT *, const BIGINT *, const BIGINT *, const BIGINT *);
} kModular[] = {
    {"+%", mod_add_BIGINT}, {"-%", mod_sub_BIGINT}, {"*%", mod_mul_BIGINT}, {"^%", mod_exp_BIGINT}};

// Numbers of many lengths, with runs of ones and zeros, where carries go far.
std::string random_hex(std::mt19937 &random) {
    std::string text = "1";
    for (std::size_t runs = random() % 5; runs != 0; --runs) {
        text += repeated(std::string(1, "0F7A"[random() % 4]), random() % 24);
    }
    return random() % 16 == 0 ? "0" : text;
}

TEST(Bigint, CalculatesAsLibcryptoDoes) {
    const LeakCheck leaks;
    std::mt19937 random(64);
    for (int round = 0; round < 500; ++round) {
        const std::string left = random_hex(random);
        const std::string right = random_hex(random);
        const std::string modulus = random_hex(random) + "1";
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
            const std::uint32_t status =
                operation(result.get(), number(left).get(), number(right).get(), number(modulus).get());
            ASSERT_EQ(status, 0U);
            ASSERT_EQ(hex(result.get()), openssl::calculate(name, left, right, modulus))
                << left << ' ' << name << ' ' << right << " mod " << modulus;
        }
    }
}

TEST(Bigint, RefusesWhatIsNotDefined) {
    const LeakCheck leaks;
    const Number zero = number("0");
    const Number five = number("5");
    const Number ten = number("A");
    const Number result = number("77");
    BIGINT *r = result.get();
    EXPECT_EQ(div_BIGINT(r, r, ten.get(), five.get()), 1U) << "two values do not fit one number";
    EXPECT_EQ(div_BIGINT(r, nullptr, five.get(), zero.get()), 1U);
    EXPECT_EQ(mod_BIGINT(r, five.get(), zero.get()), 1U);
    EXPECT_EQ(mod_inverse_BIGINT(r, five.get(), ten.get()), 1U) << "5 and 10 share a factor";
    EXPECT_EQ(mod_inverse_BIGINT(r, zero.get(), ten.get()), 1U);
    EXPECT_EQ(mod_inverse_BIGINT(r, five.get(), zero.get()), 1U);
    EXPECT_EQ(random_BIGINT(r, zero.get()), 1U);
    EXPECT_EQ(shl_BIGINT(r, ten.get(), 0xFFFFFFFFU), 1U) << "too large";
    for (const auto &[name, operation] : kModular) {
        EXPECT_EQ(operation(r, five.get(), ten.get(), zero.get()), 1U) << name;
        EXPECT_EQ(operation(r, five.get(), ten.get(), nullptr), 1U) << name;
    }
    for (const auto &[name, operation] : kBinary) {
        EXPECT_EQ(operation(r, nullptr, five.get()), 1U) << name;
        EXPECT_EQ(operation(nullptr, ten.get(), five.get()), 1U) << name;
    }
    EXPECT_EQ(hex(r), "77") << "failures leave the result alone";
    EXPECT_TRUE(openssl::error_queue_is_empty()) << "the queue belongs to the host program";
}

TEST(Bigint, CalculatesAtTheEdges) {
    const LeakCheck leaks;
    const Number a = number("123456789ABCDEF0123456789");
    const Number rest = number("0");
    ASSERT_EQ(div_BIGINT(a.get(), rest.get(), a.get(), number("1000000000000").get()), 0U);
    EXPECT_EQ(hex(a.get()), "0123456789ABCD");
    EXPECT_EQ(hex(rest.get()), "EF0123456789");
    const Number result = number("1");
    BIGINT *r = result.get();
    EXPECT_EQ(add_BIGINT(r, number("FFFFFFFFFFFFFFFF").get(), number("1").get()), 0U);
    EXPECT_EQ(hex(r), "010000000000000000");
    EXPECT_EQ(shl_BIGINT(r, number("0").get(), 0xFFFFFFFFU), 0U);
    EXPECT_EQ(hex(r), "00");
    EXPECT_EQ(mod_exp_BIGINT(r, number("5").get(), number("0").get(), number("1").get()), 0U);
    EXPECT_EQ(hex(r), "00") << "everything is 0 modulo 1";
    EXPECT_EQ(mod_exp_BIGINT(r, number("7").get(), number("A").get(), number("64").get()), 0U);
    EXPECT_EQ(hex(r), "31") << "7^10 = 49 modulo 100, an even modulus";
    EXPECT_EQ(mod_inverse_BIGINT(r, number("3").get(), number("B").get()), 0U);
    EXPECT_EQ(hex(r), "04");
}

TEST(Bigint, DrawsBelowTheLimit) {
    const LeakCheck leaks;
    const Number limit = number("5");
    const Number value = number("0");
    std::set<std::uint32_t> seen;
    for (int i = 0; i < 500; ++i) {
        ASSERT_EQ(random_BIGINT(value.get(), limit.get()), 0U);
        seen.insert(get_BIGINT_word(value.get()));
    }
    EXPECT_EQ(seen, (std::set<std::uint32_t>{0, 1, 2, 3, 4}));
}

TEST(Bigint, TellsPrimes) {
    const LeakCheck leaks;
    const struct {
        const char *hex;
        std::int32_t prime;
    } kCases[] = {{"0", 0},
                  {"1", 0},
                  {"2", 1},
                  {"231", 0},                               // 561, a Carmichael number
                  {"7FFFFFFFFFFFFFFFFFFFFFFFFFFFFFFF", 1},  // 2^127 - 1
                  {"7FFFFFFFFFFFFFFFFFFFFFFFFFFFFFFD", 0}};
    for (const auto &[text, prime] : kCases)
        EXPECT_EQ(is_BIGINT_prime(number(text).get()), prime) << text;
}

TEST(Bigint, MeetsEveryFailingAllocation) {
    const std::string wide = repeated("FEDCBA9876543210", 8);
    const Number a = number(wide);
    const Number b = number(wide + "5");
    const Number modulus = number(wide + "0123456789ABCDEF");
    const std::function<std::uint32_t(BIGINT *)> kOperations[] = {
        [&](BIGINT *result) { return copy_BIGINT(result, a.get()); },
        [&](BIGINT *result) { return add_BIGINT(result, a.get(), b.get()); },
        [&](BIGINT *result) { return sub_BIGINT(result, b.get(), a.get()); },
        [&](BIGINT *result) { return shl_BIGINT(result, a.get(), 100); },
        [&](BIGINT *result) { return shr_BIGINT(result, a.get(), 100); },
        [&](BIGINT *result) { return mod_exp_BIGINT(result, a.get(), b.get(), modulus.get()); },
        [&](BIGINT *result) { return div_BIGINT(nullptr, result, a.get(), modulus.get()); },
    };
    for (const auto &operation : kOperations) {
        const unsigned failures = sweep_failing_allocations([&operation] {
            const Number result = number("77");
            if (result == nullptr) return false;
            if (operation(result.get()) == 0) return true;
            EXPECT_EQ(get_BIGINT_word(result.get()), 0x77U) << "the result is left alone";
            return false;
        });
        EXPECT_EQ(failures, 2U) << "the number, and its wider limbs";
    }
}

}  // namespace
