// What signed data and signed-and-enveloped data have in common.
#pragma once

#include "message/content_kinds.hpp"

namespace tlx {

struct SignedMembers {
    const BIGINT *version;
    X509_ALGO_IDENTIFIERS **digestAlgorithms;
    X509_CERTIFICATES **certificates;
    X509_CRLS **crls;
    P7_SIGNER_INFOS **signerInfos;
    P7_SIGNED_DATA *signedData;  ///< null in signed-and-enveloped data
};

[[nodiscard]] SignedMembers members_of(P7_SIGNED_DATA &data) noexcept;
/// False for null, content of another type and content that is missing.
[[nodiscard]] bool find_signed_members(const P7_CONTENT_INFO *info, SignedMembers &members) noexcept;

/// The octets of content that are signed and digested (RFC 2315, section 9.3): those of data, and of other
/// content the contents octets of its element, as received or as it is written.
class ContentOctets {
  public:
    /// False when the content cannot be written. A null content info, and one without content, has no octets.
    [[nodiscard]] bool read(const P7_CONTENT_INFO *content) noexcept;
    /// Takes octets that lie elsewhere.
    void use(Bytes octets) noexcept {
        octets_ = octets;
        present_ = true;
    }
    [[nodiscard]] bool present() const noexcept { return present_; }
    [[nodiscard]] Bytes bytes() const noexcept { return octets_; }

  private:
    [[nodiscard]] bool write(const P7_CONTENT_INFO &content) noexcept;

    Encoder written_;
    Bytes octets_;
    bool present_ = false;
};

}  // namespace tlx
