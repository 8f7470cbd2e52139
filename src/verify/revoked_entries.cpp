#include "verify/revoked_entries.hpp"

#include <algorithm>

#include "verify/name_match.hpp"

namespace tlx {
namespace {

/// How many elements there are. False when one of them is not in DER.
bool count_elements(Bytes octets, u32 &count) noexcept {
    StrictCursor in(octets);
    Element element;
    for (count = 0; !in.at_end(); ++count) {
        if (!in.any(element)) return false;
    }
    return true;
}

}  // namespace

u64 RevokedEntries::hash_of(u64 issuer_hash, Bytes serial) const noexcept {
    const SipHash::Key key = {{key_.words[0], key_.words[1] ^ issuer_hash}};
    SipHash hash(key);
    hash.add(serial);
    return hash.value();
}

const RevokedEntries::Run &RevokedEntries::run_at(u32 place) const noexcept {
    const auto is_before = [](u32 wanted, const Run &run) noexcept { return wanted < run.place; };
    return *(std::upper_bound(runs_.begin(), runs_.end(), place, is_before) - 1);
}

Rule RevokedEntries::read(CrlView &list, const SipHash::Key &key) noexcept {
    key_ = key;
    octets_ = list.entries;
    u32 count = 0;
    if (!count_elements(octets_, count)) return Rule::kBadList;
    if (!index_.start(count, static_cast<u32>(octets_.size())) ||
        !runs_.append({0, list.issuer, hash_of_name(key_, list.issuer)})) {
        return Rule::kNoMemory;
    }
    StrictCursor in(octets_);
    RevokedView entry;
    for (u32 place = 0; !in.at_end(); place = static_cast<u32>(octets_.size() - in.size())) {
        if (!next_revoked(in, entry)) return Rule::kBadList;
        list.has_unknown_critical |= entry.has_unknown_critical;
        if (!entry.issuer.empty() && !runs_.append({place, entry.issuer, hash_of_name(key_, entry.issuer)})) {
            return Rule::kNoMemory;
        }
        const Run &run = runs_.back();
        RevokedView earlier;
        const auto is_same = [&](u32 other) noexcept {
            return is_entry_of(other, run.issuer, entry.serial, earlier);
        };
        index_.add(hash_of(run.hash, entry.serial), place, is_same);
    }
    return Rule::kNone;
}

bool RevokedEntries::is_entry_of(u32 place, Bytes issuer, Bytes serial, RevokedView &entry) const noexcept {
    StrictCursor in(octets_.subspan(place));
    return next_revoked(in, entry) && same(entry.serial, serial) &&
           are_equal_names(run_at(place).issuer, issuer);
}

bool RevokedEntries::find(Bytes issuer, Bytes serial, RevokedView &entry) const noexcept {
    const u64 hash = hash_of(hash_of_name(key_, issuer), serial);
    return index_.find(hash, [&](u32 place) noexcept { return is_entry_of(place, issuer, serial, entry); });
}

}  // namespace tlx
