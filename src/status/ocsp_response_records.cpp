// OCSPResponse (RFC 6960, section 4.2.1) and what it holds.
#include "status/ocsp_records.hpp"

using namespace tlx;

namespace {

/// A CHOICE whose alternatives are context-specific elements, and no others with the same number.
template <typename Alternatives>
struct ContextChoice : Alternatives {
    [[nodiscard]] u32 read(const Element &element, typename Alternatives::type &record) const noexcept {
        return element.context_specific() ? Alternatives::read(element, record) : kFieldFailed;
    }
};
template <typename Alternatives>
constexpr ContextChoice<Alternatives> context_choice(Alternatives alternatives) noexcept {
    return {alternatives};
}

// RevokedInfo ::= SEQUENCE {
//     revocationTime GeneralizedTime, revocationReason [0] EXPLICIT CRLReason OPTIONAL }
constexpr auto kRevokedInfo =
    record<OCSP_REVOKED_INFO>(between(1, 2), field<GeneralizedTime>(&OCSP_REVOKED_INFO::revocationTime),
                              enumerated(&OCSP_REVOKED_INFO::revocationReason).in(0).or_else(0));

// CertStatus ::= CHOICE {
//     good [0] IMPLICIT NULL, revoked [1] IMPLICIT RevokedInfo, unknown [2] IMPLICIT UnknownInfo }
// UnknownInfo ::= NULL
// The alternative with a value comes first: it says how the value is freed.
constexpr auto kCertStatus =
    context_choice(choice(&OCSP_CERT_STATUS::status, &OCSP_CERT_STATUS::revokedInfo,
                          tagged<Nested<OCSP_REVOKED_INFO>>(TLX_OCSP_REVOKED), tagged<Null>(TLX_OCSP_GOOD),
                          tagged<Null>(TLX_OCSP_UNKNOWN)));

// ResponderID ::= CHOICE { byName [1] EXPLICIT Name, byKey [2] EXPLICIT KeyHash }
// KeyHash ::= OCTET STRING
// Callers also know the type 2, which is written as byKey.
constexpr u32 kAlsoByKey = 2;
constexpr auto kResponderId = context_choice(choice(
    &OCSP_RESPONDER_ID::type, &OCSP_RESPONDER_ID::value, alternative<Explicit<Name>>(TLX_OCSP_BY_NAME, 1),
    alternative<Explicit<Octets>>(TLX_OCSP_BY_KEY, 2), alternative<Explicit<Octets>>(kAlsoByKey, 2)));

// SingleResponse ::= SEQUENCE {
//     certID CertID, certStatus CertStatus, thisUpdate GeneralizedTime,
//     nextUpdate       [0] EXPLICIT GeneralizedTime OPTIONAL,
//     singleExtensions [1] EXPLICIT Extensions OPTIONAL }
using Single = OCSP_SINGLE_RESPONSE;
constexpr auto kSingleResponse = record<Single>(between(3, 5), field<Nested<OCSP_CERT_ID>>(&Single::certID),
                                                field<Choice<OCSP_CERT_STATUS>>(&Single::certStatus),
                                                field<GeneralizedTime>(&Single::thisUpdate),
                                                explicitly<GeneralizedTime>(0, &Single::nextUpdate),
                                                explicitly<Extensions>(1, &Single::singleExtensions));
using SingleResponses = List<Nested<Single>>;

// ResponseData ::= SEQUENCE {
//     version [0] EXPLICIT Version DEFAULT v1, responderID ResponderID, producedAt GeneralizedTime,
//     responses SEQUENCE OF SingleResponse, responseExtensions [1] EXPLICIT Extensions OPTIONAL }
using Data = OCSP_RESPONSE_DATA;
constexpr auto kResponseData =
    record<Data>(between(3, 5), number(&Data::version).in(0).or_else(0),
                 field<Choice<OCSP_RESPONDER_ID>>(&Data::responderID),
                 field<GeneralizedTime>(&Data::producedAt), field<SingleResponses>(&Data::responses),
                 explicitly<Extensions>(1, &Data::responseExtensions), received(&Data::received));

// BasicOCSPResponse ::= SEQUENCE {
//     tbsResponseData ResponseData, signatureAlgorithm AlgorithmIdentifier, signature BIT STRING,
//     certs [0] EXPLICIT SEQUENCE OF Certificate OPTIONAL }
using Basic = BASIC_OCSP_RESPONSE;
constexpr auto kBasicResponse =
    record<Basic>(between(3, 4), field<Nested<Data>>(&Basic::tbsResponseData),
                  field<Nested<X509_ALGO_IDENTIFIER>>(&Basic::signatureAlgorithm),
                  field<Bits>(&Basic::signature), explicitly<WholeCertificates>(0, &Basic::certs));

// ResponseBytes ::= SEQUENCE { responseType OBJECT IDENTIFIER, response OCTET STRING }
constexpr auto kResponseBytes =
    record<OCSP_RESPONSE_BYTES>(exactly(2), field<Oid>(&OCSP_RESPONSE_BYTES::responseType),
                                field<Octets>(&OCSP_RESPONSE_BYTES::response));

// OCSPResponse ::= SEQUENCE {
//     responseStatus OCSPResponseStatus, responseBytes [0] EXPLICIT ResponseBytes OPTIONAL }
// OCSPResponseStatus ::= ENUMERATED
constexpr auto kResponse =
    record<OCSP_RESPONSE>(between(1, 2), enumerated(&OCSP_RESPONSE::responseStatus),
                          explicitly<Nested<OCSP_RESPONSE_BYTES>>(0, &OCSP_RESPONSE::responseBytes));

}  // namespace

TLX_DEFINE_RECORD(OCSP_REVOKED_INFO, kRevokedInfo)
TLX_DEFINE_RECORD(OCSP_CERT_STATUS, kCertStatus)
TLX_DEFINE_RECORD(OCSP_RESPONDER_ID, kResponderId)
TLX_DEFINE_RECORD(OCSP_SINGLE_RESPONSE, kSingleResponse)
TLX_DEFINE_LIST(OCSP_SINGLE_RESPONSES, OCSP_SINGLE_RESPONSE, SingleResponses)
TLX_DEFINE_RECORD(OCSP_RESPONSE_DATA, kResponseData)
TLX_DEFINE_RECORD(BASIC_OCSP_RESPONSE, kBasicResponse)
TLX_DEFINE_RECORD(OCSP_RESPONSE_BYTES, kResponseBytes)
TLX_DEFINE_RECORD(OCSP_RESPONSE, kResponse)
