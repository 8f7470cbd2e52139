// tlxpki message decrypt.
#include <iostream>

#include "commands.hpp"
#include "failure.hpp"
#include "key_file.hpp"
#include "message.hpp"
#include "message_pieces.hpp"
#include "output.hpp"
#include "status.hpp"
#include "token.hpp"

namespace tool {

namespace {

using EnvelopedReader = Owned<ENVELOPED_MESSAGE_READER, free_ENVELOPED_MESSAGE_READER>;

constexpr uint32_t kNotOfThisKey = 0x4B410012;
constexpr uint32_t kNoRecipient = 0x4B410047;

/// What the user has to open a message with.
class Holder {
  public:
    explicit Holder(const DecryptOptions &options)
        : tokens_(options.pin_file), password_(options.password_file) {
        const bool has_key = !options.key.empty();
        if (has_key == options.password_recipient || (!has_key && !options.cert.empty())) {
            throw Failure("give --key and --cert, or --password-recipient");
        }
        if (has_key) {
            if (!options.cert.empty()) cert_ = load_certificate(options.cert, tokens_).cert;
            key_ = load_private_key(options.key, password_, tokens_, KeyUse::kDecrypt);
            holder_.certificate = cert_.get();
            holder_.private_key = key_.get();
        } else {
            const std::string_view text = password_.of_message(source_of(options.message));
            holder_.password = reinterpret_cast<const uint8_t *>(text.data());
            holder_.password_len = static_cast<uint32_t>(text.size());
        }
    }

    [[nodiscard]] const CMS_KEY_HOLDER &get() const { return holder_; }

  private:
    Tokens tokens_;
    Password password_;
    Certificate cert_;
    Key key_;
    CMS_KEY_HOLDER holder_ = {};
};

/// A message that was not decrypted, or how many octets it gave.
struct Opened {
    uint32_t status = 0;
    uint64_t size = 0;
};

/// The status of a message that the holder does not open, as open_PKCS7() has it; 0 for other statuses.
uint32_t refusal_of(uint32_t status) {
    constexpr uint32_t kHolderIsNoRecipient = 0x52A00047;
    constexpr uint32_t kDoesNotDecrypt = 0x52A20012;
    constexpr uint32_t kOtherCode = 0x52A20054;
    switch (status) {
        case kNotOfThisKey:
        case kNoRecipient:
        case kOtherCode:
            return status;
        case kDoesNotDecrypt:
            return kNotOfThisKey;
        case kHolderIsNoRecipient:
            return kNoRecipient;
        default:
            return 0;
    }
}

[[noreturn]] void fail(const std::string &source, uint32_t status) {
    throw Failure(source + ": cannot be decrypted: " + exact_status_sentence(status));
}

/// Opens signed-and-enveloped data, which is read whole.
Opened open_whole(const DecryptOptions &options, Source &source, const CMS_KEY_HOLDER &holder) {
    const Message message = decode_message(Input(source.rest().octets(), source.name()));
    if (holder.certificate == nullptr) throw Failure(source.name() + ": takes --cert and --key");
    uint8_t *octets = nullptr;
    uint32_t length = 0;
    const uint32_t status =
        open_PKCS7(message.get(), holder.certificate, holder.private_key, &octets, &length);
    const Buffer content(octets, length);
    if (refusal_of(status) != 0) return {status, 0};
    if (status != 0) fail(source.name(), status);
    write_octets(options.output, content.octets());
    return {0, length};
}

Opened open_in_pieces(const DecryptOptions &options, Source &source, const CMS_KEY_HOLDER &holder,
                      Waiting &waiting) {
    ContentTarget target(options.output, options.unverified_output);
    ENVELOPED_MESSAGE_READER_SETTINGS settings = {};
    target.set(settings);
    settings.as_message = 1;
    settings.holder = &holder;
    const auto reader = made<EnvelopedReader>(new_ENVELOPED_MESSAGE_READER(&settings));
    const auto done = [&](uint32_t status) {
        status = target.checked(source.name(), status);
        if (status != 0 && refusal_of(status) == 0) fail(source.name(), status);
        return status;
    };
    uint32_t status = 0;
    read_message_pieces(source, waiting, [&](Octets octets) {
        const auto size = static_cast<uint32_t>(octets.size());
        if (status == 0) status = done(update_ENVELOPED_MESSAGE_READER(reader.get(), octets.data(), size));
    });
    if (status == 0) status = done(final_ENVELOPED_MESSAGE_READER(reader.get()));
    if (status != 0) return {refusal_of(status), 0};
    target.finish();
    return {0, target.size()};
}

Opened open_message(const DecryptOptions &options, const CMS_KEY_HOLDER &holder) {
    Waiting waiting("Decrypting");
    Source source(options.message);
    switch (type_of(source)) {
        case TLX_MESSAGE_ENVELOPED_DATA:
        case TLX_MESSAGE_AUTH_ENVELOPED_DATA:
        case TLX_MESSAGE_AUTHENTICATED_DATA:
            return open_in_pieces(options, source, holder, waiting);
        default:
            return open_whole(options, source, holder);
    }
}

}  // namespace

int run_decrypt(const DecryptOptions &options) {
    expect_room_for_json(options.json, options.output);
    const Holder holder(options);
    const Opened opened = open_message(options, holder.get());
    const bool decrypted = opened.status == 0;
    const std::string source = source_of(options.message);
    if (!decrypted) {
        std::cerr << "tlxpki: " << printable(source) << ": " << exact_status_sentence(opened.status) << '\n';
    }
    if (options.json) {
        Json json = {
            {"source", source}, {"decrypted", decrypted}, {"status", exact_status_json(opened.status)}};
        if (decrypted) json.update({{"output", options.output}, {"octets", opened.size}});
        print_json(std::cout, json);
    }
    return decrypted ? kGood : kNotValid;
}

}  // namespace tool
