// What DSA and ECDSA have in common: the arithmetic modulo the order of their groups.
#pragma once

#include "crypto/bigint.hpp"

namespace tlx {

/// The numbers of a verification (FIPS 186-5, section 6.4.2): r, and what the generator and the public key
/// are multiplied with (or raised to).
struct DsaFactors {
    BIGNUM *r = nullptr;
    BIGNUM *generator = nullptr;   ///< h / s
    BIGNUM *public_key = nullptr;  ///< r / s
};

/// Computes the factors of a signature over a hash, modulo an odd order. They are temporaries of the context
/// in the caller's scope. 0, kBadSignature for an r or s that is zero or not below the order, or an s without
/// inverse, or 1 when memory runs out.
u32 get_dsa_factors(DsaFactors &factors, Bytes hash, Bytes r, Bytes s, const BIGNUM *order,
                    BN_CTX *context) noexcept;

}  // namespace tlx
