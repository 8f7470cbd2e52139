#include "describe.hpp"

namespace tool {

namespace {

constexpr char kEcPublicKey[] = "1.2.840.10045.2.1";

/// The identifier in the parameters of an elliptic-curve key; "" when there is none.
std::string curve_oid(const X509_PUBKEY *key) {
    if (key->parameters == nullptr || key->parameters->tag == nullptr) return "";
    uint8_t *element = nullptr;
    const uint32_t size = ASN1_to_binary(key->parameters, &element);
    const Owned<uint8_t, tlx_free> owner(element);
    if (size == 0xFFFFFFFF || *element != TLX_TAG_OBJECT_IDENTIFIER) return "";
    const Oid oid(decodeToBERObjectIdentifier(element));
    return dotted_text(oid.get());
}

/// The size of the field of a SEC 1 point's coordinates.
std::size_t point_bits(Octets point) {
    if (point.size() < 2) return 0;
    const std::size_t coordinates = point[0] == 4 ? 2 : 1;
    return (point.size() - 1) / coordinates * 8;
}

Json describe_rsa(const RSA_UNIT *key) {
    const BIGINT *modulus = get_RSA_UNIT_number(key, TLX_RSA_N);
    return {{"type", "RSA"},
            {"bits", get_BIGINT_bits(modulus)},
            {"exponent", number_text(get_RSA_UNIT_number(key, TLX_RSA_E))},
            {"modulus", number_hex(modulus)}};
}

Json describe_kcdsa(const KCDSA *key) {
    const auto number = [key](TLX_KCDSA_NUMBER which) { return get_KCDSA_number(key, which); };
    return {{"type", "KCDSA"},
            {"bits", get_BIGINT_bits(number(TLX_KCDSA_P))},
            {"subgroup_bits", get_BIGINT_bits(number(TLX_KCDSA_Q))},
            {"p", number_hex(number(TLX_KCDSA_P))},
            {"q", number_hex(number(TLX_KCDSA_Q))},
            {"g", number_hex(number(TLX_KCDSA_G))},
            {"y", number_hex(number(TLX_KCDSA_Y))}};
}

Json describe_ec(const X509_PUBKEY *key) {
    const Octets point = octets_of(key->subjectPublicKey);
    Json json = {{"type", "EC"}, {"bits", point_bits(point)}};
    const std::string curve = curve_oid(key);
    const std::string name = short_name(curve);
    json["curve"] = !name.empty() ? name : !curve.empty() ? curve : "given by its parameters";
    json["point"] = hex(point);
    return json;
}

Json describe_key_numbers(const X509_PUBKEY *key) {
    const ASYMMETRIC_KEY *decoded = get_X509_PUBKEY_key(key);
    const uint32_t kind = decoded == nullptr ? 0 : decoded->kind;
    if (kind == TLX_KEY_RSA) return describe_rsa(static_cast<const RSA_UNIT *>(decoded->key));
    if (kind == TLX_KEY_KCDSA) return describe_kcdsa(static_cast<const KCDSA *>(decoded->key));
    if (dotted_text(get_X509_PUBKEY_algorithm(key)) == kEcPublicKey) return describe_ec(key);
    return {{"type", algorithm_name(get_X509_PUBKEY_algorithm(key))},
            {"octets", hex(octets_of(key->subjectPublicKey))}};
}

}  // namespace

std::string key_line(const X509_PUBKEY *key) {
    if (key == nullptr) return "(none)";
    const Json numbers = describe_key_numbers(key);
    std::string line = numbers["type"].get<std::string>();
    if (numbers.contains("curve")) line += " " + numbers["curve"].get<std::string>();
    if (numbers.contains("bits")) line += " " + numbers["bits"].dump() + " bits";
    return line;
}

Json describe_public_key(const X509_PUBKEY *key) {
    if (key == nullptr) return nullptr;
    Json json = {{"algorithm", oid_json(get_X509_PUBKEY_algorithm(key))}};
    json.update(describe_key_numbers(key));
    const Owned<SUBJECT_KEYID, free_SUBJECT_KEYID> identifier(create_SUBJECT_KEYID(key));
    if (identifier != nullptr) json["key_identifier"] = hex(octets_of(identifier.get()));
    return json;
}

Json describe_rsa_key(const RSA_UNIT *key) {
    Json json = {{"kind", get_RSA_UNIT_kind(key) == TLX_RSA_PRIVATE ? "RSA private key" : "RSA public key"}};
    auto public_key = made<PublicKey>(new_X509_PUBKEY());
    if (set_X509_PUBKEY_rsa(public_key.get(), key) != 0) throw std::bad_alloc();
    json.update(describe_public_key(public_key.get()));
    return json;
}

}  // namespace tool
