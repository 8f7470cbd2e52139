// A revocation list as views of the octets that were received.
#pragma once

#include "verify/certificate_view.hpp"
#include "verify/distribution_point.hpp"

namespace tlx {

struct CrlView : SignedView {
    Bytes issuer;  ///< the contents of a Name
    std::int64_t this_update = 0;
    std::int64_t next_update = 0;
    bool has_next_update = false;
    Bytes entries;  ///< contents of revokedCertificates

    bool has_number = false;
    Bytes number;  ///< contents without leading zeros
    bool is_delta = false;
    Bytes base_number;
    Bytes authority_key;
    Bytes point_octets;  ///< the value of the issuing distribution point; empty when there is none
    IssuingPoint point;
    bool has_unknown_critical = false;  ///< also of an entry, once those are read
};

/// Reads all of a list but its entries: kNone, kBrokenDer, kTrailingOctets or kBadList.
[[nodiscard]] Rule read_crl(Bytes octets, CrlView &view) noexcept;

/// Whether a number, without leading zeros, is at most another.
[[nodiscard]] bool is_at_most(Bytes number, Bytes other) noexcept;

struct RevokedView {
    Bytes serial;  ///< contents of the INTEGER as they are
    std::int64_t time = 0;
    u32 reason = 0;  ///< CRLReason
    Bytes issuer;    ///< the contents of a Name, where the entry names the certificate's issuer
    bool has_unknown_critical = false;
};

/// Takes the next entry. False for what is none.
[[nodiscard]] bool next_revoked(StrictCursor &entries, RevokedView &entry) noexcept;

/// CRLReason removeFromCRL
constexpr u32 kRemoveFromCrl = 8;

/// Reads the value of a reason code: CRLReason ::= ENUMERATED
[[nodiscard]] bool read_reason(StrictCursor &in, u32 &reason) noexcept;

}  // namespace tlx
