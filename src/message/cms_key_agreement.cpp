// Key agreement with a key that the originator makes for one message (RFC 5652, section 6.2.2; RFC 5753,
// section 3.1; RFC 8418).
#include <tlxcrypto/kdf.h>
#include <tlxcrypto/xdh.h>

#include <algorithm>

#include "der/list_items.hpp"
#include "message/agreed_keys.hpp"

using namespace tlx;

namespace {

/// What a keyEncryptionAlgorithm says of the derivation.
struct Scheme {
    std::string_view dotted;
    u32 kdf;
    u32 digest_id;
    bool cofactor = false;
};
// RFC 5753, section 7.1.4; RFC 8418, section 2.2.
constexpr Scheme kSchemes[] = {
    {"1.3.133.16.840.63.0.2", TLX_CMS_KDF_X963, TLX_DIGEST_SHA1},
    {"1.3.132.1.11.0", TLX_CMS_KDF_X963, TLX_DIGEST_SHA224},
    {"1.3.132.1.11.1", TLX_CMS_KDF_X963, TLX_DIGEST_SHA256},
    {"1.3.132.1.11.2", TLX_CMS_KDF_X963, TLX_DIGEST_SHA384},
    {"1.3.132.1.11.3", TLX_CMS_KDF_X963, TLX_DIGEST_SHA512},
    {"1.3.133.16.840.63.0.3", TLX_CMS_KDF_X963, TLX_DIGEST_SHA1, true},
    {"1.3.132.1.14.0", TLX_CMS_KDF_X963, TLX_DIGEST_SHA224, true},
    {"1.3.132.1.14.1", TLX_CMS_KDF_X963, TLX_DIGEST_SHA256, true},
    {"1.3.132.1.14.2", TLX_CMS_KDF_X963, TLX_DIGEST_SHA384, true},
    {"1.3.132.1.14.3", TLX_CMS_KDF_X963, TLX_DIGEST_SHA512, true},
    {"1.2.840.113549.1.9.16.3.19", TLX_CMS_KDF_HKDF, TLX_DIGEST_SHA256},
    {"1.2.840.113549.1.9.16.3.20", TLX_CMS_KDF_HKDF, TLX_DIGEST_SHA384},
    {"1.2.840.113549.1.9.16.3.21", TLX_CMS_KDF_HKDF, TLX_DIGEST_SHA512},
};

/// X25519 and X448 know no cofactor.
const Scheme *usable(const Scheme *scheme, const KeyCurve &curve) noexcept {
    if (scheme == std::end(kSchemes)) return nullptr;
    return scheme->cofactor && curve.kind == TLX_KEY_XDH ? nullptr : scheme;
}

const Scheme *read_scheme(const X509_ALGO_IDENTIFIER &algorithm, const KeyCurve &curve) noexcept {
    return usable(std::ranges::find(kSchemes, text_of(algorithm.algorithm), &Scheme::dotted), curve);
}

u32 default_digest(u32 curve) noexcept {
    if (curve == TLX_CURVE_P384) return TLX_DIGEST_SHA384;
    return curve == TLX_CURVE_P521 || curve == TLX_CURVE_X448 ? TLX_DIGEST_SHA512 : TLX_DIGEST_SHA256;
}

const Scheme *choose_scheme(const CMS_RECIPIENT_SETTINGS &settings, const KeyCurve &curve) noexcept {
    const u32 default_kdf = curve.kind == TLX_KEY_XDH ? TLX_CMS_KDF_HKDF : TLX_CMS_KDF_X963;
    const u32 kdf = settings.kdf != 0 ? settings.kdf : default_kdf;
    const u32 digest_id = settings.kdf_digest_id != 0 ? settings.kdf_digest_id : default_digest(curve.id);
    const auto fits = [&](const Scheme &scheme) {
        return scheme.kdf == kdf && scheme.digest_id == digest_id &&
               scheme.cofactor == (settings.cofactor != 0);
    };
    return usable(std::ranges::find_if(kSchemes, fits), curve);
}

// ECC-CMS-SharedInfo ::= SEQUENCE {
//     keyInfo AlgorithmIdentifier, entityUInfo [0] EXPLICIT OCTET STRING OPTIONAL,
//     suppPubInfo [2] EXPLICIT OCTET STRING }
void write_shared_info(Encoder &out, const X509_ALGO_IDENTIFIER &wrap, OCTET_STRING *ukm,
                       u32 key_len) noexcept {
    constexpr u32 kBitsPerOctet = 8;
    const u32 bits = key_len * kBitsPerOctet;
    u8 length[] = {0, 0, static_cast<u8>(bits >> kBitsPerOctet), static_cast<u8>(bits)};
    OCTET_STRING octets = {TLX_TAG_OCTET_STRING, length, sizeof length, 0};
    X509_ALGO_IDENTIFIER key_info = wrap;
    const CMS_ECC_SHARED_INFO info = {&key_info, ukm, &octets};
    Codec<CMS_ECC_SHARED_INFO>::encode(out, &info);
}

/// HKDF goes without a salt (RFC 8418, section 2.2). False when memory runs out.
bool derive(const Scheme &scheme, const AgreedSecret &secret, const X509_ALGO_IDENTIFIER &wrap,
            OCTET_STRING *ukm, WrappingKey &key) noexcept {
    Encoder info;
    write_shared_info(info, wrap, ukm, key.len);
    const Bytes octets = info.bytes();
    if (!info.ok()) return false;
    return scheme.kdf == TLX_CMS_KDF_HKDF
               ? compute_HKDF(scheme.digest_id, secret.octets, secret.len, nullptr, 0, octets.data(),
                              size_of(octets), key.octets, key.len) == 0
               : compute_X963_KDF(scheme.digest_id, secret.octets, secret.len, octets.data(), size_of(octets),
                                  key.octets, key.len) == 0;
}

// ---- Opening ----

bool names(const CMS_KEY_AGREE_IDENTIFIER *identifier, const X509_CERT *cert) noexcept {
    if (identifier == nullptr || identifier->value.any == nullptr) return false;
    return identifier->type == TLX_CMS_BY_KEY_IDENTIFIER
               ? is_named(cert, identifier->value.rKeyId->keyIdentifier)
               : is_named(cert, identifier->value.issuerAndSerialNumber);
}

/// 0 when the holder's key is of a kind that may open the recipient.
u32 check_kind(const CMS_KEY_AGREE_RECIPIENT &recipient, const KeyCurve *curve) noexcept {
    const CMS_ORIGINATOR *originator = recipient.originator;
    if (originator == nullptr || originator->value.any == nullptr) return 0x52B10049;
    if (recipient.keyEncryptionAlgorithm == nullptr) return 0x52B10049;
    return curve != nullptr && originator->type == TLX_CMS_BY_ORIGINATOR_KEY ? 0 : 0x52B10047;
}

/// The originator's key is none of the holder's curve. Only a certificate says that it should be.
u32 not_of_curve(const CMS_KEY_HOLDER &holder) noexcept {
    return holder.certificate == nullptr ? 0x52B10047 : 0x52B10048;
}

// ---- Making ----

// KeyAgreeRecipientIdentifier ::= CHOICE {
//     issuerAndSerialNumber IssuerAndSerialNumber, rKeyId [0] IMPLICIT RecipientKeyIdentifier }
CMS_KEY_AGREE_IDENTIFIER *make_identifier(const X509_CERT *cert, bool by_key_identifier) noexcept {
    Owned<CMS_KEY_AGREE_IDENTIFIER> made(new_CMS_KEY_AGREE_IDENTIFIER());
    Bytes identifier;
    if (!made) return nullptr;
    if (!by_key_identifier) {
        made->type = TLX_CMS_BY_ISSUER_AND_SERIAL;
        made->value.issuerAndSerialNumber = issuer_and_serial_of(cert).release();
        return made->value.any != nullptr ? made.release() : nullptr;
    }
    made->type = TLX_CMS_BY_KEY_IDENTIFIER;
    made->value.rKeyId = new_CMS_KEY_IDENTIFIER();
    if (made->value.rKeyId == nullptr || !find_key_identifier(cert, identifier)) return nullptr;
    made->value.rKeyId->keyIdentifier = make_octets(identifier);
    return made->value.rKeyId->keyIdentifier != nullptr ? made.release() : nullptr;
}

/// The public key of a private one, without the parameters of id-ecPublicKey: the curve is that of the
/// recipient.
CMS_ORIGINATOR *make_originator(const ASYMMETRIC_KEY *key) noexcept {
    const Owned<X509_PUBKEY> pubkey(new_X509_PUBKEY());
    Owned<CMS_ORIGINATOR> made(new_CMS_ORIGINATOR());
    Owned<CMS_ORIGINATOR_KEY> own(new_CMS_ORIGINATOR_KEY());
    if (!made || !own || set_X509_PUBKEY_key(pubkey.get(), key) != 0) return nullptr;
    own->algorithm = new_X509_ALGO_IDENTIFIER();
    if (own->algorithm == nullptr) return nullptr;
    std::swap(own->algorithm->algorithm, pubkey->algorithm);
    std::swap(own->publicKey, pubkey->subjectPublicKey);
    made->type = TLX_CMS_BY_ORIGINATOR_KEY;
    made->value.originatorKey = own.release();
    return made.release();
}

bool add_key(CMS_KEY_AGREE_RECIPIENT &recipient, const CMS_RECIPIENT_SETTINGS &settings,
             OCTET_STRING *wrapped) noexcept {
    Owned<ASN1_STRING> octets(wrapped);
    Owned<CMS_RECIPIENT_ENCRYPTED_KEY> key(new_CMS_RECIPIENT_ENCRYPTED_KEY());
    if (!key || !octets) return false;
    key->encryptedKey = octets.release();
    key->rid = make_identifier(settings.certificate, settings.by_key_identifier != 0);
    return key->rid != nullptr && append_owned(recipient.recipientEncryptedKeys, key);
}

/// keyEncryptionAlgorithm, whose parameters are the key wrap; null when memory runs out.
X509_ALGO_IDENTIFIER *make_agreement_algorithm(const Scheme &scheme,
                                               const X509_ALGO_IDENTIFIER &wrap) noexcept {
    ASN1_UNIT *node = nullptr;
    if (X509_ALGO_IDENTIFIER_to_Seq(&wrap, &node) != 0) return nullptr;
    return make_algorithm(scheme.dotted, node).release();
}

/// Fills everything but what the key is wrapped under, and that key. 0x52B0003C when memory runs out.
u32 prepare(const CMS_RECIPIENT_SETTINGS &settings, const Scheme &scheme, const X509_ALGO_IDENTIFIER *wrap,
            const ASYMMETRIC_KEY *key, CMS_KEY_AGREE_RECIPIENT &out) noexcept {
    if (wrap == nullptr || key == nullptr) return 0x52B0003C;
    out.version = 3;
    out.originator = make_originator(key);
    if (settings.ukm != nullptr) out.ukm = make_octets({settings.ukm, settings.ukm_len});
    out.keyEncryptionAlgorithm = make_agreement_algorithm(scheme, *wrap);
    const bool complete = out.originator != nullptr && (out.ukm != nullptr || settings.ukm == nullptr) &&
                          out.keyEncryptionAlgorithm != nullptr;
    return complete ? 0 : 0x52B0003C;
}

}  // namespace

AgreedKeys::AgreedKeys(const CMS_KEY_AGREE_RECIPIENT &recipient, const CMS_KEY_HOLDER &holder,
                       OpenedKey &key) noexcept
    : recipient_(recipient),
      holder_(holder),
      key_(key),
      curve_(find_private_curve(holder.private_key)),
      status_(check_kind(recipient, curve_)),
      is_over_(status_ != 0) {
    if (!is_over_) status_ = 0x52B10047;
}

bool AgreedKeys::try_next(const CMS_RECIPIENT_ENCRYPTED_KEY &own) noexcept {
    if (is_over_ || !names(own.rid, holder_.certificate)) return !is_over_;
    status_ = wrap_ != nullptr ? 0 : agree_on_key();
    is_over_ = status_ != 0;
    if (is_over_) return false;
    status_ = unwrap_key(*wrap_, wrapping_.bytes(), octets_of(own.encryptedKey), key_);
    is_over_ = status_ == 0 || holder_.certificate != nullptr;
    return !is_over_;
}

u32 AgreedKeys::agree_on_key() noexcept {
    const CMS_ORIGINATOR_KEY &peer = *recipient_.originator->value.originatorKey;
    const X509_ALGO_IDENTIFIER &algorithm = *recipient_.keyEncryptionAlgorithm;
    if (peer.algorithm == nullptr || peer.publicKey == nullptr) return 0x52B10049;
    if (!is_of_curve(*peer.algorithm, *curve_)) return not_of_curve(holder_);

    X509_ALGO_IDENTIFIER *parameters = nullptr;
    static_cast<void>(Seq_to_X509_ALGO_IDENTIFIER(algorithm.parameters, &parameters));
    const Owned<X509_ALGO_IDENTIFIER> wrapping(parameters);
    const Scheme *scheme = read_scheme(algorithm, *curve_);
    const KeyWrap *wrap = read_key_wrap(parameters);
    if (scheme == nullptr || wrap == nullptr) return 0x52B10048;
    AgreedSecret secret;
    const AgreementOutcome outcome = agree(*holder_.private_key, *curve_, peer.publicKey, secret);
    if (outcome == AgreementOutcome::bad_key) return not_of_curve(holder_);
    wrapping_.len = wrap->key_length();
    if (outcome != AgreementOutcome::done || !derive(*scheme, secret, *wrapping, recipient_.ukm, wrapping_)) {
        return 0x52B1003C;
    }
    wrap_ = wrap;
    return 0;
}

u32 tlx::open_key_agreement(const CMS_KEY_AGREE_RECIPIENT &recipient, const CMS_KEY_HOLDER &holder,
                            OpenedKey &key) noexcept {
    AgreedKeys agreed(recipient, holder, key);
    for (u32 i = 0; i < get_STACK_count(recipient.recipientEncryptedKeys); ++i) {
        const auto *own =
            item_at<CMS_RECIPIENT_ENCRYPTED_KEY>(recipient.recipientEncryptedKeys, static_cast<i32>(i));
        if (own != nullptr && !agreed.try_next(*own)) break;
    }
    return agreed.status();
}

u32 tlx::make_key_agreement(const CMS_RECIPIENT_SETTINGS &settings, Bytes key,
                            CMS_RECIPIENT_INFO &out) noexcept {
    const X509_PUBKEY *pubkey = get_X509_SPKI(settings.certificate);
    const KeyCurve *curve = find_public_curve(pubkey);
    if (curve == nullptr || !can_be_named(settings.certificate, settings.by_key_identifier != 0)) {
        return 0x52B00047;
    }
    const Scheme *scheme = choose_scheme(settings, *curve);
    const KeyWrap *wrap =
        find_key_wrap(settings.wrap_cipher_id != 0 ? settings.wrap_cipher_id : TLX_CIPHER_AES256);
    if (scheme == nullptr || wrap == nullptr) return 0x52B00048;
    if (!can_be_wrapped(key)) return 0x52B0001C;

    const Owned<X509_ALGO_IDENTIFIER> wrapping = make_algorithm(wrap->dotted, nullptr);
    const Owned<ASYMMETRIC_KEY> own = generate_agreement_key(*curve);
    CMS_KEY_AGREE_RECIPIENT *made = new_CMS_KEY_AGREE_RECIPIENT();
    out.type = TLX_CMS_KEY_AGREEMENT;
    out.value.kari = made;
    if (made == nullptr) return 0x52B0003C;
    if (const u32 status = prepare(settings, *scheme, wrapping.get(), own.get(), *made); status != 0) {
        return status;
    }
    AgreedSecret secret;
    const AgreementOutcome outcome = agree(*own, *curve, pubkey->subjectPublicKey, secret);
    if (outcome == AgreementOutcome::bad_key) return 0x52B00047;
    WrappingKey kek;
    kek.len = wrap->key_length();
    if (outcome != AgreementOutcome::done || !derive(*scheme, secret, *wrapping, made->ukm, kek)) {
        return 0x52B0003C;
    }
    return add_key(*made, settings, wrap_key(*wrap, kek.bytes(), key)) ? 0 : 0x52B0003C;
}
