// tlxpki ocsp check.
#include <iostream>

#include "commands.hpp"
#include "failure.hpp"
#include "http.hpp"
#include "ocsp.hpp"
#include "revocation.hpp"
#include "status.hpp"
#include "terminal.hpp"
#include "verify.hpp"

namespace tool {

namespace {

constexpr uint32_t kReportsError = 0x501C0012;
constexpr uint32_t kNonceIsMissing = 0x501C003B;

/// What a check compares with.
struct Question {
    Certificate issuer;
    LoadedCertificate cert;
    OcspRequest request;  ///< null when it is not known
    Time time;
};

uint32_t check(const OCSP_RESPONSE *response, const Question &question, bool with_nonce,
               OCSP_ANSWER &answer) {
    const uint8_t *nonce = with_nonce ? get_OCSP_REQUEST_nonce(question.request.get()) : nullptr;
    return check_OCSP_RESPONSE(response, question.cert.cert.get(), question.issuer.get(), nonce,
                               get_OCSP_REQUEST_nonce_length(question.request.get()), question.time.get(),
                               &answer);
}

void add_answer(Json &json, const OCSP_ANSWER &answer) {
    json["state"] = certificate_status_name(answer.status);
    if (answer.status == TLX_OCSP_REVOKED) {
        json["revocation_date"] = time_text(answer.revocationTime);
        json["reason"] = reason_name(answer.reason);
    }
    json["this_update"] = time_text(answer.thisUpdate);
    if (answer.nextUpdate.day != 0) json["next_update"] = time_text(answer.nextUpdate);
}

/// Why an answer cannot be relied on.
std::string why(uint32_t status, const OCSP_RESPONSE *response) {
    if (status != kReportsError) return exact_status_sentence(status);
    return "the responder answers " + response_status_name(response->responseStatus);
}

int exit_status(uint32_t status) {
    if (status == TLX_OCSP_GOOD) return kGood;
    return status == TLX_OCSP_REVOKED ? kNotValid : kUnusable;
}

void print_finding(const Json &finding, const std::string &reason) {
    std::cout << printable(finding["source"].get<std::string>()) << ": ";
    if (!finding.contains("state")) {
        std::cout << "no reliable answer: " << reason << '\n';
        return;
    }
    std::cout << finding["state"].get<std::string>() << '\n';
    Json details = finding;
    for (const char *key : {"source", "state", "warnings"}) {
        details.erase(key);
    }
    print_text(std::cout, details, 2);
}

int report(const OCSP_RESPONSE *response, const Question &question, const OcspCheckOptions &options) {
    const X509_CERT *cert = question.cert.cert.get();
    OCSP_ANSWER answer{};
    std::vector<std::string> warnings;
    uint32_t status = check(response, question, true, answer);
    if (status == kNonceIsMissing && !options.require_nonce) {
        warnings.emplace_back("the response has no nonce: it may be older than the request");
        status = check(response, question, false, answer);
    }
    Json finding = {{"source", question.cert.source},
                    {"subject", name_text(get_X509_subject(cert))},
                    {"serial", number_hex(get_X509_serial(cert))}};
    if (status == 0) {
        add_answer(finding, answer);
    } else {
        finding["status"] = exact_status_json(status);
        if (status == kReportsError) {
            finding["response_status"] = response_status_name(response->responseStatus);
        }
    }
    if (!warnings.empty()) finding["warnings"] = warnings;
    if (options.json) {
        print_json(std::cout, finding);
    } else {
        print_finding(finding, why(status, response));
    }
    Warner().tell(warnings);
    return status == 0 ? exit_status(answer.status) : kUnusable;
}

/// The responder that a certificate names.
std::string responder_of(const LoadedCertificate &loaded) {
    AUTHORITY_INFO_ACCESS *made = nullptr;
    (void)TLX_DECODE_EXTENSION(AUTHORITY_INFO_ACCESS, get_X509_extensions(loaded.cert.get()),
                               TLX_OID_AUTHORITY_INFO_ACCESS, &made);
    const Owned<AUTHORITY_INFO_ACCESS, free_AUTHORITY_INFO_ACCESS> list(made);
    for (uint32_t i = 0; i < get_AUTHORITY_INFO_ACCESS_count(list.get()); ++i) {
        const ACCESS_DESCRIPTION *each = get_AUTHORITY_INFO_ACCESS_child(list.get(), static_cast<int32_t>(i));
        const bool is_ocsp = index_from_OBJECT_IDENTIFIER(each->accessMethod) == TLX_OID_AD_OCSP;
        if (is_ocsp && each->accessLocation->choice == TLX_GENERAL_NAME_URI) {
            return text_of(each->accessLocation->value.ia5String);
        }
    }
    throw Failure(loaded.source + ": names no OCSP responder; give one with --url");
}

/// Asks a responder with a request that has a nonce.
OcspResponse ask(const std::string &url, Question &question) {
    constexpr uint32_t kNonceOctets = 32;  // RFC 9654, section 2.1
    constexpr int kOk = 200;
    constexpr std::size_t kMostOctets = std::size_t{1} << 20;
    OCSP_REQUEST *made = nullptr;
    const uint32_t status =
        generate_OCSP_REQUEST(&made, question.cert.cert.get(), question.issuer.get(), TLX_DIGEST_SHA1);
    question.request.reset(made);
    if (status != 0) throw Failure("the request cannot be made: " + exact_status_sentence(status));
    must(generate_OCSP_REQUEST_nonce(made, kNonceOctets));
    uint8_t *octets = nullptr;
    const uint32_t size = TLX_WRITE_DER(OCSP_REQUEST, made, &octets);
    const Owned<uint8_t, tlx_free> owner(octets);
    if (octets == nullptr) throw std::bad_alloc();
    HttpRequest request;
    request.url = url;
    request.content_type = "application/ocsp-request";
    request.body.assign(reinterpret_cast<const char *>(octets), size);
    request.most_octets = kMostOctets;
    const HttpAnswer answer = ask_http(request);
    if (answer.status != kOk)
        throw Failure(url + ": answers with HTTP status " + std::to_string(answer.status));
    Block block;
    block.source = url;
    block.octets = {reinterpret_cast<const uint8_t *>(answer.body.data()), answer.body.size()};
    expect_one_element(block);
    return decode_ocsp_response(block);
}

}  // namespace

int run_ocsp_check(const OcspCheckOptions &options) {
    if (options.require_nonce && !options.response.empty() && options.request.empty()) {
        throw Failure("--require-nonce needs the --request, which has the nonce");
    }
    Question question;
    question.time = time_of_option(options.time);
    question.issuer = std::move(load_certificates(options.issuer).front().cert);
    question.cert = std::move(load_certificates(options.cert).front());
    if (options.response.empty()) {
        const std::string url = options.url.empty() ? responder_of(question.cert) : options.url;
        return report(ask(url, question).get(), question, options);
    }
    if (!options.request.empty()) question.request = load_ocsp_request(options.request);
    if (options.require_nonce && get_OCSP_REQUEST_nonce(question.request.get()) == nullptr) {
        throw Failure(source_of(options.request) + ": has no nonce");
    }
    return report(load_ocsp_response(options.response).get(), question, options);
}

}  // namespace tool
