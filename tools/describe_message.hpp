// Describes PKCS #7 messages, and what they share with those of CMS.
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

/// Sets an algorithm, and below it the parameters unless they are NULL.
void add_algorithm(Json &json, const std::string &key, const X509_ALGO_IDENTIFIER *algorithm);

/// Sets the issuer and the serial number that name a certificate.
void add_certificate_name(Json &json, const P7_ISSUER_AND_SERIAL_NUMBER *number);

[[nodiscard]] Json describe_digests(const X509_ALGO_IDENTIFIERS *algorithms);
[[nodiscard]] Json describe_encrypted(const P7_ENCRYPTED_CONTENT_INFO *content);

/// The signing time that a signer says; null when it says none.
[[nodiscard]] Json signing_time_of(const X509_ATTRIBUTES *attributes);

/// The octets of an element.
[[nodiscard]] std::string node_hex(const ASN1_UNIT *node);

}  // namespace tool
