// One extension, of a certificate, a revocation list, an entry of one or a response.
#pragma once

#include "verify/rules.hpp"
#include "verify/strict_cursor.hpp"

namespace tlx {

struct RawExtension {
    Bytes oid;
    bool critical = false;
    Bytes value;  ///< what the OCTET STRING holds
};

/// Takes the next extension: kNone, kBadExtension, kBadBoolean or kCriticalFalse.
[[nodiscard]] Rule read_extension(StrictCursor &in, u32 accepted, RawExtension &extension) noexcept;

/// Takes a BOOLEAN: kNone or kBadBoolean.
[[nodiscard]] Rule read_boolean(StrictCursor &in, u32 accepted, bool &value) noexcept;

/// Reads the value of an authority key identifier. What has no key identifier leaves it as it is.
[[nodiscard]] bool read_authority_key_identifier(Bytes value, Bytes &key_identifier) noexcept;

}  // namespace tlx
