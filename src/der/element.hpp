// Bounded reading: views of elements inside octets that somebody else owns. No other code does pointer
// arithmetic on encoded data. The _trusted_ functions read octets that come without a length and believe the
// headers; everything nested in a definite length is then bounded by it.
#pragma once

#include <initializer_list>

#include "der/types.hpp"

namespace tlx {

constexpr u8 kConstructed = 0x20;
constexpr u8 kTagNumberMask = 0x1F;
constexpr u8 kContextSpecific = 0x80;
/// A length above this is refused.
constexpr u32 kMaxLength = 0x7FFFFFFF;
/// X.690 8.1.3.5 c) reserves FF: the first length octet counts up to 126 others, which may begin with zeros.
constexpr std::size_t kMostLengthOctets = 127;
constexpr std::size_t kLongestHeader = 1 + kMostLengthOctets;
/// Indefinite lengths nested deeper than this are refused.
constexpr unsigned kMaxDepth = 64;
/// The length octet of an indefinite length; definite lengths from here on take the long form.
constexpr u8 kIndefiniteLength = 0x80;
constexpr std::size_t kEndOfContentsSize = 2;

/// One element: identifier octet, length octets, contents (without end-of-contents octets).
struct Element {
    u8 tag = 0;
    bool indefinite = false;
    u32 depth = 0;  ///< elements that it lies in, as far as cursors led to it from their outermost one
    Bytes length_octets;
    Bytes contents;
    Bytes whole;  ///< from the identifier to the end, end-of-contents octets included

    [[nodiscard]] u8 number() const noexcept { return tag & kTagNumberMask; }
    [[nodiscard]] bool constructed() const noexcept { return (tag & kConstructed) != 0; }
    [[nodiscard]] bool context_specific() const noexcept { return (tag & 0xC0) == kContextSpecific; }

    /// The child-access rule: a universal or application element has to carry the expected tag number; a
    /// context-specific or private one is taken for the expected type, which is how implicit tags are read.
    [[nodiscard]] bool matches(u32 expected) const noexcept {
        return tag >= kContextSpecific || number() == (expected & kTagNumberMask);
    }
};

/// Reads the element that starts at the first octet of `in` (X.690 8.1.3) and ignores what follows it. False
/// when the element is truncated, its length is refused, or indefinite lengths nest too deep.
[[nodiscard]] bool read_element(Bytes in, Element &element) noexcept;

/// Reads an element at `octets` whose extent only its own header tells. The reader believes this header and
/// measures an indefinite length with measure_trusted_indefinite. False for null and for a refused length.
[[nodiscard]] bool read_trusted_element(const u8 *octets, Element &element) noexcept;

/// The contents length that the length octets at `octets` give; for an indefinite length that of the contents
/// after them, as measure_trusted_indefinite measures it. False for null and for a refused length.
[[nodiscard]] bool read_trusted_length(const u8 *octets, std::size_t &length) noexcept;

/// Measures the contents at `octets` of an indefinite length and believes the headers in them. Once an
/// element of indefinite length was met, later elements of the same contents count as indefinite too; callers
/// have relied on this. False where that would leave the element as X.690 8.1.3.6 measures it, for null, a
/// refused length and too deep a nesting.
[[nodiscard]] bool measure_trusted_indefinite(const u8 *octets, std::size_t &length) noexcept;

/// The length that definite length octets give. False for an indefinite length, a refused one, and octets
/// that end too early.
[[nodiscard]] bool read_definite_length(Bytes in, std::size_t &length) noexcept;

/// Writes the length octets of a definite length in DER form; returns how many (1 to 5).
std::size_t write_length(u32 length, u8 (&octets)[5]) noexcept;
/// The same in the long form, also for a length that fits the short one; returns how many (2 to 5).
std::size_t write_long_length(u32 length, u8 (&octets)[5]) noexcept;

/// Universal tag numbers: bit n stands for tag n.
class TagSet {
  public:
    constexpr TagSet(std::initializer_list<u32> tags) noexcept {
        for (const u32 tag : tags) {
            bits_ |= 1U << tag;
        }
    }
    [[nodiscard]] constexpr bool has(u32 tag) const noexcept {
        return tag < 32 && ((bits_ >> tag) & 1U) != 0;
    }

  private:
    u32 bits_ = 0;
};
/// The types that a string segment, or a value of pseudo-tag 33, may have.
constexpr TagSet kStringsAndTimes = {3, 4, 12, 19, 20, 22, 23, 24, 30};

/// Walks the elements of a constructed element's contents once, front to back.
class Cursor {
  public:
    explicit Cursor(Bytes contents) noexcept : rest_(contents) {}
    explicit Cursor(const Element &parent) noexcept : rest_(parent.contents), depth_(parent.depth + 1) {}

    [[nodiscard]] bool at_end() const noexcept { return rest_.empty(); }
    /// The identifier octet of the next element; only when not at the end.
    [[nodiscard]] u8 peek_tag() const noexcept { return rest_.front(); }
    /// Takes the next element. False at the end and on a broken element; nothing is taken then.
    [[nodiscard]] bool next(Element &element) noexcept {
        if (!read_element(rest_, element)) return false;
        take(element);
        return true;
    }
    /// Takes the next element when it matches the expected tag.
    [[nodiscard]] bool next(u32 expected, Element &element) noexcept {
        Element candidate;
        if (!read_element(rest_, candidate) || !candidate.matches(expected)) return false;
        take(candidate);
        element = candidate;
        return true;
    }
    [[nodiscard]] Bytes rest() const noexcept { return rest_; }

  private:
    void take(Element &element) noexcept {
        element.depth = depth_;
        rest_ = rest_.subspan(element.whole.size());
    }

    Bytes rest_;
    u32 depth_ = 0;
};

/// Number of children as getSequenceChildNum counts them: it skips end-of-contents octets,
/// and a universal element of a type outside the supported ones makes the whole count 0.
[[nodiscard]] u32 count_children(Bytes contents) noexcept;

}  // namespace tlx
