#include "message/envelope_record.hpp"

#include <tlxpki/objects.h>

#include "asn1/oid_lookup.hpp"
#include "der/list_items.hpp"
#include "message/attribute_order.hpp"
#include "message/cms_identifiers.hpp"

using namespace tlx;

namespace {

using Settings = ENVELOPED_MESSAGE_WRITER_SETTINGS;
constexpr u8 kZeros[TLX_DIGEST_MAX_LENGTH] = {};

Owned<ASN1_STRING> octet_string(Bytes octets) noexcept {
    return Owned<ASN1_STRING>(new_string(TLX_TAG_OCTET_STRING, octets));
}

Owned<OBJECT_IDENTIFIER> content_type_of(const Settings &settings) noexcept {
    return settings.content_type != nullptr
               ? Owned<OBJECT_IDENTIFIER>(dup_OBJECT_IDENTIFIER(settings.content_type))
               : oid_of_row(oid::kPkcs7Data);
}

/// Copies a member that may be absent. False when memory runs out.
template <auto Dup, auto Free, typename T>
bool copy(T *&member, const T *value) noexcept {
    return value == nullptr || replace_by_copy<Dup, Free>(member, value) == 0;
}

bool copy_attributes(X509_ATTRIBUTES *&member, const X509_ATTRIBUTES *value) noexcept {
    return copy<dup_X509_ATTRIBUTES, free_X509_ATTRIBUTES>(member, value);
}

/// EncryptedContentInfo without content. False when memory runs out.
bool set_info(P7_ENCRYPTED_CONTENT_INFO *&member, const Settings &settings, EnvelopeParts &parts) noexcept {
    Owned<P7_ENCRYPTED_CONTENT_INFO> info(new_P7_ENCRYPTED_CONTENT_INFO());
    if (!info) return false;
    info->contentType = content_type_of(settings).release();
    info->contentEncryptionAlgorithm = parts.algorithm.release();
    member = info.release();
    return member->contentType != nullptr;
}

/// EncapsulatedContentInfo without content. False when memory runs out.
bool set_info(CMS_ENCAP_CONTENT_INFO *&member, const Settings &settings) noexcept {
    member = new_CMS_ENCAP_CONTENT_INFO();
    if (member != nullptr) member->eContentType = content_type_of(settings).release();
    return member != nullptr && member->eContentType != nullptr;
}

/// What messages with recipients share. False when memory runs out.
template <typename Content>
bool set_recipients(Content &content, const Settings &settings, EnvelopeParts &parts) noexcept {
    content.recipientInfos = parts.recipients.release();
    return copy<dup_CMS_ORIGINATOR_INFO, free_CMS_ORIGINATOR_INFO>(content.originatorInfo,
                                                                   settings.originator);
}

/// Replaces all attributes of a type. False when memory runs out.
bool put(X509_ATTRIBUTES *attributes, u32 row, const ASN1_STRING *value) noexcept {
    const char *dotted = OID_LIST(static_cast<i32>(row))->dotted;
    for (i32 at = 0; (at = index_by_type(attributes, &X509_ATTRIBUTE::type, dotted, -1)) >= 0;) {
        free_X509_ATTRIBUTE(take_item<X509_ATTRIBUTE>(attributes, at));
    }
    return value != nullptr && add_X509_ATTRIBUTES_OID_INDEX(attributes, static_cast<i32>(row),
                                                             static_cast<u32>(value->type), value, -1) == 0;
}

/// What messages with a code share. False when memory runs out.
template <typename Content>
bool set_code(Content &content, const Settings &settings, const EnvelopeParts &parts) noexcept {
    content.mac = octet_string({kZeros, parts.code_length}).release();
    if (content.mac == nullptr || !copy_attributes(content.unauthAttrs, settings.other_attributes)) {
        return false;
    }
    if (!has_authenticated_attributes(settings)) return true;
    content.authAttrs =
        settings.attributes != nullptr ? dup_X509_ATTRIBUTES(settings.attributes) : new_X509_ATTRIBUTES();
    if (content.authAttrs == nullptr) return false;
    if (!put(content.authAttrs, oid::kContentType, content_type_of(settings).get())) return false;
    const bool has_digest = parts.digest_length != 0;
    return (!has_digest ||
            put(content.authAttrs, oid::kMessageDigest, octet_string({kZeros, parts.digest_length}).get())) &&
           sort_attributes(content.authAttrs);
}

bool fill(CMS_ENVELOPED_DATA &data, const Settings &settings, EnvelopeParts &parts) noexcept {
    return set_recipients(data, settings, parts) && set_info(data.encryptedContentInfo, settings, parts) &&
           copy_attributes(data.unprotectedAttrs, settings.other_attributes);
}

bool fill(CMS_ENCRYPTED_DATA &data, const Settings &settings, EnvelopeParts &parts) noexcept {
    return set_info(data.encryptedContentInfo, settings, parts) &&
           copy_attributes(data.unprotectedAttrs, settings.other_attributes);
}

bool fill(CMS_AUTH_ENVELOPED_DATA &data, const Settings &settings, EnvelopeParts &parts) noexcept {
    return set_recipients(data, settings, parts) &&
           set_info(data.authEncryptedContentInfo, settings, parts) && set_code(data, settings, parts);
}

bool fill(CMS_AUTHENTICATED_DATA &data, const Settings &settings, EnvelopeParts &parts) noexcept {
    data.macAlgorithm = parts.algorithm.release();
    data.digestAlgorithm = parts.digest.release();
    return set_recipients(data, settings, parts) && set_info(data.encapContentInfo, settings) &&
           set_code(data, settings, parts);
}

bool fill(CMS_DIGESTED_DATA &data, const Settings &settings, EnvelopeParts &parts) noexcept {
    data.digestAlgorithm = parts.algorithm.release();
    data.digest = octet_string({kZeros, parts.code_length}).release();
    return data.digest != nullptr && set_info(data.encapContentInfo, settings);
}

/// False when memory runs out.
template <typename Content>
bool fill(CMS_CONTENT_INFO &info, std::string_view type, Content *&member, Content *made,
          const Settings &settings, EnvelopeParts &parts) noexcept {
    member = made;
    info.contentType = text_to_OBJECT_IDENTIFIER(type.data());
    return made != nullptr && info.contentType != nullptr && fill(*made, settings, parts);
}

bool fill(CMS_CONTENT_INFO &info, const Settings &settings, EnvelopeParts &parts) noexcept {
    switch (settings.type) {
        case TLX_MESSAGE_ENVELOPED_DATA:
            return fill(info, cms::kEnvelopedData, info.envelopedData, new_CMS_ENVELOPED_DATA(), settings,
                        parts);
        case TLX_MESSAGE_ENCRYPTED_DATA:
            return fill(info, cms::kEncryptedData, info.encryptedData, new_CMS_ENCRYPTED_DATA(), settings,
                        parts);
        case TLX_MESSAGE_AUTH_ENVELOPED_DATA:
            return fill(info, cms::kAuthEnvelopedData, info.authEnvelopedData, new_CMS_AUTH_ENVELOPED_DATA(),
                        settings, parts);
        case TLX_MESSAGE_AUTHENTICATED_DATA:
            return fill(info, cms::kAuthData, info.authenticatedData, new_CMS_AUTHENTICATED_DATA(), settings,
                        parts);
        default:
            return fill(info, cms::kDigestedData, info.digestedData, new_CMS_DIGESTED_DATA(), settings,
                        parts);
    }
}

}  // namespace

Owned<CMS_CONTENT_INFO> tlx::make_envelope(const ENVELOPED_MESSAGE_WRITER_SETTINGS &settings,
                                           EnvelopeParts parts) noexcept {
    Owned<CMS_CONTENT_INFO> info(new_CMS_CONTENT_INFO());
    const bool made = info && fill(*info, settings, parts) && set_CMS_versions(info.get()) == 0;
    return made ? std::move(info) : nullptr;
}

bool tlx::has_authenticated_attributes(const ENVELOPED_MESSAGE_WRITER_SETTINGS &settings) noexcept {
    const bool is_data = settings.content_type == nullptr || text_of(settings.content_type) == cms::kData;
    const bool has_code =
        settings.type == TLX_MESSAGE_AUTHENTICATED_DATA || settings.type == TLX_MESSAGE_AUTH_ENVELOPED_DATA;
    return has_code && (settings.attributes != nullptr || !is_data);
}

X509_ATTRIBUTES *tlx::authenticated_attributes(const CMS_CONTENT_INFO &info) noexcept {
    if (info.authEnvelopedData != nullptr) return info.authEnvelopedData->authAttrs;
    return info.authenticatedData != nullptr ? info.authenticatedData->authAttrs : nullptr;
}

bool tlx::put_code(CMS_CONTENT_INFO &info, Bytes code) noexcept {
    OCTET_STRING *&member = info.authEnvelopedData != nullptr   ? info.authEnvelopedData->mac
                            : info.authenticatedData != nullptr ? info.authenticatedData->mac
                                                                : info.digestedData->digest;
    Owned<ASN1_STRING> made = octet_string(code);
    if (!made) return false;
    free_ASN1_STRING(std::exchange(member, made.release()));
    return true;
}

bool tlx::put_digest(CMS_CONTENT_INFO &info, Bytes digest) noexcept {
    X509_ATTRIBUTES *attributes = info.authenticatedData->authAttrs;
    return put(attributes, oid::kMessageDigest, octet_string(digest).get()) && sort_attributes(attributes);
}
