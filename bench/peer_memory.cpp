#include "peer_memory.hpp"

#include <malloc.h>
#include <openssl/crypto.h>

#include <algorithm>
#include <cstdlib>

namespace {

std::uint64_t live = 0;
std::uint64_t before = 0;
std::uint64_t most = 0;

void *counted(void *block) {
    live += malloc_usable_size(block);
    most = std::max(most, live);
    return block;
}

void *allocate(std::size_t size, const char * /*file*/, int /*line*/) {
    return counted(std::malloc(size));
}
void *resize(void *block, std::size_t size, const char * /*file*/, int /*line*/) {
    live -= malloc_usable_size(block);
    return counted(std::realloc(block, size));
}
void release(void *block, const char * /*file*/, int /*line*/) {
    live -= malloc_usable_size(block);
    std::free(block);
}

/// libcrypto takes other functions only before it allocates for the first time.
[[maybe_unused]] const int taken = CRYPTO_set_mem_functions(allocate, resize, release);

}  // namespace

void restart_libcrypto_peak() {
    before = most = live;
}

std::uint64_t libcrypto_peak() {
    return most - before;
}
