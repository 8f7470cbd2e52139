#include "x509/crl_index.hpp"

#include <tlxpki/general_name.h>

#include <algorithm>
#include <new>
#include <span>

#include "der/hash_key.hpp"
#include "x509/certificate_records.hpp"
#include "x509/extension_records.hpp"

namespace tlx {
namespace {

using OwnedNames = std::unique_ptr<GENERAL_NAMES, FreeWith<free_GENERAL_NAMES>>;

/// The names that a certificateIssuer gives; null when they cannot be read and when memory runs out.
OwnedNames read_names(Bytes value) noexcept {
    Element element;
    GENERAL_NAMES *names = nullptr;
    if (!read_element(value, element) || element.whole.size() != value.size() || element.tag != kSequence ||
        GeneralNames::decode(element, &names) != 0) {
        return nullptr;
    }
    return OwnedNames(names);
}

/// The distinguished name among them; null when there is none.
const X509_NAME *directory_name(const GENERAL_NAMES *names) noexcept {
    const i32 index = get_GENERAL_NAMES_index_by_choice(names, TLX_GENERAL_NAME_DIRECTORY_NAME, -1);
    return index < 0 ? nullptr : get_GENERAL_NAMES_child(names, index)->value.directoryName;
}

}  // namespace

CrlIndex *CrlIndex::make() noexcept {
    void *block = TLX_ALLOCATE(sizeof(CrlIndex));
    return block != nullptr ? new (block) CrlIndex : nullptr;
}

void CrlIndex::free(const CrlIndex *index) noexcept {
    if (index != nullptr) index->~CrlIndex();
    tlx_free(const_cast<CrlIndex *>(index));
}

u32 CrlIndex::build(const TLX_CRL_ENTRIES &entries, const X509_NAME *issuer) noexcept {
    octets_ = entries.octets();
    if (!index_.start(entries.count(), static_cast<u32>(octets_.size())) || !take_hash_key(key_)) {
        return 0x480B003C;
    }
    Cursor rest(octets_);
    Element element;
    Issuer current = kOwnIssuer;
    while (rest.next(element)) {
        const auto place = static_cast<u32>(element.whole.data() - octets_.data());
        CrlEntry entry;
        if (entries.names_issuers() && read_crl_entry(element, entry) && !entry.issuer_names.empty()) {
            if (const u32 status = begin_run(place, entry.issuer_names, issuer); status != 0) return status;
            current = issuer_at(place);
        }
        Element serial;
        if (!Cursor(element).next(serial)) continue;
        const Bytes magnitude = magnitude_of(serial.contents);
        Element earlier;
        const auto is_same = [&](u32 other) noexcept {
            return is_entry_of(other, current, magnitude, earlier);
        };
        index_.add(hash_of(current, magnitude), place, is_same);
    }
    return 0;
}

u32 CrlIndex::begin_run(u32 place, Bytes names, const X509_NAME *own) noexcept {
    if (run_count_ == run_capacity_) {
        const u32 capacity = run_capacity_ * 2 + 8;
        auto *moved = static_cast<Run *>(TLX_REALLOCATE(runs_.get(), capacity * sizeof(Run)));
        if (moved == nullptr) return 0x480B003C;
        static_cast<void>(runs_.release());
        runs_.reset(moved);
        run_capacity_ = capacity;
    }
    const OwnedNames list = read_names(names);
    const X509_NAME *name = directory_name(list.get());
    Issuer issuer = kOwnIssuer;
    if (name == nullptr || (cmp_X509_NAME(name, own) != 0 && !issuer_of(name, issuer))) return 0x480B0104;
    runs_.get()[run_count_++] = {place, issuer};
    return 0;
}

bool CrlIndex::issuer_of(const X509_NAME *name, Issuer &issuer) const noexcept {
    Encoder encoder;
    Name::encode(encoder, name);
    if (!encoder.ok()) return false;
    SipHash hash(key_);
    hash.add(encoder.bytes());
    issuer = hash.value() | 1;  // another than the list's own
    return true;
}

CrlIndex::Issuer CrlIndex::issuer_at(u32 place) const noexcept {
    const std::span<const Run> runs(runs_.get(), run_count_);
    const auto next = std::ranges::upper_bound(runs, place, {}, &Run::place);
    return next == runs.begin() ? kOwnIssuer : next[-1].issuer;
}

u64 CrlIndex::hash_of(Issuer issuer, Bytes serial) const noexcept {
    const SipHash::Key key = {{key_.words[0], key_.words[1] ^ issuer}};
    SipHash hash(key);
    hash.add(serial);
    return hash.value();
}

bool CrlIndex::is_entry_of(u32 place, Issuer issuer, Bytes serial, Element &entry) const noexcept {
    Element own;
    return read_element(octets_.subspan(place), entry) && Cursor(entry).next(own) &&
           std::ranges::equal(magnitude_of(own.contents), serial) && issuer_at(place) == issuer;
}

bool CrlIndex::find(Issuer issuer, Bytes serial, Element &entry) const noexcept {
    return index_.find(hash_of(issuer, serial),
                       [&](u32 place) noexcept { return is_entry_of(place, issuer, serial, entry); });
}

}  // namespace tlx
