// Makes allocations inside libcrypto fail, which has an allocator of its own, and ends libcrypto.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>

namespace tlx_test {

/// Whether the library and the test programs share one libcrypto. A DLL has its own.
#ifdef _WIN32
inline constexpr bool kSharesLibcrypto = false;
#else
inline constexpr bool kSharesLibcrypto = true;
#endif

/// From now on the n-th allocation of libcrypto fails, once; 0: none.
void fail_libcrypto_allocation(unsigned n);
/// Whether it has failed.
bool libcrypto_allocation_failed();

/// Cleans libcrypto up as the end of a process does.
void end_libcrypto();

/// Runs `operation`, which returns a status, with the 1st, 2nd, ... allocation of libcrypto failing, until
/// none does. Every status is 0 or 1. Returns how many runs failed.
template <typename Operation>
unsigned sweep_failing_libcrypto_allocations(Operation operation) {
    EXPECT_EQ(operation(), 0U) << "with what is made once";
    unsigned failures = 0;
    for (unsigned n = 1;; ++n) {
        fail_libcrypto_allocation(n);
        const std::uint32_t status = operation();
        const bool failed = libcrypto_allocation_failed();
        fail_libcrypto_allocation(0);
        EXPECT_LE(status, failed ? 1U : 0U) << "allocation " << n;
        if (!failed || ::testing::Test::HasFailure()) return failures;
        failures += status;
    }
}

}  // namespace tlx_test
