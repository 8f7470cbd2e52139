// Time stamps (RFC 3161, sections 2.4.1 and 2.4.2).
#include "message/cms_records.hpp"

using namespace tlx;

namespace {

// MessageImprint ::= SEQUENCE { hashAlgorithm AlgorithmIdentifier, hashedMessage OCTET STRING }
using Imprint = CMS_MESSAGE_IMPRINT;
constexpr auto kImprint = record<Imprint>(exactly(2), exact<AlgorithmMember>(&Imprint::hashAlgorithm),
                                          exact<Joined>(&Imprint::hashedMessage));

/// INTEGER (1..999)
struct Thousandths : Integer {
    static u32 decode(const Element &element, type **out) noexcept {
        constexpr std::size_t kMostOctets = 2;
        constexpr u32 kMost = 999;
        u32 value = 0;
        const bool fits = element.contents.size() <= kMostOctets && read_number(element.contents, value);
        return fits && value >= 1 && value <= kMost ? Integer::decode(element, out) : kFieldFailed;
    }
};

// Accuracy ::= SEQUENCE {
//     seconds INTEGER OPTIONAL, millis [0] INTEGER (1..999) OPTIONAL, micros [1] INTEGER (1..999) OPTIONAL }
using Accuracy = CMS_ACCURACY;
constexpr auto kAccuracy = record<Accuracy>(between(0, 3), exact_or_absent<Integer>(&Accuracy::seconds),
                                            implicit<Thousandths>(0, &Accuracy::millis),
                                            implicit<Thousandths>(1, &Accuracy::micros));

// TSTInfo ::= SEQUENCE {
//     version INTEGER { v1(1) }, policy TSAPolicyId, messageImprint MessageImprint, serialNumber INTEGER,
//     genTime GeneralizedTime, accuracy Accuracy OPTIONAL, ordering BOOLEAN DEFAULT FALSE,
//     nonce INTEGER OPTIONAL, tsa [0] GeneralName OPTIONAL, extensions [1] IMPLICIT Extensions OPTIONAL }
// The tag of tsa is explicit, because GeneralName is a CHOICE.
using Info = CMS_TST_INFO;
constexpr auto kInfo =
    record<Info>(between(5, 10), cms_version(&Info::version), exact<Oid>(&Info::policy),
                 exact<Passing<Imprint>>(&Info::messageImprint), exact<Integer>(&Info::serialNumber),
                 exact<String<TLX_TAG_GENERALIZED_TIME>>(&Info::genTime),
                 exact_or_absent<Passing<Accuracy>>(&Info::accuracy), default_false(&Info::ordering),
                 exact_or_absent<Integer>(&Info::nonce), explicitly<Choice<GENERAL_NAME>>(0, &Info::tsa),
                 implicit<Extensions>(1, &Info::extensions));

// TimeStampReq ::= SEQUENCE {
//     version INTEGER { v1(1) }, messageImprint MessageImprint, reqPolicy TSAPolicyId OPTIONAL,
//     nonce INTEGER OPTIONAL, certReq BOOLEAN DEFAULT FALSE, extensions [0] IMPLICIT Extensions OPTIONAL }
using Request = CMS_TIMESTAMP_REQUEST;
constexpr auto kRequest = record<Request>(
    between(2, 6), cms_version(&Request::version), exact<Passing<Imprint>>(&Request::messageImprint),
    exact_or_absent<Oid>(&Request::reqPolicy), exact_or_absent<Integer>(&Request::nonce),
    default_false(&Request::certReq), implicit<Extensions>(0, &Request::extensions));

// PKIStatusInfo ::= SEQUENCE {
//     status PKIStatus, statusString PKIFreeText OPTIONAL, failInfo PKIFailureInfo OPTIONAL }
// PKIStatus ::= INTEGER
// PKIFreeText ::= SEQUENCE SIZE (1..MAX) OF UTF8String
// PKIFailureInfo ::= BIT STRING
using Status = CMS_PKI_STATUS_INFO;
using FreeText = OneOrMore<Exact<String<TLX_TAG_UTF8_STRING>>>;
constexpr auto kStatus =
    record<Status>(between(1, 3), number(&Status::status), exact_or_absent<FreeText>(&Status::statusString),
                   exact_or_absent<NamedBits>(&Status::failInfo));

// TimeStampResp ::= SEQUENCE { status PKIStatusInfo, timeStampToken TimeStampToken OPTIONAL }
// TimeStampToken ::= ContentInfo
using Response = CMS_TIMESTAMP_RESPONSE;
constexpr auto kResponse =
    record<Response>(between(1, 2), exact<Passing<Status>>(&Response::status),
                     exact_or_absent<Passing<CMS_CONTENT_INFO>>(&Response::timeStampToken));

}  // namespace

TLX_DEFINE_RECORD(CMS_MESSAGE_IMPRINT, kImprint)
TLX_DEFINE_RECORD(CMS_ACCURACY, kAccuracy)
TLX_DEFINE_RECORD(CMS_TST_INFO, kInfo)
TLX_DEFINE_RECORD(CMS_TIMESTAMP_REQUEST, kRequest)
TLX_DEFINE_RECORD(CMS_PKI_STATUS_INFO, kStatus)
TLX_DEFINE_RECORD(CMS_TIMESTAMP_RESPONSE, kResponse)
