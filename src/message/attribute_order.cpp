#include "message/attribute_order.hpp"

#include <algorithm>

namespace tlx {
namespace {

/// An item and the end of its encoding, which begins where that of the item before ends.
struct Placed {
    void *item;
    std::size_t start;
    std::size_t end;
};

/// Sorts the items of a list by what write(out, item) writes of them. False when one cannot be written and
/// when memory runs out; the list is unchanged then.
template <typename Write>
bool sort_by_encoding(STACK &list, Write write) noexcept {
    const OwnedOctets<Placed> room(static_cast<Placed *>(TLX_ALLOCATE_ZEROED(list.count, sizeof(Placed))));
    if (!room) return list.count == 0;
    const std::span<Placed> places(room.get(), list.count);
    Encoder out;
    for (u32 i = 0; i < list.count; ++i) {
        const std::size_t start = out.bytes().size();
        write(out, list.values[i]);
        places[i] = {list.values[i], start, out.bytes().size()};
    }
    if (!out.ok()) return false;
    const auto encoding = [&](const Placed &place) {
        return out.bytes().subspan(place.start, place.end - place.start);
    };
    std::sort(places.begin(), places.end(), [&](const Placed &a, const Placed &b) {
        return std::ranges::lexicographical_compare(encoding(a), encoding(b));
    });
    for (u32 i = 0; i < list.count; ++i) {
        list.values[i] = places[i].item;
    }
    return true;
}

void write_attribute(Encoder &out, const void *item) noexcept {
    Codec<X509_ATTRIBUTE>::encode(out, static_cast<const X509_ATTRIBUTE *>(item));
}

}  // namespace

bool sort_attributes(X509_ATTRIBUTES *attributes) noexcept {
    for (u32 i = 0; i < get_STACK_count(attributes); ++i) {
        auto *attribute = static_cast<X509_ATTRIBUTE *>(attributes->values[i]);
        if (attribute == nullptr || attribute->values == nullptr) return false;
        if (!sort_by_encoding(*attribute->values, encode_attribute_value)) return false;
    }
    return attributes == nullptr || sort_by_encoding(*attributes, write_attribute);
}

}  // namespace tlx
