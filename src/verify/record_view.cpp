#include "verify/record_view.hpp"

namespace tlx {

Rule EncodedAlgorithm::read(const X509_ALGO_IDENTIFIER *identifier) noexcept {
    Codec<X509_ALGO_IDENTIFIER>::encode(encoded_, identifier);
    if (!encoded_.ok()) return encoded_.out_of_memory() ? Rule::kNoMemory : Rule::kUnknownAlgorithm;
    StrictCursor in(encoded_.bytes());
    return read_algorithm(in, view_) && in.at_end() ? Rule::kNone : Rule::kBadParameters;
}

Rule read_public_key(const X509_PUBKEY *pubkey, PublicKey &key) noexcept {
    Encoder encoded;
    CertificateView view;
    Codec<X509_PUBKEY>::encode(encoded, pubkey);
    if (!encoded.ok()) return encoded.out_of_memory() ? Rule::kNoMemory : Rule::kBadPublicKey;
    StrictCursor in(encoded.bytes());
    if (read_key_info(in, view) != Rule::kNone) return Rule::kBadPublicKey;
    if (const Rule rule = make_key(view.key_algorithm, view.key, key); rule != Rule::kNone) return rule;
    return check_key(key);
}

}  // namespace tlx
