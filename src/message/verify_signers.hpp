// The verification of all signers of a message.
#pragma once

#include "message/signed_members.hpp"
#include "message/signer_check.hpp"

namespace tlx {

/// What signers are verified with besides the content. Paths are by RFC 5280 with a store, by the compatible
/// rules with anchors, and unchecked without either.
struct SignerTrust {
    const X509_CERTIFICATES *pool = nullptr;
    VERIFY_SETTINGS settings = {};
    const VERIFY_STORE *store = nullptr;
    const TRUST_ANCHORS *compatible_anchors = nullptr;
};

/// Verifies all signers. The checks know the content and its type.
/// @param reports receives a new list in place of *reports; may be null
/// @return 0, 0x4B30003C when memory runs out and when the present time is unavailable, or the status of the
/// first signer that fails
[[nodiscard]] u32 verify_signers(SignerTrust trust, const SignedMembers &members, SignerChecks &checks,
                                 P7_SIGNER_REPORTS **reports) noexcept;

}  // namespace tlx
