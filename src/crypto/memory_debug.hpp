// The debugging side of the allocator: where every live block came from, and allocations that fail on demand.
#pragma once

#include <atomic>

#include "crypto/types.hpp"

namespace tlx::debug {

/// Not 0 while allocations are tracked or one is going to fail.
extern constinit std::atomic<u32> g_switches;

/// Whether the functions below have anything to do. The only cost to a program that uses none of this.
inline bool active() noexcept {
    return g_switches.load(std::memory_order_relaxed) != 0;
}

/// Counts this allocation, and says whether it is the one that has to fail.
bool refuses_allocation() noexcept;

void remember(const void *block, std::size_t size, const char *file, int line) noexcept;
void forget(const void *block) noexcept;
/// A block was resized, and perhaps moved.
void replace(const void *old_block, const void *block, std::size_t size, const char *file, int line) noexcept;

}  // namespace tlx::debug
