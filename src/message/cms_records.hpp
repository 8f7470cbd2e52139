// How the records of CMS messages (RFC 5652) are read and written inside other records.
//
// The status of a member's codec goes up unchanged, as in the messages of PKCS #7. An element is only taken
// for what its own tag says, and members come in the order of the standard.
#pragma once

#include <tlxpki/cms.h>
#include <tlxpki/cms_attribute.h>
#include <tlxpki/cms_recipient.h>
#include <tlxpki/cms_timestamp.h>

#include "message/message_records.hpp"
#include "x509/extension_records.hpp"

TLX_DECLARE_CODEC(CMS_CERT_IDENTIFIER);
TLX_DECLARE_CODEC(CMS_CERT_CHOICE);
TLX_DECLARE_CODEC(CMS_OTHER_REVOCATION_INFO);
TLX_DECLARE_CODEC(CMS_REVOCATION_INFO);
TLX_DECLARE_CODEC(CMS_ENCAP_CONTENT_INFO);
TLX_DECLARE_CODEC(CMS_SIGNER_INFO);
TLX_DECLARE_CODEC(CMS_SIGNED_DATA);
TLX_DECLARE_CODEC(CMS_DIGESTED_DATA);
TLX_DECLARE_CODEC(CMS_KEY_IDENTIFIER);
TLX_DECLARE_CODEC(CMS_KEY_TRANS_RECIPIENT);
TLX_DECLARE_CODEC(CMS_ORIGINATOR_KEY);
TLX_DECLARE_CODEC(CMS_ORIGINATOR);
TLX_DECLARE_CODEC(CMS_KEY_AGREE_IDENTIFIER);
TLX_DECLARE_CODEC(CMS_RECIPIENT_ENCRYPTED_KEY);
TLX_DECLARE_CODEC(CMS_KEY_AGREE_RECIPIENT);
TLX_DECLARE_CODEC(CMS_KEK_RECIPIENT);
TLX_DECLARE_CODEC(CMS_PASSWORD_RECIPIENT);
TLX_DECLARE_CODEC(CMS_RECIPIENT_INFO);
TLX_DECLARE_CODEC(CMS_ORIGINATOR_INFO);
TLX_DECLARE_CODEC(CMS_ENVELOPED_DATA);
TLX_DECLARE_CODEC(CMS_ENCRYPTED_DATA);
TLX_DECLARE_CODEC(CMS_AUTHENTICATED_DATA);
TLX_DECLARE_CODEC(CMS_AUTH_ENVELOPED_DATA);
TLX_DECLARE_CODEC(CMS_GCM_PARAM);
TLX_DECLARE_CODEC(CMS_ECC_SHARED_INFO);
TLX_DECLARE_CODEC(CMS_PBKDF2_PARAM);
TLX_DECLARE_CODEC(CMS_CONTENT_INFO);
TLX_DECLARE_CODEC(CMS_ISSUER_SERIAL);
TLX_DECLARE_CODEC(CMS_ESS_CERT_ID);
TLX_DECLARE_CODEC(CMS_ESS_CERT_ID_V2);
TLX_DECLARE_CODEC(CMS_SIGNING_CERTIFICATE);
TLX_DECLARE_CODEC(CMS_SIGNING_CERTIFICATE_V2);
TLX_DECLARE_CODEC(CMS_ALGORITHM_PROTECTION);
TLX_DECLARE_CODEC(CMS_MESSAGE_IMPRINT);
TLX_DECLARE_CODEC(CMS_ACCURACY);
TLX_DECLARE_CODEC(CMS_TST_INFO);
TLX_DECLARE_CODEC(CMS_TIMESTAMP_REQUEST);
TLX_DECLARE_CODEC(CMS_PKI_STATUS_INFO);
TLX_DECLARE_CODEC(CMS_TIMESTAMP_RESPONSE);

namespace tlx {

/// Whether an element has a universal tag. BER may construct an OCTET STRING.
template <typename Kind>
constexpr bool has_own_tag(u8 tag) noexcept {
    if (Kind::tag == TLX_TAG_ANY_NODE) return true;
    return tag == Kind::tag || (std::is_base_of_v<Joined, Kind> && tag == (Kind::tag | kConstructed));
}

/// A value that no element with another tag stands for.
template <typename Kind>
struct Exact : Kind {
    using type = typename Kind::type;
    static u32 decode(const Element &element, type **out) noexcept {
        return has_own_tag<Kind>(element.tag) ? Kind::decode(element, out) : kFieldFailed;
    }
};
/// Such a member, behind a pointer.
template <typename Kind, typename R>
constexpr auto exact(typename Kind::type *R::*member) noexcept {
    return field<Exact<Kind>>(member);
}
/// One that may be absent.
template <typename Kind, typename R>
constexpr auto exact_or_absent(typename Kind::type *R::*member) noexcept {
    return optional<Exact<Kind>>(member);
}

// CMSVersion ::= INTEGER { v0(0), v1(1), v2(2), v3(3), v4(4), v5(5) }
template <typename R>
struct VersionField : NumberField<R, u32, TLX_TAG_INTEGER> {
    using Base = NumberField<R, u32, TLX_TAG_INTEGER>;
    static constexpr u8 kMost = 5;
    [[nodiscard]] u32 read(Cursor &children, R &record) const noexcept {
        Base::clear(record);
        Element child;
        if (!children.next(child) || child.tag != TLX_TAG_INTEGER || child.contents.size() != 1) {
            return kFieldFailed;
        }
        if (child.contents[0] > kMost) return kFieldFailed;
        record.*(Base::member) = child.contents[0];
        return 0;
    }
};
template <typename R>
constexpr VersionField<R> cms_version(u32 R::*member) noexcept {
    return {{member}};
}

/// A CHOICE whose alternatives are known by their whole tags. BER may construct an OCTET STRING.
template <typename Alternatives>
struct ExactChoice : Alternatives {
    [[nodiscard]] u32 read(const Element &element, typename Alternatives::type &record) const noexcept {
        const auto is_own = [&](const auto &each) { return ((element.tag ^ each.tag) & ~kConstructed) == 0; };
        const bool known = std::apply([&](const auto &...each) { return (is_own(each) || ...); },
                                      Alternatives::alternatives);
        return known ? Alternatives::read(element, record) : kFieldFailed;
    }
};
/// Alternatives with tags of their own come first.
template <typename Alternatives>
constexpr ExactChoice<Alternatives> exact_choice(Alternatives alternatives) noexcept {
    return {alternatives};
}

/// A record that is a CHOICE, whose statuses go up unchanged.
template <typename T>
struct PassingChoice : Passing<T> {
    static constexpr u8 tag = TLX_TAG_ANY_NODE;
};

using CertChoices = SetOf<PassingChoice<CMS_CERT_CHOICE>>;
using CertChoicesMember = PassingList<CertChoices, codes::CMS_CERT_CHOICES>;
using RevocationInfos = SetOf<PassingChoice<CMS_REVOCATION_INFO>>;
using RevocationInfosMember = PassingList<RevocationInfos, codes::CMS_REVOCATION_INFOS>;
using CmsSignerInfos = SetOf<Exact<Passing<CMS_SIGNER_INFO>>>;
using CmsSignerInfosMember = PassingList<CmsSignerInfos, codes::CMS_SIGNER_INFOS>;
using CmsRecipientInfos = List<PassingChoice<CMS_RECIPIENT_INFO>, kSet, 1>;
using CmsRecipientInfosMember = PassingList<CmsRecipientInfos, codes::CMS_RECIPIENT_INFOS>;

}  // namespace tlx
