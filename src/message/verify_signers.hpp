// The verification of all signers of a message.
#pragma once

#include "message/signed_members.hpp"
#include "message/signer_check.hpp"

namespace tlx {

/// What a message has for it. The message owns what this points to.
struct SignerMembers {
    const X509_CERTIFICATES *certificates = nullptr;
    const X509_CRLS *crls = nullptr;
    const CMS_REVOCATION_INFOS *revocation = nullptr;
    const STACK *signers = nullptr;                    ///< records of one kind
    SignerView (*view)(const void *signer) = nullptr;  ///< of one of them
};

[[nodiscard]] SignerMembers signer_members(const SignedMembers &members) noexcept;

/// Verifies all signers. The checks know the content and its type.
/// @param reports receives a new list in place of *reports; may be null
/// @return 0, 0x4B30003C when memory runs out and when the present time is unavailable, or the status of the
/// first signer that fails
[[nodiscard]] u32 verify_signers(SignerTrust trust, const SignerMembers &members, SignerChecks &checks,
                                 P7_SIGNER_REPORTS **reports) noexcept;

}  // namespace tlx
