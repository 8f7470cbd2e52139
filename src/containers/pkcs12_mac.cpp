#include "containers/pkcs12_mac.hpp"

#include <tlxcrypto/hmac.h>
#include <tlxcrypto/random.h>
#include <tlxpki/convert.h>
#include <tlxpki/objects.h>

#include <algorithm>

#include "der/list_items.hpp"
#include "keys/pkcs12_derivation.hpp"
#include "message/content_kinds.hpp"

using namespace tlx;

namespace {

constexpr u32 kMostIterations = 10'000'000;
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
    {"1.2.840.113549.2.5", TLX_DIGEST_MD5, false},
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
MacOutcome compute_mac(const P12_PFX &pfx, Bytes password, Code &code) noexcept {
    if (pfx.macData == nullptr) return MacOutcome::missing;
    const P12_MAC_DATA &data = *pfx.macData;
    const u32 digest_id = digest_of(data);
    const u32 length = get_DigestLength(digest_id);
    if (content_type(pfx.authSafe) != oid::kPkcs7Data || pfx.authSafe->content.any == nullptr ||
        length == 0) {
        return MacOutcome::unsupported;
    }
    const u32 iterations = data.iterations == nullptr ? 1 : get_BIGINT_word(data.iterations);
    if (iterations > kMostIterations) return MacOutcome::too_much_work;
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
    WidenedPassword(const char *password, u32 length) noexcept : absent_(password == nullptr || length == 0) {
        if (!absent_) size_ = ascTouni(password, length, &units_);
    }
    ~WidenedPassword() { wipe_and_free(units_, size_); }
    WidenedPassword(const WidenedPassword &) = delete;
    WidenedPassword &operator=(const WidenedPassword &) = delete;

    [[nodiscard]] bool ok() const noexcept { return absent_ || size_ != 0; }
    [[nodiscard]] Bytes bytes() const noexcept { return {units_, size_}; }

  private:
    bool absent_;
    u8 *units_ = nullptr;
    u32 size_ = 0;
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
    free_ASN1_STRING(data.macSalt);
    data.macSalt = new_string(TLX_TAG_OCTET_STRING, {salt.get(), size});
    return data.macSalt != nullptr;
}

bool store_iterations(P12_MAC_DATA &data, u32 iterations) noexcept {
    if (iterations < 2) return true;
    data.iterations = new_BIGINT();
    return data.iterations != nullptr && set_BIGINT_word(data.iterations, stored_iterations(iterations)) == 0;
}

bool store_digest(P12_MAC_DATA &data, u32 digest_id) noexcept {
    const auto *const found =
        std::ranges::find(kMacDigests, digest_id == 0 ? TLX_DIGEST_SHA1 : digest_id, &MacDigest::digest_id);
    if (found == std::end(kMacDigests) || !found->written) return false;
    free_OBJECT_IDENTIFIER(data.digestAlgorithm);
    free_ASN1_UNIT(data.digestParameters);
    Encoder null;
    null.null();
    data.digestAlgorithm = text_to_OBJECT_IDENTIFIER(found->dotted.data());
    data.digestParameters = null.to_node();
    return data.digestAlgorithm != nullptr && data.digestParameters != nullptr;
}

/// Fills MAC data that has neither salt nor count, or leaves it as it was.
bool store_parameters(P12_PFX &pfx, OwnedSalt salt, u32 salt_len, u32 iterations, u32 digest_id) noexcept {
    Owned<P12_MAC_DATA> made(new_P12_MAC_DATA());
    if (!made || !store_iterations(*made, iterations) || !store_salt(*made, std::move(salt), salt_len) ||
        !store_digest(*made, digest_id)) {
        return false;
    }
    free_P12_MAC_DATA(pfx.macData);
    pfx.macData = made.release();
    return true;
}

bool has_parameters(const P12_PFX &pfx) noexcept {
    return pfx.macData != nullptr && (pfx.macData->macSalt != nullptr || pfx.macData->iterations != nullptr);
}

}  // namespace

// As many octets remain as the number can be divided by 16 until it is at most 16.
u32 tlx::stored_iterations(u32 iterations) noexcept {
    u32 octets = 0;
    for (u32 rest = iterations; rest > 16; rest /= 16) {
        ++octets;
    }
    return octets < sizeof iterations ? iterations & ((1U << 8 * octets) - 1) : iterations;
}

MacOutcome tlx::check_mac(const P12_PFX &pfx, Bytes password) noexcept {
    Code code;
    const MacOutcome outcome = compute_mac(pfx, password, code);
    if (outcome != MacOutcome::good) return outcome;
    return code.is(octets_of(pfx.macData->mac)) ? MacOutcome::good : MacOutcome::differs;
}

uint32_t set_PKCS12_mac(P12_PFX *pfx, const char *password, uint32_t password_len, uint8_t *salt,
                        uint32_t salt_len, uint32_t iterations, uint32_t digest_id) {
    if (pfx == nullptr) return 0x4D10000D;
    if (!has_parameters(*pfx) && !store_parameters(*pfx, OwnedSalt(salt), salt_len, iterations, digest_id)) {
        return 0x4D10000D;
    }
    const WidenedPassword widened(password, password_len);
    Code code;
    if (!widened.ok() || compute_mac(*pfx, widened.bytes(), code) != MacOutcome::good) return 0x4D10000E;
    OCTET_STRING *const mac = new_string(TLX_TAG_OCTET_STRING, {code.octets, code.length});
    if (mac == nullptr) return 0x4D10000E;
    free_OCTET_STRING(pfx->macData->mac);
    pfx->macData->mac = mac;
    return 0;
}

uint32_t verify_PKCS12_mac(const P12_PFX *pfx, const char *password, uint32_t password_len) {
    const WidenedPassword widened(password, password_len);
    if (pfx == nullptr || !widened.ok()) return 1;
    switch (check_mac(*pfx, widened.bytes())) {
        case MacOutcome::good:
            return 0;
        case MacOutcome::differs:
            return 0xFFFFFFFF;
        default:
            return 1;
    }
}
