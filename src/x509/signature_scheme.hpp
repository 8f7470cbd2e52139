// What the identifier of a signature algorithm says.
#pragma once

#include <tlxcrypto/digest.h>
#include <tlxpki/objects.h>

#include "der/types.hpp"

namespace tlx {

struct SignatureScheme {
    explicit SignatureScheme(const OBJECT_IDENTIFIER *algorithm) noexcept
        : digest_id(get_DigestID_from_OID(algorithm)), cipher_id(get_CipherID_from_OID(algorithm)) {}

    /// The padding mode of RSA: the low octet, which is 0, PKCS #1 v1.5 again, for RSA-SHA1-2 and its kin.
    [[nodiscard]] u32 padding_mode() const noexcept { return cipher_id & 0xFF; }
    /// Whether it is RSA with a digest.
    [[nodiscard]] bool is_rsa() const noexcept { return cipher_id >> 24 == 0x20 && digest_id != 0; }
    /// KCDSA1 names no digest: HAS-160, the one KCDSA was published with.
    [[nodiscard]] u32 kcdsa_digest() const noexcept { return digest_id != 0 ? digest_id : TLX_DIGEST_HAS160; }

    u32 digest_id;  ///< 0 when the algorithm names none
    u32 cipher_id;  ///< 0 when the algorithm is not known
};

}  // namespace tlx
