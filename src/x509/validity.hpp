// Times that stand inside another record.
#pragma once

#include <tlxpki/x509.h>

#include "der/encoder.hpp"

namespace tlx {

/// Time ::= CHOICE { utcTime UTCTime, generalTime GeneralizedTime }
/// Replaces form and text. False for another type and when memory runs out; the time stays then.
[[nodiscard]] bool decode_time_choice(const Element &element, X509_TIME &time) noexcept;
void encode_time_choice(Encoder &out, const X509_TIME &time) noexcept;
/// Replaces form and text by copies. False when memory runs out; the time stays then.
[[nodiscard]] bool copy_time(X509_TIME &to, const X509_TIME &from) noexcept;
/// Whether the text is a time whose date the calendar has.
[[nodiscard]] bool has_existing_date(const X509_TIME &time) noexcept;

}  // namespace tlx
