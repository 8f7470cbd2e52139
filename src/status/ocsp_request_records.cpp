// OCSPRequest (RFC 6960, section 4.1.1) and what it holds.
#include "status/ocsp_records.hpp"

using namespace tlx;

namespace {

// CertID ::= SEQUENCE {
//     hashAlgorithm AlgorithmIdentifier, issuerNameHash OCTET STRING, issuerKeyHash OCTET STRING,
//     serialNumber CertificateSerialNumber }
using CertId = OCSP_CERT_ID;
constexpr auto kCertId =
    record<CertId>(exactly(4), field<Nested<X509_ALGO_IDENTIFIER>>(&CertId::hashAlgorithm),
                   field<Octets>(&CertId::issuerNameHash), field<Octets>(&CertId::issuerKeyHash),
                   field<Integer>(&CertId::serialNumber));

// Request ::= SEQUENCE {
//     reqCert CertID, singleRequestExtensions [0] EXPLICIT Extensions OPTIONAL }
using Single = OCSP_SINGLE_REQUEST;
constexpr auto kSingleRequest = record<Single>(between(1, 2), field<Nested<CertId>>(&Single::reqCert),
                                               explicitly<Extensions>(0, &Single::singleRequestExtensions));
using SingleRequests = List<Nested<Single>>;

// TBSRequest ::= SEQUENCE {
//     version           [0] EXPLICIT Version DEFAULT v1,
//     requestorName     [1] EXPLICIT GeneralName OPTIONAL,
//     requestList           SEQUENCE OF Request,
//     requestExtensions [2] EXPLICIT Extensions OPTIONAL }
using Tbs = OCSP_TBS_REQUEST;
constexpr auto kTbsRequest = record<Tbs>(
    between(1, 4), number(&Tbs::version).in(0).or_else(0),
    explicitly<Choice<GENERAL_NAME>>(1, &Tbs::requestorName), field<SingleRequests>(&Tbs::requestList),
    explicitly<Extensions>(2, &Tbs::requestExtensions), received(&Tbs::received));

// Signature ::= SEQUENCE {
//     signatureAlgorithm AlgorithmIdentifier, signature BIT STRING,
//     certs [0] EXPLICIT SEQUENCE OF Certificate OPTIONAL }
using Signature = OCSP_SIGNATURE;
constexpr auto kSignature = record<Signature>(
    between(2, 3), field<Nested<X509_ALGO_IDENTIFIER>>(&Signature::signatureAlgorithm),
    field<Bits>(&Signature::signature), explicitly<WholeCertificates>(0, &Signature::certs));

// OCSPRequest ::= SEQUENCE {
//     tbsRequest TBSRequest, optionalSignature [0] EXPLICIT Signature OPTIONAL }
constexpr auto kRequest =
    record<OCSP_REQUEST>(between(1, 2), field<Nested<Tbs>>(&OCSP_REQUEST::tbsRequest),
                         explicitly<Nested<Signature>>(0, &OCSP_REQUEST::optionalSignature));

}  // namespace

TLX_DEFINE_RECORD(OCSP_CERT_ID, kCertId)
TLX_DEFINE_RECORD(OCSP_SINGLE_REQUEST, kSingleRequest)
TLX_DEFINE_LIST(OCSP_SINGLE_REQUESTS, OCSP_SINGLE_REQUEST, SingleRequests)
TLX_DEFINE_RECORD(OCSP_TBS_REQUEST, kTbsRequest)
TLX_DEFINE_RECORD(OCSP_SIGNATURE, kSignature)
TLX_DEFINE_RECORD(OCSP_REQUEST, kRequest)
