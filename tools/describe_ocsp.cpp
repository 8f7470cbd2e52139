// OCSP requests and responses in words.
#include "choice.hpp"
#include "describe.hpp"
#include "ocsp.hpp"
#include "record.hpp"
#include "revocation.hpp"
#include "status.hpp"

namespace tool {

namespace {

constexpr Choice kResponseStatuses[] = {
    {"successful", TLX_OCSP_SUCCESSFUL},        {"malformedRequest", TLX_OCSP_MALFORMED_REQUEST},
    {"internalError", TLX_OCSP_INTERNAL_ERROR}, {"tryLater", TLX_OCSP_TRY_LATER},
    {"sigRequired", TLX_OCSP_SIG_REQUIRED},     {"unauthorized", TLX_OCSP_UNAUTHORIZED}};

constexpr const char *kCertificateStatuses[] = {"good", "revoked", "unknown"};

std::string time_line(GENERALIZED_TIME *text) {
    const X509_TIME time{1, text};
    return time_text(&time);
}

Json algorithm_json(const X509_ALGO_IDENTIFIER *algorithm) {
    return oid_json(get_X509_ALGO_IDENTIFIER_OID(algorithm));
}

Json describe_id(const OCSP_CERT_ID *id) {
    return {{"serial", number_hex(id->serialNumber)},
            {"digest_algorithm", algorithm_json(id->hashAlgorithm)},
            {"issuer_name_digest", hex(octets_of(id->issuerNameHash))},
            {"issuer_key_digest", hex(octets_of(id->issuerKeyHash))}};
}

void add_extensions(Json &json, const X509_EXTENSIONS *extensions) {
    if (get_X509_EXTENSION_count(extensions) == 0) return;
    json["extensions"] =
        describe_items(extensions, get_X509_EXTENSION_count, get_X509_EXTENSION, describe_extension);
}

void add_certificates(Json &json, const X509_CERTIFICATES *certificates) {
    if (certificates == nullptr) return;
    json["certificates"] = describe_items(certificates, get_X509_CERTIFICATES_count,
                                          get_X509_CERTIFICATES_child, describe_certificate_briefly);
}

Json describe_single_request(const OCSP_SINGLE_REQUEST *request) {
    Json json = describe_id(request->reqCert);
    add_extensions(json, request->singleRequestExtensions);
    return json;
}

Json describe_answer(const OCSP_SINGLE_RESPONSE *answer) {
    const OCSP_REVOKED_INFO *info = answer->certStatus->revokedInfo;
    Json json = describe_id(answer->certID);
    json["state"] = certificate_status_name(answer->certStatus->status);
    if (info != nullptr) {
        json["revocation_date"] = time_line(info->revocationTime);
        json["reason"] = reason_name(info->revocationReason);
    }
    json["this_update"] = time_line(answer->thisUpdate);
    if (answer->nextUpdate != nullptr) json["next_update"] = time_line(answer->nextUpdate);
    add_extensions(json, answer->singleExtensions);
    return json;
}

Json describe_responder(const OCSP_RESPONDER_ID *id) {
    if (id->type == TLX_OCSP_BY_NAME) return {{"name", shown_name(id->value.name)}};
    return {{"key_digest", hex(octets_of(id->value.keyHash))}};
}

void add_basic_response(Json &json, const BASIC_OCSP_RESPONSE *basic) {
    const OCSP_RESPONSE_DATA *data = basic->tbsResponseData;
    json["responder"] = describe_responder(data->responderID);
    json["produced_at"] = time_line(data->producedAt);
    json["answers"] = describe_items(data->responses, get_OCSP_SINGLE_RESPONSES_count,
                                     get_OCSP_SINGLE_RESPONSES_child, describe_answer);
    json["signature_algorithm"] = algorithm_json(basic->signatureAlgorithm);
    add_certificates(json, basic->certs);
    add_extensions(json, data->responseExtensions);
}

template <typename Decode>
auto load_only_block(const std::string &path, Decode decode) {
    const Input input(path);
    if (input.blocks().size() > 1) throw Failure(source_of(path) + ": holds several PEM blocks");
    expect_one_element(input.blocks().front());
    return decode(input.blocks().front());
}

}  // namespace

OcspRequest decode_ocsp_request(const Block &block) {
    return OcspRequest(decode_record(block, Seq_to_OCSP_REQUEST));
}

OcspResponse decode_ocsp_response(const Block &block) {
    return OcspResponse(decode_record(block, Seq_to_OCSP_RESPONSE));
}

OcspRequest load_ocsp_request(const std::string &path) {
    return load_only_block(path, decode_ocsp_request);
}

OcspResponse load_ocsp_response(const std::string &path) {
    return load_only_block(path, decode_ocsp_response);
}

std::string response_status_name(uint32_t status) {
    for (const Choice &known : kResponseStatuses) {
        if (known.value == status) return known.name;
    }
    return std::to_string(status);
}

std::string certificate_status_name(uint32_t status) {
    return kCertificateStatuses[status];
}

Json describe_ocsp_request(const OCSP_REQUEST *request) {
    const OCSP_TBS_REQUEST *tbs = request->tbsRequest;
    const OCSP_SIGNATURE *signature = request->optionalSignature;
    Json json = {{"kind", "OCSP request"}};
    if (tbs->requestorName != nullptr) json["requestor"] = describe_general_name(tbs->requestorName);
    json["questions"] = describe_items(tbs->requestList, get_OCSP_SINGLE_REQUESTS_count,
                                       get_OCSP_SINGLE_REQUESTS_child, describe_single_request);
    if (signature != nullptr) {
        json["signature_algorithm"] = algorithm_json(signature->signatureAlgorithm);
        add_certificates(json, signature->certs);
    }
    add_extensions(json, tbs->requestExtensions);
    return json;
}

Json describe_ocsp_response(const OCSP_RESPONSE *response) {
    Json json = {{"kind", "OCSP response"},
                 {"response_status", response_status_name(response->responseStatus)}};
    if (response->responseBytes == nullptr) return json;
    BASIC_OCSP_RESPONSE *basic = nullptr;
    const uint32_t status = decode_BASIC_OCSP_RESPONSE(response, &basic);
    const Owned<BASIC_OCSP_RESPONSE, free_BASIC_OCSP_RESPONSE> owner(basic);
    if (status != 0) throw Failure("the response cannot be decoded: " + exact_status_sentence(status));
    add_basic_response(json, basic);
    return json;
}

}  // namespace tool
