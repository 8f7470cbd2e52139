// tlxpki timestamp request.
#include <iostream>

#include "commands.hpp"
#include "digest_choice.hpp"
#include "failure.hpp"
#include "output.hpp"
#include "record.hpp"
#include "status.hpp"
#include "timestamp.hpp"

namespace tool {

namespace {

constexpr uint32_t kNonceOctets = 8;

void must_be_made(uint32_t status) {
    if (status != 0) throw Failure("the request cannot be made: " + exact_status_sentence(status));
}

TimestampRequest request_for_signature(const TimestampRequestOptions &options) {
    const CmsMessage message = read_signed_message(options.message);
    const Octets signature = octets_of(signer_of(message.get(), options.signer, options.message)->signature);
    CMS_TIMESTAMP_REQUEST *request = nullptr;
    must_be_made(generate_CMS_TIMESTAMP_REQUEST(&request, value_of(kMessageDigests, options.digest),
                                                signature.data(), static_cast<uint32_t>(signature.size())));
    return TimestampRequest(request);
}

TimestampRequest request_for_file(const TimestampRequestOptions &options) {
    const uint32_t digest_id = value_of(kMessageDigests, options.digest);
    const FileDigest digest = digest_file(options.file, digest_id);
    CMS_TIMESTAMP_REQUEST *request = nullptr;
    must_be_made(
        generate_CMS_TIMESTAMP_REQUEST_of_digest(&request, digest_id, digest.octets.data(), digest.length));
    return TimestampRequest(request);
}

void set_policy(CMS_TIMESTAMP_REQUEST *request, const std::string &text) {
    const Oid policy(text_to_OBJECT_IDENTIFIER(text.c_str()));
    if (policy == nullptr) throw Failure("\"" + text + "\" is no object identifier");
    must(set_CMS_TIMESTAMP_REQUEST_policy(request, policy.get()));
}

}  // namespace

int run_timestamp_request(const TimestampRequestOptions &options) {
    expect_room_for_json(options.json, options.output);
    if (options.message.empty() && options.file.empty()) throw Failure("--message or --file is required");
    const TimestampRequest request =
        options.message.empty() ? request_for_file(options) : request_for_signature(options);
    if (!options.policy.empty()) set_policy(request.get(), options.policy);
    if (!options.no_nonce) must_be_made(generate_CMS_TIMESTAMP_REQUEST_nonce(request.get(), kNonceOctets));
    if (options.no_certificate) request->certReq = 0;
    uint8_t *octets = nullptr;
    const uint32_t size = TLX_WRITE_DER(CMS_TIMESTAMP_REQUEST, request.get(), &octets);
    const Owned<uint8_t, tlx_free> owner(octets);
    if (octets == nullptr) throw Failure("the request cannot be encoded");
    write_octets(options.output, {octets, size});
    if (options.json) {
        Json document = {{"output", options.output}};
        document.update(describe_timestamp_request(request.get()));
        print_json(std::cout, document);
    }
    return kGood;
}

}  // namespace tool
