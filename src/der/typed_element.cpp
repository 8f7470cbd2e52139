#include "der/typed_element.hpp"

#include "der/encoder.hpp"
#include "der/oid_text.hpp"
#include "der/values.hpp"

namespace tlx {
namespace {

/// The first `len` octets of a record. False when it has fewer.
bool take_octets(const ASN1_STRING *value, i32 len, Bytes &octets) noexcept {
    if (value == nullptr || len < 0) return false;
    const Bytes all = octets_of(value);
    const auto count = static_cast<std::size_t>(len);
    if (count > all.size()) return false;
    octets = all.first(count);
    return true;
}

}  // namespace

bool TypedElement::set_boolean(const u8 *value, i32 len) noexcept {
    if (value == nullptr || len != 1) return false;
    octets_ = {value, 1};
    return close();
}

bool TypedElement::set_integer(const BIGINT *value, i32 len) noexcept {
    if (value == nullptr || len <= 0) return false;
    number_ = value;
    number_size_ = static_cast<u32>(len);
    return close();
}

bool TypedElement::set_bit_string(const BIT_STRING *value, i32 len) noexcept {
    if (!take_octets(value, len, octets_)) return false;
    has_prefix_ = true;
    prefix_ = static_cast<u8>(value->extra);
    return close();
}

bool TypedElement::set_null(const void * /*value*/, i32 len) noexcept {
    return len == 0 && close();
}

bool TypedElement::set_oid(const OBJECT_IDENTIFIER *value, i32 len) noexcept {
    Bytes text;
    if (!take_octets(value, len, text)) return false;
    if (!text_to_oid({reinterpret_cast<const char *>(text.data()), text.size()}, scratch_)) return false;
    octets_ = scratch_.bytes();
    return close();
}

bool TypedElement::set_octets(const ASN1_STRING *value, i32 len) noexcept {
    return take_octets(value, len, octets_) && close();
}

bool TypedElement::set_time(const ASN1_STRING *value, i32 len) noexcept {
    return len > 0 && set_octets(value, len);
}

bool TypedElement::set_universal(u32 tag, const void *value, i32 len) noexcept {
    switch (tag) {
        case TLX_TAG_BOOLEAN:
            return set_boolean(static_cast<const u8 *>(value), len);
        case TLX_TAG_INTEGER:
        case TLX_TAG_ENUMERATED:
            return set_integer(static_cast<const BIGINT *>(value), len);
        case TLX_TAG_BIT_STRING:
            return set_bit_string(static_cast<const BIT_STRING *>(value), len);
        case TLX_TAG_NULL:
            return set_null(value, len);
        case TLX_TAG_OBJECT_IDENTIFIER:
            return set_oid(static_cast<const OBJECT_IDENTIFIER *>(value), len);
        case TLX_TAG_UTC_TIME:
        case TLX_TAG_GENERALIZED_TIME:
            return set_time(static_cast<const ASN1_STRING *>(value), len);
        case TLX_TAG_OCTET_STRING:
        case TLX_TAG_UTF8_STRING:
        case TLX_TAG_PRINTABLE_STRING:
        case TLX_TAG_T61_STRING:
        case TLX_TAG_IA5_STRING:
        case TLX_TAG_BMP_STRING:
            return set_octets(static_cast<const ASN1_STRING *>(value), len);
        default:
            return false;
    }
}

bool TypedElement::set_string_by_type(const ASN1_STRING *value) noexcept {
    if (value == nullptr) return false;
    identifier_ = static_cast<u8>(value->type);
    switch (value->type) {
        case TLX_TAG_INTEGER:
        case TLX_TAG_ENUMERATED:
            return set_number_octets(octets_of(value));
        case TLX_TAG_BOOLEAN:
            return set_boolean(value->data, value->length);
        default:
            return value->type > 0 && set_universal(static_cast<u32>(value->type), value, value->length);
    }
}

bool TypedElement::set_any(const ASN1_STRING *value) noexcept {
    if (value == nullptr) return false;
    switch (value->type) {
        case TLX_TAG_SEQUENCE:
        case TLX_TAG_SEQUENCE_OCTET:
            identifier_ = kSequence;
            return set_octets(value, value->length);
        case TLX_TAG_SET:
        case TLX_TAG_SET_OCTET:
            identifier_ = kSet;
            return set_octets(value, value->length);
        default:
            return value->type >= kContextSpecific ? set_whole_element(value) : set_string_by_type(value);
    }
}

/// Leading zeros go, but for the one before a set top bit. No octets are 0.
bool TypedElement::set_number_octets(Bytes octets) noexcept {
    while (!octets.empty() && octets.front() == 0) {
        octets = octets.subspan(1);
    }
    has_prefix_ = octets.empty() || octets.front() >= 0x80;
    octets_ = octets;
    return close();
}

bool TypedElement::set_whole_element(const ASN1_STRING *value) noexcept {
    const Bytes whole = octets_of(value);
    Element element;
    if (!read_element(whole, element) || element.tag != value->type || element.whole.size() != whole.size()) {
        return false;
    }
    identifier_ = element.tag;
    octets_ = whole.subspan(1);  // its own length octets among them
    return true;
}

/// The length octets, now that the contents are known.
bool TypedElement::close() noexcept {
    const std::size_t size = contents_size();
    if (size > kMaxLength) return false;
    switch (form_) {
        case LengthForm::short_form:
            if (size >= kIndefiniteLength) return false;
            break;
        case LengthForm::long_form:
            length_count_ = static_cast<u8>(write_long_length(static_cast<u32>(size), length_));
            return true;
        case LengthForm::indefinite:
            if ((identifier_ & kConstructed) == 0) return false;
            length_[0] = kIndefiniteLength;
            length_count_ = 1;
            has_trailer_ = true;
            return true;
        case LengthForm::minimal:
            break;
        case LengthForm::unknown:
            return false;
    }
    length_count_ = static_cast<u8>(write_length(static_cast<u32>(size), length_));
    return true;
}

std::size_t TypedElement::contents_size() const noexcept {
    const std::size_t octets = number_ != nullptr ? number_size_ : octets_.size();
    return (has_prefix_ ? 1U : 0U) + octets + (has_trailer_ ? kEndOfContentsSize : 0U);
}

bool TypedElement::write_contents(u8 *room) const noexcept {
    if (has_prefix_) *room++ = prefix_;
    if (number_ != nullptr) return BIGINT_to_binary(number_, room, number_size_) == 0;
    if (!octets_.empty()) std::memcpy(room, octets_.data(), octets_.size());
    if (has_trailer_) std::memset(room + octets_.size(), 0, kEndOfContentsSize);
    return true;
}

bool TypedElement::write(u8 *room) const noexcept {
    *room++ = identifier_;
    std::memcpy(room, length_, length_count_);
    return write_contents(room + length_count_);
}

}  // namespace tlx
