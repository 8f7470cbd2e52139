#include "verify/store.hpp"

#include <algorithm>

#include "der/hash_key.hpp"

namespace tlx {

Rule read_entry(Bytes octets, u32 accepted, StoreEntry &entry) noexcept {
    CertificateView &view = entry.view;
    if (const Rule rule = read_certificate(octets, accepted, view); rule != Rule::kNone) return rule;
    SipHash::Key key;
    if (!take_hash_key(key)) return Rule::kNoMemory;
    entry.issuer_hash = hash_of_name(key, view.issuer);
    return make_key(view.key_algorithm, view.key, entry.key);
}

Store::~Store() {
    for (StoreEntry *entry : entries_) {
        Destroy<StoreEntry>{}(entry);
    }
}

bool Store::start() noexcept {
    if (!take_hash_key(hash_key_)) return false;
    status_.start(hash_key_);
    return true;
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

bool Store::has(const StoreEntry &entry, u64 octets_hash) const noexcept {
    for (const StoreEntry *each = by_octets_.find(octets_hash); each != nullptr;
         each = each->next_of_octets) {
        if (each->is_anchor == entry.is_anchor && same(each->view.whole, entry.view.whole)) return true;
    }
    return false;
}

// Many certificates may have the same name and key identifier, and their indexes then have long chains.
Rule Store::keep(StoreEntry *entry) noexcept {
    OwnedObject<StoreEntry> owned(entry);
    SipHash octets_hash(hash_key_);
    octets_hash.add(entry->view.whole);
    if (entry->has_certificate && has(*entry, octets_hash.value())) return Rule::kNone;
    if (!entries_.append(entry)) return Rule::kNoMemory;
    static_cast<void>(owned.release());
    entry->name_hash = hash_of_name(entry->view.subject);
    const Bytes key_identifier = entry->view.subject_key;
    const bool indexed =
        by_name_.add(entry->name_hash, entry) &&
        (key_identifier.empty() || by_key_.add(hash_of_key(entry->name_hash, key_identifier), entry)) &&
        (!entry->has_certificate || by_octets_.add(octets_hash.value(), entry));
    return indexed ? Rule::kNone : Rule::kNoMemory;
}

Rule Store::add(Bytes certificate, bool is_anchor, u32 accepted) noexcept {
    OwnedObject<StoreEntry> entry = make_object<StoreEntry>();
    if (!entry) return Rule::kNoMemory;
    const Bytes octets = copy_to(entry->octets, certificate);
    if (!entry->octets) return Rule::kNoMemory;
    entry->is_anchor = is_anchor;
    const Rule rule = read_entry(octets, accepted, *entry);
    return rule == Rule::kNone ? keep(entry.release()) : rule;
}

// SubjectPublicKeyInfo ::= SEQUENCE { algorithm AlgorithmIdentifier, subjectPublicKey BIT STRING }
Rule Store::add_anchor(Bytes name, Bytes key_info) noexcept {
    OwnedObject<StoreEntry> entry = make_object<StoreEntry>();
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
    StrictCursor whole_key({octets + name.size(), key_info.size()});
    if (read_key_info(whole_key, view) != Rule::kNone || !whole_key.at_end()) return Rule::kBadPublicKey;
    if (const Rule rule = make_key(view.key_algorithm, view.key, entry->key); rule != Rule::kNone) {
        return rule;
    }
    return keep(entry.release());
}

}  // namespace tlx
