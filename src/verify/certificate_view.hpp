// A certificate as views of the octets that were received. Nothing is copied or allocated.
#pragma once

#include <cstdint>

#include "verify/rules.hpp"
#include "verify/strict_cursor.hpp"

namespace tlx {

/// Extensions whose meaning is known.
enum KnownExtension : u8 {
    kSubjectKeyIdentifier,
    kKeyUsage,
    kSubjectAltName,
    kIssuerAltName,
    kBasicConstraints,
    kNameConstraints,
    kCrlDistributionPoints,
    kCertificatePolicies,
    kPolicyMappings,
    kAuthorityKeyIdentifier,
    kPolicyConstraints,
    kExtendedKeyUsage,
    kFreshestCrl,
    kInhibitAnyPolicy,
    kAuthorityInfoAccess,
    kSubjectInfoAccess,
    kOcspNoCheck,
    kKnownExtensions
};

struct ExtensionView {
    bool present = false;
    bool critical = false;
    Bytes value;  ///< what the OCTET STRING holds
};

struct AlgorithmView {
    Bytes whole;
    Bytes oid;
    bool has_parameters = false;
    Bytes parameters;  ///< the whole element
};

/// Bits of the key usage, as RFC 5280, section 4.2.1.3 numbers them.
enum KeyUsageBit : u32 {
    kDigitalSignature = 1U << 0,
    kNonRepudiation = 1U << 1,
    kKeyEncipherment = 1U << 2,
    kDataEncipherment = 1U << 3,
    kKeyAgreement = 1U << 4,
    kKeyCertSign = 1U << 5,
    kCrlSign = 1U << 6,
};

constexpr u32 kUnlimited = UINT32_MAX;

/// What is signed, and its signature.
struct SignedView {
    Bytes signed_part;
    AlgorithmView algorithm;
    Bytes signature;
};

struct CertificateView : SignedView {
    Bytes whole;
    u32 version = 1;
    Bytes serial;
    Bytes issuer;  ///< the contents of a Name, and the subject likewise
    Bytes subject;
    std::int64_t not_before = 0;  ///< seconds since 1970
    std::int64_t not_after = 0;
    Bytes key_info;  ///< the whole SubjectPublicKeyInfo
    AlgorithmView key_algorithm;
    Bytes key;

    ExtensionView extensions[kKnownExtensions];
    Bytes unknown_critical;  ///< identifier of the first critical extension that is not known

    bool is_ca = false;
    bool ca_false_written = false;
    u32 path_length = kUnlimited;
    u32 key_usage = 0;  ///< of KeyUsageBit; counts when the extension is present
    Bytes subject_key;  ///< key identifiers; empty when there are none
    Bytes authority_key;
    u32 require_explicit_policy = kUnlimited;
    u32 inhibit_policy_mapping = kUnlimited;
    u32 inhibit_any_policy = kUnlimited;
};

/// Faults of real certificates that a caller may let pass.
enum AcceptedFault : u32 {
    kAcceptCriticalFalse = 1U << 0,
    kAcceptBoolean = 1U << 1,  ///< any octet but 00 is TRUE, as in BER
    kAcceptKeyUsageZeros = 1U << 2,
    kAcceptSerial = 1U << 3,  ///< not in the fewest octets
};

/// Reads a certificate in DER. Returns the first rule that it breaks.
///
/// A negative, zero or long serial number, GeneralizedTime before 2050, empty basic constraints and cA FALSE
/// written out are read as they are.
[[nodiscard]] Rule read_certificate(Bytes octets, u32 accepted, CertificateView &view) noexcept;

// SIGNED{Type} ::= SEQUENCE { Type, algorithm AlgorithmIdentifier, signature BIT STRING }
/// Reads the frame of a certificate or a revocation list, and enters the signed part: kNone, kBrokenDer,
/// kTrailingOctets, kBadMember or kBadSignature.
[[nodiscard]] Rule read_signed(Bytes octets, SignedView &view, StrictCursor &signed_members) noexcept;

/// AlgorithmIdentifier ::= SEQUENCE { algorithm OBJECT IDENTIFIER, parameters ANY OPTIONAL }
[[nodiscard]] bool read_algorithm(StrictCursor &in, AlgorithmView &algorithm) noexcept;

/// Reads a SubjectPublicKeyInfo: kNone, kBadMember for something else, or kBadPublicKey.
[[nodiscard]] Rule read_key_info(StrictCursor &in, CertificateView &view) noexcept;

}  // namespace tlx
