#include "verify/purpose.hpp"

#include "verify/oid.hpp"

namespace tlx {
namespace {

/// How the target's extended key usage has to name a purpose.
enum class Naming : u8 {
    none,       ///< the purpose has no identifier
    any,        ///< absent or anyExtendedKeyUsage will do
    explicit_,  ///< only the identifier itself
    alone,      ///< only it, in a critical extension (RFC 3161, section 2.3)
};

struct PurposeRule {
    Purpose purpose;
    std::string_view oid;  ///< below id-kp
    Naming naming;
    u32 key_usage;  ///< one of these bits, where the extension is present
};

// id-kp is 1.3.6.1.5.5.7.3 (RFC 5280, section 4.2.1.12).
constexpr PurposeRule kPurposes[] = {
    {Purpose::tls_server, "\x2B\x06\x01\x05\x05\x07\x03\x01", Naming::any,
     kDigitalSignature | kKeyEncipherment | kKeyAgreement},
    {Purpose::tls_client, "\x2B\x06\x01\x05\x05\x07\x03\x02", Naming::any, kDigitalSignature | kKeyAgreement},
    {Purpose::code, "\x2B\x06\x01\x05\x05\x07\x03\x03", Naming::explicit_, kDigitalSignature},
    {Purpose::email, "\x2B\x06\x01\x05\x05\x07\x03\x04", Naming::any,
     kDigitalSignature | kNonRepudiation | kKeyEncipherment | kKeyAgreement},
    {Purpose::time_stamping, "\x2B\x06\x01\x05\x05\x07\x03\x08", Naming::alone,
     kDigitalSignature | kNonRepudiation},
    {Purpose::ocsp_signing, "\x2B\x06\x01\x05\x05\x07\x03\x09", Naming::explicit_,
     kDigitalSignature | kNonRepudiation},
    {Purpose::signing, "", Naming::none, kDigitalSignature | kNonRepudiation},
    {Purpose::key_management, "", Naming::none, kKeyEncipherment | kKeyAgreement},
};

/// anyExtendedKeyUsage, 2.5.29.37.0
constexpr std::string_view kAnyExtendedKeyUsage("\x55\x1D\x25\x00", 4);

/// What an extended key usage, which has been read once, names.
struct Named {
    bool purpose = false;
    bool any = false;
    u32 count = 0;
};

Named read_usage(const CertificateView &certificate, std::string_view purpose) noexcept {
    Named named;
    StrictCursor in;
    if (!open_whole(certificate.extensions[kExtendedKeyUsage].value, id::kSequence, in)) return named;
    Bytes oid;
    while (!in.at_end() && in.next(id::kOid, oid)) {
        named.purpose |= is_oid_of(oid, purpose);
        named.any |= is_oid_of(oid, kAnyExtendedKeyUsage);
        ++named.count;
    }
    return named;
}

bool lets_below(const CertificateView &issuer, const PurposeRule &rule) noexcept {
    if (rule.naming == Naming::none || !issuer.extensions[kExtendedKeyUsage].present) return true;
    const Named named = read_usage(issuer, rule.oid);
    return named.purpose || named.any;
}

bool is_for(const CertificateView &target, const PurposeRule &rule) noexcept {
    const ExtensionView &extension = target.extensions[kExtendedKeyUsage];
    const Named named = read_usage(target, rule.oid);
    switch (rule.naming) {
        case Naming::any:
            return !extension.present || named.purpose || named.any;
        case Naming::explicit_:
            return named.purpose;
        case Naming::alone:
            return named.purpose && named.count == 1 && extension.critical;
        default:
            return true;
    }
}

bool has_key_usage(const CertificateView &target, const PurposeRule &rule) noexcept {
    return !target.extensions[kKeyUsage].present || (target.key_usage & rule.key_usage) != 0;
}

}  // namespace

bool may_sign_responses(const CertificateView &certificate) noexcept {
    for (const PurposeRule &rule : kPurposes) {
        if (rule.purpose == Purpose::ocsp_signing) {
            return is_for(certificate, rule) && has_key_usage(certificate, rule);
        }
    }
    return false;
}

void judge_purpose(const Path &path, const Settings &settings, Verdict &verdict) noexcept {
    for (const PurposeRule &rule : kPurposes) {
        if (rule.purpose != settings.purpose) continue;
        const u32 last = path.size() - 1;
        const bool anchor_counts =
            path[0]->has_certificate && (settings.anchor_rules & kAnchorConstraints) != 0;
        for (u32 place = anchor_counts ? 0 : 1; place < last; ++place) {
            if (!lets_below(path[place]->view, rule)) verdict.note(place, Rule::kPurposeNotBelow);
        }
        const CertificateView &target = path[last]->view;
        if (!is_for(target, rule)) verdict.note(last, Rule::kNotForPurpose);
        if (!has_key_usage(target, rule)) verdict.note(last, Rule::kKeyUsageForPurpose);
    }
}

}  // namespace tlx
