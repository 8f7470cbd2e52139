// Private keys on curves in PKCS #8: ECPrivateKey (RFC 5915) and CurvePrivateKey (RFC 8410).
#include <algorithm>

#include "keyinfo/key_curve.hpp"
#include "keys/key_file_records.hpp"

using namespace tlx;

namespace {

using OwnedEcdsa = std::unique_ptr<ECDSA_KEY, FreeWith<free_ECDSA_KEY>>;
using OwnedEddsa = std::unique_ptr<EDDSA_KEY, FreeWith<free_EDDSA_KEY>>;
using OwnedXdh = std::unique_ptr<XDH_KEY, FreeWith<free_XDH_KEY>>;

// Statuses of read_PRIV_KEY.
constexpr u32 kNoMemory = 0x4C09003C;
constexpr u32 kUnknown = 0x4C090048;
constexpr u32 kBroken = 0x4C090104;

/// Takes the next element when it has that identifier octet.
bool next_of(Cursor &in, u8 tag, Element &element) noexcept {
    return !in.at_end() && in.peek_tag() == tag && in.next(element);
}

// ---- Reading ----

/// An ECPrivateKey, as views.
struct EcPrivateKey {
    Bytes number;
    Bytes parameters;  ///< the whole element; empty when there is none
    Bytes point;       ///< likewise
};

/// Reads [n] EXPLICIT, if it is there, with one element of that identifier octet, or of any for 0.
bool read_optional(Cursor &members, u8 number, u8 tag, Element &inside) noexcept {
    Element element;
    if (!next_of(members, context(number), element)) return true;
    Cursor in(element);
    return in.next(inside) && (tag == 0 || inside.tag == tag) && in.at_end();
}

// ECPrivateKey ::= SEQUENCE {
//     version        INTEGER { ecPrivkeyVer1(1) },
//     privateKey     OCTET STRING,
//     parameters [0] ECParameters OPTIONAL,
//     publicKey  [1] BIT STRING OPTIONAL }
bool read_ec_private_key(Bytes octets, EcPrivateKey &key) noexcept {
    Element sequence;
    Element version;
    Element number;
    Element parameters;
    Element point;
    if (!read_element(octets, sequence) || sequence.tag != kSequence ||
        sequence.whole.size() != octets.size()) {
        return false;
    }
    Cursor members(sequence);
    const bool read = next_of(members, TLX_TAG_INTEGER, version) && version.contents.size() == 1 &&
                      version.contents[0] == 1 && next_of(members, TLX_TAG_OCTET_STRING, number) &&
                      read_optional(members, 0, 0, parameters) &&
                      read_optional(members, 1, TLX_TAG_BIT_STRING, point) && members.at_end();
    if (!read || (!point.whole.empty() && (point.contents.size() < 2 || point.contents[0] != 0))) {
        return false;
    }
    key = {number.contents, parameters.whole, {}};
    if (!point.whole.empty()) key.point = point.contents.subspan(1);
    return true;
}

/// 0, kBroken or kNoMemory, from what a function of keys returns.
u32 status_of(u32 outcome) noexcept {
    if (outcome == 0) return 0;
    return outcome == TLX_ECDSA_BAD_KEY ? kBroken : kNoMemory;
}

/// Whether a point is the public one of a key.
u32 check_point(const ECDSA_KEY *key, Bytes point) noexcept {
    if (point.size() > TLX_ECDSA_MAX_POINT_LENGTH) return kBroken;
    const OwnedEcdsa other(binary_to_ECDSA_KEY(get_ECDSA_KEY_curve(key), point.data(), size_of(point)));
    if (!other) return kNoMemory;
    if (const u32 status = check_ECDSA_KEY(other.get()); status != 0) return status_of(status);
    const i32 order = cmp_ECDSA_KEY(key, other.get());
    if (order == 0) return 0;
    return order < 0 ? kBroken : kNoMemory;
}

u32 read_ecdsa(Bytes parameters, Bytes octets, ASYMMETRIC_KEY &out) noexcept {
    Element name;
    EcPrivateKey key;
    if (!read_element(parameters, name) || name.tag != TLX_TAG_OBJECT_IDENTIFIER) return kUnknown;
    const KeyCurve *curve = find_named_curve(name.contents);
    if (curve == nullptr) return kUnknown;
    if (!read_ec_private_key(octets, key) || key.number.empty()) return kBroken;
    if (!key.parameters.empty() && !std::ranges::equal(key.parameters, parameters)) return kBroken;
    ECDSA_KEY *made = nullptr;
    const u32 status = private_binary_to_ECDSA_KEY(curve->id, key.number.data(), size_of(key.number), &made);
    OwnedEcdsa unit(made);
    if (status != 0) return status_of(status);
    if (!key.point.empty()) {
        if (const u32 checked = check_point(made, key.point); checked != 0) return checked;
    }
    out = {TLX_KEY_ECDSA, unit.release()};
    return 0;
}

// CurvePrivateKey ::= OCTET STRING
u32 read_curve_key(const KeyCurve &curve, Bytes octets, ASYMMETRIC_KEY &out) noexcept {
    Element element;
    if (!read_element(octets, element) || element.tag != TLX_TAG_OCTET_STRING ||
        element.whole.size() != octets.size() || element.contents.size() != curve.length) {
        return kBroken;
    }
    const Bytes secret = element.contents;
    if (curve.kind == TLX_KEY_EDDSA) {
        EDDSA_KEY *made = nullptr;
        if (private_binary_to_EDDSA_KEY(curve.id, secret.data(), size_of(secret), &made) != 0) {
            return kNoMemory;
        }
        out = {TLX_KEY_EDDSA, made};
    } else {
        XDH_KEY *made = nullptr;
        if (private_binary_to_XDH_KEY(curve.id, secret.data(), size_of(secret), &made) != 0) return kNoMemory;
        out = {TLX_KEY_XDH, made};
    }
    return 0;
}

/// A key of another kind than RSA and KCDSA.
u32 read_other(const P8_PRIV_KEY_INFO &info, ASYMMETRIC_KEY &out) noexcept {
    Encoder encoded;
    Codec<X509_ALGO_IDENTIFIER>::encode(encoded, info.otherAlgorithm);
    Element algorithm;
    Element name;
    if (!encoded.ok()) return encoded.out_of_memory() ? kNoMemory : kUnknown;
    if (!read_element(encoded.bytes(), algorithm)) return kUnknown;
    Cursor members(algorithm);
    if (!members.next(TLX_TAG_OBJECT_IDENTIFIER, name)) return kUnknown;
    const Bytes octets = octets_of(info.otherKey);
    if (std::ranges::equal(name.contents, octets_of_oid(kEcPublicKeyOid))) {
        return read_ecdsa(members.rest(), octets, out);
    }
    const KeyCurve *curve = find_algorithm_curve(name.contents);
    if (curve == nullptr) return kUnknown;
    return members.at_end() ? read_curve_key(*curve, octets, out) : kBroken;
}

// ---- Writing ----

/// More than any key on a curve takes, so that its octets are never moved.
constexpr std::size_t kMostOctets = 512;

// PrivateKeyInfo ::= SEQUENCE {
//     version              Version,
//     privateKeyAlgorithm  PrivateKeyAlgorithmIdentifier,
//     privateKey           PrivateKey }
u32 make_info(Bytes algorithm, Bytes parameters, Bytes key, P8_PRIV_KEY_INFO **out, u32 no_memory) noexcept {
    SecretEncoder info;
    info.buffer().reserve(kMostOctets + parameters.size() + key.size());
    {
        const auto sequence = info.sequence();
        info.small_integer(0);
        {
            const auto identifier = info.sequence();
            info.primitive(TLX_TAG_OBJECT_IDENTIFIER, algorithm);
            info.raw(parameters);
        }
        info.primitive(TLX_TAG_OCTET_STRING, key);
    }
    Element element;
    P8_PRIV_KEY_INFO *read = nullptr;
    if (!info.ok() || !read_element(info.bytes(), element)) return no_memory;
    const u32 status = Codec<P8_PRIV_KEY_INFO>::decode(element, &read);
    Owned<P8_PRIV_KEY_INFO> made(read);
    if (status != 0) return no_memory;
    deliver(std::move(made), out);
    return 0;
}

constexpr u32 kNotWritten = 0x4C0A003C;
constexpr u32 kNotPrivate = 0x4C0A0048;

u32 write_ecdsa(const ECDSA_KEY *key, P8_PRIV_KEY_INFO **out) noexcept {
    const u8 *number = get_ECDSA_KEY_private(key);
    const KeyCurve *curve = find_key_curve(TLX_KEY_ECDSA, get_ECDSA_KEY_curve(key));
    if (number == nullptr || curve == nullptr) return kNotPrivate;
    u8 point[TLX_ECDSA_MAX_POINT_LENGTH];
    u32 length = 0;
    if (get_ECDSA_KEY_point(key, point, &length) != 0) return kNotWritten;
    Encoder parameters;
    parameters.primitive(TLX_TAG_OBJECT_IDENTIFIER, octets_of_oid(curve->oid));
    SecretEncoder octets;
    octets.buffer().reserve(kMostOctets);
    {
        const auto sequence = octets.sequence();
        octets.small_integer(1);
        octets.primitive(TLX_TAG_OCTET_STRING, {number, curve->length});
        const auto tagged = octets.nest(context(1));
        const auto bits = octets.nest(TLX_TAG_BIT_STRING);
        constexpr u8 kNoUnusedBits[1] = {0};
        octets.raw(kNoUnusedBits);
        octets.raw({point, length});
    }
    if (!octets.ok() || !parameters.ok()) return kNotWritten;
    return make_info(octets_of_oid(kEcPublicKeyOid), parameters.bytes(), octets.bytes(), out, kNotWritten);
}

/// A key of RFC 8410, of which `secret` is the private part.
u32 write_curve_key(const KeyCurve *curve, const u8 *secret, P8_PRIV_KEY_INFO **out) noexcept {
    if (curve == nullptr || secret == nullptr) return kNotPrivate;
    SecretEncoder octets;
    octets.buffer().reserve(kMostOctets);
    octets.primitive(TLX_TAG_OCTET_STRING, {secret, curve->length});
    if (!octets.ok()) return kNotWritten;
    return make_info(octets_of_oid(curve->oid), {}, octets.bytes(), out, kNotWritten);
}

u32 write_numbers(const ASYMMETRIC_KEY &key, P8_PRIV_KEY_INFO **out) noexcept {
    const bool is_private =
        key.kind == TLX_KEY_RSA
            ? get_RSA_UNIT_kind(static_cast<const RSA_UNIT *>(key.key)) == TLX_RSA_PRIVATE
            : get_KCDSA_number(static_cast<const KCDSA *>(key.key), TLX_KCDSA_X) != nullptr;
    if (!is_private) return kNotPrivate;
    return gen_P8_PRIV_KEY_INFO(&key, out) == 0 ? 0 : kNotWritten;
}

}  // namespace

uint32_t read_PRIV_KEY(const P8_PRIV_KEY_INFO *info, ASYMMETRIC_KEY **out) {
    if (info == nullptr || out == nullptr) return 0x4C090049;
    Owned<ASYMMETRIC_KEY> made(new_ASYMMETRIC_KEY());
    if (!made) return kNoMemory;
    const ASYMMETRIC_KEY *held = info->privateKey;
    if (held != nullptr && held->key != nullptr) {
        if (set_ASYMMETRIC_KEY(made.get(), held->kind, held->key) != 0) return kNoMemory;
    } else if (const u32 status = read_other(*info, *made); status != 0) {
        return status;
    }
    deliver(std::move(made), out);
    return 0;
}

uint32_t write_PRIV_KEY(const ASYMMETRIC_KEY *key, P8_PRIV_KEY_INFO **out) {
    if (key == nullptr || out == nullptr) return 0x4C0A0049;
    if (key->key == nullptr) return kNotPrivate;
    switch (key->kind) {
        case TLX_KEY_RSA:
        case TLX_KEY_KCDSA:
            return write_numbers(*key, out);
        case TLX_KEY_ECDSA:
            return write_ecdsa(static_cast<const ECDSA_KEY *>(key->key), out);
        case TLX_KEY_EDDSA: {
            const auto *unit = static_cast<const EDDSA_KEY *>(key->key);
            return write_curve_key(find_key_curve(TLX_KEY_EDDSA, get_EDDSA_KEY_curve(unit)),
                                   get_EDDSA_KEY_private(unit), out);
        }
        case TLX_KEY_XDH: {
            const auto *unit = static_cast<const XDH_KEY *>(key->key);
            return write_curve_key(find_key_curve(TLX_KEY_XDH, get_XDH_KEY_curve(unit)),
                                   get_XDH_KEY_private(unit), out);
        }
        default:
            return kNotPrivate;
    }
}

uint32_t decode_EC_PRIVATE_KEY(const uint8_t *octets, uint32_t len, P8_PRIV_KEY_INFO **out) {
    if (octets == nullptr || out == nullptr) return 0x4C0B0049;
    EcPrivateKey key;
    if (!read_ec_private_key({octets, len}, key) || key.parameters.empty()) return 0x4C0B0104;
    return make_info(octets_of_oid(kEcPublicKeyOid), key.parameters, {octets, len}, out, 0x4C0B003C);
}
