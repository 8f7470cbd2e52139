// Private keys: making them, signing (FIPS 186-5, section 6.4.1) and key agreement.
#include <openssl/core_names.h>
#include <openssl/ecdsa.h>
#include <openssl/params.h>

#include <cstring>

#include "crypto/ecdsa_key.hpp"

using namespace tlx;

namespace {

struct FreeSignature {
    void operator()(ECDSA_SIG *signature) const noexcept { ECDSA_SIG_free(signature); }
};
using Signature = std::unique_ptr<ECDSA_SIG, FreeSignature>;

// SEQUENCE of two INTEGERs of 67 octets at most, one of which a sign.
constexpr std::size_t kMostSignature = 3 + 2 * (2 + TLX_ECDSA_MAX_LENGTH + 1);

/// 0, kBadKey for a number that is 0 or not below the order, or 1.
u32 read_number(BIGNUM *number, Bytes octets, const BIGNUM *order) noexcept {
    while (!octets.empty() && octets.front() == 0)
        octets = octets.subspan(1);
    if (octets.empty() || octets.size() > static_cast<std::size_t>(BN_num_bytes(order))) return kBadKey;
    if (BN_bin2bn(octets.data(), static_cast<int>(octets.size()), number) == nullptr) return 1;
    BN_set_flags(number, BN_FLG_CONSTTIME);
    return BN_cmp(number, order) < 0 ? 0 : kBadKey;
}

/// Gives a new key its numbers: the public point is number * G. False when memory runs out.
bool set_numbers(ECDSA_KEY &key, const EC_GROUP *group, const BIGNUM *number, BN_CTX *context) noexcept {
    Point point(EC_POINT_new(group));
    if (point == nullptr || EC_POINT_mul(group, point.get(), number, nullptr, nullptr, context) != 1) {
        return false;
    }
    key.length = EC_POINT_point2oct(group, point.get(), POINT_CONVERSION_UNCOMPRESSED, key.octets,
                                    sizeof key.octets, context);
    const auto length = static_cast<int>(field_length(key.curve));
    if (key.length == 0 || BN_bn2binpad(number, key.secret, length) != length) return false;
    key.is_private = true;
    key.point.keep(std::move(point));
    return true;
}

/// Makes the key of a number that `choose` puts into a BIGNUM: 0, kBadKey or 1.
template <typename Choose>
u32 make_private(u32 curve, ECDSA_KEY **out, Choose choose) noexcept {
    if (out == nullptr) return 1;
    *out = nullptr;
    const ErrorScope errors;
    const EC_GROUP *group = group_of(curve);
    const BignumContext context = new_bignum_context();
    const Bignum number(BN_secure_new());
    OwnedEcdsa key = new_ecdsa_key(curve);
    if (group == nullptr || context == nullptr || number == nullptr || key == nullptr) return 1;
    if (const u32 status = choose(number.get(), EC_GROUP_get0_order(group), context.get()); status != 0) {
        return status;
    }
    if (!set_numbers(*key, group, number.get(), context.get())) return 1;
    *out = key.release();
    return 0;
}

/// libcrypto takes numbers in the order of the machine.
bool to_native(const ECDSA_KEY &key, u8 *native) noexcept {
    const auto length = static_cast<int>(field_length(key.curve));
    const Bignum number(BN_secure_new());
    return number != nullptr && BN_bin2bn(key.secret, length, number.get()) != nullptr &&
           BN_bn2nativepad(number.get(), native, length) == length;
}

/// libcrypto's key; null when memory runs out.
Key make_signer(const ECDSA_KEY &key) noexcept {
    u8 native[TLX_ECDSA_MAX_LENGTH];
    const KeyContext context(EVP_PKEY_CTX_new_from_name(backend(), "EC", nullptr));
    EVP_PKEY *made = nullptr;
    if (context != nullptr && to_native(key, native) && EVP_PKEY_fromdata_init(context.get()) == 1) {
        OSSL_PARAM parameters[] = {
            OSSL_PARAM_construct_utf8_string(OSSL_PKEY_PARAM_GROUP_NAME,
                                             const_cast<char *>(name_of_curve(key.curve)), 0),
            OSSL_PARAM_construct_octet_string(OSSL_PKEY_PARAM_PUB_KEY, const_cast<u8 *>(key.octets),
                                              key.length),
            OSSL_PARAM_construct_BN(OSSL_PKEY_PARAM_PRIV_KEY, native, field_length(key.curve)),
            OSSL_PARAM_construct_end(),
        };
        if (EVP_PKEY_fromdata(context.get(), &made, EVP_PKEY_KEYPAIR, parameters) != 1) made = nullptr;
    }
    tlx_wipe(native, sizeof native);
    return Key(made);
}

EVP_PKEY *get_signer(const ECDSA_KEY &key) noexcept {
    if (EVP_PKEY *ready = key.signer.get()) return ready;
    Key made = make_signer(key);
    return made == nullptr ? nullptr : key.signer.keep(std::move(made));
}

/// False when memory runs out.
bool sign_hash(const ECDSA_KEY &key, Bytes hash, u8 *r, u8 *s) noexcept {
    const ErrorScope errors;
    EVP_PKEY *signer = get_signer(key);
    const KeyContext context(signer == nullptr ? nullptr
                                               : EVP_PKEY_CTX_new_from_pkey(backend(), signer, nullptr));
    u8 der[kMostSignature];
    std::size_t length = sizeof der;
    if (context == nullptr || EVP_PKEY_sign_init(context.get()) != 1 ||
        EVP_PKEY_sign(context.get(), der, &length, hash.data(), hash.size()) != 1) {
        return false;
    }
    const u8 *at = der;
    const Signature signature(d2i_ECDSA_SIG(nullptr, &at, static_cast<long>(length)));
    const auto size = static_cast<int>(field_length(key.curve));
    return signature != nullptr && BN_bn2binpad(ECDSA_SIG_get0_r(signature.get()), r, size) == size &&
           BN_bn2binpad(ECDSA_SIG_get0_s(signature.get()), s, size) == size;
}

/// 0, kBadKey for a peer that is no point of the curve, or 1.
u32 agree(const ECDSA_KEY &key, const ECDSA_KEY &peer, u8 *secret) noexcept {
    const ErrorScope errors;
    const EC_GROUP *group = group_of(key.curve);
    const BignumContext context = new_bignum_context();
    const Bignum number(BN_secure_new());
    if (group == nullptr || context == nullptr || number == nullptr) return 1;
    const EC_POINT *point = nullptr;
    if (const u32 status = get_point(peer, group, context.get(), point); status != 0) return status;
    const Point shared(EC_POINT_new(group));
    const Temporaries temporaries_scope(context.get());
    BIGNUM *x = BN_CTX_get(context.get());
    const auto length = static_cast<int>(field_length(key.curve));
    // The order is prime and the number below it, so that the product is not infinity.
    const bool agreed =
        shared != nullptr && x != nullptr &&
        read_number(number.get(), {key.secret, field_length(key.curve)}, EC_GROUP_get0_order(group)) == 0 &&
        EC_POINT_mul(group, shared.get(), nullptr, point, number.get(), context.get()) == 1 &&
        EC_POINT_get_affine_coordinates(group, shared.get(), x, nullptr, context.get()) == 1 &&
        BN_bn2binpad(x, secret, length) == length;
    if (x != nullptr) BN_clear(x);
    return agreed ? 0 : 1;
}

}  // namespace

extern "C" {

uint32_t private_binary_to_ECDSA_KEY(uint32_t curve, const uint8_t *number, uint32_t number_len,
                                     ECDSA_KEY **out) {
    return make_private(curve, out, [&](BIGNUM *value, const BIGNUM *order, BN_CTX * /*context*/) noexcept {
        return number == nullptr ? 1 : read_number(value, {number, number_len}, order);
    });
}

uint32_t gen_ECDSA_KEY(uint32_t curve, ECDSA_KEY **out) {
    return make_private(curve, out, [](BIGNUM *value, const BIGNUM *order, BN_CTX *context) noexcept {
        do {
            if (BN_priv_rand_range_ex(value, order, 0, context) != 1) return 1U;
        } while (BN_is_zero(value));
        BN_set_flags(value, BN_FLG_CONSTTIME);
        return 0U;
    });
}

const uint8_t *get_ECDSA_KEY_private(const ECDSA_KEY *key) {
    return key == nullptr || !key->is_private ? nullptr : key->secret;
}

uint32_t sign_ECDSA_digest(const ECDSA_KEY *key, const uint8_t *digest, uint32_t digest_len, uint8_t *r,
                           uint8_t *s) {
    if (key == nullptr || !key->is_private || r == nullptr || s == nullptr) return 1;
    if (digest == nullptr || digest_len == 0 || digest_len > TLX_DIGEST_MAX_LENGTH) return 1;
    return sign_hash(*key, {digest, digest_len}, r, s) ? 0 : 1;
}

uint32_t sign_ECDSA(const ECDSA_KEY *key, uint32_t digest_id, const uint8_t *data, uint32_t len, uint8_t *r,
                    uint8_t *s) {
    u8 hash[TLX_DIGEST_MAX_LENGTH];
    u32 hash_len = 0;
    if (Digest(digest_id, data, len, hash, &hash_len) != 0) return 1;
    return sign_ECDSA_digest(key, hash, hash_len, r, s);
}

uint32_t compute_ECDH(const ECDSA_KEY *key, const ECDSA_KEY *peer, uint8_t *secret) {
    if (key == nullptr || secret == nullptr) return 1;
    u32 status = 1;
    if (peer != nullptr && key->is_private && peer->curve == key->curve) status = agree(*key, *peer, secret);
    if (status != 0) tlx_wipe(secret, field_length(key->curve));
    return status;
}

}  // extern "C"
