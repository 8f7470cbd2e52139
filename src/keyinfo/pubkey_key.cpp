#include "keyinfo/pubkey_key.hpp"

#include <tlxpki/curve.h>

#include "asn1/oid_lookup.hpp"
#include "keyinfo/key_records.hpp"

namespace tlx {
namespace {

using OwnedRsa = std::unique_ptr<RSA_UNIT, FreeWith<free_RSA_UNIT>>;
using OwnedKcdsa = std::unique_ptr<KCDSA, FreeWith<free_KCDSA>>;
using OwnedEcc = std::unique_ptr<ECC_KEY, FreeWith<free_ECC_KEY>>;

/// The one element that the octets are. False when it is of another type, or not all of them.
bool read_whole(Bytes octets, u32 expected, Element &element) noexcept {
    Cursor cursor(octets);
    return cursor.next(expected, element) && cursor.at_end();
}

/// Takes the next INTEGER; empty contents are none.
bool next_integer(Cursor &members, Bytes &contents) noexcept {
    Element integer;
    if (!members.next(TLX_TAG_INTEGER, integer) || integer.contents.empty()) return false;
    contents = integer.contents;
    return true;
}

KeyOutcome hold(X509_PUBKEY &pubkey, u32 kind, void *unit) noexcept {
    auto *key = new_ASYMMETRIC_KEY();
    if (key == nullptr) return KeyOutcome::no_memory;
    *key = {kind, unit};
    free_ASYMMETRIC_KEY(pubkey.key);
    pubkey.key = key;
    return KeyOutcome::decoded;
}

/// Puts a unit that is complete into the record, which owns it when that succeeds.
template <typename Unit>
KeyOutcome hold(X509_PUBKEY &pubkey, u32 kind, Unit unit) noexcept {
    const KeyOutcome outcome = hold(pubkey, kind, static_cast<void *>(unit.get()));
    if (outcome == KeyOutcome::decoded) static_cast<void>(unit.release());
    return outcome;
}

// RSAPublicKey ::= SEQUENCE { modulus INTEGER, publicExponent INTEGER }
KeyOutcome decode_rsa(X509_PUBKEY &pubkey, Bytes octets) noexcept {
    Element sequence;
    if (!read_whole(octets, TLX_TAG_SEQUENCE, sequence)) return KeyOutcome::unknown;
    Cursor members(sequence);
    Bytes modulus;
    Bytes exponent;
    if (!next_integer(members, modulus) || !next_integer(members, exponent) || !members.at_end()) {
        return KeyOutcome::unknown;
    }
    OwnedRsa unit(binary_to_RSA_UNIT(modulus.data(), static_cast<u32>(modulus.size()), exponent.data(),
                                     static_cast<u32>(exponent.size())));
    if (!unit) return KeyOutcome::no_memory;
    return hold(pubkey, TLX_KEY_RSA, std::move(unit));
}

// The octets are INTEGER y, the parameters SEQUENCE { p INTEGER, q INTEGER, g INTEGER }.
KeyOutcome decode_kcdsa(X509_PUBKEY &pubkey, Bytes octets) noexcept {
    Element parameters;
    if (!view_node(pubkey.parameters, parameters) || !parameters.matches(TLX_TAG_SEQUENCE)) {
        return KeyOutcome::unknown;
    }
    Cursor members(parameters);
    Cursor key(octets);
    Bytes numbers[4];
    for (u32 i = 0; i < 3; ++i) {
        if (!next_integer(members, numbers[i])) return KeyOutcome::unknown;
    }
    if (!members.at_end() || !next_integer(key, numbers[3]) || !key.at_end()) return KeyOutcome::unknown;
    Owned<BIGINT> values[4];
    for (u32 i = 0; i < 4; ++i) {
        values[i].reset(decode_integer(numbers[i]));
        if (!values[i]) return KeyOutcome::no_memory;
    }
    OwnedKcdsa unit(new_KCDSA());
    if (!unit || set_KCDSA_params(unit.get(), values[0].get(), values[1].get(), values[2].get()) != 0 ||
        set_KCDSA_public(unit.get(), values[3].get()) != 0) {
        return KeyOutcome::no_memory;
    }
    return hold(pubkey, TLX_KEY_KCDSA, std::move(unit));
}

// ECPoint ::= OCTET STRING, whose octets are the BIT STRING's (RFC 5480, section 2.2).
// ECParameters ::= CHOICE { namedCurve OBJECT IDENTIFIER }
// A failed allocation below the curve's numbers and the point is not told from a point that is none: the key
// is left out then.
KeyOutcome decode_ecc(X509_PUBKEY &pubkey, Bytes octets) noexcept {
    Element parameters;
    if (!view_node(pubkey.parameters, parameters)) return KeyOutcome::unknown;
    if (!parameters.matches(TLX_TAG_OBJECT_IDENTIFIER) || octets.empty()) return KeyOutcome::unknown;
    const Owned<OBJECT_IDENTIFIER> curve(decode_oid(parameters.contents));
    OwnedEcc unit(new_ECC_KEY());
    if (!curve || !unit) return KeyOutcome::no_memory;
    if (set_ECURVE_from_list_ex(&unit->curve, curve.get()) != 0) return KeyOutcome::unknown;
    unit->public_point = binary_to_ECPOINT(unit->curve, octets.data(), static_cast<u32>(octets.size()));
    if (unit->public_point == nullptr) return KeyOutcome::unknown;
    return hold(pubkey, TLX_KEY_ECC, std::move(unit));
}

}  // namespace

KeyOutcome decode_key(X509_PUBKEY &pubkey) noexcept {
    if (pubkey.subjectPublicKey->extra != 0) return KeyOutcome::unknown;  // key octets are whole
    const Bytes octets = octets_of(pubkey.subjectPublicKey);
    switch (oid_index(text_of(pubkey.algorithm))) {
        case oid::kRsaEncryption:
            return decode_rsa(pubkey, octets);
        case oid::kKcdsa1:
            return decode_kcdsa(pubkey, octets);
        case oid::kEcPublicKey:
            return decode_ecc(pubkey, octets);
        default:
            return KeyOutcome::unknown;
    }
}

}  // namespace tlx
