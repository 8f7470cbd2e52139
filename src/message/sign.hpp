// Signing, for the modules that sign what a message does not hold in the clear.
#pragma once

#include <tlxpki/time.h>

#include "der/owned.hpp"
#include "message/running_digests.hpp"

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

/// Whether a signer signs its attributes in a message of the version, and not the content.
[[nodiscard]] bool signs_attributes(const P7_SIGNER_INFO &signer, const BIGINT *version) noexcept;

/// Gives every signer without a signature what sign_with_all() gives it, but zeros for a signature: as many
/// octets as most signatures of its key have. A status of final_PKCS7_Sign().
[[nodiscard]] u32 reserve_signatures(const SignedMembers &members) noexcept;

/// Signs with every signer that has no signature yet: its attributes, or the content, whose digests are those
/// of the signers' algorithms and KCDSA keys. Signatures are as long as reserve_signatures() makes them, if
/// that is wanted: 0x52840047 after 64 tries. Otherwise a status of final_PKCS7_Sign().
[[nodiscard]] u32 sign_content_in_pieces(const SignedMembers &members, const RunningDigests &content,
                                         bool is_reserved) noexcept;

/// Gives every signer that has no signature yet the attributes contentType, messageDigest and signingTime.
/// @param time null for the present
/// @return 0; 0x4B31003C when memory runs out, for a time that cannot be written and a missing digest
[[nodiscard]] u32 put_signed_attributes(const SignedMembers &members, const ContentDigests &digests,
                                        const OBJECT_IDENTIFIER *content_type,
                                        const ASN1_TIME *time) noexcept;

}  // namespace tlx
