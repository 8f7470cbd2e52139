// Time stamps in words.
#include "choice.hpp"
#include "describe.hpp"
#include "describe_cms.hpp"
#include "describe_message.hpp"
#include "timestamp.hpp"

namespace tool {

namespace {

constexpr Choice kStatuses[] = {{"granted", TLX_TIMESTAMP_GRANTED},
                                {"grantedWithMods", TLX_TIMESTAMP_GRANTED_WITH_MODS},
                                {"rejection", TLX_TIMESTAMP_REJECTION},
                                {"waiting", TLX_TIMESTAMP_WAITING},
                                {"revocationWarning", TLX_TIMESTAMP_REVOCATION_WARNING},
                                {"revocationNotification", TLX_TIMESTAMP_REVOCATION_NOTIFICATION}};

/// The bits of PKIFailureInfo that RFC 3161 has.
constexpr Choice kFailures[] = {{"badAlg", 0},
                                {"badRequest", 2},
                                {"badDataFormat", 5},
                                {"timeNotAvailable", 14},
                                {"unacceptedPolicy", 15},
                                {"unacceptedExtension", 16},
                                {"addInfoNotAvailable", 17},
                                {"systemFailure", 25}};

std::string status_name(uint32_t status) {
    for (const Choice &known : kStatuses) {
        if (known.value == status) return known.name;
    }
    return std::to_string(status);
}

std::string failure_name(uint32_t bit) {
    for (const Choice &known : kFailures) {
        if (known.value == bit) return known.name;
    }
    return "bit " + std::to_string(bit);
}

Json describe_failures(const BIT_STRING *bits) {
    Json names = Json::array();
    const Octets octets = octets_of(bits);
    for (uint32_t bit = 0; bit < 8 * octets.size(); ++bit) {
        if ((octets[bit / 8] >> (7 - bit % 8) & 1) != 0) names.push_back(failure_name(bit));
    }
    return names;
}

Json describe_text(const UTF8_STRING *text) {
    return text_of(text);
}

}  // namespace

Json describe_timestamp_request(const CMS_TIMESTAMP_REQUEST *request) {
    Json json = {{"kind", "time stamp request"}, {"version", std::to_string(request->version)}};
    add_algorithm(json, "digest_algorithm", request->messageImprint->hashAlgorithm);
    json["digest"] = hex(octets_of(request->messageImprint->hashedMessage));
    if (request->reqPolicy != nullptr) json["policy"] = oid_json(request->reqPolicy);
    if (request->nonce != nullptr) json["nonce"] = number_hex(request->nonce);
    json["wants_certificate"] = request->certReq != 0;
    if (request->extensions != nullptr) {
        json["extensions"] = describe_items(request->extensions, get_X509_EXTENSION_count, get_X509_EXTENSION,
                                            describe_extension);
    }
    return json;
}

Json describe_timestamp_response(const CMS_TIMESTAMP_RESPONSE *response) {
    const CMS_PKI_STATUS_INFO *status = response->status;
    Json json = {{"kind", "time stamp response"}, {"response_status", status_name(status->status)}};
    if (status->statusString != nullptr) {
        Json &texts = json["texts"] = Json::array();
        for (uint32_t i = 0; i < get_STACK_count(status->statusString); ++i) {
            texts.push_back(
                describe_text(static_cast<const UTF8_STRING *>(get_STACK_value(status->statusString, i))));
        }
    }
    if (status->failInfo != nullptr) json["failures"] = describe_failures(status->failInfo);
    if (response->timeStampToken != nullptr) json["token"] = describe_cms(response->timeStampToken);
    return json;
}

Json describe_timestamp_token(const CMS_CONTENT_INFO *token) {
    Json json = {{"kind", "time stamp token"}};
    Json message = describe_cms(token);
    message.erase("kind");
    json.update(message);
    return json;
}

bool is_timestamp_token(const CMS_CONTENT_INFO *message) {
    const CMS_SIGNED_DATA *data = message->signedData;
    return data != nullptr &&
           dotted_text(data->encapContentInfo->eContentType) == "1.2.840.113549.1.9.16.1.4";
}

}  // namespace tool
