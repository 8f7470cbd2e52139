// An index of the entries of a revocation list by issuer and serial number.
#pragma once

#include "der/place_index.hpp"
#include "der/sip_hash.hpp"
#include "x509/crl_entries.hpp"

namespace tlx {

class CrlIndex {
  public:
    /// An empty one; null when memory runs out.
    static CrlIndex *make() noexcept;
    static void free(const CrlIndex *index) noexcept;
    /// Indexes a list with this issuer. A status of find_X509_CRL_revoked.
    [[nodiscard]] u32 build(const TLX_CRL_ENTRIES &entries, const X509_NAME *issuer) noexcept;

    /// A keyed hash stands for an issuer: without the key, nobody can make two names with the same.
    using Issuer = u64;
    static constexpr Issuer kOwnIssuer = 0;
    /// That of a name which is not the list's own. False when the name cannot be encoded.
    [[nodiscard]] bool issuer_of(const X509_NAME *name, Issuer &issuer) const noexcept;

    /// The first entry of a certificate; false when there is none. `serial` has no leading zeros.
    [[nodiscard]] bool find(Issuer issuer, Bytes serial, Element &entry) const noexcept;

  private:
    /// Where the entries of an issuer begin.
    struct Run {
        u32 place;
        Issuer issuer;
    };

    [[nodiscard]] u32 begin_run(u32 place, Bytes names, const X509_NAME *own) noexcept;
    [[nodiscard]] Issuer issuer_at(u32 place) const noexcept;
    [[nodiscard]] u64 hash_of(Issuer issuer, Bytes serial) const noexcept;
    /// Reads the entry at a place, and says whether it is the one of a certificate.
    [[nodiscard]] bool is_entry_of(u32 place, Issuer issuer, Bytes serial, Element &entry) const noexcept;

    SipHash::Key key_ = {};
    Bytes octets_;
    PlaceIndex index_;
    OwnedOctets<Run> runs_;
    u32 run_count_ = 0;
    u32 run_capacity_ = 0;
};

}  // namespace tlx
