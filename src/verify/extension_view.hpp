// Reading of extensions in DER.
#pragma once

#include "verify/certificate_view.hpp"

namespace tlx {

/// Extensions ::= SEQUENCE SIZE (1..MAX) OF Extension
[[nodiscard]] Rule read_extensions(Bytes contents, u32 accepted, CertificateView &view) noexcept;

}  // namespace tlx
