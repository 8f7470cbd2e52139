#include "der/values.hpp"

#include <tlxcrypto/bigint.h>

#include "der/memory.hpp"
#include "der/oid_text.hpp"
#include "der/owned.hpp"

namespace tlx {
namespace {

/// A record with room for `size` octets and the zero octet after them.
ASN1_STRING *allocate_string(i32 type, std::size_t size) noexcept {
    auto *string = static_cast<ASN1_STRING *>(TLX_ALLOCATE(sizeof(ASN1_STRING)));
    if (string == nullptr) return nullptr;
    auto *data = static_cast<u8 *>(TLX_ALLOCATE(size + 1));
    if (data == nullptr) {
        tlx_free(string);
        return nullptr;
    }
    data[size] = 0;
    *string = {type, data, static_cast<i32>(size), 0};
    return string;
}

/// Calls use(octets) for each segment of a constructed string, in order. False for a segment of another type.
template <typename Use>
bool for_each_segment(Bytes contents, i32 type, Use use, unsigned depth = 0) noexcept {
    if (depth >= kMaxDepth) return false;
    Cursor segments(contents);
    while (!segments.at_end()) {
        Element segment;
        if (!segments.next(segment) || (segment.tag & ~kConstructed) != type) return false;
        if (!segment.constructed()) {
            use(segment.contents);
        } else if (!for_each_segment(segment.contents, type, use, depth + 1)) {
            return false;
        }
    }
    return true;
}

}  // namespace

ASN1_STRING *decode_joined(i32 type, const Element &element) noexcept {
    if (!element.constructed()) return new_string(type, element.contents);
    std::size_t size = 0;
    if (!for_each_segment(element.contents, type, [&](Bytes octets) { size += octets.size(); }))
        return nullptr;
    ASN1_STRING *string = allocate_string(type, size);
    if (string == nullptr) return nullptr;
    u8 *end = string->data;
    static_cast<void>(for_each_segment(element.contents, type, [&](Bytes octets) {
        if (!octets.empty()) std::memcpy(end, octets.data(), octets.size());
        end += octets.size();
    }));
    return string;
}

ASN1_STRING *new_string(i32 type, Bytes octets) noexcept {
    if (octets.size() > kMaxLength) return nullptr;
    ASN1_STRING *string = allocate_string(type, octets.size());
    if (string != nullptr && !octets.empty()) std::memcpy(string->data, octets.data(), octets.size());
    return string;
}

BIGINT *decode_integer(Bytes contents) noexcept {
    if (contents.empty()) return nullptr;
    return binary_to_BIGINT(contents.data(), static_cast<u32>(contents.size()));
}

ASN1_STRING *decode_string(i32 type, Bytes contents) noexcept {
    return new_string(type, contents);
}

BIT_STRING *decode_bit_string(Bytes contents) noexcept {
    if (contents.empty()) return nullptr;
    BIT_STRING *bits = new_string(TLX_TAG_BIT_STRING, contents.subspan(1));
    if (bits != nullptr) bits->extra = contents[0];
    return bits;
}

OBJECT_IDENTIFIER *decode_oid(Bytes contents) noexcept {
    char text[kMaxDottedText + 1];
    u32 length = 0;
    if (!oid_to_text(contents, text, length)) return nullptr;
    return new_string(TLX_TAG_OBJECT_IDENTIFIER, {reinterpret_cast<const u8 *>(text), length});
}

i32 time_ends_in_z(u32 tag, std::size_t length) noexcept {
    const std::size_t minutes = tag == TLX_TAG_UTC_TIME ? 11 : 13;
    return length == minutes || length == minutes + 2 ? 1 : 0;
}

ASN1_STRING *decode_time(i32 type, Bytes contents) noexcept {
    ASN1_STRING *time = new_string(type, contents);
    if (time != nullptr) time->extra = time_ends_in_z(static_cast<u32>(type), contents.size());
    return time;
}

ASN1_STRING *decode_any_string(const Element &element) noexcept {
    if (element.tag >= kContextSpecific) return new_string(element.tag, element.whole);
    if (element.tag == 0) return nullptr;
    ASN1_STRING *string = nullptr;
    switch (element.number()) {
        case TLX_TAG_BIT_STRING:
            string = decode_bit_string(element.contents);
            break;
        case TLX_TAG_OBJECT_IDENTIFIER:
            string = decode_oid(element.contents);
            break;
        case TLX_TAG_UTC_TIME:
        case TLX_TAG_GENERALIZED_TIME:
            string = decode_time(element.number(), element.contents);
            break;
        case TLX_TAG_BOOLEAN:
        case TLX_TAG_INTEGER:
        case TLX_TAG_OCTET_STRING:
        case TLX_TAG_NULL:
        case TLX_TAG_ENUMERATED:
        case TLX_TAG_UTF8_STRING:
        case TLX_TAG_SEQUENCE:
        case TLX_TAG_SET:
        case TLX_TAG_PRINTABLE_STRING:
        case TLX_TAG_T61_STRING:
        case TLX_TAG_IA5_STRING:
        case 26:  // VisibleString
        case TLX_TAG_BMP_STRING:
            string = new_string(element.tag, element.contents);
            break;
        default:
            return nullptr;
    }
    if (string != nullptr) string->type = element.tag;
    return string;
}

ASN1_UNIT *make_header(const Element &element) noexcept {
    Owned<ASN1_UNIT> node(TLX_NEW(ASN1_UNIT));
    if (!node) return nullptr;
    node->tag = copy_terminated({&element.tag, 1});
    node->length = copy_terminated(element.length_octets);
    return node->tag != nullptr && node->length != nullptr ? node.release() : nullptr;
}

void place_contents(ASN1_UNIT &node, const Element &element) noexcept {
    const std::size_t size = element.contents.size();
    if (size > 0) std::memmove(node.value, element.contents.data(), size);
    std::memset(node.value + size, 0, kEndOfContentsSize);
    if (element.indefinite) node.eoc = node.value + size;
}

ASN1_UNIT *make_node(const Element &element) noexcept {
    Owned<ASN1_UNIT> node(make_header(element));
    if (!node) return nullptr;
    node->value = static_cast<u8 *>(TLX_ALLOCATE(element.contents.size() + kEndOfContentsSize));
    if (node->value == nullptr) return nullptr;
    place_contents(*node, element);
    return node.release();
}

bool read_node_length(const ASN1_UNIT *node, std::size_t &length) noexcept {
    if (node == nullptr || node->length == nullptr) return false;
    if (*node->length != kIndefiniteLength) {
        return read_definite_length({node->length, getASN1LengthSize(node->length)}, length);
    }
    if (node->eoc == nullptr || node->eoc < node->value) return false;
    length = static_cast<std::size_t>(node->eoc - node->value);
    return length <= kMaxLength;
}

bool view_node(const ASN1_UNIT *node, Element &element) noexcept {
    std::size_t size = 0;
    if (node == nullptr || node->tag == nullptr || !read_node_length(node, size)) return false;
    if (size > 0 && node->value == nullptr) return false;
    element.tag = *node->tag;
    element.indefinite = *node->length == kIndefiniteLength;
    element.length_octets = {node->length, getASN1LengthSize(node->length)};
    element.contents = {node->value, size};
    element.whole = {};
    return true;
}

bool view_container(const ASN1_UNIT *node, Element &element) noexcept {
    return (node != nullptr && node->tag == nullptr) || view_node(node, element);
}

u32 decode_in_place(const Element &element, ASN1_DECODER decoder, void **out) noexcept {
    const auto part = [](Bytes octets) { return const_cast<u8 *>(octets.data()); };
    u8 *value = part(element.contents);
    const ASN1_UNIT node = {part(element.whole), part(element.length_octets), value,
                            element.indefinite ? value + element.contents.size() : nullptr};
    return decoder(&node, out);
}

}  // namespace tlx
