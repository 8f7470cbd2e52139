// The identifiers of digests, also of those that the registry of object identifiers lacks.
#pragma once

#include <span>
#include <string_view>

#include "keyinfo/key_records.hpp"

namespace tlx {

struct DigestIdentifier {
    std::string_view oid;  ///< the contents octets
    u32 digest_id;
    bool is_current = true;      ///< whether signatures of certificates and of CMS name it
    std::string_view name = {};  ///< empty for one that messages are not written with
};

[[nodiscard]] std::span<const DigestIdentifier> digest_identifiers() noexcept;

/// The digest of a dotted text, 0 for an unknown one.
[[nodiscard]] u32 digest_of(std::string_view dotted) noexcept;
/// The digest of an identifier, whatever its parameters; 0 for null and an unknown one.
[[nodiscard]] u32 digest_of(const X509_ALGO_IDENTIFIER *algorithm) noexcept;
/// The digest of a name, 0 for an unknown one.
[[nodiscard]] u32 digest_of_name(std::string_view name) noexcept;

[[nodiscard]] bool is_known_digest(u32 digest_id) noexcept;

/// The identifier of a digest, with NULL parameters. Null for an unknown digest and when memory runs out.
[[nodiscard]] Owned<X509_ALGO_IDENTIFIER> digest_algorithm(u32 digest_id) noexcept;

}  // namespace tlx
