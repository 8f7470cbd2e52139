// What stands around the content of a message that is written in pieces.
#pragma once

#include "message/message_kind.hpp"
#include "message/message_output.hpp"

namespace tlx {

/// The members of a message, all but the content in DER.
struct MessageFrame {
    Bytes type;         ///< the content type, an element
    Bytes before;       ///< members of the body before the info of the content
    Bytes info;         ///< members of the info before the content
    Bytes after;        ///< members of the body after the info
    bool is_encrypted;  ///< the content is [0] IMPLICIT, not [0] EXPLICIT

    /// Views of the encoding of a whole message without content. False when it is none of this layout.
    [[nodiscard]] bool split(Bytes message, const MessageLayout &layout) noexcept;

    void begin_indefinite(MessageOutput &out) const noexcept;
    void end_indefinite(MessageOutput &out) const noexcept;
    /// Around content of a size in an element of a tag, after which as many octets follow as `after` has.
    void begin_der(MessageOutput &out, std::uint64_t size, u8 tag) const noexcept;
    void end_der(MessageOutput &out) const noexcept { out.raw(after); }
};

}  // namespace tlx
