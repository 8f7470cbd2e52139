// Time and Validity (RFC 5280, section 4.1.2.5).
#include <tlxpki/time.h>

#include "asn1/asn1_time_text.hpp"
#include "x509/certificate_records.hpp"

using namespace tlx;

namespace {

constexpr u32 kUtcTime = 0;
constexpr u32 kGeneralizedTime = 1;
/// The form of asn1TimeTo... with seconds and "Z".
constexpr u32 kSecondsAndZ = 2;

// UTCTime covers 1950 to 2049, counted from 1900.
constexpr i32 kFirstUtcYear = 50;
constexpr i32 kLastUtcYear = 149;

// Time ::= CHOICE { utcTime UTCTime, generalTime GeneralizedTime }
constexpr auto kTime =
    choice(&X509_TIME::form, &X509_TIME::time, alternative<String<TLX_TAG_UTC_TIME>>(kUtcTime),
           alternative<String<TLX_TAG_GENERALIZED_TIME>>(kGeneralizedTime));

// Validity ::= SEQUENCE { notBefore Time, notAfter Time }
constexpr auto kValidity =
    record<X509_VALIDITY>(exactly(2, Rest::unread), embedded(&X509_VALIDITY::notBefore, kTime),
                          embedded(&X509_VALIDITY::notAfter, kTime));

}  // namespace

TLX_DEFINE_RECORD(X509_TIME, kTime)
TLX_DEFINE_RECORD(X509_VALIDITY, kValidity)

bool tlx::copy_time(X509_TIME &to, const X509_TIME &from) noexcept {
    X509_TIME copy{};
    if (!kTime.copy(copy, from)) return false;
    kTime.clear(to);
    to = copy;
    return true;
}

bool tlx::has_existing_date(const X509_TIME &time) noexcept {
    return has_existing_date(time.time, time.form == kGeneralizedTime);
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
