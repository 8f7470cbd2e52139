#include "element.hpp"

namespace tool {

namespace {

constexpr std::size_t kMostTagOctets = 5;
constexpr std::size_t kMostLengthOctets = 126;

/// The octets of a header, one after the other.
class HeaderReader {
  public:
    HeaderReader(Octets octets, std::size_t offset, std::size_t end)
        : octets_(octets), start_(offset), at_(offset), end_(end) {}

    uint8_t next(const char *part) {
        if (at_ >= end_) throw BrokenElement(start_, std::string("the ") + part + " is cut off");
        return octets_[at_++];
    }
    [[nodiscard]] std::size_t at() const { return at_; }

  private:
    Octets octets_;
    std::size_t start_;
    std::size_t at_;
    std::size_t end_;
};

uint64_t read_tag(HeaderReader &reader, uint8_t identifier, std::size_t offset) {
    if ((identifier & 0x1F) != 0x1F) return identifier & 0x1F;
    uint64_t tag = 0;
    for (std::size_t i = 0; i < kMostTagOctets; ++i) {
        const uint8_t octet = reader.next("identifier");
        tag = tag << 7 | (octet & 0x7F);
        if ((octet & 0x80) == 0) return tag;
    }
    throw BrokenElement(offset, "the tag number is too large");
}

void read_length(HeaderReader &reader, Element &element) {
    const uint8_t first = reader.next("length");
    element.indefinite = first == 0x80;
    if (element.indefinite && !element.constructed) {
        throw BrokenElement(element.offset, "a primitive element has an indefinite length");
    }
    const std::size_t count = first & 0x7F;
    if (first < 0x80) element.length = first;
    if (first <= 0x80) return;
    for (std::size_t i = 0; i < count; ++i) {
        if (count > kMostLengthOctets || element.length >> 56 != 0) {
            throw BrokenElement(element.offset,
                                "a length of " + std::to_string(count) + " octets is too large");
        }
        element.length = element.length << 8 | reader.next("length");
    }
}

/// Whether the contents of an OBJECT IDENTIFIER have an arc above 32 bits. The first number holds two arcs.
bool has_long_arc(Octets contents) {
    constexpr uint64_t kTwoRoots = 80;
    uint64_t most = UINT32_MAX + kTwoRoots;
    uint64_t arc = 0;
    for (const uint8_t octet : contents) {
        arc = arc << 7 | (octet & 0x7F);
        if (arc > most) return true;
        if ((octet & 0x80) != 0) continue;
        arc = 0;
        most = UINT32_MAX;
    }
    return false;
}

}  // namespace

Element read_element(Octets octets, std::size_t offset, std::size_t end) {
    HeaderReader reader(octets, offset, end);
    Element element;
    element.offset = offset;
    const uint8_t identifier = reader.next("identifier");
    element.tag_class = identifier >> 6;
    element.constructed = (identifier & 0x20) != 0;
    element.tag = read_tag(reader, identifier, offset);
    read_length(reader, element);
    element.header_length = reader.at() - offset;
    const std::size_t left = end - reader.at();
    if (element.length > left) {
        throw BrokenElement(offset, "its length is " + std::to_string(element.length) + ", but only " +
                                        std::to_string(left) + " octets are left");
    }
    return element;
}

std::vector<Octets> children_of(Octets element) {
    std::vector<Octets> children;
    try {
        const Element parent = read_element(element, 0, element.size());
        std::size_t offset = parent.contents();
        while (offset < parent.end()) {
            const Element child = read_element(element, offset, parent.end());
            if (child.indefinite) break;
            children.push_back(element.subspan(offset, child.end() - offset));
            offset = child.end();
        }
    } catch (const BrokenElement &) {
        return children;
    }
    return children;
}

Octets child_of(Octets element, std::size_t index) {
    const std::vector<Octets> children = children_of(element);
    return index < children.size() ? children[index] : Octets();
}

Octets contents_of(Octets element) {
    if (element.empty()) return {};
    return element.subspan(read_element(element, 0, element.size()).contents());
}

std::optional<std::size_t> find_long_arc(Octets octets) {
    try {
        std::size_t next = 0;
        while (next < octets.size()) {
            const Element element = read_element(octets, next, octets.size());
            next = element.constructed ? element.contents() : element.end();
            if (element.is_universal(TLX_TAG_OBJECT_IDENTIFIER) &&
                has_long_arc(octets.subspan(element.contents(), element.length))) {
                return element.offset;
            }
        }
    } catch (const BrokenElement &) {
        return std::nullopt;
    }
    return std::nullopt;
}

}  // namespace tool
