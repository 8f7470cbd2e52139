// Shows that nothing leaks and that every allocation may fail.
#pragma once

#include <gtest/gtest.h>
#include <tlxcrypto/memory.h>

#include <algorithm>
#include <cstdint>

namespace tlx_test {

/// Fails the test that ends with more live blocks than it began with.
class LeakCheck {
  public:
    LeakCheck() : before_(tlx_live_blocks()) {}
    ~LeakCheck() { EXPECT_EQ(tlx_live_blocks(), before_) << "blocks are still live"; }
    LeakCheck(const LeakCheck &) = delete;
    LeakCheck &operator=(const LeakCheck &) = delete;

  private:
    std::uint64_t before_;
};

/// A test that leaks nothing.
class LeakFreeTest : public ::testing::Test {
    LeakCheck leaks_;
};

/// How many more octets live at the most while `act` runs than before, as far as frees show it.
template <typename Act>
std::uint64_t peak_of_live_bytes(Act act) {
    std::uint64_t peak = 0;
    const std::uint64_t before = tlx_live_bytes();
    tlx_watch_frees(
        [](const void *, size_t, void *context) {
            auto *most = static_cast<std::uint64_t *>(context);
            *most = std::max(*most, tlx_live_bytes());
        },
        &peak);
    act();
    tlx_watch_frees(nullptr, nullptr);
    return std::max(peak, before) - before;
}

/// Runs `operation` with the 1st, 2nd, ... allocation failing until a run succeeds. `operation` returns true
/// on success; on failure it must have checked its own status, and no block may stay live. Returns how many
/// runs failed.
template <typename Operation>
unsigned sweep_failing_allocations(Operation operation) {
    constexpr unsigned kMost = 100000;
    for (unsigned n = 1; n < kMost; ++n) {
        const std::uint64_t before = tlx_live_blocks();
        tlx_fail_allocation(n);
        const bool succeeded = operation();
        tlx_fail_allocation(0);
        EXPECT_EQ(tlx_live_blocks(), before) << "leak when allocation " << n << " fails";
        if (succeeded) return n - 1;
        if (::testing::Test::HasFailure()) return n;
    }
    ADD_FAILURE() << "never succeeded";
    return kMost;
}

}  // namespace tlx_test
