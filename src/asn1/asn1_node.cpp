// ASN1_UNIT: lifecycle, reading from octets, measuring, length forms.
#include <tlxpki/asn1.h>

#include "der/element.hpp"
#include "der/memory.hpp"
#include "der/owned.hpp"
#include "der/typed_element.hpp"
#include "der/values.hpp"

using namespace tlx;

namespace {

constexpr u32 kNoLength = 0xFFFFFFFF;

ASN1_UNIT *node_of(Bytes octets) noexcept {
    Element element;
    return read_element(octets, element) ? make_node(element) : nullptr;
}

bool replace_length(ASN1_UNIT *node, const u8 *octets, std::size_t count) noexcept {
    auto *length = static_cast<u8 *>(TLX_REALLOCATE(node->length, count));
    if (length == nullptr) return false;
    std::memcpy(length, octets, count);
    node->length = length;
    return true;
}

bool make_indefinite(ASN1_UNIT *node, const Element &element) noexcept {
    if (!element.constructed()) return false;
    const std::size_t size = element.contents.size();
    auto *value = static_cast<u8 *>(TLX_REALLOCATE(node->value, size + kEndOfContentsSize));
    if (value == nullptr) return false;
    node->value = value;
    // One octet is not more than any length holds, so the length octets stay where they are.
    *node->length = kIndefiniteLength;
    std::memset(value + size, 0, kEndOfContentsSize);
    node->eoc = value + size;
    return true;
}

bool make_definite(ASN1_UNIT *node, const Element &element, LengthForm form) noexcept {
    const auto size = static_cast<u32>(element.contents.size());
    const bool is_long = element.length_octets.size() > 1;
    if (!element.indefinite && (form == LengthForm::long_form) == is_long) return true;
    if (form == LengthForm::short_form && size >= kIndefiniteLength) return false;
    u8 octets[5];
    const std::size_t count =
        form == LengthForm::long_form ? write_long_length(size, octets) : write_length(size, octets);
    if (!replace_length(node, octets, count)) return false;
    node->eoc = nullptr;
    return true;
}

}  // namespace

ASN1_UNIT *new_ASN1_UNIT(void) {
    return TLX_NEW(ASN1_UNIT);
}

void clean_ASN1_UNIT(ASN1_UNIT *node) {
    if (node == nullptr) return;
    tlx_free(node->tag);
    tlx_free(node->length);
    tlx_free(node->value);
    *node = ASN1_UNIT{};
}

void free_ASN1_UNIT(ASN1_UNIT *node) {
    clean_ASN1_UNIT(node);
    tlx_free(node);
}

ASN1_UNIT *dup_ASN1_UNIT(const ASN1_UNIT *node) {
    if (node == nullptr) return nullptr;
    if (node->tag == nullptr) return new_ASN1_UNIT();
    Element element;
    return view_node(node, element) ? make_node(element) : nullptr;
}

ASN1_UNIT *decodeToBERSequence(const uint8_t *element) {
    Element view;
    return read_trusted_element(element, view) ? make_node(view) : nullptr;
}

ASN1_UNIT *decodeToDERSequence(const uint8_t *element) {
    return decodeToBERSequence(element);
}

ASN1_UNIT *decodeToDERSequence_n(const uint8_t *element, uint32_t len) {
    return element != nullptr ? node_of({element, len}) : nullptr;
}

uint32_t getASN1LengthSize(const uint8_t *length) {
    if (length == nullptr) return 0;
    return *length > 0x7F ? 1U + (*length & 0x7FU) : 1U;
}

uint32_t getASN1ValueLengthFromLO(const uint8_t *length) {
    std::size_t size = 0;
    return read_trusted_length(length, size) ? static_cast<u32>(size) : kNoLength;
}

uint32_t getASN1ValueLength(const ASN1_UNIT *node) {
    std::size_t size = 0;
    return read_node_length(node, size) ? static_cast<u32>(size) : kNoLength;
}

uint32_t getASN1IndefiniteValueLength(const uint8_t *contents) {
    std::size_t size = 0;
    return measure_trusted_indefinite(contents, size) ? static_cast<u32>(size) : kNoLength;
}

uint32_t getASN1LengthForm(uint32_t tag, int32_t len) {
    const std::int64_t size = std::int64_t{len} + (tag == TLX_TAG_BIT_STRING ? 1 : 0);
    return size < kIndefiniteLength ? 0 : 1;
}

uint32_t setBERLengthForm(ASN1_UNIT *node, uint32_t form) {
    Element element;
    if (!view_node(node, element)) return 0x42100101;
    const LengthForm wanted = length_form(form);
    if (wanted == LengthForm::unknown) return 0x42100101;
    const bool done = wanted == LengthForm::indefinite ? make_indefinite(node, element)
                                                       : make_definite(node, element, wanted);
    return done ? 0 : 0x42100101;
}
