// What the engines that write messages in pieces do alike.
#pragma once

#include <algorithm>

#include "message/message_frame.hpp"

namespace tlx {

/// What an engine returns.
struct WritingStatuses {
    u32 no_memory;  ///< at the beginning
    u32 too_long;   ///< more content than was told, or than the message may have
    u32 too_short;
    u32 no_memory_at_end;
    u32 over;  ///< after the end
};

/// A message that is written in one of the three forms around content that comes in pieces.
class MessageWriting {
  public:
    template <typename Settings>
    MessageWriting(const Settings &settings, MessageKind kind, const WritingStatuses &statuses) noexcept
        : out_(settings.output, settings.context),
          layout_(layout_of(kind)),
          statuses_(statuses),
          form_(settings.form),
          size_(settings.size),
          most_(is_der() ? settings.size : UINT64_MAX) {}

    /// Takes octets of content, with begin() before the first of them and take(octets).
    template <typename Begin, typename Take>
    [[nodiscard]] u32 update(Bytes octets, Begin begin, Take take) noexcept {
        if (status_ == 0 && !std::exchange(begun_, true)) status_ = begin();
        if (status_ == 0) status_ = count(octets);
        if (status_ == 0) status_ = take(octets);
        return status_;
    }
    /// The last operation, with end() for the rest of the message.
    /// @param status of an update() without octets, which begins a message without content
    template <typename End>
    [[nodiscard]] u32 finish(u32 status, End end) noexcept {
        if (status == 0 && is_der() && taken_ != size_) status = statuses_.too_short;
        if (status == 0) status = end();
        if (status_ == 0) status_ = statuses_.over;
        return status;
    }

    /// Lets the message have no more octets of content than these.
    void limit(std::uint64_t most) noexcept { most_ = std::min(most_, most); }
    /// Writes what stands before the content of a message that is encoded without it.
    /// @param size octets that the content has in DER
    /// @param tag  of the element around them
    [[nodiscard]] u32 begin_message(const Encoder &whole, std::uint64_t size,
                                    u8 tag = TLX_TAG_OCTET_STRING) noexcept;
    [[nodiscard]] u32 write(Bytes content) noexcept;
    /// Writes what stands after the content, or the whole message when that is detached.
    [[nodiscard]] u32 end_message(const Encoder &whole) noexcept;

    [[nodiscard]] const MessageLayout &layout() const noexcept { return layout_; }
    [[nodiscard]] bool is_der() const noexcept { return form_ == TLX_MESSAGE_DER; }
    [[nodiscard]] bool is_detached() const noexcept { return form_ == TLX_MESSAGE_DETACHED; }

  private:
    [[nodiscard]] u32 count(Bytes octets) noexcept;

    MessageOutput out_;
    const MessageLayout &layout_;
    WritingStatuses statuses_;
    u32 form_;
    std::uint64_t size_;
    std::uint64_t most_;
    std::uint64_t taken_ = 0;
    SegmentWriter segments_;
    bool begun_ = false;
    u32 status_ = 0;  ///< of the operation that ended the message
};

/// Whether a message can be written with settings that are not null.
template <typename Settings>
[[nodiscard]] bool can_write_with(const Settings &settings) noexcept {
    constexpr std::uint64_t kMostContent = 0x3FFFFFFFFFFFFFFF;
    return settings.output != nullptr && settings.form <= TLX_MESSAGE_DETACHED &&
           settings.size <= kMostContent;
}

}  // namespace tlx
