// librhash, the oracle for HAS-160.
#pragma once

#include <cstdint>
#include <vector>

namespace tlx_test::rhash {

/// False in Windows programs, for which Debian has no librhash: skip tests that need it.
#ifdef _WIN32
constexpr bool kAvailable = false;
#else
constexpr bool kAvailable = true;
#endif

std::vector<std::uint8_t> has160(const std::vector<std::uint8_t> &data);

}  // namespace tlx_test::rhash
