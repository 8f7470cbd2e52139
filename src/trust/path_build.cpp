// Builds a certification path. It finds candidates, and validation judges them.
#include <tlxpki/x509_sign.h>

#include <algorithm>

#include "trust/issuer_search.hpp"

using namespace tlx;

namespace {

/// The first anchor with the subject and key of the certificate; null when there is none.
const TRUST_ANCHOR *find_anchor(const X509_CERT *cert, const TRUST_ANCHORS *anchors) noexcept {
    const TRUST_ANCHOR subject{0, get_X509_subject(cert), get_X509_SPKI(cert)};
    return get_TRUST_ANCHORS_child(anchors, get_TRUST_ANCHORS_index_by_TRUST_ANCHOR(anchors, &subject));
}

bool same_number(const RSA_UNIT *a, const RSA_UNIT *b, TLX_RSA_NUMBER which) noexcept {
    const BIGINT *number = get_RSA_UNIT_number(a, which);
    return number != nullptr && cmp_BIGINT(number, get_RSA_UNIT_number(b, which)) == 0;
}

/// Makes the key of the anchor's certificate a copy of the anchor's own, when both are the same RSA key. All
/// copies share what one of them computed to verify with, and the anchor outlives the path.
void take_over_key(X509_CERT *cert, const TRUST_ANCHOR &anchor) noexcept {
    ASYMMETRIC_KEY *key = get_X509_PUBKEY_key(get_X509_SPKI(cert));
    const ASYMMETRIC_KEY *ready = get_X509_PUBKEY_key(anchor.publicKey);
    if (key == nullptr || ready == nullptr || key->kind != TLX_KEY_RSA || ready->kind != TLX_KEY_RSA) return;
    const auto *own = static_cast<const RSA_UNIT *>(key->key);
    const auto *other = static_cast<const RSA_UNIT *>(ready->key);
    if (!same_number(own, other, TLX_RSA_N) || !same_number(own, other, TLX_RSA_E)) return;
    static_cast<void>(set_ASYMMETRIC_KEY(key, TLX_KEY_RSA, other));
}

/// Appends the certificates from `target` to the anchor's to `path`.
u32 build(const X509_CERTIFICATES *pool, const TRUST_ANCHORS *anchors, const X509_CERT *target,
          X509_CERTIFICATES *path, const CPV_SETTINGS &settings) noexcept {
    IssuerSearch issuers(pool);
    const X509_CERT *current = target;
    // A path of more certificates than the pool and the target holds one of them twice and never ends.
    std::int64_t remaining =
        std::min<std::int64_t>(settings.max_certificatePath_length, get_STACK_count(pool));
    while (true) {
        const bool self_issued = is_selfSigned(current) == 0;
        if (remaining < 0 && !self_issued) return 0x53050047;
        --remaining;
        if (const u32 status = verify_X509_validity(current, settings.time); status != 0) return status;
        if (self_issued) break;

        Element identifier;
        if (!read_extension(find_extension(current, extension_id::kAuthorityKeyIdentifier), identifier)) {
            return 0x53050047;
        }
        const auto wanted = decode_record<AUTHORITY_KEYID>(identifier);
        const X509_CERT *issuer = wanted ? issuers.find(*wanted) : nullptr;
        if (issuers.failed()) return 0x5305003C;
        if (issuer == nullptr) return 0x53050047;
        if (add_X509_CERTIFICATES(path, current) != 0) return 0x5305003C;
        current = issuer;
    }
    const TRUST_ANCHOR *anchor = find_anchor(current, anchors);
    if (anchor == nullptr) return 0x53050116;
    if (add_X509_CERTIFICATES(path, current) != 0) return 0x5305003C;
    const auto last = static_cast<i32>(get_X509_CERTIFICATES_count(path)) - 1;
    take_over_key(get_X509_CERTIFICATES_child(path, last), *anchor);
    return 0;
}

}  // namespace

extern "C" {

uint32_t is_selfSigned(const X509_CERT *cert) {
    return cmp_X509_NAME(get_X509_issuer(cert), get_X509_subject(cert)) == 0 ? 0 : 1;
}

uint32_t build_certPath(const X509_CERTIFICATES *pool, const TRUST_ANCHORS *anchors, const X509_CERT *target,
                        X509_CERTIFICATES **path) {
    return build_certPath_ex(pool, anchors, target, path, nullptr);
}

uint32_t build_certPath_ex(const X509_CERTIFICATES *pool, const TRUST_ANCHORS *anchors,
                           const X509_CERT *target, X509_CERTIFICATES **path, const CPV_SETTINGS *settings) {
    if (pool == nullptr || anchors == nullptr || target == nullptr || path == nullptr) return 0x53050049;
    CPV_SETTINGS in_force{};
    get_CPV_SETTINGS(&in_force);
    if (settings != nullptr) in_force = *settings;
    OwnedCertificates made(*path == nullptr ? new_X509_CERTIFICATES() : nullptr);
    X509_CERTIFICATES *list = *path == nullptr ? made.get() : *path;
    if (list == nullptr) return 0x5305003C;
    const u32 status = build(pool, anchors, target, list, in_force);
    if (status == 0 && made) *path = made.release();
    return status;
}

}  // extern "C"
