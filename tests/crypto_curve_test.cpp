#include <gtest/gtest.h>
#include <tlxcrypto/curve.h>
#include <tlxcrypto/random.h>

#include <cstdint>
#include <string>
#include <vector>

#include "support/allocation.hpp"
#include "support/crypto_values.hpp"
#include "support/openssl_peer.hpp"

namespace {

using namespace tlx_test;

// secp256r1 (SEC 2)
constexpr const char *kP = "FFFFFFFF00000001000000000000000000000000FFFFFFFFFFFFFFFFFFFFFFFF";
constexpr const char *kA = "FFFFFFFF00000001000000000000000000000000FFFFFFFFFFFFFFFFFFFFFFFC";
constexpr const char *kB = "5AC635D8AA3A93E7B3EBBD55769886BC651D06B0CC53B0F63BCE3C3E27D2604B";
constexpr const char *kX = "6B17D1F2E12C4247F8BCE6E563A440F277037D812DEB33A0F4A13945D898C296";
constexpr const char *kY = "4FE342E2FE1A7F9B8EE7EB4A7C0F9E162BCE33576B315ECECBB6406837BF51F5";
constexpr const char *kN = "FFFFFFFF00000000FFFFFFFFFFFFFFFFBCE6FAADA7179E84F3B9CAC2FC632551";

Owned<ECPOINT> point(const char *x, const char *y) {
    Owned<ECPOINT> made(new_ECPOINT());
    EXPECT_EQ(set_ECPOINT(made.get(), number(x).get(), number(y).get()), 0U);
    return made;
}

Owned<ECURVE> secp256r1() {
    Owned<ECURVE> curve(new_ECURVE());
    EXPECT_EQ(set_ECURVE_params(curve.get(), 7, "secp256r1", number(kA).get(), number(kB).get(),
                                number(kP).get(), point(kX, kY).get(), number(kN).get()),
              0U);
    return curve;
}

TEST(Curve, TellsPointsOnIt) {
    const LeakCheck leaks;
    const Owned<ECURVE> curve = secp256r1();
    const auto is_on = [&curve](const ECPOINT *p) { return is_ECPOINT_on_ECURVE(p, curve.get()); };
    EXPECT_EQ(is_on(curve->base), 1);
    EXPECT_EQ(is_on(point(kY, kX).get()), 0);
    for (BIGINT *ECPOINT::*coordinate : {&ECPOINT::x, &ECPOINT::y}) {
        const Owned<ECPOINT> wide = point(kX, kY);
        ASSERT_EQ(add_BIGINT(wide.get()->*coordinate, wide.get()->*coordinate, curve->p), 0U);
        EXPECT_EQ(is_on(wide.get()), 0) << "the same modulo p, but not reduced";
    }
    EXPECT_EQ(is_on(Owned<ECPOINT>(new_ECPOINT()).get()), 0);
    EXPECT_EQ(is_ECPOINT_on_ECURVE(curve->base, Owned<ECURVE>(new_ECURVE()).get()), 0);
    ASSERT_EQ(set_BIGINT_word(curve->p, 4), 0U);
    EXPECT_EQ(is_on(point("0", "0").get()), 0) << "no field";
    EXPECT_TRUE(openssl::error_queue_is_empty());
}

TEST(Curve, CopiesDeeply) {
    const LeakCheck leaks;
    Owned<ECURVE> curve = secp256r1();
    const Owned<ECURVE> copy(dup_ECURVE(curve.get()));
    curve.reset();
    EXPECT_EQ(copy->id, 7);
    EXPECT_STREQ(copy->name, "secp256r1");
    EXPECT_EQ(hex(copy->a), kA);
    EXPECT_EQ(hex(copy->b), kB);
    EXPECT_EQ(hex(copy->p), kP);
    EXPECT_EQ(hex(copy->base->x), kX);
    EXPECT_EQ(hex(copy->base->y), kY);
    EXPECT_EQ(hex(copy->order), kN);
    clean_ECURVE(copy.get());
    EXPECT_EQ(copy->base, nullptr);
    EXPECT_STREQ(copy->name, "");
    EXPECT_EQ(dup_ECURVE(copy.get()), nullptr) << "without parameters";
}

TEST(Curve, IsUnchangedByWhatItRefuses) {
    const LeakCheck leaks;
    const Owned<ECURVE> curve = secp256r1();
    const Number one = number("1");
    const Owned<ECPOINT> base = point("1", "1");
    const auto set = [&](const std::string &name, const BIGINT *order) {
        return set_ECURVE_params(curve.get(), 9, name.c_str(), one.get(), one.get(), one.get(), base.get(),
                                 order);
    };
    EXPECT_EQ(set(std::string(33, 'x'), one.get()), 1U);
    EXPECT_EQ(set("other", nullptr), 1U);
    EXPECT_EQ(set_ECPOINT(curve->base, one.get(), nullptr), 1U);
    const unsigned failures = sweep_failing_allocations([&] {
        const Owned<ECURVE> copy(dup_ECURVE(curve.get()));
        return copy != nullptr && set_ECPOINT(copy->base, one.get(), one.get()) == 0;
    });
    EXPECT_EQ(failures, 10U) << "the record, six numbers and a point; two numbers";
    EXPECT_EQ(curve->id, 7);
    EXPECT_STREQ(curve->name, "secp256r1");
    EXPECT_EQ(hex(curve->base->x), kX);
    EXPECT_EQ(set(std::string(32, 'x'), one.get()), 0U);
    EXPECT_EQ(curve->name, std::string(32, 'x'));
}

TEST(Random, FillsTheBufferAndNoMore) {
    Octets first(1000, 0);
    Octets second(1000, 0);
    ASSERT_EQ(RAND_BYTES(first.data(), 999), 0U);
    ASSERT_EQ(RAND_BYTES(second.data(), 999), 0U);
    EXPECT_NE(first, second);
    EXPECT_NE(Octets(first.end() - 33, first.end()), Octets(33, 0));
    EXPECT_EQ(first.back(), 0);
    EXPECT_EQ(RAND_BYTES(nullptr, 1), 1U);
}

}  // namespace
