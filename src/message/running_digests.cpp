#include "message/running_digests.hpp"

#include <algorithm>

namespace tlx {
namespace {

constexpr u32 kMostPlain = 8;

/// Digests depend on the public number alone, which a private key may lack.
bool is_same_key(const KCDSA *a, const KCDSA *b) noexcept {
    if (a == b) return true;
    const BIGINT *y = get_KCDSA_number(a, TLX_KCDSA_Y);
    const BIGINT *other = get_KCDSA_number(b, TLX_KCDSA_Y);
    return y != nullptr && other != nullptr && cmp_BIGINT(y, other) == 0;
}

}  // namespace

RunningDigests::~RunningDigests() {
    for (Entry *entry : entries_) {
        Destroy<Entry>{}(entry);
    }
}

const RunningDigests::Entry *RunningDigests::find(u32 digest_id, const KCDSA *key) const noexcept {
    for (const Entry *entry : entries_) {
        if (entry->digest_id == digest_id && is_same_key(entry->key, key)) return entry;
    }
    return nullptr;
}

RunningDigests::Start RunningDigests::start(u32 digest_id, const KCDSA *key) noexcept {
    if (find(digest_id, key) != nullptr) return Start::done;
    if (key == nullptr && plain_ == kMostPlain) return Start::too_many;
    OwnedObject<Entry> entry = make_object<Entry>(digest_id, key);
    if (!entry || !entry->unit) return Start::no_memory;
    DIGEST_UNIT *unit = entry->unit.get();
    const u32 status =
        key != nullptr ? init_KCDSA_digest(key, digest_id, unit) : init_Digest(unit, digest_id);
    if (status != 0) return status == TLX_KCDSA_BAD_KEY ? Start::bad_key : Start::no_memory;
    if (!entries_.append(entry.get())) return Start::no_memory;
    static_cast<void>(entry.release());
    if (key == nullptr) ++plain_;
    return Start::done;
}

RunningDigests::Start RunningDigests::start_all(const RunningDigests &others, const KCDSA *key) noexcept {
    for (const Entry *entry : others.entries_) {
        if (const Start started = start(entry->digest_id, key); started != Start::done) return started;
    }
    return Start::done;
}

bool RunningDigests::update(Bytes octets) noexcept {
    constexpr std::size_t kPiece = 65536;  // stays in the processor's cache from one digest to the next
    while (!octets.empty()) {
        const Bytes piece = octets.first(std::min(kPiece, octets.size()));
        octets = octets.subspan(piece.size());
        for (Entry *entry : entries_) {
            if (update_Digest(entry->unit.get(), piece.data(), size_of(piece)) != 0) return false;
        }
    }
    return true;
}

bool RunningDigests::finish() noexcept {
    for (Entry *entry : entries_) {
        if (final_Digest(entry->unit.get(), entry->octets, &entry->length) != 0) return false;
    }
    return true;
}

Bytes RunningDigests::get(u32 digest_id, const KCDSA *key) const noexcept {
    const Entry *entry = find(digest_id, key);
    return entry != nullptr ? Bytes(entry->octets, entry->length) : Bytes();
}

void RunningDigests::give_to(ContentDigests &digests) const noexcept {
    for (const Entry *entry : entries_) {
        if (entry->key == nullptr) digests.put(entry->digest_id, {entry->octets, entry->length});
    }
}

}  // namespace tlx
