// Secrets of a bounded length.
#pragma once

#include <tlxcrypto/memory.h>

#include "der/types.hpp"

namespace tlx {

/// Octets of a key or a secret, wiped at the end.
template <std::size_t kMost>
struct WipedOctets {
    u8 octets[kMost];
    u32 len = 0;

    WipedOctets() noexcept = default;
    ~WipedOctets() { tlx_wipe(octets, sizeof octets); }
    WipedOctets(const WipedOctets &) = delete;
    WipedOctets &operator=(const WipedOctets &) = delete;
    [[nodiscard]] Bytes bytes() const noexcept { return {octets, len}; }
};

}  // namespace tlx
