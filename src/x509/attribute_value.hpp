// Values of attributes, in names and elsewhere: any type, kept under the identifier octet it came with.
#pragma once

#include "der/encoder.hpp"
#include "der/values.hpp"

namespace tlx {

/// Writes a string record under an identifier octet, undoing what decode_any_string did. Octets come back as
/// they were read; a value of a type that is not known is not judged.
void encode_value(Encoder &out, const ASN1_STRING *value, u32 identifier) noexcept;

}  // namespace tlx
