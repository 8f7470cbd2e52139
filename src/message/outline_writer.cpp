// Writing messages again around their content.
#include <tlxpki/message_outline.h>

#include "message/message_writing.hpp"
#include "verify/object.hpp"

using namespace tlx;

namespace {

constexpr WritingStatuses kStatuses = {0x52AB003C, 0x52AB001C, 0x52AC001C, 0x52AC003C, 0x52AC002B};

/// The layout of a message that lacks its content; null when it is none.
const MessageLayout *layout_of_outline(Bytes message) noexcept {
    u32 type = TLX_MESSAGE_OTHER;
    MessageFrame frame = {};
    Element whole;
    Element member;
    u32 members = 0;
    if (get_MESSAGE_type(message.data(), size_of(message), &type) != 0) return nullptr;
    if (type == TLX_MESSAGE_OTHER || type == TLX_MESSAGE_DATA) return nullptr;
    const MessageLayout &layout = layout_of(static_cast<MessageKind>(type));
    if (!read_element(message, whole) || whole.whole.size() != message.size()) return nullptr;
    if (!frame.split(message, layout)) return nullptr;
    for (Cursor cursor(frame.info); !cursor.rest().empty(); ++members) {
        if (!cursor.next(member)) return nullptr;
    }
    return members == (layout.is_encrypted ? 2U : 1U) ? &layout : nullptr;
}

/// Whether content may stand in an element of this tag, which is one octet.
bool can_write_tag(const OUTLINE_WRITER_SETTINGS &settings, const MessageLayout &layout) noexcept {
    constexpr u32 kLongTag = 0x1F;
    const u32 tag = settings.content_tag;
    if (tag == 0 || tag == TLX_TAG_OCTET_STRING) return true;
    const bool is_tag = tag <= 0xFF && (tag & kLongTag) != kLongTag;
    return is_tag && settings.form == TLX_MESSAGE_DER && !layout.is_encrypted;
}

}  // namespace

struct OUTLINE_WRITER {
  public:
    explicit OUTLINE_WRITER(const OUTLINE_WRITER_SETTINGS &settings, const MessageLayout &layout) noexcept
        : writing_(settings, layout.kind, kStatuses),
          size_(settings.size),
          tag_(settings.content_tag != 0 ? static_cast<u8>(settings.content_tag) : u8{TLX_TAG_OCTET_STRING}) {
        message_.raw({settings.message, settings.len});
    }

    [[nodiscard]] u32 update(Bytes octets) noexcept {
        return writing_.update(
            octets, [&] { return writing_.begin_message(message_, size_, tag_); },
            [&](Bytes content) { return writing_.write(content); });
    }
    [[nodiscard]] u32 finish() noexcept {
        return writing_.finish(update({}), [&] { return writing_.end_message(message_); });
    }

  private:
    MessageWriting writing_;
    Encoder message_;
    std::uint64_t size_;
    u8 tag_;
};

OUTLINE_WRITER *new_OUTLINE_WRITER(const OUTLINE_WRITER_SETTINGS *settings) {
    if (settings == nullptr || settings->message == nullptr || !can_write_with(*settings)) return nullptr;
    const MessageLayout *layout = layout_of_outline({settings->message, settings->len});
    if (layout == nullptr || !can_write_tag(*settings, *layout)) return nullptr;
    return make_object<OUTLINE_WRITER>(*settings, *layout).release();
}

void free_OUTLINE_WRITER(OUTLINE_WRITER *writer) {
    Destroy<OUTLINE_WRITER>{}(writer);
}

uint32_t update_OUTLINE_WRITER(OUTLINE_WRITER *writer, const uint8_t *octets, uint32_t len) {
    if (writer == nullptr || (octets == nullptr && len != 0)) return 0x52AB0049;
    return writer->update({octets, len});
}

uint32_t final_OUTLINE_WRITER(OUTLINE_WRITER *writer) {
    return writer == nullptr ? 0x52AC0049 : writer->finish();
}
