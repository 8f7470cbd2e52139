#include "verify/ocsp_view.hpp"

#include <tlxpki/types.h>

#include "verify/crl_view.hpp"
#include "verify/name_match.hpp"
#include "verify/oid.hpp"
#include "verify/raw_extension.hpp"
#include "verify/strict_time.hpp"

namespace tlx {
namespace {

/// Faults that do not change what a response means.
constexpr u32 kAccepted = kAcceptCriticalFalse | kAcceptBoolean;

// [1] EXPLICIT Extensions OPTIONAL
// Known are those of RFC 6960, section 4.4, 1.3.6.1.5.5.7.48.1.n, none of which changes an answer.
bool read_extensions(StrictCursor &in, bool &has_unknown_critical) noexcept {
    StrictCursor outer;
    StrictCursor list;
    if (!in.is_next(id::context_constructed(1))) return true;
    if (!in.enter(id::context_constructed(1), outer) || !outer.enter(id::kSequence, list) ||
        !outer.at_end()) {
        return false;
    }
    while (!list.at_end()) {
        RawExtension extension;
        if (read_extension(list, kAccepted, extension) != Rule::kNone) return false;
        const Bytes oid = extension.oid;
        const bool is_known = oid.size() == 9 && is_oid_of(oid.first(8), "\x2B\x06\x01\x05\x05\x07\x30\x01");
        has_unknown_critical |= extension.critical && !is_known;
    }
    return true;
}

// ResponderID ::= CHOICE { byName [1] EXPLICIT Name, byKey [2] EXPLICIT OCTET STRING }
bool read_responder(StrictCursor &in, ResponseView &view) noexcept {
    StrictCursor choice;
    if (in.is_next(id::context_constructed(1))) {
        return in.enter(id::context_constructed(1), choice) &&
               choice.next(id::kSequence, view.responder_name) && choice.at_end() &&
               is_name(view.responder_name) && !view.responder_name.empty();
    }
    return in.enter(id::context_constructed(2), choice) &&
           choice.next(id::kOctetString, view.responder_key) && choice.at_end();
}

// Version ::= INTEGER { v1(0) }, by default v1, which some write out
bool skip_version(StrictCursor &in) noexcept {
    StrictCursor version;
    Bytes number;
    if (!in.is_next(id::context_constructed(0))) return true;
    return in.enter(id::context_constructed(0), version) && version.next(id::kInteger, number) &&
           version.at_end() && number.size() == 1 && number[0] == 0;
}

// ResponseData ::= SEQUENCE {
//   version [0] EXPLICIT Version DEFAULT v1, responderID ResponderID, producedAt GeneralizedTime, responses
//   SEQUENCE OF SingleResponse, responseExtensions [1] EXPLICIT Extensions OPTIONAL }
bool read_data(StrictCursor in, ResponseView &view) noexcept {
    std::int64_t produced_at = 0;
    return skip_version(in) && read_responder(in, view) && read_generalized_time(in, produced_at) &&
           in.next(id::kSequence, view.answers) && read_extensions(in, view.has_unknown_critical) &&
           in.at_end();
}

// BasicOCSPResponse ::= SEQUENCE {
//   tbsResponseData ResponseData, signatureAlgorithm AlgorithmIdentifier, signature BIT STRING, certs [0]
//   EXPLICIT SEQUENCE OF Certificate OPTIONAL }
bool read_basic(StrictCursor in, ResponseView &view) noexcept {
    Element data;
    Bytes bits;
    StrictCursor certificates;
    if (!in.next(id::kSequence, data) || !read_algorithm(in, view.algorithm) ||
        !in.next(id::kBitString, bits) || !read_octet_bits(bits, view.signature)) {
        return false;
    }
    view.signed_part = data.whole;
    if (!in.at_end() &&
        (!in.enter(id::context_constructed(0), certificates) ||
         !certificates.next(id::kSequence, view.certificates) || !certificates.at_end() || !in.at_end())) {
        return false;
    }
    return read_data(StrictCursor(data.contents), view);
}

// ResponseBytes ::= SEQUENCE { responseType OBJECT IDENTIFIER, response OCTET STRING }
// id-pkix-ocsp-basic is 1.3.6.1.5.5.7.48.1.1.
bool read_response_bytes(StrictCursor &in, Bytes &basic) noexcept {
    StrictCursor outer;
    StrictCursor members;
    Bytes type;
    return in.enter(id::context_constructed(0), outer) && outer.enter(id::kSequence, members) &&
           outer.at_end() && members.next(id::kOid, type) &&
           is_oid_of(type, "\x2B\x06\x01\x05\x05\x07\x30\x01\x01") && members.next(id::kOctetString, basic) &&
           members.at_end() && in.at_end();
}

// RevokedInfo ::= SEQUENCE {
//   revocationTime GeneralizedTime, revocationReason [0] EXPLICIT CRLReason OPTIONAL }
bool read_revoked(StrictCursor in, AnswerView &answer) noexcept {
    StrictCursor reason;
    if (!read_generalized_time(in, answer.revoked_at)) return false;
    if (in.at_end()) return true;
    return in.enter(id::context_constructed(0), reason) && read_reason(reason, answer.reason) &&
           reason.at_end() && in.at_end();
}

// CertStatus ::= CHOICE {
//   good [0] IMPLICIT NULL, revoked [1] IMPLICIT RevokedInfo, unknown [2] IMPLICIT NULL }
bool read_status(StrictCursor &in, AnswerView &answer) noexcept {
    Element status;
    if (!in.any(status)) return false;
    switch (status.tag) {
        case id::context(0):
            answer.status = AnswerView::Status::good;
            return status.contents.empty();
        case id::context_constructed(1):
            answer.status = AnswerView::Status::revoked;
            return read_revoked(StrictCursor(status.contents), answer);
        case id::context(2):
            answer.status = AnswerView::Status::unknown;
            return status.contents.empty();
        default:
            return false;
    }
}

// nextUpdate [0] EXPLICIT GeneralizedTime OPTIONAL
bool read_next_update(StrictCursor &in, AnswerView &answer) noexcept {
    StrictCursor time;
    answer.has_next_update = in.is_next(id::context_constructed(0));
    return !answer.has_next_update || (in.enter(id::context_constructed(0), time) &&
                                       read_generalized_time(time, answer.next_update) && time.at_end());
}

}  // namespace

// OCSPResponse ::= SEQUENCE {
//   responseStatus ENUMERATED { successful(0), ... }, responseBytes [0] EXPLICIT ResponseBytes OPTIONAL }
Rule read_response(Bytes octets, ResponseView &view) noexcept {
    StrictCursor in;
    Bytes status;
    if (!open_whole(octets, id::kSequence, in)) return Rule::kBadResponse;
    if (!in.is_next(TLX_TAG_ENUMERATED)) return read_basic(in, view) ? Rule::kNone : Rule::kBadResponse;
    if (!in.next(TLX_TAG_ENUMERATED, status) || status.size() != 1) return Rule::kBadResponse;
    if (status[0] != 0) return Rule::kResponderRefuses;
    Bytes basic;
    const bool read =
        read_response_bytes(in, basic) && open_whole(basic, id::kSequence, in) && read_basic(in, view);
    return read ? Rule::kNone : Rule::kBadResponse;
}

// SingleResponse ::= SEQUENCE {
//   certID CertID, certStatus CertStatus, thisUpdate GeneralizedTime, nextUpdate [0] EXPLICIT
//   GeneralizedTime OPTIONAL, singleExtensions [1] EXPLICIT Extensions OPTIONAL }
// CertID ::= SEQUENCE {
//   hashAlgorithm AlgorithmIdentifier, issuerNameHash OCTET STRING, issuerKeyHash OCTET STRING, serialNumber
//   INTEGER }
bool next_answer(StrictCursor &answers, AnswerView &answer) noexcept {
    answer = {};
    StrictCursor in;
    StrictCursor cert_id;
    return answers.enter(id::kSequence, in) && in.enter(id::kSequence, cert_id) &&
           read_algorithm(cert_id, answer.digest) && cert_id.next(id::kOctetString, answer.name_digest) &&
           cert_id.next(id::kOctetString, answer.key_digest) && cert_id.next(id::kInteger, answer.serial) &&
           cert_id.at_end() && read_status(in, answer) && read_generalized_time(in, answer.this_update) &&
           read_next_update(in, answer) && read_extensions(in, answer.has_unknown_critical) && in.at_end();
}

}  // namespace tlx
