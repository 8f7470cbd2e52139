// Describes PKCS #7 messages.
#pragma once

#include "document.hpp"
#include "owned.hpp"

namespace tool {

/// A message, with content in content.
[[nodiscard]] Json describe_message(const P7_CONTENT_INFO *message);

/// What message show prints of a message. A message that was made has an output beside the source.
[[nodiscard]] Json message_document(const std::string &source, const P7_CONTENT_INFO *message,
                                    const std::string &output = "");

/// A signer without its attributes, but for the signing time, and without its signature.
[[nodiscard]] Json describe_signer(const P7_SIGNER_INFO *signer);

/// Attributes with their values.
[[nodiscard]] Json describe_attributes(const X509_ATTRIBUTES *attributes);

/// The signers of signed data or signed-and-enveloped data; null of others.
[[nodiscard]] const P7_SIGNER_INFOS *signers_of(const P7_CONTENT_INFO *message);

}  // namespace tool
