#include "verify/links.hpp"

namespace tlx {

Rule Links::verify_with(const StoreEntry &certificate, const PublicKey &key) noexcept {
    if (left_ == 0) return Rule::kSignatureBudget;
    SignatureAlgorithm algorithm;
    const CertificateView &view = certificate.view;
    if (const Rule rule = read_signature_algorithm(view.algorithm, algorithm); rule != Rule::kNone) {
        return rule;
    }
    --left_;
    return verify_signature(key, algorithm, view.signed_part, view.signature);
}

Rule Links::verify(const StoreEntry &certificate, const StoreEntry &issuer) noexcept {
    for (const Known &known : known_) {
        if (known.certificate == &certificate && known.issuer == &issuer) return known.rule;
    }
    const Rule rule = verify_with(certificate, issuer.key);
    if (rule == Rule::kNoMemory || rule == Rule::kSignatureBudget) return rule;
    return known_.append({&certificate, &issuer, rule}) ? rule : Rule::kNoMemory;
}

}  // namespace tlx
