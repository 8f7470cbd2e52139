#include "message/signed_members.hpp"

namespace tlx {
namespace {

template <typename Content>
SignedMembers shared_members(Content &content, P7_SIGNED_DATA *signed_data) noexcept {
    return {content.version, &content.digestAlgorithms, &content.certificates,
            &content.crls,   &content.signerInfos,      signed_data};
}

}  // namespace

SignedMembers members_of(P7_SIGNED_DATA &data) noexcept {
    return shared_members(data, &data);
}

bool find_signed_members(const P7_CONTENT_INFO *info, SignedMembers &members) noexcept {
    const u32 type = content_type(info);
    if (type == 0 || info->content.any == nullptr) return false;
    if (type == oid::kPkcs7SignedData) {
        members = members_of(*info->content.signedData);
        return true;
    }
    if (type != oid::kPkcs7SignedAndEnvelopedData) return false;
    members = shared_members(*info->content.signedAndEnvelopedData, nullptr);
    return true;
}

bool ContentOctets::read(const P7_CONTENT_INFO *content) noexcept {
    if (content == nullptr || content->content.any == nullptr) return true;
    present_ = true;
    if (content_type(content) == oid::kPkcs7Data) {
        octets_ = octets_of(content->content.data);
        return true;
    }
    Element element;
    if (content->received == nullptr) return write(*content);
    if (!view_node(content->received, element)) return false;
    octets_ = element.contents;
    return true;
}

bool ContentOctets::write(const P7_CONTENT_INFO &content) noexcept {
    const bool known = with_content_kind(content_type(&content), [&](auto kind) {
        using Content = typename decltype(kind)::type;
        kind.encode(written_, static_cast<const Content *>(content.content.any), kind.tag);
    });
    Element element;
    if (!known || !written_.ok() || !read_element(written_.bytes(), element)) return false;
    octets_ = element.contents;
    return true;
}

}  // namespace tlx
