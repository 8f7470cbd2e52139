#include <tlxcrypto/xdh.h>

#include "crypto/raw_key.hpp"

using namespace tlx;

struct XDH_KEY : RawKey {};

namespace {

constexpr RawCurve kCurves[] = {
    {TLX_CURVE_X25519, "X25519", 32, 0},
    {TLX_CURVE_X448, "X448", 56, 0},
};

/// libcrypto refuses a secret of zeros. It reports one also when memory runs out, so that only the second
/// report counts.
u32 derive(EVP_PKEY_CTX *context, u8 *secret, u32 expected) noexcept {
    for (int attempt = 0; attempt < 2; ++attempt) {
        std::size_t length = expected;
        if (EVP_PKEY_derive(context, secret, &length) == 1 && length == expected) return 0;
    }
    return TLX_XDH_BAD_KEY;
}

u32 agree(const XDH_KEY &key, const XDH_KEY &peer, u8 *secret) noexcept {
    const ErrorScope errors;
    EVP_PKEY *own = get_backend_key(key);
    EVP_PKEY *other = get_backend_key(peer);
    const KeyContext context(
        own == nullptr || other == nullptr ? nullptr : EVP_PKEY_CTX_new_from_pkey(backend(), own, nullptr));
    if (context == nullptr || EVP_PKEY_derive_init(context.get()) != 1 ||
        EVP_PKEY_derive_set_peer_ex(context.get(), other, 0) != 1) {
        return 1;
    }
    return derive(context.get(), secret, key.curve->key_length);
}

}  // namespace

extern "C" {

XDH_KEY *binary_to_XDH_KEY(uint32_t curve, const uint8_t *point, uint32_t point_len) {
    return make_public_key<XDH_KEY>(find_curve(kCurves, curve), point, point_len);
}

uint32_t private_binary_to_XDH_KEY(uint32_t curve, const uint8_t *octets, uint32_t len, XDH_KEY **out) {
    return make_private_key(find_curve(kCurves, curve), octets, len, out);
}

uint32_t gen_XDH_KEY(uint32_t curve, XDH_KEY **out) {
    return generate_key(find_curve(kCurves, curve), out);
}

XDH_KEY *dup_XDH_KEY(XDH_KEY *key) {
    return share(key);
}

void free_XDH_KEY(XDH_KEY *key) {
    release(key);
}

uint32_t get_XDH_KEY_curve(const XDH_KEY *key) {
    return key == nullptr ? 0 : key->curve->id;
}

uint32_t get_XDH_KEY_length(const XDH_KEY *key) {
    return key == nullptr ? 0 : key->curve->key_length;
}

const uint8_t *get_XDH_KEY_point(const XDH_KEY *key) {
    return key == nullptr ? nullptr : key->point;
}

const uint8_t *get_XDH_KEY_private(const XDH_KEY *key) {
    return key == nullptr || !key->is_private ? nullptr : key->secret;
}

uint32_t compute_XDH(const XDH_KEY *key, const XDH_KEY *peer, uint8_t *secret) {
    if (key == nullptr || secret == nullptr) return 1;
    u32 status = 1;
    if (peer != nullptr && key->is_private && peer->curve == key->curve) status = agree(*key, *peer, secret);
    if (status != 0) tlx_wipe(secret, key->curve->key_length);
    return status;
}

}  // extern "C"
