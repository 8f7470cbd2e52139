// A growing buffer over the tracking allocator: append, then hand the octets over.
#pragma once

#include <cstring>

#include "der/memory.hpp"
#include "der/types.hpp"

namespace tlx {

/// Remembers a failed append (out of memory, or past 0x7FFFFFFF octets), so that the caller asks once, at the
/// end.
class Buffer {
  public:
    static constexpr std::size_t kMaxSize = 0x7FFFFFFF;

    Buffer() noexcept = default;
    ~Buffer() { tlx_free(data_); }
    Buffer(const Buffer &) = delete;
    Buffer &operator=(const Buffer &) = delete;

    [[nodiscard]] bool ok() const noexcept { return !failed_; }
    void fail() noexcept { failed_ = true; }
    /// True when it failed because memory ran out, not because of what it had to write.
    [[nodiscard]] bool out_of_memory() const noexcept { return out_of_memory_; }
    [[nodiscard]] std::size_t size() const noexcept { return size_; }
    [[nodiscard]] u8 *data() noexcept { return data_; }
    [[nodiscard]] Bytes bytes() const noexcept { return {data_, size_}; }

    /// Room for `more` further octets; null when it cannot be had. The size is not changed.
    u8 *reserve(std::size_t more) noexcept {
        if (!failed_ && more <= capacity_ - size_) return data_ + size_;
        return grow(more);
    }
    /// Counts `more` octets that the caller wrote into the reserved room.
    void advance(std::size_t more) noexcept { size_ += more; }

    void append(Bytes octets) noexcept {
        u8 *room = reserve(octets.size());
        if (room == nullptr || octets.empty()) return;
        std::memcpy(room, octets.data(), octets.size());
        size_ += octets.size();
    }
    void append(u8 octet) noexcept {
        u8 *room = reserve(1);
        if (room == nullptr) return;
        *room = octet;
        ++size_;
    }
    /// Moves everything from `position` on back by `count` octets, leaving a gap there.
    void insert_gap(std::size_t position, std::size_t count) noexcept {
        if (reserve(count) == nullptr) return;
        std::memmove(data_ + position + count, data_ + position, size_ - position);
        size_ += count;
    }
    /// Hands the octets to the caller, who frees them with tlx_free; null when an append failed.
    u8 *release() noexcept {
        if (failed_ || (data_ == nullptr && grow(1) == nullptr)) return nullptr;
        u8 *octets = data_;
        data_ = nullptr;
        size_ = capacity_ = 0;
        return octets;
    }
    /// Zeroes the octets, for buffers that held a secret.
    void wipe() noexcept {
        if (data_ != nullptr) tlx_wipe(data_, size_);
    }

  private:
    u8 *grow(std::size_t more) noexcept;

    u8 *data_ = nullptr;
    std::size_t size_ = 0;
    std::size_t capacity_ = 0;
    bool failed_ = false;
    bool out_of_memory_ = false;
};

/// A fixed number of octets, zero at first and wiped before they are freed, with a zero octet after them.
class SecretBytes {
  public:
    explicit SecretBytes(std::size_t size) noexcept
        : data_(static_cast<u8 *>(TLX_ALLOCATE_ZEROED(1, size + 1))), size_(size) {}
    ~SecretBytes() { wipe_and_free(data_, size_); }
    SecretBytes(const SecretBytes &) = delete;
    SecretBytes &operator=(const SecretBytes &) = delete;
    [[nodiscard]] u8 *data() noexcept { return data_; }
    [[nodiscard]] std::size_t size() const noexcept { return size_; }
    [[nodiscard]] Bytes bytes() const noexcept { return {data_, size_}; }
    explicit operator bool() const noexcept { return data_ != nullptr; }

  private:
    u8 *data_;
    std::size_t size_;
};

}  // namespace tlx
