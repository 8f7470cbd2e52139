#include "verify/extension_view.hpp"

#include <algorithm>
#include <string_view>

#include "verify/raw_extension.hpp"

namespace tlx {
namespace {

constexpr u32 kMostExtensions = 128;

struct ExtensionOid {
    std::string_view oid;
    KnownExtension extension;
};

// id-ce is 2.5.29, id-pe is 1.3.6.1.5.5.7.1.
constexpr ExtensionOid kExtensionOids[] = {
    {"\x55\x1D\x0E", kSubjectKeyIdentifier},
    {"\x55\x1D\x0F", kKeyUsage},
    {"\x55\x1D\x11", kSubjectAltName},
    {"\x55\x1D\x12", kIssuerAltName},
    {"\x55\x1D\x13", kBasicConstraints},
    {"\x55\x1D\x1E", kNameConstraints},
    {"\x55\x1D\x1F", kCrlDistributionPoints},
    {"\x55\x1D\x20", kCertificatePolicies},
    {"\x55\x1D\x21", kPolicyMappings},
    {"\x55\x1D\x23", kAuthorityKeyIdentifier},
    {"\x55\x1D\x24", kPolicyConstraints},
    {"\x55\x1D\x25", kExtendedKeyUsage},
    {"\x55\x1D\x2E", kFreshestCrl},
    {"\x55\x1D\x36", kInhibitAnyPolicy},
    {"\x2B\x06\x01\x05\x05\x07\x01\x01", kAuthorityInfoAccess},
    {"\x2B\x06\x01\x05\x05\x07\x01\x0B", kSubjectInfoAccess},
    // id-pkix-ocsp-nocheck, 1.3.6.1.5.5.7.48.1.5
    {"\x2B\x06\x01\x05\x05\x07\x30\x01\x05", kOcspNoCheck},
};

KnownExtension find_extension(Bytes oid) noexcept {
    for (const ExtensionOid &known : kExtensionOids) {
        if (std::equal(known.oid.begin(), known.oid.end(), oid.begin(), oid.end(),
                       [](char a, u8 b) { return static_cast<u8>(a) == b; })) {
            return known.extension;
        }
    }
    return kKnownExtensions;
}

// KeyIdentifier ::= OCTET STRING
Rule read_subject_key(Bytes value, u32 /*accepted*/, CertificateView &view) noexcept {
    StrictCursor in(value);
    return in.next(id::kOctetString, view.subject_key) && in.at_end() ? Rule::kNone : Rule::kBadKeyIdentifier;
}

Rule read_authority_key(Bytes value, u32 /*accepted*/, CertificateView &view) noexcept {
    return read_authority_key_identifier(value, view.authority_key) ? Rule::kNone : Rule::kBadKeyIdentifier;
}

// KeyUsage ::= BIT STRING, of named bits, at least one of which is set
Rule read_key_usage(Bytes value, u32 accepted, CertificateView &view) noexcept {
    StrictCursor in(value);
    Bytes bits;
    if (!in.next(id::kBitString, bits) || !in.at_end() || bits.size() < 2 || bits[0] > 7) {
        return Rule::kBadKeyUsage;
    }
    const u8 last = bits.back();
    if ((last & ((1U << bits[0]) - 1)) != 0) return Rule::kBadKeyUsage;
    const bool ends_in_one = (last >> bits[0] & 1U) != 0;
    for (std::size_t i = 0; i < 8 * (bits.size() - 1) && i < 32; ++i) {
        if ((bits[1 + i / 8] & 0x80U >> i % 8) != 0) view.key_usage |= 1U << i;
    }
    if (view.key_usage == 0) return Rule::kBadKeyUsage;
    return ends_in_one || (accepted & kAcceptKeyUsageZeros) != 0 ? Rule::kNone : Rule::kKeyUsageZeros;
}

// BasicConstraints ::= SEQUENCE { cA BOOLEAN DEFAULT FALSE, pathLenConstraint INTEGER (0..MAX) OPTIONAL }
Rule read_basic_constraints(Bytes value, u32 accepted, CertificateView &view) noexcept {
    StrictCursor members;
    if (!open_whole(value, id::kSequence, members)) return Rule::kBadBasicConstraints;
    if (members.is_next(id::kBoolean)) {
        if (const Rule rule = read_boolean(members, accepted, view.is_ca); rule != Rule::kNone) return rule;
        view.ca_false_written = !view.is_ca;
    }
    Bytes number;
    if (members.is_next(id::kInteger) &&
        (!members.next(id::kInteger, number) || !read_count(number, view.path_length))) {
        return Rule::kBadBasicConstraints;
    }
    return members.at_end() ? Rule::kNone : Rule::kBadBasicConstraints;
}

// PolicyConstraints ::= SEQUENCE {
//   requireExplicitPolicy [0] IMPLICIT SkipCerts OPTIONAL, inhibitPolicyMapping [1] IMPLICIT SkipCerts
//   OPTIONAL }
Rule read_policy_constraints(Bytes value, u32 /*accepted*/, CertificateView &view) noexcept {
    StrictCursor members;
    if (!open_whole(value, id::kSequence, members) || members.at_end()) return Rule::kBadPolicyConstraints;
    u32 *const numbers[] = {&view.require_explicit_policy, &view.inhibit_policy_mapping};
    for (u8 i = 0; i < 2; ++i) {
        Bytes number;
        if (!members.is_next(id::context(i))) continue;
        if (!members.next(id::context(i), number) || !read_count(number, *numbers[i])) {
            return Rule::kBadPolicyConstraints;
        }
    }
    return members.at_end() ? Rule::kNone : Rule::kBadPolicyConstraints;
}

// InhibitAnyPolicy ::= INTEGER (0..MAX)
Rule read_inhibit_any_policy(Bytes value, u32 /*accepted*/, CertificateView &view) noexcept {
    StrictCursor in(value);
    Bytes number;
    const bool read =
        in.next(id::kInteger, number) && in.at_end() && read_count(number, view.inhibit_any_policy);
    return read ? Rule::kNone : Rule::kBadInhibitAnyPolicy;
}

// ExtKeyUsageSyntax ::= SEQUENCE SIZE (1..MAX) OF OBJECT IDENTIFIER
Rule read_extended_key_usage(Bytes value, u32 /*accepted*/, CertificateView & /*view*/) noexcept {
    StrictCursor purposes;
    if (!open_whole(value, id::kSequence, purposes) || purposes.at_end()) return Rule::kBadExtendedKeyUsage;
    while (!purposes.at_end()) {
        Bytes purpose;
        if (!purposes.next(id::kOid, purpose) || !is_oid(purpose)) return Rule::kBadExtendedKeyUsage;
    }
    return Rule::kNone;
}

using ReadValue = Rule (*)(Bytes value, u32 accepted, CertificateView &view) noexcept;

/// The reader of an extension that counts for every certificate; null for one that is read when it is needed.
ReadValue reader_of(KnownExtension extension) noexcept {
    switch (extension) {
        case kSubjectKeyIdentifier:
            return read_subject_key;
        case kAuthorityKeyIdentifier:
            return read_authority_key;
        case kKeyUsage:
            return read_key_usage;
        case kBasicConstraints:
            return read_basic_constraints;
        case kPolicyConstraints:
            return read_policy_constraints;
        case kInhibitAnyPolicy:
            return read_inhibit_any_policy;
        case kExtendedKeyUsage:
            return read_extended_key_usage;
        default:
            return nullptr;
    }
}

/// The identifiers of extensions that are not known, to find those that occur twice.
struct UnknownExtensions {
    Bytes oids[kMostExtensions];
    u32 count = 0;

    bool add(Bytes oid) noexcept {
        const Bytes *begin = oids;
        if (std::any_of(begin, begin + count, [oid](Bytes each) { return same(each, oid); })) return false;
        oids[count++] = oid;
        return true;
    }
};

Rule keep_extension(const RawExtension &extension, u32 accepted, UnknownExtensions &unknown,
                    CertificateView &view) noexcept {
    const KnownExtension known = find_extension(extension.oid);
    if (known == kKnownExtensions) {
        if (extension.critical && view.unknown_critical.empty()) view.unknown_critical = extension.oid;
        return unknown.add(extension.oid) ? Rule::kNone : Rule::kDuplicateExtension;
    }
    if (view.extensions[known].present) return Rule::kDuplicateExtension;
    view.extensions[known] = {true, extension.critical, extension.value};
    const ReadValue read = reader_of(known);
    return read == nullptr ? Rule::kNone : read(extension.value, accepted, view);
}

}  // namespace

Rule read_extensions(Bytes contents, u32 accepted, CertificateView &view) noexcept {
    StrictCursor list(contents);
    if (list.at_end()) return Rule::kNoExtensions;
    UnknownExtensions unknown;
    for (u32 count = 0; !list.at_end(); ++count) {
        if (count == kMostExtensions) return Rule::kManyExtensions;
        RawExtension extension;
        if (const Rule rule = read_extension(list, accepted, extension); rule != Rule::kNone) return rule;
        if (const Rule rule = keep_extension(extension, accepted, unknown, view); rule != Rule::kNone) {
            return rule;
        }
    }
    return Rule::kNone;
}

}  // namespace tlx
