// Reading enveloped, encrypted, authenticated and digested messages in pieces.
#include <algorithm>

#include "message/cms_records.hpp"
#include "message/enveloped_content.hpp"
#include "message/message_output.hpp"
#include "message/message_reading.hpp"
#include "verify/object.hpp"

using namespace tlx;

namespace {

constexpr ReadingStatuses kStatuses = {0x52A0001C, 0x52A00048, 0x52A0004F, 0x52A0003C,
                                       0x52A1002B, 0x52A1001C, 0x52A2001C};

}  // namespace

struct ENVELOPED_MESSAGE_READER {
  public:
    explicit ENVELOPED_MESSAGE_READER(const ENVELOPED_MESSAGE_READER_SETTINGS &settings) noexcept
        : settings_(settings),
          reading_({MessageKind::enveloped_data, MessageKind::digested_data, MessageKind::encrypted_data,
                    MessageKind::authenticated_data, MessageKind::auth_enveloped_data},
                   settings.held_limit, kStatuses) {}

    [[nodiscard]] u32 update(Bytes octets) noexcept;
    [[nodiscard]] u32 update_content(Bytes octets) noexcept;
    [[nodiscard]] u32 finish() noexcept;
    [[nodiscard]] const MessageReading &reading() const noexcept { return reading_; }
    [[nodiscard]] OBJECT_IDENTIFIER *content_type() const noexcept;
    [[nodiscard]] u32 make_message(CMS_CONTENT_INFO **out) const noexcept;

  private:
    [[nodiscard]] u32 begin() noexcept;
    [[nodiscard]] u32 take_content(Bytes octets) noexcept;
    [[nodiscard]] u32 take_plain(Bytes octets) noexcept;
    [[nodiscard]] u32 begin_inner_message(u8 first) noexcept;
    [[nodiscard]] u32 end_inner_message() noexcept;
    [[nodiscard]] u32 hold_or_give(Bytes octets) noexcept;
    [[nodiscard]] u32 verify() noexcept;

    ENVELOPED_MESSAGE_READER_SETTINGS settings_;
    MessageReading reading_;
    EnvelopedContent content_;
    HeldContent held_;
    u32 around_ = 0;  ///< elements that were begun around the content
    bool begun_ = false;
};

u32 ENVELOPED_MESSAGE_READER::update(Bytes octets) noexcept {
    const u32 status = reading_.update(
        octets, [&] { return begin(); }, [&](Bytes content) { return take_content(content); });
    const bool is_other =
        status == kStatuses.misplaced && reading_.message().kind() == MessageKind::signed_and_enveloped_data;
    return is_other ? reading_.fail(0x52A00012) : status;
}

u32 ENVELOPED_MESSAGE_READER::begin() noexcept {
    begun_ = true;
    return content_.begin(reading_.message(), settings_);
}

u32 ENVELOPED_MESSAGE_READER::take_content(Bytes octets) noexcept {
    return content_.update(octets, [&](Bytes plain) { return take_plain(plain); });
}

u32 ENVELOPED_MESSAGE_READER::take_plain(Bytes octets) noexcept {
    if (octets.empty()) return 0;
    if (settings_.as_message != 0 && around_ == 0 && !content_is_data(reading_.message())) {
        if (const u32 status = begin_inner_message(octets.front()); status != 0) return status;
    }
    return hold_or_give(octets);
}

/// The ContentInfo of an inner message, which is not encrypted with it, and the tag and length of the body,
/// which PKCS #7 does not encrypt either (RFC 2315, section 10.3).
u32 ENVELOPED_MESSAGE_READER::begin_inner_message(u8 first) noexcept {
    constexpr u8 kBegin[] = {kSequence, kIndefiniteLength};
    constexpr u8 kContent[] = {context(0), kIndefiniteLength};
    Element type;
    if (!read_element(reading_.message().info(), type)) return 0x52A00104;
    around_ = first == kSequence ? 2 : 3;
    for (const Bytes octets : {Bytes(kBegin), type.whole, Bytes(kContent)}) {
        if (const u32 status = hold_or_give(octets); status != 0) return status;
    }
    return first == kSequence ? 0 : hold_or_give(kBegin);
}

u32 ENVELOPED_MESSAGE_READER::end_inner_message() noexcept {
    constexpr u8 kEndOfContents[kEndOfContentsSize] = {};
    for (; around_ > 0; --around_) {
        if (const u32 status = hold_or_give(kEndOfContents); status != 0) return status;
    }
    return 0;
}

u32 ENVELOPED_MESSAGE_READER::hold_or_give(Bytes octets) noexcept {
    if (settings_.output == nullptr) return give_out(settings_.unverified_output, settings_.context, octets);
    if (octets.size() > most_held_back(settings_) - held_.size()) return 0x52A10047;
    return held_.keep(octets) ? 0 : 0x52A0003C;
}

u32 ENVELOPED_MESSAGE_READER::update_content(Bytes octets) noexcept {
    return reading_.update_content(octets, [&](Bytes content) { return take_content(content); });
}

u32 ENVELOPED_MESSAGE_READER::finish() noexcept {
    u32 status = reading_.finish();
    if (status == 0) status = verify();
    if (status == 0) status = end_inner_message();
    if (status != 0) return status;
    return held_.release([&](Bytes octets) { return give_out(settings_.output, settings_.context, octets); });
}

u32 ENVELOPED_MESSAGE_READER::verify() noexcept {
    const MessageParser &message = reading_.message();
    MembersAfter members;
    Bytes last;
    if (!reading_.is_complete()) return 0x52A2004F;
    if (!read_members(message.kind(), message.after_content(), members)) return 0x52A20104;
    if (!reading_.content_given()) return 0x52A2003B;
    const u32 status = content_.finish(message, members, last);
    return status != 0 ? status : take_plain(last);
}

u32 ENVELOPED_MESSAGE_READER::make_message(CMS_CONTENT_INFO **out) const noexcept {
    if (!reading_.is_complete()) return 0x52A6002B;
    Encoder message;
    {
        const auto info = message.sequence();
        message.raw(reading_.message().message_type());
        const auto content = message.nest(context(0));
        const auto body = message.sequence();
        message.raw(reading_.message().body());
    }
    Element element;
    if (!message.ok() || !read_element(message.bytes(), element)) return 0x52A6003C;
    CMS_CONTENT_INFO *made = nullptr;
    if (const u32 status = Codec<CMS_CONTENT_INFO>::decode(element, &made); status != 0) return status;
    free_CMS_CONTENT_INFO(std::exchange(*out, made));
    return 0;
}

OBJECT_IDENTIFIER *ENVELOPED_MESSAGE_READER::content_type() const noexcept {
    return begun_ ? decode_oid(reading_.message().content_type()) : nullptr;
}

ENVELOPED_MESSAGE_READER *new_ENVELOPED_MESSAGE_READER(const ENVELOPED_MESSAGE_READER_SETTINGS *settings) {
    return can_read_with(settings) ? make_object<ENVELOPED_MESSAGE_READER>(*settings).release() : nullptr;
}

void free_ENVELOPED_MESSAGE_READER(ENVELOPED_MESSAGE_READER *reader) {
    Destroy<ENVELOPED_MESSAGE_READER>{}(reader);
}

uint32_t update_ENVELOPED_MESSAGE_READER(ENVELOPED_MESSAGE_READER *reader, const uint8_t *octets,
                                         uint32_t len) {
    if (reader == nullptr || (octets == nullptr && len != 0)) return 0x52A00049;
    return reader->update({octets, len});
}

uint32_t update_ENVELOPED_MESSAGE_READER_content(ENVELOPED_MESSAGE_READER *reader, const uint8_t *octets,
                                                 uint32_t len) {
    if (reader == nullptr || octets == nullptr) return 0x52A10049;
    return reader->update_content({octets, len});
}

uint32_t final_ENVELOPED_MESSAGE_READER(ENVELOPED_MESSAGE_READER *reader) {
    return reader == nullptr ? 0x52A20049 : reader->finish();
}

uint32_t get_ENVELOPED_MESSAGE_READER_type(const ENVELOPED_MESSAGE_READER *reader) {
    return static_cast<u32>(reader == nullptr ? MessageKind::none : reader->reading().message().kind());
}

uint32_t is_ENVELOPED_MESSAGE_READER_authenticated(const ENVELOPED_MESSAGE_READER *reader) {
    const u32 type = get_ENVELOPED_MESSAGE_READER_type(reader);
    return type == TLX_MESSAGE_AUTHENTICATED_DATA || type == TLX_MESSAGE_AUTH_ENVELOPED_DATA ? 1 : 0;
}

OBJECT_IDENTIFIER *get_ENVELOPED_MESSAGE_READER_content_type(const ENVELOPED_MESSAGE_READER *reader) {
    return reader == nullptr ? nullptr : reader->content_type();
}

uint32_t get_ENVELOPED_MESSAGE_READER_message(const ENVELOPED_MESSAGE_READER *reader,
                                              CMS_CONTENT_INFO **out) {
    return reader == nullptr || out == nullptr ? 0x52A60049 : reader->make_message(out);
}

uint32_t is_ENVELOPED_MESSAGE_READER_complete(const ENVELOPED_MESSAGE_READER *reader) {
    return reader != nullptr && reader->reading().is_complete() ? 1 : 0;
}

uint32_t is_ENVELOPED_MESSAGE_READER_detached(const ENVELOPED_MESSAGE_READER *reader) {
    return reader != nullptr && reader->reading().is_detached() ? 1 : 0;
}
