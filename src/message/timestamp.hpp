// Time stamps, as their requests and answers share them.
#pragma once

#include <tlxpki/time.h>
#include <tlxpki/timestamp.h>

#include "message/cms_records.hpp"

namespace tlx {

/// Whether a text is a genTime: RFC 3161, section 2.4.2 has it in UTC, with seconds, and without zeros at the
/// end of a fraction.
[[nodiscard]] bool is_stamp_time(const GENERALIZED_TIME *text) noexcept;

/// The time of a text that is one, without its fraction. Null when memory runs out.
[[nodiscard]] std::unique_ptr<ASN1_TIME, FreeWith<free_ASN1_TIME>> stamp_time(
    const GENERALIZED_TIME *text) noexcept;

/// Whether requests are made with a digest, and imprints compared.
[[nodiscard]] bool is_stamped(u32 digest_id) noexcept;

/// Compares what a token says with the request: 0, or a status of check_CMS_TIMESTAMP_RESPONSE() about
/// digest, nonce and policy.
[[nodiscard]] u32 compare_with_request(const CMS_TST_INFO &info,
                                       const CMS_TIMESTAMP_REQUEST &request) noexcept;

}  // namespace tlx
