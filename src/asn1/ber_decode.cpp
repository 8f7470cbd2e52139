// decodeToBER<Type> and decodeToDER<Type>.
#include "asn1/ber_decode.hpp"

#include <tlxpki/ber.h>

#include "der/memory.hpp"
#include "der/values.hpp"

namespace tlx {
namespace {

u8 *decode_boolean(Bytes contents) noexcept {
    return contents.size() == 1 ? copy_terminated(contents) : nullptr;
}

/// A marker that is not null.
void *make_null_marker() noexcept {
    return TLX_ALLOCATE_ZEROED(1, 4);
}

}  // namespace

void *decode_as(const Element &element, u32 expected) noexcept {
    switch (expected) {
        case TLX_TAG_BOOLEAN:
            return decode_boolean(element.contents);
        case TLX_TAG_INTEGER:
        case TLX_TAG_ENUMERATED:
            return decode_integer(element.contents);
        case TLX_TAG_BIT_STRING:
            return decode_bit_string(element.contents);
        case TLX_TAG_NULL:
            return make_null_marker();
        case TLX_TAG_OBJECT_IDENTIFIER:
            return decode_oid(element.contents);
        case TLX_TAG_OCTET_STRING:
        case TLX_TAG_UTF8_STRING:
        case TLX_TAG_PRINTABLE_STRING:
        case TLX_TAG_T61_STRING:
        case TLX_TAG_IA5_STRING:
        case TLX_TAG_BMP_STRING:
            return decode_string(static_cast<i32>(expected), element.contents);
        case TLX_TAG_UTC_TIME:
        case TLX_TAG_GENERALIZED_TIME:
            return decode_time(static_cast<i32>(expected), element.contents);
        case TLX_TAG_SEQUENCE:
        case TLX_TAG_SET:
        case TLX_TAG_SEQUENCE_OCTET:
        case TLX_TAG_SET_OCTET:
            return make_node(element);
        case TLX_TAG_ANY_STRING:
            return decode_any_string(element);
        default:
            return nullptr;
    }
}

}  // namespace tlx

using namespace tlx;

namespace {

template <typename Result>
Result decode_trusted(const u8 *octets, u32 expected) noexcept {
    Element element;
    if (!read_trusted_element(octets, element)) return nullptr;
    return static_cast<Result>(decode_as(element, expected));
}

}  // namespace

// The DER names are the same operations.
#define TLX_DEFINE_DECODER(name, result, tag)          \
    result decodeToBER##name(const uint8_t *element) { \
        return decode_trusted<result>(element, tag);   \
    }                                                  \
    result decodeToDER##name(const uint8_t *element) { \
        return decode_trusted<result>(element, tag);   \
    }

TLX_DEFINE_DECODER(Boolean, uint8_t *, TLX_TAG_BOOLEAN)
TLX_DEFINE_DECODER(Integer, BIGINT *, TLX_TAG_INTEGER)
TLX_DEFINE_DECODER(Enumerated, BIGINT *, TLX_TAG_ENUMERATED)
TLX_DEFINE_DECODER(BitString, BIT_STRING *, TLX_TAG_BIT_STRING)
TLX_DEFINE_DECODER(OctetString, OCTET_STRING *, TLX_TAG_OCTET_STRING)
TLX_DEFINE_DECODER(Null, void *, TLX_TAG_NULL)
TLX_DEFINE_DECODER(ObjectIdentifier, OBJECT_IDENTIFIER *, TLX_TAG_OBJECT_IDENTIFIER)
TLX_DEFINE_DECODER(UTF8String, UTF8_STRING *, TLX_TAG_UTF8_STRING)
TLX_DEFINE_DECODER(PrintableString, PRINTABLE_STRING *, TLX_TAG_PRINTABLE_STRING)
TLX_DEFINE_DECODER(T61String, T61_STRING *, TLX_TAG_T61_STRING)
TLX_DEFINE_DECODER(IA5String, IA5_STRING *, TLX_TAG_IA5_STRING)
TLX_DEFINE_DECODER(BMPString, BMP_STRING *, TLX_TAG_BMP_STRING)
TLX_DEFINE_DECODER(UTCTime, UTC_TIME *, TLX_TAG_UTC_TIME)
TLX_DEFINE_DECODER(GENERALIZEDTime, GENERALIZED_TIME *, TLX_TAG_GENERALIZED_TIME)
TLX_DEFINE_DECODER(ASN1String, ASN1_STRING *, TLX_TAG_ANY_STRING)
