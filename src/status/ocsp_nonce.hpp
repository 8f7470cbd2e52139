// The nonce of requests and responses (RFC 6960, section 4.4.1), whose octets are the extension's value as it
// stands.
#pragma once

#include "x509/certificate_records.hpp"

namespace tlx {

/// Appends a nonce to extensions, which are made when there are none. False when memory runs out.
[[nodiscard]] bool append_nonce(X509_EXTENSIONS *&extensions, Bytes nonce) noexcept;
/// The place of the first nonce; -1 when there is none.
[[nodiscard]] i32 find_nonce_index(const X509_EXTENSIONS *extensions) noexcept;
/// The value of the first nonce; null when there is none.
[[nodiscard]] const OCTET_STRING *find_nonce(const X509_EXTENSIONS *extensions) noexcept;

}  // namespace tlx
