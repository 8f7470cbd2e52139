// Following a message that comes in pieces of any length: its content is given out as it comes, and all other
// members are held.
#pragma once

#include "der/buffer.hpp"
#include "der/element_stream.hpp"
#include "der/encoder.hpp"
#include "message/message_kind.hpp"

namespace tlx {

class MessageParser {
  public:
    enum class Step : u8 {
        need_more,        ///< all octets are taken
        content_begins,   ///< what stands before the content is held
        content,          ///< see octets()
        content_missing,  ///< in place of content_begins
        done,             ///< the message is complete
        failed,           ///< see failure()
    };
    enum class Failure : u8 {
        none,
        too_long,    ///< more is held than the limit allows
        misplaced,   ///< an element, or a content type, that does not belong there
        no_element,  ///< octets that are none
        no_memory,
    };

    /// Follows messages of these kinds.
    MessageParser(std::initializer_list<MessageKind> kinds, std::size_t limit) noexcept : limit_(limit) {
        for (const MessageKind kind : kinds) {
            followed_ |= bit(kind);
        }
    }

    /// Takes octets off the front of `in` up to the next step.
    [[nodiscard]] Step next(Bytes &in) noexcept;

    /// That of the message, also when it is not followed.
    [[nodiscard]] MessageKind kind() const noexcept { return kind_; }
    [[nodiscard]] Bytes octets() const noexcept { return octets_; }
    [[nodiscard]] bool has_content() const noexcept { return content_tag_ != 0; }
    /// Whether the content is ciphertext.
    [[nodiscard]] bool is_encrypted() const noexcept { return is_encrypted_; }
    /// Whether the content is a string of octets, and not another element whose contents octets it is.
    [[nodiscard]] bool content_is_string() const noexcept { return content_tag_ == TLX_TAG_OCTET_STRING; }
    /// The tag of an element around the content; that of OCTET STRING for any string, 0 without content.
    [[nodiscard]] u8 content_tag() const noexcept { return content_tag_; }
    [[nodiscard]] bool is_done() const noexcept { return elements_.finished(); }
    /// The object identifier of the message's content type, an element.
    [[nodiscard]] Bytes message_type() const noexcept { return message_type_.bytes(); }
    [[nodiscard]] Failure failure() const noexcept { return failure_; }
    /// The members before the content, one after the other.
    [[nodiscard]] Bytes before_content() const noexcept { return body_.bytes().first(before_size_); }
    [[nodiscard]] Bytes after_content() const noexcept { return body_.bytes().subspan(after_start_); }
    /// All members of the body. The info of the content lacks the content, and that of signed data is of type
    /// data.
    [[nodiscard]] Bytes body() const noexcept { return body_.bytes(); }
    /// What stands before the content in its info: the object identifier of its type, and what it is
    /// encrypted with.
    [[nodiscard]] Bytes info() const noexcept { return info_.bytes(); }
    /// The contents octets of the type of the content; none before it is held.
    [[nodiscard]] Bytes content_type() const noexcept;

  private:
    /// How deep elements of a message lie.
    enum Depth : u8 { at_message, at_type, at_body, at_body_member, at_info_member, at_content };

    Step begin() noexcept;
    Step begin_member() noexcept;
    Step begin_body_member() noexcept;
    Step begin_info_member(u32 place) noexcept;
    Step begin_encrypted_info_member(u32 place) noexcept;
    Step begin_content() noexcept;
    Step begin_encrypted_content() noexcept;
    Step begin_in_content() noexcept;
    Step end() noexcept;
    Step end_in_content() noexcept;
    Step end_of_held() noexcept;
    Step give(Bytes octets) noexcept;
    Step hold(Buffer &buffer) noexcept;
    Step keep(Bytes octets) noexcept;
    Step place_info(Step step) noexcept;
    Step name_kind() noexcept;
    Step fail(Failure failure) noexcept;
    /// Goes on with the members of the element that begins, when it has the tag.
    Step expect(u8 tag) noexcept;

    static constexpr u32 bit(MessageKind kind) noexcept { return 1U << static_cast<u8>(kind); }

    static constexpr unsigned kNowhere = 0xFFFFFFFF;

    ElementStream elements_;
    std::size_t limit_;
    u32 followed_ = 0;
    Failure failure_ = Failure::none;
    MessageKind kind_ = MessageKind::none;
    bool is_encrypted_ = false;
    u32 info_place_ = 0;
    u32 places_[at_content + 1] = {};  ///< how many elements began in the open one at each depth
    u32 sequences_ = 0;                ///< of them in the body
    Buffer message_type_;
    Buffer info_;
    Buffer body_;
    std::size_t before_size_ = 0;
    std::size_t after_start_ = 0;
    Buffer *holding_ = nullptr;          ///< where octets are held
    unsigned held_depth_ = kNowhere;     ///< of the element that is being held
    unsigned content_depth_ = kNowhere;  ///< of the element of the content, while it is open
    u8 content_tag_ = 0;
    Bytes octets_;
};

}  // namespace tlx
