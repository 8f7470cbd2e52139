// encodeToBER<Type>: one primitive element under any identifier.
#include <tlxpki/asn1.h>
#include <tlxpki/ber.h>

#include "asn1/asn1_build.hpp"

using namespace tlx;

namespace {

/// Fills `node` with the element that `Set` makes of the value. Only the two definite forms are written here.
template <auto Set, typename T>
bool encode(ASN1_UNIT *node, u32 tag, const T *value, i32 len, i32 form) noexcept {
    if (node == nullptr) return false;
    const bool definite = form == 0 || form == 1;
    TypedElement element(static_cast<u8>(tag),
                         definite ? length_form(static_cast<u32>(form)) : LengthForm::unknown);
    if (tag <= 0xFF && (element.*Set)(value, len) && fill_node(node, element)) return true;
    clean_ASN1_UNIT(node);
    return false;
}

}  // namespace

#define TLX_DEFINE_ENCODER(name, type, set, code)                                             \
    uint32_t encodeToBER##name(ASN1_UNIT *node, uint32_t tag, const type *value, int32_t len, \
                               int32_t form) {                                                \
        return encode<&TypedElement::set>(node, tag, value, len, form) ? 0 : (code);          \
    }

TLX_DEFINE_ENCODER(Boolean, uint8_t, set_boolean, 0x42010101)
TLX_DEFINE_ENCODER(Integer, BIGINT, set_integer, 0x42020101)
TLX_DEFINE_ENCODER(BitString, BIT_STRING, set_bit_string, 0x42030101)
TLX_DEFINE_ENCODER(Null, void, set_null, 0x42040101)
TLX_DEFINE_ENCODER(ObjectIdentifier, OBJECT_IDENTIFIER, set_oid, 0x42050101)
TLX_DEFINE_ENCODER(GENERALIZEDTime, GENERALIZED_TIME, set_time, 0x42060101)
TLX_DEFINE_ENCODER(UTCTime, UTC_TIME, set_time, 0x42070101)
TLX_DEFINE_ENCODER(ASN1String, ASN1_STRING, set_octets, 0x42080101)
