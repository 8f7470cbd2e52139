#include "element_text.hpp"

#include <algorithm>

namespace tool {

namespace {

constexpr const char *kUniversalTags[] = {"end of contents",
                                          "BOOLEAN",
                                          "INTEGER",
                                          "BIT STRING",
                                          "OCTET STRING",
                                          "NULL",
                                          "OBJECT IDENTIFIER",
                                          "ObjectDescriptor",
                                          "EXTERNAL",
                                          "REAL",
                                          "ENUMERATED",
                                          "EMBEDDED PDV",
                                          "UTF8String",
                                          "RELATIVE-OID",
                                          "TIME",
                                          nullptr,
                                          "SEQUENCE",
                                          "SET",
                                          "NumericString",
                                          "PrintableString",
                                          "T61String",
                                          "VideotexString",
                                          "IA5String",
                                          "UTCTime",
                                          "GeneralizedTime",
                                          "GraphicString",
                                          "VisibleString",
                                          "GeneralString",
                                          "UniversalString",
                                          "CHARACTER STRING",
                                          "BMPString"};

/// The value of a primitive element, with its form.
struct Value {
    enum Form { kNone, kWord, kText, kOid, kBits, kHex } form = kNone;
    std::string text;  ///< of kWord, kText and kOid
    Octets octets;     ///< of kBits (without the unused-bits octet) and kHex
    unsigned unused_bits = 0;
};

Octets contents_of(const Element &element, Octets octets) {
    return octets.subspan(element.contents(), element.length);
}

/// Contents of an INTEGER of up to 64 bits.
std::string small_number(Octets contents) {
    uint64_t number = (contents[0] & 0x80) != 0 ? ~uint64_t{0} : 0;
    for (const uint8_t octet : contents) {
        number = number << 8 | octet;
    }
    return std::to_string(static_cast<int64_t>(number));
}

/// The dotted text of an object identifier's contents. False for other contents and for arcs above 64 bits.
bool dotted_oid(Octets contents, std::string &text) {
    if (contents.empty() || (contents.back() & 0x80) != 0) return false;
    uint64_t arc = 0;
    for (const uint8_t octet : contents) {
        if (arc >> 57 != 0) return false;
        arc = arc << 7 | (octet & 0x7F);
        if ((octet & 0x80) != 0) continue;
        if (text.empty()) {
            const uint64_t root = std::min<uint64_t>(arc / 40, 2);
            text = std::to_string(root);
            arc -= 40 * root;
        }
        text += "." + std::to_string(arc);
        arc = 0;
    }
    return true;
}

/// Whether octets under a tag of the context are most likely characters.
bool looks_like_text(Octets contents) {
    const std::string_view text(reinterpret_cast<const char *>(contents.data()), contents.size());
    const bool control =
        std::any_of(contents.begin(), contents.end(), [](uint8_t c) { return c < 0x20 || c == 0x7F; });
    return !text.empty() && !control && is_utf8(text);
}

Value value_of_context(Octets contents) {
    if (looks_like_text(contents)) return {Value::kText, {contents.begin(), contents.end()}, {}, 0};
    return {Value::kHex, {}, contents, 0};
}

/// The characters of the contents of a string type. False for another type, and contents that are no text.
bool string_contents(uint64_t tag, Octets contents, std::string &text) {
    if (tag > TLX_TAG_BMP_STRING) return false;
    const String string = made<String>(new_ASN1_STRING());
    must(set_ASN1_STRING_value(string.get(), static_cast<int32_t>(tag), contents.data(),
                               static_cast<uint32_t>(contents.size())));
    return string_text(string.get(), text);
}

Value value_of(const Element &element, Octets octets) {
    const Octets contents = contents_of(element, octets);
    if (element.constructed) return {};
    if (element.tag_class != 0) return value_of_context(contents);
    std::string text;
    switch (element.tag) {
        case 0:
        case TLX_TAG_NULL:
            return contents.empty() ? Value{} : Value{Value::kHex, {}, contents, 0};
        case TLX_TAG_BOOLEAN:
            if (contents.size() != 1) break;
            return {Value::kWord, contents[0] == 0 ? "FALSE" : "TRUE", {}, 0};
        case TLX_TAG_INTEGER:
        case TLX_TAG_ENUMERATED:
            if (contents.empty() || contents.size() > 8) break;
            return {Value::kWord, small_number(contents), {}, 0};
        case TLX_TAG_BIT_STRING:
            if (contents.empty()) break;
            return {Value::kBits, {}, contents.subspan(1), contents[0]};
        case TLX_TAG_OBJECT_IDENTIFIER:
            if (!dotted_oid(contents, text)) break;
            return {Value::kOid, text, {}, 0};
        default:
            if (!string_contents(element.tag, contents, text)) break;
            return {Value::kText, text, {}, 0};
    }
    return {Value::kHex, {}, contents, 0};
}

/// Hexadecimal digits of the first octets, and the number of all octets when there are more.
std::string short_hex(Octets octets, std::size_t most) {
    if (octets.size() <= most) return hex(octets);
    return hex(octets.first(most)) + "... (" + std::to_string(octets.size()) + " octets)";
}

/// The first characters of a text.
std::string short_text(const std::string &text, std::size_t most) {
    std::size_t end = std::min(text.size(), most);
    while (end < text.size() && end > 0 && (static_cast<uint8_t>(text[end]) & 0xC0) == 0x80) {
        --end;
    }
    return '"' + printable(text.substr(0, end)) + '"' + (end < text.size() ? "..." : "");
}

}  // namespace

std::string tag_text(const Element &element) {
    constexpr const char *kClasses[] = {"UNIVERSAL ", "APPLICATION ", "", "PRIVATE "};
    const bool named = element.tag_class == 0 && element.tag < std::size(kUniversalTags);
    if (named && kUniversalTags[element.tag] != nullptr) return kUniversalTags[element.tag];
    return "[" + std::string(kClasses[element.tag_class]) + std::to_string(element.tag) + "]";
}

std::string value_text(const Element &element, Octets octets, std::size_t most) {
    const Value value = value_of(element, octets);
    switch (value.form) {
        case Value::kNone:
            return "";
        case Value::kWord:
            return value.text;
        case Value::kText:
            return short_text(value.text, std::max<std::size_t>(most, 4 * kShortValue));
        case Value::kHex:
            return short_hex(value.octets, most);
        case Value::kBits:
            return short_hex(value.octets, most) +
                   (value.unused_bits == 0 ? "" : " (" + std::to_string(value.unused_bits) + " unused bits)");
        case Value::kOid: {
            const std::string name = short_name(value.text);
            return name.empty() ? value.text : value.text + " (" + name + ")";
        }
    }
    return "";
}

void add_value_json(Json &json, const Element &element, Octets octets) {
    const Value value = value_of(element, octets);
    switch (value.form) {
        case Value::kNone:
            break;
        case Value::kWord:
        case Value::kText:
            json["value"] = value.text;
            break;
        case Value::kOid: {
            json["value"] = value.text;
            const std::string name = short_name(value.text);
            if (!name.empty()) json["name"] = name;
            break;
        }
        case Value::kBits:
            json["unused_bits"] = value.unused_bits;
            json["hex"] = hex(value.octets);
            break;
        case Value::kHex:
            json["hex"] = hex(value.octets);
            break;
    }
}

}  // namespace tool
