#include "support/rhash_peer.hpp"

#ifndef _WIN32
#include <rhash.h>
#endif

namespace tlx_test::rhash {

#ifdef _WIN32

std::vector<std::uint8_t> has160(const std::vector<std::uint8_t> & /*data*/) {
    return {};
}

#else

std::vector<std::uint8_t> has160(const std::vector<std::uint8_t> &data) {
    static const bool ready = (rhash_library_init(), true);
    std::vector<std::uint8_t> out(20);
    if (!ready || rhash_msg(RHASH_HAS160, data.data(), data.size(), out.data()) < 0) return {};
    return out;
}

#endif

}  // namespace tlx_test::rhash
