#include "a_label.hpp"

#include <algorithm>
#include <string_view>

namespace tool {

namespace {

// Parameters of RFC 3492, section 5.
constexpr uint32_t kBase = 36;
constexpr uint32_t kLowest = 1;
constexpr uint32_t kHighest = 26;
constexpr uint32_t kSkew = 38;
constexpr uint32_t kDamp = 700;
constexpr uint32_t kFirstBias = 72;
constexpr uint32_t kFirstCode = 0x80;

constexpr char32_t kFirstSyllable = 0xAC00;
constexpr char32_t kLastSyllable = 0xD7A3;
constexpr std::size_t kLongestLabel = 63;

/// The characters of a label, of which those of ASCII become small letters. False when one is neither ASCII
/// nor a syllable.
bool decode(std::string_view label, std::u32string &characters) {
    const auto bits = [&label](std::size_t at) { return static_cast<unsigned char>(label[at]); };
    for (std::size_t at = 0; at < label.size();) {
        if (bits(at) < kFirstCode) {
            const char c = label[at++];
            characters += static_cast<char32_t>(c >= 'A' && c <= 'Z' ? c - 'A' + 'a' : c);
            continue;
        }
        if (label.size() - at < 3) return false;
        const bool continues = bits(at) >> 4 == 0xE && bits(at + 1) >> 6 == 2 && bits(at + 2) >> 6 == 2;
        const char32_t c = (bits(at) & 0xFU) << 12 | (bits(at + 1) & 0x3FU) << 6 | (bits(at + 2) & 0x3FU);
        if (!continues || c < kFirstSyllable || c > kLastSyllable) return false;
        characters += c;
        at += 3;
    }
    return true;
}

/// RFC 3492, section 6.1.
uint32_t adapt(uint32_t delta, uint32_t count, bool is_first) {
    delta /= is_first ? kDamp : 2;
    delta += delta / count;
    uint32_t steps = 0;
    for (; delta > (kBase - kLowest) * kHighest / 2; steps += kBase) {
        delta /= kBase - kLowest;
    }
    return steps + (kBase - kLowest + 1) * delta / (delta + kSkew);
}

/// A number in digits whose weights depend on the bias (RFC 3492, section 3.3).
void append_number(uint32_t number, uint32_t bias, std::string &out) {
    const auto append_digit = [&out](uint32_t digit) {
        out += static_cast<char>(digit < 26 ? 'a' + digit : '0' + (digit - 26));
    };
    for (uint32_t place = kBase;; place += kBase) {
        const uint32_t threshold = std::clamp(place <= bias ? 0 : place - bias, kLowest, kHighest);
        if (number < threshold) break;
        append_digit(threshold + (number - threshold) % (kBase - threshold));
        number = (number - threshold) / (kBase - threshold);
    }
    append_digit(number);
}

/// RFC 3492, section 6.3.
std::string punycode(const std::u32string &characters) {
    std::string out;
    for (const char32_t c : characters) {
        if (c < kFirstCode) out += static_cast<char>(c);
    }
    const auto basic = static_cast<uint32_t>(out.size());
    if (basic > 0) out += '-';
    uint32_t code = kFirstCode, delta = 0, bias = kFirstBias, done = basic;
    while (done < characters.size()) {
        char32_t next = kLastSyllable;
        for (const char32_t c : characters) {
            if (c >= code) next = std::min(next, c);
        }
        delta += (static_cast<uint32_t>(next) - code) * (done + 1);
        code = static_cast<uint32_t>(next);
        for (const char32_t c : characters) {
            if (c < code) ++delta;
            if (c != code) continue;
            append_number(delta, bias, out);
            bias = adapt(delta, done + 1, done == basic);
            delta = 0;
            ++done;
        }
        ++delta;
        ++code;
    }
    return out;
}

/// Empty for a label that has no A-label.
std::string to_a_label(std::string_view label) {
    std::u32string characters;
    if (label.size() > 3 * kLongestLabel || !decode(label, characters)) return "";
    const bool is_ascii = characters.size() == label.size();
    std::string out = is_ascii ? std::string(label) : "xn--" + punycode(characters);
    return out.size() <= kLongestLabel ? out : "";
}

}  // namespace

std::string to_a_labels(const std::string &host) {
    std::string out;
    for (std::size_t begin = 0; begin <= host.size();) {
        const std::size_t end = std::min(host.find('.', begin), host.size());
        const std::string label = to_a_label(std::string_view(host).substr(begin, end - begin));
        if (label.empty()) return "";
        out += (begin == 0 ? "" : ".") + label;
        begin = end + 1;
    }
    return out;
}

}  // namespace tool
