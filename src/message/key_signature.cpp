#include "message/key_signature.hpp"

#include <tlxcrypto/kcdsa.h>
#include <tlxcrypto/rsa.h>
#include <tlxpki/objects.h>

#include <algorithm>

#include "message/signer_algorithms.hpp"
#include "x509/signature_value.hpp"

namespace tlx {
namespace {

/// Signs with sign(octets, length), a function of an RSA key.
template <typename Sign>
u32 sign_rsa(const RSA_UNIT *unit, Sign sign, Owned<OCTET_STRING> &signature) noexcept {
    Encoder value;
    if (const u32 status = append_rsa_signature(value, unit, sign); status != 0) return status;
    signature.reset(value.ok() ? new_string(TLX_TAG_OCTET_STRING, value.bytes()) : nullptr);
    return signature ? 0 : 0x4B1C003B;
}

/// Signs with sign(r, r_length, s, s_length), a function of a KCDSA key.
template <typename Sign>
u32 sign_kcdsa(Sign sign, Owned<OCTET_STRING> &signature) noexcept {
    Encoder value;
    const auto sign_some = [&](u8 *r, u32 *r_length, u8 *s, u32 *s_length) {
        const u32 status = sign(r, r_length, s, s_length);
        return status == 0 && (*r_length == 0 || *s_length == 0) ? 0x4B1C0054 : status;
    };
    if (const u32 status = append_kcdsa_signature(value, sign_some); status != 0) return status;
    if (!value.ok()) return 0x4B190012;
    signature.reset(new_string(TLX_TAG_OCTET_STRING, value.bytes()));
    return signature ? 0 : 0x4B1C003B;
}

u32 begin(const ASYMMETRIC_KEY *key, const SignerAlgorithms &algorithms, u32 direction,
          u32 other_kind) noexcept {
    if (RSA_UNIT *rsa = rsa_unit(key)) {
        return init_RSASSA(rsa, algorithms.digest_id, algorithms.padding_mode(), direction);
    }
    KCDSA *kcdsa = kcdsa_unit(key);
    if (kcdsa == nullptr) return other_kind;
    if (const u32 status = set_KCDSA_digest(kcdsa, algorithms.digest_id); status != 0) return status;
    return init_KCDSA(kcdsa, direction);
}

}  // namespace

SignerAlgorithms::SignerAlgorithms(const P7_SIGNER_INFO &signer) noexcept
    : digest_id(get_DigestID_from_OID(get_X509_ALGO_IDENTIFIER_OID(signer.digestAlgorithm))),
      cipher_id(get_CipherID_from_OID(get_X509_ALGO_IDENTIFIER_OID(signer.digestEncryptionAlgorithm))) {}

KCDSA *kcdsa_unit(const ASYMMETRIC_KEY *key) noexcept {
    return key != nullptr && key->kind == TLX_KEY_KCDSA ? static_cast<KCDSA *>(key->key) : nullptr;
}

Owned<ASYMMETRIC_KEY> copy_public_key(const X509_CERT *cert) noexcept {
    return Owned<ASYMMETRIC_KEY>(dup_ASYMMETRIC_KEY(get_X509_PUBKEY_key(get_X509_SPKI(cert))));
}

bool apply_pss_parameters(const P7_SIGNER_INFO &signer, const SignerAlgorithms &algorithms,
                          const ASYMMETRIC_KEY &key) noexcept {
    RSA_UNIT *rsa = rsa_unit(&key);
    if (rsa == nullptr || algorithms.padding_mode() != TLX_RSA_MODE_PSS) return true;
    PssSettings settings{};
    return read_pss_parameters(get_X509_ALGO_IDENTIFIER_parameters(signer.digestEncryptionAlgorithm),
                               algorithms.digest_id, settings) &&
           settings.digests.digest_id == algorithms.digest_id &&
           set_RSA_UNIT_PSS(rsa, settings.digests.mgf_digest_id, settings.salt_length) == 0;
}

bool encode_attributes(const P7_SIGNER_INFO &signer, Encoder &set) noexcept {
    if (get_STACK_count(signer.authenticatedAttributes) == 0) return false;
    Attributes::encode(set, signer.authenticatedAttributes, kSet);
    return set.ok();
}

u32 begin_signature(const ASYMMETRIC_KEY *key, const SignerAlgorithms &algorithms) noexcept {
    constexpr u32 kSign = 1;
    return begin(key, algorithms, kSign, 0x4B1C0048);
}

u32 begin_verification(const ASYMMETRIC_KEY &key, const SignerAlgorithms &algorithms) noexcept {
    constexpr u32 kVerify = 0;
    return begin(&key, algorithms, kVerify, 0x4B210048);
}

u32 update_signature(const ASYMMETRIC_KEY *key, Bytes octets, u32 other_kind) noexcept {
    if (RSA_UNIT *rsa = rsa_unit(key)) return update_RSASSA(rsa, octets.data(), size_of(octets));
    if (KCDSA *kcdsa = kcdsa_unit(key)) return update_KCDSA(kcdsa, octets.data(), size_of(octets));
    return other_kind;
}

u32 finish_signature(const ASYMMETRIC_KEY *key, Owned<OCTET_STRING> &signature) noexcept {
    if (RSA_UNIT *rsa = rsa_unit(key)) {
        return sign_rsa(
            rsa, [=](u8 *octets, u32 *length) { return final_RSASSA(rsa, octets, length); }, signature);
    }
    KCDSA *kcdsa = kcdsa_unit(key);
    if (kcdsa == nullptr) return 0x4B1C0048;
    return sign_kcdsa([=](u8 *r, u32 *r_length, u8 *s,
                          u32 *s_length) { return final_KCDSA(kcdsa, r, r_length, s, s_length); },
                      signature);
}

u32 sign_digest(const ASYMMETRIC_KEY *key, const SignerAlgorithms &algorithms, Bytes digest,
                Owned<OCTET_STRING> &signature) noexcept {
    const u32 size = size_of(digest);
    if (const RSA_UNIT *rsa = rsa_unit(key)) {
        const auto sign = [&](u8 *octets, u32 *length) {
            return sign_RSA_digest(rsa, algorithms.digest_id, algorithms.padding_mode(), digest.data(), size,
                                   octets, length);
        };
        return sign_rsa(rsa, sign, signature);
    }
    const KCDSA *kcdsa = kcdsa_unit(key);
    if (kcdsa == nullptr) return 0x4B1C0048;
    return sign_kcdsa(
        [&](u8 *r, u32 *r_length, u8 *s, u32 *s_length) {
            return sign_KCDSA_digest(kcdsa, algorithms.digest_id, digest.data(), size, r, r_length, s,
                                     s_length);
        },
        signature);
}

u32 verify_octets(const ASYMMETRIC_KEY &key, const SignerAlgorithms &algorithms, Bytes octets,
                  Bytes signature) noexcept {
    if (const RSA_UNIT *rsa = rsa_unit(&key)) {
        if (signature.data() == nullptr) return 1;  // a signer that has not signed
        return verify_RSA(rsa, algorithms.digest_id, algorithms.padding_mode(), octets.data(),
                          size_of(octets), signature.data(), size_of(signature));
    }
    const KCDSA *kcdsa = kcdsa_unit(&key);
    if (kcdsa == nullptr) return 0x4B210048;
    KcdsaOctets value = {};
    value.s_length = TLX_KCDSA_MAX_LENGTH;
    if (!value.read(signature)) return 0x4B21000E;
    return verify_KCDSA_data(kcdsa, algorithms.digest_id, octets.data(), size_of(octets), value.r.data(),
                             size_of(value.r), value.s, value.s_length);
}

}  // namespace tlx
