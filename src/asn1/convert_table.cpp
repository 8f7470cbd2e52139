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

}  // namespace

uint16_t ksx1001_to_unicode(u8 lead, u8 trail) noexcept {
    const u32 row = u32{lead} - kFirst;
    const u32 column = u32{trail} - kFirst;
    return row < kRows && column < kColumns ? kPlane[row * kColumns + column] : uint16_t{0};
}

uint16_t unicode_to_ksx1001(u32 code_point) noexcept {
    if (code_point > 0xFFFF) return 0;
    return kReverse[kPageOf[code_point >> 8] * kPageSize + (code_point & 0xFF)];
}

}  // namespace tlx
