// Finds places in octets by a hash, with four octets for a slot.
#pragma once

#include <algorithm>
#include <bit>

#include "der/memory.hpp"
#include "der/owned.hpp"
#include "der/types.hpp"

namespace tlx {

/// The bits of a slot that no place needs hold some of the hash, so that a search rarely compares in vain.
class PlaceIndex {
  public:
    /// Makes room for places below `size`. False when memory runs out.
    [[nodiscard]] bool start(u32 places, u32 size) noexcept {
        // Two of three slots are in use.
        count_ = static_cast<u32>(std::min<u64>(u64{places} * 3 / 2 + 1, UINT32_MAX));
        place_bits_ = static_cast<u32>(std::bit_width(size));
        slots_.reset(static_cast<u32 *>(TLX_ALLOCATE_ZEROED(count_, sizeof(u32))));
        return slots_ != nullptr;
    }
    /// Adds a place, unless one of this hash matches. Without that, equal places would cost the square of
    /// their number.
    template <typename Matches>
    void add(u64 hash, u32 place, Matches matches) noexcept {
        u32 &slot = slot_of(hash, matches);
        if (slot == 0) slot = (place + 1) | tag_of(hash);
    }
    /// Whether a place of this hash matches.
    template <typename Matches>
    [[nodiscard]] bool find(u64 hash, Matches matches) const noexcept {
        return count_ != 0 && slot_of(hash, matches) != 0;
    }

  private:
    /// The slot of the place that matches, or the empty one where it belongs.
    template <typename Matches>
    [[nodiscard]] u32 &slot_of(u64 hash, Matches matches) const noexcept {
        const u32 mask = place_mask();
        for (u32 i = first(hash);; i = next(i)) {
            u32 &slot = slots_.get()[i];
            if (slot == 0 || ((slot & ~mask) == tag_of(hash) && matches((slot & mask) - 1))) return slot;
        }
    }
    u32 first(u64 hash) const noexcept { return static_cast<u32>((hash >> 32) * count_ >> 32); }
    u32 next(u32 slot) const noexcept { return slot + 1 < count_ ? slot + 1 : 0; }
    u32 place_mask() const noexcept { return static_cast<u32>((u64{1} << place_bits_) - 1); }
    u32 tag_of(u64 hash) const noexcept { return static_cast<u32>(hash << place_bits_); }

    OwnedOctets<u32> slots_;  ///< a place plus 1 below the bits of a hash; 0 in an empty slot
    u32 count_ = 0;
    u32 place_bits_ = 0;
};

}  // namespace tlx
