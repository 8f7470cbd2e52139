// Time stamps, their requests and the answers to them, in files.
#pragma once

#include <tlxpki/timestamp.h>

#include <array>
#include <string>

#include "document.hpp"
#include "source.hpp"

namespace tool {

using TimestampRequest = Owned<CMS_TIMESTAMP_REQUEST, free_CMS_TIMESTAMP_REQUEST>;
using TimestampResponse = Owned<CMS_TIMESTAMP_RESPONSE, free_CMS_TIMESTAMP_RESPONSE>;
using CmsMessage = Owned<CMS_CONTENT_INFO, free_CMS_CONTENT_INFO>;

[[nodiscard]] Json describe_timestamp_request(const CMS_TIMESTAMP_REQUEST *request);
[[nodiscard]] Json describe_timestamp_response(const CMS_TIMESTAMP_RESPONSE *response);
[[nodiscard]] Json describe_timestamp_token(const CMS_CONTENT_INFO *token);

/// Whether a message has the content of a time stamp.
[[nodiscard]] bool is_timestamp_token(const CMS_CONTENT_INFO *message);

/// The token of a file, which may be in a response. Throws Failure.
[[nodiscard]] CmsMessage load_timestamp_token(const std::string &path);

/// What was found of a token.
[[nodiscard]] Json describe_timestamp_report(const CMS_TIMESTAMP_REPORT &report);

/// Throws Failure for another message.
void expect_signed_message(Source &source);
/// The signed message of a file of any size, without its content. Throws Failure.
[[nodiscard]] CmsMessage read_signed_message(const std::string &path);
/// A signer of it, from 1 on; 0 for the only one. Throws Failure.
[[nodiscard]] CMS_SIGNER_INFO *signer_of(const CMS_CONTENT_INFO *message, uint32_t number,
                                         const std::string &path);

struct StampedSigner {
    CMS_SIGNER_INFO *info;
    uint32_t number;  ///< from 1 on
};
/// The signer of this number; for 0 the one whose signature the token is for, or the only one. Throws
/// Failure.
[[nodiscard]] StampedSigner stamped_signer(const CMS_CONTENT_INFO *message, const CMS_CONTENT_INFO *token,
                                           uint32_t number, const std::string &path);

/// A digest of a file.
struct FileDigest {
    std::array<uint8_t, TLX_DIGEST_MAX_LENGTH> octets{};
    uint32_t length = 0;
};
/// Reads a file of any size, or standard input for "-". Throws Failure.
[[nodiscard]] FileDigest digest_file(const std::string &path, uint32_t digest_id);

}  // namespace tool
