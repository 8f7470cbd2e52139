#include <openssl/evp.h>
#include <tlxcrypto/eddsa.h>

#include "crypto/raw_key.hpp"

using namespace tlx;

struct EDDSA_KEY : RawKey {};

namespace {

struct FreeDigestContext {
    void operator()(EVP_MD_CTX *context) const noexcept { EVP_MD_CTX_free(context); }
};
using DigestContext = std::unique_ptr<EVP_MD_CTX, FreeDigestContext>;

constexpr RawCurve kCurves[] = {
    {TLX_CURVE_ED25519, "ED25519", 32, 64},
    {TLX_CURVE_ED448, "ED448", 57, 114},
};

/// 0, kBadSignature or 1.
u32 verify_once(EVP_PKEY *key, Bytes data, Bytes signature) noexcept {
    const DigestContext context(EVP_MD_CTX_new());
    if (context == nullptr ||
        EVP_DigestVerifyInit_ex(context.get(), nullptr, nullptr, backend(), nullptr, key, nullptr) != 1) {
        return 1;
    }
    const int verified =
        EVP_DigestVerify(context.get(), signature.data(), signature.size(), data.data(), data.size());
    return verified == 1 ? 0 : kBadSignature;
}

/// False when memory runs out.
bool sign(EVP_PKEY *key, Bytes data, u8 *signature, std::size_t length) noexcept {
    const ErrorScope errors;
    const DigestContext context(EVP_MD_CTX_new());
    return context != nullptr &&
           EVP_DigestSignInit_ex(context.get(), nullptr, nullptr, backend(), nullptr, key, nullptr) == 1 &&
           EVP_DigestSign(context.get(), signature, &length, data.data(), data.size()) == 1;
}

}  // namespace

extern "C" {

EDDSA_KEY *binary_to_EDDSA_KEY(uint32_t curve, const uint8_t *point, uint32_t point_len) {
    return make_public_key<EDDSA_KEY>(find_curve(kCurves, curve), point, point_len);
}

uint32_t private_binary_to_EDDSA_KEY(uint32_t curve, const uint8_t *octets, uint32_t len, EDDSA_KEY **out) {
    return make_private_key(find_curve(kCurves, curve), octets, len, out);
}

uint32_t gen_EDDSA_KEY(uint32_t curve, EDDSA_KEY **out) {
    return generate_key(find_curve(kCurves, curve), out);
}

EDDSA_KEY *dup_EDDSA_KEY(EDDSA_KEY *key) {
    return share(key);
}

void free_EDDSA_KEY(EDDSA_KEY *key) {
    release(key);
}

uint32_t get_EDDSA_KEY_curve(const EDDSA_KEY *key) {
    return key == nullptr ? 0 : key->curve->id;
}

uint32_t get_EDDSA_KEY_length(const EDDSA_KEY *key) {
    return key == nullptr ? 0 : key->curve->key_length;
}

const uint8_t *get_EDDSA_KEY_point(const EDDSA_KEY *key) {
    return key == nullptr ? nullptr : key->point;
}

const uint8_t *get_EDDSA_KEY_private(const EDDSA_KEY *key) {
    return key == nullptr || !key->is_private ? nullptr : key->secret;
}

uint32_t get_EDDSA_KEY_builds(const EDDSA_KEY *key) {
    return key == nullptr ? 0 : key->key.builds();
}

uint32_t verify_EDDSA(const EDDSA_KEY *key, const uint8_t *data, uint32_t len, const uint8_t *sig,
                      uint32_t sig_len) {
    return verify_EDDSA_ex(key, data, len, sig, sig_len);
}

uint32_t verify_EDDSA_ex(const EDDSA_KEY *key, const uint8_t *data, uint64_t len, const uint8_t *sig,
                         uint32_t sig_len) {
    if (key == nullptr || (data == nullptr && len > 0) || (sig == nullptr && sig_len > 0)) return 1;
    if (sig_len != key->curve->signature_length) return TLX_EDDSA_BAD_SIGNATURE;
    const ErrorScope errors;
    EVP_PKEY *ready = get_backend_key(*key);
    if (ready == nullptr) return 1;
    // libcrypto reports a bad signature when memory runs out, so that only the second report counts.
    const u32 status = verify_once(ready, {data, len}, {sig, sig_len});
    return status == kBadSignature ? verify_once(ready, {data, len}, {sig, sig_len}) : status;
}

uint32_t sign_EDDSA(const EDDSA_KEY *key, const uint8_t *data, uint32_t len, uint8_t *sig,
                    uint32_t *sig_len) {
    if (sig_len == nullptr) return 1;
    *sig_len = 0;
    if (key == nullptr || !key->is_private || (data == nullptr && len > 0) || sig == nullptr) return 1;
    const u32 length = key->curve->signature_length;
    if (!sign(get_backend_key(*key), {data, len}, sig, length) ||
        verify_EDDSA(key, data, len, sig, length) != 0) {
        tlx_wipe(sig, length);
        return 1;
    }
    *sig_len = length;
    return 0;
}

}  // extern "C"
