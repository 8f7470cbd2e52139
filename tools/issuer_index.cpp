#include "issuer_index.hpp"

#include <algorithm>

#include "text.hpp"

namespace tool {

namespace {

using AuthorityKeyId = Owned<AUTHORITY_KEYID, free_AUTHORITY_KEYID>;
using SubjectKeyId = Owned<SUBJECT_KEYID, free_SUBJECT_KEYID>;

std::string text_in(const OCTET_STRING *string) {
    const Octets octets = octets_of(string);
    return {octets.begin(), octets.end()};
}

std::string key_of(const BIGINT *number) {
    return made<Text>(BIGINT_to_hex(number)).get();
}

AuthorityKeyId authority_key_of(const X509_CERT *cert) {
    AUTHORITY_KEYID *record = nullptr;
    (void)TLX_DECODE_EXTENSION(AUTHORITY_KEYID, get_X509_extensions(cert), TLX_OID_AUTHORITY_KEY_IDENTIFIER,
                               &record);
    return AuthorityKeyId(record);
}

SubjectKeyId subject_key_of(const X509_CERT *cert) {
    SUBJECT_KEYID *record = nullptr;
    (void)TLX_DECODE_EXTENSION(SUBJECT_KEYID, get_X509_extensions(cert), TLX_OID_SUBJECT_KEY_IDENTIFIER,
                               &record);
    return SubjectKeyId(record);
}

std::size_t place_in(const std::unordered_map<std::string, std::size_t> &places, const std::string &key) {
    const auto found = places.find(key);
    return found == places.end() ? kNoPlace : found->second;
}

}  // namespace

void IssuerIndex::build(const std::vector<X509_CERT *> &pool) {
    for (std::size_t place = 0; place < pool.size(); ++place) {
        const X509_CERT *cert = pool[place];
        if (const SubjectKeyId key = subject_key_of(cert)) {
            by_key_.emplace(text_in(key.get()), place);
            key_lengths_.insert(octets_of(key.get()).size());
        }
        if (const BIGINT *serial = get_X509_serial(cert)) by_serial_.emplace(key_of(serial), place);
        by_subject_.emplace(key_of(get_X509_subject(cert)), place);
    }
}

std::size_t IssuerIndex::issuer_of(const X509_CERT *cert) const {
    const AuthorityKeyId wanted = authority_key_of(cert);
    if (wanted == nullptr) return kNoPlace;
    std::size_t place = kNoPlace;  // the greatest of all
    if (wanted->keyIdentifier != nullptr) place = by_key_prefix(wanted->keyIdentifier);
    if (wanted->authorityCertSerialNumber != nullptr) {
        place = std::min(place, place_in(by_serial_, key_of(wanted->authorityCertSerialNumber)));
    }
    const GENERAL_NAME *first = get_GENERAL_NAMES_child(wanted->authorityCertIssuer, 0);
    if (first != nullptr && first->choice == TLX_GENERAL_NAME_DIRECTORY_NAME) {
        place = std::min(place, place_in(by_subject_, key_of(first->value.directoryName)));
    }
    return place;
}

/// A certificate's own identifier may be any leading part of the wanted one.
std::size_t IssuerIndex::by_key_prefix(const OCTET_STRING *wanted) const {
    const std::string text = text_in(wanted);
    std::size_t place = kNoPlace;
    for (const std::size_t length : key_lengths_) {
        if (length > text.size()) break;
        place = std::min(place, place_in(by_key_, text.substr(0, length)));
    }
    return place;
}

bool IssuerIndex::has_subject(const X509_NAME *name) const {
    return by_subject_.contains(key_of(name));
}

}  // namespace tool
