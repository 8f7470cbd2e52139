// An OCSP response (RFC 6960, section 4.2.1) as views of the octets that were received.
#pragma once

#include "verify/certificate_view.hpp"

namespace tlx {

/// What a response says of one certificate.
struct AnswerView {
    enum class Status : u8 { good, revoked, unknown };

    AlgorithmView digest;  ///< CertID
    Bytes name_digest;
    Bytes key_digest;
    Bytes serial;  ///< contents of the INTEGER as they are

    Status status = Status::good;
    std::int64_t revoked_at = 0;
    u32 reason = 0;  ///< CRLReason
    std::int64_t this_update = 0;
    std::int64_t next_update = 0;
    bool has_next_update = false;
    bool has_unknown_critical = false;
};

struct ResponseView : SignedView {
    Bytes responder_name;  ///< the contents of a Name; empty when a digest of the key says who it is
    Bytes responder_key;
    Bytes answers;       ///< contents of a SEQUENCE OF SingleResponse
    Bytes certificates;  ///< contents of a SEQUENCE OF Certificate
    bool has_unknown_critical = false;
};

/// Reads an OCSPResponse or a BasicOCSPResponse: kNone, kResponderRefuses for a response without an answer,
/// or kBadResponse.
[[nodiscard]] Rule read_response(Bytes octets, ResponseView &view) noexcept;

/// Takes the next answer. False for what is none.
[[nodiscard]] bool next_answer(StrictCursor &answers, AnswerView &answer) noexcept;

}  // namespace tlx
