#include "message/signed_body.hpp"

namespace tlx {

u32 SignedBody::decode(Bytes members) noexcept {
    Element body;
    body.tag = kSequence;
    body.contents = members;
    P7_SIGNED_DATA *pkcs7 = nullptr;
    const u32 decoded = Codec<P7_SIGNED_DATA>::decode(body, &pkcs7);
    pkcs7_.reset(pkcs7);
    if (decoded == 0 && pkcs7_) return 0;
    pkcs7_.reset();
    CMS_SIGNED_DATA *cms = nullptr;
    if (Codec<CMS_SIGNED_DATA>::decode(body, &cms) != 0) return decoded != 0 ? decoded : 0x52820104;
    cms_.reset(cms);
    return collect_certificates() ? 0 : 0x5282003C;
}

bool SignedBody::collect_certificates() noexcept {
    certificates_.reset(new_STACK());
    if (!certificates_) return false;
    for (u32 i = 0; i < get_STACK_count(cms_->certificates); ++i) {
        const auto *choice = static_cast<const CMS_CERT_CHOICE *>(cms_->certificates->values[i]);
        if (choice->type != TLX_CMS_CERTIFICATE) continue;
        if (push_STACK_value(certificates_.get(), choice->value.certificate) != 0) return false;
    }
    return true;
}

SignerMembers SignedBody::members() const noexcept {
    if (pkcs7_) return signer_members(members_of(*pkcs7_));
    constexpr auto view = [](const void *signer) {
        return view_of(*static_cast<const CMS_SIGNER_INFO *>(signer));
    };
    return {certificates_.get(), nullptr, cms_->crls, cms_->signerInfos, view};
}

}  // namespace tlx
