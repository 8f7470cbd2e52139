// The order of attributes in DER.
#pragma once

#include "message/message_records.hpp"

namespace tlx {

/// Puts attributes, and the values of each, in the order that DER gives a SET OF (X.690, 11.6). False when
/// one cannot be encoded and when memory runs out; the attributes are in some order then.
[[nodiscard]] bool sort_attributes(X509_ATTRIBUTES *attributes) noexcept;

}  // namespace tlx
