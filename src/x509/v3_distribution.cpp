// Where to find revocation lists and services.
#include <tlxpki/x509v3_distribution.h>

#include "x509/certificate_records.hpp"
#include "x509/extension_records.hpp"

using namespace tlx;

namespace {

// RelativeDistinguishedName ::= SET SIZE (1..MAX) OF AttributeTypeAndValue
struct TypeAndValue : NameEntry {
    static constexpr u8 tag = kSequence;
    static u32 decode(const Element &element, type **out) noexcept {
        return read_record(type_and_value(exactly(2)), element, out) == 0 ? 0 : kFieldFailed;
    }
    static void encode(Encoder &out, const type *value, u8 as) noexcept {
        if (value == nullptr) return out.fail();
        type_and_value(exactly(2)).write(out, *value, as);
    }
};
using RelativeName = List<TypeAndValue, kSet, 1>;

// DistributionPointName ::= CHOICE {
//     fullName [0] GeneralNames, nameRelativeToCRLIssuer [1] RelativeDistinguishedName }
constexpr auto kDistPointName =
    choice(&DIST_POINT_NAME::choice, &DIST_POINT_NAME::value, tagged<GeneralNames>(TLX_DIST_POINT_FULL_NAME),
           tagged<RelativeName>(TLX_DIST_POINT_RELATIVE_NAME));

// DistributionPoint ::= SEQUENCE {
//     distributionPoint [0] DistributionPointName OPTIONAL, reasons [1] ReasonFlags OPTIONAL,
//     cRLIssuer [2] GeneralNames OPTIONAL }
// The name is a CHOICE, so its tag is explicit.
constexpr auto kDistPoint = record<DIST_POINT>(
    between(0, 3), explicitly<Choice<DIST_POINT_NAME>>(0, &DIST_POINT::distributionPoint),
    implicit<NamedBits>(1, &DIST_POINT::reasons), implicit<GeneralNames>(2, &DIST_POINT::cRLIssuer));

// CRLDistributionPoints ::= SEQUENCE SIZE (1..MAX) OF DistributionPoint
using CrlDistPoints = OneOrMore<Nested<DIST_POINT>>;

// IssuingDistributionPoint ::= SEQUENCE {
//     distributionPoint [0] DistributionPointName OPTIONAL,
//     onlyContainsUserCerts [1] BOOLEAN DEFAULT FALSE, onlyContainsCACerts [2] BOOLEAN DEFAULT FALSE,
//     onlySomeReasons [3] ReasonFlags OPTIONAL, indirectCRL [4] BOOLEAN DEFAULT FALSE,
//     onlyContainsAttributeCerts [5] BOOLEAN DEFAULT FALSE }
constexpr auto kIssuingDistPoint = record<issuing_DIST_POINT>(
    between(0, 6), explicitly<Choice<DIST_POINT_NAME>>(0, &issuing_DIST_POINT::distributionPoint),
    flag(1, &issuing_DIST_POINT::onlyContainsUserCerts), flag(2, &issuing_DIST_POINT::onlyContainsCACerts),
    implicit<NamedBits>(3, &issuing_DIST_POINT::onlySomeReasons), flag(4, &issuing_DIST_POINT::indirectCRL),
    flag(5, &issuing_DIST_POINT::onlyContainsAttributeCerts));

// AccessDescription ::= SEQUENCE { accessMethod OBJECT IDENTIFIER, accessLocation GeneralName }
constexpr auto kAccessDescription =
    record<ACCESS_DESCRIPTION>(exactly(2), field<Oid>(&ACCESS_DESCRIPTION::accessMethod),
                               field<Choice<GENERAL_NAME>>(&ACCESS_DESCRIPTION::accessLocation));

// AuthorityInfoAccessSyntax ::= SEQUENCE SIZE (1..MAX) OF AccessDescription
using AuthorityInfoAccess = OneOrMore<Nested<ACCESS_DESCRIPTION>>;

}  // namespace

TLX_DEFINE_RECORD(DIST_POINT_NAME, kDistPointName)
TLX_DEFINE_RECORD(DIST_POINT, kDistPoint)
TLX_DEFINE_LIST(CRL_DIST_POINTS, DIST_POINT, CrlDistPoints)
TLX_DEFINE_RECORD(issuing_DIST_POINT, kIssuingDistPoint)
TLX_DEFINE_RECORD(ACCESS_DESCRIPTION, kAccessDescription)
TLX_DEFINE_LIST(AUTHORITY_INFO_ACCESS, ACCESS_DESCRIPTION, AuthorityInfoAccess)

DIST_POINT *create_DIST_POINT_uri(const char *uri) {
    const Owned<GENERAL_NAME> name(create_GENERAL_NAME(TLX_GENERAL_NAME_URI, uri, -1));
    Owned<DIST_POINT> point(new_DIST_POINT());
    if (!name || !point) return nullptr;
    point->distributionPoint = new_DIST_POINT_NAME();
    if (point->distributionPoint == nullptr) return nullptr;
    point->distributionPoint->value.fullName = new_GENERAL_NAMES();
    if (add_GENERAL_NAMES_child(point->distributionPoint->value.fullName, name.get(), -1) != 0) {
        return nullptr;
    }
    return point.release();
}
