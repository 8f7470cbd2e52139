#include "asn1/convert_table.hpp"

#include <array>

namespace tlx {
namespace {

using std::uint16_t;

constexpr u8 kFirst = 0xA1;
constexpr std::size_t kRows = 93;
constexpr std::size_t kColumns = 94;
constexpr std::size_t kPlaces = kRows * kColumns;

constexpr std::array<uint16_t, kPlaces> kPlane = {
#include "asn1/ksx1001.inc"
};

// The way back: the high octet of a code point picks a page, the low one an entry. Page 0 is the empty page
// that all high octets without a character share.
constexpr std::size_t kPageSize = 256;

constexpr auto kPageOf = [] {
    std::array<u8, 256> page_of{};
    u8 pages = 1;
    for (const uint16_t code_point : kPlane) {
        u8 &page = page_of[code_point >> 8];
        if (code_point != 0 && page == 0) page = pages++;
    }
    return page_of;
}();

constexpr std::size_t kPages = [] {
    std::size_t last = 0;
    for (const u8 page : kPageOf) {
        last = page > last ? std::size_t{page} : last;
    }
    return last + 1;
}();

constexpr auto kReverse = [] {
    std::array<uint16_t, kPages * kPageSize> reverse{};
    for (std::size_t index = 0; index < kPlane.size(); ++index) {
        const uint16_t code_point = kPlane[index];
        if (code_point == 0) continue;
        const std::size_t lead = index / kColumns + kFirst;
        const std::size_t trail = index % kColumns + kFirst;
        const std::size_t page = kPageOf[code_point >> 8];
        reverse[page * kPageSize + (code_point & 0xFFU)] = static_cast<uint16_t>(lead << 8 | trail);
    }
    return reverse;
}();

// The Hangul that the plane lacks, which code page 949 has in the order of Unicode.
constexpr uint16_t kFirstHangul = 0xAC00;
constexpr uint16_t kLastHangul = 0xD7A3;
constexpr std::size_t kFurtherHangul = 8822;

constexpr auto kFurther = [] {
    std::array<uint16_t, kFurtherHangul> further{};
    std::size_t count = 0;
    for (uint16_t hangul = kFirstHangul; hangul <= kLastHangul; ++hangul) {
        const bool in_plane = kReverse[kPageOf[hangul >> 8] * kPageSize + (hangul & 0xFFU)] != 0;
        if (!in_plane) further[count++] = hangul;
    }
    return further;
}();
static_assert(kFurther.back() == kLastHangul);

// A lead octet below the plane's has 178 trail octets, one of the plane's has those below the plane's.
constexpr u32 kFirstLead = 0x81;
constexpr u32 kTrails = 178;
constexpr u32 kTrailsBelowPlane = 84;

/// The place of a trail octet among those of code page 949; kTrails for another octet.
constexpr u32 trail_place(u8 trail) noexcept {
    if (trail >= 0x41 && trail <= 0x5A) return trail - 0x41U;
    if (trail >= 0x61 && trail <= 0x7A) return trail - 0x61U + 26;
    return trail >= 0x81 && trail <= 0xFE ? trail - 0x81U + 52 : kTrails;
}

}  // namespace

uint16_t ksx1001_to_unicode(u8 lead, u8 trail) noexcept {
    const u32 row = u32{lead} - kFirst;
    const u32 column = u32{trail} - kFirst;
    return row < kRows && column < kColumns ? kPlane[row * kColumns + column] : uint16_t{0};
}

uint16_t cp949_to_unicode(u8 lead, u8 trail) noexcept {
    if (lead >= kFirst && trail >= kFirst) return ksx1001_to_unicode(lead, trail);
    const u32 place = trail_place(trail);
    if (lead < kFirstLead || place == kTrails) return 0;
    const u32 rows_below = lead < kFirst ? lead - kFirstLead : kFirst - kFirstLead;
    const u32 rows_beside = lead < kFirst ? 0 : u32{lead} - kFirst;
    const u32 index = rows_below * kTrails + rows_beside * kTrailsBelowPlane + place;
    return index < kFurtherHangul ? kFurther[index] : uint16_t{0};
}

uint16_t unicode_to_ksx1001(u32 code_point) noexcept {
    if (code_point > 0xFFFF) return 0;
    return kReverse[kPageOf[code_point >> 8] * kPageSize + (code_point & 0xFF)];
}

}  // namespace tlx
