#include "message/running_digests.hpp"

namespace tlx {

RunningDigests::Start RunningDigests::start(u32 digest_id) noexcept {
    for (std::size_t i = 0; i < count_; ++i) {
        if (get_DIGEST_UNIT_id(units_[i].get()) == digest_id) return Start::done;
    }
    if (count_ == kMost) return Start::too_many;
    Owned<DIGEST_UNIT> unit(new_DIGEST_UNIT());
    if (!unit || init_Digest(unit.get(), digest_id) != 0) return Start::no_memory;
    units_[count_++] = std::move(unit);
    return Start::done;
}

bool RunningDigests::update(Bytes octets) noexcept {
    const auto size = static_cast<u32>(octets.size());
    for (std::size_t i = 0; i < count_; ++i) {
        if (update_Digest(units_[i].get(), octets.data(), size) != 0) return false;
    }
    return true;
}

bool RunningDigests::finish(ContentDigests &digests) noexcept {
    for (std::size_t i = 0; i < count_; ++i) {
        u8 octets[TLX_DIGEST_MAX_LENGTH];
        u32 length = 0;
        const u32 digest_id = get_DIGEST_UNIT_id(units_[i].get());
        if (final_Digest(units_[i].get(), octets, &length) != 0) return false;
        digests.put(digest_id, {octets, length});
    }
    return true;
}

}  // namespace tlx
