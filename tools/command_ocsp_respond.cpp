// tlxpki ocsp respond.
#include <iostream>

#include "failure.hpp"
#include "http_server.hpp"
#include "ocsp_responder.hpp"
#include "output.hpp"
#include "text.hpp"

namespace tool {

namespace {

Buffer encoded(const OCSP_RESPONSE *response) {
    uint8_t *octets = nullptr;
    const uint32_t size = TLX_WRITE_DER(OCSP_RESPONSE, response, &octets);
    if (octets == nullptr) throw std::bad_alloc();
    return {octets, size};
}

std::string text_of(const Buffer &octets) {
    return {reinterpret_cast<const char *>(octets.octets().data()), octets.octets().size()};
}

/// A response that says only why there is no other.
std::string refusal(int32_t status) {
    OCSP_RESPONSE *response = nullptr;
    must(generate_OCSP_RESPONSE(&response, nullptr, status));
    const OcspResponse owner(response);
    return text_of(encoded(response));
}

/// The request in a POST, or in the Base64 of a GET (RFC 6960, appendix A.1). Throws Failure.
OcspRequest request_of(const HttpQuestion &question) {
    const std::string &text = question.octets;
    const auto size = static_cast<uint32_t>(text.size());
    uint8_t *decoded = nullptr;
    const uint32_t decoded_size = question.is_post ? 0 : decode_Base64(text.data(), size, &decoded);
    const Buffer owner(decoded, decoded_size);
    Block block;
    block.source = "the request";
    block.octets =
        question.is_post ? Octets(reinterpret_cast<const uint8_t *>(text.data()), size) : owner.octets();
    if (block.octets.empty()) throw Failure("the request is empty");
    expect_one_element(block);
    return decode_ocsp_request(block);
}

/// Whatever fails, the client gets a response.
std::string response_to(const HttpQuestion &question, const OcspResponder &responder) {
    OcspRequest request;
    try {
        request = request_of(question);
    } catch (const Failure &) {
        return refusal(TLX_OCSP_MALFORMED_REQUEST);
    }
    try {
        return text_of(encoded(responder.answer(request.get()).get()));
    } catch (const Failure &failure) {
        std::cerr << "tlxpki: " + printable(failure.what()) + "\n";
        return refusal(TLX_OCSP_INTERNAL_ERROR);
    }
}

void serve(const std::string &address, const OcspResponder &responder) {
    HttpService service;
    service.address = address;
    service.content_type = "application/ocsp-request";
    service.answer = [&responder](const HttpQuestion &question) -> HttpAnswer {
        constexpr int kOk = 200;
        return {kOk, "application/ocsp-response", response_to(question, responder)};
    };
    service.begun = [](const std::string &place) { std::cout << "listening on " << place << std::endl; };
    serve_http(service);
}

}  // namespace

int run_ocsp_respond(const OcspRespondOptions &options) {
    if (options.listen.empty() && options.request.empty()) throw Failure("a request or --listen is needed");
    expect_room_for_json(options.json, options.output);
    const OcspResponder responder(options);
    if (!options.listen.empty()) {
        serve(options.listen, responder);
        return kGood;
    }
    const OcspResponse response = responder.answer(load_ocsp_request(options.request).get());
    write_octets(options.output, encoded(response.get()).octets());
    if (options.json) {
        Json document = {{"output", options.output}};
        document.update(describe_ocsp_response(response.get()));
        print_json(std::cout, document);
    }
    return kGood;
}

}  // namespace tool
