// An index over one text column of the registry: open addressing, filled by the compiler.
#pragma once

#include "asn1/oid_table.hpp"

namespace tlx::oid {

/// Eight characters as one word, the first in the low octet.
constexpr u64 load_word(const char *text) noexcept {
    const auto octet = [text](unsigned i) { return static_cast<u64>(static_cast<u8>(text[i])) << (8 * i); };
    return octet(0) | octet(1) | octet(2) | octet(3) | octet(4) | octet(5) | octet(6) | octet(7);
}

constexpr u64 mix(u64 hash, u64 word) noexcept {
    hash = (hash ^ word) * 0x9E3779B97F4A7C15U;
    return hash ^ (hash >> 32);
}

/// Takes a text eight characters at a time; the last word may overlap the one before it.
constexpr u64 hash_text(std::string_view text) noexcept {
    u64 hash = text.size();
    if (text.size() < 8) {
        u64 word = 0;
        for (const char c : text) {
            word = word << 8 | static_cast<u8>(c);
        }
        return mix(hash, word);
    }
    const char *const last = text.data() + text.size() - 8;
    for (const char *p = text.data(); p < last; p += 8) {
        hash = mix(hash, load_word(p));
    }
    return mix(hash, load_word(last));
}

/// Finds what a scan finds that goes up from row 1 and stops at the first equal text. It has no empty texts.
template <const char *OID_ROW::*kText>
class TextIndex {
  public:
    constexpr TextIndex() noexcept {
        for (const Row &row : kTable) {
            insert(row);
        }
    }

    /// The row's index, 0 when no row has the text.
    constexpr u32 find(std::string_view text) const noexcept {
        if (text.empty() || text.size() > longest_) return 0;
        const u64 hash = hash_text(text);
        for (std::size_t i = home(hash); slots_[i].row != 0; i = next(i)) {
            if (matches(slots_[i], hash, text)) return slots_[i].row;
        }
        return 0;
    }

  private:
    static constexpr unsigned kBits = 11;  // 2048 slots, two fifths of them used
    struct Slot {
        std::uint16_t row = 0;  // 0: free
        u8 length = 0;
        u8 tag = 0;  // more bits of the hash, so that an unequal text is rarely compared
    };

    static constexpr std::size_t home(u64 hash) noexcept { return hash >> (64 - kBits); }
    static constexpr std::size_t next(std::size_t i) noexcept { return (i + 1) & ((1U << kBits) - 1); }
    static constexpr u8 tag(u64 hash) noexcept { return static_cast<u8>(hash >> (56 - kBits)); }

    static constexpr bool matches(const Slot &slot, u64 hash, std::string_view text) noexcept {
        return slot.tag == tag(hash) && slot.length == text.size() &&
               std::string_view(kTable[slot.row].texts.*kText, slot.length) == text;
    }

    constexpr void insert(const Row &row) noexcept {
        const std::string_view text = row.texts.*kText;
        if (row.index == 0 || text.empty()) return;
        const u64 hash = hash_text(text);
        std::size_t i = home(hash);
        while (slots_[i].row != 0) {
            i = next(i);  // also past a lower row with the same text, which is then found first
        }
        slots_[i] = {static_cast<std::uint16_t>(row.index), static_cast<u8>(text.size()), tag(hash)};
        if (text.size() > longest_) longest_ = static_cast<u32>(text.size());
    }

    Slot slots_[1U << kBits]{};
    u32 longest_ = 0;
};

}  // namespace tlx::oid
