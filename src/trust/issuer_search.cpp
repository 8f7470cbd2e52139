#include "trust/issuer_search.hpp"

#include <algorithm>
#include <bit>

namespace tlx {
namespace {

constexpr u32 kNone = 0;
constexpr u32 kScannedAtMost = 16;

// What a hash stands for, so that the three ways of finding a certificate can share one table.
constexpr u64 kBySubjectKey = 0xCBF29CE484222325;
constexpr u64 kBySerial = 0x9E3779B97F4A7C15;
constexpr u64 kBySubject = 0xC2B2AE3D27D4EB4F;

/// FNV-1a, which can be continued octet by octet.
constexpr u64 hash_octet(u64 hash, u8 octet) noexcept {
    return (hash ^ octet) * 0x100000001B3;
}

u64 hash_octets(u64 hash, Bytes octets) noexcept {
    for (const u8 octet : octets)
        hash = hash_octet(hash, octet);
    return hash;
}

bool subject_key(const X509_CERT *cert, Bytes &identifier) noexcept {
    return read_extension(find_extension(cert, extension_id::kSubjectKeyIdentifier), TLX_TAG_OCTET_STRING,
                          identifier);
}

/// Equal over the length of the candidate's identifier.
bool starts_with(Bytes wanted, Bytes candidate) noexcept {
    return candidate.size() <= wanted.size() &&
           std::equal(candidate.begin(), candidate.end(), wanted.begin());
}

bool same_octets(Bytes a, Bytes b) noexcept {
    return a.size() == b.size() && starts_with(a, b);
}

/// The directory name that comes first in authorityCertIssuer; null when something else does.
const X509_NAME *issuer_name(const AUTHORITY_KEYID &wanted) noexcept {
    const auto *first = static_cast<const GENERAL_NAME *>(get_STACK_value(wanted.authorityCertIssuer, 0));
    const bool is_name = first != nullptr && first->choice == TLX_GENERAL_NAME_DIRECTORY_NAME;
    return is_name ? first->value.directoryName : nullptr;
}

bool fits_subject_key(const AUTHORITY_KEYID &wanted, const X509_CERT *candidate) noexcept {
    Bytes identifier;
    return wanted.keyIdentifier != nullptr && subject_key(candidate, identifier) &&
           starts_with(octets_of(wanted.keyIdentifier), identifier);
}

bool fits_serial(const AUTHORITY_KEYID &wanted, const X509_CERT *candidate) noexcept {
    const BIGINT *serial = get_X509_serial(candidate);
    return wanted.authorityCertSerialNumber != nullptr && serial != nullptr &&
           cmp_BIGINT(wanted.authorityCertSerialNumber, serial) == 0;
}

bool fits_subject(const AUTHORITY_KEYID &wanted, const X509_CERT *candidate) noexcept {
    const X509_NAME *name = issuer_name(wanted);
    return name != nullptr && cmp_X509_NAME(name, get_X509_subject(candidate)) == 0;
}

/// Hashes of a number and of a name by what they encode to. False when memory runs out or they cannot be
/// encoded.
[[nodiscard]] bool hash_serial(const BIGINT *serial, u64 &hash) noexcept {
    Encoder encoder;
    encoder.integer(serial);
    hash = hash_octets(kBySerial, encoder.bytes());
    return encoder.ok();
}

[[nodiscard]] bool hash_name(const X509_NAME *name, u64 &hash) noexcept {
    Encoder encoder;
    Name::encode(encoder, name);
    hash = hash_octets(kBySubject, encoder.bytes());
    return encoder.ok();
}

/// The lower of two places, of which either may be none.
constexpr u32 earlier(u32 a, u32 b) noexcept {
    return a == kNone ? b : b == kNone ? a : std::min(a, b);
}

}  // namespace

const X509_CERT *IssuerSearch::at(u32 place) const noexcept {
    return static_cast<const X509_CERT *>(get_STACK_value(pool_, place - 1));
}

const X509_CERT *IssuerSearch::find(const AUTHORITY_KEYID &wanted) noexcept {
    const bool scans = get_STACK_count(pool_) <= kScannedAtMost;
    if (!scans && !slots_ && !build_index()) {
        failed_ = true;
        return nullptr;
    }
    const u32 place = scans ? scan(wanted) : look_up(wanted);
    return place == kNone ? nullptr : at(place);
}

u32 IssuerSearch::scan(const AUTHORITY_KEYID &wanted) const noexcept {
    for (u32 place = 1; place <= get_STACK_count(pool_); ++place) {
        const X509_CERT *candidate = at(place);
        if (fits_subject_key(wanted, candidate) || fits_serial(wanted, candidate) ||
            fits_subject(wanted, candidate)) {
            return place;
        }
    }
    return kNone;
}

u32 IssuerSearch::look_up(const AUTHORITY_KEYID &wanted) const noexcept {
    u32 place = kNone;
    if (wanted.keyIdentifier != nullptr) {
        // A candidate may have any leading part of the identifier as its own.
        const Bytes identifier = octets_of(wanted.keyIdentifier);
        const auto fits = [&](const X509_CERT *candidate) { return fits_subject_key(wanted, candidate); };
        u64 hash = kBySubjectKey;
        place = first_with(hash, fits);
        for (const u8 octet : identifier) {
            hash = hash_octet(hash, octet);
            place = earlier(place, first_with(hash, fits));
        }
    }
    u64 hash = 0;
    if (wanted.authorityCertSerialNumber != nullptr && hash_serial(wanted.authorityCertSerialNumber, hash)) {
        const auto fits = [&](const X509_CERT *candidate) { return fits_serial(wanted, candidate); };
        place = earlier(place, first_with(hash, fits));
    }
    if (issuer_name(wanted) != nullptr && hash_name(issuer_name(wanted), hash)) {
        const auto fits = [&](const X509_CERT *candidate) { return fits_subject(wanted, candidate); };
        place = earlier(place, first_with(hash, fits));
    }
    return place;
}

template <typename Fits>
u32 IssuerSearch::first_with(u64 hash, Fits fits) const noexcept {
    for (std::size_t i = hash & mask_; slots_.get()[i].place != kNone; i = (i + 1) & mask_) {
        const Slot &slot = slots_.get()[i];
        if (slot.hash == hash && fits(at(slot.place))) return slot.place;
    }
    return kNone;
}

/// Keeps the first of several certificates that are the same in this respect.
template <typename Same>
void IssuerSearch::insert(u64 hash, u32 place, Same same) noexcept {
    std::size_t i = hash & mask_;
    for (; slots_.get()[i].place != kNone; i = (i + 1) & mask_) {
        const Slot &slot = slots_.get()[i];
        if (slot.hash == hash && same(at(slot.place))) return;
    }
    slots_.get()[i] = {hash, place};
}

bool IssuerSearch::build_index() noexcept {
    const u32 count = get_STACK_count(pool_);
    const std::size_t size = std::bit_ceil(std::size_t{count} * 6);
    slots_.reset(static_cast<Slot *>(TLX_ALLOCATE_ZEROED(size, sizeof(Slot))));
    if (!slots_) return false;
    mask_ = size - 1;
    for (u32 place = 1; place <= count; ++place) {
        const X509_CERT *cert = at(place);
        u64 hash = 0;
        Bytes identifier;
        if (subject_key(cert, identifier)) {
            insert(hash_octets(kBySubjectKey, identifier), place, [&](const X509_CERT *other) {
                Bytes others;
                return subject_key(other, others) && same_octets(others, identifier);
            });
        }
        if (const BIGINT *serial = get_X509_serial(cert); serial != nullptr && hash_serial(serial, hash)) {
            insert(hash, place, [&](const X509_CERT *other) {
                return get_X509_serial(other) != nullptr && cmp_BIGINT(get_X509_serial(other), serial) == 0;
            });
        }
        if (const X509_NAME *name = get_X509_subject(cert); name != nullptr && hash_name(name, hash)) {
            insert(hash, place,
                   [&](const X509_CERT *other) { return cmp_X509_NAME(get_X509_subject(other), name) == 0; });
        }
    }
    return true;
}

}  // namespace tlx
