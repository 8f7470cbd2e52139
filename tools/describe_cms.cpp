#include "describe_cms.hpp"

#include "describe.hpp"
#include "describe_message.hpp"
#include "failure.hpp"
#include "message.hpp"
#include "ocsp.hpp"
#include "revocation.hpp"
#include "status.hpp"

namespace tool {

namespace {

using OcspAnswer = Owned<OCSP_RESPONSE, free_OCSP_RESPONSE>;
using Algorithm = Owned<X509_ALGO_IDENTIFIER, free_X509_ALGO_IDENTIFIER>;
using Derivation = Owned<CMS_PBKDF2_PARAM, free_CMS_PBKDF2_PARAM>;

/// Sets how a message names a certificate.
void add_identifier(Json &json, const CMS_CERT_IDENTIFIER *identifier) {
    if (identifier->type == TLX_CMS_BY_KEY_IDENTIFIER) {
        json["key_identifier"] = hex(octets_of(identifier->value.subjectKeyIdentifier));
    } else {
        add_certificate_name(json, identifier->value.issuerAndSerialNumber);
    }
}

/// Sets an algorithm whose parameters are another one.
void add_nested_algorithm(Json &json, const std::string &key, const std::string &inner_key,
                          const X509_ALGO_IDENTIFIER *algorithm) {
    X509_ALGO_IDENTIFIER *inner = nullptr;
    const ASN1_UNIT *parameters = get_X509_ALGO_IDENTIFIER_parameters(algorithm);
    const bool is_algorithm = parameters != nullptr && Seq_to_X509_ALGO_IDENTIFIER(parameters, &inner) == 0;
    const Algorithm owner(inner);
    if (!is_algorithm) return add_algorithm(json, key, algorithm);
    json[key] = oid_json(get_X509_ALGO_IDENTIFIER_OID(algorithm));
    add_algorithm(json, inner_key, inner);
}

/// Sets the derivation of a key from a password.
void add_derivation(Json &json, const X509_ALGO_IDENTIFIER *algorithm) {
    if (algorithm == nullptr) return;
    CMS_PBKDF2_PARAM *param = nullptr;
    const bool is_pbkdf2 =
        index_from_OBJECT_IDENTIFIER(get_X509_ALGO_IDENTIFIER_OID(algorithm)) == TLX_OID_PBKDF2 &&
        Seq_to_CMS_PBKDF2_PARAM(get_X509_ALGO_IDENTIFIER_parameters(algorithm), &param) == 0;
    const Derivation owner(param);
    if (!is_pbkdf2) return add_algorithm(json, "derivation", algorithm);
    json["derivation"] = oid_json(get_X509_ALGO_IDENTIFIER_OID(algorithm));
    json["salt"] = hex(octets_of(param->salt));
    json["iterations"] = param->iterationCount;
    if (param->prf != nullptr) add_algorithm(json, "function", param->prf);
}

void add_key_identifier(Json &json, const CMS_KEY_IDENTIFIER *identifier) {
    json["key_identifier"] = hex(octets_of(identifier->keyIdentifier));
    if (identifier->date == nullptr) return;
    const X509_TIME time{1, identifier->date};
    json["date"] = time_text(&time);
}

Json describe_encrypted_key(const CMS_RECIPIENT_ENCRYPTED_KEY *key) {
    Json json = Json::object();
    if (key->rid->type == TLX_CMS_BY_KEY_IDENTIFIER) {
        add_key_identifier(json, key->rid->value.rKeyId);
    } else {
        add_certificate_name(json, key->rid->value.issuerAndSerialNumber);
    }
    json["encrypted_key"] = hex(octets_of(key->encryptedKey));
    return json;
}

Json describe_originator(const CMS_ORIGINATOR *originator) {
    Json json = Json::object();
    switch (originator->type) {
        case TLX_CMS_BY_ORIGINATOR_KEY: {
            const CMS_ORIGINATOR_KEY *key = originator->value.originatorKey;
            add_algorithm(json, "algorithm", key->algorithm);
            json["public_key"] = hex(octets_of(key->publicKey));
            break;
        }
        case TLX_CMS_BY_KEY_IDENTIFIER:
            json["key_identifier"] = hex(octets_of(originator->value.subjectKeyIdentifier));
            break;
        default:
            add_certificate_name(json, originator->value.issuerAndSerialNumber);
    }
    return json;
}

Json describe(const CMS_KEY_TRANS_RECIPIENT &recipient) {
    Json json = {{"type", "key transport"}, {"version", std::to_string(recipient.version)}};
    add_identifier(json, recipient.rid);
    add_algorithm(json, "key_encryption_algorithm", recipient.keyEncryptionAlgorithm);
    json["encrypted_key"] = hex(octets_of(recipient.encryptedKey));
    return json;
}

Json describe(const CMS_KEY_AGREE_RECIPIENT &recipient) {
    Json json = {{"type", "key agreement"}, {"version", std::to_string(recipient.version)}};
    json["originator"] = describe_originator(recipient.originator);
    if (recipient.ukm != nullptr) json["user_keying_material"] = hex(octets_of(recipient.ukm));
    add_nested_algorithm(json, "key_encryption_algorithm", "key_wrap", recipient.keyEncryptionAlgorithm);
    json["keys"] = describe_items(recipient.recipientEncryptedKeys, get_CMS_RECIPIENT_ENCRYPTED_KEYS_count,
                                  get_CMS_RECIPIENT_ENCRYPTED_KEYS_child, describe_encrypted_key);
    return json;
}

Json describe(const CMS_KEK_RECIPIENT &recipient) {
    Json json = {{"type", "key encryption key"}, {"version", std::to_string(recipient.version)}};
    add_key_identifier(json, recipient.kekid);
    add_algorithm(json, "key_encryption_algorithm", recipient.keyEncryptionAlgorithm);
    json["encrypted_key"] = hex(octets_of(recipient.encryptedKey));
    return json;
}

Json describe(const CMS_PASSWORD_RECIPIENT &recipient) {
    Json json = {{"type", "password"}, {"version", std::to_string(recipient.version)}};
    add_derivation(json, recipient.keyDerivationAlgorithm);
    add_nested_algorithm(json, "key_encryption_algorithm", "key_cipher", recipient.keyEncryptionAlgorithm);
    json["encrypted_key"] = hex(octets_of(recipient.encryptedKey));
    return json;
}

Json describe_recipient(const CMS_RECIPIENT_INFO *recipient) {
    switch (recipient->type) {
        case TLX_CMS_KEY_TRANSPORT:
            return describe(*recipient->value.ktri);
        case TLX_CMS_KEY_AGREEMENT:
            return describe(*recipient->value.kari);
        case TLX_CMS_KEY_ENCRYPTION_KEY:
            return describe(*recipient->value.kekri);
        case TLX_CMS_PASSWORD:
            return describe(*recipient->value.pwri);
        default:
            return {{"type", "other"}, {"element", node_hex(recipient->value.ori)}};
    }
}

Json describe_recipients(const CMS_RECIPIENT_INFOS *recipients) {
    return describe_items(recipients, get_CMS_RECIPIENT_INFOS_count, get_CMS_RECIPIENT_INFOS_child,
                          describe_recipient);
}

Json describe_certificate_choice(const CMS_CERT_CHOICE *choice) {
    constexpr const char *kKinds[] = {"certificate", "extended certificate", "attribute certificate v1",
                                      "attribute certificate v2", "other certificate"};
    if (choice->type == TLX_CMS_CERTIFICATE) return describe_certificate_briefly(choice->value.certificate);
    return {{"kind", kKinds[choice->type]}, {"element", node_hex(choice->value.other)}};
}

/// An OCSP response; null for another format, and for a response that cannot be decoded.
Json describe_ocsp(const CMS_OTHER_REVOCATION_INFO *other) {
    if (dotted_text(other->otherRevInfoFormat) != "1.3.6.1.5.5.7.16.2") return nullptr;
    OCSP_RESPONSE *response = nullptr;
    const uint32_t status = Seq_to_OCSP_RESPONSE(other->otherRevInfo, &response);
    const OcspAnswer owner(response);
    if (status != 0) return nullptr;
    try {
        return describe_ocsp_response(response);
    } catch (const Failure &) {
        return nullptr;
    }
}

Json describe_revocation(const CMS_REVOCATION_INFO *info) {
    if (info->type == TLX_CMS_CRL) return describe_crl(info->value.crl, 0);
    const CMS_OTHER_REVOCATION_INFO *other = info->value.other;
    Json response = describe_ocsp(other);
    if (!response.is_null()) return response;
    return {{"format", oid_json(other->otherRevInfoFormat)}, {"element", node_hex(other->otherRevInfo)}};
}

void add_certificates(Json &json, const CMS_CERT_CHOICES *certificates, const CMS_REVOCATION_INFOS *crls) {
    if (certificates != nullptr) {
        json["certificates"] = describe_items(certificates, get_CMS_CERT_CHOICES_count,
                                              get_CMS_CERT_CHOICES_child, describe_certificate_choice);
    }
    if (crls != nullptr) {
        json["revocation_lists"] = describe_items(crls, get_CMS_REVOCATION_INFOS_count,
                                                  get_CMS_REVOCATION_INFOS_child, describe_revocation);
    }
}

void add_attributes(Json &json, const std::string &key, const X509_ATTRIBUTES *attributes) {
    if (attributes != nullptr) json[key] = describe_attributes(attributes);
}

Json describe_content(const CMS_ENCAP_CONTENT_INFO *content) {
    Json json = {{"kind", type_name(content->eContentType)}, {"octets", nullptr}};
    if (content->eContent != nullptr) json["octets"] = octets_of(content->eContent).size();
    if (content->otherContent != nullptr) json["element"] = node_hex(content->otherContent);
    if (dotted_text(content->eContentType) == "1.2.840.113549.1.9.16.1.4") {
        const Json stamp = describe_time_stamp(octets_of(content->eContent));
        if (!stamp.is_null()) json["time_stamp"] = stamp;
    }
    return json;
}

void add_originator(Json &json, const CMS_ORIGINATOR_INFO *originator) {
    if (originator != nullptr) add_certificates(json, originator->certs, originator->crls);
}

void describe_contents(Json &json, const CMS_SIGNED_DATA &data) {
    json["version"] = std::to_string(data.version);
    json["digest_algorithms"] = describe_digests(data.digestAlgorithms);
    json["content"] = describe_content(data.encapContentInfo);
    add_certificates(json, data.certificates, data.crls);
    json["signers"] = describe_items(data.signerInfos, get_CMS_SIGNER_INFOS_count, get_CMS_SIGNER_INFOS_child,
                                     describe_cms_signer);
}

void describe_contents(Json &json, const CMS_DIGESTED_DATA &data) {
    json["version"] = std::to_string(data.version);
    add_algorithm(json, "digest_algorithm", data.digestAlgorithm);
    json["content"] = describe_content(data.encapContentInfo);
    json["digest"] = hex(octets_of(data.digest));
}

void describe_contents(Json &json, const CMS_ENVELOPED_DATA &data) {
    json["version"] = std::to_string(data.version);
    add_originator(json, data.originatorInfo);
    json["recipients"] = describe_recipients(data.recipientInfos);
    json["encrypted_content"] = describe_encrypted(data.encryptedContentInfo);
    add_attributes(json, "unprotected_attributes", data.unprotectedAttrs);
}

void describe_contents(Json &json, const CMS_ENCRYPTED_DATA &data) {
    json["version"] = std::to_string(data.version);
    json["encrypted_content"] = describe_encrypted(data.encryptedContentInfo);
    add_attributes(json, "unprotected_attributes", data.unprotectedAttrs);
}

void describe_contents(Json &json, const CMS_AUTHENTICATED_DATA &data) {
    json["version"] = std::to_string(data.version);
    add_originator(json, data.originatorInfo);
    json["recipients"] = describe_recipients(data.recipientInfos);
    add_algorithm(json, "mac_algorithm", data.macAlgorithm);
    if (data.digestAlgorithm != nullptr) add_algorithm(json, "digest_algorithm", data.digestAlgorithm);
    json["content"] = describe_content(data.encapContentInfo);
    add_attributes(json, "authenticated_attributes", data.authAttrs);
    json["mac"] = hex(octets_of(data.mac));
    add_attributes(json, "unauthenticated_attributes", data.unauthAttrs);
}

void describe_contents(Json &json, const CMS_AUTH_ENVELOPED_DATA &data) {
    json["version"] = std::to_string(data.version);
    add_originator(json, data.originatorInfo);
    json["recipients"] = describe_recipients(data.recipientInfos);
    json["encrypted_content"] = describe_encrypted(data.authEncryptedContentInfo);
    add_attributes(json, "authenticated_attributes", data.authAttrs);
    json["mac"] = hex(octets_of(data.mac));
    add_attributes(json, "unauthenticated_attributes", data.unauthAttrs);
}

template <typename Content>
void describe_any(Json &json, const Content *content) {
    if (content != nullptr) describe_contents(json, *content);
}

}  // namespace

Json describe_cms_signer(const CMS_SIGNER_INFO *signer) {
    Json json = {{"version", std::to_string(signer->version)}};
    add_identifier(json, signer->sid);
    json["signing_time"] = signing_time_of(signer->signedAttrs);
    add_algorithm(json, "digest_algorithm", signer->digestAlgorithm);
    add_algorithm(json, "signature_algorithm", signer->signatureAlgorithm);
    add_attributes(json, "authenticated_attributes", signer->signedAttrs);
    json["signature"] = hex(octets_of(signer->signature));
    add_attributes(json, "unauthenticated_attributes", signer->unsignedAttrs);
    return json;
}

Json describe_cms(const CMS_CONTENT_INFO *message) {
    Json json = {{"kind", type_name(message->contentType)}};
    if (message->data != nullptr) json["octets"] = octets_of(message->data).size();
    describe_any(json, message->signedData);
    describe_any(json, message->envelopedData);
    describe_any(json, message->digestedData);
    describe_any(json, message->encryptedData);
    describe_any(json, message->authenticatedData);
    describe_any(json, message->authEnvelopedData);
    if (message->other != nullptr) json["element"] = node_hex(message->other);
    return json;
}

Json describe_node(const std::string &source, const ASN1_UNIT *message) {
    P7_CONTENT_INFO *old = nullptr;
    const uint32_t status = Seq_to_P7_CONTENT_INFO(message, &old);
    const Message old_owner(old);
    if (status == 0) return describe_message(old);
    CMS_CONTENT_INFO *info = nullptr;
    const uint32_t cms_status = Seq_to_CMS_CONTENT_INFO(message, &info);
    const Owned<CMS_CONTENT_INFO, free_CMS_CONTENT_INFO> owner(info);
    if (cms_status == 0) return describe_cms(info);
    constexpr uint32_t kNoSuchContent = 1;
    throw Failure(source +
                  ": cannot be decoded: " + status_sentence(status == kNoSuchContent ? cms_status : status));
}

}  // namespace tool
