// Digests of the content of a message, each computed once for all signers.
#pragma once

#include <tlxcrypto/digest.h>

#include "message/signed_members.hpp"

namespace tlx {

class ContentDigests {
  public:
    /// Of content that is there as a whole.
    explicit ContentDigests(Bytes content) noexcept : content_(content) {}
    /// Of content that is gone: those that put() was called for.
    ContentDigests() noexcept : computes_(false) {}

    /// Whether get() knows the digests of the algorithms that were named beforehand only.
    [[nodiscard]] bool are_listed() const noexcept { return !computes_; }
    /// Stores a copy of a digest.
    void put(u32 digest_id, Bytes octets) noexcept {
        for (Entry &entry : entries_) {
            if (entry.digest_id != 0) continue;
            entry.digest_id = digest_id;
            entry.length = static_cast<u32>(octets.size());
            std::memcpy(entry.octets, octets.data(), octets.size());
            return;
        }
    }
    /// The digest of the content, which stays valid as long as this object; empty for a digest that is not
    /// available and when memory runs out.
    [[nodiscard]] Bytes get(u32 digest_id) noexcept {
        for (Entry &entry : entries_) {
            if (entry.digest_id == digest_id) return {entry.octets, entry.length};
            if (entry.digest_id == 0) return computes_ ? compute(entry, digest_id) : Bytes();
        }
        return {};
    }

  private:
    struct Entry {
        u32 digest_id;
        u32 length;
        u8 octets[TLX_DIGEST_MAX_LENGTH];
    };
    /// More than there are digests.
    static constexpr std::size_t kMost = 12;

    [[nodiscard]] Bytes compute(Entry &entry, u32 digest_id) noexcept {
        const auto size = static_cast<u32>(content_.size());
        if (Digest(digest_id, content_.data(), size, entry.octets, &entry.length) != 0) return {};
        entry.digest_id = digest_id;
        return {entry.octets, entry.length};
    }

    Bytes content_;
    bool computes_ = true;
    Entry entries_[kMost] = {};
};

}  // namespace tlx
