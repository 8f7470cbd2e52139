// RSA keys of PKCS #1 (RFC 8017, appendix A.1), and their way to and from RSA units.
#include "keyinfo/key_records.hpp"

#include <array>

using namespace tlx;

namespace {

using PublicKey = PKCS1_RSA_PUBLIC_KEY;
using PrivateKey = PKCS1_RSA_PRIVATE_KEY;

// RSAPublicKey ::= SEQUENCE {
//     modulus           INTEGER,  -- n
//     publicExponent    INTEGER   -- e
// }
constexpr auto kPublicKey = record<PublicKey>(any_count(), field<Integer>(&PublicKey::modulus),
                                              field<Integer>(&PublicKey::publicExponent))
                                .but(OnFailure::emptied);

// RSAPrivateKey ::= SEQUENCE {
//     version           Version,
//     modulus           INTEGER,  -- n
//     publicExponent    INTEGER,  -- e
//     privateExponent   INTEGER,  -- d
//     prime1            INTEGER,  -- p
//     prime2            INTEGER,  -- q
//     exponent1         INTEGER,  -- d mod (p-1)
//     exponent2         INTEGER,  -- d mod (q-1)
//     coefficient       INTEGER,  -- (inverse of q) mod p
//     otherPrimeInfos   OtherPrimeInfos OPTIONAL  -- never read or written
// }
constexpr auto kPrivateKey =
    record<PrivateKey>(any_count(), field<Integer>(&PrivateKey::version),
                       field<Integer>(&PrivateKey::modulus), field<Integer>(&PrivateKey::publicExponent),
                       field<Integer>(&PrivateKey::privateExponent), field<Integer>(&PrivateKey::prime1),
                       field<Integer>(&PrivateKey::prime2), field<Integer>(&PrivateKey::exponent1),
                       field<Integer>(&PrivateKey::exponent2), field<Integer>(&PrivateKey::coefficient),
                       kept<Node>(&PrivateKey::otherPrimeInfos))
        .but(OnFailure::emptied);

/// Which number of a unit a member holds.
struct UnitNumber {
    BIGINT *PrivateKey::*member;
    TLX_RSA_NUMBER number;
};
constexpr std::array kUnitNumbers = {
    UnitNumber{&PrivateKey::modulus, TLX_RSA_N},         UnitNumber{&PrivateKey::publicExponent, TLX_RSA_E},
    UnitNumber{&PrivateKey::privateExponent, TLX_RSA_D}, UnitNumber{&PrivateKey::prime1, TLX_RSA_P},
    UnitNumber{&PrivateKey::prime2, TLX_RSA_Q},          UnitNumber{&PrivateKey::exponent1, TLX_RSA_DP},
    UnitNumber{&PrivateKey::exponent2, TLX_RSA_DQ},      UnitNumber{&PrivateKey::coefficient, TLX_RSA_QINV},
};

/// A node without contents reads like a SEQUENCE without children.
Element view_or_empty(const ASN1_UNIT *node) noexcept {
    Element element;
    if (!view_node(node, element)) return {};
    return element;
}

/// The RSAPublicKey itself, which a SubjectPublicKeyInfo holds in its second child.
///
//     SubjectPublicKeyInfo ::= SEQUENCE {
//         algorithm            AlgorithmIdentifier,
//         subjectPublicKey     BIT STRING }
bool find_public_key(const Element &element, Element &key) noexcept {
    Cursor children(element);
    Element first;
    Element bits;
    if (!children.next(first) || first.tag >= kContextSpecific) return false;
    if (first.number() == TLX_TAG_INTEGER) {
        key = element;
        return true;
    }
    if (first.number() != TLX_TAG_SEQUENCE || !children.next(TLX_TAG_BIT_STRING, bits)) return false;
    return !bits.contents.empty() && Cursor(bits.contents.subspan(1)).next(TLX_TAG_SEQUENCE, key);
}

/// Room for the whole encoding of the numbers, with what is around them.
std::size_t room_for(const PrivateKey &key) noexcept {
    constexpr std::size_t kMostHeader = 6;
    std::size_t size = 64 + get_BIGINT_der_length(key.version) + kMostHeader;
    for (const UnitNumber &each : kUnitNumbers) {
        size += get_BIGINT_der_length(key.*each.member) + kMostHeader;
    }
    return size;
}

BIGINT *number_or_zero(const RSA_UNIT *unit, TLX_RSA_NUMBER which) noexcept {
    const BIGINT *number = get_RSA_UNIT_number(unit, which);
    return number != nullptr ? dup_BIGINT(number) : new_BIGINT();
}

bool copy_numbers(const RSA_UNIT *unit, PrivateKey &key) noexcept {
    key.version = new_BIGINT();
    key.otherPrimeInfos = new_ASN1_UNIT();
    bool complete = key.version != nullptr && key.otherPrimeInfos != nullptr;
    for (const UnitNumber &each : kUnitNumbers) {
        key.*each.member = complete ? number_or_zero(unit, each.number) : nullptr;
        complete = complete && key.*each.member != nullptr;
    }
    return complete;
}

bool copy_numbers(const RSA_UNIT *unit, PublicKey &key) noexcept {
    key.modulus = number_or_zero(unit, TLX_RSA_N);
    key.publicExponent = number_or_zero(unit, TLX_RSA_E);
    return key.modulus != nullptr && key.publicExponent != nullptr;
}

/// Fills the caller's record, cleaned, or a new one from a unit. On failure the caller's is cleaned again.
template <typename Key>
bool from_unit(const RSA_UNIT *unit, Key **key, Key *(*make)(), void (*clean)(Key *)) noexcept {
    clean(*key);
    OutRecord<Key> record(key, make);
    if (!record) return false;
    if (!copy_numbers(unit, *record.get())) {
        clean(record.get());
        return false;
    }
    record.commit();
    return true;
}

/// Whether the key has what the Chinese remainder theorem needs.
bool has_primes(const PrivateKey &key) noexcept {
    for (const BIGINT *number : {key.prime1, key.prime2, key.exponent1, key.exponent2, key.coefficient}) {
        if (is_BIGINT_zero(number) != 0) return false;
    }
    return true;
}

bool is_complete(const PrivateKey &key) noexcept {
    for (const UnitNumber &each : kUnitNumbers) {
        if (key.*each.member == nullptr) return false;
    }
    return true;
}

}  // namespace

// ---- Records ----

TLX_DEFINE_RECORD_NEW(PKCS1_RSA_PUBLIC_KEY)
TLX_DEFINE_RECORD_LIFE(PKCS1_RSA_PUBLIC_KEY, kPublicKey)
TLX_DEFINE_CODEC_ENCODE(PKCS1_RSA_PUBLIC_KEY, kPublicKey)
TLX_DEFINE_RECORD_ENCODER(PKCS1_RSA_PUBLIC_KEY)

// By hand because a SubjectPublicKeyInfo around the key is read as well.
u32 Codec<PKCS1_RSA_PUBLIC_KEY>::decode(const Element &element, PKCS1_RSA_PUBLIC_KEY **out) noexcept {
    Element key;
    if (find_public_key(element, key)) {
        return decode_record(kPublicKey, key, out, codes::PKCS1_RSA_PUBLIC_KEY.decode);
    }
    clean_PKCS1_RSA_PUBLIC_KEY(*out);
    return 0x49080000;
}

// A node that cannot be viewed empties the caller's record as well.
uint32_t Seq_to_PKCS1_RSA_PUBLIC_KEY(const ASN1_UNIT *node, PKCS1_RSA_PUBLIC_KEY **out) {
    if (node == nullptr || out == nullptr) return 0x49080049;
    return Codec<PKCS1_RSA_PUBLIC_KEY>::decode(view_or_empty(node), out);
}

TLX_DEFINE_RECORD_NEW(PKCS1_RSA_PRIVATE_KEY)
TLX_DEFINE_RECORD_LIFE(PKCS1_RSA_PRIVATE_KEY, kPrivateKey)
TLX_DEFINE_CODEC_DECODE(PKCS1_RSA_PRIVATE_KEY, kPrivateKey)

uint32_t Seq_to_PKCS1_RSA_PRIVATE_KEY(const ASN1_UNIT *node, PKCS1_RSA_PRIVATE_KEY **out) {
    if (node == nullptr || out == nullptr) return 0x49030049;
    return Codec<PKCS1_RSA_PRIVATE_KEY>::decode(view_or_empty(node), out);
}

// By hand because a private key has its room made beforehand and its octets wiped.
void Codec<PKCS1_RSA_PRIVATE_KEY>::encode(Encoder &out, const PKCS1_RSA_PRIVATE_KEY *key, u8 tag) noexcept {
    if (key == nullptr) return out.fail();
    out.buffer().reserve(room_for(*key));
    kPrivateKey.write(out, *key, tag);
}

uint32_t PKCS1_RSA_PRIVATE_KEY_to_Seq(const PKCS1_RSA_PRIVATE_KEY *key, ASN1_UNIT **out) {
    if (key == nullptr || out == nullptr) return 0x49040049;
    SecretEncoder encoder;
    Codec<PKCS1_RSA_PRIVATE_KEY>::encode(encoder, key);
    return hand_over(encoder, out) ? 0 : 0x49040000;
}

// ---- RSA units ----

uint32_t set_RSA_UNIT_to_PKCS1_RSA_PRIVATE_KEY(const RSA_UNIT *unit, PKCS1_RSA_PRIVATE_KEY **key) {
    if (key == nullptr) return 0x49090000;
    if (unit != nullptr && get_RSA_UNIT_kind(unit) != TLX_RSA_PRIVATE) {
        clean_PKCS1_RSA_PRIVATE_KEY(*key);
        return 0x49090000;
    }
    return from_unit(unit, key, new_PKCS1_RSA_PRIVATE_KEY, clean_PKCS1_RSA_PRIVATE_KEY) ? 0 : 0x49090000;
}

uint32_t set_RSA_UNIT_to_PKCS1_RSA_PUBLIC_KEY(const RSA_UNIT *unit, PKCS1_RSA_PUBLIC_KEY **key) {
    if (key == nullptr) return 0x490A0000;
    if (unit == nullptr) {
        clean_PKCS1_RSA_PUBLIC_KEY(*key);
        return 0x490A0000;
    }
    return from_unit(unit, key, new_PKCS1_RSA_PUBLIC_KEY, clean_PKCS1_RSA_PUBLIC_KEY) ? 0 : 0x490A0000;
}

uint32_t get_RSA_UNIT_from_PKCS1_RSA_PRIVATE_KEY(RSA_UNIT *unit, const PKCS1_RSA_PRIVATE_KEY *key) {
    if (unit == nullptr || key == nullptr || !is_complete(*key)) return 0x490B0000;
    const u32 status =
        has_primes(*key)
            ? set_RSA_UNIT_private(unit, key->modulus, key->publicExponent, key->privateExponent, key->prime1,
                                   key->prime2, key->exponent1, key->exponent2, key->coefficient)
            : set_RSA_UNIT_private(unit, key->modulus, key->publicExponent, key->privateExponent, nullptr,
                                   nullptr, nullptr, nullptr, nullptr);
    return status == 0 ? 0 : 0x490B0000;
}

uint32_t get_RSA_UNIT_from_PKCS1_RSA_PUBLIC_KEY(RSA_UNIT *unit, const PKCS1_RSA_PUBLIC_KEY *key) {
    if (unit == nullptr || key == nullptr) return 0x490C0000;
    return set_RSA_UNIT_public(unit, key->modulus, key->publicExponent) == 0 ? 0 : 0x490C0000;
}
