// The body of signed data without its content, in either format.
#pragma once

#include "message/verify_signers.hpp"

namespace tlx {

/// The certificates among those of a message, which goes on owning them. Null when memory runs out.
[[nodiscard]] Owned<STACK> certificates_of(const CMS_SIGNED_DATA &data) noexcept;
/// What verification takes of a message, with certificates_of() it.
[[nodiscard]] SignerMembers signer_members(const CMS_SIGNED_DATA &data,
                                           const X509_CERTIFICATES *certificates) noexcept;

class SignedBody {
  public:
    /// Decodes the members as those of CMS, which has more kinds, or else of PKCS #7, which takes them in
    /// more forms. 0; 0x52820104 for an unknown member, 0x5282003C when memory runs out, or the status of
    /// P7_SIGNED_DATA when neither format takes them.
    [[nodiscard]] u32 decode(Bytes members) noexcept;
    [[nodiscard]] SignerMembers members() const noexcept;

  private:
    Owned<P7_SIGNED_DATA> pkcs7_;
    Owned<CMS_SIGNED_DATA> cms_;
    Owned<STACK> certificates_;  ///< those of cms_, which owns them
};

}  // namespace tlx
