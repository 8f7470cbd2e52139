// Codes and digests of content that comes in pieces: those of AuthenticatedData (RFC 5652, section 9) and of
// DigestedData (section 7).
#pragma once

#include <tlxcrypto/digest.h>
#include <tlxcrypto/hmac.h>

#include "message/message_records.hpp"
#include "message/running_digests.hpp"

TLX_OWNS(HMAC_UNIT);

namespace tlx {

/// What DER gives attributes that are authenticated as a SET OF: the first octets, before their contents.
struct AttributesHeader {
    explicit AttributesHeader(const Element &attributes) noexcept;
    [[nodiscard]] Bytes bytes() const noexcept { return {octets_, size_}; }

  private:
    u8 octets_[6];
    std::size_t size_;
};

/// The code and the digest of content, whichever were begun.
class ContentCode {
  public:
    struct Result {
        u8 octets[TLX_DIGEST_MAX_LENGTH];
        u32 length = 0;

        [[nodiscard]] Bytes bytes() const noexcept { return {octets, length}; }
        [[nodiscard]] bool is(Bytes expected) const noexcept;
    };

    /// False for an unknown digest and when memory runs out.
    [[nodiscard]] bool start_digest(u32 digest_id) noexcept;
    [[nodiscard]] bool start_code(u32 digest_id, Bytes key) noexcept;
    [[nodiscard]] bool update(Bytes octets) noexcept;
    /// False when it was not begun, and when memory runs out.
    [[nodiscard]] bool finish_digest(Result &result) noexcept;
    /// The code of the content, or of attributes that stand for it.
    [[nodiscard]] bool finish_code(const Element *attributes, Result &result) noexcept;

  private:
    Owned<DIGEST_UNIT> digest_;
    Owned<HMAC_UNIT> code_;
};

}  // namespace tlx
