// The attributes of a signer that verification reads.
#pragma once

#include <string_view>

#include "message/signer_view.hpp"

namespace tlx {

namespace attribute_id {
inline constexpr std::string_view kContentType = "1.2.840.113549.1.9.3";
inline constexpr std::string_view kMessageDigest = "1.2.840.113549.1.9.4";
inline constexpr std::string_view kSigningTime = "1.2.840.113549.1.9.5";
inline constexpr std::string_view kCountersignature = "1.2.840.113549.1.9.6";
inline constexpr std::string_view kAlgorithmProtection = "1.2.840.113549.1.9.52";
inline constexpr std::string_view kSigningCertificate = "1.2.840.113549.1.9.16.2.12";
inline constexpr std::string_view kSigningCertificateV2 = "1.2.840.113549.1.9.16.2.47";
inline constexpr std::string_view kTimeStampToken = "1.2.840.113549.1.9.16.2.14";
}  // namespace attribute_id

/// The one value of the one attribute of a type when it is primitive; null for any other.
[[nodiscard]] const ASN1_STRING *only_string(const X509_ATTRIBUTES *attributes,
                                             std::string_view dotted) noexcept;

/// What the attribute signingTime says; null for none.
[[nodiscard]] ASN1_TIME *signing_time_of(const X509_ATTRIBUTES *attributes) noexcept;

/// Whether the attributes signingCertificate and signingCertificateV2 name the certificate, as far as they
/// are there.
[[nodiscard]] bool names_certificate(const X509_ATTRIBUTES *attributes, const X509_CERT &cert) noexcept;

/// Whether one of the two is there.
[[nodiscard]] bool has_signing_certificate(const X509_ATTRIBUTES *attributes) noexcept;

/// Whether the attribute CMSAlgorithmProtection, if it is there, has the algorithms of the signer.
[[nodiscard]] bool protects_algorithms(const SignerView &signer) noexcept;

/// How many countersignatures there are.
[[nodiscard]] u32 count_countersignatures(const X509_ATTRIBUTES *attributes) noexcept;

}  // namespace tlx
