#include "trust/issuer_search.hpp"

#include <algorithm>

#include "der/hash_key.hpp"

namespace tlx {
namespace {

// Indexing costs as much as some ten scans; a path of the usual length takes no more than five.
constexpr u32 kScannedAtMost = 256;

/// The directory name at the front of authorityCertIssuer; null when another kind of name is there.
const X509_NAME *issuer_name(const AUTHORITY_KEYID &wanted) noexcept {
    const auto *first = static_cast<const GENERAL_NAME *>(get_STACK_value(wanted.authorityCertIssuer, 0));
    const bool is_name = first != nullptr && first->choice == TLX_GENERAL_NAME_DIRECTORY_NAME;
    return is_name ? first->value.directoryName : nullptr;
}

/// Equal over the length of the candidate's identifier.
bool fits_key(const OCTET_STRING *wanted, const X509_CERT *candidate) noexcept {
    Bytes identifier;
    if (wanted == nullptr || !SubjectKeyProperty::get(candidate, identifier)) return false;
    const Bytes octets = octets_of(wanted);
    return identifier.size() <= octets.size() &&
           std::equal(identifier.begin(), identifier.end(), octets.begin());
}

template <typename Property>
bool fits(typename Property::Value wanted, const X509_CERT *candidate) noexcept {
    typename Property::Value own{};
    return wanted != nullptr && Property::get(candidate, own) && Property::equal(own, wanted);
}

/// The lower of two places, of which either may be none.
constexpr Place earlier(Place a, Place b) noexcept {
    return a == kNoPlace ? b : b == kNoPlace ? a : std::min(a, b);
}

}  // namespace

bool SubjectKeyProperty::get(const X509_CERT *cert, Value &value) noexcept {
    return read_extension(find_extension(cert, extension_id::kSubjectKeyIdentifier), TLX_TAG_OCTET_STRING,
                          value);
}
bool SubjectKeyProperty::equal(Value a, Value b) noexcept {
    return std::ranges::equal(a, b);
}
void SubjectKeyProperty::encode(Encoder &out, Value value) noexcept {
    out.raw(value);
}

bool SerialProperty::get(const X509_CERT *cert, Value &value) noexcept {
    value = get_X509_serial(cert);
    return value != nullptr;
}
bool SerialProperty::equal(Value a, Value b) noexcept {
    return cmp_BIGINT(a, b) == 0;
}
void SerialProperty::encode(Encoder &out, Value value) noexcept {
    out.integer(value);
}

bool SubjectProperty::get(const X509_CERT *cert, Value &value) noexcept {
    value = get_X509_subject(cert);
    return value != nullptr;
}
bool SubjectProperty::equal(Value a, Value b) noexcept {
    return cmp_X509_NAME(a, b) == 0;
}
void SubjectProperty::encode(Encoder &out, Value value) noexcept {
    Name::encode(out, value);
}

const X509_CERT *IssuerSearch::find(const AUTHORITY_KEYID &wanted) noexcept {
    const Place place = get_STACK_count(pool_) <= kScannedAtMost ? scan(wanted) : look_up(wanted);
    return failed_ || place == kNoPlace ? nullptr : certificate_at(pool_, place);
}

Place IssuerSearch::scan(const AUTHORITY_KEYID &wanted) const noexcept {
    for (Place place = 1; place <= get_STACK_count(pool_); ++place) {
        const X509_CERT *candidate = certificate_at(pool_, place);
        if (fits_key(wanted.keyIdentifier, candidate) ||
            fits<SerialProperty>(wanted.authorityCertSerialNumber, candidate) ||
            fits<SubjectProperty>(issuer_name(wanted), candidate)) {
            return place;
        }
    }
    return kNoPlace;
}

Place IssuerSearch::look_up(const AUTHORITY_KEYID &wanted) noexcept {
    Place place = kNoPlace;
    if (wanted.keyIdentifier != nullptr) place = look_up_key(octets_of(wanted.keyIdentifier));
    if (wanted.authorityCertSerialNumber != nullptr) {
        place = earlier(place, look_up(by_serial_, wanted.authorityCertSerialNumber));
    }
    if (issuer_name(wanted) != nullptr) place = earlier(place, look_up(by_subject_, issuer_name(wanted)));
    return place;
}

/// A candidate's own identifier may be any leading part of the wanted one.
Place IssuerSearch::look_up_key(Bytes wanted) noexcept {
    if (!is_ready(by_key_)) return kNoPlace;
    SipHash hash(hash_key_);
    Place place = by_key_.find(hash.value(), {});
    for (std::size_t i = 0; i < wanted.size(); ++i) {
        hash.add(wanted[i]);
        place = earlier(place, by_key_.find(hash.value(), wanted.first(i + 1)));
    }
    return place;
}

template <typename Property>
Place IssuerSearch::look_up(PoolIndex<Property> &index, typename Property::Value wanted) noexcept {
    if (!is_ready(index)) return kNoPlace;
    Encoder encoder;
    Property::encode(encoder, wanted);
    failed_ = failed_ || encoder.out_of_memory();
    if (!encoder.ok()) return kNoPlace;
    SipHash hash(hash_key_);
    hash.add(encoder.bytes());
    return index.find(hash.value(), wanted);
}

/// Indexes the pool by keyed hashes.
template <typename Property>
bool IssuerSearch::is_ready(PoolIndex<Property> &index) noexcept {
    if (!has_hash_key_) has_hash_key_ = take_hash_key(hash_key_);
    failed_ = failed_ || !has_hash_key_ || !index.build(pool_, hash_key_);
    return !failed_;
}

}  // namespace tlx
