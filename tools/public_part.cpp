#include "public_part.hpp"

#include "element.hpp"
#include "failure.hpp"

namespace tool {

namespace {

constexpr char kEcPublicKey[] = "1.2.840.10045.2.1";

/// The key to compute with; null when it is of a kind that nobody here computes with, or none at all.
Key unit_of(const P8_PRIV_KEY_INFO *info) {
    ASYMMETRIC_KEY *key = nullptr;
    (void)read_PRIV_KEY(info, &key);
    return Key(key);
}

/// Sets the algorithm of a key of another kind.
void set_algorithm(X509_PUBKEY *key, const X509_ALGO_IDENTIFIER *algorithm) {
    free_OBJECT_IDENTIFIER(key->algorithm);
    free_ASN1_UNIT(key->parameters);
    key->algorithm = dup_OBJECT_IDENTIFIER(get_X509_ALGO_IDENTIFIER_OID(algorithm));
    key->parameters = dup_ASN1_UNIT(get_X509_ALGO_IDENTIFIER_parameters(algorithm));
}

/// A key of RSASSA-PSS, whose octets are those of an RSA key (RFC 8017).
void set_pss(X509_PUBKEY *key, Octets octets) {
    void *record = nullptr;
    (void)readDER_from_Buffer(&record, TLX_DECODER(Seq_to_PKCS1_RSA_PRIVATE_KEY), octets.data(),
                              static_cast<uint32_t>(octets.size()));
    const Owned<PKCS1_RSA_PRIVATE_KEY, free_PKCS1_RSA_PRIVATE_KEY> numbers(
        static_cast<PKCS1_RSA_PRIVATE_KEY *>(record));
    const auto unit = made<RsaKey>(new_RSA_UNIT());
    if (!numbers || get_RSA_UNIT_from_PKCS1_RSA_PRIVATE_KEY(unit.get(), numbers.get()) != 0) return;
    must(set_X509_PUBKEY_rsa(key, unit.get()));
}

/// ECPrivateKey ::= SEQUENCE {  -- RFC 5915
///     version        INTEGER { ecPrivkeyVer1(1) },
///     privateKey     OCTET STRING,
///     parameters [0] ECParameters OPTIONAL,
///     publicKey  [1] BIT STRING OPTIONAL }
void set_ec(X509_PUBKEY *key, Octets octets) {
    constexpr uint8_t kParameters = 0xA0;
    constexpr uint8_t kPublicKey = 0xA1;
    for (const Octets &member : children_of(octets)) {
        const Octets value = child_of(member, 0);
        if (value.empty()) continue;
        if (member[0] == kParameters && key->parameters == nullptr) {
            key->parameters = decodeToDERSequence_n(value.data(), static_cast<uint32_t>(value.size()));
        }
        if (member[0] == kPublicKey && value[0] == TLX_TAG_BIT_STRING) {
            free_ASN1_STRING(key->subjectPublicKey);
            key->subjectPublicKey = decodeToBERBitString(value.data());
        }
    }
}

const BIGINT *modulus_of(const ASYMMETRIC_KEY *key) {
    return get_RSA_UNIT_number(static_cast<const RSA_UNIT *>(key->key), TLX_RSA_N);
}

/// Whether a private key of KCDSA gives the public key y.
bool gives_public_key(const ASYMMETRIC_KEY *key, const BIGINT *y) {
    const auto unit = made<Owned<KCDSA, free_KCDSA>>(dup_KCDSA(static_cast<const KCDSA *>(key->key)));
    return compute_KCDSA_public(unit.get()) == 0 &&
           cmp_BIGINT(get_KCDSA_number(unit.get(), TLX_KCDSA_Y), y) == 0;
}

/// Whether the public key of a private one on a curve is that of a certificate.
bool gives_public_key(const ASYMMETRIC_KEY *key, const X509_PUBKEY *certified) {
    const auto given = made<PublicKey>(new_X509_PUBKEY());
    return set_X509_PUBKEY_key(given.get(), key) == 0 && cmp_X509_PUBKEY(given.get(), certified) == 0;
}

/// Whether a private key is that of a certificate.
bool belongs_to(const ASYMMETRIC_KEY *key, const X509_CERT *cert) {
    const bool is_on_curve = key->kind != TLX_KEY_RSA && key->kind != TLX_KEY_KCDSA;
    if (is_on_curve) return gives_public_key(key, get_X509_SPKI(cert));
    const ASYMMETRIC_KEY *certified = get_X509_PUBKEY_key(get_X509_SPKI(cert));
    if (certified == nullptr || certified->kind != key->kind) return false;
    if (key->kind == TLX_KEY_RSA) return cmp_BIGINT(modulus_of(key), modulus_of(certified)) == 0;
    return gives_public_key(key, get_KCDSA_number(static_cast<const KCDSA *>(certified->key), TLX_KCDSA_Y));
}

}  // namespace

PublicKey public_part(const P8_PRIV_KEY_INFO *info) {
    auto key = made<PublicKey>(new_X509_PUBKEY());
    if (const Key unit = unit_of(info)) {
        if (set_X509_PUBKEY_key(key.get(), unit.get()) == 0) return key;
        throw Failure("the numbers of the key make no key");
    }
    const X509_ALGO_IDENTIFIER *algorithm = info->otherAlgorithm;
    const bool is_pss =
        index_from_OBJECT_IDENTIFIER(get_X509_ALGO_IDENTIFIER_OID(algorithm)) == TLX_OID_RSASSA_PSS;
    if (is_pss) set_pss(key.get(), octets_of(info->otherKey));
    set_algorithm(key.get(), algorithm);
    if (dotted_text(key->algorithm) == kEcPublicKey) set_ec(key.get(), octets_of(info->otherKey));
    return key;
}

bool may_belong_to(const P8_PRIV_KEY_INFO *info, const X509_CERT *cert) {
    const PublicKey key = public_part(info);
    const X509_PUBKEY *certified = get_X509_SPKI(cert);
    const bool is_known = key->subjectPublicKey != nullptr && !octets_of(key->subjectPublicKey).empty();
    if (is_known) return cmp_X509_PUBKEY(key.get(), certified) == 0;
    return dotted_text(key->algorithm) == dotted_text(get_X509_PUBKEY_algorithm(certified));
}

void expect_key_of(const LoadedCertificate &owner, const std::string &path, const ASYMMETRIC_KEY *key) {
    if (!belongs_to(key, owner.cert.get())) throw Failure(path + ": is not the key of " + owner.source);
}

}  // namespace tool
