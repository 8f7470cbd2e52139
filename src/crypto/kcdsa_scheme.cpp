// KCDSA signatures.
#include <algorithm>
#include <cstring>

#include "crypto/backend.hpp"
#include "crypto/kcdsa.hpp"

using namespace tlx;

namespace {

using DigestOctets = u8[TLX_DIGEST_MAX_LENGTH];

struct ScopedDigest {
    DIGEST_UNIT unit = {};
    ScopedDigest() = default;
    ScopedDigest(const ScopedDigest &) = delete;
    ScopedDigest &operator=(const ScopedDigest &) = delete;
    ~ScopedDigest() { clean_digest(unit); }
};

// Octets of r: a digest longer than q is cut.
u32 get_r_length(const KcdsaKey &key, u32 digest_id) noexcept {
    return std::min(get_DigestLength(digest_id), key.q_length);
}

// Starts H(z || M) with z, the rightmost octets of y, a block of H long. The key has y.
bool start_message(DIGEST_UNIT &digest, u32 digest_id, const KcdsaKey &key) noexcept {
    const u32 block = get_DigestBlockLength(digest_id);
    return block != 0 && block <= kMostBlockLength && init_Digest(&digest, digest_id) == 0 &&
           update_Digest(&digest, key.y_tail + kMostBlockLength - block, block) == 0;
}

// The rightmost `length` octets of a digest of `digest_length` octets.
const u8 *cut(const DigestOctets &digest, u32 digest_length, u32 length) noexcept {
    return digest + digest_length - length;
}

// r = H(w), cut, of w in as many octets as p.
bool commit(const KcdsaKey &key, u32 digest_id, const BIGNUM *w, u8 *r) noexcept {
    u8 octets[kMostKcdsaPBits / 8];
    DigestOctets digest;
    u32 digest_length = 0;
    if (BN_bn2binpad(w, octets, static_cast<int>(key.p_length)) < 0 ||
        Digest(digest_id, octets, key.p_length, digest, &digest_length) != 0) {
        return false;
    }
    const u32 length = get_r_length(key, digest_id);
    std::memcpy(r, cut(digest, digest_length, length), length);
    return true;
}

// e = (r xor h) mod q.
bool challenge(const KcdsaKey &key, u32 digest_id, const u8 *r, const DigestOctets &hash, BIGNUM *e,
               BN_CTX *context) noexcept {
    const u32 length = get_r_length(key, digest_id);
    const u8 *h = cut(hash, get_DigestLength(digest_id), length);
    DigestOctets mixed;
    for (u32 i = 0; i < length; ++i) {
        mixed[i] = r[i] ^ h[i];
    }
    return BN_bin2bn(mixed, static_cast<int>(length), e) != nullptr &&
           BN_nnmod(e, e, key.q.get(), context) == 1;
}

bool is_all_zero(const u8 *octets, u32 len) noexcept {
    return std::all_of(octets, octets + len, [](u8 octet) { return octet == 0; });
}

// s = x (k - e) mod q, computed as x (kb - eb) b^-1 with a random b.
bool respond(const KcdsaKey &key, const BIGNUM *k, const BIGNUM *e, BIGNUM *s, BN_CTX *context) noexcept {
    BN_MONT_CTX *mod_q = key.mod_q.get();
    Temporaries temporaries(context);
    BIGNUM *b = temporaries.next();
    BIGNUM *b_form = temporaries.next();
    BIGNUM *b_inverse = temporaries.next();
    BIGNUM *kb = temporaries.next();
    BIGNUM *eb = temporaries.next();
    return eb != nullptr && draw_secret(b, key, context) &&
           BN_to_montgomery(b_form, b, mod_q, context) == 1 &&
           BN_mod_inverse(b_inverse, b, key.q.get(), context) != nullptr &&
           BN_to_montgomery(b_inverse, b_inverse, mod_q, context) == 1 &&
           BN_mod_mul_montgomery(kb, k, b_form, mod_q, context) == 1 &&
           BN_mod_mul_montgomery(eb, e, b_form, mod_q, context) == 1 &&
           BN_mod_sub_quick(s, kb, eb, key.q.get()) == 1 &&
           BN_mod_mul_montgomery(s, s, key.x.get(), mod_q, context) == 1 &&
           BN_mod_mul_montgomery(s, s, b_inverse, mod_q, context) == 1;
}

enum class Outcome : u32 { made, unlucky, failed };

// One attempt at a signature over h with a given k; it is unlucky when r or s comes out zero.
Outcome sign_once(const KcdsaKey &key, u32 digest_id, const DigestOctets &hash, const BIGNUM *k, u8 *r, u8 *s,
                  BN_CTX *context) noexcept {
    Temporaries temporaries(context);
    BIGNUM *w = temporaries.next();
    BIGNUM *e = temporaries.next();
    BIGNUM *response = temporaries.next();
    if (response == nullptr || !raise_g(w, k, key, context) || !commit(key, digest_id, w, r) ||
        !challenge(key, digest_id, r, hash, e, context) || !respond(key, k, e, response, context)) {
        return Outcome::failed;
    }
    if (is_all_zero(r, get_r_length(key, digest_id)) || BN_is_zero(response)) return Outcome::unlucky;
    return BN_bn2binpad(response, s, static_cast<int>(key.q_length)) >= 0 ? Outcome::made : Outcome::failed;
}

Outcome sign_with_fresh_k(const KcdsaKey &key, u32 digest_id, const DigestOctets &hash, u8 *r, u8 *s,
                          BN_CTX *context) noexcept {
    Temporaries temporaries(context);
    BIGNUM *k = temporaries.next();
    Outcome outcome = Outcome::unlucky;
    while (outcome == Outcome::unlucky) {
        if (k == nullptr || !draw_secret(k, key, context)) return Outcome::failed;
        outcome = sign_once(key, digest_id, hash, k, r, s, context);
    }
    return outcome;
}

Outcome sign_with_given_k(const KcdsaKey &key, u32 digest_id, const DigestOctets &hash, const BIGINT *given,
                          u8 *r, u8 *s, BN_CTX *context) noexcept {
    const Bignum k(to_bignum(given));
    if (k == nullptr || BN_is_zero(k.get()) || BN_cmp(k.get(), key.q.get()) >= 0) return Outcome::failed;
    return sign_once(key, digest_id, hash, k.get(), r, s, context);
}

// Where a signature goes.
struct Signature {
    u8 *r;
    u32 *r_len;
    u8 *s;
    u32 *s_len;

    bool clear() const noexcept {
        if (r_len != nullptr) *r_len = 0;
        if (s_len != nullptr) *s_len = 0;
        return r != nullptr && r_len != nullptr && s != nullptr && s_len != nullptr;
    }
};

// k null: a fresh one. The key has x.
u32 sign_hash(const KcdsaKey &key, u32 digest_id, const DigestOctets &hash, const BIGINT *k,
              const Signature &signature) noexcept {
    const BignumContext context(BN_CTX_new_ex(backend()));
    if (context == nullptr) return 1;
    const Outcome outcome =
        k == nullptr ? sign_with_fresh_k(key, digest_id, hash, signature.r, signature.s, context.get())
                     : sign_with_given_k(key, digest_id, hash, k, signature.r, signature.s, context.get());
    if (outcome != Outcome::made) return 1;
    *signature.r_len = get_r_length(key, digest_id);
    *signature.s_len = key.q_length;
    return 0;
}

// Valid when r is H(y^s g^e mod p), cut.
u32 verify_hash(const KcdsaKey &key, u32 digest_id, const DigestOctets &hash, Bytes r, Bytes s) noexcept {
    while (!s.empty() && s.front() == 0) {
        s = s.subspan(1);
    }
    if (r.size() != get_r_length(key, digest_id) || is_all_zero(r.data(), static_cast<u32>(r.size())) ||
        s.empty() || s.size() > key.q_length) {
        return TLX_KCDSA_BAD_SIGNATURE;
    }
    const BignumContext context(BN_CTX_new_ex(backend()));
    if (context == nullptr) return 1;
    Temporaries temporaries(context.get());
    BIGNUM *w = temporaries.next();
    BIGNUM *e = temporaries.next();
    BIGNUM *response = temporaries.next();
    if (response == nullptr || BN_bin2bn(s.data(), static_cast<int>(s.size()), response) == nullptr) return 1;
    if (BN_cmp(response, key.q.get()) >= 0) return TLX_KCDSA_BAD_SIGNATURE;
    DigestOctets expected;
    if (!challenge(key, digest_id, r.data(), hash, e, context.get()) ||
        BN_mod_exp2_mont(w, key.y.get(), response, key.g.get(), e, key.p.get(), context.get(),
                         key.mod_p.get()) != 1 ||
        !commit(key, digest_id, w, expected)) {
        return 1;
    }
    return std::equal(r.begin(), r.end(), expected) ? 0 : TLX_KCDSA_BAD_SIGNATURE;
}

// H(z || M), cut later.
bool hash_message(const KcdsaKey &key, u32 digest_id, Bytes data, DigestOctets &hash) noexcept {
    ScopedDigest digest;
    u32 length = 0;
    return start_message(digest.unit, digest_id, key) &&
           update_Digest(&digest.unit, data.data(), static_cast<u32>(data.size())) == 0 &&
           final_Digest(&digest.unit, hash, &length) == 0;
}

// Takes the caller's H(z || M).
bool read_hash(u32 digest_id, const u8 *digest, u32 digest_len, DigestOctets &hash) noexcept {
    if (digest == nullptr || digest_len == 0 || digest_len != get_DigestLength(digest_id)) return false;
    std::memcpy(hash, digest, digest_len);
    return true;
}

// k null: a fresh one.
u32 sign_data(const KCDSA *unit, u32 digest_id, const u8 *data, u32 len, const BIGINT *k,
              const Signature &signature) noexcept {
    if (!signature.clear() || unit == nullptr || (data == nullptr && len != 0)) return 1;
    const ErrorScope errors;
    const KcdsaKey *key = nullptr;
    if (const u32 status = get_kcdsa_key(*unit, &key); status != 0) return status;
    DigestOctets hash;
    if (key->x == nullptr || !hash_message(*key, digest_id, {data, len}, hash)) return 1;
    return sign_hash(*key, digest_id, hash, k, signature);
}

// Ends what init_KCDSA began, up to H(z || M).
u32 end_message(KCDSA &unit, const KcdsaKey **key, DigestOctets &hash) noexcept {
    unit.task = KcdsaTask::none;
    if (const u32 status = get_kcdsa_key(unit, key); status != 0) return status;
    u32 length = 0;
    return final_Digest(&unit.digest, hash, &length);
}

}  // namespace

extern "C" {

uint32_t init_KCDSA(KCDSA *unit, uint32_t direction) {
    if (unit == nullptr) return 1;
    unit->task = KcdsaTask::none;
    if (direction > 1) return 1;
    const ErrorScope errors;
    const KcdsaKey *key = nullptr;
    if (const u32 status = get_kcdsa_key(*unit, &key); status != 0) return status;
    if ((direction == 1 ? key->x : key->y) == nullptr) return 1;
    if (!start_message(unit->digest, unit->digest_id, *key)) return 1;
    unit->task = direction == 1 ? KcdsaTask::sign : KcdsaTask::verify;
    return 0;
}

uint32_t update_KCDSA(KCDSA *unit, const uint8_t *data, uint32_t len) {
    if (unit == nullptr || unit->task == KcdsaTask::none) return 1;
    return update_Digest(&unit->digest, data, len);
}

uint32_t final_KCDSA(KCDSA *unit, uint8_t *r, uint32_t *r_len, uint8_t *s, uint32_t *s_len) {
    if (unit != nullptr && unit->task == KcdsaTask::verify) {
        return r_len == nullptr || s_len == nullptr ? 1 : verify_KCDSA(unit, r, *r_len, s, *s_len);
    }
    const Signature signature = {r, r_len, s, s_len};
    if (!signature.clear() || unit == nullptr || unit->task == KcdsaTask::none) return 1;
    const ErrorScope errors;
    const KcdsaKey *key = nullptr;
    DigestOctets hash;
    if (const u32 status = end_message(*unit, &key, hash); status != 0) return status;
    return sign_hash(*key, unit->digest.id, hash, nullptr, signature);
}

uint32_t verify_KCDSA(KCDSA *unit, const uint8_t *r, uint32_t r_len, const uint8_t *s, uint32_t s_len) {
    if (unit == nullptr || r == nullptr || s == nullptr || unit->task != KcdsaTask::verify) return 1;
    const ErrorScope errors;
    const KcdsaKey *key = nullptr;
    DigestOctets hash;
    if (const u32 status = end_message(*unit, &key, hash); status != 0) return status;
    return verify_hash(*key, unit->digest.id, hash, {r, r_len}, {s, s_len});
}

uint32_t sign_KCDSA_data(const KCDSA *unit, uint32_t digest_id, const uint8_t *data, uint32_t len, uint8_t *r,
                         uint32_t *r_len, uint8_t *s, uint32_t *s_len) {
    return sign_data(unit, digest_id, data, len, nullptr, {r, r_len, s, s_len});
}

uint32_t sign_KCDSA_with_k(const KCDSA *unit, uint32_t digest_id, const uint8_t *data, uint32_t len,
                           const BIGINT *k, uint8_t *r, uint32_t *r_len, uint8_t *s, uint32_t *s_len) {
    const Signature signature = {r, r_len, s, s_len};
    if (k == nullptr) {
        signature.clear();
        return 1;
    }
    return sign_data(unit, digest_id, data, len, k, signature);
}

uint32_t verify_KCDSA_data(const KCDSA *unit, uint32_t digest_id, const uint8_t *data, uint32_t len,
                           const uint8_t *r, uint32_t r_len, const uint8_t *s, uint32_t s_len) {
    if (unit == nullptr || (data == nullptr && len != 0) || r == nullptr || s == nullptr) return 1;
    const ErrorScope errors;
    const KcdsaKey *key = nullptr;
    if (const u32 status = get_kcdsa_key(*unit, &key); status != 0) return status;
    DigestOctets hash;
    if (key->y == nullptr || !hash_message(*key, digest_id, {data, len}, hash)) return 1;
    return verify_hash(*key, digest_id, hash, {r, r_len}, {s, s_len});
}

uint32_t init_KCDSA_digest(const KCDSA *unit, uint32_t digest_id, DIGEST_UNIT *digest) {
    if (unit == nullptr || digest == nullptr) return 1;
    const ErrorScope errors;
    const KcdsaKey *key = nullptr;
    if (const u32 status = get_kcdsa_key(*unit, &key); status != 0) return status;
    return key->y != nullptr && start_message(*digest, digest_id, *key) ? 0 : 1;
}

uint32_t sign_KCDSA_digest(const KCDSA *unit, uint32_t digest_id, const uint8_t *digest, uint32_t digest_len,
                           uint8_t *r, uint32_t *r_len, uint8_t *s, uint32_t *s_len) {
    const Signature signature = {r, r_len, s, s_len};
    DigestOctets hash;
    if (!signature.clear() || unit == nullptr || !read_hash(digest_id, digest, digest_len, hash)) return 1;
    const ErrorScope errors;
    const KcdsaKey *key = nullptr;
    if (const u32 status = get_kcdsa_key(*unit, &key); status != 0) return status;
    return key->x != nullptr ? sign_hash(*key, digest_id, hash, nullptr, signature) : 1;
}

uint32_t verify_KCDSA_digest(const KCDSA *unit, uint32_t digest_id, const uint8_t *digest,
                             uint32_t digest_len, const uint8_t *r, uint32_t r_len, const uint8_t *s,
                             uint32_t s_len) {
    DigestOctets hash;
    if (unit == nullptr || r == nullptr || s == nullptr) return 1;
    if (!read_hash(digest_id, digest, digest_len, hash)) return 1;
    const ErrorScope errors;
    const KcdsaKey *key = nullptr;
    if (const u32 status = get_kcdsa_key(*unit, &key); status != 0) return status;
    return key->y != nullptr ? verify_hash(*key, digest_id, hash, {r, r_len}, {s, s_len}) : 1;
}

}  // extern "C"
