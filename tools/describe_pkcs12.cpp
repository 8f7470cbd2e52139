// What files of PKCS #12 (RFC 7292) consist of and hold.
#include "describe.hpp"
#include "failure.hpp"
#include "message.hpp"
#include "pkcs12_file.hpp"
#include "status.hpp"

namespace tool {

namespace {

constexpr std::string_view kBagTypes = "1.2.840.113549.1.12.10.1.";
constexpr std::string_view kFriendlyName = "1.2.840.113549.1.9.20";
constexpr std::string_view kPbmac1 = "1.2.840.113549.1.5.14";
constexpr std::string_view kLocalKeyId = "1.2.840.113549.1.9.21";

/// Bags in bags that lie deeper are not shown.
constexpr unsigned kDeepestBag = 16;

/// By the last number of their identifiers, from 1 on.
enum BagKind { kShroudedKey = 2, kCertificate = 3, kBags = 6 };
constexpr const char *kBagNames[] = {
    "private key", "encrypted private key", "certificate", "revocation list", "secret", "bags"};

/// 0 for a bag of another kind.
int kind_of(const P12_SAFE_BAG *bag) {
    const std::string type = dotted_text(bag->bagId);
    if (!type.starts_with(kBagTypes) || type.size() != kBagTypes.size() + 1) return 0;
    const int kind = type.back() - '0';
    return kind >= 1 && kind <= kBags ? kind : 0;
}

/// Sets friendlyName and localKeyId.
void add_attributes(Json &json, const X509_ATTRIBUTES *attributes) {
    constexpr uint32_t kConstructed = 0x20;
    for (uint32_t i = 0; i < get_X509_ATTRIBUTES_count(attributes); ++i) {
        const X509_ATTRIBUTE *attribute = get_X509_ATTRIBUTES_child(attributes, static_cast<int32_t>(i));
        const std::string type = dotted_text(get_X509_ATTRIBUTE_OID(attribute));
        if ((get_X509_ATTRIBUTE_data_type(attribute, 0) & kConstructed) != 0) continue;
        const auto *value = static_cast<const ASN1_STRING *>(get_X509_ATTRIBUTE_data(attribute, 0));
        if (type == kFriendlyName) json["name"] = text_of(value);
        if (type == kLocalKeyId) json["local_key_id"] = hex(octets_of(value));
    }
}

/// The record of octets; null for octets that are none.
template <auto Free, typename T>
Owned<T, Free> record_in(Octets octets, uint32_t (*decoder)(const ASN1_UNIT *, T **)) {
    void *record = nullptr;
    (void)readDER_from_Buffer(&record, TLX_DECODER(decoder), octets.data(),
                              static_cast<uint32_t>(octets.size()));
    return Owned<T, Free>(static_cast<T *>(record));
}

/// The same of the element in a bag.
template <auto Free, typename T>
Owned<T, Free> record_of(const P12_SAFE_BAG *bag, uint32_t (*decoder)(const ASN1_UNIT *, T **)) {
    T *record = nullptr;
    (void)decoder(bag->bagValue, &record);
    return Owned<T, Free>(record);
}

void add_subject(Json &json, Octets cert) {
    const auto owner = record_in<free_X509_CERT>(cert, Seq_to_X509_CERT);
    if (owner) json["subject"] = shown_name(get_X509_subject(owner.get()));
}

/// PBMAC1-params ::= SEQUENCE { keyDerivationFunc, messageAuthScheme AlgorithmIdentifier }, as PBES2's.
void add_pbmac1(Json &json, const ASN1_UNIT *parameters) {
    P5_PBE_PARAM *record = nullptr;
    (void)Seq_to_P5_PBE_PARAM(parameters, &record);
    const Owned<P5_PBE_PARAM, free_P5_PBE_PARAM> param(record);
    if (!param || param->encryptionScheme == nullptr) return;
    json["hmac"] = oid_json(param->encryptionScheme->algorithm);
    if (param->prf != nullptr) json["function"] = oid_json(param->prf->algorithm);
    json["iterations"] = number_text(param->iterationCount);
}

Json describe_bags(const P12_SAFE_CONTENTS *bags, unsigned depth = 0);

Json describe_bag(const P12_SAFE_BAG *bag, unsigned depth) {
    const int kind = kind_of(bag);
    Json json = {{"kind", kind == 0 ? oid_line(oid_json(bag->bagId)) : kBagNames[kind - 1]}};
    if (kind == kShroudedKey) {
        const auto key = record_of<free_PKCS8>(bag, Seq_to_P8_ENCRYPTED_KEY);
        if (key) json["encryption"] = describe_encryption(key->encryptionAlgorithm);
    }
    if (kind == kCertificate) {
        const auto cert = record_of<free_P12_CERT_BAG>(bag, Seq_to_P12_CERT_BAG);
        if (cert) add_subject(json, octets_of(cert->certValue));
    }
    add_attributes(json, bag->bagAttributes);
    if (kind == kBags && depth < kDeepestBag) {
        const auto bags = record_of<free_P12_SAFE_CONTENTS>(bag, Seq_to_P12_SAFE_CONTENTS);
        if (bags) json["bags"] = describe_bags(bags.get(), depth + 1);
    }
    return json;
}

Json describe_bags(const P12_SAFE_CONTENTS *bags, unsigned depth) {
    Json described = Json::array();
    for (uint32_t i = 0; i < get_P12_SAFE_CONTENTS_count(bags); ++i) {
        described.push_back(describe_bag(get_P12_SAFE_CONTENTS_child(bags, static_cast<int32_t>(i)), depth));
    }
    return described;
}

Json describe_part(const P7_CONTENT_INFO *part) {
    Json json = {{"kind", type_name(part->contentType)}};
    if (type_of(part) == TLX_OID_PKCS7_ENCRYPTED_DATA && part->content.encryptedData != nullptr) {
        const P7_ENCRYPTED_CONTENT_INFO *content = part->content.encryptedData->encryptedContentInfo;
        if (content == nullptr) return json;
        json["encryption"] = describe_encryption(content->contentEncryptionAlgorithm);
        json["octets"] = octets_of(content->encryptedContent).size();
    }
    if (type_of(part) == TLX_OID_PKCS7_DATA) {
        const auto bags =
            record_in<free_P12_SAFE_CONTENTS>(octets_of(part->content.data), Seq_to_P12_SAFE_CONTENTS);
        if (bags) {
            json["bags"] = describe_bags(bags.get());
        } else {
            json["error"] = "cannot be decoded";
        }
    }
    return json;
}

}  // namespace

Json describe_code(const P12_PFX *pfx) {
    if (pfx->macData == nullptr) return nullptr;
    Json json = {{"digest", oid_json(pfx->macData->digestAlgorithm)}};
    if (dotted_text(pfx->macData->digestAlgorithm) == kPbmac1) {
        add_pbmac1(json, pfx->macData->digestParameters);
        return json;
    }
    json["iterations"] = pfx->macData->iterations == nullptr ? "1" : number_text(pfx->macData->iterations);
    return json;
}

Json describe_parts(const P12_PFX *pfx, const std::string &source) {
    if (type_of(pfx->authSafe) != TLX_OID_PKCS7_DATA) {
        throw Failure(source + ": holds " + type_name(pfx->authSafe->contentType) + ", which is not shown");
    }
    const auto parts = record_in<free_P12_AUTHENTICATED_SAFE>(octets_of(pfx->authSafe->content.data),
                                                              Seq_to_P12_AUTHENTICATED_SAFE);
    if (!parts) throw Failure(source + ": the content cannot be decoded");
    return describe_items(parts.get(), get_P12_AUTHENTICATED_SAFE_count, get_P12_AUTHENTICATED_SAFE_child,
                          describe_part);
}

std::string kind_name(const P12_ENTRY &entry) {
    return entry.kind == TLX_P12_PRIVATE_KEY   ? "private key"
           : entry.kind == TLX_P12_CERTIFICATE ? "certificate"
           : entry.kind == TLX_P12_CRL         ? "revocation list"
           : entry.kind == TLX_P12_SECRET      ? "secret"
                                               : "unread";
}

Json describe_entry(const P12_ENTRY &entry, uint32_t number) {
    Json json = {{"number", number}, {"kind", kind_name(entry)}};
    if (entry.friendlyName != nullptr) json["name"] = text_of(entry.friendlyName);
    if (entry.localKeyId != nullptr) json["local_key_id"] = hex(octets_of(entry.localKeyId));
    if (entry.kind == TLX_P12_CERTIFICATE) {
        add_subject(json, octets_of(entry.value));
        if (entry.owner >= 0) json["key"] = entry.owner + 1;
    }
    if (entry.type != nullptr) json["type"] = oid_json(entry.type);
    if (entry.kind == TLX_P12_UNREAD) json["status"] = exact_status_json(entry.status);
    return json;
}

}  // namespace tool
