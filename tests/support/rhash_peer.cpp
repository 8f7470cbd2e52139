#include "support/rhash_peer.hpp"

#include <rhash.h>

namespace tlx_test::rhash {

std::vector<std::uint8_t> has160(const std::vector<std::uint8_t> &data) {
    static const bool ready = (rhash_library_init(), true);
    std::vector<std::uint8_t> out(20);
    if (!ready || rhash_msg(RHASH_HAS160, data.data(), data.size(), out.data()) < 0) return {};
    return out;
}

}  // namespace tlx_test::rhash
