// Time texts, for our own code.
#pragma once

#include <tlxpki/types.h>

namespace tlx {

/// Whether a UTCTime or GeneralizedTime text has one of the four forms, and the calendar has its date. The
/// clock is not judged: a leap second is a time.
bool has_existing_date(const ASN1_STRING *text, bool generalized) noexcept;

}  // namespace tlx
