// Reading of DER alone (X.690, section 10): identifiers as they have to be, definite lengths in the fewest
// octets.
#pragma once

#include "der/element.hpp"

namespace tlx {

/// Identifier octets.
namespace id {
constexpr u8 kEndOfContents = 0x00;
constexpr u8 kBoolean = 0x01;
constexpr u8 kInteger = 0x02;
constexpr u8 kBitString = 0x03;
constexpr u8 kOctetString = 0x04;
constexpr u8 kNull = 0x05;
constexpr u8 kOid = 0x06;
constexpr u8 kUtcTime = 0x17;
constexpr u8 kGeneralizedTime = 0x18;
constexpr u8 kSequence = 0x30;
constexpr u8 kSet = 0x31;
/// [n] of a primitive and of a constructed type.
constexpr u8 context(u8 n) noexcept {
    return kContextSpecific | n;
}
constexpr u8 context_constructed(u8 n) noexcept {
    return kContextSpecific | kConstructed | n;
}
}  // namespace id

/// Walks the elements of a container once, front to back.
class StrictCursor {
  public:
    StrictCursor() noexcept = default;
    explicit StrictCursor(Bytes contents) noexcept : rest_(contents) {}

    [[nodiscard]] bool at_end() const noexcept { return rest_.empty(); }
    /// How many octets are left.
    [[nodiscard]] std::size_t size() const noexcept { return rest_.size(); }
    [[nodiscard]] bool is_next(u8 identifier) const noexcept {
        return !rest_.empty() && rest_.front() == identifier;
    }
    /// Takes the next element, whatever its identifier of one octet. False, also at the end, when there is
    /// none in DER.
    [[nodiscard]] bool any(Element &element) noexcept {
        const Bytes in = rest_;
        Bytes contents;
        if (!take(contents) || in[0] == id::kEndOfContents || (in[0] & kTagNumberMask) == kTagNumberMask) {
            return false;
        }
        element = {in[0], false, 0, {}, contents, in.first(in.size() - rest_.size())};
        return true;
    }
    /// Takes the next element, which has to have this identifier.
    [[nodiscard]] bool next(u8 identifier, Element &element) noexcept {
        return is_next(identifier) && any(element);
    }
    [[nodiscard]] bool next(u8 identifier, Bytes &contents) noexcept {
        return is_next(identifier) && take(contents);
    }
    /// Enters the next element, which has to have this identifier.
    [[nodiscard]] bool enter(u8 identifier, StrictCursor &inner) noexcept {
        Bytes contents;
        if (!next(identifier, contents)) return false;
        inner = StrictCursor(contents);
        return true;
    }

  private:
    /// Nearly every element has a length of one octet.
    [[nodiscard]] bool take(Bytes &contents) noexcept {
        if (rest_.size() < 2 || rest_[1] >= kIndefiniteLength) return take_long(contents);
        const std::size_t size = rest_[1];
        if (size > rest_.size() - 2) return false;
        contents = rest_.subspan(2, size);
        rest_ = rest_.subspan(2 + size);
        return true;
    }
    [[nodiscard]] bool take_long(Bytes &contents) noexcept;

    Bytes rest_;
};

/// Opens the one element that the octets are. False for another identifier, and when octets follow it.
[[nodiscard]] inline bool open_whole(Bytes octets, u8 identifier, StrictCursor &inner) noexcept {
    StrictCursor outer(octets);
    return outer.enter(identifier, inner) && outer.at_end();
}

/// Whether the contents are those of an object identifier (X.690, 8.19).
[[nodiscard]] bool is_oid(Bytes contents) noexcept;
/// Whether the contents are an INTEGER in the fewest octets.
[[nodiscard]] bool is_integer(Bytes contents) noexcept;
/// Reads an INTEGER that counts something. One of more than 31 bits becomes 0x7FFFFFFF. False for a negative
/// one.
[[nodiscard]] bool read_count(Bytes contents, u32 &value) noexcept;
/// Whether the contents are those of a BIT STRING of whole octets, which are stored.
[[nodiscard]] bool read_octet_bits(Bytes contents, Bytes &octets) noexcept;

[[nodiscard]] bool same(Bytes a, Bytes b) noexcept;

}  // namespace tlx
