#include "x509/crl_index.hpp"

#include <tlxcrypto/random.h>
#include <tlxpki/general_name.h>

#include <algorithm>
#include <bit>
#include <new>
#include <span>

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
    // Two of three slots are in use.
    count_ = static_cast<u32>(std::min<u64>(u64{entries.count()} * 3 / 2 + 1, UINT32_MAX));
    place_bits_ = static_cast<u32>(std::bit_width(octets_.size()));
    slots_.reset(static_cast<u32 *>(TLX_ALLOCATE_ZEROED(count_, sizeof(u32))));
    if (!slots_ || RAND_BYTES(reinterpret_cast<u8 *>(key_.words), sizeof key_.words) != 0) return 0x480B003C;
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
        const Wanted own = wanted(current, magnitude_of(serial.contents));
        Element other;
        u32 &free_slot = slot(own, other);
        if (free_slot == 0) free_slot = (place + 1) | tag_of(own);
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

CrlIndex::Wanted CrlIndex::wanted(Issuer issuer, Bytes serial) const noexcept {
    const SipHash::Key key = {{key_.words[0], key_.words[1] ^ issuer}};
    SipHash hash(key);
    hash.add(serial);
    return {issuer, serial, hash.value()};
}

u32 CrlIndex::tag_of(const Wanted &wanted) const noexcept {
    return static_cast<u32>(wanted.hash << place_bits_);
}

u32 &CrlIndex::slot(const Wanted &wanted, Element &entry) const noexcept {
    const u32 tag = tag_of(wanted);
    const u32 place_mask = (u32{1} << place_bits_) - 1;
    for (u32 i = static_cast<u32>((wanted.hash >> 32) * count_ >> 32);; i = i + 1 < count_ ? i + 1 : 0) {
        u32 &each = slots_.get()[i];
        if (each == 0) return each;
        if ((each & ~place_mask) != tag) continue;
        const u32 place = (each & place_mask) - 1;
        Element serial;
        const bool same = read_element(octets_.subspan(place), entry) && Cursor(entry).next(serial) &&
                          std::ranges::equal(magnitude_of(serial.contents), wanted.serial);
        if (same && issuer_at(place) == wanted.issuer) return each;
    }
}

bool CrlIndex::find(Issuer issuer, Bytes serial, Element &entry) const noexcept {
    return slot(wanted(issuer, serial), entry) != 0;
}

}  // namespace tlx
