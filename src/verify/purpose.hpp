// What the target is verified for: purposes by key usage and extended key usage, and names that it has to
// have.
#pragma once

#include "verify/validate.hpp"

namespace tlx {

/// Judges the extended key usage along the path and both usages of the target.
void judge_purpose(const Path &path, const Settings &settings, Verdict &verdict) noexcept;

/// Judges whether the target has the host name, IP address and mail address of the settings.
void judge_target_names(const Path &path, const Settings &settings, Verdict &verdict) noexcept;

/// Whether the usages of a certificate let it sign OCSP responses (RFC 6960, section 4.2.2.2).
[[nodiscard]] bool may_sign_responses(const CertificateView &certificate) noexcept;

}  // namespace tlx
