// Verifying PKCS #1 v1.5 signatures by the bare public operation: what a certificate's key is used for, often
// once only, so that preparing it counts as much as using it.
#include <algorithm>
#include <cstring>
#include <new>

#include "crypto/backend.hpp"
#include "crypto/memory.hpp"
#include "crypto/rsa.hpp"

using namespace tlx;

namespace {

constexpr u32 kMostOctets = 16384 / 8;

struct FreeMontgomery {
    void operator()(BN_MONT_CTX *context) const noexcept { BN_MONT_CTX_free(context); }
};
using Montgomery = std::unique_ptr<BN_MONT_CTX, FreeMontgomery>;

bool bit(const BIGINT &number, u32 index) noexcept {
    return (limb(number, index / kLimbBits) >> (index % kLimbBits) & 1U) != 0;
}

/// The unit's modulus prepared for multiplication. Another thread may have been faster; then its work stands.
BN_MONT_CTX *prepared_modulus(const RSA_UNIT &unit, BN_CTX *scratch) noexcept {
    SharedModulus &shared = *unit.cache.modulus;
    BN_MONT_CTX *ready = shared.prepared.load(std::memory_order_acquire);
    if (ready != nullptr) return ready;
    const Bignum n(to_bignum(unit.numbers[TLX_RSA_N]));
    Montgomery made(BN_MONT_CTX_new());
    if (n == nullptr || made == nullptr || BN_MONT_CTX_set(made.get(), n.get(), scratch) != 1) return nullptr;
    shared.builds.fetch_add(1, std::memory_order_relaxed);
    const bool first = shared.prepared.compare_exchange_strong(ready, made.get(), std::memory_order_acq_rel);
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

}  // namespace

namespace tlx {

void ReleaseModulus::operator()(SharedModulus *modulus) const noexcept {
    if (modulus->references.fetch_sub(1, std::memory_order_acq_rel) != 1) return;
    BN_MONT_CTX_free(modulus->prepared.load(std::memory_order_relaxed));
    tlx_free(modulus);
}

OwnedModulus make_modulus() noexcept {
    void *memory = TLX_ALLOCATE(sizeof(SharedModulus));
    return OwnedModulus(memory == nullptr ? nullptr : new (memory) SharedModulus);
}

OwnedModulus share(const OwnedModulus &modulus) noexcept {
    if (modulus != nullptr) modulus->references.fetch_add(1, std::memory_order_relaxed);
    return OwnedModulus(modulus.get());
}

u32 verify_pkcs1(const RSA_UNIT &unit, Bytes digest_info, Bytes signature) noexcept {
    if (!is_usable_public_part(unit.numbers)) return TLX_RSA_BAD_KEY;
    const u32 length = get_RSA_length(&unit);
    u8 modulus[kMostOctets];
    u8 message[kMostOctets];
    if (signature.size() != length || !encode_message(digest_info, message, length)) {
        return TLX_RSA_BAD_SIGNATURE;
    }
    // RFC 8017, section 5.2.2: a signature representative is below the modulus.
    BIGINT_to_binary(unit.numbers[TLX_RSA_N], modulus, length);
    if (std::memcmp(signature.data(), modulus, length) >= 0) return TLX_RSA_BAD_SIGNATURE;

    const BignumContext scratch(backend() == nullptr ? nullptr : BN_CTX_new_ex(backend()));
    const Bignum value(BN_bin2bn(signature.data(), static_cast<int>(length), nullptr));
    const Bignum expected(BN_bin2bn(message, static_cast<int>(length), nullptr));
    if (scratch == nullptr || value == nullptr || expected == nullptr) return 1;
    BN_MONT_CTX *const montgomery = prepared_modulus(unit, scratch.get());
    if (montgomery == nullptr || !raise(value.get(), *unit.numbers[TLX_RSA_E], montgomery, scratch.get())) {
        return 1;
    }
    return BN_cmp(value.get(), expected.get()) == 0 ? 0 : TLX_RSA_BAD_SIGNATURE;
}

}  // namespace tlx
