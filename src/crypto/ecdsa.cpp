#include <openssl/ec.h>
#include <tlxcrypto/ecdsa.h>

#include <cstring>
#include <new>

#include "crypto/backend.hpp"
#include "crypto/dsa_factors.hpp"
#include "crypto/shared_key.hpp"

using namespace tlx;

namespace {

struct FreePoint {
    void operator()(EC_POINT *point) const noexcept { EC_POINT_free(point); }
};
using Point = std::unique_ptr<EC_POINT, FreePoint>;

EC_GROUP *make_group(OSSL_LIB_CTX *context, const char *name, const char * /*properties*/) noexcept {
    return EC_GROUP_new_by_curve_name_ex(context, nullptr, EC_curve_nist2nid(name));
}
using FetchedGroup = Fetched<EC_GROUP, make_group, EC_GROUP_free>;

constinit FetchedGroup g_groups[] = {
    {TLX_CURVE_P256, "P-256"},
    {TLX_CURVE_P384, "P-384"},
    {TLX_CURVE_P521, "P-521"},
};

bool is_known(u32 curve) noexcept {
    return curve == TLX_CURVE_P256 || curve == TLX_CURVE_P384 || curve == TLX_CURVE_P521;
}

// An uncompressed point of P-521.
constexpr std::size_t kMostPointOctets = 1 + 2 * 66;

}  // namespace

#ifdef _WIN32
void tlx::release_curves() noexcept {
    for (FetchedGroup &group : g_groups)
        group.release();
}
#endif

struct ECDSA_KEY : SharedKey {
    u32 curve = 0;
    std::size_t length = 0;
    u8 octets[kMostPointOctets] = {};
    mutable MadeOnce<EC_POINT, FreePoint> point;
};

namespace {

/// Whether the form is compressed or uncompressed, of the right length. The hybrid form, which SEC 1 does not
/// have, and infinity are refused.
bool has_known_form(const ECDSA_KEY &key) noexcept {
    constexpr u8 kCompressedEven = 0x02;
    constexpr u8 kCompressedOdd = 0x03;
    constexpr u8 kUncompressed = 0x04;
    const std::size_t field_length = (key.curve + 7) / 8;
    const u8 form = key.octets[0];
    if (form == kUncompressed) return key.length == 1 + 2 * field_length;
    return (form == kCompressedEven || form == kCompressedOdd) && key.length == 1 + field_length;
}

/// libcrypto reports a point off the curve also when memory runs out, so that only the second report counts.
bool decode_point(const ECDSA_KEY &key, const EC_GROUP *group, EC_POINT *point, BN_CTX *context) noexcept {
    for (int attempt = 0; attempt < 2; ++attempt) {
        if (EC_POINT_oct2point(group, point, key.octets, key.length, context) == 1) return true;
    }
    return false;
}

/// Stores the key's point, decoded by whichever thread came first. 0, kBadKey or 1.
u32 get_point(const ECDSA_KEY &key, const EC_GROUP *group, BN_CTX *context, const EC_POINT *&point) noexcept {
    point = key.point.get();
    if (point != nullptr) return 0;
    if (!has_known_form(key)) return kBadKey;
    Point made(EC_POINT_new(group));
    if (made == nullptr) return 1;
    if (!decode_point(key, group, made.get(), context)) return kBadKey;
    point = key.point.keep(std::move(made));
    return 0;
}

/// x of generator * G + public_key * Q, modulo the order, is r (FIPS 186-5, section 6.4.2). 0, kBadSignature
/// or 1.
u32 check_equation(const EC_GROUP *group, const EC_POINT *public_key, const DsaFactors &factors,
                   BN_CTX *context) noexcept {
    const Point sum(EC_POINT_new(group));
    Temporaries temporaries(context);
    BIGNUM *x = temporaries.next();
    if (sum == nullptr || x == nullptr ||
        EC_POINT_mul(group, sum.get(), factors.generator, public_key, factors.public_key, context) != 1) {
        return 1;
    }
    if (EC_POINT_is_at_infinity(group, sum.get()) == 1) return kBadSignature;
    if (EC_POINT_get_affine_coordinates(group, sum.get(), x, nullptr, context) != 1 ||
        BN_nnmod(x, x, EC_GROUP_get0_order(group), context) != 1) {
        return 1;
    }
    return BN_cmp(x, factors.r) == 0 ? 0 : kBadSignature;
}

u32 verify_hash(const ECDSA_KEY &key, Bytes hash, Bytes r, Bytes s) noexcept {
    const ErrorScope errors;
    const EC_GROUP *group = find_fetched(g_groups, key.curve);
    const BignumContext context = new_public_bignum_context();
    if (group == nullptr || context == nullptr) return 1;
    const EC_POINT *point = nullptr;
    if (const u32 status = get_point(key, group, context.get(), point); status != 0) return status;
    const Temporaries factors_scope(context.get());
    DsaFactors factors;
    const BIGNUM *order = EC_GROUP_get0_order(group);
    if (const u32 status = get_dsa_factors(factors, hash, r, s, order, context.get()); status != 0) {
        return status;
    }
    return check_equation(group, point, factors, context.get());
}

}  // namespace

extern "C" {

ECDSA_KEY *binary_to_ECDSA_KEY(uint32_t curve, const uint8_t *point, uint32_t point_len) {
    if (!is_known(curve) || point == nullptr) return nullptr;
    if (point_len == 0 || point_len > kMostPointOctets) return nullptr;
    void *memory = TLX_ALLOCATE(sizeof(ECDSA_KEY));
    if (memory == nullptr) return nullptr;
    auto *key = new (memory) ECDSA_KEY;
    key->curve = curve;
    key->length = point_len;
    std::memcpy(key->octets, point, point_len);
    return key;
}

ECDSA_KEY *dup_ECDSA_KEY(ECDSA_KEY *key) {
    return share(key);
}

void free_ECDSA_KEY(ECDSA_KEY *key) {
    release(key);
}

uint32_t get_ECDSA_KEY_curve(const ECDSA_KEY *key) {
    return key == nullptr ? 0 : key->curve;
}

uint32_t get_ECDSA_KEY_builds(const ECDSA_KEY *key) {
    return key == nullptr ? 0 : key->point.builds();
}

uint32_t check_ECDSA_KEY(const ECDSA_KEY *key) {
    const ErrorScope errors;
    if (key == nullptr) return 1;
    const EC_GROUP *group = find_fetched(g_groups, key->curve);
    const BignumContext context = new_public_bignum_context();
    if (group == nullptr || context == nullptr) return 1;
    const EC_POINT *point = nullptr;
    return get_point(*key, group, context.get(), point);
}

uint32_t verify_ECDSA(const ECDSA_KEY *key, uint32_t digest_id, const uint8_t *data, uint32_t len,
                      const uint8_t *r, uint32_t r_len, const uint8_t *s, uint32_t s_len) {
    if (key == nullptr || (r == nullptr && r_len > 0) || (s == nullptr && s_len > 0)) return 1;
    u8 hash[TLX_DIGEST_MAX_LENGTH];
    u32 hash_len = 0;
    if (Digest(digest_id, data, len, hash, &hash_len) != 0) return 1;
    return verify_hash(*key, {hash, hash_len}, {r, r_len}, {s, s_len});
}

}  // extern "C"
