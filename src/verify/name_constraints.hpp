// Name constraints (RFC 5280, sections 4.2.1.10 and 6.1.3 (b) and (c)).
#pragma once

#include "verify/certificate_view.hpp"

namespace tlx {

/// Whether the extension is in the form of its structure: kNone or kBadNameConstraints.
[[nodiscard]] Rule check_name_constraints(const CertificateView &issuer) noexcept;

/// Whether all names of a certificate are within the constraints of an issuer above it. kNone, or the first
/// rule that is broken. Takes each comparison from the budget.
[[nodiscard]] Rule check_names(const CertificateView &issuer, const CertificateView &certificate,
                               u32 &budget) noexcept;

/// Whether the subject alternative names of a certificate can be read: kNone or kBadAlternativeNames.
[[nodiscard]] Rule check_alternative_names(const CertificateView &certificate) noexcept;

}  // namespace tlx
