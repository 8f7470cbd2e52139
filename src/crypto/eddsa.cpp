#include <openssl/evp.h>
#include <tlxcrypto/eddsa.h>

#include <cstring>
#include <new>

#include "crypto/backend.hpp"
#include "crypto/shared_key.hpp"

using namespace tlx;

namespace {

struct FreeDigestContext {
    void operator()(EVP_MD_CTX *context) const noexcept { EVP_MD_CTX_free(context); }
};
using DigestContext = std::unique_ptr<EVP_MD_CTX, FreeDigestContext>;

struct EdwardsCurve {
    u32 id;
    const char *name;
    u32 key_length;
    u32 signature_length;
};

constexpr EdwardsCurve kCurves[] = {
    {TLX_CURVE_ED25519, "ED25519", 32, 64},
    {TLX_CURVE_ED448, "ED448", 57, 114},
};
constexpr u32 kMostKeyOctets = 57;

const EdwardsCurve *find_curve(u32 id) noexcept {
    for (const EdwardsCurve &curve : kCurves) {
        if (curve.id == id) return &curve;
    }
    return nullptr;
}

}  // namespace

struct EDDSA_KEY : SharedKey {
    const EdwardsCurve *curve = nullptr;
    u8 octets[kMostKeyOctets] = {};
    mutable MadeOnce<EVP_PKEY, FreeKey> key;
};

namespace {

/// The backend's key, made by whichever thread came first; null when memory runs out.
EVP_PKEY *get_key(const EDDSA_KEY &unit) noexcept {
    if (EVP_PKEY *ready = unit.key.get()) return ready;
    Key made(EVP_PKEY_new_raw_public_key_ex(backend(), unit.curve->name, nullptr, unit.octets,
                                            unit.curve->key_length));
    return made == nullptr ? nullptr : unit.key.keep(std::move(made));
}

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

}  // namespace

extern "C" {

EDDSA_KEY *binary_to_EDDSA_KEY(uint32_t curve, const uint8_t *point, uint32_t point_len) {
    const EdwardsCurve *known = find_curve(curve);
    if (known == nullptr || point == nullptr || point_len != known->key_length) return nullptr;
    void *memory = TLX_ALLOCATE(sizeof(EDDSA_KEY));
    if (memory == nullptr) return nullptr;
    auto *key = new (memory) EDDSA_KEY;
    key->curve = known;
    std::memcpy(key->octets, point, point_len);
    return key;
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

uint32_t get_EDDSA_KEY_builds(const EDDSA_KEY *key) {
    return key == nullptr ? 0 : key->key.builds();
}

uint32_t verify_EDDSA(const EDDSA_KEY *key, const uint8_t *data, uint32_t len, const uint8_t *sig,
                      uint32_t sig_len) {
    if (key == nullptr || (data == nullptr && len > 0) || (sig == nullptr && sig_len > 0)) return 1;
    if (sig_len != key->curve->signature_length) return TLX_EDDSA_BAD_SIGNATURE;
    const ErrorScope errors;
    EVP_PKEY *ready = backend() == nullptr ? nullptr : get_key(*key);
    if (ready == nullptr) return 1;
    // libcrypto reports a bad signature when memory runs out, so that only the second report counts.
    const u32 status = verify_once(ready, {data, len}, {sig, sig_len});
    return status == kBadSignature ? verify_once(ready, {data, len}, {sig, sig_len}) : status;
}

}  // extern "C"
