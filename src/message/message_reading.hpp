// What the engines that read messages in pieces do alike.
#pragma once

#include "message/message_parser.hpp"

namespace tlx {

/// What an engine returns.
struct ReadingStatuses {
    u32 too_long;
    u32 misplaced;
    u32 no_element;
    u32 no_memory;
    u32 too_early;    ///< content of a message that is not complete
    u32 has_content;  ///< content of a message that is not detached
    u32 over;         ///< after the end
};

/// A message that comes in pieces, up to the first operation that fails.
class MessageReading {
  public:
    /// A limit of 0 is that by default.
    MessageReading(std::initializer_list<MessageKind> kinds, u32 held_limit,
                   const ReadingStatuses &statuses) noexcept
        : parser_(kinds, held_limit != 0 ? held_limit : TLX_MESSAGE_HELD_LIMIT), statuses_(statuses) {}

    /// Takes octets of the message, with begin() before its content and take(octets) for this.
    template <typename Begin, typename Take>
    [[nodiscard]] u32 update(Bytes octets, Begin begin, Take take) noexcept {
        while (status_ == 0) {
            switch (parser_.next(octets)) {
                case MessageParser::Step::need_more:
                    return 0;
                case MessageParser::Step::content_begins:
                    content_given_ = true;
                    status_ = begin();
                    break;
                case MessageParser::Step::content_missing:
                    status_ = begin();
                    break;
                case MessageParser::Step::content:
                    status_ = take(parser_.octets());
                    break;
                case MessageParser::Step::done:
                    break;
                case MessageParser::Step::failed:
                    status_ = status_of(parser_.failure());
                    break;
            }
        }
        return status_;
    }
    /// Takes octets of the content of a detached message.
    template <typename Take>
    [[nodiscard]] u32 update_content(Bytes octets, Take take) noexcept {
        if (status_ != 0) return status_;
        if (!is_complete()) return statuses_.too_early;
        if (parser_.has_content()) return statuses_.has_content;
        content_given_ = true;
        return status_ = take(octets);
    }
    /// The last operation. The status of one before it that failed.
    [[nodiscard]] u32 finish() noexcept {
        return status_ != 0 ? status_ : std::exchange(status_, statuses_.over);
    }
    /// Ends the message with a status.
    u32 fail(u32 status) noexcept { return status_ = status; }

    [[nodiscard]] const MessageParser &message() const noexcept { return parser_; }
    [[nodiscard]] bool is_complete() const noexcept { return parser_.is_done(); }
    [[nodiscard]] bool is_detached() const noexcept { return is_complete() && !parser_.has_content(); }
    /// Whether there was content, in the message or after it.
    [[nodiscard]] bool content_given() const noexcept { return content_given_; }

  private:
    [[nodiscard]] u32 status_of(MessageParser::Failure failure) const noexcept {
        switch (failure) {
            case MessageParser::Failure::too_long:
                return statuses_.too_long;
            case MessageParser::Failure::misplaced:
                return statuses_.misplaced;
            case MessageParser::Failure::no_element:
                return statuses_.no_element;
            default:
                return statuses_.no_memory;
        }
    }

    MessageParser parser_;
    ReadingStatuses statuses_;
    bool content_given_ = false;
    u32 status_ = 0;
};

/// Whether an engine can be made with these settings, which may be null.
template <typename Settings>
[[nodiscard]] bool can_read_with(const Settings *settings) noexcept {
    return settings != nullptr && settings->held_back_limit <= TLX_MESSAGE_HELD_BACK_LIMIT &&
           (settings->output == nullptr || settings->unverified_output == nullptr);
}
/// How much content an engine holds back.
template <typename Settings>
[[nodiscard]] u32 most_held_back(const Settings &settings) noexcept {
    return settings.held_back_limit != 0 ? settings.held_back_limit : TLX_MESSAGE_HELD_BACK_LIMIT;
}

}  // namespace tlx
