// Hints for certificates that are not valid.
#include "document.hpp"
#include "verify.hpp"

namespace tool {

namespace {

enum : uint32_t {
    kNoIssuerOrTooLong = 0x53050047,
    kNoAnchor = 0x53050116,
    kBadSignature = 0x53100054,
    kIssuerDiffers = 0x53100106,
    kUnreadableConstraints = 0x5309000E,
    kNoPolicies = 0x5310011C,
    kNoAcceptablePolicy = 0x53070119
};

constexpr char kAcceptWithoutPolicy[] = "--no-explicit-policy accepts paths that no policy holds for";

}  // namespace

void Verifier::explain(Verdict &verdict, const Chain &chain) const {
    const X509_CERT *failed = get_X509_CERTIFICATES_child(verdict.path.get(), verdict.failed_at);
    const bool self_issued = is_selfSigned(failed) == 0;
    if (verdict.status == kUnreadableConstraints) {
        const X509_CERT *issuer = get_X509_CERTIFICATES_child(verdict.path.get(), verdict.failed_at + 1);
        verdict.reason =
            "the basic constraints of " + shown_name(get_X509_subject(issuer)) + " cannot be decoded";
        verdict.hint = "\"tlxpki show\" dumps them";
    } else if (verdict.status == kBadSignature || (verdict.status != 0 && failed != nullptr && self_issued)) {
        const X509_CERT *issuer =
            get_X509_CERTIFICATES_child(verdict.path.get(), verdict.failed_at + (self_issued ? 0 : 1));
        const Explanation explanation = explain_signature(failed, get_X509_SPKI(issuer));
        verdict.reason = explanation.reason;
        verdict.hint = explanation.hint;
    }
    if (verdict.reason.empty()) verdict.hint = hint_for(verdict, chain);
}

std::string Verifier::hint_for(const Verdict &verdict, const Chain &chain) const {
    switch (verdict.status) {
        case kNoIssuerOrTooLong:
            return building_hint(verdict, chain);
        case kNoAnchor:
            return get_STACK_count(chain.anchors.get()) > 0
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

std::string Verifier::building_hint(const Verdict &verdict, const Chain &chain) const {
    const uint32_t below = get_X509_CERTIFICATES_count(verdict.path.get());
    if (chain.goes_round && below > 0) {
        return "the certificates issue each other, so that no path leads to an anchor";
    }
    if (below > static_cast<uint32_t>(settings_.max_certificatePath_length)) {
        return "more than " + std::to_string(below) +
               " certificates stand below the anchor's; --max-length N allows more";
    }
    if (get_X509_EXTENSION_index_by_OID_index(get_X509_extensions(verdict.stopped_at),
                                              TLX_OID_AUTHORITY_KEY_IDENTIFIER, -1) < 0) {
        return "the certificate has no authority key identifier, by which its issuer is found";
    }
    return "no certificate fits its authority key identifier; give its issuer's with --pool or --anchor";
}

/// Building may choose a certificate as issuer only because the authority key identifier names its issuer.
std::string Verifier::issuer_hint(const Verdict &verdict) const {
    const X509_CERT *failed = get_X509_CERTIFICATES_child(verdict.path.get(), verdict.failed_at);
    const X509_NAME *issuer = get_X509_issuer(failed);
    if (index_.has_subject(issuer)) return "";
    return "its issuer " + shown_name(issuer) + " is not among the certificates; give it with --pool";
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
