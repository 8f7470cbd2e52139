#include "asn1/string_text.hpp"

#include <tlxpki/convert.h>

#include "asn1/convert_table.hpp"
#include "asn1/utf8.hpp"
#include "der/values.hpp"

namespace tlx {
namespace {

enum : u8 { kNumericString = 18, kVisibleString = 26, kUniversalString = 28 };

/// Big-endian units of a fixed number of octets. False for a part of a unit, and for a unit that is no
/// character.
bool append_units(Buffer &out, Bytes contents, std::size_t width) noexcept {
    if (contents.size() % width != 0) return false;
    for (; !contents.empty(); contents = contents.subspan(width)) {
        u32 unit = 0;
        for (const u8 octet : contents.first(width)) {
            unit = unit << 8 | octet;
        }
        if (unit > 0x10FFFF || (unit >= 0xD800 && unit < 0xE000)) return false;
        append_utf8(out, unit);
    }
    return true;
}

/// Reads Korean double-octet text and gives each character to `write`. False when an octet has no place in
/// it, and for a text without a character of KS X 1001: the pairs that code page 949 adds can as well be an
/// accented letter and a plain one of Latin-1.
template <typename Write>
bool read_korean(Bytes text, Write write) noexcept {
    bool korean = false;
    for (std::size_t at = 0; at < text.size(); ++at) {
        u32 code_point = text[at];
        if (code_point >= 0x80) {
            if (++at == text.size()) return false;
            korean = korean || ksx1001_to_unicode(text[at - 1], text[at]) != 0;
            code_point = cp949_to_unicode(text[at - 1], text[at]);
            if (code_point == 0) return false;
        }
        write(code_point);
    }
    return korean;
}

/// UTF-8, whatever the type says, or Korean text.
bool append_octets(Buffer &out, Bytes contents) noexcept {
    if (is_utf8(contents)) {
        out.append(contents);
        return true;
    }
    if (!read_korean(contents, [](u32) {})) return false;
    return read_korean(contents, [&out](u32 code_point) { append_utf8(out, code_point); });
}

}  // namespace

bool append_text(Buffer &out, i32 type, Bytes contents) noexcept {
    switch (type) {
        case TLX_TAG_UTF8_STRING:
            return append_octets(out, contents);
        case kNumericString:
        case TLX_TAG_PRINTABLE_STRING:
        case TLX_TAG_T61_STRING:
        case TLX_TAG_IA5_STRING:
        case kVisibleString:
        case TLX_TAG_UTC_TIME:
        case TLX_TAG_GENERALIZED_TIME:
            return append_octets(out, contents) || append_units(out, contents, 1);
        case TLX_TAG_BMP_STRING:
            return append_units(out, contents, 2);
        case kUniversalString:
            return append_units(out, contents, 4);
        default:
            return false;
    }
}

}  // namespace tlx

UTF8_STRING *ASN1_STRING_to_UTF8_STRING(const ASN1_STRING *string) {
    tlx::Buffer text;
    if (string == nullptr || !tlx::append_text(text, string->type, tlx::octets_of(string))) return nullptr;
    return text.ok() ? tlx::new_string(TLX_TAG_UTF8_STRING, text.bytes()) : nullptr;
}
