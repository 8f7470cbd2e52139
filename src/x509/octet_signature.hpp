// Signatures over octets, as certificates and revocation lists have them.
#pragma once

#include <tlxcrypto/kcdsa.h>
#include <tlxcrypto/rsa.h>
#include <tlxpki/types.h>

#include "der/types.hpp"

namespace tlx {

/// What an operation answers.
struct SigningStatuses {
    u32 unknown_algorithm;
    u32 no_memory;
};

/// Sign octets under an algorithm. 0 with a new signature, one of the statuses, or the status of the key.
[[nodiscard]] u32 sign_octets(Bytes octets, const OBJECT_IDENTIFIER *algorithm, const RSA_UNIT *key,
                              const SigningStatuses &statuses, BIT_STRING **signature) noexcept;
[[nodiscard]] u32 sign_octets(Bytes octets, const OBJECT_IDENTIFIER *algorithm, const KCDSA *key,
                              const SigningStatuses &statuses, BIT_STRING **signature) noexcept;

struct SignedOctets {
    Bytes octets;
    const OBJECT_IDENTIFIER *algorithm;
    const BIT_STRING *signature;
    bool altered;  ///< the signature cannot be good, whatever it says
};

struct VerifyingStatuses {
    u32 unknown_algorithm;
    u32 unreadable;  ///< the value is no KCDSA signature
};

/// Verify octets. 0 when the signature is good, one of the statuses, or the status of the key.
[[nodiscard]] u32 verify_octets(const SignedOctets &what, const RSA_UNIT *key,
                                const VerifyingStatuses &statuses) noexcept;
[[nodiscard]] u32 verify_octets(const SignedOctets &what, const KCDSA *key,
                                const VerifyingStatuses &statuses) noexcept;

}  // namespace tlx
