// PrivateKeyInfo (RFC 5208, section 5) with keys of RSA, of KCDSA (TTAK.KO-12.0001) and of other kinds.
#include <tlxpki/objects.h>

#include "asn1/oid_lookup.hpp"
#include "der/list_items.hpp"
#include "der/oid_text.hpp"
#include "keys/key_file_records.hpp"

using namespace tlx;

namespace {

using Info = P8_PRIV_KEY_INFO;
using SecretOctets = Secret<Joined>;
using OwnedRsa = std::unique_ptr<RSA_UNIT, FreeWith<free_RSA_UNIT>>;
using OwnedKcdsa = std::unique_ptr<KCDSA, FreeWith<free_KCDSA>>;
using OwnedSecret = std::unique_ptr<OCTET_STRING, FreeWith<SecretOctets::free>>;

/// What Seq_to_P8_PRIV_KEY_INFO answers when a parameter of KCDSA is missing.
constexpr u32 kParameterMissing = 1;

// ---- Reading ----

/// Takes the next INTEGER; null when there is none.
Owned<BIGINT> next_number(Cursor &members) noexcept {
    Element integer;
    if (!members.next(TLX_TAG_INTEGER, integer)) return nullptr;
    return Owned<BIGINT>(decode_integer(integer.contents));
}

/// Makes an empty holder own a unit. False without one.
template <typename Unit>
bool hold(ASYMMETRIC_KEY &key, u32 kind, Unit unit) noexcept {
    if (!unit) return false;
    key = {kind, unit.release()};
    return true;
}

// The members of RSAPrivateKey after its version, which is of no account.
constexpr BIGINT *PKCS1_RSA_PRIVATE_KEY::*kRsaNumbers[] = {
    &PKCS1_RSA_PRIVATE_KEY::modulus,         &PKCS1_RSA_PRIVATE_KEY::publicExponent,
    &PKCS1_RSA_PRIVATE_KEY::privateExponent, &PKCS1_RSA_PRIVATE_KEY::prime1,
    &PKCS1_RSA_PRIVATE_KEY::prime2,          &PKCS1_RSA_PRIVATE_KEY::exponent1,
    &PKCS1_RSA_PRIVATE_KEY::exponent2,       &PKCS1_RSA_PRIVATE_KEY::coefficient};

bool read_rsa(Bytes octets, ASYMMETRIC_KEY &key) noexcept {
    Element sequence;
    Element version;
    const Owned<PKCS1_RSA_PRIVATE_KEY> numbers(new_PKCS1_RSA_PRIVATE_KEY());
    if (!numbers || !Cursor(octets).next(TLX_TAG_SEQUENCE, sequence)) return false;
    Cursor members(sequence);
    if (!members.next(version)) return false;
    for (BIGINT *PKCS1_RSA_PRIVATE_KEY::*each : kRsaNumbers) {
        numbers.get()->*each = next_number(members).release();
    }
    OwnedRsa unit(new_RSA_UNIT());
    if (!unit || get_RSA_UNIT_from_PKCS1_RSA_PRIVATE_KEY(unit.get(), numbers.get()) != 0) return false;
    return hold(key, TLX_KEY_RSA, std::move(unit));
}

// The parameters are SEQUENCE { p INTEGER, q INTEGER, g INTEGER }, the octets INTEGER x.
u32 read_kcdsa(Cursor algorithm, Bytes octets, ASYMMETRIC_KEY &key) noexcept {
    Element parameters;
    if (!algorithm.next(TLX_TAG_SEQUENCE, parameters)) return kFieldFailed;
    Cursor members(parameters);
    Owned<BIGINT> numbers[3];
    for (Owned<BIGINT> &number : numbers) {
        number = next_number(members);
        if (!number) return kParameterMissing;
    }
    Cursor key_octets(octets);
    const Owned<BIGINT> x = next_number(key_octets);
    OwnedKcdsa unit(new_KCDSA());
    if (!x || !unit ||
        set_KCDSA_params(unit.get(), numbers[0].get(), numbers[1].get(), numbers[2].get()) != 0 ||
        set_KCDSA_private(unit.get(), x.get()) != 0) {
        return kFieldFailed;
    }
    return hold(key, TLX_KEY_KCDSA, std::move(unit)) ? 0 : kFieldFailed;
}

/// privateKeyAlgorithm and privateKey. By hand because the one says what the other holds.
struct KeyMembers {
    OwnedMember<Info, KeyUnit> key{&Info::privateKey};
    OwnedMember<Info, Nested<X509_ALGO_IDENTIFIER>> algorithm{&Info::otherAlgorithm};
    OwnedMember<Info, SecretOctets> octets{&Info::otherKey};

    void clear(Info &record) const noexcept {
        key.clear(record);
        algorithm.clear(record);
        octets.clear(record);
    }
    [[nodiscard]] bool copy(Info &to, const Info &from) const noexcept {
        return key.copy(to, from) && algorithm.copy(to, from) && octets.copy(to, from);
    }
    [[nodiscard]] u32 read(Cursor &children, Info &record) const noexcept {
        clear(record);
        record.privateKey = new_ASYMMETRIC_KEY();
        Element identifier;
        Element name;
        Element held;
        if (record.privateKey == nullptr || !children.next(TLX_TAG_SEQUENCE, identifier)) return kFieldFailed;
        Cursor members(identifier);
        if (!members.next(TLX_TAG_OBJECT_IDENTIFIER, name)) return kFieldFailed;
        OCTET_STRING *joined = nullptr;
        if (!children.next(TLX_TAG_OCTET_STRING, held) || SecretOctets::decode(held, &joined) != 0) {
            return kFieldFailed;
        }
        OwnedSecret secret(joined);
        char text[kMaxDottedText + 1];
        u32 length = 0;
        if (!oid_to_text(name.contents, text, length)) return kFieldFailed;
        switch (oid_index({text, length})) {
            case oid::kRsaEncryption:
                return read_rsa(octets_of(joined), *record.privateKey) ? 0 : kFieldFailed;
            case oid::kKcdsa1:
                return read_kcdsa(members, octets_of(joined), *record.privateKey);
            default:
                record.otherKey = secret.release();
                return Nested<X509_ALGO_IDENTIFIER>::decode(identifier, &record.otherAlgorithm);
        }
    }
};

/// attributes [0]. By hand because it may be empty, and because no status of a member goes up.
struct AttributesField : Field<Info, Attributes> {
    [[nodiscard]] u32 read(Cursor &children, Info &record) const noexcept {
        Element child;
        Cursor ahead = children;
        const bool empty = ahead.next(child) && accepts(child) && child.contents.empty();
        if (!empty) return Field::read(children, record) == 0 ? 0 : kFieldFailed;
        clear(record);
        return 0;
    }
};

// PrivateKeyInfo ::= SEQUENCE {
//     version              Version,
//     privateKeyAlgorithm  PrivateKeyAlgorithmIdentifier,
//     privateKey           PrivateKey,
//     attributes       [0] IMPLICIT Attributes OPTIONAL }
constexpr auto kPrivateKeyInfo = record<Info>(any_count(), field<Integer>(&Info::version), KeyMembers{},
                                              AttributesField{implicit<Attributes>(0, &Info::attributes)});

// ---- Writing ----

void write_rsa(Encoder &algorithm, Encoder &key, const RSA_UNIT *unit) noexcept {
    PKCS1_RSA_PRIVATE_KEY *made = nullptr;
    if (set_RSA_UNIT_to_PKCS1_RSA_PRIVATE_KEY(unit, &made) != 0) return key.fail();
    const Owned<PKCS1_RSA_PRIVATE_KEY> numbers(made);
    Codec<PKCS1_RSA_PRIVATE_KEY>::encode(key, numbers.get());
    const auto sequence = algorithm.sequence();
    algorithm.oid(OID_LIST(oid::kRsaEncryption)->dotted);
    algorithm.null();
}

void write_kcdsa(Encoder &algorithm, Encoder &key, const KCDSA *unit) noexcept {
    key.integer(get_KCDSA_number(unit, TLX_KCDSA_X));
    const auto sequence = algorithm.sequence();
    algorithm.oid(OID_LIST(oid::kKcdsa1)->dotted);
    const auto parameters = algorithm.sequence();
    for (const TLX_KCDSA_NUMBER each : {TLX_KCDSA_P, TLX_KCDSA_Q, TLX_KCDSA_G}) {
        algorithm.integer(get_KCDSA_number(unit, each));
    }
}

void write_key(Encoder &algorithm, Encoder &key, const Info &info) noexcept {
    const u32 kind = info.privateKey == nullptr ? 0 : info.privateKey->kind;
    if (kind == TLX_KEY_RSA) return write_rsa(algorithm, key, static_cast<RSA_UNIT *>(info.privateKey->key));
    if (kind == TLX_KEY_KCDSA) return write_kcdsa(algorithm, key, static_cast<KCDSA *>(info.privateKey->key));
    if (kind != 0 || info.otherKey == nullptr) return key.fail();
    Codec<X509_ALGO_IDENTIFIER>::encode(algorithm, info.otherAlgorithm);
    const Bytes octets = octets_of(info.otherKey);
    key.buffer().reserve(octets.size());
    key.raw(octets);
}

}  // namespace

TLX_DEFINE_RECORD_LIFE(P8_PRIV_KEY_INFO, kPrivateKeyInfo)
TLX_DEFINE_CODEC_DECODE(P8_PRIV_KEY_INFO, kPrivateKeyInfo)
TLX_DEFINE_RECORD_DECODER(P8_PRIV_KEY_INFO)

P8_PRIV_KEY_INFO *new_P8_PRIV_KEY_INFO(void) {
    Owned<Info> info(TLX_NEW(P8_PRIV_KEY_INFO));
    if (!info) return nullptr;
    info->version = new_BIGINT();
    info->privateKey = new_ASYMMETRIC_KEY();
    info->attributes = new_X509_ATTRIBUTES();
    const bool complete =
        info->version != nullptr && info->privateKey != nullptr && info->attributes != nullptr;
    return complete ? info.release() : nullptr;
}

// By hand because the key has its room made beforehand and its octets wiped.
void Codec<P8_PRIV_KEY_INFO>::encode(Encoder &out, const Info *info, u8 tag) noexcept {
    if (info == nullptr) return out.fail();
    Encoder algorithm;
    SecretEncoder key;
    Encoder attributes;
    write_key(algorithm, key, *info);
    if (get_STACK_count(info->attributes) > 0) {
        Attributes::encode(attributes, info->attributes, context(0));
    }
    if (!algorithm.ok() || !key.ok() || !attributes.ok()) return out.fail();
    constexpr std::size_t kHeaders = 64;
    out.buffer().reserve(get_BIGINT_der_length(info->version) + algorithm.bytes().size() +
                         key.bytes().size() + attributes.bytes().size() + kHeaders);
    const auto sequence = out.nest(tag);
    out.integer(info->version);
    out.raw(algorithm.bytes());
    out.primitive(TLX_TAG_OCTET_STRING, key.bytes());
    out.raw(attributes.bytes());
}

uint32_t P8_PRIV_KEY_INFO_to_Seq(const P8_PRIV_KEY_INFO *info, ASN1_UNIT **out) {
    if (info == nullptr || out == nullptr) return 0x4C040049;
    SecretEncoder encoder;
    Codec<P8_PRIV_KEY_INFO>::encode(encoder, info);
    return hand_over(encoder, out) ? 0 : 0x4C040103;
}

uint32_t gen_P8_PRIV_KEY_INFO(const ASYMMETRIC_KEY *key, P8_PRIV_KEY_INFO **out) {
    if (key == nullptr || out == nullptr) return 0x4C070049;
    if (key->key == nullptr || (key->kind != TLX_KEY_RSA && key->kind != TLX_KEY_KCDSA)) return 0x4C070048;
    Owned<Info> made(new_P8_PRIV_KEY_INFO());
    if (!made || set_PRIV_KEY_KeyParams(made.get(), key) != 0) return 0x4C07003C;
    deliver(std::move(made), out);
    return 0;
}

uint32_t set_PRIV_KEY_version(P8_PRIV_KEY_INFO *info, uint8_t version) {
    if (info == nullptr) return 1;
    const Owned<BIGINT> number(new_BIGINT());
    if (!number || set_BIGINT_word(number.get(), version) != 0) return 1;
    return replace_by_copy<dup_BIGINT, free_BIGINT>(info->version, number.get());
}

BIGINT *get_PRIV_KEY_version(const P8_PRIV_KEY_INFO *info) {
    return info == nullptr ? nullptr : info->version;
}

uint32_t set_PRIV_KEY_KeyParams(P8_PRIV_KEY_INFO *info, const ASYMMETRIC_KEY *key) {
    if (info == nullptr || key == nullptr || key->key == nullptr) return 1;
    if (key->kind != TLX_KEY_RSA && key->kind != TLX_KEY_KCDSA) return 1;
    ASYMMETRIC_KEY *copy = dup_ASYMMETRIC_KEY(key);
    if (copy == nullptr) return 1;
    KeyMembers{}.clear(*info);
    info->privateKey = copy;
    return 0;
}

BIT_STRING *get_PRIV_KEY_random(const P8_PRIV_KEY_INFO *info) {
    if (info == nullptr) return nullptr;
    for (u32 i = 0; i < get_STACK_count(info->attributes); ++i) {
        const auto *attribute = item_at<X509_ATTRIBUTE>(info->attributes, static_cast<i32>(i));
        if (attribute == nullptr || oid_index(text_of(attribute->type)) != TLX_OID_KISA_RANDOM_NUM) continue;
        const auto *value = item_at<X509_ATTRIBUTE_DATA>(attribute->values, 0);
        if (value != nullptr && value->type == TLX_TAG_BIT_STRING) return value->value.string;
    }
    return nullptr;
}
