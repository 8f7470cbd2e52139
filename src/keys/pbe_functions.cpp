#include "keys/pbe_functions.hpp"

#include <tlxcrypto/digest.h>
#include <tlxcrypto/kdf.h>

#include <algorithm>

#include "der/buffer.hpp"
#include "keys/pkcs12_derivation.hpp"

using namespace tlx;

namespace {

/// A derived key and IV, wiped at the end.
struct PbeKey {
    u8 key[TLX_CIPHER_MAX_KEY_LENGTH] = {};
    u8 iv[TLX_CIPHER_MAX_BLOCK_LENGTH] = {};

    PbeKey() noexcept = default;
    ~PbeKey() {
        tlx_wipe(key, sizeof key);
        tlx_wipe(iv, sizeof iv);
    }
    PbeKey(const PbeKey &) = delete;
    PbeKey &operator=(const PbeKey &) = delete;
};

/// Octets of a digest, wiped at the end.
struct Derived {
    u8 octets[TLX_DIGEST_MAX_LENGTH] = {};

    Derived() noexcept = default;
    ~Derived() { tlx_wipe(octets, sizeof octets); }
    Derived(const Derived &) = delete;
    Derived &operator=(const Derived &) = delete;
};

PbeOutcome run_cipher(u32 cipher_id, const u8 *key, const u8 *iv, CipherJob job) noexcept {
    const u32 status = BlockCipher(cipher_id, static_cast<u32>(job.direction), key, iv, job.out, &job.out_len,
                                   job.in.data(), static_cast<u32>(job.in.size()));
    if (status == TLX_CIPHER_BAD_PADDING) {
        const bool whole = !job.in.empty() && job.in.size() % get_BlockLength(cipher_id) == 0;
        return whole ? PbeOutcome::wrong_password : PbeOutcome::bad_length;
    }
    return status == 0 ? PbeOutcome::done : PbeOutcome::no_memory;
}

bool hash(u32 digest_id, Bytes data, u8 *out) noexcept {
    u32 len = 0;
    return Digest(digest_id, data.data(), static_cast<u32>(data.size()), out, &len) == 0;
}

}  // namespace

bool tlx::derive_pbkdf1(const PbeInput &input, u32 digest_id, std::span<u8> out) noexcept {
    const Owned<DIGEST_UNIT> unit(new_DIGEST_UNIT());
    const auto [password, salt, iterations] = input;
    Derived chained;
    u32 len = 0;
    bool derived = unit != nullptr && init_Digest(unit.get(), digest_id) == 0 &&
                   update_Digest(unit.get(), password.data(), static_cast<u32>(password.size())) == 0 &&
                   update_Digest(unit.get(), salt.data(), static_cast<u32>(salt.size())) == 0 &&
                   final_Digest(unit.get(), chained.octets, &len) == 0;
    for (u32 i = 1; i < iterations && derived; ++i) {
        derived = init_Digest(unit.get(), digest_id) == 0 &&
                  update_Digest(unit.get(), chained.octets, len) == 0 &&
                  final_Digest(unit.get(), chained.octets, &len) == 0;
    }
    if (derived) std::copy_n(chained.octets, out.size(), out.data());
    return derived;
}

PbeOutcome tlx::run_pbes1(const PbeInput &input, u32 cipher_id, u32 digest_id, CipherJob job) noexcept {
    constexpr u32 kHalf = 8;
    if (get_KeyLength(cipher_id) != kHalf || get_IVLength(cipher_id) != kHalf) return PbeOutcome::unsupported;
    if (get_DigestLength(digest_id) < 2 * kHalf) return PbeOutcome::unsupported;
    Derived derived;
    if (!derive_pbkdf1(input, digest_id, {derived.octets, std::size_t{2} * kHalf})) {
        return PbeOutcome::no_memory;
    }
    return run_cipher(cipher_id, derived.octets, derived.octets + kHalf, job);
}

PbeOutcome tlx::run_pbes2(const PbeInput &input, u32 cipher_id, u32 prf_digest_id, const u8 *iv,
                          CipherJob job) noexcept {
    const u32 key_len = get_KeyLength(cipher_id);
    if (key_len == 0 || get_DigestLength(prf_digest_id) == 0) return PbeOutcome::unsupported;
    PbeKey derived;
    if (compute_PBKDF2(prf_digest_id, input.password.data(), static_cast<u32>(input.password.size()),
                       input.salt.data(), static_cast<u32>(input.salt.size()), input.iterations, derived.key,
                       key_len) != 0) {
        return PbeOutcome::no_memory;
    }
    return run_cipher(cipher_id, derived.key, iv, job);
}

PbeOutcome tlx::run_scrypt(const ScryptInput &input, u64 most_memory, u32 cipher_id, const u8 *iv,
                           CipherJob job) noexcept {
    const u32 key_len = get_KeyLength(cipher_id);
    if (key_len == 0) return PbeOutcome::unsupported;
    PbeKey derived;
    if (compute_SCRYPT(input.password.data(), static_cast<u32>(input.password.size()), input.salt.data(),
                       static_cast<u32>(input.salt.size()), input.cost, input.block_size,
                       input.parallelization, most_memory, derived.key, key_len) != 0) {
        return PbeOutcome::no_memory;
    }
    return run_cipher(cipher_id, derived.key, iv, job);
}

PbeOutcome tlx::run_kisa(const PbeInput &input, u32 cipher_id, u32 digest_id, KisaIv iv,
                         CipherJob job) noexcept {
    constexpr u32 kDerivedLength = 20;
    static constexpr u8 kConstant[] = "5820463917582046";
    static constexpr u8 kInCirculation[] = "0123456789012345";
    const u32 cipher = cipher_id | kCbc;
    const u32 block = get_BlockLength(cipher);
    const u32 digest_len = get_DigestLength(digest_id);
    if (block == 0 || get_KeyLength(cipher) != block || digest_len < kDerivedLength) {
        return PbeOutcome::unsupported;
    }
    Derived derived;
    Derived hashed;
    if (!derive_pbkdf1(input, digest_id, {derived.octets, kDerivedLength})) return PbeOutcome::no_memory;
    if (iv != KisaIv::hashed) {
        return run_cipher(cipher, derived.octets, iv == KisaIv::constant ? kConstant : kInCirculation, job);
    }
    if (!hash(digest_id, {derived.octets + block, kDerivedLength - block}, hashed.octets)) {
        return PbeOutcome::no_memory;
    }
    return run_cipher(cipher, derived.octets, hashed.octets, job);
}

PbeOutcome tlx::run_pkcs12(const PbeInput &input, u32 cipher_id, u32 digest_id, CipherJob job) noexcept {
    const u32 key_len = get_KeyLength(cipher_id);
    const u32 iv_len = get_IVLength(cipher_id);
    if (key_len == 0 || get_DigestLength(digest_id) == 0) return PbeOutcome::unsupported;
    const Pkcs12Derivation derivation = {digest_id, input.password, input.salt, input.iterations};
    PbeKey derived;
    if (!derivation.derive(TLX_PKCS12_KEY, {derived.key, key_len}) ||
        !derivation.derive(TLX_PKCS12_IV, {derived.iv, iv_len})) {
        return PbeOutcome::no_memory;
    }
    return run_cipher(cipher_id, derived.key, derived.iv, job);
}
