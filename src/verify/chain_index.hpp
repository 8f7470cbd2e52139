// Finds nodes by a hash. Those of one hash are a chain.
#pragma once

#include "der/memory.hpp"
#include "der/owned.hpp"
#include "der/types.hpp"

namespace tlx {

/// It grows with what is added.
template <typename Node>
class ChainIndex {
  public:
    using Link = Node *Node::*;

    explicit ChainIndex(Link link) noexcept : link_(link) {}

    /// False when memory runs out.
    [[nodiscard]] bool add(u64 hash, Node *node) noexcept {
        if (2 * used_ >= size_ && !grow()) return false;
        Slot &slot = slot_of(hash);
        if (slot.first == nullptr) ++used_;
        node->*link_ = slot.first;
        slot = {hash, node};
        return true;
    }
    /// The first node of the chain; null when there is none.
    [[nodiscard]] const Node *find(u64 hash) const noexcept {
        return size_ == 0 ? nullptr : slot_of(hash).first;
    }

  private:
    struct Slot {
        u64 hash;
        Node *first;
    };

    [[nodiscard]] Slot &slot_of(u64 hash) const noexcept {
        std::size_t i = hash & (size_ - 1);
        while (slots_.get()[i].first != nullptr && slots_.get()[i].hash != hash) {
            i = (i + 1) & (size_ - 1);
        }
        return slots_.get()[i];
    }

    [[nodiscard]] bool grow() noexcept {
        constexpr std::size_t kFirst = 8;
        const std::size_t old_size = size_;
        const std::size_t wanted = old_size == 0 ? kFirst : 2 * old_size;
        OwnedOctets<Slot> old(static_cast<Slot *>(TLX_ALLOCATE_ZEROED(wanted, sizeof(Slot))));
        if (!old) return false;
        std::swap(slots_, old);
        size_ = wanted;
        for (std::size_t i = 0; i < old_size; ++i) {
            const Slot &slot = old.get()[i];
            if (slot.first != nullptr) slot_of(slot.hash) = slot;
        }
        return true;
    }

    Link link_;
    OwnedOctets<Slot> slots_;
    std::size_t size_ = 0;  ///< of the table, a power of 2
    std::size_t used_ = 0;
};

}  // namespace tlx
