#include "asn1/utf8.hpp"

namespace tlx {
namespace {

constexpr bool continues(u8 octet) noexcept {
    return (octet & 0xC0) == 0x80;
}

}  // namespace

bool read_utf8(Bytes in, Utf8 &character) noexcept {
    const u8 lead = in[0];
    if (lead < 0x80) {
        character = {lead, 1};
        return true;
    }
    if (lead < 0xC2 || lead > 0xF4) return false;
    const std::size_t size = lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
    if (in.size() < size) return false;
    u32 code_point = lead & (0x7FU >> size);
    for (std::size_t i = 1; i < size; ++i) {
        if (!continues(in[i])) return false;
        code_point = code_point << 6 | (in[i] & 0x3FU);
    }
    constexpr u32 kLeast[] = {0, 0, 0x80, 0x800, 0x10000};
    const bool surrogate = code_point >= 0xD800 && code_point < 0xE000;
    if (code_point < kLeast[size] || code_point > 0x10FFFF || surrogate) return false;
    character = {code_point, size};
    return true;
}

bool is_utf8(Bytes text) noexcept {
    Utf8 character{};
    while (!text.empty()) {
        if (!read_utf8(text, character)) return false;
        text = text.subspan(character.size);
    }
    return true;
}

std::size_t write_utf8(u32 code_point, u8 *out) noexcept {
    if (code_point < 0x80) {
        out[0] = static_cast<u8>(code_point);
        return 1;
    }
    const std::size_t size = code_point < 0x800 ? 2 : code_point < 0x10000 ? 3 : 4;
    for (std::size_t i = size - 1; i > 0; --i) {
        out[i] = static_cast<u8>(0x80 | (code_point & 0x3F));
        code_point >>= 6;
    }
    constexpr u32 kLead[] = {0, 0, 0xC0, 0xE0, 0xF0};
    out[0] = static_cast<u8>(kLead[size] | code_point);
    return size;
}

void append_utf8(Buffer &out, u32 code_point) noexcept {
    u8 *const room = out.reserve(kMostUtf8);
    if (room != nullptr) out.advance(write_utf8(code_point, room));
}

}  // namespace tlx
