// Revocation lists of files.
#pragma once

#include <string>
#include <vector>

#include "document.hpp"
#include "input.hpp"

namespace tool {

using Crl = Owned<X509_CRL, free_X509_CRL>;
using Revoked = Owned<X509_REVOKED, free_X509_REVOKED>;

/// Decodes a block that holds a revocation list and nothing else. Throws Failure.
[[nodiscard]] Crl decode_crl(const Block &block);
/// The first list of a file. Throws Failure.
[[nodiscard]] Crl load_crl(const std::string &path);

/// The name of a reason (RFC 5280, section 5.3.1); its number when it has none.
[[nodiscard]] std::string reason_name(uint32_t reason);
/// The reason of a name. Throws Failure for another text.
[[nodiscard]] uint32_t reason_of(const std::string &name);

using Serial = Owned<BIGINT, free_BIGINT>;
/// A serial number in hexadecimal, with or without "0x". Throws Failure.
[[nodiscard]] Serial serial_of(const std::string &text);

/// Whether an entry is of another issuer than the one before it.
[[nodiscard]] bool names_certificate_issuer(const X509_REVOKED *revoked);

/// A new list with the entries and extensions of another, but without those of certificates on hold that are
/// released. A delta list says instead that they are revoked no more, and need not have had them. Throws
/// Failure.
[[nodiscard]] Crl release(const X509_CRL *crl, const std::vector<std::string> &serials, bool is_delta);

/// When and why a certificate was revoked.
void add_revocation(Json &json, const X509_REVOKED *revoked);

/// A list with the first of its entries, at most so many.
[[nodiscard]] Json describe_crl(const X509_CRL *crl, uint32_t most_entries);

}  // namespace tool
