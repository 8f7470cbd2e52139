// A growing array over the tracking allocator, of values that may be moved as octets.
#pragma once

#include <type_traits>

#include "der/memory.hpp"
#include "der/owned.hpp"
#include "der/types.hpp"

namespace tlx {

template <typename T>
class Array {
    static_assert(std::is_trivially_copyable_v<T>);

  public:
    [[nodiscard]] u32 size() const noexcept { return size_; }
    [[nodiscard]] bool empty() const noexcept { return size_ == 0; }
    T &operator[](u32 i) noexcept { return values_.get()[i]; }
    const T &operator[](u32 i) const noexcept { return values_.get()[i]; }
    T *begin() noexcept { return values_.get(); }
    T *end() noexcept { return values_.get() + size_; }
    const T *begin() const noexcept { return values_.get(); }
    const T *end() const noexcept { return values_.get() + size_; }
    T &back() noexcept { return values_.get()[size_ - 1]; }
    const T &back() const noexcept { return values_.get()[size_ - 1]; }

    /// False when memory runs out.
    [[nodiscard]] bool append(const T &value) noexcept {
        if (size_ == capacity_ && !grow()) return false;
        values_.get()[size_++] = value;
        return true;
    }
    /// Drops everything from `size` on; the room stays.
    void shrink(u32 size) noexcept { size_ = size; }
    void swap(Array &other) noexcept {
        std::swap(values_, other.values_);
        std::swap(size_, other.size_);
        std::swap(capacity_, other.capacity_);
    }

  private:
    bool grow() noexcept {
        constexpr u32 kFirst = 8;
        const u32 wanted = capacity_ == 0 ? kFirst : 2 * capacity_;
        const std::size_t octets =
            wanted * sizeof(T);  // NOLINT(bugprone-sizeof-expression): T may be a pointer
        void *memory = TLX_REALLOCATE(values_.get(), octets);
        if (memory == nullptr) return false;
        static_cast<void>(values_.release());
        values_.reset(static_cast<T *>(memory));
        capacity_ = wanted;
        return true;
    }

    OwnedOctets<T> values_;
    u32 size_ = 0;
    u32 capacity_ = 0;
};

}  // namespace tlx
