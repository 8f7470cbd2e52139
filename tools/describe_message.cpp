#include "describe_message.hpp"

#include "describe.hpp"
#include "describe_cms.hpp"
#include "message.hpp"
#include "revocation.hpp"

namespace tool {

namespace {

constexpr uint32_t kConstructed = 0x20;

/// The octets of an element.
Octets encoded(const ASN1_UNIT *node, Owned<uint8_t, tlx_free> &owner) {
    uint8_t *octets = nullptr;
    const uint32_t size = ASN1_to_binary(node, &octets);
    owner.reset(octets);
    return octets == nullptr ? Octets() : Octets(octets, size);
}

/// The octets that a string holds; null for none.
Json size_of(const ASN1_STRING *string) {
    if (string == nullptr) return nullptr;
    return octets_of(string).size();
}

Json describe_algorithm(const X509_ALGO_IDENTIFIER *algorithm) {
    return oid_json(get_X509_ALGO_IDENTIFIER_OID(algorithm));
}

/// A value of an attribute by its type.
Json describe_value(const X509_ATTRIBUTE *attribute, int32_t index) {
    const uint32_t type = get_X509_ATTRIBUTE_data_type(attribute, index);
    void *value = get_X509_ATTRIBUTE_data(attribute, index);
    if ((type & kConstructed) != 0) {
        const auto *node = static_cast<const ASN1_UNIT *>(value);
        const Json record = describe_attribute_record(dotted_text(get_X509_ATTRIBUTE_OID(attribute)), node);
        return record.is_null() ? Json(node_hex(node)) : record;
    }
    auto *string = static_cast<ASN1_STRING *>(value);
    switch (type) {
        case TLX_TAG_OBJECT_IDENTIFIER:
            return oid_json(string);
        case TLX_TAG_UTC_TIME:
        case TLX_TAG_GENERALIZED_TIME: {
            const X509_TIME time{type == TLX_TAG_UTC_TIME ? 0U : 1U, string};
            return time_text(&time);
        }
        default:
            std::string text;
            return string_text(string, text) ? text : hex(octets_of(string));
    }
}

Json describe_attribute(const X509_ATTRIBUTE *attribute) {
    Json values = Json::array();
    for (uint32_t i = 0; i < get_X509_ATTRIBUTE_count(attribute); ++i) {
        values.push_back(describe_value(attribute, static_cast<int32_t>(i)));
    }
    Json json = {{"attribute", oid_json(get_X509_ATTRIBUTE_OID(attribute))}};
    if (values.size() == 1) {
        json["value"] = values[0];
    } else {
        json["values"] = values;
    }
    return json;
}

Json describe_whole_signer(const P7_SIGNER_INFO *signer) {
    Json json = {{"version", number_text(signer->version)}};
    json.update(describe_signer(signer));
    if (signer->authenticatedAttributes != nullptr) {
        json["authenticated_attributes"] = describe_attributes(signer->authenticatedAttributes);
    }
    json["signature"] = hex(octets_of(signer->encryptedDigest));
    if (signer->unauthenticatedAttributes != nullptr) {
        json["unauthenticated_attributes"] = describe_attributes(signer->unauthenticatedAttributes);
    }
    return json;
}

Json describe_recipient(const P7_RECIPIENT_INFO *recipient) {
    Json json = {{"version", number_text(recipient->version)}};
    add_certificate_name(json, recipient->issuerAndSerialNumber);
    add_algorithm(json, "key_encryption_algorithm", recipient->keyEncryptionAlgorithm);
    json["encrypted_key"] = hex(octets_of(recipient->encryptedKey));
    return json;
}

Json describe_revocation_list(const X509_CRL *crl) {
    return describe_crl(crl, 0);
}

/// Sets the parts that signed data and signed-and-enveloped data share.
void add_signatures(Json &json, const X509_CERTIFICATES *certificates, const X509_CRLS *crls,
                    const P7_SIGNER_INFOS *signers) {
    if (certificates != nullptr) {
        json["certificates"] = describe_items(certificates, get_X509_CERTIFICATES_count,
                                              get_X509_CERTIFICATES_child, describe_certificate_briefly);
    }
    if (crls != nullptr) {
        json["revocation_lists"] =
            describe_items(crls, get_X509_CRLS_count, get_X509_CRLS_child, describe_revocation_list);
    }
    json["signers"] =
        describe_items(signers, get_P7_SIGNER_INFOS_count, get_P7_SIGNER_INFOS_child, describe_whole_signer);
}

Json describe_recipients(const P7_RECIPIENT_INFOS *recipients) {
    return describe_items(recipients, get_P7_RECIPIENT_INFOS_count, get_P7_RECIPIENT_INFOS_child,
                          describe_recipient);
}

void describe_contents(Json &json, const P7_SIGNED_DATA &data) {
    json["version"] = number_text(data.version);
    json["digest_algorithms"] = describe_digests(data.digestAlgorithms);
    json["content"] = describe_message(data.contentInfo);
    add_signatures(json, data.certificates, data.crls, data.signerInfos);
}

void describe_contents(Json &json, const P7_ENVELOPED_DATA &data) {
    json["version"] = number_text(data.version);
    json["recipients"] = describe_recipients(data.recipientInfos);
    json["encrypted_content"] = describe_encrypted(data.encryptedContentInfo);
}

void describe_contents(Json &json, const P7_SIGNED_AND_ENVELOPED_DATA &data) {
    json["version"] = number_text(data.version);
    json["recipients"] = describe_recipients(data.recipientInfos);
    json["digest_algorithms"] = describe_digests(data.digestAlgorithms);
    json["encrypted_content"] = describe_encrypted(data.encryptedContentInfo);
    add_signatures(json, data.certificates, data.crls, data.signerInfos);
}

void describe_contents(Json &json, const P7_DIGESTED_DATA &data) {
    json["version"] = number_text(data.version);
    add_algorithm(json, "digest_algorithm", data.digestAlgorithm);
    json["content"] = describe_message(data.contentInfo);
    json["digest"] = hex(octets_of(data.digest));
}

void describe_contents(Json &json, const P7_ENCRYPTED_DATA &data) {
    json["version"] = number_text(data.version);
    json["encrypted_content"] = describe_encrypted(data.encryptedContentInfo);
}

}  // namespace

void add_algorithm(Json &json, const std::string &key, const X509_ALGO_IDENTIFIER *algorithm) {
    json[key] = oid_json(get_X509_ALGO_IDENTIFIER_OID(algorithm));
    Owned<uint8_t, tlx_free> owner;
    const Octets parameters = encoded(get_X509_ALGO_IDENTIFIER_parameters(algorithm), owner);
    if (parameters.empty() || parameters[0] == TLX_TAG_NULL) return;
    const bool is_pss =
        index_from_OBJECT_IDENTIFIER(get_X509_ALGO_IDENTIFIER_OID(algorithm)) == TLX_OID_RSASSA_PSS;
    json[key + "_parameters"] = is_pss ? describe_pss(parameters) : Json(hex(parameters));
}

void add_certificate_name(Json &json, const P7_ISSUER_AND_SERIAL_NUMBER *number) {
    if (number == nullptr) return;
    json["issuer"] = name_text(number->issuer);
    json["serial"] = number_hex(number->serialNumber);
}

Json describe_digests(const X509_ALGO_IDENTIFIERS *algorithms) {
    return describe_items(algorithms, get_X509_ALGO_IDENTIFIERS_count, get_X509_ALGO_IDENTIFIERS_child,
                          describe_algorithm);
}

Json describe_encrypted(const P7_ENCRYPTED_CONTENT_INFO *content) {
    Json json = {{"kind", type_name(content->contentType)}};
    add_algorithm(json, "cipher", content->contentEncryptionAlgorithm);
    json["octets"] = size_of(content->encryptedContent);
    return json;
}

Json signing_time_of(const X509_ATTRIBUTES *attributes) {
    for (uint32_t i = 0; i < get_X509_ATTRIBUTES_count(attributes); ++i) {
        const X509_ATTRIBUTE *attribute = get_X509_ATTRIBUTES_child(attributes, static_cast<int32_t>(i));
        const bool is_it =
            index_from_OBJECT_IDENTIFIER(get_X509_ATTRIBUTE_OID(attribute)) == TLX_OID_SIGNING_TIME;
        if (is_it && get_X509_ATTRIBUTE_count(attribute) == 1) return describe_value(attribute, 0);
    }
    return nullptr;
}

std::string node_hex(const ASN1_UNIT *node) {
    Owned<uint8_t, tlx_free> owner;
    return hex(encoded(node, owner));
}

Json describe_attributes(const X509_ATTRIBUTES *attributes) {
    return describe_items(attributes, get_X509_ATTRIBUTES_count, get_X509_ATTRIBUTES_child,
                          describe_attribute);
}

Json describe_signer(const P7_SIGNER_INFO *signer) {
    Json json = Json::object();
    add_certificate_name(json, signer->issuerAndSerialNumber);
    json["signing_time"] = signing_time_of(signer->authenticatedAttributes);
    add_algorithm(json, "digest_algorithm", signer->digestAlgorithm);
    add_algorithm(json, "signature_algorithm", signer->digestEncryptionAlgorithm);
    return json;
}

Json message_document(const std::string &source, const P7_CONTENT_INFO *message, const std::string &output) {
    Json json = {{"source", source}};
    if (!output.empty()) json["output"] = output;
    json.update(describe_message(message));
    return json;
}

const P7_SIGNER_INFOS *signers_of(const P7_CONTENT_INFO *message) {
    if (message->content.any == nullptr) return nullptr;
    switch (type_of(message)) {
        case TLX_OID_PKCS7_SIGNED_DATA:
            return message->content.signedData->signerInfos;
        case TLX_OID_PKCS7_SIGNED_AND_ENVELOPED_DATA:
            return message->content.signedAndEnvelopedData->signerInfos;
        default:
            return nullptr;
    }
}

Json describe_message(const P7_CONTENT_INFO *message) {
    Json json = {{"kind", type_name(message->contentType)}};
    if (message->content.any == nullptr) {
        json["octets"] = nullptr;
        return json;
    }
    switch (type_of(message)) {
        case TLX_OID_PKCS7_DATA:
            json["octets"] = size_of(message->content.data);
            break;
        case TLX_OID_PKCS7_SIGNED_DATA:
            describe_contents(json, *message->content.signedData);
            break;
        case TLX_OID_PKCS7_ENVELOPED_DATA:
            describe_contents(json, *message->content.envelopedData);
            break;
        case TLX_OID_PKCS7_SIGNED_AND_ENVELOPED_DATA:
            describe_contents(json, *message->content.signedAndEnvelopedData);
            break;
        case TLX_OID_PKCS7_DIGESTED_DATA:
            describe_contents(json, *message->content.digestedData);
            break;
        case TLX_OID_PKCS7_ENCRYPTED_DATA:
            describe_contents(json, *message->content.encryptedData);
            break;
        default:
            json.update(describe_trust_list(message->content.trustList));
    }
    return json;
}

}  // namespace tool
