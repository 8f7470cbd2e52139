// Base64 (RFC 4648, section 4).
#include <tlxpki/base64.h>

#include <array>
#include <cstring>
#include <limits>

#include "der/memory.hpp"
#include "der/owned.hpp"

using namespace tlx;

namespace {

constexpr char kAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr std::size_t kLineCharacters = 64;
constexpr std::size_t kLineOctets = kLineCharacters / 4 * 3;

/// Two characters for each 12 bits.
constexpr auto kPairs = [] {
    std::array<std::array<char, 2>, 4096> pairs{};
    for (std::size_t bits = 0; bits < pairs.size(); ++bits) {
        pairs[bits] = {kAlphabet[bits >> 6], kAlphabet[bits & 63]};
    }
    return pairs;
}();

char *put_pair(char *out, u32 bits) noexcept {
    std::memcpy(out, kPairs[bits & 0xFFF].data(), 2);
    return out + 2;
}

char *put_padded(char *out, Bytes last) noexcept {
    const u32 bits = u32{last[0]} << 16 | (last.size() > 1 ? u32{last[1]} << 8 : 0);
    out = put_pair(out, bits >> 12);
    *out++ = last.size() > 1 ? kAlphabet[bits >> 6 & 63] : '=';
    *out++ = '=';
    return out;
}

/// One line. Returns where it ends.
char *encode_line(Bytes in, char *out) noexcept {
    const u8 *octets = in.data();
    const u8 *end = octets + in.size() / 3 * 3;
    for (; octets != end; octets += 3) {
        const u32 bits = u32{octets[0]} << 16 | u32{octets[1]} << 8 | octets[2];
        out = put_pair(out, bits >> 12);
        out = put_pair(out, bits);
    }
    const Bytes last = in.last(in.size() % 3);
    return last.empty() ? out : put_padded(out, last);
}

/// The three octets of a group as one number, the first of them lowest. kBad is set in the values of a
/// character outside the alphabet, and in no other.
constexpr u32 kBad = 0x80000000;
using Values = std::array<u32, 256>;

/// What each character is worth at one of the four places of a group.
constexpr Values values_at(unsigned place) noexcept {
    Values values{};
    for (u32 &value : values) {
        value = kBad;
    }
    for (u32 number = 0; number < 64; ++number) {
        const u32 bits = number << (18 - 6 * place);
        values[static_cast<u8>(kAlphabet[number])] = bits >> 16 | (bits & 0xFF00) | (bits & 0xFF) << 16;
    }
    return values;
}
constexpr std::array<Values, 4> kValues = {values_at(0), values_at(1), values_at(2), values_at(3)};

u32 group_value(const u8 *c) noexcept {
    return kValues[0][c[0]] | kValues[1][c[1]] | kValues[2][c[2]] | kValues[3][c[3]];
}

/// Writes one octet more than it counts, which makes it a single store.
u8 *put_group(u8 *out, u32 octets) noexcept {
    out[0] = static_cast<u8>(octets);
    out[1] = static_cast<u8>(octets >> 8);
    out[2] = static_cast<u8>(octets >> 16);
    out[3] = static_cast<u8>(octets >> 24);
    return out + 3;
}

/// Decodes whole groups that lie side by side, as far as they go; takes them off the front of `in`.
u8 *decode_run(Bytes &in, u8 *out) noexcept {
    const u8 *at = in.data();
    std::size_t left = in.size();
    for (; left >= 4; left -= 4, at += 4) {
        const u32 octets = group_value(at);
        if ((octets & kBad) != 0) break;
        out = put_group(out, octets);
    }
    in = in.last(left);
    return out;
}

/// Takes up to four characters off the front, skipping line ends; returns how many there were.
std::size_t take_group(Bytes &in, u8 (&group)[4]) noexcept {
    std::size_t taken = 0;
    std::size_t at = 0;
    for (; at < in.size() && taken < 4; ++at) {
        if (in[at] != '\r' && in[at] != '\n') group[taken++] = in[at];
    }
    in = in.subspan(at);
    return taken;
}

bool only_line_ends(Bytes in) noexcept {
    u8 group[4];
    return take_group(in, group) == 0;
}

/// Decodes the padded group at the end; null when it is not well formed.
u8 *decode_padded(const u8 (&group)[4], u8 *out) noexcept {
    const bool two = group[2] == '=';
    if (group[3] != '=') return nullptr;
    const u32 octets = kValues[0][group[0]] | kValues[1][group[1]] | (two ? 0U : kValues[2][group[2]]);
    const u32 unused = two ? 0xFF00U : 0xFF0000U;
    if ((octets & (kBad | unused)) != 0) return nullptr;
    *out++ = static_cast<u8>(octets);
    if (!two) *out++ = static_cast<u8>(octets >> 8);
    return out;
}

/// Decodes a whole text; null when it is bad.
u8 *decode_text(Bytes in, u8 *out) noexcept {
    for (;;) {
        out = decode_run(in, out);
        u8 group[4];
        const std::size_t taken = take_group(in, group);
        if (taken == 0) return out;
        if (taken < 4) return nullptr;
        const u32 octets = group_value(group);
        if ((octets & kBad) != 0) return only_line_ends(in) ? decode_padded(group, out) : nullptr;
        out = put_group(out, octets);
    }
}

}  // namespace

uint32_t encode_Base64(const uint8_t *in, uint32_t len, char **out, uint32_t wrap) {
    if (in == nullptr || out == nullptr || len == 0) return 0;
    Bytes rest(in, len);
    const std::size_t line = wrap == 1 ? kLineOctets : rest.size();
    const std::size_t breaks = (rest.size() - 1) / line;
    const std::size_t size = (rest.size() + 2) / 3 * 4 + breaks;
    if (size >= std::numeric_limits<u32>::max()) return 0;
    auto *text = static_cast<char *>(TLX_ALLOCATE(size + 1));
    if (text == nullptr) return 0;

    char *at = text;
    for (; rest.size() > line; rest = rest.subspan(line)) {
        at = encode_line(rest.first(line), at);
        *at++ = '\n';
    }
    at = encode_line(rest, at);
    *at = '\0';
    *out = text;
    return static_cast<u32>(size);
}

uint32_t encode_Base64_Line(const uint8_t *in, uint32_t len, char **out) {
    return encode_Base64(in, len, out, 0);
}

uint32_t decode_Base64(const char *in, uint32_t len, uint8_t **out) {
    if (in == nullptr || out == nullptr || len == 0) return 0;
    const std::size_t room = std::size_t{len} / 4 * 3;
    auto *octets = static_cast<u8 *>(TLX_ALLOCATE(room + 1));  // put_group writes one further
    if (octets == nullptr) return 0;
    const u8 *end = decode_text({reinterpret_cast<const u8 *>(in), len}, octets);
    if (end == nullptr || end == octets) {
        wipe_and_free(octets, room);  // the octets may hold a private key
        return 0;
    }
    *out = octets;
    return static_cast<u32>(end - octets);
}
