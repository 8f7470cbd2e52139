// Signing, for the modules that sign what a message does not hold in the clear.
#pragma once

#include "message/signed_members.hpp"

namespace tlx {

/// Signs with every signer that has no signature yet, after init_PKCS7_Sign(): with its authenticated
/// attributes, or without any with the content. A status of final_PKCS7_Sign().
[[nodiscard]] u32 sign_with_all(const SignedMembers &members, const ContentOctets &content) noexcept;

}  // namespace tlx
