#include "der/encoder.hpp"

#include "der/oid_text.hpp"
#include "der/owned.hpp"
#include "der/typed_element.hpp"
#include "der/values.hpp"

namespace tlx {
namespace {

/// Contents of so many octets are worth some effort not to move or copy them.
constexpr std::size_t kLong = 4096;

}  // namespace

std::size_t Encoder::open(u8 tag) noexcept {
    buffer_.append(tag);
    buffer_.append(u8{0});
    return buffer_.size();
}

void Encoder::widen(Nest &nest, std::size_t count) noexcept {
    if (count <= nest.room_) return;
    const std::size_t gap = count - nest.room_;
    buffer_.insert_gap(nest.start_, gap);
    if (!buffer_.ok()) return;
    nest.room_ = count;
    for (Nest *moved = innermost_; moved != nest.outer_; moved = moved->outer_) {
        moved->start_ += gap;
    }
}

void Encoder::prepare(std::size_t length) noexcept {
    if (length < kLong) return;
    u8 octets[5];
    const std::size_t count = write_length(static_cast<u32>(length), octets);
    for (Nest *nest = innermost_; nest != nullptr; nest = nest->outer_) {
        widen(*nest, count);
    }
}

void Encoder::close(Nest &nest) noexcept {
    u8 octets[5];
    const std::size_t count = write_length(static_cast<u32>(buffer_.size() - nest.start_), octets);
    widen(nest, count);
    if (buffer_.ok()) std::memcpy(buffer_.data() + nest.start_ - count, octets, count);
    innermost_ = nest.outer_;
}

u8 *Encoder::header(u8 tag, std::size_t length) noexcept {
    if (length > kMaxLength) {
        fail();
        return nullptr;
    }
    prepare(length);
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
    const auto identifier = nest(tag);
    if (!text_to_oid(dotted, buffer_)) fail();
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
    prepare(element.contents.size());
    buffer_.append(element.tag);
    buffer_.append(element.length_octets);
    buffer_.append(element.contents);
    if (element.indefinite) {
        buffer_.append(u8{0});
        buffer_.append(u8{0});
    }
}

void Encoder::raw(Bytes octets) noexcept {
    prepare(octets.size());
    buffer_.append(octets);
}

ASN1_UNIT *Encoder::to_node() noexcept {
    Element element;
    if (!ok() || !read_element(buffer_.bytes(), element)) return nullptr;
    if (element.contents.size() < kLong) return make_node(element);
    Owned<ASN1_UNIT> node(make_header(element));
    if (!node) return nullptr;
    node->value = buffer_.release();
    place_contents(*node, element);
    // A secret leaves nothing behind its new end.
    const std::size_t size = element.contents.size();
    std::memset(node->value + size, 0, element.whole.size() - size);
    return node.release();
}

bool hand_over(Encoder &encoder, ASN1_UNIT **out) noexcept {
    ASN1_UNIT *node = encoder.to_node();
    if (node == nullptr) return false;
    *out = node;
    return true;
}

}  // namespace tlx
