// Looks object identifiers up by their text.
#pragma once

#include <string_view>

#include "der/memory.hpp"
#include "der/owned.hpp"
#include "der/values.hpp"

namespace tlx {

/// A view of the distinct identifiers of a list, sorted, so that a hostile list costs no more than n log n.
class PolicySet {
  public:
    /// Adds the text of every identifier that `identifier_at` gives for 0 .. count - 1. False when memory
    /// runs out.
    template <typename IdentifierAt>
    [[nodiscard]] bool build(u32 count, IdentifierAt identifier_at) noexcept {
        entries_.reset(static_cast<Entry *>(TLX_ALLOCATE(count * sizeof(Entry))));
        if (!entries_) return false;
        for (u32 i = 0; i < count; ++i) {
            entries_.get()[i] = {text_of(identifier_at(i)), i};
        }
        count_ = count;
        sort();
        return true;
    }
    /// True when the identifier at this place of the list is the first with its text.
    [[nodiscard]] bool is_first(std::string_view text, u32 place) const noexcept {
        const Entry *entry = find(text);
        return entry != nullptr && entry->place == place;
    }
    [[nodiscard]] bool contains(std::string_view text) const noexcept { return find(text) != nullptr; }

  private:
    struct Entry {
        std::string_view text;
        u32 place;
    };
    void sort() noexcept;
    /// The first entry of the list with this text.
    [[nodiscard]] const Entry *find(std::string_view text) const noexcept;

    OwnedOctets<Entry> entries_;
    u32 count_ = 0;
};

}  // namespace tlx
