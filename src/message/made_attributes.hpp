// The attributes that a signer signs, of PKCS #7 and of CMS.
#pragma once

#include <tlxpki/time.h>

#include "message/cms_records.hpp"

namespace tlx {

/// What the attributes say.
struct SignedAttributes {
    const OBJECT_IDENTIFIER *content_type;
    Bytes digest;  ///< of the content
    const ASN1_STRING *time;
    const X509_CERT *certificate = nullptr;       ///< of the signer, for signingCertificateV2; null for none
    const CMS_SIGNER_INFO *algorithms = nullptr;  ///< for CMSAlgorithmProtection; null for none
};

/// The value of the attribute signingTime, for null of the present time: UTCTime in the years that it has
/// (RFC 5652, section 11.3). Null when memory runs out and for a time that cannot be written.
[[nodiscard]] Owned<ASN1_STRING> signing_time(const ASN1_TIME *time) noexcept;

/// Makes contentType, messageDigest, signingTime and what else is wanted, and copies others of other types,
/// in DER order. Null when memory runs out and for others that cannot be encoded.
[[nodiscard]] OwnedAttributes make_signed_attributes(const SignedAttributes &wanted,
                                                     const X509_ATTRIBUTES *others) noexcept;

}  // namespace tlx
