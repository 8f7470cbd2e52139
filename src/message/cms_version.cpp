// Which version a record of CMS has for its members (RFC 5652, sections 5.1, 5.3, 6.1, 6.2, 7, 8 and 9.1; RFC
// 5083, section 2.1).
#include "der/list_items.hpp"
#include "message/cms_identifiers.hpp"
#include "message/cms_records.hpp"

using namespace tlx;

namespace {

/// Whether a list has an item of a type.
template <typename Item>
bool has(const STACK *list, u32 type) noexcept {
    for (u32 i = 0; i < get_STACK_count(list); ++i) {
        const auto *item = static_cast<const Item *>(get_STACK_value(list, i));
        if (item != nullptr && item->type == type) return true;
    }
    return false;
}

bool has_certificate(const CMS_CERT_CHOICES *certificates, u32 type) noexcept {
    return has<CMS_CERT_CHOICE>(certificates, type);
}

bool has_other_format(const CMS_CERT_CHOICES *certificates, const CMS_REVOCATION_INFOS *crls) noexcept {
    return has_certificate(certificates, TLX_CMS_OTHER_CERTIFICATE) ||
           has<CMS_REVOCATION_INFO>(crls, TLX_CMS_OTHER_REVOCATION_INFO);
}

bool is_data(const CMS_ENCAP_CONTENT_INFO *content) noexcept {
    return content != nullptr && text_of(content->eContentType) == cms::kData;
}

bool by_key_identifier(const CMS_CERT_IDENTIFIER *identifier) noexcept {
    return identifier != nullptr && identifier->type == TLX_CMS_BY_KEY_IDENTIFIER;
}

/// Sets the versions of signers; the greatest.
u32 set_signer_versions(CMS_SIGNER_INFOS *signers) noexcept {
    u32 greatest = 0;
    for (u32 i = 0; i < get_STACK_count(signers); ++i) {
        auto *signer = static_cast<CMS_SIGNER_INFO *>(get_STACK_value(signers, i));
        if (signer == nullptr) continue;
        signer->version = by_key_identifier(signer->sid) ? 3 : 1;
        greatest = std::max(greatest, signer->version);
    }
    return greatest;
}

void set_version(CMS_SIGNED_DATA &data) noexcept {
    const u32 signers = set_signer_versions(data.signerInfos);
    const bool has_v1 = has_certificate(data.certificates, TLX_CMS_V1_ATTRIBUTE_CERTIFICATE);
    if (has_other_format(data.certificates, data.crls)) {
        data.version = 5;
    } else if (has_certificate(data.certificates, TLX_CMS_V2_ATTRIBUTE_CERTIFICATE)) {
        data.version = 4;
    } else {
        data.version = has_v1 || signers == 3 || !is_data(data.encapContentInfo) ? 3 : 1;
    }
}

/// Sets the version of a recipient, and gives it out; another recipient has none.
u32 set_version(CMS_RECIPIENT_INFO &recipient) noexcept {
    if (recipient.value.any == nullptr) return 0;
    switch (recipient.type) {
        case TLX_CMS_KEY_TRANSPORT:
            return recipient.value.ktri->version = by_key_identifier(recipient.value.ktri->rid) ? 2 : 0;
        case TLX_CMS_KEY_AGREEMENT:
            return recipient.value.kari->version = 3;
        case TLX_CMS_KEY_ENCRYPTION_KEY:
            return recipient.value.kekri->version = 4;
        case TLX_CMS_PASSWORD:
            return recipient.value.pwri->version = 0;
        default:
            return 0;
    }
}

/// Does so with all recipients; the greatest.
u32 set_recipient_versions(CMS_RECIPIENT_INFOS *recipients) noexcept {
    u32 greatest = 0;
    for (u32 i = 0; i < get_STACK_count(recipients); ++i) {
        auto *recipient = static_cast<CMS_RECIPIENT_INFO *>(get_STACK_value(recipients, i));
        if (recipient != nullptr) greatest = std::max(greatest, set_version(*recipient));
    }
    return greatest;
}

void set_version(CMS_ENVELOPED_DATA &data) noexcept {
    const CMS_ORIGINATOR_INFO *originator = data.originatorInfo;
    const u32 recipients = set_recipient_versions(data.recipientInfos);
    const bool has_v3 = has<CMS_RECIPIENT_INFO>(data.recipientInfos, TLX_CMS_PASSWORD) ||
                        has<CMS_RECIPIENT_INFO>(data.recipientInfos, TLX_CMS_OTHER_RECIPIENT);
    if (originator != nullptr && has_other_format(originator->certs, originator->crls)) {
        data.version = 4;
    } else if (has_v3 || (originator != nullptr &&
                          has_certificate(originator->certs, TLX_CMS_V2_ATTRIBUTE_CERTIFICATE))) {
        data.version = 3;
    } else {
        const bool is_plain = originator == nullptr && data.unprotectedAttrs == nullptr && recipients == 0;
        data.version = is_plain ? 0 : 2;
    }
}

void set_version(CMS_ENCRYPTED_DATA &data) noexcept {
    data.version = data.unprotectedAttrs != nullptr ? 2 : 0;
}

void set_version(CMS_AUTHENTICATED_DATA &data) noexcept {
    const CMS_ORIGINATOR_INFO *originator = data.originatorInfo;
    set_recipient_versions(data.recipientInfos);
    data.version = 0;
    if (originator == nullptr) return;
    if (has_other_format(originator->certs, originator->crls)) {
        data.version = 3;
    } else if (has_certificate(originator->certs, TLX_CMS_V2_ATTRIBUTE_CERTIFICATE)) {
        data.version = 1;
    }
}

void set_version(CMS_AUTH_ENVELOPED_DATA &data) noexcept {
    set_recipient_versions(data.recipientInfos);
    data.version = 0;
}

void set_version(CMS_DIGESTED_DATA &data) noexcept {
    data.version = is_data(data.encapContentInfo) ? 0 : 2;
}

/// 1 for content that is missing.
template <typename Content>
u32 set_version_of(Content *content) noexcept {
    if (content == nullptr) return 1;
    set_version(*content);
    return 0;
}

}  // namespace

uint32_t set_CMS_versions(CMS_CONTENT_INFO *info) {
    if (info == nullptr) return 1;
    const std::string_view type = text_of(info->contentType);
    if (type == cms::kSignedData) return set_version_of(info->signedData);
    if (type == cms::kEnvelopedData) return set_version_of(info->envelopedData);
    if (type == cms::kDigestedData) return set_version_of(info->digestedData);
    if (type == cms::kEncryptedData) return set_version_of(info->encryptedData);
    if (type == cms::kAuthData) return set_version_of(info->authenticatedData);
    if (type == cms::kAuthEnvelopedData) return set_version_of(info->authEnvelopedData);
    return 0;
}
