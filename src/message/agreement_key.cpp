#include "message/agreement_key.hpp"

#include <tlxcrypto/xdh.h>

#include <algorithm>

#include "der/oid_text.hpp"

namespace tlx {
namespace {

using OwnedEcdsa = std::unique_ptr<ECDSA_KEY, FreeWith<free_ECDSA_KEY>>;
using OwnedXdh = std::unique_ptr<XDH_KEY, FreeWith<free_XDH_KEY>>;

bool is_oid(const OBJECT_IDENTIFIER *identifier, std::string_view contents) noexcept {
    char text[kMaxDottedText + 1];
    u32 length = 0;
    return oid_to_text(octets_of_oid(contents), text, length) &&
           text_of(identifier) == std::string_view(text, length);
}

/// A holder with a key, which the unit is given to; null when memory runs out.
template <typename Unit>
Owned<ASYMMETRIC_KEY> hold(u32 kind, Unit unit) noexcept {
    Owned<ASYMMETRIC_KEY> key(new_ASYMMETRIC_KEY());
    return key && set_ASYMMETRIC_KEY(key.get(), kind, unit.get()) == 0 ? std::move(key) : nullptr;
}

AgreementOutcome outcome_of(u32 status) noexcept {
    static_assert(TLX_ECDSA_BAD_KEY == TLX_XDH_BAD_KEY);
    if (status == 0) return AgreementOutcome::done;
    return status == TLX_ECDSA_BAD_KEY ? AgreementOutcome::bad_key : AgreementOutcome::no_memory;
}

u32 compute(const ECDSA_KEY *own, u32 curve, Bytes point, u8 *secret) noexcept {
    if (point.empty() || point.size() > TLX_ECDSA_MAX_POINT_LENGTH) return TLX_ECDSA_BAD_KEY;
    const OwnedEcdsa peer(binary_to_ECDSA_KEY(curve, point.data(), size_of(point)));
    return peer ? compute_ECDH(own, peer.get(), secret) : 1;
}

u32 compute(const XDH_KEY *own, u32 curve, Bytes point, u8 *secret) noexcept {
    if (point.size() != get_XDH_KEY_length(own)) return TLX_XDH_BAD_KEY;
    const OwnedXdh peer(binary_to_XDH_KEY(curve, point.data(), size_of(point)));
    return peer ? compute_XDH(own, peer.get(), secret) : 1;
}

}  // namespace

const KeyCurve *find_private_curve(const ASYMMETRIC_KEY *key) noexcept {
    if (key == nullptr) return nullptr;
    if (key->kind == TLX_KEY_ECDSA) {
        const auto *unit = static_cast<const ECDSA_KEY *>(key->key);
        return get_ECDSA_KEY_private(unit) == nullptr ? nullptr
                                                      : find_key_curve(key->kind, get_ECDSA_KEY_curve(unit));
    }
    if (key->kind != TLX_KEY_XDH) return nullptr;
    const auto *unit = static_cast<const XDH_KEY *>(key->key);
    return get_XDH_KEY_private(unit) == nullptr ? nullptr
                                                : find_key_curve(key->kind, get_XDH_KEY_curve(unit));
}

const KeyCurve *find_public_curve(const X509_PUBKEY *key) noexcept {
    Element parameters;
    if (key == nullptr) return nullptr;
    for (const u32 id : {TLX_CURVE_X25519, TLX_CURVE_X448}) {
        const KeyCurve *curve = find_key_curve(TLX_KEY_XDH, id);
        if (is_oid(key->algorithm, curve->oid)) return curve;
    }
    const bool is_named = is_oid(key->algorithm, kEcPublicKeyOid) && view_node(key->parameters, parameters) &&
                          parameters.tag == TLX_TAG_OBJECT_IDENTIFIER;
    return is_named ? find_named_curve(parameters.contents) : nullptr;
}

bool is_of_curve(const X509_ALGO_IDENTIFIER &algorithm, const KeyCurve &curve) noexcept {
    Element parameters;
    const bool has_parameters = view_node(algorithm.parameters, parameters) && parameters.tag != TLX_TAG_NULL;
    if (curve.kind == TLX_KEY_XDH) return is_oid(algorithm.algorithm, curve.oid) && !has_parameters;
    if (!is_oid(algorithm.algorithm, kEcPublicKeyOid)) return false;
    return !has_parameters || (parameters.tag == TLX_TAG_OBJECT_IDENTIFIER &&
                               std::ranges::equal(parameters.contents, octets_of_oid(curve.oid)));
}

Owned<ASYMMETRIC_KEY> generate_agreement_key(const KeyCurve &curve) noexcept {
    if (curve.kind == TLX_KEY_ECDSA) {
        ECDSA_KEY *unit = nullptr;
        static_cast<void>(gen_ECDSA_KEY(curve.id, &unit));
        return hold(curve.kind, OwnedEcdsa(unit));
    }
    XDH_KEY *unit = nullptr;
    static_cast<void>(gen_XDH_KEY(curve.id, &unit));
    return hold(curve.kind, OwnedXdh(unit));
}

AgreementOutcome agree(const ASYMMETRIC_KEY &own, const KeyCurve &curve, const BIT_STRING *peer,
                       AgreedSecret &secret) noexcept {
    const Bytes point = octets_of(peer);
    secret.len = curve.length;
    if (peer != nullptr && peer->extra != 0) return AgreementOutcome::bad_key;
    if (curve.kind == TLX_KEY_ECDSA) {
        return outcome_of(compute(static_cast<const ECDSA_KEY *>(own.key), curve.id, point, secret.octets));
    }
    return outcome_of(compute(static_cast<const XDH_KEY *>(own.key), curve.id, point, secret.octets));
}

}  // namespace tlx
