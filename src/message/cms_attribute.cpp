// Attributes of signers: SigningCertificate (RFC 5035, sections 5.4.1 and 5.4.2) and CMSAlgorithmProtection
// (RFC 6211, section 2).
#include "message/cms_records.hpp"

using namespace tlx;

namespace {

// IssuerSerial ::= SEQUENCE { issuer GeneralNames, serialNumber CertificateSerialNumber }
using IssuerSerial = CMS_ISSUER_SERIAL;
constexpr auto kIssuerSerial = record<IssuerSerial>(exactly(2), exact<GeneralNames>(&IssuerSerial::issuer),
                                                    exact<Integer>(&IssuerSerial::serialNumber));

// ESSCertID ::= SEQUENCE { certHash Hash, issuerSerial IssuerSerial OPTIONAL }
using CertId = CMS_ESS_CERT_ID;
constexpr auto kCertId = record<CertId>(between(1, 2), exact<Joined>(&CertId::certHash),
                                        exact_or_absent<Passing<IssuerSerial>>(&CertId::issuerSerial));
using CertIds = List<Exact<Passing<CertId>>>;
using CertIdsMember = PassingList<CertIds, codes::CMS_ESS_CERT_IDS>;

// ESSCertIDv2 ::= SEQUENCE {
//     hashAlgorithm AlgorithmIdentifier DEFAULT {algorithm id-sha256}, certHash Hash,
//     issuerSerial IssuerSerial OPTIONAL }
using CertIdV2 = CMS_ESS_CERT_ID_V2;
constexpr auto kCertIdV2 = record<CertIdV2>(
    between(1, 3), exact_or_absent<AlgorithmMember>(&CertIdV2::hashAlgorithm),
    exact<Joined>(&CertIdV2::certHash), exact_or_absent<Passing<IssuerSerial>>(&CertIdV2::issuerSerial));
using CertIdsV2 = List<Exact<Passing<CertIdV2>>>;
using CertIdsV2Member = PassingList<CertIdsV2, codes::CMS_ESS_CERT_IDS_V2>;

using Policies = List<Nested<POLICY_INFO>>;

// SigningCertificate ::= SEQUENCE {
//     certs SEQUENCE OF ESSCertID, policies SEQUENCE OF PolicyInformation OPTIONAL }
using Certificate = CMS_SIGNING_CERTIFICATE;
constexpr auto kCertificate = record<Certificate>(between(1, 2), exact<CertIdsMember>(&Certificate::certs),
                                                  exact_or_absent<Policies>(&Certificate::policies));

// SigningCertificateV2 ::= SEQUENCE {
//     certs SEQUENCE OF ESSCertIDv2, policies SEQUENCE OF PolicyInformation OPTIONAL }
using CertificateV2 = CMS_SIGNING_CERTIFICATE_V2;
constexpr auto kCertificateV2 =
    record<CertificateV2>(between(1, 2), exact<CertIdsV2Member>(&CertificateV2::certs),
                          exact_or_absent<Policies>(&CertificateV2::policies));

// CMSAlgorithmProtection ::= SEQUENCE {
//     digestAlgorithm DigestAlgorithmIdentifier,
//     signatureAlgorithm [1] SignatureAlgorithmIdentifier OPTIONAL,
//     macAlgorithm [2] MessageAuthenticationCodeAlgorithm OPTIONAL }
// (WITH COMPONENTS { signatureAlgorithm PRESENT, macAlgorithm ABSENT } |
//  WITH COMPONENTS { signatureAlgorithm ABSENT, macAlgorithm PRESENT })
using Protection = CMS_ALGORITHM_PROTECTION;
/// By hand because one of the two is there, and not both.
struct ProtectedAlgorithm {
    static constexpr auto kSignature = implicit<AlgorithmMember>(1, &Protection::signatureAlgorithm);
    static constexpr auto kMac = implicit<AlgorithmMember>(2, &Protection::macAlgorithm);

    static void clear(Protection &protection) noexcept {
        kSignature.clear(protection);
        kMac.clear(protection);
    }
    [[nodiscard]] static bool copy(Protection &to, const Protection &from) noexcept {
        return kSignature.copy(to, from) && kMac.copy(to, from);
    }
    [[nodiscard]] static u32 read(Cursor &children, Protection &protection) noexcept {
        if (const u32 status = kSignature.read(children, protection); status != 0) return status;
        return kMac.read(children, protection);
    }
    static void write(Encoder &out, const Protection &protection) noexcept {
        if (kSignature.absent(protection) == kMac.absent(protection)) return out.fail();
        kSignature.write(out, protection);
        kMac.write(out, protection);
    }
};
constexpr auto kProtection = record<Protection>(
    exactly(2), exact<AlgorithmMember>(&Protection::digestAlgorithm), ProtectedAlgorithm{});

}  // namespace

TLX_DEFINE_RECORD(CMS_ISSUER_SERIAL, kIssuerSerial)
TLX_DEFINE_RECORD(CMS_ESS_CERT_ID, kCertId)
TLX_DEFINE_LIST(CMS_ESS_CERT_IDS, CMS_ESS_CERT_ID, CertIds)
TLX_DEFINE_RECORD(CMS_ESS_CERT_ID_V2, kCertIdV2)
TLX_DEFINE_LIST(CMS_ESS_CERT_IDS_V2, CMS_ESS_CERT_ID_V2, CertIdsV2)
TLX_DEFINE_RECORD(CMS_SIGNING_CERTIFICATE, kCertificate)
TLX_DEFINE_RECORD(CMS_SIGNING_CERTIFICATE_V2, kCertificateV2)
TLX_DEFINE_RECORD(CMS_ALGORITHM_PROTECTION, kProtection)
