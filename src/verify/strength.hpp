// Which algorithms and key sizes the profiles have.
#pragma once

#include "verify/public_key.hpp"
#include "verify/settings.hpp"

namespace tlx {

/// kNone, kWeakKey, or what check_key() finds.
[[nodiscard]] Rule check_strength(const PublicKey &key, const Settings &settings) noexcept;
/// kNone or kWeakDigest.
[[nodiscard]] Rule check_digest(const SignatureAlgorithm &algorithm, const Settings &settings) noexcept;
/// The same. An algorithm that is not known is not judged.
[[nodiscard]] Rule check_digest(const AlgorithmView &algorithm, const Settings &settings) noexcept;

}  // namespace tlx
