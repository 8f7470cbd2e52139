#include <cstring>
#include <new>

#include "crypto/dsa_factors.hpp"
#include "crypto/ecdsa_key.hpp"

using namespace tlx;

namespace {

EC_GROUP *make_group(OSSL_LIB_CTX *context, const char *name, const char * /*properties*/) noexcept {
    return EC_GROUP_new_by_curve_name_ex(context, nullptr, EC_curve_nist2nid(name));
}
using FetchedGroup = Fetched<EC_GROUP, make_group, EC_GROUP_free>;

constinit FetchedGroup g_groups[] = {
    {TLX_CURVE_P256, "P-256"},
    {TLX_CURVE_P384, "P-384"},
    {TLX_CURVE_P521, "P-521"},
};

}  // namespace

#ifdef _WIN32
void tlx::release_curves() noexcept {
    for (FetchedGroup &group : g_groups)
        group.release();
}
#endif

namespace {

/// Whether the form is compressed or uncompressed, of the right length. The hybrid form, which SEC 1 does not
/// have, and infinity are refused.
bool has_known_form(const ECDSA_KEY &key) noexcept {
    constexpr u8 kCompressedEven = 0x02;
    constexpr u8 kCompressedOdd = 0x03;
    constexpr u8 kUncompressed = 0x04;
    const std::size_t coordinate = field_length(key.curve);
    const u8 form = key.octets[0];
    if (form == kUncompressed) return key.length == 1 + 2 * coordinate;
    return (form == kCompressedEven || form == kCompressedOdd) && key.length == 1 + coordinate;
}

/// libcrypto reports a point off the curve also when memory runs out, so that only the second report counts.
bool decode_point(const ECDSA_KEY &key, const EC_GROUP *group, EC_POINT *point, BN_CTX *context) noexcept {
    for (int attempt = 0; attempt < 2; ++attempt) {
        if (EC_POINT_oct2point(group, point, key.octets, key.length, context) == 1) return true;
    }
    return false;
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
    const EC_GROUP *group = group_of(key.curve);
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

const EC_GROUP *tlx::group_of(u32 curve) noexcept {
    return find_fetched(g_groups, curve);
}

const char *tlx::name_of_curve(u32 curve) noexcept {
    for (const FetchedGroup &group : g_groups) {
        if (group.id == curve) return group.name;
    }
    return nullptr;
}

OwnedEcdsa tlx::new_ecdsa_key(u32 curve) noexcept {
    void *memory = TLX_ALLOCATE(sizeof(ECDSA_KEY));
    OwnedEcdsa key(memory == nullptr ? nullptr : new (memory) ECDSA_KEY);
    if (key != nullptr) key->curve = curve;
    return key;
}

u32 tlx::get_point(const ECDSA_KEY &key, const EC_GROUP *group, BN_CTX *context,
                   const EC_POINT *&point) noexcept {
    point = key.point.get();
    if (point != nullptr) return 0;
    if (!has_known_form(key)) return kBadKey;
    Point made(EC_POINT_new(group));
    if (made == nullptr) return 1;
    if (!decode_point(key, group, made.get(), context)) return kBadKey;
    point = key.point.keep(std::move(made));
    return 0;
}

extern "C" {

ECDSA_KEY *binary_to_ECDSA_KEY(uint32_t curve, const uint8_t *point, uint32_t point_len) {
    if (name_of_curve(curve) == nullptr || point == nullptr) return nullptr;
    if (point_len == 0 || point_len > TLX_ECDSA_MAX_POINT_LENGTH) return nullptr;
    OwnedEcdsa key = new_ecdsa_key(curve);
    if (key == nullptr) return nullptr;
    key->length = point_len;
    std::memcpy(key->octets, point, point_len);
    return key.release();
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

uint32_t get_ECDSA_KEY_length(const ECDSA_KEY *key) {
    return key == nullptr ? 0 : field_length(key->curve);
}

uint32_t get_ECDSA_KEY_point(const ECDSA_KEY *key, uint8_t *point, uint32_t *point_len) {
    if (point_len == nullptr) return 1;
    *point_len = 0;
    if (key == nullptr || point == nullptr) return 1;
    const ErrorScope errors;
    const EC_GROUP *group = group_of(key->curve);
    const BignumContext context = new_public_bignum_context();
    if (group == nullptr || context == nullptr) return 1;
    const EC_POINT *decoded = nullptr;
    if (const u32 status = get_point(*key, group, context.get(), decoded); status != 0) return status;
    *point_len = static_cast<u32>(EC_POINT_point2oct(group, decoded, POINT_CONVERSION_UNCOMPRESSED, point,
                                                     TLX_ECDSA_MAX_POINT_LENGTH, context.get()));
    return *point_len != 0 ? 0 : 1;
}

int32_t cmp_ECDSA_KEY(const ECDSA_KEY *a, const ECDSA_KEY *b) {
    u8 first[TLX_ECDSA_MAX_POINT_LENGTH];
    u8 second[TLX_ECDSA_MAX_POINT_LENGTH];
    u32 first_len = 0;
    u32 second_len = 0;
    if (get_ECDSA_KEY_point(a, first, &first_len) != 0 || get_ECDSA_KEY_point(b, second, &second_len) != 0) {
        return 1;
    }
    return first_len == second_len && std::memcmp(first, second, first_len) == 0 ? 0 : -1;
}

uint32_t get_ECDSA_KEY_builds(const ECDSA_KEY *key) {
    return key == nullptr ? 0 : key->point.builds();
}

uint32_t check_ECDSA_KEY(const ECDSA_KEY *key) {
    const ErrorScope errors;
    if (key == nullptr) return 1;
    const EC_GROUP *group = group_of(key->curve);
    const BignumContext context = new_public_bignum_context();
    if (group == nullptr || context == nullptr) return 1;
    const EC_POINT *point = nullptr;
    return get_point(*key, group, context.get(), point);
}

uint32_t verify_ECDSA(const ECDSA_KEY *key, uint32_t digest_id, const uint8_t *data, uint32_t len,
                      const uint8_t *r, uint32_t r_len, const uint8_t *s, uint32_t s_len) {
    u8 hash[TLX_DIGEST_MAX_LENGTH];
    u32 hash_len = 0;
    if (Digest(digest_id, data, len, hash, &hash_len) != 0) return 1;
    return verify_ECDSA_digest(key, hash, hash_len, r, r_len, s, s_len);
}

uint32_t verify_ECDSA_digest(const ECDSA_KEY *key, const uint8_t *digest, uint32_t digest_len,
                             const uint8_t *r, uint32_t r_len, const uint8_t *s, uint32_t s_len) {
    if (key == nullptr || (r == nullptr && r_len > 0) || (s == nullptr && s_len > 0)) return 1;
    if (digest == nullptr || digest_len == 0 || digest_len > TLX_DIGEST_MAX_LENGTH) return 1;
    return verify_hash(*key, {digest, digest_len}, {r, r_len}, {s, s_len});
}

}  // extern "C"
