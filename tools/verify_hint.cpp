// Hints for certificates that are not valid.
#include <algorithm>

#include "document.hpp"
#include "verify.hpp"

namespace tool {

namespace {

enum : uint32_t {
    kNoIssuerOrTooLong = 0x53050047,
    kNoAnchor = 0x53050116,
    kBadSignature = 0x53100054,
    kIssuerDiffers = 0x53100106,
    kNoPolicies = 0x5310011C,
    kNoAcceptablePolicy = 0x53070119
};

constexpr char kAcceptWithoutPolicy[] = "--no-explicit-policy accepts paths that no policy holds for";

bool same(const X509_NAME *a, const X509_NAME *b) {
    return cmp_X509_NAME(a, b) == 0;
}

}  // namespace

std::string Verifier::hint_for(const Verdict &verdict) const {
    switch (verdict.status) {
        case kNoIssuerOrTooLong:
            return building_hint(verdict);
        case kNoAnchor:
            return trusts_name(get_X509_subject(verdict.stopped_at))
                       ? "a trusted certificate has the name of the certificate at the top, but another key"
                       : "if you trust the certificate at the top, give it with --anchor";
        case kOutsideValidity:
            return "--at TIME validates at another time than now";
        case kBadSignature:
        case kIssuerDiffers:
            return issuer_hint(verdict);
        case kNoPolicies:
            return kAcceptWithoutPolicy;
        case kNoAcceptablePolicy:
            return policy_hint(verdict);
        default:
            return "";
    }
}

/// Whether the path never ends: a path of more certificates than the pool and the target holds one of them
/// twice.
bool Verifier::goes_round(const X509_CERT *target) const {
    const uint32_t available = get_X509_CERTIFICATES_count(pool_.get());
    CPV_SETTINGS longest = settings_;
    longest.max_certificatePath_length = static_cast<int32_t>(available);
    const auto path = made<Certificates>(new_X509_CERTIFICATES());
    X509_CERTIFICATES *list = path.get();
    const uint32_t status = build_certPath_ex(pool_.get(), anchors_.get(), target, &list, &longest);
    return status == kNoIssuerOrTooLong && get_X509_CERTIFICATES_count(list) > available;
}

std::string Verifier::building_hint(const Verdict &verdict) const {
    constexpr int32_t kAuthorityKeyIdentifierRow = 90;
    const auto below = static_cast<int32_t>(get_X509_CERTIFICATES_count(verdict.path.get()));
    const auto available = static_cast<int32_t>(get_X509_CERTIFICATES_count(pool_.get()));
    if (below > std::min(settings_.max_certificatePath_length, available)) {
        return goes_round(get_X509_CERTIFICATES_child(verdict.path.get(), 0))
                   ? "the certificates issue each other, so that no path leads to an anchor"
                   : "more than " + std::to_string(below) +
                         " certificates stand below the anchor's; --max-length N allows more";
    }
    if (get_X509_EXTENSION_index_by_OID_index(get_X509_extensions(verdict.stopped_at),
                                              kAuthorityKeyIdentifierRow, -1) < 0) {
        return "the certificate has no authority key identifier, by which its issuer is found";
    }
    return "no certificate fits its authority key identifier; give its issuer's with --pool or --anchor";
}

/// Building may choose a certificate as issuer only because the authority key identifier names its issuer.
std::string Verifier::issuer_hint(const Verdict &verdict) const {
    const X509_CERT *failed = get_X509_CERTIFICATES_child(verdict.path.get(), verdict.failed_at);
    const X509_NAME *issuer = get_X509_issuer(failed);
    for (uint32_t i = 0; i < get_X509_CERTIFICATES_count(pool_.get()); ++i) {
        const X509_CERT *cert = get_X509_CERTIFICATES_child(pool_.get(), static_cast<int32_t>(i));
        if (same(get_X509_subject(cert), issuer)) return "";
    }
    return "its issuer " + name_text(issuer) + " is not among the certificates; give it with --pool";
}

bool Verifier::trusts_name(const X509_NAME *name) const {
    for (uint32_t i = 0; i < get_TRUST_ANCHORS_count(anchors_.get()); ++i) {
        const TRUST_ANCHOR *anchor = get_TRUST_ANCHORS_child(anchors_.get(), static_cast<int32_t>(i));
        if (same(anchor->name, name)) return true;
    }
    return false;
}

std::string Verifier::policy_hint(const Verdict &verdict) const {
    node_LIST *tree = nullptr;
    if (policies_ == nullptr ||
        validate_certpath_ex(verdict.path.get(), nullptr, &tree, &settings_, nullptr) != 0) {
        return kAcceptWithoutPolicy;
    }
    const PolicyTree owner(tree);
    const node_LIST *deepest = tree;
    while (deepest->next != nullptr) {
        deepest = deepest->next;
    }
    std::string policies;
    for (uint32_t i = 0; i < get_STACK_count(deepest->nodes); ++i) {
        const auto *node = static_cast<const VALID_POLICY_NODE *>(get_STACK_value(deepest->nodes, i));
        policies += (i == 0 ? "" : ", ") + oid_line(oid_json(node->data->valid_policy));
    }
    return "the certificate is good for " + policies + "; --policy has to name one of these";
}

}  // namespace tool
