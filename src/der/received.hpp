// The octets of an element as they were received, kept beside the record that was read out of them.
#pragma once

#include <tlxpki/x509_types.h>

#include "der/element.hpp"

/// A part of them. Parts are small: allocators serve large blocks at a multiple of the cost of small ones,
/// which would show in the time that decoding a certificate takes.
struct TLX_RECEIVED {
    static constexpr std::size_t kMostOctets = 900;

    TLX_RECEIVED *next;
    std::size_t length;

    [[nodiscard]] std::uint8_t *octets() noexcept { return reinterpret_cast<std::uint8_t *>(this + 1); }
    [[nodiscard]] tlx::Bytes bytes() const noexcept {
        return {reinterpret_cast<const std::uint8_t *>(this + 1), length};
    }
};

namespace tlx {

/// Null when memory runs out.
TLX_RECEIVED *keep_received(const Element &element) noexcept;
/// Null for null and when memory runs out.
TLX_RECEIVED *dup_received(const TLX_RECEIVED *received) noexcept;
void free_received(TLX_RECEIVED *received) noexcept;

[[nodiscard]] std::size_t received_size(const TLX_RECEIVED *received) noexcept;
/// All octets in one block, which the caller frees with tlx_free; null for null and when memory runs out.
[[nodiscard]] u8 *join_received(const TLX_RECEIVED *received) noexcept;

/// Compares what was received with an encoding that comes in pieces.
class ReceivedReader {
  public:
    explicit ReceivedReader(const TLX_RECEIVED *received) noexcept
        : part_(received), rest_(received != nullptr ? received->bytes() : Bytes()) {}
    /// Takes as many octets as `expected` has. False when they are others, or too few.
    [[nodiscard]] bool takes(Bytes expected) noexcept;
    [[nodiscard]] bool at_end() const noexcept {
        return rest_.empty() && (part_ == nullptr || part_->next == nullptr);
    }

  private:
    const TLX_RECEIVED *part_;
    Bytes rest_;
};

}  // namespace tlx
