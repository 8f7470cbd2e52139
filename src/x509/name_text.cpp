// Names as text (RFC 4514), in UTF-8.
#include <tlxpki/objects.h>

#include "asn1/oid_lookup.hpp"
#include "x509/certificate_records.hpp"

using namespace tlx;

namespace {

using std::string_view;

constexpr char kHexDigits[] = "0123456789ABCDEF";

void append(Buffer &out, string_view text) noexcept {
    out.append({reinterpret_cast<const u8 *>(text.data()), text.size()});
}

void append_hex(Buffer &out, u8 octet) noexcept {
    out.append(static_cast<u8>(kHexDigits[octet >> 4]));
    out.append(static_cast<u8>(kHexDigits[octet & 0x0F]));
}

/// The registered short name of a type when it is an RFC 4512 descriptor, else its dotted text.
string_view type_text(string_view dotted) noexcept {
    const u32 row = oid_index(dotted);
    const string_view name =
        row == 0 ? string_view() : string_view(OID_LIST(static_cast<i32>(row))->short_name);
    return name.empty() || name.find(' ') != string_view::npos ? dotted : name;
}

/// One character of a value, escaped where it has to be (RFC 4514, section 2.4).
void append_escaped(Buffer &out, u8 octet, bool at_start, bool at_end) noexcept {
    const char c = static_cast<char>(octet);
    if (octet < 0x20 || octet == 0x7F) {
        out.append(static_cast<u8>('\\'));
        return append_hex(out, octet);
    }
    const bool edge = (c == ' ' && (at_start || at_end)) || (c == '#' && at_start);
    if (edge || string_view("\"+,;<>\\").find(c) != string_view::npos) out.append(static_cast<u8>('\\'));
    out.append(octet);
}

void append_escaped(Buffer &out, Bytes text) noexcept {
    for (std::size_t i = 0; i < text.size(); ++i) {
        append_escaped(out, text[i], i == 0, i + 1 == text.size());
    }
}

void append_utf8(Buffer &out, u32 code_point) noexcept {
    if (code_point < 0x80) return out.append(static_cast<u8>(code_point));
    if (code_point < 0x800) {
        out.append(static_cast<u8>(0xC0 | code_point >> 6));
    } else {
        out.append(static_cast<u8>(0xE0 | code_point >> 12));
        out.append(static_cast<u8>(0x80 | (code_point >> 6 & 0x3F)));
    }
    out.append(static_cast<u8>(0x80 | (code_point & 0x3F)));
}

/// UCS-2 and Latin-1 (which is how T61String is used) as UTF-8. False for half a unit and for surrogates.
bool widen(Buffer &out, Bytes text, std::size_t width) noexcept {
    if (text.size() % width != 0) return false;
    for (std::size_t i = 0; i < text.size(); i += width) {
        const u32 unit = width == 1 ? text[i] : static_cast<u32>(text[i] << 8 | text[i + 1]);
        if (unit >= 0xD800 && unit < 0xE000) return false;
        append_utf8(out, unit);
    }
    return true;
}

/// A value that is no text: "#" and the hexadecimal digits of its encoding.
void append_encoded(Buffer &out, const ASN1_STRING *value) noexcept {
    Encoder encoder;
    encoder.any_value(value, static_cast<u32>(value->type));
    if (!encoder.ok()) return out.fail();
    out.append(static_cast<u8>('#'));
    for (const u8 octet : encoder.bytes()) {
        append_hex(out, octet);
    }
}

void append_value(Buffer &out, const ASN1_STRING *value) noexcept {
    const Bytes octets = octets_of(value);
    switch (value->type) {
        case TLX_TAG_UTF8_STRING:
        case TLX_TAG_PRINTABLE_STRING:
        case TLX_TAG_IA5_STRING:
            return append_escaped(out, octets);
        case TLX_TAG_T61_STRING:
        case TLX_TAG_BMP_STRING: {
            Buffer text;
            if (!widen(text, octets, value->type == TLX_TAG_BMP_STRING ? 2 : 1) || !text.ok()) {
                return out.fail();
            }
            return append_escaped(out, text.bytes());
        }
        default:
            return append_encoded(out, value);
    }
}

}  // namespace

char *dump_X509_NAME(const X509_NAME *name) {
    if (name == nullptr) return nullptr;
    Buffer out;
    for (u32 i = name->count; i-- > 0;) {
        const auto *child = static_cast<const X509_NAME_CHILD *>(name->values[i]);
        if (child == nullptr || child->type == nullptr || child->data == nullptr) return nullptr;
        append(out, type_text(text_of(child->type)));
        append(out, "=");
        append_value(out, child->data);
        if (i > 0) append(out, ",");
    }
    out.append(u8{0});
    return reinterpret_cast<char *>(out.release());
}
