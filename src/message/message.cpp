// Putting a message together.
#include <tlxpki/objects.h>

#include "der/list_items.hpp"
#include "message/signed_members.hpp"

using namespace tlx;

namespace {

/// True for the content types of PKCS #7.
bool is_pkcs7(u32 type) noexcept {
    return type >= oid::kPkcs7Data && type <= oid::kPkcs7EncryptedData;
}

u32 version_of(u32 type) noexcept {
    return type == oid::kPkcs7SignedData || type == oid::kPkcs7SignedAndEnvelopedData ? 1 : 0;
}

/// False when memory runs out; the member stays then.
bool set_version(BIGINT *&member, u32 version) noexcept {
    Owned<BIGINT> number(new_BIGINT());
    if (!number || set_BIGINT_word(number.get(), version) != 0) return false;
    free_BIGINT(member);
    member = number.release();
    return true;
}

template <typename Item>
bool set_versions(STACK *list, u32 version) noexcept {
    for (u32 i = 0; i < get_STACK_count(list); ++i) {
        auto *item = static_cast<Item *>(list->values[i]);
        if (item != nullptr && !set_version(item->version, version)) return false;
    }
    return true;
}

/// Makes content of a type, with its version; none for data. False when memory runs out.
bool start_content(P7_CONTENT_INFO &info, u32 type) noexcept {
    bool started = true;
    with_content_kind(type, [&](auto kind) {
        using Content = typename decltype(kind)::type;
        if constexpr (requires(Content content) { content.version; }) {
            auto *content = TLX_NEW(Content);
            info.content.any = content;
            started = content != nullptr && set_version(content->version, version_of(type));
        }
    });
    return started;
}

/// An attribute with one value; null for one that cannot be encoded and when memory runs out.
X509_ATTRIBUTE *make_attribute(i32 oid_index, u32 type, const u8 *octets, i32 len) noexcept {
    if (type >= kTagNumberMask || len < 0 || (octets == nullptr && len > 0)) return nullptr;
    const Owned<ASN1_STRING> value(
        new_string(static_cast<i32>(type), {octets, static_cast<std::size_t>(len)}));
    Owned<X509_ATTRIBUTE> attribute(create_X509_ATTRIBUTE_index(nullptr, oid_index, type, value.get()));
    Encoder encoder;
    Codec<X509_ATTRIBUTE>::encode(encoder, attribute.get());
    return encoder.ok() ? attribute.release() : nullptr;
}

/// The result is 0 also when memory runs out for the list: callers have relied on it.
u32 add_attribute(X509_ATTRIBUTES *&attributes, X509_ATTRIBUTE *made) noexcept {
    Owned<X509_ATTRIBUTE> attribute(made);
    if (!attribute) return 1;
    if (append_value(attributes, attribute.get())) static_cast<void>(attribute.release());
    return 0;
}

}  // namespace

uint32_t set_PKCS7_Type(P7_CONTENT_INFO *info, int32_t type_index) {
    const auto type = static_cast<u32>(type_index);
    if (info == nullptr || !is_pkcs7(type)) return 1;
    const Owned<P7_CONTENT_INFO> fresh(new_P7_CONTENT_INFO());
    if (!fresh) return 1;
    fresh->contentType = index_to_OBJECT_IDENTIFIER(type_index);
    if (fresh->contentType == nullptr || !start_content(*fresh, type)) return 1;
    std::swap(*info, *fresh);
    return 0;
}

uint32_t set_P7_version(P7_CONTENT_INFO *info, uint32_t version) {
    bool set = false;
    const u32 type = content_type(info);
    if (!is_pkcs7(type) || info->content.any == nullptr) return 1;
    with_content_kind(type, [&](auto kind) {
        using Content = typename decltype(kind)::type;
        if constexpr (requires(Content content) { content.version; }) {
            auto *content = static_cast<Content *>(info->content.any);
            set = set_version(content->version, version);
            if constexpr (requires { content->signerInfos; }) {
                set = set && set_versions<P7_SIGNER_INFO>(content->signerInfos, version);
            }
            if constexpr (requires { content->recipientInfos; }) {
                set = set && set_versions<P7_RECIPIENT_INFO>(content->recipientInfos, version);
            }
        }
    });
    return set ? 0 : 1;
}

P7_CONTENT_INFO *new_PKCS7_Content(void) {
    return new_P7_CONTENT_INFO();
}

uint32_t set_PKCS7_Content(P7_CONTENT_INFO *info, const P7_CONTENT_INFO *inner) {
    if (content_type(info) != oid::kPkcs7SignedData || info->content.signedData == nullptr) return 1;
    return replace_by_copy<dup_P7_CONTENT_INFO, free_P7_CONTENT_INFO>(info->content.signedData->contentInfo,
                                                                      inner);
}

P7_CONTENT_INFO *gen_PKCS7_DATA_from_Binary(const uint8_t *octets, uint32_t len) {
    if (octets == nullptr && len > 0) return nullptr;
    Owned<P7_CONTENT_INFO> info(new_P7_CONTENT_INFO());
    if (!info || set_PKCS7_Type(info.get(), oid::kPkcs7Data) != 0) return nullptr;
    info->content.data = new_string(TLX_TAG_OCTET_STRING, {octets, len});
    return info->content.data != nullptr ? info.release() : nullptr;
}

uint32_t add_PKCS7_Certificate(P7_CONTENT_INFO *info, const X509_CERT *cert) {
    SignedMembers members;
    if (!find_signed_members(info, members)) return 1;
    Owned<X509_CERT> copy(dup_X509_CERT(cert));
    if (!copy || !append_value(*members.certificates, copy.get())) return 1;
    static_cast<void>(copy.release());
    return 0;
}

uint32_t add_PKCS7_Crl(P7_CONTENT_INFO *info, X509_CRL *crl) {
    Owned<X509_CRL> taken(crl);
    SignedMembers members;
    if (!taken || !find_signed_members(info, members) || !append_value(*members.crls, crl)) return 1;
    static_cast<void>(taken.release());
    return 0;
}

uint32_t add_PKCS7_Signed_Attribute(P7_SIGNER_INFO *signer, int32_t oid_index, uint32_t type,
                                    const uint8_t *octets, int32_t len) {
    if (signer == nullptr) return 1;
    const u32 status =
        add_attribute(signer->authenticatedAttributes, make_attribute(oid_index, type, octets, len));
    if (status != 0) return status;
    free_ASN1_UNIT(signer->receivedAttributes);
    signer->receivedAttributes = nullptr;
    return 0;
}

uint32_t add_PKCS7_Unauthenticated_Attribute(P7_SIGNER_INFO *signer, int32_t oid_index, uint32_t type,
                                             const uint8_t *octets, int32_t len) {
    if (signer == nullptr) return 1;
    return add_attribute(signer->unauthenticatedAttributes, make_attribute(oid_index, type, octets, len));
}
