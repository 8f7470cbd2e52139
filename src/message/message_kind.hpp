// The content types of messages (RFC 5652; RFC 5083; RFC 2315), and where the content lies in each.
#pragma once

#include <tlxpki/message_envelope.h>

#include "der/types.hpp"

namespace tlx {

/// As the TLX_MESSAGE_ constants number them.
enum class MessageKind : u8 {
    none = TLX_MESSAGE_OTHER,
    data = TLX_MESSAGE_DATA,
    signed_data = TLX_MESSAGE_SIGNED_DATA,
    enveloped_data = TLX_MESSAGE_ENVELOPED_DATA,
    signed_and_enveloped_data = TLX_MESSAGE_SIGNED_AND_ENVELOPED_DATA,
    digested_data = TLX_MESSAGE_DIGESTED_DATA,
    encrypted_data = TLX_MESSAGE_ENCRYPTED_DATA,
    authenticated_data = TLX_MESSAGE_AUTHENTICATED_DATA,
    auth_enveloped_data = TLX_MESSAGE_AUTH_ENVELOPED_DATA,
};

struct MessageLayout {
    Bytes type;  ///< its object identifier, contents octets
    MessageKind kind;
    u8 info_place;      ///< of the content's info among the SEQUENCE members of the body
    bool is_encrypted;  ///< the info is an EncryptedContentInfo, whose content is [0] IMPLICIT
};

/// The layout of a content type; null for one that none of the kinds is for.
[[nodiscard]] const MessageLayout *find_layout(Bytes type) noexcept;
/// The layout of a kind that is not MessageKind::none.
[[nodiscard]] const MessageLayout &layout_of(MessageKind kind) noexcept;

}  // namespace tlx
