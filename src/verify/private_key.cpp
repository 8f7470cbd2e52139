#include "verify/private_key.hpp"

#include "x509/signature_value.hpp"

namespace tlx {
namespace {

using OwnedRsa = std::unique_ptr<RSA_UNIT, FreeWith<free_RSA_UNIT>>;

/// A digest, computed where it was not given.
class Hash {
  public:
    /// False for a digest that is not available.
    [[nodiscard]] bool compute(u32 digest_id, Bytes octets) noexcept {
        u32 length = 0;
        if (Digest(digest_id, octets.data(), size_of(octets), octets_, &length) != 0) return false;
        length_ = length;
        return true;
    }
    [[nodiscard]] Bytes bytes() const noexcept { return {octets_, length_}; }

  private:
    u8 octets_[TLX_DIGEST_MAX_LENGTH] = {};
    std::size_t length_ = 0;
};

/// 0, or 1 when what was written does not fit into memory.
u32 written(const Encoder &signature) noexcept {
    return signature.ok() ? 0 : 1;
}

// Copies of a unit share what it computed, so that one with other parameters costs little.
u32 sign_rsa(const RSA_UNIT *unit, const SignatureAlgorithm &algorithm, Bytes digest,
             Encoder &signature) noexcept {
    const u32 mode = algorithm.is_pss ? TLX_RSA_MODE_PSS : TLX_RSA_MODE_PKCS1;
    const OwnedRsa copy(dup_RSA_UNIT(unit));
    if (!copy) return 1;
    if (algorithm.is_pss &&
        set_RSA_UNIT_PSS(copy.get(), algorithm.mgf_digest_id, algorithm.salt_length) != 0) {
        return 1;
    }
    return append_rsa_signature(signature, unit, [&](u8 *octets, u32 *length) {
        return sign_RSA_digest(copy.get(), algorithm.digest_id, mode, digest.data(), size_of(digest), octets,
                               length);
    });
}

// ECDSA-Sig-Value ::= SEQUENCE { r INTEGER, s INTEGER } (RFC 5480, section 2.2.3)
u32 sign_ecdsa(const ECDSA_KEY *key, Bytes digest, Encoder &signature) noexcept {
    u8 r[TLX_ECDSA_MAX_LENGTH];
    u8 s[TLX_ECDSA_MAX_LENGTH];
    const u32 length = get_ECDSA_KEY_length(key);
    if (const u32 status = sign_ECDSA_digest(key, digest.data(), size_of(digest), r, s); status != 0) {
        return status;
    }
    const Owned<BIGINT> r_number(binary_to_BIGINT(r, length));
    const Owned<BIGINT> s_number(binary_to_BIGINT(s, length));
    const auto sequence = signature.sequence();
    signature.integer(r_number.get());
    signature.integer(s_number.get());
    return 0;
}

u32 sign_eddsa(const EDDSA_KEY *key, Bytes octets, Encoder &signature) noexcept {
    u8 value[TLX_EDDSA_MAX_LENGTH];
    u32 length = 0;
    if (sign_EDDSA(key, octets.data(), size_of(octets), value, &length) != 0) return 1;
    signature.raw({value, length});
    return 0;
}

/// `sign` is sign_KCDSA_data() or sign_KCDSA_digest().
template <typename Sign>
u32 sign_kcdsa(Sign sign, const KCDSA *key, u32 digest_id, Bytes octets, Encoder &signature) noexcept {
    return append_kcdsa_signature(signature, [&](u8 *r, u32 *r_length, u8 *s, u32 *s_length) {
        return sign(key, digest_id, octets.data(), size_of(octets), r, r_length, s, s_length);
    });
}

/// Whether a key can sign under an algorithm.
bool fits(const ASYMMETRIC_KEY &key, const SignatureAlgorithm &algorithm) noexcept {
    if (key.key == nullptr) return false;
    switch (algorithm.kind) {
        case KeyKind::rsa:
            return key.kind == TLX_KEY_RSA &&
                   get_RSA_UNIT_kind(static_cast<const RSA_UNIT *>(key.key)) != TLX_RSA_PUBLIC;
        case KeyKind::ecdsa:
            return key.kind == TLX_KEY_ECDSA &&
                   get_ECDSA_KEY_private(static_cast<const ECDSA_KEY *>(key.key)) != nullptr;
        case KeyKind::eddsa:
            return key.kind == TLX_KEY_EDDSA &&
                   get_EDDSA_KEY_curve(static_cast<const EDDSA_KEY *>(key.key)) == algorithm.curve &&
                   get_EDDSA_KEY_private(static_cast<const EDDSA_KEY *>(key.key)) != nullptr;
        case KeyKind::kcdsa:
            return key.kind == TLX_KEY_KCDSA &&
                   get_KCDSA_number(static_cast<const KCDSA *>(key.key), TLX_KCDSA_X) != nullptr;
        default:
            return false;
    }
}

}  // namespace

u32 make_signature(const ASYMMETRIC_KEY &key, const SignatureAlgorithm &algorithm, Bytes octets,
                   Encoder &signature) noexcept {
    if (!fits(key, algorithm)) return kNotOfKey;
    u32 status = 0;
    if (key.kind == TLX_KEY_EDDSA) {
        status = sign_eddsa(static_cast<const EDDSA_KEY *>(key.key), octets, signature);
    } else if (key.kind == TLX_KEY_KCDSA) {
        status = sign_kcdsa(sign_KCDSA_data, static_cast<const KCDSA *>(key.key), algorithm.digest_id, octets,
                            signature);
    } else {
        Hash hash;
        if (!hash.compute(algorithm.digest_id, octets)) return 1;
        return make_signature_of_digest(key, algorithm, hash.bytes(), signature);
    }
    return status != 0 ? status : written(signature);
}

u32 make_signature_of_digest(const ASYMMETRIC_KEY &key, const SignatureAlgorithm &algorithm, Bytes digest,
                             Encoder &signature) noexcept {
    if (!fits(key, algorithm)) return kNotOfKey;
    u32 status = kNotOfKey;
    if (key.kind == TLX_KEY_RSA) {
        status = sign_rsa(static_cast<const RSA_UNIT *>(key.key), algorithm, digest, signature);
    } else if (key.kind == TLX_KEY_ECDSA) {
        status = sign_ecdsa(static_cast<const ECDSA_KEY *>(key.key), digest, signature);
    } else if (key.kind == TLX_KEY_KCDSA) {
        status = sign_kcdsa(sign_KCDSA_digest, static_cast<const KCDSA *>(key.key), algorithm.digest_id,
                            digest, signature);
    }
    return status != 0 ? status : written(signature);
}

}  // namespace tlx
