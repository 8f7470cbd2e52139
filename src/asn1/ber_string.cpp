// The string records by type name, and how BIT STRINGs are made.
#include <tlxcrypto/file.h>
#include <tlxpki/ber.h>
#include <tlxpki/string.h>

#include <cstring>

#include "der/memory.hpp"
#include "der/owned.hpp"
#include "der/values.hpp"

using namespace tlx;

namespace {

ASN1_STRING *new_typed(i32 type) noexcept {
    ASN1_STRING *string = new_ASN1_STRING();
    if (string != nullptr) string->type = type;
    return string;
}

/// A BIT STRING of `size` zero octets; null when memory runs out.
Owned<BIT_STRING> new_zero_bits(u32 size) noexcept {
    Owned<BIT_STRING> bits(new_typed(TLX_TAG_BIT_STRING));
    if (!bits) return nullptr;
    bits->data = static_cast<u8 *>(TLX_ALLOCATE_ZEROED(1, std::size_t{size} + 1));
    if (bits->data == nullptr) return nullptr;
    bits->length = static_cast<i32>(size);
    return bits;
}

/// Sets the bits that the text has as "1", from bit `first` on, counted from the top of the first octet.
/// False for a character other than "0" and "1".
bool set_bits(u8 *octets, const char *text, u32 count, u32 first) noexcept {
    for (u32 i = 0; i < count; ++i) {
        const char bit = text[i];
        if (bit != '0' && bit != '1') return false;
        const u32 position = first + i;
        if (bit == '1') {
            octets[position / 8] = static_cast<u8>(octets[position / 8] | (0x80U >> (position % 8)));
        }
    }
    return true;
}

}  // namespace

#define TLX_DEFINE_STRING_RELEASE(name)      \
    void clean_##name(ASN1_STRING *string) { \
        clean_ASN1_STRING(string);           \
    }                                        \
    void free_##name(ASN1_STRING *string) {  \
        free_ASN1_STRING(string);            \
    }
#define TLX_DEFINE_STRING_TYPE(name, tag) \
    TLX_DEFINE_STRING_RELEASE(name)       \
    ASN1_STRING *new_##name(void) {       \
        return new_typed(tag);            \
    }

TLX_DEFINE_STRING_RELEASE(BIT_STRING)
TLX_DEFINE_STRING_TYPE(OCTET_STRING, TLX_TAG_OCTET_STRING)
TLX_DEFINE_STRING_TYPE(OBJECT_IDENTIFIER, TLX_TAG_OBJECT_IDENTIFIER)
TLX_DEFINE_STRING_TYPE(UTF8_STRING, TLX_TAG_UTF8_STRING)
TLX_DEFINE_STRING_TYPE(PRINTABLE_STRING, TLX_TAG_PRINTABLE_STRING)
TLX_DEFINE_STRING_TYPE(T61_STRING, TLX_TAG_T61_STRING)
TLX_DEFINE_STRING_TYPE(IA5_STRING, TLX_TAG_IA5_STRING)
TLX_DEFINE_STRING_TYPE(BMP_STRING, TLX_TAG_BMP_STRING)
TLX_DEFINE_STRING_TYPE(UTC_TIME, TLX_TAG_UTC_TIME)
TLX_DEFINE_STRING_TYPE(GENERALIZED_TIME, TLX_TAG_GENERALIZED_TIME)

BIT_STRING *new_BIT_STRING(const char *bits, int32_t count) {
    if (bits == nullptr || count < 0) return nullptr;
    const auto bit_count = static_cast<u32>(count);
    const u32 size = (bit_count + 7) / 8;
    Owned<BIT_STRING> string = new_zero_bits(size);
    if (!string || !set_bits(string->data, bits, bit_count, 0)) return nullptr;
    string->extra = static_cast<i32>(8 * size - bit_count);
    return string.release();
}

BIT_STRING *binaryToBIT_STRING(const uint8_t *octets, uint32_t len) {
    if (octets == nullptr && len > 0) return nullptr;
    return new_string(TLX_TAG_BIT_STRING, {octets, len});
}

BIT_STRING *hexToBIT_STRING(const char *hex) {
    if (hex == nullptr) return nullptr;
    const std::size_t digits = std::strlen(hex);
    if (digits > kMaxLength) return nullptr;
    u8 *octets = nullptr;
    u32 len = 0;
    if (hex_to_binary(hex, static_cast<u32>(digits), &octets, &len) != 0) return nullptr;
    const OwnedOctets<u8> owner(octets);
    return binaryToBIT_STRING(octets, len);
}

uint32_t addPadToBERBitString(BIT_STRING *string, const char *bits) {
    if (string == nullptr || bits == nullptr || string->extra < 0 || string->extra > 7) return 0x42120101;
    const auto unused = static_cast<u32>(string->extra);
    if (std::strlen(bits) != unused || std::strspn(bits, "01") != unused) return 0x42120101;
    if (unused == 0) return 0;
    if (octets_of(string).empty()) return 0x42120101;
    return set_bits(string->data + string->length - 1, bits, unused, 8 - unused) ? 0 : 0x42120101;
}
