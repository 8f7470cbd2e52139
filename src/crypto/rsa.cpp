#include "crypto/rsa.hpp"

#include <new>

#include "crypto/backend.hpp"
#include "crypto/memory.hpp"

using namespace tlx;

namespace {

// A salt that no modulus has room for would reach libcrypto as one of its negative code numbers.
constexpr u32 kMostSalt = 0xFFFF;

// Null when memory runs out.
OwnedCache make_cache() noexcept {
    void *memory = TLX_ALLOCATE(sizeof(RsaCache));
    return OwnedCache(memory == nullptr ? nullptr : new (memory) RsaCache);
}

template <typename Owner>
Owner share(const Owner &owner) noexcept {
    if (owner != nullptr) owner->references.fetch_add(1, std::memory_order_relaxed);
    return Owner(owner.get());
}

// Replaces the numbers, and what was computed from the old ones by what was computed from these. False when
// memory runs out; the unit is unchanged then.
bool set_numbers(RSA_UNIT &unit, u32 kind, const RsaNumbers::Pointers &numbers, OwnedCache cache) noexcept {
    if (numbers[TLX_RSA_N] != nullptr && cache == nullptr) return false;
    if (!unit.numbers.set_all(numbers)) return false;
    unit.kind = kind;
    unit.cache = std::move(cache);
    unit.external = nullptr;
    unit.signature = RsaTask::none;
    unit.encryption = RsaTask::none;
    unit.oaep = {};
    clean_digest(unit.digest);
    return true;
}

}  // namespace

void tlx::ReleaseExternal::operator()(RsaExternal *external) const noexcept {
    if (external->references.fetch_sub(1, std::memory_order_acq_rel) != 1) return;
    if (external->functions.free_context != nullptr) external->functions.free_context(external->context);
    tlx_free(external);
}

void tlx::ReleaseCache::operator()(RsaCache *cache) const noexcept {
    if (cache->references.fetch_sub(1, std::memory_order_acq_rel) != 1) return;
    BN_MONT_CTX_free(cache->modulus.load(std::memory_order_relaxed));
    EVP_PKEY_CTX_free(cache->signer.load(std::memory_order_relaxed));
    EVP_PKEY_free(cache->key.load(std::memory_order_relaxed));
    tlx_free(cache);
}

extern "C" {

RSA_UNIT *new_RSA_UNIT(void) {
    void *memory = TLX_ALLOCATE(sizeof(RSA_UNIT));
    return memory == nullptr ? nullptr : new (memory) RSA_UNIT;
}

void clean_RSA_UNIT(RSA_UNIT *unit) {
    if (unit == nullptr) return;
    set_numbers(*unit, TLX_RSA_PUBLIC, {}, nullptr);
    unit->pss_mgf_digest_id = TLX_DIGEST_SHA1;
    unit->pss_salt_length = TLX_RSA_PSS_DEFAULT_SALT_LENGTH;
}

void free_RSA_UNIT(RSA_UNIT *unit) {
    if (unit == nullptr) return;
    unit->~RSA_UNIT();
    tlx_free(unit);
}

RSA_UNIT *dup_RSA_UNIT(const RSA_UNIT *unit) {
    RSA_UNIT *copy = unit == nullptr ? nullptr : new_RSA_UNIT();
    if (copy == nullptr) return nullptr;
    RsaNumbers::Pointers numbers;
    unit->numbers.get_all(numbers);
    if (!set_numbers(*copy, unit->kind, numbers, share(unit->cache))) {
        free_RSA_UNIT(copy);
        return nullptr;
    }
    copy->external = share(unit->external);
    copy->pss_mgf_digest_id = unit->pss_mgf_digest_id;
    copy->pss_salt_length = unit->pss_salt_length;
    return copy;
}

RSA_UNIT *binary_to_RSA_UNIT(const uint8_t *modulus, uint32_t modulus_len, const uint8_t *exponent,
                             uint32_t exponent_len) {
    OwnedBigint n(binary_to_BIGINT(modulus, modulus_len));
    OwnedBigint e(binary_to_BIGINT(exponent, exponent_len));
    OwnedCache cache = make_cache();
    if (n == nullptr || e == nullptr || cache == nullptr) return nullptr;
    RSA_UNIT *unit = new_RSA_UNIT();
    if (unit == nullptr) return nullptr;
    unit->numbers.set(TLX_RSA_N, std::move(n));
    unit->numbers.set(TLX_RSA_E, std::move(e));
    unit->cache = std::move(cache);
    return unit;
}

uint32_t set_RSA_UNIT_public(RSA_UNIT *unit, const BIGINT *n, const BIGINT *e) {
    if (unit == nullptr || n == nullptr || e == nullptr) return 1;
    return set_numbers(*unit, TLX_RSA_PUBLIC, {n, e}, make_cache()) ? 0 : 1;
}

uint32_t set_RSA_UNIT_private(RSA_UNIT *unit, const BIGINT *n, const BIGINT *e, const BIGINT *d,
                              const BIGINT *p, const BIGINT *q, const BIGINT *dp, const BIGINT *dq,
                              const BIGINT *qinv) {
    if (unit == nullptr || n == nullptr || e == nullptr || d == nullptr) return 1;
    const bool all = p != nullptr && q != nullptr && dp != nullptr && dq != nullptr && qinv != nullptr;
    const bool any = p != nullptr || q != nullptr || dp != nullptr || dq != nullptr || qinv != nullptr;
    if (any && !all) return 1;
    return set_numbers(*unit, TLX_RSA_PRIVATE, {n, e, d, p, q, dp, dq, qinv}, make_cache()) ? 0 : 1;
}

uint32_t set_RSA_UNIT_external(RSA_UNIT *unit, const BIGINT *n, const BIGINT *e,
                               const RSA_EXTERNAL_FUNCTIONS *functions, void *context) {
    if (unit == nullptr || n == nullptr || e == nullptr || functions == nullptr) return 1;
    void *memory = TLX_ALLOCATE(sizeof(RsaExternal));
    if (memory == nullptr) return 1;
    if (!set_numbers(*unit, TLX_RSA_EXTERNAL, {n, e}, make_cache())) {
        tlx_free(memory);
        return 1;
    }
    unit->external.reset(new (memory) RsaExternal{*functions, context});
    return 0;
}

uint32_t set_RSA_UNIT_PSS(RSA_UNIT *unit, uint32_t mgf_digest_id, uint32_t salt_len) {
    if (unit == nullptr || backend_digest(mgf_digest_id) == nullptr || salt_len > kMostSalt) return 1;
    unit->pss_mgf_digest_id = mgf_digest_id;
    unit->pss_salt_length = salt_len;
    return 0;
}

uint32_t get_RSA_UNIT_kind(const RSA_UNIT *unit) {
    return unit == nullptr ? TLX_RSA_PUBLIC : unit->kind;
}

const BIGINT *get_RSA_UNIT_number(const RSA_UNIT *unit, TLX_RSA_NUMBER which) {
    return unit == nullptr ? nullptr : unit->numbers[static_cast<u32>(which)];
}

uint32_t get_RSA_length(const RSA_UNIT *unit) {
    return (get_BIGINT_bits(get_RSA_UNIT_number(unit, TLX_RSA_N)) + 7) / 8;
}

uint32_t get_RSA_UNIT_builds(const RSA_UNIT *unit) {
    if (unit == nullptr || unit->cache == nullptr) return 0;
    return unit->cache->builds.load(std::memory_order_relaxed);
}

}  // extern "C"
