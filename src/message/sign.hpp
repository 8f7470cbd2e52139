// Signing, for the modules that sign what a message does not hold in the clear.
#pragma once

#include <tlxpki/time.h>

#include "der/owned.hpp"
#include "message/content_digests.hpp"

namespace tlx {

/// Calls act(signer) for every signer without a signature, up to the first status that is not 0.
template <typename Act>
[[nodiscard]] u32 for_unsigned(const SignedMembers &members, Act act) noexcept {
    for (u32 i = 0; i < get_STACK_count(*members.signerInfos); ++i) {
        auto *signer = static_cast<P7_SIGNER_INFO *>((*members.signerInfos)->values[i]);
        if (signer == nullptr || signer->encryptedDigest != nullptr) continue;
        if (const u32 status = act(*signer); status != 0) return status;
    }
    return 0;
}

/// Signs with every signer that has no signature yet, after init_PKCS7_Sign(): with its authenticated
/// attributes, or without any with the content. A status of final_PKCS7_Sign().
[[nodiscard]] u32 sign_with_all(const SignedMembers &members, const ContentOctets &content) noexcept;

/// Takes content that comes in pieces for the signers without a signature and without attributes, before
/// sign_with_all() is called with empty content. A status of final_PKCS7_Sign().
[[nodiscard]] u32 update_all(const SignedMembers &members, Bytes octets) noexcept;

/// Gives every signer without a signature what sign_with_all() gives it, but zeros for a signature: as many
/// octets as most signatures of its key have. A status of final_PKCS7_Sign().
[[nodiscard]] u32 reserve_signatures(const SignedMembers &members) noexcept;

/// Signs attributes with every signer that has no signature yet, after init_PKCS7_Sign(), until the signature
/// is as long as reserve_signatures() makes it. 0x52840047 after 64 tries; otherwise a status of
/// final_PKCS7_Sign().
[[nodiscard]] u32 sign_to_reserved_length(const SignedMembers &members) noexcept;

/// The value of the attribute signingTime, for null of the present time: UTCTime in the years that it has
/// (RFC 5652, section 11.3). Null when memory runs out and for a time that cannot be written.
[[nodiscard]] Owned<ASN1_STRING> signing_time(const ASN1_TIME *time) noexcept;

/// Gives every signer that has no signature yet the attributes contentType, messageDigest and signingTime.
/// @param time null for the present
/// @return 0; 0x4B31003C when memory runs out, for a time that cannot be written and a missing digest
[[nodiscard]] u32 put_signed_attributes(const SignedMembers &members, const ContentDigests &digests,
                                        const OBJECT_IDENTIFIER *content_type,
                                        const ASN1_TIME *time) noexcept;

}  // namespace tlx
