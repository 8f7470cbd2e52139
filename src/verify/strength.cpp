#include "verify/strength.hpp"

namespace tlx {
namespace {

/// Least bits of RSA and KCDSA. KISA and NIST (SP 800-131A) ask for 2048 since 2014.
u32 least_bits(const Settings &settings) noexcept {
    if (settings.least_rsa_bits != 0) return settings.least_rsa_bits;
    switch (settings.profile) {
        case Profile::current:
            return 2048;
        case Profile::korean_legacy:
            return 1024;
        default:
            return 0;
    }
}

bool is_strong(const PublicKey &key, const Settings &settings) noexcept {
    switch (key.kind) {
        case KeyKind::rsa:
            return key.bits >= least_bits(settings);
        case KeyKind::kcdsa:
            // Its q of 160 bits is as weak as HAS-160, whatever the size of p.
            return settings.profile != Profile::current && key.bits >= least_bits(settings);
        case KeyKind::dsa:
            return settings.profile == Profile::any;
        default:
            return true;
    }
}

}  // namespace

Rule check_strength(const PublicKey &key, const Settings &settings) noexcept {
    return is_strong(key, settings) ? check_key(key) : Rule::kWeakKey;
}

Rule check_digest(const AlgorithmView &view, const Settings &settings) noexcept {
    SignatureAlgorithm algorithm;
    if (settings.profile != Profile::current) return Rule::kNone;
    if (read_signature_algorithm(view, algorithm) != Rule::kNone) return Rule::kNone;
    const bool is_weak = algorithm.digest_id == TLX_DIGEST_SHA1 || algorithm.digest_id == TLX_DIGEST_HAS160 ||
                         algorithm.mgf_digest_id == TLX_DIGEST_SHA1;
    return is_weak ? Rule::kWeakDigest : Rule::kNone;
}

}  // namespace tlx
