// Following a message that comes in pieces of any length: its content is given out as it comes, and all other
// members are held.
#pragma once

#include "der/buffer.hpp"
#include "der/element_stream.hpp"
#include "der/encoder.hpp"

namespace tlx {

/// The content types whose content is followed.
enum class MessageKind : u8 { none, signed_data };

class MessageParser {
  public:
    enum class Step : u8 {
        need_more,        ///< all octets are taken
        content_begins,   ///< what stands before the content is held
        content,          ///< see octets()
        content_missing,  ///< in place of content_begins
        done,             ///< the message is complete
        failed,           ///< see status()
    };

    explicit MessageParser(std::size_t limit) noexcept : limit_(limit) {}

    /// Takes octets off the front of `in` up to the next step.
    [[nodiscard]] Step next(Bytes &in) noexcept;

    [[nodiscard]] MessageKind kind() const noexcept { return kind_; }
    [[nodiscard]] Bytes octets() const noexcept { return octets_; }
    [[nodiscard]] bool has_content() const noexcept { return has_content_; }
    /// Whether the content is a string of octets, and not another element whose contents octets it is.
    [[nodiscard]] bool content_is_string() const noexcept { return content_is_string_; }
    [[nodiscard]] bool is_done() const noexcept { return elements_.finished(); }
    /// 0; 0x52800047 beyond the limit, 0x52800048 for an element that does not belong there, 0x5280004F for
    /// what is no element, 0x5280003C when memory runs out.
    [[nodiscard]] u32 status() const noexcept { return status_; }
    /// The members before the content, one after the other.
    [[nodiscard]] Bytes before_content() const noexcept { return body_.bytes().first(before_size_); }
    /// All members of the body, in place of the content a content info of type data without any.
    [[nodiscard]] Bytes body() const noexcept { return body_.bytes(); }
    /// The object identifier of the content's type, an element.
    [[nodiscard]] Bytes content_type() const noexcept { return content_type_.bytes(); }

  private:
    /// How deep elements of a message lie.
    enum Depth : u8 { at_message, at_type, at_body, at_body_member, at_info_member, at_content };

    Step begin() noexcept;
    Step begin_member() noexcept;
    Step begin_body_member() noexcept;
    Step begin_info_member(u32 place) noexcept;
    Step begin_content() noexcept;
    Step begin_in_content() noexcept;
    Step end() noexcept;
    Step end_in_content() noexcept;
    Step end_of_held() noexcept;
    Step give(Bytes octets) noexcept;
    Step hold(Buffer &buffer) noexcept;
    Step keep(Bytes octets) noexcept;
    Step name_kind() noexcept;
    Step fail(u32 status) noexcept;
    /// Goes on with the members of the element that begins, when it has the tag.
    Step expect(u8 tag) noexcept;

    static constexpr unsigned kNowhere = 0xFFFFFFFF;

    ElementStream elements_;
    std::size_t limit_;
    u32 status_ = 0;
    MessageKind kind_ = MessageKind::none;
    u32 places_[at_content + 1] = {};  ///< how many elements began in the open one at each depth
    u32 sequences_ = 0;                ///< of them in the body
    Buffer message_type_;
    Buffer content_type_;
    Buffer body_;
    std::size_t before_size_ = 0;
    Buffer *holding_ = nullptr;          ///< where octets are held
    unsigned held_depth_ = kNowhere;     ///< of the element that is being held
    unsigned content_depth_ = kNowhere;  ///< of the element of the content, while it is open
    bool has_content_ = false;
    bool content_is_string_ = false;
    Bytes octets_;
};

}  // namespace tlx
