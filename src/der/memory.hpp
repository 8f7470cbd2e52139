// The tracking allocator, from the inside.
#pragma once

#include <cstring>

#include "crypto/memory.hpp"

namespace tlx {

/// A copy of `bytes` with one zero octet after it; null on failure.
inline u8 *copy_terminated(Bytes bytes) noexcept {
    auto *copy = static_cast<u8 *>(TLX_ALLOCATE(bytes.size() + 1));
    if (copy == nullptr) return nullptr;
    if (!bytes.empty()) std::memcpy(copy, bytes.data(), bytes.size());
    copy[bytes.size()] = 0;
    return copy;
}

}  // namespace tlx
