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

}  // namespace tool
