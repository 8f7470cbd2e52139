// Distribution points of certificates and of revocation lists (RFC 5280, sections 4.2.1.13 and 5.2.5).
#pragma once

#include "verify/general_names.hpp"
#include "verify/rules.hpp"

namespace tlx {

/// Of one list of names, or of distribution points, no more are read.
constexpr u32 kMostPoints = 64;

/// Reasons as bits of ReasonFlags, without the unused first one.
constexpr u32 kAllReasons = 0x1FE;

/// The name of a point. A relative one continues the name of the issuer of the list.
struct PointName {
    bool present = false;
    bool is_relative = false;
    Bytes contents;  ///< of GeneralNames, or of a RelativeDistinguishedName
};

/// A point of a certificate.
struct PointView {
    PointName name;
    u32 reasons = kAllReasons;
    Bytes issuers;  ///< contents of GeneralNames; empty when the certificate's issuer makes the list
};

/// What a list says of itself.
struct IssuingPoint {
    PointName name;
    bool only_users = false;
    bool only_cas = false;
    bool only_attributes = false;
    bool is_indirect = false;
    u32 reasons = kAllReasons;
};

/// Takes the next point of CRLDistributionPoints. False for what is none.
[[nodiscard]] bool next_point(StrictCursor &points, PointView &point) noexcept;
/// Reads the value of an issuing distribution point. False for what is none, and for an empty one.
[[nodiscard]] bool read_issuing_point(Bytes value, IssuingPoint &point) noexcept;

/// Calls a function with the contents of each Name among the first general names.
template <typename Visit>
void each_directory_name(Bytes general_names, Visit visit) noexcept {
    constexpr std::size_t kIpv4Length = 4;
    StrictCursor in(general_names);
    GeneralNameView name;
    for (u32 i = 0; i < kMostPoints && !in.at_end() && next_general_name(in, kIpv4Length, name); ++i) {
        if (name.form == NameForm::directory) visit(name.value);
    }
}

/// Whether the point of a certificate and the name of a list's point have a name in common: kNone,
/// kNoStatus, or kNoMemory. A point without a name has those of its issuers, or that of the certificate's
/// issuer. Relative names continue the name of the list's issuer.
[[nodiscard]] Rule match_points(const PointView &point, Bytes certificate_issuer, const PointName &list,
                                Bytes list_issuer) noexcept;

}  // namespace tlx
