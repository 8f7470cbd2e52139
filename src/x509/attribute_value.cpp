#include "x509/attribute_value.hpp"

namespace tlx {

void encode_value(Encoder &out, const ASN1_STRING *value, u32 identifier) noexcept {
    if (value == nullptr || identifier == 0 || identifier > 0xFF) return out.fail();
    const auto tag = static_cast<u8>(identifier);
    if (tag >= kContextSpecific) {
        // Read whole, so that the octets are the element itself.
        Element element;
        const Bytes octets = octets_of(value);
        if (!read_element(octets, element) || element.whole.size() != octets.size()) return out.fail();
        return out.raw(octets);
    }
    switch (tag & kTagNumberMask) {
        case TLX_TAG_BIT_STRING:
            return out.bit_string(value, tag);
        case TLX_TAG_OBJECT_IDENTIFIER:
            return out.oid(value, tag);
        case TLX_TAG_SEQUENCE:
        case TLX_TAG_SET:
            return out.string(value, static_cast<u8>(tag | kConstructed));
        default:
            return out.string(value, tag);
    }
}

}  // namespace tlx
