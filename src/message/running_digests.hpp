// Digests of octets that come in pieces.
#pragma once

#include <tlxcrypto/digest.h>

#include "message/content_digests.hpp"

TLX_OWNS(DIGEST_UNIT);

namespace tlx {

class RunningDigests {
  public:
    enum class Start : u8 { done, too_many, no_memory };

    /// Begins a digest that is available, unless it has begun.
    [[nodiscard]] Start start(u32 digest_id) noexcept;
    /// False when memory runs out.
    [[nodiscard]] bool update(Bytes octets) noexcept;
    /// Ends all of them. False when memory runs out.
    [[nodiscard]] bool finish(ContentDigests &digests) noexcept;

  private:
    static constexpr std::size_t kMost = 8;

    Owned<DIGEST_UNIT> units_[kMost];
    std::size_t count_ = 0;
};

}  // namespace tlx
