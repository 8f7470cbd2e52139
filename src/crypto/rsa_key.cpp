// The backend's view of an RSA key: checking the numbers, handing them over, generating new ones.
#include <openssl/core_names.h>
#include <openssl/params.h>

#include <algorithm>
#include <bit>

#include "crypto/backend.hpp"
#include "crypto/memory.hpp"
#include "crypto/rsa.hpp"

using namespace tlx;

namespace {

constexpr u32 kLeastBits = 512;
// Verifying costs a multiplication for each bit of the public exponent, and no real key's is longer.
constexpr u32 kMostExponentBits = 64;

constexpr const char *kNames[TLX_RSA_NUMBER_COUNT] = {
    OSSL_PKEY_PARAM_RSA_N,         OSSL_PKEY_PARAM_RSA_E,
    OSSL_PKEY_PARAM_RSA_D,         OSSL_PKEY_PARAM_RSA_FACTOR1,
    OSSL_PKEY_PARAM_RSA_FACTOR2,   OSSL_PKEY_PARAM_RSA_EXPONENT1,
    OSSL_PKEY_PARAM_RSA_EXPONENT2, OSSL_PKEY_PARAM_RSA_COEFFICIENT1,
};

bool is_usable_prime(const RsaNumbers &numbers, TLX_RSA_NUMBER prime) noexcept {
    return is_odd(numbers[prime]) && get_BIGINT_bits(numbers[prime]) < get_BIGINT_bits(numbers[TLX_RSA_N]);
}

// The further numbers are at most as long as the modulus, and none is zero. The primes are odd and shorter.
bool is_usable_private_part(const RsaNumbers &numbers) noexcept {
    for (u32 i = TLX_RSA_D; i < TLX_RSA_NUMBER_COUNT; ++i) {
        const u32 bits = get_BIGINT_bits(numbers[i]);
        if (numbers[i] != nullptr && (bits == 0 || bits > get_BIGINT_bits(numbers[TLX_RSA_N]))) return false;
    }
    if (numbers[TLX_RSA_D] == nullptr) return false;
    return numbers[TLX_RSA_P] == nullptr ||
           (is_usable_prime(numbers, TLX_RSA_P) && is_usable_prime(numbers, TLX_RSA_Q));
}

// The numbers as libcrypto's parameters, in one block that is wiped.
class KeyParameters {
  public:
    KeyParameters() = default;
    KeyParameters(const KeyParameters &) = delete;
    KeyParameters &operator=(const KeyParameters &) = delete;
    ~KeyParameters() { wipe_and_free(octets_, size_); }

    bool fill(const RsaNumbers &numbers) noexcept {
        for (u32 i = 0; i < TLX_RSA_NUMBER_COUNT; ++i) {
            size_ += length(numbers[i]);
        }
        octets_ = static_cast<u8 *>(TLX_ALLOCATE(size_));
        if (octets_ == nullptr) return false;
        u8 *next = octets_;
        OSSL_PARAM *parameter = parameters_;
        for (u32 i = 0; i < TLX_RSA_NUMBER_COUNT; ++i) {
            if (numbers[i] == nullptr) continue;
            const u32 len = length(numbers[i]);
            BIGINT_to_binary(numbers[i], next, len);
            if constexpr (std::endian::native == std::endian::little) std::reverse(next, next + len);
            *parameter++ = OSSL_PARAM_construct_BN(kNames[i], next, len);
            next += len;
        }
        *parameter = OSSL_PARAM_construct_end();
        return true;
    }

    OSSL_PARAM *get() noexcept { return parameters_; }

  private:
    static u32 length(const BIGINT *number) noexcept { return (get_BIGINT_bits(number) + 7) / 8; }

    u8 *octets_ = nullptr;
    std::size_t size_ = 0;
    OSSL_PARAM parameters_[TLX_RSA_NUMBER_COUNT + 1];
};

Key build_key(const RSA_UNIT &unit) noexcept {
    KeyParameters parameters;
    if (backend() == nullptr || !parameters.fill(unit.numbers)) return nullptr;
    const int selection = unit.kind == TLX_RSA_PRIVATE ? EVP_PKEY_KEYPAIR : EVP_PKEY_PUBLIC_KEY;
    const KeyContext context(EVP_PKEY_CTX_new_from_name(backend(), "RSA", nullptr));
    EVP_PKEY *key = nullptr;
    if (context == nullptr || EVP_PKEY_fromdata_init(context.get()) != 1 ||
        EVP_PKEY_fromdata(context.get(), &key, selection, parameters.get()) != 1) {
        EVP_PKEY_free(key);
        return nullptr;
    }
    return Key(key);
}

Key generate_key(u32 modulus_bits, u32 e) noexcept {
    const KeyContext context(backend() == nullptr ? nullptr
                                                  : EVP_PKEY_CTX_new_from_name(backend(), "RSA", nullptr));
    std::size_t wanted_bits = modulus_bits;
    u32 exponent = e;
    const OSSL_PARAM parameters[] = {OSSL_PARAM_construct_size_t(OSSL_PKEY_PARAM_RSA_BITS, &wanted_bits),
                                     OSSL_PARAM_construct_uint32(OSSL_PKEY_PARAM_RSA_E, &exponent),
                                     OSSL_PARAM_construct_end()};
    EVP_PKEY *key = nullptr;
    if (context == nullptr || EVP_PKEY_keygen_init(context.get()) != 1 ||
        EVP_PKEY_CTX_set_params(context.get(), parameters) != 1 ||
        EVP_PKEY_generate(context.get(), &key) != 1) {
        EVP_PKEY_free(key);
        return nullptr;
    }
    return Key(key);
}

OwnedBigint number_of(const EVP_PKEY *key, const char *name) noexcept {
    BIGNUM *value = nullptr;
    const bool found = EVP_PKEY_get_bn_param(key, name, &value) == 1;
    const Bignum owned(value);
    OwnedBigint number(new_BIGINT());
    return found && number != nullptr && from_bignum(number.get(), value) ? std::move(number) : nullptr;
}

}  // namespace

namespace tlx {

bool is_usable_public_part(const RsaNumbers &numbers) noexcept {
    const u32 n_bits = get_BIGINT_bits(numbers[TLX_RSA_N]);
    const u32 e_bits = get_BIGINT_bits(numbers[TLX_RSA_E]);
    if (n_bits < kLeastBits || n_bits > kMostRsaBits || !is_odd(numbers[TLX_RSA_N])) return false;
    return e_bits >= 2 && e_bits <= kMostExponentBits && is_odd(numbers[TLX_RSA_E]);
}

u32 get_backend_key(const RSA_UNIT &unit, EVP_PKEY **key) noexcept {
    if (backend() == nullptr) return 1;
    if (unit.cache == nullptr) return TLX_RSA_BAD_KEY;
    RsaCache &cache = *unit.cache;
    *key = cache.key.load(std::memory_order_acquire);
    if (*key != nullptr) return 0;
    if (!is_usable_public_part(unit.numbers)) return TLX_RSA_BAD_KEY;
    if (unit.kind == TLX_RSA_PRIVATE && !is_usable_private_part(unit.numbers)) return TLX_RSA_BAD_KEY;
    Key built = build_key(unit);
    if (built == nullptr) return 1;
    cache.builds.fetch_add(1, std::memory_order_relaxed);
    // Another thread may have been faster; then we keep its key and free ours.
    if (cache.key.compare_exchange_strong(*key, built.get(), std::memory_order_acq_rel)) {
        *key = built.release();
    }
    return 0;
}

}  // namespace tlx

extern "C" uint32_t gen_RSA_UNIT(RSA_UNIT *unit, uint32_t modulus_bits, uint32_t e) {
    if (unit == nullptr || modulus_bits < kLeastBits || modulus_bits > kMostRsaBits) return 1;
    if (e < 3 || e % 2 == 0) return 1;
    const ErrorScope errors;
    const Key key = generate_key(modulus_bits, e);
    if (key == nullptr) return 1;
    OwnedBigint made[TLX_RSA_NUMBER_COUNT];
    for (u32 i = 0; i < TLX_RSA_NUMBER_COUNT; ++i) {
        made[i] = number_of(key.get(), kNames[i]);
        if (made[i] == nullptr) return 1;
    }
    return set_RSA_UNIT_private(unit, made[TLX_RSA_N].get(), made[TLX_RSA_E].get(), made[TLX_RSA_D].get(),
                                made[TLX_RSA_P].get(), made[TLX_RSA_Q].get(), made[TLX_RSA_DP].get(),
                                made[TLX_RSA_DQ].get(), made[TLX_RSA_QINV].get());
}
