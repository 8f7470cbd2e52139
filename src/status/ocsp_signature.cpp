#include "status/ocsp_signature.hpp"

#include <tlxcrypto/kcdsa.h>
#include <tlxcrypto/rsa.h>

#include <algorithm>

#include "asn1/oid_lookup.hpp"
#include "x509/signature_scheme.hpp"
#include "x509/signature_value.hpp"

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

/// The row of a key's signature algorithm; 0 when there is none.
u32 algorithm_row(const ASYMMETRIC_KEY *key, u32 digest_id) noexcept {
    if (key == nullptr || key->key == nullptr) return 0;
    if (key->kind == TLX_KEY_KCDSA) return oid::kKcdsaWithHas160;
    if (key->kind != TLX_KEY_RSA) return 0;
    const auto *found = std::ranges::find(kRsaAlgorithms, digest_id, &RsaAlgorithm::digest_id);
    return found == std::end(kRsaAlgorithms) ? 0 : found->row;
}

u32 sign_rsa(const RSA_UNIT *unit, u32 digest_id, Bytes octets, Owned<BIT_STRING> &value,
             const SigningStatuses &statuses) noexcept {
    const OwnedOctets<u8> room(static_cast<u8 *>(TLX_ALLOCATE(std::size_t{get_RSA_length(unit)} + 1)));
    if (!room) return statuses.no_memory;
    u32 length = 0;
    if (sign_RSA(unit, digest_id, TLX_RSA_MODE_PKCS1, octets.data(), static_cast<u32>(octets.size()),
                 room.get(), &length) != 0) {
        return statuses.failed;
    }
    value.reset(new_string(TLX_TAG_BIT_STRING, {room.get(), length}));
    return value ? 0 : statuses.no_memory;
}

u32 sign_kcdsa(const KCDSA *unit, Bytes octets, Owned<BIT_STRING> &value,
               const SigningStatuses &statuses) noexcept {
    u8 r[TLX_KCDSA_MAX_LENGTH];
    u8 s[TLX_KCDSA_MAX_LENGTH];
    u32 r_length = 0;
    u32 s_length = 0;
    if (sign_KCDSA_data(unit, TLX_DIGEST_HAS160, octets.data(), static_cast<u32>(octets.size()), r, &r_length,
                        s, &s_length) != 0) {
        return statuses.failed;
    }
    const Owned<BIGINT> s_number(binary_to_BIGINT(s, s_length));
    Encoder encoding;
    encode_kcdsa_signature(encoding, {r, r_length}, s_number.get());
    if (encoding.ok()) value.reset(new_string(TLX_TAG_BIT_STRING, encoding.bytes()));
    return value ? 0 : statuses.no_memory;
}

constexpr u32 kRsaPkcs1Signature = 0x20000001;
constexpr u32 kKcdsaFamily = 0x40;

/// Of what a key answers; 1 is a failure that no signature causes.
SignatureResult result_of(u32 status) noexcept {
    if (status == 1) return SignatureResult::no_memory;
    return status == 0 ? SignatureResult::good : SignatureResult::bad;
}

SignatureResult verify_rsa(const SignatureScheme &scheme, const RSA_UNIT *unit, Bytes octets,
                           Bytes value) noexcept {
    if (scheme.cipher_id != kRsaPkcs1Signature || get_DigestLength(scheme.digest_id) == 0) {
        return SignatureResult::unsupported;
    }
    return result_of(verify_RSA(unit, scheme.digest_id, TLX_RSA_MODE_PKCS1, octets.data(),
                                static_cast<u32>(octets.size()), value.data(),
                                static_cast<u32>(value.size())));
}

SignatureResult verify_kcdsa(const SignatureScheme &scheme, const KCDSA *unit, Bytes octets,
                             Bytes value) noexcept {
    if (scheme.cipher_id >> 24 != kKcdsaFamily) return SignatureResult::unsupported;
    Element element;
    KcdsaSignature signature;
    u8 s[TLX_KCDSA_MAX_LENGTH];
    if (!read_element(value, element) || element.tag != kSequence ||
        !read_kcdsa_signature(element, signature) || BIGINT_to_binary(signature.s.get(), s, sizeof s) != 0) {
        return SignatureResult::bad;
    }
    return result_of(verify_KCDSA_data(unit, scheme.kcdsa_digest(), octets.data(),
                                       static_cast<u32>(octets.size()), signature.r.data(),
                                       static_cast<u32>(signature.r.size()), s, sizeof s));
}

}  // namespace

SignatureResult verify_octets(const OBJECT_IDENTIFIER *algorithm, const BIT_STRING *value, Bytes octets,
                              const X509_PUBKEY *key) noexcept {
    const ASYMMETRIC_KEY *holder = get_X509_PUBKEY_key(key);
    const SignatureScheme scheme(algorithm);
    if (holder == nullptr) return SignatureResult::unsupported;
    if (octets_of(value).empty() || value->extra != 0) return SignatureResult::bad;
    if (holder->kind == TLX_KEY_RSA) {
        return verify_rsa(scheme, static_cast<const RSA_UNIT *>(holder->key), octets, octets_of(value));
    }
    if (holder->kind == TLX_KEY_KCDSA) {
        return verify_kcdsa(scheme, static_cast<const KCDSA *>(holder->key), octets, octets_of(value));
    }
    return SignatureResult::unsupported;
}

u32 sign_octets(const P8_PRIV_KEY_INFO &key, u32 digest_id, Bytes octets, MadeSignature &made,
                const SigningStatuses &statuses) noexcept {
    const u32 row = algorithm_row(key.privateKey, digest_id);
    if (row == 0) return statuses.unsupported;
    made.algorithm = algorithm_with_null(row);
    if (!made.algorithm) return statuses.no_memory;
    const void *unit = key.privateKey->key;
    return key.privateKey->kind == TLX_KEY_RSA
               ? sign_rsa(static_cast<const RSA_UNIT *>(unit), digest_id, octets, made.value, statuses)
               : sign_kcdsa(static_cast<const KCDSA *>(unit), octets, made.value, statuses);
}

}  // namespace tlx
