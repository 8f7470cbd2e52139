// Building nodes, BER layer.
#include "asn1/asn1_build.hpp"

#include <tlxpki/asn1.h>

#include "der/encoder.hpp"
#include "der/memory.hpp"
#include "der/owned.hpp"
#include "der/values.hpp"

namespace tlx {
namespace {

bool is_node_tag(u32 tag) noexcept {
    return tag == TLX_TAG_SEQUENCE || tag == TLX_TAG_SET || tag == TLX_TAG_SEQUENCE_OCTET ||
           tag == TLX_TAG_SET_OCTET || tag == TLX_TAG_ANY_NODE;
}

/// The node that an append takes over: a child with tag 33, unless it is the container itself.
Owned<ASN1_UNIT> take_over(const ASN1_UNIT *seq, const TypedValue &value) noexcept {
    const bool consumed = value.tag == TLX_TAG_ANY_NODE && value.value != seq;
    return Owned<ASN1_UNIT>(consumed ? static_cast<ASN1_UNIT *>(const_cast<void *>(value.value)) : nullptr);
}

/// An empty element with this identifier in a cleaned node.
bool start_node(ASN1_UNIT *node, u8 identifier) noexcept {
    clean_ASN1_UNIT(node);
    node->tag = static_cast<u8 *>(TLX_ALLOCATE(1));
    node->length = static_cast<u8 *>(TLX_ALLOCATE(1));
    if (node->tag == nullptr || node->length == nullptr) return false;
    *node->tag = identifier;
    *node->length = 0;
    return true;
}

/// Opens `more` octets at the end of the container's contents and rewrites its length for them; null on
/// failure. End-of-contents octets go.
u8 *grow_contents(ASN1_UNIT *seq, std::size_t more) noexcept {
    if (seq->tag == nullptr && !start_node(seq, kSequence)) return nullptr;
    std::size_t size = 0;
    if (!read_node_length(seq, size) || more > kMaxLength - size) return nullptr;
    auto *value = static_cast<u8 *>(TLX_REALLOCATE(seq->value, size + more));
    if (value == nullptr) return nullptr;
    seq->value = value;
    seq->eoc = nullptr;

    u8 octets[5];
    const std::size_t count = write_length(static_cast<u32>(size + more), octets);
    if (count > getASN1LengthSize(seq->length)) {
        auto *length = static_cast<u8 *>(TLX_REALLOCATE(seq->length, count));
        if (length == nullptr) return nullptr;
        seq->length = length;
    }
    std::memcpy(seq->length, octets, count);
    return value + size;
}

bool append_element(ASN1_UNIT *seq, const TypedElement &element) noexcept {
    u8 *room = grow_contents(seq, element.size());
    return room != nullptr && element.write(room);
}

/// Copies a finished node. A node may be appended to itself: what it held before is appended then.
bool append_node(ASN1_UNIT *seq, const ASN1_UNIT *child) noexcept {
    Element element;
    if (!view_node(child, element)) return false;
    u8 header[kLongestHeader] = {element.tag};
    const std::size_t header_size = 1 + element.length_octets.size();
    std::memcpy(header + 1, element.length_octets.data(), element.length_octets.size());

    const std::size_t size = element.contents.size();
    const std::size_t trailer = element.indefinite ? kEndOfContentsSize : 0;
    u8 *room = grow_contents(seq, header_size + size + trailer);
    if (room == nullptr) return false;
    const u8 *contents = child == seq ? seq->value : element.contents.data();
    std::memcpy(room, header, header_size);
    if (size > 0) std::memcpy(room + header_size, contents, size);
    std::memset(room + header_size + size, 0, trailer);
    return true;
}

bool append_any(ASN1_UNIT *seq, const TypedValue &value) noexcept {
    if (value.value == nullptr) return false;
    if (is_node_tag(value.tag)) return append_node(seq, static_cast<const ASN1_UNIT *>(value.value));
    TypedElement element(0, value.form);
    return element.set_any(static_cast<const ASN1_STRING *>(value.value)) && append_element(seq, element);
}

/// The conditions that every encoded value has to meet, beside those of its type.
bool describe(const TypedValue &value, TypedElement &element) noexcept {
    if (value.value == nullptr && value.tag != TLX_TAG_NULL) return false;
    if (value.len > kMaxLength) return false;
    if (value.form == LengthForm::short_form && value.len >= kIndefiniteLength) return false;
    if (value.tag == TLX_TAG_ANY_STRING) {
        return element.set_string_by_type(static_cast<const ASN1_STRING *>(value.value));
    }
    return element.set_universal(value.tag, value.value, static_cast<i32>(value.len));
}

bool append_child(ASN1_UNIT *seq, const TypedValue &value) noexcept {
    if (is_node_tag(value.tag) || value.tag == TLX_TAG_ANY_STRING) return append_any(seq, value);
    TypedElement element(static_cast<u8>(value.tag), value.form);
    return describe(value, element) && append_element(seq, element);
}

bool set_identifier(const ASN1_UNIT *node, u32 identifier) noexcept {
    if (identifier == kKeepIdentifier) return true;
    if (identifier > 0xFF) return false;
    *node->tag = static_cast<u8>(identifier);
    return true;
}

/// A segmented string takes one more segment of its own type, and none after a bit string segment that ends
/// within an octet.
bool takes_segment(const ASN1_UNIT *seq, u32 tag) noexcept {
    if (seq == nullptr || seq->tag == nullptr) return seq != nullptr;
    if ((*seq->tag & kTagNumberMask) != tag) return false;
    if (tag != TLX_TAG_BIT_STRING) return true;
    Element container;
    if (!view_node(seq, container)) return false;
    Cursor segments(container);
    while (!segments.at_end()) {
        Element segment;
        if (!segments.next(TLX_TAG_BIT_STRING, segment)) return false;
        if (segment.contents.empty() || segment.contents.front() != 0) return false;
    }
    return true;
}

}  // namespace

bool fill_node(ASN1_UNIT *node, const TypedElement &element) noexcept {
    const Bytes length = element.length_octets();
    OwnedOctets<u8> value(static_cast<u8 *>(TLX_ALLOCATE(element.contents_size() + 1)));
    OwnedOctets<u8> octets(copy_terminated(length));
    OwnedOctets<u8> identifier(static_cast<u8 *>(TLX_ALLOCATE(1)));
    if (!value || !octets || !identifier || !element.write_contents(value.get())) return false;
    // The value may lie in the node's own buffers, so they go last.
    clean_ASN1_UNIT(node);
    *identifier = element.identifier();
    value.get()[element.contents_size()] = 0;
    node->tag = identifier.release();
    node->length = octets.release();
    node->value = value.release();
    return true;
}

bool encode_value(ASN1_UNIT *node, const TypedValue &value, u32 identifier) noexcept {
    if (node == nullptr) return false;
    TypedElement element(static_cast<u8>(value.tag), value.form);
    if (describe(value, element) && fill_node(node, element) && set_identifier(node, identifier)) return true;
    clean_ASN1_UNIT(node);
    return false;
}

bool append_value(ASN1_UNIT *seq, const TypedValue &value, u32 identifier) noexcept {
    const Owned<ASN1_UNIT> consumed = take_over(seq, value);
    if (seq == nullptr) return false;
    const bool refused = value.tag == TLX_TAG_ANY_NODE && value.value == seq;
    if (!refused && append_child(seq, value) && set_identifier(seq, identifier)) return true;
    clean_ASN1_UNIT(seq);
    return false;
}

bool append_segment(ASN1_UNIT *seq, const TypedValue &value) noexcept {
    if (kStringsAndTimes.has(value.tag) && takes_segment(seq, value.tag)) {
        return append_value(seq, value, kConstructed | value.tag);
    }
    const Owned<ASN1_UNIT> consumed = take_over(seq, value);
    clean_ASN1_UNIT(seq);
    return false;
}

bool means_empty_list(u32 tag, u32 len) noexcept {
    return len == 0 && (!is_node_tag(tag) || tag == TLX_TAG_ANY_NODE);
}

bool make_empty_list(ASN1_UNIT *seq, const TypedValue &value, u8 identifier) noexcept {
    const Owned<ASN1_UNIT> consumed = take_over(seq, value);
    if (seq == nullptr) return false;
    if (start_node(seq, identifier)) return true;
    clean_ASN1_UNIT(seq);
    return false;
}

}  // namespace tlx

using namespace tlx;

uint32_t encodeToBER(ASN1_UNIT *node, uint32_t tag, const void *value, int32_t len, uint32_t form) {
    return encode_value(node, {tag, value, static_cast<u32>(len), length_form(form)}) ? 0 : 0x42090101;
}

uint32_t encodeToBER_CS(ASN1_UNIT *node, uint32_t ctx, uint32_t tag, const void *value, int32_t len,
                        uint32_t form) {
    const TypedValue typed{tag, value, static_cast<u32>(len), length_form(form)};
    return encode_value(node, typed, kContextSpecific | ctx) ? 0 : 0x420A0101;
}

uint32_t addToBERSequence(ASN1_UNIT *seq, uint32_t tag, const void *value, uint32_t len, int32_t form) {
    return append_value(seq, {tag, value, len, length_form(static_cast<u32>(form))}) ? 0 : 0x420B0101;
}

uint32_t addToBERSequence_CS(ASN1_UNIT *seq, uint32_t ctx, uint32_t tag, const void *value, uint32_t len,
                             int32_t form) {
    const TypedValue typed{tag, value, len, length_form(static_cast<u32>(form))};
    return append_value(seq, typed, kContextSpecific | kConstructed | ctx) ? 0 : 0x420F0101;
}

uint32_t addToBERSet(ASN1_UNIT *seq, uint32_t tag, const void *value, uint32_t len, int32_t form) {
    return append_value(seq, {tag, value, len, length_form(static_cast<u32>(form))}, kSet) ? 0 : 0x420D0101;
}

uint32_t addToBERSequenceOf(ASN1_UNIT *seq, uint32_t tag, const void *value, uint32_t len, int32_t form) {
    const TypedValue typed{tag, value, len, length_form(static_cast<u32>(form))};
    const bool done =
        means_empty_list(tag, len) ? make_empty_list(seq, typed, kEmptySequenceOf) : append_value(seq, typed);
    return done ? 0 : 0x420C0101;
}

uint32_t addToBERSetOf(ASN1_UNIT *seq, uint32_t tag, const void *value, uint32_t len, int32_t form) {
    const TypedValue typed{tag, value, len, length_form(static_cast<u32>(form))};
    const bool done = means_empty_list(tag, len) ? make_empty_list(seq, typed, kEmptySetOf)
                                                 : append_value(seq, typed, kSet);
    return done ? 0 : 0x420E0101;
}

uint32_t addToBERStringSequence(ASN1_UNIT *seq, uint32_t tag, const void *value, uint32_t len, int32_t form) {
    return append_segment(seq, {tag, value, len, length_form(static_cast<u32>(form))}) ? 0 : 0x42110101;
}
