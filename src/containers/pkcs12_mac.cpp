#include "containers/pkcs12_mac.hpp"

#include <tlxcrypto/hmac.h>
#include <tlxcrypto/kdf.h>
#include <tlxcrypto/random.h>
#include <tlxpki/objects.h>

#include <algorithm>

#include "der/list_items.hpp"
#include "keyinfo/digest_identifier.hpp"
#include "keys/pkcs12_derivation.hpp"
#include "message/content_kinds.hpp"

using namespace tlx;

namespace {

constexpr u32 kDefaultSaltLength = 8;

/// Digests that codes are made with; more are read.
constexpr u32 kWrittenDigests[] = {TLX_DIGEST_SHA1, TLX_DIGEST_SHA256, TLX_DIGEST_SHA384, TLX_DIGEST_SHA512,
                                   TLX_DIGEST_HAS160};

struct Code {
    u8 octets[TLX_DIGEST_MAX_LENGTH];
    u32 length = 0;

    [[nodiscard]] bool is(Bytes other) const noexcept {
        if (other.size() != length) return false;
        u8 difference = 0;
        for (u32 i = 0; i < length; ++i) {
            difference = static_cast<u8>(difference | (octets[i] ^ other[i]));
        }
        return difference == 0;
    }
};

/// The key of an HMAC, wiped at the end.
struct MacKey {
    u32 digest_id = 0;
    u32 length = 0;
    u8 octets[TLX_DIGEST_MAX_LENGTH] = {};

    MacKey() noexcept = default;
    ~MacKey() { tlx_wipe(octets, sizeof octets); }
    MacKey(const MacKey &) = delete;
    MacKey &operator=(const MacKey &) = delete;
};

/// A key as long as the digest, derived in the manner of PKCS #12 (RFC 7292, appendix B).
MacOutcome derive_key(const P12_MAC_DATA &data, Bytes password, WorkBudget &budget, MacKey &key) noexcept {
    key.digest_id = digest_of(text_of(data.digestAlgorithm));
    key.length = get_DigestLength(key.digest_id);
    if (key.length == 0) return MacOutcome::unsupported;
    const u32 iterations = data.iterations == nullptr ? 1 : get_BIGINT_word(data.iterations);
    if (!budget.take(iterations)) return MacOutcome::too_much_work;
    const Pkcs12Derivation derivation = {key.digest_id, password, octets_of(data.macSalt), iterations};
    const bool done = derivation.derive(TLX_PKCS12_MAC, {key.octets, key.length});
    return done ? MacOutcome::good : MacOutcome::no_memory;
}

constexpr std::string_view kPbmac1 = "1.2.840.113549.1.5.14";
/// A key of fewer octets, which RFC 9579 forbids, would let others guess the code.
constexpr u32 kShortestPbmac1Key = 20;

// PBMAC1-params ::= SEQUENCE {  -- RFC 8018, appendix A.5
//     keyDerivationFunc  AlgorithmIdentifier,
//     messageAuthScheme  AlgorithmIdentifier }
/// A key of PBKDF2, whose salt and count are in the parameters instead of the MAC data (RFC 9579). These have
/// the form of PBES2's.
MacOutcome derive_pbmac1_key(const P12_MAC_DATA &data, Bytes password, WorkBudget &budget,
                             MacKey &key) noexcept {
    P5_PBE_PARAM *read = nullptr;
    static_cast<void>(Seq_to_P5_PBE_PARAM(data.digestParameters, &read));
    const Owned<P5_PBE_PARAM> param(read);
    if (!param || param->encryptionScheme == nullptr || param->keyLength == nullptr) {
        return MacOutcome::unsupported;
    }
    const Prf *function = find_prf(param->prf);
    const Prf *code = find_prf(param->encryptionScheme);
    const u32 iterations = get_BIGINT_word(param->iterationCount);
    key.length = get_BIGINT_word(param->keyLength);
    if (function == nullptr || code == nullptr || iterations == 0 || key.length < kShortestPbmac1Key ||
        key.length > sizeof key.octets || get_DigestLength(function->digest_id) == 0) {
        return MacOutcome::unsupported;
    }
    key.digest_id = code->digest_id;
    const u32 block = get_DigestLength(function->digest_id);
    if (!budget.take(u64{iterations} * ((key.length + block - 1) / block))) return MacOutcome::too_much_work;
    const Bytes salt = octets_of(param->salt);
    const u32 failed =
        compute_PBKDF2(function->digest_id, password.data(), static_cast<u32>(password.size()), salt.data(),
                       static_cast<u32>(salt.size()), iterations, key.octets, key.length);
    return failed == 0 ? MacOutcome::good : MacOutcome::no_memory;
}

/// HMAC under a derived key over the octets of the content.
MacOutcome compute_mac(const P12_PFX &pfx, const PbePassword &password, WorkBudget &budget,
                       Code &code) noexcept {
    if (pfx.macData == nullptr) return MacOutcome::missing;
    const P12_MAC_DATA &data = *pfx.macData;
    if (content_type(pfx.authSafe) != oid::kPkcs7Data || pfx.authSafe->content.any == nullptr) {
        return MacOutcome::unsupported;
    }
    MacKey key;
    const MacOutcome outcome = text_of(data.digestAlgorithm) == kPbmac1
                                   ? derive_pbmac1_key(data, password.text, budget, key)
                                   : derive_key(data, password.units, budget, key);
    if (outcome != MacOutcome::good) return outcome;
    const Bytes content = octets_of(pfx.authSafe->content.data);
    const u32 failed = compute_HMAC(key.digest_id, key.octets, key.length, content.data(),
                                    static_cast<u32>(content.size()), code.octets, &code.length);
    return failed == 0 ? MacOutcome::good : MacOutcome::no_memory;
}

/// An 8-bit password as gen_PKCS12_key_ASC() widens it.
class WidenedPassword {
  public:
    WidenedPassword(const char *password, u32 length) noexcept
        : text_(reinterpret_cast<const u8 *>(password), password == nullptr ? 0 : length),
          absent_(text_.empty()),
          units_(text_, PasswordUnits::From::octets) {}

    /// False when memory ran out.
    explicit operator bool() const noexcept { return static_cast<bool>(units_); }
    [[nodiscard]] PbePassword password() const noexcept {
        return {text_, absent_ ? Bytes() : units_.bytes()};
    }

  private:
    Bytes text_;
    bool absent_;
    PasswordUnits units_;
};

/// Frees a salt of the caller's.
using OwnedSalt = OwnedOctets<u8>;

bool store_salt(P12_MAC_DATA &data, OwnedSalt given, u32 length) noexcept {
    const u32 size = length == 0 ? kDefaultSaltLength : length;
    OwnedSalt salt = std::move(given);
    if (salt == nullptr) {
        salt.reset(static_cast<u8 *>(TLX_ALLOCATE(size)));
        if (salt == nullptr || RAND_BYTES(salt.get(), size) != 0) return false;
    }
    data.macSalt = new_string(TLX_TAG_OCTET_STRING, {salt.get(), size});
    return data.macSalt != nullptr;
}

bool store_iterations(P12_MAC_DATA &data, u32 iterations) noexcept {
    data.iterations = new_BIGINT();
    return data.iterations != nullptr && set_BIGINT_word(data.iterations, iterations) == 0;
}

bool store_digest(P12_MAC_DATA &data, u32 digest_id) noexcept {
    if (digest_id == 0) digest_id = TLX_DIGEST_SHA1;
    const auto algorithm = makes_codes(digest_id) ? digest_algorithm(digest_id) : nullptr;
    if (!algorithm) return false;
    data.digestAlgorithm = std::exchange(algorithm->algorithm, nullptr);
    data.digestParameters = std::exchange(algorithm->parameters, nullptr);
    return true;
}

/// As many octets remain as the number can be divided by 16 until it is at most 16.
u32 stored_iterations(u32 iterations) noexcept {
    u32 octets = 0;
    for (u32 rest = iterations; rest > 16; rest /= 16) {
        ++octets;
    }
    return octets < sizeof iterations ? iterations & ((1U << 8 * octets) - 1) : iterations;
}

/// Fills MAC data that has neither salt nor count, or leaves it as it was. Without iterations there is no
/// count.
bool store_parameters(P12_PFX &pfx, OwnedSalt salt, u32 salt_len, const u32 *iterations,
                      u32 digest_id) noexcept {
    Owned<P12_MAC_DATA> made(new_P12_MAC_DATA());
    if (!made || (iterations != nullptr && !store_iterations(*made, *iterations)) ||
        !store_salt(*made, std::move(salt), salt_len) || !store_digest(*made, digest_id)) {
        return false;
    }
    free_P12_MAC_DATA(pfx.macData);
    pfx.macData = made.release();
    return true;
}

bool store_code(P12_PFX &pfx, const PbePassword &password) noexcept {
    WorkBudget budget;
    Code code;
    if (compute_mac(pfx, password, budget, code) != MacOutcome::good) return false;
    OCTET_STRING *const mac = new_string(TLX_TAG_OCTET_STRING, {code.octets, code.length});
    if (mac == nullptr) return false;
    free_OCTET_STRING(pfx.macData->mac);
    pfx.macData->mac = mac;
    return true;
}

bool has_parameters(const P12_PFX &pfx) noexcept {
    return pfx.macData != nullptr && (pfx.macData->macSalt != nullptr || pfx.macData->iterations != nullptr);
}

}  // namespace

MacOutcome tlx::check_mac(const P12_PFX &pfx, const PbePassword &password, WorkBudget &budget) noexcept {
    Code code;
    const MacOutcome outcome = compute_mac(pfx, password, budget, code);
    if (outcome != MacOutcome::good) return outcome;
    return code.is(octets_of(pfx.macData->mac)) ? MacOutcome::good : MacOutcome::differs;
}

bool tlx::makes_codes(u32 digest_id) noexcept {
    return std::ranges::find(kWrittenDigests, digest_id) != std::end(kWrittenDigests);
}

bool tlx::make_mac(P12_PFX &pfx, const PbePassword &password, u32 iterations, u32 digest_id) noexcept {
    return store_parameters(pfx, nullptr, 0, &iterations, digest_id) && store_code(pfx, password);
}

uint32_t set_PKCS12_mac(P12_PFX *pfx, const char *password, uint32_t password_len, uint8_t *salt,
                        uint32_t salt_len, uint32_t iterations, uint32_t digest_id) {
    if (pfx == nullptr) return 0x4D10000D;
    const u32 stored = stored_iterations(iterations);
    const u32 *const count = iterations < 2 ? nullptr : &stored;
    if (!has_parameters(*pfx) && !store_parameters(*pfx, OwnedSalt(salt), salt_len, count, digest_id)) {
        return 0x4D10000D;
    }
    const WidenedPassword widened(password, password_len);
    return widened && store_code(*pfx, widened.password()) ? 0 : 0x4D10000E;
}

uint32_t verify_PKCS12_mac(const P12_PFX *pfx, const char *password, uint32_t password_len) {
    const WidenedPassword widened(password, password_len);
    if (pfx == nullptr || !widened) return 1;
    WorkBudget budget;
    switch (check_mac(*pfx, widened.password(), budget)) {
        case MacOutcome::good:
            return 0;
        case MacOutcome::differs:
            return 0xFFFFFFFF;
        default:
            return 1;
    }
}
