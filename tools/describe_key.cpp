#include <algorithm>

#include "describe.hpp"
#include "element.hpp"

namespace tool {

namespace {

constexpr char kEcPublicKey[] = "1.2.840.10045.2.1";
constexpr char kDsa[] = "1.2.840.10040.4.1";

/// The element of a key's parameters.
class Parameters {
  public:
    explicit Parameters(const X509_PUBKEY *key) {
        if (key->parameters == nullptr || key->parameters->tag == nullptr) return;
        uint8_t *element = nullptr;
        const uint32_t size = ASN1_to_binary(key->parameters, &element);
        owner_.reset(element);
        if (size != 0xFFFFFFFF) octets_ = {element, size};
    }
    [[nodiscard]] Octets octets() const { return octets_; }
    [[nodiscard]] bool is(uint8_t tag) const { return !octets_.empty() && octets_[0] == tag; }

  private:
    Owned<uint8_t, tlx_free> owner_;
    Octets octets_;
};

/// The bits of an INTEGER element; 0 for none.
uint32_t bits_in(Octets integer) {
    if (integer.empty() || integer[0] != TLX_TAG_INTEGER) return 0;
    const Owned<BIGINT, free_BIGINT> number(decodeToBERInteger(integer.data()));
    return number == nullptr ? 0 : static_cast<uint32_t>(get_BIGINT_bits(number.get()));
}

/// SEC 2, RFC 5639.
struct CurveSize {
    std::string_view dotted;
    uint32_t bits;
};
constexpr CurveSize kCurveSizes[] = {
    {"1.2.840.10045.3.1.1", 192},  {"1.3.132.0.33", 224},          {"1.2.840.10045.3.1.7", 256},
    {"1.3.132.0.10", 256},         {"1.3.132.0.34", 384},          {"1.3.132.0.35", 521},
    {"1.3.36.3.3.2.8.1.1.7", 256}, {"1.3.36.3.3.2.8.1.1.11", 384}, {"1.3.36.3.3.2.8.1.1.13", 512}};

/// The bits of the octets that a coordinate of a SEC 1 point takes.
std::size_t point_bits(Octets point) {
    if (point.size() < 2) return 0;
    const std::size_t coordinates = point[0] == 4 ? 2 : 1;
    return (point.size() - 1) / coordinates * 8;
}

/// The size of the field, where the curve or else the point says it; 0 when neither does.
std::size_t field_bits(const std::string &curve, const Parameters &parameters, Octets point) {
    const auto *known = std::ranges::find(kCurveSizes, curve, &CurveSize::dotted);
    if (known != std::end(kCurveSizes)) return known->bits;
    // SpecifiedECDomain ::= SEQUENCE { version, fieldID SEQUENCE { fieldType, prime INTEGER }, ... }
    const uint32_t prime = bits_in(child_of(child_of(parameters.octets(), 1), 1));
    return prime != 0 ? prime : point_bits(point);
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
    const Parameters parameters(key);
    std::string curve;
    if (parameters.is(TLX_TAG_OBJECT_IDENTIFIER)) {
        curve = dotted_text(Oid(decodeToBERObjectIdentifier(parameters.octets().data())).get());
    }
    const Octets point = octets_of(key->subjectPublicKey);
    Json json = {{"type", "EC"}};
    if (const std::size_t bits = field_bits(curve, parameters, point); bits != 0) json["bits"] = bits;
    const std::string name = short_name(curve);
    json["curve"] = !name.empty() ? name : !curve.empty() ? curve : "given by its parameters";
    if (!point.empty()) json["point"] = hex(point);
    return json;
}

/// Dss-Parms ::= SEQUENCE { p INTEGER, q INTEGER, g INTEGER }
Json describe_dsa(const X509_PUBKEY *key) {
    const Parameters parameters(key);
    Json json = {{"type", "DSA"}};
    if (const uint32_t bits = bits_in(child_of(parameters.octets(), 0)); bits != 0) {
        json["bits"] = bits;
        json["subgroup_bits"] = bits_in(child_of(parameters.octets(), 1));
    }
    return json;
}

/// A key of RSASSA-PSS has the octets of an RSA key (RFC 4055); its parameters, if any, say what it is for.
Json describe_pss_key(const X509_PUBKEY *key) {
    const Octets octets = octets_of(key->subjectPublicKey);
    void *record = nullptr;
    (void)readDER_from_Buffer(&record, TLX_DECODER(Seq_to_PKCS1_RSA_PUBLIC_KEY), octets.data(),
                              static_cast<uint32_t>(octets.size()));
    const Owned<PKCS1_RSA_PUBLIC_KEY, free_PKCS1_RSA_PUBLIC_KEY> numbers(
        static_cast<PKCS1_RSA_PUBLIC_KEY *>(record));
    const auto unit = made<RsaKey>(new_RSA_UNIT());
    Json json = {{"type", "RSASSA-PSS"}};
    if (numbers && get_RSA_UNIT_from_PKCS1_RSA_PUBLIC_KEY(unit.get(), numbers.get()) == 0) {
        json.update(describe_rsa(unit.get()));
        json["type"] = "RSASSA-PSS";
    }
    const Parameters parameters(key);
    if (parameters.is(TLX_TAG_SEQUENCE_OCTET)) json["pss"] = describe_pss(parameters.octets());
    return json;
}

Json describe_key_numbers(const X509_PUBKEY *key) {
    const ASYMMETRIC_KEY *decoded = get_X509_PUBKEY_key(key);
    const uint32_t kind = decoded == nullptr ? 0 : decoded->kind;
    const OBJECT_IDENTIFIER *algorithm = get_X509_PUBKEY_algorithm(key);
    if (index_from_OBJECT_IDENTIFIER(algorithm) == TLX_OID_RSASSA_PSS) return describe_pss_key(key);
    if (kind == TLX_KEY_RSA) return describe_rsa(static_cast<const RSA_UNIT *>(decoded->key));
    if (kind == TLX_KEY_KCDSA) return describe_kcdsa(static_cast<const KCDSA *>(decoded->key));
    const std::string type = dotted_text(algorithm);
    if (type == kEcPublicKey) return describe_ec(key);
    Json json = type == kDsa ? describe_dsa(key) : Json{{"type", algorithm_name(algorithm)}};
    const Octets octets = octets_of(key->subjectPublicKey);
    if (!octets.empty()) json["octets"] = hex(octets);
    return json;
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
    if (octets_of(key->subjectPublicKey).empty()) return json;
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
