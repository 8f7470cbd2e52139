#include "der/element.hpp"

namespace tlx {
namespace {

/// The length octets at the start of `in`: how many there are and the length they give (unset for 0x80).
struct Length {
    std::size_t octets = 0;
    std::size_t value = 0;
    bool indefinite = false;
};

bool read_length(Bytes in, Length &length) noexcept {
    if (in.empty()) return false;
    const u8 first = in[0];
    length.octets = 1;
    if (first < kIndefiniteLength) {
        length.value = first;
        return true;
    }
    if (first == kIndefiniteLength) {
        length.indefinite = true;
        return true;
    }
    const std::size_t count = first & 0x7FU;
    if (count > kMostLengthOctets - 1 || in.size() <= count) return false;
    std::uint64_t value = 0;
    for (std::size_t i = 1; i <= count; ++i) {
        value = (value << 8) | in[i];
        if (value > kMaxLength) return false;
    }
    length.octets = 1 + count;
    length.value = static_cast<std::size_t>(value);
    return true;
}

/// A bound where no length is known: no element that is accepted reaches further.
Bytes trusted(const u8 *octets) noexcept {
    return {octets, kLongestHeader + kMaxLength + kEndOfContentsSize};
}

/// How the contents of an indefinite length are measured.
enum class Siblings : u8 {
    by_header,  ///< X.690 8.1.3.6: every element by its own header
    /// As functions that know no length do: elements after one of indefinite length count as indefinite too.
    stay_indefinite,
};

bool measure(Bytes in, Siblings siblings, std::size_t &length, unsigned depth = 0) noexcept {
    if (depth >= kMaxDepth) return false;
    bool indefinite = false;
    std::size_t position = 0;
    while (position < in.size() && in[position] != 0) {
        Length child;
        if (!read_length(in.subspan(position + 1), child)) return false;
        const std::size_t start = position + 1 + child.octets;
        indefinite = child.indefinite || (indefinite && siblings == Siblings::stay_indefinite);
        std::size_t size = child.value;
        if (indefinite) {
            if (!measure(in.subspan(start), siblings, size, depth + 1)) return false;
            size += kEndOfContentsSize;
        }
        if (size > in.size() - start) return false;
        position = start + size;
    }
    if (in.size() - position < kEndOfContentsSize || position > kMaxLength) return false;
    length = position;
    return true;
}

/// `size` contents octets after `header` octets; with end-of-contents octets when the length is indefinite.
Element view(Bytes in, std::size_t header, std::size_t size) noexcept {
    const bool indefinite = in[1] == kIndefiniteLength;
    const std::size_t trailer = indefinite ? kEndOfContentsSize : 0;
    return {in[0],
            indefinite,
            0,
            in.subspan(1, header - 1),
            in.subspan(header, size),
            in.first(header + size + trailer)};
}

/// read_element for a length of more than one octet.
bool read_long_element(Bytes in, Element &element) noexcept {
    Length length;
    if (!read_length(in.subspan(1), length)) return false;
    const std::size_t header = 1 + length.octets;
    const Bytes rest = in.subspan(header);
    if (length.indefinite && !measure(rest, Siblings::by_header, length.value)) return false;
    if (length.value > rest.size()) return false;
    element = view(in, header, length.value);
    return true;
}

}  // namespace

std::size_t write_length(u32 length, u8 (&octets)[5]) noexcept {
    if (length >= kIndefiniteLength) return write_long_length(length, octets);
    octets[0] = static_cast<u8>(length);
    return 1;
}

std::size_t write_long_length(u32 length, u8 (&octets)[5]) noexcept {
    std::size_t count = 1;
    while (count < 4 && (length >> (8 * count)) != 0) {
        ++count;
    }
    octets[0] = static_cast<u8>(0x80 | count);
    for (std::size_t i = 0; i < count; ++i) {
        octets[1 + i] = static_cast<u8>(length >> (8 * (count - 1 - i)));
    }
    return 1 + count;
}

bool read_definite_length(Bytes in, std::size_t &length) noexcept {
    Length read;
    if (!read_length(in, read) || read.indefinite) return false;
    length = read.value;
    return true;
}

bool read_trusted_length(const u8 *octets, std::size_t &length) noexcept {
    Length read;
    if (octets == nullptr || !read_length(trusted(octets), read)) return false;
    if (read.indefinite) return measure_trusted_indefinite(octets + 1, length);
    length = read.value;
    return true;
}

bool measure_trusted_indefinite(const u8 *octets, std::size_t &length) noexcept {
    std::size_t size = 0;
    return octets != nullptr && measure(trusted(octets), Siblings::by_header, size) &&
           measure({octets, size + kEndOfContentsSize}, Siblings::stay_indefinite, length);
}

bool read_trusted_element(const u8 *octets, Element &element) noexcept {
    if (octets == nullptr) return false;
    const Bytes in = trusted(octets);
    if (in[1] != kIndefiniteLength) return read_element(in, element);
    std::size_t size = 0;
    if (!measure_trusted_indefinite(octets + 2, size)) return false;
    element = view(in, 2, size);
    return true;
}

bool read_element(Bytes in, Element &element) noexcept {
    if (in.size() < 2) return false;
    // Nearly every element has a length of one octet.
    const std::size_t size = in[1];
    if (size >= kIndefiniteLength) return read_long_element(in, element);
    if (size > in.size() - 2) return false;
    element = {in[0], false, 0, in.subspan(1, 1), in.subspan(2, size), in.first(2 + size)};
    return true;
}

u32 count_children(Bytes contents) noexcept {
    constexpr TagSet kKnown = {1, 2, 3, 4, 5, 6, 10, 12, 16, 17, 19, 20, 22, 23, 24, 26, 30};
    u32 count = 0;
    while (!contents.empty()) {
        if (contents.front() == 0) {
            if (contents.size() < kEndOfContentsSize) return count;
            contents = contents.subspan(kEndOfContentsSize);
            continue;
        }
        Element child;
        if (!read_element(contents, child)) return count;
        if ((child.tag & 0xC0) == 0 && !kKnown.has(child.number())) return 0;
        ++count;
        contents = contents.subspan(child.whole.size());
    }
    return count;
}

}  // namespace tlx
