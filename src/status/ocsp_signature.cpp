#include "status/ocsp_signature.hpp"

#include <algorithm>

#include "asn1/oid_lookup.hpp"
#include "x509/octet_signature.hpp"
#include "x509/signature_scheme.hpp"

namespace tlx {
namespace {

struct RsaAlgorithm {
    u32 digest_id;
    u32 row;
};
constexpr RsaAlgorithm kRsaAlgorithms[] = {
    {TLX_DIGEST_SHA1, oid::kSha1WithRsa},     {TLX_DIGEST_SHA224, oid::kSha224WithRsa},
    {TLX_DIGEST_SHA256, oid::kSha256WithRsa}, {TLX_DIGEST_SHA384, oid::kSha384WithRsa},
    {TLX_DIGEST_SHA512, oid::kSha512WithRsa}, {TLX_DIGEST_MD5, oid::kMd5WithRsa},
};

/// Whether an algorithm is one of the key's, and known.
bool fits(const SignatureScheme &scheme, u32 kind) noexcept {
    constexpr u32 kRsaPkcs1 = 0x20000001;
    constexpr u32 kKcdsaFamily = 0x40;
    if (kind == TLX_KEY_KCDSA) return scheme.cipher_id >> 24 == kKcdsaFamily;
    return kind == TLX_KEY_RSA && scheme.cipher_id == kRsaPkcs1 && get_DigestLength(scheme.digest_id) != 0;
}

}  // namespace

u32 rsa_algorithm_row(u32 digest_id) noexcept {
    const auto *found = std::ranges::find(kRsaAlgorithms, digest_id, &RsaAlgorithm::digest_id);
    return found == std::end(kRsaAlgorithms) ? 0 : found->row;
}

u32 algorithm_row(const ASYMMETRIC_KEY *key, u32 digest_id) noexcept {
    if (key == nullptr || key->key == nullptr) return 0;
    if (key->kind == TLX_KEY_KCDSA) return oid::kKcdsaWithHas160;
    return key->kind == TLX_KEY_RSA ? rsa_algorithm_row(digest_id) : 0;
}

SignatureResult verify_with(const OBJECT_IDENTIFIER *algorithm, const BIT_STRING *value, Bytes octets,
                            const X509_PUBKEY *key) noexcept {
    constexpr u32 kUnreadable = 0xFFFFFFFF;
    const ASYMMETRIC_KEY *holder = get_X509_PUBKEY_key(key);
    if (holder == nullptr || holder->key == nullptr) return SignatureResult::unsupported;
    if (octets_of(value).empty() || value->extra != 0) return SignatureResult::bad;
    if (!fits(SignatureScheme(algorithm), holder->kind)) return SignatureResult::unsupported;
    switch (verify_octets({octets, algorithm, value, false}, *holder, {kUnreadable, kUnreadable})) {
        case 0:
            return SignatureResult::good;
        case 1:  // a failure of the key that no signature causes
            return SignatureResult::no_memory;
        default:
            return SignatureResult::bad;
    }
}

u32 sign_with(const P8_PRIV_KEY_INFO &key, u32 digest_id, Bytes octets, MadeSignature &made,
              const ResponderStatuses &statuses) noexcept {
    const u32 row = algorithm_row(key.privateKey, digest_id);
    if (row == 0) return statuses.unsupported;
    made.algorithm = algorithm_with_null(row);
    if (!made.algorithm) return statuses.no_memory;
    BIT_STRING *value = nullptr;
    const u32 status = sign_octets(octets, made.algorithm->algorithm, *key.privateKey,
                                   {statuses.unsupported, statuses.no_memory}, &value);
    made.value.reset(value);
    if (status == 0 || status == statuses.no_memory) return status;
    return statuses.failed;
}

}  // namespace tlx
