#include "asn1/utf8.hpp"
#include "keys/pbe.hpp"

using namespace tlx;

namespace {

constexpr u32 kOctetsOfUnit = 2;

}  // namespace

PasswordUnits::PasswordUnits(Bytes text, From from) noexcept
    : room_((text.size() + 1) * kOctetsOfUnit), data_(static_cast<u8 *>(TLX_ALLOCATE_ZEROED(1, room_))) {
    if (data_ == nullptr) return;
    Utf8 character = {};
    if (from == From::octets || !is_utf8(text)) {
        for (const u8 octet : text) {
            add(octet);
        }
    } else {
        for (; !text.empty() && read_utf8(text, character); text = text.subspan(character.size)) {
            add_character(character.code_point);
        }
    }
    add(0);
}

void PasswordUnits::add(u32 unit) noexcept {
    data_[size_++] = static_cast<u8>(unit >> 8);
    data_[size_++] = static_cast<u8>(unit);
}

void PasswordUnits::add_character(u32 code_point) noexcept {
    constexpr u32 kFirstBeyondUnits = 0x10000;
    if (code_point < kFirstBeyondUnits) return add(code_point);
    add(0xD800 + ((code_point - kFirstBeyondUnits) >> 10));
    add(0xDC00 + (code_point & 0x3FF));
}
