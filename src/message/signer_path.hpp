// The certification paths of signers.
#pragma once

#include "message/certificate_lookup.hpp"
#include "trust/extension.hpp"
#include "trust/issuer_search.hpp"

namespace tlx {

/// A certificate by what its subordinates name: its subject and its subject key identifier.
struct NamedKeyProperty {
    struct Value {
        const X509_NAME *subject;
        Bytes key_id;
    };
    static bool get(const X509_CERT *cert, Value &value) noexcept;
    static bool equal(Value a, Value b) noexcept;
    static void encode(Encoder &out, Value value) noexcept;
};

/// Builds and validates the paths of many certificates from one pool, which it indexes once.
class SignerPaths {
  public:
    /// Policies are not required. False when memory, or random octets, run out.
    [[nodiscard]] bool prepare(const X509_CERTIFICATES *pool, const TRUST_ANCHORS *anchors,
                               const ASN1_TIME *time) noexcept;
    /// A status of build_certPath() or validate_certpath().
    [[nodiscard]] u32 check(const X509_CERT *cert) const noexcept;

  private:
    [[nodiscard]] const X509_CERT *issuer_of(const X509_CERT *cert, bool &failed) const noexcept;
    [[nodiscard]] bool collect_issuers(const X509_CERT *cert, STACK *issuers) const noexcept;

    CertificateLookup<NamedKeyProperty> by_key_;
    CertificateLookup<SubjectProperty> by_subject_;
    const TRUST_ANCHORS *anchors_ = nullptr;
    CPV_SETTINGS settings_ = {};
};

}  // namespace tlx
