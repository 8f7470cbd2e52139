// The numbers that make up a key.
#pragma once

#include <utility>

#include "crypto/bigint.hpp"

namespace tlx {

/// N numbers, each of which may be missing (null).
template <u32 N>
class KeyNumbers {
  public:
    using Pointers = const BIGINT *[N];

    const BIGINT *operator[](u32 index) const noexcept { return index < N ? values_[index].get() : nullptr; }

    void get_all(Pointers &numbers) const noexcept {
        for (u32 i = 0; i < N; ++i) {
            numbers[i] = values_[i].get();
        }
    }

    /// Replaces every number by a copy of the one given, which may be one of these. False when memory runs
    /// out; nothing changes then.
    bool set_all(const Pointers &numbers) noexcept {
        OwnedBigint copies[N];
        for (u32 i = 0; i < N; ++i) {
            copies[i].reset(dup_BIGINT(numbers[i]));
            if (numbers[i] != nullptr && copies[i] == nullptr) return false;
        }
        for (u32 i = 0; i < N; ++i) {
            values_[i] = std::move(copies[i]);
        }
        return true;
    }

    void set(u32 index, OwnedBigint number) noexcept { values_[index] = std::move(number); }

  private:
    OwnedBigint values_[N];
};

inline bool is_odd(const BIGINT *number) noexcept {
    return number != nullptr && (limb(*number, 0) & 1U) != 0;
}

}  // namespace tlx
