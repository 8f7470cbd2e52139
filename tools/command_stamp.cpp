// tlxpki message stamp.
#include <iostream>

#include "commands.hpp"
#include "failure.hpp"
#include "output.hpp"
#include "record.hpp"
#include "status.hpp"
#include "timestamp.hpp"

namespace tool {

namespace {

/// Writes a message in the form of a block.
void write_as(const Block &block, const CMS_CONTENT_INFO *message, const std::string &path) {
    constexpr uint32_t kFailed = 0xFFFFFFFF;
    const bool as_pem = !block.label.empty();
    uint8_t *octets = nullptr;
    char *text = nullptr;
    const uint32_t size = !as_pem                ? TLX_WRITE_DER(CMS_CONTENT_INFO, message, &octets)
                          : block.label == "CMS" ? TLX_WRITE_PEM(CMS_CONTENT_INFO, message, "CMS", &text)
                                                 : TLX_WRITE_PEM(CMS_CONTENT_INFO, message, "PKCS7", &text);
    const Owned<uint8_t, tlx_free> owned_octets(octets);
    const Text owned_text(text);
    if (size == kFailed) throw Failure(path + ": the message cannot be encoded");
    write_octets(path, {as_pem ? reinterpret_cast<const uint8_t *>(text) : octets, size});
}

}  // namespace

int run_stamp(const StampOptions &options) {
    expect_room_for_json(options.json, options.output);
    const CmsMessage token = load_timestamp_token(options.token);
    const Input input(options.message);
    const CmsMessage message = signed_message_of(input);
    const auto signer = stamped_signer(message.get(), token.get(), options.signer, options.message);
    const uint32_t status = add_CMS_SIGNER_INFO_timestamp(signer.info, token.get());
    if (status != 0) {
        throw Failure(source_of(options.token) + ": is no time stamp of signer " +
                      std::to_string(signer.number) + ": " + exact_status_sentence(status));
    }
    write_as(input.blocks().front(), message.get(), options.output);
    if (options.json) {
        print_json(std::cout, {{"output", options.output}, {"signer", signer.number}});
    }
    return kGood;
}

}  // namespace tool
