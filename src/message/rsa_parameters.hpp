// What the parameters of RSASSA-PSS and RSAES-OAEP have in common (RFC 4055, sections 2 to 4): tagged fields
// with defaults, of which [0] is a digest and [1] MGF1 with a digest.
#pragma once

#include <tlxcrypto/digest.h>

#include "der/encoder.hpp"

namespace tlx {

/// An AlgorithmIdentifier where it lies.
struct AlgorithmElement {
    u32 row = 0;         ///< 0 when the registry lacks it
    Element parameters;  ///< the tag is 0 when there are none

    [[nodiscard]] bool read(const Element &element) noexcept;
    [[nodiscard]] bool has_parameters() const noexcept {
        return parameters.tag != 0 && parameters.tag != TLX_TAG_NULL;
    }
};

/// Hands the element inside the next field to read() when it is field [number]; a value whose field is
/// missing stays. False when the field cannot be read.
template <typename Value>
[[nodiscard]] bool read_field(Cursor &fields, u8 number, bool (*read)(const Element &, Value &),
                              Value &value) noexcept {
    if (fields.at_end() || fields.peek_tag() != context(number)) return true;
    Element field;
    if (!fields.next(field)) return false;
    Cursor contents(field);
    Element inside;
    return contents.next(inside) && contents.at_end() && read(inside, value);
}

/// Whether the parameters have a name for a digest: SHA-1 and SHA-2.
[[nodiscard]] bool names_rsa_digest(u32 digest_id) noexcept;

/// What [0] and [1] say.
struct RsaDigests {
    u32 digest_id = TLX_DIGEST_SHA1;
    u32 mgf_digest_id = TLX_DIGEST_SHA1;

    /// False for fields that cannot be read, an unknown digest and another mask generation function.
    [[nodiscard]] bool read(Cursor &fields) noexcept;
    /// What is the default is not written. Encoding fails for an unknown digest.
    void write(Encoder &out) const noexcept;
};

}  // namespace tlx
