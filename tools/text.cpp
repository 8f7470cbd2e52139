#include "text.hpp"

#include <array>
#include <chrono>
#include <cstdio>

#include "oid_names.hpp"

namespace tool {

namespace {

constexpr char kHexDigits[] = "0123456789ABCDEF";
constexpr uint32_t kNotUtf8 = 0xFFFFFFFF;

void append_utf8(std::string &out, uint32_t code_point) {
    const auto put = [&out](uint32_t octet) { out.push_back(static_cast<char>(octet)); };
    if (code_point < 0x80) return put(code_point);
    if (code_point < 0x800) {
        put(0xC0 | code_point >> 6);
    } else if (code_point < 0x10000) {
        put(0xE0 | code_point >> 12);
        put(0x80 | (code_point >> 6 & 0x3F));
    } else {
        put(0xF0 | code_point >> 18);
        put(0x80 | (code_point >> 12 & 0x3F));
        put(0x80 | (code_point >> 6 & 0x3F));
    }
    put(0x80 | (code_point & 0x3F));
}

/// Cuts the first character off a text by RFC 3629. An octet that begins no character is cut off alone and
/// gives kNotUtf8.
uint32_t next_character(std::string_view &text) {
    const auto octet = [&text](std::size_t i) {
        return static_cast<uint32_t>(static_cast<uint8_t>(text[i]));
    };
    const uint32_t first = octet(0);
    const std::size_t length = first < 0x80 ? 1 : first < 0xC2 ? 0 : first < 0xE0 ? 2 : first < 0xF0 ? 3 : 4;
    constexpr std::array<uint32_t, 5> kFirstBits = {0, 0x7F, 0x1F, 0x0F, 0x07};
    constexpr std::array<uint32_t, 5> kLowest = {0, 0, 0x80, 0x800, 0x10000};
    uint32_t code_point = length == 0 || length > text.size() ? kNotUtf8 : first & kFirstBits[length];
    for (std::size_t i = 1; i < length && code_point != kNotUtf8; ++i) {
        code_point = (octet(i) & 0xC0) == 0x80 ? code_point << 6 | (octet(i) & 0x3F) : kNotUtf8;
    }
    const bool surrogate = code_point >= 0xD800 && code_point < 0xE000;
    if (code_point > 0x10FFFF || code_point < kLowest[length] || surrogate) code_point = kNotUtf8;
    text.remove_prefix(code_point == kNotUtf8 ? 1 : length);
    return code_point;
}

/// Characters that could make a terminal act, or show another text.
bool is_unsafe(uint32_t code_point) {
    const auto within = [code_point](uint32_t first, uint32_t last) {
        return code_point >= first && code_point <= last;
    };
    return within(0, 0x1F) || within(0x7F, 0x9F) || within(0x200B, 0x200F) || within(0x2028, 0x202E) ||
           within(0x2060, 0x206F) || code_point == 0xFEFF || code_point == 0x061C || within(0xFFF9, 0xFFFB);
}

/// The minutes that a time ending in "+hhmm" or "-hhmm" is ahead of UTC.
std::chrono::minutes offset_of(const ASN1_STRING *time) {
    constexpr std::size_t kLength = 5;
    const Octets octets = octets_of(time);
    if (octets.size() < kLength) return {};
    const Octets offset = octets.last(kLength);
    if (offset[0] != '+' && offset[0] != '-') return {};
    const auto digits = [&offset](std::size_t at) { return 10 * (offset[at] - '0') + offset[at + 1] - '0'; };
    return std::chrono::minutes((60 * digits(1) + digits(3)) * (offset[0] == '-' ? -1 : 1));
}

/// RFC 3339, in UTC.
std::string rfc3339(const ASN1_TIME &local, std::chrono::minutes offset) {
    using namespace std::chrono;
    const sys_days date = year(local.year + 1900) / (local.month + 1) / local.day;
    const sys_seconds moment =
        date + hours(local.hour) + minutes(local.minute) + seconds(local.second) - offset;
    const sys_days midnight = floor<days>(moment);
    const year_month_day utc(midnight);
    const hh_mm_ss clock(moment - midnight);
    std::array<char, 64> text{};
    (void)std::snprintf(text.data(), text.size(), "%04d-%02u-%02uT%02d:%02d:%02dZ",
                        static_cast<int>(utc.year()), static_cast<unsigned>(utc.month()),
                        static_cast<unsigned>(utc.day()), static_cast<int>(clock.hours().count()),
                        static_cast<int>(clock.minutes().count()), static_cast<int>(clock.seconds().count()));
    return text.data();
}

}  // namespace

std::string printable(std::string_view utf8) {
    std::string out;
    std::array<char, 16> escape{};
    while (!utf8.empty()) {
        const auto octet = static_cast<uint8_t>(utf8[0]);
        const uint32_t code_point = next_character(utf8);
        if (code_point != kNotUtf8 && !is_unsafe(code_point)) {
            append_utf8(out, code_point);
            continue;
        }
        const bool character = code_point != kNotUtf8;
        (void)std::snprintf(escape.data(), escape.size(), character ? "\\u{%02X}" : "\\x%02X",
                            static_cast<unsigned>(character ? code_point : octet));
        out += escape.data();
    }
    return out;
}

std::string hex(Octets octets) {
    std::string out;
    out.reserve(2 * octets.size());
    for (const uint8_t octet : octets) {
        out.push_back(kHexDigits[octet >> 4]);
        out.push_back(kHexDigits[octet & 0x0F]);
    }
    return out;
}

std::string code_text(uint32_t code) {
    std::array<char, 11> text{};
    (void)std::snprintf(text.data(), text.size(), "0x%08X", static_cast<unsigned>(code));
    return text.data();
}

bool is_utf8(std::string_view text) {
    while (!text.empty()) {
        if (next_character(text) == kNotUtf8) return false;
    }
    return true;
}

bool string_text(const ASN1_STRING *string, std::string &utf8) {
    const String text(ASN1_STRING_to_UTF8_STRING(string));
    if (text == nullptr) return false;
    const Octets octets = octets_of(text.get());
    utf8.assign(octets.begin(), octets.end());
    return true;
}

std::string text_of(const ASN1_STRING *string) {
    std::string text;
    return string_text(string, text) ? text : "#" + hex(octets_of(string));
}

Octets octets_of(const ASN1_STRING *string) {
    if (string == nullptr || string->data == nullptr || string->length <= 0) return {};
    return {string->data, static_cast<std::size_t>(string->length)};
}

std::string dotted_text(const OBJECT_IDENTIFIER *oid) {
    const Octets octets = octets_of(oid);
    return {octets.begin(), octets.end()};
}

std::string short_name(const std::string &dotted) {
    const uint32_t row = index_from_oid_string(dotted.data(), static_cast<uint32_t>(dotted.size()));
    if (row != 0) return sn_from_index(static_cast<int32_t>(row));
    const OidName *name = find_oid_name(dotted);
    return name == nullptr ? std::string() : name->short_name;
}

std::string algorithm_name(const OBJECT_IDENTIFIER *oid) {
    const uint32_t row = index_from_OBJECT_IDENTIFIER(oid);
    if (row != 0) return ln_from_index(static_cast<int32_t>(row));
    const std::string dotted = dotted_text(oid);
    const OidName *name = find_oid_name(dotted);
    return name == nullptr ? dotted : name->long_name;
}

std::string name_text(const X509_NAME *name) {
    if (get_X509_NAME_count(name) == 0) return "";
    return made<Text>(dump_X509_NAME(name)).get();
}

std::string shown_name(const X509_NAME *name) {
    const std::string text = name_text(name);
    return text.empty() ? "(empty name)" : text;
}

std::string time_text(const X509_TIME *time) {
    if (time == nullptr) return "(none)";
    const Time calendar(X509_TIME_to_ASN1_TIME(time));
    if (calendar == nullptr) return text_of(time->time) + " (not a time)";
    return rfc3339(*calendar, offset_of(time->time));
}

std::string time_text(const ASN1_TIME &time) {
    return rfc3339(time, {});
}

}  // namespace tool
