#include "verify/links.hpp"

namespace tlx {

Rule Links::verify_with(const SignedView &what, const PublicKey &key) noexcept {
    if (left_ == 0) return Rule::kSignatureBudget;
    SignatureAlgorithm algorithm;
    if (const Rule rule = read_signature_algorithm(what.algorithm, algorithm); rule != Rule::kNone) {
        return rule;
    }
    --left_;
    return verify_signature(key, algorithm, what.signed_part, what.signature);
}

Rule Links::verify(const SignedView &what, const StoreEntry &issuer) noexcept {
    for (const Known &known : known_) {
        if (known.what == &what && known.issuer == &issuer) return known.rule;
    }
    const Rule rule = verify_with(what, issuer.key);
    if (rule == Rule::kNoMemory || rule == Rule::kSignatureBudget) return rule;
    return known_.append({&what, &issuer, rule}) ? rule : Rule::kNoMemory;
}

}  // namespace tlx
