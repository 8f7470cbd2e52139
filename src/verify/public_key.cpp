#include "verify/public_key.hpp"

#include "keyinfo/key_curve.hpp"
#include "verify/oid.hpp"

namespace tlx {
namespace {

/// An unsigned number from the contents of an INTEGER that is not negative; null for any other.
Owned<BIGINT> make_number(Bytes contents) noexcept {
    return Owned<BIGINT>(binary_to_BIGINT(contents.data(), size_of(contents)));
}

bool next_number(StrictCursor &in, Bytes &contents) noexcept {
    return in.next(id::kInteger, contents) && is_integer(contents) && (contents[0] & 0x80) == 0;
}

// RSAPublicKey ::= SEQUENCE { modulus INTEGER, publicExponent INTEGER }
Rule make_rsa(Bytes octets, PublicKey &key) noexcept {
    StrictCursor members;
    Bytes modulus;
    Bytes exponent;
    if (!open_whole(octets, id::kSequence, members) || !next_number(members, modulus) ||
        !next_number(members, exponent) || !members.at_end()) {
        return Rule::kBadPublicKey;
    }
    const bool is_odd = (modulus.back() & exponent.back() & 1U) != 0;
    if (!is_odd || (exponent.size() == 1 && exponent[0] == 1)) return Rule::kBrokenKey;
    key.kind = KeyKind::rsa;
    key.rsa.reset(binary_to_RSA_UNIT(modulus.data(), size_of(modulus), exponent.data(), size_of(exponent)));
    key.bits = get_BIGINT_bits(get_RSA_UNIT_number(key.rsa.get(), TLX_RSA_N));
    return key.rsa != nullptr ? Rule::kNone : Rule::kNoMemory;
}

// ECParameters ::= CHOICE { namedCurve OBJECT IDENTIFIER }
// ECPoint ::= OCTET STRING, whose octets are the BIT STRING's (RFC 5480, section 2.2).
Rule make_ecdsa(const AlgorithmView &algorithm, Bytes octets, PublicKey &key) noexcept {
    StrictCursor parameters(algorithm.parameters);
    Bytes oid;
    if (!algorithm.has_parameters || octets.empty()) return Rule::kBadPublicKey;
    if (!parameters.next(id::kOid, oid) || !parameters.at_end()) return Rule::kUnknownKey;
    const KeyCurve *curve = find_named_curve(oid);
    if (curve == nullptr) return Rule::kUnknownKey;
    if (octets.size() > 1 + 2 * ((curve->id + 7) / 8)) return Rule::kBadPublicKey;
    key.kind = KeyKind::ecdsa;
    key.bits = curve->id;
    key.ecdsa.reset(binary_to_ECDSA_KEY(curve->id, octets.data(), size_of(octets)));
    return key.ecdsa != nullptr ? Rule::kNone : Rule::kNoMemory;
}

// The octets are those of RFC 8032; there are no parameters (RFC 8410, section 3).
Rule make_eddsa(const AlgorithmView &algorithm, Bytes octets, u32 curve, PublicKey &key) noexcept {
    const std::size_t length = curve == TLX_CURVE_ED25519 ? 32 : 57;
    if (algorithm.has_parameters || octets.size() != length) return Rule::kBadPublicKey;
    key.kind = KeyKind::eddsa;
    key.bits = curve == TLX_CURVE_ED25519 ? 255 : 448;
    key.eddsa.reset(binary_to_EDDSA_KEY(curve, octets.data(), size_of(octets)));
    return key.eddsa != nullptr ? Rule::kNone : Rule::kNoMemory;
}

/// p, q and g of DSA or of KCDSA, and the public key y.
struct GroupNumbers {
    Owned<BIGINT> p;
    Owned<BIGINT> q;
    Owned<BIGINT> g;
    Owned<BIGINT> y;
};

// Dss-Parms ::= SEQUENCE { p INTEGER, q INTEGER, g INTEGER } (RFC 3279, section 2.3.2), and the same of KCDSA
// DSAPublicKey ::= INTEGER
Rule read_group(const AlgorithmView &algorithm, Bytes octets, GroupNumbers &numbers) noexcept {
    StrictCursor key(octets);
    Bytes contents;
    if (!next_number(key, contents) || !key.at_end()) return Rule::kBadPublicKey;
    numbers.y = make_number(contents);
    if (!numbers.y) return Rule::kNoMemory;
    if (!algorithm.has_parameters) return Rule::kNone;
    StrictCursor members;
    if (!open_whole(algorithm.parameters, id::kSequence, members)) return Rule::kBadPublicKey;
    for (Owned<BIGINT> *number : {&numbers.p, &numbers.q, &numbers.g}) {
        if (!next_number(members, contents)) return Rule::kBadPublicKey;
        *number = make_number(contents);
        if (!*number) return Rule::kNoMemory;
    }
    return members.at_end() ? Rule::kNone : Rule::kBadPublicKey;
}

Rule make_dsa(const AlgorithmView &algorithm, Bytes octets, PublicKey &key) noexcept {
    GroupNumbers numbers;
    if (const Rule rule = read_group(algorithm, octets, numbers); rule != Rule::kNone) return rule;
    key.kind = KeyKind::dsa;
    if (!algorithm.has_parameters) {
        key.dsa_public = std::move(numbers.y);
        return Rule::kNone;
    }
    key.bits = get_BIGINT_bits(numbers.p.get());
    key.dsa.reset(new_DSA_KEY(numbers.p.get(), numbers.q.get(), numbers.g.get(), numbers.y.get()));
    return key.dsa != nullptr ? Rule::kNone : Rule::kNoMemory;
}

Rule make_kcdsa(const AlgorithmView &algorithm, Bytes octets, PublicKey &key) noexcept {
    GroupNumbers numbers;
    if (!algorithm.has_parameters) return Rule::kBadPublicKey;
    if (const Rule rule = read_group(algorithm, octets, numbers); rule != Rule::kNone) return rule;
    key.kind = KeyKind::kcdsa;
    key.bits = get_BIGINT_bits(numbers.p.get());
    key.kcdsa.reset(new_KCDSA());
    const bool set =
        key.kcdsa != nullptr &&
        set_KCDSA_params(key.kcdsa.get(), numbers.p.get(), numbers.q.get(), numbers.g.get()) == 0 &&
        set_KCDSA_public(key.kcdsa.get(), numbers.y.get()) == 0;
    return set ? Rule::kNone : Rule::kNoMemory;
}

Rule rule_of(u32 status) noexcept {
    switch (status) {
        case 0:
            return Rule::kNone;
        case TLX_RSA_BAD_SIGNATURE:
            return Rule::kSignatureWrong;
        case TLX_RSA_BAD_KEY:
            return Rule::kBrokenKey;
        default:
            return Rule::kNoMemory;
    }
}

// RFC 4055, section 3.3: the digests are those of the key, and the salt is not shorter.
bool is_within_limits(const PublicKey &key, const SignatureAlgorithm &algorithm) noexcept {
    const SignatureAlgorithm &limits = key.pss_limits;
    return !key.has_pss_limits ||
           (limits.digest_id == algorithm.digest_id && limits.mgf_digest_id == algorithm.mgf_digest_id &&
            limits.salt_length <= algorithm.salt_length);
}

// Copies of a unit share what it computed, so that one with other parameters costs little.
/// Calls verify(unit, mode) with the unit that verifies under an algorithm.
template <typename Verify>
Rule with_rsa_unit(const PublicKey &key, const SignatureAlgorithm &algorithm, Verify verify) noexcept {
    if (!algorithm.is_pss) return rule_of(verify(key.rsa.get(), TLX_RSA_MODE_PKCS1));
    const std::unique_ptr<RSA_UNIT, FreeWith<free_RSA_UNIT>> unit(dup_RSA_UNIT(key.rsa.get()));
    if (unit == nullptr ||
        set_RSA_UNIT_PSS(unit.get(), algorithm.mgf_digest_id, algorithm.salt_length) != 0) {
        return Rule::kNoMemory;
    }
    return rule_of(verify(unit.get(), TLX_RSA_MODE_PSS));
}

// ECDSA-Sig-Value ::= SEQUENCE { r INTEGER, s INTEGER } (RFC 5480, section 2.2.3), and the same of DSA
bool read_two_numbers(Bytes signature, Bytes &r, Bytes &s) noexcept {
    StrictCursor members;
    return open_whole(signature, id::kSequence, members) && next_number(members, r) &&
           next_number(members, s) && members.at_end();
}

// KCDSASignatureValue ::= SEQUENCE { r BIT STRING, s INTEGER }
bool read_kcdsa_numbers(Bytes signature, Bytes &r, Bytes &s) noexcept {
    StrictCursor members;
    Bytes bits;
    if (!open_whole(signature, id::kSequence, members)) return false;
    return members.next(id::kBitString, bits) && read_octet_bits(bits, r) && next_number(members, s) &&
           members.at_end();
}

}  // namespace

Rule make_key(const AlgorithmView &algorithm, Bytes octets, PublicKey &key) noexcept {
    const Bytes oid = algorithm.oid;
    key = {};
    if (is_oid_of(oid, "\x2A\x86\x48\x86\xF7\x0D\x01\x01\x01")) {  // rsaEncryption
        return has_null_parameters(algorithm) ? make_rsa(octets, key) : Rule::kBadPublicKey;
    }
    if (is_oid_of(oid, "\x2A\x86\x48\x86\xF7\x0D\x01\x01\x0A")) {  // id-RSASSA-PSS
        key.is_pss_only = true;
        key.has_pss_limits = algorithm.has_parameters;
        const bool right = !key.has_pss_limits || read_pss_parameters(algorithm.parameters, key.pss_limits);
        return right ? make_rsa(octets, key) : Rule::kBadPublicKey;
    }
    if (is_oid_of(oid, kEcPublicKeyOid)) return make_ecdsa(algorithm, octets, key);
    if (is_oid_of(oid, "\x2B\x65\x70")) return make_eddsa(algorithm, octets, TLX_CURVE_ED25519, key);
    if (is_oid_of(oid, "\x2B\x65\x71")) return make_eddsa(algorithm, octets, TLX_CURVE_ED448, key);
    if (is_oid_of(oid, "\x2A\x86\x48\xCE\x38\x04\x01")) return make_dsa(algorithm, octets, key);
    if (is_oid_of(oid, "\x2A\x83\x1A\x8C\x9A\x44\x01\x15")) return make_kcdsa(algorithm, octets, key);
    return Rule::kUnknownKey;
}

Rule inherit_parameters(const PublicKey &from, PublicKey &key) noexcept {
    if (from.dsa == nullptr || key.dsa_public == nullptr) return Rule::kBrokenKey;
    key.dsa.reset(new_DSA_KEY(get_DSA_KEY_number(from.dsa.get(), TLX_DSA_P),
                              get_DSA_KEY_number(from.dsa.get(), TLX_DSA_Q),
                              get_DSA_KEY_number(from.dsa.get(), TLX_DSA_G), key.dsa_public.get()));
    key.bits = from.bits;
    return key.dsa != nullptr ? Rule::kNone : Rule::kNoMemory;
}

Rule check_key(const PublicKey &key) noexcept {
    if (key.ecdsa != nullptr) return rule_of(check_ECDSA_KEY(key.ecdsa.get()));
    if (key.dsa != nullptr) return rule_of(check_DSA_KEY(key.dsa.get()));
    return Rule::kNone;
}

bool is_algorithm_of(const PublicKey &key, const SignatureAlgorithm &algorithm) noexcept {
    if (key.kind != algorithm.kind) return false;
    switch (key.kind) {
        case KeyKind::rsa:
            return algorithm.is_pss ? is_within_limits(key, algorithm) : !key.is_pss_only;
        case KeyKind::eddsa:
            return get_EDDSA_KEY_curve(key.eddsa.get()) == algorithm.curve;
        default:
            return key.kind != KeyKind::none;
    }
}

Rule verify_signature(const PublicKey &key, const SignatureAlgorithm &algorithm, Bytes octets,
                      Bytes signature) noexcept {
    if (!is_algorithm_of(key, algorithm)) return Rule::kAlgorithmNotOfKey;
    Bytes r;
    Bytes s;
    switch (key.kind) {
        case KeyKind::rsa:
            return with_rsa_unit(key, algorithm, [&](const RSA_UNIT *unit, u32 mode) {
                return verify_RSA(unit, algorithm.digest_id, mode, octets.data(), size_of(octets),
                                  signature.data(), size_of(signature));
            });
        case KeyKind::eddsa:
            return rule_of(verify_EDDSA_ex(key.eddsa.get(), octets.data(), octets.size(), signature.data(),
                                           size_of(signature)));
        case KeyKind::ecdsa:
            if (!read_two_numbers(signature, r, s)) return Rule::kSignatureWrong;
            return rule_of(verify_ECDSA(key.ecdsa.get(), algorithm.digest_id, octets.data(), size_of(octets),
                                        r.data(), size_of(r), s.data(), size_of(s)));
        case KeyKind::dsa:
            if (key.dsa == nullptr) return Rule::kBrokenKey;
            if (!read_two_numbers(signature, r, s)) return Rule::kSignatureWrong;
            return rule_of(verify_DSA(key.dsa.get(), algorithm.digest_id, octets.data(), size_of(octets),
                                      r.data(), size_of(r), s.data(), size_of(s)));
        case KeyKind::kcdsa:
            if (!read_kcdsa_numbers(signature, r, s)) return Rule::kSignatureWrong;
            return rule_of(verify_KCDSA_data(key.kcdsa.get(), algorithm.digest_id, octets.data(),
                                             size_of(octets), r.data(), size_of(r), s.data(), size_of(s)));
        default:
            return Rule::kAlgorithmNotOfKey;
    }
}

Rule verify_signature_of_digest(const PublicKey &key, const SignatureAlgorithm &algorithm, Bytes digest,
                                Bytes signature) noexcept {
    if (!is_algorithm_of(key, algorithm)) return Rule::kAlgorithmNotOfKey;
    if (key.kind == KeyKind::rsa) {
        return with_rsa_unit(key, algorithm, [&](const RSA_UNIT *unit, u32 mode) {
            return verify_RSA_digest(unit, algorithm.digest_id, mode, digest.data(), size_of(digest),
                                     signature.data(), size_of(signature));
        });
    }
    Bytes r;
    Bytes s;
    switch (key.kind) {
        case KeyKind::ecdsa:
            if (!read_two_numbers(signature, r, s)) return Rule::kSignatureWrong;
            return rule_of(verify_ECDSA_digest(key.ecdsa.get(), digest.data(), size_of(digest), r.data(),
                                               size_of(r), s.data(), size_of(s)));
        case KeyKind::dsa:
            if (key.dsa == nullptr) return Rule::kBrokenKey;
            if (!read_two_numbers(signature, r, s)) return Rule::kSignatureWrong;
            return rule_of(verify_DSA_digest(key.dsa.get(), digest.data(), size_of(digest), r.data(),
                                             size_of(r), s.data(), size_of(s)));
        case KeyKind::kcdsa:
            if (!read_kcdsa_numbers(signature, r, s)) return Rule::kSignatureWrong;
            return rule_of(verify_KCDSA_digest(key.kcdsa.get(), algorithm.digest_id, digest.data(),
                                               size_of(digest), r.data(), size_of(r), s.data(), size_of(s)));
        default:
            return Rule::kAlgorithmNotOfKey;
    }
}

}  // namespace tlx
