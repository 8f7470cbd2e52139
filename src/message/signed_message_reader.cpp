// Reading signed messages in pieces.
#include <tlxpki/message_stream.h>

#include "message/message_parser.hpp"
#include "message/signed_body.hpp"
#include "message/streamed_content.hpp"
#include "message/strict_path.hpp"
#include "verify/object.hpp"

using namespace tlx;

namespace {

u32 status_of(MessageParser::Failure failure) noexcept {
    switch (failure) {
        case MessageParser::Failure::too_long:
            return 0x52800047;
        case MessageParser::Failure::misplaced:
            return 0x52800048;
        case MessageParser::Failure::no_element:
            return 0x5280004F;
        default:
            return 0x5280003C;
    }
}

}  // namespace

struct SIGNED_MESSAGE_READER {
  public:
    explicit SIGNED_MESSAGE_READER(const SIGNED_MESSAGE_READER_SETTINGS &settings) noexcept
        : settings_(settings),
          parser_({MessageKind::signed_data}, held_limit(settings)),
          content_(most_kept(settings), settings.pool) {}

    [[nodiscard]] u32 update(Bytes octets) noexcept;
    [[nodiscard]] u32 update_content(Bytes octets) noexcept;
    [[nodiscard]] u32 finish(P7_SIGNER_REPORTS **reports) noexcept;
    [[nodiscard]] bool is_complete() const noexcept { return parser_.is_done(); }
    [[nodiscard]] bool is_detached() const noexcept { return is_complete() && !parser_.has_content(); }

  private:
    static u32 held_limit(const SIGNED_MESSAGE_READER_SETTINGS &settings) noexcept {
        return settings.held_limit != 0 ? settings.held_limit : TLX_MESSAGE_HELD_LIMIT;
    }
    static u32 most_kept(const SIGNED_MESSAGE_READER_SETTINGS &settings) noexcept {
        if (settings.output == nullptr) return held_limit(settings);
        return settings.held_back_limit != 0 ? settings.held_back_limit : TLX_MESSAGE_HELD_BACK_LIMIT;
    }

    [[nodiscard]] u32 parse(Bytes octets) noexcept;
    [[nodiscard]] u32 take_content(Bytes octets) noexcept;
    [[nodiscard]] u32 verify(P7_SIGNER_REPORTS **reports) noexcept;
    [[nodiscard]] u32 give_out(MESSAGE_OUTPUT output, Bytes octets) const noexcept {
        if (output == nullptr || octets.empty()) return 0;
        return output(settings_.context, octets.data(), static_cast<u32>(octets.size()));
    }

    SIGNED_MESSAGE_READER_SETTINGS settings_;
    MessageParser parser_;
    StreamedContent content_;
    bool content_given_ = false;
    u32 status_ = 0;  ///< of the operation that ended the message
};

u32 SIGNED_MESSAGE_READER::update(Bytes octets) noexcept {
    if (status_ == 0) status_ = parse(octets);
    return status_;
}

u32 SIGNED_MESSAGE_READER::parse(Bytes octets) noexcept {
    for (;;) {
        u32 status = 0;
        switch (parser_.next(octets)) {
            case MessageParser::Step::need_more:
                return 0;
            case MessageParser::Step::content_begins:
                content_given_ = true;
                status = content_.start(parser_.before_content());
                break;
            case MessageParser::Step::content_missing:
                status = content_.start(parser_.before_content());
                break;
            case MessageParser::Step::content:
                status = take_content(parser_.octets());
                break;
            case MessageParser::Step::done:
                break;
            case MessageParser::Step::failed:
                return status_of(parser_.failure());
        }
        if (status != 0) return status;
    }
}

u32 SIGNED_MESSAGE_READER::take_content(Bytes octets) noexcept {
    if (!content_.update(octets)) return 0x5280003C;
    if (settings_.output != nullptr && !content_.is_kept()) return 0x52810047;
    return give_out(settings_.unverified_output, octets);
}

u32 SIGNED_MESSAGE_READER::update_content(Bytes octets) noexcept {
    if (status_ != 0) return status_;
    if (!is_complete()) return 0x5281002B;
    if (parser_.has_content()) return 0x5281001C;
    content_given_ = true;
    return status_ = take_content(octets);
}

u32 SIGNED_MESSAGE_READER::finish(P7_SIGNER_REPORTS **reports) noexcept {
    if (status_ != 0) return status_;
    status_ = 0x5282001C;
    const u32 status = verify(reports);
    return status != 0 ? status : give_out(settings_.output, content_.kept());
}

u32 SIGNED_MESSAGE_READER::verify(P7_SIGNER_REPORTS **reports) noexcept {
    if (!is_complete()) return 0x5282004F;
    SignedBody body;
    if (const u32 status = body.decode(parser_.body()); status != 0) return status;
    const SignerMembers members = body.members();
    if (get_STACK_count(members.signers) == 0) return 0x5282002B;
    if (!content_given_) return 0x5282003B;
    Element type;
    const bool has_type = read_element(parser_.info(), type);
    const Owned<OBJECT_IDENTIFIER> content_type(has_type ? decode_oid(type.contents) : nullptr);
    if (!content_type) return 0x52820104;
    SignerChecks checks;
    if (!content_.finish(checks)) return 0x5282003C;
    checks.content_type = content_type.get();
    const VERIFY_SETTINGS wanted =
        settings_.settings != nullptr ? *settings_.settings : signing_settings(nullptr);
    return verify_signers({settings_.pool, wanted, settings_.store, nullptr, settings_.store != nullptr},
                          members, checks, reports);
}

SIGNED_MESSAGE_READER *new_SIGNED_MESSAGE_READER(const SIGNED_MESSAGE_READER_SETTINGS *settings) {
    if (settings == nullptr || settings->held_back_limit > TLX_MESSAGE_HELD_BACK_LIMIT) return nullptr;
    if (settings->output != nullptr && settings->unverified_output != nullptr) return nullptr;
    return make_object<SIGNED_MESSAGE_READER>(*settings).release();
}

void free_SIGNED_MESSAGE_READER(SIGNED_MESSAGE_READER *reader) {
    Destroy<SIGNED_MESSAGE_READER>{}(reader);
}

uint32_t update_SIGNED_MESSAGE_READER(SIGNED_MESSAGE_READER *reader, const uint8_t *octets, uint32_t len) {
    if (reader == nullptr || (octets == nullptr && len != 0)) return 0x52800049;
    return reader->update({octets, len});
}

uint32_t update_SIGNED_MESSAGE_READER_content(SIGNED_MESSAGE_READER *reader, const uint8_t *octets,
                                              uint32_t len) {
    if (reader == nullptr || octets == nullptr) return 0x52810049;
    return reader->update_content({octets, len});
}

uint32_t final_SIGNED_MESSAGE_READER(SIGNED_MESSAGE_READER *reader, P7_SIGNER_REPORTS **reports) {
    return reader == nullptr ? 0x52820049 : reader->finish(reports);
}

uint32_t is_SIGNED_MESSAGE_READER_complete(const SIGNED_MESSAGE_READER *reader) {
    return reader != nullptr && reader->is_complete() ? 1 : 0;
}

uint32_t is_SIGNED_MESSAGE_READER_detached(const SIGNED_MESSAGE_READER *reader) {
    return reader != nullptr && reader->is_detached() ? 1 : 0;
}
