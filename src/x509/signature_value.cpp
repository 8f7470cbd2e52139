#include "x509/signature_value.hpp"

#include <tlxpki/x509_sign.h>

#include "der/memory.hpp"
#include "der/values.hpp"

using namespace tlx;

namespace {

using Octets = OwnedOctets<u8>;

Owned<BIGINT> number_of(const u8 *octets, i32 len) noexcept {
    return Owned<BIGINT>(binary_to_BIGINT(octets, static_cast<u32>(len)));
}

Owned<BIGINT> next_integer(Cursor &children) noexcept {
    Element child;
    if (!children.next(TLX_TAG_INTEGER, child)) return nullptr;
    return Owned<BIGINT>(decode_integer(child.contents));
}

/// The contents octets that an INTEGER of the number has.
Octets integer_octets(const BIGINT *number) noexcept {
    const u32 length = get_BIGINT_der_length(number);
    Octets octets(static_cast<u8 *>(TLX_ALLOCATE(length)));
    if (octets && BIGINT_to_binary(number, octets.get(), length) != 0) octets.reset();
    return octets;
}

bool view_sequence(const ASN1_UNIT *node, Element &element) noexcept {
    return view_node(node, element) && element.tag == kSequence;
}

/// r as a view of the encoding, s as a number.
struct KcdsaSignature {
    Bytes r;
    Owned<BIGINT> s;
};

// KCDSASignatureValue ::= SEQUENCE {
//     r  BIT STRING,
//     s  INTEGER }
bool read_kcdsa_signature(const Element &element, KcdsaSignature &signature) noexcept {
    Cursor children(element);
    Element r;
    if (!children.next(TLX_TAG_BIT_STRING, r) || r.contents.empty()) return false;
    signature.r = r.contents.subspan(1);
    signature.s = next_integer(children);
    return signature.s != nullptr;
}

}  // namespace

namespace tlx {

bool KcdsaOctets::read(Bytes encoding) noexcept {
    Element element;
    KcdsaSignature numbers;
    if (!read_element(encoding, element) || element.tag != kSequence) return false;
    if (!read_kcdsa_signature(element, numbers)) return false;
    r = numbers.r;
    return BIGINT_to_binary(numbers.s.get(), s, s_length) == 0;
}

void encode_kcdsa_signature(Encoder &out, Bytes r, const BIGINT *s) noexcept {
    constexpr u8 kNoUnusedBits[1] = {0};
    const auto sequence = out.sequence();
    {
        const auto bits = out.nest(TLX_TAG_BIT_STRING);
        out.raw(kNoUnusedBits);
        out.raw(r);
    }
    out.integer(s);
}

}  // namespace tlx

// ECDSA-Sig-Value ::= SEQUENCE {
//     r  INTEGER,
//     s  INTEGER }
uint32_t encode_ECDSASignatureValue(uint8_t **out, uint32_t *out_len, const uint8_t *r, int32_t r_len,
                                    const uint8_t *s, int32_t s_len) {
    if (out == nullptr || out_len == nullptr || r == nullptr || s == nullptr || r_len < 1 || s_len < 1) {
        return 0x462E0049;
    }
    const Owned<BIGINT> r_number = number_of(r, r_len);
    const Owned<BIGINT> s_number = number_of(s, s_len);
    if (!r_number || !s_number) return 0x462E003C;
    Encoder encoder;
    {
        const auto sequence = encoder.sequence();
        encoder.integer(r_number.get());
        encoder.integer(s_number.get());
    }
    const auto length = static_cast<u32>(encoder.bytes().size());
    u8 *octets = encoder.buffer().release();
    if (octets == nullptr) return 0x462E0104;
    *out = octets;
    *out_len = length;
    return 0;
}

uint32_t decode_ECDSASignatureValue(uint8_t **r, uint32_t *r_len, uint8_t **s, uint32_t *s_len,
                                    const ASN1_UNIT *der) {
    if (r == nullptr || r_len == nullptr || s == nullptr || s_len == nullptr || der == nullptr) {
        return 0x462F0049;
    }
    Element element;
    if (!view_sequence(der, element)) return 0x462F0104;
    Cursor children(element);
    const Owned<BIGINT> r_number = next_integer(children);
    const Owned<BIGINT> s_number = next_integer(children);
    if (!r_number || !s_number) return 0x462F0104;
    Octets r_octets = integer_octets(r_number.get());
    Octets s_octets = integer_octets(s_number.get());
    if (!r_octets || !s_octets) return 0x462F0104;
    *r = r_octets.release();
    *r_len = get_BIGINT_der_length(r_number.get());
    *s = s_octets.release();
    *s_len = get_BIGINT_der_length(s_number.get());
    return 0;
}

uint32_t encode_KCDSASignatureValue(uint8_t **out, const uint8_t *r, int32_t r_len, const uint8_t *s,
                                    int32_t s_len) {
    if (out == nullptr || r == nullptr || s == nullptr || r_len < 1 || s_len < 1) return 0x4F00002B;
    const Owned<BIGINT> s_number = number_of(s, s_len);
    if (!s_number) return 0x4F00003C;
    Encoder encoder;
    encode_kcdsa_signature(encoder, {r, static_cast<std::size_t>(r_len)}, s_number.get());
    const auto length = static_cast<u32>(encoder.bytes().size());
    u8 *octets = encoder.buffer().release();
    if (octets == nullptr) return 0x4F00003C;
    *out = octets;
    return length;
}

uint32_t decode_KCDSASignatureValue(uint8_t **r, uint32_t *r_len, uint8_t **s, uint32_t *s_len,
                                    const ASN1_UNIT *der) {
    if (r == nullptr || r_len == nullptr || s == nullptr || s_len == nullptr || der == nullptr) return 1;
    Element element;
    KcdsaSignature signature;
    if (!view_sequence(der, element) || !read_kcdsa_signature(element, signature)) return 1;
    Octets r_octets(copy_terminated(signature.r));
    Octets s_octets = integer_octets(signature.s.get());
    if (!r_octets || !s_octets) return 1;
    *r = r_octets.release();
    *r_len = static_cast<u32>(signature.r.size());
    *s = s_octets.release();
    *s_len = get_BIGINT_der_length(signature.s.get());
    return 0;
}

uint32_t encode_KCDSASignatrueValue(uint8_t **out, const uint8_t *r, int32_t r_len, const uint8_t *s,
                                    int32_t s_len) {
    return encode_KCDSASignatureValue(out, r, r_len, s, s_len);
}

uint32_t decode_KCDSASignatrueValue(uint8_t **r, uint32_t *r_len, uint8_t **s, uint32_t *s_len,
                                    const ASN1_UNIT *der) {
    return decode_KCDSASignatureValue(r, r_len, s, s_len, der);
}
