// The certification paths of signers by RFC 5280.
#pragma once

#include <tlxpki/cms_types.h>
#include <tlxpki/pkcs7_sign.h>

#include "der/owned.hpp"
#include "der/types.hpp"

TLX_OWNS(VERIFY_STORE);

namespace tlx {

/// What paths are verified with when the caller says no more than the time.
[[nodiscard]] VERIFY_SETTINGS signing_settings(const ASN1_TIME *time) noexcept;

/// Makes a store of anchors that are names and keys, or certificates. What cannot be an anchor is left out.
/// Null when memory, or random octets, run out.
[[nodiscard]] Owned<VERIFY_STORE> store_of_anchors(const TRUST_ANCHORS *anchors) noexcept;
[[nodiscard]] Owned<VERIFY_STORE> store_of_certificates(const X509_CERTIFICATES *anchors,
                                                        u32 accepted_faults) noexcept;

/// Verifies the paths of many certificates with the certificates and the revocation lists of their message.
class StrictPaths {
  public:
    /// What cannot be read is left out. The store and what the settings point to have to outlive this. False
    /// when memory, or random octets, run out.
    [[nodiscard]] bool prepare(const X509_CERTIFICATES *pool, const X509_CRLS *lists,
                               const VERIFY_STORE *store, const VERIFY_SETTINGS &settings) noexcept;
    /// Adds the lists and OCSP responses among the revocation information of a message. What cannot be read
    /// is left out. False when memory runs out.
    [[nodiscard]] bool add(const CMS_REVOCATION_INFOS *infos) noexcept;
    /// Fills the path at a time and its status. False when memory runs out.
    [[nodiscard]] bool check(const X509_CERT &cert, const ASN1_TIME *time,
                             P7_SIGNER_REPORT &report) const noexcept;

  private:
    Owned<VERIFY_STORE> pool_;
    const VERIFY_STORE *store_ = nullptr;
    VERIFY_SETTINGS settings_ = {};
};

}  // namespace tlx
