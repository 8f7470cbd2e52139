// Names as text (RFC 4514), in UTF-8.
#include <tlxpki/objects.h>

#include "asn1/oid_lookup.hpp"
#include "asn1/string_text.hpp"
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

/// False for an entry without type or value.
bool append_entry(Buffer &out, const X509_NAME_CHILD *entry) noexcept {
    if (entry == nullptr || entry->type == nullptr || entry->data == nullptr) return false;
    append(out, type_text(text_of(entry->type)));
    append(out, "=");
    Buffer text;
    if (append_text(text, entry->data->type, octets_of(entry->data))) {
        if (!text.ok()) out.fail();
        append_escaped(out, text.bytes());
    } else {
        append_encoded(out, entry->data);
    }
    return true;
}

char *release_text(Buffer &out) noexcept {
    out.append(u8{0});
    return reinterpret_cast<char *>(out.release());
}

}  // namespace

char *dump_X509_NAME_CHILD(const X509_NAME_CHILD *child) {
    Buffer out;
    return append_entry(out, child) ? release_text(out) : nullptr;
}

char *dump_X509_NAME(const X509_NAME *name) {
    if (name == nullptr) return nullptr;
    Buffer out;
    for (u32 i = name->count; i-- > 0;) {
        if (!append_entry(out, static_cast<const X509_NAME_CHILD *>(name->values[i]))) return nullptr;
        if (i > 0) append(out, ",");
    }
    return release_text(out);
}
