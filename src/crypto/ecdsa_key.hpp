// The inside of ECDSA_KEY.
#pragma once

#include <openssl/ec.h>
#include <tlxcrypto/ecdsa.h>

#include "crypto/backend.hpp"
#include "crypto/bigint.hpp"
#include "crypto/shared_key.hpp"

namespace tlx {

struct FreePoint {
    void operator()(EC_POINT *point) const noexcept { EC_POINT_clear_free(point); }
};
using Point = std::unique_ptr<EC_POINT, FreePoint>;

}  // namespace tlx

struct ECDSA_KEY : tlx::SharedKey {
    ECDSA_KEY() = default;
    ECDSA_KEY(const ECDSA_KEY &) = delete;
    ECDSA_KEY &operator=(const ECDSA_KEY &) = delete;
    ~ECDSA_KEY() { tlx_wipe(secret, sizeof secret); }

    tlx::u32 curve = 0;
    std::size_t length = 0;
    tlx::u8 octets[TLX_ECDSA_MAX_POINT_LENGTH] = {};
    bool is_private = false;
    tlx::u8 secret[TLX_ECDSA_MAX_LENGTH] = {};
    mutable tlx::MadeOnce<EC_POINT, tlx::FreePoint> point;
    mutable tlx::MadeOnce<EVP_PKEY, tlx::FreeKey> signer;  ///< of a private key
};

namespace tlx {

using OwnedEcdsa = OwnedKey<ECDSA_KEY>;

/// The group of a curve and its name in libcrypto; null for an unknown one and when memory runs out.
const EC_GROUP *group_of(u32 curve) noexcept;
const char *name_of_curve(u32 curve) noexcept;

/// The octets of a coordinate, and of a number below the order.
inline u32 field_length(u32 curve) noexcept {
    return (curve + 7) / 8;
}

/// A key without octets; null when memory runs out.
OwnedEcdsa new_ecdsa_key(u32 curve) noexcept;

/// Stores the key's point, decoded by whichever thread came first. 0, kBadKey or 1.
u32 get_point(const ECDSA_KEY &key, const EC_GROUP *group, BN_CTX *context, const EC_POINT *&point) noexcept;

}  // namespace tlx
