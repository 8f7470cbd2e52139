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

bool is_strong(u32 digest_id, Profile profile) noexcept {
    switch (digest_id) {
        case TLX_DIGEST_SHA1:
        case TLX_DIGEST_HAS160:
            return profile != Profile::current;
        case TLX_DIGEST_MD5:
        case TLX_DIGEST_MD4:
        case TLX_DIGEST_MDC2:
            return profile == Profile::any;
        default:
            return true;
    }
}

}  // namespace

Rule check_strength(const PublicKey &key, const Settings &settings) noexcept {
    return is_strong(key, settings) ? check_key(key) : Rule::kWeakKey;
}

Rule check_digest(const SignatureAlgorithm &algorithm, const Settings &settings) noexcept {
    const bool strong = is_strong(algorithm.digest_id, settings.profile) &&
                        is_strong(algorithm.mgf_digest_id, settings.profile);
    return strong ? Rule::kNone : Rule::kWeakDigest;
}

Rule check_digest(const AlgorithmView &view, const Settings &settings) noexcept {
    SignatureAlgorithm algorithm;
    if (read_signature_algorithm(view, algorithm) != Rule::kNone) return Rule::kNone;
    return check_digest(algorithm, settings);
}

}  // namespace tlx
