#include <gtest/gtest.h>
#include <tlxpki/ber.h>
#include <tlxpki/curve.h>
#include <tlxpki/version.h>

#include "support/allocation.hpp"
#include "support/strings.hpp"

namespace tlx_test {
namespace {

class Curves : public ::testing::Test {
    LeakCheck leaks_;
};

TEST(Version, IsTheProjects) {
    EXPECT_STREQ(get_PkiVersion(), TLX_TEST_VERSION);
}

TEST_F(Curves, Prime256v1) {
    const auto hex = [](const BIGINT *number) { return take(BIGINT_to_hex(number), 64); };
    ECURVE *curve = nullptr;
    ASSERT_EQ(set_ECURVE_from_list(&curve, 415), 0U);
    const std::unique_ptr<ECURVE, Freer<ECURVE, free_ECURVE>> owner(curve);
    EXPECT_EQ(curve->id, 0);
    // SEC 2, section 2.4.2.
    EXPECT_EQ(hex(curve->a), "FFFFFFFF00000001000000000000000000000000FFFFFFFFFFFFFFFFFFFFFFFC");
    EXPECT_EQ(hex(curve->b), "5AC635D8AA3A93E7B3EBBD55769886BC651D06B0CC53B0F63BCE3C3E27D2604B");
    EXPECT_EQ(hex(curve->p), "FFFFFFFF00000001000000000000000000000000FFFFFFFFFFFFFFFFFFFFFFFF");
    EXPECT_EQ(hex(curve->order), "FFFFFFFF00000000FFFFFFFFFFFFFFFFBCE6FAADA7179E84F3B9CAC2FC632551");
    EXPECT_EQ(hex(curve->base->x), "6B17D1F2E12C4247F8BCE6E563A440F277037D812DEB33A0F4A13945D898C296");
    EXPECT_EQ(is_ECPOINT_on_ECURVE(curve->base, curve), 1);

    EXPECT_EQ(set_ECURVE_from_list_ex(&curve, make_string(6, "1.2.840.10045.3.1.7").get()), 0U);
    EXPECT_EQ(curve, owner.get()) << "the caller's curve is filled";
    EXPECT_STREQ(curve->name, "prime256v1");
}

TEST_F(Curves, OthersAreRefused) {
    ECURVE *curve = nullptr;
    for (const std::uint32_t index : {416U, 0U, 0xFFFFFFFFU})
        EXPECT_EQ(set_ECURVE_from_list(&curve, index), 1U) << index;
    EXPECT_EQ(set_ECURVE_from_list(nullptr, 415), 1U);
    EXPECT_EQ(set_ECURVE_from_list_ex(&curve, make_string(6, "1.3.132.0.34").get()), 1U);
    EXPECT_EQ(set_ECURVE_from_list_ex(&curve, nullptr), 1U);
    EXPECT_EQ(curve, nullptr);
}

TEST_F(Curves, IdentifiersByName) {
    OBJECT_IDENTIFIER *oid = make_string(6, "1.2.3").release();
    for (const char *unknown : {"secp384r1", "prime256v", "prime256v11", "PRIME256V1", ""})
        EXPECT_EQ(get_ECURVE_OID_from_name(&oid, unknown), 1U) << unknown;
    EXPECT_EQ(get_ECURVE_OID_from_name(&oid, nullptr), 1U);
    EXPECT_EQ(get_ECURVE_OID_from_name(nullptr, "prime256v1"), 1U);
    EXPECT_EQ(octets(oid), "1.2.3");
    EXPECT_EQ(get_ECURVE_OID_from_name(&oid, "prime256v1"), 0U);
    EXPECT_EQ(octets(oid), "1.2.840.10045.3.1.7");
    free_OBJECT_IDENTIFIER(oid);
}

TEST_F(Curves, FailingAllocations) {
    const unsigned failures = sweep_failing_allocations([] {
        ECURVE *curve = nullptr;
        OBJECT_IDENTIFIER *oid = nullptr;
        const std::uint32_t filled = set_ECURVE_from_list(&curve, 415);
        const std::uint32_t found = get_ECURVE_OID_from_name(&oid, "prime256v1");
        EXPECT_EQ(filled, curve == nullptr ? 1U : 0U);
        EXPECT_EQ(found, oid == nullptr ? 1U : 0U);
        free_ECURVE(curve);
        free_OBJECT_IDENTIFIER(oid);
        return filled == 0 && found == 0;
    });
    EXPECT_EQ(failures, 19U);
}

}  // namespace
}  // namespace tlx_test
