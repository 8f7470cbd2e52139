// Object identifiers as the contents octets of their encoding.
#pragma once

#include <string_view>

#include "verify/certificate_view.hpp"

namespace tlx {

[[nodiscard]] inline bool is_oid_of(Bytes oid, std::string_view expected) noexcept {
    return same(oid, {reinterpret_cast<const u8 *>(expected.data()), expected.size()});
}

/// Whether the parameters of an algorithm are NULL.
[[nodiscard]] inline bool has_null_parameters(const AlgorithmView &algorithm) noexcept {
    constexpr u8 kNull[] = {id::kNull, 0};
    return algorithm.has_parameters && same(algorithm.parameters, kNull);
}

}  // namespace tlx
