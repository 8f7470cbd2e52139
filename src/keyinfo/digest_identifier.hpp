// The identifiers of digests, also of those that the registry of object identifiers lacks.
#pragma once

#include <string_view>

#include "keyinfo/key_records.hpp"

namespace tlx {

/// The digest of a dotted text, 0 for an unknown one.
[[nodiscard]] u32 digest_of(std::string_view dotted) noexcept;
/// The digest of an identifier, whatever its parameters; 0 for null and an unknown one.
[[nodiscard]] u32 digest_of(const X509_ALGO_IDENTIFIER *algorithm) noexcept;

[[nodiscard]] bool is_known_digest(u32 digest_id) noexcept;

/// The identifier of a digest, with NULL parameters. Null for an unknown digest and when memory runs out.
[[nodiscard]] Owned<X509_ALGO_IDENTIFIER> digest_algorithm(u32 digest_id) noexcept;

}  // namespace tlx
