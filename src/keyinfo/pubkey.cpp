// SubjectPublicKeyInfo (RFC 5280, section 4.1.2.7), and the holder of a key of any kind.
#include <tlxpki/ber.h>
#include <tlxpki/curve.h>

#include <algorithm>

#include "asn1/oid_lookup.hpp"
#include "der/list_items.hpp"
#include "keyinfo/key_curve.hpp"
#include "keyinfo/key_records.hpp"
#include "keyinfo/pubkey_key.hpp"

using namespace tlx;

namespace {

/// A unit that counts its owners, of which a copy is one more.
template <typename Key>
Key *shared(const void *unit) noexcept {
    return static_cast<Key *>(const_cast<void *>(unit));
}

/// A copy of a key unit; null for a kind that is not known and when memory runs out.
void *dup_unit(u32 kind, const void *unit) noexcept {
    switch (kind) {
        case TLX_KEY_RSA:
            return dup_RSA_UNIT(static_cast<const RSA_UNIT *>(unit));
        case TLX_KEY_KCDSA:
            return dup_KCDSA(static_cast<const KCDSA *>(unit));
        case TLX_KEY_ECC:
            return dup_ECC_KEY(static_cast<const ECC_KEY *>(unit));
        case TLX_KEY_ECDSA:
            return dup_ECDSA_KEY(shared<ECDSA_KEY>(unit));
        case TLX_KEY_EDDSA:
            return dup_EDDSA_KEY(shared<EDDSA_KEY>(unit));
        case TLX_KEY_XDH:
            return dup_XDH_KEY(shared<XDH_KEY>(unit));
        default:
            return nullptr;
    }
}

void free_unit(u32 kind, void *unit) noexcept {
    switch (kind) {
        case TLX_KEY_RSA:
            return free_RSA_UNIT(static_cast<RSA_UNIT *>(unit));
        case TLX_KEY_KCDSA:
            return free_KCDSA(static_cast<KCDSA *>(unit));
        case TLX_KEY_ECC:
            return free_ECC_KEY(static_cast<ECC_KEY *>(unit));
        case TLX_KEY_ECDSA:
            return free_ECDSA_KEY(static_cast<ECDSA_KEY *>(unit));
        case TLX_KEY_EDDSA:
            return free_EDDSA_KEY(static_cast<EDDSA_KEY *>(unit));
        case TLX_KEY_XDH:
            return free_XDH_KEY(static_cast<XDH_KEY *>(unit));
        default:
            return;
    }
}

/// The key that the other members stand for: read out of them, never written.
struct DecodedKey : KeptField<X509_PUBKEY, KeyUnit> {
    [[nodiscard]] u32 read(Cursor & /*children*/, X509_PUBKEY &record) const noexcept {
        clear(record);
        return decode_key(record) == KeyOutcome::no_memory ? kFieldFailed : 0;
    }
};

// SubjectPublicKeyInfo ::= SEQUENCE { algorithm AlgorithmIdentifier, subjectPublicKey BIT STRING }
constexpr auto kPublicKeyInfo =
    record<X509_PUBKEY>(as_described(), algorithm_members(&X509_PUBKEY::algorithm, &X509_PUBKEY::parameters),
                        field<Bits>(&X509_PUBKEY::subjectPublicKey),
                        DecodedKey{kept<KeyUnit>(&X509_PUBKEY::key)})
        .but(OnFailure::unchanged);

/// Parameters as cmp_X509_PUBKEY sees them: NULL is none.
bool has_parameters(const ASN1_UNIT *parameters, Element &element) noexcept {
    return view_node(parameters, element) && !(element.tag == TLX_TAG_NULL && element.contents.empty());
}

bool same_parameters(const ASN1_UNIT *a, const ASN1_UNIT *b) noexcept {
    Element first;
    Element second;
    const bool has_first = has_parameters(a, first);
    if (has_first != has_parameters(b, second)) return false;
    return !has_first || (first.tag == second.tag && std::ranges::equal(first.contents, second.contents));
}

/// Makes the record the public key that the encodings stand for, decoding it as if it had been received.
bool set_from_encodings(X509_PUBKEY &pubkey, u32 algorithm, Encoder &parameters,
                        const Encoder &key) noexcept {
    Owned<X509_PUBKEY> made(new_X509_PUBKEY());
    if (!made || !parameters.ok() || !key.ok()) return false;
    made->algorithm = index_to_OBJECT_IDENTIFIER(static_cast<i32>(algorithm));
    made->parameters = parameters.to_node();
    made->subjectPublicKey = new_string(TLX_TAG_BIT_STRING, key.bytes());
    if (made->algorithm == nullptr || made->parameters == nullptr || made->subjectPublicKey == nullptr) {
        return false;
    }
    if (decode_key(*made) != KeyOutcome::decoded) return false;
    std::swap(pubkey, *made);
    return true;
}

// SubjectPublicKeyInfo of a key on a curve: with namedCurve for parameters (RFC 5480), or without any
// (RFC 8410).
u32 set_from_point(X509_PUBKEY &pubkey, const KeyCurve *curve, Bytes point) noexcept {
    if (curve == nullptr || point.empty()) return 1;
    const bool is_named = curve->kind == TLX_KEY_ECDSA;
    Encoder out;
    {
        const auto info = out.sequence();
        {
            const auto algorithm = out.sequence();
            if (is_named) out.primitive(TLX_TAG_OBJECT_IDENTIFIER, octets_of_oid(kEcPublicKeyOid));
            out.primitive(TLX_TAG_OBJECT_IDENTIFIER, octets_of_oid(curve->oid));
        }
        const auto bits = out.nest(TLX_TAG_BIT_STRING);
        constexpr u8 kNoUnusedBits[1] = {0};
        out.raw(kNoUnusedBits);
        out.raw(point);
    }
    Element element;
    X509_PUBKEY *read = nullptr;
    if (!out.ok() || !read_element(out.bytes(), element)) return 1;
    const u32 status = Codec<X509_PUBKEY>::decode(element, &read);
    const Owned<X509_PUBKEY> made(read);
    if (status != 0) return 1;
    std::swap(pubkey, *made);
    return 0;
}

u32 set_from_ecdsa(X509_PUBKEY &pubkey, const ECDSA_KEY *key) noexcept {
    u8 point[TLX_ECDSA_MAX_POINT_LENGTH];
    u32 length = 0;
    if (get_ECDSA_KEY_point(key, point, &length) != 0) return 1;
    return set_from_point(pubkey, find_key_curve(TLX_KEY_ECDSA, get_ECDSA_KEY_curve(key)), {point, length});
}

u32 set_from_kcdsa(X509_PUBKEY &pubkey, const KCDSA *key) noexcept {
    if (get_KCDSA_number(key, TLX_KCDSA_Y) != nullptr) return set_X509_PUBKEY_kcdsa(&pubkey, key);
    const std::unique_ptr<KCDSA, FreeWith<free_KCDSA>> copy(dup_KCDSA(key));
    return compute_KCDSA_public(copy.get()) == 0 ? set_X509_PUBKEY_kcdsa(&pubkey, copy.get()) : 1;
}

}  // namespace

ASYMMETRIC_KEY *new_ASYMMETRIC_KEY(void) {
    return TLX_NEW(ASYMMETRIC_KEY);
}

void clean_ASYMMETRIC_KEY(ASYMMETRIC_KEY *key) {
    if (key == nullptr) return;
    free_unit(key->kind, key->key);
    *key = {};
}

void free_ASYMMETRIC_KEY(ASYMMETRIC_KEY *key) {
    clean_ASYMMETRIC_KEY(key);
    tlx_free(key);
}

ASYMMETRIC_KEY *dup_ASYMMETRIC_KEY(const ASYMMETRIC_KEY *key) {
    if (key == nullptr) return nullptr;
    Owned<ASYMMETRIC_KEY> copy(new_ASYMMETRIC_KEY());
    if (!copy) return nullptr;
    if (key->key == nullptr) {
        copy->kind = key->kind;
        return copy.release();
    }
    return set_ASYMMETRIC_KEY(copy.get(), key->kind, key->key) == 0 ? copy.release() : nullptr;
}

uint32_t set_ASYMMETRIC_KEY(ASYMMETRIC_KEY *key, uint32_t kind, const void *unit) {
    if (key == nullptr || unit == nullptr) return 1;
    void *copy = dup_unit(kind, unit);
    if (copy == nullptr) return 1;
    free_unit(key->kind, key->key);
    *key = {kind, copy};
    return 0;
}

TLX_DEFINE_RECORD(X509_PUBKEY, kPublicKeyInfo)

int32_t cmp_X509_PUBKEY(const X509_PUBKEY *a, const X509_PUBKEY *b) {
    if (a == nullptr || b == nullptr) return 1;
    const std::string_view algorithm = text_of(a->algorithm);
    if (algorithm.empty() || text_of(b->algorithm).empty()) return 1;
    if (a->subjectPublicKey == nullptr || b->subjectPublicKey == nullptr) return 1;
    const bool same = algorithm == text_of(b->algorithm) &&
                      a->subjectPublicKey->extra == b->subjectPublicKey->extra &&
                      std::ranges::equal(octets_of(a->subjectPublicKey), octets_of(b->subjectPublicKey)) &&
                      same_parameters(a->parameters, b->parameters);
    return same ? 0 : -1;
}

OBJECT_IDENTIFIER *get_X509_PUBKEY_algorithm(const X509_PUBKEY *pubkey) {
    return pubkey == nullptr ? nullptr : pubkey->algorithm;
}

ASYMMETRIC_KEY *get_X509_PUBKEY_key(const X509_PUBKEY *pubkey) {
    return pubkey == nullptr ? nullptr : pubkey->key;
}

uint32_t set_X509_PUBKEY_rsa(X509_PUBKEY *pubkey, const RSA_UNIT *rsa) {
    if (pubkey == nullptr || rsa == nullptr) return 1;
    Encoder parameters;
    parameters.null();
    Encoder key;
    {
        const auto sequence = key.sequence();
        key.integer(get_RSA_UNIT_number(rsa, TLX_RSA_N));
        key.integer(get_RSA_UNIT_number(rsa, TLX_RSA_E));
    }
    return set_from_encodings(*pubkey, oid::kRsaEncryption, parameters, key) ? 0 : 1;
}

uint32_t set_X509_PUBKEY_kcdsa(X509_PUBKEY *pubkey, const KCDSA *kcdsa) {
    if (pubkey == nullptr || kcdsa == nullptr) return 1;
    Encoder parameters;
    {
        const auto sequence = parameters.sequence();
        parameters.integer(get_KCDSA_number(kcdsa, TLX_KCDSA_P));
        parameters.integer(get_KCDSA_number(kcdsa, TLX_KCDSA_Q));
        parameters.integer(get_KCDSA_number(kcdsa, TLX_KCDSA_G));
    }
    Encoder key;
    key.integer(get_KCDSA_number(kcdsa, TLX_KCDSA_Y));
    return set_from_encodings(*pubkey, oid::kKcdsa1, parameters, key) ? 0 : 1;
}

uint32_t set_X509_PUBKEY_ecc(X509_PUBKEY *pubkey, const ECC_KEY *ecc) {
    if (pubkey == nullptr || ecc == nullptr || ecc->curve == nullptr || ecc->public_point == nullptr) {
        return 1;
    }
    OBJECT_IDENTIFIER *name = nullptr;
    if (get_ECURVE_OID_from_name(&name, ecc->curve->name) != 0) return 1;
    const Owned<OBJECT_IDENTIFIER> curve(name);
    Encoder parameters;
    parameters.oid(curve.get());
    Encoder key;
    u32 length = get_ECPOINT_length(ecc->curve, 0);
    u8 *room = key.buffer().reserve(length);
    if (room == nullptr || ECPOINT_to_binary(ecc->public_point, ecc->curve, 0, room, &length) != 0) return 1;
    key.buffer().advance(length);
    return set_from_encodings(*pubkey, oid::kEcPublicKey, parameters, key) ? 0 : 1;
}

uint32_t set_X509_PUBKEY_key(X509_PUBKEY *pubkey, const ASYMMETRIC_KEY *key) {
    if (pubkey == nullptr || key == nullptr || key->key == nullptr) return 1;
    switch (key->kind) {
        case TLX_KEY_RSA:
            return set_X509_PUBKEY_rsa(pubkey, static_cast<const RSA_UNIT *>(key->key));
        case TLX_KEY_KCDSA:
            return set_from_kcdsa(*pubkey, static_cast<const KCDSA *>(key->key));
        case TLX_KEY_ECC:
            return set_X509_PUBKEY_ecc(pubkey, static_cast<const ECC_KEY *>(key->key));
        case TLX_KEY_ECDSA:
            return set_from_ecdsa(*pubkey, static_cast<const ECDSA_KEY *>(key->key));
        case TLX_KEY_EDDSA: {
            const auto *unit = static_cast<const EDDSA_KEY *>(key->key);
            return set_from_point(*pubkey, find_key_curve(TLX_KEY_EDDSA, get_EDDSA_KEY_curve(unit)),
                                  {get_EDDSA_KEY_point(unit), get_EDDSA_KEY_length(unit)});
        }
        case TLX_KEY_XDH: {
            const auto *unit = static_cast<const XDH_KEY *>(key->key);
            return set_from_point(*pubkey, find_key_curve(TLX_KEY_XDH, get_XDH_KEY_curve(unit)),
                                  {get_XDH_KEY_point(unit), get_XDH_KEY_length(unit)});
        }
        default:
            return 1;
    }
}
