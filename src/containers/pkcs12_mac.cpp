#include "containers/pkcs12_mac.hpp"

#include <tlxcrypto/hmac.h>
#include <tlxcrypto/random.h>
#include <tlxpki/objects.h>

#include <algorithm>
#include <optional>

#include "der/list_items.hpp"
#include "keys/pkcs12_derivation.hpp"
#include "message/content_kinds.hpp"

using namespace tlx;

namespace {

constexpr u32 kDefaultSaltLength = 8;

struct MacDigest {
    std::string_view dotted;
    u32 digest_id;
    bool written;
};
constexpr MacDigest kMacDigests[] = {
    {"1.3.14.3.2.26", TLX_DIGEST_SHA1, true},
    {"2.16.840.1.101.3.4.2.1", TLX_DIGEST_SHA256, true},
    {"2.16.840.1.101.3.4.2.2", TLX_DIGEST_SHA384, true},
    {"2.16.840.1.101.3.4.2.3", TLX_DIGEST_SHA512, true},
    {"1.2.410.200004.1.2", TLX_DIGEST_HAS160, true},
    {"2.16.840.1.101.3.4.2.4", TLX_DIGEST_SHA224, false},
    {"2.16.840.1.101.3.4.2.5", TLX_DIGEST_SHA512_224, false},
    {"2.16.840.1.101.3.4.2.6", TLX_DIGEST_SHA512_256, false},
    {"2.16.840.1.101.3.4.2.7", TLX_DIGEST_SHA3_224, false},
    {"2.16.840.1.101.3.4.2.8", TLX_DIGEST_SHA3_256, false},
    {"2.16.840.1.101.3.4.2.9", TLX_DIGEST_SHA3_384, false},
    {"2.16.840.1.101.3.4.2.10", TLX_DIGEST_SHA3_512, false},
    {"1.2.840.113549.2.5", TLX_DIGEST_MD5, false},
    {"1.2.840.113549.2.4", TLX_DIGEST_MD4, false},
};

/// 0 for an unknown digest.
u32 digest_of(const P12_MAC_DATA &data) noexcept {
    const auto *const found =
        std::ranges::find(kMacDigests, text_of(data.digestAlgorithm), &MacDigest::dotted);
    return found == std::end(kMacDigests) ? 0 : found->digest_id;
}

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

/// HMAC under a derived key as long as the digest, over the octets of the content.
MacOutcome compute_mac(const P12_PFX &pfx, Bytes password, WorkBudget &budget, Code &code) noexcept {
    if (pfx.macData == nullptr) return MacOutcome::missing;
    const P12_MAC_DATA &data = *pfx.macData;
    const u32 digest_id = digest_of(data);
    const u32 length = get_DigestLength(digest_id);
    if (content_type(pfx.authSafe) != oid::kPkcs7Data || pfx.authSafe->content.any == nullptr ||
        length == 0) {
        return MacOutcome::unsupported;
    }
    const u32 iterations = data.iterations == nullptr ? 1 : get_BIGINT_word(data.iterations);
    if (!budget.take(iterations)) return MacOutcome::too_much_work;
    const Bytes content = octets_of(pfx.authSafe->content.data);
    u8 key[TLX_DIGEST_MAX_LENGTH];
    const Pkcs12Derivation derivation = {digest_id, password, octets_of(data.macSalt), iterations};
    const bool done = derivation.derive(TLX_PKCS12_MAC, {key, length}) &&
                      compute_HMAC(digest_id, key, length, content.data(), static_cast<u32>(content.size()),
                                   code.octets, &code.length) == 0;
    tlx_wipe(key, sizeof key);
    return done ? MacOutcome::good : MacOutcome::no_memory;
}

/// An 8-bit password as gen_PKCS12_key_ASC() widens it.
class WidenedPassword {
  public:
    WidenedPassword(const char *password, u32 length) noexcept
        : absent_(password == nullptr || length == 0),
          units_({reinterpret_cast<const u8 *>(password), absent_ ? 0 : length},
                 PasswordUnits::From::octets) {}

    /// False when memory ran out.
    explicit operator bool() const noexcept { return static_cast<bool>(units_); }
    [[nodiscard]] Bytes bytes() const noexcept { return absent_ ? Bytes() : units_.bytes(); }

  private:
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
    const auto *const found =
        std::ranges::find(kMacDigests, digest_id == 0 ? TLX_DIGEST_SHA1 : digest_id, &MacDigest::digest_id);
    if (found == std::end(kMacDigests) || !found->written) return false;
    Encoder null;
    null.null();
    data.digestAlgorithm = text_to_OBJECT_IDENTIFIER(found->dotted.data());
    data.digestParameters = null.to_node();
    return data.digestAlgorithm != nullptr && data.digestParameters != nullptr;
}

/// As many octets remain as the number can be divided by 16 until it is at most 16.
u32 stored_iterations(u32 iterations) noexcept {
    u32 octets = 0;
    for (u32 rest = iterations; rest > 16; rest /= 16) {
        ++octets;
    }
    return octets < sizeof iterations ? iterations & ((1U << 8 * octets) - 1) : iterations;
}

/// Fills MAC data that has neither salt nor count, or leaves it as it was.
bool store_parameters(P12_PFX &pfx, OwnedSalt salt, u32 salt_len, std::optional<u32> iterations,
                      u32 digest_id) noexcept {
    Owned<P12_MAC_DATA> made(new_P12_MAC_DATA());
    if (!made || (iterations && !store_iterations(*made, *iterations)) ||
        !store_salt(*made, std::move(salt), salt_len) || !store_digest(*made, digest_id)) {
        return false;
    }
    free_P12_MAC_DATA(pfx.macData);
    pfx.macData = made.release();
    return true;
}

bool store_code(P12_PFX &pfx, Bytes password) noexcept {
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

MacOutcome tlx::check_mac(const P12_PFX &pfx, Bytes password, WorkBudget &budget) noexcept {
    Code code;
    const MacOutcome outcome = compute_mac(pfx, password, budget, code);
    if (outcome != MacOutcome::good) return outcome;
    return code.is(octets_of(pfx.macData->mac)) ? MacOutcome::good : MacOutcome::differs;
}

bool tlx::makes_codes(u32 digest_id) noexcept {
    const auto *const found = std::ranges::find(kMacDigests, digest_id, &MacDigest::digest_id);
    return found != std::end(kMacDigests) && found->written;
}

bool tlx::make_mac(P12_PFX &pfx, Bytes password, u32 iterations, u32 digest_id) noexcept {
    return store_parameters(pfx, nullptr, 0, iterations, digest_id) && store_code(pfx, password);
}

uint32_t set_PKCS12_mac(P12_PFX *pfx, const char *password, uint32_t password_len, uint8_t *salt,
                        uint32_t salt_len, uint32_t iterations, uint32_t digest_id) {
    if (pfx == nullptr) return 0x4D10000D;
    const auto stored = iterations < 2 ? std::nullopt : std::optional(stored_iterations(iterations));
    if (!has_parameters(*pfx) && !store_parameters(*pfx, OwnedSalt(salt), salt_len, stored, digest_id)) {
        return 0x4D10000D;
    }
    const WidenedPassword widened(password, password_len);
    return widened && store_code(*pfx, widened.bytes()) ? 0 : 0x4D10000E;
}

uint32_t verify_PKCS12_mac(const P12_PFX *pfx, const char *password, uint32_t password_len) {
    const WidenedPassword widened(password, password_len);
    if (pfx == nullptr || !widened) return 1;
    WorkBudget budget;
    switch (check_mac(*pfx, widened.bytes(), budget)) {
        case MacOutcome::good:
            return 0;
        case MacOutcome::differs:
            return 0xFFFFFFFF;
        default:
            return 1;
    }
}
