// Reading signed messages in pieces.
#include <tlxpki/message_stream.h>

#include "message/message_output.hpp"
#include "message/message_reading.hpp"
#include "message/signed_body.hpp"
#include "message/streamed_content.hpp"
#include "message/strict_path.hpp"
#include "verify/object.hpp"

using namespace tlx;

namespace {

constexpr ReadingStatuses kStatuses = {0x52800047, 0x52800048, 0x5280004F, 0x5280003C,
                                       0x5281002B, 0x5281001C, 0x5282001C};

/// For signatures that need the content after the key.
u32 most_kept(const SIGNED_MESSAGE_READER_SETTINGS &settings) noexcept {
    if (settings.output != nullptr) return most_held_back(settings);
    return settings.held_limit != 0 ? settings.held_limit : TLX_MESSAGE_HELD_LIMIT;
}

}  // namespace

struct SIGNED_MESSAGE_READER {
  public:
    explicit SIGNED_MESSAGE_READER(const SIGNED_MESSAGE_READER_SETTINGS &settings) noexcept
        : settings_(settings),
          reading_({MessageKind::signed_data}, settings.held_limit, kStatuses),
          content_(most_kept(settings), settings.pool) {}

    [[nodiscard]] u32 update(Bytes octets) noexcept;
    [[nodiscard]] u32 update_content(Bytes octets) noexcept;
    [[nodiscard]] u32 finish(P7_SIGNER_REPORTS **reports) noexcept;
    [[nodiscard]] const MessageReading &reading() const noexcept { return reading_; }

  private:
    [[nodiscard]] u32 take_content(Bytes octets) noexcept;
    [[nodiscard]] u32 verify(P7_SIGNER_REPORTS **reports) noexcept;

    SIGNED_MESSAGE_READER_SETTINGS settings_;
    MessageReading reading_;
    StreamedContent content_;
};

u32 SIGNED_MESSAGE_READER::update(Bytes octets) noexcept {
    return reading_.update(
        octets, [&] { return content_.start(reading_.message().before_content()); },
        [&](Bytes content) { return take_content(content); });
}

u32 SIGNED_MESSAGE_READER::take_content(Bytes octets) noexcept {
    if (!content_.update(octets)) return 0x5280003C;
    if (settings_.output != nullptr && !content_.is_kept()) return 0x52810047;
    return give_out(settings_.unverified_output, settings_.context, octets);
}

u32 SIGNED_MESSAGE_READER::update_content(Bytes octets) noexcept {
    return reading_.update_content(octets, [&](Bytes content) { return take_content(content); });
}

u32 SIGNED_MESSAGE_READER::finish(P7_SIGNER_REPORTS **reports) noexcept {
    u32 status = reading_.finish();
    if (status == 0) status = verify(reports);
    return status != 0 ? status : give_out(settings_.output, settings_.context, content_.kept());
}

u32 SIGNED_MESSAGE_READER::verify(P7_SIGNER_REPORTS **reports) noexcept {
    const MessageParser &message = reading_.message();
    if (!reading_.is_complete()) return 0x5282004F;
    SignedBody body;
    if (const u32 status = body.decode(message.body()); status != 0) return status;
    const SignerMembers members = body.members();
    if (get_STACK_count(members.signers) == 0) return 0x5282002B;
    if (!reading_.content_given()) return 0x5282003B;
    const Owned<OBJECT_IDENTIFIER> content_type(decode_oid(message.content_type()));
    if (!content_type) return 0x52820104;
    SignerChecks checks;
    if (!content_.finish(checks)) return 0x5282003C;
    checks.content_type = content_type.get();
    checks.again = {settings_.content_again, settings_.content_again_context};
    const VERIFY_SETTINGS wanted =
        settings_.settings != nullptr ? *settings_.settings : signing_settings(nullptr);
    return verify_signers({settings_.pool, wanted, settings_.store, nullptr, settings_.store != nullptr},
                          members, checks, reports);
}

SIGNED_MESSAGE_READER *new_SIGNED_MESSAGE_READER(const SIGNED_MESSAGE_READER_SETTINGS *settings) {
    return can_read_with(settings) ? make_object<SIGNED_MESSAGE_READER>(*settings).release() : nullptr;
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
    return reader != nullptr && reader->reading().is_complete() ? 1 : 0;
}

uint32_t is_SIGNED_MESSAGE_READER_detached(const SIGNED_MESSAGE_READER *reader) {
    return reader != nullptr && reader->reading().is_detached() ? 1 : 0;
}
