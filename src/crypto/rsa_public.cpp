// Verifies signatures by the bare public operation. A certificate's key is often used only once, so that
// preparing it counts as much as using it. libcrypto's verification does not distinguish a bad signature from
// a shortage of memory.
#include <algorithm>
#include <cstring>

#include "crypto/backend.hpp"
#include "crypto/memory.hpp"
#include "crypto/rsa.hpp"

using namespace tlx;

namespace {

bool bit(const BIGINT &number, u32 index) noexcept {
    return (limb(number, index / kLimbBits) >> (index % kLimbBits) & 1U) != 0;
}

/// The unit's modulus prepared for multiplication. Another thread may have been faster; then we keep its
/// work.
BN_MONT_CTX *prepared_modulus(const RSA_UNIT &unit, BN_CTX *scratch) noexcept {
    RsaCache &cache = *unit.cache;
    BN_MONT_CTX *ready = cache.modulus.load(std::memory_order_acquire);
    if (ready != nullptr) return ready;
    const Bignum n(to_bignum(unit.numbers[TLX_RSA_N]));
    Montgomery made(BN_MONT_CTX_new());
    if (n == nullptr || made == nullptr || BN_MONT_CTX_set(made.get(), n.get(), scratch) != 1) return nullptr;
    cache.builds.fetch_add(1, std::memory_order_relaxed);
    const bool first = cache.modulus.compare_exchange_strong(ready, made.get(), std::memory_order_acq_rel);
    return first ? made.release() : ready;
}

/// value = value^e mod n by squaring and multiplying, which suits the short exponents of public keys. The
/// exponent is odd and above 1. Nothing here is secret.
bool raise(BIGNUM *value, const BIGINT &e, BN_MONT_CTX *modulus, BN_CTX *scratch) noexcept {
    const Bignum base(BN_dup(value));
    const Bignum converted(BN_new());
    if (base == nullptr || converted == nullptr) return false;
    if (BN_to_montgomery(converted.get(), base.get(), modulus, scratch) != 1) return false;
    if (BN_copy(value, converted.get()) == nullptr) return false;
    for (u32 i = get_BIGINT_bits(&e) - 1; i-- > 0;) {
        if (BN_mod_mul_montgomery(value, value, value, modulus, scratch) != 1) return false;
        if (!bit(e, i)) continue;
        // The last factor is not in Montgomery form, and takes the product out of it.
        const BIGNUM *factor = i > 0 ? converted.get() : base.get();
        if (BN_mod_mul_montgomery(value, value, factor, modulus, scratch) != 1) return false;
    }
    return true;
}

/// Makes `value` signature^e mod n. 0 or a TLX_RSA_ code; 1 when memory runs out.
u32 recover(const RSA_UNIT &unit, Bytes signature, Bignum &value) noexcept {
    if (!is_usable_public_part(unit.numbers)) return TLX_RSA_BAD_KEY;
    const u32 length = get_RSA_length(&unit);
    if (signature.size() != length) return TLX_RSA_BAD_SIGNATURE;
    // RFC 8017, section 5.2.2: a signature representative is below the modulus.
    u8 modulus[kMostRsaOctets];
    BIGINT_to_binary(unit.numbers[TLX_RSA_N], modulus, length);
    if (std::memcmp(signature.data(), modulus, length) >= 0) return TLX_RSA_BAD_SIGNATURE;

    const BignumContext scratch(backend() == nullptr ? nullptr : BN_CTX_new_ex(backend()));
    value.reset(BN_bin2bn(signature.data(), static_cast<int>(length), nullptr));
    if (scratch == nullptr || value == nullptr) return 1;
    BN_MONT_CTX *const montgomery = prepared_modulus(unit, scratch.get());
    if (montgomery == nullptr) return 1;
    return raise(value.get(), *unit.numbers[TLX_RSA_E], montgomery, scratch.get()) ? 0 : 1;
}

/// EMSA-PKCS1-v1_5 (RFC 8017, section 9.2). False when the key is too short for the DigestInfo.
bool encode_message(Bytes digest_info, u8 *encoded, std::size_t length) noexcept {
    constexpr std::size_t kLeastPadding = 11;
    if (digest_info.size() + kLeastPadding > length) return false;
    u8 *const tail = encoded + length - digest_info.size();
    encoded[0] = 0;
    encoded[1] = 1;
    std::fill(encoded + 2, tail - 1, u8{0xFF});
    tail[-1] = 0;
    std::memcpy(tail, digest_info.data(), digest_info.size());
    return true;
}

/// MGF1 (RFC 8017, appendix B.2.1): masks the octets with what the seed generates. False when memory runs
/// out.
bool mask(u32 digest_id, Bytes seed, u8 *octets, std::size_t length) noexcept {
    u8 input[TLX_DIGEST_MAX_LENGTH + 4] = {};
    std::memcpy(input, seed.data(), seed.size());
    const auto input_length = static_cast<u32>(seed.size() + 4);
    for (std::size_t done = 0; done < length;) {
        u8 digest[TLX_DIGEST_MAX_LENGTH];
        u32 digest_length = 0;
        if (Digest(digest_id, input, input_length, digest, &digest_length) != 0) return false;
        for (u32 i = 0; i < digest_length && done < length; ++i) {
            octets[done++] ^= digest[i];
        }
        ++input[input_length - 1];  // No modulus is so long that the counter's last octet overflows.
    }
    return true;
}

/// Whether the octets are 00 ... 00 01.
bool is_pss_padding(Bytes octets) noexcept {
    const auto is_zero = [](u8 octet) noexcept { return octet == 0; };
    return octets.back() == 1 && std::all_of(octets.begin(), octets.end() - 1, is_zero);
}

/// EMSA-PSS verification (RFC 8017, section 9.1.2), in the encoded message's own octets. 0,
/// TLX_RSA_BAD_SIGNATURE or 1.
u32 check_pss(const RSA_UNIT &unit, u32 digest_id, Bytes hash, u8 *encoded, std::size_t length,
              u32 unused_bits) noexcept {
    const std::size_t salt_length = unit.pss_salt_length;
    if (length < hash.size() + salt_length + 2 || encoded[length - 1] != 0xBC) return TLX_RSA_BAD_SIGNATURE;
    const std::size_t masked_length = length - hash.size() - 1;
    const Bytes seed(encoded + masked_length, hash.size());
    if (encoded[0] >> (8 - unused_bits) != 0) return TLX_RSA_BAD_SIGNATURE;
    if (!mask(unit.pss_mgf_digest_id, seed, encoded, masked_length)) return 1;
    encoded[0] &= static_cast<u8>(0xFFU >> unused_bits);
    const Bytes unmasked(encoded, masked_length);
    if (!is_pss_padding(unmasked.first(masked_length - salt_length))) return TLX_RSA_BAD_SIGNATURE;

    constexpr std::size_t kZeros = 8;
    u8 message[kZeros + TLX_DIGEST_MAX_LENGTH + kMostRsaOctets] = {};
    std::memcpy(message + kZeros, hash.data(), hash.size());
    std::memcpy(message + kZeros + hash.size(), encoded + masked_length - salt_length, salt_length);
    u8 expected[TLX_DIGEST_MAX_LENGTH];
    u32 expected_length = 0;
    const auto message_length = static_cast<u32>(kZeros + hash.size() + salt_length);
    if (Digest(digest_id, message, message_length, expected, &expected_length) != 0) return 1;
    return std::equal(seed.begin(), seed.end(), expected) ? 0 : TLX_RSA_BAD_SIGNATURE;
}

}  // namespace

namespace tlx {

u32 verify_pkcs1(const RSA_UNIT &unit, Bytes digest_info, Bytes signature) noexcept {
    Bignum recovered;
    if (const u32 status = recover(unit, signature, recovered); status != 0) return status;
    u8 message[kMostRsaOctets];
    if (!encode_message(digest_info, message, signature.size())) return TLX_RSA_BAD_SIGNATURE;
    const Bignum expected(BN_bin2bn(message, static_cast<int>(signature.size()), nullptr));
    if (expected == nullptr) return 1;
    return BN_cmp(recovered.get(), expected.get()) == 0 ? 0 : TLX_RSA_BAD_SIGNATURE;
}

u32 verify_pss(const RSA_UNIT &unit, u32 digest_id, Bytes hash, Bytes signature) noexcept {
    Bignum recovered;
    u8 octets[kMostRsaOctets];
    if (const u32 status = recover(unit, signature, recovered); status != 0) return status;
    if (BN_bn2binpad(recovered.get(), octets, static_cast<int>(signature.size())) < 0) return 1;
    // The encoded message has one bit less than the modulus, which may be an octet less.
    const u32 bits = get_BIGINT_bits(unit.numbers[TLX_RSA_N]) - 1;
    const u32 length = (bits + 7) / 8;
    const std::size_t skipped = signature.size() - length;
    if (skipped != 0 && octets[0] != 0) return TLX_RSA_BAD_SIGNATURE;
    return check_pss(unit, digest_id, hash, octets + skipped, length, 8 * length - bits);
}

}  // namespace tlx
