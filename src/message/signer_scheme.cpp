#include "message/signer_scheme.hpp"

#include <tlxcrypto/digest.h>
#include <tlxpki/objects.h>

#include <algorithm>

#include "verify/oid.hpp"
#include "verify/record_view.hpp"

namespace tlx {
namespace {

constexpr std::string_view kShake256 = "\x60\x86\x48\x01\x65\x03\x04\x02\x0C";     // RFC 8702, section 3.1
constexpr std::string_view kShake256Len = "\x60\x86\x48\x01\x65\x03\x04\x02\x12";  // RFC 8419, section 2.3

/// SHAKE256 with 64 octets, which the parameters of id-shake256-len say in bits.
bool is_shake256(const AlgorithmView &view) noexcept {
    constexpr u8 kBits[] = {TLX_TAG_INTEGER, 2, 2, 0};
    if (is_oid_of(view.oid, kShake256)) return !view.has_parameters;
    return is_oid_of(view.oid, kShake256Len) && view.has_parameters && same(view.parameters, kBits);
}

/// RFC 8419, section 3.1: each curve goes with one digest.
bool goes_with(const SignatureAlgorithm &signature, u32 digest_id) noexcept {
    if (signature.kind != KeyKind::eddsa) return signature.digest_id == digest_id;
    return digest_id == (signature.curve == TLX_CURVE_ED25519 ? TLX_DIGEST_SHA512 : TLX_DIGEST_SHAKE256);
}

/// RSASSA-PSS without parameters, or with NULL, has the digest of the signer and otherwise the defaults of
/// RFC 4055, section 3.1.
bool read_pss(const AlgorithmView &view, u32 digest_id, SignatureAlgorithm &signature) noexcept {
    if (view.has_parameters && !has_null_parameters(view)) {
        return read_pss_parameters(view.parameters, signature);
    }
    signature.is_pss = true;
    signature.digest_id = digest_id;
    signature.mgf_digest_id = TLX_DIGEST_SHA1;
    signature.salt_length = TLX_RSA_PSS_DEFAULT_SALT_LENGTH;
    return true;
}

/// Reads an algorithm that the registry has for signatures of RSA and KCDSA. Some name the digest and others
/// take that of the signer. False for another one.
bool read_registered(const X509_ALGO_IDENTIFIER *algorithm, const AlgorithmView &view, u32 digest_id,
                     SignatureAlgorithm &signature) noexcept {
    constexpr u32 kRsa = 0x20;
    constexpr u32 kKcdsa = 0x40;
    constexpr u32 kRsaWithDigest = 0x20000001;
    const OBJECT_IDENTIFIER *oid = get_X509_ALGO_IDENTIFIER_OID(algorithm);
    const u32 cipher_id = get_CipherID_from_OID(oid);
    const u32 named = get_DigestID_from_OID(oid);
    const bool is_rsa = cipher_id >> 24 == kRsa && (cipher_id & 0xFF) <= TLX_RSA_MODE_PSS;
    if (!is_rsa && cipher_id >> 24 != kKcdsa) return false;
    if (named == 0 && cipher_id == kRsaWithDigest) return false;
    signature.kind = is_rsa ? KeyKind::rsa : KeyKind::kcdsa;
    signature.digest_id = named != 0 ? named : digest_id;
    const bool is_pss = is_rsa && (cipher_id & 0xFF) == TLX_RSA_MODE_PSS;
    return !is_pss || read_pss(view, digest_id, signature);
}

bool is_available(u32 digest_id) noexcept {
    u8 octets[TLX_DIGEST_MAX_LENGTH];
    u32 length = 0;
    return Digest(digest_id, nullptr, 0, octets, &length) == 0;
}

}  // namespace

bool find_digest_id(const X509_ALGO_IDENTIFIER *algorithm, u32 &digest_id) noexcept {
    digest_id = get_DigestID_from_OID(get_X509_ALGO_IDENTIFIER_OID(algorithm));
    if (algorithm == nullptr || digest_id != 0) return true;
    EncodedAlgorithm encoded;
    const Rule rule = encoded.read(algorithm);
    if (rule != Rule::kNone) return rule != Rule::kNoMemory;
    const bool known = read_digest(encoded.view(), digest_id);
    if (!known && is_shake256(encoded.view())) digest_id = TLX_DIGEST_SHAKE256;
    return true;
}

Rule read_signer_key(const X509_CERT &cert, PublicKey &key) noexcept {
    const X509_PUBKEY *info = get_X509_SPKI(&cert);
    const ASYMMETRIC_KEY *held = get_X509_PUBKEY_key(info);
    key = {};
    // Copies of a unit share what it computed.
    if (held != nullptr && held->kind == TLX_KEY_RSA) {
        key.kind = KeyKind::rsa;
        key.rsa.reset(dup_RSA_UNIT(static_cast<const RSA_UNIT *>(held->key)));
        key.bits = get_BIGINT_bits(get_RSA_UNIT_number(key.rsa.get(), TLX_RSA_N));
        return key.rsa != nullptr ? Rule::kNone : Rule::kNoMemory;
    }
    if (held != nullptr && held->kind == TLX_KEY_KCDSA) {
        key.kind = KeyKind::kcdsa;
        key.kcdsa.reset(dup_KCDSA(static_cast<const KCDSA *>(held->key)));
        key.bits = get_BIGINT_bits(get_KCDSA_number(key.kcdsa.get(), TLX_KCDSA_P));
        return key.kcdsa != nullptr ? Rule::kNone : Rule::kNoMemory;
    }
    return info != nullptr ? read_public_key(info, key) : Rule::kBadPublicKey;
}

const KCDSA *kcdsa_key_of(const X509_CERT *cert) noexcept {
    const ASYMMETRIC_KEY *held = get_X509_PUBKEY_key(get_X509_SPKI(cert));
    return held != nullptr && held->kind == TLX_KEY_KCDSA ? static_cast<const KCDSA *>(held->key) : nullptr;
}

bool SignerScheme::read(const SignerView &signer) noexcept {
    EncodedAlgorithm encoded;
    SignatureAlgorithm found;
    if (!find_digest_id(signer.digest_algorithm, digest_id)) return false;
    if (digest_id == 0 || signer.signature_algorithm == nullptr) return true;
    const Rule rule = encoded.read(signer.signature_algorithm);
    if (rule != Rule::kNone) return rule != Rule::kNoMemory;
    const bool known = read_registered(signer.signature_algorithm, encoded.view(), digest_id, found) ||
                       read_signature_algorithm(encoded.view(), found) == Rule::kNone;
    if (known && goes_with(found, digest_id)) signature = found;
    return true;
}

bool can_verify(const PublicKey &key, const SignerScheme &scheme) noexcept {
    if (!is_algorithm_of(key, scheme.signature) || !is_available(scheme.digest_id)) return false;
    const u32 mode = scheme.signature.is_pss ? TLX_RSA_MODE_PSS : TLX_RSA_MODE_PKCS1;
    return key.kind != KeyKind::rsa || init_RSASSA(key.rsa.get(), scheme.digest_id, mode, 0) == 0;
}

}  // namespace tlx
