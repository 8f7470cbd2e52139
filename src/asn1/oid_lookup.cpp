#include "asn1/oid_lookup.hpp"

#include "asn1/oid_hash.hpp"

namespace tlx {
namespace {

constexpr oid::TextIndex<&OID_ROW::short_name> kShortNames;
constexpr oid::TextIndex<&OID_ROW::long_name> kLongNames;
constexpr oid::TextIndex<&OID_ROW::dotted> kDottedTexts;

constexpr bool rows_are_numbered() noexcept {
    for (u32 i = 0; i < oid::kCount; ++i) {
        if (oid::kTable[i].index != i) return false;
    }
    return true;
}
static_assert(rows_are_numbered());

#define OID_NAME(constant, index, name) \
    static_assert(std::string_view(oid::kTable[oid::constant].texts.short_name) == (name));
#include "asn1/oid_names.inc"
#undef OID_NAME

}  // namespace

u32 oid_index(std::string_view dotted) noexcept {
    return kDottedTexts.find(dotted);
}
u32 oid_index_of_short_name(std::string_view name) noexcept {
    return kShortNames.find(name);
}
u32 oid_index_of_long_name(std::string_view name) noexcept {
    return kLongNames.find(name);
}

}  // namespace tlx
