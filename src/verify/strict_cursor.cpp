#include "verify/strict_cursor.hpp"

#include <cstring>

namespace tlx {
namespace {

/// The octets of a length in DER.
std::size_t length_size(std::size_t length) noexcept {
    if (length < kIndefiniteLength) return 1;
    std::size_t octets = 2;
    while ((length >>= 8) != 0) {
        ++octets;
    }
    return octets;
}

}  // namespace

bool StrictCursor::take_long(Bytes &contents) noexcept {
    Element element;
    if (!read_element(rest_, element) || element.indefinite ||
        element.length_octets.size() != length_size(element.contents.size())) {
        return false;
    }
    contents = element.contents;
    rest_ = rest_.subspan(element.whole.size());
    return true;
}

bool is_oid(Bytes contents) noexcept {
    constexpr u8 kMore = 0x80;
    bool begins = true;
    for (const u8 octet : contents) {
        if (begins && octet == kMore) return false;
        begins = (octet & kMore) == 0;
    }
    return begins && !contents.empty();
}

bool is_integer(Bytes contents) noexcept {
    if (contents.size() < 2) return contents.size() == 1;
    const unsigned first_nine_bits = static_cast<unsigned>(contents[0]) << 1 | contents[1] >> 7;
    return first_nine_bits != 0 && first_nine_bits != 0x1FF;
}

bool read_count(Bytes contents, u32 &value) noexcept {
    if (!is_integer(contents) || (contents[0] & 0x80) != 0) return false;
    value = 0;
    for (const u8 octet : contents) {
        value = value << 8 | octet;
    }
    if (contents.size() > sizeof value) value = kMaxLength;
    return true;
}

bool read_octet_bits(Bytes contents, Bytes &octets) noexcept {
    if (contents.empty() || contents[0] != 0) return false;
    octets = contents.subspan(1);
    return true;
}

bool same(Bytes a, Bytes b) noexcept {
    return a.size() == b.size() && (a.empty() || std::memcmp(a.data(), b.data(), a.size()) == 0);
}

}  // namespace tlx
