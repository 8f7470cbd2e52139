#include "verify/distribution_point.hpp"

#include "der/encoder.hpp"
#include "verify/name_match.hpp"

namespace tlx {
namespace {

constexpr std::size_t kIpv4Length = 4;

// DistributionPointName ::= CHOICE {
//   fullName [0] IMPLICIT GeneralNames, nameRelativeToCRLIssuer [1] IMPLICIT RelativeDistinguishedName }
bool read_point_name(StrictCursor &in, PointName &name) noexcept {
    StrictCursor choice;
    Element element;
    if (!in.is_next(id::context_constructed(0))) return true;
    if (!in.enter(id::context_constructed(0), choice) || !choice.any(element) || !choice.at_end()) {
        return false;
    }
    name = {true, element.tag == id::context_constructed(1), element.contents};
    return name.is_relative || element.tag == id::context_constructed(0);
}

// ReasonFlags ::= BIT STRING { unused(0), keyCompromise(1), cACompromise(2), affiliationChanged(3),
//   superseded(4), cessationOfOperation(5), certificateHold(6), privilegeWithdrawn(7), aACompromise(8) }
bool read_reasons(StrictCursor &in, u8 number, u32 &reasons) noexcept {
    Bytes bits;
    if (!in.is_next(id::context(number))) return true;
    if (!in.next(id::context(number), bits) || bits.empty() || bits[0] > 7) return false;
    reasons = 0;
    for (u32 i = 0; i < 8 * (bits.size() - 1) && i < 9; ++i) {
        if ((bits[1 + i / 8] & 0x80U >> i % 8) != 0) reasons |= 1U << i;
    }
    reasons &= kAllReasons;
    return true;
}

// BOOLEAN DEFAULT FALSE
bool read_flag(StrictCursor &in, u8 number, bool &flag) noexcept {
    Bytes octet;
    if (!in.is_next(id::context(number))) return true;
    if (!in.next(id::context(number), octet) || octet.size() != 1) return false;
    flag = octet[0] != 0;
    return true;
}

bool are_same_names(const GeneralNameView &a, const GeneralNameView &b) noexcept {
    if (a.form != b.form) return false;
    return a.form == NameForm::directory ? are_equal_names(a.value, b.value) : same(a.value, b.value);
}

/// Whether a condition holds for one of the first general names.
template <typename Condition>
bool any_name(Bytes general_names, Condition condition) noexcept {
    StrictCursor in(general_names);
    GeneralNameView name;
    for (u32 i = 0; i < kMostPoints && !in.at_end() && next_general_name(in, kIpv4Length, name); ++i) {
        if (condition(name)) return true;
    }
    return false;
}

/// Writes a directoryName: a Name, continued by a relative name unless that is empty.
Bytes write_directory_name(Bytes name, Bytes relative_name, Encoder &room) noexcept {
    {
        const auto choice = room.nest(id::context_constructed(4));
        const auto sequence = room.sequence();
        room.raw(name);
        if (!relative_name.empty()) room.primitive(id::kSet, relative_name);
    }
    return room.ok() ? room.bytes() : Bytes();
}

/// The general names that the name of a point stands for.
Bytes names_of(const PointName &name, Bytes issuer, Encoder &room) noexcept {
    return name.is_relative ? write_directory_name(issuer, name.contents, room) : name.contents;
}

}  // namespace

// DistributionPoint ::= SEQUENCE {
//   distributionPoint [0] EXPLICIT DistributionPointName OPTIONAL, reasons [1] IMPLICIT ReasonFlags OPTIONAL,
//   cRLIssuer [2] IMPLICIT GeneralNames OPTIONAL }
bool next_point(StrictCursor &points, PointView &point) noexcept {
    point = {};
    StrictCursor in;
    if (!points.enter(id::kSequence, in) || !read_point_name(in, point.name) ||
        !read_reasons(in, 1, point.reasons)) {
        return false;
    }
    const u8 issuers = id::context_constructed(2);
    return (!in.is_next(issuers) || in.next(issuers, point.issuers)) && in.at_end();
}

// IssuingDistributionPoint ::= SEQUENCE {
//   distributionPoint [0] EXPLICIT DistributionPointName OPTIONAL, onlyContainsUserCerts [1] IMPLICIT BOOLEAN
//   DEFAULT FALSE, onlyContainsCACerts [2] IMPLICIT BOOLEAN DEFAULT FALSE, onlySomeReasons [3] IMPLICIT
//   ReasonFlags OPTIONAL, indirectCRL [4] IMPLICIT BOOLEAN DEFAULT FALSE, onlyContainsAttributeCerts [5]
//   IMPLICIT BOOLEAN DEFAULT FALSE }
bool read_issuing_point(Bytes value, IssuingPoint &point) noexcept {
    StrictCursor in;
    return open_whole(value, id::kSequence, in) && !in.at_end() && read_point_name(in, point.name) &&
           read_flag(in, 1, point.only_users) && read_flag(in, 2, point.only_cas) &&
           read_reasons(in, 3, point.reasons) && read_flag(in, 4, point.is_indirect) &&
           read_flag(in, 5, point.only_attributes) && in.at_end();
}

Rule match_points(const PointView &point, Bytes certificate_issuer, const PointName &list,
                  Bytes list_issuer) noexcept {
    Encoder room;
    Encoder list_room;
    Bytes names = point.issuers;
    if (point.name.present) {
        names = names_of(point.name, list_issuer, room);
    } else if (names.empty()) {
        names = write_directory_name(certificate_issuer, {}, room);
    }
    const Bytes list_names = names_of(list, list_issuer, list_room);
    if (!room.ok() || !list_room.ok()) return Rule::kNoMemory;
    const bool shared = any_name(names, [list_names](const GeneralNameView &name) noexcept {
        return any_name(list_names, [&name](const GeneralNameView &other) noexcept {
            return are_same_names(name, other);
        });
    });
    return shared ? Rule::kNone : Rule::kNoStatus;
}

}  // namespace tlx
