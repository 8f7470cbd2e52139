#include "support/libcrypto_faults.hpp"

#include <openssl/crypto.h>

#include <cstdlib>

namespace tlx_test {
namespace {

unsigned g_until_failure = 0;
bool g_failed = false;

bool fails() {
    if (g_until_failure == 0 || --g_until_failure != 0) return false;
    g_failed = true;
    return true;
}

void *allocate(std::size_t size, const char * /*file*/, int /*line*/) {
    return fails() ? nullptr : std::malloc(size);
}

void *resize(void *block, std::size_t size, const char * /*file*/, int /*line*/) {
    return fails() ? nullptr : std::realloc(block, size);
}

void release(void *block, const char * /*file*/, int /*line*/) {
    std::free(block);
}

// libcrypto accepts other functions only before its first allocation.
const bool g_hooked = CRYPTO_set_mem_functions(allocate, resize, release) == 1;

}  // namespace

void fail_libcrypto_allocation(unsigned n) {
    ASSERT_TRUE(g_hooked);
    g_until_failure = n;
    g_failed = false;
}

void end_libcrypto() {
    OPENSSL_cleanup();
}

bool libcrypto_allocation_failed() {
    return g_failed;
}

}  // namespace tlx_test
