// The entries of a revocation list, found by issuer and serial number.
#pragma once

#include "der/place_index.hpp"
#include "der/sip_hash.hpp"
#include "verify/array.hpp"
#include "verify/crl_view.hpp"

namespace tlx {

class RevokedEntries {
  public:
    /// Reads all entries of a list, once: kNone, kBadList or kNoMemory. Says so in the view when an entry has
    /// a critical extension that is not known.
    [[nodiscard]] Rule read(CrlView &list, const SipHash::Key &key) noexcept;

    /// Finds the entry of a certificate. Serial numbers are compared as the octets they are.
    [[nodiscard]] bool find(Bytes issuer, Bytes serial, RevokedView &entry) const noexcept;

  private:
    /// Where the entries of an issuer begin.
    struct Run {
        u32 place;
        Bytes issuer;
        u64 hash;
    };

    [[nodiscard]] u64 hash_of(u64 issuer_hash, Bytes serial) const noexcept;
    [[nodiscard]] const Run &run_at(u32 place) const noexcept;
    /// Reads the entry at a place, and says whether it is the one of a certificate.
    [[nodiscard]] bool is_entry_of(u32 place, Bytes issuer, Bytes serial, RevokedView &entry) const noexcept;

    SipHash::Key key_ = {};
    Bytes octets_;
    PlaceIndex index_;
    Array<Run> runs_;  ///< the first is that of the list's own issuer
};

}  // namespace tlx
