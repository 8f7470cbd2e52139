// Searching revocation lists.
#include <tlxpki/x509.h>

#include "der/memory.hpp"
#include "x509/crl_extension.hpp"
#include "x509/crl_index.hpp"
#include "x509/crl_records.hpp"

using namespace tlx;

namespace {

/// The octets of a number, without leading zeros.
class NumberOctets {
  public:
    explicit NumberOctets(const BIGINT *number) noexcept {
        const u32 size = get_BIGINT_der_length(number);
        if (size > sizeof few_) many_.reset(static_cast<u8 *>(TLX_ALLOCATE(size)));
        u8 *room = size > sizeof few_ ? many_.get() : few_;
        ok_ = room != nullptr && BIGINT_to_binary(number, room, size) == 0;
        if (ok_) octets_ = magnitude_of({room, size});
    }
    [[nodiscard]] bool ok() const noexcept { return ok_; }
    [[nodiscard]] Bytes octets() const noexcept { return octets_; }

  private:
    u8 few_[32];
    OwnedOctets<u8> many_;
    Bytes octets_;
    bool ok_;
};

/// A status of find_X509_CRL_revoked.
u32 find_entry(const X509_CRL &crl, const X509_NAME *issuer, const BIGINT *serial, Element &entry) noexcept {
    if (crl.entries == nullptr) return 0x480B0047;
    const bool is_own = issuer == nullptr || cmp_X509_NAME(issuer, crl.issuer) == 0;
    if (!is_own && !crl.entries->names_issuers()) return 0x480B0047;
    const CrlIndex *index = nullptr;
    if (const u32 status = crl.entries->index(crl.issuer, index); status != 0) return status;
    const NumberOctets number(serial);
    CrlIndex::Issuer wanted = CrlIndex::kOwnIssuer;
    if (!number.ok() || (!is_own && !index->issuer_of(issuer, wanted))) return 0x480B003C;
    return index->find(wanted, number.octets(), entry) ? 0 : 0x480B0047;
}

}  // namespace

uint32_t find_X509_CRL_revoked(const X509_CRL *crl, const X509_NAME *issuer, const BIGINT *serial,
                               X509_REVOKED **out) {
    if (crl == nullptr || serial == nullptr) return 0x480B0049;
    Element entry;
    const u32 status = find_entry(*crl, issuer, serial, entry);
    return status == 0 && out != nullptr ? Codec<X509_REVOKED>::decode(entry, out) : status;
}

uint32_t find_X509_CRL_revoked_by_X509_CERT(const X509_CRL *crl, const X509_CRL *delta, const X509_CERT *cert,
                                            X509_REVOKED **out) {
    const X509_NAME *issuer = get_X509_issuer(cert);
    const BIGINT *serial = get_X509_serial(cert);
    if (crl == nullptr || issuer == nullptr || serial == nullptr) return 0x480C0049;
    for (const X509_CRL *list : {delta, crl}) {
        if (list == nullptr) continue;
        X509_REVOKED *made = nullptr;
        const u32 status = find_X509_CRL_revoked(list, issuer, serial, &made);
        Owned<X509_REVOKED> revoked(made);
        if (status == 0x480B0047) continue;
        if (status != 0) return status;
        if (is_delta(*list) && get_X509_REVOKED_reason(made) == TLX_CRL_REASON_REMOVE_FROM_CRL) {
            return 0x480C0047;
        }
        if (out != nullptr) deliver(std::move(revoked), out);
        return 0;
    }
    const u32 status = check_X509_CRL_scope(crl, cert);
    return status == 0 ? 0x480C0047 : status;
}
