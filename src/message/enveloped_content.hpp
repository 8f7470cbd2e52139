// Opening the content of enveloped, encrypted, authenticated and digested data that comes in pieces.
#pragma once

#include "message/cms_keys.hpp"
#include "message/content_code.hpp"
#include "message/content_stream.hpp"
#include "message/envelope_members.hpp"
#include "message/message_parser.hpp"

namespace tlx {

/// The cipher, or the code and the digest, of content. Statuses are those of an ENVELOPED_MESSAGE_READER.
class EnvelopedContent {
  public:
    /// @param message of which everything before the content is held
    [[nodiscard]] u32 begin(const MessageParser &message,
                            const ENVELOPED_MESSAGE_READER_SETTINGS &settings) noexcept;
    /// Gives content to give(octets), up to its first status that is not 0.
    template <typename Give>
    [[nodiscard]] u32 update(Bytes octets, Give give) noexcept {
        if (is_encrypted_) return cipher_.update(octets, 0x52A0003C, give);
        return code_.update(octets) ? give(octets) : 0x52A0003C;
    }
    /// @param message that is complete
    /// @param members of it
    /// @param last receives octets of content that are still to be given, during this object's life
    [[nodiscard]] u32 finish(const MessageParser &message, const MembersAfter &members, Bytes &last) noexcept;

  private:
    [[nodiscard]] u32 begin_decryption(const MessageParser &message, const MembersBefore &members,
                                       const ENVELOPED_MESSAGE_READER_SETTINGS &settings) noexcept;
    [[nodiscard]] u32 begin_code(const MembersBefore &members,
                                 const ENVELOPED_MESSAGE_READER_SETTINGS &settings) noexcept;
    [[nodiscard]] u32 begin_digest(const Element &algorithm) noexcept;
    [[nodiscard]] u32 check_tag(const MessageParser &message, const MembersAfter &members) noexcept;
    [[nodiscard]] u32 check_code(const MessageParser &message, const MembersAfter &members) noexcept;
    [[nodiscard]] u32 check_digest(const Element &digest) noexcept;

    ContentAlgorithm algorithm_;
    CipherStream cipher_;
    ContentCode code_;
    bool is_encrypted_ = false;
};

/// Whether the content of a message is of the type data.
[[nodiscard]] bool content_is_data(const MessageParser &message) noexcept;

}  // namespace tlx
