// EnvelopedData and EncryptedData (RFC 5652, sections 6.1 and 8), AuthenticatedData (section 9.1) and
// AuthEnvelopedData (RFC 5083, section 2.1).
#include "message/cms_records.hpp"

using namespace tlx;

namespace {

using EncryptedContent = Passing<P7_ENCRYPTED_CONTENT_INFO>;

// OriginatorInfo ::= SEQUENCE {
//     certs [0] IMPLICIT CertificateSet OPTIONAL, crls [1] IMPLICIT RevocationInfoChoices OPTIONAL }
using Originator = CMS_ORIGINATOR_INFO;
constexpr auto kOriginator =
    record<Originator>(between(0, 2), implicit<CertChoicesMember>(0, &Originator::certs),
                       implicit<RevocationInfosMember>(1, &Originator::crls));

// EnvelopedData ::= SEQUENCE {
//     version CMSVersion, originatorInfo [0] IMPLICIT OriginatorInfo OPTIONAL,
//     recipientInfos RecipientInfos, encryptedContentInfo EncryptedContentInfo,
//     unprotectedAttrs [1] IMPLICIT UnprotectedAttributes OPTIONAL }
using Enveloped = CMS_ENVELOPED_DATA;
constexpr auto kEnveloped = record<Enveloped>(between(3, 5), cms_version(&Enveloped::version),
                                              implicit<Passing<Originator>>(0, &Enveloped::originatorInfo),
                                              exact<CmsRecipientInfosMember>(&Enveloped::recipientInfos),
                                              exact<EncryptedContent>(&Enveloped::encryptedContentInfo),
                                              implicit<Attributes>(1, &Enveloped::unprotectedAttrs));

// EncryptedData ::= SEQUENCE {
//     version CMSVersion, encryptedContentInfo EncryptedContentInfo,
//     unprotectedAttrs [1] IMPLICIT UnprotectedAttributes OPTIONAL }
using Encrypted = CMS_ENCRYPTED_DATA;
constexpr auto kEncrypted = record<Encrypted>(between(2, 3), cms_version(&Encrypted::version),
                                              exact<EncryptedContent>(&Encrypted::encryptedContentInfo),
                                              implicit<Attributes>(1, &Encrypted::unprotectedAttrs));

// AuthenticatedData ::= SEQUENCE {
//     version CMSVersion, originatorInfo [0] IMPLICIT OriginatorInfo OPTIONAL,
//     recipientInfos RecipientInfos, macAlgorithm MessageAuthenticationCodeAlgorithm,
//     digestAlgorithm [1] DigestAlgorithmIdentifier OPTIONAL, encapContentInfo EncapsulatedContentInfo,
//     authAttrs [2] IMPLICIT AuthAttributes OPTIONAL, mac MessageAuthenticationCode,
//     unauthAttrs [3] IMPLICIT UnauthAttributes OPTIONAL }
using Authenticated = CMS_AUTHENTICATED_DATA;
constexpr auto kAuthenticated = record<Authenticated>(
    between(5, 9), cms_version(&Authenticated::version),
    implicit<Passing<Originator>>(0, &Authenticated::originatorInfo),
    exact<CmsRecipientInfosMember>(&Authenticated::recipientInfos),
    exact<AlgorithmMember>(&Authenticated::macAlgorithm),
    implicit<AlgorithmMember>(1, &Authenticated::digestAlgorithm),
    exact<Passing<CMS_ENCAP_CONTENT_INFO>>(&Authenticated::encapContentInfo),
    attributes_as_received(2, &Authenticated::authAttrs, &Authenticated::receivedAttributes),
    exact<Joined>(&Authenticated::mac), implicit<Attributes>(3, &Authenticated::unauthAttrs));

// AuthEnvelopedData ::= SEQUENCE {
//     version CMSVersion, originatorInfo [0] IMPLICIT OriginatorInfo OPTIONAL,
//     recipientInfos RecipientInfos, authEncryptedContentInfo EncryptedContentInfo,
//     authAttrs [1] IMPLICIT AuthAttributes OPTIONAL, mac MessageAuthenticationCode,
//     unauthAttrs [2] IMPLICIT UnauthAttributes OPTIONAL }
using AuthEnveloped = CMS_AUTH_ENVELOPED_DATA;
constexpr auto kAuthEnveloped = record<AuthEnveloped>(
    between(4, 7), cms_version(&AuthEnveloped::version),
    implicit<Passing<Originator>>(0, &AuthEnveloped::originatorInfo),
    exact<CmsRecipientInfosMember>(&AuthEnveloped::recipientInfos),
    exact<EncryptedContent>(&AuthEnveloped::authEncryptedContentInfo),
    attributes_as_received(1, &AuthEnveloped::authAttrs, &AuthEnveloped::receivedAttributes),
    exact<Joined>(&AuthEnveloped::mac), implicit<Attributes>(2, &AuthEnveloped::unauthAttrs));

}  // namespace

TLX_DEFINE_RECORD(CMS_ORIGINATOR_INFO, kOriginator)
TLX_DEFINE_RECORD(CMS_ENVELOPED_DATA, kEnveloped)
TLX_DEFINE_RECORD(CMS_ENCRYPTED_DATA, kEncrypted)
TLX_DEFINE_RECORD(CMS_AUTHENTICATED_DATA, kAuthenticated)
TLX_DEFINE_RECORD(CMS_AUTH_ENVELOPED_DATA, kAuthEnveloped)
