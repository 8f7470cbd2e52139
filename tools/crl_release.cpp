// Certificates that are no longer on hold.
#include <map>
#include <set>

#include "failure.hpp"
#include "revocation.hpp"

namespace tool {

namespace {

using Serials = std::map<std::string, Serial>;

Serials serials_of(const std::vector<std::string> &texts) {
    Serials serials;
    for (const std::string &text : texts) {
        Serial serial = serial_of(text);
        std::string digits = number_hex(serial.get());
        serials.emplace(std::move(digits), std::move(serial));
    }
    return serials;
}

/// Adds the entries of a list but those of the serial numbers, which have to be on hold. Returns these.
std::set<std::string> copy_entries(X509_CRL *to, const X509_CRL *from, const Serials &left_out) {
    constexpr uint32_t kNoMore = 0x480F0047;
    std::set<std::string> held;
    const auto revoked = made<Revoked>(new_X509_REVOKED());
    X509_REVOKED *entry = revoked.get();
    uint32_t at = 0;
    uint32_t status = 0;
    while ((status = next_X509_CRL_revoked(from, &at, &entry)) == 0) {
        const std::string serial = number_hex(entry->serialNumber);
        if (names_certificate_issuer(entry))
            throw Failure("--release: the list has entries of several issuers");
        if (!left_out.contains(serial)) {
            must(add_X509_CRL_revoked(to, entry));
        } else if (get_X509_REVOKED_reason(entry) != TLX_CRL_REASON_CERTIFICATE_HOLD) {
            throw Failure("--release: " + serial + " is not on hold");
        } else {
            held.insert(serial);
        }
    }
    must(status == kNoMore ? 0 : status);
    return held;
}

}  // namespace

Crl release(const X509_CRL *crl, const std::vector<std::string> &serials, bool is_delta) {
    const Serials released = serials_of(serials);
    const auto now = made<Time>(getCurrentGMTime());
    auto list = made<Crl>(new_X509_CRL());
    must(set_X509_CRL_extensions(list.get(), get_X509_CRL_extensions(crl)));
    const std::set<std::string> held = copy_entries(list.get(), crl, released);
    for (const auto &[digits, serial] : released) {
        if (!is_delta && !held.contains(digits))
            throw Failure("--release: " + digits + " is not on the list");
        if (!is_delta) continue;
        const auto entry =
            made<Revoked>(create_X509_REVOKED(serial.get(), now.get(), TLX_CRL_REASON_REMOVE_FROM_CRL));
        must(add_X509_CRL_revoked(list.get(), entry.get()));
    }
    return list;
}

}  // namespace tool
