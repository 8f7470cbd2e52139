// Cutting children out of a node.
#include <tlxpki/asn1.h>

#include "asn1/ber_decode.hpp"
#include "der/element.hpp"
#include "der/values.hpp"

using namespace tlx;

namespace {

bool find_child(const ASN1_UNIT *node, u32 index, Element &child) noexcept {
    Element parent;
    if (!view_node(node, parent)) return false;
    Cursor children(parent);
    for (u32 i = 0; children.next(child); ++i) {
        if (i == index) return true;
    }
    return false;
}

/// The matching rule: the pseudo-tags stand for many types only where the tag number is not their own low
/// five bits (0 and 1).
void *decode_child(const Element &child, u32 expected) noexcept {
    if (child.matches(expected)) return decode_as(child, expected);
    if (expected == TLX_TAG_ANY_STRING) return decode_any_string(child);
    if (expected == TLX_TAG_ANY_NODE && kStringsAndTimes.has(child.number())) return make_node(child);
    return nullptr;
}

/// The child after the one at `offset`.
bool next_child(const ASN1_UNIT *node, u32 offset, Element &child) noexcept {
    Element parent;
    if (!view_node(node, parent) || offset >= parent.contents.size()) return false;
    Cursor children(parent.contents.subspan(offset));
    return children.next(child) && children.next(child);
}

}  // namespace

void *getBERChildAt(const ASN1_UNIT *node, uint32_t index, uint32_t expected) {
    Element child;
    return find_child(node, index, child) ? decode_child(child, expected) : nullptr;
}

void *getDERChildAt(const ASN1_UNIT *node, uint32_t index, uint32_t expected) {
    return getBERChildAt(node, index, expected);
}

void *getBERChildOffset(const ASN1_UNIT *node, uint32_t index, uint32_t expected, uint32_t *cursor) {
    if (cursor == nullptr) return nullptr;
    Element child;
    const bool found = *cursor == 0 ? find_child(node, index, child) : next_child(node, *cursor, child);
    if (!found) return nullptr;
    void *value = decode_child(child, expected);
    if (value != nullptr) *cursor = static_cast<u32>(child.whole.data() - node->value);
    return value;
}

void *getDERChildOffset(const ASN1_UNIT *node, uint32_t index, uint32_t expected, uint32_t *cursor) {
    return getBERChildOffset(node, index, expected, cursor);
}

uint32_t getChildType(const ASN1_UNIT *node, uint32_t index) {
    Element child;
    return find_child(node, index, child) ? child.tag : 0xFFFFFFFF;
}

uint32_t getSequenceChildNum(const ASN1_UNIT *node) {
    Element parent;
    return view_node(node, parent) ? count_children(parent.contents) : 0;
}
