#include "der/received.hpp"

#include <algorithm>
#include <utility>

#include "der/memory.hpp"

namespace tlx {
namespace {

/// A chain of parts being made, which gives up when memory runs out.
class Parts {
  public:
    Parts() noexcept = default;
    ~Parts() { free_received(first_); }
    Parts(const Parts &) = delete;
    Parts &operator=(const Parts &) = delete;

    /// `left` is how many octets are still to come, these included.
    void append(Bytes octets, std::size_t left) noexcept {
        while (!octets.empty() && ok_) {
            if (room_ == 0) add_part(std::min(left, TLX_RECEIVED::kMostOctets));
            if (!ok_) return;
            const Bytes now = octets.first(std::min(octets.size(), room_));
            std::memcpy(last_->octets() + last_->length, now.data(), now.size());
            last_->length += now.size();
            room_ -= now.size();
            left -= now.size();
            octets = octets.subspan(now.size());
        }
    }
    TLX_RECEIVED *release() noexcept { return ok_ ? std::exchange(first_, nullptr) : nullptr; }

  private:
    void add_part(std::size_t size) noexcept {
        auto *part = static_cast<TLX_RECEIVED *>(TLX_ALLOCATE(sizeof(TLX_RECEIVED) + size));
        ok_ = part != nullptr;
        if (!ok_) return;
        *part = {nullptr, 0};
        (last_ == nullptr ? first_ : last_->next) = part;
        last_ = part;
        room_ = size;
    }

    TLX_RECEIVED *first_ = nullptr;
    TLX_RECEIVED *last_ = nullptr;
    std::size_t room_ = 0;
    bool ok_ = true;
};

}  // namespace

TLX_RECEIVED *keep_received(const Element &element) noexcept {
    Parts parts;
    std::size_t left = element.whole.size();
    if (left > 0) {
        parts.append(element.whole, left);
        return parts.release();
    }
    // The parts of a node do not lie side by side.
    constexpr u8 kEndOfContents[kEndOfContentsSize] = {};
    const Bytes trailer(kEndOfContents, element.indefinite ? kEndOfContentsSize : 0);
    const Bytes pieces[] = {{&element.tag, 1}, element.length_octets, element.contents, trailer};
    for (const Bytes piece : pieces) {
        left += piece.size();
    }
    for (const Bytes piece : pieces) {
        parts.append(piece, left);
        left -= piece.size();
    }
    return parts.release();
}

TLX_RECEIVED *dup_received(const TLX_RECEIVED *received) noexcept {
    Parts parts;
    std::size_t left = received_size(received);
    for (; received != nullptr; received = received->next) {
        parts.append(received->bytes(), left);
        left -= received->length;
    }
    return parts.release();
}

void free_received(TLX_RECEIVED *received) noexcept {
    while (received != nullptr) {
        TLX_RECEIVED *next = received->next;
        tlx_free(received);
        received = next;
    }
}

std::size_t received_size(const TLX_RECEIVED *received) noexcept {
    std::size_t size = 0;
    for (; received != nullptr; received = received->next) {
        size += received->length;
    }
    return size;
}

u8 *join_received(const TLX_RECEIVED *received) noexcept {
    if (received == nullptr) return nullptr;
    auto *octets = static_cast<u8 *>(TLX_ALLOCATE(received_size(received)));
    u8 *end = octets;
    for (; received != nullptr && octets != nullptr; received = received->next) {
        end = std::ranges::copy(received->bytes(), end).out;
    }
    return octets;
}

bool ReceivedReader::takes(Bytes expected) noexcept {
    while (!expected.empty()) {
        if (rest_.empty() && part_ != nullptr && part_->next != nullptr) {
            part_ = part_->next;
            rest_ = part_->bytes();
        }
        const std::size_t size = std::min(expected.size(), rest_.size());
        if (size == 0 || std::memcmp(expected.data(), rest_.data(), size) != 0) return false;
        expected = expected.subspan(size);
        rest_ = rest_.subspan(size);
    }
    return true;
}

}  // namespace tlx
