#include "message/signed_body.hpp"

#include "der/memory.hpp"

namespace tlx {

Owned<STACK> certificates_of(const CMS_SIGNED_DATA &data) noexcept {
    Owned<STACK> certificates(new_STACK());
    for (u32 i = 0; certificates && i < get_STACK_count(data.certificates); ++i) {
        const auto *choice = static_cast<const CMS_CERT_CHOICE *>(data.certificates->values[i]);
        if (choice->type != TLX_CMS_CERTIFICATE) continue;
        if (push_STACK_value(certificates.get(), choice->value.certificate) != 0) return nullptr;
    }
    return certificates;
}

SignerMembers signer_members(const CMS_SIGNED_DATA &data, const X509_CERTIFICATES *certificates) noexcept {
    constexpr auto view = [](const void *signer) {
        return view_of(*static_cast<const CMS_SIGNER_INFO *>(signer));
    };
    return {certificates, nullptr, data.crls, data.signerInfos, view};
}

u32 SignedBody::decode(Bytes members) noexcept {
    Element body;
    body.tag = kSequence;
    body.contents = members;
    const MemoryWatch memory;
    CMS_SIGNED_DATA *cms = nullptr;
    if (Codec<CMS_SIGNED_DATA>::decode(body, &cms) == 0) {
        cms_.reset(cms);
        certificates_ = certificates_of(*cms_);
        return certificates_ ? 0 : 0x5282003C;
    }
    if (memory.ran_out()) return 0x5282003C;
    P7_SIGNED_DATA *pkcs7 = nullptr;
    const u32 status = Codec<P7_SIGNED_DATA>::decode(body, &pkcs7);
    pkcs7_.reset(pkcs7);
    if (status == 0) return pkcs7_ ? 0 : 0x52820104;
    return memory.ran_out() ? 0x5282003C : status;
}

SignerMembers SignedBody::members() const noexcept {
    if (pkcs7_) return signer_members(members_of(*pkcs7_));
    return signer_members(*cms_, certificates_.get());
}

}  // namespace tlx
