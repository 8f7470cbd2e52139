#include "verify/store.hpp"

#include <tlxcrypto/random.h>

#include <algorithm>
#include <new>

namespace tlx {

OwnedEntry make_entry() noexcept {
    void *memory = TLX_ALLOCATE(sizeof(StoreEntry));
    return OwnedEntry(memory == nullptr ? nullptr : new (memory) StoreEntry);
}

EntryIndex::Slot &EntryIndex::slot_of(u64 hash) const noexcept {
    std::size_t i = hash & (size_ - 1);
    while (slots_.get()[i].first != nullptr && slots_.get()[i].hash != hash) {
        i = (i + 1) & (size_ - 1);
    }
    return slots_.get()[i];
}

bool EntryIndex::grow() noexcept {
    constexpr std::size_t kFirst = 64;
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

bool EntryIndex::add(u64 hash, StoreEntry *entry) noexcept {
    if (2 * used_ >= size_ && !grow()) return false;
    Slot &slot = slot_of(hash);
    if (slot.first == nullptr) ++used_;
    entry->*link_ = slot.first;
    slot = {hash, entry};
    return true;
}

const StoreEntry *EntryIndex::find(u64 hash) const noexcept {
    return size_ == 0 ? nullptr : slot_of(hash).first;
}

Store::~Store() {
    for (StoreEntry *entry : entries_) {
        FreeEntry{}(entry);
    }
}

bool Store::start() noexcept {
    return RAND_BYTES(reinterpret_cast<u8 *>(&hash_key_), sizeof hash_key_) == 0;
}

u64 Store::hash_of_name(Bytes name) const noexcept {
    SipHash hash(hash_key_);
    hash_name(hash, hash_key_, name);
    return hash.value();
}

u64 Store::hash_of_key(u64 name_hash, Bytes key_identifier) const noexcept {
    SipHash hash(hash_key_);
    hash.add({reinterpret_cast<const u8 *>(&name_hash), sizeof name_hash});
    hash.add(key_identifier);
    return hash.value();
}

const StoreEntry *Store::find_key(u64 name_hash, Bytes key_identifier) const noexcept {
    return by_key_.find(hash_of_key(name_hash, key_identifier));
}

bool Store::has(const StoreEntry &entry) const noexcept {
    const bool keyed = !entry.view.subject_key.empty();
    const auto link = keyed ? &StoreEntry::next_of_key : &StoreEntry::next_of_name;
    const StoreEntry *each =
        keyed ? find_key(entry.name_hash, entry.view.subject_key) : find_name(entry.name_hash);
    for (; each != nullptr; each = each->*link) {
        if (each->has_certificate && each->is_anchor == entry.is_anchor &&
            same(each->view.whole, entry.view.whole)) {
            return true;
        }
    }
    return false;
}

Rule Store::keep(StoreEntry *entry) noexcept {
    OwnedEntry owned(entry);
    entry->name_hash = hash_of_name(entry->view.subject);
    if (entry->has_certificate && has(*entry)) return Rule::kNone;
    if (!entries_.append(entry)) return Rule::kNoMemory;
    static_cast<void>(owned.release());
    const Bytes key_identifier = entry->view.subject_key;
    const bool indexed =
        by_name_.add(entry->name_hash, entry) &&
        (key_identifier.empty() || by_key_.add(hash_of_key(entry->name_hash, key_identifier), entry));
    return indexed ? Rule::kNone : Rule::kNoMemory;
}

Rule Store::add(Bytes certificate, bool is_anchor, u32 accepted) noexcept {
    OwnedEntry entry = make_entry();
    if (!entry) return Rule::kNoMemory;
    entry->octets.reset(copy_terminated(certificate));
    if (!entry->octets) return Rule::kNoMemory;
    entry->is_anchor = is_anchor;
    const Bytes octets(entry->octets.get(), certificate.size());
    CertificateView &view = entry->view;
    if (const Rule rule = read_certificate(octets, accepted, view); rule != Rule::kNone) return rule;
    if (const Rule rule = make_key(view.key_algorithm, view.key, entry->key); rule != Rule::kNone) {
        return rule;
    }
    return keep(entry.release());
}

// SubjectPublicKeyInfo ::= SEQUENCE { algorithm AlgorithmIdentifier, subjectPublicKey BIT STRING }
Rule Store::add_anchor(Bytes name, Bytes key_info) noexcept {
    OwnedEntry entry = make_entry();
    if (!entry) return Rule::kNoMemory;
    entry->octets.reset(static_cast<u8 *>(TLX_ALLOCATE(name.size() + key_info.size() + 1)));
    if (!entry->octets) return Rule::kNoMemory;
    u8 *octets = entry->octets.get();
    std::copy(name.begin(), name.end(), octets);
    std::copy(key_info.begin(), key_info.end(), octets + name.size());
    entry->is_anchor = true;
    entry->has_certificate = false;
    CertificateView &view = entry->view;
    StrictCursor whole_name({octets, name.size()});
    if (!whole_name.next(id::kSequence, view.subject) || !whole_name.at_end() || !is_name(view.subject)) {
        return Rule::kBadName;
    }
    view.key_info = {octets + name.size(), key_info.size()};
    StrictCursor members;
    Bytes bits;
    if (!open_whole(view.key_info, id::kSequence, members) || !read_algorithm(members, view.key_algorithm) ||
        !members.next(id::kBitString, bits) || !members.at_end() || !read_octet_bits(bits, view.key)) {
        return Rule::kBadPublicKey;
    }
    if (const Rule rule = make_key(view.key_algorithm, view.key, entry->key); rule != Rule::kNone) {
        return rule;
    }
    return keep(entry.release());
}

}  // namespace tlx
