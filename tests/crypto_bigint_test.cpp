// Big numbers as octets and texts, arithmetic beside libcrypto's; random octets.

#include <random>

#include "support/allocation.hpp"
#include "support/crypto_values.hpp"
#include "support/openssl_peer.hpp"
#include "support/rows.hpp"

namespace {

using namespace tlx_test;

// With any number of leading zeros, and never with too little room.
void expect_written(const BIGINT *value, const std::string &shortest_hex) {
    const auto shortest = static_cast<std::uint32_t>(shortest_hex.size() / 2);
    const std::uint32_t bits = get_BIGINT_bits(value);
    for (const std::uint32_t more : {0U, 1U, 8U, 30U}) {
        Octets written(shortest + more + 1, 0xEE);
        ASSERT_EQ(BIGINT_to_binary(value, written.data(), shortest + more), 0U);
        EXPECT_EQ(digits_of(written), std::string(std::size_t{2} * more, '0') + shortest_hex + "EE");
    }
    Octets untouched(1, 0xEE);
    EXPECT_EQ(BIGINT_to_binary(value, untouched.data(), bits == 0 ? 0 : (bits - 1) / 8), bits == 0 ? 0U : 1U);
    EXPECT_EQ(untouched[0], 0xEE);
}

/// Its digits in both bases, bits, octets in DER, and value as a word.
std::string show(const Row &row) {
    const Number value = number(row[1]);
    if (value == nullptr) return "null";
    const std::string digits = digits_of(value.get());
    const Octets with_zeros = hex("0000" + digits);
    const std::uint64_t before = tlx_live_blocks();
    const Number read(binary_to_BIGINT(with_zeros.data(), length(with_zeros)));
    EXPECT_EQ(tlx_live_blocks() - before, 1U) << "decoding takes one allocation";
    EXPECT_EQ(cmp_BIGINT(read.get(), value.get()), 0);
    EXPECT_EQ(is_BIGINT_zero(value.get()), digits == "00" ? 1 : 0);
    expect_written(read.get(), digits);
    return digits + " " + taken(BIGINT_to_decimal(value.get())) + " " +
           std::to_string(get_BIGINT_bits(value.get())) + " " +
           std::to_string(get_BIGINT_der_length(value.get())) + " " +
           std::to_string(get_BIGINT_word(value.get()));
}

using Binary = std::uint32_t (*)(BIGINT *, const BIGINT *, const BIGINT *);
const std::map<std::string, Binary> kBinary = {
    {"+", add_BIGINT},
    {"-", sub_BIGINT},
    {"*", mul_BIGINT},
    {"/", [](BIGINT *r, const BIGINT *a, const BIGINT *b) { return div_BIGINT(r, nullptr, a, b); }},
    {"rest", [](BIGINT *r, const BIGINT *a, const BIGINT *b) { return div_BIGINT(nullptr, r, a, b); }},
    {"%", mod_BIGINT},
    {"inverse", mod_inverse_BIGINT},
    {"<<", [](BIGINT *r, const BIGINT *a, const BIGINT *b) { return shl_BIGINT(r, a, get_BIGINT_word(b)); }},
    {">>", [](BIGINT *r, const BIGINT *a, const BIGINT *b) { return shr_BIGINT(r, a, get_BIGINT_word(b)); }},
    {"copy", [](BIGINT *r, const BIGINT *a, const BIGINT *) { return copy_BIGINT(r, a); }}};
using Modular = std::uint32_t (*)(BIGINT *, const BIGINT *, const BIGINT *, const BIGINT *);
const std::map<std::string, Modular> kModular = {
    {"+%", mod_add_BIGINT}, {"-%", mod_sub_BIGINT}, {"*%", mod_mul_BIGINT}, {"^%", mod_exp_BIGINT}};

/// The result in a number of its own, in the first operand, and in the second, which a failure leaves alone.
std::string calculate(Binary operation, const std::string &left, const std::string &right) {
    std::string result;
    for (const int place : {0, 1, 2}) {
        const Number numbers[] = {number("DEAD"), number(left), number(right)};
        const Number before = number(place == 0 ? "DEAD" : place == 1 ? left : right);
        if (!numbers[0] || !numbers[1] || !numbers[2] || !before) return "failed";
        BIGINT *out = numbers[place].get();
        const bool failed = operation(out, numbers[1].get(), numbers[2].get()) != 0;
        EXPECT_TRUE(!failed || cmp_BIGINT(out, before.get()) == 0) << "a failure leaves the result alone";
        const std::string made = failed ? "failed" : digits_of(out);
        if (place != 0 && made != result) return made;
        result = made;
    }
    return result;
}

std::string calculate(Modular operation, const std::string &left, const std::string &right,
                      const std::string &modulus) {
    const Number result = number("77");
    const std::uint32_t status =
        operation(result.get(), number(left).get(), number(right).get(), number(modulus).get());
    EXPECT_TRUE(status == 0 || result == nullptr || get_BIGINT_word(result.get()) == 0x77);
    return status == 0 ? digits_of(result.get()) : "failed";
}

using Bigint = LeakFreeTest;

TEST_F(Bigint, Rows) {
    std::map<std::string, Operation> operations = {
        {"show", {show}},
        {"is prime", {[](const Row &row) { return std::to_string(is_BIGINT_prime(number(row[1]).get())); }}}};
    for (const auto &[name, operation] : kBinary)
        operations[name] = {[run = operation](const Row &row) { return calculate(run, row[1], row[2]); },
                            {"failed", "null"}};
    for (const auto &[name, operation] : kModular)
        operations[name] = {
            [run = operation](const Row &row) { return calculate(run, row[1], row[2], row[3]); },
            {"failed", "null"}};
    expect_rows("bigint.txt", operations);
    EXPECT_TRUE(openssl::error_queue_is_empty()) << "the queue belongs to the host program";
}

// Numbers of many lengths, with runs of ones and zeros, where carries go far.
std::string random_hex(std::mt19937 &random) {
    std::string text = "1";
    for (std::size_t runs = random() % 5; runs != 0; --runs)
        text += std::string(random() % 24, "0F7A"[random() % 4]);
    return random() % 16 == 0 ? "0" : text;
}

TEST_F(Bigint, CalculatesAsLibcryptoDoes) {
    std::mt19937 random(64);
    for (int round = 0; round < 400; ++round) {
        const std::string left = random_hex(random);
        const std::string right = random_hex(random);
        const std::string modulus = random_hex(random) + "12"[random() % 2];
        const std::string difference = openssl::calculate("-", left, right);
        const int order = difference[0] == '-' ? -1 : (difference == "00" ? 0 : 1);
        ASSERT_EQ(cmp_BIGINT(number(left).get(), number(right).get()), order) << left << ' ' << right;
        for (const auto &[name, operation] : kBinary) {
            if (name == "inverse" || name == "copy") continue;
            const bool shift = name == "<<" || name == ">>";
            const std::string other = shift ? std::string(1, "0134789ABCF"[random() % 11]) + "0" : right;
            std::string expected = openssl::calculate(name == "rest" ? "%" : name, left, other);
            if (expected[0] == '-') expected = "failed";
            ASSERT_EQ(calculate(operation, left, other), expected) << left << ' ' << name << ' ' << other;
        }
        for (const auto &[name, operation] : kModular)
            ASSERT_EQ(calculate(operation, left, right, modulus),
                      openssl::calculate(name, left, right, modulus))
                << left << ' ' << name << ' ' << right << " mod " << modulus;
    }
}

TEST_F(Bigint, RefusesMissingNumbers) {
    EXPECT_EQ(taken(BIGINT_to_hex(nullptr)), "null");
    EXPECT_EQ(taken(BIGINT_to_decimal(nullptr)), "null");
    EXPECT_EQ(get_BIGINT_word(nullptr), 0xFFFFFFFFU);
    EXPECT_EQ(cmp_BIGINT(nullptr, number("0").get()), -1) << "below every number";
    const Number five = number("5");
    const Number result = number("77");
    BIGINT *r = result.get();
    for (const auto &[name, operation] : kBinary) {
        EXPECT_EQ(operation(r, nullptr, five.get()), 1U) << name;
        EXPECT_EQ(operation(nullptr, five.get(), five.get()), 1U) << name;
    }
    for (const auto &[name, operation] : kModular)
        EXPECT_EQ(operation(r, five.get(), five.get(), nullptr), 1U) << name;
    EXPECT_EQ(div_BIGINT(r, r, five.get(), five.get()), 1U) << "two values do not fit one number";
    EXPECT_EQ(random_BIGINT(r, number("0").get()), 1U);
    EXPECT_EQ(digits_of(r), "77") << "failures leave the result alone";
    const Number a = number("123456789ABCDEF0123456789");
    ASSERT_EQ(div_BIGINT(a.get(), r, a.get(), number("1000000000000").get()), 0U);
    EXPECT_EQ(digits_of(a.get()) + " rest " + digits_of(r), "0123456789ABCD rest EF0123456789");
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

}  // namespace
