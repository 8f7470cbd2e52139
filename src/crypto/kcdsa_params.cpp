// KCDSA domain parameters: generation and checking.
#include <tlxcrypto/random.h>

#include <algorithm>
#include <cstring>

#include "crypto/backend.hpp"
#include "crypto/kcdsa.hpp"

using namespace tlx;

namespace {

// The search gives up a seed after so many candidates for q.
constexpr u32 kMostCandidates = 1U << 24U;
constexpr u32 kCountLength = 4;

// The seed of one attempt, with room for the count after it.
struct Seed {
    u32 digest_id;
    u32 length;
    u8 octets[kMostKcdsaQBits / 8 + kCountLength + 1];

    u32 with_count(u32 count) noexcept {
        for (u32 i = 0; i < kCountLength; ++i) {
            octets[length + i] = static_cast<u8>(count >> (24 - 8 * i));
        }
        return length + kCountLength;
    }
};

// Fills `out` with the rightmost octets of ... || H(seed || 1) || H(seed || 0), the index being one octet.
bool stretch(Seed &seed, u32 seed_length, u8 *out, u32 len) noexcept {
    u8 digest[TLX_DIGEST_MAX_LENGTH];
    for (u32 index = 0; len != 0; ++index) {
        seed.octets[seed_length] = static_cast<u8>(index);
        u32 digest_length = 0;
        if (Digest(seed.digest_id, seed.octets, seed_length + 1, digest, &digest_length) != 0) return false;
        const u32 taken = std::min(len, digest_length);
        len -= taken;
        std::memcpy(out + len, digest + digest_length - taken, taken);
    }
    return true;
}

// A search either goes on with the next candidate or ends.
enum class Search : u32 { next, found, failed };

Search is_prime(const BIGNUM *candidate, BN_CTX *context) noexcept {
    switch (BN_check_prime(candidate, context, nullptr)) {
        case 1:
            return Search::found;
        case 0:
            return Search::next;
        default:
            return Search::failed;
    }
}

struct Sizes {
    u32 p_bits;
    u32 q_bits;
    u32 j_bits() const noexcept { return p_bits - q_bits; }
};

// J: an odd prime whose four highest bits are 1000, so that 2Jq mostly has the size of p.
Search try_j(Seed &seed, const Sizes &sizes, BIGNUM *j, BN_CTX *context) noexcept {
    u8 octets[kMostKcdsaPBits / 8];
    const u32 len = sizes.j_bits() / 8;
    if (RAND_BYTES(seed.octets, seed.length) != 0 || !stretch(seed, seed.length, octets, len)) {
        return Search::failed;
    }
    octets[0] = 0x80U | (octets[0] & 0x0FU);
    octets[len - 1] |= 1U;
    if (BN_bin2bn(octets, static_cast<int>(len), j) == nullptr) return Search::failed;
    return is_prime(j, context);
}

// q: an odd prime of full size, for which p = 2Jq + 1 is a prime of full size.
Search try_q(Seed &seed, u32 count, const Sizes &sizes, const BIGNUM *j, BIGNUM *q, BIGNUM *p,
             BN_CTX *context) noexcept {
    u8 octets[kMostKcdsaQBits / 8];
    const u32 len = sizes.q_bits / 8;
    if (!stretch(seed, seed.with_count(count), octets, len)) return Search::failed;
    octets[0] |= 0x80U;
    octets[len - 1] |= 1U;
    if (BN_bin2bn(octets, static_cast<int>(len), q) == nullptr || BN_mul(p, j, q, context) != 1 ||
        BN_lshift1(p, p) != 1 || BN_add_word(p, 1) != 1) {
        return Search::failed;
    }
    if (BN_num_bits(p) != static_cast<int>(sizes.p_bits)) return Search::next;
    const Search q_is_prime = is_prime(q, context);
    return q_is_prime == Search::found ? is_prime(p, context) : q_is_prime;
}

Search search_q(Seed &seed, const Sizes &sizes, const BIGNUM *j, BIGNUM *q, BIGNUM *p,
                BN_CTX *context) noexcept {
    for (u32 count = 1; count <= kMostCandidates; ++count) {
        const Search outcome = try_q(seed, count, sizes, j, q, p, context);
        if (outcome != Search::next) return outcome;
    }
    return Search::next;
}

// g = h^2J mod p for a random h of 2 .. p - 2, once that is not 1.
bool choose_g(BIGNUM *g, const BIGNUM *j, const BIGNUM *p, BN_CTX *context) noexcept {
    Temporaries temporaries(context);
    BIGNUM *exponent = temporaries.next();
    BIGNUM *range = temporaries.next();
    BIGNUM *h = temporaries.next();
    if (h == nullptr || BN_lshift1(exponent, j) != 1 || BN_copy(range, p) == nullptr ||
        BN_sub_word(range, 3) != 1) {
        return false;
    }
    do {
        if (BN_rand_range_ex(h, range, 0, context) != 1 || BN_add_word(h, 2) != 1 ||
            BN_mod_exp(g, h, exponent, p, context) != 1) {
            return false;
        }
    } while (BN_is_one(g));
    return true;
}

bool generate(const Sizes &sizes, u32 digest_id, BIGNUM *p, BIGNUM *q, BIGNUM *g, BN_CTX *context) noexcept {
    Temporaries temporaries(context);
    BIGNUM *j = temporaries.next();
    if (j == nullptr) return false;
    Seed seed = {digest_id, sizes.q_bits / 8, {}};
    Search outcome = Search::next;
    while (outcome == Search::next) {
        outcome = try_j(seed, sizes, j, context);
        if (outcome == Search::found) outcome = search_q(seed, sizes, j, q, p, context);
    }
    return outcome == Search::found && choose_g(g, j, p, context);
}

bool store(KCDSA &unit, const BIGNUM *p, const BIGNUM *q, const BIGNUM *g) noexcept {
    const OwnedBigint numbers[] = {OwnedBigint(new_BIGINT()), OwnedBigint(new_BIGINT()),
                                   OwnedBigint(new_BIGINT())};
    const auto &[p_number, q_number, g_number] = numbers;
    return p_number != nullptr && q_number != nullptr && g_number != nullptr &&
           from_bignum(p_number.get(), p) && from_bignum(q_number.get(), q) &&
           from_bignum(g_number.get(), g) &&
           set_kcdsa_numbers(unit, {p_number.get(), q_number.get(), g_number.get(), nullptr, nullptr});
}

bool is_allowed(const Sizes &sizes) noexcept {
    return sizes.p_bits >= kLeastKcdsaPBits && sizes.p_bits <= kMostKcdsaPBits && sizes.p_bits % 8 == 0 &&
           sizes.q_bits >= kLeastKcdsaQBits && sizes.q_bits <= kMostKcdsaQBits && sizes.q_bits % 8 == 0 &&
           sizes.q_bits <= sizes.p_bits / 2;
}

}  // namespace

extern "C" {

uint32_t gen_KCDSA_params(KCDSA *unit, uint32_t p_bits, uint32_t q_bits, uint32_t digest_id) {
    const Sizes sizes = {p_bits, q_bits};
    if (unit == nullptr || !is_allowed(sizes) || get_DigestLength(digest_id) == 0) return 1;
    const ErrorScope errors;
    const BignumContext context(backend() == nullptr ? nullptr : BN_CTX_new_ex(backend()));
    if (context == nullptr) return 1;
    Temporaries temporaries(context.get());
    BIGNUM *p = temporaries.next();
    BIGNUM *q = temporaries.next();
    BIGNUM *g = temporaries.next();
    const bool done = g != nullptr && generate(sizes, digest_id, p, q, g, context.get());
    return done && store(*unit, p, q, g) ? 0 : 1;
}

uint32_t check_KCDSA_params(const KCDSA *unit) {
    if (unit == nullptr) return 1;
    const ErrorScope errors;
    const KcdsaKey *key = nullptr;
    if (const u32 status = get_kcdsa_key(*unit, &key); status != 0) return status;
    const BignumContext context(BN_CTX_new_ex(backend()));
    if (context == nullptr) return 1;
    for (const BIGNUM *number : {key->q.get(), key->p.get()}) {
        const Search prime = is_prime(number, context.get());
        if (prime != Search::found) return prime == Search::next ? TLX_KCDSA_BAD_KEY : 1;
    }
    for (const BIGNUM *number : {key->g.get(), key->y.get()}) {
        const int right = number == nullptr ? 1 : is_root_of_one(number, *key, context.get());
        if (right != 1) return right == 0 ? TLX_KCDSA_BAD_KEY : 1;
    }
    return 0;
}

}  // extern "C"
