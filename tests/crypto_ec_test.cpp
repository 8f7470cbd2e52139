// Curves, points and elliptic-curve keys, on the NIST curve P-256 (SEC 2: secp256r1).

#include "support/allocation.hpp"
#include "support/crypto_values.hpp"
#include "support/openssl_peer.hpp"
#include "support/rows.hpp"

namespace {

using namespace tlx_test;

Held<free_ECPOINT> point(const std::string &x, const std::string &y) {
    Held<free_ECPOINT> made(new_ECPOINT());
    if (set_ECPOINT(made.get(), number(x).get(), number(y).get()) != 0) made.reset();
    return made;
}

Held<free_ECURVE> p256() {
    ECURVE *made = nullptr;
    EXPECT_EQ(set_ECURVE_from_list(&made, 415), 0U);
    return Held<free_ECURVE>(made);
}

std::string text_of(const ECPOINT *point) {
    return point == nullptr ? "null" : digits_of(point->x) + " " + digits_of(point->y);
}

std::string text_of(const ECURVE *curve) {
    return std::string(curve->name) + " " + std::to_string(curve->id) + " " + digits_of(curve->a) + " " +
           digits_of(curve->b) + " " + digits_of(curve->p) + " " + text_of(curve->base) + " " +
           digits_of(curve->order);
}

class Curve : public LeakFreeTest {
  protected:
    const Held<free_ECURVE> curve_ = p256();
    const std::string x_ = digits_of(curve_->base->x), y_ = digits_of(curve_->base->y);
    const std::string text_ = text_of(curve_.get());
};
using EcPoint = Curve;
using EcKey = Curve;

TEST_F(EcPoint, Rows) {
    const auto decode = [this](const Row &row) {
        const Octets encoded = hex(row[1]);
        const Held<free_ECPOINT> made(binary_to_ECPOINT(curve_.get(), encoded.data(), length(encoded)));
        if (made == nullptr) return std::string("null");
        return cmp_BIGINT(made->x, curve_->base->x) == 0 ? digits_of(made->y) : "another x";
    };
    const auto encode = [this](const Row &row) {
        Octets encoded(get_ECPOINT_length(curve_.get(), row.number(2)));
        std::uint32_t size = 9;
        const std::uint32_t status =
            ECPOINT_to_binary(point(x_, row[1]).get(), curve_.get(), row.number(2), encoded.data(), &size);
        EXPECT_EQ(size, status == 0 ? length(encoded) : 0U);
        return status == 0 ? digits_of(encoded) : "refused";
    };
    const auto on_curve = [this](const Row &row) {
        return std::to_string(is_ECPOINT_on_ECURVE(point(row[1], row[2]).get(), curve_.get()));
    };
    expect_rows("ec.txt", {{"decode", {decode, {"null"}}}, {"encode", {encode}}, {"on curve", {on_curve}}});
    EXPECT_EQ(is_ECPOINT_on_ECURVE(curve_->base, curve_.get()), 1);
    ASSERT_EQ(set_BIGINT_word(curve_->p, 4), 0U);
    EXPECT_EQ(is_ECPOINT_on_ECURVE(point("0", "0").get(), curve_.get()), 0) << "no field";
    EXPECT_TRUE(openssl::error_queue_is_empty());
}

TEST_F(EcPoint, RefusesMissingNumbers) {
    Octets out(65);
    std::uint32_t size = 9;
    const Held<free_ECURVE> no_curve(new_ECURVE());
    const Held<free_ECPOINT> no_point(new_ECPOINT());
    EXPECT_EQ(is_ECPOINT_on_ECURVE(no_point.get(), curve_.get()), 0);
    EXPECT_EQ(is_ECPOINT_on_ECURVE(curve_->base, no_curve.get()), 0);
    EXPECT_EQ(binary_to_ECPOINT(no_curve.get(), out.data(), 33), nullptr);
    EXPECT_EQ(get_ECPOINT_length(no_curve.get(), 0), 0U);
    EXPECT_EQ(ECPOINT_to_binary(no_point.get(), curve_.get(), 0, out.data(), &size), 1U);
    EXPECT_EQ(ECPOINT_to_binary(point(digits_of(curve_->p), y_).get(), curve_.get(), 0, out.data(), &size),
              1U);
    EXPECT_EQ(ECPOINT_to_binary(curve_->base, curve_.get(), 0, nullptr, &size), 1U);
    EXPECT_EQ(size, 0U);
}

TEST_F(Curve, IsUnchangedByWhatItRefuses) {
    const Number one = number("1");
    const Held<free_ECPOINT> base = point("1", "1");
    const auto set = [&](const std::string &name, const BIGINT *order) {
        return set_ECURVE_params(curve_.get(), 9, name.c_str(), one.get(), one.get(), one.get(), base.get(),
                                 order);
    };
    EXPECT_EQ(set(std::string(33, 'x'), one.get()), 1U);
    EXPECT_EQ(set("other", nullptr), 1U);
    EXPECT_EQ(set_ECPOINT(curve_->base, one.get(), nullptr), 1U);
    EXPECT_EQ(text_of(curve_.get()), text_);
    EXPECT_EQ(set(std::string(32, 'x'), one.get()), 0U);
    EXPECT_EQ(text_of(curve_.get()), std::string(32, 'x') + " 9 01 01 01 01 01 01");
    clean_ECURVE(curve_.get());
    EXPECT_STREQ(curve_->name, "");
    EXPECT_EQ(dup_ECURVE(curve_.get()), nullptr) << "without parameters";
}

// A square root modulo a p of 65536 bits takes more than a minute.
TEST_F(EcPoint, RefusesAFieldOfMoreThan661Bits) {
    // (0, 2) satisfies y^2 = x^3 + 4 modulo any p, such as 2^bits - 3.
    const Held<free_ECPOINT> on_curve = point("0", "2");
    ASSERT_EQ(set_BIGINT_word(curve_->a, 0), 0U);
    ASSERT_EQ(set_BIGINT_word(curve_->b, 4), 0U);
    for (const auto &[bits, accepted] : {std::pair(661U, true), {662U, false}, {65536U, false}}) {
        SCOPED_TRACE(bits);
        ASSERT_EQ(shl_BIGINT(curve_->p, number("1").get(), bits), 0U);
        ASSERT_EQ(sub_BIGINT(curve_->p, curve_->p, number("3").get()), 0U);
        EXPECT_EQ(is_ECPOINT_on_ECURVE(on_curve.get(), curve_.get()), accepted ? 1 : 0);
        for (const std::uint32_t compressed : {0U, 1U}) {
            if (accepted && compressed != 0) continue;  // needs a prime p
            Octets encoded(get_ECPOINT_length(curve_.get(), compressed));
            std::uint32_t size = 0;
            ASSERT_EQ(ECPOINT_to_binary(on_curve.get(), curve_.get(), compressed, encoded.data(), &size), 0U);
            const Held<free_ECPOINT> decoded(binary_to_ECPOINT(curve_.get(), encoded.data(), size));
            EXPECT_EQ(text_of(decoded.get()), accepted ? "00 02" : "null") << compressed;
        }
    }
}

TEST_F(EcKey, CopiesShareNothing) {
    Held<free_ECC_KEY> key(new_ECC_KEY());
    ASSERT_EQ(set_ECC_KEY(key.get(), p256().get(), curve_->base, number("01").get()), 0U);
    const Held<free_ECC_KEY> copy(dup_ECC_KEY(key.get()));
    ASSERT_EQ(set_ECC_KEY(key.get(), copy->curve, nullptr, nullptr), 0U);
    const Held<free_ECC_KEY> curve_alone(dup_ECC_KEY(key.get()));
    key.reset();
    EXPECT_EQ(text_of(copy->curve) + text_of(copy->public_point), text_ + x_ + " " + y_);
    EXPECT_EQ(get_BIGINT_word(copy->private_value), 1U);
    EXPECT_EQ(text_of(curve_alone->curve) + text_of(curve_alone->public_point), text_ + "null");
    EXPECT_EQ(curve_alone->private_value, nullptr);
    EXPECT_EQ(set_ECC_KEY(nullptr, nullptr, nullptr, nullptr), 1U);
    EXPECT_EQ(dup_ECC_KEY(nullptr), nullptr);
    const Number secret = number("02");
    const unsigned failures = sweep_failing_allocations([&] {
        const Held<free_ECC_KEY> made(new_ECC_KEY());
        if (made == nullptr) return false;
        if (set_ECC_KEY(made.get(), curve_.get(), curve_->base, secret.get()) != 0) {
            EXPECT_EQ(made->curve, nullptr) << "a failure leaves the key as it was";
            return false;
        }
        return Held<free_ECC_KEY>(dup_ECC_KEY(made.get())) != nullptr;
    });
    EXPECT_GT(failures, 20U);
}

}  // namespace
