// Signatures over requests and over response data.
#pragma once

#include <tlxpki/pkcs8.h>

#include "status/ocsp_records.hpp"

namespace tlx {

/// What a caller answers when a signature cannot be made.
struct ResponderStatuses {
    u32 unsupported;  ///< a key of another kind, or a digest that RSA keys do not sign with
    u32 failed;       ///< the key cannot sign
    u32 no_memory;
};

struct MadeSignature {
    Owned<X509_ALGO_IDENTIFIER> algorithm;
    Owned<BIT_STRING> value;
};

/// The signature algorithm of an RSA key with PKCS #1 v1.5 and a digest; 0 when there is none.
[[nodiscard]] u32 rsa_algorithm_row(u32 digest_id) noexcept;
/// The signature algorithm of a key: for KCDSA it has HAS-160, whatever the digest. 0 when there is none.
[[nodiscard]] u32 algorithm_row(const ASYMMETRIC_KEY *key, u32 digest_id) noexcept;

/// Signs octets with an RSA key and PKCS #1 v1.5, or with a KCDSA key and HAS-160 whatever the digest. 0 or
/// one of the statuses.
[[nodiscard]] u32 sign_with(const P8_PRIV_KEY_INFO &key, u32 digest_id, Bytes octets, MadeSignature &made,
                            const ResponderStatuses &statuses) noexcept;

enum class SignatureResult : u8 { good, bad, unsupported, no_memory };

/// Verifies a signature of RSA with PKCS #1 v1.5, or of KCDSA. Another algorithm, and one that is not for the
/// key, is not supported.
[[nodiscard]] SignatureResult verify_with(const OBJECT_IDENTIFIER *algorithm, const BIT_STRING *value,
                                          Bytes octets, const X509_PUBKEY *key) noexcept;

}  // namespace tlx
