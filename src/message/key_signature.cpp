#include "message/key_signature.hpp"

#include <tlxcrypto/kcdsa.h>
#include <tlxcrypto/rsa.h>
#include <tlxpki/objects.h>

#include <algorithm>

#include "message/signer_algorithms.hpp"
#include "x509/signature_value.hpp"

namespace tlx {
namespace {

/// The unit of a KCDSA key; null for another kind.
KCDSA *kcdsa_unit(const ASYMMETRIC_KEY *key) noexcept {
    return key != nullptr && key->kind == TLX_KEY_KCDSA ? static_cast<KCDSA *>(key->key) : nullptr;
}

u32 sign_rsa(RSA_UNIT *unit, Owned<OCTET_STRING> &signature) noexcept {
    const OwnedOctets<u8> octets(static_cast<u8 *>(TLX_ALLOCATE(std::size_t{get_RSA_length(unit)} + 1)));
    if (!octets) return 0x4B1C003B;
    u32 length = 0;
    if (const u32 status = final_RSASSA(unit, octets.get(), &length); status != 0) return status;
    signature.reset(new_string(TLX_TAG_OCTET_STRING, {octets.get(), length}));
    return signature ? 0 : 0x4B1C003B;
}

u32 sign_kcdsa(KCDSA *unit, Owned<OCTET_STRING> &signature) noexcept {
    u8 r[TLX_KCDSA_MAX_LENGTH];
    u8 s[TLX_KCDSA_MAX_LENGTH];
    u32 r_length = 0;
    u32 s_length = 0;
    if (const u32 status = final_KCDSA(unit, r, &r_length, s, &s_length); status != 0) return status;
    if (r_length == 0 || s_length == 0) return 0x4B1C0054;
    const Owned<BIGINT> number(binary_to_BIGINT(s, s_length));
    Encoder value;
    encode_kcdsa_signature(value, {r, r_length}, number.get());
    if (!value.ok()) return 0x4B190012;
    signature.reset(new_string(TLX_TAG_OCTET_STRING, value.bytes()));
    return signature ? 0 : 0x4B1C003B;
}

u32 check_kcdsa(KCDSA *unit, Bytes signature) noexcept {
    Element element;
    KcdsaSignature value;
    u8 s[TLX_KCDSA_MAX_LENGTH];
    if (!read_element(signature, element) || element.tag != kSequence ||
        !read_kcdsa_signature(element, value) || BIGINT_to_binary(value.s.get(), s, sizeof s) != 0) {
        return 0x4B21000E;
    }
    return verify_KCDSA(unit, value.r.data(), static_cast<u32>(value.r.size()), s, sizeof s);
}

}  // namespace

SignerAlgorithms::SignerAlgorithms(const P7_SIGNER_INFO &signer) noexcept
    : digest_id(get_DigestID_from_OID(get_X509_ALGO_IDENTIFIER_OID(signer.digestAlgorithm))),
      cipher_id(get_CipherID_from_OID(get_X509_ALGO_IDENTIFIER_OID(signer.digestEncryptionAlgorithm))) {}

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

u32 begin_signature(const ASYMMETRIC_KEY *key, const SignerAlgorithms &algorithms, SigningDirection direction,
                    u32 other_kind) noexcept {
    if (RSA_UNIT *rsa = rsa_unit(key)) {
        return init_RSASSA(rsa, algorithms.digest_id, algorithms.padding_mode(), static_cast<u32>(direction));
    }
    KCDSA *kcdsa = kcdsa_unit(key);
    if (kcdsa == nullptr) return other_kind;
    if (const u32 status = set_KCDSA_digest(kcdsa, algorithms.digest_id); status != 0) return status;
    return init_KCDSA(kcdsa, static_cast<u32>(direction));
}

u32 update_signature(const ASYMMETRIC_KEY *key, Bytes octets, u32 other_kind) noexcept {
    const auto length = static_cast<u32>(octets.size());
    if (RSA_UNIT *rsa = rsa_unit(key)) return update_RSASSA(rsa, octets.data(), length);
    if (KCDSA *kcdsa = kcdsa_unit(key)) return update_KCDSA(kcdsa, octets.data(), length);
    return other_kind;
}

u32 finish_signature(const ASYMMETRIC_KEY *key, Owned<OCTET_STRING> &signature) noexcept {
    if (RSA_UNIT *rsa = rsa_unit(key)) return sign_rsa(rsa, signature);
    if (KCDSA *kcdsa = kcdsa_unit(key)) return sign_kcdsa(kcdsa, signature);
    return 0x4B1C0048;
}

bool reserve_signature(const P7_SIGNER_INFO &signer, Owned<OCTET_STRING> &zeros) noexcept {
    u8 octets[TLX_KCDSA_MAX_LENGTH] = {};
    if (const RSA_UNIT *rsa = rsa_unit(signer.key)) {
        const SecretBytes modulus(get_RSA_length(rsa));
        zeros.reset(modulus ? new_string(TLX_TAG_OCTET_STRING, modulus.bytes()) : nullptr);
        return zeros != nullptr;
    }
    const KCDSA *kcdsa = kcdsa_unit(signer.key);
    if (kcdsa == nullptr) return false;
    const u32 s_length = get_KCDSA_length(kcdsa);
    const u32 r_length = std::min(s_length, get_DigestLength(SignerAlgorithms(signer).digest_id));
    octets[0] = 0x40;
    const Owned<BIGINT> number(binary_to_BIGINT(octets, s_length));
    Encoder value;
    encode_kcdsa_signature(value, {octets, r_length}, number.get());
    zeros.reset(value.ok() ? new_string(TLX_TAG_OCTET_STRING, value.bytes()) : nullptr);
    return zeros != nullptr;
}

u32 check_signature(const ASYMMETRIC_KEY *key, Bytes signature) noexcept {
    if (RSA_UNIT *rsa = rsa_unit(key)) {
        return verify_RSASSA(rsa, signature.data(), static_cast<u32>(signature.size()));
    }
    KCDSA *kcdsa = kcdsa_unit(key);
    return kcdsa != nullptr ? check_kcdsa(kcdsa, signature) : 0x4B210048;
}

}  // namespace tlx
