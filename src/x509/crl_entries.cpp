#include "x509/crl_entries.hpp"

#include <algorithm>
#include <new>

#include "der/encoder.hpp"
#include "der/memory.hpp"
#include "x509/crl_index.hpp"

namespace tlx {
namespace {

/// The extensions of entries that are known (RFC 5280, section 5.3): id-ce and one of these.
constexpr u8 kReasonCode = 21;
constexpr u8 kHoldInstruction = 23;
constexpr u8 kInvalidityDate = 24;
constexpr u8 kCertificateIssuer = 29;

/// The last arc of an identifier 2.5.29.n; 0 for another one.
u8 id_ce_arc(Bytes oid) noexcept {
    return oid.size() == 3 && oid[0] == 0x55 && oid[1] == 0x1D ? oid[2] : u8{0};
}

// Extension ::= SEQUENCE { extnID OBJECT IDENTIFIER, critical BOOLEAN DEFAULT FALSE, extnValue OCTET STRING }
bool read_extension(const Element &element, CrlEntry &entry) noexcept {
    Cursor members(element);
    Element oid;
    Element value;
    bool critical = false;
    if (element.tag != kSequence || !members.next(oid) || oid.tag != TLX_TAG_OBJECT_IDENTIFIER ||
        !members.next(value)) {
        return false;
    }
    if (value.tag == TLX_TAG_BOOLEAN) {
        if (value.contents.size() != 1) return false;
        critical = value.contents[0] != 0;
        if (!members.next(value)) return false;
    }
    if (value.tag != TLX_TAG_OCTET_STRING || !members.at_end()) return false;
    switch (id_ce_arc(oid.contents)) {
        case kCertificateIssuer:
            entry.issuer_names = value.contents;
            return !value.contents.empty();
        case kReasonCode:
        case kHoldInstruction:
        case kInvalidityDate:
            return true;
        default:
            entry.is_unknown = entry.is_unknown || critical;
            return true;
    }
}

}  // namespace

// SEQUENCE {
//     userCertificate CertificateSerialNumber, revocationDate Time, crlEntryExtensions Extensions OPTIONAL }
bool read_crl_entry(const Element &element, CrlEntry &entry) noexcept {
    Cursor members(element);
    Element member;
    if (element.tag != kSequence || !members.next(member) || member.tag != TLX_TAG_INTEGER ||
        member.contents.empty()) {
        return false;
    }
    entry = {member.contents, {}};
    if (!members.next(member) || (member.tag != TLX_TAG_UTC_TIME && member.tag != TLX_TAG_GENERALIZED_TIME)) {
        return false;
    }
    if (members.at_end()) return true;
    if (!members.next(member) || member.tag != kSequence || !members.at_end()) return false;
    Cursor extensions(member);
    Element extension;
    while (!extensions.at_end()) {
        if (!extensions.next(extension) || !read_extension(extension, entry)) return false;
    }
    return true;
}

Bytes magnitude_of(Bytes octets) noexcept {
    while (!octets.empty() && octets.front() == 0) {
        octets = octets.subspan(1);
    }
    return octets;
}

}  // namespace tlx

using namespace tlx;

TLX_CRL_ENTRIES::~TLX_CRL_ENTRIES() {
    drop_index();
    tlx_free(octets_);
}

TLX_CRL_ENTRIES *TLX_CRL_ENTRIES::make() noexcept {
    void *block = TLX_ALLOCATE(sizeof(TLX_CRL_ENTRIES));
    return block != nullptr ? new (block) TLX_CRL_ENTRIES : nullptr;
}

void TLX_CRL_ENTRIES::free(TLX_CRL_ENTRIES *entries) noexcept {
    if (entries != nullptr) entries->~TLX_CRL_ENTRIES();
    tlx_free(entries);
}

TLX_CRL_ENTRIES *TLX_CRL_ENTRIES::dup(const TLX_CRL_ENTRIES *entries) noexcept {
    TLX_CRL_ENTRIES *copy = entries != nullptr ? make() : nullptr;
    if (copy == nullptr) return nullptr;
    if (!copy->reserve(entries->size_)) {
        free(copy);
        return nullptr;
    }
    if (entries->size_ > 0) std::memcpy(copy->octets_, entries->octets_, entries->size_);
    copy->size_ = entries->size_;
    copy->received_ = entries->received_;
    if (!entries->entries_.empty()) {
        copy->entries_ = {copy->octets_ + (entries->entries_.data() - entries->octets_),
                          entries->entries_.size()};
    }
    copy->count_ = entries->count_;
    copy->present_ = entries->present_;
    copy->names_issuers_ = entries->names_issuers_;
    copy->has_unknown_ = entries->has_unknown_;
    return copy;
}

bool TLX_CRL_ENTRIES::read(Bytes contents) noexcept {
    present_ = true;
    entries_ = contents;
    Cursor entries(contents);
    Element element;
    CrlEntry entry;
    while (!entries.at_end()) {
        if (!entries.next(element) || !read_crl_entry(element, entry)) return false;
        count_in(entry);
    }
    return true;
}

void TLX_CRL_ENTRIES::count_in(const CrlEntry &entry) noexcept {
    ++count_;
    names_issuers_ = names_issuers_ || !entry.issuer_names.empty();
    has_unknown_ = has_unknown_ || entry.is_unknown;
}

bool TLX_CRL_ENTRIES::keep(const Element &crl) noexcept {
    constexpr u8 kEndOfContents[kEndOfContentsSize] = {};
    const Bytes trailer(kEndOfContents, crl.indefinite ? kEndOfContentsSize : 0);
    const std::size_t before = 1 + crl.length_octets.size();
    const std::size_t size = before + crl.contents.size() + trailer.size();
    if (!reserve(size)) return false;
    u8 *end = octets_;
    for (const Bytes part : {Bytes(&crl.tag, 1), crl.length_octets, crl.contents, trailer}) {
        end = std::ranges::copy(part, end).out;
    }
    size_ = received_ = size;
    if (!entries_.empty()) {
        entries_ = {octets_ + before + (entries_.data() - crl.contents.data()), entries_.size()};
    }
    return true;
}

void TLX_CRL_ENTRIES::forget_received() noexcept {
    received_ = 0;
    drop_index();
}

bool TLX_CRL_ENTRIES::append(Bytes octets) noexcept {
    Element element;
    CrlEntry entry;
    if (!read_element(octets, element) || element.whole.size() != octets.size() ||
        !read_crl_entry(element, entry)) {
        return false;
    }
    if (size_ != entries_.size()) {
        // What is not an entry goes.
        if (!entries_.empty()) std::memmove(octets_, entries_.data(), entries_.size());
        size_ = entries_.size();
    }
    forget_received();
    const bool has_room = reserve(octets.size());
    if (has_room) {
        std::memcpy(octets_ + size_, octets.data(), octets.size());
        size_ += octets.size();
        present_ = true;
        count_in(entry);
    }
    entries_ = {octets_, size_};
    return has_room;
}

bool TLX_CRL_ENTRIES::reserve(std::size_t more) noexcept {
    if (more > kMaxLength - size_) return false;
    if (size_ + more <= capacity_) return true;
    const std::size_t capacity = std::max(size_ + more, capacity_ + capacity_ / 2);
    auto *moved = static_cast<u8 *>(TLX_REALLOCATE(octets_, capacity));
    if (moved == nullptr) return false;
    octets_ = moved;
    capacity_ = capacity;
    return true;
}

u32 TLX_CRL_ENTRIES::index(const X509_NAME *issuer, const CrlIndex *&index) const noexcept {
    index = index_.load(std::memory_order_acquire);
    if (index != nullptr) return 0;
    CrlIndex *made = CrlIndex::make();
    if (made == nullptr) return 0x480B003C;
    if (const u32 status = made->build(*this, issuer); status != 0) {
        CrlIndex::free(made);
        return status;
    }
    if (index_.compare_exchange_strong(index, made, std::memory_order_acq_rel)) {
        index = made;
    } else {
        CrlIndex::free(made);  // another thread was faster
    }
    return 0;
}

void TLX_CRL_ENTRIES::drop_index() noexcept {
    CrlIndex::free(index_.exchange(nullptr, std::memory_order_acq_rel));
}
