// Keys that never change: a copy is the key itself, counted by references.
#pragma once

#include <atomic>
#include <memory>

#include "crypto/memory.hpp"

namespace tlx {

/// The statuses that all verifications share.
inline constexpr u32 kBadSignature = 2;
inline constexpr u32 kBadKey = 3;

/// What the first thread that needs it makes, and then all threads use.
template <typename T, typename Free>
class MadeOnce {
  public:
    MadeOnce() = default;
    MadeOnce(const MadeOnce &) = delete;
    MadeOnce &operator=(const MadeOnce &) = delete;
    ~MadeOnce() {
        if (T *made = get()) Free{}(made);
    }

    /// Null before somebody has made it.
    T *get() const noexcept { return value_.load(std::memory_order_acquire); }
    /// Keeps what was made, unless another thread was faster. Returns what all use.
    T *keep(std::unique_ptr<T, Free> made) noexcept {
        builds_.fetch_add(1, std::memory_order_relaxed);
        T *ready = nullptr;
        const bool first = value_.compare_exchange_strong(ready, made.get(), std::memory_order_acq_rel);
        return first ? made.release() : ready;
    }
    u32 builds() const noexcept { return builds_.load(std::memory_order_relaxed); }

  private:
    std::atomic<T *> value_ = nullptr;
    std::atomic<u32> builds_ = 0;
};

struct SharedKey {
    std::atomic<u32> references = 1;
};

template <typename Key>
void release(Key *key) noexcept {
    if (key == nullptr || key->references.fetch_sub(1, std::memory_order_acq_rel) != 1) return;
    key->~Key();
    tlx_free(key);
}

template <typename Key>
struct ReleaseKey {
    void operator()(Key *key) const noexcept { release(key); }
};
template <typename Key>
using OwnedKey = std::unique_ptr<Key, ReleaseKey<Key>>;

/// Null for null.
template <typename Key>
Key *share(Key *key) noexcept {
    if (key != nullptr) key->references.fetch_add(1, std::memory_order_relaxed);
    return key;
}

}  // namespace tlx
