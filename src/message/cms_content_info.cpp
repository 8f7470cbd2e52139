// ContentInfo (RFC 5652, section 3).
#include "message/cms_identifiers.hpp"
#include "message/cms_records.hpp"

using namespace tlx;

namespace {

/// content [0] EXPLICIT ANY DEFINED BY contentType
template <typename Kind, typename R>
constexpr auto content(typename Kind::type *R::*member) noexcept {
    return explicitly<Exact<Kind>>(0, member).required();
}

// ContentInfo ::= SEQUENCE { contentType ContentType, content [0] EXPLICIT ANY DEFINED BY contentType }
using Info = CMS_CONTENT_INFO;
constexpr auto kContentInfo = record<Info>(
    exactly(2), exact<Oid>(&Info::contentType),
    defined_by(
        &Info::contentType, content<Node>(&Info::other), when(cms::kData, content<Joined>(&Info::data)),
        when(cms::kSignedData, content<Passing<CMS_SIGNED_DATA>>(&Info::signedData)),
        when(cms::kEnvelopedData, content<Passing<CMS_ENVELOPED_DATA>>(&Info::envelopedData)),
        when(cms::kDigestedData, content<Passing<CMS_DIGESTED_DATA>>(&Info::digestedData)),
        when(cms::kEncryptedData, content<Passing<CMS_ENCRYPTED_DATA>>(&Info::encryptedData)),
        when(cms::kAuthData, content<Passing<CMS_AUTHENTICATED_DATA>>(&Info::authenticatedData)),
        when(cms::kAuthEnvelopedData, content<Passing<CMS_AUTH_ENVELOPED_DATA>>(&Info::authEnvelopedData))));

}  // namespace

TLX_DEFINE_RECORD(CMS_CONTENT_INFO, kContentInfo)
