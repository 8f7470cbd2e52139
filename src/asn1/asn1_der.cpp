// Building nodes, DER layer: the value in its canonical form, the length in its shortest.
#include <tlxpki/asn1.h>
#include <tlxpki/time.h>

#include <utility>

#include "asn1/asn1_build.hpp"
#include "der/encoder.hpp"
#include "der/owned.hpp"

TLX_OWNS(ASN1_TIME);

using namespace tlx;

namespace {

/// Rewrites a UTCTime with seconds and an offset as one that ends in "Z". The digits stay as they are.
bool to_canonical_utc_time(UTC_TIME *time) noexcept {
    constexpr u32 kSecondsAndZ = 2;
    const Owned<ASN1_TIME> calendar(utcTimeToASN1_TIME(time));
    if (!calendar) return false;
    Owned<UTC_TIME> canonical(asn1TimeToUTC_TIME(calendar.get(), kSecondsAndZ));
    if (!canonical) return false;
    std::swap(*time, *canonical);
    return true;
}

bool check_utc_time(UTC_TIME *time, u32 &len) noexcept {
    constexpr u32 kMinutesAndZ = 11;
    constexpr u32 kMinutesAndOffset = 15;
    constexpr u32 kSecondsAndOffset = 17;
    if (len == kMinutesAndZ || len == kMinutesAndOffset) return false;
    if (len != kSecondsAndOffset) return true;
    if (!to_canonical_utc_time(time)) return false;
    len = static_cast<u32>(time->length);
    return true;
}

bool append_canonical(ASN1_UNIT *seq, u32 tag, void *value, u32 len,
                      u32 identifier = kKeepIdentifier) noexcept {
    if (checkDER(tag, value, &len) == 0) {
        return append_value(seq, {tag, value, len, LengthForm::minimal}, identifier);
    }
    clean_ASN1_UNIT(seq);
    return false;
}

bool encode_canonical(ASN1_UNIT *node, u32 tag, void *value, i32 len,
                      u32 identifier = kKeepIdentifier) noexcept {
    auto count = static_cast<u32>(len);
    if (checkDER(tag, value, &count) == 0) {
        return encode_value(node, {tag, value, count, LengthForm::minimal}, identifier);
    }
    clean_ASN1_UNIT(node);
    return false;
}

}  // namespace

uint32_t checkDER(uint32_t tag, void *value, uint32_t *len) {
    if (tag != TLX_TAG_BOOLEAN && tag != TLX_TAG_UTC_TIME) return 0;
    if (value == nullptr || len == nullptr) return 0x43010101;
    if (tag == TLX_TAG_UTC_TIME) return check_utc_time(static_cast<UTC_TIME *>(value), *len) ? 0 : 0x43010101;
    auto *octet = static_cast<u8 *>(value);
    if (*octet != 0) *octet = 0xFF;
    return 0;
}

uint32_t encodeToDER(ASN1_UNIT *node, uint32_t tag, void *value, int32_t len) {
    return encode_canonical(node, tag, value, len) ? 0 : 0x43020101;
}

uint32_t encodeToDER_CS(ASN1_UNIT *node, uint32_t ctx, uint32_t tag, void *value, int32_t len) {
    return encode_canonical(node, tag, value, len, kContextSpecific | ctx) ? 0 : 0x43030101;
}

uint32_t addToDERSequence(ASN1_UNIT *seq, uint32_t tag, void *value, uint32_t len) {
    return append_canonical(seq, tag, value, len) ? 0 : 0x43040101;
}

uint32_t addToDERSequence_CS(ASN1_UNIT *seq, uint32_t ctx, uint32_t tag, void *value, uint32_t len) {
    return append_canonical(seq, tag, value, len, kContextSpecific | kConstructed | ctx) ? 0 : 0x43080101;
}

uint32_t addToDERSequenceOf(ASN1_UNIT *seq, uint32_t tag, void *value, uint32_t len) {
    const TypedValue typed{tag, value, len, LengthForm::minimal};
    const bool done = means_empty_list(tag, len) ? make_empty_list(seq, typed, kEmptySequenceOf)
                                                 : append_canonical(seq, tag, value, len);
    return done ? 0 : 0x43050101;
}

uint32_t addToDERSet(ASN1_UNIT *seq, uint32_t tag, void *value, uint32_t len) {
    return append_canonical(seq, tag, value, len, kSet) ? 0 : 0x43060101;
}

uint32_t addToDERSetOf(ASN1_UNIT *seq, uint32_t tag, void *value, uint32_t len) {
    const TypedValue typed{tag, value, len, LengthForm::minimal};
    const bool done = means_empty_list(tag, len) ? make_empty_list(seq, typed, kEmptySetOf)
                                                 : append_canonical(seq, tag, value, len, kSet);
    return done ? 0 : 0x43070101;
}
