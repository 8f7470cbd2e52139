// The debugging side of the allocator: where every live block came from, and allocations that fail on demand.
#pragma once

#include <atomic>

#include "crypto/types.hpp"

namespace tlx::debug {

/// Not 0 while allocations are tracked, one is going to fail, or frees are watched.
extern constinit std::atomic<u32> g_switches;

/// Whether the functions below have anything to do. The only cost to a program that uses none of this.
inline bool active() noexcept {
    return g_switches.load(std::memory_order_relaxed) != 0;
}

/// Counts this allocation, and says whether it is the one that has to fail.
bool refuses_allocation() noexcept;

/// How large a block is and where it was allocated.
struct Origin {
    std::size_t size;
    const char *file;
    int line;
};

void remember(const void *block, Origin origin) noexcept;
/// Returns what is known about the block, no file when it is not tracked. Call it while the block is still
/// allocated: once it is freed, its address may be another thread's block.
Origin forget(const void *block) noexcept;

/// Shows a block that is about to be freed to the visitor.
void show(const void *block, std::size_t size) noexcept;

}  // namespace tlx::debug
