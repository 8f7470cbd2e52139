#include "x509/octet_signature.hpp"

#include "der/memory.hpp"
#include "der/values.hpp"
#include "x509/signature_scheme.hpp"
#include "x509/signature_value.hpp"

namespace tlx {
namespace {

/// The status of signing, and the string of a value that was appended.
u32 give(u32 status, const Encoder &value, const SigningStatuses &statuses, BIT_STRING **signature) noexcept {
    if (status != 0) return status;
    BIT_STRING *bits = value.ok() ? new_string(TLX_TAG_BIT_STRING, value.bytes()) : nullptr;
    if (bits == nullptr) return statuses.no_memory;
    *signature = bits;
    return 0;
}

}  // namespace

u32 sign_octets(Bytes octets, const OBJECT_IDENTIFIER *algorithm, const RSA_UNIT *key,
                const SigningStatuses &statuses, BIT_STRING **signature) noexcept {
    const SignatureScheme scheme(algorithm);
    if (scheme.digest_id == 0 || scheme.cipher_id == 0) return statuses.unknown_algorithm;
    Encoder value;
    const u32 status = append_rsa_signature(value, key, [&](u8 *room, u32 *length) {
        return sign_RSA(key, scheme.digest_id, scheme.padding_mode(), octets.data(), size_of(octets), room,
                        length);
    });
    return give(status, value, statuses, signature);
}

u32 sign_octets(Bytes octets, const OBJECT_IDENTIFIER *algorithm, const KCDSA *key,
                const SigningStatuses &statuses, BIT_STRING **signature) noexcept {
    const SignatureScheme scheme(algorithm);
    if (scheme.cipher_id == 0) return statuses.unknown_algorithm;
    Encoder value;
    const u32 status = append_kcdsa_signature(value, [&](u8 *r, u32 *r_length, u8 *s, u32 *s_length) {
        return sign_KCDSA_data(key, scheme.kcdsa_digest(), octets.data(), size_of(octets), r, r_length, s,
                               s_length);
    });
    return give(status, value, statuses, signature);
}

u32 sign_octets(Bytes octets, const OBJECT_IDENTIFIER *algorithm, const ASYMMETRIC_KEY &key,
                const SigningStatuses &statuses, BIT_STRING **signature) noexcept {
    switch (key.kind) {
        case TLX_KEY_RSA:
            return sign_octets(octets, algorithm, static_cast<const RSA_UNIT *>(key.key), statuses,
                               signature);
        case TLX_KEY_KCDSA:
            return sign_octets(octets, algorithm, static_cast<const KCDSA *>(key.key), statuses, signature);
        default:
            return kOtherKey;
    }
}

u32 verify_octets(const SignedOctets &what, const RSA_UNIT *key, const VerifyingStatuses &statuses) noexcept {
    const SignatureScheme scheme(what.algorithm);
    if (scheme.digest_id == 0 || scheme.cipher_id == 0) return statuses.unknown_algorithm;
    if (what.altered) return TLX_RSA_BAD_SIGNATURE;
    const Bytes signature = octets_of(what.signature);
    return verify_RSA(key, scheme.digest_id, scheme.padding_mode(), what.octets.data(), size_of(what.octets),
                      signature.data(), size_of(signature));
}

u32 verify_octets(const SignedOctets &what, const KCDSA *key, const VerifyingStatuses &statuses) noexcept {
    const SignatureScheme scheme(what.algorithm);
    if (scheme.cipher_id == 0) return statuses.unknown_algorithm;
    KcdsaOctets signature = {};
    signature.s_length = what.most_s;
    if (!signature.read(octets_of(what.signature))) return statuses.unreadable;
    if (what.altered) return TLX_KCDSA_BAD_SIGNATURE;
    return verify_KCDSA_data(key, scheme.kcdsa_digest(), what.octets.data(), size_of(what.octets),
                             signature.r.data(), size_of(signature.r), signature.s, signature.s_length);
}

u32 verify_octets(const SignedOctets &what, const ASYMMETRIC_KEY &key,
                  const VerifyingStatuses &statuses) noexcept {
    switch (key.kind) {
        case TLX_KEY_RSA:
            return verify_octets(what, static_cast<const RSA_UNIT *>(key.key), statuses);
        case TLX_KEY_KCDSA:
            return verify_octets(what, static_cast<const KCDSA *>(key.key), statuses);
        default:
            return kOtherKey;
    }
}

}  // namespace tlx
