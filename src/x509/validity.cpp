// Time and Validity (RFC 5280, section 4.1.2.5).
#include "x509/validity.hpp"

#include <tlxpki/time.h>

#include "asn1/asn1_time_text.hpp"
#include "x509/codecs.hpp"

using namespace tlx;

namespace {

constexpr u32 kUtcTime = 0;
constexpr u32 kGeneralizedTime = 1;
/// The form of asn1TimeTo... with seconds and "Z".
constexpr u32 kSecondsAndZ = 2;

// UTCTime covers 1950 to 2049, counted from 1900.
constexpr i32 kFirstUtcYear = 50;
constexpr i32 kLastUtcYear = 149;

}  // namespace

namespace tlx {

bool decode_time_choice(const Element &element, X509_TIME &time) noexcept {
    const bool utc = element.matches(TLX_TAG_UTC_TIME);
    if (!utc && !element.matches(TLX_TAG_GENERALIZED_TIME)) return false;
    ASN1_STRING *text = decode_time(utc ? TLX_TAG_UTC_TIME : TLX_TAG_GENERALIZED_TIME, element.contents);
    if (text == nullptr) return false;
    free_ASN1_STRING(time.time);
    time = {utc ? kUtcTime : kGeneralizedTime, text};
    return true;
}

void encode_time_choice(Encoder &out, const X509_TIME &time) noexcept {
    if (time.form > kGeneralizedTime) return out.fail();
    out.string(time.time, time.form == kUtcTime ? TLX_TAG_UTC_TIME : TLX_TAG_GENERALIZED_TIME);
}

bool copy_time(X509_TIME &to, const X509_TIME &from) noexcept {
    ASN1_STRING *text = dup_ASN1_STRING(from.time);
    if (text == nullptr && from.time != nullptr) return false;
    free_ASN1_STRING(to.time);
    to = {from.form, text};
    return true;
}

bool has_existing_date(const X509_TIME &time) noexcept {
    return has_existing_date(time.time, time.form == kGeneralizedTime);
}

}  // namespace tlx

u32 Codec<X509_TIME>::decode(const Element &element, X509_TIME **out) noexcept {
    OutRecord<X509_TIME> record(out, new_X509_TIME);
    if (!record || !decode_time_choice(element, *record.get())) return 0x462A0104;
    record.commit();
    return 0;
}

// A CHOICE has tags of its own, which no other takes the place of.
void Codec<X509_TIME>::encode(Encoder &out, const X509_TIME *record, u8 /*tag*/) noexcept {
    if (record == nullptr) return out.fail();
    encode_time_choice(out, *record);
}

// Validity ::= SEQUENCE { notBefore Time, notAfter Time }
u32 Codec<X509_VALIDITY>::decode(const Element &element, X509_VALIDITY **out) noexcept {
    if (count_children(element.contents) != 2) return 0x461A002B;
    OutRecord<X509_VALIDITY> record(out, new_X509_VALIDITY);
    if (!record) return 0x461A0104;
    Cursor times(element);
    Element not_before;
    Element not_after;
    if (!times.next(not_before) || !times.next(not_after)) return 0x461A0104;
    if (!decode_time_choice(not_before, record->notBefore)) return 0x461A0104;
    if (!decode_time_choice(not_after, record->notAfter)) return 0x461A0104;
    record.commit();
    return 0;
}

void Codec<X509_VALIDITY>::encode(Encoder &out, const X509_VALIDITY *record, u8 tag) noexcept {
    if (record == nullptr) return out.fail();
    const auto validity = out.nest(tag);
    encode_time_choice(out, record->notBefore);
    encode_time_choice(out, record->notAfter);
}

X509_TIME *new_X509_TIME(void) {
    return TLX_NEW(X509_TIME);
}

void clean_X509_TIME(X509_TIME *time) {
    if (time == nullptr) return;
    free_ASN1_STRING(time->time);
    *time = {};
}

void free_X509_TIME(X509_TIME *time) {
    clean_X509_TIME(time);
    tlx_free(time);
}

X509_TIME *dup_X509_TIME(const X509_TIME *time) {
    if (time == nullptr) return nullptr;
    Owned<X509_TIME> copy(new_X509_TIME());
    return copy && copy_time(*copy, *time) ? copy.release() : nullptr;
}

uint32_t set_X509_TIME(X509_TIME *time, const ASN1_TIME *calendar) {
    if (time == nullptr || check_ASN1_TIME_date(calendar) != 0) return 1;
    const bool utc = calendar->year >= kFirstUtcYear && calendar->year <= kLastUtcYear;
    ASN1_STRING *text =
        utc ? asn1TimeToUTC_TIME(calendar, kSecondsAndZ) : asn1TimeToGENERALIZED_TIME(calendar, kSecondsAndZ);
    if (text == nullptr) return 1;
    free_ASN1_STRING(time->time);
    *time = {utc ? kUtcTime : kGeneralizedTime, text};
    return 0;
}

ASN1_TIME *X509_TIME_to_ASN1_TIME(const X509_TIME *time) {
    if (time == nullptr || !has_existing_date(*time)) return nullptr;
    return time->form == kUtcTime ? utcTimeToASN1_TIME(time->time) : generalizedTimeToASN1_TIME(time->time);
}

uint32_t Seq_to_X509_TIME(const ASN1_UNIT *node, X509_TIME **out) {
    return decode_node(node, out, statuses(0x462A0000));
}

uint32_t X509_TIME_to_Seq(const X509_TIME *time, ASN1_UNIT **out) {
    return encode_node(time, out, statuses(0x46290000));
}

X509_VALIDITY *new_X509_VALIDITY(void) {
    return TLX_NEW(X509_VALIDITY);
}

void clean_X509_VALIDITY(X509_VALIDITY *validity) {
    if (validity == nullptr) return;
    clean_X509_TIME(&validity->notBefore);
    clean_X509_TIME(&validity->notAfter);
}

void free_X509_VALIDITY(X509_VALIDITY *validity) {
    clean_X509_VALIDITY(validity);
    tlx_free(validity);
}

X509_VALIDITY *dup_X509_VALIDITY(const X509_VALIDITY *validity) {
    if (validity == nullptr) return nullptr;
    Owned<X509_VALIDITY> copy(new_X509_VALIDITY());
    if (!copy || !copy_time(copy->notBefore, validity->notBefore)) return nullptr;
    return copy_time(copy->notAfter, validity->notAfter) ? copy.release() : nullptr;
}

uint32_t Seq_to_X509_VALIDITY(const ASN1_UNIT *node, X509_VALIDITY **out) {
    return decode_node(node, out, statuses(0x461A0000));
}

uint32_t X509_VALIDITY_to_Seq(const X509_VALIDITY *validity, ASN1_UNIT **out) {
    return encode_node(validity, out, statuses(0x46190000));
}
