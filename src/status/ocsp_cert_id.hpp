// IDs of certificates (RFC 6960, section 4.1.1).
#pragma once

#include "status/ocsp_records.hpp"

namespace tlx {

/// What an ID says of a CA.
struct IssuerDigests {
    enum class Result : u8 { good, unknown_digest, missing_member, no_memory };

    /// Digests of a name in a certificate and of the issuer's key.
    [[nodiscard]] Result compute(u32 digest_id, const X509_CERT *named, X509_NAME *X509_TBS_CERT::*name,
                                 const X509_CERT *issuer) noexcept;
    [[nodiscard]] bool are_in(const OCSP_CERT_ID &id) const noexcept;
    [[nodiscard]] Bytes name() const noexcept { return {name_, length_}; }
    [[nodiscard]] Bytes key() const noexcept { return {key_, length_}; }

  private:
    u8 name_[TLX_DIGEST_MAX_LENGTH] = {};
    u8 key_[TLX_DIGEST_MAX_LENGTH] = {};
    u32 length_ = 0;
};

/// The digest that an ID names; 0 for one that is not known.
[[nodiscard]] u32 digest_of(const OCSP_CERT_ID &id) noexcept;

}  // namespace tlx
