// librhash, the oracle for HAS-160.
#pragma once

#include <cstdint>
#include <vector>

namespace tlx_test::rhash {

std::vector<std::uint8_t> has160(const std::vector<std::uint8_t> &data);

}  // namespace tlx_test::rhash
