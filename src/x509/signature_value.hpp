// The value of a KCDSA signature, for the modules that sign and verify with it.
#pragma once

#include "der/encoder.hpp"
#include "der/owned.hpp"

namespace tlx {

/// r as views of the encoding, s as a number.
struct KcdsaSignature {
    Bytes r;
    Owned<BIGINT> s;
};

/// Reads a KCDSASignatureValue. False when it is none, or when memory runs out.
[[nodiscard]] bool read_kcdsa_signature(const Element &element, KcdsaSignature &signature) noexcept;

void encode_kcdsa_signature(Encoder &out, Bytes r, const BIGINT *s) noexcept;

}  // namespace tlx
