// Digests of the content of a message, each computed once for all signers.
#pragma once

#include <tlxcrypto/digest.h>

#include "message/signed_members.hpp"

namespace tlx {

class ContentDigests {
  public:
    explicit ContentDigests(Bytes content) noexcept : content_(content) {}

    /// The digest of the content, which stays valid as long as this object; empty for a digest that is not
    /// available and when memory runs out.
    [[nodiscard]] Bytes get(u32 digest_id) noexcept {
        for (Entry &entry : entries_) {
            if (entry.digest_id == digest_id) return {entry.octets, entry.length};
            if (entry.digest_id == 0) return compute(entry, digest_id);
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
    Entry entries_[kMost] = {};
};

}  // namespace tlx
