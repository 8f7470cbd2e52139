// Keys that are plain octets: those of Edwards curves (RFC 8032) and of Montgomery curves (RFC 7748).
#pragma once

#include <cstring>
#include <new>

#include "crypto/backend.hpp"
#include "crypto/shared_key.hpp"

namespace tlx {

struct RawCurve {
    u32 id;
    const char *name;      ///< libcrypto's
    u32 key_length;        ///< of a public and of a private key
    u32 signature_length;  ///< 0 on a Montgomery curve
};

inline constexpr u32 kMostRawKeyOctets = 57;

struct RawKey : SharedKey {
    RawKey() = default;
    RawKey(const RawKey &) = delete;
    RawKey &operator=(const RawKey &) = delete;
    ~RawKey() { tlx_wipe(secret, sizeof secret); }

    const RawCurve *curve = nullptr;
    bool is_private = false;
    u8 point[kMostRawKeyOctets] = {};
    u8 secret[kMostRawKeyOctets] = {};
    mutable MadeOnce<EVP_PKEY, FreeKey> key;  ///< made with the key itself when that is private
};

/// The backend's key, made by whichever thread came first; null when memory runs out.
EVP_PKEY *get_backend_key(const RawKey &unit) noexcept;

/// Random octets for a private key. False when the generator fails.
bool random_secret(u8 *octets, u32 len) noexcept;

/// Fills a new key with private octets and the public ones that follow from them. False when memory runs out.
bool set_private(RawKey &unit, Bytes octets) noexcept;

template <std::size_t N>
const RawCurve *find_curve(const RawCurve (&curves)[N], u32 id) noexcept {
    for (const RawCurve &curve : curves) {
        if (curve.id == id) return &curve;
    }
    return nullptr;
}

template <typename Key>
OwnedKey<Key> new_raw_key(const RawCurve &curve) noexcept {
    void *memory = TLX_ALLOCATE(sizeof(Key));
    OwnedKey<Key> key(memory == nullptr ? nullptr : new (memory) Key);
    if (key != nullptr) key->curve = &curve;
    return key;
}

/// Null also for an unknown curve (null) and for another number of octets than its keys have.
template <typename Key>
Key *make_public_key(const RawCurve *curve, const u8 *point, u32 len) noexcept {
    if (curve == nullptr || point == nullptr || len != curve->key_length) return nullptr;
    OwnedKey<Key> key = new_raw_key<Key>(*curve);
    if (key != nullptr) std::memcpy(key->point, point, len);
    return key.release();
}

/// 0, or 1 as above.
template <typename Key>
u32 make_private_key(const RawCurve *curve, const u8 *octets, u32 len, Key **out) noexcept {
    if (out == nullptr) return 1;
    *out = nullptr;
    if (curve == nullptr || octets == nullptr || len != curve->key_length) return 1;
    OwnedKey<Key> key = new_raw_key<Key>(*curve);
    if (key == nullptr || !set_private(*key, {octets, len})) return 1;
    *out = key.release();
    return 0;
}

/// 0, or 1 as above. Any octets are a private key.
template <typename Key>
u32 generate_key(const RawCurve *curve, Key **out) noexcept {
    if (out == nullptr) return 1;
    *out = nullptr;
    if (curve == nullptr) return 1;
    u8 octets[kMostRawKeyOctets];
    const u32 status = random_secret(octets, curve->key_length)
                           ? make_private_key(curve, octets, curve->key_length, out)
                           : 1;
    tlx_wipe(octets, sizeof octets);
    return status;
}

}  // namespace tlx
