// encodeToBER<Type>: one primitive element under any identifier.
#include <tlxpki/asn1.h>
#include <tlxpki/ber.h>

#include "asn1/asn1_build.hpp"

using namespace tlx;

namespace {

/// Fills `node` with the element that `set` describes. Only the two definite forms are written here.
template <typename Set>
bool encode(ASN1_UNIT *node, u32 tag, i32 form, Set set) noexcept {
    if (node == nullptr) return false;
    const LengthForm definite =
        form == 0 || form == 1 ? length_form(static_cast<u32>(form)) : LengthForm::unknown;
    TypedElement element(static_cast<u8>(tag), definite);
    if (tag <= 0xFF && set(element) && fill_node(node, element)) return true;
    clean_ASN1_UNIT(node);
    return false;
}

}  // namespace

uint32_t encodeToBERBoolean(ASN1_UNIT *node, uint32_t tag, const uint8_t *value, int32_t len, int32_t form) {
    const auto set = [&](TypedElement &element) { return element.set_boolean(value, len); };
    return encode(node, tag, form, set) ? 0 : 0x42010101;
}

uint32_t encodeToBERInteger(ASN1_UNIT *node, uint32_t tag, const BIGINT *value, int32_t len, int32_t form) {
    const auto set = [&](TypedElement &element) { return element.set_integer(value, len); };
    return encode(node, tag, form, set) ? 0 : 0x42020101;
}

uint32_t encodeToBERBitString(ASN1_UNIT *node, uint32_t tag, const BIT_STRING *value, int32_t len,
                              int32_t form) {
    const auto set = [&](TypedElement &element) { return element.set_bit_string(value, len); };
    return encode(node, tag, form, set) ? 0 : 0x42030101;
}

uint32_t encodeToBERNull(ASN1_UNIT *node, uint32_t tag, const void * /*value*/, int32_t len, int32_t form) {
    const auto set = [&](TypedElement &element) { return element.set_null(len); };
    return encode(node, tag, form, set) ? 0 : 0x42040101;
}

uint32_t encodeToBERObjectIdentifier(ASN1_UNIT *node, uint32_t tag, const OBJECT_IDENTIFIER *value,
                                     int32_t len, int32_t form) {
    const auto set = [&](TypedElement &element) { return element.set_oid(value, len); };
    return encode(node, tag, form, set) ? 0 : 0x42050101;
}

uint32_t encodeToBERGENERALIZEDTime(ASN1_UNIT *node, uint32_t tag, const GENERALIZED_TIME *value, int32_t len,
                                    int32_t form) {
    const auto set = [&](TypedElement &element) { return element.set_time(value, len); };
    return encode(node, tag, form, set) ? 0 : 0x42060101;
}

uint32_t encodeToBERUTCTime(ASN1_UNIT *node, uint32_t tag, const UTC_TIME *value, int32_t len, int32_t form) {
    const auto set = [&](TypedElement &element) { return element.set_time(value, len); };
    return encode(node, tag, form, set) ? 0 : 0x42070101;
}

uint32_t encodeToBERASN1String(ASN1_UNIT *node, uint32_t tag, const ASN1_STRING *value, int32_t len,
                               int32_t form) {
    const auto set = [&](TypedElement &element) { return element.set_octets(value, len); };
    return encode(node, tag, form, set) ? 0 : 0x42080101;
}
