// What the verification of a response and the answer about a certificate have in common.
#pragma once

#include <tlxpki/time.h>

#include "status/ocsp_records.hpp"

namespace tlx {

using OwnedTime = std::unique_ptr<ASN1_TIME, FreeWith<free_ASN1_TIME>>;

/// Verifies that an authorised responder signed (RFC 6960, section 4.2.2.2), and the extensions of the whole
/// response. A status of verify_BASIC_OCSP_RESPONSE().
[[nodiscard]] u32 verify_responder(const BASIC_OCSP_RESPONSE &basic, const X509_CERT *issuer,
                                   const X509_CERTIFICATES *certs, const ASN1_TIME *time) noexcept;

/// The times of an answer.
struct AnswerTimes {
    ASN1_TIME this_update{};
    ASN1_TIME next_update{};  ///< when has_next
    bool has_next = false;

    /// False when one cannot be read.
    [[nodiscard]] bool read(const OCSP_SINGLE_RESPONSE &answer) noexcept;
    [[nodiscard]] bool hold_at(const ASN1_TIME *time) const noexcept;
};

/// Reads YYYYMMDDhhmmssZ, the form of RFC 5280, section 4.1.2.5.2, which OCSP takes over.
[[nodiscard]] bool read_time(const GENERALIZED_TIME *text, ASN1_TIME &time) noexcept;

/// Whether an extension is critical that may change what a response means.
[[nodiscard]] bool has_unknown_critical(const X509_EXTENSIONS *extensions) noexcept;

}  // namespace tlx
