// The functions of PKCS #5 that take every number from their caller.
#include <tlxcrypto/digest.h>
#include <tlxcrypto/hmac.h>
#include <tlxcrypto/kdf.h>
#include <tlxcrypto/random.h>
#include <tlxpki/pkcs5.h>

#include "keys/pbe.hpp"

using namespace tlx;

namespace {

/// The statuses of one function.
struct Answers {
    u32 missing_argument;
    u32 unsupported;
    u32 no_memory;
};
constexpr Answers kEncryptPbes1 = {0x4A010049, 0x4A01002B, 0x4A01003C};
constexpr Answers kDecryptPbes1 = {0x4A020049, 0x4A02002B, 0x4A02003C};
constexpr Answers kKisa = {0x4A090049, 0x4A09002B, 0x4A09003C};
constexpr Answers kEncryptPbes2 = {0x4A100049, 0x4A10002B, 0x4A10003C};
constexpr Answers kDecryptPbes2 = {0x4A110049, 0x4A11002B, 0x4A11003C};
constexpr Answers kGpki = {0x4A130049, 0x4A13002B, 0x4A13003C};

/// What all of these functions take.
struct Arguments {
    Direction direction;
    u8 *out;
    u32 *out_len;
    const char *password;
    u32 password_len;
    const u8 *salt;
    u32 salt_len;
    u32 iterations;
    const u8 *in;
    u32 in_len;
    u32 cipher_id;
};

/// Checks the arguments, then encrypts or decrypts by `run (input, job)`.
template <typename Run>
u32 run_checked(const Arguments &given, const Answers &answers, Run run) noexcept {
    if (given.out == nullptr || given.out_len == nullptr || given.password == nullptr ||
        given.salt == nullptr || given.in == nullptr || given.iterations == 0) {
        return answers.missing_argument;
    }
    const u32 block = given.direction == Direction::encrypt ? get_BlockLength(given.cipher_id) : 0;
    const bool has_room = *given.out_len >= given.in_len && *given.out_len - given.in_len >= block;
    *given.out_len = 0;
    if (!has_room || given.in_len > kMaxLength) return answers.unsupported;
    const PbeInput input = {{reinterpret_cast<const u8 *>(given.password), given.password_len},
                            {given.salt, given.salt_len},
                            given.iterations};
    switch (run(input, CipherJob{given.direction, {given.in, given.in_len}, given.out, *given.out_len})) {
        case PbeOutcome::done:
            return 0;
        case PbeOutcome::wrong_password:
        case PbeOutcome::bad_length:
            return TLX_CIPHER_BAD_PADDING;
        case PbeOutcome::no_memory:
            return answers.no_memory;
        default:
            return answers.unsupported;
    }
}

u32 run_pbes1_checked(const Arguments &given, const Answers &answers, u32 digest_id) noexcept {
    return run_checked(given, answers, [&](const PbeInput &input, CipherJob job) {
        return run_pbes1(input, given.cipher_id, digest_id, job);
    });
}

constexpr u32 digest_or_sha1(u32 digest_id) noexcept {
    return digest_id == 0 ? TLX_DIGEST_SHA1 : digest_id;
}

u32 run_kisa_checked(const Arguments &given, u32 digest_id, u32 iv_mode) noexcept {
    return run_checked(given, kKisa, [&](const PbeInput &input, CipherJob job) {
        if (iv_mode > 1) return PbeOutcome::unsupported;
        const KisaIv iv = iv_mode == 1 ? KisaIv::hashed : KisaIv::constant;
        return run_kisa(input, given.cipher_id, digest_id, iv, job);
    });
}

u32 run_gpki_checked(const Arguments &given, u32 digest_id) noexcept {
    return run_checked(given, kGpki, [&](PbeInput input, CipherJob job) {
        const PasswordUnits units(input.password, PasswordUnits::From::octets);
        if (!units) return PbeOutcome::no_memory;
        input.password = units.bytes();
        return run_pkcs12(input, given.cipher_id, digest_id, job);
    });
}

}  // namespace

uint32_t PBKDF1(const char *password, uint32_t password_len, const uint8_t *salt, uint32_t salt_len,
                uint32_t iterations, uint32_t digest_id, uint8_t *out, uint32_t out_len) {
    if (password == nullptr || salt == nullptr || out == nullptr || iterations == 0) return 0x4A040049;
    if (out_len == 0 || out_len > get_DigestLength(digest_id)) return 0x4A04002B;
    const PbeInput input = {
        {reinterpret_cast<const u8 *>(password), password_len}, {salt, salt_len}, iterations};
    return derive_pbkdf1(input, digest_id, {out, out_len}) ? 0 : 0x4A04003C;
}

uint32_t PBKDF2(const char *password, uint32_t password_len, const uint8_t *salt, uint32_t salt_len,
                uint32_t iterations, uint32_t digest_id, uint8_t *out, uint32_t out_len) {
    if (password == nullptr || salt == nullptr || out == nullptr || iterations == 0) return 0x4A050049;
    if (out_len == 0 || get_HMAC_length(digest_id) == 0) return 0x4A05002B;
    return compute_PBKDF2(digest_id, reinterpret_cast<const u8 *>(password), password_len, salt, salt_len,
                          iterations, out, out_len) == 0
               ? 0
               : 0x4A05003C;
}

uint32_t encrypt_PBES1(uint8_t *out, uint32_t *out_len, const char *password, uint32_t password_len,
                       const uint8_t *salt, uint32_t salt_len, uint32_t iterations, const uint8_t *in,
                       uint32_t in_len, uint32_t cipher_id, uint32_t digest_id) {
    return run_pbes1_checked({Direction::encrypt, out, out_len, password, password_len, salt, salt_len,
                              iterations, in, in_len, cipher_id},
                             kEncryptPbes1, digest_id);
}

uint32_t decrypt_PBES1(uint8_t *out, uint32_t *out_len, const char *password, uint32_t password_len,
                       const uint8_t *salt, uint32_t salt_len, uint32_t iterations, const uint8_t *in,
                       uint32_t in_len, uint32_t cipher_id, uint32_t digest_id) {
    return run_pbes1_checked({Direction::decrypt, out, out_len, password, password_len, salt, salt_len,
                              iterations, in, in_len, cipher_id},
                             kDecryptPbes1, digest_id);
}

uint32_t encrypt_PBES2(uint8_t *out, uint32_t *out_len, const char *password, uint32_t password_len,
                       const uint8_t *salt, uint32_t salt_len, uint32_t iterations, const uint8_t *in,
                       uint32_t in_len, uint32_t cipher_id, uint32_t digest_id, uint8_t *iv,
                       uint32_t *iv_len) {
    if (iv == nullptr || iv_len == nullptr) return 0x4A100049;
    const Arguments given = {Direction::encrypt, out,        out_len, password, password_len, salt,
                             salt_len,           iterations, in,      in_len,   cipher_id};
    return run_checked(given, kEncryptPbes2, [&](const PbeInput &input, CipherJob job) {
        const u32 length = get_IVLength(cipher_id);
        if (*iv_len != 0 && *iv_len != length) return PbeOutcome::unsupported;
        if (*iv_len == 0 && RAND_BYTES(iv, length) != 0) return PbeOutcome::no_memory;
        *iv_len = length;
        return run_pbes2(input, cipher_id, digest_or_sha1(digest_id), iv, job);
    });
}

uint32_t decrypt_PBES2(uint8_t *out, uint32_t *out_len, const char *password, uint32_t password_len,
                       const uint8_t *salt, uint32_t salt_len, uint32_t iterations, const uint8_t *in,
                       uint32_t in_len, uint32_t cipher_id, uint32_t digest_id, const uint8_t *iv) {
    if (iv == nullptr) return 0x4A110049;
    const Arguments given = {Direction::decrypt, out,        out_len, password, password_len, salt,
                             salt_len,           iterations, in,      in_len,   cipher_id};
    return run_checked(given, kDecryptPbes2, [&](const PbeInput &input, CipherJob job) {
        return run_pbes2(input, cipher_id, digest_or_sha1(digest_id), iv, job);
    });
}

uint32_t encrypt_PBES1_KISA(uint8_t *out, uint32_t *out_len, const char *password, uint32_t password_len,
                            const uint8_t *salt, uint32_t salt_len, uint32_t iterations, const uint8_t *in,
                            uint32_t in_len, uint32_t cipher_id, uint32_t digest_id, uint32_t iv_mode) {
    return run_kisa_checked({Direction::encrypt, out, out_len, password, password_len, salt, salt_len,
                             iterations, in, in_len, cipher_id | kCbc},
                            digest_id, iv_mode);
}

uint32_t decrypt_PBES1_KISA(uint8_t *out, uint32_t *out_len, const char *password, uint32_t password_len,
                            const uint8_t *salt, uint32_t salt_len, uint32_t iterations, const uint8_t *in,
                            uint32_t in_len, uint32_t cipher_id, uint32_t digest_id, uint32_t iv_mode) {
    return run_kisa_checked({Direction::decrypt, out, out_len, password, password_len, salt, salt_len,
                             iterations, in, in_len, cipher_id | kCbc},
                            digest_id, iv_mode);
}

uint32_t encrypt_PBES1_GPKI(uint8_t *out, uint32_t *out_len, const char *password, uint32_t password_len,
                            const uint8_t *salt, uint32_t salt_len, uint32_t iterations, const uint8_t *in,
                            uint32_t in_len, uint32_t cipher_id, uint32_t digest_id) {
    return run_gpki_checked({Direction::encrypt, out, out_len, password, password_len, salt, salt_len,
                             iterations, in, in_len, cipher_id | kCbc},
                            digest_id);
}

uint32_t decrypt_PBES1_GPKI(uint8_t *out, uint32_t *out_len, const char *password, uint32_t password_len,
                            const uint8_t *salt, uint32_t salt_len, uint32_t iterations, const uint8_t *in,
                            uint32_t in_len, uint32_t cipher_id, uint32_t digest_id) {
    return run_gpki_checked({Direction::decrypt, out, out_len, password, password_len, salt, salt_len,
                             iterations, in, in_len, cipher_id | kCbc},
                            digest_id);
}
