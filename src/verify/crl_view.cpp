#include "verify/crl_view.hpp"

#include <tlxpki/types.h>

#include <algorithm>

#include "verify/general_names.hpp"
#include "verify/name_match.hpp"
#include "verify/oid.hpp"
#include "verify/raw_extension.hpp"
#include "verify/strict_time.hpp"

namespace tlx {
namespace {

/// Faults that do not change what a list means.
constexpr u32 kAccepted = kAcceptCriticalFalse | kAcceptBoolean;

// CRLNumber ::= INTEGER (0..MAX)
bool read_number(Bytes value, Bytes &number) noexcept {
    StrictCursor in(value);
    if (!in.next(id::kInteger, number) || !in.at_end() || !is_integer(number)) return false;
    if ((number[0] & 0x80) != 0) return false;
    if (number[0] == 0) number = number.subspan(1);
    return true;
}

bool read_number_extension(Bytes value, bool &present, Bytes &number) noexcept {
    if (present) return false;
    present = true;
    return read_number(value, number);
}

/// Reads an extension of a list. False for one that is malformed or there twice.
bool keep_extension(const RawExtension &extension, CrlView &view) noexcept {
    if (is_oid_of(extension.oid, "\x55\x1D\x14")) {
        return read_number_extension(extension.value, view.has_number, view.number);
    }
    if (is_oid_of(extension.oid, "\x55\x1D\x1B")) {
        return read_number_extension(extension.value, view.is_delta, view.base_number);
    }
    if (is_oid_of(extension.oid, "\x55\x1D\x1C")) {
        if (!view.point_octets.empty()) return false;
        view.point_octets = extension.value;
        return read_issuing_point(extension.value, view.point);
    }
    if (is_oid_of(extension.oid, "\x55\x1D\x23")) {
        return read_authority_key_identifier(extension.value, view.authority_key);
    }
    view.has_unknown_critical |= extension.critical;
    return true;
}

// crlExtensions [0] EXPLICIT Extensions OPTIONAL
bool read_list_extensions(StrictCursor &in, bool has_version_2, CrlView &view) noexcept {
    StrictCursor outer;
    StrictCursor list;
    if (in.at_end()) return true;
    if (!has_version_2 || !in.enter(id::context_constructed(0), outer) || !outer.enter(id::kSequence, list) ||
        !outer.at_end() || !in.at_end()) {
        return false;
    }
    while (!list.at_end()) {
        RawExtension extension;
        if (read_extension(list, kAccepted, extension) != Rule::kNone || !keep_extension(extension, view)) {
            return false;
        }
    }
    return true;
}

bool read_update_times(StrictCursor &in, CrlView &view) noexcept {
    if (!read_time(in, view.this_update)) return false;
    view.has_next_update = in.is_next(id::kUtcTime) || in.is_next(id::kGeneralizedTime);
    return !view.has_next_update || read_time(in, view.next_update);
}

// TBSCertList ::= SEQUENCE {
//   version INTEGER { v2(1) } OPTIONAL, signature AlgorithmIdentifier, issuer Name, thisUpdate Time,
//   nextUpdate Time OPTIONAL, revokedCertificates SEQUENCE OF SEQUENCE {...} OPTIONAL, crlExtensions [0]
//   EXPLICIT Extensions OPTIONAL }
bool read_signed_list(StrictCursor in, CrlView &view) noexcept {
    u32 version = 0;
    Bytes number;
    if (in.is_next(id::kInteger) &&
        (!in.next(id::kInteger, number) || !read_count(number, version) || version != 1)) {
        return false;
    }
    AlgorithmView algorithm;
    if (!read_algorithm(in, algorithm) || !same(algorithm.whole, view.algorithm.whole) ||
        !in.next(id::kSequence, view.issuer) || !is_name(view.issuer) || !read_update_times(in, view)) {
        return false;
    }
    if (in.is_next(id::kSequence) && !in.next(id::kSequence, view.entries)) return false;
    return read_list_extensions(in, version == 1, view);
}

// CertificateIssuer ::= GeneralNames
bool read_entry_issuer(Bytes value, Bytes &issuer) noexcept {
    constexpr std::size_t kIpv4Length = 4;
    StrictCursor names;
    GeneralNameView name;
    if (!open_whole(value, id::kSequence, names)) return false;
    while (!names.at_end() && next_general_name(names, kIpv4Length, name)) {
        if (name.form != NameForm::directory) continue;
        issuer = name.value;
        return true;
    }
    return false;
}

/// Reads an extension of an entry: the reason, 2.5.29.21, and the certificate's issuer, 2.5.29.29. Known
/// without being used are the hold instruction, 2.5.29.23, and the invalidity date, 2.5.29.24.
bool keep_entry_extension(const RawExtension &extension, RevokedView &entry) noexcept {
    if (is_oid_of(extension.oid, "\x55\x1D\x15")) {
        StrictCursor in(extension.value);
        return read_reason(in, entry.reason) && in.at_end();
    }
    if (is_oid_of(extension.oid, "\x55\x1D\x1D")) return read_entry_issuer(extension.value, entry.issuer);
    if (is_oid_of(extension.oid, "\x55\x1D\x17") || is_oid_of(extension.oid, "\x55\x1D\x18")) return true;
    entry.has_unknown_critical |= extension.critical;
    return true;
}

}  // namespace

bool read_reason(StrictCursor &in, u32 &reason) noexcept {
    Bytes octet;
    if (!in.next(TLX_TAG_ENUMERATED, octet) || octet.size() != 1 || octet[0] > 10) return false;
    reason = octet[0];
    return true;
}

Rule read_crl(Bytes octets, CrlView &view) noexcept {
    StrictCursor members;
    const Rule rule = read_signed(octets, view, members);
    if (rule == Rule::kBrokenDer || rule == Rule::kTrailingOctets) return rule;
    return rule == Rule::kNone && read_signed_list(members, view) ? Rule::kNone : Rule::kBadList;
}

bool is_at_most(Bytes number, Bytes other) noexcept {
    if (number.size() != other.size()) return number.size() < other.size();
    return !std::lexicographical_compare(other.begin(), other.end(), number.begin(), number.end());
}

// SEQUENCE { userCertificate INTEGER, revocationDate Time, crlEntryExtensions Extensions OPTIONAL }
bool next_revoked(StrictCursor &entries, RevokedView &entry) noexcept {
    entry = {};
    StrictCursor in;
    StrictCursor list;
    if (!entries.enter(id::kSequence, in) || !in.next(id::kInteger, entry.serial) || entry.serial.empty() ||
        !read_time(in, entry.time)) {
        return false;
    }
    if (in.at_end()) return true;
    if (!in.enter(id::kSequence, list) || !in.at_end()) return false;
    while (!list.at_end()) {
        RawExtension extension;
        if (read_extension(list, kAccepted, extension) != Rule::kNone ||
            !keep_entry_extension(extension, entry)) {
            return false;
        }
    }
    return true;
}

}  // namespace tlx
