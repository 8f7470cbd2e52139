// The tracking allocator, from the inside.
#pragma once

#include <tlxcrypto/memory.h>

#include "crypto/types.hpp"

#define TLX_ALLOCATE(size) tlx_malloc((size), __FILE__, __LINE__)
#define TLX_ALLOCATE_ZEROED(count, size) tlx_calloc((count), (size), __FILE__, __LINE__)
#define TLX_REALLOCATE(block, size) tlx_realloc((block), (size), __FILE__, __LINE__)

namespace tlx {

/// A zero-filled record; null on failure.
template <typename T>
T *new_record(const char *file, int line) noexcept {
    return static_cast<T *>(tlx_calloc(1, sizeof(T), file, line));
}
#define TLX_NEW(type) ::tlx::new_record<type>(__FILE__, __LINE__)

/// For a block that may hold a secret; null is ignored.
inline void wipe_and_free(void *block, std::size_t size) noexcept {
    tlx_wipe(block, size);
    tlx_free(block);
}

}  // namespace tlx
