// SignerIdentifier, CertificateSet and RevocationInfoChoices (RFC 5652, sections 5.3, 10.2.2, 10.2.3
// and 10.2.1).
#include "message/cms_records.hpp"

using namespace tlx;

namespace {

// SignerIdentifier ::= CHOICE {
//     issuerAndSerialNumber IssuerAndSerialNumber, subjectKeyIdentifier [0] SubjectKeyIdentifier }
// RecipientIdentifier is the same. SubjectKeyIdentifier ::= OCTET STRING
using Identifier = CMS_CERT_IDENTIFIER;
constexpr auto kIdentifier = exact_choice(
    choice(&Identifier::type, &Identifier::value, alternative<Joined>(TLX_CMS_BY_KEY_IDENTIFIER, 0),
           alternative<Passing<P7_ISSUER_AND_SERIAL_NUMBER>>(TLX_CMS_BY_ISSUER_AND_SERIAL)));

/// A certificate, whose statuses go up unchanged.
struct Certificate : WholeCertificate {
    static u32 decode(const Element &element, X509_CERT **out) noexcept {
        return Codec<X509_CERT>::decode(element, out);
    }
    static void encode(Encoder &out, const X509_CERT *value, u8 as) noexcept {
        out.blaming(Codec<X509_CERT>::unencodable, [&] { WholeCertificate::encode(out, value, as); });
    }
};

// CertificateChoices ::= CHOICE {
//     certificate Certificate, extendedCertificate [0] ExtendedCertificate, v1AttrCert [1]
//     AttributeCertificateV1, v2AttrCert [2] AttributeCertificateV2, other [3] OtherCertificateFormat }
using CertChoice = CMS_CERT_CHOICE;
constexpr auto kCertChoice = exact_choice(
    choice(&CertChoice::type, &CertChoice::value, alternative<Node>(TLX_CMS_EXTENDED_CERTIFICATE, 0),
           alternative<Node>(TLX_CMS_V1_ATTRIBUTE_CERTIFICATE, 1),
           alternative<Node>(TLX_CMS_V2_ATTRIBUTE_CERTIFICATE, 2),
           alternative<Node>(TLX_CMS_OTHER_CERTIFICATE, 3), alternative<Certificate>(TLX_CMS_CERTIFICATE)));

// OtherRevocationInfoFormat ::= SEQUENCE {
//     otherRevInfoFormat OBJECT IDENTIFIER, otherRevInfo ANY DEFINED BY otherRevInfoFormat }
using OtherInfo = CMS_OTHER_REVOCATION_INFO;
constexpr auto kOtherInfo = record<OtherInfo>(exactly(2), exact<Oid>(&OtherInfo::otherRevInfoFormat),
                                              field<Node>(&OtherInfo::otherRevInfo));

// RevocationInfoChoice ::= CHOICE { crl CertificateList, other [1] OtherRevocationInfoFormat }
using Revocation = CMS_REVOCATION_INFO;
constexpr auto kRevocation = exact_choice(choice(
    &Revocation::type, &Revocation::value, alternative<Passing<OtherInfo>>(TLX_CMS_OTHER_REVOCATION_INFO, 1),
    alternative<Passing<X509_CRL>>(TLX_CMS_CRL)));

}  // namespace

TLX_DEFINE_RECORD(CMS_CERT_IDENTIFIER, kIdentifier)
TLX_DEFINE_RECORD(CMS_CERT_CHOICE, kCertChoice)
TLX_DEFINE_LIST(CMS_CERT_CHOICES, CMS_CERT_CHOICE, CertChoices)
TLX_DEFINE_RECORD(CMS_OTHER_REVOCATION_INFO, kOtherInfo)
TLX_DEFINE_RECORD(CMS_REVOCATION_INFO, kRevocation)
TLX_DEFINE_LIST(CMS_REVOCATION_INFOS, CMS_REVOCATION_INFO, RevocationInfos)
