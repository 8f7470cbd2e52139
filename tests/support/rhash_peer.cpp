#include "support/rhash_peer.hpp"

#ifndef _WIN32
#include <rhash.h>
#endif

namespace tlx_test::rhash {

std::vector<std::uint8_t> has160([[maybe_unused]] const std::vector<std::uint8_t> &data) {
    std::vector<std::uint8_t> out;
#ifndef _WIN32
    static const bool ready = (rhash_library_init(), true);
    out.resize(ready ? 20 : 0);
    if (rhash_msg(RHASH_HAS160, data.data(), data.size(), out.data()) < 0) return {};
#endif
    return out;
}

}  // namespace tlx_test::rhash
