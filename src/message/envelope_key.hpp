// The content key of a message that is read in pieces.
#pragma once

#include "der/element.hpp"
#include "message/cms_keys.hpp"

namespace tlx {

/// Opens the key of the first recipient that the holder opens. One that is the holder but does not decrypt
/// gives a random key, so that the content fails to decrypt as under any wrong key. Recipients that cannot be
/// decoded are passed over.
/// @param recipients a SET
/// @param expected_len octets of the key; 0 when any will do
/// @return 0; 0x52A00047 when the holder is no recipient; 0x52A00104 when it is none of those that can be
/// decoded, but some cannot; 0x52A0003C when memory runs out; a status of open_CMS_RECIPIENT_INFO()
[[nodiscard]] u32 open_content_key(const Element &recipients, const CMS_KEY_HOLDER &holder, u32 expected_len,
                                   OpenedKey &key) noexcept;

}  // namespace tlx
