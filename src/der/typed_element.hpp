// One element about to be written from a typed value. Its size is known first, so that it is written straight
// to where it belongs.
#pragma once

#include <tlxpki/types.h>

#include "der/buffer.hpp"
#include "der/element.hpp"

namespace tlx {

/// How length octets are written: the three forms that callers name by number, and DER's shortest.
enum class LengthForm : u8 { short_form = 0, long_form = 1, indefinite = 2, minimal = 3, unknown = 4 };

constexpr LengthForm length_form(u32 form) noexcept {
    return form <= 2 ? static_cast<LengthForm>(form) : LengthForm::unknown;
}

/// Each set_ function takes one kind of value, under the identifier given to the constructor, and may be
/// called once. It returns false when the value is missing or of another kind, when it has fewer than `len`
/// octets, when its length has no such form, and when memory runs out. The value has to live until the
/// element is written.
class TypedElement {
  public:
    TypedElement(u8 identifier, LengthForm form) noexcept : identifier_(identifier), form_(form) {}

    [[nodiscard]] bool set_boolean(const u8 *value, i32 len) noexcept;
    /// `len` contents octets; false also for none.
    [[nodiscard]] bool set_integer(const BIGINT *value, i32 len) noexcept;
    /// `len` counts the octets after the unused-bits octet.
    [[nodiscard]] bool set_bit_string(const BIT_STRING *value, i32 len) noexcept;
    [[nodiscard]] bool set_null(const void *value, i32 len) noexcept;
    /// `len` characters of dotted text.
    [[nodiscard]] bool set_oid(const OBJECT_IDENTIFIER *value, i32 len) noexcept;
    [[nodiscard]] bool set_octets(const ASN1_STRING *value, i32 len) noexcept;
    /// As set_octets; false also for no octets.
    [[nodiscard]] bool set_time(const ASN1_STRING *value, i32 len) noexcept;
    /// A value of one of the universal types 1, 2, 3, 4, 5, 6, 10, 12, 19, 20, 22, 23, 24 and 30.
    [[nodiscard]] bool set_universal(u32 tag, const void *value, i32 len) noexcept;

    /// A string record under its own type and of its own length. This function sets the identifier. An
    /// INTEGER or ENUMERATED is written as the non-negative number that its octets are.
    [[nodiscard]] bool set_string_by_type(const ASN1_STRING *value) noexcept;
    /// The same, and also SEQUENCE and SET records, whose octets become the contents, and records of
    /// context-specific and private types, whose octets are a complete element.
    [[nodiscard]] bool set_any(const ASN1_STRING *value) noexcept;

    [[nodiscard]] u8 identifier() const noexcept { return identifier_; }
    /// None of a complete element that set_any took: they are part of its contents_size().
    [[nodiscard]] Bytes length_octets() const noexcept { return {length_, length_count_}; }
    /// Octets that write_contents writes: the contents, and end-of-contents octets of an indefinite length.
    [[nodiscard]] std::size_t contents_size() const noexcept;
    [[nodiscard]] std::size_t size() const noexcept { return 1 + length_count_ + contents_size(); }
    /// False when an INTEGER is too large for its octets.
    [[nodiscard]] bool write_contents(u8 *room) const noexcept;
    /// The whole element into `size` octets.
    [[nodiscard]] bool write(u8 *room) const noexcept;

  private:
    [[nodiscard]] bool set_number_octets(Bytes octets) noexcept;
    [[nodiscard]] bool set_whole_element(const ASN1_STRING *value) noexcept;
    [[nodiscard]] bool close() noexcept;

    u8 identifier_;
    LengthForm form_;
    u8 length_count_ = 0;
    u8 length_[5] = {};
    bool has_prefix_ = false;  // one octet before the others: unused bits, or the sign of a number
    u8 prefix_ = 0;
    bool has_trailer_ = false;
    Bytes octets_;
    const BIGINT *number_ = nullptr;  // takes the place of octets_
    u32 number_size_ = 0;
    Buffer scratch_;
};

}  // namespace tlx
