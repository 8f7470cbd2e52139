// Describes messages of CMS and what is in them.
#pragma once

#include "document.hpp"
#include "owned.hpp"

namespace tool {

/// A message, with the members that describe_message() also has.
[[nodiscard]] Json describe_cms(const CMS_CONTENT_INFO *message);

/// A message of PKCS #7, or of CMS where PKCS #7 has no such content. The status is that of PKCS #7 when
/// neither can be read, unless only CMS has a content of this type. Throws Failure.
[[nodiscard]] Json describe_node(const std::string &source, const ASN1_UNIT *message);

/// A value of an attribute that has a record (RFC 5035, RFC 6211, RFC 3161, countersignatures); null for a
/// value of another type, for one that cannot be decoded, and for one that lies too deep in others.
[[nodiscard]] Json describe_attribute_record(const std::string &type, const ASN1_UNIT *value);

/// What a time stamp says (RFC 3161).
[[nodiscard]] Json describe_time_stamp(const CMS_TST_INFO *info);
/// The same given its encoding; null when it cannot be decoded.
[[nodiscard]] Json describe_time_stamp(Octets encoding);

/// A signer with its attributes and its signature.
[[nodiscard]] Json describe_cms_signer(const CMS_SIGNER_INFO *signer);

}  // namespace tool
