// librhash, the oracle for HAS-160. Windows programs are without it, as Debian has none for them.
#pragma once

#include <cstdint>
#include <vector>
#ifndef _WIN32
#include <rhash.h>
#endif

namespace tlx_test::librhash {

#ifdef _WIN32
constexpr bool kAvailable = false;
inline std::vector<std::uint8_t> has160(const std::vector<std::uint8_t> & /*data*/) {
    return {};
}
#else
constexpr bool kAvailable = true;
inline std::vector<std::uint8_t> has160(const std::vector<std::uint8_t> &data) {
    static const bool ready = (rhash_library_init(), true);
    std::vector<std::uint8_t> out(ready ? 20 : 0);
    rhash_msg(RHASH_HAS160, data.data(), data.size(), out.data());
    return out;
}
#endif

}  // namespace tlx_test::librhash
