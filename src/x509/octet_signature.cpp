#include "x509/octet_signature.hpp"

#include "der/memory.hpp"
#include "der/values.hpp"
#include "x509/signature_scheme.hpp"
#include "x509/signature_value.hpp"

namespace tlx {
namespace {

bool read_signature(const BIT_STRING *bits, KcdsaSignature &signature) noexcept {
    Element element;
    return read_element(octets_of(bits), element) && element.tag == kSequence &&
           read_kcdsa_signature(element, signature);
}

u32 give(BIT_STRING *bits, const SigningStatuses &statuses, BIT_STRING **signature) noexcept {
    if (bits == nullptr) return statuses.no_memory;
    *signature = bits;
    return 0;
}

}  // namespace

u32 sign_octets(Bytes octets, const OBJECT_IDENTIFIER *algorithm, const RSA_UNIT *key,
                const SigningStatuses &statuses, BIT_STRING **signature) noexcept {
    const SignatureScheme scheme(algorithm);
    if (scheme.digest_id == 0 || scheme.cipher_id == 0) return statuses.unknown_algorithm;
    const std::size_t room = std::size_t{get_RSA_length(key)} + 1;
    const OwnedOctets<u8> value(static_cast<u8 *>(TLX_ALLOCATE(room)));
    if (!value) return statuses.no_memory;
    u32 len = 0;
    const u32 status = sign_RSA(key, scheme.digest_id, scheme.padding_mode(), octets.data(), size_of(octets),
                                value.get(), &len);
    if (status != 0) return status;
    return give(new_string(TLX_TAG_BIT_STRING, {value.get(), len}), statuses, signature);
}

u32 sign_octets(Bytes octets, const OBJECT_IDENTIFIER *algorithm, const KCDSA *key,
                const SigningStatuses &statuses, BIT_STRING **signature) noexcept {
    const SignatureScheme scheme(algorithm);
    if (scheme.cipher_id == 0) return statuses.unknown_algorithm;
    u8 r[TLX_KCDSA_MAX_LENGTH];
    u8 s[TLX_KCDSA_MAX_LENGTH];
    u32 r_len = 0;
    u32 s_len = 0;
    const u32 status =
        sign_KCDSA_data(key, scheme.kcdsa_digest(), octets.data(), size_of(octets), r, &r_len, s, &s_len);
    if (status != 0) return status;
    const Owned<BIGINT> s_number(binary_to_BIGINT(s, s_len));
    Encoder value;
    encode_kcdsa_signature(value, {r, r_len}, s_number.get());
    return give(value.ok() ? new_string(TLX_TAG_BIT_STRING, value.bytes()) : nullptr, statuses, signature);
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
    KcdsaSignature signature;
    u8 s[TLX_KCDSA_MAX_LENGTH];
    if (!read_signature(what.signature, signature) ||
        BIGINT_to_binary(signature.s.get(), s, what.most_s) != 0) {
        return statuses.unreadable;
    }
    if (what.altered) return TLX_KCDSA_BAD_SIGNATURE;
    return verify_KCDSA_data(key, scheme.kcdsa_digest(), what.octets.data(), size_of(what.octets),
                             signature.r.data(), size_of(signature.r), s, what.most_s);
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
