#include "verify/certificate_view.hpp"

#include "verify/extension_view.hpp"
#include "verify/name_match.hpp"
#include "verify/strict_time.hpp"

namespace tlx {
namespace {

// Version ::= INTEGER { v1(0), v2(1), v3(2) }
// DER omits the default, v1.
Rule read_version(StrictCursor &in, CertificateView &view) noexcept {
    view.version = 1;
    StrictCursor version;
    if (!in.is_next(id::context_constructed(0))) return Rule::kNone;
    Bytes number;
    u32 value = 0;
    if (!in.enter(id::context_constructed(0), version) || !version.next(id::kInteger, number) ||
        !version.at_end()) {
        return Rule::kBadMember;
    }
    if (!read_count(number, value) || value < 1 || value > 2) return Rule::kBadVersion;
    view.version = value + 1;
    return Rule::kNone;
}

// Validity ::= SEQUENCE { notBefore Time, notAfter Time }
Rule read_validity(StrictCursor &in, CertificateView &view) noexcept {
    StrictCursor validity;
    if (!in.enter(id::kSequence, validity)) return Rule::kBadMember;
    const bool read =
        read_time(validity, view.not_before) && read_time(validity, view.not_after) && validity.at_end();
    return read ? Rule::kNone : Rule::kBadTime;
}

Rule read_one_name(StrictCursor &in, Bytes &name) noexcept {
    if (!in.next(id::kSequence, name)) return Rule::kBadMember;
    return is_name(name) ? Rule::kNone : Rule::kBadName;
}

// UniqueIdentifier ::= BIT STRING
Rule read_unique_identifier(StrictCursor &in, u8 number, const CertificateView &view) noexcept {
    if (!in.is_next(id::context(number))) return Rule::kNone;
    Bytes bits;
    if (!in.next(id::context(number), bits) || bits.empty() || bits[0] > 7 ||
        (bits.size() == 1 && bits[0] != 0)) {
        return Rule::kBadUniqueIdentifier;
    }
    return view.version < 2 ? Rule::kVersionTooLow : Rule::kNone;
}

Rule read_extension_member(StrictCursor &in, u32 accepted, CertificateView &view) noexcept {
    if (in.at_end()) return Rule::kNone;
    StrictCursor outer;
    Bytes list;
    if (!in.enter(id::context_constructed(3), outer) || !outer.next(id::kSequence, list) || !outer.at_end() ||
        !in.at_end()) {
        return Rule::kBadMember;
    }
    if (view.version < 3) return Rule::kVersionTooLow;
    return read_extensions(list, accepted, view);
}

// The members up to the validity, with what they hold of the algorithm inside the signed part.
Rule read_first_members(StrictCursor &in, u32 accepted, CertificateView &view,
                        AlgorithmView &algorithm) noexcept {
    if (const Rule rule = read_version(in, view); rule != Rule::kNone) return rule;
    if (!in.next(id::kInteger, view.serial)) return Rule::kBadMember;
    const bool accepts_long = (accepted & kAcceptSerial) != 0 && !view.serial.empty();
    if (!is_integer(view.serial) && !accepts_long) return Rule::kBadSerial;
    if (!read_algorithm(in, algorithm)) return Rule::kBadMember;
    if (const Rule rule = read_one_name(in, view.issuer); rule != Rule::kNone) return rule;
    return read_validity(in, view);
}

// TBSCertificate ::= SEQUENCE {
//   version [0] EXPLICIT Version DEFAULT v1, serialNumber CertificateSerialNumber, signature
//   AlgorithmIdentifier, issuer Name, validity Validity, subject Name, subjectPublicKeyInfo
//   SubjectPublicKeyInfo, issuerUniqueID [1] IMPLICIT UniqueIdentifier OPTIONAL, subjectUniqueID [2] IMPLICIT
//   UniqueIdentifier OPTIONAL, extensions [3] EXPLICIT Extensions OPTIONAL }
Rule read_signed_part(StrictCursor in, u32 accepted, CertificateView &view) noexcept {
    AlgorithmView algorithm;
    if (const Rule rule = read_first_members(in, accepted, view, algorithm); rule != Rule::kNone) return rule;
    if (const Rule rule = read_one_name(in, view.subject); rule != Rule::kNone) return rule;
    if (const Rule rule = read_key_info(in, view); rule != Rule::kNone) return rule;
    for (const u8 number : {u8{1}, u8{2}}) {
        if (const Rule rule = read_unique_identifier(in, number, view); rule != Rule::kNone) return rule;
    }
    if (const Rule rule = read_extension_member(in, accepted, view); rule != Rule::kNone) return rule;
    return same(algorithm.whole, view.algorithm.whole) ? Rule::kNone : Rule::kAlgorithmsDiffer;
}

}  // namespace

bool read_algorithm(StrictCursor &in, AlgorithmView &algorithm) noexcept {
    Element element;
    if (!in.next(id::kSequence, element)) return false;
    algorithm.whole = element.whole;
    StrictCursor members(element.contents);
    if (!members.next(id::kOid, algorithm.oid) || !is_oid(algorithm.oid)) return false;
    algorithm.has_parameters = !members.at_end();
    if (!algorithm.has_parameters) return true;
    if (!members.any(element) || !members.at_end()) return false;
    algorithm.parameters = element.whole;
    return true;
}

// SubjectPublicKeyInfo ::= SEQUENCE { algorithm AlgorithmIdentifier, subjectPublicKey BIT STRING }
Rule read_key_info(StrictCursor &in, CertificateView &view) noexcept {
    Element element;
    if (!in.next(id::kSequence, element)) return Rule::kBadMember;
    view.key_info = element.whole;
    StrictCursor members(element.contents);
    Bytes bits;
    const bool read = read_algorithm(members, view.key_algorithm) && members.next(id::kBitString, bits) &&
                      members.at_end() && read_octet_bits(bits, view.key);
    return read ? Rule::kNone : Rule::kBadPublicKey;
}

Rule read_signed(Bytes octets, SignedView &view, StrictCursor &signed_members) noexcept {
    StrictCursor outer(octets);
    StrictCursor members;
    Element element;
    if (!outer.next(id::kSequence, element)) return Rule::kBrokenDer;
    if (!outer.at_end()) return Rule::kTrailingOctets;
    members = StrictCursor(element.contents);
    Bytes bits;
    if (!members.next(id::kSequence, element) || !read_algorithm(members, view.algorithm) ||
        !members.next(id::kBitString, bits) || !members.at_end()) {
        return Rule::kBadMember;
    }
    view.signed_part = element.whole;
    signed_members = StrictCursor(element.contents);
    return read_octet_bits(bits, view.signature) ? Rule::kNone : Rule::kBadSignature;
}

// Certificate ::= SIGNED{TBSCertificate}
Rule read_certificate(Bytes octets, u32 accepted, CertificateView &view) noexcept {
    view = {};
    StrictCursor members;
    if (const Rule rule = read_signed(octets, view, members); rule != Rule::kNone) return rule;
    view.whole = octets;
    return read_signed_part(members, accepted, view);
}

}  // namespace tlx
