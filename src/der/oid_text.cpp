#include "der/oid_text.hpp"

#include <charconv>

namespace tlx {
namespace {

constexpr u8 kContinues = 0x80;

void append_arc(Buffer &out, u32 arc) noexcept {
    int shift = 28;
    while (shift > 0 && (arc >> shift) == 0) {
        shift -= 7;
    }
    for (; shift > 0; shift -= 7) {
        out.append(static_cast<u8>(kContinues | ((arc >> shift) & 0x7FU)));
    }
    out.append(static_cast<u8>(arc & 0x7FU));
}

/// Takes the next arc off the text, and the dot after it. Arcs are 32-bit values; those above 0x7FFFFFFF are
/// written as negative numbers, and read back from there.
bool take_arc(std::string_view &text, u32 &arc) noexcept {
    const char *const end = text.data() + text.size();
    std::int64_t value = 0;
    const auto [stop, error] = std::from_chars(text.data(), end, value);
    constexpr std::int64_t kLowest = -0x80000000LL;
    constexpr std::int64_t kHighest = 0xFFFFFFFFLL;
    if (error != std::errc() || value < kLowest || value > kHighest) return false;
    if (stop != end && *stop != '.') return false;
    text.remove_prefix(static_cast<std::size_t>(stop - text.data()) + (stop != end ? 1U : 0U));
    arc = static_cast<u32>(value);
    return true;
}

/// Appends one arc and a dot to the text being made.
bool print_arc(char *&position, char *end, u32 arc) noexcept {
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
    u32 first = 0;
    u32 second = 0;
    if (!take_arc(dotted, first) || !take_arc(dotted, second)) return false;
    append_arc(out, 40 * first + second);
    while (!dotted.empty()) {
        u32 arc = 0;
        if (!take_arc(dotted, arc)) return false;
        append_arc(out, arc);
    }
    return out.ok();
}

}  // namespace tlx
