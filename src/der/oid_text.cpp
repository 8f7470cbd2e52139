#include "der/oid_text.hpp"

#include <charconv>

namespace tlx {
namespace {

constexpr u8 kContinues = 0x80;
/// An arc with any of these bits has no room for seven more.
constexpr u32 kNoRoomForMore = 0xFE000000;

/// Octets that an arc takes at most.
constexpr std::size_t kMostArcOctets = 5;

u8 *write_arc(u8 *out, u32 arc) noexcept {
    int shift = 28;
    while (shift > 0 && (arc >> shift) == 0) {
        shift -= 7;
    }
    for (; shift > 0; shift -= 7) {
        *out++ = static_cast<u8>(kContinues | ((arc >> shift) & 0x7FU));
    }
    *out++ = static_cast<u8>(arc & 0x7FU);
    return out;
}

/// Takes the next arc off the text, and the dot after it. Arcs are 32-bit values; a text has those above
/// 0x7FFFFFFF as negative numbers.
bool take_arc(std::string_view &text, u32 &arc) noexcept {
    const bool negative = text.starts_with('-');
    const u64 most = negative ? 0x80000000 : 0xFFFFFFFF;
    const std::size_t start = negative ? 1 : 0;
    std::size_t i = start;
    u64 value = 0;
    for (; i < text.size() && text[i] >= '0' && text[i] <= '9'; ++i) {
        value = value * 10 + static_cast<u64>(text[i] - '0');
        if (value > most) return false;
    }
    if (i == start) return false;
    if (i < text.size() && text[i++] != '.') return false;
    text.remove_prefix(i);
    arc = static_cast<u32>(negative ? 0 - value : value);
    return true;
}

/// Appends one arc and a dot to the text being made.
bool print_arc(char *&position, char *end, u32 arc) noexcept {
    if (arc < 10 && end - position >= 2) {
        *position++ = static_cast<char>('0' + arc);
        *position++ = '.';
        return true;
    }
    const auto [stop, error] = std::to_chars(position, end, static_cast<i32>(arc));
    if (error != std::errc() || stop == end) return false;
    *stop = '.';
    position = stop + 1;
    return true;
}

}  // namespace

bool oid_to_text(Bytes contents, char (&text)[kMaxDottedText + 1], u32 &length) noexcept {
    char *position = text;
    char *const end = text + sizeof text;
    u32 arc = 0;
    bool first = true;
    bool complete = false;
    for (const u8 octet : contents) {
        if ((arc & kNoRoomForMore) != 0) return false;
        arc = (arc << 7) | (octet & 0x7FU);
        complete = (octet & kContinues) == 0;
        if (!complete) continue;
        if (first) {
            const u32 root = arc < 40 ? 0 : arc < 80 ? 1 : 2;
            if (!print_arc(position, end, root)) return false;
            arc -= root * 40;
            first = false;
        }
        if (!print_arc(position, end, arc)) return false;
        arc = 0;
    }
    if (!complete) return false;
    --position;
    *position = '\0';
    length = static_cast<u32>(position - text);
    return true;
}

bool text_to_oid(std::string_view dotted, Buffer &out) noexcept {
    // Every arc but the last has at least two characters.
    u8 *const room = out.reserve((dotted.size() / 2 + 1) * kMostArcOctets);
    u32 first = 0;
    u32 second = 0;
    if (room == nullptr || !take_arc(dotted, first) || !take_arc(dotted, second)) return false;
    const u64 joined = u64{40} * first + second;
    if (joined > 0xFFFFFFFF) return false;
    u8 *end = write_arc(room, static_cast<u32>(joined));
    while (!dotted.empty()) {
        u32 arc = 0;
        if (!take_arc(dotted, arc)) return false;
        end = write_arc(end, arc);
    }
    out.advance(static_cast<std::size_t>(end - room));
    return true;
}

}  // namespace tlx
