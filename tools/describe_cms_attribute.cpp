// Values of the attributes of signers, and time stamps.
#include "describe.hpp"
#include "describe_cms.hpp"
#include "describe_message.hpp"

namespace tool {

namespace {

/// A record out of a value; null when it cannot be decoded.
template <auto Free, typename T>
Owned<T, Free> decoded(const ASN1_UNIT *value, uint32_t (*decoder)(const ASN1_UNIT *, T **)) {
    T *record = nullptr;
    (void)decoder(value, &record);
    return Owned<T, Free>(record);
}

void add_issuer_serial(Json &json, const CMS_ISSUER_SERIAL *serial) {
    if (serial == nullptr) return;
    json["issuer"] = describe_general_names(serial->issuer);
    json["serial"] = number_hex(serial->serialNumber);
}

Json describe_id(const CMS_ESS_CERT_ID *id) {
    Json json = {{"digest_algorithm", "sha1"}, {"digest", hex(octets_of(id->certHash))}};
    add_issuer_serial(json, id->issuerSerial);
    return json;
}

Json describe_id_v2(const CMS_ESS_CERT_ID_V2 *id) {
    Json json = {{"digest_algorithm", "sha256"}};
    if (id->hashAlgorithm != nullptr) add_algorithm(json, "digest_algorithm", id->hashAlgorithm);
    json["digest"] = hex(octets_of(id->certHash));
    add_issuer_serial(json, id->issuerSerial);
    return json;
}

Json with_policies(Json certificates, const CERTIFICATE_POLICIES *policies) {
    Json json = {{"certificates", std::move(certificates)}};
    if (policies != nullptr) json["policies"] = describe_policies(policies);
    return json;
}

Json describe_signing_certificate(const ASN1_UNIT *value) {
    const auto record = decoded<free_CMS_SIGNING_CERTIFICATE>(value, Seq_to_CMS_SIGNING_CERTIFICATE);
    if (record == nullptr) return nullptr;
    return with_policies(
        describe_items(record->certs, get_CMS_ESS_CERT_IDS_count, get_CMS_ESS_CERT_IDS_child, describe_id),
        record->policies);
}

Json describe_signing_certificate_v2(const ASN1_UNIT *value) {
    const auto record = decoded<free_CMS_SIGNING_CERTIFICATE_V2>(value, Seq_to_CMS_SIGNING_CERTIFICATE_V2);
    if (record == nullptr) return nullptr;
    return with_policies(describe_items(record->certs, get_CMS_ESS_CERT_IDS_V2_count,
                                        get_CMS_ESS_CERT_IDS_V2_child, describe_id_v2),
                         record->policies);
}

Json describe_protection(const ASN1_UNIT *value) {
    const auto record = decoded<free_CMS_ALGORITHM_PROTECTION>(value, Seq_to_CMS_ALGORITHM_PROTECTION);
    if (record == nullptr) return nullptr;
    Json json = Json::object();
    add_algorithm(json, "digest_algorithm", record->digestAlgorithm);
    if (record->signatureAlgorithm != nullptr) {
        add_algorithm(json, "signature_algorithm", record->signatureAlgorithm);
    }
    if (record->macAlgorithm != nullptr) add_algorithm(json, "mac_algorithm", record->macAlgorithm);
    return json;
}

Json describe_countersignature(const ASN1_UNIT *value) {
    const auto record = decoded<free_CMS_SIGNER_INFO>(value, Seq_to_CMS_SIGNER_INFO);
    return record == nullptr ? Json() : describe_cms_signer(record.get());
}

Json describe_token(const ASN1_UNIT *value) {
    const auto record = decoded<free_CMS_CONTENT_INFO>(value, Seq_to_CMS_CONTENT_INFO);
    return record == nullptr ? Json() : describe_cms(record.get());
}

struct Known {
    const char *dotted;
    Json (*describe)(const ASN1_UNIT *);
};
constexpr Known kKnown[] = {
    {"1.2.840.113549.1.9.16.2.12", describe_signing_certificate},
    {"1.2.840.113549.1.9.16.2.47", describe_signing_certificate_v2},
    {"1.2.840.113549.1.9.52", describe_protection},
    {"1.2.840.113549.1.9.16.2.14", describe_token},
    {"1.2.840.113549.1.9.6", describe_countersignature},
};

}  // namespace

Json describe_attribute_record(const std::string &type, const ASN1_UNIT *value) {
    // Signers in attributes of signers: what a stranger nests deeper would use up the stack.
    constexpr int kMostLevels = 4;
    static int level = 0;
    if (level == kMostLevels) return nullptr;
    for (const Known &known : kKnown) {
        if (type != known.dotted) continue;
        ++level;
        Json json = known.describe(value);
        --level;
        return json;
    }
    return nullptr;
}

Json describe_time_stamp(const CMS_TST_INFO *info) {
    const X509_TIME time{1, info->genTime};
    Json json = {{"time", time_text(&time)},
                 {"serial", number_hex(info->serialNumber)},
                 {"policy", oid_json(info->policy)}};
    add_algorithm(json, "digest_algorithm", info->messageImprint->hashAlgorithm);
    json["digest"] = hex(octets_of(info->messageImprint->hashedMessage));
    if (const CMS_ACCURACY *accuracy = info->accuracy; accuracy != nullptr) {
        Json &parts = json["accuracy"] = Json::object();
        if (accuracy->seconds != nullptr) parts["seconds"] = number_text(accuracy->seconds);
        if (accuracy->millis != nullptr) parts["milliseconds"] = number_text(accuracy->millis);
        if (accuracy->micros != nullptr) parts["microseconds"] = number_text(accuracy->micros);
    }
    if (info->ordering != 0) json["ordering"] = true;
    if (info->nonce != nullptr) json["nonce"] = number_hex(info->nonce);
    if (info->tsa != nullptr) json["authority"] = describe_general_name(info->tsa);
    if (info->extensions != nullptr) {
        json["extensions"] = describe_items(info->extensions, get_X509_EXTENSION_count, get_X509_EXTENSION,
                                            describe_extension);
    }
    return json;
}

Json describe_time_stamp(Octets encoding) {
    CMS_TST_INFO *record = nullptr;
    (void)TLX_READ_DER(CMS_TST_INFO, &record, encoding.data(), static_cast<uint32_t>(encoding.size()));
    const Owned<CMS_TST_INFO, free_CMS_TST_INFO> info(record);
    return info == nullptr ? Json() : describe_time_stamp(info.get());
}

}  // namespace tool
