#include "der/encoder.hpp"

#include "der/oid_text.hpp"
#include "der/owned.hpp"
#include "der/typed_element.hpp"
#include "der/values.hpp"

namespace tlx {

std::size_t Encoder::open(u8 tag) noexcept {
    buffer_.append(tag);
    buffer_.append(u8{0});
    return buffer_.size();
}

void Encoder::close(std::size_t start) noexcept {
    if (!buffer_.ok()) return;
    u8 octets[5];
    const std::size_t count = write_length(static_cast<u32>(buffer_.size() - start), octets);
    if (count > 1) buffer_.insert_gap(start, count - 1);
    if (buffer_.ok()) std::memcpy(buffer_.data() + start - 1, octets, count);
}

u8 *Encoder::header(u8 tag, std::size_t length) noexcept {
    if (length > kMaxLength) {
        fail();
        return nullptr;
    }
    u8 octets[5];
    const std::size_t count = write_length(static_cast<u32>(length), octets);
    u8 *room = buffer_.reserve(1 + count + length);
    if (room == nullptr) return nullptr;
    room[0] = tag;
    std::memcpy(room + 1, octets, count);
    buffer_.advance(1 + count + length);
    return room + 1 + count;
}

void Encoder::primitive(u8 tag, Bytes contents) noexcept {
    u8 *room = header(tag, contents.size());
    if (room != nullptr && !contents.empty()) std::memcpy(room, contents.data(), contents.size());
}

void Encoder::boolean(bool value, u8 tag) noexcept {
    const u8 octet = value ? 0xFF : 0x00;
    primitive(tag, {&octet, 1});
}

void Encoder::integer(const BIGINT *number, u8 tag) noexcept {
    if (number == nullptr) return fail();
    const u32 length = get_BIGINT_der_length(number);
    u8 *room = header(tag, length);
    if (room != nullptr && BIGINT_to_binary(number, room, length) != 0) fail();
}

void Encoder::small_integer(u8 value, u8 tag) noexcept {
    const u8 octets[2] = {0, value};
    const bool padded = value > 0x7F;
    primitive(tag, Bytes(octets).subspan(padded ? 0 : 1));
}

void Encoder::bit_string(const BIT_STRING *bits, u8 tag) noexcept {
    if (bits == nullptr || bits->length < 0) return fail();
    const Bytes octets = octets_of(bits);
    u8 *room = header(tag, octets.size() + 1);
    if (room == nullptr) return;
    room[0] = static_cast<u8>(bits->extra);
    if (!octets.empty()) std::memcpy(room + 1, octets.data(), octets.size());
}

void Encoder::oid(std::string_view dotted, u8 tag) noexcept {
    const std::size_t start = open(tag);
    if (!text_to_oid(dotted, buffer_)) return fail();
    close(start);
}

void Encoder::oid(const OBJECT_IDENTIFIER *oid, u8 tag) noexcept {
    this->oid(text_of(oid), tag);
}

void Encoder::string(const ASN1_STRING *string, u8 tag) noexcept {
    if (string == nullptr || string->length < 0) return fail();
    primitive(tag, octets_of(string));
}

void Encoder::any_string(const ASN1_STRING *string) noexcept {
    TypedElement element(0, LengthForm::minimal);
    if (!element.set_any(string)) return fail();
    u8 *room = buffer_.reserve(element.size());
    if (room == nullptr) return;
    if (!element.write(room)) return fail();
    buffer_.advance(element.size());
}

void Encoder::any_value(const ASN1_STRING *value, u32 identifier) noexcept {
    if (value == nullptr || identifier == 0 || identifier > 0xFF) return fail();
    const auto tag = static_cast<u8>(identifier);
    if (tag >= kContextSpecific) {
        // Read whole, so that the octets are the element itself.
        Element element;
        const Bytes octets = octets_of(value);
        if (!read_element(octets, element) || element.whole.size() != octets.size()) return fail();
        return raw(octets);
    }
    switch (tag & kTagNumberMask) {
        case TLX_TAG_BIT_STRING:
            return bit_string(value, tag);
        case TLX_TAG_OBJECT_IDENTIFIER:
            return oid(value, tag);
        case TLX_TAG_SEQUENCE:
        case TLX_TAG_SET:
            return string(value, static_cast<u8>(tag | kConstructed));
        default:
            return string(value, tag);
    }
}

void Encoder::node(const ASN1_UNIT *node) noexcept {
    Element element;
    if (!view_node(node, element)) return fail();
    buffer_.append(element.tag);
    buffer_.append(element.length_octets);
    buffer_.append(element.contents);
    if (element.indefinite) {
        buffer_.append(u8{0});
        buffer_.append(u8{0});
    }
}

ASN1_UNIT *Encoder::to_node() const noexcept {
    Element element;
    if (!ok() || !read_element(buffer_.bytes(), element)) return nullptr;
    return make_node(element);
}

bool hand_over(const Encoder &encoder, ASN1_UNIT **out) noexcept {
    ASN1_UNIT *node = encoder.to_node();
    if (node == nullptr) return false;
    *out = node;
    return true;
}

}  // namespace tlx
