// Signatures over octets, as certificates and revocation lists have them.
#pragma once

#include <tlxcrypto/kcdsa.h>
#include <tlxcrypto/rsa.h>
#include <tlxpki/x509_types.h>

#include "der/types.hpp"

namespace tlx {

/// What an operation answers.
struct SigningStatuses {
    u32 unknown_algorithm;
    u32 no_memory;
};

/// Sign octets under an algorithm. 0 with a new signature, one of the statuses, or the status of the key.
/// kOtherKey for a key that is neither of RSA nor of KCDSA.
constexpr u32 kOtherKey = 0xFFFFFFFE;
[[nodiscard]] u32 sign_octets(Bytes octets, const OBJECT_IDENTIFIER *algorithm, const RSA_UNIT *key,
                              const SigningStatuses &statuses, BIT_STRING **signature) noexcept;
[[nodiscard]] u32 sign_octets(Bytes octets, const OBJECT_IDENTIFIER *algorithm, const KCDSA *key,
                              const SigningStatuses &statuses, BIT_STRING **signature) noexcept;

[[nodiscard]] u32 sign_octets(Bytes octets, const OBJECT_IDENTIFIER *algorithm, const ASYMMETRIC_KEY &key,
                              const SigningStatuses &statuses, BIT_STRING **signature) noexcept;

struct SignedOctets {
    Bytes octets;
    const OBJECT_IDENTIFIER *algorithm;
    const BIT_STRING *signature;
    bool altered;                       ///< the signature cannot be good, whatever it says
    u32 most_s = TLX_KCDSA_MAX_LENGTH;  ///< octets of the s of KCDSA
};

struct VerifyingStatuses {
    u32 unknown_algorithm;
    u32 unreadable;  ///< the value is no KCDSA signature
};

/// Verify octets. 0 when the signature is good, one of the statuses, the status of the key, or kOtherKey.
[[nodiscard]] u32 verify_octets(const SignedOctets &what, const RSA_UNIT *key,
                                const VerifyingStatuses &statuses) noexcept;
[[nodiscard]] u32 verify_octets(const SignedOctets &what, const KCDSA *key,
                                const VerifyingStatuses &statuses) noexcept;
[[nodiscard]] u32 verify_octets(const SignedOctets &what, const ASYMMETRIC_KEY &key,
                                const VerifyingStatuses &statuses) noexcept;

}  // namespace tlx
