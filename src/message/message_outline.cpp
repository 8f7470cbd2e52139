// Messages without their content.
#include <tlxpki/message_outline.h>

#include "der/owned.hpp"
#include "message/message_output.hpp"
#include "message/message_reading.hpp"
#include "verify/object.hpp"

using namespace tlx;

namespace {

/// It takes no content apart, and has no end.
constexpr ReadingStatuses kStatuses = {0x52A80047, 0x52A80048, 0x52A8004F, 0x52A8003C, 0, 0, 0};

/// ContentInfo with the body around the content's info.
void encode(Encoder &out, const MessageParser &parser) noexcept {
    const Encoder::Nest message = out.sequence();
    out.raw(parser.message_type());
    const Encoder::Nest content = out.nest(context(0));
    const Encoder::Nest body = out.sequence();
    out.raw(parser.before_content());
    {
        const Encoder::Nest info = out.sequence();
        out.raw(parser.info());
    }
    out.raw(parser.after_content());
}

}  // namespace

struct MESSAGE_OUTLINE {
  public:
    explicit MESSAGE_OUTLINE(u32 held_limit) noexcept
        : reading_(
              {MessageKind::signed_data, MessageKind::enveloped_data, MessageKind::signed_and_enveloped_data,
               MessageKind::digested_data, MessageKind::encrypted_data, MessageKind::authenticated_data,
               MessageKind::auth_enveloped_data},
              held_limit, kStatuses) {}

    void set_output(MESSAGE_OUTPUT output, void *context) noexcept {
        output_ = output;
        context_ = context;
    }
    [[nodiscard]] u32 update(Bytes octets) noexcept;
    [[nodiscard]] u32 write(u8 **octets, u32 &len, std::uint64_t &content_size) const noexcept;
    [[nodiscard]] u32 content_tag() const noexcept {
        return reading_.is_complete() ? reading_.message().content_tag() : 0;
    }

  private:
    MessageReading reading_;
    MESSAGE_OUTPUT output_ = nullptr;
    void *context_ = nullptr;
    std::uint64_t content_size_ = 0;
};

u32 MESSAGE_OUTLINE::update(Bytes octets) noexcept {
    return reading_.update(
        octets, [] { return 0U; },
        [&](Bytes content) {
            content_size_ += content.size();
            return give_out(output_, context_, content);
        });
}

u32 MESSAGE_OUTLINE::write(u8 **octets, u32 &len, std::uint64_t &content_size) const noexcept {
    if (!reading_.is_complete()) return 0x52A9002B;
    Encoder out;
    encode(out, reading_.message());
    u8 *copy = out.ok() ? copy_terminated(out.bytes()) : nullptr;
    if (copy == nullptr) return 0x52A9003C;
    *octets = copy;
    len = static_cast<u32>(out.bytes().size());
    content_size = reading_.message().has_content() ? content_size_ : UINT64_MAX;
    return 0;
}

MESSAGE_OUTLINE *new_MESSAGE_OUTLINE(uint32_t held_limit) {
    return make_object<MESSAGE_OUTLINE>(held_limit).release();
}

void free_MESSAGE_OUTLINE(MESSAGE_OUTLINE *outline) {
    Destroy<MESSAGE_OUTLINE>{}(outline);
}

uint32_t set_MESSAGE_OUTLINE_output(MESSAGE_OUTLINE *outline, MESSAGE_OUTPUT output, void *context) {
    if (outline == nullptr) return 0x52AA0049;
    outline->set_output(output, context);
    return 0;
}

uint32_t get_MESSAGE_OUTLINE_content_tag(const MESSAGE_OUTLINE *outline) {
    return outline == nullptr ? 0 : outline->content_tag();
}

uint32_t update_MESSAGE_OUTLINE(MESSAGE_OUTLINE *outline, const uint8_t *octets, uint32_t len) {
    if (outline == nullptr || (octets == nullptr && len != 0)) return 0x52A80049;
    return outline->update({octets, len});
}

uint32_t write_MESSAGE_OUTLINE(const MESSAGE_OUTLINE *outline, uint8_t **octets, uint32_t *len,
                               uint64_t *content_size) {
    const bool has_results = octets != nullptr && len != nullptr && content_size != nullptr;
    if (outline == nullptr || !has_results) return 0x52A90049;
    return outline->write(octets, *len, *content_size);
}
