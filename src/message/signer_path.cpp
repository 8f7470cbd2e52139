#include "message/signer_path.hpp"

#include <algorithm>

namespace tlx {

bool NamedKeyProperty::get(const X509_CERT *cert, Value &value) noexcept {
    value.subject = get_X509_subject(cert);
    return value.subject != nullptr && SubjectKeyProperty::get(cert, value.key_id);
}
bool NamedKeyProperty::equal(Value a, Value b) noexcept {
    return std::ranges::equal(a.key_id, b.key_id) && cmp_X509_NAME(a.subject, b.subject) == 0;
}
void NamedKeyProperty::encode(Encoder &out, Value value) noexcept {
    out.primitive(TLX_TAG_OCTET_STRING, value.key_id);
    Name::encode(out, value.subject);
}

bool SignerPaths::prepare(const X509_CERTIFICATES *pool, const TRUST_ANCHORS *anchors,
                          const ASN1_TIME *time) noexcept {
    get_CPV_SETTINGS(&settings_);
    settings_.initial_explicit_policy = 0;
    settings_.time = time;
    anchors_ = anchors;
    return by_key_.build(pool) && by_subject_.build(pool);
}

/// The first certificate with the issuer's name and the key that the authority key identifier names, or else
/// the first with that name.
const X509_CERT *SignerPaths::issuer_of(const X509_CERT *cert, bool &failed) const noexcept {
    const X509_NAME *name = get_X509_issuer(cert);
    Element identifier;
    if (name == nullptr ||
        !read_extension(find_extension(cert, extension_id::kAuthorityKeyIdentifier), identifier)) {
        return nullptr;
    }
    const auto wanted = decode_record<AUTHORITY_KEYID>(identifier);
    const X509_CERT *found = nullptr;
    if (wanted && wanted->keyIdentifier != nullptr) {
        found = by_key_.find({name, octets_of(wanted->keyIdentifier)}, failed);
    }
    return found != nullptr ? found : by_subject_.find(name, failed);
}

/// Collects the issuers above a certificate, the lowest first. Building takes the first that fits, and in
/// Korean certificates the issuer's own issuer also fits. False when memory runs out.
bool SignerPaths::collect_issuers(const X509_CERT *cert, STACK *issuers) const noexcept {
    bool failed = false;
    for (std::int64_t i = -1; i <= settings_.max_certificatePath_length; ++i) {
        if (is_selfSigned(cert) == 0) break;
        cert = issuer_of(cert, failed);
        if (cert == nullptr || failed) break;
        // The list only looks at them.
        if (push_STACK_value(issuers, const_cast<X509_CERT *>(cert)) != 0) return false;
    }
    return !failed;
}

u32 SignerPaths::check(const X509_CERT *cert) const noexcept {
    const Owned<STACK> issuers(new_STACK());
    if (!issuers || !collect_issuers(cert, issuers.get())) return 0x5305003C;
    X509_CERTIFICATES *built = nullptr;
    const u32 status = build_certPath_ex(issuers.get(), anchors_, cert, &built, &settings_);
    const OwnedCertificates path(built);
    return status != 0 ? status : validate_certpath_ex(built, nullptr, nullptr, &settings_, nullptr);
}

}  // namespace tlx
