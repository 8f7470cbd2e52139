// GHASH (SP 800-38D, section 6.4), for associated data that come after the message.
#pragma once

#include "crypto/types.hpp"

namespace tlx {

/// An element of GF(2^128): the first bit of its octets is the coefficient of x^0, in the top bit of `high`.
struct FieldElement {
    u64 high = 0;
    u64 low = 0;

    FieldElement &operator^=(const FieldElement &other) noexcept {
        high ^= other.high;
        low ^= other.low;
        return *this;
    }
};

inline constexpr u32 kGhashBlock = 16;

FieldElement load_element(const u8 *octets) noexcept;
void store_element(const FieldElement &element, u8 *octets) noexcept;

/// The time does not depend on the values.
FieldElement multiply(FieldElement a, FieldElement b) noexcept;
/// base to a power that is no secret.
FieldElement raise(FieldElement base, u64 exponent) noexcept;

/// What octets, taken in pieces and filled up with zeros, come to.
class Ghash {
  public:
    void start(const FieldElement &key) noexcept;
    void add(Bytes octets) noexcept;
    [[nodiscard]] FieldElement finish() noexcept;
    [[nodiscard]] u64 length() const noexcept { return length_; }
    [[nodiscard]] const FieldElement &key() const noexcept { return key_; }

  private:
    void add_block(const u8 *octets) noexcept;

    FieldElement key_;
    FieldElement sum_;
    u64 length_ = 0;  ///< octets
    u8 pending_[kGhashBlock] = {};
};

}  // namespace tlx
