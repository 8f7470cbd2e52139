// HAS-160, the hash function of TTAS.KO-12.0011.
#pragma once

#include "crypto/types.hpp"

namespace tlx {

/// A running HAS-160 digest: plain data, which may be copied and wiped.
class Has160 {
  public:
    static constexpr u32 kLength = 20;
    static constexpr u32 kBlockLength = 64;

    void start() noexcept;
    void add(Bytes data) noexcept;
    /// Writes kLength octets. The state must be started anew afterwards.
    void finish(u8 *digest) noexcept;

  private:
    void compress(const u8 *block) noexcept;

    u32 chain_[5];
    u64 length_;  // octets so far
    u8 pending_[kBlockLength];
};

}  // namespace tlx
