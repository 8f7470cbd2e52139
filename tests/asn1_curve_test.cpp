// Curves by number, identifier and name.

#include "support/allocation.hpp"
#include "support/octets.hpp"
#include "support/rows.hpp"

namespace {

using namespace tlx_test;

using Curve = Held<free_ECURVE>;

std::string show(std::uint32_t status, ECURVE *made) {
    const Curve curve(made);
    if (status != 0) return made == nullptr ? std::to_string(status) : "not freed";
    std::string text = std::string(curve->name) + " " + std::to_string(curve->id);
    for (const BIGINT *number : {curve->a, curve->b, curve->p, curve->order, curve->base->x}) {
        char *digits = BIGINT_to_hex(number);
        text += " " + take(digits, digits != nullptr ? 64 : 0);
    }
    if (text.find("(null)") != text.npos) return "1";
    return is_ECPOINT_on_ECURVE(curve->base, curve.get()) == 1 ? text : "a base point off the curve";
}

std::string by_number(const Row &row) {
    ECURVE *curve = nullptr;
    const std::uint32_t status = set_ECURVE_from_list(&curve, row.number(1));
    return show(status, curve);
}

std::string by_identifier(const Row &row) {
    ECURVE *curve = nullptr;
    const std::uint32_t status = set_ECURVE_from_list_ex(&curve, string_of(6, row[1]).get());
    return show(status, curve);
}

std::string by_name(const Row &row) {
    OBJECT_IDENTIFIER *oid = nullptr;
    const std::uint32_t status = get_ECURVE_OID_from_name(&oid, row[1].c_str());
    const String owner(oid);
    return status == 0 ? octets(oid) : std::to_string(status);
}

TEST(Curves, Rows) {
    EXPECT_STREQ(get_PkiVersion(), TLX_TEST_VERSION);
    expect_rows(
        "curve.txt",
        {{"number", {by_number, {"1"}}}, {"identifier", {by_identifier, {"1"}}}, {"name", {by_name, {"1"}}}});
}

TEST(Curves, FillTheCallersRecordOrLeaveIt) {
    const LeakCheck leaks;
    const Curve owner(new_ECURVE());
    ECURVE *curve = owner.get();
    EXPECT_EQ(set_ECURVE_from_list(&curve, 416), 1U);
    EXPECT_STREQ(curve->name, "");
    EXPECT_EQ(set_ECURVE_from_list(&curve, 415), 0U);
    EXPECT_EQ(curve, owner.get());
    EXPECT_STREQ(curve->name, "prime256v1");
    EXPECT_EQ(set_ECURVE_from_list(nullptr, 415), 1U);
    EXPECT_EQ(set_ECURVE_from_list_ex(&curve, nullptr), 1U);
    OBJECT_IDENTIFIER *oid = string_of(6, "1.2.3").release();
    EXPECT_EQ(get_ECURVE_OID_from_name(&oid, "secp384r1"), 1U);
    EXPECT_EQ(get_ECURVE_OID_from_name(&oid, nullptr), 1U);
    EXPECT_EQ(get_ECURVE_OID_from_name(nullptr, "prime256v1"), 1U);
    EXPECT_EQ(octets(oid), "1.2.3");
    EXPECT_EQ(get_ECURVE_OID_from_name(&oid, "prime256v1"), 0U);
    EXPECT_EQ(octets(String(oid).get()), "1.2.840.10045.3.1.7");
}

}  // namespace
