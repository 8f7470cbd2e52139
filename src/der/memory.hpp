// The tracking allocator, from the inside.
#pragma once

#include <cstring>

#include "crypto/memory.hpp"

namespace tlx {

/// Tells a lack of memory from other failures of what is done while it lives.
class MemoryWatch {
  public:
    [[nodiscard]] bool ran_out() const noexcept { return tlx_failed_allocations() != before_; }

  private:
    u64 before_ = tlx_failed_allocations();
};

/// A copy of `bytes` with one zero octet after it; null on failure.
inline u8 *copy_terminated(Bytes bytes) noexcept {
    auto *copy = static_cast<u8 *>(TLX_ALLOCATE(bytes.size() + 1));
    if (copy == nullptr) return nullptr;
    if (!bytes.empty()) std::memcpy(copy, bytes.data(), bytes.size());
    copy[bytes.size()] = 0;
    return copy;
}

}  // namespace tlx
