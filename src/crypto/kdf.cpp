#include <openssl/core_names.h>
#include <openssl/kdf.h>
#include <openssl/params.h>
#include <tlxcrypto/hmac.h>
#include <tlxcrypto/kdf.h>

#include <algorithm>
#include <cstring>

#include "crypto/backend.hpp"
#include "crypto/has160.hpp"
#include "crypto/memory.hpp"

using namespace tlx;

namespace {

constexpr u32 kMostLength = 0x7FFFFFFF;  // libcrypto counts in an int

/// Null octets of length 0 become an empty text, because libcrypto takes null for an argument that is
/// missing.
const u8 *octets_or_none(const u8 *octets) noexcept {
    static constexpr u8 kNone[1] = {};
    return octets == nullptr ? kNone : octets;
}

struct FreeHmac {
    void operator()(HMAC_UNIT *unit) const noexcept { free_HMAC_UNIT(unit); }
};
using Hmac = std::unique_ptr<HMAC_UNIT, FreeHmac>;

bool mac(HMAC_UNIT *unit, Bytes first, Bytes second, u8 (&out)[Has160::kLength]) noexcept {
    u32 len = 0;
    return reset_HMAC(unit) == 0 && update_HMAC(unit, first.data(), static_cast<u32>(first.size())) == 0 &&
           update_HMAC(unit, second.data(), static_cast<u32>(second.size())) == 0 &&
           final_HMAC(unit, out, &len) == 0;
}

/// T = U1 xor ... xor Uc, where U1 = HMAC (password, salt || INT (number)) and Uj = HMAC (password, U(j-1)).
bool derive_block(HMAC_UNIT *unit, Bytes salt, u32 number, u32 iterations,
                  u8 (&block)[Has160::kLength]) noexcept {
    const u8 counter[4] = {static_cast<u8>(number >> 24), static_cast<u8>(number >> 16),
                           static_cast<u8>(number >> 8), static_cast<u8>(number)};
    u8 chained[Has160::kLength];
    bool derived = mac(unit, salt, counter, chained);
    std::memcpy(block, chained, sizeof block);
    for (u32 i = 1; i < iterations && derived; ++i) {
        derived = mac(unit, chained, {}, chained);
        for (u32 at = 0; at < sizeof block; ++at)
            block[at] ^= chained[at];
    }
    tlx_wipe(chained, sizeof chained);
    return derived;
}

/// PBKDF2 with HAS-160, which libcrypto lacks.
bool derive_has160(Bytes password, Bytes salt, u32 iterations, u8 *out, u32 out_len) noexcept {
    const Hmac unit(new_HMAC_UNIT());
    if (!unit ||
        init_HMAC(unit.get(), TLX_DIGEST_HAS160, password.data(), static_cast<u32>(password.size())) != 0) {
        return false;
    }
    u8 block[Has160::kLength];
    bool derived = true;
    for (u32 done = 0, number = 1; done < out_len && derived; done += Has160::kLength, ++number) {
        derived = derive_block(unit.get(), salt, number, iterations, block);
        std::memcpy(out + done, block, std::min(Has160::kLength, out_len - done));
    }
    tlx_wipe(block, sizeof block);
    return derived;
}

struct FreeKdf {
    void operator()(EVP_KDF *kdf) const noexcept { EVP_KDF_free(kdf); }
    void operator()(EVP_KDF_CTX *context) const noexcept { EVP_KDF_CTX_free(context); }
};
using Kdf = std::unique_ptr<EVP_KDF, FreeKdf>;
using KdfContext = std::unique_ptr<EVP_KDF_CTX, FreeKdf>;

OSSL_PARAM octet_parameter(const char *name, Bytes octets) noexcept {
    return OSSL_PARAM_construct_octet_string(name, const_cast<u8 *>(octets_or_none(octets.data())),
                                             octets.size());
}

/// A function of libcrypto that derives octets from a shared secret. HKDF takes no more than 255 digests.
bool derive_from_secret(const char *function, u32 digest_id, Bytes secret, Bytes salt, Bytes info, u8 *out,
                        u32 out_len) noexcept {
    const EVP_MD *digest = backend_digest(digest_id);
    if (digest == nullptr) return false;
    const ErrorScope errors;
    const Kdf kdf(EVP_KDF_fetch(backend(), function, nullptr));
    const KdfContext context(kdf == nullptr ? nullptr : EVP_KDF_CTX_new(kdf.get()));
    if (context == nullptr) return false;
    const OSSL_PARAM parameters[] = {
        OSSL_PARAM_construct_utf8_string(OSSL_KDF_PARAM_DIGEST, const_cast<char *>(EVP_MD_get0_name(digest)),
                                         0),
        octet_parameter(OSSL_KDF_PARAM_KEY, secret),
        octet_parameter(OSSL_KDF_PARAM_INFO, info),
        salt.empty() ? OSSL_PARAM_construct_end() : octet_parameter(OSSL_KDF_PARAM_SALT, salt),
        OSSL_PARAM_construct_end(),
    };
    return EVP_KDF_derive(context.get(), out, out_len, parameters) == 1;
}

bool are_octets(const u8 *octets, u32 len) noexcept {
    return len <= kMostLength && (octets != nullptr || len == 0);
}

}  // namespace

extern "C" {

uint32_t compute_PBKDF2(uint32_t digest_id, const uint8_t *password, uint32_t password_len,
                        const uint8_t *salt, uint32_t salt_len, uint32_t iterations, uint8_t *out,
                        uint32_t out_len) {
    if (out == nullptr || out_len == 0 || out_len > kMostLength) return 1;
    std::memset(out, 0, out_len);
    const bool valid = are_octets(password, password_len) && are_octets(salt, salt_len) && iterations != 0 &&
                       iterations <= kMostLength;
    if (!valid) return 1;
    bool derived = false;
    if (digest_id == TLX_DIGEST_HAS160) {
        derived = derive_has160({password, password_len}, {salt, salt_len}, iterations, out, out_len);
    } else if (const EVP_MD *digest =
                   backend_digest(digest_id == TLX_HMAC_SHA1 ? TLX_DIGEST_SHA1 : digest_id);
               digest != nullptr) {
        const ErrorScope errors;
        derived = PKCS5_PBKDF2_HMAC(reinterpret_cast<const char *>(octets_or_none(password)),
                                    static_cast<int>(password_len), octets_or_none(salt),
                                    static_cast<int>(salt_len), static_cast<int>(iterations), digest,
                                    static_cast<int>(out_len), out) == 1;
    }
    if (!derived) tlx_wipe(out, out_len);
    return derived ? 0 : 1;
}

uint32_t compute_SCRYPT(const uint8_t *password, uint32_t password_len, const uint8_t *salt,
                        uint32_t salt_len, uint64_t cost, uint32_t block_size, uint32_t parallelization,
                        uint64_t most_memory, uint8_t *out, uint32_t out_len) {
    if (out == nullptr || out_len == 0 || out_len > kMostLength) return 1;
    std::memset(out, 0, out_len);
    OSSL_LIB_CTX *context = backend();
    if (context == nullptr || !are_octets(password, password_len) || !are_octets(salt, salt_len)) return 1;
    // libcrypto takes 0 for a limit of its own.
    if (cost == 0 || block_size == 0 || parallelization == 0 || most_memory == 0) return 1;
    const ErrorScope errors;
    const bool derived = EVP_PBE_scrypt_ex(reinterpret_cast<const char *>(octets_or_none(password)),
                                           password_len, octets_or_none(salt), salt_len, cost, block_size,
                                           parallelization, most_memory, out, out_len, context, nullptr) == 1;
    if (!derived) tlx_wipe(out, out_len);
    return derived ? 0 : 1;
}

uint32_t compute_HKDF(uint32_t digest_id, const uint8_t *secret, uint32_t secret_len, const uint8_t *salt,
                      uint32_t salt_len, const uint8_t *info, uint32_t info_len, uint8_t *out,
                      uint32_t out_len) {
    if (out == nullptr || out_len == 0 || out_len > kMostLength) return 1;
    std::memset(out, 0, out_len);
    const bool derived = are_octets(secret, secret_len) && are_octets(salt, salt_len) &&
                         are_octets(info, info_len) &&
                         derive_from_secret(OSSL_KDF_NAME_HKDF, digest_id, {secret, secret_len},
                                            {salt, salt_len}, {info, info_len}, out, out_len);
    if (!derived) tlx_wipe(out, out_len);
    return derived ? 0 : 1;
}

uint32_t compute_X963_KDF(uint32_t digest_id, const uint8_t *secret, uint32_t secret_len, const uint8_t *info,
                          uint32_t info_len, uint8_t *out, uint32_t out_len) {
    if (out == nullptr || out_len == 0 || out_len > kMostLength) return 1;
    std::memset(out, 0, out_len);
    const bool derived = secret_len != 0 && are_octets(secret, secret_len) && are_octets(info, info_len) &&
                         derive_from_secret(OSSL_KDF_NAME_X963KDF, digest_id, {secret, secret_len}, {},
                                            {info, info_len}, out, out_len);
    if (!derived) tlx_wipe(out, out_len);
    return derived ? 0 : 1;
}

}  // extern "C"
