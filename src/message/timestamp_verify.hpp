// The verification of time stamps.
#pragma once

#include "message/timestamp.hpp"
#include "message/verify_signers.hpp"

namespace tlx {

using OwnedStampReport = std::unique_ptr<CMS_TIMESTAMP_REPORT, FreeWith<free_CMS_TIMESTAMP_REPORT>>;

/// What a token is compared with. Octets and digest are none when their data is null.
struct Stamped {
    Bytes octets;
    Bytes digest;
    const CMS_TIMESTAMP_REQUEST *request = nullptr;
};

/// Verifies a token with the store and the settings of a message: those for its signers give way to those for
/// authorities of time stamps, and without a time the stamp's own counts. Null when memory runs out.
[[nodiscard]] OwnedStampReport check_stamp(const CMS_CONTENT_INFO &token, const Stamped &stamped,
                                           const SignerTrust &trust) noexcept;

/// The time stamps of a signer's signature.
class SignerStamps {
  public:
    /// Verifies those among the unsigned attributes. False when memory runs out.
    [[nodiscard]] bool verify(const SignerView &signer, const SignerTrust &trust) noexcept;
    /// The earliest time that is proven; null when none is.
    [[nodiscard]] const ASN1_TIME *time() const noexcept { return time_; }
    /// Moves what was found to the report of the signer.
    void give_to(P7_SIGNER_REPORT &report) noexcept;

  private:
    [[nodiscard]] bool take(const X509_ATTRIBUTE *attribute, const SignerView &signer,
                            const SignerTrust &trust) noexcept;
    [[nodiscard]] bool add(OwnedStampReport report) noexcept;

    std::unique_ptr<STACK, FreeWith<free_CMS_TIMESTAMP_REPORTS>> reports_;
    const ASN1_TIME *time_ = nullptr;
    u32 status_ = 0;
};

}  // namespace tlx
