#include "crypto/dsa_factors.hpp"

#include <openssl/err.h>

#include <algorithm>

#include "crypto/shared_key.hpp"

namespace tlx {
namespace {

Bytes without_leading_zeros(Bytes octets) noexcept {
    const auto first = std::find_if(octets.begin(), octets.end(), [](u8 octet) { return octet != 0; });
    return {first, octets.end()};
}

/// 0, kBadSignature for a number that is zero or not below the order, or 1.
u32 read_number(BIGNUM *number, Bytes octets, const BIGNUM *order) noexcept {
    const Bytes digits = without_leading_zeros(octets);
    if (digits.empty() || digits.size() > static_cast<std::size_t>(BN_num_bytes(order))) {
        return kBadSignature;
    }
    if (BN_bin2bn(digits.data(), static_cast<int>(digits.size()), number) == nullptr) return 1;
    return BN_cmp(number, order) < 0 ? 0 : kBadSignature;
}

/// The leftmost bits of the hash, as many as the order has.
bool read_hash(BIGNUM *number, Bytes hash, const BIGNUM *order) noexcept {
    const auto bits = static_cast<std::size_t>(BN_num_bits(order));
    const Bytes kept = hash.first(std::min(hash.size(), (bits + 7) / 8));
    if (BN_bin2bn(kept.data(), static_cast<int>(kept.size()), number) == nullptr) return false;
    return 8 * kept.size() <= bits ||
           BN_rshift(number, number, static_cast<int>(8 * kept.size() - bits)) == 1;
}

}  // namespace

u32 get_dsa_factors(DsaFactors &factors, Bytes hash, Bytes r, Bytes s, const BIGNUM *order,
                    BN_CTX *context) noexcept {
    factors = {BN_CTX_get(context), BN_CTX_get(context), BN_CTX_get(context)};
    BIGNUM *inverse = BN_CTX_get(context);
    if (inverse == nullptr) return 1;
    if (const u32 status = read_number(factors.r, r, order); status != 0) return status;
    if (const u32 status = read_number(inverse, s, order); status != 0) return status;
    if (BN_mod_inverse(inverse, inverse, order, context) == nullptr) {
        return ERR_GET_REASON(ERR_peek_last_error()) == BN_R_NO_INVERSE ? kBadSignature : 1;
    }
    const bool computed = read_hash(factors.generator, hash, order) &&
                          BN_mod_mul(factors.generator, factors.generator, inverse, order, context) == 1 &&
                          BN_mod_mul(factors.public_key, factors.r, inverse, order, context) == 1;
    return computed ? 0 : 1;
}

}  // namespace tlx
