#include "der/buffer.hpp"

#include <algorithm>

namespace tlx {

u8 *Buffer::grow(std::size_t more) noexcept {
    constexpr std::size_t kFirstCapacity = 256;
    if (failed_ || more > kMaxSize - size_) {
        failed_ = true;
        return nullptr;
    }
    const std::size_t capacity = std::max({size_ + more, capacity_ + capacity_ / 2, kFirstCapacity});
    auto *moved = static_cast<u8 *>(TLX_REALLOCATE(data_, capacity));
    if (moved == nullptr) {
        failed_ = out_of_memory_ = true;
        return nullptr;
    }
    data_ = moved;
    capacity_ = capacity;
    return data_ + size_;
}

}  // namespace tlx
