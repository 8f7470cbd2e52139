// Trust lists of anybody: what is imported of them as it stands.
#include "containers/signed_trust_list.hpp"

#include <tlxpki/objects.h>

#include "message/content_kinds.hpp"
#include "trust/trust_records.hpp"

using namespace tlx;

const P7_SIGNED_DATA *tlx::signed_data_of(const P7_CONTENT_INFO *info) noexcept {
    return content_type(info) == oid::kPkcs7SignedData ? info->content.signedData : nullptr;
}

uint32_t verify_ctlSignedData(const P7_CONTENT_INFO *info) {
    if (signed_data_of(info) == nullptr) return 0x53020049;
    return verify_PKCS7_Signers(info, nullptr, 0, nullptr, nullptr, nullptr, nullptr);
}

uint32_t add_TRUST_ANCHORS_from_CTL(TRUST_ANCHORS *anchors, const P7_CONTENT_INFO *info) {
    if (anchors == nullptr || verify_ctlSignedData(info) != 0) return 0x53020049;
    const X509_CERTIFICATES *certificates = signed_data_of(info)->certificates;
    for (u32 i = 0; i < get_STACK_count(certificates); ++i) {
        const auto *cert = static_cast<const X509_CERT *>(certificates->values[i]);
        const Owned<TRUST_ANCHOR> anchor(create_TRUST_ANCHOR_from_X509_CERT(cert));
        if (!anchor || add_TRUST_ANCHORS(anchors, anchor.get()) != 0) return 0x5302000E;
    }
    return 0;
}

uint32_t add_CERTIFICATES_from_CTL(X509_CERTIFICATES *pool, const P7_CONTENT_INFO *info) {
    const P7_SIGNED_DATA *data = signed_data_of(info);
    if (pool == nullptr || data == nullptr) return 0x53020049;
    for (u32 i = 0; i < get_STACK_count(data->certificates); ++i) {
        const auto *cert = static_cast<const X509_CERT *>(data->certificates->values[i]);
        if (get_X509_subject(cert) == nullptr || add_X509_CERTIFICATES(pool, cert) != 0) return 0x5302000E;
    }
    return 0;
}

P7_CONTENT_INFO *gen_PKCS7_from_CERT_TRUST_LIST(const CERT_TRUST_LIST *list) {
    if (list == nullptr) return nullptr;
    Owned<P7_CONTENT_INFO> info(new_P7_CONTENT_INFO());
    if (!info) return nullptr;
    info->contentType = index_to_OBJECT_IDENTIFIER(static_cast<i32>(oid::kKisaCtl));
    if (info->contentType == nullptr) return nullptr;
    info->content.trustList = dup_CERT_TRUST_LIST(list);
    return info->content.trustList != nullptr ? info.release() : nullptr;
}
